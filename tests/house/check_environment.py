#!/usr/bin/env python3
"""Every environment variable that the source reads stands in docs/environment.md, and every one that stands there is read.

The names are those that calls to getenv and its wrappers name, and the table of device variables. Locale variables are the system's.
"""
import pathlib
import re
import sys

root = pathlib.Path(sys.argv[1])
ROOMS = [line.split(":")[0] for line in (root / "cmake/rooms.txt").read_text().splitlines() if re.match(r"\w", line)]
ROOMS = [room for room in ROOMS if room not in ("include", "examples", "bench", "fuzz", "tests")]
SYSTEM = {"LC_ALL", "LC_*", "LANG"}

read = set()
for room in ROOMS:
    for path in sorted([*(root / room).rglob("*.cpp"), *(root / room).rglob("*.h")]):
        text = path.read_text()
        read.update(re.findall(r'(?:getenv|environmentText|environmentValue|environmentHas|levelFromEnvironment)\("(\w+)"\)', text))
        for row in re.findall(r"^\s*\{'\w', &Proccom::.*$", text, re.M):
            read.update(re.findall(r'"([A-Z]{5,})"(?=[,}].*"[raw]")', row))
documented = set()
for line in (root / "docs/environment.md").read_text().splitlines():
    if line.startswith("| `") and "=" not in line.split("|")[1]:
        documented.update(re.findall(r"`([A-Za-z_*]+)`", line.split("|")[1]))

problems = [f"{name} is read, but not documented" for name in sorted(read - documented)]
problems += [f"{name} is documented, but not read" for name in sorted(documented - read - SYSTEM)]
if len(read) < 30:
    problems.append(f"only {len(read)} variables found in the source: this check looks in the wrong places")
print("\n".join(problems) or f"{len(read)} variables, all documented")
sys.exit(bool(problems))
