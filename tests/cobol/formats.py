#!/usr/bin/env python3
"""Random sentences of the general formats, each with its optional words here and there: kvrcob takes them all.

formats.py KVRCOB FORMATS [COUNT] [SEED] [compile]. FORMATS has the grammar (formats.txt says how it is written). Of each
statement COUNT sentences go into one program, a paragraph for each, which is checked; with "compile" the C compiler sees it, too.
It is there to catch an optional word, an alternative or a kind of operand that a statement's parser does not have.
"""
import pathlib
import random
import re
import subprocess
import sys
import tempfile

TOKEN = re.compile(r'\s*(<[a-zA-Z][\w-]*>\*?|[\[{|]|[\]}]\*?|"(?:[^"]|"")*"|\'[^\']*\'|[^\s\[\]{}|"\']+(?:"[^"]*")?)')


class Grammar:
    def __init__(self, rules):
        self.rules = {}
        for name, text in rules.items():
            self.tokens, self.at = TOKEN.findall(text), 0
            self.rules[name] = self.alternatives()
            assert self.at == len(self.tokens), (name, self.tokens[self.at:])

    def alternatives(self):
        found = [self.sequence()]
        while self.at < len(self.tokens) and self.tokens[self.at] == "|":
            self.at += 1
            found.append(self.sequence())
        return found

    def sequence(self):
        parts = []
        while self.at < len(self.tokens) and self.tokens[self.at][0] not in "|]}":
            token = self.tokens[self.at]
            self.at += 1
            if token in ("[", "{"):
                inner = self.alternatives()
                repeated = self.tokens[self.at].endswith("*")
                self.at += 1
                parts.append(("group", inner, token == "[", repeated))
            elif token[0] == "<" and len(token) > 2 and token.rstrip("*")[-1] == ">":
                parts.append(("rule", token.strip("<>*"), False, token.endswith("*")))
            else:
                parts.append(("word", token, False, False))
        return parts

    def words(self, alternatives, chance, depth=0):
        # Far down the first alternative is the one that ends.
        for kind, what, optional, repeated in alternatives[0] if depth > 40 else chance.choice(alternatives):
            if optional and chance.random() < 0.5:
                continue
            for turn in range(chance.choice((1, 1, 2, 3)) if repeated else 1):
                if turn and chance.random() < 0.2:
                    yield chance.choice(",;")
                if kind == "word":
                    yield what
                else:
                    yield from self.words(self.rules[what] if kind == "rule" else what, chance, depth + 1)


def sentence(words):
    lines, line = [], " " * 11
    for word in words:
        if word in (",", ";"):
            line = line.rstrip() + word
            continue
        if len(line) + 1 + len(word) > 70:
            lines.append(line)
            line = " " * 14
        line += (" " if line.strip() else "") + word
    return [*lines, line + "."]


def read_formats(path):
    parts, rules, name = {"program": [], "parts": {}, "statements": {}}, None, None
    for line in path.read_text().splitlines():
        if re.fullmatch(r"\[(program|parts|statements)\]", line):
            rules = parts[line[1:-1]]
        elif isinstance(rules, list):
            rules.append(line)
        elif rules is not None and line.startswith(" "):
            rules[name] += line
        elif rules is not None and line:
            name = line.rstrip(":")
            rules[name] = ""
    while not parts["program"][-1]:
        parts["program"].pop()
    return parts


def main():
    compiler, formats = sys.argv[1], read_formats(pathlib.Path(sys.argv[2]))
    count, seed = (int(sys.argv[3]) if len(sys.argv) > 3 else 100), (sys.argv[4] if len(sys.argv) > 4 else "1")
    grammar = Grammar(formats["parts"] | formats["statements"])
    failed = 0
    with tempfile.TemporaryDirectory() as work:
        for statement in formats["statements"]:
            chance = random.Random(statement + seed)
            text = list(formats["program"])
            for i in range(count):
                text += [f"       W{i}.", *sentence(grammar.words(grammar.rules[statement], chance))]
            source = pathlib.Path(work) / f"{statement}.cbl"
            source.write_text("\n".join(text) + "\n")
            how = ["-c", "-O0", "-o", f"{work}/walk.o"] if sys.argv[5:] == ["compile"] else ["check"]
            done = subprocess.run([compiler, *how, "-w", str(source)], capture_output=True, text=True, timeout=300)
            if done.returncode or done.stderr:
                failed += 1
                print(f"{statement}:\n" + "\n".join(done.stderr.splitlines()[:20]))
    print(f"{len(formats['statements'])} statements, {failed} failed")
    sys.exit(failed != 0)


main()
