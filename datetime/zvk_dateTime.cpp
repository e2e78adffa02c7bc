// Between date-time items and their system forms; see system_form.h.
//
// Each direction is one walk over the format's entries, compiled for dates, for times, and for
// timestamps, which are both. The item's bytes are taken as they are: whether they make sense is
// Test's business. A walk ends where the item ends, also where the format would go on.
//
//     entries month "/" day "/" year2, window 1950     "12/31/49" -> "2049-12-31"
#include <algorithm>
#include <cstring>

#include "calendar/calendar.h"
#include "calendar/decimal_text.h"
#include "datetime/format_entries.h"
#include "datetime/system_form.h"

namespace {

constexpr int64_t kSecond = 1000000000000; // picoseconds
constexpr int kFractionPlaces = 12;

constexpr int64_t kPowers[] = {1,       10,       100,       1000,       10000,       100000,
                               1000000, 10000000, 100000000, 1000000000, 10000000000, 100000000000};

enum Parts { kDate = 1, kTime = 2, kBoth = 3 };

template <int parts>
struct Layout {
    static constexpr int time = parts == kBoth ? kTimeInTimestamp : 0;
    static constexpr int beforeForm = parts == kTime ? kTimeInTimestamp : 0; // of a timestamp's form
    static constexpr int length = parts == kDate ? kDateForm : parts == kTime ? kTimeForm : kTimestampForm;
    static constexpr uint64_t entries =
        kTextEntries | (parts & kDate ? kDateEntries : 0) | (parts & kTime ? kTimeEntries : 0);
    static const char *start(bool mask)
    {
        return (mask ? "XXXX-XX-XX-XX:XX:XX.XXXXXXXXXXXX" : "0000-01-01-00:00:00.000000000000") + beforeForm;
    }
};

// A digit of a text that may be anything; a blank is 0.
int64_t digitOf(char c) { return c & 0x0F; }

int64_t twoDigits(const char *text) { return digitOf(text[0]) * 10 + digitOf(text[1]); }

void putTwo(char *out, int64_t value)
{
    auto low = static_cast<uint32_t>(value % 100);
    out[0] = static_cast<char>('0' | low / 10);
    out[1] = static_cast<char>('0' | low % 10);
}

// What a walk from an item remembers until its end.
struct Remembered {
    bool centurySeen = false, hourSeen = false;
    int hour12Digits = 0; // places of the 12-hour field
    const char *dayOfYear = nullptr, *hour12 = nullptr, *half = nullptr;
    int64_t fraction = 0; // picoseconds
    int fractionDigits = 0;
    const char *fractionText = nullptr; // of the only fraction, if all of it are digits
};

int64_t windowCentury(int16_t windowYear) { return windowYear / 100; }

void putCentury(char *out, int64_t century) { putTwo(out, (century % 100 + 100) % 100); }

void readYear2(const char *at, char *out, int16_t windowYear, const Remembered &seen)
{
    out[2] = at[0];
    out[3] = at[1];
    if (seen.centurySeen) return;
    putCentury(out, windowCentury(windowYear) + (windowYear % 100 > twoDigits(at)));
}

void readCentury(const char *at, char *out, int16_t windowYear, Remembered &seen)
{
    DATETIME_ASSERT(isDigit(*at), "century >= 0 && century <= 9");
    putCentury(out, windowCentury(windowYear) + (*at - '0'));
    seen.centurySeen = true;
}

void readFraction(const char *at, int digits, Remembered &seen)
{
    bool allDigits = true;
    for (int i = 0; i < digits; i++) allDigits &= isDigit(at[i]);
    seen.fractionText = allDigits && seen.fractionDigits == 0 ? at : nullptr;
    int64_t value = 0;
    for (int i = 0; i < digits; i++) value = value * 10 + digitOf(at[i]);
    seen.fraction += value * kPowers[kFractionPlaces - digits];
    seen.fractionDigits = std::max(seen.fractionDigits, digits);
}

// A day of the year becomes month and day, in the year that the walk has found.
void finishDayOfYear(const char *at, char *out)
{
    int64_t year = DateTime_ATOL(out, 0, 4);
    auto day = static_cast<int32_t>(digitOf(at[0]) * 100 + twoDigits(at + 1));
    calendar::Date date = calendar::dateOfDay(static_cast<int32_t>(year), day);
    putTwo(out + 5, date.month);
    putTwo(out + 8, date.day);
}

// A 12-hour field and its AM or PM become an hour of 24.
void finishHour12(char *out, const Remembered &seen)
{
    char half = seen.half ? static_cast<char>(*seen.half & ~0x20) : '\0';
    bool digits = false;
    int64_t hour = 0;
    for (int i = 0; i < seen.hour12Digits; i++) {
        digits |= isDigit(seen.hour12[i]);
        hour = hour * 10 + digitOf(seen.hour12[i]);
    }
    if (!digits)
        hour = half == 'P' ? 12 : 0;
    else if (half == 'P' && hour != 12)
        hour += 12;
    else if (half == 'A' && hour == 12)
        hour = 0;
    putTwo(out, hour);
}

// The number's text, right-aligned in the twelve places and with no leading zeros: those keep what
// the start value has there, an "X" under a mask. A time also keeps what is beyond its precision.
// Comparisons rest on both; on purpose.
void finishFraction(char *out, const Remembered &seen, bool wholeText)
{
    if (seen.fraction == 0) return;
    DATETIME_ASSERT(seen.fraction < kSecond, "totalSubSeconds < 1000000000000");
    if (seen.fractionText) { // the usual case: the number's text is there already
        int first = 0;
        while (seen.fractionText[first] == '0') first++;
        memcpy(out + first, seen.fractionText + first, static_cast<size_t>(seen.fractionDigits - first));
        if (wholeText)
            memset(out + seen.fractionDigits, '0', static_cast<size_t>(kFractionPlaces - seen.fractionDigits));
        return;
    }
    int64_t value = seen.fraction;
    for (int place = kFractionPlaces - 1; value > 0; place--, value /= 10)
        if (wholeText || place < seen.fractionDigits) out[place] = static_cast<char>('0' + value % 10);
}

template <int parts>
void toSystemForm(const char *item, const FD *fd, char *out, int16_t windowYear, bool mask)
{
    using L = Layout<parts>;
    memcpy(out, L::start(mask), L::length);
    out[L::length] = 0;
    char *time = out + L::time;
    Remembered seen;
    uint64_t length = itemLength(fd), pos = 0;
    const FormatEntry *entry = fd->formatEntriesPtr, *last = entry + std::max<int>(fd->numberOfEntries, 0);
    for (; entry < last; entry++) {
        uint32_t type = entry->entryType;
        DATETIME_ASSERT(isEntryOf(L::entries, type), "! \"entryType\"");
        // Most entries are a separator or two or four places that are copied.
        if (isEntryOf(kOnePlace, type)) {
            if (pos == length) break;
            pos++;
            continue;
        }
        if (int place = kCopiedTo[type]; place >= 0) {
            uint64_t places = place == 0 ? 4 : 2;
            if (places > length - pos) break;
            char *to = out + place - L::beforeForm;
            memcpy(to, item + pos, 2);
            if (places == 4) memcpy(to + 2, item + pos + 2, 2);
            seen.hourSeen |= type == ZVK_FE_HOUR24;
            pos += places;
            continue;
        }
        uint64_t width = entryWidth(entry, item, pos, length);
        if (width > length - pos) break;
        const char *at = item + pos;
        pos += width;
        switch (type) {
        case ZVK_FE_YEAR2:
            readYear2(at, out, windowYear, seen);
            break;
        case ZVK_FE_CENTURY:
            readCentury(at, out, windowYear, seen);
            break;
        case ZVK_FE_DATE_SHORT:
            memcpy(out + 5, at, 2);
            memcpy(out + 8, at + 3, 2);
            readYear2(at + 6, out, windowYear, seen);
            break;
        case ZVK_FE_DAY_OF_YEAR:
            seen.dayOfYear = at;
            break;
        case ZVK_FE_HOUR12:
            seen.hour12 = at;
            seen.hour12Digits = static_cast<int>(width);
            break;
        case ZVK_FE_AM_PM:
        case ZVK_FE_AM_PM_LOCALE:
            seen.half = at;
            break;
        case ZVK_FE_TIME24_SHORT:
            memcpy(time, at, 2);
            memcpy(time + 3, at + 3, 2);
            seen.hourSeen = true;
            break;
        case ZVK_FE_TIME12:
            seen.hour12 = at;
            seen.hour12Digits = 2;
            memcpy(time + 3, at + 3, 2);
            memcpy(time + 6, at + 6, 2);
            seen.half = at + 9;
            break;
        case ZVK_FE_FRACTION1:
        case ZVK_FE_FRACTION2:
        case ZVK_FE_FRACTION3:
        case ZVK_FE_FRACTION6:
        case ZVK_FE_FRACTION12:
            readFraction(at, static_cast<int>(width), seen);
            break;
        default: // separators and literals
            break;
        }
    }
    if constexpr (parts & kDate)
        if (seen.dayOfYear) finishDayOfYear(seen.dayOfYear, out);
    if constexpr (parts & kTime) {
        if (seen.hour12 || (seen.half && !seen.hourSeen)) finishHour12(time, seen);
        finishFraction(time + 9, seen, parts == kBoth);
    }
}

// ---- and back

// Writes within an item and no further.
struct ItemWriter {
    char *item;
    uint64_t pos, length;

