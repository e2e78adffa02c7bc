      * A text file: written, read again, and its amounts added up.
      * LINE SEQUENTIAL is a record a line, without trailing spaces.
      * The loop reads until the switch of level 88 is true.
       IDENTIFICATION DIVISION.
       PROGRAM-ID. TEXTFILE.

       ENVIRONMENT DIVISION.
       INPUT-OUTPUT SECTION.
       FILE-CONTROL.
           SELECT SALES ASSIGN TO "sales.txt"
               ORGANIZATION IS LINE SEQUENTIAL
               FILE STATUS IS SALES-STATUS.

       DATA DIVISION.
       FILE SECTION.
       FD  SALES.
       01  SALE.
           05 CUSTOMER          PIC X(10).
           05 AMOUNT            PIC 9(5)V99.

       WORKING-STORAGE SECTION.
       01  SALES-STATUS         PIC XX.
       01  SWITCHES.
           05 END-SWITCH        PIC X VALUE "N".
              88 END-OF-SALES   VALUE "Y".
       01  TOTAL                PIC 9(7)V99 VALUE ZERO.
       01  SALE-LINE.
           05 SHOWN-CUSTOMER    PIC X(10).
           05 SHOWN-AMOUNT      PIC ZZ,ZZ9.99.

       PROCEDURE DIVISION.
       MAIN-PROGRAM.
           PERFORM WRITE-SALES.
           PERFORM READ-SALES.
           STOP RUN.

       WRITE-SALES.
           OPEN OUTPUT SALES.
           MOVE "ADAMS" TO CUSTOMER.
           MOVE 1250.5 TO AMOUNT.
           WRITE SALE.
           MOVE "BAKER" TO CUSTOMER.
           MOVE 99.95 TO AMOUNT.
           WRITE SALE.
           MOVE "CLARK" TO CUSTOMER.
           MOVE 10000 TO AMOUNT.
           WRITE SALE.
           CLOSE SALES.

       READ-SALES.
           OPEN INPUT SALES.
           IF SALES-STATUS NOT = "00"
               DISPLAY "cannot open sales.txt: " SALES-STATUS
               STOP RUN
           END-IF.
           PERFORM UNTIL END-OF-SALES
               READ SALES
                   AT END SET END-OF-SALES TO TRUE
                   NOT AT END PERFORM SHOW-SALE
               END-READ
           END-PERFORM.
           CLOSE SALES.
           MOVE "TOTAL" TO SHOWN-CUSTOMER.
           MOVE TOTAL TO SHOWN-AMOUNT.
           DISPLAY SALE-LINE.

       SHOW-SALE.
           MOVE CUSTOMER TO SHOWN-CUSTOMER.
           MOVE AMOUNT TO SHOWN-AMOUNT.
           ADD AMOUNT TO TOTAL.
           DISPLAY SALE-LINE.
