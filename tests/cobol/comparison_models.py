#!/usr/bin/env python3
"""Random comparisons of items of all categories, under a collating sequence too, held against the rules.

comparison_models.py KVRCOB FIRST COUNT. Numbers beside texts are compared as the digits that a MOVE to a text of their size
gives; texts, groups and edited items character by character in the program's order, the shorter one filled with blanks.
"""
import sys

from models import STATEMENTS, Program, run_models

ALPHABETS = {
    None: ("", None),
    "BACK": ('"Z" THRU "A" "9" THRU "0"', [*map(chr, range(90, 64, -1)), *"9876543210"]),
    "FOLD": (" ".join(f'"{c}" ALSO "{c.lower()}"' for c in "ABCDE"), [c + c.lower() for c in "ABCDE"]),
    "NUMS": ("SPACE 48 THRU 58", [" ", *map(chr, range(47, 58))]),
    "PLAIN": ("NATIVE", None),
}
LETTERS = "ABab019 Z"


def compared(numbers):
    program = Program("COMPARE")
    alphabet = numbers.choice(list(ALPHABETS))
    clauses, listed = ALPHABETS[alphabet]
    if alphabet:
        program.head = f"ENVIRONMENT DIVISION.|CONFIGURATION SECTION.|OBJECT-COMPUTER. X PROGRAM COLLATING SEQUENCE IS {alphabet}.|SPECIAL-NAMES.|    ALPHABET {alphabet} IS"
        words, line = clauses.split(" "), "       "
        for word in words:
            if len(line) + len(word) > 50:
                program.head += "|" + line
                line = "       "
            line += " " + word
        program.head += "|" + line + ".|"
    order = {chr(c): (1, c) for c in range(256)}
    if listed:
        order = {c: (2, ord(c)) for c in map(chr, range(256))}
        for place, group in enumerate(listed):
            for c in group:
                order[c] = (1, place)
    lowest = min(order, key=lambda c: order[c])
    highest = max((c for c in order), key=lambda c: order[c])
    rank = lambda text: [order[c] for c in text]

    items = {
        "X1": ("PIC X", 1), "X3": ("PIC X(3)", 3), "X6": ("PIC X(6)", 6), "J4": ("PIC X(4) JUSTIFIED RIGHT", 4), "A3": ("PIC A(3)", 3), "N3": ("PIC 9(3)", 3), "N1": ("PIC 9", 1),
        "N6": ("PIC 9(6)", 6), "S4": ("PIC S9(4)", 4), "SS3": ("PIC S9(3) SIGN LEADING SEPARATE", 3), "E5": ("PIC ZZ9.9", 5), "XE": ("PIC X/XX", 4),
    }
    for name, (clause, _) in items.items():
        program.data.append(f"01 {name} {clause}.")
        if name in ("X3", "X6"):
            program.data.append(f"   88 {name}-IN VALUE 'AB' 'b' THRU 'bZ' '1' THRU '19'.")
    program.data += ["01 GR.", "   02 GR1 PIC X(2).", "   02 GR2 PIC 9(2).", "01 SUB-N PIC 9."]

    def filled(name):
        """Gives an item a random value; what it compares as: (text, is a number, the number)."""
        text = "".join(numbers.choice(LETTERS) for _ in range(numbers.randint(1, items[name][1])))
        size = items[name][1]
        if name[0] in "NS":
            number = numbers.choice([0, 1, 9, 10, numbers.randint(0, 10**size - 1)]) % 10**size
            sign = -1 if name[0] == "S" and numbers.random() < 0.4 else 1
            program.statement(f"MOVE {number * sign} TO {name}.")
            return f"{number:0{size}d}", number * sign
        if name == "E5":
            number = numbers.randint(0, 9999)
            program.statement(f"MOVE {number // 10}.{number % 10} TO E5.")
            return f"{number // 10:3d}.{number % 10}", None
        if name == "A3":
            text = "".join(c for c in text if not c.isdigit()) or "A"
        program.statement(f"MOVE '{text}' TO {name}.")
        if name == "J4":
            return text.rjust(4), None
        if name == "XE":
            text = text.ljust(3)[:3]
            return text[0] + "/" + text[1:], None
        return text.ljust(size), None

    while len(program.expected) < STATEMENTS:
        a, b = numbers.sample(list(items), 2)
        A, p = filled(a)
        kind = numbers.randrange(8)
        left, right, q = a, b, None
        if kind < 4:
            B, q = filled(b)
            if numbers.random() < 0.3 and a in ("X3", "X6", "X1") and b in ("X3", "X6", "X1"):
                program.statement(f"MOVE {a} TO {b}.")
                B = A.ljust(items[b][1])[: items[b][1]]
        elif kind == 4:
            B = "".join(numbers.choice(LETTERS) for _ in range(numbers.randint(1, 4)))
            right = f"'{B}'"
        elif kind == 5:
            if p is not None:
                continue
            number = numbers.choice([0, 1, 10, 901])
            if a in ("E5",):
                continue
            right, B = str(number), str(number)
        elif kind == 6:
            size = len(A)
            right, B = numbers.choice([("SPACES", " " * size), ("ALL 'Ab'", ("Ab" * size)[:size]), ("QUOTE", '"' * size), ("HIGH-VALUES", highest * size), ("LOW-VALUE", lowest * size)] + ([("ZEROS", "0" * size)] if p is None else []))
            if a.startswith("S"):
                continue
        else:
            if p is not None or a in ("E5", "XE"):
                continue
            start = numbers.randint(1, len(A))
            count = numbers.randint(1, len(A) - start + 1)
            left, A = f"{a} ({start}:{count})", A[start - 1 : start - 1 + count]
            B, q = filled(b)
        if p is not None and q is not None and kind in (0, 1, 2, 3):
            x, y = p, q
        else:
            size = max(len(A), len(B))
            x, y = rank(A.ljust(size)), rank(B.ljust(size))
        if numbers.random() < 0.3:
            left, right, x, y = right, left, y, x
        sign, holds = numbers.choice([("=", x == y), ("<", x < y), (">", x > y), ("NOT =", x != y), (">=", x >= y), ("NOT >", x <= y)])
        number = len(program.expected)
        about = f"{alphabet}: {left} {sign} {right}: [{A}] [{B}]"
        form = numbers.randrange(4)
        if form == 0 and sign == "=" and "'" not in left and left[0] not in "0123456789" and left.split()[0] in items:
            program.statement(f"EVALUATE {left} WHEN {right} DISPLAY {number} ' T' WHEN OTHER DISPLAY {number} ' F' END-EVALUATE.")
        else:
            program.statement(f"IF {left} {sign} {right} DISPLAY {number} ' T' ELSE DISPLAY {number} ' F'.")
        program.expected.append(("T" if holds else "F", about))
        if a in ("X3", "X6") and kind < 4:
            text = A.ljust(6)
            inside = text == "AB    " or any(rank(low.ljust(6)) <= rank(text) <= rank(high.ljust(6)) for low, high in (("b", "bZ"), ("1", "19")))
            inside = inside or rank(text) == rank("AB    ")
            number += 1
            program.statement(f"IF {a}-IN DISPLAY {number} ' T' ELSE DISPLAY {number} ' F'.")
            program.expected.append(("T" if inside else "F", f"{alphabet}: {a}-IN: [{A}]"))
    return program


run_models({"comparisons": compared}, [sys.argv[0], sys.argv[1], "comparisons", *sys.argv[2:]])
