000100 IDENTIFICATION DIVISION.
000200 PROGRAM-ID. R1.
       ENVIRONMENT DIVISION.
       INPUT-OUTPUT SECTION.
       FILE-CONTROL.
           COPY SELX.
             ORGANIZATION SEQUENTIAL.
       DATA DIVISION.
       FILE SECTION.
       FD  X-FILE COPY FDX.
       WORKING-STORAGE SECTION.
       01  TALLY-X PIC 9(3) VALUE 0.
       01  AMT PIC COPY PIX. VALUE 12.5.
       01  THIS-IS-A-VERY-LONG-DATA-NAME1 PIC 99 VALUE 55.
       01  XX-TAB. 02 XX-E PIC 9 OCCURS 3 VALUE 2.
       77  A-B PIC 9 VALUE 1. 77 A PIC 9 VALUE 2. 77 B PIC 9 VALUE 3.
       77  SUM1 PIC 9(4).
       PROCEDURE DIVISION.
       MAIN-PARA.
           OPEN OUTPUT X-FILE. MOVE 5 TO X-A. WRITE X-REC.
           CLOSE X-FILE.
           PERFORM PRC-1 THRU PRC-2. DISPLAY TALLY-X.
           COPY LONGW. DISPLAY AMT.
           COPY LONGW REPLACING
              THIS-IS-A-VERY-LONG-DATA-NAME1 BY 7
              TALLY-X BY XX-E (2)
              "FIFTY-FIVE" BY "SEVEN"
              55 BY 7.
           COPY same. COPY same OF LIB2. COPY "same.cpy" IN "LIB2".
           DISPLAY "X" COPY same REPLACING DISPLAY BY "Y"
               ==.== BY ====. .
           REPLACE ==COPY-WORD== BY ==DISPLAY "COPIED"==
             =="ABC"== BY =="XYZ"==
             ==:T:== BY ==TALLY==
             ==MINUS A B== BY ==COMPUTE SUM1 = A - B + 1==
             ==A-B== BY ==A - B==.
           COPY-WORD. DISPLAY "ABC" 'ABC'. MOVE 1 TO :T:-X.
           DISPLAY TALLY-X. MINUS
             A
             B. DISPLAY SUM1.
           COMPUTE SUM1 = A-B + 3. DISPLAY SUM1.
           REPLACE OFF. DISPLAY A-B.
           GO TO FIN.
       COPY PRC.
       FIN. STOP RUN.
