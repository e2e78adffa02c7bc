#!/usr/bin/env bash
# The command over files of programs.
# Catches: records lost or changed on the way through a format, an organization or a backup; damage that verify does not
# see or rebuild makes worse; keys that do not lead to their records after keys add or drop; an exit status that hides any of this.
set -euo pipefail
export LC_ALL=C.UTF-8 VFS_DURABILITY=none
tool=$1 manual=$2
export LD_LIBRARY_PATH=$3${LD_LIBRARY_PATH:+:$LD_LIBRARY_PATH}
work=$(mktemp -d)
trap 'rm -rf "$work"' EXIT
cd "$work"

fail() { echo "$1"; exit 1; }
expect() { [ "$1" = "$2" ] || fail "line ${BASH_LINENO[0]}: expected '$2', got '$1'"; }
status() { local rc=0; "$@" >out 2>err || rc=$?; echo "$rc"; }
same() { cmp "$1" "$2" || fail "line ${BASH_LINENO[0]}: $1 and $2 differ"; }
damage() { printf '\xA5\x5A\xA5\x5A\xA5\x5A\xA5\x5A\xA5\x5A\xA5\x5A\xA5\x5A\xA5\x5A' | dd of="$1" bs=1 seek="$2" conv=notrunc 2>/dev/null; }

# 3,000 records in no order: id, group of 31 (duplicates), a number of its own, text.
for ((i = 0; i < 3000; i++)); do
    n=$((i * 1709 % 3000)); printf '%06d%04d%05d%s\n' "$n" $((n % 31)) $((99999 - n)) "text $n, \"quoted\""
done >in.txt
sort in.txt >sorted.txt
expect "$(status "$tool" load --create -O indexed -r 50 -k 1:6 -k 7:4:d -k 11:5 f in.txt)" 0
expect "$("$tool" verify f)" "f: 3000 records under 3 keys; $("$tool" verify f | grep -o '[0-9]* pages.*')"
"$tool" dump f out.txt 2>/dev/null; same out.txt sorted.txt
# An alternate key keeps the order of writing among equal ones.
"$tool" dump -o 1 f 2>/dev/null >out.txt; sort -s -k1.7,1.10 in.txt >want.txt; same out.txt want.txt

# Formats: there and back again.
fields='ID:6:9,GROUP:4:s9,N:5:92,TEXT:35'
for format in csv jsonl rsd lsq; do
    for options in "" "-F$fields" "-x"; do
        case $format$options in lsq?* | rsd?*) continue ;; esac
        "$tool" dump -t $format $options f text 2>/dev/null
        expect "$(status "$tool" load -f --create -O indexed -r 50 -k 1:6 -t $format $options back text)" 0
        "$tool" dump -f back out.txt 2>/dev/null; same out.txt sorted.txt
        rm text
    done
done
expect "$("$tool" dump -t csv -F"$fields" f 2>/dev/null | sed -n 2p)" '0,0,999.99,"text 0, ""quoted"""'
expect "$("$tool" dump -t jsonl -F"$fields" f 2>/dev/null | sed -n 5p)" '{"ID":4,"GROUP":4,"N":999.95,"TEXT":"text 4, \"quoted\""}'
printf 'A,B,C,D\n-1.5,-7,-200,x\n12.25,7,65535,y\n99999999,7,1,z\n1,-1,65536,w\n' >numbers
expect "$(status "$tool" load --create -r 9 -t csv -F'A:4:p2,B:2:s9,C:2:b,D:1' n numbers)" 3
grep -q '2 refused\|3 refused' err || fail "numbers that do not fit are not refused"
expect "$("$tool" dump -t csv -F'A:4:p2,B:2:s9,C:2:b,D:1' n 2>/dev/null | tail -1)" '12.25,7,65535,y'

# A first column without text, records that are shorter than their fields, numbers that JSON writes with an exponent.
printf '    ABCD\nXXXXYYYY\n' >text; "$tool" load -f -c -r 8 gaps text 2>/dev/null
expect "$("$tool" dump -t csv -F A:4,B:4 gaps 2>/dev/null | sed -n 2p)" ',ABCD'
printf 'ID001short\nID002a longer text\nID003\n' >text; "$tool" load -f -c -r 5-30 short text 2>/dev/null
expect "$("$tool" dump -t csv -F ID:5,TEXT:25 short 2>/dev/null | sed -n 2p)" '10,ID001,short'
for format in csv jsonl; do
    "$tool" dump -t $format -F ID:5,TEXT:25 short text -f 2>/dev/null
    expect "$(status "$tool" load -f -c -r 5-30 -t $format -F ID:5,TEXT:25 back text)" 0
    "$tool" dump -t rsd short a -f 2>/dev/null; "$tool" dump -t rsd back b -f 2>/dev/null; same a b
