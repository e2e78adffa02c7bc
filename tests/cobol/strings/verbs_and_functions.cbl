identification division.
program-id. strs.
data division.
working-storage section.
01 csv pic x(60) value "smith,john,,42;london,  uk".
01 f1 pic x(10). 
01 f2 pic x(10).
01 f3 pic x(10).
01 f4 pic 9(4).
01 f5 pic x(10) justified right.
01 d1 pic x.
01 c1 pic 99.
01 p pic 99 value 1.
01 t pic 99 value 0.
01 out pic x(40).
01 n1 pic 9(3) value 7.
01 txt pic x(30) value "the quick brown the fox".
01 cnt pic 9(3).
01 cnt2 pic 9(3).
01 ws-date.
   05 yy pic 9(4).
   05 filler pic x value "-".
   05 mm pic 99.
01 sgn pic s9(4) value -1234.
01 len pic 99.
01 grade pic a.
01 score pic 999.
01 a pic 9 value 1.
01 b pic 9 value 2.
01 tbl.
  03 e pic 9(3) occurs 5 times indexed by i.
procedure division.
    unstring csv delimited by "," or ";" or all spaces
        into f1 delimiter in d1 count in c1
             f2
             f3
             f4
             f5
        with pointer p
        tallying in t
        on overflow display "overflow " p " " t
        not on overflow display "fits"
    end-unstring
    display f1 "|" d1 "|" c1 "|" f2 "|" f3 "|" f4 "|" f5
    move spaces to out
    move 3 to p
    string f1 delimited by space
           ", " delimited by size
           f2 delimited by "h"
           n1 delimited by size
           function upper-case("end") delimited by size
           into out with pointer p
           on overflow display "ovf"
    end-string
    display "[" out "] " p
    string "abcdefghijklmnopqrstuvwxyz" "0123456789" "!!!!!!" delimited by size into out
       on overflow display "overflowed"
       not on overflow display "no"
    end-string
    display out
    move 0 to cnt cnt2
    inspect txt tallying cnt for all "the" cnt2 for characters before initial "brown"
    display cnt " " cnt2
    move 0 to cnt cnt2
    inspect txt tallying cnt for leading "t" cnt2 for all "o" after "brown"
    display cnt " " cnt2
    inspect txt replacing all "the" by "THE" first "o" by "0" after initial "q"
    display txt
    inspect txt replacing characters by "*" before initial "q"
    display txt
    inspect txt converting "abcdefghijklmnopqrstuvwxyz" to "ABCDEFGHIJKLMNOPQRSTUVWXYZ" after "*"
    display txt
    move 2024 to yy move 5 to mm
    display ws-date "|" ws-date(1:4) "|" ws-date(6:) 
    move "XY" to txt(3:2)
    display txt
    move 5 to len
    display txt(len:len - 2) "|" txt(len + 1:2)
    perform varying score from 50 by 10 until score > 100
      evaluate true
        when score >= 90 move "A" to grade
        when score >= 80 and < 90 move "B" to grade
        when score = 70 or 60 move "C" to grade
        when other move "F" to grade
      end-evaluate
      display grade with no advancing
    end-perform
    display space
    evaluate a also b
      when 1 also 1 display "11"
      when any also 3 display "x3"
      when 1 thru 3 also not 3 display "range"
    end-evaluate
    evaluate a + b
      when 3 display "three"
    end-evaluate
    move 3 to e(1) move 9 to e(2) move 1 to e(3) move 7 to e(4) move 2 to e(5)
    display function max(e(all)) " " function min(3 5 2) " " function sum(e(all))
    display function length(txt) " " function ord("A") " " function char(66)
    display function mod(17 5) " " function mod(-17 5) " " function rem(-17 5)
    display function reverse("abc") function lower-case("ABC")
    display function trim("  abc  ") "|" function trim("  abc  " leading) "|" function trim("  abc  " trailing) "|"
    display function integer(-3.5) " " function integer-part(-3.5)
    display function numval("  -12.5 ") " " function numval-c("$1,234.50")
    display function ord-max(e(1) e(2) e(3))
    display function abs(sgn) " " function factorial(5)
    display function sqrt(16) " " function exp10(2)
    if function current-date(1:2) = "20" display "century" end-if
    display function integer-of-date(20240229) " " function date-of-integer(154197)
    display function day-of-integer(154197)
    display function mean(1 2 3 4) " " function median(5 1 3) " " function midrange(1 9) " " function range(3 8 1)
    display function concatenate("a" "b" "c")
    display function substitute("hello" "l" "L")
    display sgn
    move sgn to out
    display out
    set i to 1
    search e varying i at end display "none"
       when e(i) = 7 display "found " 
    end-search
    stop run.
