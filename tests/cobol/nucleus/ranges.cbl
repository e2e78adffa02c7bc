      * PERFORM of ranges that nest and overlap, changed items of
      * VARYING, names of digits, altered paragraphs of independent
      * segments, EXIT.
       IDENTIFICATION DIVISION.
       PROGRAM-ID. RANGES.
       PROCEDURE DIVISION.
       MAIN-P.
           CALL "RANG-P1".
           CALL "RANG-P2".
           CALL "RANG-P3".
           CALL "RANG-P4".
           CALL "RANG-P7".
           STOP RUN.
       END PROGRAM RANGES.

      * Perform overlapping and exits.
       IDENTIFICATION DIVISION.
       PROGRAM-ID. RANG-P1.
       DATA DIVISION.
       WORKING-STORAGE SECTION.
       01 C PIC 9(4) VALUE 0.
       01 S PIC X(40) VALUE SPACES.
       01 P PIC 99 VALUE 1.
       01 I PIC 9.
       01 J PIC 9.
       PROCEDURE DIVISION.
       MAIN-P.
           PERFORM A THRU C-X.
           DISPLAY S.
           MOVE SPACES TO S MOVE 1 TO P.
           PERFORM B THRU D.
           DISPLAY S.
           MOVE SPACES TO S MOVE 1 TO P.
           PERFORM E.
           DISPLAY S.
           MOVE SPACES TO S MOVE 1 TO P.
           PERFORM F THRU F-X VARYING I FROM 1 BY 1 UNTIL I > 3.
           DISPLAY S I.
           MOVE SPACES TO S MOVE 1 TO P.
           PERFORM G VARYING I FROM 1 BY 1 UNTIL I > 5 AFTER J FROM I BY
               2 UNTIL J > 3.
           DISPLAY S.
           PERFORM 2 TIMES PERFORM 2 TIMES ADD 1 TO C END-PERFORM
               END-PERFORM.
           DISPLAY C.
           GO TO FIN.
       A.
           STRING "A" DELIMITED SIZE INTO S POINTER P.
       B.
           STRING "B" DELIMITED SIZE INTO S POINTER P.
           PERFORM D.
       C-X.
           STRING "C" DELIMITED SIZE INTO S POINTER P.
       D.
           STRING "D" DELIMITED SIZE INTO S POINTER P.
       E.
           PERFORM A THRU B.
           STRING "E" DELIMITED SIZE INTO S POINTER P.
           PERFORM C-X THRU D.
       F.
           IF I = 2 GO TO F-X.
           STRING "F" DELIMITED SIZE INTO S POINTER P.
       F-X.
           EXIT.
       G.
           STRING I J "," DELIMITED SIZE INTO S POINTER P.
           IF I = 2 MOVE 3 TO I.
       FIN.
           EXIT PROGRAM.
       END PROGRAM RANG-P1.

      * Perform varying changes.
       IDENTIFICATION DIVISION.
       PROGRAM-ID. RANG-P2.
       DATA DIVISION.
       WORKING-STORAGE SECTION.
       01 I PIC 9(2).
       01 J PIC 9(2).
       01 K PIC 9(2) VALUE 1.
       01 L PIC 99 VALUE 5.
       01 T.
           02 E PIC 9(3) OCCURS 9.
       01 X PIC S9(3) COMP-3.
       01 V PIC 9V9.
       PROCEDURE DIVISION.
       MAIN-P.
           PERFORM P1 VARYING I FROM K BY K UNTIL I > L.
           DISPLAY " " I K L.
           PERFORM P2 WITH TEST AFTER VARYING I FROM 1 BY 1 UNTIL I > 3
               AFTER J FROM 1 BY 1 UNTIL J > 1.
           DISPLAY " " I J.
           PERFORM VARYING X FROM -3 BY 2 UNTIL X > 3 DISPLAY X NO
               ADVANCING END-PERFORM.
           DISPLAY " " X.
           PERFORM VARYING V FROM 2.5 BY -.5 UNTIL V = 0 DISPLAY V " "
               NO ADVANCING END-PERFORM.
           DISPLAY " ".
           PERFORM VARYING E (2) FROM 1 BY 1 UNTIL E (2) > 3 DISPLAY E
               (2) NO ADVANCING END-PERFORM.
           DISPLAY " ".
           MOVE 3 TO I.
           PERFORM P3 I TIMES.
           DISPLAY I.
           MOVE 1 TO I.
           PERFORM VARYING J FROM 1 BY I UNTIL J > 10 ADD 1 TO I DISPLAY
               J " " NO ADVANCING END-PERFORM.
           DISPLAY " ".
           EXIT PROGRAM.
       P1.
           DISPLAY I NO ADVANCING.
           IF I = 2 MOVE 2 TO K MOVE 6 TO L.
       P2.
           DISPLAY I J " " NO ADVANCING.
       P3.
           ADD 1 TO I.
       END PROGRAM RANG-P2.

      * Numeric procedure names and dots.
       IDENTIFICATION DIVISION.
       PROGRAM-ID. RANG-P3.
       DATA DIVISION.
       WORKING-STORAGE SECTION.
       01 N PIC 9 VALUE 0.
       PROCEDURE DIVISION.
       MAIN-P.
           PERFORM 100.
           PERFORM 1-A THRU 1-B.
           GO TO 200.
       100.
           ADD 1 TO N.
       1-A.
           ADD 1 TO N.
       1-B.
           ADD 1 TO N.
       200.
           DISPLAY N.
           PERFORM A-1 OF SEC-B.
           PERFORM SEC-B.
           GO TO A-1 OF SEC-C.
       SEC-B SECTION.
       A-1.
           DISPLAY "B1".
       A-2.
           DISPLAY "B2".
           IF N = 9 GO TO A-1.
       SEC-C SECTION.
       A-1.
           DISPLAY "C1".
           PERFORM A-2.
           EXIT PROGRAM.
       A-2.
           DISPLAY "C2".
       END PROGRAM RANG-P3.

      * Segments with alter.
       IDENTIFICATION DIVISION.
       PROGRAM-ID. RANG-P4.
       DATA DIVISION.
       WORKING-STORAGE SECTION.
       01 N PIC 9 VALUE 0.
       PROCEDURE DIVISION.
       MAIN-P.
           GO TO S1.
       S1 SECTION 51.
       P1.
           PERFORM S2.
           PERFORM S2.
           ALTER A1 TO PROCEED TO A3.
           PERFORM S2.
           PERFORM S3.
           PERFORM S3.
           GO TO FIN.
       S2 SECTION 60.
       A1.
           GO TO A2.
       A2.
           DISPLAY "A2".
           ALTER A1 TO A3.
           GO TO A4.
       A3.
           DISPLAY "A3".
       A4.
           EXIT.
       S3 SECTION 10.
       B1.
           GO TO B2.
       B2.
           DISPLAY "B2".
           ALTER B1 TO B3.
           GO TO B4.
       B3.
           DISPLAY "B3".
       B4.
           EXIT.
       FIN SECTION 99.
       F.
           EXIT PROGRAM.
       END PROGRAM RANG-P4.

      * Exit paragraph and section.
       IDENTIFICATION DIVISION.
       PROGRAM-ID. RANG-P7.
       DATA DIVISION.
       WORKING-STORAGE SECTION.
       01 N PIC 9 VALUE 0.
       PROCEDURE DIVISION.
       MAIN-P.
           PERFORM P-1.
           PERFORM S-1.
           DISPLAY "END".
           EXIT PROGRAM.
       P-1.
           DISPLAY "P1".
           IF N = 0 EXIT PARAGRAPH END-IF.
           DISPLAY "NO".
       S-1 SECTION.
       Q-1.
           DISPLAY "Q1".
           EXIT SECTION.
           DISPLAY "NO".
       Q-2.
           DISPLAY "NO".
       END PROGRAM RANG-P7.
