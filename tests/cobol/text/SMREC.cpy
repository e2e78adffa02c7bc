           .
           02  TST-FLD-1 PIC 9(5).
           02  TST-FLD-2 PIC X(10).
