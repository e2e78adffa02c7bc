#!/usr/bin/env python3
"""Sources with faults, and all that kvrcob says about each.

diagnostics.py KVRCOB CASES SOURCES [--write]. CASES has snippets, a line each (\\n in it begins a line), and indented below each
what is said: "error: text" or "warning: text", nothing more and nothing less. A line [KIND] says where the snippets after it go in
a program that is otherwise right: source (the whole of it), names, select, file, data, linkage, procedure, statement.
Every piece of text in the sources' calls that tell errors and warnings must be met. --write writes what is said into CASES,
to be read before it is kept.
"""
import json
import pathlib
import re
import subprocess
import sys
import tempfile
from concurrent.futures import ThreadPoolExecutor

PROGRAM = """identification division.
program-id. t.
environment division.
configuration section.
special-names. switch-1 is sw on status is sw-on{names}.
input-output section.
file-control.
    select sq assign "sq".
    select ix assign "ix" organization indexed access dynamic record key ix-key.
    select st assign "st".
{select}
data division.
file section.
fd sq. 01 sq-rec pic x(10).
fd ix. 01 ix-rec. 02 ix-key pic x(4). 02 ix-rest pic x(6).
sd st. 01 st-rec. 02 st-key pic x(4).
{file}
working-storage section.
01 n pic 9(4).
01 p3 pic s9(4)v99 comp-3.
01 x pic x(8).
01 nat pic x(8) justified right.
01 c pic 9. 88 c1 value 1.
01 g. 02 ga pic x. 02 gb pic 9. 02 amb pic x.
01 h. 02 ga pic x. 02 hb pic 9. 02 amb pic x.
01 t. 02 te pic 99 occurs 5 indexed by i.
  02 tt occurs 3. 03 tu pic x occurs 2.
01 f comp-2.
01 pt pointer.
78 k value 5.
{data}
linkage section.
{linkage}
procedure division.
{procedure}
{statement}
    stop run.
u.
    exit.
"""
KINDS = re.findall(r"{(\w+)}", PROGRAM) + ["source"]
# What these programs cannot bring about: faults of the machine, sources that other tests have, and texts that
# guard places which no source is known to reach.
ELSEWHERE = [
    "cannot write ", "cannot read ", "cannot make a temporary directory ", "there is no C compiler ", "the C compiler failed",
    "cannot run ", "the result ", " would overwrite the source", "there is a program ", " in ", " and one in ",
    "this text is in ", "; make it ASCII or UTF-8 first", "this system has no table of EBCDIC", "the statement ", "this is nested too deep", "COPY is nested too deep",
    "the text is too long after", "there are too many COPY",
    "a literal is needed here", "a sign test needs an operand", "there is no class ", "BY VALUE of a function",
    "these are too many arguments", " of an item without a picture of a number", " needs numbers here",
    "expected a picture string before ", "expected an integer before ", "expected a name before ",
    " is a reserved word; expected the name of a data item", "expected a reference modifier here", "WHEN without EVALUATE or SEARCH",
    "DISPLAY UPON ", "this replacement of TRAILING", "REPLACE ends with a period", "this COPY has no period at its end",
]


NAMES = set()  # of warnings


def read_cases(path):
    kind, cases = None, []
    for line in path.read_text().splitlines():
        if line.startswith("[") and line.endswith("]"):
            kind = line[1:-1]
        elif line.startswith("\t"):
            cases[-1][2].append(line.strip())
        elif line.strip():
            cases.append((kind, line, []))
    return cases


def source_of(kind, snippet):
    snippet = snippet.replace("\\n", "\n")
    if kind == "source":
        return snippet + "\n"
    return PROGRAM.format(**{name: snippet if name == kind else "" for name in KINDS if name != "source"})


def what_is_said(compiler, kind, snippet):
    with tempfile.TemporaryDirectory() as work:
        path = pathlib.Path(work) / "t.cbl"
        path.write_text(source_of(kind, snippet))
        form = [] if kind == "source" else ["-free"]
        command = [compiler, "check", *form, "-Wobsolete", "-fdiagnostics-format=json", "t.cbl"]
        done = subprocess.run(command, cwd=work, capture_output=True, text=True)
    said, refused = [], False
    for line in done.stderr.splitlines():
        if not line.startswith("{"):
            return [line]
        told = json.loads(line)
        refused |= told["severity"] == "error"
        if told["severity"] != "note":
            said.append(f"{told['severity']}: {told['message']}")
    if done.returncode != refused:
        said.append(f"exit status {done.returncode}")
    return said


def texts_of_calls(folder):
    """Of each call that tells an error or a warning, the pieces of its text."""
    for path in sorted(folder.rglob("*.cpp")):
        source = path.read_text()
        for call in re.finditer(r"\b(?:error|warning|warn|notBuilt)\(", source):
            depth, at = 1, call.end()
            while depth:
                quoted = re.compile(r'"(?:[^"\\]|\\.)*"|\'(?:[^\'\\]|\\.)\'').match(source, at)
                if quoted:
                    at = quoted.end()
                    continue
                depth += {"(": 1, ")": -1}.get(source[at], 0)
                at += 1
            text = re.sub(r'"\s+"', "", source[call.end() : at - 1])
            pieces = [p.replace('\\"', '"') for p in re.findall(r'"((?:[^"\\]|\\.)*)"', text)]
            if "warning(" in call.group() or "warn(" in call.group():
                if pieces:
                    NAMES.add(pieces[0])
                pieces = pieces[1:]  # the option's name
            if pieces:
                yield path.name, pieces


def main():
    compiler, path, sources = pathlib.Path(sys.argv[1]).resolve(), pathlib.Path(sys.argv[2]), pathlib.Path(sys.argv[3])
    cases = read_cases(path)
    failed = 0
    if said := what_is_said(compiler, "statement", "continue."):
        sys.exit(f"the program around the snippets is not right: {said}")
    with ThreadPoolExecutor(2) as pool:
        answers = list(pool.map(lambda case: what_is_said(compiler, *case[:2]), cases))
    everything = "\n".join(line for said in answers for line in said)
    if "--write" in sys.argv:
        lines, kind = [], None
        for (now, snippet, _), said in zip(cases, answers):
            if now != kind:
                lines += ([""] if lines else []) + [f"[{now}]"]
                kind = now
            lines += [snippet] + ["\t" + line for line in said]
        path.write_text("\n".join(lines) + "\n")
    else:
        for (kind, snippet, wanted), said in zip(cases, answers):
            if said != wanted:
                failed += 1
                print(f"{kind}: {snippet}\n  is told {said}\n  and not {wanted}")
    for name, pieces in texts_of_calls(sources):
        for piece in pieces:
            if len(piece) > 3 and not piece.startswith(tuple(ELSEWHERE)) and piece not in everything:
                failed += 1
                print(f"{name}: nothing brings about {piece!r}")
    for page in ("diagnostics.cpp", "driver/kvrcob.1", "driver/kvrcob.completion"):
        for name in NAMES - set(re.findall(r"\w+", (sources / page).read_text())):
            failed += 1
            print(f"{page} does not know -W{name}")
    print(f"{len(cases)} cases, {failed} failed")
    sys.exit(failed > 0)


main()
