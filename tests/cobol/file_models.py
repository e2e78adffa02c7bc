#!/usr/bin/env python3
"""Random verbs on indexed and relative files, each status and record held against a model.

file_models.py KVRCOB indexed|relative FIRST COUNT. A small COBOL program for each access mode takes verbs from its
input; for each random number FIRST to FIRST+COUNT-1 it gets 1,000 of them. The model knows the standard's rules and
keeps its records in a dictionary.
"""
import pathlib
import random
import sys
import tempfile

from trial import Trial

VERBS = 1000
ACCESS = ["SEQUENTIAL", "RANDOM", "DYNAMIC"]

HEAD = """identification division.
program-id. verbs.
environment division.
input-output section.
file-control.
    select f assign to "verbs.dat" {select} access mode is {access} file status is st.
data division.
file section.
fd f.
{record}
working-storage section.
01 st pic xx.
{work}
procedure division.
declaratives.
e section. use after error procedure on f.
e1. continue.
end declaratives.
main section.
m1.
    move spaces to l
    accept l
    if op = "XX" stop run end-if
    move "??" to st
    {before}
    evaluate op
    when "OI" open input f
    when "OO" open output f
    when "OX" open i-o f
    when "CL" close f
    when "WR" write r from lr
    when "RW" rewrite r from lr
    when "DL" {key} delete f
{verbs}
    end-evaluate
    display op " " st {shown} with no advancing
    if st (1:1) = "0" and (op = "RN" or "RK" or "R1" or "R2") display " " r else display " " end-if
    go to m1.
"""

INDEXED = {
    "select": """organization indexed record key is rk alternate record key is a1
        alternate record key is a2 with duplicates""",
    "record": "01 r. 05 rk pic x(3). 05 a1 pic x(2). 05 a2 pic x(2). 05 d pic x(4).",
    "work": "01 l. 05 op pic xx. 05 lr. 10 lk pic x(3). 10 l1 pic x(2). 10 l2 pic x(2). 10 ld pic x(4).",
    "before": 'if op not = "WR" and "RW" move all "-" to r end-if',
    "key": "move lk to rk",
    "shown": "",
}
RELATIVE = {
    "select": "organization relative relative key is n",
    "record": "01 r pic x(8).",
    "work": "01 n pic 9(2). 01 l. 05 op pic xx. 05 lk pic 9(2). 05 lr pic x(8).",
    "before": 'move lk to n if op not = "WR" and "RW" move all "-" to r end-if',
    "key": "",
    "shown": '" " n',
}
KEYS = {"K": ("lk", "rk"), "1": ("l1", "a1"), "2": ("l2", "a2")}
RELATIONS = {"E": "=", "G": ">", "N": "not <"}


def source(organization, access):
    verbs = []
    if access == "SEQUENTIAL":
        verbs.append('when "OE" open extend f')
    if organization is INDEXED:
        if access != "SEQUENTIAL":
            verbs += [f'when "R{k}" move {of} to {to} read f key is {to}' for k, (of, to) in KEYS.items()]
        if access != "RANDOM":
            verbs += [
                f'when "{k}{r}" move {of} to {to} start f key {words} {to}'
                for k, (of, to) in KEYS.items()
                for r, words in RELATIONS.items()
            ]
    else:
        if access != "SEQUENTIAL":
            verbs.append('when "RK" read f')
        if access != "RANDOM":
            verbs += [f'when "K{r}" start f key {words} n' for r, words in RELATIONS.items()]
    if access != "RANDOM":
        verbs.append('when "RN" read f next')
    return HEAD.format(access=access, verbs="\n".join("    " + verb for verb in verbs), **organization)


