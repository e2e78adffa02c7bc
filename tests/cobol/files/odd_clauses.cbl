000100 IDENTIFICATION DIVISION.                                         ODD1
000200 PROGRAM-ID.                                                      ODD1
000300     ODD1.                                                        ODD1
000400 AUTHOR. ME. COPY NOTHING HERE.                                   ODD1
000500 INSTALLATION.                                                    ODD1
000600     SOME PLACE WITH ENVIRONMENT DIVISION. WORDS.                 ODD1
000700 DATE-COMPILED.                                                   ODD1
000800 SECURITY.                                                        ODD1
000900     NONE.                                                        ODD1
001000 ENVIRONMENT DIVISION.                                            ODD1
001100 CONFIGURATION SECTION.                                           ODD1
001200 SOURCE-COMPUTER.                                                 ODD1
001300     XXXXX082.                                                    ODD1
001400 OBJECT-COMPUTER.                                                 ODD1
001500     XXXXX083                                                     ODD1
001600     MEMORY SIZE 8192 WORDS                                       ODD1
001700     PROGRAM COLLATING SEQUENCE IS NATIVE-SEQ                     ODD1
001800     SEGMENT-LIMIT IS 40.                                         ODD1
001900 SPECIAL-NAMES.                                                   ODD1
           XXXXX051 IS SW-1, ON STATUS IS SW-ON OFF SW-OFF;
           ALPHABET NATIVE-SEQ IS NATIVE
           SYMBOLIC CHARACTERS STAR-CHAR IS 43
           CLASS VOWEL IS "A" "E" "I" "O" "U".
002000 INPUT-OUTPUT SECTION.                                            ODD1
002100 FILE-CONTROL.                                                    ODD1
002200     SELECT PRINT-FILE ASSIGN TO                                  ODD1
002300     XXXXX055.                                                    ODD1
           SELECT TAPE-FILE, ASSIGN TO XXXXX001; XXXXX002,
             FOR MULTIPLE REEL; RESERVE 3 ALTERNATE AREAS.
           SELECT IX ASSIGN TO XXXXX024 XXXXX044
             ACCESS MODE IS RANDOM; ORGANIZATION IS INDEXED
             RECORD KEY IS IX-KEY OF IX-GRP OF IX-REC OF IX
             FILE STATUS IX-STATUS OF STAT-REC.
002400 I-O-CONTROL.
           SAME RECORD AREA FOR TAPE-FILE, PRINT-FILE.
           SAME AREA FOR TAPE-FILE IX.
           RERUN ON RERUN-F EVERY 50 CLOCK-UNITS.
           MULTIPLE FILE CONTAINS TAPE-FILE.
       DATA DIVISION.                                                   ODD1
       FILE SECTION.
       FD  PRINT-FILE
           LABEL RECORDS
           XXXXX084
           DATA RECORD IS PRINT-REC DUMMY-RECORD.
       01  PRINT-REC PICTURE X(120).
       01  DUMMY-RECORD PICTURE X(120).
       FD  TAPE-FILE; BLOCK CONTAINS 5 RECORDS, RECORD CONTAINS 20 TO
           40 CHARACTERS; LABEL RECORD IS LABEL-DATA;
           VALUE OF XXXXX074 IS XXXXX075, IMPL IS "LIT";
           DATA RECORDS ARE TR1, TR2;
           CODE-SET IS NATIVE-SEQ.
       01  TR1 PIC X(20).
       01  TR2 PIC X(40).
       FD  IX.
       01  IX-REC.
           03  IX-GRP.
               05  IX-KEY PIC X(4).
           03  FILLER PIC X(10).
       WORKING-STORAGE SECTION.
       01  STAT-REC. 02 IX-STATUS PIC XX.
       77  XXXXX075 PIC X(5) VALUE "TAPE1".
       77  LABEL-DATA PIC X.
       77  LN PIC 99 VALUE 2.
       PROCEDURE DIVISION.
       DECLARATIVES.
       SECT-A SECTION.
           USE AFTER STANDARD ERROR PROCEDURE ON TAPE-FILE, IX.
       A-1.
           DISPLAY "USE".
       A-2.
           GO TO A-3.
       A-3. EXIT.
       SECT-B SECTION.
           USE AFTER STANDARD EXCEPTION PROCEDURE EXTEND.
       END DECLARATIVES.
       MAIN-1 SECTION.
       OPEN-FILES.
           OPEN     OUTPUT PRINT-FILE
                    I-O IX.
           DISPLAY "IX " IX-STATUS.
           OPEN     OUTPUT IX. CLOSE IX.
           MOVE SPACES TO PRINT-REC
           WRITE PRINT-REC AFTER ADVANCING PAGE.
           WRITE PRINT-REC AFTER ADVANCING LN LINES.
           WRITE DUMMY-RECORD FROM "DUMMY" AFTER ADVANCING 1 LINES.
           WRITE PRINT-REC BEFORE ADVANCING ZERO LINES.
           WRITE PRINT-REC BEFORE LN.
           OPEN OUTPUT TAPE-FILE WITH NO REWIND.
           MOVE "T1" TO TR1. WRITE TR1.
           MOVE ALL "Z" TO TR2. WRITE TR2.
           CLOSE TAPE-FILE UNIT FOR REMOVAL.
           CLOSE TAPE-FILE REEL.
           CLOSE TAPE-FILE WITH NO REWIND.
           OPEN INPUT TAPE-FILE WITH NO REWIND
                I-O IX.
       READ-IT.
           READ TAPE-FILE RECORD; AT END, GO TO READ-END.
           DISPLAY "[" TR1 "]".
           GO READ-IT.
       READ-END.
           CLOSE TAPE-FILE, PRINT-FILE WITH LOCK.
           MOVE "K1" TO IX-KEY. READ IX RECORD; KEY IS IX-KEY;
             INVALID KEY DISPLAY "INVALID " IX-STATUS.
           MOVE "K1" TO IX-KEY. WRITE IX-REC; INVALID KEY, DISPLAY
             "BAD".
           READ IX.
           DISPLAY IX-STATUS.
           CLOSE IX.
           STOP "MESSAGE".
           STOP RUN.
