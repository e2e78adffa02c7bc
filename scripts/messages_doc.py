#!/usr/bin/env python3
"""Generates docs/messages.md from the message catalog's source, and checks the source.

    scripts/messages_doc.py            writes docs/messages.md
    scripts/messages_doc.py --check    says whether it is current; a fault of the source fails both ways

Checked: numbers and variants ascend, severities are digits 0 to 3 (but for what is no message), every set has its lines Inserts, Cause and Action, and the
conversions of every text are of the kinds that its inserts have.
"""

import pathlib
import re
import sys
import textwrap

ROOT = pathlib.Path(__file__).resolve().parent.parent
SOURCE = ROOT / "messages" / "kvr2run.msg"
DOCUMENT = ROOT / "docs" / "messages.md"
LETTERS = "IWSC"
NO_MESSAGES = {901, 9999}  # texts without a severity digit
KINDS = {"s": "s", "d": "dixXuc", "l": "dixXu", "p": "p"}


def parse(text):
    """The sets in order: {number, inserts: {variant or None: text}, cause, action, texts: {variant: (severity, text)}}."""
    sets, current = [], None
    for line in text.splitlines():
        if match := re.fullmatch(r"\$set (\d+)", line):
            current = {"number": int(match[1]), "inserts": {}, "texts": {}}
            sets.append(current)
        elif match := re.fullmatch(r"\$ Inserts ?(\d*): *(.*)", line):
            if current:
                current["inserts"][int(match[1]) if match[1] else None] = match[2]
        elif match := re.fullmatch(r"\$ (Cause|Action): *(.*)", line):
            current[match[1].lower()] = match[2]
        elif line.startswith("$"):
            continue
        elif match := re.fullmatch(r"(\d+) (.)(.)(.*)", line):
            current["texts"][int(match[1])] = (match[2], match[4])
        elif line.strip():
            sys.exit(f"{SOURCE.name}: not understood: {line}")
    return sets


def kinds_of(inserts):
    return re.findall(r"\b([sdlp])\b", re.sub(r"\([^)]*\)", "", inserts)) if inserts != "none" else []


def faults(sets):
    numbers = [each["number"] for each in sets]
    if numbers != sorted(set(numbers)):
        yield "the sets are not in ascending order, or one stands twice"
    for each in sets:
        number = each["number"]
        if None not in each["inserts"] or "cause" not in each or "action" not in each:
            yield f"{number}: lacks Inserts, Cause or Action"
            continue
        for variant, (severity, text) in each["texts"].items():
            if number not in NO_MESSAGES and severity not in "0123":
                yield f"{number}.{variant}: severity {severity}"
            kinds = kinds_of(each["inserts"].get(variant, each["inserts"][None]))
            conversions = re.findall(r"%(?:\d+\$)?[-+ #0]*\d*(?:\.\d*)?(l?)([a-zA-Z%])", text)
            wanted = [(length, letter) for length, letter in conversions if letter != "%"]
            if len(wanted) > len(kinds):
                yield f"{number}.{variant}: more conversions than inserts"
            for (length, letter), kind in zip(wanted, kinds):
                if letter not in KINDS[kind] or (length == "l") != (kind == "l"):
                    yield f"{number}.{variant}: %{length}{letter} for an insert of kind {kind}"


def readable(inserts):
    """"s (program), d (line)" as "program, line"."""
    return ", ".join(re.findall(r"\(([^)]*)\)", inserts)) or "none"


def wrapped(text):
    """A paragraph of the page."""
    yield textwrap.fill(text, width=100, break_long_words=False, break_on_hyphens=False) + "\n"


def document(sets):
    yield "# Run-time messages\n"
    yield "Generated from `messages/kvr2run.msg` by `scripts/messages_doc.py`.\n"
    yield from wrapped(
        "A message begins with `ZVK`, its number and the letter of its severity: I and W let the program go on (a W "
        "counts against the option ERRCOUNT), S and C end the run unit. Some callers force another severity; the "
        "public header of a verb says what it does with a failure.")
    for each in sets:
        if each["number"] == 9999:
            continue
        severity = next(iter(each["texts"].values()))[0]
        letter = LETTERS[int(severity)] if severity in "0123" else ""
        yield f"## {each['number']:03}{letter}\n"
        several = len(each["texts"]) > 1
        for variant, (_, text) in each["texts"].items():
            text = re.sub(r"%\.0s", "", text).strip()
            text = text.replace("\n", " ")
            yield (f"- variant {variant - 1}: `{text}`" if several else f"`{text}`\n")
        if several:
            yield ""
        inserts = each["inserts"]
        if set(inserts) != {None} or inserts[None] != "none":
            rows = [f"{readable(value)}" + (f" (variant {variant - 1})" if variant else "") for variant, value in inserts.items()]
            yield from wrapped(f"Inserts: {'; '.join(rows)}.")
        yield from wrapped(f"Cause: {each['cause']}")
        yield from wrapped(f"What to do: {each['action']}")


def main():
    sets = parse(SOURCE.read_text())
    found = list(faults(sets))
    if found:
        sys.exit("\n".join(f"{SOURCE.name}: {fault}" for fault in found))
    text = "\n".join(document(sets))
    if sys.argv[1:] == ["--check"]:
        if not DOCUMENT.exists() or DOCUMENT.read_text() != text:
            sys.exit("docs/messages.md is not current: run scripts/messages_doc.py")
        print(f"{len(sets)} message sets, docs/messages.md is current")
    else:
        DOCUMENT.write_text(text)


main()
