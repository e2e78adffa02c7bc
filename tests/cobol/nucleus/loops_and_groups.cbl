*> PERFORM VARYING, SEARCH, SET, REDEFINES, RENAMES, CORRESPONDING, INITIALIZE.
identification division.
program-id. t06.
data division.
working-storage section.
01 t-pass pic 9(4) value 0.
01 t-fail pic 9(4) value 0.
01 i pic s99 value 0. 01 j pic s99. 01 k pic s99. 01 s pic x(60). 01 p pic 99. 01 n pic 9(4). 01 c pic 9. 01 v pic s9v9. 01 lim pic 99.
01 t. 02 te pic s99 occurs 10 indexed by x1 x2. 01 u. 02 ue pic x(7) occurs 10 indexed by y1 y2.
01 id1 index. 01 id2 usage is index. 01 d pic 9(3).
01 g. 02 ga occurs 3 indexed by ig. 03 gb occurs 4 indexed by jg. 04 gc pic 99. 04 gd pic x.
01 w. 02 wn pic 9 value 3. 02 wt occurs 1 to 9 depending on wn ascending key is wk indexed by wi. 03 wk pic 99. 03 wv pic x.
01 a pic x(6). 01 b redefines a. 02 b1 pic 9(2). 02 b2 pic x(4). 02 b3 redefines b2 pic 9(4). 02 b4 redefines b2. 03 b5 pic 99 occurs 2.
01 r. 02 r1 pic x(2). 02 r2. 03 r3 pic 9(2). 03 r4 pic x(3). 02 r5 pic x.
66 rn1 renames r1 thru r3. 66 rn2 renames r2. 66 rn3 renames r3. 66 rn4 renames r4 through r5.
01 q1. 02 z pic 9 value 1. 02 y. 03 z2 pic 9 value 2.
01 q2. 02 z pic 9 value 3. 02 y. 03 z2 pic 9 value 4. 03 z3 pic 9 value 5.
01 cs. 02 ca pic 9(3). 02 cb pic x(3). 02 cc. 03 cd pic 99. 03 filler pic x. 02 ce pic 9 occurs 2.
01 ct. 02 cb pic x(5). 02 ca pic 9(5). 02 cc. 03 cd pic zz9. 02 cf pic x. 02 ce pic 9 occurs 2.
01 ini. 02 ia pic x(2). 02 ib pic 9(2). 02 ic pic zz9. 02 id3 pic xx/xx. 02 filler pic x value "F". 02 ie pic a(2). 02 ift occurs 2. 03 ig1 pic 9 comp. 03 ih pic x. 02 ii pic s9(3) comp-3. 02 ij redefines ii pic xx.
procedure division.
main-para.
    move spaces to s move 1 to p
    perform a-para varying i from 1 by 1 until i > 3 after j from i by 1 until j > 3
    if s = "11 12 13 22 23 33"
        add 1 to t-pass
    else add 1 to t-fail display "FAIL 1: s = ""11 12 13 22 23 33"""
        display "     >" s "<"
    end-if
    if i = 4
        add 1 to t-pass
    else add 1 to t-fail display "FAIL 2: i = 4"
    end-if
    move spaces to s move 1 to p
    perform a-para varying i from 3 by -1 until i < 1 after j from 1 by 1 until j > i
    if s = "31 32 33 21 22 11"
        add 1 to t-pass
    else add 1 to t-fail display "FAIL 3: s = ""31 32 33 21 22 11"""
        display "     >" s "<"
    end-if
    move spaces to s move 1 to p
    perform a-para with test after varying i from 1 by 1 until i >= 2 after j from 1 by 2 until j > 2
    if s = "11 13 21 23"
        add 1 to t-pass
    else add 1 to t-fail display "FAIL 4: s = ""11 13 21 23"""
        display "     >" s "<"
    end-if
    if i = 2 and j = 3
        add 1 to t-pass
    else add 1 to t-fail display "FAIL 5: i = 2 and j = 3"
    end-if
    move 0 to n perform b-para varying i from 1 by 1 until i > 2 after j from 1 by 1 until j > 3 after k from 1 by 1 until k > 4
    if n = 24
        add 1 to t-pass
    else add 1 to t-fail display "FAIL 6: n = 24"
    end-if
    if i = 3 and j = 1 and k = 1
        add 1 to t-pass
    else add 1 to t-fail display "FAIL 7: i = 3 and j = 1 and k = 1"
    end-if
    move 0 to n move 3 to lim
    perform varying i from 1 by 1 until i > lim add 1 to n if n = 2 move 5 to lim end-if end-perform
    if n = 5
        add 1 to t-pass
    else add 1 to t-fail display "FAIL 8: n = 5"
    end-if
    move 0 to n move 2 to c
    perform varying v from -1 by 0.5 until v > 1 add 1 to n end-perform
    if n = 5
        add 1 to t-pass
    else add 1 to t-fail display "FAIL 9: n = 5"
    end-if
    move 0 to n perform b-para c times
    if n = 2
        add 1 to t-pass
    else add 1 to t-fail display "FAIL 10: n = 2"
    end-if
    move 3 to c move 0 to n perform c-para c times
    if n = 3 and c = 9
        add 1 to t-pass
    else add 1 to t-fail display "FAIL 11: n = 3 and c = 9"
    end-if
    move 0 to n perform b-para 0 times
    if n = 0
        add 1 to t-pass
    else add 1 to t-fail display "FAIL 12: n = 0"
    end-if
    move -1 to i perform b-para i times
    if n = 0
        add 1 to t-pass
    else add 1 to t-fail display "FAIL 13: n = 0"
    end-if
    perform b-para until n > 4
    if n = 5
        add 1 to t-pass
    else add 1 to t-fail display "FAIL 14: n = 5"
    end-if
    perform b-para test after until n > 4
    if n = 6
        add 1 to t-pass
    else add 1 to t-fail display "FAIL 15: n = 6"
    end-if
    perform varying x1 from 1 by 1 until x1 > 10 set i to x1 move i to te(x1) end-perform
    if te(10) = 10
        add 1 to t-pass
    else add 1 to t-fail display "FAIL 16: te(10) = 10"
    end-if
    move 0 to n
    perform varying x1 from 10 by -2 until x1 < 2 add te(x1) to n end-perform
    if n = 30
        add 1 to t-pass
    else add 1 to t-fail display "FAIL 17: n = 30"
    end-if
    move 0 to n perform varying i from 1 by 1 until te(i) = 4 add 1 to n end-perform
    if n = 3 and i = 4
        add 1 to t-pass
    else add 1 to t-fail display "FAIL 18: n = 3 and i = 4"
    end-if
    move 1 to i
    perform varying te(i) from 1 by 1 until te(i) > 5 continue end-perform
    if te(1) = 6
        add 1 to t-pass
    else add 1 to t-fail display "FAIL 19: te(1) = 6"
    end-if
    move 1 to te(1)
