       IDENTIFICATION DIVISION.
       PROGRAM-ID. SM2.
       DATA DIVISION.
       WORKING-STORAGE SECTION.
       01 ALPHA PIC X(3) VALUE "A""B". 01 BETA PIC X(3).
       01 GAMMA PIC X(3). 01 DELTA PIC X(3) VALUE "DDD".
       01 OMEGA PIC X(3) VALUE "OOO".
       01 NT. 02 NR OCCURS 2. 03 NUM-1 PIC 99 OCCURS 2 VALUE 0.
       01 NUM-2 PIC 99 VALUE 50.
       PROCEDURE DIVISION.
       P1.
           COPY KQ1 REPLACING ==MOVE ALPHA
      *        COMMENT INSIDE THE PSEUDO-TEXT
               TO BETA GAMMA DELTA== BY ==MOVE
               OMEGA TO BETA==
               NUM-1 (1 2) BY NUM-2
               "A""B" BY "XYZ".
           DISPLAY ALPHA BETA GAMMA DELTA NUM-2.
           COPY KQ1 REPLACING ALPHA BY OMEGA
             == , == BY == ==.
           DISPLAY ALPHA BETA GAMMA DELTA NUM-1 (1, 2).
           REPLACE ==DISPLAY FOO== BY ==DISPLAY "LONG LITERAL THAT IS CO
      -    "NTINUED"== ==ZIP== BY ====.
           DISPLAY FOO. ZIP ZIP MOVE ZIP 5 TO NUM-2.
           DISPLAY ZIP NUM-2 ZIP.
           REPLACE ==NUM-2== BY ==NUM-1 (2, 2)==.
           MOVE 7 TO NUM-2. REPLACE OFF. DISPLAY NUM-2 NUM-1 (2, 2).
      * -5 is one word, - 5 and (5 are two.
           REPLACE ==5== BY ==6== ==-7== BY ==+8== ==NUM-9== BY ==9==.
           COMPUTE NUM-2 = -5 + 20 - 5 + (5) -7. DISPLAY NUM-2.
           COMPUTE NUM-2 = 50 -NUM-9. REPLACE OFF. DISPLAY NUM-2.
           STOP RUN.
