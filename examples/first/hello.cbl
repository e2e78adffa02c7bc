      * The first program. Columns 1 to 6 are for numbers, a star in
      * column 7 makes a comment, headers begin in column 8 and
      * statements in column 12.
      *
      *     kvrcob run hello.cbl
       IDENTIFICATION DIVISION.
       PROGRAM-ID. HELLO.

       PROCEDURE DIVISION.
           DISPLAY "Hello, world".
           STOP RUN.
