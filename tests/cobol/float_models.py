#!/usr/bin/env python3
"""Random arithmetic, moves and comparisons of COMP-1 and COMP-2 items with decimal ones, held against exact fractions.

float_models.py KVRCOB FIRST COUNT. Operands have few digits, so that a result of at most 14 digits is what decimal arithmetic
gives: cut or rounded at the receiving item's last place, with a size error where that item has no room.
"""
import sys
from fractions import Fraction

from models import STATEMENTS, Item, Program, literal, run_models, same, show_item


def few(numbers, signed=True, digits=6):
    places = numbers.choice([0, 0, 1, 2, 3])
    value = Fraction(numbers.randint(0, 10 ** numbers.randint(1, digits) - 1), 10**places)
    return -value if signed and numbers.random() < 0.4 else value


def digits_of(value):
    """How many significant digits a fraction has; 99 where it has no end."""
    scale = 0
    while value.denominator != 1:
        value, scale = value * 10, scale + 1
        if scale > 20:
            return 99
    return len(str(abs(value.numerator)))


def floats(numbers):
    program = Program("FLOATS")
    program.data += [f"01 F{i} COMP-{1 + i % 2}." for i in range(8)] + ["01 FLAG PIC X.", "01 ED PIC -(12)9.9(4).", "01 TX PIC X(12)."]
    program.data += ["01 G COMP-2."]
    items = []
    while len(items) < 12:
        item = Item(numbers, f"W{len(items)}")
        if item.digits <= 16 and 0 <= item.scale <= item.digits and item.usage != "COMP-5":
            items.append(item)
            program.data.append(f"01 {item.name} PIC {item.picture} {item.usage}.")
            program.data.append(f"01 O-{item.name} PIC S{item.picture.removeprefix('S')} SIGN LEADING SEPARATE.")
            program.data.append(f"01 X-{item.name} REDEFINES O-{item.name} PIC X({item.digits + 1}).")
    while len(program.expected) < STATEMENTS:
        a, b = numbers.sample(range(1, 8, 2), 2)  # COMP-2
        single = numbers.choice(range(0, 8, 2))
        A, B, S = few(numbers), few(numbers), few(numbers)
        c = numbers.choice(items)
        D = few(numbers, c.signed, 4)
        if abs(D * 10**c.scale) >= 10**c.digits or (D * 10**c.scale).denominator != 1:
            D = Fraction(0)
        program.statement(f"MOVE {literal(A)} TO F{a} MOVE {literal(B)} TO F{b} MOVE {literal(S)} TO F{single} MOVE {literal(D)} TO {c.name}")
        kind = numbers.randrange(14)
        rounded = numbers.random() < 0.4
        to = c.name + (" ROUNDED" if rounded else "")
        number = len(program.expected)
        if kind < 8:
            text, result = [
                (f"COMPUTE {to} = F{a} + F{b}", A + B), (f"COMPUTE {to} = F{a} * F{b}", A * B), (f"COMPUTE {to} = ( F{a} - F{b} ) * 3", (A - B) * 3),
                (f"ADD F{a} TO {to}", A + D), (f"SUBTRACT F{a} FROM {to}", D - A), (f"MULTIPLY F{a} BY {to}", A * D),
                (f"DIVIDE F{a} INTO {to}", D / A if A else None), (f"DIVIDE F{a} BY F{b} GIVING {to}", A / B if B else None),
            ][kind]
            if result is not None and (digits_of(result) > 14 or kind not in (1, 5, 6, 7) and 2 * abs(result) < max(abs(A), abs(B), abs(D))):
                continue  # what is left of two numbers that are near each other has fewer digits
            digits, size_error = c.stored(result, rounded) if result is not None else (0, True)
            if size_error:
                digits = int(D * 10**c.scale)
            program.statement("MOVE SPACE TO FLAG")
            program.statement(text + " ON SIZE ERROR MOVE 'E' TO FLAG NOT ON SIZE ERROR MOVE 'N' TO FLAG.")
            show_item(program, c, digits, "E" if size_error else "N", f"{text}: {literal(A)}, {literal(B)}, {literal(D)} in {c.picture} {c.usage}")
        elif kind < 10:
            source, value = numbers.choice([(f"F{a}", A), (f"F{single}", S)])
            program.statement(f"MOVE {source} TO {c.name} MOVE SPACE TO FLAG.")
            show_item(program, c, c.moved(value), " ", f"MOVE {literal(value)} TO {c.picture} {c.usage}")
        elif kind == 10:
            source, value = numbers.choice([(f"F{a}", A), (f"F{single}", S), (f"F{a} * F{b}", A * B)])
            program.statement(f"COMPUTE ED = {source}." if "*" in source else f"MOVE {source} TO ED.")
            tens = int(abs(value) * 10000)
            shown = f"{tens // 10000}.{tens % 10000:04d}"
            program.show("ED", (("-" if value < 0 and tens else "") + shown).rjust(18), f"edited {literal(value)}")
        elif kind == 11:
            (left, p), (right, q) = numbers.choice([((f"F{a}", A), (c.name, D)), ((f"F{single}", S), (c.name, D)), ((f"F{a}", A), (literal(B), B)), ((f"F{single}", S), (literal(S), S)),
                                                     ((f"F{a} + F{b}", A + B), (literal(A + B), A + B)), ((f"F{a} * F{b}", A * B), (f"F{b} * F{a}", A * B))])
            sign, holds = numbers.choice([("=", p == q), ("<", p < q), (">", p > q), ("NOT =", p != q)])
            program.statement(f"IF {left} {sign} {right} DISPLAY {number} ' T' ELSE DISPLAY {number} ' F'.")
            program.expected.append(("T" if holds else "F", f"{left} {sign} {right}: {literal(p)} {literal(q)}"))
        elif kind == 12:
            text, result = numbers.choice([
                (f"COMPUTE F{b} = F{a} + {c.name}", A + D), (f"ADD F{a} F{b} GIVING G MOVE G TO F{b}", A + B), (f"MULTIPLY {c.name} BY F{b}", B * D),
                (f"COMPUTE F{b} = F{a} ** 2", A * A), (f"COMPUTE F{b} = {c.name} / 7 + F{a}", D / 7 + A), (f"SUBTRACT 1.5 FROM F{b}", B - Fraction(3, 2)),
                (f"MOVE {c.name} TO F{b}", D), (f"COMPUTE F{b} = - F{b}", -B),
            ])
            program.statement(text + ".")
            program.show(f"F{b}", float(result), f"{text}: {literal(A)}, {literal(B)}, {literal(D)}")
        else:
            text, result = numbers.choice([
                (f"COMPUTE F{single} = F{single} + 1", S + 1), (f"MOVE F{single} TO G MOVE G TO F{single}", S), (f"MOVE {c.name} TO F{single}", D), (f"ADD 0.5 TO F{single}", S + Fraction(1, 2)),
                (f"DIVIDE 4 INTO F{single}", S / 4),
            ])
            if digits_of(result) > 6:
                continue
            program.statement(text + ".")
            program.statement(f"MOVE F{single} TO ED.")
            tens = int(abs(result) * 10000)
            program.show("ED", (("-" if result < 0 and tens else "") + f"{tens // 10000}.{tens % 10000:04d}").rjust(18), f"{text}: {literal(S)}, {literal(D)}")
    return program


run_models({"floats": floats}, [sys.argv[0], sys.argv[1], "floats", *sys.argv[2:]])
