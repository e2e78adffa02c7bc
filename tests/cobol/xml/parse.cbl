       IDENTIFICATION DIVISION.
       PROGRAM-ID. PARSE-TRIAL.
       DATA DIVISION.
       WORKING-STORAGE SECTION.
       01 DOC                PIC X(400).
       01 STOP-AT            PIC X(10) VALUE SPACES.
       01 INNER              PIC X VALUE "N".
       01 EVENTS             PIC 9(3) VALUE 0.
       01 TOTAL              PIC S9(5)V99 VALUE 0.
       01 LAST-NAME          PIC X(10).
       PROCEDURE DIVISION.
       MAIN-LINE.
           STRING "<?xml version='1.0'?><!-- note --><list n='1&amp;2'>"
               "<?target data?><item><![CDATA[<x>]]></item>"
               "<sum>12.50</sum><sum> -2.25 </sum>&#x41;&unknown;"
               "</list>" DELIMITED BY SIZE INTO DOC.
           XML PARSE DOC PROCESSING PROCEDURE IS SHOW-EVENT
               THRU SHOW-EXIT
               ON EXCEPTION DISPLAY "EXCEPTION " XML-CODE
               NOT ON EXCEPTION DISPLAY "PARSED " XML-CODE
           END-XML.
           DISPLAY "EVENTS " EVENTS " TOTAL " TOTAL.

      * The procedure ends the statement; the document is at fault.
           MOVE "item" TO STOP-AT.
           XML PARSE DOC PROCESSING PROCEDURE SHOW-EVENT THRU SHOW-EXIT
               ON EXCEPTION DISPLAY "EXCEPTION " XML-CODE
               NOT ON EXCEPTION DISPLAY "PARSED".
           MOVE SPACES TO STOP-AT.
           XML PARSE DOC (1:60) PROCESSING PROCEDURE SHOW-EVENT
               THRU SHOW-EXIT
               ON EXCEPTION DISPLAY "EXCEPTION " XML-CODE.

      * A section as procedure; a program with an XML PARSE of its own
      * called from it; the end of the run from within.
           MOVE "<a><b>text</b></a>" TO DOC.
           XML PARSE DOC ENCODING 1208 PROCESSING PROCEDURE A-SECTION
               NOT EXCEPTION DISPLAY "PARSED".
           MOVE "Y" TO INNER.
           XML PARSE DOC PROCESSING PROCEDURE A-SECTION.
           DISPLAY "NOT REACHED".
           STOP RUN.
       SHOW-EVENT.
           ADD 1 TO EVENTS.
           IF XML-EVENT = "END-OF-DOCUMENT" GO TO SHOW-EXIT.
           DISPLAY XML-EVENT FUNCTION LENGTH (XML-TEXT)
           IF XML-EVENT NOT = "START-OF-DOCUMENT"
               DISPLAY "  [" XML-TEXT "]".
           EVALUATE XML-EVENT
             WHEN "START-OF-ELEMENT"
               MOVE XML-TEXT TO LAST-NAME
               IF LAST-NAME = STOP-AT MOVE -1 TO XML-CODE END-IF
             WHEN "CONTENT-CHARACTERS"
               IF LAST-NAME = "sum"
                   COMPUTE TOTAL = TOTAL + FUNCTION NUMVAL (XML-TEXT)
               END-IF
           END-EVALUATE.
       SHOW-EXIT.
           EXIT.
       A-SECTION SECTION.
       A-1.
           IF XML-EVENT = "CONTENT-CHARACTERS" PERFORM A-2.
           GO TO A-9.
       A-2.
           DISPLAY "CONTENT " XML-TEXT.
           CALL "INNER-PARSE" USING DOC.
           DISPLAY "STILL " XML-TEXT.
           IF INNER = "Y" STOP RUN.
       A-9.
           EXIT.
       B-SECTION SECTION.
       B-1.
           DISPLAY "NOT REACHED".

       IDENTIFICATION DIVISION.
       PROGRAM-ID. INNER-PARSE.
       DATA DIVISION.
       LINKAGE SECTION.
       01 DOC                PIC X(20).
       PROCEDURE DIVISION USING DOC.
       MAIN-LINE.
           XML PARSE DOC PROCESSING PROCEDURE TELL.
           EXIT PROGRAM.
       TELL.
           DISPLAY "INNER " XML-EVENT.
