*> DECIMAL-POINT IS COMMA, currency, switches.
identification division.
program-id. t07.
environment division.
configuration section.
special-names.
    alphabet my-abc is "Z" thru "A" "9" thru "0" also "x"
    decimal-point is comma
    switch-1 is sw1 on status is sw1-on off status is sw1-off
    upsi-2 on is u2on off is u2off
    sysin is my-in sysout is my-out console is cons
    currency sign is "E".
data division.
working-storage section.
01 t-pass pic 9(4) value 0.
01 t-fail pic 9(4) value 0.
01 n pic 9(3)v99 value 12,5. 01 e pic z.zz9,99. 01 m pic E.EE9,99. 01 x pic x(10). 01 i pic 9 value 1. 01 f pic 9. 01 fl comp-2.
01 v pic s9(3)v9(2) sign trailing separate. 
procedure division.
main-para.
    move 1234,56 to e
    if e = "1.234,56"
        add 1 to t-pass
    else add 1 to t-fail display "FAIL 1: e = ""1.234,56"""
        display "     >" e "<"
    end-if
    move 12,5 to m
    if m = "  E12,50" or = "   E12,50"
        add 1 to t-pass
    else add 1 to t-fail display "FAIL 2: m = ""  E12,50"" or = ""   E12,50"""
        display "     >" m "<"
    end-if
    if n = 12,5
        add 1 to t-pass
    else add 1 to t-fail display "FAIL 3: n = 12,5"
    end-if
    compute n = 1,5 * 2
    if n = 3
        add 1 to t-pass
    else add 1 to t-fail display "FAIL 4: n = 3"
    end-if
    add 1,25 , 2,5 to n
    if n = 6,75
        add 1 to t-pass
    else add 1 to t-fail display "FAIL 5: n = 6,75"
    end-if
    if function numval("1.234,5") = 1234,5
        add 1 to t-pass
    else add 1 to t-fail display "FAIL 6: function numval(""1.234,5"") = 1234,5"
    end-if
    if function max(1,5 2,5) = 2,5
        add 1 to t-pass
    else add 1 to t-fail display "FAIL 7: function max(1,5 2,5) = 2,5"
    end-if
    if function max(1,5, 2,5) = 2,5
        add 1 to t-pass
    else add 1 to t-fail display "FAIL 8: function max(1,5, 2,5) = 2,5"
    end-if
    set sw1 to on
    if sw1-on and not sw1-off
        add 1 to t-pass
    else add 1 to t-fail display "FAIL 9: sw1-on and not sw1-off"
    end-if
    set sw1 to off
    if sw1-off
        add 1 to t-pass
    else add 1 to t-fail display "FAIL 10: sw1-off"
    end-if
    display n upon my-out
    display -1,5 " " n upon cons
    move -1,5 to fl display fl
    display "passed " t-pass " failed " t-fail
    stop run.
