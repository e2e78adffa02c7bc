      * The utilities of files, folders and bits. A copy onto itself
      * must not empty the file; a name or command that is too long
      * must not stand for another one.
       IDENTIFICATION DIVISION.
       PROGRAM-ID. UTILF.
       ENVIRONMENT DIVISION.
       INPUT-OUTPUT SECTION.
       FILE-CONTROL.
           SELECT F ASSIGN TO "one" ORGANIZATION LINE SEQUENTIAL.
       DATA DIVISION.
       FILE SECTION.
       FD F.
       01 R PIC X(10).
       WORKING-STORAGE SECTION.
       01 N1 PIC X(20) VALUE "one".
       01 N2 PIC X(20) VALUE "two".
       01 DIR PIC X(20) VALUE "folder".
       01 LONG-NAME PIC X(6000) VALUE ALL "x".
       01 DETAILS.
          02 FILE-SIZE PIC 9(18) COMP-X.
          02 PIC X(8).
       01 A PIC X VALUE X"0F".
       01 B PIC X VALUE X"35".
       01 RC PIC S9(9) COMP-5.
       PROCEDURE DIVISION.
       P.
           OPEN OUTPUT F. MOVE "hello" TO R. WRITE R. CLOSE F.
           CALL "CBL_COPY_FILE" USING N1 N1 RETURNING RC.
           DISPLAY "onto itself " RC.
           CALL "CBL_COPY_FILE" USING N1 N2 RETURNING RC.
           DISPLAY "copy " RC.
           CALL "CBL_CHECK_FILE_EXIST" USING N2 DETAILS RETURNING RC.
           DISPLAY "exists " RC.
           IF DETAILS (8:1) = X"06" DISPLAY "six bytes".
           CALL "CBL_DELETE_FILE" USING N2 RETURNING RC.
           DISPLAY "delete " RC.
           CALL "CBL_DELETE_FILE" USING N2 RETURNING RC.
           DISPLAY "again " RC.
           CALL "CBL_DELETE_FILE" USING LONG-NAME RETURNING RC.
           DISPLAY "too long " RC.
           CALL "SYSTEM" USING LONG-NAME RETURNING RC.
           DISPLAY "too long " RC.
           CALL "CBL_CREATE_DIR" USING DIR RETURNING RC.
           DISPLAY "make " RC.
           CALL "CBL_DELETE_DIR" USING DIR RETURNING RC.
           DISPLAY "remove " RC.
           CALL "CBL_AND" USING A B BY VALUE 1.
           IF B = X"05" DISPLAY "and".
           CALL "CBL_XOR" USING A B BY VALUE 1.
           IF B = X"0A" DISPLAY "xor".
           STOP RUN 0.
