           VERB-1 +3 TO COUNTER-X NOTHING.
           MOVE "ABC" TO ELEM IN REP-TAB (1).
           MOVE ALL "Z" TO ELEM ( IDX-EXPR ).
       PARA-X.
           DISPLAY "IN PARA " CT.
       PARA-END.
           MOVE 3 TO CT. MOVE "Q" TO ELEM(CT). MOVE "R" TO ELEM(1)
           ELEM(4).
           DISPLAY REP-TAB.
