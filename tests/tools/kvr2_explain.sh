#!/usr/bin/env bash
# The command that explains messages and statuses: each form once, and what is not there.
# Catches: an entry that is another's, a status that modules give and no page explains, a bad exit status.
set -euo pipefail
tool=$1 source=$2
fail() { echo "$1"; exit 1; }
"$tool" 200 | grep -q 'failed with file status' || fail "message 200"
[ "$("$tool" ZVK096C)" = "$("$tool" 96)" ] || fail "forms of a number"
"$tool" --status 35 | grep -q 'not there' || fail "status 35"
[ "$("$tool" --status 5)" = "$("$tool" --status 05)" ] || fail "forms of a status"
for wrong in '4711 1' '--status,77 1' '--status 2' 'x 2'; do
    rc=0
    "$tool" ${wrong% *} >/dev/null 2>&1 || rc=$?
    [ "$wrong" = "--status,77 1" ] && { rc=0; "$tool" --status 77 >/dev/null 2>&1 || rc=$?; }
    [ "$rc" = "${wrong##* }" ] || fail "exit status of $wrong is $rc"
done
# Every status that the library or a module sets is explained.
grep -rhoE 'zvkSetStatus\([a-z>-]+, [0-9]+' "$source/fileio" "$source/companions" | grep -oE '[0-9]+$' | sort -u | while read -r status; do
    "$tool" --status "$status" >/dev/null || fail "status $status has no entry in docs/statuses.md"
done
