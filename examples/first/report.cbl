      * A report with control breaks: sales in the order of region and
      * branch, a total after each branch, after each region and at the
      * end. The record that is different ends the group before it.
       IDENTIFICATION DIVISION.
       PROGRAM-ID. REPORT-WITH-BREAKS.

       DATA DIVISION.
       WORKING-STORAGE SECTION.
       01  ALL-SALES.
           05 PIC X(14) VALUE "NORTHLEEDS0100".
           05 PIC X(14) VALUE "NORTHLEEDS0250".
           05 PIC X(14) VALUE "NORTHYORK 0075".
           05 PIC X(14) VALUE "SOUTHDOVER0300".
           05 PIC X(14) VALUE "SOUTHDOVER0025".
       01  SALE-TABLE REDEFINES ALL-SALES.
           05 SALE OCCURS 5 TIMES INDEXED BY I.
              10 REGION         PIC X(5).
              10 BRANCH         PIC X(5).
              10 AMOUNT         PIC 9(4).

       01  CURRENT-REGION       PIC X(5).
       01  CURRENT-BRANCH       PIC X(5).
       01  TOTALS.
           05 BRANCH-TOTAL      PIC 9(6) VALUE ZERO.
           05 REGION-TOTAL      PIC 9(6) VALUE ZERO.
           05 GRAND-TOTAL       PIC 9(6) VALUE ZERO.

       01  TOTAL-LINE.
           05 STARS             PIC X(4).
           05 TOTAL-NAME        PIC X(16).
           05 SHOWN-TOTAL       PIC ZZZ,ZZ9.

       PROCEDURE DIVISION.
       MAIN-PROGRAM.
           MOVE REGION (1) TO CURRENT-REGION.
           MOVE BRANCH (1) TO CURRENT-BRANCH.
           PERFORM VARYING I FROM 1 BY 1 UNTIL I > 5
               IF REGION (I) NOT = CURRENT-REGION
                   PERFORM BRANCH-BREAK
                   PERFORM REGION-BREAK
               ELSE
                   IF BRANCH (I) NOT = CURRENT-BRANCH
                       PERFORM BRANCH-BREAK
                   END-IF
               END-IF
               MOVE REGION (I) TO CURRENT-REGION
               MOVE BRANCH (I) TO CURRENT-BRANCH
               ADD AMOUNT (I) TO BRANCH-TOTAL
           END-PERFORM.
           PERFORM BRANCH-BREAK.
           PERFORM REGION-BREAK.
           MOVE "***" TO STARS.
           MOVE "ALL" TO TOTAL-NAME.
           MOVE GRAND-TOTAL TO SHOWN-TOTAL.
           DISPLAY TOTAL-LINE.
           STOP RUN.

       BRANCH-BREAK.
           MOVE "*" TO STARS.
           MOVE CURRENT-BRANCH TO TOTAL-NAME.
           MOVE BRANCH-TOTAL TO SHOWN-TOTAL.
           DISPLAY TOTAL-LINE.
           ADD BRANCH-TOTAL TO REGION-TOTAL.
           MOVE ZERO TO BRANCH-TOTAL.

       REGION-BREAK.
           MOVE "**" TO STARS.
           MOVE CURRENT-REGION TO TOTAL-NAME.
           MOVE REGION-TOTAL TO SHOWN-TOTAL.
           DISPLAY TOTAL-LINE.
           ADD REGION-TOTAL TO GRAND-TOTAL.
           MOVE ZERO TO REGION-TOTAL.
