           01  MIDDLE-ITEM PIC X.
