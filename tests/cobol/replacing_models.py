#!/usr/bin/env python3
"""Random COPY REPLACING and REPLACE, held against a model of the rules.

replacing_models.py KVRCOB FIRST COUNT. Each number makes a source and two copybooks, one of which copies the other;
what `kvrcob -E` gives must be the model's text, whatever the blanks between its words.
"""
import pathlib
import random
import re
import sys
import tempfile

from trial import Trial

WORDS = ["ALPHA", "BETA", "GAMMA", "DELTA-1", "AL-TAG", "TAG", "TAG-END", "MOVE", "TO", "5", "42"]
LITERALS = ['"ALPHA"', '"A  B"', '"TAG"']


class Word:
    """A text word, and whether it follows the one before without a blank."""

    def __init__(self, text, glued=False):
        self.text, self.glued = text, glued


def some_text(numbers, count):
    """Words with names in colons and in parentheses among them."""
    out = []
    while len(out) < count:
        kind = numbers.random()
        if kind < 0.12:
            before = [Word(numbers.choice(["X", "WS-"]))] if numbers.random() < 0.4 else []
            after = [Word(numbers.choice(["-NAME", "Y"]), True)] if numbers.random() < 0.6 else []
            out += before + [Word(":", bool(before)), Word("TAG", True), Word(":", True)] + after
        elif kind < 0.24:
            out += [Word("(", numbers.random() < 0.5 and bool(out)), Word(numbers.choice(WORDS), True), Word(")", True)]
        elif kind < 0.32:
            out.append(Word(numbers.choice(LITERALS)))
        elif kind < 0.42:
            out += [Word(numbers.choice(WORDS)), Word(".", True)]
        else:
            out.append(Word(numbers.choice(WORDS)))
    return out


def plain_word(numbers):
    return numbers.choice(WORDS + LITERALS)


class Replacing:
    """One phrase: words to find, or a part of a word, and the words to put."""

    def __init__(self, numbers, pseudo):
        self.part = None
        if numbers.random() < 0.2:
            self.part, self.find = numbers.choice(["LEADING", "TRAILING"]), [numbers.choice(["AL", "TAG", "TAG-", "-END", "A", "-1"])]
            if self.part == "LEADING" and self.find[0][0] == "-":
                self.part = "TRAILING"
            self.put = [numbers.choice(["QQ", "R-S"])] if numbers.random() < 0.8 else []
            sides = [f"=={' '.join(side)}==" for side in (self.find, self.put)]
            self.phrase = f"{self.part} {sides[0]} BY {sides[1]}"
            return
        if pseudo or numbers.random() < 0.6:
            kind = numbers.random()
            if kind < 0.3:
                self.find = [":", "TAG", ":"]
            elif kind < 0.4:
                self.find = ["(", "TAG", ")"]
            else:
                self.find = [plain_word(numbers) for _ in range(numbers.choice([1, 1, 2, 3]))]
            self.put = [plain_word(numbers) for _ in range(numbers.choice([0, 1, 1, 2, 4]))]
            glue = "" if self.find[0] in ":(" and numbers.random() < 0.7 else " "
            self.phrase = f"=={glue.join(self.find)}== BY =={' '.join(self.put)}=="
        else:
            self.find, self.put = [plain_word(numbers)], [plain_word(numbers)]
            self.phrase = f"{self.find[0]} BY {self.put[0]}"

    def at(self, words, place):
        """What stands at this place after the replacement and how many words it takes, or None."""
        if self.part:
            text, find = words[place].text, self.find[0]
            if text[0] == '"' or not re.fullmatch(r"[A-Z0-9-]+", text):
                return None
            if self.part == "LEADING" and text.startswith(find):
                rest = "".join(self.put) + text[len(find):]
            elif self.part == "TRAILING" and text.endswith(find):
                rest = text[: len(text) - len(find)] + "".join(self.put)
            else:
                return None
            return ([Word(rest, words[place].glued)] if rest else []), 1
        if [word.text for word in words[place : place + len(self.find)]] != self.find:
            return None
        put = [Word(text, words[place].glued and n == 0) for n, text in enumerate(self.put)]
        return put, len(self.find)


