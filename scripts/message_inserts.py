#!/usr/bin/env python3
"""Prints the inserts of every message as rows of a C++ table, from the catalog's source.

The library formats a catalog text only if its conversions fit these, so that a translated catalog cannot make it read what is not there.
"""

import pathlib
import re
import sys


def signatures(path):
    """{(number, variant): inserts}, from the "$ Inserts" lines behind each "$set"; variant -1 stands for all that have no line of their own."""
    result, number = {}, None
    for line in pathlib.Path(path).read_text().splitlines():
        if match := re.fullmatch(r"\$set (\d+)", line):
            number = int(match[1])
        elif (match := re.fullmatch(r"\$ Inserts ?(\d*): *(.*)", line)) and number is not None:
            variant = int(match[1]) - 1 if match[1] else -1
            letters = "".join(re.findall(r"\b([sdlp])\b", re.sub(r"\([^)]*\)", "", match[2])))
            result[number, variant] = "" if match[2].strip() == "none" else letters
    return result


if __name__ == "__main__":
    for (number, variant), inserts in sorted(signatures(sys.argv[1]).items()):
        print(f'{{{number}, {variant}, "{inserts}"}},')
