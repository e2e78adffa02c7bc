break shown.cbl:37
run
cobol print TOTAL OF REC
cobol print total in second
cobol print LAST-SIGN
cobol print FIRST-SIGN
cobol print OWN-SIGN
cobol print BINARY-ITEM
cobol print FLOATING
cobol print THOUSANDS
cobol print BOX (2, 3)
cobol print NOT-A-NUMBER
cobol print MINE
frame function p1_body
cobol print BOX OF SHELF (SUB, 3)
cobol print SECOND
cobol print SHELF (1)
cobol locals
cobol print NOBODY
