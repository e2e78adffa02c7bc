       IDENTIFICATION DIVISION.
       PROGRAM-ID. QUEENS.
       DATA DIVISION.
       WORKING-STORAGE SECTION.
       01 N PIC 99 VALUE 6.
       01 BOARD.
          05 COL-OF PIC 99 OCCURS 10 TIMES.
       01 R PIC S99. 01 I PIC 99. 01 OK-FLAG PIC 9.
       01 SOLS PIC 9(4) VALUE 0.
       01 DIF PIC S99. 01 LINE-OUT PIC X(20).
       01 FIB-A PIC 9(18) VALUE 0. 01 FIB-B PIC 9(18) VALUE 1.
       01 FIB-C PIC 9(18).
       01 PRIMES.
          05 IS-COMP PIC X OCCURS 100 VALUE "N".
       01 J PIC 999. 01 K PIC 999. 01 CNT PIC 99 VALUE 0.
       01 ARR-VALS PIC X(20) VALUE "05030901070210080406".
       01 ARR REDEFINES ARR-VALS. 05 A PIC 99 OCCURS 10.
       01 T PIC 99.
       01 STR PIC X(30) VALUE "A man a plan a canal Panama".
       01 CLEAN PIC X(30). 01 P PIC 99 VALUE 1. 01 L PIC 99.
       PROCEDURE DIVISION.
       MAIN-PARA.
           MOVE 1 TO R MOVE 0 TO COL-OF(1)
           PERFORM UNTIL R = 0
             ADD 1 TO COL-OF(R)
             MOVE 0 TO OK-FLAG
             PERFORM UNTIL COL-OF(R) > N OR OK-FLAG = 1
               PERFORM CHECK-POS
               IF OK-FLAG = 0 ADD 1 TO COL-OF(R) END-IF
             END-PERFORM
             IF COL-OF(R) > N
               SUBTRACT 1 FROM R
             ELSE
               IF R = N
                 ADD 1 TO SOLS
                 DISPLAY "SOL " SOLS ": " BOARD(1:12)
               ELSE
                 ADD 1 TO R
                 MOVE 0 TO COL-OF(R)
               END-IF
             END-IF
           END-PERFORM.
           DISPLAY "SOLUTIONS: " SOLS.
       FIBS.
           PERFORM 30 TIMES
             ADD FIB-A FIB-B GIVING FIB-C
             MOVE FIB-B TO FIB-A  MOVE FIB-C TO FIB-B
           END-PERFORM
           DISPLAY FIB-A.
       SIEVE.
           PERFORM VARYING J FROM 2 BY 1 UNTIL J > 10
             IF IS-COMP(J) = "N"
               COMPUTE K = J * J
               PERFORM UNTIL K > 100
                 MOVE "Y" TO IS-COMP(K)
                 ADD J TO K
               END-PERFORM
             END-IF
           END-PERFORM
           PERFORM VARYING J FROM 2 BY 1 UNTIL J > 100
              IF IS-COMP(J) NOT = "Y" ADD 1 TO CNT END-IF
           END-PERFORM
           DISPLAY "PRIMES " CNT.
       BUBBLE.
           PERFORM VARYING I FROM 1 BY 1 UNTIL I > 9
             AFTER J FROM 1 BY 1 UNTIL J > 10 - I
               IF A(J) > A(J + 1)
                  MOVE A(J) TO T MOVE A(J + 1) TO A(J)
                  MOVE T TO A(J + 1)
               END-IF
           END-PERFORM
           DISPLAY ARR-VALS.
       PALIN.
           MOVE FUNCTION LOWER-CASE(STR) TO STR
           MOVE SPACES TO CLEAN
           PERFORM VARYING I FROM 1 BY 1 UNTIL I > LENGTH OF STR
             IF STR(I:1) IS ALPHABETIC AND STR(I:1) NOT = SPACE
               MOVE STR(I:1) TO CLEAN(P:1)
               ADD 1 TO P
             END-IF
           END-PERFORM
           COMPUTE L = P - 1
           IF CLEAN(1:L) = FUNCTION REVERSE(CLEAN(1:L))
             DISPLAY "PALINDROME " CLEAN(1:L) ELSE DISPLAY "NO".
           PERFORM FIZZ THRU FIZZ-EXIT VARYING I FROM 1 BY 1
             UNTIL I > 15.
           STOP RUN.
       CHECK-POS.
           MOVE 1 TO OK-FLAG
           PERFORM VARYING I FROM 1 BY 1 UNTIL I >= R OR OK-FLAG = 0
             COMPUTE DIF = COL-OF(R) - COL-OF(I)
             IF DIF = 0 OR FUNCTION ABS(DIF) = R - I
               MOVE 0 TO OK-FLAG
             END-IF
           END-PERFORM.
       FIZZ.
           EVALUATE FUNCTION MOD(I, 3) ALSO FUNCTION MOD(I, 5)
             WHEN 0 ALSO 0 DISPLAY "FizzBuzz" WITH NO ADVANCING
             WHEN 0 ALSO ANY DISPLAY "Fizz" NO ADVANCING
             WHEN ANY ALSO 0 DISPLAY "Buzz" NO ADVANCING
             WHEN OTHER DISPLAY I NO ADVANCING
           END-EVALUATE
           IF I = 15 DISPLAY " " END-IF.
       FIZZ-EXIT. EXIT.
