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


def heading(each):
    """The number and the letter that a message is shown with."""
    severity = next(iter(each["texts"].values()))[0]
    return f"{each['number']:03}{LETTERS[int(severity)] if severity in '0123' else ''}"


def first_text(each):
    return re.sub(r"%\.0[sd]", "", next(iter(each["texts"].values()))[1]).replace("\n", " ").strip()


def front_matter():
    """What is true of all messages and stands in none of them."""
    yield "## How a run ends\n"
    yield from wrapped(
        "A message of severity S or C, or the warning that ERRCOUNT does not allow any more, has a traceback in front "
        "and the line `ZVK901S` after it. Then the run unit ends in an orderly way (files are closed) and the process "
        "ends by SIGABRT. A shell shows that as exit status 134 (128 and the signal's number, 6). The other exit "
        "statuses:\n")
    yield "| Exit status | The run ended by |"
    yield "|---|---|"
    yield "| 0, or the RETURN-CODE | the main program's end, or STOP RUN |"
    yield "| 134 | a message of severity S or C, more warnings than ERRCOUNT allows, or a signal that the library caught (message 995) |"
    yield "| 128 and a signal's number, such as 139 for SIGSEGV | a signal with `COBRTOPT=TRAP=OFF`; nothing is reported then |"
    yield "| what the host says | the run unit of a host with an abort routine of its own |"
    yield ""
    yield "## Without a catalog\n"
    yield from wrapped(
        "The texts are in `kvr2run.cat`. The library looks for it by NLSPATH, in front of which it puts the "
        "places of its own installation. An entry of NLSPATH is a pattern (`%N` is the "
        "catalog's name, `%L` the locale, `%l` its language) or a plain directory that holds the catalog. Where no "
        "entry leads to a whole catalog, a message reads\n")
    yield "    ZVK168Cannot find message catalog kvr2run.cat in NLSPATH. Message number is 168. Cannot find message 994 in kvr2run.cat\n"
    yield from wrapped(
        "and ends the run unit, whatever the severity of message 168 is: without the catalog the library does not know "
        "it. Install the catalog or correct NLSPATH; the number's entry below says what happened.")


def document(sets):
    yield "# Run-time messages\n"
    yield "Generated from `messages/kvr2run.msg` by `scripts/messages_doc.py`.\n"
    yield from wrapped(
        "A message begins with `ZVK`, its number and the letter of its severity: I and W let the program go on (a W "
        "counts against the option ERRCOUNT), S and C end the run unit. Some callers force another severity; the "
        "public header of a verb says what it does with a failure.")
    yield from front_matter()
    yield "## Contents\n"
    for each in sets:
        if each["number"] != 9999:
            text = first_text(each)
            yield f"- [{heading(each)}](#{heading(each).lower()}) {text[:70] + '...' if len(text) > 73 else text}"
    yield ""
    for each in sets:
        if each["number"] == 9999:
            continue
        yield f"## {heading(each)}\n"
        several = len(each["texts"]) > 1
        for variant, (_, text) in each["texts"].items():
            text = re.sub(r"%\.0[sd]", "", text).strip()
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
