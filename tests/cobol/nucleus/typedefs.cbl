*> TYPEDEF, TYPE and SAME AS: each copy has its own storage, condition-names, indexes and keys.
identification division.
program-id. typedefs.
data division.
working-storage section.
01 point is typedef.
   02 x pic 9(3).
   02 y pic 9(3).
      88 on-axis value 0.
01 money typedef pic s9(5)v99 comp-3 value 1.5.
01 listed typedef strong.
   02 n pic 99 value 3.
   02 el occurs 1 to 10 depending on n ascending key k indexed by i.
      03 k pic 9(2).
      03 p type point.
01 shape.
   02 a type point.
   02 b same as a.
   02 pts type to point occurs 3.
   02 cost type money.
   02 type money value 2.
01 total usage money.
01 l1 type listed.
01 l2.
   02 inner type listed.
01 l3 same as l2.
01 type point.
01 early type later.
01 later typedef pic x(5) justified right.
procedure division.
    move 1 to x of a move 2 to y of a move a to b
    display b pts (1)
    move 7 to x of pts (2)
    display function max (x of pts (2) x of a)
    if not on-axis of a display "off the axis" end-if
    if on-axis of pts (1) display "on the axis" end-if
    add cost to total display total
    move 1 to k of l1 (1) move 2 to k of l1 (2) move 3 to k of l1 (3)
    search all el of l1 when k of l1 (i of l1) = 2
        display "found " x of p of l1 (i of l1)
    end-search
    display function length (l1) " " function length (l2)
    move 5 to n of l2
    display function length (l2) " " function length (l3) " " n of l3
    move "ab" to early display "[" early "]"
    stop run.
