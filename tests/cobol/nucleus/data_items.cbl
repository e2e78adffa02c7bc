      * Data descriptions: figurative constants, REDEFINES, RENAMES,
      * qualification, JUSTIFIED, BLANK WHEN ZERO, signs, index items,
      * tables of variable length, mixed usages, edited pictures.
       IDENTIFICATION DIVISION.
       PROGRAM-ID. DATAITEMS.
       PROCEDURE DIVISION.
       MAIN-P.
           CALL "DATA-L1".
           CALL "DATA-L3".
           CALL "DATA-L4".
           CALL "DATA-L5".
           CALL "DATA-L6".
           CALL "DATA-L7".
           CALL "DATA-L8".
           CALL "DATA-L14".
           CALL "DATA-N1".
           CALL "DATA-N5".
           STOP RUN.
       END PROGRAM DATAITEMS.

      * Figurative everywhere.
       IDENTIFICATION DIVISION.
       PROGRAM-ID. DATA-L1.
       DATA DIVISION.
       WORKING-STORAGE SECTION.
       01 A PIC X(4).
       01 N PIC 9(4).
       01 Z PIC ZZZ9.
       01 G.
           02 G1 PIC 9(2).
           02 G2 PIC X(2).
       01 AE PIC XXBXX.
       01 C PIC 9(4) COMP.
       01 P PIC S9(3) COMP-3.
       01 L PIC X VALUE LOW-VALUE.
       01 H PIC X VALUE HIGH-VALUES.
       01 Q PIC X(3) VALUE QUOTES.
       01 AL PIC X(5) VALUE ALL "ab".
       01 SP PIC X(3) VALUE ALL SPACES.
       01 ZE PIC X(3) VALUE ALL ZEROES.
       PROCEDURE DIVISION.
       MAIN-P.
           MOVE ZEROS TO A N Z G AE C P.
           DISPLAY A N Z G AE C P.
           MOVE SPACES TO A N Z G AE.
           DISPLAY A "|" Z "|" G "|" AE "|".
           MOVE QUOTE TO A.
           DISPLAY A.
           MOVE ALL "7" TO N Z C P.
           DISPLAY N Z C P.
           IF L < SPACE AND H > "z" DISPLAY "OK".
           DISPLAY Q AL SP ZE "|".
           MOVE HIGH-VALUE TO A.
           IF A = HIGH-VALUES DISPLAY "HV".
           IF A > LOW-VALUES AND A NOT = ALL "a" DISPLAY "HL".
           MOVE 0 TO N.
           IF N = ZERO AND N IS ZERO AND N EQUAL TO ZEROS DISPLAY
               "ZERO".
           IF ZERO = N AND SPACE = SP DISPLAY "REV".
           MOVE "ababa" TO AL.
           IF AL = ALL "ab" DISPLAY "ALL".
           EXIT PROGRAM.
       END PROGRAM DATA-L1.

      * Redefines.
       IDENTIFICATION DIVISION.
       PROGRAM-ID. DATA-L3.
       DATA DIVISION.
       WORKING-STORAGE SECTION.
       01 A.
           02 B PIC X(4) VALUE "1234".
           02 C REDEFINES B PIC 9(4).
           02 D REDEFINES B.
           03 D1 PIC 9.
           03 D2 PIC 99.
           03 D3 PIC X.
           02 E PIC X VALUE "Z".
       01 R REDEFINES A.
           02 R1 PIC X(2) OCCURS 2.
           02 FILLER PIC X.
       01 R2 REDEFINES A PIC X(5).
       01 T.
           02 T1 PIC 9(2) OCCURS 3 VALUE 7.
           02 T2 REDEFINES T1.
           03 FILLER PIC X(6).
           02 T3 REDEFINES T1 PIC X(2) OCCURS 3.
       PROCEDURE DIVISION.
       MAIN-P.
           ADD 1 TO C.
           DISPLAY A " " D2 " " R1 (2) " " R2 " " T " " T3 (2).
           EXIT PROGRAM.
       END PROGRAM DATA-L3.

      * Level 66.
       IDENTIFICATION DIVISION.
       PROGRAM-ID. DATA-L4.
       DATA DIVISION.
       WORKING-STORAGE SECTION.
       01 REC.
           02 F1.
           03 A PIC X(2) VALUE "AB".
           03 B PIC 9(2) VALUE 34.
           02 F2.
           03 C PIC X(2) VALUE "CD".
           03 D PIC S9(3) VALUE -5.
           66 R1 RENAMES A THRU C.
           66 R2 RENAMES F2.
           66 R3 RENAMES D.
           66 R4 RENAMES B THROUGH F2.
       01 REC2.
           02 A PIC X(2) VALUE "XX".
           66 R1 RENAMES A.
       PROCEDURE DIVISION.
       MAIN-P.
           DISPLAY R1 OF REC " " R2 " " R4 " " R1 OF REC2.
           ADD 1 TO R3.
           DISPLAY R3.
           MOVE ALL "9" TO R1 IN REC.
           DISPLAY REC.
           EXIT PROGRAM.
       END PROGRAM DATA-L4.

      * Qualification deep.
       IDENTIFICATION DIVISION.
       PROGRAM-ID. DATA-L5.
       DATA DIVISION.
       WORKING-STORAGE SECTION.
       01 G1.
           02 G2.
           03 G3.
           04 G4.
           05 G5.
           06 G6.
           07 X PIC 9 VALUE 1.
           02 H2.
           03 G3.
           04 G4.
           05 G5.
           06 G6.
           07 X PIC 9 VALUE 2.
       01 G9.
           02 G2.
           03 G3.
           04 G4.
           05 G5.
           06 G6.
           07 X PIC 9 VALUE 3.
       PROCEDURE DIVISION.
       MAIN-P.
           DISPLAY X OF G6 OF G5 IN G4 OF G3 OF G2 OF G1 X IN H2 X OF G9
               X IN G6 IN G2 IN G1.
           EXIT PROGRAM.
       END PROGRAM DATA-L5.

      * Justified and edited moves.
       IDENTIFICATION DIVISION.
       PROGRAM-ID. DATA-L6.
       DATA DIVISION.
       WORKING-STORAGE SECTION.
       01 J PIC X(5) JUSTIFIED RIGHT.
       01 J2 PIC X(3) JUST.
       01 N PIC 9(3) VALUE 42.
       01 AE PIC X(2)/X(2).
       01 AN PIC X(6) VALUE "ABCDEF".
       01 ED PIC ZZ9.9.
       01 GR.
           02 G1 PIC X(3) JUST RIGHT VALUE "a".
       PROCEDURE DIVISION.
       MAIN-P.
           MOVE "ab" TO J.
           DISPLAY J.
           MOVE "abcdefg" TO J J2.
           DISPLAY J J2.
           MOVE N TO J.
           DISPLAY J "|".
           MOVE AN TO AE.
           DISPLAY AE.
           MOVE 12.34 TO ED.
           MOVE ED TO J.
           DISPLAY J.
           MOVE ED TO AE.
           DISPLAY AE.
           MOVE SPACE TO J.
           DISPLAY J "|".
           DISPLAY G1 "|".
           MOVE ALL "xyz" TO J.
           DISPLAY J.
           EXIT PROGRAM.
       END PROGRAM DATA-L6.

      * Blank when zero and sign.
       IDENTIFICATION DIVISION.
       PROGRAM-ID. DATA-L7.
       DATA DIVISION.
       WORKING-STORAGE SECTION.
       01 A PIC ZZ9 BLANK WHEN ZERO.
       01 B PIC 9(3).99 BLANK ZERO.
       01 C PIC S9(3) SIGN LEADING SEPARATE CHARACTER VALUE -7.
       01 D PIC S9(3) SIGN TRAILING SEPARATE VALUE 8.
       01 G SIGN LEADING SEPARATE.
           02 E PIC S99 VALUE 3.
           02 F PIC X.
           02 H PIC S9 SIGN TRAILING VALUE -1.
       PROCEDURE DIVISION.
       MAIN-P.
           MOVE 0 TO A B.
           DISPLAY A B "|".
           MOVE 5 TO A B.
           DISPLAY A B.
           DISPLAY C D E H.
           ADD 10 TO C.
           SUBTRACT 10 FROM D.
           DISPLAY C D.
           IF FUNCTION LENGTH(G) = 5 DISPLAY "5".
           MOVE "+04X" TO G.
           IF E = 4 DISPLAY "4".
           EXIT PROGRAM.
       END PROGRAM DATA-L7.

      * Index and set.
       IDENTIFICATION DIVISION.
       PROGRAM-ID. DATA-L8.
       DATA DIVISION.
       WORKING-STORAGE SECTION.
       01 T.
           02 E OCCURS 5 INDEXED BY I J PIC 9(2).
       01 IDX USAGE INDEX.
       01 GI.
           02 ID2 USAGE INDEX OCCURS 2.
       01 N PIC 99.
       01 S PIC S9(3) COMP.
       PROCEDURE DIVISION.
       MAIN-P.
           SET I TO 3.
           SET J TO I.
           SET IDX TO J.
           SET ID2 (1) TO IDX.
           SET I UP BY 2.
           SET J DOWN BY N.
           SET N TO I.
           DISPLAY N.
           IF I > J AND IDX = J AND IDX = ID2 (1) DISPLAY "A".
           IF I = 5 AND J NOT = 5 DISPLAY "B".
           SET I J TO 2.
           SET S TO J.
           IF S = 2 DISPLAY "C".
           MOVE 7 TO E (I) E (J + 1) E (4).
           IF E (I + 2) = 7 AND E(J - 0) = 7 DISPLAY "D".
           SET I TO S.
           SET I UP BY S.
           IF I = 4 DISPLAY "E".
           SET N TO 4.
           SET I DOWN BY 1.
           IF I = 3 DISPLAY "F".
           EXIT PROGRAM.
       END PROGRAM DATA-L8.

      * Odo.
       IDENTIFICATION DIVISION.
       PROGRAM-ID. DATA-L14.
       DATA DIVISION.
       WORKING-STORAGE SECTION.
       01 N PIC 99 VALUE 3.
       01 T.
           02 H PIC X VALUE "H".
           02 E PIC X OCCURS 1 TO 5 TIMES DEPENDING ON N VALUE "e".
       01 X PIC X(8).
       01 T2.
           02 M PIC 9 VALUE 2.
           02 F PIC X(2) OCCURS 0 TO 3 DEPENDING M.
       PROCEDURE DIVISION.
       MAIN-P.
           MOVE T TO X.
           DISPLAY X "|" T "|".
           MOVE 5 TO N.
           DISPLAY T "|" FUNCTION LENGTH(T).
           MOVE 1 TO N.
           DISPLAY T "|".
           MOVE "3aabbcc" TO T2.
           DISPLAY T2.
           MOVE 1 TO M.
           DISPLAY T2 "|".
           MOVE ALL "z" TO T.
           MOVE 5 TO N.
           DISPLAY T.
           EXIT PROGRAM.
       END PROGRAM DATA-L14.

      * Mixed usage group compare and moves.
       IDENTIFICATION DIVISION.
       PROGRAM-ID. DATA-N1.
       DATA DIVISION.
       WORKING-STORAGE SECTION.
       01 G.
           02 A PIC S9(4) COMP VALUE 258.
           02 B PIC S9(3) COMP-3 VALUE -123.
           02 C PIC X(2) VALUE "zz".
       01 H.
           02 A2 PIC S9(4) COMP.
           02 B2 PIC S9(3) COMP-3.
           02 C2 PIC X(2).
       01 S18 PIC S9(18).
       01 B18 PIC S9(18) COMP.
       01 P18 PIC S9(18) COMP-3.
       01 V PIC S9(9)V9(9).
       01 U PIC 9(4) COMP.
       01 UD PIC 9(4).
       01 X PIC X(20).
       PROCEDURE DIVISION.
       MAIN-P.
           MOVE G TO H.
           DISPLAY A2 B2 C2.
           IF G = H DISPLAY "EQ".
           MOVE -123456789012345678 TO S18 B18 P18.
           DISPLAY S18 " " B18 " " P18.
           MOVE -123456789.123456789 TO V.
           DISPLAY V.
           MOVE V TO B18.
           DISPLAY B18.
           MOVE -5 TO U UD.
           DISPLAY U UD.
           MOVE 123456 TO U UD.
           DISPLAY U UD.
           COMPUTE V = B18 / 1000 + .5.
           DISPLAY V.
           MOVE S18 TO X.
           DISPLAY X.
           ADD 1 TO S18 B18 P18.
           DISPLAY S18 B18 P18.
           IF S18 = B18 AND B18 = P18 AND S18 < V DISPLAY "CMP".
           EXIT PROGRAM.
       END PROGRAM DATA-N1.

      * Pictures with many symbols.
       IDENTIFICATION DIVISION.
       PROGRAM-ID. DATA-N5.
       DATA DIVISION.
       WORKING-STORAGE SECTION.
       01 A PIC +++,+++,++9.99.
       01 B PIC $$$,$$$,$$9.99-.
       01 C PIC ***,***,**9.99CR.
       01 D PIC Z(5)9.9(2)+.
       01 E PIC -(6)9.
       01 F PIC $(4)9V99.
       01 G PIC 9(3)B9(3)/9(3).
       01 H PIC ZZZBZZZ.
       01 I PIC **/**/**.
       01 J PIC +(3).+(2).
       01 K PIC $$$.$$.
       01 L PIC Z.ZZ.
       01 M PIC ,999.
       01 N PIC 99V99.
       01 O PIC $*(5).99.
       01 P PIC 9(4)PPP.
       01 Q PIC +Z,ZZ9.
       01 R PIC -$***9.99.
       01 S PIC 0ZZ90.
       01 T PIC ZZ0Z.
       01 U PIC BB99.
       01 V PIC ZZZZ,.
       01 W PIC $ZZ,ZZZ.
       PROCEDURE DIVISION.
       MAIN-P.
           MOVE -1234.5 TO A B C D E F.
           DISPLAY A "|" B "|" C "|" D "|" E "|" F "|".
           MOVE 123456789 TO G.
           MOVE 1234 TO H I.
           DISPLAY G "|" H "|" I "|".
           MOVE .05 TO J K L.
           DISPLAY J "|" K "|" L "|".
           MOVE 0 TO J K L.
           DISPLAY J "|" K "|" L "|".
           MOVE 42 TO M O Q R S T U V W.
           DISPLAY M "|" O "|" Q "|" R "|" S "|" T "|" U "|" V "|" W
               "|".
           MOVE -0.4 TO E Q.
           DISPLAY E Q.
           MOVE 1234567 TO P.
           DISPLAY P.
           EXIT PROGRAM.
       END PROGRAM DATA-N5.
