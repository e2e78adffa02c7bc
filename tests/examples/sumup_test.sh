#!/usr/bin/env bash
# The worked program: signs, CR LF, a last line without newline, and a file that is not there.
#
#   sumup_test.sh SUMUP COMPANIONS
set -euo pipefail
sumup=$1
export LD_LIBRARY_PATH=$2${LD_LIBRARY_PATH:+:$LD_LIBRARY_PATH}
work=$(mktemp -d)
trap 'rm -rf "$work"' EXIT

printf '000012345\n00000010p\n000000001\r\n00000100q' >"$work/amounts.txt"
shown=$(AMOUNTS=lsq-$work/amounts.txt "$sumup")
[ "$shown" = 'TOTAL         $112.45  ' ] || { echo "wrong total: '$shown'"; exit 1; }

printf '00000500p\n' >"$work/amounts.txt"
shown=$(AMOUNTS=$work/amounts.txt "$sumup")
[ "$shown" = 'TOTAL          $50.00CR' ] || { echo "wrong negative total: '$shown'"; exit 1; }

status=0
shown=$(AMOUNTS=$work/none.txt "$sumup") || status=$?
[ "$shown" = 'CANNOT OPEN, STATUS 35' ] && [ "$status" = 12 ] || { echo "absent file: '$shown', exit $status"; exit 1; }
