      * Relations, abbreviations, class tests, nested IF, EVALUATE,
      * SEARCH.
       IDENTIFICATION DIVISION.
       PROGRAM-ID. CONDITIONS.
       PROCEDURE DIVISION.
       MAIN-P.
           CALL "COND-L2".
           CALL "COND-L9".
           CALL "COND-L10".
           CALL "COND-L11".
           CALL "COND-L13".
           CALL "COND-P5".
           CALL "COND-S1".
           STOP RUN.
       END PROGRAM CONDITIONS.

      * Numeric compare with text.
       IDENTIFICATION DIVISION.
       PROGRAM-ID. COND-L2.
       DATA DIVISION.
       WORKING-STORAGE SECTION.
       01 N PIC 9(3) VALUE 12.
       01 X PIC X(3) VALUE "012".
       01 X5 PIC X(5) VALUE "012".
       01 S PIC S9(3) VALUE -12.
       01 G.
           02 GN PIC 9(3) VALUE 12.
       01 E PIC ZZ9 VALUE " 12".
       PROCEDURE DIVISION.
       MAIN-P.
           IF N = X DISPLAY "1".
           IF N = X5 DISPLAY "2".
           IF N = "012" DISPLAY "3".
           IF N = G DISPLAY "4".
           IF S = "012" DISPLAY "5".
           IF N NOT = "12" DISPLAY "6".
           IF E = " 12" DISPLAY "7".
           IF GN = 12 AND GN = N AND G = "012" DISPLAY "8".
           IF E NOT = N DISPLAY "9".
           EXIT PROGRAM.
       END PROGRAM COND-L2.

      * Nested if.
       IDENTIFICATION DIVISION.
       PROGRAM-ID. COND-L9.
       DATA DIVISION.
       WORKING-STORAGE SECTION.
       01 A PIC 9 VALUE 1.
       01 B PIC 9 VALUE 2.
       PROCEDURE DIVISION.
       MAIN-P.
           IF A = 1 IF B = 1 DISPLAY "X" ELSE IF B = 2 DISPLAY "Y" ELSE
               DISPLAY "Z" ELSE DISPLAY "W".
           IF A = 2 NEXT SENTENCE ELSE IF B = 3 DISPLAY "V" ELSE DISPLAY
               "U".
           IF A = 1 THEN NEXT SENTENCE.
           DISPLAY "T".
           IF A NOT EQUAL 2 IF B EQUAL 2 DISPLAY "S" END-IF DISPLAY "R"
               ELSE DISPLAY "Q" END-IF DISPLAY "P".
           EXIT PROGRAM.
       END PROGRAM COND-L9.

      * Abbreviated.
       IDENTIFICATION DIVISION.
       PROGRAM-ID. COND-L10.
       DATA DIVISION.
       WORKING-STORAGE SECTION.
       01 A PIC 9 VALUE 5.
       01 B PIC 9 VALUE 3.
       01 C PIC 9 VALUE 7.
       01 D PIC 9 VALUE 5.
       PROCEDURE DIVISION.
       MAIN-P.
           IF A > B AND < C AND = D DISPLAY "1".
           IF A = B OR C OR D DISPLAY "2".
           IF A NOT = B AND C DISPLAY "3".
           IF A NOT > B OR NOT < C DISPLAY "X" ELSE DISPLAY "4".
           IF A > B AND NOT > C DISPLAY "5".
           IF NOT A = B AND NOT A = C DISPLAY "6".
           IF A = B AND C OR D DISPLAY "7".
           IF A > B AND (C > 6 OR < 2) DISPLAY "8".
           IF A + 1 > B * 1 AND < C OR = 9 DISPLAY "9".
           IF (A = 5) AND ((B = 3) OR (B = 4)) DISPLAY "10".
           IF NOT (A > B AND A > C) DISPLAY "11".
           IF A IS NUMERIC AND B NOT ALPHABETIC DISPLAY "12".
           IF A > B AND > 4 OR C AND D > 2 DISPLAY "13".
           IF A NOT LESS B AND NOT GREATER 5 DISPLAY "14".
           IF A = ZERO OR 5 DISPLAY "15".
           IF A IS NOT EQUAL TO ZERO AND IS POSITIVE DISPLAY "16".
           EXIT PROGRAM.
       END PROGRAM COND-L10.

      * Class tests.
       IDENTIFICATION DIVISION.
       PROGRAM-ID. COND-L11.
       DATA DIVISION.
       WORKING-STORAGE SECTION.
       01 X PIC X(4).
       01 N PIC 9(3).
       01 NX REDEFINES N PIC X(3).
       01 S PIC S9(3).
       01 SX REDEFINES S PIC X(3).
       01 P PIC S9(3) COMP-3.
       01 PX REDEFINES P PIC X(2).
       01 SL PIC S9(2) SIGN LEADING SEPARATE.
       01 SLX REDEFINES SL PIC X(3).
       01 A PIC A(3).
       01 G.
           02 GN PIC 99.
       PROCEDURE DIVISION.
       MAIN-P.
           MOVE "AbC " TO X.
           IF X ALPHABETIC DISPLAY "1".
           IF X NOT ALPHABETIC-UPPER DISPLAY "2".
           MOVE "ab" TO X.
           IF X ALPHABETIC-LOWER DISPLAY "3".
           MOVE "12 4" TO X.
           IF X NOT NUMERIC DISPLAY "4".
           IF X (1:2) NUMERIC DISPLAY "5".
           MOVE "1 2" TO NX.
           IF N NOT NUMERIC DISPLAY "6".
           MOVE 12 TO N.
           IF N NUMERIC DISPLAY "7".
           MOVE -12 TO S.
           IF S NUMERIC DISPLAY "8".
           MOVE "12+" TO SX.
           IF S NOT NUMERIC DISPLAY "9".
           MOVE "123" TO SX.
           IF S NUMERIC DISPLAY "10".
           MOVE 5 TO P.
           IF P NUMERIC DISPLAY "12".
           MOVE SPACES TO PX.
           IF P NOT NUMERIC DISPLAY "13".
           MOVE "+12" TO SLX.
           IF SL NUMERIC DISPLAY "14".
           MOVE "012" TO SLX.
           IF SL NOT NUMERIC DISPLAY "15".
           MOVE "12" TO G.
           IF G NUMERIC DISPLAY "16".
           MOVE "a1" TO A.
           IF A NOT ALPHABETIC DISPLAY "17".
           MOVE -1 TO S.
           MOVE S TO X.
           IF X(1:3) NUMERIC DISPLAY "18".
           EXIT PROGRAM.
       END PROGRAM COND-L11.

      * Search.
       IDENTIFICATION DIVISION.
       PROGRAM-ID. COND-L13.
       DATA DIVISION.
       WORKING-STORAGE SECTION.
       01 T.
           02 E OCCURS 5 ASCENDING KEY K INDEXED BY I.
           03 K PIC 9(2).
           03 V PIC X.
       01 T2.
           02 E2 OCCURS 3 INDEXED BY J J2.
           03 E3 OCCURS 3 INDEXED BY M PIC 9.
       01 N PIC 99 VALUE 0.
       01 CT PIC 99 VALUE 0.
       PROCEDURE DIVISION.
       MAIN-P.
           MOVE "01a03b05c07d09e" TO T.
           MOVE "123456789" TO T2.
           SET I TO 1.
           SEARCH E AT END DISPLAY "NONE" WHEN K (I) = 5 DISPLAY
               "FOUND " V (I).
           SEARCH E AT END DISPLAY "NONE" WHEN K (I) = 1 DISPLAY "X"
               END-SEARCH.
           SEARCH ALL E AT END DISPLAY "NONE" WHEN K (I) = 7 DISPLAY
               "ALL " V (I).
           SEARCH ALL E WHEN K (I) = 4 DISPLAY "X".
           SEARCH ALL E AT END DISPLAY "NONE" WHEN K (I) = 8 NEXT
               SENTENCE.
           SET J TO 2.
           SET M TO 1.
           SEARCH E3 WHEN E3 (J M) = 6 SET N TO M DISPLAY "M=" N WHEN E3
               (J M) = 9 DISPLAY "NINE".
           SET J TO 1.
           MOVE 1 TO N.
           SEARCH E2 VARYING J2 AT END DISPLAY "END" WHEN E3 (J 1) = 7
               DISPLAY "SEVEN".
           SET J TO 1.
           MOVE 1 TO N.
           SEARCH E2 VARYING N WHEN E3 (J 3) = 9 DISPLAY "N=" N.
           SET I TO 6.
           SEARCH E AT END DISPLAY "BEYOND" WHEN K (I) = 1 DISPLAY "X".
           EXIT PROGRAM.
       END PROGRAM COND-L13.

      * Evaluate forms.
       IDENTIFICATION DIVISION.
       PROGRAM-ID. COND-P5.
       DATA DIVISION.
       WORKING-STORAGE SECTION.
       01 A PIC 9(2) VALUE 7.
       01 B PIC X(3) VALUE "abc".
       01 C PIC S9V9 VALUE -1.5.
           88 NEG VALUE -9.9 THRU -0.1.
       PROCEDURE DIVISION.
       MAIN-P.
           EVALUATE A WHEN ZERO DISPLAY "0" WHEN 1 THRU 5 WHEN 7 THRU 9
               DISPLAY "7-9" WHEN OTHER DISPLAY "O" END-EVALUATE.
           EVALUATE B WHEN "ab" DISPLAY "1" WHEN "abc" DISPLAY "2"
               END-EVALUATE.
           EVALUATE TRUE WHEN A = 1 OR B = "abc" DISPLAY "3" WHEN NEG
               DISPLAY "X" END-EVALUATE.
           EVALUATE TRUE WHEN NEG DISPLAY "4" END-EVALUATE.
           EVALUATE NEG WHEN FALSE DISPLAY "X" WHEN TRUE DISPLAY "5"
               END-EVALUATE.
           EVALUATE FALSE WHEN NEG DISPLAY "X" WHEN A > 9 DISPLAY "6"
               END-EVALUATE.
           EVALUATE A ALSO B ALSO TRUE WHEN 7 ALSO NOT "abc" ALSO ANY
               DISPLAY "X" WHEN ANY ALSO "a" THRU "b" ALSO NEG DISPLAY
               "7" WHEN OTHER DISPLAY "Y" END-EVALUATE.
           EVALUATE A + 1 WHEN A + 1 DISPLAY "8" END-EVALUATE.
           EVALUATE A WHEN NOT 1 THRU 5 DISPLAY "9" END-EVALUATE.
           EVALUATE TRUE ALSO TRUE WHEN A = 7 ALSO NOT B = "x" EVALUATE
               A WHEN 1 DISPLAY "X" WHEN OTHER DISPLAY "10" END-EVALUATE
               DISPLAY "11" END-EVALUATE.
           EVALUATE 7 WHEN A DISPLAY "12".
           EVALUATE "abc" ALSO 3 WHEN B ALSO 1 THRU A DISPLAY "13".
           EVALUATE C WHEN -1.5 DISPLAY "14".
           EVALUATE C WHEN < 0 DISPLAY "15" WHEN > 0 DISPLAY "16"
               END-EVALUATE.
           EVALUATE TRUE WHEN A NUMERIC AND B ALPHABETIC IF A = 7
               DISPLAY "17" ELSE DISPLAY "X" END-IF WHEN OTHER CONTINUE
               END-EVALUATE.
           EXIT PROGRAM.
       END PROGRAM COND-P5.

      * Search all kinds.
       IDENTIFICATION DIVISION.
       PROGRAM-ID. COND-S1.
       DATA DIVISION.
       WORKING-STORAGE SECTION.
       01 T.
           02 E OCCURS 6 ASCENDING KEY K1 DESCENDING KEY K2 INDEXED BY
               I.
           03 K1 PIC X(3).
           03 K2 PIC 9(2).
           03 V PIC X.
       01 T2.
           02 E2 OCCURS 4 DESCENDING KEY P INDEXED BY J.
           03 P PIC S9(5)V99 COMP-3.
           03 V2 PIC X.
       01 T3.
           02 E3 OCCURS 5 ASCENDING KEY B INDEXED BY L.
           03 B PIC S9(8) COMP.
           03 V3 PIC X.
       01 T4.
           02 E4 OCCURS 5 ASCENDING KEY S INDEXED BY M.
           03 S PIC S9(3).
           03 V4 PIC X.
       01 N PIC 9(2) VALUE 4.
       01 TD.
           02 ED OCCURS 1 TO 9 DEPENDING ON N ASCENDING KEY IS KD
               INDEXED BY Q.
           03 KD PIC 9(2).
           03 VD PIC X.
       01 W PIC X(3) VALUE "bbb".
       01 W2 PIC X(5) VALUE "ccc".
       01 D PIC S9(5)V99 VALUE -3.5.
       01 F PIC 9(4)V9 VALUE 2.5.
       PROCEDURE DIVISION.
       MAIN-P.
           MOVE "aaa09Aaaa05Bbbb07Cbbb03Dbbb01Eccc00F" TO T.
           SEARCH ALL E AT END DISPLAY "END" WHEN K1 (I) = W AND K2 (I)
               = 3 DISPLAY V (I).
           SEARCH ALL E AT END DISPLAY "END" WHEN K1 (I) = "bbb" AND K2
               (I) = 2 DISPLAY V (I).
           SEARCH ALL E AT END DISPLAY "END" WHEN K1 (I) = W2 DISPLAY V
               (I).
           SEARCH ALL E AT END DISPLAY "END" WHEN K1 (I) = "zzz" DISPLAY
               V (I) END-SEARCH.
           MOVE 10.25 TO P (1).
           MOVE 0 TO P (2).
           MOVE -3.5 TO P (3).
           MOVE -100 TO P (4).
           MOVE "1" TO V2 (1) MOVE "2" TO V2 (2) MOVE "3" TO V2 (3) MOVE
               "4" TO V2 (4).
           SEARCH ALL E2 WHEN P (J) = D DISPLAY "P" V2 (J).
           SEARCH ALL E2 WHEN P (J) = -100 DISPLAY "P" V2 (J).
           SEARCH ALL E2 AT END DISPLAY "PEND" WHEN P (J) = 10.2 DISPLAY
               "X".
           SEARCH ALL E2 AT END DISPLAY "PEND" WHEN P (J) = 0 DISPLAY
               "P" V2 (J).
           PERFORM VARYING L FROM 1 BY 1 UNTIL L > 5 COMPUTE B (L) = (L
               - 3) * 1000 MOVE "b" TO V3 (L) END-PERFORM.
           MOVE "*" TO V3 (2).
           SEARCH ALL E3 AT END DISPLAY "BEND" WHEN B (L) = -1000
               DISPLAY "B" V3 (L).
           SEARCH ALL E3 AT END DISPLAY "BEND" WHEN B (L) = 2001 - 1
               DISPLAY "B" V3 (L).
           PERFORM VARYING M FROM 1 BY 1 UNTIL M > 5 COMPUTE S (M) = (M
               - 3) * 10 MOVE "s" TO V4 (M) END-PERFORM.
           MOVE "!" TO V4 (1).
           SEARCH ALL E4 AT END DISPLAY "SEND" WHEN S (M) = -20 DISPLAY
               "S" V4 (M).
           SEARCH ALL E4 AT END DISPLAY "SEND" WHEN S (M) = F DISPLAY
               "X".
           MOVE "01a03b05c07d09e" TO TD.
           SEARCH ALL ED AT END DISPLAY "DEND" WHEN KD (Q) = 9 DISPLAY
               "X".
           MOVE 5 TO N.
           SEARCH ALL ED AT END DISPLAY "X" WHEN KD (Q) = 9 DISPLAY "D"
               VD (Q).
           SEARCH ALL ED AT END DISPLAY "X" WHEN KD (Q) = N DISPLAY "D"
               VD (Q).
           EXIT PROGRAM.
       END PROGRAM COND-S1.
