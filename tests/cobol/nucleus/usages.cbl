*> Subjects of EVALUATE, binary and floating usages, 31 digits, separate signs.
identification division.
program-id. t08.
data division.
working-storage section.
01 t-pass pic 9(4) value 0.
01 t-fail pic 9(4) value 0.
01 n pic 9(4). 01 m pic 99. 01 calls pic 99 value 0.
01 t. 02 te pic 9 occurs 5 value 3. 01 i pic 9 value 1. 01 x pic x(10).
01 lst. 02 occurs 3. 03 nm pic x(4). 03 sub occurs 2. 04 v pic 9(3) comp-3. 04 w pic x.
88 w-yes value "Y" "y" false "N".
01 bits comp-5 pic s9(4). 01 c5u pic 9(4) comp-5. 01 cx pic xx comp-x. 01 bl binary-long. 01 bd binary-double unsigned. 01 bs binary-short.
01 fl comp-1 value 1.5. 01 db comp-2 value -2.25. 01 r pic s9(5)v9(3).
01 pak pic s9(7)v99 comp-3 value -12.5. 01 pakx redefines pak pic x(5).
01 big pic 9(31). 01 big2 pic s9(31) comp-3. 01 neg pic s9(4) value -12. 01 negx redefines neg pic x(4).
01 sep pic s9(4)v99 sign leading separate value -1.5.
01 ind pic x. 01 str pic x(20) value "Hello".
01 d1 pic 9(3)v9(3). 01 ed pic z,zz9.99. 01 ed2 pic ++++9.9. 01 ed3 pic 9(3).9(2)cr. 01 k pic 9(2) value 7.
78 c-max value 10. 01 tt-rec. 02 tt occurs c-max pic x.
01 nulls pic x(3). 01 tim pic 9(8). 01 q pic x(5) value quote.
procedure division.
main-para.
    evaluate true
       when te(i) = 3 and i = 1 add 1 to t-pass
       when other display "FAIL"
    end-evaluate
    move 1 to i
    evaluate te(i) + 1
       when 1 move 2 to i
       when 4 move 2 to te(1) add 1 to t-pass
       when 3 display "FAIL"
    end-evaluate
    evaluate function upper-case(str)
       when "HELLO" add 1 to t-pass
       when other display "FAIL up"
    end-evaluate
    evaluate str(i:1) also function length(str)
       when "X" also 20 display "FAIL"
       when "H" also 20 add 1 to t-pass
       when other display "FAIL"
    end-evaluate
    evaluate i > 0 also te(2)
       when false also any display "FAIL"
       when true also 1 thru 2 display "FAIL"
       when true also 3 add 1 to t-pass
    end-evaluate
    move "abc" to nm(2) move 5 to v(2 1) set w-yes(2 1) to true
    if w-yes(2 1) and w(2 1) = "Y"
        add 1 to t-pass
    else add 1 to t-fail display "FAIL 1: w-yes(2 1) and w(2 1) = ""Y"""
    end-if
    set w-yes(2 1) to false
    if w(2 1) = "N" and not w-yes(2, 1)
        add 1 to t-pass
    else add 1 to t-fail display "FAIL 2: w(2 1) = ""N"" and not w-yes(2, 1)"
    end-if
    move 40000 to c5u
    if c5u = 40000
        add 1 to t-pass
    else add 1 to t-fail display "FAIL 3: c5u = 40000"
    end-if
    move 70000 to c5u
    if c5u = 4464
        add 1 to t-pass
    else add 1 to t-fail display "FAIL 4: c5u = 4464"
    end-if
    move -1 to bits
    if bits = -1
        add 1 to t-pass
    else add 1 to t-fail display "FAIL 5: bits = -1"
    end-if
    move 300 to cx
    if cx = 300
        add 1 to t-pass
    else add 1 to t-fail display "FAIL 6: cx = 300"
    end-if
    move 3000000000 to bd
    if bd = 3000000000
        add 1 to t-pass
    else add 1 to t-fail display "FAIL 7: bd = 3000000000"
    end-if
    compute bl = 2 ** 31 - 1
    if bl = 2147483647
        add 1 to t-pass
    else add 1 to t-fail display "FAIL 8: bl = 2147483647"
    end-if
    add 1 to fl
    if fl = 2.5
        add 1 to t-pass
    else add 1 to t-fail display "FAIL 9: fl = 2.5"
    end-if
    compute r rounded = db * fl
    if r = -5.625
        add 1 to t-pass
    else add 1 to t-fail display "FAIL 10: r = -5.625"
    end-if
    multiply 3 by db
    if db = -6.75
        add 1 to t-pass
    else add 1 to t-fail display "FAIL 11: db = -6.75"
    end-if
    compute r = fl / 3
    if r = 0.833
        add 1 to t-pass
    else add 1 to t-fail display "FAIL 12: r = 0.833"
    end-if
    if pak = -12.5
        add 1 to t-pass
    else add 1 to t-fail display "FAIL 13: pak = -12.5"
    end-if
    if pakx = x"000001250d"
        add 1 to t-pass
    else add 1 to t-fail display "FAIL 14: pakx = x""000001250d"""
    end-if
    move 1234567890123456789012345678901 to big
    if big = 1234567890123456789012345678901
        add 1 to t-pass
    else add 1 to t-fail display "FAIL 15: big = 1234567890123456789012345678901"
    end-if
    compute big2 = big - 1
    if big2 = 1234567890123456789012345678900
        add 1 to t-pass
    else add 1 to t-fail display "FAIL 16: big2 = 1234567890123456789012345678900"
    end-if
    compute big = 9999999999999999999999999999999
    add 1 to big on size error move 1 to m not on size error move 2 to m end-add
    if m = 1
        add 1 to t-pass
    else add 1 to t-fail display "FAIL 17: m = 1"
    end-if
    if negx = "001r"
        add 1 to t-pass
    else add 1 to t-fail display "FAIL 18: negx = ""001r"""
    end-if
    if neg = -12 and sep = -1.5
        add 1 to t-pass
    else add 1 to t-fail display "FAIL 19: neg = -12 and sep = -1.5"
    end-if
    add neg sep giving r
    if r = -13.5
        add 1 to t-pass
    else add 1 to t-fail display "FAIL 20: r = -13.5"
    end-if
    compute d1 rounded = 1 / 7
    if d1 = .143
        add 1 to t-pass
    else add 1 to t-fail display "FAIL 21: d1 = .143"
    end-if
    compute d1 = 2 / 3
    if d1 = .666
        add 1 to t-pass
    else add 1 to t-fail display "FAIL 22: d1 = .666"
    end-if
    compute ed = 1234.567
    if ed = "1,234.56"
        add 1 to t-pass
    else add 1 to t-fail display "FAIL 23: ed = ""1,234.56"""
    end-if
    compute ed rounded = 1234.567
    if ed = "1,234.57"
        add 1 to t-pass
    else add 1 to t-fail display "FAIL 24: ed = ""1,234.57"""
    end-if
    move -3.14 to ed2
    if ed2 = "   -3.1"
        add 1 to t-pass
    else add 1 to t-fail display "FAIL 25: ed2 = ""   -3.1"""
    end-if
    move 3.14 to ed2
    if ed2 = "   +3.1"
        add 1 to t-pass
    else add 1 to t-fail display "FAIL 26: ed2 = ""   +3.1"""
    end-if
    move -3.14 to ed3
    if ed3 = "003.14CR"
        add 1 to t-pass
    else add 1 to t-fail display "FAIL 27: ed3 = ""003.14CR"""
    end-if
    if q = """"""""""""
        add 1 to t-pass
    else add 1 to t-fail display "FAIL 28: q = """""""""""""""""""""""""
        display "     >" q "<"
    end-if
    move low-values to nulls
    if nulls = x"000000"
        add 1 to t-pass
    else add 1 to t-fail display "FAIL 29: nulls = x""000000"""
    end-if
    move x"0d0a" to x
    if x(1:2) = x"0D0A"
        add 1 to t-pass
    else add 1 to t-fail display "FAIL 30: x(1:2) = x""0D0A"""
    end-if
    move spaces to x
    string "a" x"09" "b" delimited by size into x
    if x(2:1) = x"09"
        add 1 to t-pass
    else add 1 to t-fail display "FAIL 31: x(2:1) = x""09"""
    end-if
    move "12ab" to x
    if x is numeric display "FAIL num" else add 1 to t-pass end-if
    if x(1:2) is numeric
        add 1 to t-pass
    else add 1 to t-fail display "FAIL 32: x(1:2) is numeric"
    end-if
    accept tim from time
    if tim numeric
        add 1 to t-pass
    else add 1 to t-fail display "FAIL 33: tim numeric"
    end-if
    move function numval(" 12.75 ") to r
    if r = 12.75
        add 1 to t-pass
    else add 1 to t-fail display "FAIL 34: r = 12.75"
    end-if
    move function current-date(1:4) to n
    if n > 2000
        add 1 to t-pass
    else add 1 to t-fail display "FAIL 35: n > 2000"
    end-if
    perform varying m from 1 by 1 until m > 3 or te(m) = 2
       continue
    end-perform
    if m = 1
        add 1 to t-pass
    else add 1 to t-fail display "FAIL 36: m = 1"
    end-if
    move 5 to k
    perform k times subtract 1 from k end-perform
    if k = 0
        add 1 to t-pass
    else add 1 to t-fail display "FAIL 37: k = 0"
    end-if
    move zeros to t
    perform varying i from 1 by 1 until i > 5 after m from 1 by 1 until m > i add 1 to te(i) end-perform
    if t = "12345"
        add 1 to t-pass
    else add 1 to t-fail display "FAIL 38: t = ""12345"""
    end-if
    perform p1 thru p2
    if calls = 11
        add 1 to t-pass
    else add 1 to t-fail display "FAIL 39: calls = 11"
    end-if
    perform with test after until calls > 20 perform p1 end-perform
    if calls = 21
        add 1 to t-pass
    else add 1 to t-fail display "FAIL 40: calls = 21"
    end-if
    go to l1 l2 l3 depending on i
    add 1 to t-pass.
    move 2 to i go to l1 l2 depending on i.
    display "FAIL go".
