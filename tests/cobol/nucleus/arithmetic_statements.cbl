*> Order of receivers, size errors, rounding, remainders, P scaling, 18 digits.
identification division.
program-id. t02.
data division.
working-storage section.
01 t-pass pic 9(4) value 0.
01 t-fail pic 9(4) value 0.
01 i pic 99. 01 j pic 99. 01 k pic 99. 01 r pic s9(5). 01 q pic s9(3). 01 rem1 pic s9(3). 01 r2 pic s9(3)v99.
01 tab. 02 t pic 99 occurs 10.
01 stab. 02 st occurs 5. 03 st1 pic 9. 03 st2 pic s9(3)v9 comp-3.
01 n1 pic 9. 01 n2 pic 99. 01 n3 pic 999. 01 s1 pic s9. 01 s2 pic s99. 01 sv1 pic s9v9. 01 sv2 pic s9v99.
01 np pic 99pp. 01 nv pic vpp99. 01 sp pic s9pp.
01 a18 pic s9(18). 01 b18 pic s9(18). 01 c18 pic s9(18) comp. 01 d18 pic s9(18) comp-3. 01 v18 pic sv9(18). 01 m99 pic s9(9)v9(9).
01 ed pic zzz9.99-. 01 ed2 pic z9. 01 f pic 9 value 0.
01 b2 pic s99 comp. 01 p2 pic s99v9 comp-3. 01 u2 pic 99 comp.
01 w1 pic s9(4)v9(4). 01 w2 pic s9(4)v9(4). 01 w3 pic s9(4)v9(4).
procedure division.
main-para.
    move 2 to i initialize tab
    add 1 to i t(i)
    if i = 3
        add 1 to t-pass
    else add 1 to t-fail display "FAIL 1: i = 3"
    end-if
    if t(3) = 1
        add 1 to t-pass
    else add 1 to t-fail display "FAIL 2: t(3) = 1"
        display "     >" tab "<"
    end-if
    move 2 to i initialize tab
    move i to j t(j) k t(k)
    if t(2) = 2
        add 1 to t-pass
    else add 1 to t-fail display "FAIL 3: t(2) = 2"
    end-if
    move 3 to i move 0 to t(3) t(4) t(5)
    move 4 to i t(i) 
    if t(4) = 4
        add 1 to t-pass
    else add 1 to t-fail display "FAIL 4: t(4) = 4"
    end-if
    move 1 to i subtract 1 from i t(4)
    if i = 0 and t(4) = 3
        add 1 to t-pass
    else add 1 to t-fail display "FAIL 5: i = 0 and t(4) = 3"
    end-if
    move 2 to i multiply 2 by i t(i)
    if i = 4 and t(4) = 6
        add 1 to t-pass
    else add 1 to t-fail display "FAIL 6: i = 4 and t(4) = 6"
        display "     >" i "<"
        display "     >" tab "<"
    end-if
    move 2 to i move 8 to t(2) t(4) divide 2 into t(i) i
    if t(2) = 4 and i = 1
        add 1 to t-pass
    else add 1 to t-fail display "FAIL 7: t(2) = 4 and i = 1"
    end-if
    move 3 to i compute i t(i) = i + 4
    if i = 7 and t(7) = 7
        add 1 to t-pass
    else add 1 to t-fail display "FAIL 8: i = 7 and t(7) = 7"
        display "     >" i "<"
        display "     >" tab "<"
    end-if
    move 5 to t(5) move 5 to i divide t(i) by 2 giving i remainder t(i)
    if i = 2
        add 1 to t-pass
    else add 1 to t-fail display "FAIL 9: i = 2"
    end-if
    if t(2) = 1
        add 1 to t-pass
    else add 1 to t-fail display "FAIL 10: t(2) = 1"
        display "     >" tab "<"
    end-if
