       IDENTIFICATION DIVISION.
       PROGRAM-ID. SM2.
       ENVIRONMENT DIVISION.
       CONFIGURATION SECTION.
       SOURCE-COMPUTER. COPY C1.
       OBJECT-COMPUTER. COPY C1.
       SPECIAL-NAMES. COPY C2.
       INPUT-OUTPUT SECTION.
       FILE-CONTROL. COPY C3.
       I-O-CONTROL. COPY C8.
       DATA DIVISION.
       FILE SECTION.
       FD  TF COPY C4.
       FD  TF2 COPY C4 REPLACING TR BY TR2 F1 BY F2.
       WORKING-STORAGE SECTION.
       01  REC. COPY C5.
       77  A COPY C6.
       01 REP-TAB. 02 ELEM PIC X(3) OCCURS 4.
       01 CT PIC 9 VALUE 0.
       PROCEDURE DIVISION.
       COPY C7.
       P2.
           COPY C9 REPLACING == COUNTER-X == BY CT
              ELEM IN REP-TAB (1) BY ELEM IN REP-TAB (2)
              +3 BY 4
              == ( IDX-EXPR ) == BY == (CT) ==
              VERB-1 BY ==ADD== NOTHING BY == ==
              PARA-X BY PARA-NEW.
           REPLACE == DATA-NAME-WITH-A-LONG-NAME-30CH == BY == A ==
               == "OLD" == BY == "NEW" ==;
               == P-1 THRU P-2 == BY == PARA-NEW ==.
           DISPLAY "OLD" DATA-NAME-WITH-A-LONG-NAME-30CH.
           PERFORM P-1 THRU P-2.
           REPLACE OFF.
           DISPLAY "OLD".
           STOP RUN.
