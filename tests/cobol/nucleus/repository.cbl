       identification division.
       program-id. repository.
       environment division.
       configuration section.
       repository.
           function fact
           function all intrinsic.
       data division.
       working-storage section.
       01 n pic 9(2) value 5. 01 r pic 9(10).
       procedure division.
           compute r = fact(n) + 1. display r.
           display fact(3).
           move trim("  x ") to r (1:1).
           if numval("12") > fact(3) display "gt".
           display upper-case(concatenate("ab" "cd")).
           compute r = pi * 100. display r.
           compute r = 1000 * e. display r.
           compute n = sign(-4.5) + length("abc"). display n.
           if current-date (1:2) = "20" or "21" display "now".
           move sum (1 2 3) to n. display n.
           display max (length ("ab") sum (1 1 2)).
           stop run.
       end program repository.
       identification division.
       function-id. fact.
       data division.
       local-storage section.
       01 i pic 9(2).
       linkage section.
       01 n pic 9(2). 01 res pic 9(10).
       procedure division using n returning res.
           move 1 to res.
           perform varying i from 1 by 1 until i > n
             multiply i by res end-perform.
           goback.
       end function fact.
