           SELECT X-FILE ASSIGN TO "xfile.dat"
