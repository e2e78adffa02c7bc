#!/usr/bin/env python3
"""Random control flow with files that end and fail in it, and sorts, held against an interpreter of the same program.

crossing_models.py KVRCOB FIRST COUNT. As control_flow.py, and in its statements, paragraphs and loops there are verbs of
files with and without AT END and INVALID KEY, USE procedures that perform, fail and go away themselves, and SORT with
procedures that perform and fail, too.
"""
import subprocess
import sys
import tempfile

from control_flow import Flow, PARAGRAPHS, STEPS
from trial import Trial

# Two sequential files, and a relative one of dynamic access: their records at first.
FILES = {"F0": 3, "F1": 2, "R0": {1: 10, 3: 30, 4: 40}}
PHRASED = ("10", "22", "23")  # the statuses that AT END and INVALID KEY are for


class Place(str):
    """The name of a paragraph that is before all numbered ones and in none of their ranges."""

    def __lt__(self, other):
        return True

    def __ge__(self, other):
        return False


class Crossing(Flow):
    def build(self):
        self.uses_of = {name: [f"U{name}", 0] for name in FILES if self.numbers.random() < 0.7}
        self.in_use, self.sorts = None, []
        self.lines.append("DECLARATIVES.")
        for name in self.uses_of:
            self.declare(name)
        self.lines += ["END DECLARATIVES.", "OPENING SECTION.", "OPENING-IT.", *self.opening()]
        super().build()
        self.sort_procedures()

    def opening(self):
        yield "    OPEN OUTPUT F0 F1 R0."
        for name, records in FILES.items():
            for k in records if isinstance(records, dict) else range(1, records + 1):
                yield f"    MOVE {k} TO RK. MOVE {k * 10} TO {name}-N. WRITE {name}-R."
        yield "    CLOSE F0 F1 R0. OPEN INPUT F0 F1 I-O R0."

    # F1's USE procedure is one for its mode.
    def declare(self, name):
        self.in_use = name
        self.section, self.paragraph = f"U{name}", None
        self.lines += [f"U{name} SECTION.", f"    USE AFTER STANDARD ERROR PROCEDURE ON {'INPUT' if name == 'F1' else name}."]
        self.label(("S", f"U{name}"))
        for k in range(2 + (self.numbers.random() < 0.5)):
            self.paragraph = Place(f"U{name}{k}")
            self.lines.append(f"P{self.paragraph}.")
            self.label(("P", self.paragraph))
            self.say(f"ADD 1 TO STEPS IF STEPS > {STEPS} {self.guard}.")
            self.act("step")
            self.trace()
            for _ in range(self.numbers.randint(1, 2)):
                self.sentence = self.fresh()
                self.statement(0)
                self.lines[-1] += "."
                self.label(self.sentence)
            self.label(("end P", self.paragraph))
            self.act("fall", ("P", self.paragraph))
            self.uses_of[name][1] = k + 1
        self.label(("end S", f"U{name}"))
        self.act("fall", ("S", f"U{name}"))
        self.act("out of the declaratives")
        self.in_use = None

    def target(self):
        if self.in_use and self.numbers.random() < 0.5:
            return f"U{self.in_use}{self.numbers.randrange(2)}"
        if self.in_use:
            return self.numbers.randrange(PARAGRAPHS)
        if self.sorts_now and self.numbers.random() < 0.95:
            return f"{self.section}-{self.numbers.randrange(1, 3)}"
        return super().target()

    def range(self):
        done = [name for name, use in self.uses_of.items() if use[1] >= 2]
        if done and (self.in_use or self.numbers.random() < 0.1):
            name = self.numbers.choice(done)
            if self.numbers.random() < 0.3:
                return f"U{name}", ("S", f"U{name}"), ("S", f"U{name}")
            p = f"U{name}{self.numbers.randrange(2)}"
            return f"P{p}", ("P", p), ("P", p)
        if self.in_use:
            p = f"U{self.in_use}1"
            return f"P{p}", ("P", p), ("P", p)
        return super().range()

    def do_alter(self, depth):
        return self.do_trace(depth) if self.in_use else super().do_alter(depth)

    def do_perform(self, depth):
        # In a USE procedure only once in a while: it may perform itself.
        return self.do_file(depth) if self.in_use and self.numbers.random() < 0.5 else super().do_perform(depth)

    def more(self, depth):
        if depth > 2:
            return ["file"]
        kinds = ["file"] * 9
        if not self.in_use and not self.sorts_now:
            kinds += ["sort"] * 2
        if not self.in_use:
            kinds += ["release", "return"]
        return kinds

    sorts_now = False

    def phrases(self, depth, names, end):
        """The statement's phrases, each a block: labels of them, None for those left out."""
        places, done = [None, None], self.fresh()
        for k in (0, 1):
            if self.numbers.random() < 0.55 and depth < 3:
                self.say(names[k])
                places[k] = self.fresh()
                self.label(places[k])
                self.block(depth)
                self.act("jump", done)
        self.say(end)
        self.label(done)
        return places, done

    def do_file(self, depth):
        name = self.numbers.choice([*FILES])
        verb = self.numbers.choice(["READ"] * 5 + ["OPEN", "CLOSE"])
        key = 0
        if name == "R0" and verb == "READ":
            verb = self.numbers.choice(["READ", "READ NEXT", "READ NEXT", "WRITE", "DELETE", "REWRITE", "START"])
            key = self.numbers.randint(1, 6)
        place = len(self.code)
        self.act("io", verb, name, key, None, None, None)
        if verb in ("OPEN", "CLOSE"):
            mode = {"OPEN": "I-O " if name == "R0" else "INPUT ", "CLOSE": ""}[verb]
            self.say(f"{verb} {mode}{name}")
            places, done = [None, None], self.fresh()
            self.label(done)
        else:
            if key:
                self.say(f"MOVE {key} TO RK MOVE {key * 11} TO R0-N")
            what = {"READ": name, "READ NEXT": f"{name} NEXT", "WRITE": f"{name}-R", "REWRITE": f"{name}-R", "DELETE": f"{name}",
                    "START": f"{name} KEY >= RK"}[verb]
            self.say(f"{verb.split()[0]} {what}")
            ends = name != "R0" or verb == "READ NEXT"
            words = ("AT END", "NOT AT END") if ends else ("INVALID KEY", "NOT INVALID KEY")
            places, done = self.phrases(depth, words, f"END-{verb.split()[0]}")
        self.code[place][4:] = [*places, done]
        self.act("jump", done)
        self.act("used", done)
        self.label(done)
        self.say(f"DISPLAY {name}-S")
        self.act("status", name)

    def do_sort(self, _):
        k = len(self.sorts)
        self.sorts.append(self.numbers.random() < 0.5)
        self.say(f"IF SORTING = 0 SORT SF ON {'ASCENDING' if self.sorts[-1] else 'DESCENDING'} KEY SK "
                 f"INPUT PROCEDURE SI{k} OUTPUT PROCEDURE SO{k} END-IF")
        end = self.fresh()
        self.act("begin sort", end, self.sorts[-1])
        self.perform(("S", f"SI{k}"), ("S", f"SI{k}"))
        self.act("sorted")
        self.perform(("S", f"SO{k}"), ("S", f"SO{k}"))
        self.act("end sort")
        self.label(end)

    def do_release(self, _):
        k = self.counter()
        self.say(f"IF SORTING = 1 MOVE K{k} TO SK RELEASE SR END-IF")
        self.act("release", k)

    def do_return(self, depth):
        end = self.fresh()
        place = len(self.code)
        self.act("return", end, None, None, None)
        self.say("IF SORTING = 2 RETURN SF AT END MOVE 3 TO SORTING")
        ended = self.fresh()
        after = self.fresh()
        self.act("jump", after)
        self.label(ended)
        self.block(min(depth + 1, 3))
        self.act("jump", after)
        good = None
        if self.numbers.random() < 0.6:
            self.say("NOT AT END")
            good = self.fresh()
            self.label(good)
            self.block(min(depth + 1, 3))
        self.say("END-RETURN DISPLAY SK END-IF")
        self.label(after)
        self.act("key")
        self.label(end)
        self.code[place][2:] = [ended, good, after]

    def sort_procedures(self):
        self.sorts_now = True
        for k in range(len(self.sorts)):
            for letter, phase in ("I", 1), ("O", 2):
                name = f"S{letter}{k}"
                self.lines += [f"{name} SECTION."]
                self.section = name
                self.label(("S", name))
                for part in range(3):
                    p = f"{name}-{part}"
                    self.lines.append(f"P{p}.")
                    self.paragraph = Place(p)
                    self.label(("P", p))
                    if part == 0:
                        self.say(f"MOVE {phase} TO SORTING.")
                        self.act("phase", phase)
                    self.say(f"ADD 1 TO STEPS IF STEPS > {STEPS} {self.guard}.")
                    self.act("step")
                    for _ in range(self.numbers.randint(1, 3)):
                        self.sentence = self.fresh()
                        if self.numbers.random() < 0.6:
                            self.do_release(0) if phase == 1 else self.do_return(0)
                        else:
                            self.statement(0)
                        self.lines[-1] += "."
                        self.label(self.sentence)
                    if part == 1 and self.numbers.random() < 0.5:
                        words, condition = self.condition()
                        self.say(f"IF {words} GO TO P{name}-0.")
                        self.act("if", condition, ("P", f"{name}-0"))
                    if part == 2:
                        self.say("MOVE 0 TO SORTING.")
                        self.act("phase", 0)
                    self.label(("end P", p))
                    self.act("fall", ("P", p))
                self.label(("end S", name))
                self.act("fall", ("S", name))
        # What a GO TO brings here goes on to the end.
        self.lines += ["OVER SECTION.", "OVER-IT.", '    DISPLAY "FINI" STOP RUN.']
        self.act("stop")

    def text(self):
        head = ["IDENTIFICATION DIVISION.", "PROGRAM-ID. FLOW.", "ENVIRONMENT DIVISION.", "INPUT-OUTPUT SECTION.", "FILE-CONTROL."]
        head += [f'SELECT F{k} ASSIGN TO "f{k}.dat" FILE STATUS F{k}-S.' for k in (0, 1)]
        head += ['SELECT R0 ASSIGN TO "r0.dat" ORGANIZATION RELATIVE ACCESS DYNAMIC RELATIVE KEY RK FILE STATUS R0-S.', 'SELECT SF ASSIGN TO "sf".']
        head += ["DATA DIVISION.", "FILE SECTION."]
        for name in FILES:
            head += [f"FD {name}.", f"01 {name}-R.", f" 02 {name}-N PIC 9(4)."]
        head += ["SD SF.", "01 SR.", " 02 SK PIC 9(4)."]
        head += ["WORKING-STORAGE SECTION.", "77 STEPS PIC 9(4) VALUE 0.", "77 RK PIC 9(4).", "77 SORTING PIC 9 VALUE 0."]
        head += [f"77 {name}-S PIC XX." for name in FILES]
        head += [f"77 K{k} PIC 9(4) {['', 'COMP', 'COMP-3'][k % 3]} VALUE {k}." for k in range(6)]
        return "\n".join(head + ["PROCEDURE DIVISION."] + self.lines) + "\n"

    # The machine.
    def run(self):
        self.open = {name: True for name in FILES}
        self.status = dict.fromkeys(FILES, "00")
        self.position = {name: 0 for name in FILES}
        self.records = dict(FILES["R0"])
        self.running, self.phase, self.sort = [], 0, None
        self.key = 0
        self.main = self.labels["begin"]
        return super().run()

    def jumped(self, at, cells, saved):
        """A jump out of the DECLARATIVES ends the USE procedures that run, and what they perform."""
        if self.running and at >= self.main:
            del self.running[1:]
            self.end_use(cells, saved)
        return at

    def end_use(self, cells, saved):
        """The PERFORMs that were active at the failed statement are again, each at the number it had."""
        _, depth, before, counts = self.running.pop()
        self.counts.update(counts)
        del saved[depth:]
        cells.clear()
        cells.update(before)

    def outcome(self, verb, name, key):
        """The status that a verb gives, after what it does."""
        is_open, at = self.open[name], self.position[name]
        if verb == "OPEN":
            if is_open:
                return "41"
            self.open[name], self.position[name] = True, 0
            return "00"
        if verb == "CLOSE":
            if not is_open:
                return "42"
            self.open[name] = False
            return "00"
        if not is_open:
            return {"WRITE": "48", "DELETE": "49", "REWRITE": "49"}.get(verb, "47")
        if name != "R0":
            if at is None:
                return "46"
            self.position[name] = at + 1 if at < FILES[name] else None
            return "00" if at < FILES[name] else "10"
        if verb == "READ NEXT":
            if at is None:
                return "46"
            later = sorted(k for k in self.records if k > at)
            self.position[name] = later[0] if later else None
            return "00" if later else "10"
        if verb in ("READ", "START"):
            found = key in self.records if verb == "READ" else any(k >= key for k in self.records)
            self.position[name] = (key if verb == "READ" else key - 1) if found else None
            return "00" if found else "23"
        if verb == "WRITE":
            if key in self.records:
                return "22"
            self.records[key] = key * 11
            return "00"
        if key not in self.records:
            return "23"
        if verb == "DELETE":
            del self.records[key]
        return "00"

    def do_io(self, at, a, cells, saved, counters, output):
        verb, name, key, failed, good, done = a
        was_open = self.open[name]
        status = self.status[name] = self.outcome(verb, name, key)
        if status == "00":
            return self.labels[good or done]
        if status in PHRASED and failed:
            return self.labels[failed]
        use = f"U{name}" if name in self.uses_of else None
        if name == "F1" and not was_open:
            use = None
        if name == "F0" and not use and was_open and "F1" in self.uses_of:
            use = "UF1"  # the one for the mode
        if not use or any(use == r[0] for r in self.running):
            return self.labels[done]
        self.running.append((use, len(saved), dict(cells), dict(self.counts)))
        cells.clear()
        cells[("S", use)] = ("used", done)
        self.labels[("used", done)] = self.labels[done] - 1
        return self.labels[("S", use)]

    def do_used(self, at, a, cells, saved, *_):
        """After a verb: its USE procedure, if it ran, is over."""
        self.end_use(cells, saved)
        return at

    def do_status(self, at, a, cells, saved, counters, output):
        output.append(self.status[a[0]])
        return at

    def do_begin_sort(self, at, a, *_):
        if self.phase:
            return self.labels[a[0]]
        if self.sort is not None:
            return None
        self.sort, self.ascending = [], a[1]
        return at

    def do_sorted(self, at, *_):
        if self.sort is None:
            return None
        self.sort.sort(reverse=not self.ascending)
        return at

    def do_end_sort(self, at, *_):
        self.sort = None
        return at

    def do_phase(self, at, a, *_):
        if self.sort is None:
            return None  # a sort procedure that something else came into
        self.phase = a[0]
        return at

    def release_key(self, at, a, cells, saved, counters, output):
        if self.phase == 1 and self.sort is None:
            return None  # a procedure of a SORT that was left by EXIT SECTION
        if self.phase == 1:
            self.key = counters[a[0]]
            self.sort.append(self.key)
        return at

    def return_key(self, at, a, cells, saved, counters, output):
        end, ended, good, after = a
        if self.phase != 2:
            return self.labels[end]
        if self.sort is None:
            return None
        if not self.sort:
            self.phase = 3
            return self.labels[ended]
        self.key = self.sort.pop(0)
        return self.labels[good or after]

    def show_key(self, at, a, cells, saved, counters, output):
        output.append(f"{self.key:04}")
        return at

    others = {"io": do_io, "used": do_used, "status": do_status, "begin sort": do_begin_sort, "sorted": do_sorted, "end sort": do_end_sort,
              "phase": do_phase, "release": release_key, "return": return_key, "key": show_key, "out of the declaratives": lambda *_: None}


def main():
    trial, first, count = Trial(sys.argv[1]), int(sys.argv[2]), int(sys.argv[3])
    ran = lines = 0
    for seed in range(first, first + count):
        flow = Crossing(seed)
        expected = flow.run()
        if expected is None:  # it would go on for ever, or COBOL does not say
            continue
        with tempfile.TemporaryDirectory() as work:
            try:
                trial.compile(work, "flow.cbl", flow.text(), "-O0", "-w")
                got = trial.run(work, ["./flow"], timeout=20)
            except (subprocess.TimeoutExpired, subprocess.CalledProcessError) as failure:
                got = [str(failure)]
            trial.compare(seed, got, expected)
        ran += 1
        lines += len(expected)
    trial.end(f"crossings: {lines} lines in {ran} programs")


if __name__ == "__main__":
    main()
