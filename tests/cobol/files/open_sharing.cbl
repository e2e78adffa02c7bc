       IDENTIFICATION DIVISION.
       PROGRAM-ID. SHARE.
      * What an OPEN says of other users: a second FD of the same file
      * is another user.
       ENVIRONMENT DIVISION.
       INPUT-OUTPUT SECTION.
       FILE-CONTROL.
           SELECT ONE ASSIGN TO "shared.dat" ORGANIZATION RELATIVE
               ACCESS DYNAMIC RELATIVE KEY K1 FILE STATUS S1.
           SELECT TWO ASSIGN TO "shared.dat" ORGANIZATION RELATIVE
               ACCESS DYNAMIC RELATIVE KEY K2 FILE STATUS S2.
       DATA DIVISION.
       FILE SECTION.
       FD  ONE.
       01  R1 PIC X(10).
       FD  TWO.
       01  R2 PIC X(10).
       WORKING-STORAGE SECTION.
       01  K1 PIC 9(4) VALUE 1.
       01  K2 PIC 9(4) VALUE 1.
       01  S1 PIC XX.
       01  S2 PIC XX.
       PROCEDURE DIVISION.
       MAIN-PARA.
           OPEN OUTPUT ONE.
           MOVE "FIRST" TO R1.
           WRITE R1.
           CLOSE ONE.
      * Nothing said: everybody.
           OPEN I-O ONE.
           OPEN INPUT TWO.
           DISPLAY "PLAIN     " S1 " " S2.
           CLOSE ONE TWO.
           OPEN I-O SHARING WITH NO OTHER ONE.
           OPEN INPUT TWO.
           DISPLAY "NO OTHER  " S1 " " S2.
           CLOSE ONE TWO.
           OPEN I-O SHARING WITH READ ONLY ONE.
           OPEN INPUT TWO.
           DISPLAY "READ ONLY " S1 " " S2.
           CLOSE TWO.
           OPEN I-O TWO.
           DISPLAY "WRITER    " S1 " " S2.
           CLOSE ONE TWO.
           OPEN INPUT ONE WITH LOCK.
           OPEN INPUT TWO.
           DISPLAY "WITH LOCK " S1 " " S2.
           CLOSE ONE TWO.
      * And what an earlier OPEN said is over.
           OPEN I-O SHARING WITH ALL OTHER ONE.
           OPEN I-O TWO.
           DISPLAY "ALL OTHER " S1 " " S2.
           CLOSE ONE TWO.
           OPEN I-O ONE.
           OPEN I-O TWO.
           DISPLAY "PLAIN     " S1 " " S2.
           CLOSE ONE TWO.
           STOP RUN.
