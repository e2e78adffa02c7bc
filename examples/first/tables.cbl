      * Tables: SEARCH goes through one from where the index is,
      * SEARCH ALL halves one that is in order, and a table of two
      * dimensions has two subscripts.
       IDENTIFICATION DIVISION.
       PROGRAM-ID. TABLES.

       DATA DIVISION.
       WORKING-STORAGE SECTION.
       01  RATES-AS-TEXT.
           05 PIC X(7) VALUE "CAD1371".
           05 PIC X(7) VALUE "CHF0882".
           05 PIC X(7) VALUE "EUR0921".
           05 PIC X(7) VALUE "JPY1496".
       01  RATE-TABLE REDEFINES RATES-AS-TEXT.
           05 RATE OCCURS 4 TIMES
                   ASCENDING KEY IS CURRENCY-CODE
                   INDEXED BY R.
              10 CURRENCY-CODE  PIC X(3).
              10 PER-DOLLAR     PIC 9V999.

       01  WANTED               PIC X(3).
       01  SHOWN-RATE           PIC 9.999.

       01  TIMES-TABLE.
           05 TABLE-ROW OCCURS 3 TIMES.
              10 PRODUCT        PIC ZZ9 OCCURS 4 TIMES.
       01  X                    PIC 9.
       01  Y                    PIC 9.

       PROCEDURE DIVISION.
       MAIN-PROGRAM.
           MOVE "EUR" TO WANTED.
           PERFORM FIND-RATE.
           MOVE "XXX" TO WANTED.
           PERFORM FIND-RATE.

           SET R TO 1.
           SEARCH RATE
               AT END DISPLAY "no rate over 1.2"
               WHEN PER-DOLLAR (R) > 1.2
                   DISPLAY "first over 1.2: " CURRENCY-CODE (R)
           END-SEARCH.

           PERFORM VARYING X FROM 1 BY 1 UNTIL X > 3
                   AFTER Y FROM 1 BY 1 UNTIL Y > 4
               COMPUTE PRODUCT (X, Y) = X * Y
           END-PERFORM.
           PERFORM VARYING X FROM 1 BY 1 UNTIL X > 3
               DISPLAY TABLE-ROW (X)
           END-PERFORM.
           STOP RUN.

       FIND-RATE.
           SEARCH ALL RATE
               AT END DISPLAY "no rate of " WANTED
               WHEN CURRENCY-CODE (R) = WANTED
                   MOVE PER-DOLLAR (R) TO SHOWN-RATE
                   DISPLAY WANTED " " SHOWN-RATE
           END-SEARCH.
