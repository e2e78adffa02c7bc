           SELECT DUMMY-FILE ASSIGN TO "dummy.dat".
