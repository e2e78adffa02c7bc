*> Functions as arguments of functions: parentheses after one, long intermediate results, tables that are not full.
identification division.
program-id. nested-functions.
data division.
working-storage section.
01 n pic s9(9)v9(9) sign leading separate.
01 a pic s9(3) value -5. 01 b pic s9(3) value 4.
01 c pic 99 value 3. 01 t. 02 te pic s99 occurs 1 to 6 depending on c.
01 u. 02 ue pic x(2) occurs 1 to 4 depending on c.
01 k pic 9 value 3.
procedure division.
    *> the parentheses after a function are the next argument
    compute n = function max (function abs (a), (b + 3) * 2) display n
    compute n = function mod (function integer (7.5), (b) - 1) display n
    compute n = function sum (function pi, (b)) display n
    compute n = function numval (function reverse ("12") (2:1)) display n
    *> a greatest integer of many digits, as an operand of as many
    compute n = function mod (function integer (function numval-c (" 368.53 -")), function numval (" 58499")) display n
    *> a quotient of many digits in floating point
    compute n = function exp10 (function factorial (k) / 1000) display n
    *> ordinals count the occurrences that there are
    move 1 to te (1) move 2 to te (2) move 3 to te (3)
    compute n = function ord-max (te (all) 9) display n
    compute n = function ord-min (te (all) b a) display n
    move "abcdef" to u
    compute n = function ord-max (ue (all) "zz") display n
    *> many terms of many digits
    compute n = function sum (te (all) function numval ("-0.5") te (all) te (all) te (all)) display n
    compute n = function mean (te (all) function numval ("-6.5") te (all) b b b) display n
    *> a factorial beside long numbers
    compute n = (function factorial (k) + 0.25) * function numval ("320.88") display n
    stop run.
