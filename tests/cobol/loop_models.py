#!/usr/bin/env python3
"""Random inline loops over all kinds of counters, held against the same loops over paragraphs.

loop_models.py KVRCOB FIRST COUNT. Counters are changed in their loops in every way: by name, as parts of groups and
redefinitions, by paragraphs, called programs, other loops. They reach the ends of their pictures and bytes, too.
"""
import random
import sys

from trial import Trial

NESTS = 40

COUNTERS = {
    "A1": "PIC S9(4) COMP-5", "A2": "PIC 9(4) COMP-5", "A3": "PIC S9(9) COMP-5", "B1": "PIC S9(2) COMP", "B2": "PIC 9(3) COMP",
    "Z1": "PIC 9(2)", "Z2": "PIC S9(2)", "Z4": "PIC 9(2)V9", "Z3": "PIC S9(3) SIGN LEADING SEPARATE", "P1": "PIC S9(3) COMP-3",
    "P2": "PIC 9(2) COMP-3", "X1": "PIC X COMP-X", "L1": "PIC S9(17)", "L2": "PIC S9(18) COMP-5", "C1": "BINARY-CHAR UNSIGNED", "F1": "COMP-2",
}
DATA = ["01 COUNTERS."] + [f" 02 {name} {what}." for name, what in COUNTERS.items()] + [
    " 02 A3-AGAIN REDEFINES F1 PIC S9(9) COMP-5.",
    "01 COUNTERS-AGAIN REDEFINES COUNTERS.", " 02 FILLER PIC X(12).", " 02 Z1-AGAIN PIC 9(2).", " 02 OTHERS PIC X(5).",
    "01 BOUNDS.", " 02 M1 PIC S9(9) COMP-5 VALUE 7.", " 02 M2 PIC 9(2) VALUE 9.", " 02 M3 PIC S9(4) COMP-5 VALUE 32767.", " 02 M4 PIC 99 COMP VALUE 99.",
    "01 TABLE-1.", " 02 T PIC S9(4) COMP OCCURS 10.", "01 GUARD PIC 9(4).", "01 HASH PIC 9(9).", "01 SAVED PIC X(80).", "01 R PIC 9(4).", "01 SHOWN PIC -(12)9.9.",
]
CHANGER = """
IDENTIFICATION DIVISION.
PROGRAM-ID. CHANGER.
DATA DIVISION.
LINKAGE SECTION.
01 COUNTERS.
 02 A1 PIC S9(4) COMP-5.
 02 FILLER PIC X(10).
 02 Z1 PIC 9(2).
01 R PIC 9(4).
PROCEDURE DIVISION USING COUNTERS R.
    ADD 1 TO R.
    IF FUNCTION MOD (R 3) = 0 ADD 2 TO A1 Z1.
    GOBACK.
END PROGRAM CHANGER.
"""


