       >>SOURCE FORMAT FREE
identification division.
program-id. fmain.
data division.
working-storage section.
01 n pic 99 comp-5.
01 r pic 9(18) comp-5.
01 rr pic s9(9) comp-5.
01 ptr usage pointer.
01 rec.
   05 a pic x(4) value "abcd".
   05 b pic 9(4) value 77.
01 s pic x(10) value "hello".
local-storage section.
01 ls pic 9 value 3.
linkage section.
01 lrec.
   05 la pic x(4).
   05 lb pic 9(4).
procedure division.
    perform varying n from 1 by 3 until n > 12
        call "fact" using by content n by reference r
        display n " " r
    end-perform
    call "addv" using by value 5 by value 7 returning rr
    display rr
    set ptr to address of rec
    set address of lrec to ptr
    move 88 to lb
    display rec " " la
    call "opt" using rec omitted
    call "opt" using rec s
    display s
    if address of lrec = ptr display "same" end-if
    set ptr to null
    if ptr = null display "null" end-if
    move 5 to return-code
    goback.
end program fmain.

identification division.
program-id. fact recursive.
data division.
local-storage section.
01 k pic 99 comp-5.
01 sub pic 9(18) comp-5.
linkage section.
01 n pic 99 comp-5.
01 r pic 9(18) comp-5.
procedure division using n r.
    if n <= 1
        move 1 to r
    else
        compute k = n - 1
        call "fact" using k sub
        compute r = n * sub
    end-if
    exit program.
end program fact.

program-id. addv.
data division.
linkage section.
01 x pic s9(9) comp-5.
01 y pic s9(9) comp-5.
01 z pic s9(9) comp-5.
procedure division using by value x y returning z.
    compute z = x * 10 + y
    goback.
end program addv.

program-id. opt.
data division.
linkage section.
01 p1 pic x(8).
01 p2 pic x(10).
procedure division using p1 optional p2.
    if address of p2 = null
        display "omitted " p1
    else
        display "given " p2
        move function upper-case(p2) to p2
    end-if.
end program opt.