*> search
    set x1 to 1 move 0 to n
    search te at end move 99 to n when te(x1) = 5 set n to x1 end-search
    if n = 5
        add 1 to t-pass
    else add 1 to t-fail display "FAIL 20: n = 5"
    end-if
    set x1 to 6 search te at end move 99 to n when te(x1) = 5 continue end-search
    if n = 99
        add 1 to t-pass
    else add 1 to t-fail display "FAIL 21: n = 99"
    end-if
    set x1 y1 to 1
    move "seven" to ue(7)
    search te varying y1 when te(x1) = 7 move ue(y1) to s end-search
    if s = "seven"
        add 1 to t-pass
    else add 1 to t-fail display "FAIL 22: s = ""seven"""
        display "     >" s "<"
    end-if
    set x1 to 1 set x2 to 3
    search te varying x2 when te(x2) = 5 next sentence end-search.
    if x2 = 5
        add 1 to t-pass
    else add 1 to t-fail display "FAIL 23: x2 = 5"
        display "     >" x2 "<"
    end-if
    if x1 = 1
        add 1 to t-pass
    else add 1 to t-fail display "FAIL 24: x1 = 1"
    end-if
    set x1 to 1 move 1 to i
    search te varying i at end continue when te(x1) = 6 continue end-search
    if i = 6 and x1 = 6
        add 1 to t-pass
    else add 1 to t-fail display "FAIL 25: i = 6 and x1 = 6"
    end-if
    set x1 to 1 set id1 to x1
    search te varying id1 when te(x1) = 6 set x2 to id1 end-search
    if x2 = 6
        add 1 to t-pass
    else add 1 to t-fail display "FAIL 26: x2 = 6"
    end-if
    set x1 to 1
    search te when te(x1) = 99 move 1 to n when te(x1) = 3 move 2 to n when te(x1) = 4 move 3 to n end-search
    if n = 2
        add 1 to t-pass
    else add 1 to t-fail display "FAIL 27: n = 2"
    end-if
    set x1 to 11 move 0 to n search te at end move 1 to n when te(1) = 1 move 2 to n end-search
    if n = 1
        add 1 to t-pass
    else add 1 to t-fail display "FAIL 28: n = 1"
    end-if
    set x1 to 3 set y1 to x1 set id1 to x1 set y2 to id1 
    if y1 = 3 and y2 = 3
        add 1 to t-pass
    else add 1 to t-fail display "FAIL 29: y1 = 3 and y2 = 3"
    end-if
    set x1 up by 2 set x1 y1 down by 1
    if x1 = 4 and y1 = 2
        add 1 to t-pass
    else add 1 to t-fail display "FAIL 30: x1 = 4 and y1 = 2"
    end-if
    if x1 > y1 and x1 = 4 and 4 = x1
        add 1 to t-pass
    else add 1 to t-fail display "FAIL 31: x1 > y1 and x1 = 4 and 4 = x1"
    end-if
    set x2 to x1
    if x2 = x1
        add 1 to t-pass
    else add 1 to t-fail display "FAIL 32: x2 = x1"
    end-if
    set d to x2
    if d = 4
        add 1 to t-pass
    else add 1 to t-fail display "FAIL 33: d = 4"
    end-if
    set id2 to id1
    if id1 = id2
        add 1 to t-pass
    else add 1 to t-fail display "FAIL 34: id1 = id2"
    end-if
    move id1 to id2
    move 7 to te(x1 + 1)
    if te(5) = 7
        add 1 to t-pass
    else add 1 to t-fail display "FAIL 35: te(5) = 7"
    end-if
    move 8 to te(x1 - 3)
    if te(1) = 8
        add 1 to t-pass
    else add 1 to t-fail display "FAIL 36: te(1) = 8"
    end-if
    set x1 to d
    if x1 = 4
        add 1 to t-pass
    else add 1 to t-fail display "FAIL 37: x1 = 4"
    end-if
    set x1 to 2 + 3
    if x1 = 5
        add 1 to t-pass
    else add 1 to t-fail display "FAIL 38: x1 = 5"
    end-if
    move 1 to d set x1 up by d
    if x1 = 6
        add 1 to t-pass
    else add 1 to t-fail display "FAIL 39: x1 = 6"
    end-if
    move 31 to wk(1) move 32 to wk(2) move 33 to wk(3) move "c" to wv(3)
    move 0 to n search all wt at end move 1 to n when wk(wi) = 33 move wv(wi) to s end-search
    if n = 0 and s = "c"
        add 1 to t-pass
    else add 1 to t-fail display "FAIL 40: n = 0 and s = ""c"""
    end-if
    move 2 to wn move 0 to n search all wt at end move 1 to n when wk(wi) = 33 move 2 to n end-search
    if n = 1
        add 1 to t-pass
    else add 1 to t-fail display "FAIL 41: n = 1"
    end-if
    if function length(w) = 7
        add 1 to t-pass
    else add 1 to t-fail display "FAIL 42: function length(w) = 7"
    end-if
    move "3990011" to w
    if wk(1) = 99
        add 1 to t-pass
    else add 1 to t-fail display "FAIL 43: wk(1) = 99"
    end-if
    move 12 to gc(3 4) move "x" to gd(3, 4)
    set ig to 3 set jg to 4
    if gc(ig jg) = 12 and gd(ig, jg) = "x"
        add 1 to t-pass
    else add 1 to t-fail display "FAIL 44: gc(ig jg) = 12 and gd(ig, jg) = ""x"""
    end-if
    if gc(ig - 1 + 1, jg) = 12 or n = 1
        add 1 to t-pass
    else add 1 to t-fail display "FAIL 45: gc(ig - 1 + 1, jg) = 12 or n = 1"
    end-if
    move "A" to gb(1 1)
    if gb(1 1) = "A  "
        add 1 to t-pass
    else add 1 to t-fail display "FAIL 46: gb(1 1) = ""A  """
    end-if
    move ga(3) to ga(2)
    if gc(2 4) = 12
        add 1 to t-pass
    else add 1 to t-fail display "FAIL 47: gc(2 4) = 12"
    end-if
