      * GO TO out of performed ranges: to one around them, and out of
      * all of them, and then the same again.
       IDENTIFICATION DIVISION.
       PROGRAM-ID. RANGES-LEFT.
       DATA DIVISION.
       WORKING-STORAGE SECTION.
       01 N PIC 9(4) VALUE 0.
       01 K PIC 9(4) VALUE 0.
       PROCEDURE DIVISION.
       MAIN SECTION.
       M1.
           PERFORM S1 3 TIMES.
           DISPLAY "M1 " N " " K.
           PERFORM S2.
           DISPLAY "NEVER".
       M2.
           DISPLAY "M2 " N " " K.
           ADD 1 TO K.
           IF K < 4 GO TO M1.
           STOP RUN.
       S1 SECTION.
       A1.
           ADD 1 TO N.
           DISPLAY "A1 " N.
           PERFORM A2 2 TIMES.
           PERFORM A5.
           GO TO A4.
       A2.
           ADD 1 TO N.
           DISPLAY "A2 " N.
           IF N = 5 OR 9 GO TO A3.
           IF N > 40 GO TO M2.
       A3.
           DISPLAY "A3 " N.
           GO TO A1.
       A5.
           PERFORM A2.
           IF N = 14 OR 17 GO TO A3.
           DISPLAY "A5 " N.
       A4.
           EXIT.
       S2 SECTION.
       B1.
           PERFORM B2.
           DISPLAY "B1 AFTER".
       B2.
           PERFORM S1.
           DISPLAY "B2 " N.
           GO TO M2.
