*> COMP-6: packed numbers without a sign, of even and odd lengths.
identification division.
program-id. comp-6-items.
data division.
working-storage section.
01 g.
   02 even-one pic 9(4) comp-6 value 1234.
   02 odd-one pic 9(5) comp-6 value 12345.
   02 money pic 9(3)v99 computational-6 value 1.5.
   02 single pic 9 comp-6.
   02 long-one pic 9(20) comp-6 value 98765432109876543210.
01 bytes redefines g pic x(19).
01 t.
   02 e pic 9(3) comp-6 occurs 4.
01 p pic s9(5) comp-3.
01 z pic s9(5).
01 x pic x(6).
01 ed pic zz9.99.
01 i pic 9.
procedure division.
    display even-one " " odd-one " " money " " single " " long-one " " function length (g).
    if bytes (1:5) = x"1234012345" and bytes (6:3) = x"000150" display "bytes".
    add 1 to even-one odd-one single. display even-one " " odd-one " " single.
    move -67 to even-one. display even-one.
    subtract 70 from even-one. display even-one.
    move 123456 to odd-one. display odd-one.
    compute money rounded = money * 3.337. display money.
    move odd-one to p z x ed. display p " " z " [" x "] " ed.
    move 99999 to odd-one. add 1 to odd-one on size error display "too large". display odd-one.
    add 1 to odd-one. display odd-one.
    move "0042" to even-one. display even-one.
    if even-one = 42 and even-one < odd-one + 50 and even-one numeric display "compares".
    move x"0A99" to bytes (1:2). if even-one not numeric display "no number".
    initialize g. display even-one odd-one money.
    perform varying i from 1 by 1 until i > 4
        compute e (i) = function mod (i * 371, 1000)
    end-perform.
    sort e descending.
    display e (1) " " e (2) " " e (3) " " e (4).
    stop run.
