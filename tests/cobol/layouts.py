#!/usr/bin/env python3
"""Programs of fixed form, laid out otherwise: the C text has to stay what it is.

layouts.py KVRCOB SEED FOLDER... Catches what the text's layout changes and should not: a word or a picture that is looked for
on its line, a text that is copied in the middle of a clause, a sign or a blank that REPLACE loses, free form. Each program is
written with

  lines    a word a line, comments and blank lines between them
  split    words continued on the next line, too
  copy     parts of that, of any length and from any place, as copied texts
  replace  REPLACE of each of its words and numbers by itself
  free     in free form, as many words a line as fall there
  printed  as -E gives it

But for the last, programs with other texts, directives, D lines or line numbers in their results are passed over.
"""
import pathlib
import random
import re
import subprocess
import sys
import tempfile
from concurrent.futures import ThreadPoolExecutor

PASSED_OVER = (r"(?im)>>|^\*|^.{6} *(REPLACE|CBL|PROCESS|TITLE|EJECT|SKIP\d|AUTHOR|INSTALLATION|SECURITY|DATE-|REMARKS)"
               r"|DEBUGGING|EXCEPTION-LOC|\bCOPY\b|\bNOTE\b|\bEXEC\b|\bENTER\b")
WORD = re.compile(r"[A-Za-z0-9][A-Za-z0-9_-]*")


def running_lines(source):
    """The text of each line, continuations joined; None for what is passed over."""
    lines = []
    for line in source.split("\n"):
        if "\t" in line or line[6:7] in ("D", "d"):
            return None
        mark, text = line[6:7] or " ", line[7:72].ljust(65)
        if mark in "*/" or not text.strip():
            continue
        if mark == "-":
            quotes = re.sub(r"\"[^\"]*\"|'[^']*'", "", lines[-1])
            open_literal = "\"" in quotes or "'" in quotes
            lines[-1] = lines[-1] + text.lstrip()[1:] if open_literal else lines[-1].rstrip() + text.lstrip()
        else:
            lines.append(text)
    return lines


def units(source):
    """(text, begins in area A): words with the marks that touch them. None for what is passed over."""
    out, picture = [], False
    for line in running_lines(source) or []:
        at = 0
        while at < len(line):
            if line[at] == " ":
                at += 1
                continue
            if line.startswith("*>", at):
                break
            begin = at
            while at < len(line) and line[at] != " ":
                if line[at] in "\"'" and not picture:
                    at = line.find(line[at], at + 1)
                    if at < 0:
                        return None
                at += 1
            text = line[begin:at]
            after = out[-1][0].upper() if out else ""
            if picture and text.upper() == "IS":
                out.append((text, False))
                continue
            if picture and after in ("PIC", "PICTURE"):
                out[-1] = (out[-1][0] + " " + text, out[-1][1])
            else:
                out.append((text, begin < 4 and not line[:begin].strip()))
            picture = text.upper() in ("PIC", "PICTURE")
    return out or None


def by_lines(words, rnd, split):
    out = []
    for text, area_a in words:
        chance = rnd.random()
        if chance < 0.15:
            out.append("000100*  A COMMENT \"THAT ISN'T CLOSED. MOVE")
        elif chance < 0.2:
            out.append("" if chance < 0.18 else "      /")
        if len(text) > 60:
            return None
        if split and re.fullmatch(r"[A-Za-z][A-Za-z0-9-]{3,}\.?", text) and rnd.random() < 0.5:
            cut = rnd.randrange(1, len(text) - 1)
            out.append("000200 " + ("" if area_a else "    ") + text[:cut])
            out.append("      -" + " " * rnd.randrange(4, 20) + text[cut:])
        else:
            out.append("000300 " + ("" if area_a else "    ") + text)
    return out


def copied(lines, rnd, folder):
    out, at, count = [], 0, 0
    while at < len(lines):
        span = rnd.choice([1, 2, 3, 10, 40])
        whole = [line for line in (lines[at], *lines[at + span:at + span + 1]) if line[6:7] == " "]
        if at > 3 and len(whole) == 2 and rnd.random() < 0.06:
            count += 1
            pathlib.Path(folder, f"PART{count}.cpy").write_text("\n".join(lines[at:at + span]) + "\n", encoding="latin-1")
            out += ["           COPY", f"           PART{count}."]
            at += span
        else:
            out.append(lines[at])
            at += 1
    return out


