       identification division.
       program-id. typed-numbers.
       data division.
       working-storage section.
       01 ws-in pic x(10). 01 ws-n pic 9(4). 01 ws-s pic s9(5)v99.
       01 ws-c pic s9(4) comp. 01 ws-p pic s9(5)v99 comp-3.
       01 ws-e pic -(5)9.99. 01 ws-f comp-2.
       01 g. 05 ga pic x(3) value "12 ".
       procedure division.
           move "10" to ws-in. move ws-in to ws-n ws-s ws-c ws-p ws-e.
           display ws-n ws-s ws-c ws-p ws-e.
           move "-12.345" to ws-in. move ws-in to ws-n ws-s ws-c ws-p
              ws-e ws-f. display ws-n ws-s ws-c ws-p ws-e " " ws-f.
           move "  7.5 " to ws-in. move ws-in to ws-n ws-s ws-c ws-p
              ws-e. display ws-n ws-s ws-c ws-p ws-e.
           move "abc" to ws-in. move ws-in to ws-n. display ws-n.
           move spaces to ws-in. move ws-in to ws-n ws-s. display ws-n
             ws-s.
           move "1234567890" to ws-in. move ws-in to ws-n ws-s ws-c.
           display ws-n ws-s ws-c.
           move ws-in(3:4) to ws-n. display ws-n.
           move "5 " to ws-in. move ws-in(1:2) to ws-n. display ws-n.
           move ga to ws-n display ws-n.
           move function trim(ws-in) to ws-n display ws-n.
           move function upper-case("99") to ws-s display ws-s.
           inspect "hello" tallying ws-n for all "l". display ws-n.
           unstring "1.5,-2" delimited by "," into ws-s ws-p.
           display ws-s ws-p.
           stop run.
