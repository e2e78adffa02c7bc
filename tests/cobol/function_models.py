#!/usr/bin/env python3
"""Random expressions of nested intrinsic functions in all the places where one may be, held against Python's own.

function_models.py KVRCOB FIRST COUNT. Arguments are items of every usage, literals, expressions, other functions and
whole tables (ALL); results go into COMPUTE, conditions, DISPLAY, MOVE, STRING, subscripts, reference modifiers and CALL.
A number is a Fraction while it is exact, and a float from the first function on that is not.
"""
import datetime
import math
import random
import statistics
import sys
from fractions import Fraction

from trial import Trial

STATEMENTS = 120
LETTERS = "ABCabcXYZ019 .-,"
NUMBERS = {
    "Z1": "S9(4)V99", "Z2": "9(5)", "Z3": "S9(3)V9 SIGN LEADING SEPARATE", "Z4": "S9(4) SIGN TRAILING SEPARATE", "Z5": "S99V9(3) SIGN LEADING",
    "P1": "S9(5)V99 COMP-3", "P2": "9(4) COMP-3", "P3": "SV9(4) PACKED-DECIMAL", "B1": "S9(4) COMP", "B2": "S9(6)V999 BINARY", "B3": "9(9) COMP",
    "C1": "S9(4) COMP-5", "C2": "S9(9) COMP-5", "F1": "COMP-1", "F2": "COMP-2", "S1": "S9(3)PP", "L1": "S9(12)V9(3)", "X1": "9(4) COMP-X",
}
SMALL = {"I1": "9", "I2": "99 COMP", "I3": "9 COMP-3", "I4": "S9(4) COMP-5", "I5": "9(2) COMP-X"}  # 1 to 4 each
TEXTS = {"T1": 1, "T2": 3, "T3": 8, "T4": 15, "T5": 24}
TABLES = {"TZ": "S9(3)V9", "TP": "S9(4)V99 COMP-3", "TF": "COMP-2", "TB": "S9(5) COMP"}
DAY_ZERO = datetime.date(1600, 12, 31)


def literal(value):
    """An exact number as it is written."""
    whole, rest = divmod(abs(Fraction(value)), 1)
    text = str(whole)
    if rest:
        text += "."
    while rest:
        digit, rest = divmod(rest * 10, 1)
        text += str(digit)
    return ("-" if value < 0 else "") + text


def digits_of(picture):
    head = picture.split()[0].lstrip("S").replace("PP", "")
    whole, _, places = head.partition("V")
    count = lambda part: int(part[2:-1]) if "(" in part else len(part)
    return (count(whole) if whole else 0), (count(places) if places else 0)


class Skip(Exception):
    """An expression that has no value, or one that is too near to where the answer changes."""


