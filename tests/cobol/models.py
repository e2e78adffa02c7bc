#!/usr/bin/env python3
"""Random COBOL programs, each statement's result held against a model in exact fractions.

models.py KVRCOB arithmetic|relations|conditions|functions FIRST COUNT. Programs of the random numbers FIRST to FIRST+COUNT-1
are made, translated and run. A difference is shown with its statement and operands.
"""
import datetime
import math
import pathlib
import random
import re
import statistics
import subprocess
import sys
import tempfile
from fractions import Fraction

STATEMENTS = 250
USAGES = ["DISPLAY", "COMP", "COMP-3", "COMP-5"] + [f"DISPLAY SIGN {s}" for s in ("LEADING", "LEADING SEPARATE", "TRAILING SEPARATE")]


class Item:
    """A numeric item: digits, scale (digits after the point, negative with P before it), sign, usage."""

    def __init__(self, numbers, name):
        self.name = name
        self.digits = numbers.randint(1, 18)
        self.usage = numbers.choice(USAGES)
        self.signed = "SIGN" in self.usage or numbers.random() < 0.75
        scaled = numbers.random() if self.digits <= 10 else 1
        if scaled < 0.1:
            positions = numbers.randint(1, 4)
            self.scale, picture = -positions, f"9({self.digits})" + "P" * positions
        elif scaled < 0.2:
            positions = numbers.randint(1, 3)
            self.scale, picture = self.digits + positions, "V" + "P" * positions + f"9({self.digits})"
        else:
            self.scale = numbers.randint(0, min(self.digits, 6))
            whole = self.digits - self.scale
            picture = (f"9({whole})" if whole else "") + (f"V9({self.scale})" if self.scale else "")
        self.picture = ("S" if self.signed else "") + picture

    def random_value(self, numbers):
        value = numbers.randint(0, 10 ** numbers.randint(0, self.digits) - 1)
        if self.signed and numbers.random() < 0.5:
            value = -value
        return Fraction(value) / Fraction(10) ** self.scale

    def stored(self, value, rounded=False):
        """The item's digits as an integer, and whether there is a size error."""
        unscaled = value * Fraction(10) ** self.scale
        digits = int(abs(unscaled) + (Fraction(1, 2) if rounded else 0))
        if unscaled < 0:
            digits = -digits
        if self.usage == "COMP-5":  # what its bytes hold, whatever the picture says
            bits = 16 if self.digits <= 4 else 32 if self.digits <= 9 else 64
            low, high = (-(1 << bits - 1), (1 << bits - 1) - 1) if self.signed else (0, (1 << bits) - 1)
            return digits, not low <= digits <= high
        return digits if self.signed else abs(digits), abs(digits) >= 10**self.digits

    def moved(self, value):
        unscaled = value * Fraction(10) ** self.scale
        digits = int(abs(unscaled)) % 10**self.digits
        return -digits if unscaled < 0 and self.signed else digits

    def shown(self, digits):
        """What its display copy holds: the digits of its picture."""
        return (abs(digits) % 10**self.digits) * (-1 if digits < 0 else 1)


def literal(value):
    text, rest = str(int(abs(value))), abs(value) - int(abs(value))
    if rest:
        text += "."
    while rest:
        rest *= 10
        text += str(int(rest))
        rest -= int(rest)
    return ("-" if value < 0 else "") + text


class Program:
    def __init__(self, name):
        self.name, self.head, self.data, self.code, self.expected = name, "", [], [], []

    def statement(self, text):
        line = "          "
        for word in re.findall(r"(?:'[^']*'|[^ ])+", text):
            if len(line) + len(word) > 70:
                self.code.append(line)
                line = "            "
            line += " " + word
        self.code.append(line)

    def show(self, operands, expected, about):
        """DISPLAYs the operands; the line must be `expected`."""
        self.statement(f"DISPLAY {len(self.expected)} ' ' {operands}.")
        self.expected.append((expected, about))

    def text(self):
        head = f"IDENTIFICATION DIVISION.|PROGRAM-ID. {self.name}.|{self.head}DATA DIVISION.|WORKING-STORAGE SECTION."
        lines = ["       " + line for line in head.split("|") + self.data + ["PROCEDURE DIVISION.", "MAIN-P."]]
        return "\n".join(lines + self.code + ["           STOP RUN.", ""])


