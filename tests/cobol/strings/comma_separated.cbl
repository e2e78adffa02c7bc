       IDENTIFICATION DIVISION.
       PROGRAM-ID. Y3.
       ENVIRONMENT DIVISION.
       INPUT-OUTPUT SECTION.
       FILE-CONTROL.
           SELECT F ASSIGN TO 'y3.txt'
           ORGANIZATION IS LINE SEQUENTIAL.
       DATA DIVISION.
       FILE SECTION.
       FD F.
       01 R PIC X(40).
       WORKING-STORAGE SECTION.
       01 TBL. 05 ROWS OCCURS 1 TO 50 TIMES DEPENDING ON CNT
          INDEXED BY IX. 10 NM PIC X(10). 10 QTY PIC 9(4).
       01 CNT PIC 99 VALUE 0. 01 EOF-FLAG PIC X VALUE 'N'.
       01 TOT PIC 9(6) VALUE 0.
       PROCEDURE DIVISION.
       0100-START.
           OPEN OUTPUT F
           WRITE R FROM 'apples,10' WRITE R FROM 'pears,200'
           WRITE R FROM 'figs,7'
           CLOSE F
           OPEN INPUT F
           PERFORM 0200-READ UNTIL EOF-FLAG = 'Y'
           CLOSE F
           PERFORM VARYING IX FROM 1 BY 1 UNTIL IX > CNT
               DISPLAY NM (IX) QTY (IX) ADD QTY (IX) TO TOT
           END-PERFORM
           SORT ROWS ON DESCENDING KEY QTY
           DISPLAY NM (1) TOT
           SET IX TO 1
           SEARCH ROWS AT END DISPLAY 'none'
             WHEN NM (IX) = 'figs' DISPLAY 'figs ' QTY (IX)
           END-SEARCH
           GOBACK.
       0200-READ.
           READ F
             AT END MOVE 'Y' TO EOF-FLAG
             NOT AT END
               ADD 1 TO CNT
               UNSTRING R DELIMITED BY ',' INTO NM (CNT) QTY (CNT)
           END-READ.
