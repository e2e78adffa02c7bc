       identification division.
       program-id. crud.
       environment division.
       input-output section.
       file-control.
           select customer-file assign to "cust.dat"
               organization is indexed
               access mode is dynamic
               record key is cust-id
               alternate record key is cust-name with duplicates
               lock mode is automatic with lock on record
               file status is ws-fs.
       data division.
       file section.
       fd  customer-file.
       01  customer-record.
           05  cust-id          pic 9(5).
           05  cust-name        pic x(20).
           05  cust-bal         pic s9(7)v99 comp-3.
       working-storage section.
       01  ws-fs                pic xx.
           88  fs-ok            value "00".
           88  fs-dup           value "22".
           88  fs-nf            value "23".
           88  fs-eof           value "10".
       01  ws-choice            pic 9.
       01  ws-bal-e             pic -(7)9.99.
       procedure division.
       main-para.
           open i-o customer-file
           if ws-fs = "35"
               open output customer-file
               close customer-file
               open i-o customer-file
           end-if
           if not fs-ok display "open error " ws-fs stop run end-if
           perform until ws-choice = 9
               display "1-add 2-read 3-upd 4-del 5-list 9-exit: "
                 with no advancing
               accept ws-choice
               evaluate ws-choice
                   when 1 perform add-para
                   when 2 perform read-para
                   when 3 perform upd-para
                   when 4 perform del-para
                   when 5 perform list-para
                   when 9 display "bye"
                   when other display "invalid"
               end-evaluate
           end-perform
           close customer-file
           stop run.
       add-para.
           accept cust-id accept cust-name accept cust-bal
           write customer-record
               invalid key display "dup " ws-fs
               not invalid key display "added"
           end-write.
       read-para.
           accept cust-id
           read customer-file with lock key is cust-id
               invalid key display "not found"
               not invalid key move cust-bal to ws-bal-e
                 display cust-id " " cust-name " " ws-bal-e
           end-read.
           unlock customer-file records.
       upd-para.
           accept cust-id
           read customer-file with no lock invalid key
             display "nf" not invalid key
             add 100.50 to cust-bal
             rewrite customer-record end-rewrite
             display "updated " ws-fs
           end-read.
       del-para.
           accept cust-id
           delete customer-file record
             invalid key display "not found"
             not invalid key display "deleted"
           end-delete.
       list-para.
           move low-values to cust-name
           start customer-file key is not less than cust-name
             invalid key display "empty"
           end-start
           if fs-ok
             perform until exit
               read customer-file next record with kept lock
                 at end exit perform
               end-read
               move cust-bal to ws-bal-e
               display cust-id " " cust-name ws-bal-e
             end-perform
           end-if.