def numeric_items(numbers, program, count=24):
    items = [Item(numbers, f"W{i}") for i in range(count)]
    for item in items:
        program.data.append(f"01 {item.name} PIC {item.picture} {item.usage}.")
        unsigned = item.picture.removeprefix("S")
        program.data.append(f"01 O-{item.name} PIC S{unsigned} SIGN LEADING SEPARATE.")
        program.data.append(f"01 X-{item.name} REDEFINES O-{item.name} PIC X({item.digits + 1}).")
    return items


def show_item(program, item, digits, flag, about):
    program.statement(f"MOVE {item.name} TO O-{item.name}")
    digits = item.shown(digits)
    program.show(f"X-{item.name} FLAG", f"{'-' if digits < 0 else '+'}{abs(digits):0{item.digits}d}{flag}", about)


FORMULAS = ["A + B * D", "( A - B ) * D", "A - ( B - D )", "A * B", "( A + B ) / D", "A + B - D", "- A + B"]


def arithmetic(numbers):
    """Each statement with one receiver: rounding, truncation, size errors that leave it as it was."""
    program = Program("ARITH")
    items = numeric_items(numbers, program)
    program.data.append("01 FLAG PIC X.")
    while len(program.expected) < STATEMENTS:
        a, b, c, d = numbers.sample(items, 4)
        A, B, C, D = (item.random_value(numbers) for item in (a, b, c, d))
        quotient = lambda over, under: over / under if under else None
        kind = numbers.randrange(12)
        formula = numbers.choice(FORMULAS)
        if "/" in formula and D == 0:
            computed = None
        else:
            computed = eval(formula, {"A": A, "B": B, "D": D})
        written = " ".join({"A": a.name, "B": b.name, "D": d.name}.get(word, word) for word in formula.split(" "))
        rounded = numbers.random() < 0.4 and kind != 9
        to = c.name + (" ROUNDED" if rounded else "")
        text, result = [
            (f"ADD {a.name} {b.name} TO {to}", A + B + C),
            (f"SUBTRACT {a.name} {b.name} FROM {to}", C - A - B),
            (f"MULTIPLY {a.name} BY {to}", A * C),
            (f"DIVIDE {a.name} INTO {to}", quotient(C, A)),
            (f"ADD {a.name} {b.name} GIVING {to}", A + B),
            (f"SUBTRACT {a.name} FROM {b.name} GIVING {to}", B - A),
            (f"MULTIPLY {a.name} BY {b.name} GIVING {to}", A * B),
            (f"DIVIDE {a.name} BY {b.name} GIVING {to}", quotient(A, B)),
            (f"DIVIDE {a.name} INTO {b.name} GIVING {to}", quotient(B, A)),
            (f"DIVIDE {a.name} BY {b.name} GIVING {to} REMAINDER {d.name}", quotient(A, B)),
            (f"COMPUTE {to} = {written}", computed),
            (f"MOVE {a.name} TO {c.name}", A),
        ][kind]
        values = list(zip((a, b, c, d), (A, B, C, D)))
        about = text + "".join(f"\n    {i.name} {i.picture} {i.usage}: {literal(v)}" for i, v in values)
        before = {item: item.stored(value)[0] for item, value in values}
        after, flag = {}, "N"
        if kind == 11:
            if c.usage == "COMP-5" and c.stored(A)[1]:
                continue
            after[c] = int(A * Fraction(10) ** c.scale) if c.usage == "COMP-5" and c.signed else c.moved(A)
            flag = " "
        else:
            digits, size_error = c.stored(result, rounded) if result is not None else (0, True)
            after[c] = before[c] if size_error else digits
            if kind == 9 and not size_error:
                exact = Fraction(int(result * Fraction(10) ** c.scale)) / Fraction(10) ** c.scale
                after[d], size_error = d.stored(A - exact * B)
            if kind == 9 and size_error:
                after[d] = before[d]
            flag = "E" if size_error else "N"
            if numbers.random() < 0.4:  # without the phrase; what a size error leaves is not laid down then
                if size_error:
                    continue
                flag = " "
        for item, value in values:
            program.statement(f"MOVE {literal(value)} TO {item.name}")
        program.statement("MOVE SPACE TO FLAG")
        if flag != " ":
            text += " ON SIZE ERROR MOVE 'E' TO FLAG NOT ON SIZE ERROR MOVE 'N' TO FLAG"
        program.statement(text + ".")
        for item, digits in after.items():
            show_item(program, item, digits, flag, about)
    return program


