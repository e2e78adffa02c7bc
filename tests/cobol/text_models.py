#!/usr/bin/env python3
"""Random COBOL programs of moves, editing and the string verbs, held against models of the rules.

text_models.py KVRCOB editing|moves|inspect|string|unstring FIRST COUNT. A model works on Python strings,
character by character, and shares nothing with the library's tables. What a statement leaves is shown between
bars; a difference is printed with its statement and operands.
"""
import sys
from decimal import Decimal
from fractions import Fraction
from random import Random

from models import Program, STATEMENTS, literal, run_models

# ---- Editing ----


def random_picture(numbers, currency="$"):
    """A legal numeric edited picture, as a list of symbols, '.' and ',' in their usual meaning."""

    def sprinkle(symbols, first):
        """Insertion characters between the symbols, and before them when first."""
        out = []
        for place, symbol in enumerate(symbols):
            if (place or first) and numbers.random() < 0.2:
                out += [numbers.choice(",B0/,,")] * numbers.choice([1, 1, 2])
            out.append(symbol)
        return out

    left, right = [], []
    signs = numbers.choice(["", "", "L", "R", "R"])
    if signs == "L":
        left = [numbers.choice("+-")]
    elif signs == "R":
        right = [numbers.choice(["+", "-", "CR", "DB"])]
    kind = numbers.choice(["9", "Z", "*", "$", "sign"])
    whole, decimals = numbers.randint(1, 8), numbers.choice([0, 0, 1, 2, 3])
    if kind == "sign":
        left, right = [], []
        symbol = numbers.choice("+-")
    else:
        symbol = currency if kind == "$" else kind
    if kind != "$" and numbers.random() < 0.3:
        left.append(currency)
    if kind == "9":
        body, tail = ["9"] * whole, ["9"] * decimals
    elif numbers.random() < 0.2:
        body, tail = [symbol] * max(whole, 2), [symbol] * decimals
    else:
        suppressed = numbers.randint(2 if kind in "$sign" else 1, max(whole, 2))
        body, tail = [symbol] * suppressed + ["9"] * (whole - suppressed), ["9"] * decimals
    symbols = left + sprinkle(body, numbers.random() < 0.3)
    while kind != "9" and "0" in symbols[: symbols.index(symbol)]:  # the library takes it for a digit: a comma after it shows
        symbols.remove("0")
    if tail:
        symbols.append("V" if tail[0] == "9" and numbers.random() < 0.15 else ".")
        symbols += sprinkle(tail, False)
    if symbols[-1] == "9" and numbers.random() < 0.1:
        symbols.append(numbers.choice("B0/"))
    return symbols + right


