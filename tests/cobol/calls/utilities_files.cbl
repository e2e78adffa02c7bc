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
       01 HANDLE PIC X(4).
       01 STALE PIC X(4).
       01 ACCESS-MODE PIC X COMP-X VALUE 3.
       01 PLACE PIC X(8) COMP-X VALUE 0.
       01 HOW-MANY PIC X(4) COMP-X VALUE 5.
       01 FLAGS PIC X COMP-X VALUE 0.
       01 BUFFER PIC X(8) VALUE "hello".
       01 CURRENT PIC X(300).
       01 INFO.
          02 INFO-SIZE PIC X(8) COMP-X.
          02 INFO-DATE PIC 9(8) COMP-X.
          02 INFO-TIME PIC 9(8) COMP-X.
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
           PERFORM BYTES.
           STOP RUN 0.
      * Files by bytes. A handle that is closed, or none at all, must
      * reach no file.
       BYTES.
           CALL "CBL_CREATE_FILE" USING N1 ACCESS-MODE 0 0 HANDLE.
           DISPLAY "create " RETURN-CODE.
           CALL "CBL_WRITE_FILE" USING HANDLE PLACE HOW-MANY FLAGS
               BUFFER.
           MOVE 3 TO PLACE.
           CALL "CBL_WRITE_FILE" USING HANDLE PLACE HOW-MANY FLAGS
               BUFFER RETURNING RC.
           DISPLAY "write " RC.
           CALL "CBL_FLUSH_FILE" USING HANDLE RETURNING RC.
           DISPLAY "flush " RC.
           MOVE 128 TO FLAGS.
           CALL "CBL_READ_FILE" USING HANDLE PLACE HOW-MANY FLAGS
               BUFFER.
           DISPLAY "size " PLACE.
           MOVE 0 TO FLAGS. MOVE 2 TO PLACE. MOVE 8 TO HOW-MANY.
           MOVE ALL "." TO BUFFER.
           CALL "CBL_READ_FILE" USING HANDLE PLACE HOW-MANY FLAGS
               BUFFER RETURNING RC.
           DISPLAY "read " RC " " BUFFER.
           MOVE 8 TO PLACE.
           CALL "CBL_READ_FILE" USING HANDLE PLACE HOW-MANY FLAGS
               BUFFER RETURNING RC.
           DISPLAY "at end " RC.
           MOVE 9 TO HOW-MANY.
           CALL "CBL_READ_FILE" USING HANDLE PLACE HOW-MANY FLAGS
               BUFFER RETURNING RC.
           DISPLAY "too many " RC.
           MOVE HANDLE TO STALE.
           CALL "CBL_CLOSE_FILE" USING HANDLE RETURNING RC.
           DISPLAY "close " RC.
           CALL "CBL_CLOSE_FILE" USING HANDLE RETURNING RC.
           DISPLAY "again " RC.
           CALL "CBL_CLOSE_FILE" USING STALE RETURNING RC.
           DISPLAY "stale " RC.
           MOVE LOW-VALUES TO HANDLE.
           CALL "CBL_WRITE_FILE" USING HANDLE PLACE HOW-MANY FLAGS
               BUFFER RETURNING RC.
           DISPLAY "no handle " RC.
           CALL "CBL_OPEN_FILE" USING "none" ACCESS-MODE 0 0 HANDLE
               RETURNING RC.
           DISPLAY "open " RC.
           CALL "C$FILEINFO" USING N1 INFO RETURNING RC.
           DISPLAY "info " RC " " INFO-SIZE.
           IF INFO-DATE < 20200101 OR INFO-TIME > 23595999
               DISPLAY "when? " INFO-DATE " " INFO-TIME.
           CALL "CBL_GET_CURRENT_DIR" USING BY VALUE 0 BY VALUE 300
               BY REFERENCE CURRENT RETURNING RC.
           IF RC = 0 AND CURRENT (1:1) = "/" DISPLAY "a folder".
           CALL "CBL_GET_CURRENT_DIR" USING BY VALUE 0 BY VALUE 1
               BY REFERENCE CURRENT (1:1) RETURNING RC.
           DISPLAY "no room " RC.