class Model:
    def __init__(self, numbers):
        self.r = numbers
        self.values, self.data, self.code, self.expected, self.parts = {}, [], [], [], set()
        r = self.r
        for name, picture in {**NUMBERS, **SMALL}.items():
            self.values[name] = Fraction(r.randint(1, 4)) if name in SMALL else self.some(picture)
            self.declare(name, picture)
        self.order = {name: index for index, name in enumerate(TEXTS)}
        for name, size in TEXTS.items():
            self.values[name] = self.letters(r.randint(1, size)).ljust(size)
            self.data.append(f'01 {name} PIC X({size}) VALUE "{self.values[name]}".')
        self.tables = {}
        for name, picture in TABLES.items():
            rows = [[self.some(picture) for _ in range(3)] for _ in range(4)]
            self.tables[name] = rows
            self.data += [f"01 {name}-G.", f" 02 {name}-R OCCURS 4.", f"  03 {name} {self.clause(picture)} OCCURS 3."]
            self.code += [f"MOVE {literal(v)} TO {name} ({i + 1}, {j + 1})" for i, row in enumerate(rows) for j, v in enumerate(row)]
        self.odo = [Fraction(r.randint(-99, 99)) for _ in range(r.randint(1, 6))]
        self.data += ["01 OD-N PIC 99 COMP.", "01 OD-G.", " 02 OD PIC S99 OCCURS 1 TO 6 DEPENDING ON OD-N."]
        self.code.append(f"MOVE {len(self.odo)} TO OD-N")
        self.code += [f"MOVE {literal(v)} TO OD ({i + 1})" for i, v in enumerate(self.odo)]
        self.words = [self.letters(r.randint(1, 4)).ljust(4) for _ in range(4)]
        self.data += ["01 WD-G.", " 02 WD PIC X(4) OCCURS 4."]
        self.code += [f'MOVE "{v}" TO WD ({i + 1})' for i, v in enumerate(self.words)]

    def clause(self, picture):
        return picture if picture.startswith("COMP") else "PIC " + picture

    def declare(self, name, picture):
        self.data.append(f"01 {name} {self.clause(picture)}.")
        self.code.append(f"MOVE {literal(self.values[name])} TO {name}")

    def some(self, picture):
        r = self.r
        if picture.startswith("COMP"):
            return r.randint(-4000, 4000) / r.choice([1, 4, 8])
        whole, places = digits_of(picture)
        value = Fraction(r.randint(0, 10 ** r.randint(1, whole + places) - 1), 10**places) * (100 if "PP" in picture else 1)
        return -value if picture.startswith("S") and r.random() < 0.4 else value

    def letters(self, count):
        return "".join(self.r.choice(LETTERS) for _ in range(count))

    def joined(self, arguments):
        """Arguments with commas, or blanks where no sign or parenthesis follows."""
        text = arguments[0]
        for argument in arguments[1:]:
            text += (self.r.choice([" ", ", "]) if argument[0] not in "+-(" else ", ") + argument
        return text

    def call(self, name, arguments):
        space = self.r.choice(["", " "])
        return f"{self.r.choice(['FUNCTION ', 'Function ', 'FUNCTION '])}{name}{space}({self.joined(arguments)})"

    # Numbers: (text, value).

    def number(self, depth):
        r = self.r
        while True:
            text, value = self.one_number(depth)
            if abs(value) < 10**11 and (not isinstance(value, Fraction) or value.denominator <= 10**9):
                return text, value

    def leaf(self):
        r, kind = self.r, self.r.random()
        if kind < 0.5:
            name = r.choice(list({**NUMBERS, **SMALL}))
            return name, self.values[name]
        if kind < 0.7:
            name, i, j = r.choice(list(TABLES)), r.randint(1, 4), r.randint(1, 3)
            index = r.choice([str(i), *[n for n in SMALL if self.values[n] == i], *[f"{n} + {i - self.values[n]}" for n in ("I1", "I4") if self.values[n] < i]])
            return f"{name} ({index}, {j})", self.tables[name][i - 1][j - 1]
        value = Fraction(r.randint(-500, 500), r.choice([1, 1, 10, 100]))
        return literal(value), value

    def numbers(self, depth):
        """Arguments of a function that takes many: their texts and values."""
        r, texts, values = self.r, [], []
        for _ in range(r.randint(1, 4)):
            kind = r.random()
            if kind < 0.35:
                name, i, j = r.choice(list(TABLES)), r.randint(1, 4), r.randint(1, 3)
                rows = self.tables[name]
                text, some = r.choice([
                    (f"{name} (ALL, ALL)", [v for row in rows for v in row]), (f"{name} ({i}, ALL)", rows[i - 1]),
                    (f"{name} (ALL, {j})", [row[j - 1] for row in rows]), ("OD (ALL)", self.odo),
                ])
            else:
                text, value = self.number(depth - 1)
                some = [value]
            texts.append(text)
            values += some
        return texts, values

    def positive(self, depth):
        text, value = self.number(depth)
        if value > 0:
            return text, value
        return f"{self.call('ABS', [text])} + 1", abs(value) + 1

    def unit(self, depth):
        text, value = self.number(depth)
        value = value / 100000000
        return f"({text}) / 100000000", float(value) if not isinstance(value, Fraction) or value.denominator > 10**12 else value

    def whole(self, depth):
        """An integer."""
        text, value = self.number(depth)
        near = abs(value - round(value))
        if isinstance(value, Fraction) and near == 0:
            return text, value
        if not isinstance(value, Fraction) and near < 1e-6:
            raise Skip
        name, of = self.r.choice([("INTEGER", math.floor), ("INTEGER-PART", math.trunc)])
        return self.call(name, [text]), Fraction(of(value))

    def day(self):
        day = datetime.date(1601, 1, 1) + datetime.timedelta(self.r.randrange(300000))
        return day, Fraction((day - DAY_ZERO).days)

    def one_number(self, depth):
        r = self.r
        if depth <= 0:
            return self.leaf()
        kind = r.choice(["leaf", "sum", "one", "one", "many", "many", "float", "date", "text", "two", "two", "digits", "window"])
        if kind == "leaf":
            return self.leaf()
        if kind == "sum":
            (a, x), (b, y) = self.number(depth - 1), self.number(depth - 1)
            sign = r.choice("+-*")
            if not (isinstance(x, Fraction) and isinstance(y, Fraction)):
                x, y = float(x), float(y)
            return f"({a}) {sign} ({b})", x + y if sign == "+" else x - y if sign == "-" else x * y
        if kind == "one":
            text, x = self.number(depth - 1)
            near = abs(x - round(x)) < 1e-6 and not isinstance(x, Fraction)
            name, of = r.choice([
                ("ABS", abs), ("INTEGER", math.floor), ("INTEGER-PART", math.trunc), ("FRACTION-PART", lambda v: v - math.trunc(v)),
                ("SIGN", lambda v: (v > 0) - (v < 0)),
            ])
            if name != "ABS" and near or name == "FRACTION-PART" and not isinstance(x, Fraction) and abs(x) > 1e5:
                raise Skip
            value = of(x)
            return self.call(name, [text]), Fraction(value) if isinstance(value, int) else value
        if kind == "many":
            texts, values = self.numbers(depth)
            exact = all(isinstance(v, Fraction) for v in values)
            if not exact:
                values = [float(v) for v in values]
            mean = sum(values) / len(values)
            variance = float(sum((v - mean) ** 2 for v in values) / len(values))
            ties = len({round(float(v), 6) for v in values}) < len(values) and not exact
            name, value = r.choice([
                ("MAX", max(values)), ("MIN", min(values)), ("SUM", sum(values)), ("MEAN", mean), ("MEDIAN", statistics.median(values)),
                ("MIDRANGE", (max(values) + min(values)) / 2), ("RANGE", max(values) - min(values)), ("VARIANCE", variance),
                ("STANDARD-DEVIATION", math.sqrt(variance)), ("ORD-MAX", Fraction(values.index(max(values)) + 1)), ("ORD-MIN", Fraction(values.index(min(values)) + 1)),
            ])
            if ties and name.startswith("ORD"):
                raise Skip
            if isinstance(value, Fraction) and (10**9 % value.denominator or name in ("MEAN", "MEDIAN", "MIDRANGE")):
                value = float(value)
            return self.call(name, texts), value
        if kind == "float":
            name, of, argument = r.choice([
                ("SIN", math.sin, self.number), ("COS", math.cos, self.number), ("ATAN", math.atan, self.number), ("ACOS", math.acos, self.unit),
                ("ASIN", math.asin, self.unit), ("TAN", math.tan, self.unit), ("SQRT", math.sqrt, self.positive), ("LOG", math.log, self.positive),
                ("LOG10", math.log10, self.positive), ("EXP", math.exp, self.unit), ("EXP10", lambda v: 10.0**v, self.unit),
            ])
            text, x = argument(depth - 1)
            if name in ("SIN", "COS") and not isinstance(x, Fraction) and abs(x) > 10000:
                raise Skip
            return self.call(name, [text]), of(float(x))
        if kind == "date":
            day, serial = self.day()
            return r.choice([
                (self.call("INTEGER-OF-DATE", [f"{day:%Y%m%d}"]), serial), (self.call("DATE-OF-INTEGER", [literal(serial)]), Fraction(int(f"{day:%Y%m%d}"))),
                (self.call("INTEGER-OF-DAY", [f"{day:%Y%j}"]), serial), (self.call("DAY-OF-INTEGER", [literal(serial)]), Fraction(int(f"{day:%Y%j}"))),
                (self.call("TEST-DATE-YYYYMMDD", [f"{day:%Y%m%d}"]), Fraction(0)), (self.call("TEST-DAY-YYYYDDD", [f"{day:%Y%j}"]), Fraction(0)),
                (self.call("INTEGER-OF-FORMATTED-DATE", ['"YYYYMMDD"', f'"{day:%Y%m%d}"']), serial),
                (self.call("INTEGER-OF-FORMATTED-DATE", ['"YYYY-DDD"', f'"{day:%Y-%j}"']), serial),
                (self.call("INTEGER-OF-FORMATTED-DATE", ['"YYYY-Www-D"', f'"{day.isocalendar()[0]:04d}-W{day.isocalendar()[1]:02d}-{day.isoweekday()}"']), serial),
            ])
        if kind == "text":
            text, value = self.text(depth - 1)
            if r.random() < 0.6:
                return self.call(r.choice(["LENGTH", "BYTE-LENGTH"]), [text]), Fraction(len(value))
            if len(value) < 1:
                raise Skip
            place = r.randint(1, len(value))
            return self.call("ORD", [self.modified(text, place, 1)]), Fraction(ord(value[place - 1]) + 1)
        if kind == "two":
            name = r.choice(["MOD", "REM", "ANNUITY", "PRESENT-VALUE", "FACTORIAL", "ORD-MAX", "COMBINED-DATETIME"])
            if name == "FACTORIAL":
                text = r.choice(list(SMALL))
                return self.call(name, [text]), Fraction(math.factorial(int(self.values[text])))
            if name == "ORD-MAX":
                which = r.choice(["MAX", "MIN"])
                return self.call("ORD-" + which, ["WD (ALL)"]), Fraction(self.words.index({"MAX": max, "MIN": min}[which](self.words)) + 1)
            if name == "ANNUITY":
                (a, x), n = self.unit(depth - 1), r.randint(1, 9)
                x = abs(float(x))
                a = self.call("ABS", [a])
                if x < 1e-4:
                    raise Skip
                return self.call(name, [a, str(n)]), x / (1 - (1 + x) ** -n)
            if name == "PRESENT-VALUE":
                (a, x), (texts, values) = self.unit(depth - 1), self.numbers(depth)
                x = abs(float(x))
                return self.call(name, [self.call("ABS", [a])] + texts), sum(float(v) / (1 + x) ** (i + 1) for i, v in enumerate(values))
            if name == "COMBINED-DATETIME":
                _, serial = self.day()
                seconds = Fraction(r.randrange(864000), 10)
                return self.call(name, [literal(serial), literal(seconds)]), serial + seconds / 100000
            (a, x), (b, y) = (self.whole(depth - 1), self.whole(depth - 1)) if name == "MOD" else (self.number(depth - 1), self.number(depth - 1))
            if y == 0 or not isinstance(x, Fraction) or not isinstance(y, Fraction) or abs(x) > 10**11:
                raise Skip
            return self.call(name, [a, b]), Fraction(x - y * (math.floor(x / y) if name == "MOD" else math.trunc(x / y)))
        if kind == "digits":
            value = Fraction(r.randint(0, 99999), r.choice([1, 10, 100]))
            text, sign = literal(value), r.random() < 0.5
            ahead = r.choice([" ", "", "  "])
            name = r.choice(["NUMVAL", "NUMVAL-C", "NUMVAL-F"])
            if name == "NUMVAL-F":
                power = r.randint(-3, 4)
                text = f"{literal(value) if '.' in literal(value) else literal(value) + '.'}E{power:+03d}"
                value = value * Fraction(10) ** power
                return self.call(name, [f'"{ahead}{"-" if sign else r.choice(["", "+"])}{text}"']), float(-value if sign else value)
            if name == "NUMVAL-C" and value >= 1000:
                text = text[: len(str(int(value))) - 3] + "," + text[len(str(int(value))) - 3 :]
            if name == "NUMVAL-C":
                text = "$" + r.choice(["", " "]) + text
            forms = ["-{}", "- {}", "{}-", "{} -", "{}CR", "{} db"] if sign else ["{}", "+{}", "{}+", "+ {} "]
            text = ahead + r.choice(forms).format(text) + r.choice(["", "  "])
            return self.call(name, [f'"{text}"']), -value if sign else value
        year, window = r.randint(0, 99), r.choice([0, 50, 20, -10, 99])
        now = datetime.date.today().year
        full = [y for y in range(now + window - 99, now + window + 1) if y % 100 == year][0]
        return r.choice([
            (self.call("YEAR-TO-YYYY", [f"{year}", f"{window}"]), Fraction(full)),
            (self.call("DATE-TO-YYYYMMDD", [f"{year:02d}0917", f"{window}"]), Fraction(full * 10000 + 917)),
            (self.call("DAY-TO-YYYYDDD", [f"{year:02d}099", f"{window}"]), Fraction(full * 1000 + 99)),
        ])

    # Texts: (text, value).

    def modified(self, text, place, count):
        """Reference modification by literals or by expressions."""
        r = self.r
        if text.startswith('"') or text in self.parts:
            raise Skip
        small = [n for n in SMALL if self.values[n] == place]
        start = r.choice([str(place), *small, f"{place + 1} - 1", self.call("INTEGER", [f"{place}.5"])])
        part = f"{text}({start}:{r.choice([str(count), f'{count + 2} - 2', self.call('MAX', [str(count), '0'])])})"
        self.parts.add(part)
        return part

    def text(self, depth):
        r = self.r
        if depth <= 0 or r.random() < 0.15:
            kind = r.random()
            if kind < 0.5:
                name = r.choice(list(TEXTS))
                return name, self.values[name]
            if kind < 0.65:
                i = r.randint(1, 4)
                return f"WD ({i})", self.words[i - 1]
            if kind < 0.75:
                return "WD-G", "".join(self.words)
            value = self.letters(r.randint(1, 9))
            return f'"{value}"', value
        kind = r.choice(["case", "case", "reverse", "trim", "concat", "extreme", "char", "part", "substitute", "hex", "date", "time"])
        if kind == "char":
            code = r.choice([*range(66, 90), *range(98, 122)])
            if r.random() < 0.5:
                return self.call("CHAR", [str(code + 1)]), chr(code)
            return self.call("CHAR", [f"{self.call('ORD', [chr(34) + chr(code) + chr(34)])} + 1"]), chr(code + 1)
        if kind == "extreme":
            some = [self.text(depth - 1) for _ in range(r.randint(1, 3))]
            texts, values = [t for t, _ in some], [v for _, v in some]
            if r.random() < 0.4:
                texts.append("WD (ALL)")
                values += self.words
            which = r.choice(["MAX", "MIN"])
            padded = [v.ljust(60) for v in values]
            if len(set(padded)) < len(padded):
                raise Skip
            return self.call(which, texts), values[padded.index({"MAX": max, "MIN": min}[which](padded))]
        if kind == "concat":
            some = [self.text(depth - 1) for _ in range(r.randint(1, 3))]
            return self.call(r.choice(["CONCATENATE", "CONCAT"]), [t for t, _ in some]), "".join(v for _, v in some)
        if kind == "date":
            day, serial = self.day()
            form, value = r.choice([
                ("YYYYMMDD", f"{day:%Y%m%d}"), ("YYYY-MM-DD", f"{day:%Y-%m-%d}"), ("YYYYDDD", f"{day:%Y%j}"), ("YYYY-DDD", f"{day:%Y-%j}"),
                ("YYYYWwwD", "{:04d}W{:02d}{}".format(*day.isocalendar())), ("YYYY-Www-D", "{:04d}-W{:02d}-{}".format(*day.isocalendar())),
            ])
            return self.call("FORMATTED-DATE", [f'"{form}"', literal(serial)]), value
        if kind == "time":
            seconds = r.randrange(86400)
            hours, minutes, rest = seconds // 3600, seconds // 60 % 60, seconds % 60
            if r.random() < 0.5:
                return self.call("FORMATTED-TIME", ['"hh:mm:ss"', str(seconds)]), f"{hours:02d}:{minutes:02d}:{rest:02d}"
            day, serial = self.day()
            return self.call("FORMATTED-DATETIME", ['"YYYYMMDDThhmmss"', literal(serial), str(seconds)]), f"{day:%Y%m%d}T{hours:02d}{minutes:02d}{rest:02d}"
        text, value = self.text(depth - 1)
        if kind == "case":
            name, of = r.choice([("UPPER-CASE", str.upper), ("LOWER-CASE", str.lower)])
            return self.call(name, [text]), of(value)
        if kind == "reverse":
            return self.call("REVERSE", [text]), value[::-1]
        if kind == "trim":
            side = r.choice(["", " LEADING", " TRAILING"])
            return self.call("TRIM", [text + side]), value.lstrip(" ") if side == " LEADING" else value.rstrip(" ") if side else value.strip(" ")
        if kind == "hex":
            if len(value) > 15:
                raise Skip
            return self.call("HEX-OF", [text]), value.encode().hex().upper()
        if kind == "substitute":
            old, new = self.letters(r.randint(1, 2)), self.letters(r.randint(1, 3))
            return self.call("SUBSTITUTE", [text, f'"{old}"', f'"{new}"']), value.replace(old, new)
        if not value:
            raise Skip
        place = r.randint(1, len(value))
        count = r.randint(1, len(value) - place + 1)
        return self.modified(text, place, count), value[place - 1 : place - 1 + count]

    # Places.

    def show(self, line, value, about):
        self.code.append(line)
        self.expected.append((value, about))

    def statement(self):
        r, n = self.r, len(self.expected)
        place = r.choice(["compute", "compute", "compute", "float", "if", "display", "display", "move", "string", "text-if", "subscript", "call", "number-call", "add", "evaluate"])
        if place in ("compute", "float", "add", "number-call"):
            text, value = self.number(3)
            target = "R2" if place == "float" else "R1"
            if place == "number-call":
                self.code.append(f"COMPUTE R1 = {text} CALL 'TAKEN' USING BY CONTENT R1 BY CONTENT FUNCTION LENGTH (T3)")
                self.expected.append((value, text))
                return
            if place == "add":
                self.code.append(f"MOVE 5 TO R1 ADD 1 TO R1 COMPUTE R1 = R1 + ({text}) - 6")
            else:
                self.code.append(f"COMPUTE {target} = {text}")
            self.show(f"DISPLAY {n} ' ' {target}", value, text)
        elif place == "if":
            (a, x), (b, y) = self.number(2), self.number(1)
            if abs(x - y) < 1e-6 * max(1, abs(x)) and not (isinstance(x, Fraction) and isinstance(y, Fraction)):
                raise Skip
            sign, holds = r.choice([("=", x == y), ("<", x < y), (">", x > y), ("NOT <", x >= y), ("<>", x != y)])
            self.show(f"IF {a} {sign} {b} DISPLAY {n} ' T' ELSE DISPLAY {n} ' F' END-IF", "T" if holds else "F", f"{a} {sign} {b}: {float(x)} {float(y)}")
        elif place == "evaluate":
            a, x = self.whole(2)
            self.show(f"EVALUATE {a} WHEN {literal(x)} DISPLAY {n} ' T' WHEN OTHER DISPLAY {n} ' F' END-EVALUATE", "T", f"EVALUATE {a}")
        elif place == "subscript":
            i = r.randint(1, 4)
            text, value = self.whole(1)
            index = f"FUNCTION MIN (4, FUNCTION MAX (1, {text}))"
            i = min(4, max(1, int(value)))
            self.show(f"DISPLAY {n} ' [' WD ({index}) ']'", f"[{self.words[i - 1]}]", f"WD ({index})")
        elif place == "text-if":
            (a, x), (b, y) = self.text(2), self.text(1)
            x, y = x.ljust(100), y.ljust(100)
            sign, holds = r.choice([("=", x == y), ("<", x < y), (">", x > y), ("NOT >", x <= y)])
            if a.startswith('"') and b.startswith('"'):
                raise Skip
            self.show(f"IF {a} {sign} {b} DISPLAY {n} ' T' ELSE DISPLAY {n} ' F' END-IF", "T" if holds else "F", f"{a} {sign} {b}")
        else:
            text, value = self.text(3)
            if place == "display":
                self.show(f"DISPLAY {n} ' [' {text} ']'", f"[{value}]", text)
            elif place == "move":
                self.code.append(f"MOVE {text} TO W1")
                self.show(f"DISPLAY {n} ' [' W1 ']'", f"[{value[:30].ljust(30)}]", "MOVE " + text)
            elif place == "string":
                self.code.append(f"MOVE ALL '*' TO W1 STRING '<' {text} '>' DELIMITED BY SIZE INTO W1")
                self.show(f"DISPLAY {n} ' [' W1 ']'", f"[{('<' + value + '>')[:30].ljust(30, '*')}]", "STRING " + text)
            else:
                self.code.append(f"MOVE {text} TO W1 CALL 'SHOWN' USING BY CONTENT FUNCTION UPPER-CASE (W1)")
                self.expected.append((f"[{value[:30].ljust(30).upper()}]", "CALL " + text))

    def program(self):
        while len(self.expected) < STATEMENTS:
            state = len(self.code), len(self.expected)
            try:
                self.statement()
            except (Skip, OverflowError, ValueError):
                self.code, self.expected = self.code[: state[0]], self.expected[: state[1]]
        head = ["IDENTIFICATION DIVISION.", "PROGRAM-ID. FUNCS.", "DATA DIVISION.", "WORKING-STORAGE SECTION."]
        own = ["01 R1 PIC S9(17)V9(12) SIGN LEADING SEPARATE.", "01 R2 COMP-2.", "01 W1 PIC X(30)."]
        called = ["PROCEDURE DIVISION.", "MAIN-P.", *self.code, "STOP RUN."]
        shown = ["IDENTIFICATION DIVISION.", "PROGRAM-ID. SHOWN.", "DATA DIVISION.", "LINKAGE SECTION.", "01 A PIC X(30)."]
        shown += ["PROCEDURE DIVISION USING A.", "DISPLAY '0 [' A ']'.", "END PROGRAM SHOWN."]
        shown += ["IDENTIFICATION DIVISION.", "PROGRAM-ID. TAKEN.", "DATA DIVISION.", "LINKAGE SECTION.", "01 A PIC S9(17)V9(12) SIGN LEADING SEPARATE."]
        shown += ["PROCEDURE DIVISION USING A.", "DISPLAY '0 ' A.", "END PROGRAM TAKEN."]
        lines = head + self.data + own + called + shown + ["END PROGRAM FUNCS."]
        return "\n".join("       " + line for line in wrapped(lines)) + "\n"


