       IDENTIFICATION DIVISION.
       PROGRAM-ID. EN1.
       DATA DIVISION.
       WORKING-STORAGE SECTION.
       01 A PIC 99 VALUE 5.
       01 B PIC X(5) VALUE "HELLO".
       01 PP USAGE PROCEDURE-POINTER.
       PROCEDURE DIVISION.
           CALL "EN2" USING A.
           CALL "EN2B" USING B A.
           SET PP TO ENTRY "EN2C".
           CALL PP.
           CALL PP.
           CANCEL "EN2".
           CALL "EN2C".
           STOP RUN.
       END PROGRAM EN1.
       IDENTIFICATION DIVISION.
       PROGRAM-ID. EN2.
       DATA DIVISION.
       WORKING-STORAGE SECTION.
       01 N PIC 99 VALUE 0.
       LINKAGE SECTION.
       01 X PIC 99.
       01 Y PIC X(5).
       PROCEDURE DIVISION USING X.
           ADD 1 TO N. DISPLAY "MAIN ENTRY " N X.
           GOBACK.
           ENTRY "EN2B" USING Y X.
           ADD 1 TO N. DISPLAY "EN2B " N Y X.
           ENTRY "EN2C".
           ADD 1 TO N. DISPLAY "EN2C " N.
           GOBACK.