*> size error per receiver
    move 5 to n1 move 5 to n2 move 95 to n3 move 0 to f
    add 6 to n1 n2 n3 on size error move 1 to f end-add
    if n1 = 5 and n2 = 11 and n3 = 101 and f = 1
        add 1 to t-pass
    else add 1 to t-fail display "FAIL 11: n1 = 5 and n2 = 11 and n3 = 101 and f = 1"
        display "     >" n1 "<"
        display "     >" n2 "<"
        display "     >" n3 "<"
    end-if
    move 5 to n1 move 95 to n2 move 0 to f
    add 6 to n1 n2 not on size error move 2 to f end-add
    if f = 0
        add 1 to t-pass
    else add 1 to t-fail display "FAIL 12: f = 0"
    end-if
    move 3 to n1 move 0 to f
    add 1 2 3 to n1 on size error move 1 to f not on size error move 2 to f end-add
    if n1 = 9 and f = 2
        add 1 to t-pass
    else add 1 to t-fail display "FAIL 13: n1 = 9 and f = 2"
    end-if
    move 3 to n1 add 1 2 3 n1 giving n1 n2
    if n1 = 9 and n2 = 9
        add 1 to t-pass
    else add 1 to t-fail display "FAIL 14: n1 = 9 and n2 = 9"
    end-if
    move 3 to n1 move 1 to n2 add n1 n2 to n3 giving n1 size error move 7 to f end-add
    if n1 = 3 and f = 7
        add 1 to t-pass
    else add 1 to t-fail display "FAIL 15: n1 = 3 and f = 7"
    end-if
    move 9 to n1 add 1 to n1
    if n1 = 0
        add 1 to t-pass
    else add 1 to t-fail display "FAIL 16: n1 = 0"
    end-if
    move 9 to n1 subtract 12 from n1
    if n1 = 3
        add 1 to t-pass
    else add 1 to t-fail display "FAIL 17: n1 = 3"
    end-if
    move 3 to s1 subtract 12 from s1
    if s1 = -9
        add 1 to t-pass
    else add 1 to t-fail display "FAIL 18: s1 = -9"
    end-if
    move 3 to s1 move 0 to f subtract 13 from s1 on size error move 1 to f end-subtract
    if s1 = 3 and f = 1
        add 1 to t-pass
    else add 1 to t-fail display "FAIL 19: s1 = 3 and f = 1"
    end-if
    subtract 1 2 from 10 giving n1 s1 ed
    if n1 = 7 and s1 = 7 and ed = "   7.00 "
        add 1 to t-pass
    else add 1 to t-fail display "FAIL 20: n1 = 7 and s1 = 7 and ed = ""   7.00 """
        display "     >" ed "<"
    end-if
    move 0 to f
    multiply 3 by 4 giving n1 n2 size error move 1 to f end-multiply
    if n1 = 7 and n2 = 12 and f = 1
        add 1 to t-pass
    else add 1 to t-fail display "FAIL 21: n1 = 7 and n2 = 12 and f = 1"
    end-if
    move 2 to n1 multiply n1 by n1 n2
    if n1 = 4 and n2 = 24
        add 1 to t-pass
    else add 1 to t-fail display "FAIL 22: n1 = 4 and n2 = 24"
        display "     >" n1 "<"
        display "     >" n2 "<"
    end-if
    move 3 to n1 move 12 to n2 multiply n1 by n2 giving n1
    if n1 = 6
        add 1 to t-pass
    else add 1 to t-fail display "FAIL 23: n1 = 6"
    end-if
