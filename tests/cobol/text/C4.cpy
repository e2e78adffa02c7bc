           LABEL RECORD STANDARD
           DATA RECORD IS TR.
       01  TR. 02 F1 PIC X(5).
