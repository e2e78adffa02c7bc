#!/usr/bin/env bash
# The programs that teach: each compiles without a warning and prints what its page of expected output says.
#
#   first_test.sh KVRCOB PROGRAMS
set -euo pipefail
kvrcob=$1 programs=$2
work=$(mktemp -d)
trap 'rm -rf "$work"' EXIT
export XDG_CACHE_HOME=$work LC_ALL=C
unset LD_LIBRARY_PATH COBRTOPT COBCPY SYSIN SYSOUT
failed=0 run=0
for source in "$programs"/*.cbl; do
    name=$(basename "$source" .cbl)
    input=/dev/null
    [ ! -e "$programs/$name.input" ] || input=$programs/$name.input
    mkdir "$work/$name"
    cd "$work/$name"
    status=0
    "$kvrcob" run -Wobsolete "$source" <"$input" >out 2>err || status=$?
    if [ "$status" != 0 ] || [ -s err ] || ! diff "$programs/$name.expected" out; then
        echo "$name: exit status $status"
        cat err
        failed=1
    fi
    run=$((run + 1))
done
# The menu ends where its input does.
[ "$(printf 'S\n' | timeout 60 "$kvrcob" run "$programs/menu.cbl" | tail -n 1)" = goodbye ] || { echo "menu: no end"; failed=1; }
[ "$run" -ge 10 ] || { echo "only $run programs"; exit 1; }
exit "$failed"