*> rounding
    compute sv1 rounded = -1.25
    if sv1 = -1.3
        add 1 to t-pass
    else add 1 to t-fail display "FAIL 24: sv1 = -1.3"
        display "     >" sv1 "<"
    end-if
    compute sv1 rounded = -1.24
    if sv1 = -1.2
        add 1 to t-pass
    else add 1 to t-fail display "FAIL 25: sv1 = -1.2"
    end-if
    compute sv1 rounded = 1.25
    if sv1 = 1.3
        add 1 to t-pass
    else add 1 to t-fail display "FAIL 26: sv1 = 1.3"
    end-if
    compute sv1 = -1.29
    if sv1 = -1.2
        add 1 to t-pass
    else add 1 to t-fail display "FAIL 27: sv1 = -1.2"
    end-if
    move 0 to f compute sv1 rounded = 9.95 on size error move 1 to f end-compute
    if sv1 = -1.2 and f = 1
        add 1 to t-pass
    else add 1 to t-fail display "FAIL 28: sv1 = -1.2 and f = 1"
    end-if
    move 0 to f compute sv1 = 9.99 on size error move 1 to f end-compute
    if sv1 = 9.9 and f = 0
        add 1 to t-pass
    else add 1 to t-fail display "FAIL 29: sv1 = 9.9 and f = 0"
    end-if
    compute s1 rounded = -0.5
    if s1 = -1
        add 1 to t-pass
    else add 1 to t-fail display "FAIL 30: s1 = -1"
    end-if
    compute s1 rounded = -0.4
    if s1 = 0
        add 1 to t-pass
    else add 1 to t-fail display "FAIL 31: s1 = 0"
    end-if
    divide 2 into 5 giving n1 rounded
    if n1 = 3
        add 1 to t-pass
    else add 1 to t-fail display "FAIL 32: n1 = 3"
    end-if
    divide -2 into 5 giving s1 rounded
    if s1 = -3
        add 1 to t-pass
    else add 1 to t-fail display "FAIL 33: s1 = -3"
    end-if
    divide 3 into 10 giving sv2 rounded
    if sv2 = 3.33
        add 1 to t-pass
    else add 1 to t-fail display "FAIL 34: sv2 = 3.33"
    end-if
    divide 2 into 3.33 giving sv1 rounded sv2 rounded s1
    if sv1 = 1.7 and sv2 = 1.67 and s1 = 1
        add 1 to t-pass
    else add 1 to t-fail display "FAIL 35: sv1 = 1.7 and sv2 = 1.67 and s1 = 1"
    end-if
    add 1.25 to 1.25 giving s1 rounded sv1
    if s1 = 3 and sv1 = 2.5
        add 1 to t-pass
    else add 1 to t-fail display "FAIL 36: s1 = 3 and sv1 = 2.5"
    end-if
