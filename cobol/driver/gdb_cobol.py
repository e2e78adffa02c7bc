"""gdb's view of programs that kvrcob made with -g: items under their COBOL names, in COBOL form.

    cobol print WS-TOTAL OF REC      one item; subscripts as in COBOL: PRICE OF SHOP (2, I)
    cobol locals                     all items of the program that is stopped

gdb reads this file by itself when it loads the library. A program's function is called p1_body, p2_body and so on,
and paragraphs that have one of their own p1_7_PRINT_TOTALS; p1_map beside them is a text that says what lies where
(cobol/emit/debug_map.cpp says how).
"""

import re
import struct

import gdb

SHOWN = 5  # occurrences of a table that are shown


class Item:
    def __init__(self, line, parents, program):
        self.program = program  # whose item it is
        depth, self.name, self.base, offset, size, self.usage, digits, scale, sign, occurs = line.split("|")
        self.depth = int(depth)
        self.offset, self.size, self.digits, self.scale = int(offset), int(size), int(digits), int(scale)
        self.sign, self.occurs = int(sign), int(occurs)
        self.parent = parents[self.depth - 1] if self.depth else None
        self.children = []
        if self.parent:
            self.base = self.parent.base
            self.parent.children.append(self)
        del parents[self.depth :]
        parents.append(self)

    def tables(self):
        """The tables around the item, from the outside in."""
        found = self.parent.tables() if self.parent else []
        return found + [self] if self.occurs else found


def map_of(number):
    """The lines of a program's map, as the selected frame sees it."""
    return gdb.parse_and_eval(f"p{number}_map").string("latin-1").splitlines()


def entered(frame):
    """The number of the program whose entry, called as the program is, this frame is in."""
    frame.select()
    number = 1
    try:
        while map_of(number)[0].split("|")[0] != frame.name():
            number += 1
    except gdb.error:
        return None
    return number


def program():
    """The number of the COBOL program of the selected frame, or of the frame that called it."""
    try:
        frame = gdb.selected_frame()
    except gdb.error:
        frame = None
    while frame:
        if match := re.fullmatch(r"p(\d+)_(body|\d+_\w+)", frame.name() or ""):
            frame.select()
            return int(match[1])
        if number := entered(frame):
            return number
        frame = frame.older()
    raise gdb.GdbError("No COBOL program is active here.")


def items(number):
    """The items of a program, and those of the programs that contain it."""
    found = []
    while number:
        try:
            lines = map_of(number)
        except gdb.error:
            raise gdb.GdbError("The program was made without -g.")
        parents = []
        found += [Item(line, parents, number) for line in lines[1:]]
        number = int(lines[0].split("|")[1])
    return found


def content(item, displacement=0):
    try:
        address = int(gdb.parse_and_eval(f"(unsigned long)({item.base})"))
        return gdb.selected_inferior().read_memory(address + item.offset + displacement, item.size).tobytes()
    except (gdb.error, gdb.MemoryError):
        return None


def quoted(data):
    return '"' + "".join(chr(b) if 0x20 <= b < 0x7F else f"\\x{b:02x}" for b in data) + '"'


def scaled(value, item, negative):
    text = str(value)
    if item.scale > 0:
        text = text.rjust(item.scale + 1, "0")
        text = text[: -item.scale] + "." + text[-item.scale :]
    elif item.scale < 0:
        text += "0" * -item.scale
    return ("-" if negative else "") + text


def zoned(data, item):
    negative, digits = False, list(data)
    if item.sign in (3, 4):  # a byte of its own
        negative = digits.pop(-1 if item.sign == 3 else 0) == ord("-")
    elif item.sign:  # over the last digit, or the first
        at = -1 if item.sign == 1 else 0
        letter = chr(digits[at])
        for low, minus in (("p", True), ("A", False), ("J", True)):
            step = 0 if low == "p" else 1
            if low <= letter < chr(ord(low) + 10 - step):
                digits[at], negative = ord("0") + ord(letter) - ord(low) + step, minus
        if letter in "{}":
            digits[at], negative = ord("0"), letter == "}"
    if any(not 0x30 <= each <= 0x39 for each in digits):
        return quoted(data) + " (not numeric)"
    return scaled(int(bytes(digits)), item, negative)


def packed(data, item):
    nibbles = data.hex()
    if not nibbles[:-1].isdigit() or nibbles[-1].isdigit():
        return f"0x{nibbles} (not numeric)"
    return scaled(int(nibbles[:-1]), item, nibbles[-1] in "bd")


