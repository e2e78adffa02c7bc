*> Small classics: a board game, words, ciphers, matrices, dates, perfect numbers.
identification division.
program-id. tictac.
data division.
working-storage section.
01 board value spaces.
   03 brow occurs 3 times.
      05 bcell occurs 3 times pic x.
01 r pic 9. 01 c pic 9. 01 turn pic x value "X". 01 winner pic x value space.
01 moves-list pic x(18) value "112231132133".
01 mv redefines moves-list. 03 m occurs 9. 05 mr pic 9. 05 mc pic 9.
01 n pic 99.
01 roman-tab.
   03 filler pic x(5) value "1000M". 03 filler pic x(5) value "0900C".
01 temp-c pic s9(3)v9. 01 temp-f pic s9(3)v9. 01 t-out pic -zz9.9.
01 word-count pic 99 value 0. 01 txt pic x(40) value "the quick  brown fox".
01 in-word pic 9 value 0. 88 inside value 1 false 0.
01 vowels pic 99 value 0. 01 i pic 99.
01 caesar pic x(20) value "HELLO". 01 ordn pic 999.
01 bin-str pic x(8). 01 dec pic 999 value 173. 01 bit pic 9. 01 q pic 999.
01 gcd-a pic 9(5) value 1071. 01 gcd-b pic 9(5) value 462. 01 gcd-t pic 9(5).
01 mat-a. 02 occurs 2. 03 ma pic s9(3) occurs 2. 01 mat-b. 02 occurs 2. 03 mb pic s9(3) occurs 2. 01 mat-c. 02 occurs 2. 03 mc2 pic s9(5) occurs 2.
01 j pic 99. 01 k pic 99.
01 ws-date pic 9(8) value 20240229. 01 ws-int pic 9(7). 01 dow pic 9.
01 day-names value "MonTueWedThuFriSatSun". 03 dn pic xxx occurs 7.
01 csv-line pic x(40) value "id,name,,""q""". 01 fld pic x(10). 01 ptr pic 99 value 1. 01 fcount pic 99 value 0.
01 perfect pic 9(4). 01 s pic 9(5). 01 collatz pic 9(8) value 27. 01 steps pic 999 value 0.
procedure division.
main.
    perform varying n from 1 by 1 until n > 6 or winner not = space
        move turn to bcell(mr(n), mc(n))
        perform check-win
        if turn = "X" move "O" to turn else move "X" to turn end-if
    end-perform
    perform varying r from 1 by 1 until r > 3 display brow(r) end-perform
    display "winner " winner
    perform varying temp-c from -40 by 70 until temp-c > 100
        compute temp-f rounded = temp-c * 9 / 5 + 32
        move temp-f to t-out display t-out
    end-perform
    perform varying i from 1 by 1 until i > 40
        if txt(i:1) = space set inside to false
        else if not inside set inside to true add 1 to word-count end-if
        end-if
        evaluate txt(i:1) when "a" when "e" when "i" when "o" when "u" add 1 to vowels end-evaluate
    end-perform
    display word-count " " vowels
    perform varying i from 1 by 1 until i > function length(function trim(caesar))
        compute ordn = function mod(function ord(caesar(i:1)) - 66 + 3, 26) + 66
        move function char(ordn) to caesar(i:1)
    end-perform
    display caesar
    move dec to q
    perform varying i from 8 by -1 until i = 0
        divide q by 2 giving q remainder bit move bit to bin-str(i:1)
    end-perform
    display bin-str
    perform until gcd-b = 0
        move function mod(gcd-a gcd-b) to gcd-t move gcd-b to gcd-a move gcd-t to gcd-b
    end-perform
    display gcd-a
    move 1 to ma(1 1) move 2 to ma(1 2) move 3 to ma(2 1) move -4 to ma(2 2)
    move mat-a to mat-b
    perform varying i from 1 by 1 until i > 2 after j from 1 by 1 until j > 2
        move 0 to mc2(i j)
        perform varying k from 1 by 1 until k > 2
            compute mc2(i j) = mc2(i j) + ma(i k) * mb(k j)
        end-perform
        display mc2(i j)
    end-perform
    compute ws-int = function integer-of-date(ws-date)
    compute dow = function mod(ws-int - 1 7) + 1
    display dn(dow)
    display function date-of-integer(ws-int + 1)
    perform until ptr > function length(function trim(csv-line))
        move spaces to fld
        unstring csv-line delimited by "," into fld with pointer ptr
        add 1 to fcount
        display fcount ":" function trim(fld) "|"
        if ptr > 16 exit perform end-if
    end-perform
    perform varying perfect from 2 by 1 until perfect > 500
        move 0 to s
        perform varying k from 1 by 1 until k > perfect / 2 or k = 99
            if function mod(perfect k) = 0 add k to s end-if
        end-perform
        if s = perfect display "perfect " perfect end-if
    end-perform
    perform with test before until collatz = 1
        if function rem(collatz 2) = 0 divide 2 into collatz else compute collatz = 3 * collatz + 1 end-if
        add 1 to steps
    end-perform
    display steps
    stop run.
check-win.
    perform varying r from 1 by 1 until r > 3
        if bcell(r 1) not = space and bcell(r 1) = bcell(r 2) and bcell(r 3)
            move bcell(r 1) to winner
        end-if
        if bcell(1 r) not = space and bcell(1 r) = bcell(2 r) and = bcell(3 r)
            move bcell(1 r) to winner
        end-if
    end-perform.