l1. display "FAIL l1".
l2. 
    add 1 to t-pass.
l3. if i = 2 then if k = 0 then add 1 to t-pass else next sentence end-if else display "FAIL l3" end-if.
    move "A,B,,C" to x
    move 1 to m
    move 0 to n
    perform until m > 6
       unstring x delimited by "," into ind with pointer m
       if ind not = space add 1 to n end-if
    end-perform
    if n = 3
        add 1 to t-pass
    else add 1 to t-fail display "FAIL 41: n = 3"
    end-if
    inspect str tallying n for all "l" before "o"
    if n = 5
        add 1 to t-pass
    else add 1 to t-fail display "FAIL 42: n = 5"
    end-if
    inspect str replacing all "l" by "L" first "H" by "J"
    if str = "JeLLo"
        add 1 to t-pass
    else add 1 to t-fail display "FAIL 43: str = ""JeLLo"""
    end-if
    move "x" to tt(c-max)
    if tt(10) = "x"
        add 1 to t-pass
    else add 1 to t-fail display "FAIL 44: tt(10) = ""x"""
    end-if
    initialize lst
    if v(3 2) = 0 and w(3 2) = space and nm(2) = spaces
        add 1 to t-pass
    else add 1 to t-fail display "FAIL 45: v(3 2) = 0 and w(3 2) = space and nm(2) = spaces"
    end-if
    if n = 5 continue else display "FAIL" end-if
    if not n = 5 or n = 6 and n = 7 display "FAIL" end-if
    display "passed " t-pass " failed " t-fail
    stop run.
p1. add 1 to calls. if calls = 1 go to p2.
p1x. add 99 to calls.
p2. add 10 to calls.
