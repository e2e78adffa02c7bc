#!/usr/bin/env bash
# The library run as a program, from the build tree and after an install.
# Catches: a lost program interpreter section, a lost execute bit, an entry that crashes.
set -euo pipefail
library=$1
build=$2

stage=$(mktemp -d)
trap 'rm -rf "$stage"' EXIT
DESTDIR=$stage cmake --install "$build" --prefix /opt/kvr2 >/dev/null

for file in "$library" "$stage/opt/kvr2/lib/libkvr2_64r.so"; do
    text=$("$file" 2>&1 >/dev/null) || { echo "$file: exit $?: $text"; exit 1; }
    case "$text" in
        *"libkvr2_64r.so:
Congratulations, you have found an easter-egg!
"*"	KVR2_6.1.0"*) ;;
        *) echo "$file: said: $text"; exit 1 ;;
    esac
done
# Under a program's name the entry refuses: a program linked as a subroutine would end up here.
cp "$library" "$stage/LEDGER"
rc=0
text=$("$stage/LEDGER" 2>&1 >/dev/null) || rc=$?
case "$rc $text" in
    "1 
Error: You called/invoked a program (LEDGER) that was linked as a subroutine"*) ;;
    *) echo "LEDGER: exit $rc: $text"; exit 1 ;;
esac
[ -f "$stage/opt/kvr2/usr/share/locale/C/kvr2run.cat" ] || { echo "no catalog was installed"; exit 1; }
