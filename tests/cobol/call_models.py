#!/usr/bin/env python3
"""Random programs that call each other, held against a model of their storage.

call_models.py KVRCOB FIRST COUNT. Programs are nested, COMMON, INITIAL and RECURSIVE; they pass arguments in all ways,
keep, lose (CANCEL) and share (GLOBAL, EXTERNAL) what they count, and show it when they begin and when they end. The
outermost ones are of one source, or modules that CALL loads.
"""
import os
import random
import sys
import tempfile

from trial import Trial

LIMIT = 100000  # items are PIC 9(5)


class Program:
    def __init__(self, numbers, name, outer, depth):
        self.name, self.outer, self.inner = name, outer, []
        self.common = outer is not None and numbers.random() < 0.5
        self.initial = numbers.random() < 0.2
        self.recursive = outer is None and name != "MAINP" and numbers.random() < 0.3 and not self.initial
        self.local = not self.initial and numbers.random() < 0.5
        self.globals = numbers.sample(["GA", "GB"], numbers.randint(0, 2))
        self.externals = numbers.sample(["EX-A", "EX-B"], 2 if name == "MAINP" else numbers.randint(0, 2))
        self.parameters = 0 if name == "MAINP" else numbers.randint(0, 3)
        self.by_value = [numbers.random() < 0.25 for _ in range(self.parameters)]
        self.returning = name != "MAINP" and numbers.random() < 0.2
        self.start = {item: numbers.randrange(50) for item in ["W1", "L1", "GA", "GB"]}
        self.body = []

    def outermost(self):
        return self if self.outer is None else self.outer.outermost()

    def ancestors(self):
        here = self.outer
        while here:
            yield here
            here = here.outer

    def own(self):
        return ["W1"] + ["L1"] * self.local + self.globals

    def visible(self):
        """Items that its statements may name: (item, the program that has it or None if external)."""
        items = {item: self for item in self.own()}
        items.update({item: None for item in self.externals})
        for ancestor in self.ancestors():
            for item in ancestor.globals:
                items.setdefault(item, ancestor)
        return sorted(items.items())

    def whole(self):
        return [self] + [program for inner in self.inner for program in inner.whole()]


