#!/usr/bin/env python3
"""Prints a C++ function for each way in which the library raises a message, from the catalog's source.

A line "$ Call: name" after a "$set" makes msg::name(inserts, control), with the inserts that the
set declares; "$ Call 2: name" does so for the second text, whose variant is then set; a set with
several texts and a plain "Call" line takes the variant as its first argument. A name may have
inserts of its own, "$ Call: name: s (function), d (year)", where the library passes more than the
texts show.
"""

import pathlib
import re
import sys

TYPES = {"s": "const char *", "d": "Int32 ", "l": "Int64 ", "p": "const void *"}
VALUES = {"s": "{}", "d": "{}.value", "l": "{}.value", "p": "{}"}


def sets(path):
    """Yields (number, inserts by text, calls, number of texts) for each set."""
    current = None
    for line in pathlib.Path(path).read_text().splitlines():
        if match := re.fullmatch(r"\$set (\d+)", line):
            if current:
                yield current
            current = (int(match[1]), {}, [], [])
        elif not current:
            continue
        elif match := re.fullmatch(r"\$ Inserts ?(\d*): *(.*)", line):
            current[1][int(match[1]) if match[1] else None] = match[2]
        elif match := re.fullmatch(r"\$ Call ?(\d*): *(\w+)(?:: (.*))?", line):
            current[2].append((int(match[1]) if match[1] else None, match[2], match[3]))
        elif match := re.match(r"(\d+) ", line):
            current[3].append(match[1])
    yield current


def camel(label):
    """"the loader's words" as "theLoadersWords"."""
    words = re.sub(r"[^\w ]", "", label).split()
    return words[0] + "".join(word.capitalize() for word in words[1:])


def parameters(inserts):
    """[(kind, name)] of "s (program), d (line)", with equal names told apart."""
    found = [] if inserts == "none" else re.findall(r"\b([sdlp]) \(([^)]*)\)", inserts)
    names = [camel(label) for _, label in found]
    return [(kind, name if names.count(name) == 1 else f"{name}{at + 1}")
            for at, ((kind, _), name) in enumerate(zip(found, names))]


def function(number, text, name, inserts, texts):
    choose = text is None and len(texts) > 1
    wanted = [("", "uint32_t variant")] if choose else []
    wanted += [(kind, TYPES[kind] + label) for kind, label in inserts]
    control = ["control"] + (["variant"] if choose else []) + ([str(text - 1)] if text and text > 1 else [])
    passed = [str(number), " | ".join(control)] + [VALUES[kind].format(label) for kind, label in inserts]
    arguments = ", ".join([each for _, each in wanted] + ["uint32_t control = 0"])
    yield f"inline uint32_t {name}({arguments})"
    yield "{"
    yield f"    return zvkWriteMsg({', '.join(passed)});"
    yield "}"


def main():
    for number, inserts, calls, texts in sets(sys.argv[1]):
        for text, name, own in calls:
            declared = inserts.get(text, inserts[None])
            if own and not parameters(own)[:len(parameters(declared))] == parameters(declared):
                sys.exit(f"{number}: the inserts of {name} do not begin with those of the text")
            for line in function(number, text, name, parameters(own or declared), texts):
                print(line)


main()
