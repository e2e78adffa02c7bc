       IDENTIFICATION DIVISION.
       PROGRAM-ID. C1.
       DATA DIVISION.
       WORKING-STORAGE SECTION.
       01 G. 05 A PIC 9(3). 05 B PIC S9(3) COMP-3. 05 C PIC S9(3).
       01 N PIC 9(5).
       PROCEDURE DIVISION.
       P1.
           MOVE SPACES TO G.
           DISPLAY "START".
           ADD 1 TO B.
           COMPUTE N = A + 1.
           DISPLAY N.
           STOP RUN.
