#!/usr/bin/env bash
# Items in gdb under their COBOL names: each usage and sign, tables, a contained program that shows its own items and the
# GLOBAL ones, bytes that are no number, at each optimisation. Catches: a map that disagrees with the layout, items that
# the C compiler has taken away, lines that the source does not have, steps that lead out of it.
#
#   debugger_test.sh KVRCOB SOURCE-TREE
set -euo pipefail
kvrcob=$1 tree=$2
work=$(mktemp -d)
trap 'rm -rf "$work"' EXIT
export LC_ALL=C
unset DEBUGINFOD_URLS
cp "$tree/tests/cobol/debugger/"* "$work"
cd "$work"
extension="source $tree/cobol/driver/gdb_cobol.py"
for level in -O0 -O1; do
    "$kvrcob" -g $level -o shown shown.cbl
    gdb -nx -batch -ex "$extension" -x shown.gdb ./shown >said 2>&1 || true
    grep -E '^( *[A-Z-]+( \([0-9, ]+\))?( = .*)?|There is .*|.* is ambiguous.*| *\.\.\. .*)$' said >shown.txt || true
    diff shown.expected shown.txt || { echo "with $level:"; cat said; exit 1; }
done

# Two records of one program have the name; the program's symbol finds the program, too.
said=$(gdb -nx -batch -ex "$extension" -ex "break SHOWN" -ex run -ex "cobol print TOTAL" ./shown 2>&1 || true)
[[ $said = *"TOTAL is ambiguous"* ]] || { echo "TOTAL is not ambiguous: $said"; exit 1; }

# From the program's beginning each step is one statement of the source.
"$kvrcob" -g -O0 -o shown shown.cbl
steps=$(gdb -nx -batch -ex "$extension" -ex "break p1_body" -ex run -ex step -ex step -ex step -ex step ./shown 2>&1 | sed -n 's/^\([0-9][0-9]*\)\t.*/\1/p')
[ "$steps" = $'2\n23\n24\n25\n26' ] || { echo "the steps are" $steps; exit 1; }
# The library brings the extension with it.
gdb -nx -batch -iex "set auto-load safe-path /" -ex "break main" -ex run -ex "help cobol" ./shown 2>&1 | grep -q "Programs in COBOL" || {
    echo "gdb does not find the extension by itself"
    exit 1
}
