      * Size errors of several receivers, ROUNDED, long intermediate
      * results, CORRESPONDING, INITIALIZE.
       IDENTIFICATION DIVISION.
       PROGRAM-ID. RESULTS.
       PROCEDURE DIVISION.
       MAIN-P.
           CALL "RESU-N2".
           CALL "RESU-N3".
           CALL "RESU-N4".
           CALL "RESU-P6".
           CALL "RESU-L12".
           STOP RUN.
       END PROGRAM RESULTS.

      * Size errors many receivers.
       IDENTIFICATION DIVISION.
       PROGRAM-ID. RESU-N2.
       DATA DIVISION.
       WORKING-STORAGE SECTION.
       01 A PIC 99 VALUE 90.
       01 B PIC 999 VALUE 90.
       01 C PIC S9(2)V9 COMP-3 VALUE 90.
       01 D PIC S9(4) COMP VALUE 9990.
       01 E PIC ZZ9.
       01 F PIC 9V99 VALUE 9.99.
       01 BC PIC S9(4) COMP-5 VALUE 32767.
       01 UC PIC 9(4) COMP-5 VALUE 5.
       PROCEDURE DIVISION.
       MAIN-P.
           ADD 10 TO A B C D SIZE ERROR DISPLAY "SE" NOT SIZE ERROR
               DISPLAY "NSE" END-ADD.
           DISPLAY A B C D.
           ADD 0.005 TO F ROUNDED ON SIZE ERROR DISPLAY "SE2" END-ADD.
           DISPLAY F.
           ADD 0.004 TO F ROUNDED ON SIZE ERROR DISPLAY "SE3".
           DISPLAY F.
           COMPUTE E = 1000 ON SIZE ERROR DISPLAY "SE4" END-COMPUTE
               DISPLAY E.
           COMPUTE A = 1 / 0 ON SIZE ERROR DISPLAY "SE5".
           DISPLAY A.
           COMPUTE A B = B / (B - B) ON SIZE ERROR DISPLAY "SE6" NOT ON
               SIZE ERROR DISPLAY "X".
           DISPLAY A B.
           MULTIPLY 20 BY A B ON SIZE ERROR DISPLAY "SE7".
           DISPLAY A B.
           SUBTRACT 1 FROM UC.
           SUBTRACT 10 FROM UC ON SIZE ERROR DISPLAY "SE8".
           DISPLAY UC.
           ADD 1 TO BC ON SIZE ERROR DISPLAY "SE9".
           DISPLAY BC.
           DIVIDE 3 INTO A GIVING B REMAINDER C ON SIZE ERROR DISPLAY
               "SE10" NOT ON SIZE ERROR DISPLAY "OK".
           DISPLAY B C.
           DIVIDE 0 INTO A GIVING B REMAINDER C ON SIZE ERROR DISPLAY
               "SE11".
           DISPLAY B C.
           COMPUTE A = 0 ** 0 ON SIZE ERROR DISPLAY "SE12".
           DISPLAY A.
           EXIT PROGRAM.
       END PROGRAM RESU-N2.

      * Rounding.
       IDENTIFICATION DIVISION.
       PROGRAM-ID. RESU-N3.
       DATA DIVISION.
       WORKING-STORAGE SECTION.
       01 R PIC S9(3).
       01 R1 PIC S9(3)V9.
       01 RP PIC S9(3) COMP-3.
       01 RB PIC S9(3) COMP.
       PROCEDURE DIVISION.
       MAIN-P.
           COMPUTE R ROUNDED = 2.5.
           DISPLAY R.
           COMPUTE R ROUNDED = -2.5.
           DISPLAY R.
           COMPUTE R ROUNDED = 2.4999.
           DISPLAY R.
           COMPUTE R1 ROUNDED RP ROUNDED RB = 10 / 3 * 1.55.
           DISPLAY R1 RP RB.
           COMPUTE RP ROUNDED = -7 / 2.
           DISPLAY RP.
           COMPUTE RB ROUNDED = 7 / 2.
           DISPLAY RB.
           ADD .5 TO R ROUNDED.
           DISPLAY R.
           SUBTRACT 0.6 FROM R ROUNDED.
           DISPLAY R.
           MULTIPLY 1.5 BY R ROUNDED.
           DISPLAY R.
           DIVIDE 4 INTO R ROUNDED.
           DISPLAY R.
           EXIT PROGRAM.
       END PROGRAM RESU-N3.

      * Compute long.
       IDENTIFICATION DIVISION.
       PROGRAM-ID. RESU-N4.
       DATA DIVISION.
       WORKING-STORAGE SECTION.
       01 A PIC S9(9)V9(9) VALUE 123456789.987654321.
       01 B PIC S9(9)V9(9) VALUE 987654321.123456789.
       01 C PIC S9(18).
       01 D PIC 9(18) VALUE 999999999999999999.
       01 E PIC S9(31) COMP-3.
       01 F PIC 9(9)V9(9).
       01 G PIC S9(5)V9(13).
       PROCEDURE DIVISION.
       MAIN-P.
           COMPUTE C = A * B / 1000.
           DISPLAY C.
           COMPUTE E = D * 1000000000000.
           DISPLAY E.
           COMPUTE F = (A / B) * B.
           DISPLAY F.
           COMPUTE C = D * D / D.
           DISPLAY C.
           COMPUTE G = 1 / 3 + 1 / 3 + 1 / 3.
           DISPLAY G.
           COMPUTE C = (1 / 3) * 3000000.
           DISPLAY C.
           COMPUTE G = 2 ** 0.5.
           DISPLAY G.
           COMPUTE G = 1.1 ** 10.
           DISPLAY G.
           COMPUTE C = 10 ** 17 + 1.
           DISPLAY C.
           COMPUTE G = (-2) ** 3.
           DISPLAY G.
           COMPUTE G = -2 ** 2.
           DISPLAY G.
           COMPUTE C = 2 ** 10 ** 1.
           DISPLAY C.
           COMPUTE C = + 5 - - 3 + (- 2).
           DISPLAY C.
           EXIT PROGRAM.
       END PROGRAM RESU-N4.

      * Corresponding.
       IDENTIFICATION DIVISION.
       PROGRAM-ID. RESU-P6.
       DATA DIVISION.
       WORKING-STORAGE SECTION.
       01 A.
           02 X PIC 9(2) VALUE 11.
           02 Y.
           03 Z PIC X(2) VALUE "zz".
           03 W PIC 9 VALUE 4.
           02 T PIC 9 OCCURS 2.
           02 FILLER PIC X.
           02 R PIC 99 VALUE 5.
           02 RR REDEFINES R PIC XX.
       01 B.
           02 Y.
           03 W PIC 9(3) VALUE 1.
           03 Q PIC X.
           03 Z PIC X(3).
           02 X PIC ZZ9.
           02 RR PIC XX VALUE "rr".
           02 R PIC 9(3) VALUE 1.
           02 T PIC 9.
       01 TB.
           02 TT OCCURS 2.
           03 X PIC 9(2).
           03 R PIC 9(3).
       PROCEDURE DIVISION.
       MAIN-P.
           MOVE CORRESPONDING A TO B.
           DISPLAY B "|".
           ADD CORR A TO B.
           DISPLAY W OF B R OF B.
           MOVE CORR A TO TT (2).
           DISPLAY X OF TT (2) R OF TT (2).
           SUBTRACT CORR A FROM TT (2) ON SIZE ERROR DISPLAY "SE".
           DISPLAY X OF TT (2) R OF TT (2).
           MOVE CORR TT (2) TO A.
           DISPLAY X OF A R OF A.
           EXIT PROGRAM.
       END PROGRAM RESU-P6.

      * Initialize.
       IDENTIFICATION DIVISION.
       PROGRAM-ID. RESU-L12.
       DATA DIVISION.
       WORKING-STORAGE SECTION.
       01 G.
           02 A PIC X(2) VALUE "aa".
           02 B PIC 9(2) VALUE 11.
           02 C.
           03 D PIC ZZ9 VALUE "  7".
           03 E PIC XBX VALUE "e e".
           02 FILLER PIC X VALUE "f".
           02 T OCCURS 2.
           03 U PIC 9 VALUE 3.
           03 V PIC X VALUE "v".
           02 R PIC 9(2) VALUE 5.
           02 RR REDEFINES R PIC X(2).
           02 AA PIC A(2) VALUE "zz".
       01 N PIC S9(3) COMP-3 VALUE 5.
       01 X PIC X(3) VALUE "xxx".
       PROCEDURE DIVISION.
       MAIN-P.
           INITIALIZE G REPLACING ALPHANUMERIC DATA BY "Q" NUMERIC BY 8.
           DISPLAY G "|".
           INITIALIZE G REPLACING NUMERIC-EDITED DATA BY 5
               ALPHANUMERIC-EDITED BY "wxy" ALPHABETIC BY "k".
           DISPLAY G "|".
           INITIALIZE T (1) N X.
           DISPLAY G "|" N X "|".
           INITIALIZE G.
           DISPLAY G "|".
           EXIT PROGRAM.
       END PROGRAM RESU-L12.
