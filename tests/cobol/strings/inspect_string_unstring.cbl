*> INSPECT, STRING, UNSTRING; EXAMINE and TRANSFORM.
identification division.
program-id. t05.
data division.
working-storage section.
01 t-pass pic 9(4) value 0.
01 t-fail pic 9(4) value 0.
01 x pic x(20). 01 y pic x(20). 01 z pic x(10). 01 n pic 9(3). 01 m pic 99. 01 p pic 99. 01 sn pic s9(4). 01 d1 pic x(3). 01 c1 pic 99. 01 c2 pic 9.
01 a1 pic x(4). 01 a2 pic x(4). 01 a3 pic x(4) just right. 01 nn pic 9(3)v9. 01 e pic zz9.9. 01 pk pic s9(3) comp-3. 01 f pic 9 value 0.
01 al pic a(4). 01 g. 02 ga pic x(2). 02 gb pic 9(3).
01 t. 02 te pic x(3) occurs 4. 01 ix pic 9. 01 ch pic x value "A". 01 ch2 pic xx value "BC". 01 sgn pic s9(3) sign leading separate.
01 sgt pic s9(3) sign trailing separate.
procedure division.
main-para.
    move "AABBAACC" to x move 0 to m p
    inspect x tallying m for all "A" p for characters before initial "C"
    if m = 4 and p = 2
        add 1 to t-pass
    else add 1 to t-fail display "FAIL 1: m = 4 and p = 2"
        display "     >" m "<"
        display "     >" p "<"
    end-if
    move 0 to m inspect x tallying m for leading "A"
    if m = 2
        add 1 to t-pass
    else add 1 to t-fail display "FAIL 2: m = 2"
    end-if
    move 0 to m inspect x tallying m for all "A" after initial "B"
    if m = 2
        add 1 to t-pass
    else add 1 to t-fail display "FAIL 3: m = 2"
    end-if
    move 0 to m p inspect x tallying m for all "AA" all "B" p for all "C" leading "A"
    if m = 4 and p = 2
        add 1 to t-pass
    else add 1 to t-fail display "FAIL 4: m = 4 and p = 2"
        display "     >" m "<"
        display "     >" p "<"
    end-if
    move 0 to m inspect x tallying m for characters after "B" before "C"
    if m = 3
        add 1 to t-pass
    else add 1 to t-fail display "FAIL 5: m = 3"
        display "     >" m "<"
    end-if
    move 0 to m inspect x tallying m for all "X" before initial "Q"
    if m = 0
        add 1 to t-pass
    else add 1 to t-fail display "FAIL 6: m = 0"
    end-if
    move 0 to m inspect x tallying m for characters after initial "Q"
    if m = 0
        add 1 to t-pass
    else add 1 to t-fail display "FAIL 7: m = 0"
    end-if
    move 0 to m inspect x tallying m for characters before initial "Q"
    if m = 20
        add 1 to t-pass
    else add 1 to t-fail display "FAIL 8: m = 20"
    end-if
    move 0 to m inspect x tallying m for trailing spaces
    if m = 12
        add 1 to t-pass
    else add 1 to t-fail display "FAIL 9: m = 12"
    end-if
    move 0 to m move "XYAYYAY" to y inspect y tallying m for all "Y" after "A" before "A"
    if m = 0
        add 1 to t-pass
    else add 1 to t-fail display "FAIL 10: m = 0"
        display "     >" m "<"
    end-if
    inspect x replacing all "A" by "Z"
    if x = "ZZBBZZCC"
        add 1 to t-pass
    else add 1 to t-fail display "FAIL 11: x = ""ZZBBZZCC"""
    end-if
    inspect x replacing first "Z" by "1" all "B" by "2" leading "Z" by "3" 
    if x = "1Z22ZZCC" or x = "1322ZZCC"
        add 1 to t-pass
    else add 1 to t-fail display "FAIL 12: x = ""1Z22ZZCC"" or x = ""1322ZZCC"""
        display "     >" x "<"
    end-if
    move "ZZZAZ" to x inspect x replacing leading "Z" by "Y"
    if x = "YYYAZ"
        add 1 to t-pass
    else add 1 to t-fail display "FAIL 13: x = ""YYYAZ"""
    end-if
    move "ABCDE" to x inspect x replacing characters by "*" before initial "D"
    if x = "***DE"
        add 1 to t-pass
    else add 1 to t-fail display "FAIL 14: x = ""***DE"""
        display "     >" x "<"
    end-if
    move "ABABAB" to x inspect x replacing first "AB" by "XY" after initial "AB"
    if x = "ABXYAB"
        add 1 to t-pass
    else add 1 to t-fail display "FAIL 15: x = ""ABXYAB"""
    end-if
    move "ABCABC" to x inspect x replacing all "A" by "1" "B" by "2" after initial "C" "C" by "3"
    if x = "1B3123"
        add 1 to t-pass
    else add 1 to t-fail display "FAIL 16: x = ""1B3123"""
        display "     >" x "<"
    end-if
    move "AAA" to x inspect x replacing all "AA" by "BA" 
    if x = "BAA"
        add 1 to t-pass
    else add 1 to t-fail display "FAIL 17: x = ""BAA"""
    end-if
    move "ABC" to x inspect x converting "ABC" to "XYZ"
    if x = "XYZ"
        add 1 to t-pass
    else add 1 to t-fail display "FAIL 18: x = ""XYZ"""
    end-if
    move "abc-xyz" to x inspect x converting "abcdefghijklmnopqrstuvwxyz" to "ABCDEFGHIJKLMNOPQRSTUVWXYZ" after "-"
    if x = "abc-XYZ"
        add 1 to t-pass
    else add 1 to t-fail display "FAIL 19: x = ""abc-XYZ"""
    end-if
    inspect x converting "abX" to spaces
    if x = "  c- YZ"
        add 1 to t-pass
    else add 1 to t-fail display "FAIL 20: x = ""  c- YZ"""
    end-if
    move "1 2 3" to x inspect x replacing all spaces by zeros
    if x = "10203000000000000000"
        add 1 to t-pass
    else add 1 to t-fail display "FAIL 21: x = ""10203000000000000000"""
    end-if
    move "AABA  " to z move 0 to m
    inspect z tallying m for all "A" replacing all "A" by "B" first " " by "*"
    if m = 3 and z = "BBBB*"
        add 1 to t-pass
    else add 1 to t-fail display "FAIL 22: m = 3 and z = ""BBBB*"""
        display "     >" m "<"
        display "     >" z "<"
    end-if
    move "ABAA" to z inspect z replacing trailing " " by "x"
    if z = "ABAAxxxxxx"
        add 1 to t-pass
    else add 1 to t-fail display "FAIL 23: z = ""ABAAxxxxxx"""
    end-if
    move 1212 to sn inspect sn replacing all "1" by "3"
    if sn = 3232
        add 1 to t-pass
    else add 1 to t-fail display "FAIL 24: sn = 3232"
    end-if
    move -1212 to sn inspect sn replacing all "1" by "3"
    if sn = -3232
        add 1 to t-pass
    else add 1 to t-fail display "FAIL 25: sn = -3232"
        display "     >" sn "<"
    end-if
    move 0 to m inspect sn tallying m for all "2"
    if m = 2
        add 1 to t-pass
    else add 1 to t-fail display "FAIL 26: m = 2"
    end-if
    move -121 to sgn move 0 to m inspect sgn tallying m for characters
    if m = 3
        add 1 to t-pass
    else add 1 to t-fail display "FAIL 27: m = 3"
    end-if
    inspect sgn replacing all "1" by "7"
    if sgn = -727
        add 1 to t-pass
    else add 1 to t-fail display "FAIL 28: sgn = -727"
    end-if
    move "ABC" to z move 0 to m inspect z tallying m for all ch all ch2
    if m = 2
        add 1 to t-pass
    else add 1 to t-fail display "FAIL 29: m = 2"
    end-if
    move "x" to y move 0 to m inspect function upper-case(y) tallying m for all "X"
    if m = 1
        add 1 to t-pass
    else add 1 to t-fail display "FAIL 30: m = 1"
    end-if
