       IDENTIFICATION DIVISION.
       PROGRAM-ID. ZONES.
      * Loads the tab-separated text of tzdata's zone1970.tab into an
      * indexed file and prints it, sorted by country and name.
       ENVIRONMENT DIVISION.
       INPUT-OUTPUT SECTION.
       FILE-CONTROL.
           SELECT ZONE-TEXT ASSIGN TO ZONETAB
               ORGANIZATION LINE SEQUENTIAL FILE STATUS IS FILE-STAT.
           SELECT ZONE-FILE ASSIGN TO ZONEFILE
               ORGANIZATION INDEXED ACCESS DYNAMIC
               RECORD KEY IS ZO-NAME
               ALTERNATE RECORD KEY IS ZO-COUNTRY WITH DUPLICATES
               FILE STATUS IS FILE-STAT.
           SELECT LISTING ASSIGN TO ZONELIST
               ORGANIZATION LINE SEQUENTIAL FILE STATUS IS FILE-STAT.
           SELECT SORT-FILE ASSIGN TO SORTWORK.
       DATA DIVISION.
       FILE SECTION.
       FD  ZONE-TEXT.
       01  ZONE-LINE               PIC X(160).
       FD  ZONE-FILE.
       01  ZONE-RECORD.
           05  ZO-NAME             PIC X(32).
           05  ZO-COUNTRY          PIC XX.
           05  ZO-COUNTRIES        PIC 9(3).
           05  ZO-LATITUDE         PIC S9(3)V9(4) COMP-3.
           05  ZO-LONGITUDE        PIC S9(3)V9(4) COMP-3.
       FD  LISTING LINAGE IS 60 LINES WITH FOOTING AT 58
               LINES AT TOP 2 LINES AT BOTTOM 2.
       01  LISTING-LINE            PIC X(72).
       SD  SORT-FILE.
       01  SORT-RECORD.
           05  SR-NAME             PIC X(32).
           05  SR-COUNTRY          PIC XX.
           05  SR-COUNTRIES        PIC 9(3).
           05  SR-LATITUDE         PIC S9(3)V9(4) COMP-3.
           05  SR-LONGITUDE        PIC S9(3)V9(4) COMP-3.
       WORKING-STORAGE SECTION.
       01  FILE-STAT               PIC XX.
       01  AT-END-SWITCH           PIC X VALUE "N".
           88  AT-END-OF-FILE      VALUE "Y".
       01  TEXT-FIELDS.
           05  TF-COUNTRIES        PIC X(80).
           05  TF-PLACE            PIC X(16).
           05  TF-NAME             PIC X(32).
       01  LATITUDE-TEXT           PIC X(8).
       01  LONGITUDE-TEXT          PIC X(8).
       01  ANGLE                   PIC S9(3)V9(4) COMP-3.
       01  ANGLE-DEGREES           PIC 9(3).
       01  ANGLE-MINUTES           PIC 99.
       01  ANGLE-SECONDS           PIC 99.
       01  TOTAL-SECONDS           PIC S9(7) COMP-3.
       01  ZONES-OF-COUNTRY        PIC S9(5) COMP-3 VALUE ZERO.
       01  ALL-ZONES               PIC S9(5) COMP-3 VALUE ZERO.
       01  PAGE-NUMBER             PIC S9(5) COMP-3 VALUE ZERO.
       01  LAST-COUNTRY            PIC XX VALUE SPACES.
       01  DETAIL-LINE.
           05  DL-COUNTRY          PIC XX.
           05  FILLER              PIC XX VALUE SPACES.
           05  DL-NAME             PIC X(32).
           05  FILLER              PIC XX VALUE SPACES.
           05  DL-LATITUDE         PIC ---9.9999.
           05  FILLER              PIC XX VALUE SPACES.
           05  DL-LONGITUDE        PIC ---9.9999.
           05  FILLER              PIC XX VALUE SPACES.
           05  DL-COUNTRIES        PIC ZZ9.
       01  COUNTRY-LINE.
           05  CL-COUNTRY          PIC XX.
           05  FILLER              PIC X(7) VALUE " ZONES ".
           05  CL-ZONES            PIC ZZZZ9.
       01  HEADING-LINE.
           05  FILLER              PIC X(40)
               VALUE "TIME ZONES SINCE 1970".
           05  FILLER              PIC X(5) VALUE "PAGE ".
           05  HL-PAGE             PIC ZZZZ9.
       01  ZONES-OUT               PIC ZZZZ9.
       PROCEDURE DIVISION.
       MAIN-LINE.
           PERFORM LOAD-ZONES
           OPEN INPUT ZONE-FILE
           OPEN OUTPUT LISTING
           PERFORM PRINT-HEADING
           SORT SORT-FILE ON ASCENDING KEY SR-COUNTRY SR-NAME
               INPUT PROCEDURE IS GIVE-ZONES
               OUTPUT PROCEDURE IS PRINT-ZONES
           CLOSE ZONE-FILE LISTING
           MOVE ALL-ZONES TO ZONES-OUT
           DISPLAY "ZONES LISTED " ZONES-OUT
           GOBACK.

       LOAD-ZONES.
           OPEN INPUT ZONE-TEXT
           OPEN OUTPUT ZONE-FILE
           PERFORM UNTIL AT-END-OF-FILE
               READ ZONE-TEXT
                   AT END SET AT-END-OF-FILE TO TRUE
                   NOT AT END
                       IF ZONE-LINE (1:1) NOT = "#"
                           PERFORM LOAD-ONE-ZONE
                       END-IF
               END-READ
           END-PERFORM
           CLOSE ZONE-TEXT ZONE-FILE.

       LOAD-ONE-ZONE.
           UNSTRING ZONE-LINE DELIMITED BY X"09"
               INTO TF-COUNTRIES TF-PLACE TF-NAME
           MOVE TF-NAME TO ZO-NAME
           MOVE TF-COUNTRIES TO ZO-COUNTRY
           MOVE 1 TO ZO-COUNTRIES
           INSPECT TF-COUNTRIES TALLYING ZO-COUNTRIES FOR ALL ","
      *    Latitude and longitude are +DDMM or +DDMMSS and +DDDMM or
      *    +DDDMMSS, one behind the other: the second sign parts them.
           UNSTRING TF-PLACE (2:) DELIMITED BY "+" OR "-" OR SPACE
               INTO LATITUDE-TEXT LONGITUDE-TEXT
           MOVE LATITUDE-TEXT (1:2) TO ANGLE-DEGREES
           MOVE LATITUDE-TEXT (3:2) TO ANGLE-MINUTES
           MOVE ZERO TO ANGLE-SECONDS
           IF LATITUDE-TEXT (5:2) IS NUMERIC
               MOVE LATITUDE-TEXT (5:2) TO ANGLE-SECONDS
           END-IF
           PERFORM COMPUTE-ANGLE
           IF TF-PLACE (1:1) = "-"
               MULTIPLY -1 BY ANGLE
           END-IF
           MOVE ANGLE TO ZO-LATITUDE
           MOVE LONGITUDE-TEXT (1:3) TO ANGLE-DEGREES
           MOVE LONGITUDE-TEXT (4:2) TO ANGLE-MINUTES
           MOVE ZERO TO ANGLE-SECONDS
           IF LONGITUDE-TEXT (6:2) IS NUMERIC
               MOVE LONGITUDE-TEXT (6:2) TO ANGLE-SECONDS
           END-IF
           PERFORM COMPUTE-ANGLE
           IF TF-PLACE (6:1) = "-" OR TF-PLACE (8:1) = "-"
               MULTIPLY -1 BY ANGLE
           END-IF
           MOVE ANGLE TO ZO-LONGITUDE
           WRITE ZONE-RECORD
               INVALID KEY DISPLAY "ZONE TWICE: " ZO-NAME
           END-WRITE.

       COMPUTE-ANGLE.
           COMPUTE TOTAL-SECONDS =
               ANGLE-DEGREES * 3600 + ANGLE-MINUTES * 60
               + ANGLE-SECONDS
           COMPUTE ANGLE ROUNDED = TOTAL-SECONDS / 3600.

       GIVE-ZONES.
           MOVE "N" TO AT-END-SWITCH
           MOVE LOW-VALUES TO ZO-COUNTRY
           START ZONE-FILE KEY IS NOT LESS THAN ZO-COUNTRY
               INVALID KEY SET AT-END-OF-FILE TO TRUE
           END-START
           PERFORM UNTIL AT-END-OF-FILE
               READ ZONE-FILE NEXT RECORD
                   AT END SET AT-END-OF-FILE TO TRUE
                   NOT AT END RELEASE SORT-RECORD FROM ZONE-RECORD
               END-READ
           END-PERFORM.

       PRINT-ZONES.
           MOVE "N" TO AT-END-SWITCH
           PERFORM UNTIL AT-END-OF-FILE
               RETURN SORT-FILE
                   AT END SET AT-END-OF-FILE TO TRUE
                   NOT AT END PERFORM PRINT-ONE-ZONE
               END-RETURN
           END-PERFORM
           PERFORM PRINT-COUNTRY.

       PRINT-ONE-ZONE.
           IF SR-COUNTRY NOT = LAST-COUNTRY
               PERFORM PRINT-COUNTRY
               MOVE SR-COUNTRY TO LAST-COUNTRY
           END-IF
           ADD 1 TO ZONES-OF-COUNTRY ALL-ZONES
           MOVE SR-COUNTRY TO DL-COUNTRY
           MOVE SR-NAME TO DL-NAME
           MOVE SR-LATITUDE TO DL-LATITUDE
           MOVE SR-LONGITUDE TO DL-LONGITUDE
           MOVE SR-COUNTRIES TO DL-COUNTRIES
           WRITE LISTING-LINE FROM DETAIL-LINE
               AT END-OF-PAGE PERFORM PRINT-HEADING
           END-WRITE.

       PRINT-COUNTRY.
           IF ZONES-OF-COUNTRY > ZERO
               MOVE LAST-COUNTRY TO CL-COUNTRY
               MOVE ZONES-OF-COUNTRY TO CL-ZONES
               WRITE LISTING-LINE FROM COUNTRY-LINE
                   AT END-OF-PAGE PERFORM PRINT-HEADING
               END-WRITE
               MOVE ZERO TO ZONES-OF-COUNTRY
           END-IF.

       PRINT-HEADING.
           ADD 1 TO PAGE-NUMBER
           MOVE PAGE-NUMBER TO HL-PAGE
           IF PAGE-NUMBER = 1
               WRITE LISTING-LINE FROM HEADING-LINE
                   AFTER ADVANCING ZERO LINES
           ELSE
               WRITE LISTING-LINE FROM HEADING-LINE
                   AFTER ADVANCING PAGE
           END-IF.
