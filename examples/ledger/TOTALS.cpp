// TOTALS as a compiler lays it out; see TOTALS.cbl.
#include "records.h"

extern "C" ZVK_EXPORT int TOTALS();

namespace {

struct BalanceRecord {
    Unsigned<6> number;
    char gap1[1];
    char balance[15];
    char gap2[1];
    Unsigned<7> posted;
};
File<MasterRecord> master(masterFile(kSequential));
File<BalanceRecord> balances({.name = "BALANCES", .assignment = "BALANCES", .organization = ZVK_FILE_LINE_SEQUENTIAL});
Program program("TOTALS", reinterpret_cast<ZvkRoutine>(TOTALS), master, balances);

External<LedgerTotals> totals("LEDGER-TOTALS");
Packed<15> opening, closing; // S9(13)V99

constexpr Picture kBalance("-99999999999.99", ZVK_EDIT_MINUS, 13);
constexpr Picture kCount("ZZZ,ZZZ,ZZ9", ZVK_EDIT_UNSIGNED, 9);
constexpr Picture kMoney("$$,$$$,$$$,$$$,$$9.99CR", ZVK_EDIT_FLOAT_CURRENCY_PLUS, 15);

void oneAccount()
{
    const MasterRecord &account = master.record;
    add(opening, account.opening);
    add(closing, account.balance);
    BalanceRecord &line = balances.record;
    memset(&line, ' ', sizeof line);
    move(line.number, account.number);
    edit(kBalance, account.balance, line.balance);
    move(line.posted, account.posted);
    balances.write();
    balances.need();
}

void showCount(const char *label, const Packed<9> &count)
{
    Text<24> text;
    Text<11> shown;
    move(text, label);
    edit(kCount, count, shown.bytes);
    display(text, shown);
}

void showMoney(const char *label, const Packed<15> &amount)
{
    Text<24> text;
    Text<23> shown;
    move(text, label);
    edit(kMoney, amount, shown.bytes);
    display(text, shown);
}

void showReason(int reason)
{
    if (isZero(totals->reason[reason - 1])) return;
    struct {
        Text<9> text;
        Unsigned<2> code;
        char gap[1];
        Text<20> reason;
    } label;
    memset(&label, ' ', sizeof label);
    move(label.text, "REJECTED ");
    move(label.code, packed<3>(reason));
    move(label.reason, kReasonTexts[reason - 1]);
    Text<11> shown;
    edit(kCount, totals->reason[reason - 1], shown.bytes);
    display(Shown(&label, sizeof label), shown);
}

void showTotals()
{
    showCount("ACCOUNTS LOADED", totals->accounts);
    showCount("STATEMENTS PRINTED", totals->statements);
    showCount("LINES READ", totals->read);
    showCount("POSTED", totals->posted);
    showCount("REJECTED", totals->rejected);
    for (int reason = 1; reason <= kReasons; reason++) showReason(reason);
    showMoney("DEPOSITS", totals->deposits);
    showMoney("WITHDRAWALS", totals->withdrawals);
    showMoney("FEES", totals->fees);
    showMoney("INTEREST", totals->interest);
    showMoney("OPENING BALANCES", opening);
    showMoney("CLOSING BALANCES", closing);
    auto expected = sum(sum(sum(sum(opening, totals->deposits), totals->withdrawals), totals->fees), totals->interest);
    if (equal(expected, closing)) return display("TOTALS AGREE");
    display("TOTALS DISAGREE");
    _zvkRunUnitTerm(12);
}

int procedureDivision()
{
    totals.find();
    opening = 0;
    closing = 0;
    master.open(ZVK_OPEN_INPUT);
    master.need();
    balances.open(ZVK_OPEN_OUTPUT);
    balances.need();
    while (master.read()) oneAccount();
    master.need();
    master.close();
    balances.close();
    balances.need();
    showTotals();
    return 0;
}

} // namespace

int TOTALS() { return program.run(procedureDivision); }
