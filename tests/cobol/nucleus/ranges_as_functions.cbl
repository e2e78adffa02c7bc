      * Ranges that are C functions of their own: they leave the program from two levels down, hold
      * ranges of their own, loop, and are entered anew by each call of the program.
       IDENTIFICATION DIVISION.
       PROGRAM-ID. RANGES.
       DATA DIVISION.
       WORKING-STORAGE SECTION.
       01 N PIC 9 VALUE 0.
       01 DEPTH PIC 9 VALUE 3.
       PROCEDURE DIVISION.
       MAIN-LINE SECTION.
       FIRST-ONE.
           PERFORM OUTER THRU OUTER-EXIT 2 TIMES.
           PERFORM WHOLE.
           PERFORM VARYING N FROM 1 BY 1 UNTIL N > 3
               CALL "LEAVER" USING N
           END-PERFORM.
           CALL "AGAIN" USING DEPTH.
           PERFORM LAST-ONE.
           DISPLAY "NOT REACHED".
           STOP RUN.
       OUTER SECTION.
       OUTER-1.
           ADD 1 TO N.
           DISPLAY "OUTER " N.
           IF N = 2 GO TO OUTER-EXIT.
           PERFORM OUTER-PART 2 TIMES.
           GO TO OUTER-EXIT.
       OUTER-PART.
           DISPLAY "PART".
       OUTER-EXIT SECTION.
       OUTER-EXIT-1.
           EXIT.
       WHOLE SECTION.
       WHOLE-1.
           DISPLAY "WHOLE 1".
           IF N > 1 EXIT SECTION.
           DISPLAY "NOT REACHED".
       WHOLE-2.
           DISPLAY "NOT REACHED".
       LAST-ONE SECTION.
       LAST-1.
           PERFORM LAST-2.
       LAST-2.
           DISPLAY "LAST".
           STOP RUN.
       IDENTIFICATION DIVISION.
       PROGRAM-ID. LEAVER.
       DATA DIVISION.
       LINKAGE SECTION.
       01 HOW PIC 9.
       PROCEDURE DIVISION USING HOW.
       FIRST-ONE.
           PERFORM LEVEL-1 THRU LEVEL-1-EXIT.
           DISPLAY "CAME BACK " HOW.
           GOBACK.
       LEVEL-1.
           PERFORM LEVEL-2.
           DISPLAY "LEVEL 1 GOES ON " HOW.
       LEVEL-1-EXIT.
           EXIT.
       LEVEL-2.
           IF HOW = 1 GOBACK.
           IF HOW = 2 EXIT PROGRAM.
           DISPLAY "LEVEL 2 " HOW.
       END PROGRAM LEAVER.
       IDENTIFICATION DIVISION.
       PROGRAM-ID. AGAIN RECURSIVE.
       DATA DIVISION.
       LOCAL-STORAGE SECTION.
       01 NEXT-ONE PIC 9.
       LINKAGE SECTION.
       01 HOW PIC 9.
       PROCEDURE DIVISION USING HOW.
       FIRST-ONE.
           PERFORM TWICE 2 TIMES.
           GOBACK.
       TWICE.
           PERFORM SHOW HOW TIMES.
           IF HOW > 2
               SUBTRACT 1 FROM HOW GIVING NEXT-ONE
               CALL "AGAIN" USING NEXT-ONE
           END-IF.
       SHOW.
           DISPLAY "AGAIN " HOW.
       END PROGRAM AGAIN.
