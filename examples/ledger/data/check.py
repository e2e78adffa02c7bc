#!/usr/bin/env python3
"""Computes the ledger's balances, totals and rejects from its input, and compares them with what the programs made.

    check.py --accounts F --transactions F --balances F --rejects F --statements F --totals F

Shares nothing with the programs but ../README.md. Money is whole cents here. Prints what it compared; ends with 1 at the first kind of
difference, after showing some of it.
"""
import argparse
import datetime
import re
import sys

REASONS = {1: "LINE TOO LONG", 2: "ACCOUNT NOT NUMERIC", 3: "DATE NOT VALID", 4: "TYPE NOT KNOWN", 5: "AMOUNT NOT NUMERIC", 6: "REFERENCE MISSING",
           7: "ACCOUNT NOT KNOWN", 8: "ACCOUNT CLOSED", 9: "DUPLICATE REFERENCE", 10: "DAYS NOT VALID", 11: "LIMIT EXCEEDED"}
SIGNS = {ord(c): (i % 10, sign) for chars, sign in (("0123456789", 1), ("pqrstuvwxy", -1), ("{ABCDEFGHI", 1), ("}JKLMNOPQR", -1)) for i, c in enumerate(chars)}
RECORD = 60


class Rejected(Exception):
    pass


class Account:
    def __init__(self, fields):
        self.number = int(fields[0])
        self.open = fields[2] == b"A"
        self.opening = self.balance = int(fields[3])
        self.limit = int(fields[4])
        self.rate = int(fields[5])  # in ten-thousandths
        self.posted = 0


def lines_of(path):
    with open(path, "rb") as file:
        lines = file.read().split(b"\n")
    if lines[-1] == b"":
        lines.pop()
    return [line[:-1] if line.endswith(b"\r") else line for line in lines]


def digits(field):
    return all(48 <= byte <= 57 for byte in field)


def is_date(field):
    try:
        return digits(field) and 2000 <= datetime.datetime.strptime(field.decode(), "%Y%m%d").year <= 2099
    except ValueError:
        return False


def rounded(numerator, denominator):
    """The quotient, rounded half away from zero."""
    quotient = (2 * abs(numerator) + denominator) // (2 * denominator)
    return -quotient if numerator < 0 else quotient


def check_line(line, accounts, references):
    """Returns account, type, reference and the cents to add, or raises Rejected with the reason's code."""
    if len(line) > RECORD:
        raise Rejected(1)
    record = line.ljust(RECORD)
    number, date, kind, amount, reference = record[0:6], record[6:14], record[14:15], record[15:24], record[24:32]
    if not digits(number):
        raise Rejected(2)
    if not is_date(date):
        raise Rejected(3)
    if kind not in (b"D", b"W", b"F", b"I"):
        raise Rejected(4)
    if not digits(amount[:8]) or amount[8] not in SIGNS:
        raise Rejected(5)
    last, sign = SIGNS[amount[8]]
    value = sign * (int(amount[:8]) * 10 + last)
    if reference == b" " * 8:
        raise Rejected(6)
    account = accounts.get(int(number))
    if account is None:
        raise Rejected(7)
    if not account.open:
        raise Rejected(8)
    if reference in references:
        raise Rejected(9)
    if kind == b"I":
        if not 1 <= value <= 366:
            raise Rejected(10)
        value = rounded(account.balance * account.rate * value, 365 * 10000)
    elif kind != b"D":
        value = -value
    if account.balance + value < -account.limit and value < 0:
        raise Rejected(11)
    return account, kind, reference, value


def money(text):
    """An edited amount in cents: currency signs and commas do not count, "-" and CR make it negative."""
    value = int(re.sub(r"[^0-9]", "", text) or "0")
    return -value if "-" in text or "CR" in text else value


def compare(what, ours, theirs):
    if ours == theirs:
        print(f"  {what}: {len(ours)} agree")
        return
    print(f"  {what}: DIFFERENT: {len(ours)} here, {len(theirs)} there")
    shown = 0
    pairs = [(key, ours.get(key), theirs.get(key)) for key in sorted(set(ours) | set(theirs))] if isinstance(ours, dict) else zip(range(max(len(ours), len(theirs))), ours, theirs)
    for key, here, there in pairs:
        if here != there and shown < 5:
            print(f"    {key}: {here!r} here, {there!r} there")
            shown += 1
    sys.exit(1)


def main():
    parser = argparse.ArgumentParser(description=__doc__.splitlines()[0])
    for name in ("accounts", "transactions", "balances", "rejects", "statements", "totals"):
        parser.add_argument("--" + name, required=True)
    files = parser.parse_args()

    accounts = {account.number: account for account in (Account(line.split(b"\t")) for line in lines_of(files.accounts))}
    references, rejects, sums, transactions = set(), [], {kind: 0 for kind in (b"D", b"W", b"F", b"I")}, lines_of(files.transactions)
    reasons = {}
    for line in transactions:
        try:
            account, kind, reference, value = check_line(line, accounts, references)
        except Rejected as rejected:
            code = rejected.args[0]
            reasons[code] = reasons.get(code, 0) + 1
            rejects.append((b"%02d %-20s " % (code, REASONS[code].encode()) + line[:RECORD]).rstrip(b" "))
            continue
        account.balance += value
        account.posted += 1
        references.add(reference)
        sums[kind] += value

    compare("rejects", rejects, lines_of(files.rejects))
    theirs = {}
    for line in lines_of(files.balances):
        number, balance, posted = re.fullmatch(r"(\d{6}) ([ -]\d{11}\.\d\d) (\d{7})", line.decode()).groups()
        theirs[int(number)] = (money(balance), int(posted))
    compare("balances and counts", {n: (a.balance, a.posted) for n, a in accounts.items()}, theirs)

    closing = {}
    for line in lines_of(files.statements):
        found = re.match(r"\s*ACCOUNT (\d{6}) CLOSING BALANCE(.*)", line.decode("latin-1"))
        if found:
            if int(found[1]) in closing:
                sys.exit(f"  statements: account {found[1]} is closed twice")
            closing[int(found[1])] = money(found[2])
    compare("statements' closing balances", {n: a.balance for n, a in accounts.items() if a.posted}, closing)

    expected = {"ACCOUNTS LOADED": len(accounts), "STATEMENTS PRINTED": len(closing), "LINES READ": len(transactions), "POSTED": len(references), "REJECTED": len(rejects), "DEPOSITS": sums[b"D"], "WITHDRAWALS": sums[b"W"],
                "FEES": sums[b"F"], "INTEREST": sums[b"I"], "OPENING BALANCES": sum(a.opening for a in accounts.values()),
                "CLOSING BALANCES": sum(a.balance for a in accounts.values())}
    expected.update({f"REJECTED {code:02d} {REASONS[code]}": count for code, count in reasons.items()})
    text = open(files.totals, encoding="latin-1").read().splitlines()
    labels = sorted(list(expected) + [f"REJECTED {code:02d} {reason}" for code, reason in REASONS.items()], key=len, reverse=True)
    displayed = {}
    for line in text:
        label = next((label for label in labels if line.startswith(label)), None)
        if label:
            displayed[label] = money(line[len(label):])
    compare("control totals", expected, displayed)
    if "TOTALS AGREE" not in (line.strip() for line in text):
        sys.exit("  the programs' own totals do not agree")
    print("balances agree to the cent")


if __name__ == "__main__":
    main()
