      * A menu: choices are read until the user ends it. ACCEPT reads a
      * line; where the input ends there is none any more, and the
      * program would ask for ever if it did not look.
       IDENTIFICATION DIVISION.
       PROGRAM-ID. MENU.

       DATA DIVISION.
       WORKING-STORAGE SECTION.
       01  CHOICE               PIC X.
       01  BALANCE              PIC S9(5)V99 VALUE 100.
       01  AMOUNT-IN            PIC X(8).
       01  AMOUNT               PIC 9(5)V99.
       01  SHOWN-BALANCE        PIC ZZ,ZZ9.99-.

       PROCEDURE DIVISION.
       MAIN-PROGRAM.
           PERFORM WITH TEST AFTER UNTIL CHOICE = "E"
               DISPLAY "(D)eposit (W)ithdraw (S)how (E)nd"
               ACCEPT CHOICE
                   ON EXCEPTION
                       MOVE "E" TO CHOICE
               END-ACCEPT
               EVALUATE FUNCTION UPPER-CASE (CHOICE)
                   WHEN "D"
                       PERFORM ASK-AMOUNT
                       ADD AMOUNT TO BALANCE
                   WHEN "W"
                       PERFORM ASK-AMOUNT
                       IF AMOUNT > BALANCE
                           DISPLAY "there is not so much"
                       ELSE
                           SUBTRACT AMOUNT FROM BALANCE
                       END-IF
                   WHEN "S"
                       MOVE BALANCE TO SHOWN-BALANCE
                       DISPLAY "balance " SHOWN-BALANCE
                   WHEN "E"
                       DISPLAY "goodbye"
                       MOVE "E" TO CHOICE
                   WHEN OTHER
                       DISPLAY "there is no choice " CHOICE
               END-EVALUATE
           END-PERFORM.
           STOP RUN.

       ASK-AMOUNT.
           DISPLAY "how much?".
           MOVE ZERO TO AMOUNT-IN.
           ACCEPT AMOUNT-IN.
           COMPUTE AMOUNT = FUNCTION NUMVAL (AMOUNT-IN)
               ON SIZE ERROR
                   DISPLAY "that is too much"
                   MOVE ZERO TO AMOUNT
           END-COMPUTE.
