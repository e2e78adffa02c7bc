#!/usr/bin/env bash
# Command lines that are unusual: names with blanks and quotes, results without a place, folders and
# compilers that are not there, a cache that cannot be written, two compilations at once, one that
# is interrupted. Catches: a source that is overwritten, litter, a fault of the machine that is told
# as something else.
#
#   driver_test.sh KVRCOB
source "$(dirname "$0")/says.sh"

N=$(printf 'n%.0s' {1..251}) # the longest name that a file can have, with its ending
for name in "$N.cbl" 'two words.cbl' "q'uo\"te.cbl" 'dollar$x;`y`.cbl' '-dash.cbl'; do
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
says 1 'two of the results are called h.o' "$kvrcob" -c h.cbl ./h.cbl
printf '%s\n' 'identification division.' 'program-id. copies.' 'data division.' 'working-storage section.' 'copy "text.cpy".' >copies.cbl
echo '01 item pic x.' >text.cpy
says 1 'would overwrite text.cpy, which it is made of' "$kvrcob" -S -o text.cpy copies.cbl
says 0 item cat text.cpy
says 1 'cannot write standard output: No space left on device' bash -c "'$kvrcob' -E h.cbl >/dev/full"
ln -s there link
says 0 '' "$kvrcob" -S -o link h.cbl
[ -L link ] && [ -f there ] || fails 'a link is not written through'

# Objects: the first one's program is the main program.
sed 's/hello/other/; s/stop run/exit program/' h.cbl >other.cbl
sed 's/stop run/call "other". stop run/' h.cbl >calls.cbl
says 0 '' "$kvrcob" -O0 -c calls.cbl other.cbl
says 0 '' "$kvrcob" -o both calls.o other.o
[ "$(./both)" = $'hello\nother' ] || fails "of two objects came $(./both)"
says 0 '' "$kvrcob" -o both other.o calls.o
[ "$(./both)" = other ] || fails "of two objects came $(./both)"

# A module as a library: only CALL names what is in it.
says 0 '' "$kvrcob" -O0 -m -o libothers.so other.cbl
for library in '-L. -lothers' ./libothers.so; do
    # shellcheck disable=SC2086
    says 0 '' "$kvrcob" -O0 -o both calls.cbl $library
    says 0 $'hello\nother' env LD_LIBRARY_PATH=. ./both
done

# -MD, as make reads it.
mkdir 'in, $x'
printf '%s\n' 'identification division.' 'program-id. names.' 'data division.' 'working-storage section.' \
    'copy "c d$e#f.cpy".' 'copy "x:y%z.cpy".' 'procedure division.' '    display a b.' >'in, $x/names.cbl'
echo '01 a pic 9.' >'in, $x/c d$e#f.cpy'
echo '01 b pic 9.' >'in, $x/x:y%z.cpy'
says 0 '' "$kvrcob" -MD -S -o 'p%q $r#s.c' 'in, $x/names.cbl'
touch -d 2001-01-01 'in, $x'/*
touch -d 2002-01-01 'p%q $r#s.c'
printf 'include p%%q\\ $$r\\#s.d\np\\%%q\\ $$r\\#s.c:\n\techo making\n' >makefile
for changed in 'in, $x/names.cbl' 'in, $x/c d$e#f.cpy' 'in, $x/x:y%z.cpy'; do
    says 0 'up to date' make 'p%q $r#s.c'
    touch "$changed"
    says 0 making make 'p%q $r#s.c'
    touch -d 2001-01-01 "$changed"
done
says 0 '' "$kvrcob" -MD -c -O0 calls.cbl other.cbl
says 0 'calls.o: calls.cbl' cat calls.d
says 0 'other.o: other.cbl' cat other.d

# Options that do not go together, or are none.
says 2 'run and check go without' "$kvrcob" run -c h.cbl
says 2 'run and check go without' "$kvrcob" -S check h.cbl
for options in '-S -m' '-m -S'; do
    says 0 '' "$kvrcob" $options -o module.c h.cbl
    says 0 'Made by kvrcob' head -1 module.c
    says 1 '' grep 'int main' module.c
done
says 2 '-o names what run and check do not make' "$kvrcob" check -o x h.cbl
says 2 '-ftabstop takes a number' "$kvrcob" -ftabstop=4x check h.cbl
says 2 '-D takes NAME' "$kvrcob" -D =3 check h.cbl
sed '2a\
author. me.' h.cbl >author.cbl
says 1 'error: the paragraph AUTHOR is obsolete [-Wobsolete]' "$kvrcob" -Werror check author.cbl
says 0 'warning: the paragraph' "$kvrcob" -Werror -Wno-error check author.cbl
says 0 'there is no warning obsolet' "$kvrcob" -Wno-obsolet check h.cbl

# The value of -D beside literals of >>IF, in their own letters.
printf '%s\n' '>>IF MODE = "prod"' 'DISPLAY "as asked".' '>>ELSE' 'DISPLAY "otherwise".' '>>END-IF' >mode.cpy
sed 's/display "hello"/copy "mode.cpy"/' h.cbl >mode.cbl
says 0 'as asked' "$kvrcob" -E -DMODE=prod mode.cbl
says 0 otherwise "$kvrcob" -E -DMODE=PROD mode.cbl

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
says 1 'cannot run the C compiler ./h.cbl: Permission denied' env CC=./h.cbl "$kvrcob" h.cbl
says 0 '' env CC="${CC:-cc}  -DX" "$kvrcob" -O0 -o h h.cbl
# A compiler that is not GCC.
printf '#!/bin/sh\nfor word; do [ "$word" != -fno-tree-pta ] || exit 1; done\nexec %s "$@"\n' "${CC:-cc}" >othercc
chmod +x othercc
says 0 hello env CC=./othercc "$kvrcob" run -O0 h.cbl
# An installation in a folder with an odd name.
mkdir -p 'in, $x/bin'
cp "$kvrcob" 'in, $x/bin'
ln -s "$(dirname "$kvrcob")/../kvrcob/lib" 'in, $x/lib'
ln -s "$(sed -n 's/.* -I\([^ ]*\) .*/\1/p' <("$kvrcob" -v -O0 -o h h.cbl 2>&1))" 'in, $x/include'
says 0 '' 'in, $x/bin/kvrcob' -O0 -o h h.cbl
says 0 'in, $x/lib' readelf -d h
says 0 hello ./h

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

nothing_left '^(never|\.kvrcob)'

# One that ends as it fills a file, or as nobody reads what it says: what was there stays.
{ cat letters.cbl; for n in {1..400}; do echo "000700     DISPLAY \"LINE $n\"."; done; } >long.cbl
echo before >long.c
says 153 'cannot write long.c: File too large' bash -c "ulimit -f 4; exec '$kvrcob' -S long.cbl"
says 0 before cat long.c
printf '#!/bin/sh\nkill -PIPE $PPID; sleep 1\n' >pipecc
chmod +x pipecc
says 141 '' env CC=./pipecc "$kvrcob" -o never h.cbl
nothing_left '^(never|\.kvrcob)'
exit $failed
