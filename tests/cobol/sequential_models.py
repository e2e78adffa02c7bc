#!/usr/bin/env python3
"""Random statements for sequential files and files of lines, also in wrong orders, held against a model.

sequential_models.py KVRCOB FIRST COUNT. Two files, optional or not, of records of one length, of several, or of lengths by
an item. After each statement the program shows the file status, which of AT END, NOT AT END and the USE procedure ran,
and the record that was read.
"""
import random
import sys

from trial import Trial

STATEMENTS = 120


class File:
    """A file as the standard describes it: its records, and what a program that has it open may do."""

    def __init__(self, r, name):
        self.name, self.r = name, r
        self.lines = r.random() < 0.35
        self.kind = r.choice(["fixed", "several", "depending", "from", "table"])
        self.optional = r.random() < 0.5
        self.use = r.choice([None, "file", "modes"])
        self.least, self.most = {"fixed": (12, 12), "several": (5, 12), "depending": (4, 14), "from": (6, 12), "table": (3, 12)}[self.kind]
        if self.lines:
            self.least = 0
        self.exists, self.records, self.locked = False, [], False
        self.mode, self.at, self.ended, self.read, self.absent = None, 0, False, False, False

    def select(self):
        words = ["SELECT", "OPTIONAL" * self.optional, self.name, f'ASSIGN TO "{self.name.lower()}.dat"']
        organization = "ORGANIZATION IS LINE SEQUENTIAL" if self.lines else self.r.choice(["ORGANIZATION IS SEQUENTIAL", "", "SEQUENTIAL"])
        access = self.r.choice(["ACCESS MODE IS SEQUENTIAL", ""])
        clauses = [organization, access, f"FILE STATUS IS {self.name}-S"]
        return " ".join(filter(None, words + clauses)) + "."

    def description(self):
        n = self.name
        if self.kind == "fixed":
            return [f"FD {n}.", f"01 {n}-R PIC X(12)."]
        if self.kind == "several":
            return [f"FD {n}.", f"01 {n}-R PIC X(12).", f"01 {n}-R5.", f" 05 {n}-X PIC X(5).", f"01 {n}-R8 PIC X(8)."]
        if self.kind == "from":
            return [f"FD {n} RECORD CONTAINS 6 TO 12 CHARACTERS.", f"01 {n}-R PIC X(12).", f"01 {n}-R6 PIC X(6)."]
        if self.kind == "table":
            return [f"FD {n}.", f"01 {n}-R.", f" 05 {n}-N PIC 99.", f" 05 {n}-T PIC X OCCURS 1 TO 10 DEPENDING ON {n}-N."]
        return [f"FD {n} RECORD IS VARYING IN SIZE FROM 4 TO 14 CHARACTERS DEPENDING ON {n}-L.", f"01 {n}-R PIC X(14)."]

    # Statements: the text, the status, what ran, what is shown.

    def failed(self, status):
        self.read = False
        if self.absent and status in ("41", "48", "49"):
            self.ended = False  # the library's rule: an absent file has another end after another statement
        return status

    def open(self, mode, reversed_=False):
        if self.mode:
            return self.failed("41")
        if self.locked:
            return "38"
        absent = not self.exists
        if mode == "OUTPUT":
            self.records, self.exists, status = [], True, "00"
        elif absent and not self.optional:
            return "35"
        else:
            status = "05" if absent else "00"
            if mode != "INPUT":
                self.exists = True
        self.mode, self.ended, self.read, self.absent = mode, False, False, absent and mode == "INPUT"
        self.at = 0
        self.order = list(reversed(self.records)) if reversed_ else self.records
        return status

    def close(self, lock):
        if not self.mode:
            return "42"
        self.mode, self.locked = None, self.locked or lock
        return "00"

    def next(self):
        if self.mode not in ("INPUT", "I-O"):
            return self.failed("47"), None
        if self.ended:
            return self.failed("46"), None
        if self.absent or self.at == len(self.order):
            self.ended = True
            return self.failed("10"), None
        self.at, self.read = self.at + 1, True
        return "00", self.order[self.at - 1]

    def write(self, record):
        if self.mode not in ("OUTPUT", "EXTEND"):
            return self.failed("48")
        if not self.least <= len(record) <= self.most:
            return "44"
        self.records.append(record)
        return "00"

    def rewrite(self, record):
        if self.mode != "I-O":
            return self.failed("49")
        if not self.read:
            return "43"
        if len(record) != len(self.records[self.at - 1]):
            self.read = False
            return "44"
        self.read = False
        self.records[self.at - 1] = record
        return "00"


