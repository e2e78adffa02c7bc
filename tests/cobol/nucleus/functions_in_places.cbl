*> Functions in every place, OCCURS DEPENDING, CORRESPONDING, several receivers.
identification division.
program-id. t09.
environment division.
configuration section.
repository. function fact function swap2 function all intrinsic.
data division.
working-storage section.
01 t-pass pic 9(4) value 0.
01 t-fail pic 9(4) value 0.
01 i pic 99. 01 j pic 99. 01 n pic 9(9). 01 x pic x(10) value "b". 01 y pic x(20). 01 s pic s9(5)v99.
01 t. 02 te pic 99 occurs 5 indexed by ti.
01 g1. 02 a pic 9(2) value 1. 02 b pic 9(2) value 98. 02 c. 03 d pic 9 value 5. 03 e pic x value "E".
01 g2. 02 b pic 9(2) value 5. 02 a pic 9(2) value 2. 02 c. 03 d pic 9 value 6.
01 g3. 02 a pic z9. 02 c. 03 e pic x. 03 d pic 99.
01 od-n pic 9 value 2. 01 od. 02 oh pic x value "H". 02 ot occurs 0 to 5 depending on od-n. 03 oa pic x. 03 ob pic 9.
01 od2. 02 oh2 pic x. 02 on2 pic 9 value 3. 02 ot2 pic x occurs 1 to 5 depending on on2.
01 z pic x(12). 01 f pic 9. 01 k pic s9(3) comp-3. 01 pp pic 9(3). 01 lk pic x(8) value "abcdefgh".
procedure division.
main-para.
    if fact(5) = 120
        add 1 to t-pass
    else add 1 to t-fail display "FAIL 1: fact(5) = 120"
    end-if
    compute n = fact(3) + fact(fact(3)) 
    if n = 726
        add 1 to t-pass
    else add 1 to t-fail display "FAIL 2: n = 726"
    end-if
    move swap2("ab") to x
    if x = "ba"
        add 1 to t-pass
    else add 1 to t-fail display "FAIL 3: x = ""ba"""
    end-if
    if swap2(x(1:2)) = "ab"
        add 1 to t-pass
    else add 1 to t-fail display "FAIL 4: swap2(x(1:2)) = ""ab"""
    end-if
    if function swap2("xy")(1:1) = "y"
        add 1 to t-pass
    else add 1 to t-fail display "FAIL 5: function swap2(""xy"")(1:1) = ""y"""
    end-if
    perform varying i from function min(3 1) by function max(1 2) until i > function abs(-7) continue end-perform
    if i = 9
        add 1 to t-pass
    else add 1 to t-fail display "FAIL 6: i = 9"
    end-if
    move 7 to te(3)
    set ti to 1
    search te when te(ti) = function max(3 7) set j to ti end-search
    if j = 3
        add 1 to t-pass
    else add 1 to t-fail display "FAIL 7: j = 3"
    end-if
    move function max(1 2) to te(function min(2 4))
    if te(2) = 2
        add 1 to t-pass
    else add 1 to t-fail display "FAIL 8: te(2) = 2"
    end-if
    move "5" to y
    if function numval(y) > 4 and function upper-case(x) = "BA"
        add 1 to t-pass
    else add 1 to t-fail display "FAIL 9: function numval(y) > 4 and function upper-case(x) = ""BA"""
    end-if
    if function length(function trim(x)) = 2 or function numval("x") = 1 add 1 to t-pass else display "FAIL" end-if
    string "[" function trim(x) "]" function lower-case("Q") delimited by size into y
    if y(1:5) = "[ba]q"
        add 1 to t-pass
    else add 1 to t-fail display "FAIL 10: y(1:5) = ""[ba]q"""
    end-if
    move function reverse(lk)(1:3) to z
    if z = "hgf"
        add 1 to t-pass
    else add 1 to t-fail display "FAIL 11: z = ""hgf"""
    end-if
    move lk(function length("ab") + 1 : function max(1 2)) to z
    if z = "cd"
        add 1 to t-pass
    else add 1 to t-fail display "FAIL 12: z = ""cd"""
    end-if
    if function max(function length(x) function length(y)) = 20
        add 1 to t-pass
    else add 1 to t-fail display "FAIL 13: function max(function length(x) function length(y)) = 20"
    end-if
    add function sum(1 2 3) function integer(2.5) to i
    if i = 17
        add 1 to t-pass
    else add 1 to t-fail display "FAIL 14: i = 17"
    end-if
    subtract function min(1 2) from i giving j
    if j = 16
        add 1 to t-pass
    else add 1 to t-fail display "FAIL 15: j = 16"
    end-if
    multiply function sqrt(4) by i
    if i = 34
        add 1 to t-pass
    else add 1 to t-fail display "FAIL 16: i = 34"
    end-if
    divide i by function factorial(2) giving j
    if j = 17
        add 1 to t-pass
    else add 1 to t-fail display "FAIL 17: j = 17"
    end-if
    evaluate function mod(7 2) also function upper-case("a") when 1 also "B" display "FAIL" when 1 also "A" add 1 to t-pass when other display "FAIL" end-evaluate