done
expect "$(status "$tool" dump -t csv -F ID:5,N:10:9 short)" 3; grep -q 'ends within field N' err || fail "a number that is cut off"
# Characters that JSON writes as numbers; a row that is nothing but an empty cell.
printf '{"A":"\\u00e9\\u20ac"}\n{"A":"\\ud83d\\ude00\\u0041"}\n{"A":""}\n' >text
expect "$(status "$tool" load -f -c -r 6 -t jsonl -F A:6 back text)" 0
expect "$("$tool" dump -t csv -F A:6 back 2>/dev/null | tr '\n' ' ')" 'A é€ 😀A "" '
# Spreadsheets: a byte order mark; rows that have other columns than the head.
printf '\xef\xbb\xbfA,B\r\n1,2\r\n3\r\n4,5,6\r\n' >text
expect "$(status "$tool" load -f -c -r 8 -t csv -F A:4,B:4 back text)" 3; grep -q '2 refused' err || fail "rows of other columns"
expect "$("$tool" dump -t csv -F A:4,B:4 back 2>/dev/null | tail -1)" '1,2'
expect "$("$tool" info "STL-$PWD/back" | sed -n 2p)" '  kind        sequential, file system stl'

# The layout of a copybook is that of the fields; items that occur, that redefine and that are no decimal numbers.
printf '           05  ACCT PIC 9(6).\n           05  GRP PIC S9(4).\n           05  NUM PIC 9(3)V99.\n           05  TXT PIC X(35).\n' >rec.cpy
expect "$(PATH=/usr/bin:/bin status "$tool" dump -t csv -L rec.cpy f)" 2
grep -q 'kvrcob.*not installed' err || fail "a missing kvrcob is not told"
PATH=$(dirname "$4"):$PATH
"$tool" dump -t csv -F"$fields" f 2>/dev/null | tail -n +2 >want.txt
"$tool" dump -t csv -L rec.cpy f 2>/dev/null | tail -n +2 >out.txt; same out.txt want.txt
cat >deep.cpy <<'END'
       01  ORDERS.
           05  LINES-OF OCCURS 2 TIMES.
               10  QTY   PIC S9(3)V9 COMP-3.
               10  CODES PIC X OCCURS 2 TIMES.
           05  RATIO     COMP-2.
           05  RATIO-X   REDEFINES RATIO PIC X(8).
           05  COUNTER   PIC S9(4) COMP-5.
           05  FILLER    PIC X.
       01  ANOTHER-RECORD PIC X(9).
END
cat >deep.csv <<'END'
QTY(1),"CODES(1,1)","CODES(1,2)",QTY(2),"CODES(2,1)","CODES(2,2)",RATIO,COUNTER,FILLER
-12.5,a,b,0.1,c,d,0.125,-2,x
END
expect "$(status "$tool" load --create -r 21 -t csv -L deep.cpy deep deep.csv)" 0
expect "$("$tool" dump -t rsd deep 2>/dev/null | od -An -tx1 -v | tr -d ' \n')" '00125d616200001c6364000000000000c03ffeff78'
"$tool" dump -t csv -L deep.cpy deep 2>/dev/null >out.txt
expect "$(tail -1 out.txt)" "$(tail -1 deep.csv)"
expect "$(head -1 out.txt | tr -d '\"')" "$(head -1 deep.csv | tr -d '\"')"
"$tool" dump -f -t jsonl -L deep.cpy deep text 2>/dev/null; sed -i 's/0\.125/1.25e-01/' text
expect "$(status "$tool" load -f -c -r 21 -t jsonl -L deep.cpy back text)" 0
"$tool" dump -t csv -L deep.cpy back 2>/dev/null >want.txt; same out.txt want.txt
# Entries that share a line, values on a line of their own, digits that are not there, a name longer than a line.
mkdir -p "$(printf 'folder%.0s' {1..20})"; cd folderf*
cat >rows.cpy <<'END'
       01  ROWS.  05  A PIC 9(3).  05  B PIC S9(3)V99 COMP-3.
           05  T PIC X(3) VALUE "a. ".
           05  C PIC 9(3) VALUE
               5.
           05  D PIC S9(3).  COPY "more.cpy".
