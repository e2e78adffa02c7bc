       IDENTIFICATION DIVISION.
       PROGRAM-ID. LEDGER.
      * A night's run: the other programs one after the other.
       DATA DIVISION.
       WORKING-STORAGE SECTION.
       COPY TOTALS.
       01  STEP-NAME               PIC X(10).
       01  TIME-NOW                PIC 9(8).
       01  TIME-PARTS REDEFINES TIME-NOW.
           05  TIME-HOURS          PIC 99.
           05  TIME-MINUTES        PIC 99.
           05  TIME-HUNDREDTHS     PIC 99V99.
       01  STEP-BEGAN              PIC S9(6)V99 COMP-3.
       01  STEP-TOOK               PIC S9(6)V99 COMP-3.
       01  TOOK-OUT                PIC ZZZ,ZZ9.99.
       PROCEDURE DIVISION.
       MAIN-LINE.
           INITIALIZE LEDGER-TOTALS
           MOVE "LOAD" TO STEP-NAME
           PERFORM RUN-STEP
           MOVE "POST" TO STEP-NAME
           PERFORM RUN-STEP
           MOVE "STATEMENT" TO STEP-NAME
           PERFORM RUN-STEP
           MOVE "TOTALS" TO STEP-NAME
           PERFORM RUN-STEP
           IF LT-REJECTED > ZERO
               MOVE 4 TO RETURN-CODE
           END-IF
           STOP RUN.

       RUN-STEP.
           ACCEPT TIME-NOW FROM TIME
           COMPUTE STEP-BEGAN = TIME-HOURS * 3600
               + TIME-MINUTES * 60 + TIME-HUNDREDTHS
           CALL STEP-NAME
           ACCEPT TIME-NOW FROM TIME
           COMPUTE STEP-TOOK = TIME-HOURS * 3600
               + TIME-MINUTES * 60 + TIME-HUNDREDTHS - STEP-BEGAN
      *    Past midnight.
           IF STEP-TOOK < ZERO
               ADD 86400 TO STEP-TOOK
           END-IF
           MOVE STEP-TOOK TO TOOK-OUT
           DISPLAY "STEP " STEP-NAME "         " TOOK-OUT " SECONDS".
