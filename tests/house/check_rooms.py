#!/usr/bin/env python3
"""Holds the source tree against cmake/rooms.txt and the widths of lines.

Includes run downhill only, as the table says; every folder of sources is in the table; the library
asks the system for its environment and its locales in one place each; targets are installed in one
way; code is at most 120 columns wide, comments and pages 100. Tables and indented examples in
comments may be as wide as code.
"""
import pathlib
import re
import subprocess
import sys

root = pathlib.Path(sys.argv[1])
problems = []

# ---- the table

leans = {}
library = set()
for row in (root / "cmake/rooms.txt").read_text().splitlines():
    match = re.match(r"([a-z/]+): +([a-z]+): *(.*)$", row)
    if match:
        leans[match[1]] = match[3].split()
        if match[2] == "library":
            library.add(match[1])


def below(room, path=()):
    """All rooms that a room may include, itself first."""
    if room in path:
        problems.append(f"cmake/rooms.txt: {' -> '.join(path + (room,))} is a circle")
        return set()
    reached = {room}
    for other in leans[room]:
        if other not in leans:
            problems.append(f"cmake/rooms.txt: {room} leans on {other}, which is no room")
            continue
        reached |= below(other, path + (room,))
    return reached


reach = {room: below(room) for room in leans}


def room_of(path):
    """The longest room name that the path begins with."""
    parts = path.split("/")
    for count in (2, 1):
        name = "/".join(parts[:count])
        if len(parts) > count and name in leans:
            return name
    return None


# ---- the sources

files = subprocess.run(["git", "-C", root, "ls-files", "--cached", "--others", "--exclude-standard"],
                       capture_output=True, text=True, check=False).stdout.split("\n")
if len(files) < 100:  # an unpacked archive
    files = [str(path.relative_to(root)) for path in root.rglob("*") if "build" not in path.parts[len(root.parts)]]
sources = [name for name in files if re.search(r"\.(cpp|h|c)$", name) and (root / name).exists()]
pages = [name for name in files if name.endswith(".md") and (root / name).exists()]
if len(sources) < 200:
    problems.append(f"only {len(sources)} sources found: this check looks in the wrong place")


def target_of(source, included):
    """The room of an included file of ours, or None for a system header."""
    beside = (root / source).parent / included
    for candidate in (beside, root / included, root / "tests" / included, root / "include" / included):
        if candidate.exists():
            return room_of(str(candidate.resolve().relative_to(root.resolve())))
    return None


def check_includes(name, lines):
    room = room_of(name)
    if not room:
        problems.append(f"{name}: its folder is in no room of cmake/rooms.txt")
        return
    for number, line in enumerate(lines, 1):
        match = re.match(r'\s*#\s*include\s+"([^"]+)"', line)
        target = target_of(name, match[1]) if match else None
        if target and target not in reach[room]:
            problems.append(f"{name}:{number}: {room} may not include {match[1]} of {target}")


# What the library's rooms ask of the system in one place only.
ONE_PLACE = {"getenv": "base/environment.h", "setlocale": "frame/locale/locale_handles.cpp",
             "newlocale": "frame/locale/locale_handles.cpp"}


def check_places(name, lines):
    if room_of(name) not in library:
        return
    for number, line in enumerate(lines, 1):
        match = re.search(r'\b(getenv|setlocale|newlocale)\((?![^"]*"[^"]*$)', line.split("//")[0])
        if match and name != ONE_PLACE[match[1]]:
            problems.append(f"{name}:{number}: {match[1]} is called in {ONE_PLACE[match[1]]} only")


def check_widths(name, lines):
    for number, line in enumerate(lines, 1):
        comment = re.match(r"\s*(//|/?\*+)( |$)(.*)", line)
        laid_out = comment and re.match(r"\||    |@param", comment[3])
        limit = 100 if comment and not laid_out else 120
        if comment and comment[3].startswith("|"):
            continue
        if len(line) > limit:
            problems.append(f"{name}:{number}: {len(line)} columns, at most {limit}")


# What is installed without kvr2_install is not built by the target that scripts/demo installs from.
for name in files:
    if re.search(r"(^|/)CMakeLists\.txt$|\.cmake$", name) and name != "cmake/installable.cmake" and (root / name).exists():
        for number, line in enumerate((root / name).read_text().split("\n"), 1):
            if re.match(r"\s*install\(TARGETS", line):
                problems.append(f"{name}:{number}: kvr2_install installs targets (cmake/installable.cmake)")

for name in sources:
    lines = (root / name).read_text().split("\n")
    check_includes(name, lines)
    check_places(name, lines)
    check_widths(name, lines)

for name in pages:
    fenced = False
    for number, line in enumerate((root / name).read_text().split("\n"), 1):
        fenced ^= line.startswith("```")
        free = fenced or line.startswith(("|", "    ", "`", "- variant ")) or " " not in line.strip()
        if len(line) > 100 and not free:
            problems.append(f"{name}:{number}: {len(line)} columns, at most 100")

print("\n".join(problems) or f"{len(sources)} sources and {len(pages)} pages in {len(leans)} rooms")
sys.exit(bool(problems))