END
echo '           05  P PIC SVPP99 COMP-3.' >more.cpy
cd "$work"; printf 'A,B,T,C,D,P\n12,-1.50,xx,7,-3,012C\n' >text
expect "$(status "$tool" load -f -c -r 17 -t csv -L folderf*/rows.cpy back text)" 0
"$tool" dump -t csv -L folderf*/rows.cpy back 2>/dev/null >out.txt; same out.txt text
printf '           05  N PIC 9.\n           05  T PIC X OCCURS 1 TO 5 DEPENDING ON N.\n' >table.cpy
"$tool" dump -t csv -L table.cpy back >/dev/null 2>&1 || [ $? = 3 ] || fail "a table at the end"
echo '           05  Z PIC X.' >>table.cpy
expect "$(status "$tool" dump -t csv -L table.cpy back)" 2; grep -q 'Z comes after a table' err || fail "an item without a place"
echo 'no copybook at all' >bad.cpy
expect "$(status "$tool" dump -t csv -L bad.cpy f)" 2

# Organizations and file systems.
"$tool" copy -O relative f rel 2>/dev/null
"$tool" copy rel lsq-lines 2>/dev/null; same lines sorted.txt
"$tool" copy -r 50 lsq-lines rsd-bytes 2>/dev/null; expect "$(stat -c %s bytes)" 150000
"$tool" copy -f -r 50 -O indexed -k 1:6 -k 7:4:d rsd-bytes stl-back 2>/dev/null; "$tool" verify back rel >/dev/null
expect "$(status "$tool" copy -f -r 40 rsd-bytes lsq-lines)" 0 # the end of each is blank
expect "$(status "$tool" copy -f -r 50 -O indexed -k 7:4 rsd-bytes back)" 3 # 31 keys for 3,000 records
expect "$("$tool" dump back 2>/dev/null | wc -l)" 31
expect "$(status "$tool" copy f rel)" 1 # it exists

# Keys.
"$tool" keys add -k 14:2:d f; "$tool" verify f | grep -q 'under 4 keys' || fail "keys add"
"$tool" keys drop f 1; "$tool" keys drop f 1; "$tool" verify f | grep -q 'under 2 keys' || fail "keys drop"
"$tool" dump -f f out.txt 2>/dev/null; same out.txt sorted.txt
expect "$("$tool" dump -o 1 f 2>/dev/null | cut -c14,15 | sort -c && echo sorted)" sorted
expect "$(status "$tool" keys add -k 7:4 f)" 1; "$tool" verify f >/dev/null
expect "$(status "$tool" keys drop f 0)" 2
"$tool" keys add -k 7:4:d -k 11:5 f

# Keys of several parts: group and id, then the end of the number and the group.
"$tool" keys add -k 7:4,1:6 --parts 14:2,7:4:d f
"$tool" info f | grep -q 'bytes 7 to 10 and 1 to 6,' || fail "info of a split key"
"$tool" info f | grep -q 'bytes 14 to 15 and 7 to 10, duplicates,' || fail "info of a split key with duplicates"
by_group() { sort -s -k1.7,1.10 -k1.1,1.6 sorted.txt; }
by_end() { sort -s -k1.14,1.15 -k1.7,1.10 sorted.txt; } # equal ones as in the file
last=$(("$("$tool" info f | grep -c '  key ')" - 1))
"$tool" dump -o $((last - 1)) f 2>/dev/null >out.txt; by_group >want.txt; same out.txt want.txt
"$tool" dump -o $last f 2>/dev/null >out.txt; by_end >want.txt; same out.txt want.txt
"$tool" copy f splits 2>/dev/null; "$tool" compact splits 2>/dev/null; "$tool" rebuild splits splits2 2>/dev/null
"$tool" verify f splits splits2 >/dev/null
"$tool" dump -o $((last - 1)) splits2 2>/dev/null >out.txt; by_group >want.txt; same out.txt want.txt
"$tool" keys drop f $((last - 1)); "$tool" verify f >/dev/null
"$tool" dump -o $((last - 1)) f 2>/dev/null >out.txt; by_end >want.txt; same out.txt want.txt
"$tool" keys drop f $((last - 1))
for wrong in 7:4, ,7:4 7:4,0:1 7:4,50:2 7:4,4294967297:1 7:4,1:6:x; do
    [ "$(status "$tool" keys add -k $wrong f)" != 0 ] || fail "the key $wrong was taken"
