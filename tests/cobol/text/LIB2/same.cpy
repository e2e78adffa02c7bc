           DISPLAY "LIB2 SAME".
