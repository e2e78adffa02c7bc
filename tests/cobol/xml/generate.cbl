       IDENTIFICATION DIVISION.
       PROGRAM-ID. GENERATE-TRIAL.
       DATA DIVISION.
       WORKING-STORAGE SECTION.
      * Every kind of item, and what has no place in a document.
       01 Order-Rec.
          02 Ident           PIC 9(6) VALUE 123.
          02 FILLER          PIC X(3) VALUE "zzz".
          02 Title           PIC X(10) VALUE "a<b & 'c'".
          02 Again REDEFINES Title.
             03 First-Half   PIC X(5).
             03 Other-Half   PIC 9(5).
          02 HOW-MANY        PIC 9 COMP-5 VALUE 2.
          02 Line-Item OCCURS 0 TO 3 DEPENDING ON HOW-MANY.
             03 Qty          PIC S9(3) COMP-3.
             03 Price        PIC S9(5)V99 COMP.
       01 SHAPES.
          02 ONE-BYTE        PIC X VALUE "b".
          02 ALIGNED         PIC S9(9) COMP SYNC VALUE -7.
          02 EDITED          PIC $ZZ9.99 VALUE "$ 12.50".
          02 THOUSANDS       PIC S9(3)P(3) VALUE 45000.
          02 SMALL-ONE       PIC VPP99 VALUE .0012.
          02 SEPARATED       PIC S9(4) SIGN LEADING SEPARATE VALUE -12.
          02 WIDE-ONE        PIC S9(18) COMP-3
                             VALUE -123456789012345678.
          02 A-POINTER       POINTER.
          02 FILLER.
             03 IN-FILLER    PIC X(3) VALUE "in".
          02 FILLER OCCURS 2.
             03 NESTED OCCURS 2 PIC 99 VALUE 7.
          02 LAST-ONE        PIC XX VALUE SPACES.
       01 TABLE-OF-ROWS.
          02 ROW-OF OCCURS 3.
             03 A            PIC X.
             03 B            PIC S9V9 OCCURS 2.
       01 DOC                PIC X(600).
       01 L                  PIC 9(5).
       PROCEDURE DIVISION.
       MAIN-LINE.
           MOVE 5 TO QTY (1) MOVE -12.5 TO PRICE (1)
           MOVE 0 TO QTY (2) MOVE .05 TO PRICE (2)
           XML GENERATE DOC FROM ORDER-REC COUNT IN L
               WITH ENCODING 1208 XML-DECLARATION ATTRIBUTES
               NAMESPACE IS "http://x" NAMESPACE-PREFIX IS "p"
               NAME OF QTY IS "Menge"
               ON EXCEPTION DISPLAY "EXCEPTION " XML-CODE
               NOT ON EXCEPTION DISPLAY "GENERATED " XML-CODE
           END-XML
           DISPLAY L ":" DOC (1:L).
           MOVE 0 TO HOW-MANY.
           XML GENERATE DOC FROM ORDER-REC COUNT L
               NAME OF ORDER-REC IS "order" TITLE IS "t"
               TYPE IDENT ATTRIBUTE HOW-MANY IS CONTENT
               SUPPRESS TITLE.
           DISPLAY L ":" DOC (1:L).
           XML GENERATE DOC FROM SHAPES COUNT IN L END-XML
           DISPLAY L ":" DOC (1:L).

      * An occurrence of a table; a receiver that is too small.
           MOVE "xyz" TO TABLE-OF-ROWS.
           MOVE "q" TO A (2). MOVE 1.5 TO B (2, 1).
           MOVE -2.5 TO B (2, 2).
           MOVE SPACES TO DOC.
           XML GENERATE DOC (3:) FROM ROW-OF (HOW-MANY + 2) COUNT IN L.
           DISPLAY L ":" DOC (1:L + 2).
           MOVE ALL "." TO DOC.
           XML GENERATE DOC (1:20) FROM ROW-OF (2) COUNT IN L
               ON EXCEPTION DISPLAY "EXCEPTION " XML-CODE " " L
               NOT ON EXCEPTION DISPLAY "NO EXCEPTION".
           DISPLAY DOC (1:24).
           XML GENERATE DOC FROM LAST-ONE COUNT IN L
               WITH ENCODING "no-such-encoding"
               ON EXCEPTION DISPLAY "EXCEPTION " XML-CODE.
           CALL "COMMA-TRIAL".
           STOP RUN.

       IDENTIFICATION DIVISION.
       PROGRAM-ID. COMMA-TRIAL.
       ENVIRONMENT DIVISION.
       CONFIGURATION SECTION.
       SPECIAL-NAMES. DECIMAL-POINT IS COMMA.
       DATA DIVISION.
       WORKING-STORAGE SECTION.
       01 AMOUNT             PIC S9(5)V99 VALUE -1234,5.
       01 DOC                PIC X(60).
       PROCEDURE DIVISION.
       MAIN-LINE.
           XML GENERATE DOC FROM AMOUNT.
           DISPLAY DOC (1:40).
