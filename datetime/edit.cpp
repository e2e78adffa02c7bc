// Between numbers and date-time items: digits go into a format from its right end, and come out of
// it in the same way.
//
//     edit     "311226" by day "." month "." year2     "31.12.26"
//     de-edit  "31.12.26" into eight digits            "00311226"
#include <algorithm>
#include <array>
#include <cstring>

#include "datetime/format_entries.h"
#include "datetime/move.h"
#include "datetime/range_check.h"

namespace {

constexpr size_t kEditArea = 256, kDigitArea = 63;

// Digits that an entry takes.
constexpr std::array<uint8_t, kHighestEntry> kDigits = [] {
    std::array<uint8_t, kHighestEntry> digits{};
    for (uint32_t type = ZVK_FE_DAY; type < kHighestEntry; type++) digits[type] = kEntryWidth[type];
    digits[ZVK_FE_AM_PM] = digits[ZVK_FE_AM_PM_LOCALE] = digits[ZVK_FE_PERCENT] = digits[ZVK_FE_AT] = 0;
    digits[ZVK_FE_TIME12] = digits[ZVK_FE_DATE_SHORT] = 6;
    digits[ZVK_FE_TIME24_SHORT] = 4;
    return digits;
}();

// An entry that has a number: the longest one has no edited form.
void checkEntry(uint32_t type)
{
    DATETIME_ASSERT(type < kHighestEntry && isEntryOf(kTextEntries | kDateEntries | kTimeEntries, type),
                    "entryType <= 31");
}

// Fills an area from its end.
struct BackwardWriter {
    char area[kEditArea];
    size_t at = kEditArea;
    const char *digits;
    int64_t next; // index of the digit that is taken next, negative when there are none

    void put(char c)
    {
        DATETIME_ASSERT(at > 0, "i < sizeof(area)");
        area[--at] = c;
    }
    void put(const char *text, size_t length)
    {
        while (length) put(text[--length]);
    }
    void digit() { put(next >= 0 ? digits[next--] : '0'); }
    void pairs(int count, char between)
    {
        for (int i = 0; i < count; i++) {
            if (i) put(between);
            digit();
            digit();
        }
    }
};

void editEntry(BackwardWriter &out, const FD *fd, const FormatEntry *entry)
{
    uint32_t type = entry->entryType;
    checkEntry(type);
    switch (type) {
    case ZVK_FE_LITERAL:
        return out.put(fd->formatLiteralPtr + entry->literalOffset, entryWidth(entry, nullptr, 0, 0));
    case ZVK_FE_CHAR:
        return out.put(fd->formatLiteralPtr[entry->literalOffset]);
    case ZVK_FE_AM_PM:
    case ZVK_FE_AM_PM_LOCALE:
        return out.put("PM", 2);
    case ZVK_FE_TIME24_SHORT:
        return out.pairs(2, ':');
    case ZVK_FE_DATE_SHORT:
        return out.pairs(3, '/');
    case ZVK_FE_TIME12:
        // Unlike in every other text of this entry the half of the day comes first; on purpose.
        out.pairs(3, ':');
        return out.put("PM ", 3);
    default:
        if (char separator = separatorOf(type)) return out.put(separator);
        for (int i = 0; i < kDigits[type]; i++) out.digit();
    }
}

// Takes digits from the end of an item; what is before the item are none.
struct BackwardReader {
    const char *item;
    int64_t source;
    char area[kDigitArea];
    int64_t target;

    // False when the area is full.
    bool digits(int count)
    {
        while (count-- > 0) {
            if (source >= 0) area[target] = item[source];
            source--;
            if (--target < 0) return false;
        }
        return true;
    }
    bool pairs(int count)
    {
        for (int i = 0; i < count; i++, source--)
            if (!digits(2)) return false;
        source++; // no separator before the first pair
        return true;
    }
};

bool deEditEntry(BackwardReader &in, const FormatEntry *entry)
{
    uint32_t type = entry->entryType;
    checkEntry(type);
    switch (type) {
    case ZVK_FE_LITERAL:
        in.source -= static_cast<int64_t>(entryWidth(entry, nullptr, 0, 0));
        return true;
    case ZVK_FE_TIME12:
        in.source -= 3; // the blank and the half of the day
        return in.pairs(3);
    case ZVK_FE_TIME24_SHORT:
        return in.pairs(2);
    case ZVK_FE_DATE_SHORT:
        return in.pairs(3);
    default:
        if (kDigits[type]) return in.digits(kDigits[type]);
        in.source -= type == ZVK_FE_CHAR ? 1 : kEntryWidth[type];
        return true;
    }
}

} // namespace

