*> Parts of numbers in arithmetic, names that are words of older relations, and floating-point
*> numbers without an exponent.
identification division.
program-id. extensions.
data division.
working-storage section.
01 today pic 9(8) value 20240315.
01 g. 02 signed-one pic s9(4) value -1234 occurs 2.
01 n pic s9(5).
01 from-here pic 9 value 5.
01 equals pic 9 value 3.
01 unequal pic 9 value 4.
01 exceeds pic x value "e".
01 f comp-2.
01 s comp-1.
01 b1 pic x comp-5 value 200.
01 b2 pic x(2) comp-5.
01 b2-bytes redefines b2 pic x(2).
01 b4 pic x(4) usage comp-5 value 4000000000.
01 b8 pic x(8) comp-5.
procedure division.
    compute n = today (1:4) + 1 display n
    if today (5:2) = 3 and today (from-here:2) < today (from-here + 2:2) display "march" end-if
    add today (7:2) to n display n
    subtract today (7:) from n display n
    compute n = signed-one (2) (1:2) * 2 display n

    if equals = 3 and unequal not = 3 display "names" end-if
    if equals equals 3 and unequal unequal to 3 or equals display "operators" end-if
    if equals exceeds 2 and exceeds = "e" display "both" end-if

    move 1e20 to f display f
    compute f = 12345678901234567890123 display f
    compute f = 1e37 display f
    compute f = -1e38 display f
    compute f = 1.5e-25 display f
    compute f = -2 / 3 * 1e-10 display f
    compute f = 1 / 3 display f
    compute f = 100 display f
    compute f = 123456.789 display f
    compute f = -0.5 display f
    compute f = 0 display f
    move 3.5e10 to s display s
    move -.001 to s display s
    move 123456789 to s display s

    add 100 to b1 on size error display "too large" end-add
    move 513 to b2 if b2-bytes = x"0102" display "native" end-if
    compute b8 = b4 * b4 display b1 " " b2 " " b4 " " b8 " " function length (b8)
    stop run.
