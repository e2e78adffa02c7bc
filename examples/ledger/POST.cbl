       IDENTIFICATION DIVISION.
       PROGRAM-ID. POST.
      * Posts a day's transactions against the accounts.
       ENVIRONMENT DIVISION.
       INPUT-OUTPUT SECTION.
       FILE-CONTROL.
           SELECT TRANSACTIONS ASSIGN TO TRANSACTIONS
               ORGANIZATION LINE SEQUENTIAL FILE STATUS IS TX-STAT.
           SELECT MASTER ASSIGN TO MASTER
               ORGANIZATION INDEXED ACCESS DYNAMIC
               SHARING WITH NO OTHER
               RECORD KEY IS AC-NUMBER
               ALTERNATE RECORD KEY IS AC-NAME WITH DUPLICATES
               FILE STATUS IS AC-STAT.
           SELECT POSTED ASSIGN TO POSTED
               ORGANIZATION INDEXED ACCESS DYNAMIC
               SHARING WITH NO OTHER
               RECORD KEY IS PO-REFERENCE FILE STATUS IS PO-STAT.
           SELECT REJECTS ASSIGN TO REJECTS
               ORGANIZATION LINE SEQUENTIAL FILE STATUS IS RJ-STAT.
       DATA DIVISION.
       FILE SECTION.
       FD  TRANSACTIONS.
       01  TRANSACTION.
           05  TX-ACCOUNT          PIC 9(6).
           05  TX-DATE             PIC 9(8).
           05  TX-DATE-PARTS REDEFINES TX-DATE.
               10  TX-YEAR         PIC 9(4).
               10  TX-MONTH        PIC 99.
               10  TX-DAY          PIC 99.
           05  TX-TYPE             PIC X.
               88  TX-TYPE-KNOWN   VALUES "D" "W" "F" "I".
               88  TX-DEPOSIT      VALUE "D".
               88  TX-INTEREST     VALUE "I".
           05  TX-AMOUNT           PIC S9(7)V99.
           05  TX-DAYS REDEFINES TX-AMOUNT PIC S9(9).
           05  TX-REFERENCE        PIC X(8).
           05  TX-TEXT             PIC X(28).
       FD  MASTER.
       COPY MASTER.
       FD  POSTED.
       01  POSTED-RECORD.
       COPY POSTED REPLACING ==:PRE:== BY ==PO==.
       FD  REJECTS.
       01  REJECT-RECORD.
           05  RJ-CODE             PIC 99.
           05  FILLER              PIC X.
           05  RJ-REASON           PIC X(20).
           05  FILLER              PIC X.
           05  RJ-LINE             PIC X(60).
       WORKING-STORAGE SECTION.
       COPY TOTALS.
       01  TX-STAT                 PIC XX.
           88  LINE-TOO-LONG       VALUE "06".
       01  AC-STAT                 PIC XX.
       01  PO-STAT                 PIC XX.
       01  RJ-STAT                 PIC XX.
       01  AT-END-SWITCH           PIC X.
           88  AT-END-OF-FILE      VALUE "Y".
       01  REST-OF-LINE-SWITCH     PIC X.
           88  REST-OF-LINE        VALUE "Y" FALSE "N".
       01  REASON                  PIC S9(3) COMP-3.
       01  WS-DAYS                 PIC S9(3) COMP-3.
       01  WS-VALUE                PIC S9(11)V99 COMP-3.
       01  WS-BALANCE              PIC S9(12)V99 COMP-3.
       01  WS-LOWEST               PIC S9(9)V99 COMP-3.
       01  WS-QUOTIENT             PIC S9(4) COMP-3.
       01  WS-REMAINDER            PIC S9 COMP-3.
       01  WS-LAST-DAY             PIC S99 COMP-3.
       COPY REASONS.
       01  MONTH-LENGTHS           PIC X(24)
               VALUE "312831303130313130313031".
       01  MONTH-TABLE REDEFINES MONTH-LENGTHS.
           05  MONTH-LENGTH        PIC 99 OCCURS 12.
       PROCEDURE DIVISION.
       MAIN-LINE.
           MOVE "N" TO AT-END-SWITCH REST-OF-LINE-SWITCH
           PERFORM OPEN-FILES
           PERFORM UNTIL AT-END-OF-FILE
               READ TRANSACTIONS
                   AT END SET AT-END-OF-FILE TO TRUE
                   NOT AT END PERFORM ONE-LINE
               END-READ
               IF TX-STAT > "10"
                   DISPLAY "FILE TRANSACTIONS STATUS " TX-STAT
                   PERFORM GIVE-UP
               END-IF
           END-PERFORM
           CLOSE TRANSACTIONS MASTER POSTED REJECTS
           GOBACK.

       OPEN-FILES.
           OPEN INPUT TRANSACTIONS
           IF TX-STAT NOT = "00"
               DISPLAY "FILE TRANSACTIONS STATUS " TX-STAT
               PERFORM GIVE-UP
           END-IF
           OPEN I-O MASTER
           IF AC-STAT NOT = "00"
               DISPLAY "FILE MASTER STATUS " AC-STAT
               PERFORM GIVE-UP
           END-IF
      *    Made anew, then opened for reading by key as well.
           OPEN OUTPUT POSTED
           CLOSE POSTED
           OPEN I-O POSTED
           IF PO-STAT NOT = "00"
               DISPLAY "FILE POSTED STATUS " PO-STAT
               PERFORM GIVE-UP
           END-IF
           OPEN OUTPUT REJECTS
           IF RJ-STAT NOT = "00"
               DISPLAY "FILE REJECTS STATUS " RJ-STAT
               PERFORM GIVE-UP
           END-IF.

       GIVE-UP.
           MOVE 12 TO RETURN-CODE
           STOP RUN.

      * What follows the first part of an over-long line is skipped.
       ONE-LINE.
           IF NOT REST-OF-LINE
               ADD 1 TO LT-READ
               PERFORM CHECK-LINE
               IF REASON = ZERO
                   PERFORM POST-LINE
               ELSE
                   PERFORM REJECT-LINE
               END-IF
           END-IF
           IF LINE-TOO-LONG
               SET REST-OF-LINE TO TRUE
           ELSE
               SET REST-OF-LINE TO FALSE
           END-IF.

       CHECK-LINE.
           MOVE ZERO TO REASON
           EVALUATE TRUE
               WHEN LINE-TOO-LONG
                   MOVE 1 TO REASON
               WHEN TX-ACCOUNT IS NOT NUMERIC
                   MOVE 2 TO REASON
               WHEN TX-DATE IS NOT NUMERIC
                   MOVE 3 TO REASON
               WHEN OTHER
                   PERFORM CHECK-DATE
           END-EVALUATE
           IF REASON = ZERO AND NOT TX-TYPE-KNOWN
               MOVE 4 TO REASON
           END-IF
           IF REASON = ZERO AND TX-AMOUNT IS NOT NUMERIC
               MOVE 5 TO REASON
           END-IF
           IF REASON = ZERO AND TX-REFERENCE = SPACES
               MOVE 6 TO REASON
           END-IF
           IF REASON = ZERO
               PERFORM CHECK-ACCOUNT
           END-IF
           IF REASON = ZERO
               PERFORM CHECK-REFERENCE
           END-IF
           IF REASON = ZERO
               PERFORM COMPUTE-VALUE
           END-IF
           IF REASON = ZERO
               PERFORM CHECK-LIMIT
           END-IF.

       CHECK-DATE.
           IF TX-YEAR < 2000 OR > 2099
                   OR TX-MONTH < 1 OR > 12 OR TX-DAY < 1
               MOVE 3 TO REASON
           ELSE
               MOVE MONTH-LENGTH (TX-MONTH) TO WS-LAST-DAY
               DIVIDE TX-YEAR BY 4 GIVING WS-QUOTIENT
                   REMAINDER WS-REMAINDER
               IF TX-MONTH = 2 AND WS-REMAINDER = ZERO
                   ADD 1 TO WS-LAST-DAY
               END-IF
               IF TX-DAY > WS-LAST-DAY
                   MOVE 3 TO REASON
               END-IF
           END-IF.

       CHECK-ACCOUNT.
           MOVE TX-ACCOUNT TO AC-NUMBER
           READ MASTER
               INVALID KEY MOVE 7 TO REASON
               NOT INVALID KEY
                   IF NOT AC-OPEN
                       MOVE 8 TO REASON
                   END-IF
           END-READ
           IF AC-STAT > "09" AND NOT = "23"
               DISPLAY "FILE MASTER STATUS " AC-STAT
               PERFORM GIVE-UP
           END-IF.

       CHECK-REFERENCE.
           MOVE TX-REFERENCE TO PO-REFERENCE
           READ POSTED
               INVALID KEY CONTINUE
               NOT INVALID KEY MOVE 9 TO REASON
           END-READ
           IF PO-STAT > "09" AND NOT = "23"
               DISPLAY "FILE POSTED STATUS " PO-STAT
               PERFORM GIVE-UP
           END-IF.

      * What is added to the balance.
       COMPUTE-VALUE.
           MOVE ZERO TO WS-DAYS
           EVALUATE TRUE
               WHEN TX-INTEREST
                   IF TX-DAYS < 1 OR > 366
                       MOVE 10 TO REASON
                   ELSE
                       MOVE TX-DAYS TO WS-DAYS
                       CALL "INTEREST" USING AC-BALANCE AC-RATE
                           WS-DAYS WS-VALUE
                   END-IF
               WHEN TX-DEPOSIT
                   MOVE TX-AMOUNT TO WS-VALUE
               WHEN OTHER
                   COMPUTE WS-VALUE = - TX-AMOUNT
           END-EVALUATE.

       CHECK-LIMIT.
           ADD AC-BALANCE WS-VALUE GIVING WS-BALANCE
           COMPUTE WS-LOWEST = - AC-LIMIT
           IF WS-BALANCE < WS-LOWEST AND WS-VALUE < ZERO
               MOVE 11 TO REASON
           END-IF.

       POST-LINE.
           ADD 1 TO LT-POSTED AC-POSTED
           MOVE WS-BALANCE TO AC-BALANCE
           IF TX-DATE > AC-LAST-DATE
               MOVE TX-DATE TO AC-LAST-DATE
           END-IF
           EVALUATE TX-TYPE
               WHEN "D" ADD WS-VALUE TO LT-DEPOSITS
               WHEN "W" ADD WS-VALUE TO LT-WITHDRAWALS
               WHEN "F" ADD WS-VALUE TO LT-FEES
               WHEN "I" ADD WS-VALUE TO LT-INTEREST
           END-EVALUATE
           REWRITE MASTER-RECORD
           IF AC-STAT NOT = "00"
               DISPLAY "FILE MASTER STATUS " AC-STAT
               PERFORM GIVE-UP
           END-IF
           MOVE TX-ACCOUNT TO PO-ACCOUNT
           MOVE TX-DATE TO PO-DATE
           MOVE LT-POSTED TO PO-SEQUENCE
           MOVE TX-TYPE TO PO-TYPE
           MOVE WS-VALUE TO PO-AMOUNT
           MOVE WS-DAYS TO PO-DAYS
           WRITE POSTED-RECORD
           IF PO-STAT NOT = "00"
               DISPLAY "FILE POSTED STATUS " PO-STAT
               PERFORM GIVE-UP
           END-IF.

       REJECT-LINE.
           ADD 1 TO LT-REJECTED LT-REASON (REASON)
           MOVE SPACES TO REJECT-RECORD
           MOVE REASON TO RJ-CODE
           MOVE REASON-TEXT (REASON) TO RJ-REASON
           MOVE TRANSACTION TO RJ-LINE
           WRITE REJECT-RECORD
           IF RJ-STAT NOT = "00"
               DISPLAY "FILE REJECTS STATUS " RJ-STAT
               PERFORM GIVE-UP
           END-IF.