def relations(numbers):
    """Numbers of all usages, texts of all lengths, figurative constants: less, equal, greater."""
    program = Program("RELATE")
    items = numeric_items(numbers, program, 16)
    texts = [(f"T{i}", numbers.randint(1, 12)) for i in range(12)]
    for name, size in texts:
        program.data.append(f"01 {name} PIC X({size}).")
    while len(program.expected) < STATEMENTS:
        order = None
        if numbers.random() < 0.5:
            a, b = numbers.sample(items, 2)
            A = a.random_value(numbers)
            B = b.random_value(numbers)
            if numbers.random() < 0.5 and 0 <= b.scale <= 18:  # near each other, to be told apart by the last digit
                B = Fraction(b.moved(A + numbers.choice([-1, 0, 0, 1]) * Fraction(1, 10**b.scale))) / Fraction(10) ** b.scale
            program.statement(f"MOVE {literal(A)} TO {a.name} MOVE {literal(B)} TO {b.name}")
            left, right, order = a.name, b.name, (A > B) - (A < B)
            if numbers.random() < 0.2:
                right, order = "ZERO", (A > 0) - (A < 0)
            about = f"{a.picture} {a.usage} {literal(A)}, {b.picture} {b.usage} {literal(B)}"
        else:
            (left, n), (right, m) = numbers.sample(texts, 2)
            alphabet = numbers.choice(["AB ", "AAAAB", "a1Z *"])
            A, B = ("".join(numbers.choice(alphabet) for _ in range(size)) for size in (n, m))
            if numbers.random() < 0.4:
                B = A
            program.statement(f"MOVE '{A}' TO {left} MOVE '{B}' TO {right}")
            B = f"{B:{m}}"[:m]
            filled = numbers.randrange(4)
            if filled == 0:
                right, B = numbers.choice([("SPACES", " " * n), ("LOW-VALUES", "\0" * n), ("HIGH-VALUES", "\xff" * n), ("ZEROS", "0" * n)])
            elif filled == 1:
                part = "".join(numbers.choice(alphabet) for _ in range(numbers.randint(1, 3)))
                right, B = f"ALL '{part}'", (part * n)[:n]
            size = max(n, len(B))
            A, B = A.ljust(size), B.ljust(size)
            order = (A > B) - (A < B)
            about = f"'{A}', '{B}'"
        operator, holds = numbers.choice(
            [("=", order == 0), ("NOT =", order != 0), ("<", order < 0), (">", order > 0), ("NOT LESS THAN", order >= 0), ("NOT GREATER", order <= 0)]
        )
        program.statement(f"IF {left} {operator} {right}")
        number = len(program.expected)
        program.statement(f"DISPLAY {number} ' T' ELSE DISPLAY {number} ' F'.")
        program.expected.append(("T" if holds else "F", f"{left} {operator} {right}: {about}"))
    return program


RELATIONS = {
    "=": lambda a, b: a == b, "<": lambda a, b: a < b, ">": lambda a, b: a > b, ">=": lambda a, b: a >= b, "<=": lambda a, b: a <= b,
    "NOT =": lambda a, b: a != b, "NOT <": lambda a, b: a >= b, "NOT >": lambda a, b: a <= b, "<>": lambda a, b: a != b,
    "IS EQUAL TO": lambda a, b: a == b, "GREATER": lambda a, b: a > b, "IS NOT LESS THAN": lambda a, b: a >= b, "NOT EQUAL": lambda a, b: a != b,
    "IS GREATER THAN OR EQUAL TO": lambda a, b: a >= b, "LESS THAN OR EQUAL": lambda a, b: a <= b, "IS NOT GREATER THAN": lambda a, b: a <= b,
}


