      *> What a record area holds before the first READ or MOVE: zeros in numbers, blanks in the rest,
      *> in the form of the file's first record; blanks after it, where another record is longer.
       IDENTIFICATION DIVISION.
       PROGRAM-ID. RECORD-AREAS.
       ENVIRONMENT DIVISION.
       INPUT-OUTPUT SECTION.
       FILE-CONTROL.
           SELECT REPORT-FILE ASSIGN TO "report"
               ORGANIZATION IS LINE SEQUENTIAL.
           SELECT TOTALS ASSIGN TO "totals".
           SELECT WORK-FILE ASSIGN TO "work".
       DATA DIVISION.
       FILE SECTION.
       FD  REPORT-FILE.
       01  COUNT-LINE.
           05  COUNT-NAME    PIC X(5).
           05  COUNT-VALUE   PIC 9(3).
           05  COUNT-PACKED  PIC S9(3) COMP-3 OCCURS 2 TIMES.
       01  TEXT-LINE         PIC X(30).
       FD  TOTALS.
       01  TOTAL             PIC X(6) VALUE "BEGIN".
       SD  WORK-FILE.
       01  WORK-RECORD.
           05  WORK-KEY      PIC 9(2).
           05  WORK-TEXT     PIC X(3).
       PROCEDURE DIVISION.
       MAIN SECTION.
           DISPLAY "[" TEXT-LINE (1:8) "][" TEXT-LINE (13:) "]".
           ADD 7 TO COUNT-VALUE, COUNT-PACKED (2).
           DISPLAY COUNT-VALUE COUNT-PACKED (1) COUNT-PACKED (2).
           DISPLAY "[" TOTAL "]".
           OPEN OUTPUT REPORT-FILE.
           MOVE SPACES TO COUNT-LINE.
           STRING "short" DELIMITED BY SIZE INTO TEXT-LINE.
           WRITE TEXT-LINE.
           CLOSE REPORT-FILE.
           SORT WORK-FILE ON ASCENDING KEY WORK-KEY
               INPUT PROCEDURE IS GIVE OUTPUT PROCEDURE IS TAKE-IT.
           STOP RUN.
       GIVE SECTION.
       GIVE-ONE.
           ADD 3 TO WORK-KEY.
           RELEASE WORK-RECORD.
       TAKE-IT SECTION.
       TAKE-ONE.
           RETURN WORK-FILE AT END DISPLAY "NOTHING".
           DISPLAY "[" WORK-RECORD "]".
