       IDENTIFICATION DIVISION.
       PROGRAM-ID. TICTAC.
       DATA DIVISION.
       WORKING-STORAGE SECTION.
       01 BOARD VALUE "123456789".
          05 CELL PIC X OCCURS 9.
       01 BOARD-R REDEFINES BOARD.
          05 BROW OCCURS 3.
             10 BCELL PIC X OCCURS 3.
       01 MOVE-NO PIC 99 VALUE 0.
       01 INP PIC X(5).
       01 POS PIC 9.
       01 PLAYER PIC X VALUE "X".
       01 R PIC 9.
       01 LINES-TXT.
          05 PIC X(24) VALUE "123456789147258369159357".
       01 LINES-R REDEFINES LINES-TXT.
          05 LN OCCURS 8.
             10 LC PIC 9 OCCURS 3.
       01 WON PIC X VALUE "N".
       PROCEDURE DIVISION.
       MAIN.
           PERFORM TEST AFTER UNTIL WON = "Y" OR MOVE-NO = 9
               PERFORM SHOW-BOARD
               PERFORM GET-MOVE
           END-PERFORM
           PERFORM SHOW-BOARD
           IF WON = "Y" DISPLAY PLAYER " wins" ELSE DISPLAY "draw".
           STOP RUN.
       SHOW-BOARD.
           PERFORM VARYING R FROM 1 BY 1 UNTIL R > 3
               DISPLAY BCELL(R 1) "|" BCELL(R 2) "|" BCELL(R 3)
           END-PERFORM.
       GET-MOVE.
           DISPLAY "Move for " PLAYER ": " WITH NO ADVANCING.
           ACCEPT INP.
           IF INP(1:1) NOT NUMERIC OR INP(1:1) = "0"
               DISPLAY "invalid"
               EXIT PARAGRAPH
           END-IF.
           MOVE INP(1:1) TO POS.
           IF CELL(POS) = "X" OR "O"
               DISPLAY "taken"
           ELSE
               MOVE PLAYER TO CELL(POS)
               ADD 1 TO MOVE-NO
               PERFORM CHECK-WIN
               IF WON = "N"
                   IF PLAYER = "X" MOVE "O" TO PLAYER
                   ELSE MOVE "X" TO PLAYER
                   END-IF
               END-IF
           END-IF.
       CHECK-WIN.
           PERFORM VARYING R FROM 1 BY 1 UNTIL R > 8 OR WON = "Y"
               IF CELL(LC(R 1)) = PLAYER AND
                  CELL(LC(R 2)) = PLAYER AND CELL(LC(R 3)) = PLAYER
                   MOVE "Y" TO WON
               END-IF
           END-PERFORM.