class Picture:
    """What the symbols mean: which are digits, how many on each side, what fills and what floats."""

    def __init__(self, symbols, currency="$"):
        self.symbols, self.currency = symbols, currency
        floats = [s for s in ("+", "-", currency) if self.count_of(s) > 1]
        self.floating = floats[0] if floats else ""
        self.suppressing = "Z" if "Z" in symbols else "*" if "*" in symbols else self.floating
        point = next((i for i, s in enumerate(symbols) if s in ".V"), len(symbols))
        places = [i for i, s in enumerate(symbols) if s in ("9", "Z", "*") or s == self.floating]
        if self.floating:
            places = places[1:]
        self.places, self.point = places, point
        self.whole = sum(i < point for i in places)
        self.decimals = len(places) - self.whole

    def count_of(self, symbol):
        return sum(s == symbol for s in self.symbols)

    def text(self):
        out, i = "", 0
        while i < len(self.symbols):
            end = i
            while end < len(self.symbols) and self.symbols[end] == self.symbols[i]:
                end += 1
            out += self.symbols[i] + f"({end - i})" if end - i > 3 else self.symbols[i] * (end - i)
            i = end
        return out

    def edit(self, value, blank_when_zero=False):
        """The item after the value, cut on both sides, has been edited into it."""
        scaled = int(abs(value) * 10**self.decimals) % 10 ** len(self.places)
        negative = value < 0 and scaled
        digits = f"{scaled:0{len(self.places)}d}" if self.places else ""
        size = len("".join(s for s in self.symbols if s != "V"))
        if not scaled:
            all_suppressed = self.suppressing and all(self.symbols[i] == self.suppressing for i in self.places)
            if blank_when_zero or (all_suppressed and self.suppressing != "*"):
                return " " * size
            if all_suppressed:
                return "".join("." if s == "." else "*" * len(s) for s in self.symbols if s != "V")
        fill = "*" if self.suppressing == "*" else " "
        sign = {"+": "-" if negative else "+", "-": "-" if negative else " ", "CR": "CR" if negative else "  ", "DB": "DB" if negative else "  "}
        sign[self.currency] = self.currency
        inserted = {"B": " ", "0": "0", "/": "/", ",": ",", ".": ".", "V": ""}
        out, suppressing, taken, floated = [], None, 0, None
        for i, symbol in enumerate(self.symbols):
            if i == self.point:
                suppressing = False if suppressing is not None else None
            if symbol in inserted:
                out.append(fill if suppressing else inserted[symbol])
            elif symbol in ("9", "Z", "*") or symbol == self.floating:
                if symbol == self.floating and suppressing is None and i < self.places[0]:
                    suppressing = True
                    out.append(" ")
                    floated = len(out) - 1
                    continue
                digit = digits[taken]
                taken += 1
                if symbol == "9":
                    suppressing = False
                elif suppressing is None:
                    suppressing = i < self.point
                if suppressing and digit != "0":
                    suppressing = False
                out.append(fill if suppressing else digit)
            else:
                out.append(sign[symbol])
            if suppressing and self.floating:
                floated = len(out) - 1
        if self.floating:
            out[floated] = sign[self.floating]
        return "".join(out)


def editing(numbers):
    currency, comma = numbers.choice("$$$FW"), numbers.random() < 0.3
    program = Program("EDITS")
    special = ([f"CURRENCY SIGN IS '{currency}'"] if currency != "$" else []) + (["DECIMAL-POINT IS COMMA"] if comma else [])
    if special:
        program.head = f"ENVIRONMENT DIVISION.|CONFIGURATION SECTION.|SPECIAL-NAMES. {' '.join(special)}.|"
    swap = (lambda text: text.translate(str.maketrans(".,", ",."))) if comma else (lambda text: text)
    for count in range(STATEMENTS):
        picture = Picture(random_picture(numbers, currency), currency)
        if set(picture.symbols) <= {"9", "V"}:
            picture = Picture([*picture.symbols, "+"], currency)
        blank = "*" not in picture.symbols and numbers.random() < 0.15
        name = f"E{count}"
        program.data.append(f"01 {name} PIC {swap(picture.text())}{' BLANK WHEN ZERO' if blank else ''}.")
        whole, decimals = numbers.randint(1, 9), numbers.randint(0, 4)
        usage = numbers.choice(["", "", "COMP", "COMP-3", "COMP-5", "SIGN TRAILING SEPARATE"])
        signed = "S" if "SIGN" in usage or numbers.random() < 0.8 else ""
        program.data.append(f"01 S{count} PIC {signed}9({whole}){f'V9({decimals})' if decimals else ''} {usage}.")
        value = numbers.choice([0, numbers.randint(0, 10 ** numbers.randint(1, whole + decimals) - 1)])
        if signed and numbers.random() < 0.5:
            value = -value
        value = Fraction(value, 10**decimals)
        way = numbers.randrange(4)
        if value and not int(abs(value) * 10**picture.decimals) % 10 ** len(picture.places):
            value = Fraction(0)  # whether zeros that are left of a negative number are negative is nobody's rule
        written = swap(literal(value))
        program.statement(f"MOVE {written} TO S{count}")
        text, expected = "", picture.edit(value, blank)
        room = abs(value) < 10**picture.whole
        if way == 1 and room and picture.whole + picture.decimals:
            rounded = Fraction(int(abs(value) * 10**picture.decimals + Fraction(1, 2)), 10**picture.decimals) * (-1 if value < 0 else 1)
            if abs(rounded) < 10**picture.whole:
                text, expected = f"COMPUTE {name} ROUNDED = S{count}", picture.edit(rounded, blank)
        elif way == 2 and room:
            text = f"ADD S{count} 0 GIVING {name}"
        elif way == 3 and value:
            text = f"MOVE {written} TO {name}"
        text = text or f"MOVE S{count} TO {name}"
        program.statement(text)
        program.show(f"{name} '|'", swap(expected) + "|", f"{text}: {literal(value)} to {picture.text()}{' BLANK' if blank else ''}")
    return program


