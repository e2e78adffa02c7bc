      * Texts: taken apart with UNSTRING, put together with STRING,
      * counted and changed with INSPECT, cut by reference
      * modification (from:length).
       IDENTIFICATION DIVISION.
       PROGRAM-ID. STRINGS.

       DATA DIVISION.
       WORKING-STORAGE SECTION.
       01  LINE-IN              PIC X(40) VALUE
           "Lovelace,Ada,1815-12-10".
       01  LAST-NAME            PIC X(12).
       01  FIRST-NAME           PIC X(12).
       01  BORN                 PIC X(10).
       01  LINE-OUT             PIC X(40) VALUE SPACES.
       01  POSITION-OUT         PIC 99 VALUE 1.
       01  A-COUNT              PIC 99 VALUE ZERO.
       01  COMMA-COUNT          PIC 99 VALUE ZERO.

       PROCEDURE DIVISION.
       MAIN-PROGRAM.
           INSPECT LINE-IN TALLYING
               COMMA-COUNT FOR ALL ","
               A-COUNT FOR ALL "a" BEFORE INITIAL ",".
           DISPLAY "commas " COMMA-COUNT ", a's " A-COUNT.

           UNSTRING LINE-IN DELIMITED BY "," OR SPACE
               INTO LAST-NAME FIRST-NAME BORN.
           STRING FIRST-NAME DELIMITED BY SPACE
                  " " DELIMITED BY SIZE
                  LAST-NAME DELIMITED BY SPACE
                  ", born in " BORN (1:4) DELIMITED BY SIZE
               INTO LINE-OUT WITH POINTER POSITION-OUT
               ON OVERFLOW DISPLAY "the line is too short"
           END-STRING.
           DISPLAY LINE-OUT.
           DISPLAY "next free position " POSITION-OUT.

           INSPECT LINE-OUT CONVERTING
               "abcdefghijklmnopqrstuvwxyz" TO
               "ABCDEFGHIJKLMNOPQRSTUVWXYZ".
           DISPLAY LINE-OUT (1:12).
           INSPECT BORN REPLACING ALL "-" BY "/".
           DISPLAY BORN.
           STOP RUN.
