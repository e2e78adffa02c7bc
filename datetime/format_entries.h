// The entries of a format: their widths, and which category may have which.
#pragma once

#include <array>
#include <cstdint>

#include "datetime/assertion.h"

inline constexpr uint32_t kHighestEntry = ZVK_FE_FRACTION12;

// 0: not a fixed width (literals), or no entry. The 12-hour field may take one less.
inline constexpr std::array<uint8_t, kHighestEntry + 1> kEntryWidth = {
    0, 0, 1, 1, 1,  1, 1, 1, 1, 0, // separators and a character
    2, 3, 2, 2, 4,  4,             // day, day of year, month, years
    2, 2, 2, 2, 2,                 // hours, minute, second, AM/PM
    1, 1, 1, 2, 11, 5, 8,          // century, "%", "@", AM/PM, composed ones
    1, 2, 3, 6, 12};               // fractions

constexpr uint64_t entryBits(std::initializer_list<uint32_t> types)
{
    uint64_t bits = 0;
    for (uint32_t type : types) bits |= uint64_t{1} << type;
    return bits;
}
inline constexpr uint64_t kDateEntries = entryBits({ZVK_FE_DAY, ZVK_FE_DAY_OF_YEAR, ZVK_FE_MONTH, ZVK_FE_YEAR2,
                                                    ZVK_FE_YEAR4_RAW, ZVK_FE_YEAR4, ZVK_FE_CENTURY, ZVK_FE_DATE_SHORT});
inline constexpr uint64_t kTimeEntries = entryBits(
    {ZVK_FE_HOUR24, ZVK_FE_HOUR12, ZVK_FE_MINUTE, ZVK_FE_SECOND, ZVK_FE_AM_PM, ZVK_FE_AM_PM_LOCALE, ZVK_FE_TIME12,
     ZVK_FE_TIME24_SHORT, ZVK_FE_FRACTION1, ZVK_FE_FRACTION2, ZVK_FE_FRACTION3, ZVK_FE_FRACTION6, ZVK_FE_FRACTION12});
inline constexpr uint64_t kTextEntries =
    entryBits({ZVK_FE_LITERAL, ZVK_FE_SLASH, ZVK_FE_MINUS, ZVK_FE_PERIOD, ZVK_FE_COMMA, ZVK_FE_SPACE, ZVK_FE_COLON,
               ZVK_FE_CHAR, ZVK_FE_PERCENT, ZVK_FE_AT});

// Texts of one place.
inline constexpr uint64_t kOnePlace = kTextEntries & ~entryBits({ZVK_FE_LITERAL});

inline bool isEntryOf(uint64_t entries, uint32_t type) { return type <= kHighestEntry && (entries >> type & 1); }

// The character of a separator; 0 for other types.
inline char separatorOf(uint32_t type)
{
    constexpr char separators[] = "\0\0/-., :";
    return type <= ZVK_FE_COLON ? separators[type] : type == ZVK_FE_PERCENT ? '%' : type == ZVK_FE_AT ? '@' : '\0';
}

// Where an entry that is copied as it is lies in the timestamp's system form; -1 for others.
inline constexpr std::array<int32_t, kHighestEntry + 1> kCopiedTo = [] {
    std::array<int32_t, kHighestEntry + 1> places{};
    places.fill(-1);
    places[ZVK_FE_YEAR4] = places[ZVK_FE_YEAR4_RAW] = 0;
    places[ZVK_FE_MONTH] = 5;
    places[ZVK_FE_DAY] = 8;
    places[ZVK_FE_HOUR24] = 11;
    places[ZVK_FE_MINUTE] = 14;
    places[ZVK_FE_SECOND] = 17;
    return places;
}();

inline bool isDigit(char c) { return static_cast<unsigned>(static_cast<uint8_t>(c)) - '0' <= 9; }

// Places of an item: as long as its descriptor says, or without end where that says nothing.
inline uint64_t itemLength(const FD *fd) { return fd->storageLength ? fd->storageLength : UINT64_MAX; }

// Bytes that an entry takes at `pos` of an item of `length` bytes.
inline uint64_t entryWidth(const FormatEntry *entry, const char *item, uint64_t pos, uint64_t length)
{
    uint32_t type = entry->entryType;
    if (type == ZVK_FE_LITERAL) {
        DATETIME_ASSERT(entry->entryLength > 0, "formatEntriesPtr->formatEntry[i].longFormatEntry.entryLength> 0");
        return static_cast<uint16_t>(entry->entryLength);
    }
    if (type == ZVK_FE_CHAR) return 1;
    if (type == ZVK_FE_HOUR12) return pos + 1 < length && isDigit(item[pos + 1]) ? 2 : 1;
    return kEntryWidth[type];
}
