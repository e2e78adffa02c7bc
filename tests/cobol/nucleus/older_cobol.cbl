      * Statements of 1968 and 1974 that programs still have.
       IDENTIFICATION DIVISION.
       PROGRAM-ID. P01.
       REMARKS. OLD PROGRAM
           WITH TWO LINES.
       ENVIRONMENT DIVISION.
       DATA DIVISION.
       WORKING-STORAGE SECTION.
       77  A PIC 9(3) VALUE 5.
       77  B PIC X(3) VALUE 'XYZ'.
       PROCEDURE DIVISION.
       START-IT.
           EXHIBIT NAMED A B.
           NOTE THIS IS A NOTE IN THE PARAGRAPH.
           EXHIBIT A ' ' B.
           IF A = 5 THEN DISPLAY 'FIVE' OTHERWISE DISPLAY 'OTHER'.
           IF A GREATER 4 DISPLAY 'GT' ELSE NEXT SENTENCE.
           IF A EQUALS 5 DISPLAY 'EQS'.
           IF A UNEQUAL TO 6 DISPLAY 'UNEQ'.
           IF A EXCEEDS 4 DISPLAY 'EXC'.
           READY TRACE.
           RESET TRACE.
           COMPUTE A EQUALS A + 1.
           DISPLAY A UPON CONSOLE.
           GO TO FINI.
       NOTE-PARA.
           NOTE ALL THIS. STOP RUN. DISPLAY X.
       FINI.
           STOP RUN.
