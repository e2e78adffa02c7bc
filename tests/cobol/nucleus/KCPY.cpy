       01  :TAG:-REC.
           05  :TAG:-A PIC X(3) VALUE "AAA".
           05  B-:TAG: PIC X(3) VALUE "BBB".
           05  DUMMY-NAME PIC 9(3) VALUE 123.