# ---- Moves ----


def fitted(text, size, right=False):
    return (text.rjust(size)[-size:] if right else text.ljust(size)[:size]) if size else ""


def zoned(digits, negative, form):
    """The bytes of a DISPLAY item whose sign is of that form."""
    punched = lambda digit: chr(ord(digit) + (0x40 if negative else 0))
    mark = "-" if negative else "+"
    return {
        "": digits, "TRAILING": digits[:-1] + punched(digits[-1]), "LEADING": punched(digits[0]) + digits[1:],
        "TRAILING SEPARATE": digits + mark, "LEADING SEPARATE": mark + digits,
    }[form]


class MoveItem:
    """An item of any category; `fill` puts something into it, `bytes` and `value` are what it then holds."""

    def __init__(self, numbers, number, kind=None):
        self.kind = kind or numbers.choice(["X", "X", "A", "JUST", "GROUP", "EDITED", "NUMBER", "NUMBER", "NUMBER", "NUMEDIT", "PART"])
        self.name = self.written = f"I{number}"
        self.size = numbers.randint(1, 14)
        self.numbers, self.value = numbers, None
        lines = {
            "X": [f"01 I{number} PIC X({self.size})."],
            "A": [f"01 I{number} PIC A({self.size})."],
            "JUST": [f"01 I{number} PIC X({self.size}) JUSTIFIED RIGHT."],
            "GROUP": [f"01 I{number}.", f"  02 FILLER PIC X({self.size})."],
            "PART": [f"01 I{number} PIC X(20)."],
        }
        self.data = lines.get(self.kind)
        if self.kind == "PART":
            self.first = numbers.randint(1, 20 - self.size)
            self.written = f"I{number} ({self.first}:{self.size})"
        elif self.kind == "EDITED":
            self.picture = "".join(numbers.choice("XXXAB0/9") for _ in range(self.size)) + numbers.choice(["XB", "X/", "0X"])
            self.size = len(self.picture)
            self.data = [f"01 I{number} PIC {self.picture}."]
        elif self.kind == "NUMEDIT":
            symbols = random_picture(numbers)
            while set(symbols) <= {"9", "V"} or len(symbols) > 18:
                symbols = random_picture(numbers)
            self.picture = Picture(symbols)
            self.data = [f"01 I{number} PIC {self.picture.text()}."]
            self.size = len(self.picture.edit(Fraction(0)))
        elif self.kind == "NUMBER":
            self.digits = numbers.randint(1, 16)
            self.scale = numbers.choice([0, 0, 0, numbers.randint(0, self.digits), -numbers.randint(1, 3), self.digits + numbers.randint(1, 2)])
            whole = self.digits - self.scale
            picture = f"9({self.digits})"
            if self.scale < 0:
                picture += "P" * -self.scale
            elif self.scale > self.digits:
                picture = "V" + "P" * -whole + picture
            elif self.scale:
                picture = (f"9({whole})" if whole else "") + f"V9({self.scale})"
            self.usage = numbers.choice(["DISPLAY", "DISPLAY", "COMP", "COMP-3", "COMP-5", "BINARY", "PACKED-DECIMAL"])
            self.sign = numbers.choice(["", "TRAILING", "LEADING", "TRAILING SEPARATE", "LEADING SEPARATE"])
            if self.usage != "DISPLAY":
                self.sign = self.sign and "TRAILING"
            unsigned, picture = picture, ("S" if self.sign else "") + picture
            clause = f" SIGN {self.sign}" if self.sign not in ("", "TRAILING") else ""
            self.size = self.digits + ("SEPARATE" in self.sign)
            self.data = [f"01 I{number} PIC {picture} {self.usage}{clause}.", f"01 B{number} REDEFINES I{number} PIC X({self.size})."]
            self.data += [f"01 O{number} PIC S{unsigned} SIGN LEADING SEPARATE.", f"01 P{number} REDEFINES O{number} PIC X({self.digits + 1})."]
            self.about = f"{picture} {self.usage}{clause}"
        self.number = number

    def describe(self):
        return getattr(self, "about", None) or f"{self.kind} {getattr(self.picture, 'text', lambda: self.picture)() if hasattr(self, 'picture') else self.size}"

    def integer(self):
        return self.kind == "NUMBER" and self.scale <= 0

    def fill(self, program):
        """Something of its own kind; the sender of a MOVE."""
        numbers = self.numbers
        if self.kind in ("NUMBER", "NUMEDIT"):
            digits, scale = (self.digits, self.scale) if self.kind == "NUMBER" else (len(self.picture.places), self.picture.decimals)
            value = Fraction(numbers.randint(0, 10 ** numbers.randint(0, digits) - 1)) / Fraction(10) ** scale
            signed = self.sign if self.kind == "NUMBER" else any(s in ("+", "-", "CR", "DB") for s in self.picture.symbols)
            if signed and numbers.random() < 0.5:
                value = -value
            self.value = value
            self.bytes = self.picture.edit(value) if self.kind == "NUMEDIT" else self.of_number(value)
            program.statement(f"MOVE {literal(value)} TO {self.name}")
        else:
            if self.kind != "A" and numbers.random() < 0.5:
                text = "".join(numbers.choice("0123456789") for _ in range(self.size))
            else:
                text = "".join(numbers.choice("ABC xyz") for _ in range(self.size))
            program.statement(f"MOVE '{text}' TO {self.written}")
            self.bytes = self.of_text(text)

    def of_number(self, value):
        """The bytes of a DISPLAY item, for the others those of the display copy."""
        scaled = int(abs(value) * Fraction(10) ** self.scale) % 10**self.digits
        negative = value < 0 and bool(self.sign)
        digits = f"{scaled:0{self.digits}d}"
        return zoned(digits, negative, self.sign) if self.usage == "DISPLAY" else ("-" if negative else "+") + digits

    def of_text(self, text):
        if self.kind == "EDITED":
            left, out = list(fitted(text, sum(s in "XA9" for s in self.picture))), ""
            for symbol in self.picture:
                out += {"B": " ", "0": "0", "/": "/"}.get(symbol) or left.pop(0)
            return out
        return fitted(text, self.size, self.kind == "JUST")


