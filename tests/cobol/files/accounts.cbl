      *> a teaching program
       identification division.
       program-id. acct.
       author. somebody.
       date-written. 2019-03-04.
       environment division.
       configuration section.
       special-names.
           crt status is scr-status.
       input-output section.
       file-control.
           select optional acct-file assign to "acct.dat"
               organization is indexed
               access mode is dynamic
               record key is acct-no
               alternate record key is acct-name with duplicates
               file status is fs.
           select rep assign to "acct.txt"
               organization is line sequential.
       data division.
       file section.
       fd acct-file.
       01 acct-rec.
           05 acct-no       pic 9(5).
           05 acct-name     pic x(20).
           05 acct-bal      pic s9(7)v99 comp-3.
           05 acct-open     pic 9(8).
       fd rep.
       01 rep-line pic x(60).
       working-storage section.
       01 fs pic xx.
           88 fs-ok value "00" "02".
           88 fs-eof value "10".
           88 fs-nf  value "23" "35".
       01 scr-status pic 9(4).
       01 choice pic 9.
       01 ws-line.
           05 wl-no    pic zzzz9.
           05 filler   pic x(2).
           05 wl-name  pic x(20).
           05 wl-bal   pic $$,$$$,$$9.99-.
           05 filler   pic x(2).
           05 wl-date  pic 9999/99/99.
       01 total pic s9(9)v99 value zero.
       01 total-ed pic z(6)9.99cr.
       01 answer pic x(30).
       procedure division.
       main-para.
           open i-o acct-file
           if not fs-ok display "open status " fs end-if
           display "menu"
           perform until choice = 9
               display "1 add 2 list 3 show 4 update 5 delete 9 end: "
                   with no advancing
               accept choice
               evaluate choice
                   when 1 perform add-acct
                   when 2 perform list-acct
                   when 3 perform show-acct
                   when 4 perform upd-acct
                   when 5 perform del-acct
                   when 9 continue
                   when other display "bad choice"
               end-evaluate
           end-perform
           close acct-file
           stop run.
       add-acct.
           initialize acct-rec
           accept acct-no
           accept acct-name
           accept answer
           compute acct-bal = function numval(answer)
           move 20240115 to acct-open
           write acct-rec
               invalid key display "exists: " acct-no
               not invalid key display "added " function trim(acct-name)
           end-write.
       list-acct.
           open output rep
           move 0 to acct-no total
           start acct-file key is not less than acct-no
               invalid key display "empty"
               not invalid key
                   perform until exit
                       read acct-file next record
                           at end exit perform
                       end-read
                       add acct-bal to total
                       move acct-no to wl-no
                       move acct-name to wl-name
                       move acct-bal to wl-bal
                       move acct-open to wl-date
                       display ws-line
                       write rep-line from ws-line
                   end-perform
           end-start
           move total to total-ed
           display "total " total-ed
           close rep.
       show-acct.
           accept acct-no
           read acct-file
               invalid key display "not found " acct-no " " fs
               not invalid key
                   display acct-name(1:8) ":" acct-bal
           end-read.
       upd-acct.
           accept acct-no
           read acct-file key is acct-no
               invalid key display "not found"
               not invalid key
                   add 100.55 to acct-bal
                       on size error display "overflow"
                   end-add
                   rewrite acct-rec
                   display fs
           end-read.
       del-acct.
           accept acct-no
           delete acct-file record
               invalid key display "cannot delete"
               not invalid key display "deleted"
           end-delete.
