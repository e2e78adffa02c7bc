*> Intrinsic functions with every class of argument, and in every place.
identification division.
program-id. t04.
environment division.
configuration section.
special-names. currency sign is "F".
data division.
working-storage section.
01 t-pass pic 9(4) value 0.
01 t-fail pic 9(4) value 0.
01 x pic x(20). 01 y pic x(20). 01 n pic s9(9)v9(9). 01 m pic s9(9). 01 i pic 99 value 3. 01 d pic 9(8).
01 t. 02 te pic s9(3) occurs 5. 01 t2. 02 ta occurs 2. 03 tb occurs 3 pic 99.
01 tx. 02 txe pic x(4) occurs 3.
01 g. 02 g1 pic x(3). 02 g2 pic 9(4) comp.
01 dt pic x(21). 01 f comp-2. 01 k pic 9. 01 lo pic s9(4)v99 value -12.34.
01 od. 02 oc pic 9 value 3. 02 ot pic 9(3) occurs 1 to 5 depending on oc.
procedure division.
main-para.
    if function abs(-5.5) = 5.5
        add 1 to t-pass
    else add 1 to t-fail display "FAIL 1: function abs(-5.5) = 5.5"
    end-if
    if function abs(lo) = 12.34
        add 1 to t-pass
    else add 1 to t-fail display "FAIL 2: function abs(lo) = 12.34"
    end-if
    compute n rounded = function acos(0.5)
    if n = 1.047197551
        add 1 to t-pass
    else add 1 to t-fail display "FAIL 3: n = 1.047197551"
    end-if
    compute n rounded = function asin(1)
    if n = 1.570796327
        add 1 to t-pass
    else add 1 to t-fail display "FAIL 4: n = 1.570796327"
    end-if
    compute n rounded = function atan(1)
    if n = 0.785398163
        add 1 to t-pass
    else add 1 to t-fail display "FAIL 5: n = 0.785398163"
    end-if
    compute n rounded = function cos(0) + function sin(0) + function tan(0)
    if n = 1
        add 1 to t-pass
    else add 1 to t-fail display "FAIL 6: n = 1"
    end-if
    compute n rounded = function annuity(0.1, 3)
    if n = 0.402114804
        add 1 to t-pass
    else add 1 to t-fail display "FAIL 7: n = 0.402114804"
    end-if
    compute n = function annuity(0, 4)
    if n = 0.25
        add 1 to t-pass
    else add 1 to t-fail display "FAIL 8: n = 0.25"
    end-if
    if function char(66) = "A"
        add 1 to t-pass
    else add 1 to t-fail display "FAIL 9: function char(66) = ""A"""
    end-if
    if function ord("A") = 66
        add 1 to t-pass
    else add 1 to t-fail display "FAIL 10: function ord(""A"") = 66"
    end-if
    if function ord("a") = 98
        add 1 to t-pass
    else add 1 to t-fail display "FAIL 11: function ord(""a"") = 98"
    end-if
    if function current-date(1:2) = "20"
        add 1 to t-pass
    else add 1 to t-fail display "FAIL 12: function current-date(1:2) = ""20"""
    end-if
    move function current-date to dt
    if dt(17:1) = "+" or "-" or "0"
        add 1 to t-pass
    else add 1 to t-fail display "FAIL 13: dt(17:1) = ""+"" or ""-"" or ""0"""
    end-if
    if function date-of-integer(1) = 16010101
        add 1 to t-pass
    else add 1 to t-fail display "FAIL 14: function date-of-integer(1) = 16010101"
    end-if
    if function date-of-integer(146097) = 20001231
        add 1 to t-pass
    else add 1 to t-fail display "FAIL 15: function date-of-integer(146097) = 20001231"
    end-if
    if function integer-of-date(20001231) = 146097
        add 1 to t-pass
    else add 1 to t-fail display "FAIL 16: function integer-of-date(20001231) = 146097"
    end-if
    if function integer-of-date(16010101) = 1
        add 1 to t-pass
    else add 1 to t-fail display "FAIL 17: function integer-of-date(16010101) = 1"
    end-if
    if function day-of-integer(365) = 1601365
        add 1 to t-pass
    else add 1 to t-fail display "FAIL 18: function day-of-integer(365) = 1601365"
    end-if
    if function integer-of-day(1601365) = 365
        add 1 to t-pass
    else add 1 to t-fail display "FAIL 19: function integer-of-day(1601365) = 365"
    end-if
    if function integer-of-day(2000366) = 146097
        add 1 to t-pass
    else add 1 to t-fail display "FAIL 20: function integer-of-day(2000366) = 146097"
    end-if
    if function factorial(0) = 1
        add 1 to t-pass
    else add 1 to t-fail display "FAIL 21: function factorial(0) = 1"
    end-if
    if function factorial(10) = 3628800
        add 1 to t-pass
    else add 1 to t-fail display "FAIL 22: function factorial(10) = 3628800"
    end-if
    if function factorial(i) = 6
        add 1 to t-pass
    else add 1 to t-fail display "FAIL 23: function factorial(i) = 6"
    end-if
    if function integer(-1.5) = -2
        add 1 to t-pass
    else add 1 to t-fail display "FAIL 24: function integer(-1.5) = -2"
    end-if
    if function integer(1.5) = 1
        add 1 to t-pass
    else add 1 to t-fail display "FAIL 25: function integer(1.5) = 1"
    end-if
    if function integer(-3) = -3
        add 1 to t-pass
    else add 1 to t-fail display "FAIL 26: function integer(-3) = -3"
    end-if
    if function integer(lo) = -13
        add 1 to t-pass
    else add 1 to t-fail display "FAIL 27: function integer(lo) = -13"
    end-if
    if function integer-part(-1.5) = -1
        add 1 to t-pass
    else add 1 to t-fail display "FAIL 28: function integer-part(-1.5) = -1"
    end-if
    if function integer-part(lo) = -12
        add 1 to t-pass
    else add 1 to t-fail display "FAIL 29: function integer-part(lo) = -12"
    end-if
    if function length("ABC") = 3
        add 1 to t-pass
    else add 1 to t-fail display "FAIL 30: function length(""ABC"") = 3"
    end-if
    if function length(x) = 20
        add 1 to t-pass
    else add 1 to t-fail display "FAIL 31: function length(x) = 20"
    end-if
    if function length(g) = 5
        add 1 to t-pass
    else add 1 to t-fail display "FAIL 32: function length(g) = 5"
    end-if
    if function length(od) = 10
        add 1 to t-pass
    else add 1 to t-fail display "FAIL 33: function length(od) = 10"
        display "     >" function length(od) "<"
    end-if
    if function length(te(1)) = 3
        add 1 to t-pass
    else add 1 to t-fail display "FAIL 34: function length(te(1)) = 3"
    end-if
    compute n rounded = function log(10)
    if n = 2.302585093
        add 1 to t-pass
    else add 1 to t-fail display "FAIL 35: n = 2.302585093"
    end-if
    if function log10(1000) = 3
        add 1 to t-pass
    else add 1 to t-fail display "FAIL 36: function log10(1000) = 3"
    end-if
    if function lower-case("AbC1") = "abc1"
        add 1 to t-pass
    else add 1 to t-fail display "FAIL 37: function lower-case(""AbC1"") = ""abc1"""
    end-if
    if function upper-case("AbC1") = "ABC1"
        add 1 to t-pass
    else add 1 to t-fail display "FAIL 38: function upper-case(""AbC1"") = ""ABC1"""
    end-if
    if function reverse("ABC") = "CBA"
        add 1 to t-pass
    else add 1 to t-fail display "FAIL 39: function reverse(""ABC"") = ""CBA"""
    end-if
    move "abc" to x
    if function upper-case(x) = "ABC"
        add 1 to t-pass
    else add 1 to t-fail display "FAIL 40: function upper-case(x) = ""ABC"""
    end-if
    if function upper-case(x)(1:2) = "AB"
        add 1 to t-pass
    else add 1 to t-fail display "FAIL 41: function upper-case(x)(1:2) = ""AB"""
    end-if
    if function reverse(function upper-case(x(1:3))) = "CBA"
        add 1 to t-pass
    else add 1 to t-fail display "FAIL 42: function reverse(function upper-case(x(1:3))) = ""CBA"""
    end-if
    if function max(1 5 3) = 5
        add 1 to t-pass
    else add 1 to t-fail display "FAIL 43: function max(1 5 3) = 5"
    end-if
    if function max(1, -5, 3.5) = 3.5
        add 1 to t-pass
    else add 1 to t-fail display "FAIL 44: function max(1, -5, 3.5) = 3.5"
    end-if
    if function max("AB" "ABC" "AA") = "ABC"
        add 1 to t-pass
    else add 1 to t-fail display "FAIL 45: function max(""AB"" ""ABC"" ""AA"") = ""ABC"""
    end-if
    if function min("AB" "ABC" "AA") = "AA"
        add 1 to t-pass
    else add 1 to t-fail display "FAIL 46: function min(""AB"" ""ABC"" ""AA"") = ""AA"""
    end-if
    if function min(1 -5 3) = -5
        add 1 to t-pass
    else add 1 to t-fail display "FAIL 47: function min(1 -5 3) = -5"
    end-if
    if function mean(1 2 3 4) = 2.5
        add 1 to t-pass
    else add 1 to t-fail display "FAIL 48: function mean(1 2 3 4) = 2.5"
    end-if
    if function median(5 1 4) = 4
        add 1 to t-pass
    else add 1 to t-fail display "FAIL 49: function median(5 1 4) = 4"
    end-if
    if function median(5 1 4 2) = 3
        add 1 to t-pass
    else add 1 to t-fail display "FAIL 50: function median(5 1 4 2) = 3"
    end-if
    if function midrange(1 5 9 3) = 5
        add 1 to t-pass
    else add 1 to t-fail display "FAIL 51: function midrange(1 5 9 3) = 5"
    end-if
    if function mod(11 5) = 1
        add 1 to t-pass
    else add 1 to t-fail display "FAIL 52: function mod(11 5) = 1"
    end-if
    if function mod(-11 5) = 4
        add 1 to t-pass
    else add 1 to t-fail display "FAIL 53: function mod(-11 5) = 4"
    end-if
    if function mod(11 -5) = -4
        add 1 to t-pass
    else add 1 to t-fail display "FAIL 54: function mod(11 -5) = -4"
    end-if
    if function mod(-11 -5) = -1
        add 1 to t-pass
    else add 1 to t-fail display "FAIL 55: function mod(-11 -5) = -1"
    end-if
    if function rem(-11 5) = -1
        add 1 to t-pass
    else add 1 to t-fail display "FAIL 56: function rem(-11 5) = -1"
    end-if
    if function rem(11 -5) = 1
        add 1 to t-pass
    else add 1 to t-fail display "FAIL 57: function rem(11 -5) = 1"
    end-if
    if function rem(5.5 2) = 1.5
        add 1 to t-pass
    else add 1 to t-fail display "FAIL 58: function rem(5.5 2) = 1.5"
    end-if
    if function numval(" -12.5 ") = -12.5
        add 1 to t-pass
    else add 1 to t-fail display "FAIL 59: function numval("" -12.5 "") = -12.5"
    end-if
    if function numval("12.5-") = -12.5
        add 1 to t-pass
    else add 1 to t-fail display "FAIL 60: function numval(""12.5-"") = -12.5"
    end-if
    if function numval("12.5 CR") = -12.5
        add 1 to t-pass
    else add 1 to t-fail display "FAIL 61: function numval(""12.5 CR"") = -12.5"
    end-if
    if function numval("+ 3") = 3
        add 1 to t-pass
    else add 1 to t-fail display "FAIL 62: function numval(""+ 3"") = 3"
    end-if
    if function numval("  .5db") = -.5
        add 1 to t-pass
    else add 1 to t-fail display "FAIL 63: function numval(""  .5db"") = -.5"
    end-if
    if function numval-c("F1,234.50", "F") = 1234.5
        add 1 to t-pass
    else add 1 to t-fail display "FAIL 64: function numval-c(""F1,234.50"", ""F"") = 1234.5"
    end-if
    if function numval-c(" - $1,234.50 ", "$") = -1234.5
        add 1 to t-pass
    else add 1 to t-fail display "FAIL 65: function numval-c("" - $1,234.50 "", ""$"") = -1234.5"
    end-if
    if function numval-c("F12") = 12
        add 1 to t-pass
    else add 1 to t-fail display "FAIL 66: function numval-c(""F12"") = 12"
    end-if
    if function numval-f("1.5E2") = 150
        add 1 to t-pass
    else add 1 to t-fail display "FAIL 67: function numval-f(""1.5E2"") = 150"
    end-if
    if function ord-max(3 9 2) = 2
        add 1 to t-pass
    else add 1 to t-fail display "FAIL 68: function ord-max(3 9 2) = 2"
    end-if
    if function ord-min(3 9 2) = 3
        add 1 to t-pass
    else add 1 to t-fail display "FAIL 69: function ord-min(3 9 2) = 3"
    end-if
    if function ord-max("A" "C" "B") = 2
        add 1 to t-pass
    else add 1 to t-fail display "FAIL 70: function ord-max(""A"" ""C"" ""B"") = 2"
    end-if
    compute n rounded = function present-value(0.1, 100, 200)
    if n = 256.198347107
        add 1 to t-pass
    else add 1 to t-fail display "FAIL 71: n = 256.198347107"
    end-if
    move function random(5) to n
    if function random < 1
        add 1 to t-pass
    else add 1 to t-fail display "FAIL 72: function random < 1"
    end-if
    if function random >= 0
        add 1 to t-pass
    else add 1 to t-fail display "FAIL 73: function random >= 0"
    end-if
    if function range(1 5 -3) = 8
        add 1 to t-pass
    else add 1 to t-fail display "FAIL 74: function range(1 5 -3) = 8"
    end-if
    if function sqrt(16) = 4
        add 1 to t-pass
    else add 1 to t-fail display "FAIL 75: function sqrt(16) = 4"
    end-if
    compute n rounded = function sqrt(2)
    if n = 1.414213562
        add 1 to t-pass
    else add 1 to t-fail display "FAIL 76: n = 1.414213562"
    end-if
    if function standard-deviation(2 4 4 4 5 5 7 9) = 2
        add 1 to t-pass
    else add 1 to t-fail display "FAIL 77: function standard-deviation(2 4 4 4 5 5 7 9) = 2"
    end-if
    if function variance(2 4 4 4 5 5 7 9) = 4
        add 1 to t-pass
    else add 1 to t-fail display "FAIL 78: function variance(2 4 4 4 5 5 7 9) = 4"
    end-if
    if function sum(1 2 3.5) = 6.5
        add 1 to t-pass
    else add 1 to t-fail display "FAIL 79: function sum(1 2 3.5) = 6.5"
    end-if
    move 1 to te(1) move -2 to te(2) move 3 to te(3) move -4 to te(4) move 5 to te(5)
    if function sum(te(all)) = 3
        add 1 to t-pass
    else add 1 to t-fail display "FAIL 80: function sum(te(all)) = 3"
    end-if
    if function max(te(all)) = 5
        add 1 to t-pass
    else add 1 to t-fail display "FAIL 81: function max(te(all)) = 5"
    end-if
    if function min(te(all) -100) = -100
        add 1 to t-pass
    else add 1 to t-fail display "FAIL 82: function min(te(all) -100) = -100"
    end-if
    if function ord-min(te(all)) = 4
        add 1 to t-pass
    else add 1 to t-fail display "FAIL 83: function ord-min(te(all)) = 4"
    end-if
    if function mean(te(all)) = 0.6
        add 1 to t-pass
    else add 1 to t-fail display "FAIL 84: function mean(te(all)) = 0.6"
    end-if
    if function range(te(all)) = 9
        add 1 to t-pass
    else add 1 to t-fail display "FAIL 85: function range(te(all)) = 9"
    end-if
    if function midrange(te(all)) = 0.5
        add 1 to t-pass
    else add 1 to t-fail display "FAIL 86: function midrange(te(all)) = 0.5"
    end-if
    if function median(te(all)) = 1
        add 1 to t-pass
    else add 1 to t-fail display "FAIL 87: function median(te(all)) = 1"
    end-if
    move 10 to tb(1 1) move 20 to tb(1 2) move 30 to tb(1 3) move 40 to tb(2 1) move 50 to tb(2 2) move 60 to tb(2 3)
    if function sum(tb(all all)) = 210
        add 1 to t-pass
    else add 1 to t-fail display "FAIL 88: function sum(tb(all all)) = 210"
    end-if
    if function sum(tb(1 all)) = 60
        add 1 to t-pass
    else add 1 to t-fail display "FAIL 89: function sum(tb(1 all)) = 60"
    end-if
    if function sum(tb(all 2)) = 70
        add 1 to t-pass
    else add 1 to t-fail display "FAIL 90: function sum(tb(all 2)) = 70"
    end-if
    if function ord-max(tb(all all)) = 6
        add 1 to t-pass
    else add 1 to t-fail display "FAIL 91: function ord-max(tb(all all)) = 6"
    end-if
    if function max(tb(2 all) tb(1 all)) = 60
        add 1 to t-pass
    else add 1 to t-fail display "FAIL 92: function max(tb(2 all) tb(1 all)) = 60"
    end-if
    move "BB" to txe(1) move "ZZ" to txe(2) move "AA" to txe(3)
    if function max(txe(all)) = "ZZ"
        add 1 to t-pass
    else add 1 to t-fail display "FAIL 93: function max(txe(all)) = ""ZZ"""
    end-if
    if function ord-min(txe(all)) = 3
        add 1 to t-pass
    else add 1 to t-fail display "FAIL 94: function ord-min(txe(all)) = 3"
    end-if
    move 100 to ot(1) move 200 to ot(2) move 300 to ot(3)
    if function sum(ot(all)) = 600
        add 1 to t-pass
    else add 1 to t-fail display "FAIL 95: function sum(ot(all)) = 600"
    end-if
    move 2 to oc
    if function sum(ot(all)) = 300
        add 1 to t-pass
    else add 1 to t-fail display "FAIL 96: function sum(ot(all)) = 300"
    end-if
    if function mean(ot(all)) = 150
        add 1 to t-pass
    else add 1 to t-fail display "FAIL 97: function mean(ot(all)) = 150"
    end-if
    if te(function integer(2.9)) = -2
        add 1 to t-pass
    else add 1 to t-fail display "FAIL 98: te(function integer(2.9)) = -2"
    end-if
    if te(function max(1 2 3)) = 3
        add 1 to t-pass
    else add 1 to t-fail display "FAIL 99: te(function max(1 2 3)) = 3"
    end-if
    if x(function length("ab"):1) = "b"
        add 1 to t-pass
    else add 1 to t-fail display "FAIL 100: x(function length(""ab""):1) = ""b"""
    end-if
    move 3 to i
    if function max(i + 1, i * 2, 5) = 6
        add 1 to t-pass
    else add 1 to t-fail display "FAIL 101: function max(i + 1, i * 2, 5) = 6"
    end-if
    if function sum(i, -1) = 2
        add 1 to t-pass
    else add 1 to t-fail display "FAIL 102: function sum(i, -1) = 2"
    end-if
    if function sum(i -1) = 2
        add 1 to t-pass
    else add 1 to t-fail display "FAIL 103: function sum(i -1) = 2"
    end-if
    if function max(function min(3 4) function min(5 6)) = 5
        add 1 to t-pass
    else add 1 to t-fail display "FAIL 104: function max(function min(3 4) function min(5 6)) = 5"
    end-if
    compute m = function integer-part(function sqrt(17)) * 10 + function mod(7 4)
    if m = 43
        add 1 to t-pass
    else add 1 to t-fail display "FAIL 105: m = 43"
    end-if
    move function sum(te(1) te(3)) to k
    if k = 4
        add 1 to t-pass
    else add 1 to t-fail display "FAIL 106: k = 4"
    end-if
    move function factorial(5) to m
    if m = 120
        add 1 to t-pass
    else add 1 to t-fail display "FAIL 107: m = 120"
    end-if
    move function lower-case("XYZ") to y
    if y = "xyz"
        add 1 to t-pass
    else add 1 to t-fail display "FAIL 108: y = ""xyz"""
    end-if
    if function mod(i 2) = 1 add 1 to t-pass else display "FAIL if".
    evaluate function mod(i 2) when 0 display "FAIL ev" when 1 add 1 to t-pass end-evaluate
    perform function integer(2.5) times add 1 to k end-perform
    if k = 6
        add 1 to t-pass
    else add 1 to t-fail display "FAIL 109: k = 6"
    end-if
    string function lower-case("AB") delimited by size function upper-case("cd") delimited by size into x
    if x = "abCDC" or x(1:4) = "abCD"
        add 1 to t-pass
    else add 1 to t-fail display "FAIL 110: x = ""abCDC"" or x(1:4) = ""abCD"""
    end-if
    move function length(function trim("  ab ")) to m
    if m = 2
        add 1 to t-pass
    else add 1 to t-fail display "FAIL 111: m = 2"
    end-if
    if function trim("  ab ") = "ab"
        add 1 to t-pass
    else add 1 to t-fail display "FAIL 112: function trim(""  ab "") = ""ab"""
    end-if
    if function trim("  ab " leading) = "ab"
        add 1 to t-pass
    else add 1 to t-fail display "FAIL 113: function trim(""  ab "" leading) = ""ab"""
    end-if
    if function length(function trim("  ab " trailing)) = 4
        add 1 to t-pass
    else add 1 to t-fail display "FAIL 114: function length(function trim(""  ab "" trailing)) = 4"
    end-if
    if function concatenate("a" "b" "c") = "abc"
        add 1 to t-pass
    else add 1 to t-fail display "FAIL 115: function concatenate(""a"" ""b"" ""c"") = ""abc"""
    end-if
    if function concat("a" x(1:1) "c") = "aac"
        add 1 to t-pass
    else add 1 to t-fail display "FAIL 116: function concat(""a"" x(1:1) ""c"") = ""aac"""
    end-if
    if function substitute("hello world" "o" "0" "l" "L") = "heLL0 w0rLd"
        add 1 to t-pass
    else add 1 to t-fail display "FAIL 117: function substitute(""hello world"" ""o"" ""0"" ""l"" ""L"") = ""heLL0 w0rLd"""
    end-if
    if function stored-char-length("ab  ") = 2
        add 1 to t-pass
    else add 1 to t-fail display "FAIL 118: function stored-char-length(""ab  "") = 2"
    end-if
    if function byte-length("abcd") = 4
        add 1 to t-pass
    else add 1 to t-fail display "FAIL 119: function byte-length(""abcd"") = 4"
    end-if
    if function test-numval("12") = 0
        add 1 to t-pass
    else add 1 to t-fail display "FAIL 120: function test-numval(""12"") = 0"
    end-if
    if function test-numval("1x") = 2
        add 1 to t-pass
    else add 1 to t-fail display "FAIL 121: function test-numval(""1x"") = 2"
    end-if
    if function test-date-yyyymmdd(20230229) > 0
        add 1 to t-pass
    else add 1 to t-fail display "FAIL 122: function test-date-yyyymmdd(20230229) > 0"
    end-if
    if function test-date-yyyymmdd(20240229) = 0
        add 1 to t-pass
    else add 1 to t-fail display "FAIL 123: function test-date-yyyymmdd(20240229) = 0"
    end-if
    if function year-to-yyyy(99 50) > 1900
        add 1 to t-pass
    else add 1 to t-fail display "FAIL 124: function year-to-yyyy(99 50) > 1900"
    end-if
    if function fraction-part(-1.25) = -0.25
        add 1 to t-pass
    else add 1 to t-fail display "FAIL 125: function fraction-part(-1.25) = -0.25"
    end-if
    if function sign(-3) = -1
        add 1 to t-pass
    else add 1 to t-fail display "FAIL 126: function sign(-3) = -1"
    end-if
    if function exp10(3) = 1000
        add 1 to t-pass
    else add 1 to t-fail display "FAIL 127: function exp10(3) = 1000"
    end-if
    compute n rounded = function e
    if n = 2.718281828
        add 1 to t-pass
    else add 1 to t-fail display "FAIL 128: n = 2.718281828"
    end-if
    compute n rounded = function pi
    if n = 3.141592654
        add 1 to t-pass
    else add 1 to t-fail display "FAIL 129: n = 3.141592654"
    end-if
    compute n rounded = function exp(1)
    if n = 2.718281828
        add 1 to t-pass
    else add 1 to t-fail display "FAIL 130: n = 2.718281828"
    end-if
    if function combined-datetime(146097, 3600) = 146097.036
        add 1 to t-pass
    else add 1 to t-fail display "FAIL 131: function combined-datetime(146097, 3600) = 146097.036"
    end-if
    if function seconds-past-midnight >= 0
        add 1 to t-pass
    else add 1 to t-fail display "FAIL 132: function seconds-past-midnight >= 0"
    end-if
    if function highest-algebraic(lo) = 9999.99
        add 1 to t-pass
    else add 1 to t-fail display "FAIL 133: function highest-algebraic(lo) = 9999.99"
    end-if
    if function lowest-algebraic(lo) = -9999.99
        add 1 to t-pass
    else add 1 to t-fail display "FAIL 134: function lowest-algebraic(lo) = -9999.99"
    end-if
    if function lowest-algebraic(i) = 0
        add 1 to t-pass
    else add 1 to t-fail display "FAIL 135: function lowest-algebraic(i) = 0"
    end-if
    if function formatted-date("YYYY-MM-DD" 146097) = "2000-12-31"
        add 1 to t-pass
    else add 1 to t-fail display "FAIL 136: function formatted-date(""YYYY-MM-DD"" 146097) = ""2000-12-31"""
    end-if
    if function formatted-date("YYYYMMDD" 146097) = "20001231"
        add 1 to t-pass
    else add 1 to t-fail display "FAIL 137: function formatted-date(""YYYYMMDD"" 146097) = ""20001231"""
    end-if
    if function formatted-date("YYYY-DDD" 146097) = "2000-366"
        add 1 to t-pass
    else add 1 to t-fail display "FAIL 138: function formatted-date(""YYYY-DDD"" 146097) = ""2000-366"""
    end-if
    if function formatted-time("hh:mm:ss" 3661) = "01:01:01"
        add 1 to t-pass
    else add 1 to t-fail display "FAIL 139: function formatted-time(""hh:mm:ss"" 3661) = ""01:01:01"""
    end-if
    if function formatted-time("hhmmss" 3661) = "010101"
        add 1 to t-pass
    else add 1 to t-fail display "FAIL 140: function formatted-time(""hhmmss"" 3661) = ""010101"""
    end-if
    if function formatted-datetime("YYYY-MM-DDThh:mm:ss" 146097 3661) = "2000-12-31T01:01:01"
        add 1 to t-pass
    else add 1 to t-fail display "FAIL 141: function formatted-datetime(""YYYY-MM-DDThh:mm:ss"" 146097 3661) = ""2000-12-31T01:01:01"""
    end-if
    if function integer-of-formatted-date("YYYY-MM-DD" "2000-12-31") = 146097
        add 1 to t-pass
    else add 1 to t-fail display "FAIL 142: function integer-of-formatted-date(""YYYY-MM-DD"" ""2000-12-31"") = 146097"
    end-if
    if function seconds-from-formatted-time("hh:mm:ss" "01:01:01") = 3661
        add 1 to t-pass
    else add 1 to t-fail display "FAIL 143: function seconds-from-formatted-time(""hh:mm:ss"" ""01:01:01"") = 3661"
    end-if
    if function formatted-current-date("YYYY-MM-DDThh:mm:ss")(1:2) = "20"
        add 1 to t-pass
    else add 1 to t-fail display "FAIL 144: function formatted-current-date(""YYYY-MM-DDThh:mm:ss"")(1:2) = ""20"""
    end-if
    if function test-formatted-datetime("YYYY-MM-DD" "2000-12-31") = 0
        add 1 to t-pass
    else add 1 to t-fail display "FAIL 145: function test-formatted-datetime(""YYYY-MM-DD"" ""2000-12-31"") = 0"
    end-if
    if function test-formatted-datetime("YYYY-MM-DD" "2000-13-31") = 7
        add 1 to t-pass
    else add 1 to t-fail display "FAIL 146: function test-formatted-datetime(""YYYY-MM-DD"" ""2000-13-31"") = 7"
    end-if
    if function substitute-case("Hello hello" "HELLO" "x") = "x x"
        add 1 to t-pass
    else add 1 to t-fail display "FAIL 147: function substitute-case(""Hello hello"" ""HELLO"" ""x"") = ""x x"""
    end-if
    if function hex-of("AB") = "4142"
        add 1 to t-pass
    else add 1 to t-fail display "FAIL 148: function hex-of(""AB"") = ""4142"""
    end-if
    if function hex-to-char("4142") = "AB"
        add 1 to t-pass
    else add 1 to t-fail display "FAIL 149: function hex-to-char(""4142"") = ""AB"""
    end-if
    if function bit-of("A") = "01000001"
        add 1 to t-pass
    else add 1 to t-fail display "FAIL 150: function bit-of(""A"") = ""01000001"""
    end-if
    if function bit-to-char("01000001") = "A"
        add 1 to t-pass
    else add 1 to t-fail display "FAIL 151: function bit-to-char(""01000001"") = ""A"""
    end-if
    if function numval(function trim(" 12 ")) = 12
        add 1 to t-pass
    else add 1 to t-fail display "FAIL 152: function numval(function trim("" 12 "")) = 12"
    end-if
    if function module-id = "T04"
        add 1 to t-pass
    else add 1 to t-fail display "FAIL 153: function module-id = ""T04"""
    end-if
    if function test-numval-f("1.5E2") = 0
        add 1 to t-pass
    else add 1 to t-fail display "FAIL 154: function test-numval-f(""1.5E2"") = 0"
    end-if
    display "passed " t-pass " failed " t-fail
    stop run.
