           ADD 10 TO TALLY-X.
