#!/usr/bin/env python3
"""Generates the statement tables of docs/abi.md from cobol/emit/statement_table.def.

    scripts/statements_doc.py            writes them, between the page's two marks
    scripts/statements_doc.py --check    says whether they are current, and whether the table is the
                                         one place that has the names of what kvrcob emits

What a routine of kvr2/kvrcob.h calls is read from the headers.
"""
import pathlib
import re
import sys

ROOT = pathlib.Path(__file__).resolve().parent.parent
PAGE = ROOT / "docs/abi.md"
TABLE = ROOT / "cobol/emit/statement_table.def"
BEGIN, END = "<!-- statements: scripts/statements_doc.py -->", "<!-- end of statements -->"
EXPORTS = set(re.findall(r"^\s+([A-Za-z_]\w*);", (ROOT / "kvr2.map").read_text(), re.M))

# In emitted programs these are no routines that a statement chooses: functions that kvrcob emits
# itself, and data.
NO_CHOICE = re.compile(r"kvr_(entry|cancel|segment|other)_|kvr_(digits|lengths|arguments|argument_count|next_argument|utilities)\b")


def without_comments(text):
    return re.sub(r"/\*.*?\*/|//[^\n]*", "", text, flags=re.S)


def rows():
    """The rows of the table: (macro, arguments), strings without their quotes."""
    code = re.sub(r"^\s*#.*", "", without_comments(TABLE.read_text()), flags=re.M)
    for macro, arguments in re.findall(r'^(\w+)\(((?:"(?:[^"\\]|\\.)*"|[^")])*)\)', code, re.M):
        yield macro, [a.strip().strip('"') if not a.strip() == '""' else "" for a in
                      re.findall(r'\s*("(?:[^"\\]|\\.)*"|[^",]+)\s*(?:,|$)', arguments)]


def helpers():
    """What each routine of kvrcob.h calls of the library, by itself or through others."""
    bodies = {}
    for path in [ROOT / "include/kvr2/kvrcob.h", *sorted((ROOT / "include/kvr2/kvrcob").glob("*.h"))]:
        text = without_comments(path.read_text()).replace("\\\n", "\n")
        heads = list(re.finditer(r"^\s*(?:KVR_\w+|static)\b[^;{}=()]*?\b(kvr_\w+(?:##\w+)?)\([^;{}]*\)\s*\{", text, re.M))
        for i, head in enumerate(heads):
            end = heads[i + 1].start() if i + 1 < len(heads) else len(text)
            bodies[head[1].split("##")[0]] = text[head.end():end] # `kvr_get_s##size`: the sizes follow

    def calls(name, seen):
        if name in seen or name not in bodies:
            return []
        seen.add(name)
        found = []
        for word in re.findall(r"\b(_zvk\w+|_Dmr\w+|kvr_\w+)\(", bodies[name]):
            found += [word] if word in EXPORTS else calls(word, seen)
        return list(dict.fromkeys(found))

    return {name: calls(name, set()) for name in bodies}


def emitted(text, routines):
    """The cell that shows what is emitted."""
    if not text.startswith("kvr_"):
        return f"`{text.strip()}`" + ("" if text.strip() in EXPORTS or "->" in text else ", in line")
    below = ", ".join(f"`{name}`" for name in routines[text.rstrip("0123456789")])
    return f"`{text}`" + (f" ({below})" if below else "")


def tables(routines):
    out, words, statement, shown = [BEGIN], {"None": ""}, "", False
    for macro, a in rows():
        if macro == "OF":
            words[a[0]] = a[1]
        elif macro == "GROUP":
            out += ["", f"### {a[0]}", "", "| Statement | Operands | Emitted | |", "|---|---|---|---|"]
        elif macro == "DO":
            statement, shown = a[1], False
        elif macro == "ROW":
            operands = "; ".join(dict.fromkeys(filter(None, (words[a[1]], words[a[2]]))))
            out.append(f"| {'' if shown else statement} | {operands} | {emitted(a[3], routines)} | {a[4]} |")
            shown = True
        elif macro == "FUNCTION":
            out.append(f"| {a[0]} | {words[a[1]]} | {emitted(a[2], routines)} | {a[3]} |")
        elif macro == "UTILITY":
            out.append(f"| `CALL \"{a[0]}\"` | | {emitted(a[1], routines)} | |")
    return "\n".join(out + ["", END])


def faults(routines):
    """What is wrong with the table, or with files that do without it."""
    emitter = {path: without_comments(path.read_text()) for path in sorted((ROOT / "cobol/emit").glob("*.cpp"))}
    all_code = "\n".join(emitter.values())
    fields = set(re.findall(r"\(\*(\w+)\)", (ROOT / "include/kvr2/file_records.h").read_text()) +
                 re.findall(r"\b(\w+);", (ROOT / "include/kvr2/file_records.h").read_text()))
    functions = set(re.findall(r'\{"([A-Z0-9-]+)", FunctionResult', (ROOT / "cobol/syntax/functions.cpp").read_text()))
    seen = set()
    for macro, a in rows():
        if macro not in ("DO", "ROW", "FUNCTION", "UTILITY"):
            continue
        if macro == "DO":
            if not re.search(rf"\bDo::{a[0]}\b", all_code):
                yield f"nothing in cobol/emit asks for Do::{a[0]}"
            continue
        key = (macro, *a[:{"ROW": 3, "FUNCTION": 2, "UTILITY": 1}[macro]])
        if key in seen:
            yield f"two rows for {', '.join(key)}"
        seen.add(key)
        text = a[{"ROW": 3, "FUNCTION": 2, "UTILITY": 1}[macro]]
        if text.startswith(("_zvk", "_Dmr")) and text not in EXPORTS:
            yield f"{text} is no entry of the library"
        if text.startswith("kvr_") and text.rstrip("0123456789") not in routines:
            yield f"{text} is no routine of kvr2/kvrcob.h"
        if "->" in text and text.split("->")[1] not in fields:
            yield f"{text} is no field of an FCB"
        if macro == "FUNCTION" and a[0] not in functions:
            yield f"there is no function {a[0]}"

    for path, code in emitter.items():
        for name in re.findall(r"\b(?:_zvk|_Dmr|kvr_[a-z])\w*", code):
            if not NO_CHOICE.match(name):
                yield f"{path.relative_to(ROOT)} has the name {name}: it belongs in cobol/emit/statement_table.def"
        for name in re.findall(r"->(open|close|read|write|rewrite|deleteRecord|start|unlock)\(", code):
            yield f"{path.relative_to(ROOT)} calls fcb->{name} without the table"


def main():
    routines = helpers()
    wrong = list(faults(routines))
    if wrong:
        sys.exit("\n".join(wrong))
    page = PAGE.read_text()
    if BEGIN not in page or END not in page:
        sys.exit(f"docs/abi.md has no marks '{BEGIN}' and '{END}'")
    before, after = page.split(BEGIN)[0], page.split(END)[1]
    wanted = before + tables(routines) + after
    if sys.argv[1:] != ["--check"]:
        PAGE.write_text(wanted)
    elif wanted != page:
        sys.exit("docs/abi.md has not the statement table as it is: run scripts/statements_doc.py")
    print(f"{sum(macro in ('ROW', 'FUNCTION', 'UTILITY') for macro, _ in rows())} rows")


main()
