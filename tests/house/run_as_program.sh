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
[ -f "$stage/opt/kvr2/usr/share/locale/C/kvr2run.cat" ] || { echo "no catalog was installed"; exit 1; }
