// The copybooks of the suite: MASTER.cpy, POSTED.cpy, TOTALS.cpy, REASONS.cpy.
#pragma once

#include "../compiled.h"

using namespace compiled;

struct MasterRecord {
    Unsigned<6> number;
    Text<24> name;
    Text<1> status;
    Packed<13> opening, balance; // S9(11)V99
    Packed<11> limit;            // S9(9)V99
    Packed<5> rate;              // S9V9(4)
    Packed<7> posted;
    Unsigned<8> lastDate;
};
static_assert(sizeof(MasterRecord) == 66);

struct PostedRecord {
    Text<8> reference;
    Unsigned<6> account;
    Unsigned<8> date;
    Packed<9> sequence;
    Text<1> type;
    Packed<13> amount; // S9(11)V99
    Unsigned<8> days;
};
static_assert(sizeof(PostedRecord) == 43);

constexpr int kReasons = 11;
constexpr const char *kReasonTexts[kReasons] = {"LINE TOO LONG",     "ACCOUNT NOT NUMERIC", "DATE NOT VALID",
                                                "TYPE NOT KNOWN",    "AMOUNT NOT NUMERIC",  "REFERENCE MISSING",
                                                "ACCOUNT NOT KNOWN", "ACCOUNT CLOSED",      "DUPLICATE REFERENCE",
                                                "DAYS NOT VALID",    "LIMIT EXCEEDED"};
struct LedgerTotals {
    Packed<9> accounts, statements, read, posted, rejected, reason[kReasons];
    Packed<15> deposits, withdrawals, fees, interest; // S9(13)V99
};

// SELECT MASTER: the account's number, and its name with duplicates.
inline FileDescription masterFile(uint8_t access)
{
    return {.name = "MASTER",
            .assignment = "MASTER",
            .organization = ZVK_FILE_INDEXED,
            .access = access,
            .alone = true,
            .keys = {{6, 0, 0, {}}, {24, 6, ZVK_FILE_KEY_DUPLICATES, {}}},
            .keyCount = 2};
}
// SELECT POSTED
inline FileDescription postedFile(uint8_t access)
{
    return {.name = "POSTED",
            .assignment = "POSTED",
            .organization = ZVK_FILE_INDEXED,
            .access = access,
            .alone = true,
            .keys = {{8, 0, 0, {}}},
            .keyCount = 1};
}
constexpr uint8_t kSequential = 0x80, kDynamic = 0;
