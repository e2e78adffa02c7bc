*> Expressions without spaces, parts, subscripts, sizes of binary and packed items.
identification division.
program-id. t13.
data division.
working-storage section.
01 t-pass pic 9(4) value 0.
01 t-fail pic 9(4) value 0.
1 n pic 9(4) value 5. 
1 t. 2 tr occurs 3. 3 tc pic x(4) occurs 3. 
01 i pic 9 value 1. 01 j pic 9 value 2.
01 a. 48 b. 49 c pic x. 48 d redefines b pic x.
01 f-1 pic 9. 01 f-1-2 pic 9. 01 x pic x(8) value "abcdefgh". 01 s pic s9(4) value 3. 01 z pic 9(3)v99 value 1.5.
01 q pic x(6). 01 dec pic s9(3)v9(2). 01 num-x pic x(5) value "00012". 01 num-y redefines num-x pic 9(3)v99.
01 ptr-grp. 02 n1 pic 9(2) comp. 02 n2 pic 9(4) comp. 02 n3 pic 9(5) comp. 02 n4 pic 9(9) comp. 02 n5 pic 9(10) comp. 02 n6 pic s9(18) binary. 02 n7 pic 9(4) packed-decimal.
procedure division.
main.
    compute n=n+1
    if n=6
        add 1 to t-pass
    else add 1 to t-fail display "FAIL 1: n=6"
    end-if
    if n>=6 and n<>5 and n<=6 and not n<6 add 1 to t-pass else display "FAIL ops" end-if
    move "wxyz" to tc(1,2) tc(i+1,j) tc(i , j + 1)
    if tc(1 2)="wxyz" and tc(2 2) (2:2)="xy" and tc (1 3)(1:1)="w"
        add 1 to t-pass
    else add 1 to t-fail display "FAIL 2: tc(1 2)=""wxyz"" and tc(2 2) (2:2)=""xy"" and tc (1 3)(1:1)=""w"""
    end-if
    move "Q" to tc(i j)(2:1)
    if tc(1 2)="wQyz"
        add 1 to t-pass
    else add 1 to t-fail display "FAIL 3: tc(1 2)=""wQyz"""
    end-if
    move x(i:j) to q
    if q="ab"
        add 1 to t-pass
    else add 1 to t-fail display "FAIL 4: q=""ab"""
    end-if
    move x(j:) to q
    if q="bcdefg"
        add 1 to t-pass
    else add 1 to t-fail display "FAIL 5: q=""bcdefg"""
    end-if
    move x(i + 1:j * 2 - 1) to q
    if q="bcd"
        add 1 to t-pass
    else add 1 to t-fail display "FAIL 6: q=""bcd"""
    end-if
    move "zz" to x(j + 1:j)
    if x="abzzefgh"
        add 1 to t-pass
    else add 1 to t-fail display "FAIL 7: x=""abzzefgh"""
    end-if
    move 1 to f-1 move 2 to f-1-2 compute n = f-1 - f-1-2 + 5
    if n=4
        add 1 to t-pass
    else add 1 to t-fail display "FAIL 8: n=4"
    end-if
    move 9 to d
    if c="9"
        add 1 to t-pass
    else add 1 to t-fail display "FAIL 9: c=""9"""
    end-if
    compute dec = 0 - s / 2
    if dec=-1.5
        add 1 to t-pass
    else add 1 to t-fail display "FAIL 10: dec=-1.5"
    end-if
    compute dec = - s + 1
    if dec=-2
        add 1 to t-pass
    else add 1 to t-fail display "FAIL 11: dec=-2"
    end-if
    compute dec = s*-1
    if dec=-3
        add 1 to t-pass
    else add 1 to t-fail display "FAIL 12: dec=-3"
    end-if
    compute dec rounded = z ** 3
    if dec=3.38
        add 1 to t-pass
    else add 1 to t-fail display "FAIL 13: dec=3.38"
    end-if
    if num-y=0.12
        add 1 to t-pass
    else add 1 to t-fail display "FAIL 14: num-y=0.12"
    end-if
    if function length(ptr-grp) = 2 + 2 + 4 + 4 + 8 + 8 + 3
        add 1 to t-pass
    else add 1 to t-fail display "FAIL 15: function length(ptr-grp) = 2 + 2 + 4 + 4 + 8 + 8 + 3"
        display "     >" function length(ptr-grp) "<"
    end-if
    move 99 to n1 move 9999 to n2 move 99999 to n3 move 999999999 to n4 move 9999999999 to n5 move -999999999999999999 to n6 move 1234 to n7
    if n1=99 and n2=9999 and n3=99999 and n4=999999999 and n5=9999999999 and n6=-999999999999999999 and n7=1234
        add 1 to t-pass
    else add 1 to t-fail display "FAIL 16: n1=99 and n2=9999 and n3=99999 and n4=999999999 and n5=9999999999 and n6=-999999999999999999 and n7=1234"
    end-if
    compute n5 = n4 * 10 + 9
    if n5=9999999999
        add 1 to t-pass
    else add 1 to t-fail display "FAIL 17: n5=9999999999"
    end-if
    compute n6 = n4 * n4
    if n6=999999998000000001
        add 1 to t-pass
    else add 1 to t-fail display "FAIL 18: n6=999999998000000001"
    end-if
    compute n6 = n6 / n4
    if n6=999999999
        add 1 to t-pass
    else add 1 to t-fail display "FAIL 19: n6=999999999"
    end-if
    add n1 n2 n3 n4 giving n6
    if n6=1000110096
        add 1 to t-pass
    else add 1 to t-fail display "FAIL 20: n6=1000110096"
    end-if
    move 5 to n. add 1 to n.move 7 to i.
    if n=6 and i=7
        add 1 to t-pass
    else add 1 to t-fail display "FAIL 21: n=6 and i=7"
    end-if
    evaluate true when n=1 or i=7 add 1 to t-pass when other display "FAIL" end-evaluate
    if (n=6) and (i=7 or j=9) add 1 to t-pass else display "FAIL".
    if n=6 if i=7 if j=9 display "FAIL" else add 1 to t-pass.
    if n not=6 display "FAIL".
    if not(n=6) display "FAIL".
    if n=6 and(i=7)and(j=2) add 1 to t-pass.
    if n is not equal 5 add 1 to t-pass.
    move n to n1. move -7 to s. move s to n1.
    if n1 = 7
        add 1 to t-pass
    else add 1 to t-fail display "FAIL 22: n1 = 7"
    end-if
    move s to q.
    if q = "0007"
        add 1 to t-pass
    else add 1 to t-fail display "FAIL 23: q = ""0007"""
    end-if
    move z to q.
    move spaces to q. move 12 to q.
    if q = "12"
        add 1 to t-pass
    else add 1 to t-fail display "FAIL 24: q = ""12"""
    end-if
    perform until i = 0 subtract 1 from i end-perform.
    if i = 0
        add 1 to t-pass
    else add 1 to t-fail display "FAIL 25: i = 0"
    end-if
    display "passed " t-pass " failed " t-fail
    stop run.