def wrapped(lines):
    """Long lines, broken at blanks that are in no literal."""
    for line in lines:
        while len(line) > 200:
            quoted, at = None, 0
            for place, c in enumerate(line[:200]):
                if quoted:
                    quoted = None if c == quoted else quoted
                elif c in "'\"":
                    quoted = c
                elif c == " ":
                    at = place
            yield line[:at]
            line = line[at:]
        yield line


def same(got, expected):
    if isinstance(expected, str):
        return got == expected
    try:
        value = Fraction(got)
    except ValueError:
        return False
    if isinstance(expected, Fraction) and 10**12 % expected.denominator == 0:
        return value == expected or abs(value - expected) <= abs(expected) / 10**14 and "E" in got.upper()
    return abs(value - Fraction(expected)) <= max(Fraction(1, 10**7), abs(Fraction(expected)) / 10**7)


def main():
    trial, first, count = Trial(sys.argv[1]), int(sys.argv[2]), int(sys.argv[3])
    for seed in range(first, first + count):
        model = Model(random.Random(seed))
        lines = trial.program(seed, model.program())
        got = lines and [line.partition(" ")[2] for line in lines]
        # What is near enough is as expected.
        wanted = [value if isinstance(value, str) else float(value) for value, _ in model.expected]
        for at, (line, value) in enumerate(zip(got or [], wanted)):
            if same(line, value):
                wanted[at] = line
        trial.compare(seed, got, wanted, lambda at: f"  {model.expected[at][1]}\n")
    trial.end(f"functions: {count} programs")


main()
