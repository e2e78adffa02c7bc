      * An indexed file: records are found by a key, and by a second
      * one that several of them may share. The file itself keeps both
      * in order.
       IDENTIFICATION DIVISION.
       PROGRAM-ID. INDEXED-FILE.

       ENVIRONMENT DIVISION.
       INPUT-OUTPUT SECTION.
       FILE-CONTROL.
           SELECT MEMBERS ASSIGN TO "members.dat"
               ORGANIZATION IS INDEXED
               ACCESS MODE IS DYNAMIC
               RECORD KEY IS MEMBER-ID
               ALTERNATE RECORD KEY IS TOWN WITH DUPLICATES
               FILE STATUS IS MEMBER-STATUS.

       DATA DIVISION.
       FILE SECTION.
       FD  MEMBERS.
       01  MEMBER.
           05 MEMBER-ID         PIC X(4).
           05 MEMBER-NAME       PIC X(10).
           05 TOWN              PIC X(8).

       WORKING-STORAGE SECTION.
       01  MEMBER-STATUS        PIC XX.
       01  SEEN-ALL             PIC X.

       PROCEDURE DIVISION.
       MAIN-PROGRAM.
           OPEN OUTPUT MEMBERS.
           MOVE "M300COOPER    YORK" TO MEMBER.
           PERFORM ADD-MEMBER.
           MOVE "M100ALLEN     LEEDS" TO MEMBER.
           PERFORM ADD-MEMBER.
           MOVE "M200BELL      YORK" TO MEMBER.
           PERFORM ADD-MEMBER.
           MOVE "M100AGAIN     HULL" TO MEMBER.
           PERFORM ADD-MEMBER.
           CLOSE MEMBERS.

           OPEN I-O MEMBERS.
      *    By the first key.
           MOVE "M200" TO MEMBER-ID.
           READ MEMBERS
               INVALID KEY DISPLAY "no member M200"
               NOT INVALID KEY DISPLAY "M200 is " MEMBER-NAME
           END-READ.

      *    All of one town, by the second key.
           MOVE "N" TO SEEN-ALL.
           MOVE "YORK" TO TOWN.
           START MEMBERS KEY IS EQUAL TO TOWN
               INVALID KEY MOVE "Y" TO SEEN-ALL
           END-START.
           PERFORM UNTIL SEEN-ALL = "Y"
               READ MEMBERS NEXT RECORD
                   AT END MOVE "Y" TO SEEN-ALL
               END-READ
               IF SEEN-ALL = "N" AND TOWN NOT = "YORK"
                   MOVE "Y" TO SEEN-ALL
               END-IF
               IF SEEN-ALL = "N"
                   DISPLAY "in York: " MEMBER-NAME
               END-IF
           END-PERFORM.

           MOVE "M300" TO MEMBER-ID.
           DELETE MEMBERS RECORD
               INVALID KEY DISPLAY "no member M300"
           END-DELETE.
           READ MEMBERS KEY IS MEMBER-ID
               INVALID KEY DISPLAY "M300 has left, status "
                   MEMBER-STATUS
           END-READ.
           CLOSE MEMBERS.
           STOP RUN.

       ADD-MEMBER.
           WRITE MEMBER
               INVALID KEY DISPLAY MEMBER-ID
                   " is there already, status " MEMBER-STATUS
           END-WRITE.
