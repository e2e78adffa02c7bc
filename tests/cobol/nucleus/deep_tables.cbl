*> Seven dimensions, usage and sign of groups, REDEFINES, numeric paragraphs, expressions.
identification division.
program-id. t10.
data division.
working-storage section.
01 t-pass pic 9(4) value 0.
01 t-fail pic 9(4) value 0.
01 t7. 02 a7 occurs 2 indexed by i1. 03 b7 occurs 2 indexed by i2. 04 c7 occurs 2 indexed by i3. 05 d7 occurs 2 indexed by i4. 06 e7 occurs 2 indexed by i5. 07 f7 occurs 2 indexed by i6. 08 g7 occurs 2 indexed by i7 pic 9(3).
01 gu usage comp. 02 gu1 pic 9(4). 02 gu2 pic s9(9). 02 gu3. 03 gu4 pic 9(2).
01 gs sign is leading separate. 02 gs1 pic s9(3). 02 gs2 pic s9(2) sign trailing. 02 gs3 pic 9(2). 02 gs4. 03 gs5 pic s99.
01 gd usage display. 02 gd1 pic 9(4).
01 gp comp-3. 02 gp1 pic s9(3). 02 gp2 pic 9(4).
01 9-9-9 pic 9 value 1. 01 a--b pic 9 value 2. 01 x1234567890123456789012345678z pic 9 value 3.
01 n pic 9(5) value 0. 01 i pic 9. 01 j pic 9. 01 k pic 9. 01 l pic 9. 01 m pic 9. 01 o pic 9. 01 w pic x(30). 01 p pic 99.
01 lit160 pic x(160).
01 r1 pic x(10) value "ABCDEFGHIJ". 01 r2 redefines r1. 02 r2a pic x(3). 02 r2b pic x(7). 02 r2c redefines r2b. 03 r2d pic x(2). 03 r2e pic x(5).
01 r3 redefines r1 pic x(4). 01 r4 redefines r1. 02 r4t pic x occurs 10.
01 ln pic s9(4)v9(4) value -1.2345. 01 lv pic v9(4) value .1234. 01 e1 pic -(4)9.9(4). 01 z1 pic s9(4) value zero. 01 z2 pic s9(4) comp-3 value -0.
01 al pic x(10). 01 be pic x(5).
01 c88 pic 9(2). 88 c-range value 1 thru 5 10 thru 15 20. 88 c-none value 99.
01 x88 pic x(3). 88 x-range value "AAA" thru "CCC" "X".
01 ix1 index. 01 tt. 02 ti pic 9(2) occurs 10 indexed by tx ty value 4.
procedure division.
main-section section.
main-para.
    perform varying i1 from 1 by 1 until i1 > 2 after i2 from 1 by 1 until i2 > 2 after i3 from 1 by 1 until i3 > 2
      after i4 from 1 by 1 until i4 > 2 after i5 from 1 by 1 until i5 > 2 after i6 from 1 by 1 until i6 > 2 after i7 from 1 by 1 until i7 > 2
      add 1 to n move n to g7(i1 i2 i3 i4 i5 i6 i7)
    end-perform
    if n = 128
        add 1 to t-pass
    else add 1 to t-fail display "FAIL 1: n = 128"
    end-if
    if g7(1 1 1 1 1 1 1) = 1 and g7(2 2 2 2 2 2 2) = 128 and g7(1 2 1 2 1 2 1) = 43
        add 1 to t-pass
    else add 1 to t-fail display "FAIL 2: g7(1 1 1 1 1 1 1) = 1 and g7(2 2 2 2 2 2 2) = 128 and g7(1 2 1 2 1 2 1) = 43"
    end-if
    set i1 i2 to 1 set i3 i4 i5 to 2 set i6 to 1 set i7 to 2
    if g7(i1 i2 i3 i4 i5 i6 i7) = 30
        add 1 to t-pass
    else add 1 to t-fail display "FAIL 3: g7(i1 i2 i3 i4 i5 i6 i7) = 30"
    end-if
    if g7(i1 + 1 i2 i3 - 1 i4 i5 i6 i7) = 78
        add 1 to t-pass
    else add 1 to t-fail display "FAIL 4: g7(i1 + 1 i2 i3 - 1 i4 i5 i6 i7) = 78"
    end-if
    move 0 to n
    perform para-n varying i from 1 by 1 until i > 2 after j from 1 by 1 until j > 2 after k from 1 by 1 until k > 2 after l from 1 by 1 until l > 2 after m from 1 by 1 until m > 2 after o from 1 by 1 until o > 2
    if n = 64
        add 1 to t-pass
    else add 1 to t-fail display "FAIL 5: n = 64"
    end-if
    if function length(gu) = 8
        add 1 to t-pass
    else add 1 to t-fail display "FAIL 6: function length(gu) = 8"
    end-if
    move 9999 to gu1 move -5 to gu2 move 12 to gu4
    if gu1 = 9999 and gu2 = -5 and gu4 = 12
        add 1 to t-pass
    else add 1 to t-fail display "FAIL 7: gu1 = 9999 and gu2 = -5 and gu4 = 12"
    end-if
    move -123 to gs1 move -12 to gs2 move 12 to gs3 move -1 to gs5
    if gs(1:4) = "-123" and gs2 = -12 and gs(5:2) = "1r" and gs5 = -1
        add 1 to t-pass
    else add 1 to t-fail display "FAIL 8: gs(1:4) = ""-123"" and gs2 = -12 and gs(5:2) = ""1r"" and gs5 = -1"
        display "     >" gs "<"
    end-if
    if function length(gs) = 11
        add 1 to t-pass
    else add 1 to t-fail display "FAIL 9: function length(gs) = 11"
    end-if
    if function length(gp) = 5
        add 1 to t-pass
    else add 1 to t-fail display "FAIL 10: function length(gp) = 5"
    end-if
    if 9-9-9 = 1 and a--b = 2 and x1234567890123456789012345678z = 3
        add 1 to t-pass
    else add 1 to t-fail display "FAIL 11: 9-9-9 = 1 and a--b = 2 and x1234567890123456789012345678z = 3"
    end-if
    move all "1234567890" to lit160
    if lit160(151:10) = "1234567890"
        add 1 to t-pass
    else add 1 to t-fail display "FAIL 12: lit160(151:10) = ""1234567890"""
    end-if
    if r2a = "ABC" and r2d = "DE" and r2e = "FGHIJ" and r3 = "ABCD" and r4t(10) = "J"
        add 1 to t-pass
    else add 1 to t-fail display "FAIL 13: r2a = ""ABC"" and r2d = ""DE"" and r2e = ""FGHIJ"" and r3 = ""ABCD"" and r4t(10) = ""J"""
    end-if
    move "zz" to r2d
    if r1 = "ABCzzFGHIJ"
        add 1 to t-pass
    else add 1 to t-fail display "FAIL 14: r1 = ""ABCzzFGHIJ"""
    end-if
    move ln to e1
    if e1 = "   -1.2345"
        add 1 to t-pass
    else add 1 to t-fail display "FAIL 15: e1 = ""   -1.2345"""
        display "     >" e1 "<"
    end-if
    add lv to ln
    if ln = -1.1111
        add 1 to t-pass
    else add 1 to t-fail display "FAIL 16: ln = -1.1111"
    end-if
    if z1 = z2 and z2 = 0 and z2 not < 0
        add 1 to t-pass
    else add 1 to t-fail display "FAIL 17: z1 = z2 and z2 = 0 and z2 not < 0"
    end-if
    move 5 to c88
    if c-range and not c-none
        add 1 to t-pass
    else add 1 to t-fail display "FAIL 18: c-range and not c-none"
    end-if
    move 16 to c88
    if not c-range
        add 1 to t-pass
    else add 1 to t-fail display "FAIL 19: not c-range"
    end-if
    move "BBB" to x88
    if x-range
        add 1 to t-pass
    else add 1 to t-fail display "FAIL 20: x-range"
    end-if
    move "X" to x88
    if x-range
        add 1 to t-pass
    else add 1 to t-fail display "FAIL 21: x-range"
    end-if
    move "D" to x88
    if not x-range
        add 1 to t-pass
    else add 1 to t-fail display "FAIL 22: not x-range"
    end-if
    set tx to 3 set ix1 to tx set ty to ix1 set ty up by 2
    if ty = 5 and tx = 3 and ix1 = tx
        add 1 to t-pass
    else add 1 to t-fail display "FAIL 23: ty = 5 and tx = 3 and ix1 = tx"
    end-if
    if ti(ty) = 4
        add 1 to t-pass
    else add 1 to t-fail display "FAIL 24: ti(ty) = 4"
    end-if
    move 1 to p perform 1 in sect-b
    if p = 2
        add 1 to t-pass
    else add 1 to t-fail display "FAIL 25: p = 2"
    end-if
    perform sect-b
    if p = 14
        add 1 to t-pass
    else add 1 to t-fail display "FAIL 26: p = 14"
    end-if
    perform 1 of sect-c thru 2 of sect-c
    if p = 17
        add 1 to t-pass
    else add 1 to t-fail display "FAIL 27: p = 17"
    end-if
    move spaces to w string "a" "b" delimited by size into w with pointer p on overflow move 9 to i not on overflow move 8 to i end-string
    if i = 8 and p = 19 and w(17:2) = "ab"
        add 1 to t-pass
    else add 1 to t-fail display "FAIL 28: i = 8 and p = 19 and w(17:2) = ""ab"""
    end-if
    if p = 19 move 1 to i move 2 to j else move 3 to i end-if move 4 to k
    if i = 1 and j = 2 and k = 4
        add 1 to t-pass
    else add 1 to t-fail display "FAIL 29: i = 1 and j = 2 and k = 4"
    end-if
    if p = 1 if i = 1 move 5 to k else move 6 to k end-if else if i = 1 move 7 to k end-if end-if
    if k = 7
        add 1 to t-pass
    else add 1 to t-fail display "FAIL 30: k = 7"
    end-if
    compute n = 2 ** 3 ** 2 / 4 + 7 - 3 * (2 + 1)
    if n = 14
        add 1 to t-pass
    else add 1 to t-fail display "FAIL 31: n = 14"
    end-if
    compute n rounded = (1 + 2) / 2 * 3
    if n = 5
        add 1 to t-pass
    else add 1 to t-fail display "FAIL 32: n = 5"
    end-if
    compute ln = - ( - 1.5 )
    if ln = 1.5
        add 1 to t-pass
    else add 1 to t-fail display "FAIL 33: ln = 1.5"
    end-if
    compute n = (((((1)))))
    if n = 1
        add 1 to t-pass
    else add 1 to t-fail display "FAIL 34: n = 1"
    end-if
    compute ln rounded = 100 / 7 / 3
    if ln = 4.7619
        add 1 to t-pass
    else add 1 to t-fail display "FAIL 35: ln = 4.7619"
    end-if
    compute ln = 1.5 ** 2
    if ln = 2.25
        add 1 to t-pass
    else add 1 to t-fail display "FAIL 36: ln = 2.25"
    end-if
    compute ln rounded = 2 ** 0.5
    if ln = 1.4142
        add 1 to t-pass
    else add 1 to t-fail display "FAIL 37: ln = 1.4142"
    end-if
    compute ln = 10 ** -2
    if ln = .01
        add 1 to t-pass
    else add 1 to t-fail display "FAIL 38: ln = .01"
    end-if
    go to sect-d.
para-n. add 1 to n.
sect-b section.
1. add 1 to p.
2. add 11 to p.
sect-c section.
1. add 1 to p.
2. add 2 to p.
3. add 99 to p.
sect-d section.
d-para.
    display "passed " t-pass " failed " t-fail
    stop run.
