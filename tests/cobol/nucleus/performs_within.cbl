       IDENTIFICATION DIVISION.
       PROGRAM-ID. PERFORMS-WITHIN.
      * PERFORMs that meet themselves, directly and through others.
       DATA DIVISION.
       WORKING-STORAGE SECTION.
       01  N PIC 9(3) VALUE 0.
       01  HANOI. 03 LV PIC 99 COMP VALUE 0. 03 MOVES PIC 9(4) VALUE 0.
           03 ST OCCURS 20. 05 DISKS PIC 99. 05 A PIC X. 05 B PIC X.
              05 C PIC X.
       01  QS. 03 LST PIC 9(2) OCCURS 10. 03 SP PIC 99 VALUE 0.
           03 FRAME OCCURS 20. 05 LO PIC S99. 05 HI PIC S99. 05 MD PIC
           S99.
       01  I PIC S99. 01 J PIC S99. 01 PIVOT PIC 99. 01 TMP PIC 99.
       01  F-STACK. 03 FS OCCURS 20 PIC 99. 01 FP PIC 99 VALUE 0.
       01  FIB PIC 9(5) VALUE 0. 01 CHOICE PIC 9 VALUE 0.
       PROCEDURE DIVISION.
       MAIN.
           PERFORM REC. DISPLAY " " N.
           MOVE 1 TO LV. MOVE 5 TO DISKS (1). MOVE "A" TO A (1).
           MOVE "B" TO B (1). MOVE "C" TO C (1).
           PERFORM MOVE-TOWER. DISPLAY "MOVES " MOVES " LEVEL " LV.
           MOVE "37051299014283640011" TO QS (1:20).
           MOVE 1 TO SP LO (1). MOVE 10 TO HI (1).
           PERFORM SORT-PART THRU SORT-EXIT. DISPLAY QS (1:20).
           MOVE 1 TO FP. MOVE 12 TO FS (1). PERFORM FIBO. DISPLAY FIB.
           PERFORM EVEN-STEP. DISPLAY "N " N.
           PERFORM MENU. DISPLAY "AFTER MENU".
           PERFORM SEC-A. DISPLAY "N " N.
           GO TO ABANDON.
       REC.
           ADD 1 TO N. IF N < 5 PERFORM REC. DISPLAY "R" NO ADVANCING.
       MOVE-TOWER.
           IF DISKS (LV) > 0
             ADD 1 TO LV
             COMPUTE DISKS (LV) = DISKS (LV - 1) - 1
             MOVE A (LV - 1) TO A (LV) MOVE C (LV - 1) TO B (LV)
             MOVE B (LV - 1) TO C (LV)
             PERFORM MOVE-TOWER
             SUBTRACT 1 FROM LV
             ADD 1 TO MOVES
             ADD 1 TO LV
             COMPUTE DISKS (LV) = DISKS (LV - 1) - 1
             MOVE C (LV - 1) TO A (LV) MOVE B (LV - 1) TO B (LV)
             MOVE A (LV - 1) TO C (LV)
             PERFORM MOVE-TOWER
             SUBTRACT 1 FROM LV
           END-IF.
       SORT-PART.
           IF LO (SP) >= HI (SP) GO TO SORT-EXIT.
           MOVE LST (HI (SP)) TO PIVOT. MOVE LO (SP) TO I.
           PERFORM VARYING J FROM LO (SP) BY 1 UNTIL J >= HI (SP)
             IF LST (J) < PIVOT
               MOVE LST (I) TO TMP MOVE LST (J) TO LST (I)
               MOVE TMP TO LST (J) ADD 1 TO I
             END-IF
           END-PERFORM.
           MOVE LST (I) TO TMP MOVE LST (HI (SP)) TO LST (I).
           MOVE TMP TO LST (HI (SP)). MOVE I TO MD (SP).
           ADD 1 TO SP. MOVE LO (SP - 1) TO LO (SP).
           COMPUTE HI (SP) = MD (SP - 1) - 1.
           PERFORM SORT-PART THRU SORT-EXIT. SUBTRACT 1 FROM SP.
           ADD 1 TO SP. MOVE HI (SP - 1) TO HI (SP).
           COMPUTE LO (SP) = MD (SP - 1) + 1.
           PERFORM SORT-PART THRU SORT-EXIT. SUBTRACT 1 FROM SP.
       SORT-EXIT. EXIT.
       FIBO.
           IF FS (FP) < 2 ADD FS (FP) TO FIB
           ELSE
             PERFORM 2 TIMES
               CONTINUE
             END-PERFORM
             COMPUTE FS (FP + 1) = FS (FP) - 1 ADD 1 TO FP
             PERFORM FIBO SUBTRACT 1 FROM FP
             COMPUTE FS (FP + 1) = FS (FP) - 2 ADD 1 TO FP
             PERFORM FIBO SUBTRACT 1 FROM FP
           END-IF.
       EVEN-STEP.
           IF N > 0 SUBTRACT 1 FROM N PERFORM ODD-STEP.
           DISPLAY "E" N ";" NO ADVANCING.
       ODD-STEP.
           IF N > 0 SUBTRACT 1 FROM N PERFORM EVEN-STEP.
           DISPLAY "O" N ";" NO ADVANCING.
       MENU.
           ADD 1 TO CHOICE. DISPLAY "MENU " CHOICE.
           IF CHOICE < 4 PERFORM ACTION.
           DISPLAY "MENU ENDS".
       ACTION.
           DISPLAY "ACTION". PERFORM MENU.
           DISPLAY "ACTION ENDS".
       SEC-A SECTION.
       A1. ADD 1 TO N. IF N < 3 PERFORM SEC-A.
       A2. DISPLAY "A2" N.
       LAST-SEC SECTION.
       ABANDON.
           MOVE 0 TO N.
       AGAIN.
           ADD 1 TO N. IF N < 4 PERFORM LEAVES.
           DISPLAY "RETURNED " N. GO TO FIN.
       LEAVES.
           IF N < 3 GO TO AGAIN.
           DISPLAY "LEAVES ENDS".
       FIN. STOP RUN.
