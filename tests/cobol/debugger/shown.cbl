       IDENTIFICATION DIVISION.
       PROGRAM-ID. SHOWN.
       DATA DIVISION.
       WORKING-STORAGE SECTION.
       01  REC GLOBAL.
           05  TOTAL            PIC S9(7)V99 COMP-3 VALUE -12.34.
           05  LAST-SIGN        PIC S9(4) VALUE -5.
           05  FIRST-SIGN       PIC S99V9 SIGN LEADING VALUE -1.5.
           05  OWN-SIGN         PIC S99 SIGN TRAILING SEPARATE VALUE 7.
           05  BINARY-ITEM      PIC S9(8) COMP VALUE -77.
           05  FLOATING         COMP-2 VALUE 1.5.
           05  THOUSANDS        PIC 9(2)PPP VALUE 12000.
           05  SHELF OCCURS 3.
               10  BOX          PIC X(2) OCCURS 7.
           05  NOT-A-NUMBER     PIC 99.
       01  SECOND.
           05  TOTAL            PIC 9 VALUE 4.
       01  SUB                  PIC 9 VALUE 2.
       01  HIGH-FIRST           PIC 9(4) COMP-X VALUE 258.
       01  SHORT-FLOAT          COMP-1 VALUE 0.7.
       PROCEDURE DIVISION.
       MAIN-PARA.
           MOVE "AB" TO BOX (2, 3).
           MOVE "?" TO SECOND.
           MOVE "ZZ" TO REC (72:2).
           CALL "INNER".
           STOP RUN.
       IDENTIFICATION DIVISION.
       PROGRAM-ID. INNER.
       DATA DIVISION.
       WORKING-STORAGE SECTION.
       01  MINE                 PIC X(3) VALUE "abc".
       PROCEDURE DIVISION.
           PERFORM SHOW-IT.
           EXIT PROGRAM.
       SHOW-IT.
           DISPLAY MINE.
       END PROGRAM INNER.
       END PROGRAM SHOWN.
