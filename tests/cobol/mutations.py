#!/usr/bin/env python3
"""Sources that are wrong, or out of all proportion: kvrcob must tell errors, end soon, and never hand
to the C compiler what that refuses or warns of.

mutations.py KVRCOB INCLUDE FOLDER... The programs of the folders get one or two random changes each: a line or
word deleted, doubled, exchanged. The random numbers are always the same.
"""
import os
import pathlib
import random
import re
import subprocess
import sys
import tempfile

SHARE = int(os.environ.get("KVR2_TEST_SHARE", "1"))  # under the sanitizers one in so many
MUTANTS, COMPILED = 240 // SHARE, 24 // SHARE
WORD = re.compile(r"\"[^\"\n]*\"|'[^'\n]*'|[A-Za-z0-9][A-Za-z0-9-]*|\S")
HEAD = """       IDENTIFICATION DIVISION.
       PROGRAM-ID. X.
       DATA DIVISION.
       WORKING-STORAGE SECTION.
       01 A PIC 9(4).
       PROCEDURE DIVISION.
       P.
"""


def mutant(numbers, text, words):
    lines = text.split("\n")
    for _ in range(numbers.choice([1, 1, 1, 2])):
        i, kind = numbers.randrange(len(lines)), numbers.randrange(7)
        if kind == 0:
            del lines[i]
        elif kind == 1:
            lines.insert(i, lines[i])
        elif kind == 2:
            j = numbers.randrange(len(lines))
            lines[i], lines[j] = lines[j], lines[i]
        elif found := list(WORD.finditer(lines[i])):
            at = numbers.choice(found)
            other = numbers.choice(words)
            new = {3: "", 4: f"{at.group()} {at.group()}", 5: other, 6: f"{other} {at.group()}"}[kind]
            lines[i] = lines[i][: at.start()] + new + lines[i][at.end() :]
    return "\n".join(lines)


def extremes():
    """Name, source, what standard error must contain (None: the source is accepted; False: it is only copied)."""
    ifs = "".join(f"           IF A = {i}\n" for i in range(10000))
    yield "nested", HEAD + ifs + "           DISPLAY A\n" + "           END-IF\n" * 10000, "nested too deep"
    yield "parentheses", HEAD + "           COMPUTE A = " + "(\n           " * 5000 + "1.\n", "nested too deep"
    yield "long_line", ">>SOURCE FREE\n" + HEAD + "DISPLAY " + "'abcdefgh' " * 100000 + ".\n", None
    yield "many_lines", HEAD + "           ADD 1 TO A. IF A = 3 DISPLAY 'X' ELSE\n             MOVE 5 TO A.\n" * 20000, None
    yield "copies_itself", HEAD + "           COPY 'copies_itself.cbl'.\n", "copies itself"
    yield "replacement_grows", HEAD + "    REPLACE ==A== BY == " + "A A A A A A\n    " * 400 + "==.\n    DISPLAY\n" + (
        "    A A A A\n" * 1000), "too long after COPY and REPLACE"
    for i in range(17, 0, -1):  # each copies the next one twice
        yield f"twice{i}", f"           COPY twice{i + 1}.\n" * 2 if i < 17 else "           DISPLAY A\n", False if i > 1 else "error"
    yield "copies_grow", HEAD + "           COPY twice1.\n" * 2, "too many COPY statements"
    # What took quadratic time once.
    yield "many_terms", HEAD + "           COMPUTE A = 1" + "\n           + A" * 20000 + ".\n", None
    yield "many_records", HEAD.replace("       PROCEDURE", "".join(f"       01 A{i} PIC X.\n" for i in range(50000)) +
                                       "       PROCEDURE"), None
    yield "many_programs", "".join(f"""       IDENTIFICATION DIVISION.\n       PROGRAM-ID. X{i}.
       PROCEDURE DIVISION.\n           CALL "X{i + 1}".\n       END PROGRAM X{i}.\n""" for i in range(3000)), None
    chain = "".join(f"       P{i}.\n           PERFORM P{i + 1}.\n" for i in range(30000))
    yield "performed_chain", HEAD + "           PERFORM P0.\n       Q.\n           STOP RUN.\n" + chain + "       P30000.\n           GO TO Q.\n", None
    items = "".join(f"       01 LONG-ITEM-{i} PIC X.\n" for i in range(19000))
    yield "misspelled", HEAD.replace("       PROCEDURE", items + "       PROCEDURE") + "".join(
        f"           MOVE 1 TO LONG-ITEN-{i}.\n" for i in range(300000)), "did you mean LONG-ITEM-1?"
    yield "open_literal", HEAD + "           DISPLAY 'abc\n" * 300, "no closing quotation mark"
    yield "bytes", bytes(range(256)).decode("latin-1") * 400, "error"


def main():
    compiler, include = sys.argv[1:3]
    sources = sorted(s for folder in sys.argv[3:] for s in pathlib.Path(folder).glob("*.cbl"))
    texts = [s.read_text(encoding="latin-1") for s in sources]
    words = [w for text in texts for w in WORD.findall(text)]
    numbers = random.Random(1)
    failed = accepted = refused = 0
    with tempfile.TemporaryDirectory() as work:
        cases = [(f"mutant{n}", mutant(numbers, numbers.choice(texts), words), "") for n in range(MUTANTS)]
        for name, text, wanted in cases + list(extremes()):
            source, c = pathlib.Path(work, name + ".cbl"), pathlib.Path(work, name + ".c")
            source.write_text(text, encoding="latin-1")
            if wanted is False:
                continue
            includes = [option for folder in sys.argv[3:] for option in ("-I", folder)]
            command = [compiler, "-w", "-S", *includes, "-o", str(c), str(source)]
            wrong = ""
            try:
                done = subprocess.run(command, cwd=work, capture_output=True, encoding="latin-1", timeout=600)
                if done.returncode not in (0, 1) or (done.returncode == 1 and "error: " not in done.stderr):
                    wrong = f"exit status {done.returncode}: {done.stderr[-500:]}"
                elif wanted is None and done.returncode:
                    wrong = f"refused: {done.stderr[:500]}"
                elif wanted and wanted not in done.stderr:
                    wrong = f"does not say {wanted!r}: {done.stderr[:500]}"
                refused += done.returncode
            except subprocess.TimeoutExpired:
                done, wrong = None, "does not end"
            if done and done.returncode == 0 and wanted == "" and accepted < COMPILED:
                accepted += 1
                check = ["cc", "-std=gnu11", "-fsyntax-only", "-fwrapv", "-Wall", "-Wextra", f"-I{include}", str(c)]
                said = subprocess.run(check, capture_output=True, encoding="latin-1").stderr
                if said:
                    wrong = f"the C compiler says: {said[:500]}"
            if wrong:
                failed += 1
                print(f"FAILED {name}: {wrong}\n{text[:3000]}")
    if accepted < COMPILED or refused < MUTANTS // 4:
        failed += 1
        print(f"the changes do not do what they should: {accepted} accepted, {refused} refused")
    sys.exit(1 if failed else 0)


main()