def moved(sender, receiver, negative_zero):
    """What the receiver holds after the MOVE, or None for a MOVE that is not allowed or not laid down."""
    numeric_sender, numeric_receiver = sender.kind in ("NUMBER", "NUMEDIT"), receiver.kind in ("NUMBER", "NUMEDIT")
    if "GROUP" in (sender.kind, receiver.kind):
        binary = [item for item in (sender, receiver) if item.kind == "NUMBER" and item.usage != "DISPLAY"]
        return None if binary else fitted(sender.bytes, receiver.size, receiver.kind == "JUST")
    if numeric_receiver and not numeric_sender:
        if sender.kind in ("A", "EDITED") or not sender.bytes.isdigit():
            return None
        value = Fraction(int(sender.bytes))
    elif numeric_receiver:
        value = sender.value
        if sender.kind == "NUMEDIT" and sender.picture.floating in ("+", "-") and set("B0/") & set(sender.picture.symbols):
            return None  # the library does not find a sign that floated to the place of an insertion
    if receiver.kind == "NUMBER":
        if receiver.usage == "COMP-5" and abs(value) * Fraction(10) ** receiver.scale >= 10**receiver.digits:
            return None
        if value < 0 and not int(abs(value) * Fraction(10) ** receiver.scale) % 10**receiver.digits:
            return None
        return receiver.of_number(value)
    if receiver.kind == "NUMEDIT":
        negative_zero.append(value < 0 and not int(abs(value) * 10**receiver.picture.decimals) % 10 ** len(receiver.picture.places))
        return receiver.picture.edit(value)
    if sender.kind == "NUMBER":
        if not sender.integer() or receiver.kind == "A":
            return None
        return receiver.of_text(f"{abs(int(sender.value)):0{sender.digits - sender.scale}d}")
    if receiver.kind == "A" and sender.kind == "NUMEDIT":
        return None
    return receiver.of_text(sender.bytes)