def replaced(words, phrases):
    out, place = [], 0
    while place < len(words):
        for phrase in phrases:
            found = phrase.at(words, place)
            if found:
                out += found[0]
                place += found[1]
                # What follows the replaced words without a blank also follows what is in their place.
                if place < len(words) and words[place].glued and not found[0]:
                    words[place] = Word(words[place].text, bool(out))
                break
        else:
            out.append(words[place])
            place += 1
    return out


def joined(words):
    """What is one word when it is read again."""
    out = []
    for word in words:
        if out and word.glued and all(re.fullmatch(r"[A-Z0-9-]+", text) for text in (out[-1].text, word.text)):
            out[-1] = Word(out[-1].text + word.text, out[-1].glued)
        else:
            out.append(word)
    return out


def lines(numbers, words):
    """Free-form text of these words, with line breaks, commas and comments between some of them."""
    text = ""
    for word in words:
        if not word.glued and text:
            text += numbers.choice([" "] * 8 + ["  ", "\n", "\n  ", " *> ALPHA BETA\n", "\n\n"])
        text += word.text
    return text + "\n"


def shown(words):
    return "".join(("" if word.glued else " ") + word.text for word in words)


def canonical(text):
    """The same for texts that differ in blanks only."""
    parts = re.split(r'("[^"]*")', text)
    parts = [part if part[:1] == '"' else re.sub(r"\s*([().])\s*", r" \1 ", part) for part in parts]
    return re.sub(r'\s+(?=(?:[^"]*"[^"]*")*[^"]*$)', " ", "".join(f" {p} " if p[:1] == '"' else p for p in parts)).strip()


class Model:
    def __init__(self, numbers):
        inner = some_text(numbers, numbers.randint(5, 30))
        first, last = some_text(numbers, numbers.randint(0, 20)), some_text(numbers, numbers.randint(5, 20))
        self.files = {"inner.cpy": lines(numbers, inner), "outer.cpy": lines(numbers, first) + "COPY INNER.\n" + lines(numbers, last)}
        self.source, self.words, phrases, pending = "", [], None, []

        def flush():
            self.words += replaced(joined(pending), phrases) if phrases else pending
            pending.clear()

        for _ in range(numbers.randint(2, 6)):
            kind = numbers.random()
            if kind < 0.45:
                own = [Replacing(numbers, False) for _ in range(numbers.randint(0, 3))]
                book = "INNER" if own and numbers.random() < 0.7 else numbers.choice(["INNER", "OUTER"])
                if book == "OUTER":
                    own = []  # REPLACING reaches into no COPY within the book that it names: not tried
                words = inner if book == "INNER" else first + inner + last
                self.source += f"COPY {book}" + (" REPLACING " + "\n ".join(r.phrase for r in own) if own else "") + ".\n"
                words = [Word(word.text, word.glued) for word in words]
                pending += replaced(words, own) if own else words
            elif kind < 0.65:
                flush()
                phrases = [Replacing(numbers, True) for _ in range(numbers.randint(1, 4))]
                self.source += "REPLACE " + "\n ".join(r.phrase for r in phrases) + ".\n"
            elif kind < 0.75:
                flush()
                phrases = None
                self.source += "REPLACE OFF.\n"
            else:
                more = some_text(numbers, numbers.randint(3, 20))
                self.source += lines(numbers, more)
                pending += more
        flush()


def main():
    trial, first, count = Trial(sys.argv[1]), int(sys.argv[2]), int(sys.argv[3])
    for seed in range(first, first + count):
        model = Model(random.Random(seed))
        with tempfile.TemporaryDirectory() as work:
            for name, text in {**model.files, "main.cbl": model.source}.items():
                (pathlib.Path(work) / name).write_text(text)
            got = trial.run(work, [trial.compiler, "-free", "-E", "main.cbl"])
        trial.compare(seed, canonical("\n".join(got)).split(" "), canonical(shown(model.words)).split(" "))
    trial.end(f"replacing: {count} sources")


main()
