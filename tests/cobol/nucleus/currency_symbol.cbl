      * The sign of a currency and what stands for it in pictures.
       IDENTIFICATION DIVISION.
       PROGRAM-ID. CURR.
       ENVIRONMENT DIVISION.
       CONFIGURATION SECTION.
       SPECIAL-NAMES.
           CURRENCY SIGN IS "E" WITH PICTURE SYMBOL "U".
       DATA DIVISION.
       WORKING-STORAGE SECTION.
       01 A PIC UUU9.99.
       01 B PIC U99.
       01 N PIC S9(3)V99.
       PROCEDURE DIVISION.
           MOVE 12.5 TO A. DISPLAY A.
           MOVE 7 TO B. DISPLAY B.
           MOVE A TO N. DISPLAY N.
           COMPUTE N = FUNCTION NUMVAL-C("E 3.25").
           DISPLAY N.
           STOP RUN.