def figurative(numbers, receiver):
    """A figurative constant or literal as the sender, and what the receiver then holds."""
    size = receiver.size
    name, text = numbers.choice([("SPACES", " "), ("ZERO", "0"), ("QUOTE", '"'), ("ALL 'ab'", "ab"), ("ALL '12'", "12"), ("ALL SPACE", " "), ("'Q'", ""), ("'1234567'", ""), ("7012", ""), ("-45", "")])
    if receiver.kind in ("NUMBER", "NUMEDIT"):
        if name not in ("ZERO", "'1234567'", "7012", "-45"):
            return name, None
        value = Fraction({"ZERO": 0}.get(name) if name == "ZERO" else int(name.strip("'")))
        if receiver.kind == "NUMBER":
            if receiver.usage == "COMP-5" and abs(value) * Fraction(10) ** receiver.scale >= 10**receiver.digits:
                return name, None
            if value < 0 and not int(abs(value) * Fraction(10) ** receiver.scale) % 10**receiver.digits:
                return name, None
            return name, receiver.of_number(value)
        if value and not int(abs(value)) % 10**receiver.picture.whole:
            return name, None
        return name, receiver.picture.edit(value)
    if not text:
        if receiver.kind == "A" and "Q" not in name:
            return name, None
        return name, receiver.of_text(name.strip("'-"))
    if receiver.kind == "A" and name in ("ZERO", "ALL '12'"):
        return name, None
    if receiver.kind == "EDITED":
        return name, receiver.of_text(text * size)
    return name, (text * size)[:size]


def moves(numbers):
    program = Program("MOVES")
    program.head = "ENVIRONMENT DIVISION.|CONFIGURATION SECTION.|"
    items = [MoveItem(numbers, number) for number in range(60)]
    for item in items:
        program.data += item.data
    while len(program.expected) < STATEMENTS:
        sender, receiver = numbers.sample(items, 2)
        before = len(program.code)
        if numbers.random() < 0.2:
            name, expected = figurative(numbers, receiver)
            about = f"MOVE {name} TO {receiver.describe()}"
        else:
            sender.fill(program)
            negative_zero = [False]
            expected = moved(sender, receiver, negative_zero)
            if negative_zero[-1]:
                expected = None
            name, about = sender.written, f"MOVE {sender.describe()} '{sender.bytes}' TO {receiver.describe()}"
        if expected is None:
            del program.code[before:]
            continue
        program.statement(f"MOVE {name} TO {receiver.written}")
        shown = receiver.written
        if receiver.kind == "NUMBER":
            shown = f"B{receiver.number}"
            if receiver.usage != "DISPLAY":
                program.statement(f"MOVE {receiver.name} TO O{receiver.number}")
                shown = f"P{receiver.number}"
        program.show(f"{shown} '|'", expected + "|", about)
    return program


# ---- INSPECT, STRING, UNSTRING ----


def some_text(numbers, low, high, alphabet="AB*. "):
    return "".join(numbers.choice(alphabet) for _ in range(numbers.randint(low, high)))


