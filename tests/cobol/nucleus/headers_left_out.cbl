*> Paragraphs and sections without the headers around them.
program-id. headers.
file-control.
    select f assign to "f" line sequential.
file section.
fd f. 01 r pic x(5).
working-storage section.
01 n pic 9v9 value 1.5.
procedure division.
    open output f write r from "abc" close f.
    open input f read f display r n close f.
    call "second".
end program headers.
program-id. second.
special-names. decimal-point is comma.
working-storage section.
01 n pic 9v9 value 2,5.
procedure division.
    display n.
end program second.
