*> Relations in every wording, abbreviations, class tests, condition-names, EVALUATE.
identification division.
program-id. t03.
environment division.
configuration section.
special-names. class vowel is "A" "E" "I" "O" "U" class digit-x is "0" thru "9" alphabet rev is "9" thru "0", "Z" thru "A"
    symbolic characters nul-c is 1 bell-c is 8.
data division.
working-storage section.
01 t-pass pic 9(4) value 0.
01 t-fail pic 9(4) value 0.
01 n pic s9(5)v99. 01 m pic 9(5). 01 x pic x(10). 01 y pic x(5). 01 z pic x(20). 01 a pic 9. 01 b pic 9. 01 c pic 9. 01 d pic 9.
01 g.
 88 g-abc value "ABC12". 88 g-low value low-values. 88 g-sp value spaces. 88 g-all value all "Q".
    02 g1 pic x(3). 02 g2 pic 9(2).
01 st pic xx. 88 ok values "00" "02" thru "05" "97". 88 notok value "10" thru "49".
01 nn pic s9(3) comp-3. 88 neg-n values -999 thru -1. 88 zero-n value zero. 88 pos-n value 1 thru 999.
01 t. 02 te occurs 5 pic 9. 88 te-odd values 1 3 5 7 9. 88 te-even value 0 2 4 6 8.
01 jj pic x(5) just. 88 jj-a value "A".
01 r1 pic 9(3). 01 r2 redefines r1 pic x(3).
01 i pic 9 comp. 01 sw pic x. 88 sw-on value "Y" when set to false "N".
01 al pic a(4).
01 nd pic 9(4). 01 sdx pic s9(4). 01 ne pic zz9.
procedure division.
main-para.
    move 5 to a move 6 to b move 7 to c move 5 to d
    if a < b and < c
        add 1 to t-pass
    else add 1 to t-fail display "FAIL 1: a < b and < c"
    end-if
    if a = b or d
        add 1 to t-pass
    else add 1 to t-fail display "FAIL 2: a = b or d"
    end-if
    if a not = b and c
        add 1 to t-pass
    else add 1 to t-fail display "FAIL 3: a not = b and c"
    end-if
    if not a = b
        add 1 to t-pass
    else add 1 to t-fail display "FAIL 4: not a = b"
    end-if
    if not a = b and not = c
        add 1 to t-pass
    else add 1 to t-fail display "FAIL 5: not a = b and not = c"
    end-if
    if not (a = b or c)
        add 1 to t-pass
    else add 1 to t-fail display "FAIL 6: not (a = b or c)"
    end-if
    if a equal to d
        add 1 to t-pass
    else add 1 to t-fail display "FAIL 7: a equal to d"
    end-if
    if a equal d
        add 1 to t-pass
    else add 1 to t-fail display "FAIL 8: a equal d"
    end-if
    if a equals d
        add 1 to t-pass
    else add 1 to t-fail display "FAIL 9: a equals d"
    end-if
    if a is equal to d
        add 1 to t-pass
    else add 1 to t-fail display "FAIL 10: a is equal to d"
    end-if
    if a is not greater than d
        add 1 to t-pass
    else add 1 to t-fail display "FAIL 11: a is not greater than d"
    end-if
    if a not less d
        add 1 to t-pass
    else add 1 to t-fail display "FAIL 12: a not less d"
    end-if
    if a is not < d
        add 1 to t-pass
    else add 1 to t-fail display "FAIL 13: a is not < d"
    end-if
    if a is greater than or equal to d
        add 1 to t-pass
    else add 1 to t-fail display "FAIL 14: a is greater than or equal to d"
    end-if
    if a >= d and <= d
        add 1 to t-pass
    else add 1 to t-fail display "FAIL 15: a >= d and <= d"
    end-if
    if a less than or equal d
        add 1 to t-pass
    else add 1 to t-fail display "FAIL 16: a less than or equal d"
    end-if
    if a <> b
        add 1 to t-pass
    else add 1 to t-fail display "FAIL 17: a <> b"
    end-if
    if not a > b and not a > c
        add 1 to t-pass
    else add 1 to t-fail display "FAIL 18: not a > b and not a > c"
    end-if
    if a > 4 and < 6 and not = 7
        add 1 to t-pass
    else add 1 to t-fail display "FAIL 19: a > 4 and < 6 and not = 7"
    end-if
    if a = 1 or 2 or 5
        add 1 to t-pass
    else add 1 to t-fail display "FAIL 20: a = 1 or 2 or 5"
    end-if
    if a = 5 and not b = 5
        add 1 to t-pass
    else add 1 to t-fail display "FAIL 21: a = 5 and not b = 5"
    end-if
    if (a = 5) and (b = 6)
        add 1 to t-pass
    else add 1 to t-fail display "FAIL 22: (a = 5) and (b = 6)"
    end-if
    if a + 1 = b and c - 1
        add 1 to t-pass
    else add 1 to t-fail display "FAIL 23: a + 1 = b and c - 1"
    end-if
    if a = b - 1 and d
        add 1 to t-pass
    else add 1 to t-fail display "FAIL 24: a = b - 1 and d"
    end-if
    if a < b or > c and = 9
        add 1 to t-pass
    else add 1 to t-fail display "FAIL 25: a < b or > c and = 9"
    end-if
    if not (a not = 5 and b not = 5)
        add 1 to t-pass
    else add 1 to t-fail display "FAIL 26: not (a not = 5 and b not = 5)"
    end-if
    if a not = 1 and 2 and 3
        add 1 to t-pass
    else add 1 to t-fail display "FAIL 27: a not = 1 and 2 and 3"
    end-if
    if a not equal to 1 and not equal to 2
        add 1 to t-pass
    else add 1 to t-fail display "FAIL 28: a not equal to 1 and not equal to 2"
    end-if
    if a is numeric and b is numeric
        add 1 to t-pass
    else add 1 to t-fail display "FAIL 29: a is numeric and b is numeric"
    end-if
    if a is positive
        add 1 to t-pass
    else add 1 to t-fail display "FAIL 30: a is positive"
    end-if
    if a - 5 is zero
        add 1 to t-pass
    else add 1 to t-fail display "FAIL 31: a - 5 is zero"
    end-if
    if a - 6 is negative
        add 1 to t-pass
    else add 1 to t-fail display "FAIL 32: a - 6 is negative"
    end-if
    if a - 6 is not positive
        add 1 to t-pass
    else add 1 to t-fail display "FAIL 33: a - 6 is not positive"
    end-if
    if not a is negative
        add 1 to t-pass
    else add 1 to t-fail display "FAIL 34: not a is negative"
    end-if
    if 0 < a
        add 1 to t-pass
    else add 1 to t-fail display "FAIL 35: 0 < a"
    end-if
    if 5 = a
        add 1 to t-pass
    else add 1 to t-fail display "FAIL 36: 5 = a"
    end-if
    if "5" = a
        add 1 to t-pass
    else add 1 to t-fail display "FAIL 37: ""5"" = a"
    end-if
    if a = "5"
        add 1 to t-pass
    else add 1 to t-fail display "FAIL 38: a = ""5"""
    end-if
    if zero < a
        add 1 to t-pass
    else add 1 to t-fail display "FAIL 39: zero < a"
    end-if
    if a > zero
        add 1 to t-pass
    else add 1 to t-fail display "FAIL 40: a > zero"
    end-if
    move spaces to x
    if x = spaces
        add 1 to t-pass
    else add 1 to t-fail display "FAIL 41: x = spaces"
    end-if
    if x = space
        add 1 to t-pass
    else add 1 to t-fail display "FAIL 42: x = space"
    end-if
    if spaces = x
        add 1 to t-pass
    else add 1 to t-fail display "FAIL 43: spaces = x"
    end-if
    if x is alphabetic
        add 1 to t-pass
    else add 1 to t-fail display "FAIL 44: x is alphabetic"
    end-if
    move "ABC" to x
    if x = "ABC"
        add 1 to t-pass
    else add 1 to t-fail display "FAIL 45: x = ""ABC"""
    end-if
    if x = "ABC  "
        add 1 to t-pass
    else add 1 to t-fail display "FAIL 46: x = ""ABC  """
    end-if
    if x > "ABB"
        add 1 to t-pass
    else add 1 to t-fail display "FAIL 47: x > ""ABB"""
    end-if
    if x < "ABCA"
        add 1 to t-pass
    else add 1 to t-fail display "FAIL 48: x < ""ABCA"""
    end-if
    if x not = "ABD"
        add 1 to t-pass
    else add 1 to t-fail display "FAIL 49: x not = ""ABD"""
    end-if
    if x(1:1) = "A"
        add 1 to t-pass
    else add 1 to t-fail display "FAIL 50: x(1:1) = ""A"""
    end-if
    if x(2:) = "BC"
        add 1 to t-pass
    else add 1 to t-fail display "FAIL 51: x(2:) = ""BC"""
    end-if
    move "AEIOU" to y
    if y is vowel
        add 1 to t-pass
    else add 1 to t-fail display "FAIL 52: y is vowel"
    end-if
    if x is not vowel
        add 1 to t-pass
    else add 1 to t-fail display "FAIL 53: x is not vowel"
    end-if
    move "12345" to y
    if y is digit-x
        add 1 to t-pass
    else add 1 to t-fail display "FAIL 54: y is digit-x"
    end-if
    if y is numeric
        add 1 to t-pass
    else add 1 to t-fail display "FAIL 55: y is numeric"
    end-if
    if y not alphabetic
        add 1 to t-pass
    else add 1 to t-fail display "FAIL 56: y not alphabetic"
    end-if
    move "abcde" to y
    if y is alphabetic-lower
        add 1 to t-pass
    else add 1 to t-fail display "FAIL 57: y is alphabetic-lower"
    end-if
    if y is not alphabetic-upper
        add 1 to t-pass
    else add 1 to t-fail display "FAIL 58: y is not alphabetic-upper"
    end-if
    if y alphabetic
        add 1 to t-pass
    else add 1 to t-fail display "FAIL 59: y alphabetic"
    end-if
    move "ABC12" to g
    if g-abc
        add 1 to t-pass
    else add 1 to t-fail display "FAIL 60: g-abc"
    end-if
    if not g-low
        add 1 to t-pass
    else add 1 to t-fail display "FAIL 61: not g-low"
    end-if
    move low-values to g
    if g-low
        add 1 to t-pass
    else add 1 to t-fail display "FAIL 62: g-low"
    end-if
    move spaces to g
    if g-sp
        add 1 to t-pass
    else add 1 to t-fail display "FAIL 63: g-sp"
    end-if
    move all "Q" to g
    if g-all
        add 1 to t-pass
    else add 1 to t-fail display "FAIL 64: g-all"
    end-if
    move "00" to st
    if ok
        add 1 to t-pass
    else add 1 to t-fail display "FAIL 65: ok"
    end-if
    move "04" to st
    if ok and not notok
        add 1 to t-pass
    else add 1 to t-fail display "FAIL 66: ok and not notok"
    end-if
    move "49" to st
    if notok and not ok
        add 1 to t-pass
    else add 1 to t-fail display "FAIL 67: notok and not ok"
    end-if
    move -5 to nn
    if neg-n
        add 1 to t-pass
    else add 1 to t-fail display "FAIL 68: neg-n"
    end-if
    move 0 to nn
    if zero-n
        add 1 to t-pass
    else add 1 to t-fail display "FAIL 69: zero-n"
    end-if
    move 5 to nn
    if pos-n
        add 1 to t-pass
    else add 1 to t-fail display "FAIL 70: pos-n"
    end-if
    move "12345" to t
    if te-odd(1) and te-even(2) and te-odd(5)
        add 1 to t-pass
    else add 1 to t-fail display "FAIL 71: te-odd(1) and te-even(2) and te-odd(5)"
    end-if
    move 2 to i
    if te-odd(i + 1)
        add 1 to t-pass
    else add 1 to t-fail display "FAIL 72: te-odd(i + 1)"
    end-if
    if not te-odd(i)
        add 1 to t-pass
    else add 1 to t-fail display "FAIL 73: not te-odd(i)"
    end-if
    set jj-a to true
    if jj = "    A"
        add 1 to t-pass
    else add 1 to t-fail display "FAIL 74: jj = ""    A"""
        display "     >" jj "<"
    end-if
    set sw-on to true
    if sw = "Y"
        add 1 to t-pass
    else add 1 to t-fail display "FAIL 75: sw = ""Y"""
    end-if
    set sw-on to false
    if sw = "N"
        add 1 to t-pass
    else add 1 to t-fail display "FAIL 76: sw = ""N"""
    end-if
    set te-even(3) to true
    if te(3) = 0
        add 1 to t-pass
    else add 1 to t-fail display "FAIL 77: te(3) = 0"
    end-if
    set ok to true
    if st = "00"
        add 1 to t-pass
    else add 1 to t-fail display "FAIL 78: st = ""00"""
    end-if
    set neg-n to true
    if nn = -999
        add 1 to t-pass
    else add 1 to t-fail display "FAIL 79: nn = -999"
    end-if
    move 12.30 to n
    if n = 12.3
        add 1 to t-pass
    else add 1 to t-fail display "FAIL 80: n = 12.3"
    end-if
    if n > 12.2999
        add 1 to t-pass
    else add 1 to t-fail display "FAIL 81: n > 12.2999"
    end-if
    if n < 12.30001
        add 1 to t-pass
    else add 1 to t-fail display "FAIL 82: n < 12.30001"
    end-if
    if n = 1.23e1
        add 1 to t-pass
    else add 1 to t-fail display "FAIL 83: n = 1.23e1"
    end-if
    move 1.23e1 to n
    move 12 to m
    if m = 12.0
        add 1 to t-pass
    else add 1 to t-fail display "FAIL 84: m = 12.0"
    end-if
    if m = "00012"
        add 1 to t-pass
    else add 1 to t-fail display "FAIL 85: m = ""00012"""
    end-if
    if m < n
        add 1 to t-pass
    else add 1 to t-fail display "FAIL 86: m < n"
    end-if
    if m not = "12"
        add 1 to t-pass
    else add 1 to t-fail display "FAIL 87: m not = ""12"""
    end-if
    move m to y
    if y = m
        add 1 to t-pass
    else add 1 to t-fail display "FAIL 88: y = m"
    end-if
    if m = y
        add 1 to t-pass
    else add 1 to t-fail display "FAIL 89: m = y"
    end-if
    move "12" to y
    if y not = m
        add 1 to t-pass
    else add 1 to t-fail display "FAIL 90: y not = m"
    end-if
    move -12 to sdx
    move 12 to nd
    if sdx < nd
        add 1 to t-pass
    else add 1 to t-fail display "FAIL 91: sdx < nd"
    end-if
    if nd = "0012"
        add 1 to t-pass
    else add 1 to t-fail display "FAIL 92: nd = ""0012"""
    end-if
    if sdx = "0012"
        add 1 to t-pass
    else add 1 to t-fail display "FAIL 93: sdx = ""0012"""
        display "     >" sdx "<"
    end-if
    move 12 to ne
    if ne = " 12"
        add 1 to t-pass
    else add 1 to t-fail display "FAIL 94: ne = "" 12"""
    end-if
    if nd numeric
        add 1 to t-pass
    else add 1 to t-fail display "FAIL 95: nd numeric"
    end-if
    move "ABC" to r2
    if r1 not numeric
        add 1 to t-pass
    else add 1 to t-fail display "FAIL 96: r1 not numeric"
    end-if
    move high-values to y
    if y > "ZZZZZ"
        add 1 to t-pass
    else add 1 to t-fail display "FAIL 97: y > ""ZZZZZ"""
    end-if
    if y = high-value
        add 1 to t-pass
    else add 1 to t-fail display "FAIL 98: y = high-value"
    end-if
    if low-value < y
        add 1 to t-pass
    else add 1 to t-fail display "FAIL 99: low-value < y"
    end-if
    move bell-c to y(1:1)
    if y(1:1) = bell-c
        add 1 to t-pass
    else add 1 to t-fail display "FAIL 100: y(1:1) = bell-c"
    end-if
    move all bell-c to y
    if y = all bell-c
        add 1 to t-pass
    else add 1 to t-fail display "FAIL 101: y = all bell-c"
    end-if
    move all "AB" to y
    if y = all "AB"
        add 1 to t-pass
    else add 1 to t-fail display "FAIL 102: y = all ""AB"""
    end-if
    if y = all "ABAB"
        add 1 to t-pass
    else add 1 to t-fail display "FAIL 103: y = all ""ABAB"""
    end-if
    if y not = all "BA"
        add 1 to t-pass
    else add 1 to t-fail display "FAIL 104: y not = all ""BA"""
    end-if
    if y > all "AA"
        add 1 to t-pass
    else add 1 to t-fail display "FAIL 105: y > all ""AA"""
    end-if
    if all "AB" = y
        add 1 to t-pass
    else add 1 to t-fail display "FAIL 106: all ""AB"" = y"
    end-if
    move zero to y
    if y = zero
        add 1 to t-pass
    else add 1 to t-fail display "FAIL 107: y = zero"
    end-if
    if y = all "0"
        add 1 to t-pass
    else add 1 to t-fail display "FAIL 108: y = all ""0"""
    end-if
    if y = all zeros
        add 1 to t-pass
    else add 1 to t-fail display "FAIL 109: y = all zeros"
    end-if
    if zeros = y
        add 1 to t-pass
    else add 1 to t-fail display "FAIL 110: zeros = y"
    end-if
    move quote to y
    if y = quotes
        add 1 to t-pass
    else add 1 to t-fail display "FAIL 111: y = quotes"
    end-if
    if y = """""""""""" 
        add 1 to t-pass
    else add 1 to t-fail display "FAIL 112: y = """""""""""""""""""""""" "
    end-if
    if a = 5 next sentence else display "FAIL ns".
    if a = 6 display "FAIL ns2" else next sentence.
    if a = 5 if b = 7 display "FAIL" else next sentence else display "FAIL ns3".
    if a = 5 and (b = 6 or 7) and c = 7 then add 1 to t-pass else display "FAIL x" end-if
    if a = (5)
        add 1 to t-pass
    else add 1 to t-fail display "FAIL 113: a = (5)"
    end-if
    if (a + b) * c = 77
        add 1 to t-pass
    else add 1 to t-fail display "FAIL 114: (a + b) * c = 77"
    end-if
    if (a + b) > (c - 1) and (a - b) < (c)
        add 1 to t-pass
    else add 1 to t-fail display "FAIL 115: (a + b) > (c - 1) and (a - b) < (c)"
    end-if
    if ((a = 5))
        add 1 to t-pass
    else add 1 to t-fail display "FAIL 116: ((a = 5))"
    end-if
    if not (not (a = 5))
        add 1 to t-pass
    else add 1 to t-fail display "FAIL 117: not (not (a = 5))"
    end-if
    if not ((a = 5) and not (b = 6))  or a = 5
        add 1 to t-pass
    else add 1 to t-fail display "FAIL 118: not ((a = 5) and not (b = 6))  or a = 5"
    end-if
    if a = 5 or b = 7 and c = 9
        add 1 to t-pass
    else add 1 to t-fail display "FAIL 119: a = 5 or b = 7 and c = 9"
    end-if
    if n is not zero
        add 1 to t-pass
    else add 1 to t-fail display "FAIL 120: n is not zero"
    end-if
    if not n zero
        add 1 to t-pass
    else add 1 to t-fail display "FAIL 121: not n zero"
    end-if
    if n not zero
        add 1 to t-pass
    else add 1 to t-fail display "FAIL 122: n not zero"
    end-if
    if n > 0 and is positive
        add 1 to t-pass
    else add 1 to t-fail display "FAIL 123: n > 0 and is positive"
    end-if
    if function length(y) = 5
        add 1 to t-pass
    else add 1 to t-fail display "FAIL 124: function length(y) = 5"
    end-if
    if y(1:3) = quotes
        add 1 to t-pass
    else add 1 to t-fail display "FAIL 125: y(1:3) = quotes"
    end-if
    if a = b - 1 or 99
        add 1 to t-pass
    else add 1 to t-fail display "FAIL 126: a = b - 1 or 99"
    end-if
    if length of y = 5
        add 1 to t-pass
    else add 1 to t-fail display "FAIL 127: length of y = 5"
    end-if
    if m + n = 24.3
        add 1 to t-pass
    else add 1 to t-fail display "FAIL 128: m + n = 24.3"
    end-if
    if - a < 0
        add 1 to t-pass
    else add 1 to t-fail display "FAIL 129: - a < 0"
    end-if
    if - 5 = 0 - a
        add 1 to t-pass
    else add 1 to t-fail display "FAIL 130: - 5 = 0 - a"
    end-if
    if a ** 2 = 25
        add 1 to t-pass
    else add 1 to t-fail display "FAIL 131: a ** 2 = 25"
    end-if
    if a is = 5
        add 1 to t-pass
    else add 1 to t-fail display "FAIL 132: a is = 5"
    end-if
    if a is > 4
        add 1 to t-pass
    else add 1 to t-fail display "FAIL 133: a is > 4"
    end-if
    if a is not > 5
        add 1 to t-pass
    else add 1 to t-fail display "FAIL 134: a is not > 5"
    end-if
    if not a > 5
        add 1 to t-pass
    else add 1 to t-fail display "FAIL 135: not a > 5"
    end-if
    if a not > 5 and not < 5
        add 1 to t-pass
    else add 1 to t-fail display "FAIL 136: a not > 5 and not < 5"
    end-if
    if a > 4 and not > 6 or < 3
        add 1 to t-pass
    else add 1 to t-fail display "FAIL 137: a > 4 and not > 6 or < 3"
    end-if
    if a = b or not > c
        add 1 to t-pass
    else add 1 to t-fail display "FAIL 138: a = b or not > c"
    end-if
    if a = b or not (a > c)
        add 1 to t-pass
    else add 1 to t-fail display "FAIL 139: a = b or not (a > c)"
    end-if
    if a not = b or c
        add 1 to t-pass
    else add 1 to t-fail display "FAIL 140: a not = b or c"
    end-if
    evaluate a also b
      when 5 also 7 display "FAIL e1"
      when 4 thru 6 also not 7 add 1 to t-pass
      when other display "FAIL e2"
    end-evaluate
    evaluate true also false
      when a = 5 also b = 6 display "FAIL e3"
      when a = 5 also b = 7 add 1 to t-pass
      when other display "FAIL e4"
    end-evaluate
    evaluate a + 1
      when 5 display "FAIL e5"
      when b add 1 to t-pass
    end-evaluate
    evaluate a
      when 1 when 2 when 3 display "FAIL"
      when 4
      when 5
      when 6 add 1 to t-pass
    end-evaluate
    evaluate x when "ABC" add 1 to t-pass when any display "FAIL" end-evaluate
    evaluate x also y when "ABB" also any display "FAIL" when any also quotes add 1 to t-pass end-evaluate
    evaluate true when te-odd(1) add 1 to t-pass when other display "FAIL e9" end-evaluate
    evaluate te-odd(1) when true add 1 to t-pass when false display "FAIL e9" end-evaluate
    evaluate a > 3 when false display "FAIL e10" when true add 1 to t-pass end-evaluate
    evaluate a when not 5 display "FAIL e11" when not 1 thru 3 add 1 to t-pass end-evaluate
    evaluate a when zero display "FAIL" when 5.0 add 1 to t-pass end-evaluate
    evaluate true when a = 4 or b = 6 add 1 to t-pass when other display "FAIL e12" end-evaluate
    evaluate a also true when 5 also b > 5 and c > 5 add 1 to t-pass when other display "FAIL e13" end-evaluate
    evaluate x(1:1) when "A" thru "C" add 1 to t-pass when other display "FAIL e14" end-evaluate
    evaluate 5 when a add 1 to t-pass when b display "FAIL e15" end-evaluate
    evaluate 5 also 6 when a also b continue when other display "FAIL e16" end-evaluate
    display "passed " t-pass " failed " t-fail
    stop run.
