      * Programs that call programs. AVERAGE is contained in the first
      * and is called by name; BY CONTENT protects the caller's item,
      * BY REFERENCE lets the called program change it. COUNTER keeps
      * its storage from call to call, until CANCEL.
       IDENTIFICATION DIVISION.
       PROGRAM-ID. PROGRAMS.

       DATA DIVISION.
       WORKING-STORAGE SECTION.
       01  MARKS.
           05 MARK              PIC 99 OCCURS 4 TIMES.
       01  MEAN                 PIC 99V9.
       01  SHOWN-MEAN           PIC Z9.9.
       01  CALLS                PIC 9 VALUE ZERO.

       PROCEDURE DIVISION.
       MAIN-PROGRAM.
           MOVE "12151019" TO MARKS.
           CALL "AVERAGE" USING BY CONTENT MARKS
                                BY REFERENCE MEAN.
           MOVE MEAN TO SHOWN-MEAN.
           DISPLAY "mean " SHOWN-MEAN " of " MARKS.

           CALL "COUNTER" USING CALLS.
           CALL "COUNTER" USING CALLS.
           DISPLAY "calls: " CALLS.
           CANCEL "COUNTER".
           CALL "COUNTER" USING CALLS.
           DISPLAY "calls after CANCEL: " CALLS.

           CALL "NOWHERE"
               ON EXCEPTION DISPLAY "there is no program NOWHERE"
           END-CALL.
           STOP RUN.

       IDENTIFICATION DIVISION.
       PROGRAM-ID. AVERAGE.
       DATA DIVISION.
       WORKING-STORAGE SECTION.
       01  TOTAL                PIC 9(4).
       01  I                    PIC 9.
       LINKAGE SECTION.
       01  MARKS.
           05 MARK              PIC 99 OCCURS 4 TIMES.
       01  MEAN                 PIC 99V9.
       PROCEDURE DIVISION USING MARKS MEAN.
           MOVE ZERO TO TOTAL.
           PERFORM VARYING I FROM 1 BY 1 UNTIL I > 4
               ADD MARK (I) TO TOTAL
           END-PERFORM.
           DIVIDE TOTAL BY 4 GIVING MEAN ROUNDED.
           MOVE ZEROS TO MARKS.
           EXIT PROGRAM.
       END PROGRAM AVERAGE.
       END PROGRAM PROGRAMS.

       IDENTIFICATION DIVISION.
       PROGRAM-ID. COUNTER.
       DATA DIVISION.
       WORKING-STORAGE SECTION.
       01  SO-FAR               PIC 9 VALUE ZERO.
       LINKAGE SECTION.
       01  CALLS                PIC 9.
       PROCEDURE DIVISION USING CALLS.
           ADD 1 TO SO-FAR.
           MOVE SO-FAR TO CALLS.
           GOBACK.
       END PROGRAM COUNTER.
