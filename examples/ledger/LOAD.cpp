// LOAD as a compiler lays it out; see LOAD.cbl. UNSTRING has no entry yet and is done in place.
#include "records.h"

extern "C" ZVK_EXPORT int LOAD();

namespace {

struct AccountLine {
    char text[80];
};
File<AccountLine> accounts({.name = "ACCOUNTS", .assignment = "ACCOUNTS", .organization = ZVK_FILE_LINE_SEQUENTIAL});
File<MasterRecord> master(masterFile(kSequential));
Program program("LOAD", reinterpret_cast<ZvkRoutine>(LOAD), accounts, master);

LeadingSign<13> openingText; // S9(11)V99
Unsigned<11> limitText;      // 9(9)V99
Unsigned<5> rateText;        // 9V9(4)

// The next field of an UNSTRING DELIMITED BY X"09": a number right-justified with zeros, or text.
struct Fields {
    const char *at, *end;

    size_t next(const char *&field)
    {
        field = at;
        while (at < end && *at != '\t') at++;
        size_t length = static_cast<size_t>(at - field);
        if (at < end) at++;
        while (length && field[length - 1] == ' ') length--;
        return length;
    }
    void number(uint8_t *digits, size_t count)
    {
        const char *field;
        size_t length = next(field);
        memset(digits, '0', count);
        if (length > count) field += length - count, length = count;
        memcpy(digits + count - length, field, length);
    }
    template <size_t size>
    void text(Text<size> &item)
    {
        const char *field;
        size_t length = next(field);
        move(item.bytes, size, field, length);
    }
};

void loadAccount()
{
    const char *line = accounts.record.text;
    Fields fields = {line, line + sizeof accounts.record.text};
    MasterRecord &account = master.record;
    fields.number(account.number.bytes, 6);
    fields.text(account.name);
    fields.text(account.status);
    fields.number(openingText.bytes, sizeof openingText.bytes);
    fields.number(limitText.bytes, sizeof limitText.bytes);
    fields.number(rateText.bytes, sizeof rateText.bytes);
    move(account.opening, openingText);
    move(account.balance, openingText);
    move(account.limit, limitText);
    move(account.rate, rateText);
    account.posted = 0;
    memset(account.lastDate.bytes, '0', sizeof account.lastDate.bytes);
    if (!master.write()) display("ACCOUNT NOT LOADED: ", Shown(line, sizeof accounts.record.text));
}

int procedureDivision()
{
    accounts.open(ZVK_OPEN_INPUT);
    accounts.need();
    master.open(ZVK_OPEN_OUTPUT);
    master.need();
    while (accounts.read()) loadAccount();
    accounts.close();
    master.close();
    master.need();
    return 0;
}

} // namespace

int LOAD() { return program.run(procedureDivision); }
