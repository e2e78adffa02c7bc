// LOAD as a compiler lays it out; see LOAD.cbl.
#include "records.h"

extern "C" ZVK_EXPORT int LOAD();

namespace {

struct AccountLine {
    char text[80];
};
File<AccountLine> accounts({.name = "ACCOUNTS", .assignment = "ACCOUNTS", .organization = ZVK_FILE_LINE_SEQUENTIAL});
File<MasterRecord> master(masterFile(kSequential));
Program program("LOAD", reinterpret_cast<ZvkRoutine>(LOAD), accounts, master);

External<LedgerTotals> totals("LEDGER-TOTALS");

// The fields as text, and redefined as the numbers that they are.
Text<6> numberText;
LeadingSign<13> openingText; // S9(11)V99
Unsigned<11> limitText;      // 9(9)V99
Unsigned<5> rateText;        // 9V9(4)

void notLoaded() { display("ACCOUNT NOT LOADED: ", Shown(accounts.record.text, sizeof accounts.record.text)); }

bool openingIsNumeric()
{
    return (openingText.bytes[0] == '+' || openingText.bytes[0] == '-') &&
           isNumeric(openingText.bytes + 1, openingText.kDigits);
}

void loadAccount()
{
    MasterRecord &account = master.record;
    moveSpaces(numberText, account.name, account.status, openingText, limitText, rateText);
    unstring(accounts.record.text, sizeof accounts.record.text, "\t", numberText, account.name, account.status,
             openingText, limitText, rateText);
    if (!isNumeric(numberText.bytes, 6) || !openingIsNumeric() || !isNumeric(limitText.bytes, 11) ||
        !isNumeric(rateText.bytes, 5))
        return notLoaded();
    memcpy(account.number.bytes, numberText.bytes, 6);
    move(account.opening, openingText);
    move(account.balance, openingText);
    move(account.limit, limitText);
    move(account.rate, rateText);
    account.posted = 0;
    memset(account.lastDate.bytes, '0', sizeof account.lastDate.bytes);
    master.write();
    if (master.is("21") || master.is("22")) return notLoaded();
    master.need();
    add(totals->accounts, packed<1>(1));
}

int procedureDivision()
{
    totals.find();
    accounts.open(ZVK_OPEN_INPUT);
    accounts.need();
    master.open(ZVK_OPEN_OUTPUT);
    master.need();
    bool restOfLine = false;
    while (accounts.read()) {
        const bool tooLong = accounts.is("06");
        if (!restOfLine && tooLong)
            notLoaded();
        else if (!restOfLine)
            loadAccount();
        // What follows the first part of an over-long line is skipped.
        restOfLine = tooLong;
    }
    accounts.need();
    accounts.close();
    master.close();
    master.need();
    return 0;
}

} // namespace

int LOAD() { return program.run(procedureDivision); }