def random_region(numbers):
    """BEFORE and AFTER of a phrase: its text and a function from a string to the range that it leaves."""
    phrases = numbers.choice([[], [], ["BEFORE"], ["AFTER"], ["BEFORE", "AFTER"], ["AFTER", "BEFORE"]])
    delimiters = {phrase: some_text(numbers, 1, 2) for phrase in phrases}
    text = "".join(f" {phrase}{numbers.choice(['', ' INITIAL'])} '{delimiters[phrase]}'" for phrase in phrases)

    def region(string):
        first, last = 0, len(string)
        if "BEFORE" in delimiters:
            at = string.find(delimiters["BEFORE"])
            last = at if at >= 0 else last
        if "AFTER" in delimiters:
            at = string.find(delimiters["AFTER"])
            first = at + len(delimiters["AFTER"]) if at >= 0 else len(string)
        return range(first, max(first, last))

    return text, region


class Inspected:
    """One comparand of INSPECT: what it matches at a place of the string, while its region and kind allow."""

    def __init__(self, kind, pattern, region, replacement=None):
        self.kind, self.pattern, self.region, self.replacement = kind, pattern, region, replacement
        self.count = 0

    def start(self, string):
        self.places, self.alive = self.region(string), True

    def matches(self, string, at):
        size = len(self.pattern) if self.pattern else 1
        inside = at in self.places and at + size - 1 in self.places
        hit = inside and (not self.pattern or string[at : at + size] == self.pattern)
        return size if hit and self.alive else 0

    def after(self, at, size, matched):
        """LEADING is over at any place of its region that it does not match, FIRST with its match."""
        if self.kind == "LEADING" and not matched and any(place in self.places for place in range(at, at + size)):
            self.alive = False
        if self.kind == "FIRST" and matched:
            self.alive = False


def inspected(string, comparands):
    """The string after the cycle; each comparand counts its matches."""
    out, at = list(string), 0
    for comparand in comparands:
        comparand.start(string)
    while at < len(string):
        match = next((comparand for comparand in comparands if comparand.matches(string, at)), None)
        size = match.matches(string, at) if match else 1
        for comparand in comparands:
            comparand.after(at, size, comparand is match)
        if match:
            match.count += 1
            if match.replacement is not None:
                out[at : at + size] = match.replacement
        at += size
    return "".join(out)


def inspect(numbers):
    program = Program("INSPS")
    program.data += ["01 C1 PIC 9(4).", "01 C2 PIC 9(4) COMP.", "01 N PIC X.", "01 P2 PIC XX.", "01 S25 PIC X(25)."]
    while len(program.expected) < STATEMENTS:
        string = some_text(numbers, 25, 25)
        program.statement(f"MOVE '{string}' TO S25 MOVE 0 TO C1 C2")
        form = numbers.randrange(4)
        text, expected, counts = "INSPECT S25", string, [0, 0]
        if form == 3:
            size = numbers.randint(1, 4)
            source, to = "".join(numbers.sample("AB*. ", size)), some_text(numbers, size, size, "xyz")
            phrase, region = random_region(numbers)
            text += f" CONVERTING '{source}' TO '{to}'{phrase}"
            places = region(string)
            expected = "".join(to[source.index(c)] if i in places and c in source else c for i, c in enumerate(string))
        if form in (0, 2):
            text += " TALLYING"
            comparands = []
            for counter in numbers.choice([[0], [1], [0, 1]]):
                text += f" C{counter + 1} FOR"
                for _ in range(numbers.randint(1, 3)):
                    kind, pattern = numbers.choice(["CHARACTERS", "ALL", "LEADING"]), some_text(numbers, 1, 2)
                    phrase, region = random_region(numbers)
                    text += f" {kind}{'' if kind == 'CHARACTERS' else f' {chr(39)}{pattern}{chr(39)}'}{phrase}"
                    comparands.append((counter, Inspected(kind, None if kind == "CHARACTERS" else pattern, region)))
            inspected(string, [comparand for _, comparand in comparands])
            for counter, comparand in comparands:
                counts[counter] += comparand.count
        if form in (1, 2):
            text += " REPLACING"
            comparands = []
            for _ in range(numbers.randint(1, 3)):
                kind, pattern = numbers.choice(["CHARACTERS", "ALL", "LEADING", "FIRST"]), some_text(numbers, 1, 2)
                if kind == "CHARACTERS":
                    pattern = ""
                replacement = some_text(numbers, len(pattern) or 1, len(pattern) or 1, "xyzAB")
                phrase, region = random_region(numbers)
                text += f" {kind}{f' {chr(39)}{pattern}{chr(39)}' if pattern else ''} BY '{replacement}'{phrase}"
                comparands.append(Inspected(kind, pattern, region, replacement))
            expected = inspected(string, comparands)
        program.statement(text)
        program.show("S25 '|' C1 C2", f"{expected}|{counts[0]:04d}{counts[1]:04d}", f"{text} of '{string}'")
    return program


