000100 IDENTIFICATION DIVISION.                                         RELAT
000200 PROGRAM-ID.                                                      RELAT
000300     RELAT.                                                       RELAT
000400 ENVIRONMENT DIVISION.                                            RELAT
000500 CONFIGURATION SECTION.                                           RELAT
000600 SOURCE-COMPUTER.                                                 RELAT
000700     XXXXX082.                                                    RELAT
000800 OBJECT-COMPUTER.                                                 RELAT
000900     XXXXX083.                                                    RELAT
001000 INPUT-OUTPUT SECTION.                                            RELAT
001100 FILE-CONTROL.                                                    RELAT
001200     SELECT   RL-FS1 ASSIGN    TO                                 RELAT
001300              "relat.dat"                                         RELAT
001400              ORGANIZATION IS RELATIVE                            RELAT
001500              ACCESS  MODE IS SEQUENTIAL                          RELAT
001600              RELATIVE KEY IS RL-KEY                              RELAT
001700              FILE STATUS IS RL-STAT.                             RELAT
001800     SELECT   RL-FR1 ASSIGN  "relat.dat"                          RELAT
001900              RELATIVE                                            RELAT
002000              ACCESS RANDOM                                       RELAT
002100              RELATIVE RL-KEY                                     RELAT
002200              STATUS RL-STAT.                                     RELAT
002300     SELECT   RL-FD1 ASSIGN  "relat.dat"                          RELAT
002400              ORGANIZATION RELATIVE                               RELAT
002500              ACCESS IS DYNAMIC                                   RELAT
002600              RELATIVE KEY RL-KEY                                 RELAT
002700              FILE STATUS RL-STAT.                                RELAT
002800 DATA DIVISION.                                                   RELAT
002900 FILE SECTION.                                                    RELAT
003000 FD  RL-FS1                                                       RELAT
003100     LABEL RECORDS STANDARD                                       RELAT
003200     BLOCK CONTAINS 5 RECORDS                                     RELAT
003300     RECORD CONTAINS 120 CHARACTERS                               RELAT
003400     DATA RECORD IS RL-FS1R1-F-G-120.                             RELAT
003500 01  RL-FS1R1-F-G-120.                                            RELAT
003600     02 FILLER PICTURE IS X(120).                                 RELAT
003700 FD  RL-FR1                                                       RELAT
003800     LABEL RECORD IS OMITTED.                                     RELAT
003900 01  RL-FR1R.                                                     RELAT
004000     02 R-NUM  PIC 9(6).                                          RELAT
004100     02 FILLER PIC X(114).                                        RELAT
004200 FD  RL-FD1.                                                      RELAT
004300 01  RL-FD1R.                                                     RELAT
004400     02 D-NUM  PIC 9(6).                                          RELAT
004500     02 D-REST PIC X(114).                                        RELAT
004600 WORKING-STORAGE SECTION.                                         RELAT
004700 77  RL-KEY  PIC 9(8) COMP.                                       RELAT
004800 77  RL-STAT PIC XX VALUE SPACES.                                 RELAT
004900 01  W-REC.                                                       RELAT
005000     02  W-NUM PIC 9(6).                                          RELAT
005100     02  W-TXT PIC X(114) VALUE "RECORD".                         RELAT
005200 77  N PIC S9(4) COMP.                                            RELAT
005300 77  USE-COUNT PIC 99 VALUE 0.                                    RELAT
005400 PROCEDURE DIVISION.                                              RELAT
005500 DECLARATIVES.                                                    RELAT
005600 D-1 SECTION.                                                     RELAT
005700     USE AFTER STANDARD EXCEPTION PROCEDURE ON RL-FR1.            RELAT
005800 D-1-P.                                                           RELAT
005900     ADD 1 TO USE-COUNT.                                          RELAT
006000     DISPLAY "USE FR1 " RL-STAT.                                  RELAT
006100 D-2 SECTION.                                                     RELAT
006200     USE AFTER ERROR PROCEDURE ON INPUT.                          RELAT
006300 D-2-P.                                                           RELAT
006400     DISPLAY "USE INPUT " RL-STAT.                                RELAT
006500     PERFORM D-2-Q.                                               RELAT
006600     GO TO D-2-X.                                                 RELAT
006700 D-2-Q.                                                           RELAT
006800     ADD 10 TO USE-COUNT.                                         RELAT
006900 D-2-X.                                                           RELAT
007000     EXIT.                                                        RELAT
007100 END DECLARATIVES.                                                RELAT
007200 MAIN SECTION.                                                    RELAT
007300 P-1.                                                             RELAT
007400     OPEN OUTPUT RL-FS1.                                          RELAT
007500     DISPLAY "OPEN " RL-STAT.                                     RELAT
007600     PERFORM P-WRITE VARYING N FROM 1 BY 1 UNTIL N > 10.          RELAT
007700     CLOSE RL-FS1.                                                RELAT
007800     DISPLAY "CLOSE " RL-STAT " KEY " RL-KEY.                     RELAT
007900     OPEN INPUT RL-FS1.                                           RELAT
008000     MOVE 0 TO RL-KEY.                                            RELAT
008100 P-2.                                                             RELAT
008200     READ RL-FS1 AT END GO TO P-3.                                RELAT
008300     MOVE RL-FS1R1-F-G-120 TO W-REC.                              RELAT
008400     IF W-NUM NOT = RL-KEY DISPLAY "BAD KEY " W-NUM " " RL-KEY.   RELAT
008500     GO TO P-2.                                                   RELAT
008600 P-3.                                                             RELAT
008700     DISPLAY "END AT " RL-KEY " " RL-STAT.                        RELAT
008800     READ RL-FS1.                                                 RELAT
008900     DISPLAY "AFTER END " RL-STAT " " USE-COUNT.                  RELAT
009000     CLOSE RL-FS1.                                                RELAT
009100     OPEN I-O RL-FR1.                                             RELAT
009200     MOVE 5 TO RL-KEY. DELETE RL-FR1 INVALID KEY DISPLAY "NO".    RELAT
009300     DISPLAY "DEL " RL-STAT.                                      RELAT
009400     DELETE RL-FR1.                                               RELAT
009500     DISPLAY "DEL2 " RL-STAT.                                     RELAT
009600     MOVE 7 TO RL-KEY. READ RL-FR1 INVALID KEY DISPLAY "INV"      RELAT
009700         NOT INVALID KEY DISPLAY "READ 7 " R-NUM END-READ.        RELAT
009800     MOVE 700 TO R-NUM. REWRITE RL-FR1R                           RELAT
009900         INVALID DISPLAY "INV RW". DISPLAY RL-STAT.               RELAT
010000     MOVE 8 TO RL-KEY. WRITE RL-FR1R INVALID KEY                  RELAT
010100         DISPLAY "DUP " RL-STAT.                                  RELAT
010200     MOVE 15 TO RL-KEY. MOVE 15 TO R-NUM.                         RELAT
010300     WRITE RL-FR1R INVALID KEY DISPLAY "DUP " RL-STAT.            RELAT
010400     MOVE 99 TO RL-KEY. READ RL-FR1. DISPLAY "R99 " RL-STAT.      RELAT
010500     REWRITE RL-FR1R. DISPLAY "RW99 " RL-STAT.                    RELAT
010600     CLOSE RL-FR1.                                                RELAT
010700     OPEN I-O RL-FD1.                                             RELAT
010800     MOVE 4 TO RL-KEY. START RL-FD1 KEY IS GREATER THAN RL-KEY    RELAT
010900         INVALID KEY DISPLAY "START INV".                         RELAT
011000     READ RL-FD1 NEXT AT END DISPLAY "END".                       RELAT
011100     DISPLAY D-NUM " " RL-KEY.                                    RELAT
011200     READ RL-FD1 NEXT RECORD AT END DISPLAY "END".                RELAT
011300     DISPLAY D-NUM " " RL-KEY.                                    RELAT
011400     MOVE 777 TO D-NUM. REWRITE RL-FD1R. DISPLAY RL-STAT.         RELAT
011500     MOVE 2 TO RL-KEY. READ RL-FD1. DISPLAY D-NUM.                RELAT
011600     READ RL-FD1 NEXT AT END DISPLAY "END".                       RELAT
011700     DISPLAY D-NUM " " RL-KEY.                                    RELAT
011800     DELETE RL-FD1. DISPLAY RL-STAT.                              RELAT
011900     START RL-FD1 KEY NOT LESS RL-KEY INVALID DISPLAY "I".        RELAT
012000     READ RL-FD1 NEXT END DISPLAY "END" NOT END                   RELAT
012100        DISPLAY "NEXT " D-NUM " " RL-KEY.                         RELAT
012200     MOVE 20 TO RL-KEY.                                           RELAT
012300     START RL-FD1 KEY = RL-KEY INVALID DISPLAY "NOT 20 " RL-STAT. RELAT
012400     START RL-FD1 KEY >= RL-KEY INVALID DISPLAY "NOT 20 " RL-STAT.RELAT
012500     READ RL-FD1 NEXT AT END DISPLAY "END " RL-STAT.              RELAT
012600     CLOSE RL-FD1.                                                RELAT
012700     OPEN INPUT RL-FD1.                                           RELAT
012800     PERFORM UNTIL RL-STAT NOT = "00"                             RELAT
012900       READ RL-FD1 NEXT AT END DISPLAY "EOF"                      RELAT
013000       NOT AT END DISPLAY D-NUM "/" RL-KEY END-READ               RELAT
013100     END-PERFORM.                                                 RELAT
013200     WRITE RL-FD1R. DISPLAY "WRITE ON INPUT " RL-STAT.            RELAT
013300     CLOSE RL-FD1. CLOSE RL-FD1. DISPLAY RL-STAT.                 RELAT
013400     DISPLAY "USES " USE-COUNT.                                   RELAT
013500     STOP RUN.                                                    RELAT
013600 P-WRITE.                                                         RELAT
013700     MOVE N TO W-NUM. WRITE RL-FS1R1-F-G-120 FROM W-REC           RELAT
013800        INVALID KEY DISPLAY "WRITE INV".                          RELAT
