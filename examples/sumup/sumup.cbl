       IDENTIFICATION DIVISION.
       PROGRAM-ID. SUMUP.
      * Adds up the amounts of a text file and shows the total.
       ENVIRONMENT DIVISION.
       INPUT-OUTPUT SECTION.
       FILE-CONTROL.
           SELECT AMOUNT-FILE ASSIGN TO AMOUNTS
               ORGANIZATION LINE SEQUENTIAL FILE STATUS IS FILE-STAT.
       DATA DIVISION.
       FILE SECTION.
       FD  AMOUNT-FILE.
       01  AMOUNT-RECORD.
           05  AMOUNT          PIC S9(7)V99.
       WORKING-STORAGE SECTION.
       01  FILE-STAT           PIC XX.
       01  TOTAL               PIC S9(9)V99 COMP-3 VALUE ZERO.
       01  TOTAL-OUT           PIC $$$$,$$$,$$9.99CR.
       PROCEDURE DIVISION.
           OPEN INPUT AMOUNT-FILE
           IF FILE-STAT NOT = "00"
               DISPLAY "CANNOT OPEN, STATUS " FILE-STAT
               MOVE 12 TO RETURN-CODE
               STOP RUN
           END-IF
           PERFORM UNTIL FILE-STAT NOT = "00"
               READ AMOUNT-FILE
                   NOT AT END ADD AMOUNT TO TOTAL
               END-READ
           END-PERFORM
           CLOSE AMOUNT-FILE
           MOVE TOTAL TO TOTAL-OUT
           DISPLAY "TOTAL " TOTAL-OUT
           GOBACK.