*> STRING
    move all "." to x move 3 to p
    string "AB" delimited by size "CD,EF" delimited by "," into x with pointer p on overflow move 1 to f end-string
    if x = "..ABCD.............." and p = 7 and f = 0
        add 1 to t-pass
    else add 1 to t-fail display "FAIL 31: x = ""..ABCD.............."" and p = 7 and f = 0"
        display "     >" x "<"
        display "     >" p "<"
    end-if
    move 1 to p move all "." to a1
    string "ABCDEF" delimited size into a1 pointer p overflow move 1 to f end-string
    if a1 = "ABCD" and p = 5 and f = 1
        add 1 to t-pass
    else add 1 to t-fail display "FAIL 32: a1 = ""ABCD"" and p = 5 and f = 1"
        display "     >" a1 "<"
        display "     >" p "<"
        display "     >" f "<"
    end-if
    move 0 to p f string "A" delimited by size into a1 pointer p on overflow move 2 to f end-string
    if f = 2 and p = 0 and a1 = "ABCD"
        add 1 to t-pass
    else add 1 to t-fail display "FAIL 33: f = 2 and p = 0 and a1 = ""ABCD"""
    end-if
    move 6 to p move 0 to f string "A" delimited by size into a1 pointer p on overflow move 2 to f not on overflow move 3 to f end-string
    if f = 2
        add 1 to t-pass
    else add 1 to t-fail display "FAIL 34: f = 2"
    end-if
    move 12 to n move spaces to x
    string n "-" ch2 " " delimited by size into x
    if x = "012-BC"
        add 1 to t-pass
    else add 1 to t-fail display "FAIL 35: x = ""012-BC"""
    end-if
    move "AB  CD" to y move spaces to x
    string y delimited by "  " "/" delimited by size y delimited by spaces into x
    if x = "AB/AB"
        add 1 to t-pass
    else add 1 to t-fail display "FAIL 36: x = ""AB/AB"""
        display "     >" x "<"
    end-if
    move spaces to x string "abc" "def" into x
    if x = "abcdef"
        add 1 to t-pass
    else add 1 to t-fail display "FAIL 37: x = ""abcdef"""
    end-if
    move spaces to x string quote "x" quote delimited by size into x
    if x = """x"""
        add 1 to t-pass
    else add 1 to t-fail display "FAIL 38: x = """"""x"""""""
    end-if
    move spaces to x string space "x" zero delimited by size into x
    if x = " x0"
        add 1 to t-pass
    else add 1 to t-fail display "FAIL 39: x = "" x0"""
    end-if
    move "ABCDEFGHIJ" to z string z(1:3) z(2:3) delimited by size into x(3:10)
    if x(3:6) = "ABCBCD"
        add 1 to t-pass
    else add 1 to t-fail display "FAIL 40: x(3:6) = ""ABCBCD"""
    end-if
