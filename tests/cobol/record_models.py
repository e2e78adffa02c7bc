#!/usr/bin/env python3
"""Random record descriptions and EVALUATE statements, held against models of the rules.

record_models.py KVRCOB records|evaluate FIRST COUNT. A record's bytes are computed here from its description;
INITIALIZE, MOVE CORRESPONDING, moves of groups and subscripts then work on both. Records are shown as hex digits.
"""
import sys

from models import Program, STATEMENTS, run_models


class Field:
    """An item of a record: a group with children, or an elementary item with a form and digits."""

    def __init__(self, numbers, names, depth, level):
        self.level, self.times = level, 1
        self.name = names.pop() if names and numbers.random() < 0.85 else "FILLER"
        self.children, self.form, self.size = [], None, 0
        if depth and numbers.random() < 0.4:
            for _ in range(numbers.randint(1, 4)):
                self.children.append(Field(numbers, names, depth - 1, level + numbers.choice([1, 2, 5])))
            first = self.children[0].level
            for child in self.children:
                child.relevel(first)
        else:
            self.form = numbers.choice(["X", "X", "A", "9", "S9", "COMP-3", "COMP", "EDIT", "XEDIT"])
            self.digits = numbers.randint(1, 6)
            size, n = {"X": self.digits, "A": self.digits, "9": self.digits, "S9": self.digits, "COMP-3": self.digits // 2 + 1}.get(self.form), self.digits
            self.size = size or {"COMP": 2 if n <= 4 else 4, "EDIT": n + 3, "XEDIT": n + 1}[self.form]
        if numbers.random() < 0.2:
            self.times = numbers.randint(2, 3)

    def relevel(self, level):
        shift = level - self.level
        self.level = level
        for child in self.children:
            child.relevel(child.level + shift)

    def describe(self, indent="  "):
        n = self.digits if self.form else 0
        form = {
            None: "", "X": f" PIC X({n})", "A": f" PIC A({n})", "9": f" PIC 9({n})", "S9": f" PIC S9({n})", "COMP-3": f" COMP-3 PIC S9({n})",
            "COMP": f" PIC S9({n}) USAGE COMP", "EDIT": f" PIC Z({n}).99", "XEDIT": f" PIC X/X({n - 1})" if n > 1 else " PIC X/",
        }[self.form]
        occurs = f" OCCURS {self.times} TIMES" if self.times > 1 else ""
        lines = [f"{indent}{self.level:02d} {self.name}{form}{occurs}."]
        for child in self.children:
            lines += child.describe(indent + " ")
        return lines

    def once(self):
        """Bytes of one occurrence."""
        return self.size if self.form else sum(child.once() * child.times for child in self.children)

    def elements(self, offset=0, subscripts=(), filler=False):
        """Each elementary occurrence: field, offset, subscripts, whether no name leads to it."""
        for k in range(self.times):
            here, at = (*subscripts, k + 1) if self.times > 1 else subscripts, offset + k * self.once()
            if self.form:
                yield self, at, here, filler or self.name == "FILLER"
            for child in self.children:
                yield from child.elements(at, here, filler)
                at += child.once() * child.times

    def bytes_of(self, value):
        """A number or a text in the item's form."""
        n = self.digits
        if self.form in ("X", "A"):
            return value.ljust(n)[:n].encode()
        if self.form == "XEDIT":
            return (value[:1].ljust(1) + "/" + value[1:n].ljust(n - 1)).encode()
        digits = f"{abs(value) % 10**n:0{n}d}"
        if self.form == "9":
            return digits.encode()
        if self.form == "S9":
            return digits[:-1].encode() + bytes([ord(digits[-1]) + (0x40 if value < 0 else 0)])
        if self.form == "COMP-3":
            return bytes.fromhex((digits if n % 2 else "0" + digits) + ("d" if value < 0 else "c"))
        if self.form == "COMP":
            return value.to_bytes(self.size, "little", signed=True)
        return (f"{abs(value):{n}d}.00" if value else " " * n + ".00").encode()

    def numeric(self):
        return self.form in ("9", "S9", "COMP-3", "COMP")

    def some(self, numbers):
        if self.form in ("X", "A", "XEDIT"):
            return "".join(numbers.choice("ABCxyz ") for _ in range(self.digits))
        value = numbers.randint(1, 10**self.digits - 1)
        return -value if self.form in ("S9", "COMP-3", "COMP") and numbers.random() < 0.5 else value


class Record:
    def __init__(self, numbers, program, name, names):
        self.name = name
        self.root = Field(numbers, [], 0, 1)
        self.root.name, self.root.form, self.root.times = name, None, 1
        names = list(names)
        numbers.shuffle(names)
        self.root.children = [Field(numbers, names, 3, 5) for _ in range(numbers.randint(3, 6))]
        lines = self.root.describe("")
        program.data += ["  " + line for line in lines]
        self.bytes = bytearray(self.root.once())
        self.paths = {}  # name: its Field and offset, for those that are in no table
        self.elements = [e for e in self.root.elements() if not e[3]]

    def put(self, field, offset, value):
        data = field.bytes_of(value)
        self.bytes[offset : offset + len(data)] = data

    def fill(self, numbers, program):
        program.statement(f"MOVE LOW-VALUES TO {self.name}")
        self.bytes[:] = bytes(len(self.bytes))
        for field, offset, subscripts, _ in self.elements:
            value = field.some(numbers)
            written = f"'{value}'" if isinstance(value, str) else str(value)
            where = f" ( {' '.join(map(str, subscripts))} )" if subscripts else ""
            program.statement(f"MOVE {written} TO {field.name} OF {self.name}{where}")
            self.put(field, offset, value)
        for field, offset, _, filler in self.root.elements():
            if filler and field.numeric():  # a FILLER never gets a value of its own; it may be shown, though
                continue

    def initialize(self, text=None, number=None, replacing=False):
        for field, offset, _, filler in self.root.elements():
            if filler:
                continue
            if replacing:
                if field.form in ("X",) and text is not None:
                    self.put(field, offset, text)
                elif field.numeric() and number is not None:
                    self.put(field, offset, number)
            else:
                self.put(field, offset, 0 if field.numeric() or field.form == "EDIT" else "")


def corresponding(source, target, a, b, at_a=0, at_b=0):
    """MOVE CORRESPONDING of the children of two fields."""
    offset = at_a
    for x in a.children:
        here, offset = offset, offset + x.once() * x.times
        if x.name == "FILLER" or x.times > 1:
            continue
        place = at_b
        for y in b.children:
            there, place = place, place + y.once() * y.times
            if y.name != x.name or y.times > 1:
                continue
            if not x.form and not y.form:
                corresponding(source, target, x, y, here, there)
            else:
                moved = move_bytes(bytes(source.bytes[here : here + x.once()]), x, y)
                target.bytes[there : there + y.once()] = moved


def value_of(data, field):
    if field.form == "9":
        return int(data)
    if field.form == "S9":
        last = data[-1]
        digits = int(data[:-1] + bytes([last - 0x40 if last >= 0x70 else last]))
        return -digits if last >= 0x70 else digits
    if field.form == "COMP-3":
        text = data.hex()
        return int(text[:-1]) * (-1 if text[-1] == "d" else 1)
    if field.form == "COMP":
        return int.from_bytes(data, "little", signed=True)
    return int(data[:-3].strip() or 0)


def may_move(x, y):
    """Whether the model knows what the elementary move gives."""
    if not x.form or not y.form:
        return True
    to_number = y.numeric() or y.form == "EDIT"
    if x.form in ("X", "A", "XEDIT"):
        return not to_number
    return y.form != "A" and not (x.form == "EDIT" and y.form == "XEDIT")


def move_bytes(data, x, y):
    if not x.form or not y.form:
        return data.ljust(y.once())[: y.once()]
    if x.form in ("X", "A", "XEDIT") or (x.form == "EDIT" and y.form in ("X", "XEDIT")):
        return y.bytes_of(data.decode("latin-1"))
    value = value_of(data, x)
    if y.numeric() or y.form == "EDIT":
        cut = abs(value) % 10**y.digits
        return y.bytes_of(-cut if value < 0 and y.form in ("S9", "COMP-3", "COMP") else cut)
    return y.bytes_of(f"{abs(value):0{x.digits}d}")


def pairs(a, b):
    for x in a.children:
        for y in b.children:
            if x.name == y.name != "FILLER" and x.times == y.times == 1:
                if not x.form and not y.form:
                    yield from pairs(x, y)
                else:
                    yield x, y


def records(numbers):
    program = Program("RECORDS")
    made = []
    for number in range(12):
        made.append(Record(numbers, program, f"REC{number}", [f"F{i}" for i in range(14)]))
    for number, record in enumerate(made):
        program.data.append(f"01 LEN{number} PIC 9(5).")
    while len(program.expected) < STATEMENTS // 3:
        a, b = numbers.sample(made, 2)
        a.fill(numbers, program)
        b.fill(numbers, program)
        way = numbers.randrange(5)
        if way == 0:
            text = f"MOVE {a.name} TO {b.name}"
            b.bytes[:] = bytes(a.bytes).ljust(len(b.bytes))[: len(b.bytes)]
        elif way == 1:
            text = f"INITIALIZE {b.name}"
            b.initialize()
        elif way == 2:
            text = f"INITIALIZE {b.name} REPLACING ALPHANUMERIC DATA BY 'Qr' NUMERIC BY 7"
            b.initialize("Qr", 7, True)
        elif way == 3:
            both = list(pairs(a.root, b.root))
            if not both or not all(may_move(x, y) for x, y in both):
                continue
            if any(x.form in ("S9", "COMP-3", "COMP") and y.digits < x.digits for x, y in both if x.form and y.form and y.numeric()):
                continue  # zeros that are left of a negative number may keep its sign
            text = f"MOVE CORRESPONDING {a.name} TO {b.name}"
            corresponding(a, b, a.root, b.root)
        else:
            text = f"COMPUTE LEN0 = LENGTH OF {b.name}"
            program.statement(text)
            program.show("LEN0", f"{len(b.bytes):05d}", text + "\n" + "\n".join(b.root.describe()))
            continue
        program.statement(text)
        about = text + "\n" + "\n".join(a.root.describe() + b.root.describe())
        program.show(f"FUNCTION HEX-OF ( {b.name} )", bytes(b.bytes).hex().upper(), about)
    return program


def evaluate(numbers):
    """Two subjects, up to five WHENs, ALSO, THRU, NOT, ANY, TRUE and FALSE: the first that fits."""
    program = Program("EVALS")
    program.data += ["01 A1 PIC S9(3).", "01 B1 PIC S9(4) COMP.", "01 C1 PIC X(2).", "   88 C1-88 VALUES 'AA' 'B '.", "01 D1 PIC S9(3)V9 COMP-3."]
    for number in range(STATEMENTS):
        values = {"A1": numbers.randint(-1, 4), "B1": numbers.randint(-1, 4), "C1": numbers.choice(["AA", "AB", "B ", "BA"]), "D1": numbers.randint(-1, 4)}
        for name, value in values.items():
            program.statement(f"MOVE {repr(value) if name == 'C1' else value} TO {name}")
        subjects = numbers.choices(["A1", "B1", "C1", "D1", "A1 + B1", "TRUE", "FALSE", "2"], k=numbers.choice([1, 1, 2, 3]))
        text, chosen = f"EVALUATE {' ALSO '.join(subjects)}", None

        def condition():
            if numbers.random() < 0.2:
                return "C1-88", values["C1"] in ("AA", "B ")
            name, right = numbers.choice(["A1", "B1", "D1"]), numbers.randint(0, 3)
            sign, holds = numbers.choice([(">", values[name] > right), ("=", values[name] == right), ("NOT <", values[name] >= right)])
            return f"{name} {sign} {right}", holds

        def thing(subject):
            """An object for a subject, and whether it fits."""
            if numbers.random() < 0.15:
                return "ANY", True
            if subject in ("TRUE", "FALSE"):
                written, holds = condition()
                return written, holds == (subject == "TRUE")
            negated = numbers.random() < 0.25
            if subject == "C1":
                value, texts = values["C1"], ["AA", "AB", "B", "BA"]
                low, high = sorted(numbers.sample(texts, 2))
                one = numbers.choice(texts)
                written, holds = numbers.choice([(f"'{low}' THRU '{high}'", low.ljust(2) <= value <= high.ljust(2)), (f"'{one}'", one.ljust(2) == value)])
            else:
                value = eval(subject, {}, values)
                low = numbers.randint(-1, 3)
                name = numbers.choice(["A1", "B1", "D1"])
                written, holds = numbers.choice([
                    (f"{low} THRU {low + 2}", low <= value <= low + 2), (str(low), value == low), (name, value == values[name]),
                    (f"A1 + {low}", value == values["A1"] + low), (f"{name} THRU 3", values[name] <= value <= 3),
                ])
            return f"{'NOT ' if negated else ''}{written}", holds != negated

        for when in range(numbers.randint(1, 5)):
            for _ in range(numbers.choice([1, 1, 2])):
                things = [thing(subject) for subject in subjects]
                text += f" WHEN {' ALSO '.join(written for written, _ in things)}"
                if chosen is None and all(fits for _, fits in things):
                    chosen = when
            text += f" DISPLAY {number} ' {when}'"
        text += f" WHEN OTHER DISPLAY {number} ' O' END-EVALUATE"
        program.statement(text)
        program.expected.append(("O" if chosen is None else str(chosen), f"{text} {values}"))
    return program


if __name__ == "__main__":
    run_models({"records": records, "evaluate": evaluate}, sys.argv)
