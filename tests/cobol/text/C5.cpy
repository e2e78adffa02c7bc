       02 I1 PIC X(2) VALUE "II".
       02 I2 PIC 9(2)
           VALUE 42.
