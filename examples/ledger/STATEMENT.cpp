// STATEMENT as a compiler lays it out; see STATEMENT.cbl.
#include "records.h"

extern "C" ZVK_EXPORT int STATEMENT();

namespace {

struct PrintLine {
    char text[100];
};
File<PostedRecord> posted(postedFile(kSequential));
File<MasterRecord> master(masterFile(kDynamic));
File<PrintLine> statements({.name = "STATEMENTS",
                            .assignment = "STATEMENTS",
                            .organization = ZVK_FILE_LINE_SEQUENTIAL,
                            .body = 54,
                            .footing = 50,
                            .top = 3,
                            .bottom = 3});
Program program("STATEMENT", reinterpret_cast<ZvkRoutine>(STATEMENT), posted, master, statements);
PostedRecord sortRecord;
External<LedgerTotals> totals("LEDGER-TOTALS");

Unsigned<6> lastAccount;
bool inAccount;
Packed<1> one;
Packed<5> pageNumber;
Packed<13> runningBalance;
Packed<7> statementsWrong;

constexpr Picture kMoney("$$$,$$$,$$$,$$9.99CR", ZVK_EDIT_FLOAT_CURRENCY_PLUS, 13);
constexpr Picture kPage("ZZZZ9", ZVK_EDIT_UNSIGNED, 5);
constexpr Picture kDays("ZZ9", ZVK_EDIT_UNSIGNED_BLANK, 3, true);
constexpr Picture kCount("Z,ZZZ,ZZ9", ZVK_EDIT_UNSIGNED, 7);
// PIC XXXX/XX/XX
constexpr struct {
    int16_t length;
    uint8_t repeat;
    char picture[11];
} __attribute__((packed)) kDate = {10, 0, "XXXX/XX/XX"};

struct PageLine {
    Text<80> title;
    Text<5> text;
    char page[5];
};
struct AccountLine {
    Text<8> text;
    Unsigned<6> account;
    char gap[2];
    Text<24> name;
    Text<39> openingText;
    char opening[20];
};
struct DetailLine {
    uint8_t date[10];
    char gap1[2];
    Text<12> type;
    Text<10> reference;
    char days[3];
    Text<6> daysText;
    char gap2[16];
    char amount[20], balance[20];
};
struct ClosingLine {
    Text<8> text;
    Unsigned<6> account;
    Text<65> closingText;
    char balance[20];
};

template <class Line>
void place(const Line &line)
{
    move(statements.record.text, sizeof statements.record.text, &line, sizeof line);
}

void printPageLine()
{
    PageLine line;
    add(pageNumber, one);
    move(line.title, "STATEMENTS OF ACCOUNT");
    move(line.text, "PAGE ");
    edit(kPage, pageNumber, line.page);
    place(line);
    if (equal(pageNumber, one))
        statements.write();
    else
        statements.writeAfter(ZVK_ADVANCE_PAGE);
    statements.need();
}

// WRITE ... AFTER ADVANCING lines AT END-OF-PAGE; 0: a WRITE without ADVANCING
template <class Line>
void print(const Line &line, int32_t advance = 0)
{
    place(line);
    if (advance)
        statements.writeAfter(advance);
    else
        statements.write();
    statements.need();
    if (statements.endOfPage()) printPageLine();
}

void givePostings()
{
    uint16_t status = 0;
    while (status == 0 && posted.read()) _zvkRelease(sizeof(PostedRecord), &posted.record, &status);
    if (status != 0) {
        display("SORT-FILE IS FULL");
        _zvkRunUnitTerm(12);
    }
    posted.need();
}

void beginAccount()
{
    inAccount = true;
    move(lastAccount, sortRecord.account);
    move(master.record.number, sortRecord.account);
    master.readKey();
    master.need();
    move(runningBalance, master.record.opening);
    AccountLine line;
    memset(&line, ' ', sizeof line);
    move(line.text, "ACCOUNT ");
    move(line.account, master.record.number);
    move(line.name, master.record.name);
    move(line.openingText, "                   OPENING BALANCE");
    edit(kMoney, master.record.opening, line.opening);
    print(line, 2);
}

void endOfAccount()
{
    if (!inAccount) return;
    ClosingLine line;
    move(line.text, "ACCOUNT ");
    move(line.account, lastAccount);
    move(line.closingText, " CLOSING BALANCE");
    edit(kMoney, runningBalance, line.balance);
    print(line);
    add(totals->statements, one);
    if (!equal(runningBalance, master.record.balance)) add(statementsWrong, one);
}

const char *typeText(char type)
{
    switch (type) {
    case 'D':
        return "DEPOSIT";
    case 'W':
        return "WITHDRAWAL";
    case 'F':
        return "FEE";
    default:
        return "INTEREST";
    }
}

void printPosting()
{
    if (!inAccount || memcmp(sortRecord.account.bytes, lastAccount.bytes, 6) != 0) {
        endOfAccount();
        beginAccount();
    }
    add(runningBalance, sortRecord.amount);
    DetailLine line;
    memset(&line, ' ', sizeof line);
    _zvkcMoveAlphaNumEdit(reinterpret_cast<const AlphaEditRecord *>(&kDate), sortRecord.date.bytes, 8, line.date);
    move(line.type, typeText(sortRecord.type.bytes[0]));
    move(line.reference, sortRecord.reference);
    Packed<3> days;
    move(days, sortRecord.days);
    edit(kDays, days, line.days);
    move(line.daysText, isZero(days) ? " " : " DAYS");
    edit(kMoney, sortRecord.amount, line.amount);
    edit(kMoney, runningBalance, line.balance);
    print(line);
}

void printPostings()
{
    uint32_t length = 0;
    uint16_t status = 0;
    while (_zvkReturn(&length, &sortRecord, &status), status == 0) printPosting();
    endOfAccount();
}

// SORT SORT-FILE ON ASCENDING KEY SR-ACCOUNT SR-DATE SR-SEQUENCE
void sortPostings()
{
    Sort<3> sort(program.pcb, sizeof(PostedRecord), 96,
                 {{offsetof(PostedRecord, account), 6, ZVK_KEY_ZONED, 0, ZVK_KEY_ASCENDING, {}},
                  {offsetof(PostedRecord, date), 8, ZVK_KEY_ZONED, 0, ZVK_KEY_ASCENDING, {}},
                  {offsetof(PostedRecord, sequence), 5, ZVK_KEY_PACKED, 0, ZVK_KEY_ASCENDING, {}}});
    sort.start();
    givePostings();
    sort.inputHasEnded();
    sort.need();
    printPostings();
}

int procedureDivision()
{
    totals.find();
    one = 1;
    inAccount = false;
    pageNumber = 0;
    statementsWrong = 0;
    posted.open(ZVK_OPEN_INPUT);
    posted.need();
    master.open(ZVK_OPEN_INPUT);
    master.need();
    statements.open(ZVK_OPEN_OUTPUT);
    statements.need();
    printPageLine();
    sortPostings();
    posted.close();
    master.close();
    statements.close();
    statements.need();
    if (isZero(statementsWrong)) return 0;
    Text<9> count;
    edit(kCount, statementsWrong, count.bytes);
    display("STATEMENTS WRONG        ", count);
    _zvkRunUnitTerm(12);
    return 0;
}

} // namespace

int STATEMENT() { return program.run(procedureDivision); }
