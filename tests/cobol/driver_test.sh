#!/usr/bin/env bash
# Command lines that are unusual: names with blanks and quotes, results without a place, folders and
# compilers that are not there, a cache that cannot be written, two compilations at once, one that
# is interrupted. Catches: a source that is overwritten, litter, a fault of the machine that is told
# as something else.
#
#   driver_test.sh KVRCOB
set -uo pipefail
kvrcob=$(realpath "$1")
work=$(mktemp -d)
trap 'chmod -R u+w "$work"; rm -rf "$work"' EXIT
export LC_ALL=C XDG_CACHE_HOME=$work/cache TMPDIR=$work/tmp
mkdir "$work/tmp" "$work/tree"
cd "$work/tree"
failed=0

# says STATUS TEXT COMMAND...: the command ends with the status, and its output or message has the text.
says() {
    local status=$1 text=$2 said got
    shift 2
    said=$("$@" 2>&1 </dev/null)
    got=$?
    if [ $got != "$status" ] || [[ $said != *"$text"* ]]; then
        echo "FAILED: $* gave $got, expected $status and '$text':"
        echo "$said"
        failed=1
    fi
}

printf '%s\n' 'identification division.' 'program-id. hello.' 'procedure division.' '    display "hello".' '    stop run.' >h.cbl
for name in 'two words.cbl' "q'uo\"te.cbl" 'dollar$x;`y`.cbl' '-dash.cbl'; do
    cp h.cbl "./$name"
    says 0 '' "$kvrcob" -O0 "./$name"
    says 0 hello "./${name%.cbl}"
done

# Sequence numbers tell fixed form, though letters mark most lines in column 7.
printf '%s\n' '000100 IDENTIFICATION DIVISION.' '000200 PROGRAM-ID. LETTERS.' '000300PDATA DIVISION.' \
    '000400 PROCEDURE DIVISION.' '000500YP1. DISPLAY "LETTERS".' '000600P    STOP RUN.' >letters.cbl
says 0 'letters.cbl: fixed form' "$kvrcob" -v check letters.cbl

# Results without a place.
mkdir folder
cp h.cbl source
says 1 'cannot write no/such/h: No such file or directory' "$kvrcob" -O0 -o no/such/h h.cbl
says 1 'cannot write no/such/h.c: No such file or directory' "$kvrcob" -S -o no/such/h.c h.cbl
says 1 'cannot write folder: Is a directory' "$kvrcob" -O0 -o folder h.cbl
says 1 'would overwrite the source' "$kvrcob" -O0 source
says 1 'would overwrite the source' "$kvrcob" -O0 -o ./h.cbl h.cbl
says 2 '-o goes with one source' "$kvrcob" -S -o both.c h.cbl source
says 1 'there is a program HELLO in h.cbl and one in source' "$kvrcob" -O0 -o both h.cbl source
says 0 '' cmp h.cbl source

# The order of texts: small letters, capitals, digits, but where a program names an order.
cat >order.cbl <<'END'
identification division.
program-id. ordered.
environment division.
configuration section.
*>object-computer. any program collating sequence is plain.
special-names. alphabet plain is native.
data division.
working-storage section.
01 t value "1Ba9". 05 e pic x occurs 4.
procedure division.
    sort e ascending.
    if "a" < "1" display t " letters first" else display t " digits first".
    stop run.
END
sed 's/^\*>//' order.cbl >named.cbl
says 0 '19Ba digits first' "$kvrcob" run -O0 order.cbl
says 0 'aB19 letters first' "$kvrcob" run -O0 -febcdic order.cbl
says 0 '19Ba digits first' "$kvrcob" run -O0 -febcdic named.cbl

# Sources that are not there.
says 1 'cannot read none.cbl: No such file or directory' "$kvrcob" none.cbl
says 1 'cannot read folder: Is a directory' "$kvrcob" folder
says 1 'holds no program' "$kvrcob" check /dev/null

# The machine.
says 1 "cannot make a temporary directory $work/none/kvrcob." env TMPDIR="$work/none" "$kvrcob" h.cbl
says 1 'there is no C compiler cc: install one' env PATH=/nonexistent "$kvrcob" h.cbl
says 1 'there is no C compiler nosuchcc: install one' env CC="nosuchcc -m64" "$kvrcob" h.cbl
says 0 '' env CC="${CC:-cc}  -DX" "$kvrcob" -O0 -o h h.cbl
says 0 hello "$kvrcob" run -O0 h.cbl
says 0 hello env XDG_CACHE_HOME=/dev/null "$kvrcob" run -O0 h.cbl
says 0 hello env -u XDG_CACHE_HOME HOME=/dev/null "$kvrcob" run -O0 h.cbl
says 0 hello env -u XDG_CACHE_HOME -u HOME "$kvrcob" run -O0 h.cbl

# A function of another source, with a parameter of any length.
cat >functions.cbl <<'COBOL'
       identification division.
       function-id. greeting.
       data division.
       linkage section.
       01 whom pic x any length.
       01 text-of pic x(12).
       procedure division using whom returning text-of.
           string "HELLO " whom delimited by size into text-of
           goback.
       end function greeting.
COBOL
cat >uses.cbl <<'COBOL'
       identification division.
       program-id. uses.
       environment division.
       configuration section.
       repository. function greeting.
       procedure division.
           display greeting ("BOB") "!".
COBOL
says 0 '' "$kvrcob" -O0 -o uses uses.cbl functions.cbl
says 0 'HELLO BOB   !' ./uses
says 1 'FUNCTION GREETING is not supported yet' "$kvrcob" check uses.cbl

# Two at once: each time the program is whole.
for turn in 1 2 3; do
    "$kvrcob" -O0 -o twice h.cbl & one=$!
    "$kvrcob" -O0 -o twice h.cbl || failed=1
    wait $one || failed=1
    says 0 hello ./twice
done

# A C compiler that is interrupted: it has made the beginning of a result by then.
cat >slowcc <<'SLOW'
#!/bin/sh
while [ $# -gt 1 ]; do [ "$1" = -o ] && echo part >"$2"; shift; done
kill -TERM $PPID
exec sleep 20
SLOW
chmod +x slowcc
says 143 '' env CC=./slowcc "$kvrcob" -o never h.cbl

left=$(ls -A "$TMPDIR"; ls | grep -E '^(never|twice\.|h\.[0-9])')
[ -z "$left" ] || { echo "FAILED: left over: $left"; failed=1; }
exit $failed
