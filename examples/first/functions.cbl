      * Intrinsic functions: a function is used where a value is.
      * A date is moved by days through its day number, counted from
      * 31 December 1600.
       IDENTIFICATION DIVISION.
       PROGRAM-ID. FUNCTIONS.

       DATA DIVISION.
       WORKING-STORAGE SECTION.
       01  SIDES.
           05 SIDE-A            PIC 9(3) VALUE 3.
           05 SIDE-B            PIC 9(3) VALUE 4.
       01  LONG-SIDE            PIC 9(3)V99.
       01  SHOWN                PIC ZZ9.99.
       01  PRICES.
           05 PRICE             PIC 9(3) OCCURS 5 TIMES.
       01  DAY-NUMBER           PIC 9(7).
       01  DUE-DATE             PIC 9(8).
       01  RAW-NUMBER           PIC X(10) VALUE " -1,234.5 ".
       01  CLEAN-NUMBER         PIC S9(5)V99.
       01  SHOWN-NUMBER         PIC -(5)9.99.
       01  TODAY                PIC X(21).

       PROCEDURE DIVISION.
       MAIN-PROGRAM.
           COMPUTE LONG-SIDE =
               FUNCTION SQRT (SIDE-A ** 2 + SIDE-B ** 2).
           MOVE LONG-SIDE TO SHOWN.
           DISPLAY "long side " SHOWN.

           MOVE "120045230010099" TO PRICES.
           COMPUTE SHOWN = FUNCTION SUM (PRICE (ALL)).
           DISPLAY "sum       " SHOWN.
           COMPUTE SHOWN = FUNCTION MAX (PRICE (ALL)).
           DISPLAY "dearest   " SHOWN.
           COMPUTE SHOWN = FUNCTION MEAN (PRICE (ALL)).
           DISPLAY "mean      " SHOWN.

      *    Thirty days after the end of January of a leap year.
           COMPUTE DAY-NUMBER =
               FUNCTION INTEGER-OF-DATE (20240131) + 30.
           COMPUTE DUE-DATE =
               FUNCTION DATE-OF-INTEGER (DAY-NUMBER).
           DISPLAY "due on    " DUE-DATE.

           COMPUTE CLEAN-NUMBER = FUNCTION NUMVAL-C (RAW-NUMBER).
           MOVE CLEAN-NUMBER TO SHOWN-NUMBER.
           DISPLAY "number    " SHOWN-NUMBER.
           DISPLAY FUNCTION UPPER-CASE ("upper case").
           DISPLAY FUNCTION REVERSE ("stressed").

           MOVE FUNCTION CURRENT-DATE TO TODAY.
           IF TODAY (1:8) IS NUMERIC AND TODAY (1:4) > "2000"
               DISPLAY "today is a date"
           END-IF.
           STOP RUN.
