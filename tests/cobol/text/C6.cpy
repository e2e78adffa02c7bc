             PIC WW9.99.