    void put(const char *text, uint64_t count)
    {
        count = std::min(count, length - pos);
        memcpy(item + pos, text, count);
        pos += count;
    }
    void two(const char *text)
    {
        if (length - pos < 2) return put(text, 2);
        memcpy(item + pos, text, 2);
        pos += 2;
    }
    void character(char c)
    {
        if (pos < length) item[pos++] = c;
    }
};

void writeDayOfYear(ItemWriter &out, const char *system)
{
    int64_t year = DateTime_ATOL(system, 0, 4);
    char digits[3];
    int64_t month = twoDigits(system + 5);
    int32_t day = calendar::dayOfYear(year, month, twoDigits(system + 8));
    // A day beyond its year is one of a thirteenth month, and comes back as it was.
    if (month == 13) day = calendar::yearLength(year) + static_cast<int32_t>(twoDigits(system + 8));
    calendar::putDigits(digits, 3, static_cast<uint64_t>(day));
    out.put(digits, 3);
}

void writeCentury(ItemWriter &out, const char *system, int16_t windowYear)
{
    int64_t beyond = DateTime_ATOL(system, 0, 4) - windowCentury(windowYear) * 100;
    DATETIME_ASSERT(beyond >= 0 && beyond <= 999, "century >= 0 && century <= 9");
    out.character(static_cast<char>('0' + beyond / 100));
}

void writeHour12(ItemWriter &out, const char *time)
{
    int64_t hour = DateTime_ATOL(time, 0, 2);
    char digits[2];
    putTwo(digits, hour == 0 ? 12 : hour > 12 ? hour - 12 : hour);
    out.two(digits);
}

const char *halfOf(const char *time) { return DateTime_ATOL(time, 0, 2) < 12 ? "AM" : "PM"; }

template <int parts>
void toItem(const char *system, char *item, const FD *fd, int16_t windowYear)
{
    using L = Layout<parts>;
    const char *time = system + L::time;
    ItemWriter out{item, 0, itemLength(fd)};
    const FormatEntry *entry = fd->formatEntriesPtr, *last = entry + fd->numberOfEntries;
    for (; entry < last; entry++) {
        uint32_t type = entry->entryType;
        DATETIME_ASSERT(isEntryOf(L::entries, type), "! \"entryType\"");
        if (int place = kCopiedTo[type]; place >= 0) {
            const char *from = system + place - L::beforeForm;
            out.two(from);
            if (place == 0) out.two(from + 2);
            continue;
        }
        if (char separator = separatorOf(type)) {
            out.character(separator);
            continue;
        }
        switch (type) {
        case ZVK_FE_LITERAL:
            out.put(fd->formatLiteralPtr + entry->literalOffset, entryWidth(entry, item, 0, 0));
            break;
        case ZVK_FE_CHAR:
            out.character(fd->formatLiteralPtr[entry->literalOffset]);
            break;
        case ZVK_FE_YEAR2:
            out.two(system + 2);
            break;
        case ZVK_FE_DAY_OF_YEAR:
            writeDayOfYear(out, system);
            break;
        case ZVK_FE_CENTURY:
            writeCentury(out, system, windowYear);
            break;
        case ZVK_FE_DATE_SHORT:
            out.two(system + 5);
            out.character('/');
            out.two(system + 8);
            out.character('/');
            out.two(system + 2);
            break;
        case ZVK_FE_HOUR12:
            writeHour12(out, time);
            break;
        case ZVK_FE_AM_PM:
        case ZVK_FE_AM_PM_LOCALE:
            out.two(halfOf(time));
            break;
        case ZVK_FE_TIME12:
            writeHour12(out, time);
            out.put(time + 2, 6);
            out.character(' ');
            out.two(halfOf(time));
            break;
        case ZVK_FE_TIME24_SHORT:
            out.put(time, 5);
            break;
        case ZVK_FE_FRACTION1:
        case ZVK_FE_FRACTION2:
        case ZVK_FE_FRACTION3:
        case ZVK_FE_FRACTION6:
        case ZVK_FE_FRACTION12:
            out.put(time + 9, kEntryWidth[type]);
            break;
        default:
            break;
        }
    }
    if (fd->storageLength > out.pos) memset(item + out.pos, ' ', fd->storageLength - out.pos);
}

} // namespace

