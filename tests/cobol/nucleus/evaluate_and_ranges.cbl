>>SOURCE FREE
identification division.
program-id. evaluate-and-ranges.
data division.
working-storage section.
01 a pic 9(3) value 5. 01 b pic 9(3) value 6. 01 c pic x(3) value "xyz".
01 words-table. 05 words pic x(10) occurs 10 times. 01 n pic 99. 01 p pic 99 value 1.
01 sentence-in pic x(50) value "the cat sat on the mat".
01 cnt pic 99 value 0. 01 idx usage index. 01 ed pic zz9.
01 d pic s9(4)v99 value -1.5. 01 dbl comp-2 value 1.25e2. 01 sng comp-1 value -2.5.
01 ul binary-double unsigned value 18446744073709551615.
01 bd binary-double value -9223372036854775808. 01 sc binary-char value -128.
01 c5 pic 9(9) comp-5. 01 cx2 pic 9(4) comp-x value 65535. 01 pk pic 9(4) comp-3 value 12.
01 tf pic x. 88 t-true value "T" false "F".
01 em pic x(0001).
procedure division.
main section.
  perform until p > 22
    add 1 to n
    unstring sentence-in delimited by all space into words(n) with pointer p
  end-perform
  display n " " words(6) "|" words(3).
  evaluate a when 1 display "one" when 2 when 5 display "2or5" when other display "other" end-evaluate
  evaluate true when a > 5 display "gt" when a = 5 and b = 6 display "both" end-evaluate
  evaluate c when "abc" thru "xzz" display "range" when other display "no" end-evaluate
  evaluate a + 1 when b display "sum" end-evaluate
  evaluate true also false when a = 5 also b = 5 display "tf" end-evaluate
  evaluate a also b also c when 5 also any also "xyz" display "3" when other display "x" end-evaluate
  evaluate a when not 6 display "not6" end-evaluate
  evaluate a when b - 1 display "expr" end-evaluate
  evaluate false when a = 6 display "false6" end-evaluate
  evaluate c (1:1) when "x" continue when other display "bad" end-evaluate
  display a b c "/" d "/" dbl "/" sng "/" ul "/" bd "/" sc "/" cx2 "/" pk
  compute c5 = 4294967295 display c5
  compute d = a / b display d
  set t-true to true display tf set t-true to false display tf
  if a is numeric and d is positive display "bad" else display "fine" end-if
  if a > b or c = "xyz" and not a = b then display "ok" end-if
  perform varying a from 10 by -2 until a = 0 display a with no advancing end-perform display " "
  perform with test after varying a from 1 by 1 until a >= 3 display a end-perform
  go to para-x.
para-y.
  display "y". exit section.
para-x.
  display "x" perform para-z thru para-zz go para-y.
para-z. display "z" if b = 6 exit paragraph end-if display "no".
para-zz. display "zz".
sec2 section.
  display "sec2" perform 3 times add 1 to cnt if cnt = 2 exit perform end-if end-perform display cnt
  move 5 to ed display "[" ed "]"
  display function max(3 7 5) space function min("b" "a") function sum(1 2 3)
  string "a" "b" delimited by size "c d" delimited by space into c
  end-string display c
  initialize words-table a replacing alphanumeric data by "-" numeric data by 3
  display words(1) a
  stop run.