done
"$tool" verify f >/dev/null

# A file is not written over by what is made of it, under whatever name.
ln -s f link; cp in.txt text
for command in "rebuild -f f f" "rebuild -f f link" "rebuild -f link f" "backup -f f link" "copy -f link f" "dump -f f f" "dump -f f link" \
    "load -c -f -r 50 rsd-text text"; do
    expect "$(status "$tool" $command)" 2; grep -q 'the same file' err || fail "$command"
done
same text in.txt; "$tool" dump -f f out.txt 2>/dev/null; same out.txt sorted.txt
"$tool" backup f target; ln -s target link2; "$tool" rebuild -f f link2 2>/dev/null
[ -L link2 ] && [ ! -e link2.mdb ] || fail "a store beside a link"
"$tool" verify target link2 >/dev/null
mkdir folder; mkfifo pipe; ln -s loop loop
for name in folder pipe loop absent; do
    for command in info dump verify compact "keys drop"; do
        more=; [ "$command" = info ] || [ "$command" = dump ] || [ "$command" = verify ] || [ "$command" = compact ] || more=1
        expect "$(status timeout 600 "$tool" $command $name $more)" 1; grep -q "$name: " err || fail "$command $name"
    done
    [ $name = absent ] || expect "$(status timeout 600 "$tool" backup -f f $name)" "$([ $name = folder ] && echo 1 || echo 0)"
done

# A user who may read only: no lock file can be used, and nothing may be made.
nobody=(setpriv --reuid 65534 --regid 65534 --clear-groups)
chmod 755 .
if [ "$(id -u)" = 0 ] && "${nobody[@]}" "$tool" --version >/dev/null 2>&1; then
    "$tool" backup f foreign
    for command in "info foreign" "verify foreign" "dump foreign"; do
        expect "$(status "${nobody[@]}" "$tool" $command)" 0
        [ ! -s err ] || [ "$command" = "dump foreign" ] || fail "$command: $(cat err)"
    done
    mkdir -m 777 open; expect "$(status "${nobody[@]}" "$tool" backup foreign open/f)" 0; "$tool" verify open/f >/dev/null
    for command in "compact foreign" "keys drop foreign 1" "backup foreign made" "rebuild foreign made" "load foreign in.txt"; do
        expect "$(status "${nobody[@]}" "$tool" $command)" 1; grep -q 'Permission denied' err || fail "$command: $(cat err)"
    done
    [ ! -e made ] && [ ! -e foreign.mdb-lock ] || fail "something was made"
    "$tool" verify foreign >/dev/null
else
    echo "not run: what a user without rights is told (needs root and setpriv)"
fi

# A change of keys that was interrupted after the store was renamed.
"$tool" backup f half; cp half half.kvr2-new
"$tool" backup f other; "$tool" keys drop other 1
cp other half.kvr2-new; cp other.mdb half.mdb
expect "$(status "$tool" verify half)" 3
"$tool" compact half 2>/dev/null; "$tool" verify half >/dev/null; [ ! -e half.kvr2-new ] || fail "not completed"

# What a command left before the file was made anew is not for the new one.
cp other half.kvr2-new
expect "$(status "$tool" compact half)" 0; "$tool" verify half >/dev/null; [ ! -e half.kvr2-new ] || fail "still there"

