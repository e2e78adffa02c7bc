#!/usr/bin/env python3
"""Holds the version map, the public headers and the built library against each other.

Catches: a name in the map that nothing defines, an export that the map does not list or lists under another node, an entry point
in a header that is not exported, an exported one that no header documents.
"""

import argparse
import pathlib
import re
import subprocess
import sys


def map_names(path):
    """The global names of the version map, as {name: node}."""
    text = re.sub(r"/\*.*?\*/", " ", path.read_text(), flags=re.S)
    names = {}
    for node, body in re.findall(r"([\w.]+)\s*\{(.*?)\}", text, flags=re.S):
        body = body.replace("global:", " ")
        body = re.sub(r"local:.*", " ", body, flags=re.S)
        for name in re.findall(r"([A-Za-z_]\w*)\s*;", body):
            if name in names:
                sys.exit(f"{path}: {name} stands twice")
            names[name] = node
    return names


def library_names(path):
    """The dynamic symbols that the library defines, as {name: node}."""
    lines = subprocess.run(["nm", "-D", "--defined-only", path], check=True, capture_output=True, text=True).stdout
    names = {}
    for line in lines.splitlines():
        kind, symbol = line.split()[-2:]
        if kind == "A":
            continue  # the version nodes themselves
        name, _, node = symbol.partition("@@")
        names[name] = node
    return names


def header_names(directory):
    """The functions and objects that the public headers declare for export."""
    names = set()
    for header in sorted(directory.glob("*.h")):
        text = re.sub(r"/\*.*?\*/|//[^\n]*|#[^\n]*", " ", header.read_text(), flags=re.S)
        for declaration in re.findall(r"\bZVK_EXPORT\b(.*?);", text, flags=re.S):
            match = re.search(r"([A-Za-z_]\w*)\s*\(", declaration) or re.search(r"([A-Za-z_]\w*)\s*(?:\[\w*\])?\s*$", declaration)
            names.add(match.group(1))
    return names


def main():
    parser = argparse.ArgumentParser()
    parser.add_argument("--library", required=True)
    parser.add_argument("--map", type=pathlib.Path, required=True)
    parser.add_argument("--headers", type=pathlib.Path, required=True)
    arguments = parser.parse_args()

    listed, built, declared = map_names(arguments.map), library_names(arguments.library), header_names(arguments.headers)
    faults = [f"{name}: in the map, not in the library" for name in sorted(listed.keys() - built.keys())]
    faults += [f"{name}: exported, not in the map" for name in sorted(built.keys() - listed.keys())]
    faults += [
        f"{name}: node {built[name]} in the library, {listed[name]} in the map"
        for name in sorted(listed.keys() & built.keys())
        if listed[name] != built[name]
    ]
    faults += [f"{name}: declared in a header, not in the map" for name in sorted(declared - listed.keys())]
    faults += [f"{name}: in the map, declared in no header" for name in sorted(listed.keys() - declared)]
    print("\n".join(faults) or f"{len(listed)} exports agree")
    sys.exit(1 if faults else 0)


main()
