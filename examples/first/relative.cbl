      * A relative file: records are found by their number. Here the
      * rooms of a small hotel are kept under their room numbers.
      * INVALID KEY is taken where there is no such record.
       IDENTIFICATION DIVISION.
       PROGRAM-ID. RELATIVE-FILE.

       ENVIRONMENT DIVISION.
       INPUT-OUTPUT SECTION.
       FILE-CONTROL.
           SELECT ROOMS ASSIGN TO "rooms.dat"
               ORGANIZATION IS RELATIVE
               ACCESS MODE IS DYNAMIC
               RELATIVE KEY IS ROOM-NUMBER
               FILE STATUS IS ROOM-STATUS.

       DATA DIVISION.
       FILE SECTION.
       FD  ROOMS.
       01  ROOM.
           05 GUEST             PIC X(12).
           05 NIGHTS            PIC 99.

       WORKING-STORAGE SECTION.
       01  ROOM-NUMBER          PIC 9(4).
       01  ROOM-STATUS          PIC XX.
       01  MORE-ROOMS           PIC X VALUE "Y".

       PROCEDURE DIVISION.
       MAIN-PROGRAM.
           OPEN OUTPUT ROOMS.
           MOVE 12 TO ROOM-NUMBER.
           MOVE "MISS MARTIN" TO GUEST.
           MOVE 3 TO NIGHTS.
           WRITE ROOM INVALID KEY DISPLAY "room 12 is taken".
           MOVE 7 TO ROOM-NUMBER.
           MOVE "MR LEE" TO GUEST.
           MOVE 1 TO NIGHTS.
           WRITE ROOM INVALID KEY DISPLAY "room 7 is taken".
           WRITE ROOM INVALID KEY DISPLAY "room 7 is taken".
           CLOSE ROOMS.

           OPEN I-O ROOMS.
           MOVE 9 TO ROOM-NUMBER.
           READ ROOMS
               INVALID KEY DISPLAY "room 9 is free, status "
                   ROOM-STATUS
           END-READ.
           MOVE 12 TO ROOM-NUMBER.
           READ ROOMS INVALID KEY DISPLAY "room 12 is free".
           ADD 2 TO NIGHTS.
           REWRITE ROOM.

      *    From the first room on, in the order of their numbers.
           MOVE 1 TO ROOM-NUMBER.
           START ROOMS KEY IS NOT LESS THAN ROOM-NUMBER
               INVALID KEY MOVE "N" TO MORE-ROOMS
           END-START.
           PERFORM UNTIL MORE-ROOMS = "N"
               READ ROOMS NEXT RECORD
                   AT END MOVE "N" TO MORE-ROOMS
                   NOT AT END
                       DISPLAY ROOM-NUMBER " " GUEST " " NIGHTS
               END-READ
           END-PERFORM.
           CLOSE ROOMS.
           STOP RUN.