def shown(item, data):
    """An item's content as COBOL has it."""
    if data is None:
        return "<not there>"
    if item.usage == "zoned":
        return zoned(data, item)
    if item.usage == "packed":
        return packed(data, item)
    if item.usage == "comp-6":
        return scaled(int(data.hex()), item, False) if data.hex().isdigit() else f"0x{data.hex()} (not numeric)"
    if item.usage in ("binary", "big-endian"):
        value = int.from_bytes(data, "little" if item.usage == "binary" else "big", signed=bool(item.sign))
        return scaled(abs(value), item, value < 0)
    if item.usage == "double":
        return repr(struct.unpack("<d", data)[0])
    if item.usage == "float":  # the shortest number that it can be: 0.7, not 0.699999988
        value = struct.unpack("<f", data)[0]
        texts = (f"{value:.{digits}g}" for digits in range(1, 10))
        return next((repr(float(t)) for t in texts if struct.pack("<f", float(t)) == data), repr(value))
    if item.usage == "pointer":
        return hex(int.from_bytes(data, "little"))
    return quoted(data)


def show(item, displacement=0, subscripts=(), indent=0):
    label = " " * indent + item.name + (f" ({', '.join(map(str, subscripts))})" if subscripts else "")
    if not item.children:
        gdb.write(f"{label} = {shown(item, content(item, displacement))}\n")
        return
    gdb.write(f"{label}\n")
    for child in item.children:
        for n in range(1, min(child.occurs or 1, SHOWN) + 1):
            show(child, displacement + (n - 1) * child.size, (*subscripts, n) if child.occurs else subscripts, indent + 2)
        if child.occurs > SHOWN:
            gdb.write(" " * (indent + 2) + f"... to {child.name} ({child.occurs})\n")


def find(known, words):
    """The item of a name with its qualifiers, from the inside out."""

    def qualified(item):
        rest = words[1:]
        above = item.parent
        while above and rest:
            if above.name == rest[0]:
                rest = rest[1:]
            above = above.parent
        return not rest

    found = [item for item in known if item.name == words[0] and qualified(item)]
    if not found:
        raise gdb.GdbError(f"There is no item {' OF '.join(words)} here.")
    if len(found) > 1 and found[0].program == found[1].program:
        raise gdb.GdbError(f"{' OF '.join(words)} is ambiguous; qualify it with OF.")
    return found[0]


class Cobol(gdb.Command):
    """Programs in COBOL: cobol print ITEM, cobol locals."""

    def __init__(self):
        super().__init__("cobol", gdb.COMMAND_DATA, gdb.COMPLETE_NONE, True)


class CobolPrint(gdb.Command):
    """Show an item by its COBOL name: cobol print PRICE OF SHOP (2, I)"""

    def __init__(self):
        super().__init__("cobol print", gdb.COMMAND_DATA)

    def invoke(self, argument, from_tty):
        match = re.fullmatch(r"\s*([\w-]+(?:\s+(?:OF|IN)\s+[\w-]+)*)\s*(?:\(([^)]*)\))?\s*", argument, re.IGNORECASE)
        if not match:
            raise gdb.GdbError("cobol print NAME [OF GROUP]... [(SUBSCRIPT, ...)]")
        known = items(program())
        item = find(known, re.split(r"\s+(?:OF|IN)\s+", match[1].upper()))
        subscripts = [self.subscript(known, each) for each in re.split(r"[\s,]+", (match[2] or "").strip()) if each]
        tables = item.tables()
        if not subscripts and tables[-1:] == [item] and len(tables) == 1:  # a table without a subscript: its beginning
            for n in range(1, min(item.occurs, SHOWN) + 1):
                show(item, (n - 1) * item.size, (n,))
            return
        if len(subscripts) != len(tables):
            raise gdb.GdbError(f"{item.name} needs {len(tables)} subscripts.")
        for table, n in zip(tables, subscripts):
            if not 1 <= n <= table.occurs:
                raise gdb.GdbError(f"{n} is not from 1 to {table.occurs}.")
        show(item, sum((n - 1) * table.size for table, n in zip(tables, subscripts)), tuple(subscripts))

    @staticmethod
    def subscript(known, word):
        if word.isdigit():
            return int(word)
        item = find(known, [word.upper()])
        value = shown(item, content(item))
        if not re.fullmatch(r"\d+", value):
            raise gdb.GdbError(f"{word} is no subscript: {value}")
        return int(value)


class CobolLocals(gdb.Command):
    """Show all items of the COBOL program that is stopped."""

    def __init__(self):
        super().__init__("cobol locals", gdb.COMMAND_DATA)

    def invoke(self, argument, from_tty):
        for item in items(program()):
            if item.depth == 0:
                for n in range(1, min(item.occurs or 1, SHOWN) + 1):
                    show(item, (n - 1) * item.size, (n,) if item.occurs else ())


Cobol()
CobolPrint()
CobolLocals()

# "step" stays in COBOL: it passes over the library, what kvrcob's headers add, and the C library's moves.
for passed in ("-rfu ^_?zvk", "-rfu ^_*mem", "-gfi */kvr2/kvrcob.h", "-gfi */kvr2/kvrcob/*.h"):
    gdb.execute("skip " + passed, to_string=True)
