           DISPLAY "MAIN SAME".