class File:
    """What both organizations have: modes, the position, and which record a sequential REWRITE means."""

    def __init__(self, access):
        self.sequential = access == "SEQUENTIAL"
        self.records, self.exists, self.mode = {}, False, None
        self.position = None  # None: undefined; else (value, whether a record at it is next)
        self.reference = "K"
        self.just_read = None

    def open(self, how):
        if self.mode:
            return "41"
        self.position = None
        if how == "O":
            self.records, self.exists = {}, True
        elif not self.exists:
            return "35"
        self.mode = how
        if how in "IX":
            self.reference, self.position = "K", ("", True)
        self.began()
        return "00"

    def close(self):
        if not self.mode:
            return "42"
        self.mode = None
        return "00"

    def next(self, order):
        """The next of the ordered (value, key), or None."""
        value, inclusive = self.position
        found = [entry for entry in order if value == "" or entry[0] > value or (inclusive and entry[0] == value)]
        self.position = (found[0][0], False) if found else None
        return found[0] if found else None

    def start(self, order, relation, value, plain):
        self.position = None
        for entry in order:
            seen = plain(entry[0])
            if {"E": seen == value, "G": seen > value, "N": seen >= value}[relation]:
                self.position = (entry[0], True)
                return "00"
        return "23"

    def changed(self, verb, key):
        """The key of the record that REWRITE or DELETE is about, or a status."""
        if self.mode != "X":
            return None, "49"
        if self.sequential:
            if self.was_read is None:
                return None, "43"
            if verb == "RW" and key is not None and key != self.was_read:
                return None, "21"
            key = self.was_read
        return (key, "") if key in self.records else (None, "23")


class IndexedFile(File):
    organization = INDEXED

    def began(self):
        self.highest = max(self.records, default=None) if self.mode == "E" else None
        self.age = getattr(self, "age", 0)

    def order(self, key):
        of = {"K": lambda k, r: k, "1": lambda k, r: r[0], "2": lambda k, r: (r[1], r[3])}[key]
        return sorted((of(k, r), k) for k, r in self.records.items())

    def shown(self, entry):
        """The status and text of a record that was found by the key of reference."""
        status = "00"
        if self.reference == "2" and any(o[0] > entry[0] and o[0][0] == entry[0][0] for o in self.order("2")):
            status = "02"
        self.just_read = entry[1]
        return status, entry[1] + "".join(self.records[entry[1]][:3])

    def put(self, key, one, two, data, age):
        others = [r for k, r in self.records.items() if k != key]
        if any(r[0] == one for r in others):
            return "22"
        old = self.records.get(key)
        self.age += 1
        self.records[key] = (one, two, data, old[3] if old and old[1] == two else age)
        return "02" if any(r[1] == two for r in others) and not (old and old[1] == two) else "00"

    def verb(self, verb, key, one, two, data):
        self.was_read, self.just_read = self.just_read, None
        if verb[0] == "O":
            return self.open(verb[1]), None
        if verb == "CL":
            return self.close(), None
        if verb == "WR":
            if self.mode not in (("O", "E") if self.sequential else ("O", "X")):
                return "48", None
            if self.sequential and self.highest is not None and key <= self.highest:
                return "21", None
            status = "22" if key in self.records else self.put(key, one, two, data, self.age)
            if status < "20":
                self.highest = key
            return status, None
        if verb in ("RW", "DL"):
            found, status = self.changed(verb, key)
            if found is None:
                return status, None
            if verb == "RW":
                return self.put(found, one, two, data, self.age), None
            del self.records[found]
            return "00", None
        if self.mode not in ("I", "X"):
            return "47", None
        if verb == "RN":
            if self.position is None:
                return "46", None
            entry = self.next(self.order(self.reference))
            return self.shown(entry) if entry else ("10", None)
        by = verb[1] if verb[0] == "R" else verb[0]
        value = {"K": key, "1": one, "2": two}[by]
        self.reference = by
        plain = (lambda v: v[0]) if by == "2" else (lambda v: v)
        status = self.start(self.order(by), "E" if verb[0] == "R" else verb[1], value, plain)
        if verb[0] != "R" or status != "00":
            return status, None
        return self.shown(self.next(self.order(by)))

    def random(self, numbers):
        return (f"{numbers.randrange(30):03}", f"{numbers.randrange(40):02}", f"{numbers.randrange(6):02}",
                f"{numbers.randrange(10000):04}")

    def line(self, verb, operands):
        status, text = self.verb(verb, *operands)
        return f"{verb} {status} {text or ''}"


