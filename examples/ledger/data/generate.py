#!/usr/bin/env python3
"""Makes the ledger's input: accounts and transactions with the dirt of real files.

    generate.py DIRECTORY [--accounts 5000] [--transactions 200000] [--seed 1959]

The same arguments give the same bytes everywhere: the random numbers are made here. About one line in ten is not as it should be: blanks and
letters in numeric fields, dates that do not exist, unknown and closed accounts, references that were used before, over-long, short and empty lines,
lines that end in CR LF, text in two encodings, signs overpunched in the native and in the letter form, and a last line without its newline.
"""
import argparse
import calendar
import os


class Random:
    """xorshift64*: small, good enough, and the same everywhere."""

    def __init__(self, seed):
        self.state = (seed * 0x9E3779B97F4A7C15 + 1) & 0xFFFFFFFFFFFFFFFF

    def below(self, limit):
        x = self.state
        x ^= x >> 12
        x = (x ^ x << 25) & 0xFFFFFFFFFFFFFFFF
        x ^= x >> 27
        self.state = x
        return (x * 0x2545F4914F6CDD1D & 0xFFFFFFFFFFFFFFFF) * limit >> 64

    def chance(self, per_mille):
        return self.below(1000) < per_mille

    def choose(self, values):
        return values[self.below(len(values))]


FIRST = "Ada Grace Jean Frances Betty Mary Katherine Dorothy Annie Evelyn Joan Hedy Radia Barbara Shafi Lynn Karen Adele Edith Margaret".split()
LAST = "Ames Baker Cole Dunn Ellis Frost Grant Hayes Irwin Jones Keane Lowe Marsh Nolan Olsen Price Quinn Reed Shaw Todd Usher Vance West Young".split()
TEXTS = [b"SALARY", b"RENT", b"GROCERIES", b"CARD PAYMENT", b"TRANSFER", b"CASH MACHINE", b"INSURANCE", "CAFÉ".encode("latin-1"), "CAFÉ".encode(),
         b"REFUND", b"CHEQUE 100234", b"STANDING ORDER", b""]


def overpunched(amount, form):
    """Nine digits with the sign on the last: native ("p" is -0) or letter form ("}" is -0, "{" is +0)."""
    digits = b"%09d" % abs(amount)
    last = digits[-1] - 48
    if form == "letters":
        sign = b"}JKLMNOPQR"[last] if amount < 0 else b"{ABCDEFGHI"[last]
    else:
        sign = (0x70 if amount < 0 else 0x30) + last
    return digits[:-1] + bytes([sign])


def damaged(random, field):
    """The field with one byte that does not belong there, or blank."""
    if random.chance(300):
        return b" " * len(field)
    at = random.below(len(field) - 1)
    return field[:at] + random.choose([b" ", b"X", b"-", b".", b"O"]) + field[at + 1:]


BAD_DATES = [b"20250230", b"20251301", b"20250431", b"20230229", b"21000229", b"00000000", b"        ", b"2025-1-1", b"19991231", b"21000101", b"20250100",
             b"311225  "]


def good_date(random):
    year, month = 2024 + random.below(2), 1 + random.below(12)
    return b"%04d%02d%02d" % (year, month, 1 + random.below(calendar.monthrange(year, month)[1]))


def make_accounts(random, count):
    """The lines, and the numbers of the accounts."""
    lines, numbers, number = [], [], 100000
    for _ in range(count):
        number += 1 + random.below(9)
        opening = random.below(2_000_000) - 200_000
        limit = random.choose([0, 0, 50_000, 100_000, 500_000])
        name = f"{random.choose(LAST)}, {random.choose(FIRST)} {chr(65 + random.below(26))}."
        status = "C" if random.chance(15) else "A"
        lines.append(b"%06d\t%s\t%s\t%s%013d\t%011d\t%05d\n" % (number, name.encode(), status.encode(), b"-" if opening < 0 else b"+", abs(opening),
                                                                    limit, random.choose([0, 25, 150, 325, 1250])))
        numbers.append(number)
    return lines, numbers


def make_transactions(random, count, numbers):
    used = []
    for sequence in range(count):
        number = random.choose(numbers)
        kind = random.choose(b"DDDDWWWWWFI")
        amount = {68: 50_000, 87: 40_000, 70: 1_500}.get(kind, 0)
        amount = 1 + random.below(92) if kind == 73 else 1 + random.below(amount)
        if kind != 73 and random.chance(20):
            amount *= 200  # the large ones, which meet the limits
        if kind != 73 and random.chance(30):
            amount = -amount
        account, date, reference = b"%06d" % number, good_date(random), b"R%07d" % sequence
        type_, money = bytes([kind]), overpunched(amount, "letters" if random.chance(40) else "native")
        text = random.choose(TEXTS)

        dirt = random.below(1000)
        if dirt < 6:
            account = damaged(random, account)
        elif dirt < 14:
            number = 100000 + random.below(30_000 + 5 * len(numbers))
            account = b"%06d" % number
        elif dirt < 24:
            date = random.choose(BAD_DATES)
        elif dirt < 30:
            type_ = random.choose([b"X", b"d", b" ", b"0"])
        elif dirt < 40:
            money = damaged(random, money)
        elif dirt < 43:
            money = money[:-1] + random.choose([b" ", b"Z", b"+", b"-", b"z", b"\xc5"])
        elif dirt < 47:
            reference = b" " * 8
        elif dirt < 55 and used:
            reference = random.choose(used)
        elif dirt < 59 and kind == 73:
            money = overpunched(random.choose([0, 367, 999, -30]), "native")
        used.append(reference)

        line = account + date + type_ + money + reference.ljust(8) + text
        if dirt >= 990:
            line = line.ljust(60) + b"CONTINUED" * (1 + random.below(12))
        elif dirt >= 987:
            line = line[:random.below(len(line))]
        elif dirt >= 985:
            line = line.ljust(60)  # exactly as long as the record
        if random.chance(5):
            line += b"\r"
        yield line + (b"\n" if sequence + 1 < count else b"")


def main():
    parser = argparse.ArgumentParser(description=__doc__.splitlines()[0])
    parser.add_argument("directory")
    parser.add_argument("--accounts", type=int, default=5000)
    parser.add_argument("--transactions", type=int, default=200000)
    parser.add_argument("--seed", type=int, default=1959)
    arguments = parser.parse_args()
    random = Random(arguments.seed)
    os.makedirs(arguments.directory, exist_ok=True)
    lines, numbers = make_accounts(random, arguments.accounts)
    with open(os.path.join(arguments.directory, "accounts.txt"), "wb") as file:
        file.writelines(lines)
    with open(os.path.join(arguments.directory, "transactions.txt"), "wb") as file:
        file.writelines(make_transactions(random, arguments.transactions, numbers))


if __name__ == "__main__":
    main()