*> corresponding
    add corresponding g1 to g2 on size error move 1 to f end-add
    if a of g2 = 3 and b of g2 = 5 and d of g2 = 6 and f = 1
        add 1 to t-pass
    else add 1 to t-fail display "FAIL 18: a of g2 = 3 and b of g2 = 5 and d of g2 = 6 and f = 1"
        display "     >" a of g2 "<"
        display "     >" b of g2 "<"
        display "     >" d of g2 "<"
        display "     >" f "<"
    end-if
    move corresponding g1 to g2 g3
    if a of g3 = " 1" and d of g3 = 5 and e of g3 = "E" and d of g2 = 5
        add 1 to t-pass
    else add 1 to t-fail display "FAIL 19: a of g3 = "" 1"" and d of g3 = 5 and e of g3 = ""E"" and d of g2 = 5"
    end-if
    subtract corr g1 from g2 rounded
    if a of g2 = 0 and b of g2 = 0
        add 1 to t-pass
    else add 1 to t-fail display "FAIL 20: a of g2 = 0 and b of g2 = 0"
    end-if
*> OCCURS DEPENDING
    move "Hx1y2z3" to od
    if od = "Hx1y2"
        add 1 to t-pass
    else add 1 to t-fail display "FAIL 21: od = ""Hx1y2"""
        display "     >" od "<"
    end-if
    if function length(od) = 5
        add 1 to t-pass
    else add 1 to t-fail display "FAIL 22: function length(od) = 5"
    end-if
    move 3 to od-n
    if length of od = 7
        add 1 to t-pass
    else add 1 to t-fail display "FAIL 23: length of od = 7"
    end-if
    move all "*" to z move od to z
    if z = "H" or z(1:5) = "Hx1y2"
        add 1 to t-pass
    else add 1 to t-fail display "FAIL 24: z = ""H"" or z(1:5) = ""Hx1y2"""
        display "     >" z "<"
    end-if
    move 0 to od-n move od to z
    if z = "H"
        add 1 to t-pass
    else add 1 to t-fail display "FAIL 25: z = ""H"""
    end-if
    move "Q5vwxyz" to od2
    if on2 = 5 and ot2(5) = "z"
        add 1 to t-pass
    else add 1 to t-fail display "FAIL 26: on2 = 5 and ot2(5) = ""z"""
    end-if
    move 2 to on2 move od2 to z
    if z = "Q2vw"
        add 1 to t-pass
    else add 1 to t-fail display "FAIL 27: z = ""Q2vw"""
        display "     >" z "<"
    end-if
    move "R3zz" to od2
    if ot2(2) = "z" and on2 = 3
        add 1 to t-pass
    else add 1 to t-fail display "FAIL 28: ot2(2) = ""z"" and on2 = 3"
    end-if
    move 2 to od-n initialize od
    if oa(1) = space and ob(2) = 0 and oh = space
        add 1 to t-pass
    else add 1 to t-fail display "FAIL 29: oa(1) = space and ob(2) = 0 and oh = space"
    end-if
    inspect od replacing all "0" by "7"
    if ob(1) = 7
        add 1 to t-pass
    else add 1 to t-fail display "FAIL 30: ob(1) = 7"
    end-if
    string "AB" delimited by size into od
    if oh = "A" and oa(1) = "B"
        add 1 to t-pass
    else add 1 to t-fail display "FAIL 31: oh = ""A"" and oa(1) = ""B"""
    end-if
*> several receivers
    compute i j n = 17 / 4
    if i = 4 and j = 4 and n = 4
        add 1 to t-pass
    else add 1 to t-fail display "FAIL 32: i = 4 and j = 4 and n = 4"
    end-if
    compute s rounded i = 17 / 4
    if s = 4.25 and i = 4
        add 1 to t-pass
    else add 1 to t-fail display "FAIL 33: s = 4.25 and i = 4"
    end-if
    divide 3 into 100 giving i j rounded s rounded
    if i = 33 and j = 33 and s = 33.33
        add 1 to t-pass
    else add 1 to t-fail display "FAIL 34: i = 33 and j = 33 and s = 33.33"
    end-if
    move 7 to i j
    if i = 7
        add 1 to t-pass
    else add 1 to t-fail display "FAIL 35: i = 7"
    end-if
    move 100 to pp move -5 to k
    add k to pp
    if pp = 95
        add 1 to t-pass
    else add 1 to t-fail display "FAIL 36: pp = 95"
    end-if
    subtract 100 from pp
    if pp = 5
        add 1 to t-pass
    else add 1 to t-fail display "FAIL 37: pp = 5"
    end-if
    add -1 to k
    if k = -6
        add 1 to t-pass
    else add 1 to t-fail display "FAIL 38: k = -6"
    end-if
    compute k = k - -6
    if k = 0
        add 1 to t-pass
    else add 1 to t-fail display "FAIL 39: k = 0"
    end-if
    if k is zero and k not negative and k not positive
        add 1 to t-pass
    else add 1 to t-fail display "FAIL 40: k is zero and k not negative and k not positive"
    end-if
    if i = 1 or = 7 and j = 7 then continue else display "FAIL" end-if
    go to fini.
fini.
    display "passed " t-pass " failed " t-fail
    stop run.
end program t09.
identification division.
function-id. fact.
data division.
local-storage section.
01 m pic 9(4).
linkage section.
01 n pic 9(4).
01 r pic 9(9).
procedure division using n returning r.
    if n < 2 move 1 to r else compute m = n - 1 compute r = n * fact(m) end-if
    goback.
end function fact.
identification division.
function-id. swap2.
data division.
linkage section.
01 p pic xx.
01 q pic xx.
procedure division using p returning q.
    move p(2:1) to q(1:1) move p(1:1) to q(2:1)
    exit function.
end function swap2.