*> UNSTRING
    move "AB,CD;EF" to x move spaces to a1 a2 a3 move 0 to m
    unstring x delimited by "," or ";" into a1 delimiter in d1 count in c1 a2 delimiter d1 count c2 a3 tallying in m
    if a1 = "AB" and a2 = "CD" and a3 = "  EF" or = "    "
        add 1 to t-pass
    else add 1 to t-fail display "FAIL 41: a1 = ""AB"" and a2 = ""CD"" and a3 = ""  EF"" or = ""    """
        display "     >" a1 "<"
        display "     >" a2 "<"
        display "     >" a3 "<"
    end-if
    if m = 3 and c1 = 2 and c2 = 2 and d1 = ";"
        add 1 to t-pass
    else add 1 to t-fail display "FAIL 42: m = 3 and c1 = 2 and c2 = 2 and d1 = "";"""
        display "     >" m "<"
        display "     >" c1 "<"
        display "     >" c2 "<"
        display "     >" d1 "<"
    end-if
    move "AB,,CD" to x move "ZZ" to a2 unstring x delimited by "," into a1 a2 a3
    if a1 = "AB" and a2 = spaces
        add 1 to t-pass
    else add 1 to t-fail display "FAIL 43: a1 = ""AB"" and a2 = spaces"
    end-if
    move "AB,,CD" to x unstring x delimited by all "," into a1 delimiter in d1 a2
    if a1 = "AB" and a2 = "CD" and d1 = ","
        add 1 to t-pass
    else add 1 to t-fail display "FAIL 44: a1 = ""AB"" and a2 = ""CD"" and d1 = "","""
    end-if
    move "12,3456,7" to x unstring x delimited by "," into n sn m
    if n = 12 and sn = 3456 and m = 7
        add 1 to t-pass
    else add 1 to t-fail display "FAIL 45: n = 12 and sn = 3456 and m = 7"
    end-if
    move "ABCDEFGHIJ" to z move 3 to p unstring z into a1 a2 pointer p
    if a1 = "CDEF" and a2 = "GHIJ" and p = 11
        add 1 to t-pass
    else add 1 to t-fail display "FAIL 46: a1 = ""CDEF"" and a2 = ""GHIJ"" and p = 11"
    end-if
    move 0 to f move 1 to p unstring z into a1 a2 pointer p on overflow move 1 to f not overflow move 2 to f end-unstring
    if f = 1 and p = 9
        add 1 to t-pass
    else add 1 to t-fail display "FAIL 47: f = 1 and p = 9"
    end-if
    move 0 to p move 0 to f move "KEEP" to a1 unstring z into a1 pointer p overflow move 5 to f end-unstring
    if f = 5 and a1 = "KEEP"
        add 1 to t-pass
    else add 1 to t-fail display "FAIL 48: f = 5 and a1 = ""KEEP"""
    end-if
    move "A B  C" to x unstring x delimited by all spaces into a1 a2 a3
    if a1 = "A" and a2 = "B" and a3 = "   C"
        add 1 to t-pass
    else add 1 to t-fail display "FAIL 49: a1 = ""A"" and a2 = ""B"" and a3 = ""   C"""
    end-if
    move "1234567" to x unstring x into nn e m
    if nn = 234 and e = "567.0"
        add 1 to t-pass
    else add 1 to t-fail display "FAIL 50: nn = 234 and e = ""567.0"""
        display "     >" nn "<"
        display "     >" e "<"
    end-if
    move "123-456" to x unstring x delimited by "-" into pk e
    if pk = 123 and e = "456.0"
        add 1 to t-pass
    else add 1 to t-fail display "FAIL 51: pk = 123 and e = ""456.0"""
        display "     >" pk "<"
        display "     >" e "<"
    end-if
    move 0 to m move "a:b:c" to x unstring x delimited by ":" into te(1) te(2) te(3) tallying m
    if te(3) = "c" and m = 3
        add 1 to t-pass
    else add 1 to t-fail display "FAIL 52: te(3) = ""c"" and m = 3"
    end-if
    move 1 to ix move "2;xy;zz" to x unstring x delimited by ";" into ix te(ix) 
    if ix = 2
        add 1 to t-pass
    else add 1 to t-fail display "FAIL 53: ix = 2"
        display "     >" ix "<"
        display "     >" t "<"
    end-if
    move "ABxxCDxxEF" to x unstring x delimited by "xx" into a1 count c1 a2 delimiter d1 a3
    if a2 = "CD" and d1 = "xx"
        add 1 to t-pass
    else add 1 to t-fail display "FAIL 54: a2 = ""CD"" and d1 = ""xx"""
    end-if
    move "AB" to x(1:2) unstring x(1:2) delimited by "," into a1
    if a1 = "AB"
        add 1 to t-pass
    else add 1 to t-fail display "FAIL 55: a1 = ""AB"""
    end-if
    move "A" to x unstring x delimited by "," or space into a1 delimiter d1
    if d1 = space
        add 1 to t-pass
    else add 1 to t-fail display "FAIL 56: d1 = space"
    end-if
    move low-values to d1 move "ABCD" to a2 unstring a2 delimited by "," into a1 delimiter d1
    if d1 = spaces
        add 1 to t-pass
    else add 1 to t-fail display "FAIL 57: d1 = spaces"
    end-if
    move "00123" to x unstring x(1:5) into al
    if al = "0012"
        add 1 to t-pass
    else add 1 to t-fail display "FAIL 58: al = ""0012"""
    end-if
    move "-4,3" to x unstring x delimited by "," into sgt sgn
    if sgt = -4 and sgn = 3
        add 1 to t-pass
    else add 1 to t-fail display "FAIL 67: sgt = -4 and sgn = 3"
    end-if
    move "4  ,-3" to x unstring x delimited by "," into sgn sgt
    if sgn = 4 and sgt = -3
        add 1 to t-pass
    else add 1 to t-fail display "FAIL 68: sgn = 4 and sgt = -3"
    end-if
