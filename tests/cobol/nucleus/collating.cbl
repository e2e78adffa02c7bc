*> Comparisons, condition-names, SEARCH ALL in a collating sequence of the program's own.
identification division.
program-id. t11.
environment division.
configuration section.
object-computer. x program collating sequence is rev.
special-names. alphabet rev is "Z" thru "A" "a" thru "z" "9" thru "0"
   alphabet eb is ebcdic.
data division.
working-storage section.
01 t-pass pic 9(4) value 0.
01 t-fail pic 9(4) value 0.
01 x pic x value "A". 01 y pic x value "B". 01 n1 pic 9 value 1. 01 n2 pic 9 value 2. 01 s pic x(5).
01 c pic x. 88 c-r value "C" thru "A". 88 c-n value "A" thru "C".
01 t. 02 e occurs 3 ascending key is k indexed by i. 03 k pic x. 03 v pic 9.
01 w pic 99 value 0.
procedure division.
main-para.
    if x > y
        add 1 to t-pass
    else add 1 to t-fail display "FAIL 1: x > y"
    end-if
    if n1 < n2
        add 1 to t-pass
    else add 1 to t-fail display "FAIL 2: n1 < n2"
    end-if
    if "a" > "A"
        add 1 to t-pass
    else add 1 to t-fail display "FAIL 3: ""a"" > ""A"""
    end-if
    if "0" > "9"
        add 1 to t-pass
    else add 1 to t-fail display "FAIL 4: ""0"" > ""9"""
    end-if
    if "AB" > "AC"
        add 1 to t-pass
    else add 1 to t-fail display "FAIL 5: ""AB"" > ""AC"""
    end-if
    move "B" to c
    if c-r
        add 1 to t-pass
    else add 1 to t-fail display "FAIL 6: c-r"
    end-if
    if not c-n
        add 1 to t-pass
    else add 1 to t-fail display "FAIL 7: not c-n"
    end-if
    move high-value to c
    if c > "0"
        add 1 to t-pass
    else add 1 to t-fail display "FAIL 8: c > ""0"""
    end-if
    if c not < "0"
        add 1 to t-pass
    else add 1 to t-fail display "FAIL 9: c not < ""0"""
    end-if
    move low-value to c
    if c not > "Z"
        add 1 to t-pass
    else add 1 to t-fail display "FAIL 10: c not > ""Z"""
    end-if
    if c <= "Z"
        add 1 to t-pass
    else add 1 to t-fail display "FAIL 11: c <= ""Z"""
    end-if
    evaluate x when "B" thru "A" add 1 to t-pass when other display "FAIL ev" end-evaluate
    move "C1" to e(1) move "B2" to e(2) move "A3" to e(3)
    search all e at end display "FAIL sa" when k(i) = "A" move v(i) to w end-search
    if w = 3
        add 1 to t-pass
    else add 1 to t-fail display "FAIL 12: w = 3"
    end-if
    if function max("A" "B") = "A" or = "B"
        add 1 to t-pass
    else add 1 to t-fail display "FAIL 13: function max(""A"" ""B"") = ""A"" or = ""B"""
    end-if
    move "ABC" to s
    inspect s tallying w for all "A"
    if w = 4
        add 1 to t-pass
    else add 1 to t-fail display "FAIL 14: w = 4"
    end-if
    if x = "A" and not < "B" continue else display "FAIL ab" end-if
    display "passed " t-pass " failed " t-fail
    stop run.
