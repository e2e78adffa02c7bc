*> MOVE between all pairs of categories, signs, P scaling, editing and de-editing.
identification division.
program-id. t01.
data division.
working-storage section.
01 t-pass pic 9(4) value 0.
01 t-fail pic 9(4) value 0.
01 x1 pic x. 01 x5 pic x(5). 01 x10 pic x(10). 01 xj pic x(8) just right.
01 a5 pic a(5). 01 n5 pic 9(5). 01 s5 pic s9(5). 01 n32 pic 9(3)v99. 01 s32 pic s9(3)v99.
01 s32x redefines s32 pic x(5).
01 sl pic s9(4) sign leading. 01 slx redefines sl pic x(4).
01 sls pic s9(4) sign leading separate. 01 slsx redefines sls pic x(5).
01 sts pic s9(4) sign trailing separate character. 01 stsx redefines sts pic x(5).
01 st pic s9(4) sign is trailing. 01 stx redefines st pic x(4).
01 np pic 9(2)ppp. 01 npx redefines np pic xx. 01 vp pic vpp99. 01 vpx redefines vp pic xx.
01 sp pic s99pp comp. 01 svp pic svp9(3) comp-3.
01 b4 pic s9(4) comp. 01 b42 pic s9(4)v99 comp. 01 b9 pic 9(9) comp. 01 b18 pic s9(18) comp.
01 p5 pic s9(5) comp-3. 01 p32 pic s9(3)v99 comp-3. 01 pu pic 9(4) comp-3.
01 f1 comp-1. 01 f2 comp-2.
01 e1 pic zz,zz9.99. 01 e2 pic -(5)9.9. 01 e3 pic $$,$$9.99cr. 01 e4 pic ***,**9.99-. 01 e5 pic +++9.
01 e6 pic 9(3)bb99. 01 e7 pic xxbxx/xx0x. 01 e8 pic aab/0aa. 01 e9 pic zzz.zz blank when zero.
01 e10 pic z(5). 01 e11 pic 99/99/99. 01 e12 pic -9(4).99. 01 e13 pic 9(4)+. 01 e14 pic $z(3)9.99db. 01 e15 pic $**9.99.
01 e16 pic zzzzz. 01 e17 pic ---,---.99. 01 e18 pic $(4).99. 01 e19 pic zzz9ppp. 01 e20 pic vp(2)99. 01 e21 pic .99. 01 e22 pic zz.99+.
01 e23 pic 9,999.99. 01 e24 pic *(6).**. 01 e25 pic z(3).zz. 01 e26 pic +(4).++. 01 e27 pic b99b9. 01 e28 pic 0990.
01 g1. 02 g1a pic x(3). 02 g1n pic 9(3). 02 g1p pic s9(3) comp-3.
01 g2 pic x(8).
procedure division.
main-para.
    move "ABCDEFG" to x5
    if x5 = "ABCDE"
        add 1 to t-pass
    else add 1 to t-fail display "FAIL 1: x5 = ""ABCDE"""
    end-if
    move "ABC" to xj
    if xj = "     ABC"
        add 1 to t-pass
    else add 1 to t-fail display "FAIL 2: xj = ""     ABC"""
    end-if
    move "ABCDEFGHIJ" to xj
    if xj = "CDEFGHIJ"
        add 1 to t-pass
    else add 1 to t-fail display "FAIL 3: xj = ""CDEFGHIJ"""
    end-if
    move 12345 to x10
    if x10 = "12345     "
        add 1 to t-pass
    else add 1 to t-fail display "FAIL 4: x10 = ""12345     """
    end-if
    move 123 to xj
    if xj = "     123"
        add 1 to t-pass
    else add 1 to t-fail display "FAIL 5: xj = ""     123"""
        display "     >" xj "<"
    end-if
    move -12 to s5 move s5 to x5
    if x5 = "00012"
        add 1 to t-pass
    else add 1 to t-fail display "FAIL 6: x5 = ""00012"""
        display "     >" x5 "<"
    end-if
    move 12345.67 to n32
    if n32 = 345.67
        add 1 to t-pass
    else add 1 to t-fail display "FAIL 7: n32 = 345.67"
        display "     >" n32 "<"
    end-if
    move -345.678 to s32
    if s32 = -345.67
        add 1 to t-pass
    else add 1 to t-fail display "FAIL 8: s32 = -345.67"
    end-if
    if s32x = "3456w"
        add 1 to t-pass
    else add 1 to t-fail display "FAIL 9: s32x = ""3456w"""
        display "     >" s32x "<"
    end-if
    move "12345" to n5
    if n5 = 12345
        add 1 to t-pass
    else add 1 to t-fail display "FAIL 10: n5 = 12345"
    end-if
    move "ABC" to x10 move zero to n5
    move "00123" to x5 move x5 to n32
    if n32 = 123.00
        add 1 to t-pass
    else add 1 to t-fail display "FAIL 11: n32 = 123.00"
        display "     >" n32 "<"
    end-if
    move "9876543" to x10 move x10(1:7) to n5
    if n5 = 76543
        add 1 to t-pass
    else add 1 to t-fail display "FAIL 12: n5 = 76543"
        display "     >" n5 "<"
    end-if
    move -1234 to sl
    if slx = "q234"
        add 1 to t-pass
    else add 1 to t-fail display "FAIL 13: slx = ""q234"""
        display "     >" slx "<"
    end-if
    move 1234 to sl
    if slx = "1234"
        add 1 to t-pass
    else add 1 to t-fail display "FAIL 14: slx = ""1234"""
    end-if
    move -1234 to sls
    if slsx = "-1234"
        add 1 to t-pass
    else add 1 to t-fail display "FAIL 15: slsx = ""-1234"""
        display "     >" slsx "<"
    end-if
    move 1234 to sls
    if slsx = "+1234"
        add 1 to t-pass
    else add 1 to t-fail display "FAIL 16: slsx = ""+1234"""
    end-if
    move -5 to sts
    if stsx = "0005-"
        add 1 to t-pass
    else add 1 to t-fail display "FAIL 17: stsx = ""0005-"""
    end-if
    move sts to sls
    if slsx = "-0005"
        add 1 to t-pass
    else add 1 to t-fail display "FAIL 18: slsx = ""-0005"""
    end-if
    move sls to st
    if st = -5
        add 1 to t-pass
    else add 1 to t-fail display "FAIL 19: st = -5"
    end-if
    if stx = "000u"
        add 1 to t-pass
    else add 1 to t-fail display "FAIL 20: stx = ""000u"""
        display "     >" stx "<"
    end-if
    move st to p5
    if p5 = -5
        add 1 to t-pass
    else add 1 to t-fail display "FAIL 21: p5 = -5"
    end-if
    move p5 to b4
    if b4 = -5
        add 1 to t-pass
    else add 1 to t-fail display "FAIL 22: b4 = -5"
    end-if
    move b4 to b42
    if b42 = -5
        add 1 to t-pass
    else add 1 to t-fail display "FAIL 23: b42 = -5"
    end-if
    move -1.239 to b42
    if b42 = -1.23
        add 1 to t-pass
    else add 1 to t-fail display "FAIL 24: b42 = -1.23"
    end-if
    move b42 to e2
    if e2 = "    -1.2"
        add 1 to t-pass
    else add 1 to t-fail display "FAIL 25: e2 = ""    -1.2"""
        display "     >" e2 "<"
    end-if
    move 12345 to np
    if npx = "12"
        add 1 to t-pass
    else add 1 to t-fail display "FAIL 26: npx = ""12"""
        display "     >" npx "<"
    end-if
    if np = 12000
        add 1 to t-pass
    else add 1 to t-fail display "FAIL 27: np = 12000"
    end-if
    move np to n5
    if n5 = 12000
        add 1 to t-pass
    else add 1 to t-fail display "FAIL 28: n5 = 12000"
    end-if
    move np to x10
    if x10 = "12000     "
        add 1 to t-pass
    else add 1 to t-fail display "FAIL 29: x10 = ""12000     """
        display "     >" x10 "<"
    end-if
    move 0.0012 to vp
    if vpx = "12"
        add 1 to t-pass
    else add 1 to t-fail display "FAIL 30: vpx = ""12"""
        display "     >" vpx "<"
    end-if
    if vp = .0012
        add 1 to t-pass
    else add 1 to t-fail display "FAIL 31: vp = .0012"
    end-if
    move vp to f2
    if f2 = 0.0012
        add 1 to t-pass
    else add 1 to t-fail display "FAIL 32: f2 = 0.0012"
    end-if
    move -9950 to sp
    if sp = -9900
        add 1 to t-pass
    else add 1 to t-fail display "FAIL 33: sp = -9900"
    end-if
    move sp to e2
    if e2 = "-99000.0" or e2 = " -9900.0"
        add 1 to t-pass
    else add 1 to t-fail display "FAIL 34: e2 = ""-99000.0"" or e2 = "" -9900.0"""
        display "     >" e2 "<"
    end-if
    move -0.0123 to svp
    if svp = -0.0123
        add 1 to t-pass
    else add 1 to t-fail display "FAIL 35: svp = -0.0123"
    end-if
    add 0.01 to svp
    if svp = -0.0023
        add 1 to t-pass
    else add 1 to t-fail display "FAIL 36: svp = -0.0023"
    end-if
    move 1234.5 to e1
    if e1 = " 1,234.50"
        add 1 to t-pass
    else add 1 to t-fail display "FAIL 37: e1 = "" 1,234.50"""
        display "     >" e1 "<"
    end-if
    move 0 to e1
    if e1 = "     0.00"
        add 1 to t-pass
    else add 1 to t-fail display "FAIL 38: e1 = ""     0.00"""
        display "     >" e1 "<"
    end-if
    move 999999.99 to e1
    if e1 = "99,999.99"
        add 1 to t-pass
    else add 1 to t-fail display "FAIL 39: e1 = ""99,999.99"""
        display "     >" e1 "<"
    end-if
    move -12.34 to e2
    if e2 = "   -12.3"
        add 1 to t-pass
    else add 1 to t-fail display "FAIL 40: e2 = ""   -12.3"""
        display "     >" e2 "<"
    end-if
    move 0 to e2
    if e2 = "     0.0"
        add 1 to t-pass
    else add 1 to t-fail display "FAIL 41: e2 = ""     0.0"""
        display "     >" e2 "<"
    end-if
    move -1234.5 to e3
    if e3 = "$1,234.50CR"
        add 1 to t-pass
    else add 1 to t-fail display "FAIL 42: e3 = ""$1,234.50CR"""
        display "     >" e3 "<"
    end-if
    move 34.5 to e3
    if e3 = "   $34.50  "
        add 1 to t-pass
    else add 1 to t-fail display "FAIL 43: e3 = ""   $34.50  """
        display "     >" e3 "<"
    end-if
    move -12.5 to e4
    if e4 = "*****12.50-"
        add 1 to t-pass
    else add 1 to t-fail display "FAIL 44: e4 = ""*****12.50-"""
        display "     >" e4 "<"
    end-if
    move 1234.5 to e4
    if e4 = "**1,234.50 "
        add 1 to t-pass
    else add 1 to t-fail display "FAIL 45: e4 = ""**1,234.50 """
        display "     >" e4 "<"
    end-if
    move 45 to e5
    if e5 = " +45"
        add 1 to t-pass
    else add 1 to t-fail display "FAIL 46: e5 = "" +45"""
        display "     >" e5 "<"
    end-if
    move -5 to e5
    if e5 = "  -5"
        add 1 to t-pass
    else add 1 to t-fail display "FAIL 47: e5 = ""  -5"""
        display "     >" e5 "<"
    end-if
    move 12345 to e6
    if e6 = "123  45"
        add 1 to t-pass
    else add 1 to t-fail display "FAIL 48: e6 = ""123  45"""
        display "     >" e6 "<"
    end-if
    move "ABCDEFG" to e7
    if e7 = "AB CD/EF0G"
        add 1 to t-pass
    else add 1 to t-fail display "FAIL 49: e7 = ""AB CD/EF0G"""
        display "     >" e7 "<"
    end-if
    move "WXYZ" to e8
    if e8 = "WX /0YZ"
        add 1 to t-pass
    else add 1 to t-fail display "FAIL 50: e8 = ""WX /0YZ"""
        display "     >" e8 "<"
    end-if
    move 0 to e9
    if e9 = spaces
        add 1 to t-pass
    else add 1 to t-fail display "FAIL 51: e9 = spaces"
    end-if
    move 1.5 to e9
    if e9 = "  1.50"
        add 1 to t-pass
    else add 1 to t-fail display "FAIL 52: e9 = ""  1.50"""
        display "     >" e9 "<"
    end-if
    move .05 to e9
    if e9 = "   .05"
        add 1 to t-pass
    else add 1 to t-fail display "FAIL 53: e9 = ""   .05"""
        display "     >" e9 "<"
    end-if
    move 0 to e10
    if e10 = spaces
        add 1 to t-pass
    else add 1 to t-fail display "FAIL 54: e10 = spaces"
    end-if
    move 311299 to e11
    if e11 = "31/12/99"
        add 1 to t-pass
    else add 1 to t-fail display "FAIL 55: e11 = ""31/12/99"""
    end-if
    move -7.5 to e12
    if e12 = "-0007.50"
        add 1 to t-pass
    else add 1 to t-fail display "FAIL 56: e12 = ""-0007.50"""
        display "     >" e12 "<"
    end-if
    move 7.5 to e12
    if e12 = " 0007.50"
        add 1 to t-pass
    else add 1 to t-fail display "FAIL 57: e12 = "" 0007.50"""
        display "     >" e12 "<"
    end-if
    move -3 to e13
    if e13 = "0003-"
        add 1 to t-pass
    else add 1 to t-fail display "FAIL 58: e13 = ""0003-"""
    end-if
    move 3 to e13
    if e13 = "0003+"
        add 1 to t-pass
    else add 1 to t-fail display "FAIL 59: e13 = ""0003+"""
    end-if
    move -12.1 to e14
    if e14 = "$  12.10DB"
        add 1 to t-pass
    else add 1 to t-fail display "FAIL 60: e14 = ""$  12.10DB"""
        display "     >" e14 "<"
    end-if
    move 12.1 to e14
    if e14 = "$  12.10  "
        add 1 to t-pass
    else add 1 to t-fail display "FAIL 61: e14 = ""$  12.10  """
        display "     >" e14 "<"
    end-if
    move 1 to e15
    if e15 = "$**1.00"
        add 1 to t-pass
    else add 1 to t-fail display "FAIL 62: e15 = ""$**1.00"""
        display "     >" e15 "<"
    end-if
    move -123456.78 to e17
    if e17 = "-23,456.78" or e17 = "123,456.78"
        add 1 to t-pass
    else add 1 to t-fail display "FAIL 63: e17 = ""-23,456.78"" or e17 = ""123,456.78"""
        display "     >" e17 "<"
    end-if
    move -3456.78 to e17
    if e17 = " -3,456.78"
        add 1 to t-pass
    else add 1 to t-fail display "FAIL 64: e17 = "" -3,456.78"""
        display "     >" e17 "<"
    end-if
    move .5 to e17
    if e17 = "       .50"
        add 1 to t-pass
    else add 1 to t-fail display "FAIL 65: e17 = ""       .50"""
        display "     >" e17 "<"
    end-if
    move 12.3 to e18
    if e18 = " $12.30"
        add 1 to t-pass
    else add 1 to t-fail display "FAIL 66: e18 = "" $12.30"""
        display "     >" e18 "<"
    end-if
    move 123456 to e19
    if e19 = " 123"
        add 1 to t-pass
    else add 1 to t-fail display "FAIL 67: e19 = "" 123"""
        display "     >" e19 "<"
    end-if
    move .001234 to e20
    if e20 = "12"
        add 1 to t-pass
    else add 1 to t-fail display "FAIL 68: e20 = ""12"""
        display "     >" e20 "<"
    end-if
    move 1.25 to e21
    if e21 = ".25"
        add 1 to t-pass
    else add 1 to t-fail display "FAIL 69: e21 = "".25"""
        display "     >" e21 "<"
    end-if
    move -1.25 to e22
    if e22 = " 1.25-"
        add 1 to t-pass
    else add 1 to t-fail display "FAIL 70: e22 = "" 1.25-"""
        display "     >" e22 "<"
    end-if
    move 5 to e23
    if e23 = "0,005.00"
        add 1 to t-pass
    else add 1 to t-fail display "FAIL 71: e23 = ""0,005.00"""
        display "     >" e23 "<"
    end-if
    move 0 to e24
    if e24 = "******.**"
        add 1 to t-pass
    else add 1 to t-fail display "FAIL 72: e24 = ""******.**"""
        display "     >" e24 "<"
    end-if
    move .01 to e24
    if e24 = "******.01"
        add 1 to t-pass
    else add 1 to t-fail display "FAIL 73: e24 = ""******.01"""
        display "     >" e24 "<"
    end-if
    move 0 to e25
    if e25 = spaces
        add 1 to t-pass
    else add 1 to t-fail display "FAIL 74: e25 = spaces"
        display "     >" e25 "<"
    end-if
    move 0 to e26
    if e26 = spaces
        add 1 to t-pass
    else add 1 to t-fail display "FAIL 75: e26 = spaces"
        display "     >" e26 "<"
    end-if
    move .5 to e26
    if e26 = "   +.50"
        add 1 to t-pass
    else add 1 to t-fail display "FAIL 76: e26 = ""   +.50"""
        display "     >" e26 "<"
    end-if
    move 123 to e27
    if e27 = " 12 3"
        add 1 to t-pass
    else add 1 to t-fail display "FAIL 77: e27 = "" 12 3"""
        display "     >" e27 "<"
    end-if
    move 12 to e28
    if e28 = "0120"
        add 1 to t-pass
    else add 1 to t-fail display "FAIL 78: e28 = ""0120"""
        display "     >" e28 "<"
    end-if