int64_t DateTime_ATOL(const char *text, int offset, int length)
{
    DATETIME_ASSERT(length <= 18, "length <= 18");
    int64_t value = 0;
    text += offset;
    for (int i = 0; i < length && text[i]; i++) value = value * 10 + digitOf(text[i]);
    return value;
}

void DateTime_convertCOBOLDateToSystemDate(const char *datePtr, const FD *dateFDPtr, char *newDatePtr,
                                           int16_t windowYear, bool mask)
{
    ASSERT_POINTER(datePtr);
    ASSERT_POINTER(dateFDPtr);
    ASSERT_POINTER(newDatePtr);
    toSystemForm<kDate>(datePtr, dateFDPtr, newDatePtr, windowYear, mask);
}

void DateTime_convertCOBOLTimeToSystemTime(const char *timePtr, const FD *timeFDPtr, char *newTimePtr, bool mask)
{
    ASSERT_POINTER(timePtr);
    ASSERT_POINTER(timeFDPtr);
    ASSERT_POINTER(newTimePtr);
    toSystemForm<kTime>(timePtr, timeFDPtr, newTimePtr, 0, mask);
}

void DateTime_convertCOBOLTimestampToSystemTimestamp(const char *timestampPtr, const FD *timestampFDPtr,
                                                     char *newTimestampPtr, int16_t windowYear, bool mask)
{
    ASSERT_POINTER(timestampPtr);
    ASSERT_POINTER(timestampFDPtr);
    ASSERT_POINTER(newTimestampPtr);
    toSystemForm<kBoth>(timestampPtr, timestampFDPtr, newTimestampPtr, windowYear, mask);
}