*> remainder
    divide 17 by 5 giving q remainder r
    if q = 3 and r = 2
        add 1 to t-pass
    else add 1 to t-fail display "FAIL 37: q = 3 and r = 2"
    end-if
    divide -17 by 5 giving q remainder r
    if q = -3 and r = -2
        add 1 to t-pass
    else add 1 to t-fail display "FAIL 38: q = -3 and r = -2"
    end-if
    divide 17 by -5 giving q remainder r
    if q = -3 and r = 2
        add 1 to t-pass
    else add 1 to t-fail display "FAIL 39: q = -3 and r = 2"
    end-if
    divide 5 into 17 giving q rounded remainder r
    if q = 3 and r = 2
        add 1 to t-pass
    else add 1 to t-fail display "FAIL 40: q = 3 and r = 2"
    end-if
    divide 5 into 18 giving q rounded remainder r
    if q = 4
        add 1 to t-pass
    else add 1 to t-fail display "FAIL 41: q = 4"
        display "     >" q "<"
    end-if
    if r = 3
        add 1 to t-pass
    else add 1 to t-fail display "FAIL 42: r = 3"
        display "     >" r "<"
    end-if
    divide 3 into 10 giving sv1 remainder r2
    if sv1 = 3.3 and r2 = .1
        add 1 to t-pass
    else add 1 to t-fail display "FAIL 43: sv1 = 3.3 and r2 = .1"
    end-if
    divide 3 into 10 giving sv1 rounded remainder r2
    if sv1 = 3.3 and r2 = .1
        add 1 to t-pass
    else add 1 to t-fail display "FAIL 44: sv1 = 3.3 and r2 = .1"
    end-if
    divide 7 into 12 giving sv1 rounded remainder r2
    if sv1 = 1.7 and r2 = .1
        add 1 to t-pass
    else add 1 to t-fail display "FAIL 45: sv1 = 1.7 and r2 = .1"
        display "     >" sv1 "<"
        display "     >" r2 "<"
    end-if
    divide 7 into 12 giving sv2 rounded remainder r2
    if sv2 = 1.71 and r2 = .03
        add 1 to t-pass
    else add 1 to t-fail display "FAIL 46: sv2 = 1.71 and r2 = .03"
        display "     >" sv2 "<"
        display "     >" r2 "<"
    end-if
    divide 6 into 10 giving sv1 rounded remainder r2
    if sv1 = 1.7 and r2 = .4
        add 1 to t-pass
    else add 1 to t-fail display "FAIL 47: sv1 = 1.7 and r2 = .4"
        display "     >" sv1 "<"
        display "     >" r2 "<"
    end-if
    move 5 to n1 move 5 to r2 move 0 to f
    divide 1 into 23 giving n1 remainder r2 on size error move 1 to f end-divide
    if n1 = 5 and r2 = 5 and f = 1
        add 1 to t-pass
    else add 1 to t-fail display "FAIL 48: n1 = 5 and r2 = 5 and f = 1"
        display "     >" n1 "<"
        display "     >" r2 "<"
    end-if
    move 5 to s1 move 4 to n1 move 0 to f
    divide 200 into 1999 giving n3 remainder n1 on size error move 1 to f end-divide
    if n3 = 9 and n1 = 4 and f = 1
        add 1 to t-pass
    else add 1 to t-fail display "FAIL 49: n3 = 9 and n1 = 4 and f = 1"
        display "     >" n3 "<"
        display "     >" n1 "<"
        display "     >" f "<"
    end-if
    divide 0 into 5 giving n1 remainder n2 size error move 3 to f end-divide
    if f = 3
        add 1 to t-pass
    else add 1 to t-fail display "FAIL 50: f = 3"
    end-if
    move 8 to n1 divide 0 into n1 size error move 4 to f not size error move 5 to f end-divide
    if f = 4 and n1 = 8
        add 1 to t-pass
    else add 1 to t-fail display "FAIL 51: f = 4 and n1 = 8"
    end-if
    compute n1 = 5 / (3 - 3) on size error move 6 to f end-compute
    if f = 6 and n1 = 8
        add 1 to t-pass
    else add 1 to t-fail display "FAIL 52: f = 6 and n1 = 8"
    end-if
    compute n1 = 0 ** 0 on size error move 7 to f end-compute
    if f = 7
        add 1 to t-pass
    else add 1 to t-fail display "FAIL 53: f = 7"
    end-if
    compute s2 = (-2) ** 3
    if s2 = -8
        add 1 to t-pass
    else add 1 to t-fail display "FAIL 54: s2 = -8"
    end-if
    compute n1 = 4 ** 0.5
    if n1 = 2
        add 1 to t-pass
    else add 1 to t-fail display "FAIL 55: n1 = 2"
    end-if
    compute sv2 = 2 ** -1
    if sv2 = .5
        add 1 to t-pass
    else add 1 to t-fail display "FAIL 56: sv2 = .5"
    end-if
    move 3 to n1 compute n2 = n1 ** n1
    if n2 = 27
        add 1 to t-pass
    else add 1 to t-fail display "FAIL 57: n2 = 27"
    end-if
    move 0 to f compute sv2 = (-4) ** 0.5 on size error move 8 to f end-compute
    if f = 8
        add 1 to t-pass
    else add 1 to t-fail display "FAIL 58: f = 8"
    end-if
    compute n2 = - 3 + 5
    if n2 = 2
        add 1 to t-pass
    else add 1 to t-fail display "FAIL 59: n2 = 2"
    end-if
    compute s2 = - (3 + 5) * 2
    if s2 = -16
        add 1 to t-pass
    else add 1 to t-fail display "FAIL 60: s2 = -16"
    end-if
    compute s2 = -2 ** 2
    if s2 = 4
        add 1 to t-pass
    else add 1 to t-fail display "FAIL 61: s2 = 4"
        display "     >" s2 "<"
    end-if
    compute n3 = 100 - 2 * 3 ** 2 + 8 / 4
    if n3 = 84
        add 1 to t-pass
    else add 1 to t-fail display "FAIL 62: n3 = 84"
    end-if
    compute n2 = 8 / 4 / 2
    if n2 = 1
        add 1 to t-pass
    else add 1 to t-fail display "FAIL 63: n2 = 1"
    end-if
    compute n3 = 2 ** 3 ** 2
    if n3 = 64
        add 1 to t-pass
    else add 1 to t-fail display "FAIL 64: n3 = 64"
    end-if
    compute w1 = 1 / 3 * 3
    if w1 = 0.9999 or w1 = 1
        add 1 to t-pass
    else add 1 to t-fail display "FAIL 65: w1 = 0.9999 or w1 = 1"
        display "     >" w1 "<"
    end-if
    compute w1 rounded = 1 / 3 * 3
    if w1 = 1
        add 1 to t-pass
    else add 1 to t-fail display "FAIL 66: w1 = 1"
        display "     >" w1 "<"
    end-if
    compute w1 = (10 / 3) * (10 / 3)
    if w1 = 11.1111
        add 1 to t-pass
    else add 1 to t-fail display "FAIL 67: w1 = 11.1111"
    end-if
    move 7 to w1 move 3 to w2 compute w3 = w1 / w2 - w1 / w2
    if w3 = 0
        add 1 to t-pass
    else add 1 to t-fail display "FAIL 68: w3 = 0"
    end-if
