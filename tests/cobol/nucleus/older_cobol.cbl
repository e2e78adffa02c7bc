      * Statements of 1968 and 1974 that programs still have.
       IDENTIFICATION DIVISION.
       PROGRAM-ID. P01.
       REMARKS. OLD PROGRAM
           WITH TWO LINES.
       ENVIRONMENT DIVISION.
       DATA DIVISION.
       WORKING-STORAGE SECTION.
       77  A PIC 9(3) VALUE 5.
       77  B PIC X(3) VALUE 'XYZ'.
       77  C PIC 9 VALUE 0.
       77  D PIC X(8).
       77  T PIC 9(6).
       PROCEDURE DIVISION.
       START-IT.
           EXHIBIT NAMED A B.
           NOTE THIS IS A NOTE IN THE PARAGRAPH.
           EXHIBIT A ' ' B.
           IF A = 5 THEN DISPLAY 'FIVE' OTHERWISE DISPLAY 'OTHER'.
           IF A GREATER 4 DISPLAY 'GT' ELSE NEXT SENTENCE.
           IF A EQUALS 5 DISPLAY 'EQS'.
           IF A UNEQUAL TO 6 DISPLAY 'UNEQ'.
           IF A EXCEEDS 4 DISPLAY 'EXC'.
           READY TRACE.
           RESET TRACE.
           COMPUTE A EQUALS A + 1.
           DISPLAY A UPON CONSOLE.
           MOVE CURRENT-DATE TO D. MOVE TIME-OF-DAY TO T.
           IF D (3:1) = '/' AND D (6:1) = '/' AND T NUMERIC AND
             T < 240000 DISPLAY 'CLOCK'.
           PERFORM COUNTED 6 TIMES.
           EXHIBIT CHANGED NAMED A C 'END'.
           STOP -1. STOP 'DONE'.
           GO TO FINI.
       COUNTED.
           ADD 1 TO C.
           ON 1 DISPLAY 'FIRST' ELSE IF C = 2 DISPLAY 'SECOND'.
           ON 2 AND EVERY 2 UNTIL 6 DISPLAY 'EVEN ' C.
           ON 5 MOVE 7 TO A.
           EXHIBIT CHANGED NAMED A B.
           EXHIBIT CHANGED A.
       NOTE-PARA.
           NOTE ALL THIS. STOP RUN. DISPLAY X.
       FINI.
           STOP RUN.
