*> Parameters of any length of programs, in one source and reached by name; what an EXTERNAL record
*> begins with; counters of ON after CANCEL.
identification division.
program-id. any-length.
data division.
working-storage section.
01 t pic x(10) value "abcdefghij".
01 g. 02 h pic 9(4) value 17. 02 pic x(3).
01 nm pic x(8) value "shows".
01 n pic 9 value 4.
01 shared external.
   02 sn pic 9(3).
   02 sx pic x(2) occurs 40.
   02 sp pic s9(3) comp-3 value 5.
01 late external as "EARLY" pic x(4).
procedure division.
    display "[" shared (1:5) "]" sp "[" late "]".
    move "main" to late.
    call "shows" using t g.
    call "shows" using t (3:n) "xyz".
    call nm using by content t (n:) g.
    call "shows" using by content function trim (nm) omitted.
    cancel "shows".
    call "shows" using h t.
    move low-values to late.
    cancel "shows".
    call "shows" using h t.
    stop run.
end program any-length.
identification division.
program-id. shows.
data division.
working-storage section.
01 early external pic x(4).
01 shared external.
   02 sn pic 9(3).
   02 sx pic x(2) occurs 40.
   02 sp pic s9(3) comp-3.
linkage section.
01 a pic x any length.
01 b pic x any length.
procedure division using a b.
    on 1 display "first time".
    display function length (a) " " length of b " [" a "]" no advancing.
    if address of b not = null display "[" b (2:1) "]" else display " none".
    add 1 to sn.
    if early = low-values display "kept, " sn " " sp.
end program shows.
