#!/usr/bin/env python3
"""Compiles and runs every program of a folder and compares what it writes with NAME.expected.

run_group.py KVRCOB FOLDER LOCALES. NAME.input, if there is one, is the program's standard input; the sources in
FOLDER/modules become modules for CALL by name. The first line of an expected output may be "#exit N".
NAME.errors has what the standard error must contain; without it a program that ends well writes none.
A program must compile without a warning (those for obsolete elements and extensions are off) and runs in a fresh folder, as its
user would who has set German: LOCALES has de_DE.UTF-8 if this machine can make it.
"""
import difflib
import os
import pathlib
import subprocess
import sys
import tempfile


def main():
    compiler, folder = pathlib.Path(sys.argv[1]).resolve(), pathlib.Path(sys.argv[2]).resolve()
    failed = 0
    if not pathlib.Path(sys.argv[3], "de_DE.UTF-8").exists():
        print("there is no German locale: run in that of C")
    programs = sorted(folder.glob("*.cbl"))
    if not programs:
        sys.exit(f"no programs in {folder}")
    for source in programs:
        expected = source.with_suffix(".expected").read_text(encoding="latin-1")
        if not expected:
            sys.exit(f"{source.name}: nothing is expected, so the test could not fail")
        status = 0
        if expected.startswith("#exit "):
            first, expected = expected.split("\n", 1)
            status = int(first.split()[1])
        options = ["-Wno-obsolete", "-Wno-extension", "-O0", "-I", str(folder)]
        if source.stem.startswith("check_"):
            options.append("-fcheck=all")
        with tempfile.TemporaryDirectory() as work:
            environment = dict(os.environ, COBPATH=work, LC_ALL="C")
            made = []
            for module in sorted((folder / "modules").glob("*.cbl")):
                made.append([compiler, "-m", *options, str(module)])
            made.append([compiler, *options, "-o", "program", str(source)])
            said = ""
            for command in made:
                done = subprocess.run(command, cwd=work, env=environment, capture_output=True, encoding="latin-1", timeout=600)
                said += done.stderr
                if done.returncode != 0:
                    said += f"kvrcob ended with {done.returncode}\n"
            if said:
                print(f"FAILED {source.name}: translation said\n{said}")
                failed += 1
                continue
            given = source.with_suffix(".input")
            text = given.read_text(encoding="latin-1") if given.exists() else ""
            german = dict(environment, LOCPATH=sys.argv[3], LANG="de_DE.UTF-8", LC_COLLATE="C")
            del german["LC_ALL"]
            run = subprocess.run(["./program"], cwd=work, env=german, input=text, capture_output=True, encoding="latin-1", timeout=600)
            errors = source.with_suffix(".errors")
            message = errors.read_text(encoding="latin-1").strip() if errors.exists() else ""
            wrong = message not in run.stderr or run.stdout != expected or run.returncode != status or (status == 0 and not message and run.stderr)
            if wrong:
                failed += 1
                print(f"FAILED {source.name}: exit status {run.returncode}, expected {status}")
                print("".join(difflib.unified_diff(expected.splitlines(True), run.stdout.splitlines(True), "expected", "written")))
                print(run.stderr)
            else:
                print(f"passed {source.name}")
    sys.exit(1 if failed else 0)


main()