# Compact, backup, rebuild.
"$tool" compact f 2>/dev/null; "$tool" backup f g; "$tool" verify f g >/dev/null
expect "$(status "$tool" backup f g)" 1
# A copy that fails leaves the one before.
expect "$(ulimit -f 20; status "$tool" backup -f f g)" 1; grep -q 'g.mdb: File too large' err || fail "a full disk is not told"
"$tool" verify g >/dev/null
[ "$(echo g.*)" = "g.mdb g.mdb-lock" ] || fail "left over: $(echo g.*)"
"$tool" rebuild f whole 2>/dev/null; "$tool" dump -f whole out.txt 2>/dev/null; same out.txt sorted.txt
pages=$(($(stat -c %s g.mdb) / 4096))
for ((page = 0; page < pages; page += page < 8 ? 1 : 4 * ${KVR2_TEST_SHARE:-1})); do
    cp f g; cp f.mdb g.mdb
    damage g.mdb $((page * 4096)); damage g.mdb $((page * 4096 + 16))
    rc=$(status "$tool" rebuild -f g new)
    "$tool" verify new >/dev/null || fail "page $page: the rebuilt file is damaged"
    "$tool" dump -f new out.txt 2>/dev/null
    [ "$(comm -23 out.txt sorted.txt | wc -l)" = 0 ] || fail "page $page: records that never were"
    lost=$(comm -13 out.txt sorted.txt | wc -l)
    seen=$(status "$tool" verify g)
    case "$seen $rc $((lost > 0))" in "3 3 "? | "3 0 0" | "0 0 0") ;; *) fail "page $page: verify $seen, rebuild $rc, $lost lost" ;; esac
    [ "$lost" -le 200 ] || fail "page $page: $lost records are lost"
done
cp f.mdb g.mdb
# A head page with a page size that cannot be: the other one leads to the records.
for head in 0 4096; do
    echo 000001abcd >one; "$tool" load -f -c -O indexed -r 10 -k 1:6 heads one 2>/dev/null
    printf '\0\0\1\0' | dd of=heads.mdb bs=1 seek=$((head + 40)) conv=notrunc 2>/dev/null
    expect "$(status "$tool" verify heads)" 3
    expect "$(status "$tool" rebuild -f heads whole)" 3
    "$tool" dump whole out.txt -f 2>/dev/null; same out.txt one
done
for head in 0 4096; do printf '\xFF\xFF\xFF\xFF\xFF\xFF\xFF\xFF' | dd of=g.mdb bs=1 seek=$((head + 136)) conv=notrunc 2>/dev/null; done
expect "$(status "$tool" info g)" 0; expect "$(status "$tool" verify g)" 3
head -c 100000 f.mdb >g.mdb
expect "$(status "$tool" verify g)" 3
expect "$(status "$tool" rebuild -f g new)" 3; "$tool" verify new >/dev/null
cp f.mdb g.mdb; damage g 100
expect "$(status "$tool" verify g)" 3
expect "$(status "$tool" info g)" 1
expect "$(status "$tool" rebuild -f g new)" 1 # what it was is lost with the header
expect "$(status "$tool" rebuild -f g new -O indexed -r 50 -k 1:6 -k 14:2:d -k 7:4:d -k 11:5)" 0
damage rel $((4096 + 54 * 10))
expect "$(status "$tool" verify rel)" 3
expect "$(status "$tool" rebuild rel newrel)" 3
expect "$("$tool" dump newrel 2>/dev/null | wc -l)" 2999
truncate -s -20 newrel
expect "$(status "$tool" verify newrel)" 3
expect "$(status "$tool" rebuild -f newrel rel)" 3; grep -q '2998 records kept, 1 lost' err || fail "a record that is cut off"

# Wrong usage, and the manual.
expect "$(status "$tool")" 2
expect "$(status "$tool" frobnicate f)" 2
expect "$(status "$tool" verify)" 2
expect "$(status "$tool" compact -k 1:2 f)" 2
expect "$(status "$tool" dump -t xml f)" 2
expect "$(status "$tool" load -x f in.txt)" 2; grep -q 'csv or jsonl' err || fail "lines in hexadecimal digits"
cp f bare
expect "$(status "$tool" backup bare new2)" 1; grep -q 'bare.mdb: No such file' err || fail "a missing store: $(cat err)"
expect "$(status "$tool" verify bare)" 3; grep -q 'cannot be opened (No such file' out || fail "a missing store: $(cat out)"
: >empty; expect "$(status "$tool" info empty)" 1; grep -q 'it is empty' err || fail "an empty file"
expect "$(status "$tool" info absent)" 1
expect "$(status "$tool" dump rsd-bytes)" 1
expect "$(status "$tool" dump f /dev/full -f)" 1
"$tool" --help >help
for command in $(sed -n '/^Commands:/,/^$/p' help | awk 'NR>1 && NF {print $1}'); do
    grep -q "^\.B $command\( add\)\?$" "$manual" || fail "the manual lacks $command"
done
MANWIDTH=80 man -l "$manual" 2>&1 >/dev/null | grep . && fail "the manual has faults"
echo "kvr2-file does what its manual says"
