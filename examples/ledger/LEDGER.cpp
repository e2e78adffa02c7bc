// LEDGER as a compiler lays it out; see LEDGER.cbl.
#include "records.h"

namespace {

int ledger();
Program<0> program("LEDGER", reinterpret_cast<ZvkRoutine>(ledger));
External<LedgerTotals> totals("LEDGER-TOTALS");

constexpr Picture kTook("ZZZ,ZZ9.99", ZVK_EDIT_UNSIGNED, 8);

// ACCEPT TIME-NOW FROM TIME, as seconds with two decimal places.
Packed<8> timeNow()
{
    struct {
        Unsigned<2> hours, minutes;
        Unsigned<4> hundredths;
    } now;
    _zvkcAccept(ZVK_ACCEPT_TIME, sizeof now, reinterpret_cast<uint8_t *>(&now));
    Packed<2> hours, minutes;
    Packed<4> hundredths;
    move(hours, now.hours);
    move(minutes, now.minutes);
    move(hundredths, now.hundredths);
    Packed<8> result;
    move(result, sum(sum(product(hours, packed<6>(360000)), product(minutes, packed<4>(6000))), hundredths));
    return result;
}

void runStep(const char *stepName)
{
    Packed<8> began = timeNow();
    call(program.pcb, stepName);
    Packed<8> took;
    move(took, difference(timeNow(), began));
    if (less(took, packed<1>(0))) add(took, packed<8>(8640000)); // past midnight
    Text<10> name, shown;
    move(name, stepName);
    edit(kTook, took, shown.bytes);
    display("STEP ", name, "         ", shown, " SECONDS");
}

// INITIALIZE LEDGER-TOTALS
void clearTotals()
{
    LedgerTotals &all = *totals.item;
    all.accounts = 0;
    all.statements = 0;
    all.read = 0;
    all.posted = 0;
    all.rejected = 0;
    for (auto &count : all.reason) count = 0;
    all.deposits = 0;
    all.withdrawals = 0;
    all.fees = 0;
    all.interest = 0;
}

int procedureDivision()
{
    totals.find();
    clearTotals();
    runStep("LOAD");
    runStep("POST");
    runStep("STATEMENT");
    runStep("TOTALS");
    // A STOP RUN with 0 would come back as 255; the end of the main program ends the run unit as
    // well.
    if (!isZero(totals->rejected)) _zvkRunUnitTerm(4);
    return 0;
}

int ledger() { return program.run(procedureDivision); }

} // namespace

int main() { return ledger(); }