*> de-edit
    move -1234.56 to e3 move e3 to s32
    if s32 = -234.56
        add 1 to t-pass
    else add 1 to t-fail display "FAIL 79: s32 = -234.56"
        display "     >" s32 "<"
    end-if
    move -1234.5 to e3 move e3 to f2
    if f2 = -1234.5
        add 1 to t-pass
    else add 1 to t-fail display "FAIL 80: f2 = -1234.5"
        display "     >" f2 "<"
    end-if
    move 1234.5 to e1 move e1 to e3
    if e3 = "$1,234.50  "
        add 1 to t-pass
    else add 1 to t-fail display "FAIL 81: e3 = ""$1,234.50  """
        display "     >" e3 "<"
    end-if
    move e1 to x10
    if x10 = " 1,234.50 "
        add 1 to t-pass
    else add 1 to t-fail display "FAIL 82: x10 = "" 1,234.50 """
        display "     >" x10 "<"
    end-if
    move -5 to e5 move e5 to b4
    if b4 = -5
        add 1 to t-pass
    else add 1 to t-fail display "FAIL 83: b4 = -5"
    end-if
    move 12.5 to e4 move e4 to p32
    if p32 = 12.5
        add 1 to t-pass
    else add 1 to t-fail display "FAIL 84: p32 = 12.5"
    end-if
    move 311299 to e11 move e11 to n5
    if n5 = 11299
        add 1 to t-pass
    else add 1 to t-fail display "FAIL 85: n5 = 11299"
        display "     >" n5 "<"
    end-if
