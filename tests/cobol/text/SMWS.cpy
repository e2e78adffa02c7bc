       01  GRP-WS.
           02  W2 PIC X(4) VALUE IS "ORIG".
           02  W3 PIC S9(3) SIGN LEADING SEPARATE VALUE +5.
       01  GRP-Y.
           02  FLD-B PIC X OCCURS 2.
       01  BAR PIC 99. 01 FOO-X PIC 9.
