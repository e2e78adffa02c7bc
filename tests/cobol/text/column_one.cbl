       IDENTIFICATION DIVISION.
       PROGRAM-ID. COLUMN-ONE.
* A comment may begin in column 1; a mark there is none. STOP RUN.
*----------------------
*      DISPLAY "NOT".
       PROCEDURE DIVISION.
*CR123     DISPLAY "MARKED".
*THIS TOO
***********
*CR12*     DISPLAY "OFF".
           STOP RUN.