def string_verb(numbers):
    program = Program("STRNGS")
    program.data += ["01 PTR PIC 99.", "01 OVER PIC X.", "01 R20 PIC X(20).", "01 N5 PIC 9(5).", "01 G.", "  02 A8 PIC X(8).", "  02 B8 PIC X(8).", "01 J6 PIC X(6) JUST RIGHT."]
    while len(program.expected) < STATEMENTS:
        values = {"A8": some_text(numbers, 8, 8), "B8": some_text(numbers, 8, 8), "N5": f"{numbers.randrange(100000):05d}"}
        values["G"] = values["A8"] + values["B8"]
        values["A8 (3:4)"] = values["A8"][2:6]
        program.statement(f"MOVE '{values['A8']}' TO A8 MOVE '{values['B8']}' TO B8 MOVE {values['N5']} TO N5")
        text, pieces = "STRING", []
        for _ in range(numbers.randint(1, 3)):
            phrase = []
            for _ in range(numbers.randint(1, 3)):
                name = numbers.choice([*values, "'lit'", "SPACE", "QUOTE"])
                text += f" {name}"
                phrase.append(values.get(name) or {"SPACE": " ", "QUOTE": '"'}.get(name, name.strip("'")))
            delimiter = numbers.choice(["SIZE", "SIZE", "SPACE", some_text(numbers, 1, 2)])
            text += f" DELIMITED{numbers.choice([' BY', ' BY', ''])} {delimiter if delimiter.isupper() and len(delimiter) > 3 else chr(39) + delimiter + chr(39)}"
            cut = {"SIZE": None, "SPACE": " "}.get(delimiter, delimiter)
            pieces += [piece if cut is None or cut not in piece else piece[: piece.index(cut)] for piece in phrase]
        pointer, at = numbers.random() < 0.5, 1
        target = list("." * 20)
        program.statement("MOVE ALL '.' TO R20 MOVE 'N' TO OVER")
        text += " INTO R20"
        if pointer:
            at = numbers.choice([0, 1, 1, 2, 5, 19, 20, 21, 40])
            text += " POINTER PTR"
        program.statement(f"MOVE {at} TO PTR")
        over = not 1 <= at <= 20
        for character in "".join(pieces) if not over else "":
            if at > 20:
                over = True
                break
            target[at - 1] = character
            at += 1
        if not pointer:
            at = 1
        text += " ON OVERFLOW MOVE 'Y' TO OVER"
        program.statement(f"{text} END-STRING")
        program.show("R20 '|' PTR OVER", f"{''.join(target)}|{at:02d}{'Y' if over else 'N'}", f"{text} with {values}")
    return program