*> redefines, renames
    move "12AB34" to a
    if b1 = 12 and b2 = "AB34"
        add 1 to t-pass
    else add 1 to t-fail display "FAIL 48: b1 = 12 and b2 = ""AB34"""
    end-if
    move 1234 to b3
    if b5(1) = 12 and b5(2) = 34 and a = "121234"
        add 1 to t-pass
    else add 1 to t-fail display "FAIL 49: b5(1) = 12 and b5(2) = 34 and a = ""121234"""
    end-if
    move "AB12CDEF" to r
    if rn1 = "AB12"
        add 1 to t-pass
    else add 1 to t-fail display "FAIL 50: rn1 = ""AB12"""
    end-if
    if rn2 = "12CDE"
        add 1 to t-pass
    else add 1 to t-fail display "FAIL 51: rn2 = ""12CDE"""
    end-if
    if rn3 = 12
        add 1 to t-pass
    else add 1 to t-fail display "FAIL 52: rn3 = 12"
    end-if
    if rn4 = "CDEF"
        add 1 to t-pass
    else add 1 to t-fail display "FAIL 53: rn4 = ""CDEF"""
    end-if
    move "XY99" to rn1
    if r = "XY99CDEF"
        add 1 to t-pass
    else add 1 to t-fail display "FAIL 54: r = ""XY99CDEF"""
    end-if
    add 1 to rn3
    if r3 = 0 or rn3 = 100
        add 1 to t-pass
    else add 1 to t-fail display "FAIL 55: r3 = 0 or rn3 = 100"
        display "     >" r3 "<"
    end-if