def random_condition(numbers, values, depth):
    """A combined condition, abbreviated where it may be, and whether it holds."""
    names = list(values)

    def operand():
        name, kind = numbers.choice(names), numbers.random()
        if kind < 0.6:
            return name, values[name]
        if kind < 0.75:
            number = numbers.randint(0, 4)
            return str(number), number
        other, sign = numbers.choice(names), numbers.choice("+-*")
        return f"{name} {sign} {other}", eval(f"{values[name]} {sign} {values[other]}")

    text, holds, carried, alternatives = "", True, None, False
    for place in range(numbers.choice([1, 2, 2, 3, 4])):
        connector = numbers.choice(["AND", "OR"]) if place else ""
        negated, kind = numbers.random() < 0.25, numbers.random()
        if depth and kind < 0.25:
            inner, value = random_condition(numbers, values, depth - 1)
            written, carried = f"( {inner} )", None
        elif kind < 0.35:
            name = numbers.choice(names)
            sign, value = numbers.choice([("POSITIVE", values[name] > 0), ("IS NEGATIVE", values[name] < 0), ("ZERO", values[name] == 0), ("IS NOT ZERO", values[name] != 0)])
            written, carried = f"{name} {sign}", None
        elif kind < 0.45:
            name = numbers.choice(names)
            written, value, carried = f"{name}-88", values[name] in (1, 3, 4), None
        elif carried and numbers.random() < 0.6:
            subject, operator = carried
            right, b = operand()
            written = right
            if numbers.random() < 0.5:
                operator = numbers.choice(list(RELATIONS))
                written = f"{operator} {right}"
                # NOT before an operator is the operator's: it is left to those that have one.
                negated = False
            carried = subject, operator
            value = RELATIONS[operator](subject[1], b)
        else:
            subject, operator, (right, b) = operand(), numbers.choice(list(RELATIONS)), operand()
            carried = subject, operator
            written, value = f"{subject[0]} {operator} {right}", RELATIONS[operator](subject[1], b)
        value = bool(value) != negated
        text += f" {connector} {'NOT ' if negated else ''}{written}"
        if connector == "OR":
            alternatives, holds = alternatives or holds, value
        else:
            holds = holds and value
    return text.strip(), holds or alternatives


def conditions(numbers):
    program = Program("CONDS")
    usages = {"A1": "9", "B1": "S9(4) COMP", "C1": "S9(3) COMP-3", "D1": "S9V9", "E1": "S9(9) COMP-5"}
    for name, picture in usages.items():
        program.data += [f"01 {name} PIC {picture}.", f"   88 {name}-88 VALUES 1, 3 THRU 4."]
    while len(program.expected) < STATEMENTS:
        values = {name: numbers.randint(0 if name == "A1" else -1, 4) for name in usages}
        for name, value in values.items():
            program.statement(f"MOVE {value} TO {name}")
        text, holds = random_condition(numbers, values, 2)
        number = len(program.expected)
        program.statement(f"IF {text} DISPLAY {number} ' T' ELSE DISPLAY {number} ' F'.")
        program.expected.append(("T" if holds else "F", f"{text} {values}"))
    return program


