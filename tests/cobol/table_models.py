#!/usr/bin/env python3
"""Random statements on tables, indexes and condition-names, held against a model.

table_models.py KVRCOB FIRST COUNT. SEARCH with its phrases, SET in all its forms, PERFORM VARYING of indexes with AFTER,
groups with OCCURS DEPENDING as senders and receivers, condition-names of tables, SET TO TRUE, RENAMES and CORRESPONDING.
"""
import random
import sys

from trial import Trial

STATEMENTS = 100
LETTERS = "ABCD"


class Model:
    def __init__(self, numbers):
        r = self.r = numbers
        self.code, self.expected = [], []
        self.n = {"T1": r.randint(3, 9), "T2": r.randint(3, 9)}
        self.k1 = [r.randint(0, 9) for _ in range(self.n["T1"])]
        self.w1 = [r.choice(LETTERS) + r.choice(LETTERS) for _ in range(self.n["T1"])]
        self.v2 = [r.randint(-9, 9) for _ in range(self.n["T2"])]
        self.grid = [[[r.randint(0, 99) for _ in range(3)] for _ in range(2)] for _ in range(4)]
        self.x = {name: 1 for name in ("X1", "X2", "Y1", "N1", "N2", "D1")}
        self.table_of = {"X1": "T1", "X2": "T1", "Y1": "T2"}
        # Groups with a table whose length changes: the counter outside, inside, and inside a group in it.
        self.count = {"OUT-C": 1, "IN-C": 1}
        self.out = ["--"] * 6
        self.ins = ["---"] * 5
        self.ins_head = "##"
        self.levels = [r.randint(0, 9) for _ in range(4)]
        self.code += [f"MOVE {v} TO K1 ({i + 1}) MOVE '{w}' TO W1 ({i + 1})." for i, (v, w) in enumerate(zip(self.k1, self.w1))]
        self.code += [f"MOVE {v} TO V2 ({i + 1})." for i, v in enumerate(self.v2)]
        self.code += [f"MOVE {v} TO C3 ({i + 1}, {j + 1}, {k + 1})." for i, p in enumerate(self.grid) for j, q in enumerate(p) for k, v in enumerate(q)]
        self.code += ["SET X1 X2 Y1 TO 1. SET D1 TO X1. MOVE 1 TO N1 N2."]
        self.code += ["MOVE 6 TO OUT-C. MOVE ALL '-' TO OUT-G. MOVE 5 TO IN-C. MOVE ALL '-' TO IN-T. MOVE '##' TO IN-H. MOVE 1 TO OUT-C IN-C."]
        self.code += [f"MOVE {v} TO LV ({i + 1})." for i, v in enumerate(self.levels)]

    def data(self):
        n = self.n
        return [
            "01 T1-G.", f" 02 T1 OCCURS {n['T1']} TIMES INDEXED BY X1 X2.", "  03 K1 PIC 9(2).", "  03 W1 PIC X(2).",
            "01 T2-G.", f" 02 V2 PIC S9(3) COMP-3 OCCURS {n['T2']} INDEXED BY Y1.",
            "01 T3-G.", " 02 P3 OCCURS 4 INDEXED BY PX.", "  03 R3 OCCURS 2 INDEXED BY RX.", "   04 C3 PIC 99 COMP OCCURS 3 INDEXED BY CX.",
            "01 D1 USAGE IS INDEX.", "01 N1 PIC 99.", "01 N2 PIC S9(4) COMP.", "01 S1 PIC S9(3) SIGN LEADING SEPARATE.", "01 SUM1 PIC 9(6).", "01 TRACE PIC X(60).", "01 AT1 PIC 99.",
            "01 OUT-C PIC 9.", "01 OUT-G.", " 02 OUT-T PIC XX OCCURS 1 TO 6 DEPENDING ON OUT-C.",
            "01 IN-G.", " 02 IN-H PIC XX.", " 02 IN-C PIC 9.", " 02 IN-T.", "  03 IN-E PIC XXX OCCURS 0 TO 5 TIMES DEPENDING ON IN-C.",
            "01 W PIC X(40).", "01 LV-G.", " 02 LV PIC 9 OCCURS 4.", "  88 LOW VALUES 0 THRU 2, 7.", "  88 MIDDLE VALUE 3 4 5 THROUGH 6.", "  88 HIGHEST VALUE IS 9.",
            "01 GRP.", " 88 GRP-A VALUE 'A'.", " 88 GRP-B VALUES ARE 'BB' THRU 'CC' 'DDDD'.", " 88 GRP-BLANK VALUE SPACES.", " 02 G1 PIC XX.", " 02 G2.", "  03 G3 PIC 9.", "  03 G4 PIC X.",
            " 66 RN1 RENAMES G1 THRU G2.", " 66 RN2 RENAMES G3.", " 66 RN3 RENAMES G3 THROUGH G4.",
            "01 CA.", " 02 P PIC S9(3).", " 02 Q.", "  03 R PIC 9(2)V9.", "  03 S PIC S9(3) COMP.", " 02 U PIC X.", " 02 V PIC 99 OCCURS 2.",
            "01 CB.", " 02 S PIC 9(5).", " 02 Q.", "  03 S PIC S9(4) COMP-3.", "  03 R PIC S9(3).", " 02 P PIC S9(5)V9 COMP.", " 02 V PIC 99.", " 02 U PIC 9.",
            "01 O1 PIC -(6)9.9.",
        ]

    def show(self, operands, value):
        self.code.append(f"DISPLAY {len(self.expected)} ' ' {operands}.")
        self.expected.append(value)

    def show_indexes(self):
        names = ["X1", "X2", "Y1"]
        for name in names:
            self.code.append(f"SET AT1 TO {name} MOVE AT1 TO TRACE ({names.index(name) * 3 + 1}:2).")
        self.show("TRACE (1:8) ' ' N1 ' ' N2", f"{self.x['X1']:02d} {self.x['X2']:02d} {self.x['Y1']:02d} {self.x['N1']:02d} {self.x['N2']:+05d}")

    def set(self):
        r = self.r
        kind = r.randrange(6)
        if kind == 0:
            target, value = r.choice(["X1", "X2", "Y1"]), r.randint(1, 3)
            self.code.append(f"SET {target} TO {value}.")
            self.x[target] = value
        elif kind == 1:
            source = r.choice(["X1", "X2", "Y1", "N1", "N2"])
            targets = r.sample([t for t in ("X1", "X2", "Y1") if t != source], 2)
            if any(not 1 <= self.x[source] <= self.n[self.table_of[t]] for t in targets):
                return
            self.code.append(f"SET {' '.join(targets)} TO {source}.")
            for t in targets:
                self.x[t] = self.x[source]
        elif kind == 2:
            target, by = r.choice(["X1", "X2", "Y1"]), r.randint(1, 3)
            up = r.random() < 0.5
            value = self.x[target] + (by if up else -by)
            if not 1 <= value <= self.n[self.table_of[target]]:
                return
            how = r.choice([str(by), "N1" if self.x["N1"] == by else str(by)])
            self.code.append(f"SET {target} {'UP' if up else 'DOWN'} BY {how}.")
            self.x[target] = value
        elif kind == 3:
            source = r.choice(["X1", "X2", "Y1"])
            self.code.append(f"SET N1 N2 TO {source}.")
            self.x["N1"] = self.x["N2"] = self.x[source]
        elif kind == 4:
            # An index data item keeps an index for its own table.
            source = r.choice(["X1", "X2"])
            target = r.choice(["X1", "X2"])
            self.code.append(f"SET D1 TO {source}. SET {source} TO 1. SET {target} TO D1.")
            value = self.x[source]
            self.x[source] = 1
            self.x[target] = value
        else:
            a, b = r.choice(["X1", "X2", "Y1", "N1"]), r.choice(["X1", "X2", "Y1", "N1", "2"])
            sign, holds = r.choice([("=", lambda p, q: p == q), ("<", lambda p, q: p < q), (">", lambda p, q: p > q), ("NOT =", lambda p, q: p != q)])
            n = len(self.expected)
            self.code.append(f"IF {a} {sign} {b} DISPLAY {n} ' T' ELSE DISPLAY {n} ' F'.")
            self.expected.append("T" if holds(self.x[a], self.x.get(b, 2)) else "F")
        self.show_indexes()

    def search(self):
        r = self.r
        table = r.choice(["T1", "V2"])
        own = "X1" if table == "T1" else "Y1"
        size = self.n["T1" if table == "T1" else "T2"]
        vary = r.choice([None, None, "X1", "X2", "Y1", "N1", "N2"])
        index = vary if vary and self.table_of.get(vary) == self.table_of[own] else own
        other = vary if vary and vary != index else None
        if r.random() < 0.6:
            start = r.randint(1, size)
            self.code.append(f"SET {index} TO {start}.")
            self.x[index] = start
        if other:
            start = 1
            self.code.append(f"SET {other} TO 1." if other in self.table_of else f"MOVE 1 TO {other}.")
            self.x[other] = 1
        whens, tests = [], []
        for _ in range(r.randint(1, 3)):
            if table == "T1":
                key, word = r.randint(0, 9), r.choice(LETTERS)
                text, test = r.choice([
                    (f"K1 ({index}) = {key}", lambda i, o, key=key: self.k1[i - 1] == key), (f"{key} < K1 ({index})", lambda i, o, key=key: key < self.k1[i - 1]),
                    (f"W1 ({index}) = '{word}A' OR '{word}B'", lambda i, o, word=word: self.w1[i - 1] in (word + "A", word + "B")),
                    (f"K1 ({index}) > {key} AND W1 ({index}) (2:1) = '{word}'", lambda i, o, key=key, word=word: self.k1[i - 1] > key and self.w1[i - 1][1] == word),
                    (f"{index} = {key}", lambda i, o, key=key: i == key),
                ])
            else:
                key = r.randint(-9, 9)
                text, test = r.choice([(f"V2 ({index}) = {key}", lambda i, o, key=key: self.v2[i - 1] == key), (f"V2 ({index}) IS NEGATIVE AND V2 ({index}) < {key}", lambda i, o, key=key: self.v2[i - 1] < min(0, key))])
            if other == "Y1" and table == "T1" and r.random() < 0.5:
                text, test = f"K1 ({index}) = V2 (Y1)", lambda i, o: o <= self.n["T2"] and self.k1[i - 1] == self.v2[o - 1]
                if size > self.n["T2"]:
                    text, test = f"K1 ({index}) = 99", lambda i, o: False
            whens.append(text)
            tests.append(test)
        end = r.random() < 0.7
        text = f"SEARCH {table}{' VARYING ' + vary if vary else ''}{r.choice([' AT END', ' END']) + ' MOVE 0 TO AT1' if end else ''}"
        for number, when in enumerate(whens, 1):
            text += f" WHEN {when} {f'MOVE {number} TO AT1' if r.random() < 0.8 or not end else f'MOVE {number} TO AT1 CONTINUE'}"
        self.code.append(f"MOVE 77 TO AT1. {text}{r.choice([' END-SEARCH', ''])}.")
        i, o, found = self.x[index], self.x.get(other, 0), 0
        while i <= size:
            hits = [number for number, test in enumerate(tests, 1) if test(i, o)]
            if hits:
                found = hits[0]
                break
            i, o = i + 1, o + 1
        self.show("AT1", f"{found if found or end else 77:02d}")
        if found:
            self.x[index] = i
            if other:
                self.x[other] = o
        else:
            self.code.append(f"SET {index} TO 1." + ("" if not other else f" SET {other} TO 1." if other in self.table_of else f" MOVE 1 TO {other}."))
            self.x[index] = 1
            if other:
                self.x[other] = 1
        self.show_indexes()

    def loops(self):
        """A three-dimensional table, walked by PERFORM with AFTER, its bounds and steps at random."""
        r = self.r
        controls = [("PX", 4), ("RX", 2), ("CX", 3)]
        r.shuffle(controls)
        names, bounds, text, plans = [n for n, _ in controls], dict(controls), [], []
        for name, most in controls:
            up = r.random() < 0.6
            first, by = (1, r.randint(1, 2)) if up else (most, -1)
            plans.append((first, by, most if up else 1, up))
            text.append(f"{name} FROM {first} BY {by} UNTIL {name} {'>' if up else '<'} {most if up else 1}")
        if any(not up for *_, up in plans):
            return  # an index below 1 is not laid down
        after = r.random() < 0.3
        if after:
            text = [f"{name} FROM 1 BY {plan[1]} UNTIL {name} >= {bounds[name] - (plan[1] - 1)}" for (name, _), plan in zip(controls, plans)]
        self.code.append("MOVE 0 TO SUM1 MOVE 0 TO AT1.")
        self.code.append(f"PERFORM {'WITH TEST AFTER ' if after else ''}VARYING {' AFTER '.join(text)} ADD 1 TO AT1 COMPUTE SUM1 = FUNCTION MOD (SUM1 * 7 + C3 (PX, RX, CX), 99991) END-PERFORM.")
        total = count = 0
        def values(name, plan):
            most = bounds[name]
            if not after:
                return list(range(1, most + 1, plan[1]))
            out, v = [1], 1
            while not v >= most - (plan[1] - 1):
                v += plan[1]
                out.append(v)
            return out
        v0, v1, v2 = (values(name, plan) for (name, _), plan in zip(controls, plans))
        if any(v > bounds[name] for (name, _), vs in zip(controls, (v0, v1, v2)) for v in vs):
            self.code = self.code[:-2]
            return
        for a in v0:
            for b in v1:
                for c in v2:
                    at = dict(zip(names, (a, b, c)))
                    total = (total * 7 + self.grid[at["PX"] - 1][at["RX"] - 1][at["CX"] - 1]) % 99991
                    count += 1
        self.show("AT1 ' ' SUM1", f"{count:02d} {total:06d}")

    def depending(self):
        r = self.r
        kind = r.randrange(8)
        out_text = lambda: "".join(self.out[: self.count["OUT-C"]])
        in_text = lambda: self.ins_head + str(self.count["IN-C"]) + "".join(self.ins[: self.count["IN-C"]])
        def take_out(text):
            count = self.count["OUT-C"]
            text = text.ljust(2 * count)[: 2 * count]
            self.out[:count] = [text[i * 2 : i * 2 + 2] for i in range(count)]
        if kind == 0:
            self.count["OUT-C"] = r.randint(1, 6)
            self.code.append(f"MOVE {self.count['OUT-C']} TO OUT-C.")
        elif kind == 1:
            self.count["IN-C"] = r.randint(0, 5)
            self.code.append(f"MOVE {self.count['IN-C']} TO IN-C.")
        elif kind == 2:
            i = r.randint(1, self.count["OUT-C"])
            self.out[i - 1] = r.choice(LETTERS) + r.choice(LETTERS)
            self.code.append(f"MOVE '{self.out[i - 1]}' TO OUT-T ({i}).")
        elif kind == 3:
            text = "".join(r.choice(LETTERS) for _ in range(r.randint(1, 14)))
            self.code.append(f"MOVE '{text}' TO OUT-G.")
            take_out(text)
        elif kind == 4:
            # A receiver that holds its counter is taken at its greatest length.
            count = r.randint(0, 5)
            text = "".join(r.choice(LETTERS) for _ in range(2)) + str(count) + "".join(r.choice(LETTERS) for _ in range(r.randint(0, 15)))
            self.code.append(f"MOVE '{text}' TO IN-G.")
            full = text.ljust(18)
            self.ins_head, self.count["IN-C"] = full[:2], count
            self.ins = [full[3 + 3 * i : 6 + 3 * i] for i in range(5)]
        elif kind == 5:
            self.code.append("MOVE IN-G TO OUT-G.")
            take_out(in_text())
        elif kind == 6:
            self.code.append("MOVE ALL '*' TO W MOVE OUT-G TO W (3:).")
            self.show("W", ("**" + out_text()).ljust(40))
        else:
            # The inner group: a receiver without its counter has the length of the moment.
            text = "".join(r.choice(LETTERS) for _ in range(r.randint(1, 15)))
            self.code.append(f"MOVE '{text}' TO IN-T.")
            count = self.count["IN-C"]
            if count == 0:
                self.code.pop()
                return
            text = text.ljust(3 * count)[: 3 * count]
            self.ins[:count] = [text[i * 3 : i * 3 + 3] for i in range(count)]
        self.show("'[' OUT-G '] [' IN-G '] ' FUNCTION LENGTH (IN-G)", f"[{out_text()}] [{in_text()}] {len(in_text())}")

    def names(self):
        r, n = self.r, len(self.expected)
        kind = r.randrange(5)
        conditions = {"LOW": lambda v: v in (0, 1, 2, 7), "MIDDLE": lambda v: v in (3, 4, 5, 6), "HIGHEST": lambda v: v == 9}
        if kind == 0:
            i, name = r.randint(1, 4), r.choice(list(conditions))
            subscript = r.choice([str(i), f"{i + 1} - 1"])
            negated = r.random() < 0.3
            self.code.append(f"IF {'NOT ' * negated}{name} ({subscript}) DISPLAY {n} ' T' ELSE DISPLAY {n} ' F'.")
            self.expected.append("T" if conditions[name](self.levels[i - 1]) != negated else "F")
        elif kind == 1:
            i, name, value = r.randint(1, 4), *r.choice([("LOW", 0), ("MIDDLE", 3), ("HIGHEST", 9)])
            self.code.append(f"SET {name} ({i}) TO TRUE.")
            self.levels[i - 1] = value
            self.show("LV-G", "".join(map(str, self.levels)))
        elif kind == 2:
            i = r.randint(1, 4)
            self.levels[i - 1] = r.randint(0, 9)
            self.code.append(f"MOVE {self.levels[i - 1]} TO LV ({i}).")
        elif kind == 3:
            name, value = r.choice([("GRP-A", "A   "), ("GRP-B", "BB  "), ("GRP-BLANK", "    ")])
            self.code.append(f"SET {name} TO TRUE.")
            self.show("'[' GRP '] [' RN1 '] [' RN3 ']'", f"[{value}] [{value}] [{value[2:]}]")
        else:
            value = r.choice(["A", "BB", "BZ", "CC", "CD", "DDDD", "B", "", "DDD"]).ljust(4)
            target = r.choice(["GRP", "RN1"])
            self.code.append(f"MOVE '{value.rstrip() or ' '}' TO {target}.")
            holds = [value == "A   ", "BB  " <= value <= "CC  " or value == "DDDD", value == "    "]
            name, held = r.choice(list(zip(["GRP-A", "GRP-B", "GRP-BLANK"], holds)))
            n = len(self.expected)
            self.code.append(f"IF {name} DISPLAY {n} ' T' ELSE DISPLAY {n} ' F'.")
            self.expected.append("T" if held else "F")

    def corresponding(self):
        r = self.r
        p, q, s = r.randint(-99, 99), r.randint(0, 99), r.randint(-99, 99)
        bp, bq, bs = r.randint(-999, 999), r.randint(-300, 300), r.randint(-999, 999)
        verb = r.choice(["ADD", "SUBTRACT", "MOVE"])
        sign = {"ADD": 1, "SUBTRACT": -1}.get(verb)
        rounded = verb != "MOVE" and r.random() < 0.4
        tenth = r.randint(0, 9)
        self.code.append(f"MOVE {p} TO P OF CA MOVE {q}.{tenth} TO R IN Q OF CA MOVE {s} TO S OF Q IN CA MOVE 5 TO U OF CA.")
        self.code.append(f"MOVE {bp} TO P OF CB MOVE {bq} TO R OF CB MOVE {bs} TO S OF Q OF CB MOVE 7 TO V OF CB MOVE 3 TO U OF CB.")
        word = r.choice(["CORR", "CORRESPONDING"])
        u = 3
        if verb == "MOVE":
            self.code.append(f"MOVE {word} CA TO CB.")
            p2, r2, s2, u = p * 10, q, s, 5
        else:
            self.code.append(f"{verb} {word} CA {'TO' if sign > 0 else 'FROM'} CB{' ROUNDED' * rounded}.")
            p2, s2 = (bp + sign * p) * 10, bs + sign * s
            tenths = bq * 10 + sign * (q * 10 + tenth)
            whole = (abs(tenths) + (5 if rounded else 0)) // 10
            r2 = whole if tenths >= 0 else -whole
        for name, value in (("P OF CB", p2), ("R IN CB", r2 * 10), ("S OF Q OF CB", s2 * 10)):
            self.code.append(f"MOVE {name} TO O1.")
            sign_text = "-" if value < 0 else ""
            self.show("O1", f"{sign_text}{abs(value) // 10}.{abs(value) % 10}".rjust(9))
        self.show("U OF CB V OF CB", f"{u}07")

    def program(self):
        while len(self.expected) < STATEMENTS:
            self.r.choice([self.set, self.search, self.search, self.loops, self.depending, self.depending, self.names, self.corresponding])()
        lines = ["IDENTIFICATION DIVISION.", "PROGRAM-ID. TABS.", "DATA DIVISION.", "WORKING-STORAGE SECTION.", *self.data(), "PROCEDURE DIVISION.", "MAIN-P."]
        lines += [line for line in self.code if line] + ["STOP RUN."]
        return "\n".join("       " + line for line in lines) + "\n"


def main():
    trial, first, count = Trial(sys.argv[1]), int(sys.argv[2]), int(sys.argv[3])
    for seed in range(first, first + count):
        model = Model(random.Random(seed))
        text = model.program()

        def about(at):
            return "\n".join(text[:text.index(f"DISPLAY {at} ' ")].split("\n")[-5:]) + "\n"

        wanted = [f"{number} {line}".rstrip() for number, line in enumerate(model.expected)]
        trial.compare(seed, trial.program(seed, text), wanted, about)
    trial.end(f"tables: {count} programs")


main()
