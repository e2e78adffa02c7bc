      * Tables of three dimensions, usages and SYNCHRONIZED in groups,
      * VALUE of tables, INSPECT of many operands, COMP-X, DISPLAY and
      * switches, GO TO DEPENDING.
       IDENTIFICATION DIVISION.
       PROGRAM-ID. TABLES.
       PROCEDURE DIVISION.
       MAIN-P.
           CALL "TABL-T1".
           CALL "TABL-T2".
           CALL "TABL-T3".
           CALL "TABL-U1".
           CALL "TABL-V1".
           CALL "TABL-V2".
           CALL "TABL-V3".
           STOP RUN.
       END PROGRAM TABLES.

      * Group of usage and sync.
       IDENTIFICATION DIVISION.
       PROGRAM-ID. TABL-T1.
       DATA DIVISION.
       WORKING-STORAGE SECTION.
       01 G USAGE COMP.
           02 A PIC S9(4) VALUE 5.
           02 B PIC S9(9) VALUE 6.
       01 H.
           02 X PIC X.
           02 N PIC S9(9) COMP SYNC VALUE 7.
           02 Y PIC X VALUE "y".
       01 S.
           02 SX PIC X.
           02 T OCCURS 3.
           03 SN PIC S9(4) COMP SYNCHRONIZED LEFT.
           03 SY PIC X.
       01 I.
           02 J PIC 9(2) USAGE IS COMPUTATIONAL VALUE 12.
       PROCEDURE DIVISION.
       MAIN-P.
           DISPLAY A B N Y J.
           DISPLAY FUNCTION LENGTH(G) FUNCTION LENGTH(H) FUNCTION
               LENGTH(S).
           MOVE 3 TO SN (2).
           MOVE "q" TO SY (2).
           DISPLAY SN (2) SY (2).
           EXIT PROGRAM.
       END PROGRAM TABL-T1.

      * Value of tables and groups.
       IDENTIFICATION DIVISION.
       PROGRAM-ID. TABL-T2.
       DATA DIVISION.
       WORKING-STORAGE SECTION.
       01 T VALUE "0102030405".
           02 E PIC 99 OCCURS 5.
       01 U.
           02 V OCCURS 3 VALUE "ab".
           03 V1 PIC X.
           03 V2 PIC X.
       01 W.
           02 W1 PIC 9(2) VALUE 9 OCCURS 2 TIMES.
           02 W2 PIC S9(3) COMP-3 OCCURS 2 VALUE -5.
       01 GV VALUE SPACES.
           02 GA PIC X(2).
           02 GB PIC 9(2).
       01 GZ VALUE ZEROS.
           02 GC PIC X(3).
           02 GD PIC 9(2).
       PROCEDURE DIVISION.
       MAIN-P.
           DISPLAY E (3) U W1 (2) W2 (2).
           DISPLAY GV "|" GZ.
           IF GB = SPACES DISPLAY "SP".
           EXIT PROGRAM.
       END PROGRAM TABL-T2.

      * Inspect with items.
       IDENTIFICATION DIVISION.
       PROGRAM-ID. TABL-T3.
       DATA DIVISION.
       WORKING-STORAGE SECTION.
       01 S PIC X(20) VALUE "THE CAT SAT ON A MAT".
       01 A PIC X VALUE "A".
       01 AT1 PIC XX VALUE "AT".
       01 CG.
           02 C OCCURS 3 PIC 99 VALUE 0.
       01 I PIC 9 VALUE 2.
       01 N PIC 9(6) VALUE 120340.
       01 B PIC X VALUE " ".
       01 E PIC ZZZ,ZZ9 VALUE "  1,234".
       PROCEDURE DIVISION.
       MAIN-P.
           INSPECT S TALLYING C (I) FOR ALL AT1, C (1) FOR CHARACTERS
               BEFORE INITIAL "CAT" C (3) FOR LEADING "T" "H".
           DISPLAY C (1) C (2) C (3).
           INSPECT S REPLACING ALL AT1 BY "og" AFTER INITIAL "C" BEFORE
               INITIAL "ON".
           DISPLAY S.
           INSPECT S REPLACING FIRST "T" BY "t" ALL "A" BY "a" AFTER
               "ON" CHARACTERS BY "-" BEFORE "C".
           DISPLAY S.
           INSPECT N REPLACING ALL "0" BY "9" FIRST "1" BY "5".
           DISPLAY N.
           INSPECT E REPLACING ALL "," BY ".".
           DISPLAY E.
           MOVE "aXbXcX" TO S.
           INSPECT S REPLACING ALL "X" BY "1" BEFORE "b", "X" BY "2"
               AFTER "b".
           DISPLAY S.
           INSPECT S CONVERTING "abc" TO "xyz".
           DISPLAY S.
           INSPECT S (2:3) REPLACING CHARACTERS BY "*".
           DISPLAY S.
           MOVE 0 TO C (1).
           INSPECT FUNCTION UPPER-CASE("aba") TALLYING C (1) FOR ALL
               "A".
           DISPLAY C (1).
           INSPECT S TALLYING C (1) FOR ALL SPACES C (1) FOR ALL "*".
           DISPLAY C (1).
           MOVE "AAA" TO S.
           INSPECT S REPLACING LEADING "A" BY "B" BEFORE INITIAL " " ALL
               SPACES BY ".".
           DISPLAY S.
           EXIT PROGRAM.
       END PROGRAM TABL-T3.

      * Comp-x.
       IDENTIFICATION DIVISION.
       PROGRAM-ID. TABL-U1.
       DATA DIVISION.
       WORKING-STORAGE SECTION.
       01 C PIC X COMP-X VALUE 200.
       01 D PIC 9(5) COMP-X VALUE 70000.
       01 G.
           02 H PIC X(2) COMP-X VALUE 258.
       01 R REDEFINES G.
           02 B1 PIC X.
           02 B2 PIC X.
       01 E PIC X(8) COMP-X.
       PROCEDURE DIVISION.
       MAIN-P.
           ADD 55 TO C.
           DISPLAY C.
           IF C = 255 DISPLAY "1".
           IF B1 = X"01" AND B2 = X"02" DISPLAY "2".
           ADD 1 TO C ON SIZE ERROR DISPLAY "3" END-ADD.
           IF D = 70000 DISPLAY "4".
           SUBTRACT 1 FROM D.
           IF D = 69999 DISPLAY "5".
           MOVE 65 TO H.
           IF B2 = "A" DISPLAY "6".
           MOVE 123456789012 TO E.
           IF E = 123456789012 DISPLAY "7".
           IF FUNCTION LENGTH(D) = 3 DISPLAY "8".
           EXIT PROGRAM.
       END PROGRAM TABL-U1.

      * Accept and display forms.
       IDENTIFICATION DIVISION.
       PROGRAM-ID. TABL-V1.
       ENVIRONMENT DIVISION.
       CONFIGURATION SECTION.
       SPECIAL-NAMES. CONSOLE IS CON SYSIN IS INP SYSOUT IS OUTP UPSI-0
           ON STATUS IS S-ON OFF STATUS IS S-OFF UPSI-3 IS SW3 ON IS
           SW3-ON.
       DATA DIVISION.
       WORKING-STORAGE SECTION.
       01 A PIC X(3) VALUE "a".
       01 N PIC S9(3)V9 VALUE -1.5.
       01 G.
           02 G1 PIC 9(2) COMP VALUE 7.
           02 G2 PIC X VALUE "g".
       01 T.
           02 TT PIC 9 OCCURS 3 VALUE 4.
       PROCEDURE DIVISION.
       MAIN-P.
           DISPLAY A N UPON CON.
           DISPLAY "x" UPON OUTP.
           DISPLAY G2 OF G, TT (2) SPACE QUOTE ZERO.
           DISPLAY ALL "ab" "c".
           DISPLAY N(1:2).
           IF S-OFF DISPLAY "OFF".
           SET SW3 TO ON.
           IF SW3-ON DISPLAY "SW3".
           ACCEPT A FROM INP.
           DISPLAY FUNCTION UPPER-CASE("q") FUNCTION LENGTH("abc").
           DISPLAY "A" , "B" ; "C".
           EXIT PROGRAM.
       END PROGRAM TABL-V1.

      * Goto forms.
       IDENTIFICATION DIVISION.
       PROGRAM-ID. TABL-V2.
       DATA DIVISION.
       WORKING-STORAGE SECTION.
       01 I PIC 9 VALUE 3.
       01 S PIC S9(3) COMP-3 VALUE 2.
       01 T.
           02 E PIC 9 OCCURS 3 VALUE 2.
       PROCEDURE DIVISION.
       MAIN-P.
           GO TO P-1 P-2 P-3 DEPENDING ON I.
           DISPLAY "NO".
       P-1.
           DISPLAY "1".
           GO TO P-9.
       P-2.
           DISPLAY "2".
           GO TO P-1 P-9 DEPENDING E (3).
       P-3.
           DISPLAY "3".
           GO P-1, P-2, DEPENDING ON S.
       P-9.
           DISPLAY "9".
           EXIT.
           EXIT PROGRAM.
       END PROGRAM TABL-V2.

      * Large tables and subscripts.
       IDENTIFICATION DIVISION.
       PROGRAM-ID. TABL-V3.
       DATA DIVISION.
       WORKING-STORAGE SECTION.
       01 T.
           02 R OCCURS 10.
           03 C OCCURS 10.
           04 D PIC S9(4) COMP OCCURS 10.
       01 I PIC 99.
       01 J PIC S9(3) COMP-3.
       01 K PIC 99 COMP-5.
       01 TOT PIC 9(9) VALUE 0.
       PROCEDURE DIVISION.
       MAIN-P.
           PERFORM VARYING I FROM 1 BY 1 UNTIL I > 10 AFTER J FROM 1 BY
               1 UNTIL J > 10 AFTER K FROM 1 BY 1 UNTIL K > 10 COMPUTE D
               (I, J, K) = I * J + K END-PERFORM.
           MOVE 2 TO I.
           MOVE 3 TO J.
           MOVE 4 TO K.
           DISPLAY D (I + 1 J - 1, K) D (I J + 2 K - 3) D(1,1,10).
           ADD 5 TO D (I, J, K) D (I I I).
           DISPLAY D (2 3 4) D (2, 2, 2).
           PERFORM VARYING I FROM 1 BY 1 UNTIL I > 10 ADD D (I I I) TO
               TOT END-PERFORM.
           DISPLAY TOT.
           MOVE D (I - 1, 10, J + 7) TO TOT.
           DISPLAY TOT.
           IF D (I - 9 1 1) = D (2 1 1) DISPLAY "EQ".
           MOVE R (1) TO R (2).
           IF R (1) = R (2) DISPLAY "ROW".
           MOVE ALL ZEROS TO C (3 3).
           IF C (3 3) = ALL "0" DISPLAY "ZZ".
           EXIT PROGRAM.
       END PROGRAM TABL-V3.
