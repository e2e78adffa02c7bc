      * SORT with procedures: the INPUT PROCEDURE releases records to
      * the sort, the OUTPUT PROCEDURE returns them in order. Neither
      * needs a file of its own. Words come by length, the longest
      * first, and those of one length by the alphabet.
       IDENTIFICATION DIVISION.
       PROGRAM-ID. SORTING.

       ENVIRONMENT DIVISION.
       INPUT-OUTPUT SECTION.
       FILE-CONTROL.
           SELECT SORT-FILE ASSIGN TO "sortwork".

       DATA DIVISION.
       FILE SECTION.
       SD  SORT-FILE.
       01  SORT-RECORD.
           05 WORD-LENGTH       PIC 99.
           05 SORT-WORD         PIC X(12).

       WORKING-STORAGE SECTION.
       01  ALL-WORDS            PIC X(50) VALUE
           "THE QUICK BROWN FOX JUMPS OVER THE LAZY DOG".
       01  NEXT-CHARACTER       PIC 99 VALUE 1.
       01  ALL-RETURNED         PIC X VALUE "N".

       PROCEDURE DIVISION.
       MAIN-PROGRAM.
           SORT SORT-FILE
               ON DESCENDING KEY WORD-LENGTH
               ON ASCENDING KEY SORT-WORD
               INPUT PROCEDURE IS RELEASE-WORDS
               OUTPUT PROCEDURE IS SHOW-WORDS.
           STOP RUN.

       RELEASE-WORDS.
           PERFORM UNTIL ALL-WORDS (NEXT-CHARACTER:) = SPACES
               MOVE SPACES TO SORT-WORD
               UNSTRING ALL-WORDS DELIMITED BY ALL SPACES
                   INTO SORT-WORD COUNT IN WORD-LENGTH
                   WITH POINTER NEXT-CHARACTER
               END-UNSTRING
               RELEASE SORT-RECORD
           END-PERFORM.

       SHOW-WORDS.
           PERFORM UNTIL ALL-RETURNED = "Y"
               RETURN SORT-FILE
                   AT END MOVE "Y" TO ALL-RETURNED
                   NOT AT END DISPLAY WORD-LENGTH " " SORT-WORD
               END-RETURN
           END-PERFORM.
