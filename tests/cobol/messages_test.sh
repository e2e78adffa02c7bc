#!/usr/bin/env bash
# How messages look: carets below their columns, JSON that is JSON, sources that are no text. Catches: carets that tabs
# and letters of several bytes move, bytes that a terminal obeys, notes and ends that only people see.
#
#   messages_test.sh KVRCOB
source "$(dirname "$0")/says.sh"

cat >carets.cbl <<'END'
       IDENTIFICATION DIVISION.
       PROGRAM-ID. CARETS.
       PROCEDURE DIVISION.
TABMOVE 1 TO ONE.
TABTABDISPLAYTAB"x"TABTWO.
           DISPLAY "äöü" NAME-3.
           DISPLAY "日本e\u301" FOUR.
           DISPLAY "BYTESESC" FIVE.
END
sed -i "s/TAB/$(printf '\t')/g; s/BYTES/$(printf '\344\366')/; s/ESC/$(printf '\033')/; s/e.u301/$(printf 'e\314\201')/" carets.cbl
cat >wanted <<'END'
carets.cbl:4:19: error: ONE is not declared
         MOVE 1 TO ONE.
                   ^~~
carets.cbl:5:33: error: TWO is not declared
                 DISPLAY "x"     TWO.
                                 ^~~
carets.cbl:6:29: error: NAME-3 is not declared
            DISPLAY "äöü" NAME-3.
                          ^~~~~~
carets.cbl:7:32: error: FOUR is not declared
            DISPLAY "日本é" FOUR.
                            ^~~~
carets.cbl:8:26: error: FIVE is not declared
            DISPLAY "BYTES?" FIVE.
                          ^~~~
END
sed -i "s/BYTES/$(printf '\344\366')/; s/é/$(printf 'e\314\201')/" wanted
"$kvrcob" check carets.cbl 2>said
cmp wanted said || fails "the carets are $(cat said)"
says 1 'carets.cbl:4:15' "$kvrcob" check -free -ftabstop=4 carets.cbl

# A word of a million letters is not told whole.
{ sed '$d' h.cbl; printf 'display '; head -c 1000000 /dev/zero | tr '\0' x; echo .; } >long.cbl
"$kvrcob" check long.cbl 2>said
[ "$(wc -c <said)" -lt 2000 ] && grep -q 'long.cbl:5:9: error: XXX' said || fails "$(head -c 300 said)"

# Where a text was looked for.
sed 's/display "hello"/copy text of LIB/' h.cbl >places.cbl
says 1 'the text text of LIB to be copied was not found in LIB/, lib/, ., inc/LIB/, inc/lib/, inc/' \
    "$kvrcob" check -I inc places.cbl
mkdir lib
says 1 'was not found in LIB/, lib/, inc/LIB/, inc/lib/, inc/' env COBCPY=inc "$kvrcob" check places.cbl

# JSON: UTF-8 whatever the source is in, the COPY as a note, and the end of many errors.
name=$(printf 'na\344me.cpy')
for n in {1..120}; do echo "           MOVE 1 TO X$n."; done >"$name"
printf '       PROCEDURE DIVISION.\n           DISPLAY "\344" NONE.\n           COPY "%s".\n' "$name" >many.cbl
"$kvrcob" check -fdiagnostics-format=json many.cbl 2>said
python3 - said <<'END' || fails 'JSON'
import json, sys
told = [json.loads(line) for line in open(sys.argv[1], encoding="utf-8")]
assert told[0] == {"file": "many.cbl", "line": 2, "column": 24, "severity": "error", "message": "NONE is not declared"}, told[0]
assert told[1]["file"] == "na\ufffdme.cpy" and told[1]["line"] == 1, told[1]
assert told[2] == {"file": "many.cbl", "line": 3, "column": 12, "severity": "note", "message": "copied from here"}, told[2]
assert told[-1]["severity"] == "note" and "too many errors" in told[-1]["message"], told[-1]
END

# Texts that are no text here.
for encoding in UTF-16 UTF-16BE UTF-32; do
    iconv -t $encoding h.cbl >foreign.cbl
    says 1 "foreign.cbl:1:1: error: this text is in ${encoding%BE}" "$kvrcob" check foreign.cbl
done
for encoding in IBM1047 IBM037; do
    sed 's/^/       /' h.cbl | iconv -t $encoding >foreign.cbl
    says 1 'this text is in EBCDIC; make it ASCII or UTF-8 first' "$kvrcob" check foreign.cbl
done
tr '\n' '\r' <h.cbl >returns.cbl
says 0 'display "hello"' "$kvrcob" -E returns.cbl
exit $failed
