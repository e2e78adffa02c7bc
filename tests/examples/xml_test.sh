#!/usr/bin/env bash
# Statements as XML: written by XML GENERATE and read back by XML PARSE, and read once more by another parser, which has to
# find the postings that the ledger's own totals count.
#
#   xml_test.sh SOURCE BUILD
set -euo pipefail
ledger=$1/examples/ledger build=$2
programs=$build/examples/ledger
work=$(mktemp -d)
trap 'rm -rf "$work"' EXIT
export LD_LIBRARY_PATH=$build/companions${LD_LIBRARY_PATH:+:$LD_LIBRARY_PATH} PATH=$build/bin:$PATH LC_ALL=C

"$ledger/data/generate.py" "$work/data" --accounts 30 --transactions 6000 # some accounts need a second document
"$ledger/run" "$programs" "$work/data" "$work/run" >"$work/totals" || [ $? = 4 ]
"$ledger/run-xml" "$programs" "$work/run" >"$work/out" || { cat "$work/out"; exit 1; }
grep -q '^STATEMENTS AGREE' "$work/out"
python3 - "$work/run/statements.xml" "$work/totals" "$work/out" <<'END'
import re, sys
from decimal import Decimal
from xml.etree import ElementTree

documents, totals, out = sys.argv[1:]
amounts = Decimal(0)
postings = accounts = 0
for line in open(documents, encoding="utf-8"):
    statement = ElementTree.fromstring(line)
    accounts += 1
    for posting in statement.iter("POSTING"):
        postings += 1
        amounts += Decimal(posting.find("AMOUNT").text)


def value(label, name):
    text = re.search(rf"^{label} +(.*?) *$", open(name).read(), re.M)[1]
    return Decimal(re.sub(r"[$,CR]", "", text)) * (-1 if text.endswith("CR") else 1)


posted = sum(value(label, totals) for label in ("DEPOSITS", "WITHDRAWALS", "FEES", "INTEREST"))
if (postings, amounts) != (value("POSTED", totals), posted) or accounts != value("DOCUMENTS READ", out):
    sys.exit(f"{accounts} documents, {postings} postings of {amounts} instead of {posted}")
if accounts <= value("STATEMENTS PRINTED", totals):
    sys.exit("no account needed a second document")
END
echo "the statements agree"