void _zvkcDateTime_Edit(const char *senderPtr, char *receiverPtr, const FD *receiverFDPtr, int32_t senderLength,
                        NewCallInfo)
{
    ASSERT_POINTER(senderPtr);
    ASSERT_POINTER(receiverPtr);
    ASSERT_POINTER(receiverFDPtr);
    ASSERT_DATE_TIME(receiverFDPtr);
    ASSERT_FORMAT(receiverFDPtr);
    BackwardWriter out;
    out.digits = senderPtr;
    out.next = int64_t{senderLength} - 1;
    for (int i = receiverFDPtr->numberOfEntries - 1; i >= 0; i--)
        editEntry(out, receiverFDPtr, receiverFDPtr->formatEntriesPtr + i);
    size_t written = kEditArea - out.at;
    DATETIME_ASSERT(written <= receiverFDPtr->storageLength, "i <= receiverFDPtr->storageLength");
    copyPadded(out.area + out.at, written, receiverPtr, receiverFDPtr->storageLength);
}

void _zvkcDateTime_DeEdit(const char *senderPtr, char *receiverPtr, const FD *senderFDPtr, int32_t receiverLength,
                          int16_t windowYear, NewCallInfo newCallInfo)
{
    ASSERT_POINTER(senderPtr);
    ASSERT_POINTER(receiverPtr);
    ASSERT_POINTER(senderFDPtr);
    ASSERT_DATE_TIME(senderFDPtr);
    if (newCallInfo.rangeCheck == 1) rangeCheckItem(senderPtr, senderFDPtr, windowYear);
    ASSERT_FORMAT(senderFDPtr);
    int16_t actualLength = senderFDPtr->diffLength.actualLength;
    DATETIME_ASSERT(actualLength > 0, "senderFDPtr->diffLength.actualLength > 0");
    DATETIME_ASSERT(senderFDPtr->storageLength >= static_cast<uint32_t>(actualLength),
                    "senderFDPtr->storageLength >= senderFDPtr->diffLength.actualLength");
    DATETIME_ASSERT(static_cast<uint32_t>(receiverLength) <= kDigitArea, "receiverLength <= sizeof(receiver)");
    BackwardReader in{senderPtr, actualLength - 1, {}, receiverLength - 1};
    memset(in.area, '0', sizeof in.area);
    for (int i = senderFDPtr->numberOfEntries - 1; i >= 0 && in.target >= 0; i--)
        if (!deEditEntry(in, senderFDPtr->formatEntriesPtr + i)) break;
    memcpy(receiverPtr, in.area, static_cast<size_t>(receiverLength));
}

void _zvkcDateTime_Convert(const char *senderPtr, char *receiverPtr, const FD *senderFDPtr, const FD *receiverFDPtr,
                           int32_t senderLength)
{
    ASSERT_POINTER(senderPtr);
    ASSERT_POINTER(receiverPtr);
    ASSERT_POINTER(senderFDPtr);
    ASSERT_POINTER(receiverFDPtr);
    ASSERT_DATE_TIME(receiverFDPtr);
    int32_t originalLength = receiverFDPtr->diffLength.actualLength;
    uint32_t storageLength = receiverFDPtr->storageLength;
    DATETIME_ASSERT(storageLength >= static_cast<uint32_t>(originalLength), "storageLength >= originalLength");
    auto room = static_cast<uint64_t>(originalLength), length = static_cast<uint64_t>(std::max(senderLength, 0));
    if (senderFDPtr->category != ctNUMERIC) {
        copyPadded(senderPtr, std::min(length, room), receiverPtr, storageLength);
        return;
    }
    uint64_t taken = std::min(length, room), zeros = room - taken;
    memmove(receiverPtr + zeros, senderPtr + (length - taken), taken);
    memset(receiverPtr, '0', zeros);
    memset(receiverPtr + room, ' ', storageLength - room);
}
