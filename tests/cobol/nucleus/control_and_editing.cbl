       IDENTIFICATION DIVISION.
       PROGRAM-ID. PERFTEST.
       ENVIRONMENT DIVISION.
       CONFIGURATION SECTION.
       SPECIAL-NAMES.
           UPSI-0 IS SW0 ON STATUS IS SW0-ON OFF STATUS IS SW0-OFF
           CLASS VOWEL IS "A" "E" "I" "O" "U"
           SYMBOLIC CHARACTERS STAR-C IS 43.
       DATA DIVISION.
       WORKING-STORAGE SECTION.
       77  I PIC S9(3) COMP.
       77  J PIC S9(3) COMP-3.
       77  K PIC 999.
       77  CNT PIC 9(5) VALUE 0.
       77  X1 PIC X(5) VALUE "ABCDE".
       77  N1 PIC S9(4) VALUE -12.
       01  G1.
           02 G1A PIC 99 VALUE 5.
           02 G1B PIC X(3) VALUE "abc".
              88 IS-ABC VALUE "abc" "ABC".
           02 G1C PIC 9(3)V9 VALUE 12.5.
              88 LOWC VALUE 0 THRU 10.
              88 HIGHC VALUE 11 THRU 999.
       01  G2.
           02 G1C PIC 9(5)V99.
           02 G1A PIC 9(4).
           02 FILLER PIC X.
           02 G1B PIC X(5).
       01  TBL.
           03 ROW OCCURS 3 TIMES INDEXED BY R1.
              05 COL OCCURS 4 TIMES PIC 99 INDEXED BY C1.
       01  RDEF REDEFINES TBL.
           03 FLAT PIC 99 OCCURS 12 TIMES.
       01  ED1 PIC $$,$$9.99CR.
       01  ED2 PIC ***,**9.99.
       01  ED3 PIC +++9.
       01  ED4 PIC XX/XX/XX.
       01  ED5 PIC 9(3)B9(3).
       01  ED6 PIC ZZZ,ZZZ.ZZ BLANK WHEN ZERO.
       01  ED7 PIC -9(3).9.
       PROCEDURE DIVISION.
       MAIN SECTION.
       A1.
           PERFORM B1 VARYING I FROM 1 BY 1 UNTIL I > 2
             AFTER J FROM 1 BY 1 UNTIL J > 2.
           DISPLAY "CNT " CNT.
           GO TO A2.
       B1.
           ADD 1 TO CNT. DISPLAY "I=" I " J=" J.
       A2.
           MOVE CORRESPONDING G1 TO G2.
           DISPLAY G2.
           IF IS-ABC AND HIGHC AND NOT LOWC DISPLAY "88 OK".
           PERFORM VARYING R1 FROM 1 BY 1 UNTIL R1 > 3
             PERFORM VARYING C1 FROM 1 BY 1 UNTIL C1 > 4
               COMPUTE COL (R1 C1) = R1 * 10 + C1
             END-PERFORM
           END-PERFORM
           DISPLAY TBL. DISPLAY FLAT (5) " " COL (R1 - 2, 1).
           MOVE -1234.5 TO ED1. DISPLAY ED1.
           MOVE 1234.5 TO ED1. DISPLAY ED1.
           MOVE 12.3 TO ED2. DISPLAY ED2.
           MOVE -5 TO ED3. DISPLAY ED3.
           MOVE "010203" TO ED4. DISPLAY ED4.
           MOVE 123456 TO ED5. DISPLAY ED5.
           MOVE 0 TO ED6. DISPLAY "[" ED6 "]".
           MOVE 1234.5 TO ED6. DISPLAY "[" ED6 "]".
           MOVE -12.3 TO ED7. DISPLAY ED7.
           MOVE ED1 TO N1. DISPLAY N1.
           IF N1 IS POSITIVE DISPLAY "POS" ELSE DISPLAY "NEG".
           MOVE -7 TO N1. IF N1 NEGATIVE DISPLAY "NEG".
           IF X1 (1:1) IS VOWEL DISPLAY "VOWEL".
           IF X1 IS ALPHABETIC DISPLAY "ALPHA".
           IF X1 = "ABCDE   " DISPLAY "EQ".
           IF X1 > "ABCD" AND < "ABCDF" DISPLAY "RANGE".
           SET SW0 TO ON. IF SW0-ON DISPLAY "SW ON".
           MOVE ALL "XY" TO X1. DISPLAY X1.
           MOVE STAR-C TO X1. DISPLAY X1.
           MOVE ZERO TO K. ADD 1, 2, 3 TO K. DISPLAY K.
           ADD 999 TO K ON SIZE ERROR DISPLAY "SIZE" 
             NOT ON SIZE ERROR DISPLAY "NO SIZE". DISPLAY K.
           SUBTRACT 1 FROM K GIVING I. DISPLAY I.
           DIVIDE 0 INTO K ON SIZE ERROR DISPLAY "DIV0".
           COMPUTE K ROUNDED = 10 / 3 + 0.5. DISPLAY K.
           COMPUTE G1C OF G1 = 2 ** 5 / 3. DISPLAY G1C OF G1.
           EVALUATE I ALSO TRUE
             WHEN 1 THRU 4 ALSO K = 4 DISPLAY "E1"
             WHEN 5 ALSO K = 4 DISPLAY "E2"
             WHEN ANY ALSO ANY DISPLAY "E3"
           END-EVALUATE.
           PERFORM C1-P THRU C3-P.
           PERFORM 2 TIMES DISPLAY "T" END-PERFORM.
           GO TO X2 X3 DEPENDING ON K.
           DISPLAY "FALL".
       X1P. DISPLAY "X1P".
       X2. DISPLAY "X2".
       X3. DISPLAY "X3".
           STOP RUN.
       C1-P. DISPLAY "C1". IF K > 100 GO TO C3-P.
           GO TO C3-P.
       C2-P. DISPLAY "C2".
       C3-P. EXIT.
