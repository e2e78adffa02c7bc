       IDENTIFICATION DIVISION.
       PROGRAM-ID. DC.
       ENVIRONMENT DIVISION.
       INPUT-OUTPUT SECTION.
       FILE-CONTROL.
           SELECT A ASSIGN "dc-a.dat" STATUS SA.
           SELECT B ASSIGN "dc-b.dat" STATUS SB.
           SELECT X1 ASSIGN "dc-x.dat" STATUS SX INDEXED RECORD KEY XK.
       DATA DIVISION.
       FILE SECTION.
       FD A. 01 AR PIC X(10).
       FD B. 01 BR PIC X(10).
       FD X1. 01 XR. 02 XK PIC X(2).
       WORKING-STORAGE SECTION.
       77 SA PIC XX. 77 SB PIC XX. 77 SX PIC XX.
       77 N PIC 9 VALUE 0.
       PROCEDURE DIVISION.
       DECLARATIVES.
       DA SECTION. USE AFTER ERROR PROCEDURE A.
       DA-1. ADD 1 TO N. DISPLAY "USE A " SA.
           IF N = 1 OPEN INPUT B DISPLAY "AFTER B " SB.
           PERFORM DA-9.
           GO TO DA-X.
       DA-9. DISPLAY "DA-9".
       DA-X. EXIT.
       DB SECTION. USE AFTER ERROR PROCEDURE ON B.
       DB-1. DISPLAY "USE B " SB. PERFORM DA-9.
      * Neither procedure is entered again while it runs.
           CLOSE B. CLOSE A. DISPLAY "CLOSED " SB SA.
       DX SECTION. USE AFTER ERROR PROCEDURE ON X1.
       DX-1. DISPLAY "USE X " SX.
           IF SX = "47" ADD 1 TO N GO TO P2.
       END DECLARATIVES.
       MAIN-S SECTION.
       P1. OPEN INPUT A. PERFORM DA-9.
           DISPLAY "BACK".
           OPEN OUTPUT A. CLOSE A. OPEN INPUT A.
           READ A. DISPLAY "READ WITHOUT AT END " SA.
           READ A AT END DISPLAY "AT END".
           CLOSE A.
           OPEN OUTPUT X1.
           MOVE "BB" TO XK. WRITE XR. MOVE "AA" TO XK. WRITE XR.
           MOVE "AA" TO XK. WRITE XR INVALID KEY DISPLAY "IK".
           CLOSE X1. OPEN INPUT X1.
           MOVE "ZZ" TO XK. START X1 KEY NOT < XK.
           DISPLAY SX. CLOSE X1.
      * GO TO out of a USE procedure ends it.
       P2. IF N < 6 READ X1 DISPLAY "NOT HERE".
           STOP RUN.
