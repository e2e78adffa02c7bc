      * Items of one to four digits, which the program reads by itself
      * where all are plain: with each sign and letter they are what an
      * item of five digits is.
       IDENTIFICATION DIVISION.
       PROGRAM-ID. FEWDIGITS.
       DATA DIVISION.
       WORKING-STORAGE SECTION.
       01 LASTS PIC X(40) VALUE
           "0123456789pqrstuvwxy{ABCDEFGHI}JKLMNOPQR".
       01 FIRSTS PIC X(16) VALUE "0000987012345999".
       01 X.
           02 FILLER PIC X VALUE "0".
           02 X4 PIC X(4).
       01 FEWS REDEFINES X.
           02 FILLER PIC X.
           02 S4 PIC S9(4).
       01 FEW3 REDEFINES X.
           02 FILLER PIC X(2).
           02 S3 PIC S9(3).
       01 FEW2 REDEFINES X.
           02 FILLER PIC X(3).
           02 S2 PIC S9(2).
       01 FEW1 REDEFINES X.
           02 FILLER PIC X(4).
           02 S1 PIC S9.
       01 U REDEFINES X.
           02 FILLER PIC X.
           02 U4 PIC 9(4).
       01 S5 REDEFINES X PIC S9(5).
       01 I PIC 9(2) COMP.
       01 J PIC 9(2) COMP.
       01 B PIC S9(9) COMP-5.
       01 TOTALS.
           02 T PIC S9(9) COMP-5 OCCURS 6 VALUE 0.
       PROCEDURE DIVISION.
       MAIN-P.
           PERFORM VARYING I FROM 1 BY 3 UNTIL I > 13
             AFTER J FROM 1 BY 1 UNTIL J > 40
               MOVE FIRSTS (I:3) TO X4 (1:3)
               MOVE LASTS (J:1) TO X4 (4:1)
               MOVE S5 TO B
               IF S4 NOT = B DISPLAY "S4 " X4 END-IF
               IF S3 NOT = FUNCTION REM (B, 1000) DISPLAY "S3 " X4
               END-IF
               IF S2 NOT = FUNCTION REM (B, 100) DISPLAY "S2 " X4
               END-IF
               IF S1 NOT = FUNCTION REM (B, 10) DISPLAY "S1 " X4 END-IF
               COMPUTE T (1) = T (1) + S1 * J
               COMPUTE T (2) = T (2) + S2 * J
               COMPUTE T (3) = T (3) + S3 * J
               COMPUTE T (4) = T (4) + S4 * J
               IF S4 < 0 ADD 1 TO T (5) END-IF
               IF J < 11 ADD U4 TO T (6) END-IF
           END-PERFORM.
           PERFORM VARYING I FROM 1 BY 1 UNTIL I > 6
               DISPLAY T (I)
           END-PERFORM.
           STOP RUN.
