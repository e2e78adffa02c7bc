#!/usr/bin/env python3
"""Random SORT and MERGE statements, table SORTs and SEARCH ALL, held against a model.

sort_models.py KVRCOB FIRST COUNT. Each program has records of random fields, loads two files from its input and then
sorts: from files or an input procedure, to files or an output procedure, by random keys, under random alphabets. What
it shows must be in the model's order; records with equal keys keep theirs.
"""
import random
import sys
import tempfile

from trial import Trial

USAGES = {
    "S9": "DISPLAY", "S9L": "DISPLAY SIGN LEADING", "S9LS": "SIGN LEADING SEPARATE", "S9TS": "SIGN TRAILING SEPARATE CHARACTER",
    "9": "DISPLAY", "P": "COMP-3", "B": "COMP", "5": "COMP-5", "U": "PACKED-DECIMAL", "UB": "BINARY", "X": "COMP-X",
}
ALPHABETS = {
    "BACKWARDS": ('"Z" THRU "A" "z" THRU "a"', [*map(chr, range(90, 64, -1)), *map(chr, range(122, 96, -1))]),
    "FOLDED": (" ".join(f'"{c}" ALSO "{c.lower()}"' for c in "ABCDEFGH"), [c + c.lower() for c in "ABCDEFGH"]),
    "DIGITS-LAST": ('SPACE "a" THRU "z" "A" THRU "Z" "0" THRU "9"', [" ", *map(chr, range(97, 123)), *map(chr, range(65, 91)), *"0123456789"]),
    "HOST": ("EBCDIC", None),
    "PLAIN": ("NATIVE", None),
    "AS-ALWAYS": ("STANDARD-1", None),
}
TEXTS = "ABCabcZz019 "


def ordinals(alphabet):
    """Where each character stands in an alphabet."""
    listed = ALPHABETS[alphabet][1] if alphabet else None
    if alphabet == "HOST":
        return lambda text: text.encode("cp037")
    if not listed:
        return lambda text: text.encode("latin-1")
    first = {c: place for place, group in enumerate(listed) for c in group}
    rest = [c for c in map(chr, range(256)) if c not in first]
    first.update({c: len(listed) + place for place, c in enumerate(rest)})
    return lambda text: [first[c] for c in text]


class Field:
    def __init__(self, numbers, name):
        self.name, self.size = name, numbers.randint(1, 4)
        self.text = numbers.random() < 0.4
        self.usage = None if self.text else numbers.choice(list(USAGES))
        self.signed = not self.text and self.usage not in ("9", "U", "UB", "X")
        if not self.text:
            self.size = numbers.choice([1, 2, 4, 5, 9, 12, 18])
        self.scale = 0 if self.text else numbers.choice([0, 0, min(2, self.size)])

    def described(self):
        if self.text:
            return f"PIC X({self.size})"
        digits = f"9({self.size - self.scale})" * (self.size > self.scale) + f"V9({self.scale})" * (self.scale > 0)
        return f"PIC {'S' * self.signed}{digits} {USAGES[self.usage]}"

    def line(self):
        """Its form in a line of the input and of what is shown."""
        if self.text:
            return f"PIC X({self.size})"
        digits = f"9({self.size - self.scale})" * (self.size > self.scale) + f"V9({self.scale})" * (self.scale > 0)
        return f"PIC S{digits} SIGN LEADING SEPARATE"

    def some(self, numbers):
        if self.text:
            return "".join(numbers.choice(TEXTS) for _ in range(self.size))
        value = numbers.choice([numbers.randint(0, 3), numbers.randint(0, 10**self.size - 1)])
        return -value if self.signed and numbers.random() < 0.5 else value

    def shown(self, value):
        return value if self.text else f"{'-' if value < 0 else '+'}{abs(value):0{self.size}d}"


