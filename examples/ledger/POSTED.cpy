      * POSTED: one record a posting. Also the record of the sort.
           05  :PRE:-REFERENCE     PIC X(8).
           05  :PRE:-ACCOUNT       PIC 9(6).
           05  :PRE:-DATE          PIC 9(8).
           05  :PRE:-SEQUENCE      PIC S9(9) COMP-3.
           05  :PRE:-TYPE          PIC X.
           05  :PRE:-AMOUNT        PIC S9(11)V99 COMP-3.
           05  :PRE:-DAYS          PIC 9(8).
