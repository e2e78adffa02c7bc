000100*    COMMENT IN COPYBOOK                                          K1FDA
000200 01  TST-REC.                                                     K1FDA
000300     02  TST-NAME  PICTURE X(10)  VALUE "ABC".                    K1FDA
000400     02  TST-NUM   PIC 9(3) VALUE 12.                             K1FDA
000500     02  XX-FIELD  PIC X(4) VALUE "PREF".                         K1FDA