def unstring(numbers):
    program = Program("UNSTRS")
    program.data += ["01 S24 PIC X(24).", "01 PTR PIC 99.", "01 TAL PIC 99.", "01 OVER PIC X."]
    receivers = [("X(4)", 4, ""), ("X(7)", 7, ""), ("X(5) JUST RIGHT", 5, "R"), ("XBXX/XX", 7, "E"), ("9(4)", 4, "9"), ("X", 1, ""), ("ZZZ9", 4, "Z"), ("S9(4) SIGN LEADING SEPARATE", 4, "+"), ("S9(4) SIGN TRAILING SEPARATE", 4, "-")]
    shapes = {"9": "{:04d}", "Z": "{:4d}", "+": "+{:04d}", "-": "{:04d}+"}  # as DISPLAY shows a number
    for number, (picture, _, _) in enumerate(receivers):
        program.data += [f"01 R{number} PIC {picture}.", f"01 D{number} PIC X(3).", f"01 K{number} PIC 99."]
    while len(program.expected) < STATEMENTS:
        digits = numbers.random() < 0.3
        string = some_text(numbers, 24, 24, "12;, " if digits else "AB;,  ")
        program.statement(f"MOVE '{string}' TO S24 MOVE 7 TO TAL MOVE 'N' TO OVER")
        text, delimiters = "UNSTRING S24", []
        if numbers.random() < 0.85:
            for _ in range(numbers.randint(1, 3)):
                every, delimiter = numbers.random() < 0.4, numbers.choice([";", ",", ", ", " ", ";;", "SPACE"])
                text += f" {'OR' if delimiters else 'DELIMITED BY'} {'ALL ' if every else ''}{delimiter if delimiter == 'SPACE' else chr(39) + delimiter + chr(39)}"
                delimiters.append((" " if delimiter == "SPACE" else delimiter, every))
        chosen = numbers.sample([i for i, r in enumerate(receivers) if digits or r[2] not in shapes], numbers.randint(1, 4))
        pointer, at = numbers.random() < 0.4, 0
        if pointer:
            at = numbers.choice([0, 1, 1, 3, 10, 23, 24, 25]) - 1
        first = at + 1
        over, tally, expected, shown = not 0 <= at < 24, 7, [], []
        text += " INTO"
        for i in chosen:
            picture, size, kind = receivers[i]
            before = "0" if kind in shapes else "ALL '-'"
            program.statement(f"MOVE {before} TO R{i} MOVE '---' TO D{i} MOVE 77 TO K{i}")
            value = shapes[kind].format(0) if kind in shapes else "- --/--" if kind == "E" else "-" * size
            with_delimiter, with_count = delimiters and numbers.random() < 0.5, delimiters and numbers.random() < 0.5
            text += f" R{i}{f' DELIMITER IN D{i}' if with_delimiter else ''}{f' COUNT IN K{i}' if with_count else ''}"
            mark, count = "---", 77
            if not over and at < 24:
                start, found = at, ""
                if delimiters:
                    while at < 24 and not found:
                        for delimiter, every in delimiters:
                            if string.startswith(delimiter, at):
                                found = delimiter
                                end = at + len(delimiter)
                                while every and string.startswith(delimiter, end):
                                    end += len(delimiter)
                                break
                        else:
                            at += 1
                    piece = string[start:at]
                    at = end if found else 24
                else:
                    piece = string[start : start + size]
                    at = min(24, start + size)
                if kind in shapes:
                    number = piece.strip(" ")
                    if number and not number.isdigit():
                        break
                    value = shapes[kind].format(int(number or 0) % 10000)
                elif kind == "E":
                    p = fitted(piece, 5)
                    value = f"{p[0]} {p[1:3]}/{p[3:]}"
                else:
                    value = fitted(piece, size, kind == "R")
                tally += 1
                mark, count = (f"{found:3}" if with_delimiter else "---"), (len(piece) if with_count else 77)
            expected.append(f"{value}{mark}{count:02d}")
            shown.append(f"R{i} D{i} K{i}")
        else:
            over = over or at < 24
            if pointer:
                text += " POINTER PTR"
            text += " TALLYING IN TAL ON OVERFLOW MOVE 'Y' TO OVER"
            program.statement(f"MOVE {first} TO PTR")
            program.statement(f"{text} END-UNSTRING")
            program.show(" ".join(shown) + " PTR TAL OVER", "".join(expected) + f"{at + 1 if pointer else 1:02d}{tally:02d}{'Y' if over else 'N'}", f"{text} of '{string}'")
    return program


if __name__ == "__main__":
    run_models({"editing": editing, "moves": moves, "inspect": inspect, "string": string_verb, "unstring": unstring}, sys.argv)
