       IDENTIFICATION DIVISION.
       PROGRAM-ID. LOCKS.
      * Record locks between two processes: this one holds record 2
      * and has itself run anew, to try what others may do.
       ENVIRONMENT DIVISION.
       INPUT-OUTPUT SECTION.
       FILE-CONTROL.
           SELECT IX ASSIGN "locks.idx" INDEXED ACCESS DYNAMIC
             RECORD KEY K
             LOCK MODE IS MANUAL WITH LOCK ON MULTIPLE RECORDS
             SHARING WITH ALL OTHER STATUS S.
           SELECT RL ASSIGN "locks.rel" RELATIVE ACCESS DYNAMIC
             RELATIVE KEY RK
             LOCK MODE IS AUTOMATIC SHARING WITH ALL OTHER STATUS S.
       DATA DIVISION.
       FILE SECTION.
       FD IX. 01 R. 02 K PIC 9(3). 02 V PIC 9(5).
       FD RL. 01 RR. 02 RV PIC 9(5).
       WORKING-STORAGE SECTION.
       77 S PIC XX. 77 RK PIC 99. 77 W PIC X(10).
       PROCEDURE DIVISION.
       A.  ACCEPT W FROM COMMAND-LINE.
           EVALUATE W
             WHEN "TRY" PERFORM TRY
             WHEN "LATER" PERFORM LATER
             WHEN OTHER PERFORM HOLD
           END-EVALUATE.
           MOVE 0 TO RETURN-CODE.
           STOP RUN.
       HOLD.
           OPEN OUTPUT IX RL.
           PERFORM VARYING RK FROM 1 BY 1 UNTIL RK > 5
             MOVE RK TO K V RV WRITE R WRITE RR
           END-PERFORM.
           CLOSE IX RL.
           OPEN I-O IX RL.
           MOVE 2 TO K RK.
           READ IX WITH LOCK. DISPLAY "HOLD IX " S.
           READ RL. DISPLAY "HOLD RL " S.
           CALL "SYSTEM" USING "./program TRY".
           ADD 100 TO V RV.
           REWRITE R. DISPLAY "HOLD REWRITE " S.
           REWRITE RR. DISPLAY "HOLD REWRITE " S.
           CALL "SYSTEM" USING "./program LATER & sleep 0.3".
           UNLOCK IX RECORDS.
           CLOSE IX RL.
           CALL "SYSTEM" USING "sleep 1".
       TRY.
           OPEN I-O IX RL. DISPLAY "TRY OPEN " S.
           MOVE 2 TO K RK.
           READ IX WITH LOCK. DISPLAY "TRY IX " S.
           READ IX WITH NO LOCK. DISPLAY "TRY NO LOCK " S.
           READ IX IGNORING LOCK. DISPLAY "TRY IGNORING " S " " V.
           DELETE IX. DISPLAY "TRY DELETE " S.
           ADD 1 TO V REWRITE R. DISPLAY "TRY REWRITE " S.
           READ RL. DISPLAY "TRY RL " S.
           MOVE 3 TO K. READ IX WITH LOCK. DISPLAY "TRY THREE " S.
           READ IX NEXT. DISPLAY "TRY NEXT " S " " K.
           CLOSE IX RL.
       LATER.
           OPEN I-O IX RL.
           MOVE 2 TO K RK.
           READ IX RETRY 50 TIMES WITH LOCK.
           DISPLAY "LATER IX " S " " V.
           READ RL RETRY FOR 5 SECONDS.
           DISPLAY "LATER RL " S " " RV.
           CLOSE IX RL.
