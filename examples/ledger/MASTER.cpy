      * MASTER: one record an account.
       01  MASTER-RECORD.
           05  AC-NUMBER           PIC 9(6).
           05  AC-NAME             PIC X(24).
           05  AC-STATUS           PIC X.
               88  AC-OPEN         VALUE "A".
           05  AC-OPENING          PIC S9(11)V99 COMP-3.
           05  AC-BALANCE          PIC S9(11)V99 COMP-3.
           05  AC-LIMIT            PIC S9(9)V99 COMP-3.
           05  AC-RATE             PIC S9V9(4) COMP-3.
           05  AC-POSTED           PIC S9(7) COMP-3.
           05  AC-LAST-DATE        PIC 9(8).