def free_form(words, rnd):
    out, line = [], ""
    for text, _ in words:
        if rnd.random() < 0.1 and len(line) > 20 and not text.startswith("*"):
            out.append(line + rnd.choice(["", " *> ISN'T"]))
            line = " " * rnd.randrange(9)
        line += " " * rnd.randrange(1, 3) + text
    return out + [line]


def replaced(source, words):
    names = {w.upper() for text, _ in words if text[0] not in "\"'" for w in WORD.findall(text) if len(w) < 25}
    return ["       REPLACE"] + [f"           =={name}== BY =={name}==" for name in sorted(names)] + ["           ."] + [
        line[:72] for line in source.split("\n")]


def c_text(compiler, lines, folder, form):
    pathlib.Path(folder, "p.cbl").write_text("\n".join(lines) + "\n", encoding="latin-1")
    done = subprocess.run([compiler, "-S", form, "-Wno-obsolete", "-o", "p.c", "p.cbl"], cwd=folder, capture_output=True,
                          encoding="latin-1", timeout=600)
    if done.returncode != 0:
        return done.stderr
    text = pathlib.Path(folder, "p.c").read_text(encoding="latin-1")
    return re.sub(r"\d+", "N", re.sub(r"(?m)^#line.*\n", "", text)) # line numbers, and when it was compiled


def printed(compiler, path, folder):
    """The texts of the source as it is, and as -E gives it."""
    options = ["-w", "-I", path.parent]
    subprocess.run([compiler, "-S", *options, "-o", "p.c", path], cwd=folder, capture_output=True)
    subprocess.run([compiler, "-E", *options, "-o", "e.cbl", path], cwd=folder, capture_output=True)
    done = subprocess.run([compiler, "-S", *options, "-free", "-o", "e.c", "e.cbl"], cwd=folder, capture_output=True, text=True)
    texts = [pathlib.Path(folder, name).read_text(encoding="latin-1") for name in ("p.c", "e.c")
             if pathlib.Path(folder, name).exists()]
    return [re.sub(r"\d+|\"[^\"]*p\.cbl\"", "N", re.sub(r"(?m)^#line.*\n", "", text)) for text in texts] + [done.stderr]


def check(compiler, path, seed):
    source = path.read_text(encoding="latin-1")
    words = None if re.search(PASSED_OVER, source) else units(source)
    told, count = [], 0
    with tempfile.TemporaryDirectory() as folder:
        wanted, *others = printed(compiler, path.resolve(), folder)
        # What >>DEFINE gave is not in what -E prints.
        if others and not re.search(r"(?i)\bconstant +(is +)?(global +)?from\b", source):
            count += 1
            if others[0] != wanted:
                told.append(f"{path}: printed by -E: other C\n{others[-1][:600]}")
    if not words:
        return count, told
    with tempfile.TemporaryDirectory() as folder:
        wanted = c_text(compiler, source.split("\n"), folder, "-fixed")
        if "int main" not in wanted and "_body" not in wanted:
            return count, told
        for layout in ("lines", "split", "copy", "replace", "free"):
            rnd = random.Random(f"{seed} {path.name} {layout}")
            lines = (free_form(words, rnd) if layout == "free" else replaced(source, words) if layout == "replace"
                     else by_lines(words, rnd, layout == "split"))
            if lines and layout == "copy":
                lines = copied(lines, rnd, folder)
            if not lines:
                continue
            count += 1
            got = c_text(compiler, lines, folder, "-free" if layout == "free" else "-fixed")
            if got != wanted:
                told.append(f"{path}: {layout}, seed {seed}: other C\n{got[:600] if 'error' in got[:2000] else ''}")
    return count, told


def main():
    compiler, seed = pathlib.Path(sys.argv[1]).resolve(), sys.argv[2]
    paths = sorted(path for folder in sys.argv[3:] for path in pathlib.Path(folder).glob("*.cbl"))
    with ThreadPoolExecutor(2) as pool:
        results = list(pool.map(lambda path: check(compiler, path, seed), paths))
    count, told = sum(n for n, _ in results), [text for _, texts in results for text in texts]
    print("\n".join(told))
    print(f"{count} layouts, {len(told)} failed")
    sys.exit(1 if told or count < 100 else 0)


main()
