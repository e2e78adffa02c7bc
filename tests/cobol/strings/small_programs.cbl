>>SOURCE FORMAT FREE
       identification division.
       program-id. small-programs.
       data division.
       working-storage section.
       01 txt pic x(30) value "Able was I ere I saw Elba".
       01 rev pic x(30). 01 len pic 99. 01 i pic 99. 01 j pic 99.
       01 c pic x. 01 k pic 9(3). 01 pal pic x value "y".
       01 num pic 9(10). 01 bits pic x(16). 01 rem-v pic 9.
       01 alphabet-t pic x(26) value "ABCDEFGHIJKLMNOPQRSTUVWXYZ".
       01 vowels pic 99 value 0. 01 words pic 99 value 0.
       01 leap pic 9(4). 01 json pic x(100). 01 p pic 999.
       01 ws-date. 05 yy pic 9(4). 05 mm pic 99. 05 dd pic 99.
       01 jd pic 9(8). 01 dow pic 9.
       01 days-tab value "MonTueWedThuFriSatSun". 05 dname pic x(3) occurs 7.
       01 gcd-a pic 9(5). 01 gcd-b pic 9(5). 01 t pic 9(5).
       01 prime-f. 05 pf pic 9 occurs 50 value 1.
       01 coll pic 9(6). 01 steps pic 9(3).
       01 perf pic 9(4). 01 sm pic 9(4).
       01 arms pic 9(3). 01 d1 redefines arms. 05 dg pic 9 occurs 3.
       01 mat-a. 03 ra occurs 2. 05 ma pic s9(3) occurs 2.
       01 mat-b. 03 rb occurs 2. 05 mb pic s9(3) occurs 2.
       01 mat-c. 03 rc occurs 2. 05 mc pic s9(5) occurs 2.
       procedure division.
           move function reverse(txt) to rev. display rev "|".
           inspect rev tallying len for leading spaces.
           display rev(len + 1:) "|".
           move function lower-case(function trim(txt)) to txt.
           compute len = function length(function trim(txt))
           perform varying i from 1 by 1 until i > len / 2
             if txt(i:1) not = txt(len - i + 1:1) move "n" to pal
             exit perform end-if
           end-perform
           display "pal " pal " " len.
           move "Hello, World" to txt.
           perform varying i from 1 by 1 until i > 12
             move txt(i:1) to c
             if c is alphabetic and c not = space
               if c is alphabetic-lower
                 compute k = function mod(function ord(c) -
                     function ord("a") + 13, 26) + function ord("a")
               else
                 compute k = function mod(function ord(c) -
                     function ord("A") + 13, 26) + function ord("A")
               end-if
               move function char(k) to txt(i:1)
             end-if
           end-perform
           display txt.
           move 202 to num move spaces to bits move 16 to i.
           perform until num = 0
             divide num by 2 giving num remainder rem-v
             move rem-v to bits(i:1) subtract 1 from i
           end-perform
           display bits.
           inspect "the quick brown fox" tallying vowels for all "a"
             all "e" all "i" all "o" all "u".
           display vowels.
           move 2024 to leap
           if function mod(leap 4) = 0 and (function mod(leap 100)
             not = 0 or function mod(leap 400) = 0) display "leap".
           move 1 to p.
           string '{"name":"' delimited by size "Bob" delimited by size
             '","age":' 42 '}' delimited by size into json pointer p.
           subtract 1 from p. display json(1:p).
           move 20241225 to ws-date. 
           compute jd = function integer-of-date(20241225)
           compute dow = function mod(jd - 1, 7) + 1 display dname(dow).
           move 1071 to gcd-a move 462 to gcd-b
           perform until gcd-b = 0
             move gcd-b to t
             compute gcd-b = function mod(gcd-a, gcd-b)
             move t to gcd-a
           end-perform
           display "gcd " gcd-a.
           perform varying i from 2 by 1 until i * i > 50
             if pf(i) = 1
               compute j = i * i
               perform until j > 50 move 0 to pf(j) add i to j
               end-perform
             end-if
           end-perform
           perform varying i from 2 by 1 until i > 50
             if pf(i) = 1 display i " " no advancing end-if
           end-perform display space.
           move 27 to coll move 0 to steps
           perform until coll = 1
             if function rem(coll, 2) = 0 divide 2 into coll
             else compute coll = coll * 3 + 1 end-if
             add 1 to steps
           end-perform display steps.
           perform varying arms from 100 by 1 until arms > 998
             if dg(1) ** 3 + dg(2) ** 3 + dg(3) ** 3 = arms
               display arms " " with no advancing end-if
           end-perform display " ".
           move 1 to ma(1 1) move 2 to ma(1 2) move 3 to ma(2 1)
           move 4 to ma(2 2) move mat-a to mat-b.
           perform varying i from 1 by 1 until i > 2 after j from 1 by 1
             until j > 2
             move 0 to mc(i j)
             perform varying k from 1 by 1 until k > 2
               compute mc(i j) = mc(i, j) + ma(i, k) * mb(k, j)
             end-perform
           end-perform
           display mat-c.
           stop run.
