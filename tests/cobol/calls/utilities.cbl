       IDENTIFICATION DIVISION.
       PROGRAM-ID. P3.
       DATA DIVISION.
       WORKING-STORAGE SECTION.
       01 CMD PIC X(40) VALUE "echo from system".
       01 R PIC S9(9) COMP-5.
       01 ZS PIC X(12).
       01 D PIC 9(9) COMP-5.
       01 BUF PIC X(20) VALUE "abc def".
       01 CL PIC X(5) VALUE "Hello".
       01 LEN BINARY-LONG VALUE 5.
       01 PATHN PIC X(256).
       01 BITS PIC X(8).
       01 BY1 PIC X VALUE "A".
       01 NARG PIC 99 COMP-5.
       PROCEDURE DIVISION.
       A.
           CALL "SYSTEM" USING CMD.
           DISPLAY "RC " RETURN-CODE.
           CALL "SYSTEM" USING "exit 3" RETURNING R.
           DISPLAY "R " R.
           MOVE Z"puts here" TO ZS.
           CALL "puts" USING ZS.
           CALL "strlen" USING BY REFERENCE ZS RETURNING R.
           DISPLAY R.
           CALL "abs" USING BY VALUE -5 RETURNING R. DISPLAY R.
           CALL "C$SLEEP" USING 0.
           CALL "CBL_TOUPPER" USING CL BY VALUE 5. DISPLAY CL.
           CALL "CBL_TOLOWER" USING CL BY VALUE LEN. DISPLAY CL.
           CALL "SYSTEM" USING BY CONTENT "true".
           CALL "C$TOUPPER" USING BUF, BY VALUE 3. DISPLAY BUF.
           CALL "CBL_DELETE_FILE" USING "nofile" RETURNING R.
           DISPLAY R.
           STOP RUN.
