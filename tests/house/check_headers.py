#!/usr/bin/env python3
"""Compiles each public header alone, as C11 and as C++20, with warnings as errors.

Catches: a header that leans on another being included first, C++ in a C header, a record whose layout drifts in one of the languages.
"""

import argparse
import pathlib
import subprocess
import sys


def main():
    parser = argparse.ArgumentParser()
    parser.add_argument("--include", type=pathlib.Path, required=True)
    parser.add_argument("--cc", required=True)
    parser.add_argument("--cxx", required=True)
    arguments = parser.parse_args()

    failed = False
    headers = sorted((arguments.include / "kvr2").rglob("*.h"))
    for header in headers:
        source = f'#include "{header.relative_to(arguments.include)}"\nextern int kvr2_not_empty;\n'
        for compiler, language, standard in ((arguments.cc, "c", "c11"), (arguments.cxx, "c++", "c++20")):
            command = [compiler, "-x", language, f"-std={standard}", "-Wall", "-Wextra", "-Wpedantic", "-Werror", "-fsyntax-only"]
            run = subprocess.run([*command, "-I", arguments.include, "-"], input=source, text=True, capture_output=True)
            if run.returncode != 0:
                failed = True
                print(f"{header.name} as {standard}:\n{run.stderr}")
    print(f"{len(headers)} headers compiled, each as C11 and as C++20")
    sys.exit(1 if failed or not headers else 0)


main()
