       IDENTIFICATION DIVISION.
       PROGRAM-ID.    PAYROLL.
      *****************************************************************
      * comment box
      *****************************************************************
       ENVIRONMENT DIVISION.
       DATA DIVISION.
       WORKING-STORAGE SECTION.
       01  WS-CURRENT-DATE-DATA.
           05  WS-CURRENT-DATE.
               10  WS-YEAR    PIC 9(04).
               10  WS-MONTH   PIC 9(02).
               10  WS-DAY     PIC 9(02).
           05  WS-CURRENT-TIME PIC X(13).
       01  EMP-TABLE.
           05  EMP-COUNT      PIC 9(02) VALUE 3.
           05  EMP OCCURS 3 TIMES INDEXED BY E-IDX.
               10  EMP-NAME   PIC X(15).
               10  EMP-RATE   PIC 9(3)V99.
               10  EMP-HOURS  PIC 9(3).
               10  EMP-TYPE   PIC X.
                   88 HOURLY   VALUE 'H' 'h'.
                   88 SALARIED VALUE 'S'.
       01  WS-GROSS           PIC S9(6)V99 COMP-3.
       01  WS-EDIT            PIC $ZZ,ZZ9.99.
       01  WS-I               PIC S9(4) COMP.
       01  WS-J               PIC S9(4) COMP.
       01  WS-TEMP            PIC X(40).
       01  WS-MATRIX.
           05 ROW OCCURS 3.
              10 COL OCCURS 4 PIC 9(3).
       01  WS-RESULT          PIC Z(8)9.
       01  WS-PI              PIC 9V9(8) VALUE 3.14159265.
       01  WS-AREA            PIC 9(5)V99.
       01  WS-BIN             PIC X(8) VALUE SPACES.
       01  WS-NUM             PIC 9(5) VALUE 173.
       01  WS-Q               PIC 9(5).
       01  WS-R               PIC 9.
       01  WS-FIB.
           05 FIB PIC 9(9) OCCURS 20 TIMES.
       01  WS-WORD PIC X(20) VALUE "racecar".
       01  WS-REV  PIC X(20).
       01  WS-VOWELS PIC 99 VALUE ZERO.
       01  WS-SWITCH PIC X VALUE 'N'.
           88 DONE VALUE 'Y'.
           88 NOT-DONE VALUE 'N'.
       01  WS-PRIME-FLAG PIC 9.
       66  REN-NAME RENAMES WS-YEAR THRU WS-MONTH.
       PROCEDURE DIVISION.
       0000-MAIN.
           PERFORM 1000-INIT THRU 1000-EXIT.
           PERFORM 2000-PROCESS VARYING E-IDX FROM 1 BY 1
               UNTIL E-IDX > EMP-COUNT.
           PERFORM 3000-MATRIX.
           PERFORM 4000-MISC.
           PERFORM 5000-PRIMES.
           GO TO 9000-A 9000-B DEPENDING ON WS-I.
           DISPLAY 'FELL THROUGH'.
       9000-A.
           DISPLAY 'A'.
       9000-B.
           DISPLAY 'B'.
           STOP RUN.
       1000-INIT.
           MOVE FUNCTION CURRENT-DATE TO WS-CURRENT-DATE-DATA.
           IF WS-YEAR IS NOT NUMERIC OR WS-YEAR < 2020
               DISPLAY 'BAD DATE'
               GO TO 1000-EXIT.
           MOVE 'JOHN SMITH' TO EMP-NAME (1).
           MOVE 12.50 TO EMP-RATE (1). MOVE 45 TO EMP-HOURS (1).
           MOVE 'H' TO EMP-TYPE (1).
           MOVE 'JANE DOE' TO EMP-NAME (2).
           MOVE 999.99 TO EMP-RATE (2). MOVE 40 TO EMP-HOURS (2).
           SET SALARIED (2) TO TRUE.
           MOVE EMP (1) TO EMP (3). MOVE 'X' TO EMP-TYPE (3).
       1000-EXIT.
           EXIT.
       2000-PROCESS.
           EVALUATE TRUE
               WHEN HOURLY (E-IDX) AND EMP-HOURS (E-IDX) > 40
                   COMPUTE WS-GROSS ROUNDED = EMP-RATE (E-IDX) * 40
                     + (EMP-HOURS (E-IDX) - 40) * EMP-RATE (E-IDX) * 1.5
               WHEN HOURLY (E-IDX)
                   MULTIPLY EMP-RATE (E-IDX) BY EMP-HOURS (E-IDX)
                       GIVING WS-GROSS
               WHEN SALARIED (E-IDX)
                   MULTIPLY EMP-RATE (E-IDX) BY 40 GIVING WS-GROSS
               WHEN OTHER
                   DISPLAY 'UNKNOWN TYPE FOR ' EMP-NAME (E-IDX)
                   MOVE ZERO TO WS-GROSS
           END-EVALUATE.
           MOVE WS-GROSS TO WS-EDIT.
           DISPLAY EMP-NAME (E-IDX) ' ' WS-EDIT.
       3000-MATRIX.
           PERFORM VARYING WS-I FROM 1 BY 1 UNTIL WS-I > 3
               AFTER WS-J FROM 1 BY 1 UNTIL WS-J > 4
               COMPUTE COL (WS-I, WS-J) = WS-I * 10 + WS-J
           END-PERFORM
           DISPLAY ROW (2).
           MOVE 0 TO WS-RESULT.
           COMPUTE WS-RESULT = COL (1 1) + COL (2, 2) * COL (3 WS-I).
           DISPLAY WS-RESULT.
       4000-MISC.
           COMPUTE WS-AREA ROUNDED = WS-PI * 5 ** 2.
           DISPLAY "AREA: " WS-AREA.
           MOVE 8 TO WS-I.
           PERFORM UNTIL WS-I = 0
              DIVIDE WS-NUM BY 2 GIVING WS-Q REMAINDER WS-R
              MOVE WS-R TO WS-BIN (WS-I:1)
              MOVE WS-Q TO WS-NUM
              SUBTRACT 1 FROM WS-I
           END-PERFORM
           DISPLAY WS-BIN.
           MOVE 1 TO FIB (1) FIB (2).
           PERFORM VARYING WS-I FROM 3 BY 1 UNTIL WS-I > 20
              ADD FIB (WS-I - 1) FIB (WS-I - 2) GIVING FIB (WS-I)
           END-PERFORM.
           DISPLAY FIB (20).
           MOVE FUNCTION REVERSE (FUNCTION TRIM (WS-WORD)) TO WS-REV.
           IF WS-REV = WS-WORD
              DISPLAY FUNCTION TRIM (WS-WORD) " is a palindrome"
           ELSE
              DISPLAY "no".
           INSPECT WS-WORD TALLYING WS-VOWELS FOR ALL "a" ALL "e" "i".
           DISPLAY "VOWELS " WS-VOWELS.
           STRING FUNCTION TRIM(WS-WORD) DELIMITED BY SIZE
                  ' ' WS-VOWELS ' end' DELIMITED BY SIZE
             INTO WS-TEMP.
           DISPLAY FUNCTION UPPER-CASE(WS-TEMP).
           MOVE 'N' TO WS-SWITCH.
           PERFORM WITH TEST BEFORE UNTIL DONE
               SET DONE TO TRUE
           END-PERFORM.
           IF NOT NOT-DONE AND DONE NEXT SENTENCE ELSE DISPLAY "?".
           DISPLAY 'It''s ' "a ""quote""".
       5000-PRIMES.
           PERFORM VARYING WS-I FROM 2 BY 1 UNTIL WS-I > 30
               MOVE 1 TO WS-PRIME-FLAG
               PERFORM VARYING WS-J FROM 2 BY 1
                   UNTIL WS-J * WS-J > WS-I OR WS-PRIME-FLAG = 0
                   IF FUNCTION MOD (WS-I, WS-J) = 0
                       MOVE 0 TO WS-PRIME-FLAG
                   END-IF
               END-PERFORM
               IF WS-PRIME-FLAG = 1
                   MOVE WS-I TO WS-RESULT
                   DISPLAY FUNCTION TRIM (WS-RESULT) ","
                       WITH NO ADVANCING
               END-IF
           END-PERFORM.
           DISPLAY ' '.
           MOVE 2 TO WS-I.
