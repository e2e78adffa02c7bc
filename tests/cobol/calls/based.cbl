      *> ALLOCATE, FREE, BASED.
       identification division.
       program-id. based1.
       data division.
       working-storage section.
       01 p usage pointer.
       01 q usage is pointer value null.
       01 node based.
          05 val pic 9(4).
          05 nxt pointer.
       01 i pic 9(4).
       01 head pointer value null.
       01 bdy pic x(10) based.
       procedure division.
           perform varying i from 1 by 1 until i > 3
             allocate node initialized
             move i to val
             set nxt to head
             set head to address of node
           end-perform
           set p to head
           perform until p = null
             set address of node to p
             display val
             set q to nxt
             free p
             set p to q
           end-perform
           allocate 10 characters returning p
           set address of bdy to p
           move "hello" to bdy
           display bdy
           free address of bdy
           goback.
