#!/usr/bin/env python3
"""Makes the package's symbols file of the version map: every name with its version node.

    symbols.py kvr2.map RELEASE OUTPUT
"""

import pathlib
import re
import sys

source, release, output = sys.argv[1:]
text = re.sub(r"/\*.*?\*/", "", pathlib.Path(source).read_text(), flags=re.S)
lines = []
for node, names in re.findall(r"(\S+)\s*\{\s*global:(.*?)(?:local:|\})", text, flags=re.S):
    lines.append(f" {node}@{node} {release}")
    lines += [f" {name}@{node} {release}" for name in re.findall(r"[A-Za-z_]\w*", names)]
pathlib.Path(output).write_text("libkvr2_64r.so libkvr2 (>= %s)\n" % release + "\n".join(sorted(lines)) + "\n")