def calls(numbers):
    """Function calls with their values, from Python's own."""

    def some(low=-999, high=999, decimals=2):
        return Fraction(numbers.randint(low * 10**decimals, high * 10**decimals), 10**decimals)

    while True:
        x, unit, positive = some(), some(-1, 1, 3), some(1, 999)
        xs = [some() for _ in range(numbers.randint(1, 8))]
        listed = " ".join(map(literal, xs))
        mean = sum(xs) / len(xs)
        variance = sum((v - mean) ** 2 for v in xs) / len(xs)
        for name, value in (
            ("MAX", max(xs)), ("MIN", min(xs)), ("SUM", sum(xs)), ("MEAN", mean), ("MEDIAN", statistics.median(xs)),
            ("MIDRANGE", (max(xs) + min(xs)) / 2), ("RANGE", max(xs) - min(xs)), ("VARIANCE", variance),
            ("STANDARD-DEVIATION", math.sqrt(variance)), ("ORD-MAX", xs.index(max(xs)) + 1), ("ORD-MIN", xs.index(min(xs)) + 1),
        ):
            yield f"FUNCTION {name} ( {listed} )", value
        for name, argument, of in (
            ("ACOS", unit, math.acos), ("ASIN", unit, math.asin), ("ATAN", x, math.atan), ("SIN", x, math.sin), ("COS", x, math.cos),
            ("TAN", unit, math.tan), ("SQRT", positive, math.sqrt), ("LOG", positive, math.log), ("LOG10", positive, math.log10),
            ("INTEGER", x, math.floor), ("INTEGER-PART", x, math.trunc),
        ):
            yield f"FUNCTION {name} ( {literal(argument)} )", of(argument)
        dividend, divisor = numbers.randint(-99, 99), numbers.choice([-7, -3, 2, 5, 11])
        yield f"FUNCTION MOD ( {dividend} {divisor} )", dividend % divisor
        divisor = numbers.choice([Fraction(-73, 10), Fraction(11, 5), Fraction(3)])
        yield f"FUNCTION REM ( {literal(x)} {literal(divisor)} )", x - divisor * math.trunc(x / divisor)
        n = numbers.randint(1, 15)
        yield f"FUNCTION FACTORIAL ( {n} )", math.factorial(n)
        rate = some(0, 1, 3) + Fraction(1, 1000)
        yield f"FUNCTION ANNUITY ( {literal(rate)} {n} )", rate / (1 - (1 + rate) ** -n)
        yield f"FUNCTION PRESENT-VALUE ( {literal(rate)} {listed} )", sum(v / (1 + rate) ** (i + 1) for i, v in enumerate(xs))
        day = datetime.date(1601, 1, 1) + datetime.timedelta(numbers.randrange(200000))
        serial = (day - datetime.date(1600, 12, 31)).days
        yield f"FUNCTION INTEGER-OF-DATE ( {day:%Y%m%d} )", serial
        yield f"FUNCTION DATE-OF-INTEGER ( {serial} )", int(f"{day:%Y%m%d}")
        yield f"FUNCTION INTEGER-OF-DAY ( {day:%Y%j} )", serial
        yield f"FUNCTION DAY-OF-INTEGER ( {serial} )", int(f"{day:%Y%j}")
        yield f"FUNCTION NUMVAL ( ' {literal(x)} ' )", x
        yield f"FUNCTION NUMVAL-C ( '$1,{n + 100}.50CR' '$' )", -(1100 + n + Fraction(1, 2))
        yield f"FUNCTION MAX ( {n} FUNCTION MOD ( {serial} 7 ) FUNCTION SUM ( {listed} ) ) * 2 - {n}", max(n, serial % 7, sum(xs)) * 2 - n
        yield f"{literal(x)} ** 3", x**3
        yield f"{literal(positive)} ** 0.5", math.sqrt(positive)


def functions(numbers):
    program = Program("FUNCTS")
    program.data.append("01 RESULT PIC S9(15)V9(9) SIGN LEADING SEPARATE.")
    source = calls(numbers)
    while len(program.expected) < STATEMENTS:
        text, value = next(source)
        program.statement(f"COMPUTE RESULT = {text}")
        program.show("RESULT", float(value), text)
    return program


def same(got, expected):
    if isinstance(expected, str):  # a negative number that is cut to zeros may keep its sign
        return got == expected or (set(expected[1:]) <= set("0 NE") and got == "-" + expected[1:])
    return abs(float(got) - expected) <= max(1e-8, abs(expected) * 1e-9)


def run_models(models, arguments):
    compiler, kind, first, count = pathlib.Path(arguments[1]).resolve(), arguments[2], int(arguments[3]), int(arguments[4])
    failed = 0
    for seed in range(first, first + count):
        program = models[kind](random.Random(seed))
        with tempfile.TemporaryDirectory() as work:
            (pathlib.Path(work) / "model.cbl").write_text(program.text())
            subprocess.run([compiler, "-O0", "-o", "model", "model.cbl"], cwd=work, check=True)
            lines = subprocess.run(["./model"], cwd=work, check=True, capture_output=True, encoding="latin-1").stdout.splitlines()
        if len(lines) != len(program.expected):
            print(f"{kind} {seed}: {len(lines)} lines of {len(program.expected)}")
            failed += 1
        for line, (expected, about) in zip(lines, program.expected):
            got = line.split(" ", 1)[1]
            if not same(got, expected):
                print(f"{kind} {seed}: {about}\n  gave {got}, expected {expected}")
                failed += 1
    print(f"{kind}: {count} programs, {failed} differences")
    sys.exit(failed > 0)


if __name__ == "__main__":
    run_models({"arithmetic": arithmetic, "relations": relations, "functions": functions, "conditions": conditions}, sys.argv)
