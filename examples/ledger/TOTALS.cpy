      * The totals that all programs of the suite share.
       01  LEDGER-TOTALS EXTERNAL.
           05  LT-ACCOUNTS         PIC S9(9) COMP-3.
           05  LT-STATEMENTS       PIC S9(9) COMP-3.
           05  LT-READ             PIC S9(9) COMP-3.
           05  LT-POSTED           PIC S9(9) COMP-3.
           05  LT-REJECTED         PIC S9(9) COMP-3.
           05  LT-REASON           PIC S9(9) COMP-3 OCCURS 11.
           05  LT-DEPOSITS         PIC S9(13)V99 COMP-3.
           05  LT-WITHDRAWALS      PIC S9(13)V99 COMP-3.
           05  LT-FEES             PIC S9(13)V99 COMP-3.
           05  LT-INTEREST         PIC S9(13)V99 COMP-3.
