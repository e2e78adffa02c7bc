#!/usr/bin/env bash
# Items in gdb under their COBOL names: each usage and sign, tables, a contained program that shows its own items and the
# GLOBAL ones, bytes that are no number. Catches: a map that disagrees with the layout, lines that the source does not have.
#
#   debugger_test.sh KVRCOB SOURCE-TREE
set -euo pipefail
kvrcob=$1 tree=$2
work=$(mktemp -d)
trap 'rm -rf "$work"' EXIT
export LC_ALL=C
unset DEBUGINFOD_URLS
"$kvrcob" -g -O0 -o "$work/shown" "$tree/tests/cobol/debugger/shown.cbl"
cd "$work"
gdb -nx -batch -ex "source $tree/cobol/driver/gdb_cobol.py" -x "$tree/tests/cobol/debugger/shown.gdb" ./shown >said 2>&1 || true
grep -E '^( *[A-Z-]+( \([0-9, ]+\))?( = .*)?|There is .*| *\.\.\. .*)$' said >shown.txt || true
diff "$tree/tests/cobol/debugger/shown.expected" shown.txt || { cat said; exit 1; }
# The library brings the extension with it.
gdb -nx -batch -iex "set auto-load safe-path /" -ex "break main" -ex run -ex "help cobol" ./shown 2>&1 | grep -q "Programs in COBOL" || {
    echo "gdb does not find the extension by itself"
    exit 1
}