class Model:
    def __init__(self, numbers):
        self.r = numbers
        self.files = [File(numbers, "F"), File(numbers, "G")]
        self.code, self.expected = [], []

    def ran(self, file, status, phrase):
        """Which procedures run: E at end, N not at end, U the USE procedure."""
        ran = ""
        if phrase and status == "10":
            return "E"
        if status[0] in "134" and file.use and (file.use == "file" or file.mode or self.opening):
            ran = "U"
        if phrase and status[0] == "0":
            ran += "N"
        return ran

    def show(self, file, status, phrase=None, data=""):
        number = len(self.expected)
        self.code.append(f"DISPLAY {number} ' ' {file.name}-S ' ' RAN ' [' SHOWN ']'.")
        self.expected.append(f"{status} {self.ran(file, status, phrase):4} [{data:20}]")

    def text(self, file):
        return "".join(self.r.choice("ABCDEFGHIJ") for _ in range(file.most))

    def record(self, file, writing):
        """What fills the record area, the record's name, and the record."""
        r, n, value = self.r, file.name, self.text(file)
        kind = file.kind
        if kind == "depending":
            length = r.choice([4, 14, r.randint(4, 14), r.randint(4, 14), r.choice([0, 3, 15]) if r.random() < 0.3 else 9])
            if not writing and file.read and r.random() < 0.7:
                length = len(file.records[file.at - 1])
            return f"MOVE '{value}' TO {n}-R MOVE {length} TO {n}-L", f"{n}-R", value[:length] if length <= 14 else value + "?"
        if kind == "table":
            count = r.randint(1, 10)
            if not writing and file.read and r.random() < 0.7:
                count = len(file.records[file.at - 1]) - 2
            value = f"{count:02d}" + value[2 : 2 + count]
            letters = " ".join(f"MOVE '{c}' TO {n}-T ({i + 1})" for i, c in enumerate(value[2:]))
            return f"MOVE {count} TO {n}-N {letters}", f"{n}-R", value
        lengths = {"several": {"": 12, "5": 5, "8": 8}, "from": {"": 12, "6": 6}, "fixed": {"": 12}}[kind]
        if not writing and file.read and r.random() < 0.7:
            suffix = {v: k for k, v in lengths.items()}[len(file.records[file.at - 1])]
        else:
            suffix = r.choice(list(lengths))
        name = f"{n}-R{suffix}"
        return f"MOVE '{value[:lengths[suffix]]}' TO {name}", name, value[: lengths[suffix]]

    def statement(self):
        r = self.r
        f = r.choice(self.files)
        n = f.name
        # A wrong statement is tried now and then.
        sensible = {None: ["open"], "INPUT": ["read"] * 5 + ["close"], "OUTPUT": ["write"] * 6 + ["close"], "EXTEND": ["write"] * 4 + ["close"],
                    "I-O": ["read"] * 3 + ["rewrite"] * 3 + ["close"]}[f.mode]
        what = r.choice(sensible) if r.random() < 0.85 else r.choice(["open", "close", "read", "write", "rewrite"])
        if f.lines and what == "rewrite":
            return
        self.opening = what == "open"
        self.code.append("MOVE SPACES TO RAN SHOWN.")
        if what == "open":
            modes = ["INPUT", "OUTPUT", "EXTEND"] + ["I-O"] * (not f.lines)
            mode = r.choice(modes if r.random() < 0.5 else ["INPUT", "EXTEND"] + ["I-O"] * (not f.lines))
            backwards = mode == "INPUT" and f.kind == "fixed" and not f.lines and r.random() < 0.1
            self.code.append(f"OPEN {mode} {n}{' REVERSED' if backwards else ''}.")
            self.show(f, f.open(mode, backwards))
        elif what == "close":
            lock = r.random() < 0.03
            self.code.append(f"CLOSE {n}{r.choice([' WITH LOCK', ' LOCK']) if lock else ''}.")
            self.show(f, f.close(lock))
        elif what == "read":
            phrase, into = r.random() < 0.6, r.random() < 0.4
            text = f"READ {n}{r.choice([' NEXT', ''])}{r.choice([' RECORD', ''])}{' INTO ' + n + '-W' if into else ''}"
            if phrase:
                text += f"{r.choice([' AT', ''])} END STRING 'E' DELIMITED BY SIZE INTO RAN NOT AT END PERFORM ADD-N END-READ"
            status, record = f.next()
            self.code.append(f"MOVE ALL '*' TO {n}-W. {text}.")
            data = ""
            if record is not None:
                full = record.ljust(f.most) if f.lines and f.kind == "fixed" else record
                if into:
                    self.code.append(f"MOVE {n}-W TO SHOWN.")
                    data = full.ljust(20)
                elif f.kind == "depending":
                    self.code.append(f"MOVE {n}-R (1:{n}-L) TO SHOWN MOVE {n}-L TO NN MOVE NN TO SHOWN (18:2).")
                    data = full.ljust(17) + f"{len(full):02d} "
                else:
                    self.code.append(f"MOVE {n}-R(1:{len(full)}) TO SHOWN." if f.kind != "table" else f"MOVE {n}-R TO SHOWN.")
                    data = full.ljust(20)
            self.show(f, status, phrase, data)
        else:
            fill, name, value = self.record(f, what == "write")
            if r.random() < 0.3 and f.kind in ("fixed", "several", "from"):
                size = len(value)
                other = self.text(f)[: r.randint(1, size)]
                self.code.append(f"MOVE '{other}' TO {n}-W {what.upper()} {name} FROM {n}-W.")
                value = other.ljust(size)
            else:
                self.code.append(f"{fill}. {what.upper()} {name}.")
            self.show(f, f.write(value) if what == "write" else f.rewrite(value))

    def program(self):
        while len(self.expected) < STATEMENTS:
            self.statement()
        head = ["IDENTIFICATION DIVISION.", "PROGRAM-ID. SEQS.", "ENVIRONMENT DIVISION.", "INPUT-OUTPUT SECTION.", "FILE-CONTROL."]
        head += [f.select() for f in self.files] + ["DATA DIVISION.", "FILE SECTION."]
        for f in self.files:
            head += f.description()
        head += ["WORKING-STORAGE SECTION.", "01 NN PIC 99.", "01 RAN PIC X(4).", "01 SHOWN PIC X(20)."]
        for f in self.files:
            head += [f"01 {f.name}-S PIC XX.", f"01 {f.name}-W PIC X(20).", f"01 {f.name}-L PIC 9(3) COMP."]
        head.append("PROCEDURE DIVISION.")
        uses = []
        for f in self.files:
            if f.use == "file":
                uses += [f"U{f.name} SECTION. USE AFTER {self.r.choice(['ERROR', 'EXCEPTION'])} PROCEDURE ON {f.name}.", f"U{f.name}-P. MOVE 'U' TO RAN."]
        if any(f.use == "modes" for f in self.files):
            for mode in ("INPUT", "OUTPUT", "I-O", "EXTEND"):
                uses += [f"M{mode} SECTION. USE AFTER STANDARD ERROR PROCEDURE {mode}.", f"M{mode}-P. MOVE 'U' TO RAN."]
            for f in self.files:  # the procedure for a mode is everybody's
                f.use = f.use or "modes"
        if uses:
            head += ["DECLARATIVES.", *uses, "END DECLARATIVES."]
        return head

    def whole(self):
        # Which files have USE procedures is settled first.
        modes = any(f.use == "modes" for f in self.files)
        for f in self.files:
            if modes:
                f.use = f.use or "modes"
        head = self.program()
        lines = head + ["MAIN SECTION.", "MAIN-P."] + self.code + ["STOP RUN.", "ADD-N. IF RAN = SPACES MOVE 'N' TO RAN ELSE MOVE '?' TO RAN."]
        return "\n".join("       " + line for line in lines) + "\n"


def main():
    trial, first, count = Trial(sys.argv[1]), int(sys.argv[2]), int(sys.argv[3])
    for seed in range(first, first + count):
        model = Model(random.Random(seed))
        text = model.whole()

        def about(at):
            files = [(f.name, f.kind, "lines" if f.lines else "records", "optional" * f.optional, f.use) for f in model.files]
            return f"  {files}\n" + "\n".join(text[:text.index(f"DISPLAY {at} ' '")].split("\n")[-4:-1]) + "\n"

        wanted = [f"{number} {line}".rstrip() for number, line in enumerate(model.expected)]
        trial.compare(seed, trial.program(seed, text), wanted, about)
    trial.end(f"sequential files: {count} programs")


main()
