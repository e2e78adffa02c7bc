       >>SOURCE FORMAT IS FREE
*> EXTEND of an optional file of lines, VALUE OF FILE-ID by an item, DELETE FILE.
      identification division.
      program-id. v3.
      environment division.
      input-output section.
      file-control.
          select optional log-file assign to "app.log"
              organization is line sequential file status is ws-fs.
          select tmp assign to disk file status ws-fs.
      data division.
      file section.
      fd log-file.
      01 log-line pic x(100).
      fd tmp value of file-id is ws-name.
      01 tmp-rec pic x(10).
      working-storage section.
      01 ws-fs pic 99.
      01 ws-name pic x(20) value "tmpfile.dat".
      01 ws-n binary-long value 0.
      procedure division.
          open extend log-file
          display ws-fs
          write log-line from "first"
          string "sec" delimited by size "ond" delimited by size into log-line
          write log-line
          close log-file
          open extend log-file
          write log-line from "third"
          close log-file
          open input log-file
          perform until ws-fs = 10
             read log-file at end exit perform
             not at end add 1 to ws-n display ws-n ":" function trim(log-line)
             end-read
          end-perform
          close log-file
          open output tmp
          write tmp-rec from "x" end-write
          close tmp
          call "CBL_CHECK_FILE_EXIST" using ws-name log-line returning ws-n
          display ws-n
          delete file tmp
          call "CBL_CHECK_FILE_EXIST" using ws-name log-line returning ws-n
          display ws-n
          goback returning 0
          .