class World:
    """The programs of a source, and what happens when the first is run."""

    def __init__(self, numbers):
        self.numbers, self.shown = numbers, []
        self.outer = [Program(numbers, name, None, 0) for name in ["MAINP", "SUBA", "SUBB", "SUBC", "SUBD"]]
        for program in self.outer:
            names = [f"N{n}" for n in range(1, 5)]
            self.nest(program, names, 2)
        self.order = {program: place for place, program in enumerate(p for outer in self.outer for p in outer.whole())}
        for program in self.order:
            program.body = [self.action(program) for _ in range(numbers.randint(3, 8))]
        self.storage = {}

    def nest(self, outer, names, depth):
        while names and self.numbers.random() < 0.5 * (depth > 0):
            inner = Program(self.numbers, names.pop(), outer, depth)
            outer.inner.append(inner)
            self.nest(inner, names, depth - 1)

    def callable(self, program):
        """Whom it may call without a circle: what comes later in the source, and itself if RECURSIVE."""
        found = list(program.inner)
        for ancestor in [program, *program.ancestors()]:
            if ancestor.outer:
                found += [p for p in ancestor.outer.inner if p.common and p is not ancestor]
        found += [p for p in self.outer[1:] if p is not program.outermost()]
        return [p for p in dict.fromkeys(found) if self.order[p] > self.order[program]]

    def action(self, program):
        numbers, items = self.numbers, [item for item, _ in program.visible()]
        receivers = items + [f"P{i}" for i in range(program.parameters)]
        kind = numbers.random()
        plain = items + [f"P{i}" for i, value in enumerate(program.by_value) if not value]
        calls = self.callable(program)
        if program.recursive and kind < 0.15:
            ways = ["value" if value else numbers.choice(["reference", "content"]) for value in program.by_value]
            return ("call", program, [(way, numbers.choice(plain)) for way in ways], None)
        if calls and kind < 0.45:
            callee = numbers.choice(calls)
            arguments = []
            for value in callee.by_value:
                way = "value" if value else numbers.choice(["reference", "reference", "content", "literal", "omitted"])
                arguments.append((way, numbers.choice(receivers if value else plain)))
            return ("call", callee, arguments, numbers.choice(items) if callee.returning else None)
        if kind < 0.55:
            whom = [p for p in calls if p.outer is None or p.outer is program]
            if whom:
                return ("cancel", numbers.choice(whom))
        if kind < 0.62 and program.name != "MAINP":
            return ("leave", numbers.choice(items), numbers.randrange(40))
        return ("add", numbers.choice(receivers), numbers.randint(1, 30))

    # COBOL

    def text(self, programs):
        return "\n".join(line for program in programs for line in self.source(program)) + "\n"

    def source(self, program):
        phrases = " ".join(word for word, given in [("COMMON", program.common), ("INITIAL", program.initial), ("RECURSIVE", program.recursive)] if given)
        lines = ["IDENTIFICATION DIVISION.", f"PROGRAM-ID. {program.name}{' IS ' + phrases + ' PROGRAM' if phrases else ''}.", "DATA DIVISION.", "WORKING-STORAGE SECTION."]
        lines.append(f"01 W1 PIC 9(5) VALUE {program.start['W1']}.")
        lines += [f"01 {item} IS GLOBAL PIC 9(5) VALUE {program.start[item]}." for item in program.globals]
        lines += [f"01 {item} PIC 9(5) IS EXTERNAL." for item in program.externals]
        lines += ["01 LEVELS PIC 9 VALUE 0.", "01 BV PIC 9(5)."]
        if program.local:
            lines += ["LOCAL-STORAGE SECTION.", f"01 L1 PIC 9(5) VALUE {program.start['L1']}."]
        lines.append("LINKAGE SECTION.")
        for i, value in enumerate(program.by_value):
            lines.append(f"01 P{i} PIC 9({'9) COMP-5' if value else '5)'}.")
        if program.returning:
            lines.append("01 RET PIC 9(5).")
        using = "".join((" BY VALUE" if value else " BY REFERENCE OPTIONAL") + f" P{i}" for i, value in enumerate(program.by_value))
        lines.append(f"PROCEDURE DIVISION{' USING' if using else ''}{using}{' RETURNING RET' if program.returning else ''}.")
        lines.append("M1.")
        if program.name == "MAINP":
            lines.append("MOVE 0 TO EX-A EX-B.")
        lines += self.show(program, "IN ")
        if program.recursive:
            lines.append("ADD 1 TO LEVELS.")
        for action in program.body:
            lines += self.statement(program, action)
        lines += ["M9."] + self.show(program, "OUT")
        if program.recursive:
            lines.append("SUBTRACT 1 FROM LEVELS.")
        if program.returning:
            lines.append("MOVE W1 TO RET.")
        lines.append("STOP RUN." if program.name == "MAINP" else "EXIT PROGRAM.")
        for inner in program.inner:
            lines += self.source(inner)
        return lines + [f"END PROGRAM {program.name}."]

    def show(self, program, mark):
        lines = [f"DISPLAY '{mark} {program.name}' WITH NO ADVANCING."]
        lines += [f"DISPLAY ' {item}=' {item} WITH NO ADVANCING." for item, _ in program.visible()]
        for i, value in enumerate(program.by_value):
            if value:
                lines.append(f"MOVE P{i} TO BV DISPLAY ' P{i}=' BV WITH NO ADVANCING.")
            else:
                lines.append(f"IF ADDRESS OF P{i} = NULL DISPLAY ' P{i}=NONE' WITH NO ADVANCING")
                lines.append(f"ELSE DISPLAY ' P{i}=' P{i} WITH NO ADVANCING.")
        return lines + ["DISPLAY SPACE."]

    def statement(self, program, action):
        def there(item):
            """A parameter may be omitted: nothing is done with it then."""
            is_parameter = item[0] == "P" and not program.by_value[int(item[1])]
            return f"IF ADDRESS OF {item} NOT = NULL " if is_parameter else ""

        if action[0] == "add":
            _, item, amount = action
            return [f"{there(item)}ADD {amount} TO {item}."]
        if action[0] == "cancel":
            return [f"CANCEL '{action[1].name}'."]
        if action[0] == "leave":
            return [f"IF {action[1]} > {action[2] * 10} GO TO M9."]
        _, callee, arguments, returning = action
        words, guards = [], ""
        for way, item in arguments:
            if way == "literal":
                words.append("BY CONTENT '00077'")
            elif way == "omitted":
                words.append("BY REFERENCE OMITTED")
            else:
                guards += there(item)
                words.append(f"BY {way.upper()} {item}")
        if callee is program:
            guards += "IF LEVELS < 4 "
        using = " USING " + " ".join(words) if words else ""
        return [f"{guards}CALL '{callee.name}'{using}{' RETURNING ' + returning if returning else ''}."]

    # The model: a cell is a list of one number, so that what is passed by reference is shared.

    def cells(self, program):
        if program not in self.storage:
            self.storage[program] = {item: [program.start[item]] for item in ["W1", *program.globals]}
            self.storage[program]["LEVELS"] = [0]
        return self.storage[program]

    def forget(self, program):
        for each in program.whole():
            self.storage.pop(each, None)

    def cell(self, program, item, frame):
        if item in frame:
            return frame[item]
        owner = dict(program.visible())[item]
        return self.externals[item] if owner is None else self.cells(owner)[item]

    def state(self, program, mark, frame):
        words = [f"{item}={self.cell(program, item, frame)[0]:05d}" for item, _ in program.visible()]
        for i in range(program.parameters):
            cell = frame[f"P{i}"]
            words.append(f"P{i}=" + ("NONE" if cell is None else f"{cell[0]:05d}"))
        self.shown.append(" ".join([f"{mark:3} {program.name}", *words]))

    def run(self):
        self.externals = {"EX-A": [0], "EX-B": [0]}
        self.calls = 0
        self.call(self.outer[0], [])
        return self.shown

    def call(self, program, arguments):
        self.calls += 1
        if self.calls > 3000:
            raise OverflowError
        if program.initial:
            self.forget(program)
        frame = {f"P{i}": cell for i, cell in enumerate(arguments)}
        if program.local:
            frame["L1"] = [program.start["L1"]]
        self.state(program, "IN", frame)
        cells = self.cells(program)
        cells["LEVELS"][0] += program.recursive
        for action in program.body:
            if action[0] == "leave":
                if self.cell(program, action[1], frame)[0] > action[2] * 10:
                    break
            elif not self.step(program, action, frame):
                raise OverflowError
        self.state(program, "OUT", frame)
        cells["LEVELS"][0] -= program.recursive
        return cells["W1"][0]

    def step(self, program, action, frame):
        if action[0] == "add":
            cell = self.cell(program, action[1], frame)
            if cell is not None:
                cell[0] += action[2]
                return cell[0] < LIMIT
        elif action[0] == "cancel":
            self.forget(action[1])
        elif action[0] == "call":
            _, callee, wanted, returning = action
            arguments = []
            for way, item in wanted:
                cell = self.cell(program, item, frame)
                if way == "literal":
                    arguments.append([77])
                elif way == "omitted":
                    arguments.append(None)
                elif cell is None:
                    return True
                else:
                    arguments.append(cell if way == "reference" else list(cell))
            if callee is program and self.cells(program)["LEVELS"][0] >= 4:
                return True
            given = self.call(callee, arguments)
            if returning:
                self.cell(program, returning, frame)[0] = given
        return True


def main():
    trial, first, count = Trial(sys.argv[1]), int(sys.argv[2]), int(sys.argv[3])
    calls, seed = 0, first
    while count:
        world = World(random.Random(seed))
        seed += 1
        try:
            expected = world.run()
        except OverflowError:
            continue  # too long a run, or a count that its item does not hold
        count -= 1
        calls += world.calls
        with tempfile.TemporaryDirectory() as work:
            together = seed % 2  # in one source; else the others are modules
            trial.compile(work, "calls.cbl", world.text(world.outer if together else world.outer[:1]), "-O0")
            if not together:
                trial.compile(work, "others.cbl", world.text(world.outer[1:]), "-O0", "-m")
            got = trial.run(work, ["./calls"], env={**os.environ, "COBPATH": work})
            trial.compare(seed - 1, got, expected)
    trial.end(f"calls: {calls} in {seed - first} programs")


main()
