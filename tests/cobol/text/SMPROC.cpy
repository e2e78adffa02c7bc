           MOVE "Q" TO FLD-B OF GRP-Y (2).
           PERFORM PARA-Z.
           ADD 1 TO S1.
           MOVE 5 TO S2.
