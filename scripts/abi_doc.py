#!/usr/bin/env python3
"""Puts the example program SUMUP into docs/abi.md, between its marks; with --check only says whether it is there as it stands.

A mark is a line `<!-- FILE -->`; the fenced block behind it is replaced.
"""
import pathlib
import re
import sys

root = pathlib.Path(__file__).resolve().parent.parent
page = root / "docs/abi.md"


def quoted(match):
    name = match[1]
    language = {".c": "c", ".cbl": "cobol"}[pathlib.Path(name).suffix]
    return f"<!-- {name} -->\n```{language}\n{(root / name).read_text()}```"


text = page.read_text()
wanted, count = re.subn(r"<!-- (examples/\S+) -->\n```\w+\n.*?```", quoted, text, flags=re.S)
if count == 0:
    sys.exit("docs/abi.md has no marks")
if "--check" in sys.argv:
    if wanted != text:
        sys.exit("docs/abi.md does not quote the examples as they stand: run scripts/abi_doc.py")
else:
    page.write_text(wanted)
