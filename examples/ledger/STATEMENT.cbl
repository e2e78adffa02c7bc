       IDENTIFICATION DIVISION.
       PROGRAM-ID. STATEMENT.
      * Prints the statements of all accounts with postings, and sees
      * that the postings lead from the opening to the closing balance.
       ENVIRONMENT DIVISION.
       INPUT-OUTPUT SECTION.
       FILE-CONTROL.
           SELECT POSTED ASSIGN TO POSTED
               ORGANIZATION INDEXED ACCESS SEQUENTIAL
               SHARING WITH NO OTHER
               RECORD KEY IS PO-REFERENCE FILE STATUS IS PO-STAT.
           SELECT MASTER ASSIGN TO MASTER
               ORGANIZATION INDEXED ACCESS DYNAMIC
               SHARING WITH NO OTHER
               RECORD KEY IS AC-NUMBER
               ALTERNATE RECORD KEY IS AC-NAME WITH DUPLICATES
               FILE STATUS IS AC-STAT.
           SELECT STATEMENTS ASSIGN TO STATEMENTS
               ORGANIZATION LINE SEQUENTIAL FILE STATUS IS ST-STAT.
           SELECT SORT-FILE ASSIGN TO SORTWORK.
       DATA DIVISION.
       FILE SECTION.
       FD  POSTED.
       01  POSTED-RECORD.
       COPY POSTED REPLACING ==:PRE:== BY ==PO==.
       FD  MASTER.
       COPY MASTER.
       FD  STATEMENTS LINAGE IS 54 LINES WITH FOOTING AT 50
               LINES AT TOP 3 LINES AT BOTTOM 3.
       01  PRINT-LINE              PIC X(100).
       SD  SORT-FILE.
       01  SORT-RECORD.
       COPY POSTED REPLACING ==:PRE:== BY ==SR==.
       WORKING-STORAGE SECTION.
       COPY TOTALS.
       01  PO-STAT                 PIC XX.
       01  AC-STAT                 PIC XX.
       01  ST-STAT                 PIC XX.
       01  AT-END-SWITCH           PIC X.
           88  AT-END-OF-FILE      VALUE "Y".
       01  LAST-ACCOUNT            PIC 9(6).
       01  ACCOUNT-SWITCH          PIC X.
           88  IN-ACCOUNT          VALUE "Y" FALSE "N".
       01  RUNNING-BALANCE         PIC S9(11)V99 COMP-3.
       01  PAGE-NUMBER             PIC S9(5) COMP-3.
       01  STATEMENTS-WRONG        PIC S9(7) COMP-3.
       01  PAGE-LINE.
           05  FILLER              PIC X(80)
               VALUE "STATEMENTS OF ACCOUNT".
           05  FILLER              PIC X(5) VALUE "PAGE ".
           05  PL-PAGE             PIC ZZZZ9.
       01  ACCOUNT-LINE.
           05  FILLER              PIC X(8) VALUE "ACCOUNT ".
           05  AL-ACCOUNT          PIC 9(6).
           05  FILLER              PIC XX VALUE SPACES.
           05  AL-NAME             PIC X(24).
           05  FILLER              PIC X(39)
               VALUE "                   OPENING BALANCE".
           05  AL-OPENING          PIC $$$,$$$,$$$,$$9.99CR.
       01  DETAIL-LINE.
           05  DL-DATE             PIC X(4)/XX/XX.
           05  FILLER              PIC XX VALUE SPACES.
           05  DL-TYPE             PIC X(12).
           05  DL-REFERENCE        PIC X(10).
           05  DL-DAYS             PIC ZZ9 BLANK WHEN ZERO.
           05  DL-DAYS-TEXT        PIC X(6).
           05  FILLER              PIC X(16) VALUE SPACES.
           05  DL-AMOUNT           PIC $$$,$$$,$$$,$$9.99CR.
           05  DL-BALANCE          PIC $$$,$$$,$$$,$$9.99CR.
       01  CLOSING-LINE.
           05  FILLER              PIC X(8) VALUE "ACCOUNT ".
           05  CL-ACCOUNT          PIC 9(6).
           05  FILLER              PIC X(65) VALUE " CLOSING BALANCE".
           05  CL-BALANCE          PIC $$$,$$$,$$$,$$9.99CR.
       01  COUNT-OUT               PIC Z,ZZZ,ZZ9.
       PROCEDURE DIVISION.
       MAIN-LINE.
           MOVE ZERO TO PAGE-NUMBER STATEMENTS-WRONG
           SET IN-ACCOUNT TO FALSE
           PERFORM OPEN-FILES
           PERFORM PRINT-PAGE-LINE
           SORT SORT-FILE
               ON ASCENDING KEY SR-ACCOUNT SR-DATE SR-SEQUENCE
               INPUT PROCEDURE IS GIVE-POSTINGS
               OUTPUT PROCEDURE IS PRINT-POSTINGS
           CLOSE POSTED MASTER STATEMENTS
           IF STATEMENTS-WRONG > ZERO
               MOVE STATEMENTS-WRONG TO COUNT-OUT
               DISPLAY "STATEMENTS WRONG        " COUNT-OUT
               PERFORM GIVE-UP
           END-IF
           GOBACK.

       OPEN-FILES.
           OPEN INPUT POSTED
           IF PO-STAT NOT = "00"
               DISPLAY "FILE POSTED STATUS " PO-STAT
               PERFORM GIVE-UP
           END-IF
           OPEN INPUT MASTER
           IF AC-STAT NOT = "00"
               DISPLAY "FILE MASTER STATUS " AC-STAT
               PERFORM GIVE-UP
           END-IF
           OPEN OUTPUT STATEMENTS
           IF ST-STAT NOT = "00"
               DISPLAY "FILE STATEMENTS STATUS " ST-STAT
               PERFORM GIVE-UP
           END-IF.

       GIVE-UP.
           MOVE 12 TO RETURN-CODE
           STOP RUN.

       GIVE-POSTINGS.
           MOVE "N" TO AT-END-SWITCH
           PERFORM UNTIL AT-END-OF-FILE
               READ POSTED NEXT RECORD
                   AT END SET AT-END-OF-FILE TO TRUE
                   NOT AT END PERFORM GIVE-POSTING
               END-READ
               IF PO-STAT > "10"
                   DISPLAY "FILE POSTED STATUS " PO-STAT
                   PERFORM GIVE-UP
               END-IF
           END-PERFORM.

       GIVE-POSTING.
           RELEASE SORT-RECORD FROM POSTED-RECORD
           IF SORT-RETURN NOT = ZERO
               DISPLAY "SORT-FILE IS FULL"
               PERFORM GIVE-UP
           END-IF.

       PRINT-POSTINGS.
           MOVE "N" TO AT-END-SWITCH
           PERFORM UNTIL AT-END-OF-FILE
               RETURN SORT-FILE
                   AT END SET AT-END-OF-FILE TO TRUE
                   NOT AT END PERFORM PRINT-POSTING
               END-RETURN
           END-PERFORM
           PERFORM END-OF-ACCOUNT.

       PRINT-POSTING.
           IF NOT IN-ACCOUNT OR SR-ACCOUNT NOT = LAST-ACCOUNT
               PERFORM END-OF-ACCOUNT
               PERFORM BEGIN-ACCOUNT
           END-IF
           ADD SR-AMOUNT TO RUNNING-BALANCE
           MOVE SR-DATE TO DL-DATE
           EVALUATE SR-TYPE
               WHEN "D" MOVE "DEPOSIT" TO DL-TYPE
               WHEN "W" MOVE "WITHDRAWAL" TO DL-TYPE
               WHEN "F" MOVE "FEE" TO DL-TYPE
               WHEN "I" MOVE "INTEREST" TO DL-TYPE
           END-EVALUATE
           MOVE SR-REFERENCE TO DL-REFERENCE
           MOVE SR-DAYS TO DL-DAYS
           IF SR-DAYS > ZERO
               MOVE " DAYS" TO DL-DAYS-TEXT
           ELSE
               MOVE SPACES TO DL-DAYS-TEXT
           END-IF
           MOVE SR-AMOUNT TO DL-AMOUNT
           MOVE RUNNING-BALANCE TO DL-BALANCE
           WRITE PRINT-LINE FROM DETAIL-LINE
               AT END-OF-PAGE PERFORM PRINT-PAGE-LINE
           END-WRITE.

       BEGIN-ACCOUNT.
           SET IN-ACCOUNT TO TRUE
           MOVE SR-ACCOUNT TO LAST-ACCOUNT AC-NUMBER
           READ MASTER
               INVALID KEY
                   DISPLAY "FILE MASTER STATUS " AC-STAT
                   PERFORM GIVE-UP
           END-READ
           MOVE AC-OPENING TO RUNNING-BALANCE AL-OPENING
           MOVE AC-NUMBER TO AL-ACCOUNT
           MOVE AC-NAME TO AL-NAME
           WRITE PRINT-LINE FROM ACCOUNT-LINE AFTER ADVANCING 2 LINES
               AT END-OF-PAGE PERFORM PRINT-PAGE-LINE
           END-WRITE.

       END-OF-ACCOUNT.
           IF IN-ACCOUNT
               MOVE LAST-ACCOUNT TO CL-ACCOUNT
               MOVE RUNNING-BALANCE TO CL-BALANCE
               WRITE PRINT-LINE FROM CLOSING-LINE
                   AT END-OF-PAGE PERFORM PRINT-PAGE-LINE
               END-WRITE
               ADD 1 TO LT-STATEMENTS
               IF RUNNING-BALANCE NOT = AC-BALANCE
                   ADD 1 TO STATEMENTS-WRONG
               END-IF
           END-IF.

       PRINT-PAGE-LINE.
           ADD 1 TO PAGE-NUMBER
           MOVE PAGE-NUMBER TO PL-PAGE
           IF PAGE-NUMBER = 1
               WRITE PRINT-LINE FROM PAGE-LINE
                   AFTER ADVANCING ZERO LINES
           ELSE
               WRITE PRINT-LINE FROM PAGE-LINE AFTER ADVANCING PAGE
           END-IF.