*> groups
    move "ABC123" to g1
    if g1n = 123
        add 1 to t-pass
    else add 1 to t-fail display "FAIL 86: g1n = 123"
    end-if
    move spaces to g1 move 5 to g1n move g1 to g2
    if g2(1:6) = "   005"
        add 1 to t-pass
    else add 1 to t-fail display "FAIL 87: g2(1:6) = ""   005"""
    end-if
    move zeros to g1
    if g1(1:6) = "000000"
        add 1 to t-pass
    else add 1 to t-fail display "FAIL 88: g1(1:6) = ""000000"""
    end-if
    if g1(7:2) = "00"
        add 1 to t-pass
    else add 1 to t-fail display "FAIL 89: g1(7:2) = ""00"""
    end-if
    move all "XY" to g2
    if g2 = "XYXYXYXY"
        add 1 to t-pass
    else add 1 to t-fail display "FAIL 90: g2 = ""XYXYXYXY"""
    end-if
    move all "XYZ" to x5
    if x5 = "XYZXY"
        add 1 to t-pass
    else add 1 to t-fail display "FAIL 91: x5 = ""XYZXY"""
    end-if
    move all "12" to n5
    if n5 = 12121
        add 1 to t-pass
    else add 1 to t-fail display "FAIL 92: n5 = 12121"
        display "     >" n5 "<"
    end-if
    move quote to x5
    if x5 = """"""""""""
        add 1 to t-pass
    else add 1 to t-fail display "FAIL 93: x5 = """""""""""""""""""""""""
        display "     >" x5 "<"
    end-if
    move high-values to x5
    if x5 = high-value
        add 1 to t-pass
    else add 1 to t-fail display "FAIL 94: x5 = high-value"
    end-if
    move low-values to x5
    if x5 = low-values
        add 1 to t-pass
    else add 1 to t-fail display "FAIL 95: x5 = low-values"
    end-if
    move "AbC d" to a5
    if a5 is alphabetic
        add 1 to t-pass
    else add 1 to t-fail display "FAIL 96: a5 is alphabetic"
    end-if
    move zero to x5
    if x5 = "00000"
        add 1 to t-pass
    else add 1 to t-fail display "FAIL 97: x5 = ""00000"""
    end-if
    move 5 to f1 move f1 to e1
    if e1 = "     5.00"
        add 1 to t-pass
    else add 1 to t-fail display "FAIL 98: e1 = ""     5.00"""
    end-if
    move 123456789012345678 to b18
    if b18 = 123456789012345678
        add 1 to t-pass
    else add 1 to t-fail display "FAIL 99: b18 = 123456789012345678"
    end-if
    move b18 to b4
    if b4 = 5678
        add 1 to t-pass
    else add 1 to t-fail display "FAIL 100: b4 = 5678"
        display "     >" b4 "<"
    end-if
    move b18 to p5
    if p5 = 45678
        add 1 to t-pass
    else add 1 to t-fail display "FAIL 101: p5 = 45678"
    end-if
    move -5 to pu
    if pu = 5
        add 1 to t-pass
    else add 1 to t-fail display "FAIL 102: pu = 5"
    end-if
    move -5 to n5
    if n5 = 5
        add 1 to t-pass
    else add 1 to t-fail display "FAIL 103: n5 = 5"
    end-if
    move s5 to b9
    if b9 = 12
        add 1 to t-pass
    else add 1 to t-fail display "FAIL 104: b9 = 12"
    end-if
    move 1.999 to b4
    if b4 = 1
        add 1 to t-pass
    else add 1 to t-fail display "FAIL 105: b4 = 1"
    end-if
    move n32 to b42
    if b42 = 123.00
        add 1 to t-pass
    else add 1 to t-fail display "FAIL 106: b42 = 123.00"
    end-if
    move "12.5" to x5 
    display "passed " t-pass " failed " t-fail
    stop run.
