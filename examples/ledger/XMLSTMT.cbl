       IDENTIFICATION DIVISION.
       PROGRAM-ID. XMLSTMT.
      * Writes each account's statement as an XML document, a line of
      * XMLOUT, reads all of them back and compares the sums.
       ENVIRONMENT DIVISION.
       INPUT-OUTPUT SECTION.
       FILE-CONTROL.
           SELECT POSTED ASSIGN TO POSTED
               ORGANIZATION INDEXED ACCESS SEQUENTIAL
               SHARING WITH NO OTHER
               RECORD KEY IS PO-REFERENCE FILE STATUS IS PO-STAT.
           SELECT MASTER ASSIGN TO MASTER
               ORGANIZATION INDEXED ACCESS DYNAMIC
               SHARING WITH NO OTHER
               RECORD KEY IS AC-NUMBER
               ALTERNATE RECORD KEY IS AC-NAME WITH DUPLICATES
               FILE STATUS IS AC-STAT.
           SELECT XMLOUT ASSIGN TO XMLOUT
               ORGANIZATION LINE SEQUENTIAL FILE STATUS IS XO-STAT.
           SELECT SORT-FILE ASSIGN TO SORTWORK.
       DATA DIVISION.
       FILE SECTION.
       FD  POSTED.
       01  POSTED-RECORD.
       COPY POSTED REPLACING ==:PRE:== BY ==PO==.
       FD  MASTER.
       COPY MASTER.
       FD  XMLOUT.
       01  XML-LINE                PIC X(32000).
       SD  SORT-FILE.
       01  SORT-RECORD.
       COPY POSTED REPLACING ==:PRE:== BY ==SR==.
       WORKING-STORAGE SECTION.
       01  PO-STAT                 PIC XX.
       01  AC-STAT                 PIC XX.
       01  XO-STAT                 PIC XX.
       01  AT-END-SWITCH           PIC X.
           88  AT-END-OF-FILE      VALUE "Y".
       01  ACCOUNT-SWITCH          PIC X VALUE "N".
           88  IN-ACCOUNT          VALUE "Y" FALSE "N".
       01  LAST-ACCOUNT            PIC 9(6).
       01  DOCUMENTS-OUT           PIC S9(9) COMP-3 VALUE ZERO.
       01  DOCUMENTS-IN            PIC S9(9) COMP-3 VALUE ZERO.
       01  SUM-OUT                 PIC S9(13)V99 COMP-3 VALUE ZERO.
       01  SUM-IN                  PIC S9(13)V99 COMP-3 VALUE ZERO.
      * What a document is made of. A statement of more than 100
      * postings goes on in another document.
       01  STATEMENT-OF-ACCOUNT.
           05  ACCOUNT             PIC 9(6).
           05  NAME                PIC X(24).
           05  OPENING             PIC S9(11)V99 COMP-3.
           05  POSTINGS            PIC 9(4) COMP-5.
           05  POSTING OCCURS 0 TO 100 DEPENDING ON POSTINGS.
               10  DAY-OF-POSTING  PIC 9(8).
               10  REF-OF-POSTING  PIC X(8).
               10  AMOUNT          PIC S9(11)V99 COMP-3.
       01  DOCUMENT-LENGTH         PIC 9(9) COMP-5.
       01  ELEMENT-NAME            PIC X(30).
       01  READ-AMOUNT             PIC S9(11)V99 COMP-3.
       01  COUNT-OUT               PIC ZZZ,ZZZ,ZZ9.
       01  MONEY-OUT               PIC $$,$$$,$$$,$$$,$$9.99CR.
       PROCEDURE DIVISION.
       MAIN-LINE.
           OPEN INPUT POSTED
           IF PO-STAT NOT = "00"
               DISPLAY "FILE POSTED STATUS " PO-STAT
               PERFORM GIVE-UP
           END-IF
           OPEN INPUT MASTER
           IF AC-STAT NOT = "00"
               DISPLAY "FILE MASTER STATUS " AC-STAT
               PERFORM GIVE-UP
           END-IF
           OPEN OUTPUT XMLOUT
           IF XO-STAT NOT = "00"
               DISPLAY "FILE XMLOUT STATUS " XO-STAT
               PERFORM GIVE-UP
           END-IF
           SORT SORT-FILE
               ON ASCENDING KEY SR-ACCOUNT SR-DATE SR-SEQUENCE
               INPUT PROCEDURE IS GIVE-POSTINGS
               OUTPUT PROCEDURE IS WRITE-STATEMENTS
           CLOSE POSTED MASTER XMLOUT
           PERFORM READ-STATEMENTS
           MOVE DOCUMENTS-OUT TO COUNT-OUT
           DISPLAY "DOCUMENTS WRITTEN       " COUNT-OUT
           MOVE DOCUMENTS-IN TO COUNT-OUT
           DISPLAY "DOCUMENTS READ          " COUNT-OUT
           MOVE SUM-OUT TO MONEY-OUT
           DISPLAY "AMOUNTS WRITTEN         " MONEY-OUT
           MOVE SUM-IN TO MONEY-OUT
           DISPLAY "AMOUNTS READ            " MONEY-OUT
           IF DOCUMENTS-IN NOT = DOCUMENTS-OUT OR SUM-IN NOT = SUM-OUT
               DISPLAY "STATEMENTS DISAGREE"
               PERFORM GIVE-UP
           END-IF
           DISPLAY "STATEMENTS AGREE"
           STOP RUN.

       GIVE-UP.
           MOVE 12 TO RETURN-CODE
           STOP RUN.

       GIVE-POSTINGS.
           MOVE "N" TO AT-END-SWITCH
           PERFORM UNTIL AT-END-OF-FILE
               READ POSTED NEXT RECORD
                   AT END SET AT-END-OF-FILE TO TRUE
                   NOT AT END RELEASE SORT-RECORD FROM POSTED-RECORD
               END-READ
           END-PERFORM.

       WRITE-STATEMENTS.
           MOVE "N" TO AT-END-SWITCH
           PERFORM UNTIL AT-END-OF-FILE
               RETURN SORT-FILE
                   AT END SET AT-END-OF-FILE TO TRUE
                   NOT AT END PERFORM TAKE-POSTING
               END-RETURN
           END-PERFORM
           PERFORM WRITE-DOCUMENT.

       TAKE-POSTING.
           IF NOT IN-ACCOUNT OR SR-ACCOUNT NOT = LAST-ACCOUNT
                   OR POSTINGS = 100
               PERFORM WRITE-DOCUMENT
               PERFORM BEGIN-DOCUMENT
           END-IF
           ADD 1 TO POSTINGS
           MOVE SR-DATE TO DAY-OF-POSTING (POSTINGS)
           MOVE SR-REFERENCE TO REF-OF-POSTING (POSTINGS)
           MOVE SR-AMOUNT TO AMOUNT (POSTINGS)
           ADD SR-AMOUNT TO SUM-OUT.

       BEGIN-DOCUMENT.
           SET IN-ACCOUNT TO TRUE
           MOVE SR-ACCOUNT TO LAST-ACCOUNT AC-NUMBER ACCOUNT
           READ MASTER
               INVALID KEY
                   DISPLAY "FILE MASTER STATUS " AC-STAT
                   PERFORM GIVE-UP
           END-READ
           MOVE AC-NAME TO NAME
           MOVE AC-OPENING TO OPENING
           MOVE ZERO TO POSTINGS.

       WRITE-DOCUMENT.
           IF IN-ACCOUNT
               MOVE SPACES TO XML-LINE
               XML GENERATE XML-LINE FROM STATEMENT-OF-ACCOUNT
                   COUNT IN DOCUMENT-LENGTH
                   NAME OF REF-OF-POSTING IS "REFERENCE"
                   TYPE OF ACCOUNT IS ATTRIBUTE
                   SUPPRESS POSTINGS
                   ON EXCEPTION
                       DISPLAY "XML GENERATE FAILED " XML-CODE
                       PERFORM GIVE-UP
               END-XML
               WRITE XML-LINE
               IF XO-STAT NOT = "00"
                   DISPLAY "FILE XMLOUT STATUS " XO-STAT
                   PERFORM GIVE-UP
               END-IF
               ADD 1 TO DOCUMENTS-OUT
           END-IF.

       READ-STATEMENTS.
           MOVE "N" TO AT-END-SWITCH
           OPEN INPUT XMLOUT
           PERFORM UNTIL AT-END-OF-FILE
               READ XMLOUT
                   AT END SET AT-END-OF-FILE TO TRUE
                   NOT AT END PERFORM READ-STATEMENT
               END-READ
           END-PERFORM
           CLOSE XMLOUT.

       READ-STATEMENT.
           XML PARSE XML-LINE PROCESSING PROCEDURE IS TAKE-EVENT
               ON EXCEPTION
                   DISPLAY "XML PARSE FAILED " XML-CODE
                   PERFORM GIVE-UP
               NOT ON EXCEPTION
                   ADD 1 TO DOCUMENTS-IN
           END-XML.

       TAKE-EVENT.
           EVALUATE XML-EVENT
               WHEN "START-OF-ELEMENT"
                   MOVE XML-TEXT TO ELEMENT-NAME
               WHEN "END-OF-ELEMENT"
                   MOVE SPACES TO ELEMENT-NAME
               WHEN "CONTENT-CHARACTERS"
                   IF ELEMENT-NAME = "AMOUNT"
                       COMPUTE READ-AMOUNT = FUNCTION NUMVAL (XML-TEXT)
                       ADD READ-AMOUNT TO SUM-IN
                   END-IF
           END-EVALUATE.
