*> Ranges of PERFORM that GO TO leaves, EXIT SECTION and PARAGRAPH, loops inside each other.
identification division.
program-id. t12.
data division.
working-storage section.
01 t-pass pic 9(4) value 0.
01 t-fail pic 9(4) value 0.
01 i pic 99. 01 n pic 9(4) value 0. 01 lim pic 99 value 3. 01 st pic 9. 01 x pic x(30) value spaces. 01 p pic 99 value 1.
procedure division.
a-sec section.
a0.
    perform b-sec.
    if x = "b1b2b3"
        add 1 to t-pass
    else add 1 to t-fail display "FAIL 1: x = ""b1b2b3"""
    end-if
    move spaces to x move 1 to p perform b1 thru b2
    if x = "b1b2"
        add 1 to t-pass
    else add 1 to t-fail display "FAIL 2: x = ""b1b2"""
    end-if
    move spaces to x move 1 to p perform c1 thru c-exit
    if x = "c1c3"
        add 1 to t-pass
    else add 1 to t-fail display "FAIL 3: x = ""c1c3"""
    end-if
    move spaces to x move 1 to p perform d1 thru d3
    if x = "d1d2d3d2x"
        add 1 to t-pass
    else add 1 to t-fail display "FAIL 4: x = ""d1d2d3d2x"""
        display "     >" x "<"
    end-if
    move spaces to x move 1 to p
    perform varying i from 1 by 1 until i > 3
       if i = 2 go to out-1 end-if
       string "i" delimited by size into x pointer p
    end-perform.
out-1.
    if x = "i" and i = 2
        add 1 to t-pass
    else add 1 to t-fail display "FAIL 5: x = ""i"" and i = 2"
    end-if
    perform e-sec 2 times
    if n = 32
        add 1 to t-pass
    else add 1 to t-fail display "FAIL 6: n = 32"
        display "     >" n "<"
    end-if
    move 0 to n
    perform f1 until n > 4
    if n = 5
        add 1 to t-pass
    else add 1 to t-fail display "FAIL 7: n = 5"
    end-if
    perform 3 times
       perform 2 times
          add 1 to n
          if n = 7 exit perform end-if
       end-perform
       add 10 to n
    end-perform
    if n = 41
        add 1 to t-pass
    else add 1 to t-fail display "FAIL 8: n = 41"
        display "     >" n "<"
    end-if
    move 0 to n
    perform g1
    if n = 111
        add 1 to t-pass
    else add 1 to t-fail display "FAIL 9: n = 111"
    end-if
    move 0 to n perform h1 thru h3
    if n = 101
        add 1 to t-pass
    else add 1 to t-fail display "FAIL 10: n = 101"
        display "     >" n "<"
    end-if
    perform j1 thru j2 varying i from 1 by 1 until i > lim
    if n = 107
        add 1 to t-pass
    else add 1 to t-fail display "FAIL 11: n = 107"
        display "     >" n "<"
    end-if
    go to fin.
b-sec section.
b1. string "b1" delimited by size into x pointer p.
b2. string "b2" delimited by size into x pointer p.
b3. string "b3" delimited by size into x pointer p.
c-sec section.
c1. string "c1" delimited by size into x pointer p. go to c3.
c2. string "c2" delimited by size into x pointer p.
c3. string "c3" delimited by size into x pointer p.
c-exit. exit.
d-sec section.
d1. string "d1" delimited by size into x pointer p.
d2. string "d2" delimited by size into x pointer p. if p > 6 string "x" delimited by size into x pointer p.
d3. if p < 7 string "d3" delimited by size into x pointer p perform d2.
e-sec section.
e1. add 1 to n.
e2. if n > 12 exit section. add 10 to n. 
e3. if n = 11 exit paragraph end-if. add 10 to n.
f-sec section.
f1. add 1 to n.
g-sec section.
g1. add 1 to n. perform g2.
g2. if n < 100 add 10 to n perform g3. 
g3. add 100 to n.
h-sec section.
h1. add 1 to n. if n = 1 go to h2x.
h2. add 1000 to n.
h2x. add 100 to n. go to h3.
h2y. add 5000 to n.
h3. exit.
j-sec section.
j1. add 1 to n.
j2. add 1 to n.
fin-sec section.
fin.
    display "passed " t-pass " failed " t-fail
    stop run.