class RelativeFile(File):
    organization = RELATIVE

    def began(self):
        self.slot = max(self.records, default=0) + 1 if self.mode == "E" else 1

    def verb(self, verb, key, data):
        """The status, what the key item then holds, and the record."""
        self.was_read, self.just_read = self.just_read, None
        number = int(key)
        if verb[0] == "O":
            return self.open(verb[1]), number, None
        if verb == "CL":
            return self.close(), number, None
        if verb == "WR":
            if self.mode not in (("O", "E") if self.sequential else ("O", "X")):
                return "48", number, None
            if self.sequential:
                number = self.slot
                self.slot += 1
            if number == 0:
                return "24", number, None
            if number in self.records:
                return "22", number, None
            self.records[number] = data
            return "00", number, None
        if verb in ("RW", "DL"):
            found, status = self.changed(verb, None if self.sequential else number)
            if found is None:
                return status, number, None
            if verb == "RW":
                self.records[found] = data
            else:
                del self.records[found]
            return "00", number, None
        if self.mode not in ("I", "X"):
            return "47", number, None
        order = sorted((n, n) for n in self.records)
        if verb == "RN":
            if self.position is None:
                return "46", number, None
            entry = self.next(order)
            if not entry:
                return "10", number, None
        else:
            status = self.start(order, "E" if verb == "RK" else verb[1], number, lambda v: v)
            if verb != "RK" or status != "00":
                return status, number, None
            entry = self.next(order)
        self.just_read = entry[1]
        return "00", entry[1], self.records[entry[1]]

    def random(self, numbers):
        return f"{numbers.randrange(40):02}", f"{numbers.randrange(10**8):08}"

    def line(self, verb, operands):
        status, number, text = self.verb(verb, *operands)
        return f"{verb} {status} {number:02} {text or ''}"


def some_verbs(numbers, organization, access):
    often = ["WR"] * 6 + ["RW"] * 3 + ["DL"] * 2
    keys = KEYS if organization is INDEXED else ["K"]
    if access != "SEQUENTIAL":
        often += [f"R{key}" for key in keys]
    if access != "RANDOM":
        often += ["RN"] * 8 + [key + relation for key in keys for relation in RELATIONS]
    opens = ["OI", "OX", "OX", "OX"] + (["OE"] * 3 if access == "SEQUENTIAL" else [])
    for _ in range(VERBS):
        kind = numbers.random()
        if kind < 0.05:
            yield "OO" if numbers.random() < 0.05 else numbers.choice(opens)
        else:
            yield "CL" if kind < 0.08 else numbers.choice(often)


def main():
    trial, first, count = Trial(sys.argv[1]), int(sys.argv[3]), int(sys.argv[4])
    kind = {"indexed": IndexedFile, "relative": RelativeFile}[sys.argv[2]]
    for access in ACCESS:
        with tempfile.TemporaryDirectory() as work:
            trial.compile(work, "verbs.cbl", source(kind.organization, access), "-O0")
            for seed in range(first, first + count):
                for old in pathlib.Path(work).glob("verbs.dat*"):
                    old.unlink()
                numbers, model = random.Random(seed), kind(access)
                verbs = [("OO", model.random(numbers)), ("CL", model.random(numbers))]
                verbs += [(verb, model.random(numbers)) for verb in some_verbs(numbers, kind.organization, access)]
                wanted = [model.line(*verb).rstrip() for verb in verbs]
                given = "".join(verb + "".join(operands) + "\n" for verb, operands in verbs) + "XX\n"
                trial.compare(f"{access} {seed}", trial.run(work, ["./verbs"], input=given), wanted)
    trial.end(f"{sys.argv[2]}: {len(ACCESS) * count * VERBS} verbs in {len(ACCESS) * count} runs")


main()
