000100     MOVE A-WORD TO B-WORD (SUB-1 , 2)                            K2
000200     ADD 5 TO C-WORD OF GRP.                                      K2
000300     DISPLAY "LITERAL".                                           K2
