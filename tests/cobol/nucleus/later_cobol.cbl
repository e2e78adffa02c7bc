*> Modes of rounding, INITIALIZE TO VALUE, constants, inline PERFORM, later functions.
identification division.
program-id. p02.
environment division.
configuration section.
repository. function all intrinsic.
data division.
working-storage section.
78 max-n value 5.
78 nam value "bob".
01 k constant as 7.
01 k2 constant 10.
78 sum2 value max-n + 3.
01 hx pic x(4) value x"41424344".
01 zs pic x(4) value z"abc".
01 l pic x(10) value "ab" & "cd" & x"45".
01 arr. 05 a occurs max-n times pic 99.
01 bl. 05 b-name pic x(10) value "init". 05 b-num pic 9(3) value 42. 05 filler pic x(3) value "fil". 05 b-ed pic z9.9.
01 ptr pointer. 01 i pic 99. 01 r pic 9v9. 01 u binary-long unsigned. 01 sl binary-char. 01 fl float-long.
01 n pic s9(5)v99. 01 ws-date. 05 yy pic 9(4). 05 mm pic 99. 05 dd pic 99.
01 flag pic x value 'N'. 88 done value 'Y' false 'N'.
01 tim pic 9(8).
linkage section.
01 lk pic x(4).
procedure division.
main.
    display max-n " " nam " " k " " k2 " " sum2
    display hx " " l
    set address of lk to address of hx
    display lk
    set ptr to address of hx
    if ptr not = null display "not null" end-if
    if address of lk = ptr display "same" end-if
    initialize bl
    display ">" bl "<"
    initialize bl all to value
    display ">" bl "<"
    initialize bl replacing numeric data by 7 alphanumeric by "x"
    display ">" bl "<"
    initialize bl with filler all to value then to default
    display ">" bl "<"
    initialize bl with filler
    display ">" bl "<"
    set done to true display flag
    set done to false display flag
    compute r rounded mode is nearest-even = 2.25
    display r
    compute r rounded mode is truncation = 2.29
    display r
    compute r rounded mode nearest-toward-zero = 2.25 display r
    compute r rounded mode is away-from-zero = 2.21 display r
    compute r rounded mode is toward-greater = 2.21 display r
    compute r rounded mode is toward-lesser = 2.29 display r
    compute r rounded mode is nearest-away-from-zero = 2.25 display r
    compute r rounded mode is prohibited = 2.25 on size error display "proh" end-compute
    perform varying i from 1 by 1 until i > max-n
        if i = 2 exit perform cycle end-if
        if i = 4 exit perform end-if
        display "i=" i
    end-perform
    move 300 to u display u
    move -5 to sl display sl
    compute fl = 1 / 4 display fl
    display upper-case("abc") " " trim("  x  ") "|"
    move length(trim("ab  ")) to i display i
    display "a" no advancing display "b" with no advancing display "c"
    perform until exit
      add 1 to i
      if i > 5 exit perform end-if
    end-perform
    display i
    move 25E1 to i display i
    compute fl = 2E-1 + 1E+1 display fl
    move b"1011" to i display i
    display nam & "-" & nam if l(1:3) = nam & "" display "no" end-if
    move 0 to
return-code. display
pi.
    move 6 to i
    evaluate true also i
       when i > 5 also 6 display "six"
       when other display "not"
    end-evaluate
    goback.