*> EXAMINE and TRANSFORM
    move "AABBA" to z
    examine z tallying all "A"
    if tally = 3
        add 1 to t-pass
    else add 1 to t-fail display "FAIL 59: tally = 3"
    end-if
    examine z tallying leading "A" replacing by "X"
    if tally = 2 and z = "XXBBA"
        add 1 to t-pass
    else add 1 to t-fail display "FAIL 60: tally = 2 and z = ""XXBBA"""
    end-if
    examine z replacing until first "B" by "*"
    if z = "**BBA"
        add 1 to t-pass
    else add 1 to t-fail display "FAIL 61: z = ""**BBA"""
    end-if
    examine z tallying until first "A"
    if tally = 4
        add 1 to t-pass
    else add 1 to t-fail display "FAIL 62: tally = 4"
    end-if
    examine z replacing all "B" by "C"
    if z = "**CCA"
        add 1 to t-pass
    else add 1 to t-fail display "FAIL 63: z = ""**CCA"""
    end-if
    examine z replacing first "C" by "D"
    if z = "**DCA"
        add 1 to t-pass
    else add 1 to t-fail display "FAIL 64: z = ""**DCA"""
    end-if
    transform z characters from "*A" to "+B"
    if z = "++DCB"
        add 1 to t-pass
    else add 1 to t-fail display "FAIL 65: z = ""++DCB"""
    end-if
    transform z from "D" to " "
    if z = "++ CB"
        add 1 to t-pass
    else add 1 to t-fail display "FAIL 66: z = ""++ CB"""
    end-if
    display "passed " t-pass " failed " t-fail
    stop run.
