#!/usr/bin/env python3
"""Random nests of conditional statements, ended by END-verbs, by periods or by what is around them, held against a model.

nesting_models.py KVRCOB FIRST COUNT. Each sentence is made from a tree. A statement without its END-verb is the last of its
list, and only where no phrase that follows could be taken for its own. What runs is known from the tree.
"""
import random
import sys

from trial import Trial

SENTENCES = 40


class Done(Exception):
    """NEXT SENTENCE or EXIT PERFORM: (its kind)."""


class Nest:
    def __init__(self, numbers):
        self.r, self.steps = numbers, 0
        self.expected = []

    # A list of statements: its text, what it does, and the phrases that a statement left open at its end would take.

    def block(self, depth, shut, inner_loop, forbidden):
        """`shut`: what follows ends an open statement. `forbidden`: phrases that may follow, which an open one must not want."""
        r, texts, runs = self.r, [], []
        count = r.randint(1, 3)
        for place in range(count):
            last = place == count - 1
            text, run = self.statement(depth, last and shut, inner_loop, forbidden)
            texts.append(text)
            runs.append(run)
        def all_of():
            for run in runs:
                run()
        return " ".join(texts), all_of

    def leaf(self, inner_loop):
        r = self.r
        self.steps += 1
        step = self.steps
        kind = r.random()
        if kind < 0.06 and inner_loop:
            def leave():
                raise Done("loop")
            return "EXIT PERFORM", leave
        if kind < 0.12:
            return "CONTINUE", lambda: None
        return f"DISPLAY '{step}'", lambda: self.expected.append(str(step))

    def truth(self):
        r = self.r
        value = r.random() < 0.5
        text = r.choice(["ONE = 1", "TWO > 1 AND ONE < 2", "NOT ZED = 1", "YES", "TXT = 'AB'", "ONE = 1 OR 3", "ZED IS ZERO"] if value else
                        ["ONE = 2", "TWO < 1 OR ONE > 2", "NOT ZED = 0", "NOT YES", "TXT NOT = 'AB'", "ONE = 2 OR 3", "TXT NUMERIC"])
        return text, value

    def statement(self, depth, may_open, inner_loop, forbidden):
        r = self.r
        if depth == 0 or r.random() < 0.25:
            return self.leaf(inner_loop)
        kind = r.choice(["if", "if", "if", "add", "evaluate", "perform", "string", "search", "compute", "call", "read", "unstring", "multiply"])
        if kind == "if":
            condition, value = self.truth()
            has_else = r.random() < 0.6
            # Without ELSE an open IF would take the next one.
            opened = may_open and r.random() < 0.5 and (has_else or "ELSE" not in forbidden) and "END-IF" not in forbidden
            ending = forbidden if opened else frozenset({"END-IF"})
            # Before an ELSE an open IF without ELSE may not be: it would take it.
            then, then_run = self.block(depth - 1, has_else or opened or True, inner_loop, ending | {"ELSE"} if has_else else ending)
            text = f"IF {condition}{r.choice([' THEN', ''])} {then}"
            other_run = None
            if has_else:
                other, other_run = self.block(depth - 1, True, inner_loop, ending)
                text += f" ELSE {other}"
            if not opened:
                text += " END-IF"
            return text, lambda: then_run() if value else other_run() if other_run else None
        if kind == "evaluate":
            subject = r.choice([1, 2, 3])
            whens, runs = [], {}
            opened = may_open and r.random() < 0.4 and not {"WHEN", "END-EVALUATE"} & forbidden
            ending = forbidden if opened else frozenset({"END-EVALUATE"})
            for number in r.sample([1, 2, 3, 4], r.randint(1, 3)):
                text, run = self.block(depth - 1, True, inner_loop, ending | {"WHEN"})
                whens.append(f"WHEN {number} {text}")
                runs[number] = run
            if r.random() < 0.5:
                text, runs[0] = self.block(depth - 1, True, inner_loop, ending)
                whens.append(f"WHEN OTHER {text}")
            name = {1: "ONE", 2: "TWO", 3: "TWO + 1"}[subject]
            run = runs.get(subject, runs.get(0))
            return f"EVALUATE {name} {' '.join(whens)}" + ("" if opened else " END-EVALUATE"), lambda: run() if run else None
        if kind == "perform":
            times = r.randint(0, 2)
            text, run = self.block(depth - 1, True, True, frozenset({"END-PERFORM"}))
            head, count = r.choice([(f"PERFORM {times} TIMES", times), ("PERFORM VARYING K FROM 1 BY 1 UNTIL K > 0 OR ONE = 1", 0), ("PERFORM", 1)])
            def loop():
                for _ in range(count):
                    try:
                        run()
                    except Done as done:
                        if done.args[0] != "loop":
                            raise
                        return
            return f"{head} {text} END-PERFORM", loop
        # Verbs with a pair of phrases.
        failing = r.random() < 0.5
        head, on, on_not, end = {
            "add": (f"ADD {95 if failing else 1} 6 GIVING SMALL", "SIZE ERROR", "SIZE ERROR", "END-ADD"),
            "compute": (f"COMPUTE SMALL = {'ONE / ZED' if failing else 'ONE + 1'}", "SIZE ERROR", "SIZE ERROR", "END-COMPUTE"),
            "multiply": (f"MULTIPLY {60 if failing else 6} BY TWO GIVING SMALL", "SIZE ERROR", "SIZE ERROR", "END-MULTIPLY"),
            "string": (f"STRING 'ABCDE' DELIMITED BY SIZE INTO {'TXT' if failing else 'LONGER'}", "OVERFLOW", "OVERFLOW", "END-STRING"),
            "unstring": (f"UNSTRING '{'A,B,C' if failing else 'A,B'}' DELIMITED BY ',' INTO LONGER L2", "OVERFLOW", "OVERFLOW", "END-UNSTRING"),
            "search": ("SET X TO 1 SEARCH TAB", "AT END", None, "END-SEARCH"),
            "call": (f"CALL '{'NOWHERE' if failing else 'INNER'}'", "EXCEPTION", "EXCEPTION", "END-CALL"),
            "read": (f"MOVE {4 if failing else 1} TO RK READ F", "INVALID KEY", "INVALID KEY", "END-READ"),
        }[kind]
        if kind == "search":
            opened = may_open and r.random() < 0.4 and not {"WHEN", "END-SEARCH"} & forbidden
            ending = forbidden if opened else frozenset({"END-SEARCH"})
            a, a_run = self.block(depth - 1, True, inner_loop, ending | {"WHEN"})
            b, b_run = self.block(depth - 1, True, inner_loop, ending)
            sought = r.choice([3, 9])
            text = f"{head} AT END {a} WHEN T (X) = {sought} {b}{'' if opened else ' END-SEARCH'}"
            return text, b_run if sought == 3 else a_run
        own = {on, "NOT " + on}
        has_on, has_not = r.random() < 0.7, r.random() < 0.5
        if not has_on and not has_not:
            has_on = True
        # The phrases that it does not have it would take from what is around it.
        wants = ({on} if not has_on and not has_not else set()) | ({"NOT " + on} if not has_not else set())
        opened = may_open and r.random() < 0.4 and not (wants | {end}) & forbidden
        text, on_run, not_run = head, None, None
        word = r.choice(["ON ", ""]) if on in ("SIZE ERROR", "OVERFLOW", "EXCEPTION") else ""
        around = forbidden if opened else frozenset({end})
        if has_on:
            inside, on_run = self.block(depth - 1, True, inner_loop, around | {"NOT " + on} if has_not else around)
            text += f" {word}{on} {inside}"
        if has_not:
            inside, not_run = self.block(depth - 1, True, inner_loop, around)
            text += f" NOT {word}{on} {inside}"
        if not opened:
            text += f" {end}"
        chosen = on_run if failing else not_run
        return text, lambda: chosen() if chosen else None

    def program(self):
        head = """IDENTIFICATION DIVISION.
PROGRAM-ID. NEST.
ENVIRONMENT DIVISION.
INPUT-OUTPUT SECTION.
FILE-CONTROL. SELECT F ASSIGN TO "nest.dat" RELATIVE ACCESS RANDOM RELATIVE KEY RK.
DATA DIVISION.
FILE SECTION.
FD F. 
01 FR PIC X(4).
WORKING-STORAGE SECTION.
01 RK PIC 99. 01 ONE PIC 9 VALUE 1. 01 TWO PIC 9 VALUE 2. 01 ZED PIC 9 VALUE 0. 01 K PIC 9. 01 SMALL PIC 99.
01 FLG PIC X VALUE "Y". 88 YES VALUE "Y". 01 TXT PIC XX VALUE "AB". 01 LONGER PIC X(9). 01 L2 PIC X.
01 TG VALUE "12345". 02 T PIC 9 OCCURS 5 INDEXED BY X. 
01 TAB-G. 02 TAB OCCURS 5 INDEXED BY Y PIC 9.
PROCEDURE DIVISION.
MAIN-P.
OPEN OUTPUT F. MOVE 1 TO RK. WRITE FR FROM "REC1". CLOSE F. OPEN I-O F.""".replace("SEARCH TAB", "SEARCH T").split("\n")
        code = []
        for number in range(SENTENCES):
            self.expected.append(f"#{number}")
            text, run = self.block(3, True, False, frozenset())
            code.append(f"DISPLAY '#{number}'. {text.replace('SEARCH TAB', 'SEARCH T')}.")
            code.append("MOVE 'AB' TO TXT.")
            run()
        tail = ["CLOSE F. STOP RUN.", "IDENTIFICATION DIVISION.", "PROGRAM-ID. INNER.", "PROCEDURE DIVISION.", "P. EXIT PROGRAM.", "END PROGRAM INNER.", "END PROGRAM NEST."]
        lines = []
        for line in head + code + tail:
            words, now = line.split(" "), ""
            for word in words:
                if len(now) + len(word) > 100:
                    lines.append(now)
                    now = ""
                now += " " + word
            lines.append(now)
        return "\n".join("       " + line for line in lines) + "\n"


def main():
    trial, first, count = Trial(sys.argv[1]), int(sys.argv[2]), int(sys.argv[3])
    for seed in range(first, first + count):
        nest = Nest(random.Random(seed))
        text = nest.program()

        def about(at):
            sentence = [line for line in nest.expected[: at + 1] if line.startswith("#")][-1]
            start = text.index(f"'{sentence}'")
            return text[start : text.index("MOVE 'AB", start)] + "\n"

        lines = trial.program(seed, text)
        trial.compare(seed, lines and " ".join(lines).split(), nest.expected, about)
    trial.end(f"nesting: {count} programs")


main()