*> qualification, corresponding
    if z of q1 = 1 and z in q2 = 3
        add 1 to t-pass
    else add 1 to t-fail display "FAIL 56: z of q1 = 1 and z in q2 = 3"
    end-if
    if z2 of y of q1 = 2 and z2 in q2 = 4
        add 1 to t-pass
    else add 1 to t-fail display "FAIL 57: z2 of y of q1 = 2 and z2 in q2 = 4"
    end-if
    move corresponding q1 to q2
    if z of q2 = 1 and z2 of q2 = 2 and z3 = 5
        add 1 to t-pass
    else add 1 to t-fail display "FAIL 58: z of q2 = 1 and z2 of q2 = 2 and z3 = 5"
    end-if
    add corr q1 to q2
    if z of q2 = 2 and z2 of q2 = 4
        add 1 to t-pass
    else add 1 to t-fail display "FAIL 59: z of q2 = 2 and z2 of q2 = 4"
    end-if
    subtract corresponding q1 from q2
    if z of q2 = 1
        add 1 to t-pass
    else add 1 to t-fail display "FAIL 60: z of q2 = 1"
    end-if
    move 123 to ca of cs move "abc" to cb of cs move 45 to cd of cs move 7 to ce of cs(1) move 1 to ce of ct(1) move spaces to cb of ct
    move corr cs to ct
    if ca of ct = 123 and cb of ct = "abc" and cd of ct = " 45" and ce of ct (1) = 1
        add 1 to t-pass
    else add 1 to t-fail display "FAIL 61: ca of ct = 123 and cb of ct = ""abc"" and cd of ct = "" 45"" and ce of ct (1) = 1"
        display "     >" ct "<"
    end-if
    move all "*" to ini initialize ini
    if ia = spaces and ib = 0 and ic = "  0" and ie = spaces and ig1(2) = 0 and ih(1) = space and ii = 0
        add 1 to t-pass
    else add 1 to t-fail display "FAIL 62: ia = spaces and ib = 0 and ic = ""  0"" and ie = spaces and ig1(2) = 0 and ih(1) = space and ii = 0"
        display "     >" ini "<"
    end-if
    if id3 = "  /  "
        add 1 to t-pass
    else add 1 to t-fail display "FAIL 63: id3 is edited blanks"
        display "     >" id3 "<"
    end-if
    if ini(13:1) = "*" or = "F"
        add 1 to t-pass
    else add 1 to t-fail display "FAIL 64: ini(13:1) = ""*"" or = ""F"""
        display "     >" ini "<"
    end-if
    initialize ini replacing numeric data by 5 alphanumeric data by "Q" 
    if ia = "Q " and ib = 5 and ii = 5 and ih(2) = "Q" and ig1(1) = 5 and ic = "  0"
        add 1 to t-pass
    else add 1 to t-fail display "FAIL 65: ia = ""Q "" and ib = 5 and ii = 5 and ih(2) = ""Q"" and ig1(1) = 5 and ic = ""  0"""
    end-if
    initialize ini replacing numeric-edited by 12 alphabetic data by "AB" alphanumeric-edited data by "WXYZ"
    if ic = " 12" and ie = "AB" and id3 = "WX/YZ" and ib = 5
        add 1 to t-pass
    else add 1 to t-fail display "FAIL 66: ic = "" 12"" and ie = ""AB"" and id3 = ""WX/YZ"" and ib = 5"
    end-if
    initialize ib ift(1)
    if ib = 0 and ig1(1) = 0 and ig1(2) = 5
        add 1 to t-pass
    else add 1 to t-fail display "FAIL 67: ib = 0 and ig1(1) = 0 and ig1(2) = 5"
    end-if
    display "passed " t-pass " failed " t-fail
    stop run.
a-para. move i to c string c delimited by size into s pointer p move j to c string c " " delimited by size into s pointer p.
b-para. add 1 to n.
c-para. add 1 to n. move 9 to c.
