       IDENTIFICATION DIVISION.
       PROGRAM-ID. TOTALS.
      * Control totals, and the balances as text.
       ENVIRONMENT DIVISION.
       INPUT-OUTPUT SECTION.
       FILE-CONTROL.
           SELECT MASTER ASSIGN TO MASTER
               ORGANIZATION INDEXED ACCESS SEQUENTIAL
               SHARING WITH NO OTHER
               RECORD KEY IS AC-NUMBER
               ALTERNATE RECORD KEY IS AC-NAME WITH DUPLICATES
               FILE STATUS IS AC-STAT.
           SELECT BALANCES ASSIGN TO BALANCES
               ORGANIZATION LINE SEQUENTIAL FILE STATUS IS BA-STAT.
       DATA DIVISION.
       FILE SECTION.
       FD  MASTER.
       COPY MASTER.
       FD  BALANCES.
       01  BALANCE-RECORD.
           05  BA-NUMBER           PIC 9(6).
           05  FILLER              PIC X.
           05  BA-BALANCE          PIC -9(11).99.
           05  FILLER              PIC X.
           05  BA-POSTED           PIC 9(7).
       WORKING-STORAGE SECTION.
       COPY TOTALS.
       01  AC-STAT                 PIC XX.
       01  BA-STAT                 PIC XX.
       01  AT-END-SWITCH           PIC X.
           88  AT-END-OF-FILE      VALUE "Y".
       01  WS-OPENING              PIC S9(13)V99 COMP-3.
       01  WS-CLOSING              PIC S9(13)V99 COMP-3.
       01  WS-EXPECTED             PIC S9(13)V99 COMP-3.
       01  REASON                  PIC S9(3) COMP-3.
       01  COUNT-OUT               PIC ZZZ,ZZZ,ZZ9.
       01  MONEY-OUT               PIC $$,$$$,$$$,$$$,$$9.99CR.
       01  REASON-LABEL.
           05  FILLER              PIC X(9) VALUE "REJECTED ".
           05  RL-CODE             PIC 99.
           05  FILLER              PIC X VALUE SPACE.
           05  RL-REASON           PIC X(20).
       COPY REASONS.
       PROCEDURE DIVISION.
       MAIN-LINE.
           MOVE "N" TO AT-END-SWITCH
           MOVE ZERO TO WS-OPENING WS-CLOSING
           OPEN INPUT MASTER
           IF AC-STAT NOT = "00"
               DISPLAY "FILE MASTER STATUS " AC-STAT
               PERFORM GIVE-UP
           END-IF
           OPEN OUTPUT BALANCES
           IF BA-STAT NOT = "00"
               DISPLAY "FILE BALANCES STATUS " BA-STAT
               PERFORM GIVE-UP
           END-IF
           PERFORM UNTIL AT-END-OF-FILE
               READ MASTER NEXT RECORD
                   AT END SET AT-END-OF-FILE TO TRUE
                   NOT AT END PERFORM ONE-ACCOUNT
               END-READ
               IF AC-STAT > "10"
                   DISPLAY "FILE MASTER STATUS " AC-STAT
                   PERFORM GIVE-UP
               END-IF
           END-PERFORM
           CLOSE MASTER BALANCES
           PERFORM SHOW-TOTALS
           GOBACK.

       GIVE-UP.
           MOVE 12 TO RETURN-CODE
           STOP RUN.

       ONE-ACCOUNT.
           ADD AC-OPENING TO WS-OPENING
           ADD AC-BALANCE TO WS-CLOSING
           MOVE SPACES TO BALANCE-RECORD
           MOVE AC-NUMBER TO BA-NUMBER
           MOVE AC-BALANCE TO BA-BALANCE
           MOVE AC-POSTED TO BA-POSTED
           WRITE BALANCE-RECORD
           IF BA-STAT NOT = "00"
               DISPLAY "FILE BALANCES STATUS " BA-STAT
               PERFORM GIVE-UP
           END-IF.

       SHOW-TOTALS.
           MOVE LT-ACCOUNTS TO COUNT-OUT
           DISPLAY "ACCOUNTS LOADED         " COUNT-OUT
           MOVE LT-STATEMENTS TO COUNT-OUT
           DISPLAY "STATEMENTS PRINTED      " COUNT-OUT
           MOVE LT-READ TO COUNT-OUT
           DISPLAY "LINES READ              " COUNT-OUT
           MOVE LT-POSTED TO COUNT-OUT
           DISPLAY "POSTED                  " COUNT-OUT
           MOVE LT-REJECTED TO COUNT-OUT
           DISPLAY "REJECTED                " COUNT-OUT
           PERFORM VARYING REASON FROM 1 BY 1 UNTIL REASON > 11
               IF LT-REASON (REASON) > ZERO
                   MOVE REASON TO RL-CODE
                   MOVE REASON-TEXT (REASON) TO RL-REASON
                   MOVE LT-REASON (REASON) TO COUNT-OUT
                   DISPLAY REASON-LABEL COUNT-OUT
               END-IF
           END-PERFORM
           MOVE LT-DEPOSITS TO MONEY-OUT
           DISPLAY "DEPOSITS                " MONEY-OUT
           MOVE LT-WITHDRAWALS TO MONEY-OUT
           DISPLAY "WITHDRAWALS             " MONEY-OUT
           MOVE LT-FEES TO MONEY-OUT
           DISPLAY "FEES                    " MONEY-OUT
           MOVE LT-INTEREST TO MONEY-OUT
           DISPLAY "INTEREST                " MONEY-OUT
           MOVE WS-OPENING TO MONEY-OUT
           DISPLAY "OPENING BALANCES        " MONEY-OUT
           MOVE WS-CLOSING TO MONEY-OUT
           DISPLAY "CLOSING BALANCES        " MONEY-OUT
           ADD WS-OPENING LT-DEPOSITS LT-WITHDRAWALS LT-FEES
               LT-INTEREST GIVING WS-EXPECTED
           IF WS-EXPECTED = WS-CLOSING
               DISPLAY "TOTALS AGREE"
           ELSE
               DISPLAY "TOTALS DISAGREE"
               PERFORM GIVE-UP
           END-IF.
