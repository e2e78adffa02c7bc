       IDENTIFICATION DIVISION.
       PROGRAM-ID. LOAD.
      * Makes the indexed MASTER of tab-separated text.
       ENVIRONMENT DIVISION.
       INPUT-OUTPUT SECTION.
       FILE-CONTROL.
           SELECT ACCOUNTS ASSIGN TO ACCOUNTS
               ORGANIZATION LINE SEQUENTIAL FILE STATUS IS LINE-STAT.
           SELECT MASTER ASSIGN TO MASTER
               ORGANIZATION INDEXED ACCESS SEQUENTIAL
               SHARING WITH NO OTHER
               RECORD KEY IS AC-NUMBER
               ALTERNATE RECORD KEY IS AC-NAME WITH DUPLICATES
               FILE STATUS IS FILE-STAT.
       DATA DIVISION.
       FILE SECTION.
       FD  ACCOUNTS.
       01  ACCOUNT-LINE            PIC X(80).
       FD  MASTER.
       COPY MASTER.
       WORKING-STORAGE SECTION.
       COPY TOTALS.
       01  LINE-STAT               PIC XX.
           88  LINE-TOO-LONG       VALUE "06".
       01  FILE-STAT               PIC XX.
           88  KEY-NOT-VALID       VALUES "21" "22".
       01  AT-END-SWITCH           PIC X.
           88  AT-END-OF-FILE      VALUE "Y".
       01  REST-OF-LINE-SWITCH     PIC X.
           88  REST-OF-LINE        VALUE "Y" FALSE "N".
      * The fields as text: UNSTRING would move them to numeric items as
      * whole numbers, and their points are implied.
       01  NUMBER-TEXT             PIC X(6).
       01  OPENING-TEXT            PIC X(14).
       01  OPENING-NUMBER REDEFINES OPENING-TEXT
               PIC S9(11)V99 SIGN LEADING SEPARATE.
       01  LIMIT-TEXT              PIC X(11).
       01  LIMIT-NUMBER REDEFINES LIMIT-TEXT PIC 9(9)V99.
       01  RATE-TEXT               PIC X(5).
       01  RATE-NUMBER REDEFINES RATE-TEXT PIC 9V9(4).
       PROCEDURE DIVISION.
       MAIN-LINE.
           MOVE "N" TO AT-END-SWITCH REST-OF-LINE-SWITCH
           OPEN INPUT ACCOUNTS
           PERFORM CHECK-ACCOUNTS
           OPEN OUTPUT MASTER
           PERFORM CHECK-MASTER
           PERFORM UNTIL AT-END-OF-FILE
               READ ACCOUNTS
                   AT END SET AT-END-OF-FILE TO TRUE
                   NOT AT END PERFORM ONE-LINE
               END-READ
               IF LINE-STAT > "10"
                   PERFORM CHECK-ACCOUNTS
               END-IF
           END-PERFORM
           CLOSE ACCOUNTS MASTER
           GOBACK.

      * An over-long line is no account, and neither is what follows its
      * first part.
       ONE-LINE.
           EVALUATE TRUE ALSO TRUE
               WHEN REST-OF-LINE ALSO LINE-TOO-LONG
                   CONTINUE
               WHEN REST-OF-LINE ALSO ANY
                   SET REST-OF-LINE TO FALSE
               WHEN ANY ALSO LINE-TOO-LONG
                   SET REST-OF-LINE TO TRUE
                   DISPLAY "ACCOUNT NOT LOADED: " ACCOUNT-LINE
               WHEN OTHER
                   PERFORM LOAD-ACCOUNT
           END-EVALUATE.

       LOAD-ACCOUNT.
           MOVE SPACES TO NUMBER-TEXT AC-NAME AC-STATUS OPENING-TEXT
               LIMIT-TEXT RATE-TEXT
           UNSTRING ACCOUNT-LINE DELIMITED BY X"09"
               INTO NUMBER-TEXT AC-NAME AC-STATUS
                    OPENING-TEXT LIMIT-TEXT RATE-TEXT
           IF NUMBER-TEXT IS NOT NUMERIC
                   OR OPENING-NUMBER IS NOT NUMERIC
                   OR LIMIT-NUMBER IS NOT NUMERIC
                   OR RATE-NUMBER IS NOT NUMERIC
               DISPLAY "ACCOUNT NOT LOADED: " ACCOUNT-LINE
           ELSE
               MOVE NUMBER-TEXT TO AC-NUMBER
               MOVE OPENING-NUMBER TO AC-OPENING AC-BALANCE
               MOVE LIMIT-NUMBER TO AC-LIMIT
               MOVE RATE-NUMBER TO AC-RATE
               MOVE ZERO TO AC-POSTED AC-LAST-DATE
               WRITE MASTER-RECORD
                   INVALID KEY
                       DISPLAY "ACCOUNT NOT LOADED: " ACCOUNT-LINE
                   NOT INVALID KEY
                       ADD 1 TO LT-ACCOUNTS
               END-WRITE
               IF FILE-STAT > "09" AND NOT KEY-NOT-VALID
                   PERFORM CHECK-MASTER
               END-IF
           END-IF.

       CHECK-ACCOUNTS.
           IF LINE-STAT NOT = "00"
               DISPLAY "FILE ACCOUNTS STATUS " LINE-STAT
               MOVE 12 TO RETURN-CODE
               STOP RUN
           END-IF.

       CHECK-MASTER.
           IF FILE-STAT NOT = "00"
               DISPLAY "FILE MASTER STATUS " FILE-STAT
               MOVE 12 TO RETURN-CODE
               STOP RUN
           END-IF.
