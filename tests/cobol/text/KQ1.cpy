      * A COMMENT IN THE TEXT
           MOVE    ALPHA
      *    ANOTHER
               TO BETA, GAMMA; DELTA.
           ADD 1, 2 TO NUM-1 (1, 2).
      D    DISPLAY "DEBUG IN COPY".
           IF ALPHA = "A""B" DISPLAY "QUOTED" ELSE NEXT SENTENCE.
