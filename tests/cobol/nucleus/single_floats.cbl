*> COMP-1 items among decimal ones.
identification division.
program-id. single-floats.
data division.
working-storage section.
01 a comp-1 value 0.7. 01 b comp-2. 01 c comp-1. 01 n pic s9(9)v9(4) sign leading separate. 01 t pic v9. 01 e pic -(9)9.99.
01 p pic s9(5)v99 comp-3. 01 k pic s9(9) comp.
procedure division.
    move a to t display t
    if a = 0.7 display "seven tenths" else display "not" end-if
    move 0.3 to n compute c = 0.1 + 0.2 if c = n display "three tenths" else display "not" end-if
    move 16777216 to c move c to k display k
    move -1234.56 to c move c to p display p move c to e display e move c to n display n
    move 9.99 to c compute e = - c display e
    add 1 to c move c to n display n
    move a to b move b to n display n
    stop run.
