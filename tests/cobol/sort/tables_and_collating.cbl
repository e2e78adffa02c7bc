       identification division.
       program-id. sortu.
       environment division.
       configuration section.
       object-computer. x86 program collating sequence is rev.
       special-names.
           alphabet rev is "Z" thru "A"
           alphabet asc is standard-1
           symbolic characters esc 28.
       input-output section.
       file-control.
           select srt assign to disk.
           select vf assign to "st2v.dat".
           select vo assign to "st2o.dat" organization line sequential.
       data division.
       file section.
       fd vf record varying from 3 to 30 depending on len.
       01 vr pic x(30).
       fd vo.
       01 vor pic x(30).
       sd srt record is varying in size from 3 to 30 characters
          depending on slen.
       01 sr.
          03 sk pic x(3).
          03 filler pic x(27).
       01 sr2 pic x(10).
       working-storage section.
       01 len pic 99.
       01 slen pic 99.
       01 tab.
          03 n pic 99 value 6.
          03 row occurs 1 to 10 depending on n
             ascending key is rk indexed by ix.
             05 rk pic s9(4) comp.
             05 rz pic x(3).
       01 i pic 99.
       01 e pic x value "n".
       procedure division.
       main-p.
           move 5 to rk(1) move "e" to rz(1)
           move -5 to rk(2) move "a" to rz(2)
           move 3 to rk(3) move "d" to rz(3)
           move 0 to rk(4) move "b" to rz(4)
           move 1 to rk(5) move "c" to rz(5)
           move 99 to rk(6) move "z" to rz(6)
           sort row ascending key rk
           perform varying i from 1 by 1 until i > n
             display rk(i) rz(i) " " with no advancing
           end-perform
           display " "
           sort row descending rz collating sequence asc
           perform varying i from 1 by 1 until i > n
             display rz(i) with no advancing
           end-perform
           display " "
           open output vf
           move 10 to len move "CCCabcdefg" to vr write vr
           move 4 to len move "AAA1" to vr write vr
           move 5 to len move "BBB12" to vr write vr
           close vf
           sort srt on ascending key sk using vf giving vo
           perform show
           sort srt on ascending key sk collating sequence is asc
              using vf output procedure is outp
           sort srt on ascending key sk sequence asc
              input procedure inp giving vo
           perform show
           stop run.
       inp.
           move "1xx" to sr2 move 3 to slen release sr2
           move "ayy45" to sr2 move 5 to slen release sr2
           move "Azz4567" to sr2 move 7 to slen release sr2.
       outp.
           move "n" to e
           perform until e = "y"
             return srt at end move "y" to e
             not at end display "[" sr(1:slen) "] " slen
             end-return
           end-perform.
       show.
           move "n" to e
           open input vo
           perform until e = "y"
             read vo at end move "y" to e
             not at end display vor end-read
           end-perform
           close vo.