void DateTime_convertSystemDateToCOBOLDate(const char *datePtr, char *newDatePtr, const FD *newDateFDPtr,
                                           int16_t windowYear)
{
    ASSERT_POINTER(datePtr);
    ASSERT_POINTER(newDatePtr);
    ASSERT_POINTER(newDateFDPtr);
    ASSERT_FORMAT(newDateFDPtr);
    toItem<kDate>(datePtr, newDatePtr, newDateFDPtr, windowYear);
}

void DateTime_convertSystemTimeToCOBOLTime(const char *timePtr, char *newTimePtr, const FD *newTimeFDPtr)
{
    ASSERT_POINTER(timePtr);
    ASSERT_POINTER(newTimePtr);
    ASSERT_POINTER(newTimeFDPtr);
    ASSERT_FORMAT(newTimeFDPtr);
    toItem<kTime>(timePtr, newTimePtr, newTimeFDPtr, 0);
}

void DateTime_convertSystemTimestampToCOBOLTimestamp(const char *timestampPtr, char *newTimestampPtr,
                                                     const FD *newTimestampFDPtr, int16_t windowYear)
{
    ASSERT_POINTER(timestampPtr);
    ASSERT_POINTER(newTimestampPtr);
    ASSERT_POINTER(newTimestampFDPtr);
    ASSERT_FORMAT(newTimestampFDPtr);
    toItem<kBoth>(timestampPtr, newTimestampPtr, newTimestampFDPtr, windowYear);
}

void itemToSystemForm(const char *item, const FD *fd, char *out, int16_t windowYear, bool mask)
{
    if (fd->category == ctDATE) return DateTime_convertCOBOLDateToSystemDate(item, fd, out, windowYear, mask);
    if (fd->category == ctTIME) return DateTime_convertCOBOLTimeToSystemTime(item, fd, out, mask);
    DateTime_convertCOBOLTimestampToSystemTimestamp(item, fd, out, windowYear, mask);
}

void systemFormToItem(const char *system, char *item, const FD *fd, int16_t windowYear)
{
    if (fd->category == ctDATE) return DateTime_convertSystemDateToCOBOLDate(system, item, fd, windowYear);
    if (fd->category == ctTIME) return DateTime_convertSystemTimeToCOBOLTime(system, item, fd);
    DateTime_convertSystemTimestampToCOBOLTimestamp(system, item, fd, windowYear);
}