*> P
    move 1200 to np add 100 to np
    if np = 1300
        add 1 to t-pass
    else add 1 to t-fail display "FAIL 69: np = 1300"
    end-if
    add 50 to np
    if np = 1300
        add 1 to t-pass
    else add 1 to t-fail display "FAIL 70: np = 1300"
    end-if
    add 50 to np giving np rounded
    if np = 1400
        add 1 to t-pass
    else add 1 to t-fail display "FAIL 71: np = 1400"
        display "     >" np "<"
    end-if
    multiply 2 by np
    if np = 2800
        add 1 to t-pass
    else add 1 to t-fail display "FAIL 72: np = 2800"
    end-if
    divide np by 100 giving n2
    if n2 = 28
        add 1 to t-pass
    else add 1 to t-fail display "FAIL 73: n2 = 28"
    end-if
    move .0012 to nv add .0001 to nv
    if nv = .0013
        add 1 to t-pass
    else add 1 to t-fail display "FAIL 74: nv = .0013"
    end-if
    multiply 2 by nv
    if nv = .0026
        add 1 to t-pass
    else add 1 to t-fail display "FAIL 75: nv = .0026"
    end-if
    divide nv by 2 giving nv rounded
    if nv = .0013
        add 1 to t-pass
    else add 1 to t-fail display "FAIL 76: nv = .0013"
    end-if
    multiply np by nv giving sv2 rounded
    if sv2 = 3.64
        add 1 to t-pass
    else add 1 to t-fail display "FAIL 77: sv2 = 3.64"
    end-if
    move 0 to f move 500 to sp add 500 to sp size error move 1 to f end-add
    if f = 1 and sp = 500
        add 1 to t-pass
    else add 1 to t-fail display "FAIL 78: f = 1 and sp = 500"
    end-if
    subtract 700 from sp
    if sp = -200
        add 1 to t-pass
    else add 1 to t-fail display "FAIL 79: sp = -200"
    end-if
    move 0 to f compute nv = .01 on size error move 1 to f end-compute
    if f = 1
        add 1 to t-pass
    else add 1 to t-fail display "FAIL 80: f = 1"
        display "     >" nv "<"
    end-if
    compute nv = .009999
    if nv = .0099
        add 1 to t-pass
    else add 1 to t-fail display "FAIL 81: nv = .0099"
    end-if
