000100 IDENTIFICATION DIVISION.                                         COPYT
000200 PROGRAM-ID. COPYT.                                               COPYT
000300 ENVIRONMENT DIVISION.                                            COPYT
000310 CONFIGURATION SECTION.
000320 SOURCE-COMPUTER. X86 WITH DEBUGGING MODE.
000400 DATA DIVISION.                                                   COPYT
000500 WORKING-STORAGE SECTION.                                         COPYT
000600     COPY K1FDA.                                                  COPYT
000700     COPY K1FDA REPLACING TST-REC BY SECOND-REC                   COPYT
000800         ==PIC 9(3)== BY ==PIC 9(5)==                             COPYT
000900         "ABC" BY "REPLACED"                                      COPYT
000950         ==12== BY 54321                                          COPYT
001000         XX-FIELD BY YY-FIELD.                                    COPYT
001100 COPY K3 OF LIB REPLACING ==:TAG:== BY ==CUST==                   COPYT
001200     ==:LEN:== BY ==4==.                                          COPYT
001300 COPY K3 IN LIB REPLACING ==:TAG:== BY ==ORD== ==:LEN:== BY ==6== COPYT
001310    NESTED-ITEM BY NESTED-2.
001400 01  GRP.                                                         COPYT
001500     02 T1 OCCURS 3. 03 B-W PIC X OCCURS 3.                       COPYT
001600     02 C-WORD PIC 99 VALUE 1.                                    COPYT
001700 01  GRP2. 02 C-WORD PIC 99 VALUE 1.                              COPYT
001800 77  IDX PIC 9 VALUE 2. 77 LETTER PIC X VALUE "Q".                COPYT
001900 77  LONG-LIT PIC X(90) VALUE "THIS LITERAL IS CONTINUED ON THE NEXCOPYT
002000-    "T LINE AND ""QUOTED"" THERE".                               COPYT
002100 77  CONTIN                                                       COPYT
002200-        UED-WORD PIC X(3) VALUE "CW".                            COPYT
002300D77  DBG-ITEM PIC X(5) VALUE "DEBUG".                             COPYT
002400 PROCEDURE DIVISION.                                              COPYT
002500 P1.                                                              COPYT
002600     DISPLAY TST-REC "/" SECOND-REC.                              COPYT
002700     MOVE 7 TO CUST-KEY ORD-KEY. DISPLAY CUST-REC "/" ORD-REC.    COPYT
002800     MOVE SPACES TO T1(1) T1(2) T1(3).                            COPYT
002900     COPY K2 REPLACING A-WORD BY LETTER                           COPYT
003000          B-WORD (SUB-1 , 2) BY B-W (IDX, IDX)                    COPYT
003100          ==ADD 5== BY ==ADD 2 3 IDX==                            COPYT
003200          C-WORD OF GRP BY C-WORD IN GRP2                         COPYT
003300          "LITERAL" BY LONG-LIT.                                  COPYT
003400     DISPLAY GRP "/" GRP2.                                        COPYT
003500     DISPLAY CONTINUED-WORD.                                      COPYT
003600D    DISPLAY DBG-ITEM.                                            COPYT
003700     REPLACE ==SHOW-IT== BY ==DISPLAY "SHOWN " ==                 COPYT
003800             ==MOVE LETTER TO==                                   COPYT
003900          BY ==MOVE                                               COPYT
004000* COMMENT WITHIN PSEUDO TEXT                                      COPYT
004100     SPACE TO== ==JUNK== BY ====.                                 COPYT
004200     SHOW-IT LETTER JUNK.                                         COPYT
004300     MOVE     LETTER                                              COPYT
004400         TO LETTER. SHOW-IT "[" LETTER "]".                       COPYT
004500     REPLACE OFF.                                                 COPYT
004600     REPLACE LEADING ==PRE== BY ==CUST== TRAILING ==-FLD== BY     COPYT
004700        ==-KEY==.                                                 COPYT
004800     DISPLAY PRE-KEY " " ORD-FLD.                                 COPYT
004900     REPLACE OFF.                                                 COPYT
005000/    PAGE COMMENT                                                 COPYT
005100     STOP RUN.                                                    COPYT
