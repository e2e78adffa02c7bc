#!/usr/bin/env bash
# ZONES over the text of tzdata, checked by an independent reading of it.
#
#   zones_test.sh SOURCE BUILD
set -euo pipefail
ledger=$1/examples/ledger build=$2
work=$(mktemp -d)
trap 'rm -rf "$work"' EXIT
export LD_LIBRARY_PATH=$build/companions${LD_LIBRARY_PATH:+:$LD_LIBRARY_PATH} LC_ALL=C
"$ledger/run-zones" "$build/examples/ledger" /usr/share/zoneinfo/zone1970.tab "$work"
"$ledger/data/check_zones.py" /usr/share/zoneinfo/zone1970.tab "$work/zones.txt"