*> 18 digits
    move 999999999999999999 to a18 move 0 to f add 1 to a18 size error move 1 to f end-add
    if a18 = 999999999999999999 and f = 1
        add 1 to t-pass
    else add 1 to t-fail display "FAIL 82: a18 = 999999999999999999 and f = 1"
    end-if
    add 1 to a18
    if a18 = 0
        add 1 to t-pass
    else add 1 to t-fail display "FAIL 83: a18 = 0"
    end-if
    move -999999999999999999 to c18 move 0 to f subtract 1 from c18 size error move 1 to f end-subtract
    if c18 = -999999999999999999 and f = 1
        add 1 to t-pass
    else add 1 to t-fail display "FAIL 84: c18 = -999999999999999999 and f = 1"
        display "     >" c18 "<"
    end-if
    move 999999999 to a18 multiply a18 by a18
    if a18 = 999999998000000001
        add 1 to t-pass
    else add 1 to t-fail display "FAIL 85: a18 = 999999998000000001"
    end-if
    divide 999999999 into a18
    if a18 = 999999999
        add 1 to t-pass
    else add 1 to t-fail display "FAIL 86: a18 = 999999999"
    end-if
    move .999999999999999999 to v18 move 0 to f add .000000000000000001 to v18 size error move 1 to f end-add
    if f = 1
        add 1 to t-pass
    else add 1 to t-fail display "FAIL 87: f = 1"
    end-if
    multiply .5 by v18 rounded
    if v18 = .500000000000000000
        add 1 to t-pass
    else add 1 to t-fail display "FAIL 88: v18 = .500000000000000000"
        display "     >" v18 "<"
    end-if
    move 123456789.987654321 to m99 divide 3 into m99
    if m99 = 41152263.329218107
        add 1 to t-pass
    else add 1 to t-fail display "FAIL 89: m99 = 41152263.329218107"
        display "     >" m99 "<"
    end-if
    compute d18 = 999999999999999999 * 999999999999999999 / 999999999999999999
    if d18 = 999999999999999999
        add 1 to t-pass
    else add 1 to t-fail display "FAIL 90: d18 = 999999999999999999"
        display "     >" d18 "<"
    end-if
    compute a18 = 111111111111111111 + 222222222222222222 - 333333333333333333
    if a18 = 0
        add 1 to t-pass
    else add 1 to t-fail display "FAIL 91: a18 = 0"
    end-if
*> binary/packed size
    move 99 to b2 move 0 to f add 1 to b2 size error move 1 to f end-add
    if b2 = 99 and f = 1
        add 1 to t-pass
    else add 1 to t-fail display "FAIL 92: b2 = 99 and f = 1"
        display "     >" b2 "<"
    end-if
    add 1 to b2
    if b2 = 0
        add 1 to t-pass
    else add 1 to t-fail display "FAIL 93: b2 = 0"
        display "     >" b2 "<"
    end-if
    move -99 to b2 subtract 1 from b2
    if b2 = 0
        add 1 to t-pass
    else add 1 to t-fail display "FAIL 94: b2 = 0"
        display "     >" b2 "<"
    end-if
    move 5 to u2 subtract 8 from u2
    if u2 = 3
        add 1 to t-pass
    else add 1 to t-fail display "FAIL 95: u2 = 3"
        display "     >" u2 "<"
    end-if
    move 99.9 to p2 add .1 to p2 size error move 2 to f end-add
    if p2 = 99.9 and f = 2
        add 1 to t-pass
    else add 1 to t-fail display "FAIL 96: p2 = 99.9 and f = 2"
    end-if
    add .06 to p2 rounded size error move 3 to f end-add
    if f = 3
        add 1 to t-pass
    else add 1 to t-fail display "FAIL 97: f = 3"
    end-if
    add -.06 to p2 rounded
    if p2 = 99.8
        add 1 to t-pass
    else add 1 to t-fail display "FAIL 98: p2 = 99.8"
        display "     >" p2 "<"
    end-if
    move 5 to i compute st2(i) st1(i) rounded = 2.55
    if st2(5) = 2.5 and st1(5) = 3
        add 1 to t-pass
    else add 1 to t-fail display "FAIL 99: st2(5) = 2.5 and st1(5) = 3"
    end-if
    add st2(5) st1(5) giving ed
    if ed = "   5.50 "
        add 1 to t-pass
    else add 1 to t-fail display "FAIL 100: ed = ""   5.50 """
        display "     >" ed "<"
    end-if
    compute ed = -1.005 - 1
    if ed = "   2.00-"
        add 1 to t-pass
    else add 1 to t-fail display "FAIL 101: ed = ""   2.00-"""
        display "     >" ed "<"
    end-if
    compute ed rounded = -1.005 - 1
    if ed = "   2.01-"
        add 1 to t-pass
    else add 1 to t-fail display "FAIL 102: ed = ""   2.01-"""
        display "     >" ed "<"
    end-if
    move 0 to f compute ed2 = 100 on size error move 1 to f end-compute
    if f = 1
        add 1 to t-pass
    else add 1 to t-fail display "FAIL 103: f = 1"
    end-if
    display "passed " t-pass " failed " t-fail
    stop run.
