           MOVE THIS-IS-A-VERY-LONG-DATA-NAME1 TO TALL
      -    Y-X.
           IF TALLY-X
      *    COMMENT
               IS EQUAL
               TO 55
                      DISPLAY "FIFTY-FIVE"
                ELSE  DISPLAY "OTHER" TALLY-X.
