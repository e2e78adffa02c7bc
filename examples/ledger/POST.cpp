// POST as a compiler lays it out; see POST.cbl.
#include "records.h"

extern "C" ZVK_EXPORT int POST();

namespace {

struct Transaction {
    Unsigned<6> account;
    Unsigned<8> date;
    Text<1> type;
    Zoned<9> amount; // S9(7)V99, or S9(9) days
    Text<8> reference;
    Text<28> text;
};
static_assert(sizeof(Transaction) == 60);
struct RejectRecord {
    Unsigned<2> code;
    char gap1[1];
    Text<20> reason;
    char gap2[1];
    Transaction line;
};

File<Transaction>
    transactions({.name = "TRANSACTIONS", .assignment = "TRANSACTIONS", .organization = ZVK_FILE_LINE_SEQUENTIAL});
File<MasterRecord> master(masterFile(kDynamic));
File<PostedRecord> posted(postedFile(kDynamic));
File<RejectRecord> rejects({.name = "REJECTS", .assignment = "REJECTS", .organization = ZVK_FILE_LINE_SEQUENTIAL});
Program program("POST", reinterpret_cast<ZvkRoutine>(POST), transactions, master, posted, rejects);

External<LedgerTotals> totals("LEDGER-TOTALS");
Packed<1> one;
Packed<3> days;
Packed<9> amount; // TX-AMOUNT or TX-DAYS
Packed<13> value;
Packed<14> balance;

constexpr int kMonthLengths[12] = {31, 28, 31, 30, 31, 30, 31, 31, 30, 31, 30, 31};

void openFiles()
{
    transactions.open(ZVK_OPEN_INPUT);
    transactions.need();
    master.open(ZVK_OPEN_IO);
    master.need();
    // Made anew, then opened for reading by key as well.
    posted.open(ZVK_OPEN_OUTPUT);
    posted.close();
    posted.open(ZVK_OPEN_IO);
    posted.need();
    rejects.open(ZVK_OPEN_OUTPUT);
    rejects.need();
}

// The value of digits that the class test has let pass, as the compiler's own binary arithmetic
// takes it.
int number(const uint8_t *digits, int count)
{
    int result = 0;
    for (int i = 0; i < count; i++) result = result * 10 + (digits[i] - '0');
    return result;
}

bool dateIsValid()
{
    const uint8_t *date = transactions.record.date.bytes;
    if (!isNumeric(date, 8)) return false;
    int year = number(date, 4), month = number(date + 4, 2), day = number(date + 6, 2);
    if (year < 2000 || year > 2099 || month < 1 || month > 12 || day < 1) return false;
    bool leapYear = isZero(remainder(packed<5>(year), packed<1>(4)));
    return day <= kMonthLengths[month - 1] + (month == 2 && leapYear);
}

bool typeIsKnown() { return strchr("DWFI", transactions.record.type.bytes[0]) && transactions.record.type.bytes[0]; }

// IF TX-AMOUNT IS NUMERIC: digits, and a last one with or without a sign, in the native form or as
// a letter.
bool amountIsNumeric()
{
    const uint8_t *digits = transactions.record.amount.bytes;
    uint8_t last = digits[8];
    bool native = (last >= '0' && last <= '9') || (last >= 'p' && last <= 'y');
    return isNumeric(digits, 8) && (native || (last >= 'A' && last <= 'R') || last == '{' || last == '}');
}

int checkAccount()
{
    move(master.record.number, transactions.record.account);
    master.readKey();
    if (master.is("23")) return 7;
    master.need();
    return equal(master.record.status, "A") ? 0 : 8;
}

int checkReference()
{
    move(posted.record.reference, transactions.record.reference);
    posted.readKey();
    if (posted.is("23")) return 0;
    posted.need();
    return 9;
}

int computeValue()
{
    const Transaction &line = transactions.record;
    days = 0;
    // A sign that is a letter becomes a native one first.
    Zoned<9> native;
    _zvkcBCD_CONV_ZndTO_To_ZndTO(line.amount.bytes, native.bytes, 9, 9);
    move(amount, native);
    switch (line.type.bytes[0]) {
    case 'I':
        if (less(amount, one) || less(packed<3>(366), amount)) return 10;
        move(days, amount);
        call(program.pcb, "INTEREST", &master.record.balance, &master.record.rate, &days, &value);
        break;
    case 'D':
        move(value, amount);
        break;
    default:
        move(value, amount);
        negate(value);
    }
    return 0;
}

int checkLimit()
{
    balance = sum(master.record.balance, value);
    Packed<11> lowest = master.record.limit;
    negate(lowest);
    return less(balance, lowest) && less(value, packed<1>(0)) ? 11 : 0;
}

// The first check that fails gives its number.
int checkLine()
{
    const Transaction &line = transactions.record;
    if (transactions.is("06")) return 1;
    if (!isNumeric(line.account.bytes, 6)) return 2;
    if (!dateIsValid()) return 3;
    if (!typeIsKnown()) return 4;
    if (!amountIsNumeric()) return 5;
    if (equal(line.reference, " ")) return 6;
    int reason = checkAccount();
    if (reason == 0) reason = checkReference();
    if (reason == 0) reason = computeValue();
    if (reason == 0) reason = checkLimit();
    return reason;
}

void postLine()
{
    const Transaction &line = transactions.record;
    MasterRecord &account = master.record;
    add(totals->posted, one);
    add(account.posted, one);
    move(account.balance, balance);
    if (memcmp(line.date.bytes, account.lastDate.bytes, 8) > 0) move(account.lastDate, line.date);
    switch (line.type.bytes[0]) {
    case 'D':
        add(totals->deposits, value);
        break;
    case 'W':
        add(totals->withdrawals, value);
        break;
    case 'F':
        add(totals->fees, value);
        break;
    default:
        add(totals->interest, value);
    }
    master.rewrite();
    master.need();
    PostedRecord &posting = posted.record;
    move(posting.reference, line.reference);
    move(posting.account, line.account);
    move(posting.date, line.date);
    move(posting.sequence, totals->posted);
    move(posting.type, line.type);
    move(posting.amount, value);
    move(posting.days, days);
    posted.write();
    posted.need();
}

void rejectLine(int reason)
{
    add(totals->rejected, one);
    add(totals->reason[reason - 1], one);
    RejectRecord &reject = rejects.record;
    memset(&reject, ' ', sizeof reject);
    move(reject.code, packed<3>(reason));
    move(reject.reason, kReasonTexts[reason - 1]);
    reject.line = transactions.record;
    rejects.write();
    rejects.need();
}

int procedureDivision()
{
    totals.find();
    one = 1;
    openFiles();
    bool restOfLine = false;
    while (transactions.read()) {
        if (!restOfLine) {
            add(totals->read, one);
            if (int reason = checkLine())
                rejectLine(reason);
            else
                postLine();
        }
        // What follows the first part of an over-long line is skipped.
        restOfLine = transactions.is("06");
    }
    transactions.need();
    transactions.close();
    master.close();
    master.need();
    posted.close();
    posted.need();
    rejects.close();
    rejects.need();
    return 0;
}

} // namespace

int POST() { return program.run(procedureDivision); }
