      *PARAGRAPHS OF A COPYBOOK
       PRC-1.
           ADD 1 TO TALLY-X
           COPY INNER.
       PRC-2.
           EXIT.