class Keys:
    """A random list of keys, and the order that it gives."""

    def __init__(self, numbers, fields, alphabet):
        self.by = [(field, numbers.random() < 0.5) for field in numbers.sample(fields, numbers.randint(1, min(4, len(fields))))]
        self.order = ordinals(alphabet)

    def phrase(self, numbers, of=""):
        words, last = [], None
        for field, down in self.by:
            if down != last:
                words.append(numbers.choice(["", "ON "]) + ("DESCENDING" if down else "ASCENDING") + numbers.choice(["", " KEY"]))
            words.append(field.name + of)
            last = down
        return " ".join(words)

    def sorted(self, rows):
        for field, down in reversed(self.by):
            key = (lambda row, f=field: self.order(row[f.name])) if field.text else (lambda row, f=field: row[f.name])
            rows = sorted(rows, key=key, reverse=down)
        return rows


class Model:
    def __init__(self, numbers):
        self.numbers = numbers
        self.fields = [Field(numbers, f"K{i}") for i in range(numbers.randint(3, 6))]
        self.own = numbers.choice([None, *ALPHABETS])  # the program's collating sequence
        self.files = {name: self.rows(numbers.randint(0, 30)) for name in "AB"}
        self.code, self.procedures, self.expected = [], [], []
        self.serial = 0

    def rows(self, count):
        rows = []
        for number in range(count):
            row = {field.name: field.some(self.numbers) for field in self.fields}
            if rows and self.numbers.random() < 0.4:
                row = dict(self.numbers.choice(rows))
            row["TAG"] = number
            rows.append(row)
        return rows

    def shown(self, row):
        return f"{row['TAG']:03d}" + "".join(field.shown(row[field.name]) for field in self.fields)

    def show(self, rows):
        self.expected += [self.shown(row).rstrip() for row in rows] + ["--"]

    def record(self, prefix, level="05"):
        order = [f"{level} TAG PIC 9(3)."] + [f"{level} {field.name} {field.described()}." for field in self.fields]
        return [f"01 {prefix}-REC."] + order

    def file_moves(self, source, target):
        return [f"MOVE {name} OF {source} TO {name} OF {target}" for name in ["TAG", *(field.name for field in self.fields)]]

    def input_procedure(self, rows, files):
        """Reads files and releases what a filter leaves, some twice; whether the record or another area is released."""
        self.serial += 1
        keep, twice = self.numbers.choice([0, 1, 2]), self.numbers.random() < 0.3
        name, released = f"IN-{self.serial}", []
        lines = [f"{name} SECTION."]
        for place, file in enumerate(files):
            release = self.numbers.choice([f"RELEASE S-REC FROM {file}-REC", f"MOVE {file}-REC TO S-REC RELEASE S-REC"])
            lines += [
                f"{name}-{place}. OPEN INPUT {file}.", f"{name}-R{place}.", f"READ {file} AT END CLOSE {file} GO TO {name}-E{place}.",
                f"IF TAG OF {file}-REC < {keep} GO TO {name}-R{place}.", release + (" " + release if twice else "") + ".",
                f"GO TO {name}-R{place}.", f"{name}-E{place}. EXIT.",
            ]
            released += [row for row in rows[file] if row["TAG"] >= keep for _ in range(2 if twice else 1)]
        self.procedures += lines
        return f"INPUT PROCEDURE {self.numbers.choice(['', 'IS '])}{name}", released

    def output_procedure(self, rows):
        self.serial += 1
        name, into = f"OUT-{self.serial}", self.numbers.random() < 0.5
        stop = self.numbers.choice([0, 0, self.numbers.randint(1, 10)])
        lines = [f"{name} SECTION.", f"{name}-1.", "MOVE 0 TO GIVEN.", f"{name}-2."]
        lines.append(f"RETURN S {'RECORD INTO W-REC' if into else ''} AT END GO TO {name}-9.")
        lines += [line + "." for line in self.file_moves("W-REC" if into else "S-REC", "L")]
        lines += ["DISPLAY L.", "ADD 1 TO GIVEN."]
        if stop:
            lines.append(f"IF GIVEN = {stop} GO TO {name}-9.")
        self.procedures += lines + [f"GO TO {name}-2.", f"{name}-9. DISPLAY '--'."]
        self.show(rows[:stop] if stop else rows)
        return f"OUTPUT PROCEDURE IS {name} THRU {name}"

    def alphabet(self):
        chosen = self.numbers.choice([None, None, *ALPHABETS])
        return chosen or self.own, f" COLLATING SEQUENCE IS {chosen}" if chosen else ""

    def sort(self):
        alphabet, phrase = self.alphabet()
        keys = Keys(self.numbers, self.fields, alphabet)
        files = self.numbers.choice([["A"], ["B"], ["A", "B"], ["B", "A"]])
        text = f"SORT S {keys.phrase(self.numbers, ' OF S-REC')} WITH DUPLICATES IN ORDER{phrase}"
        if self.numbers.random() < 0.5:
            source, rows = self.input_procedure(self.files, files)
        else:
            source, rows = "USING " + " ".join(files), [row for file in files for row in self.files[file]]
        self.finish(f"{text} {source}", keys.sorted(rows))

    def finish(self, text, rows):
        """GIVING or an output procedure."""
        if self.numbers.random() < 0.5:
            self.code += [f"{text} {self.output_procedure(rows)}."]
        else:
            two = self.numbers.random() < 0.3
            self.code += [f"{text} GIVING G{' H' if two else ''}.", "PERFORM SHOW-G."] + ["PERFORM SHOW-H."] * two
            for _ in range(1 + two):
                self.show(rows)

    def merge(self):
        alphabet, phrase = self.alphabet()
        keys = Keys(self.numbers, self.fields, alphabet)
        by = f"{keys.phrase(self.numbers)}{phrase}"
        for file in "AB":
            self.code += [f"SORT S {keys.phrase(self.numbers)} DUPLICATES{phrase} USING {file} GIVING {file}."]
            self.files[file] = keys.sorted(self.files[file])
        files = self.numbers.choice([["A", "B"], ["B", "A"]])
        self.finish(f"MERGE S {by} USING {' '.join(files)}", keys.sorted([row for file in files for row in self.files[file]]))

    def table(self):
        """A table, filled from a file and sorted; then SEARCH ALL by all its keys."""
        file = self.numbers.choice("AB")
        rows = self.files[file]
        if not rows:
            return
        self.serial += 1
        table = f"T{self.serial}"
        keys = Keys(self.numbers, self.fields, self.own)
        own = "".join(f" {'DESCENDING' if down else 'ASCENDING'} KEY {field.name}" for field, down in keys.by)
        self.data += [f"01 {table}.", f"05 ROW{self.serial} OCCURS {len(rows)}{own} INDEXED BY X{self.serial}."] + self.record("", "10")[1:]
        row, index = f"ROW{self.serial}", f"X{self.serial}"
        self.code += [f"OPEN INPUT {file} SET {index} TO 1.", f"PERFORM {len(rows)} TIMES READ {file}", f"MOVE {file}-REC TO {row} ( {index} )",
                      f"SET {index} UP BY 1 END-PERFORM CLOSE {file}."]
        if self.numbers.random() < 0.5:
            self.code.append(f"SORT {row}.")
        else:
            self.code.append(f"SORT {row} {keys.phrase(self.numbers, f' OF {row}')} DUPLICATES.")
        ordered = keys.sorted(rows)
        self.code += [f"PERFORM VARYING {index} FROM 1 BY 1 UNTIL {index} > {len(rows)}", f"MOVE {row} ( {index} ) TO W-REC"]
        self.code += self.file_moves("W-REC", "L") + ["DISPLAY L END-PERFORM DISPLAY '--'."]
        self.show(ordered)
        for _ in range(4):
            wanted = dict(self.numbers.choice(ordered))
            if self.numbers.random() < 0.4:
                field = self.numbers.choice(self.fields)
                wanted[field.name] = field.some(self.numbers)
            parts = self.numbers.randint(1, len(keys.by))
            tests = []
            for field, _ in keys.by[:parts]:
                value = wanted[field.name]
                digits = f"{abs(value):0{field.size}d}" if not field.text else ""
                digits = digits[:field.size - field.scale] + ("." + digits[field.size - field.scale:] if field.scale else "") if digits else ""
                literal = f"'{value}'" if field.text else ("-" if value < 0 else "") + digits
                tests.append(f"{field.name} OF {row} ( {index} ) = {literal}")
            same = keys.order
            found = any(all(same(r[f.name]) == same(wanted[f.name]) if f.text else r[f.name] == wanted[f.name] for f, _ in keys.by[:parts]) for r in rows)
            self.code += [f"SEARCH ALL {row} AT END DISPLAY 'NONE'", f"WHEN {' AND '.join(tests)}", "DISPLAY 'FOUND'", "END-SEARCH."]
            self.expected.append("FOUND" if found else "NONE")

    def text(self):
        self.data = []
        for _ in range(8):
            self.numbers.choice([self.sort, self.sort, self.merge, self.table])()
        alphabets = ["SPECIAL-NAMES."] + [f"ALPHABET {name} IS {words}" for name, (words, _) in ALPHABETS.items()]
        own = f" PROGRAM COLLATING SEQUENCE IS {self.own}" if self.own else ""
        head = ["IDENTIFICATION DIVISION.", "PROGRAM-ID. SORTS.", "ENVIRONMENT DIVISION.", "CONFIGURATION SECTION.", f"OBJECT-COMPUTER. HERE{own}."]
        head += [*alphabets, ".", "INPUT-OUTPUT SECTION.", "FILE-CONTROL.", "SELECT S ASSIGN TO SORTWORK."]
        head += [f'SELECT {file} ASSIGN TO "{file.lower()}.dat".' for file in "ABGH"]
        head += ["DATA DIVISION.", "FILE SECTION.", "SD S."] + self.record("S")
        for file in "ABGH":
            head += [f"FD {file}."] + self.record(file)
        line = ["01 L.", "05 TAG PIC 9(3)."] + [f"05 {field.name} {field.line()}." for field in self.fields]
        work = ["WORKING-STORAGE SECTION.", "01 GIVEN PIC 9(5)."] + self.record("W") + line + self.data
        code = ["PROCEDURE DIVISION.", "MAIN SECTION.", "M1."]
        for file in "AB":
            code += [f"OPEN OUTPUT {file}.", f"PERFORM {self.loaded[file]} TIMES ACCEPT L"] + self.file_moves("L", f"{file}-REC") + [f"WRITE {file}-REC END-PERFORM.", f"CLOSE {file}."]
        code += self.code + ["STOP RUN."]
        for file in "GH":
            code += [f"SHOW-{file}.", f"OPEN INPUT {file}.", "MOVE 0 TO GIVEN.", f"PERFORM UNTIL GIVEN = 1 READ {file} AT END MOVE 1 TO GIVEN NOT AT END"]
            code += self.file_moves(f"{file}-REC", "L") + ["DISPLAY L END-READ END-PERFORM.", f"CLOSE {file}.", "DISPLAY '--'."]
        return "\n".join(head + work + code + self.procedures) + "\n"


def main():
    trial, first, count = Trial(sys.argv[1]), int(sys.argv[2]), int(sys.argv[3])
    for seed in range(first, first + count):
        model = Model(random.Random(seed))
        model.loaded = {file: len(rows) for file, rows in model.files.items()}
        given = "".join(model.shown(row) + "\n" for file in "AB" for row in model.files[file])
        with tempfile.TemporaryDirectory() as work:
            trial.compile(work, "sorts.cbl", model.text(), "-O0")
            trial.compare(seed, trial.run(work, ["./sorts"], input=given), model.expected)
    trial.end(f"sort: {count} programs")


main()