class Loops:
    def __init__(self, numbers):
        self.r, self.paragraphs, self.code = numbers, [], []

    def paragraph(self, text):
        self.paragraphs.append(f"P{len(self.paragraphs)}. {text}.")
        return f"P{len(self.paragraphs) - 1}"

    def statement(self, counter):
        r = self.r
        name, number = r.choice([*COUNTERS, *[counter] * 8]), r.randint(0, 12)
        return r.choice([
            f"ADD {number} TO {name}", "SUBTRACT 1 FROM A3-AGAIN", f"MOVE {number} TO Z1-AGAIN", f"MOVE {name} TO R T (3)", "MOVE SAVED TO COUNTERS",
            "MOVE COUNTERS TO SAVED", f"INITIALIZE {name}", f"COMPUTE {name} R = {name} + {number}", f"ADD 1 TO {name} T (FUNCTION MOD (FUNCTION INTEGER ({name}) 10) + 1)",
            f"CALL 'CHANGER' USING BY REFERENCE COUNTERS R", f"DIVIDE A3 BY 2 GIVING {name} REMAINDER HASH", f"MOVE {name} TO {r.choice([*COUNTERS])}",
            f"ADD 50 TO {name} ON SIZE ERROR ADD 1 TO {counter} CYCLE END-ADD",
            f"COMPUTE {name} = {counter} * 2 ON SIZE ERROR MOVE 3 TO {counter} NOT ON SIZE ERROR IF {counter} = 4 CYCLE END-IF END-COMPUTE",
            f"CALL 'CHANGER' USING COUNTERS R NOT ON EXCEPTION IF R > 3 CYCLE END-IF END-CALL",
            f"IF {counter} = {number} MOVE 1 TO {name} ELSE ADD 2 TO R END-IF",
            f"EVALUATE {counter} WHEN 2 ADD 1 TO {name} WHEN {number} CYCLE WHEN OTHER ADD 1 TO HASH END-EVALUATE", f"MOVE {name} TO SHOWN DISPLAY SHOWN",
            "STRING '7' DELIMITED BY SIZE INTO OTHERS WITH POINTER R ON OVERFLOW MOVE 1 TO R END-STRING", "MOVE 'A' TO COUNTERS (13:1)", "ADD 2 TO SEEN",
            "INSPECT OTHERS REPLACING FIRST '1' BY '3'", f"PERFORM 2 TIMES ADD 1 TO {name} END-PERFORM", f"PERFORM {self.paragraph(f'ADD 1 TO {name} ADD 3 TO HASH')}",
        ])

    def varying(self, counter, inner):
        """FROM, BY and UNTIL of a counter. Turns are counted within the innermost loop only; others end by themselves."""
        r = self.r
        if not inner:
            until = r.choice([f"{counter} > 5", f"{counter} > M1", f"{counter} >= M2", f"R = 3 OR {counter} > 3"])
            return f"{counter} FROM 1 BY 1 UNTIL {until} OR GUARD > 60"
        until = r.choice([f"{counter} > 5", f"{counter} > M1", f"{counter} >= M2", f"{counter} > M3", f"{counter} > M4", f"{counter} < -4",
                          f"{counter} <= M1", f"{counter} = 9", f"{counter} > 99", f"{counter} < 0", f"{counter} >= 32767", f"{counter} > 8 OR R = 3",
                          f"HASH > 90000 OR {counter} > 255", f"{counter} > 6 AND R > 1", f"NOT {counter} < 5"])
        first = r.choice(["1", "0", "1", "-2", "3", "M1", "R", "95", "250", "32760", "997", "A1", "Z1"])
        return f"{counter} FROM {first} BY {r.choice(['1', '1', '1', '2', '-1', '-3', 'M1', 'R', '0.5', '40'])} UNTIL {until} OR GUARD > 60"

    def loop(self, depth):
        """The loop with its body in it, and over a paragraph."""
        r = self.r
        counters = r.sample([*COUNTERS], 1 if r.random() < 0.7 else r.randint(2, 3))
        inner = counters[-1]
        head = f"PERFORM {{}} WITH TEST {r.choice(['BEFORE', 'BEFORE', 'AFTER'])} VARYING {' AFTER '.join(self.varying(c, i == len(counters) - 1) for i, c in enumerate(counters))}"
        turn = f"ADD 1 TO GUARD COMPUTE HASH = FUNCTION MOD (HASH * 7 + {inner} * 10, 99991)"
        here, there = [turn], [turn]
        for _ in range(r.randint(1, 4)):
            a, b = self.loop(depth - 1) if depth and r.random() < 0.25 else (self.statement(inner),) * 2
            here.append(a.replace("CYCLE", "EXIT PERFORM CYCLE") if a is b else a)
            there.append(b.replace("CYCLE", "EXIT PARAGRAPH") if a is b else b)
        return head.format("") + "\n" + "\n".join(here) + "\nEND-PERFORM", head.format(self.paragraph("\n".join(there)))

    def program(self):
        elements = " ".join(f"' ' T ({i})" for i in range(1, 11))
        show = " ".join(f"MOVE {name} TO SHOWN DISPLAY SHOWN" for name in COUNTERS)
        for nest in range(NESTS):
            here, there = self.loop(self.r.randint(0, 2))
            for form in here, there:
                self.code.append(f"INITIALIZE COUNTERS TABLE-1 GUARD HASH R. MOVE COUNTERS TO SAVED. MOVE 1 TO R.\n{form}.\n{show}.\nDISPLAY 'NEST {nest} ' HASH ' ' R ' ' GUARD {elements}.")
        return "\n".join(["IDENTIFICATION DIVISION.", "PROGRAM-ID. LOOPS.", "DATA DIVISION.", "WORKING-STORAGE SECTION.", *DATA, "LINKAGE SECTION.", "01 SEEN PIC S9(4) COMP-5.", "PROCEDURE DIVISION.", "SET ADDRESS OF SEEN TO ADDRESS OF A1.", *self.code,
                          "GOBACK.", *self.paragraphs, "END PROGRAM LOOPS.", CHANGER])


def main():
    trial = Trial(sys.argv[1])
    first, count = int(sys.argv[2]), int(sys.argv[3])
    for seed in range(first, first + count):
        lines = trial.program(f"program {seed}", Loops(random.Random(seed)).program())
        if lines is None:
            continue
        runs = [[]]
        for line in lines:
            runs[-1].append(line)
            if line.startswith("NEST"):
                runs.append([])
        trial.compare(f"program {seed}", [line for run in runs[0:-1:2] for line in run], [line for run in runs[1:-1:2] for line in run])
        if len(runs) != 2 * NESTS + 1 or runs[-1]:
            trial.failed += 1
            print(f"program {seed}: {len(runs)} runs, {runs[-1]}")
    trial.end(f"{count} programs of {NESTS} nests")


main()
