           .
           02  W-NUM PIC 9(3) VALUE 77.
