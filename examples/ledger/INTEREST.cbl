       IDENTIFICATION DIVISION.
       PROGRAM-ID. INTEREST.
      * Interest of a number of days, rounded to the cent.
       DATA DIVISION.
       LINKAGE SECTION.
       01  IN-BALANCE              PIC S9(11)V99 COMP-3.
       01  IN-RATE                 PIC S9V9(4) COMP-3.
       01  IN-DAYS                 PIC S9(3) COMP-3.
       01  OUT-INTEREST            PIC S9(11)V99 COMP-3.
       PROCEDURE DIVISION USING IN-BALANCE IN-RATE IN-DAYS
                                OUT-INTEREST.
           COMPUTE OUT-INTEREST ROUNDED =
               IN-BALANCE * IN-RATE * IN-DAYS / 365
           GOBACK.
