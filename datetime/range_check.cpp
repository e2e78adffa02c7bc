// The test of an item's contents; see range_check.h.
//
// The item is walked by its format; subfields that the format does not carry count as year 0, 1
// January, 00:00:00, which pass. Separators and literals are not looked at.
#include "datetime/range_check.h"

#include <cassert>

#include "calendar/calendar.h"
#include "datetime/format_entries.h"

namespace {

struct Fields {
    int32_t year = 0, month = 1, day = 1; // the day may be one of the year
    int32_t hour = 0, minute = 0, second = 0;
    bool hasDayOfYear = false, twelveHours = false;
};

bool number(const char *at, uint64_t digits, int32_t &value)
{
    value = 0;
    for (uint64_t i = 0; i < digits; i++) {
        if (!isDigit(at[i])) return false;
        value = value * 10 + (at[i] - '0');
    }
    return true;
}

bool year2(const char *at, Fields &fields, bool century, int16_t windowYear)
{
    int32_t value;
    if (!number(at, 2, value)) return false;
    fields.year += value;
    if (!century) fields.year += (windowYear / 100 + (windowYear % 100 > value)) * 100;
    return true;
}

bool centuryDigit(const char *at, Fields &fields, int16_t windowYear)
{
    int32_t value;
    if (!number(at, 1, value)) return false;
    fields.year += (value + windowYear / 100) * 100;
    return true;
}

bool dayOfYear(const char *at, Fields &fields)
{
    fields.hasDayOfYear = true;
    return number(at, 3, fields.day);
}

bool hour12(const char *at, uint64_t width, Fields &fields)
{
    fields.twelveHours = true;
    return number(at, width, fields.hour);
}

bool half(const char *at)
{
    char letter = static_cast<char>(at[0] & ~0x20);
    return (letter == 'A' || letter == 'P') && (at[1] & ~0x20) == 'M';
}

// One entry of the format; false if its digits are none.
bool readEntry(uint32_t type, const char *at, uint64_t width, Fields &fields, bool century, int16_t windowYear)
{
    int32_t ignored;
    switch (type) {
    case ZVK_FE_DAY:
        return number(at, 2, fields.day);
    case ZVK_FE_DAY_OF_YEAR:
        return dayOfYear(at, fields);
    case ZVK_FE_MONTH:
        return number(at, 2, fields.month);
    case ZVK_FE_YEAR4:
    case ZVK_FE_YEAR4_RAW:
        return number(at, 4, fields.year);
    case ZVK_FE_YEAR2:
        return year2(at, fields, century, windowYear);
    case ZVK_FE_CENTURY:
        return centuryDigit(at, fields, windowYear);
    case ZVK_FE_HOUR24:
        return number(at, 2, fields.hour);
    case ZVK_FE_HOUR12:
        return hour12(at, width, fields);
    case ZVK_FE_MINUTE:
        return number(at, 2, fields.minute);
    case ZVK_FE_SECOND:
        return number(at, 2, fields.second);
    case ZVK_FE_DATE_SHORT:
        return number(at, 2, fields.month) && number(at + 3, 2, fields.day) &&
               year2(at + 6, fields, century, windowYear);
    case ZVK_FE_TIME24_SHORT:
        return number(at, 2, fields.hour) && number(at + 3, 2, fields.minute);
    case ZVK_FE_AM_PM:
    case ZVK_FE_AM_PM_LOCALE:
        return half(at);
    case ZVK_FE_TIME12:
        return false; // such an item is valid under a locale only; on purpose
    case ZVK_FE_FRACTION1:
    case ZVK_FE_FRACTION2:
    case ZVK_FE_FRACTION3:
    case ZVK_FE_FRACTION6:
        return number(at, width, ignored);
    case ZVK_FE_FRACTION12:
        return number(at, 6, ignored) && number(at + 6, 6, ignored);
    default:
        return true;
    }
}

bool isTime(const Fields &fields)
{
    if (fields.minute > 59 || fields.second > 59) return false;
    return fields.twelveHours ? fields.hour >= 1 && fields.hour <= 12 : fields.hour <= 23;
}

bool isDate(const Fields &fields)
{
    if (fields.year < 0 || fields.year > calendar::kLastYear || fields.month < 1 || fields.month > 12 || fields.day < 1)
        return false;
    if (fields.hasDayOfYear) return fields.day <= calendar::yearLength(fields.year);
    return fields.day <= calendar::monthLength(fields.year, fields.month);
}

} // namespace

bool isValidItem(const char *item, const FD *fd, uint64_t length, int16_t windowYear)
{
    const FormatEntry *first = fd->formatEntriesPtr,
                      *last = first + (fd->numberOfEntries > 0 ? fd->numberOfEntries : 0);
    bool century = false;
    for (const FormatEntry *entry = first; entry < last; entry++) century |= entry->entryType == ZVK_FE_CENTURY;

    Fields fields;
    uint64_t pos = 0;
    for (const FormatEntry *entry = first; entry < last; entry++) {
        uint32_t type = entry->entryType;
        DATETIME_ASSERT(isEntryOf(kTextEntries | kDateEntries | kTimeEntries, type), "! \"entryType\"");
        uint64_t width = entryWidth(entry, item, pos, length);
        if (width > length - pos || !readEntry(type, item + pos, width, fields, century, windowYear)) return false;
        pos += width;
    }
    return (fd->category == ctTIME || isDate(fields)) && (fd->category == ctDATE || isTime(fields));
}

void rangeCheckItem(const char *item, const FD *fd, int16_t windowYear, const char *function)
{
    if (fd->storageLength == 0 || isValidItem(item, fd, fd->storageLength, windowYear)) return;
    __assert_fail("testResult == '1'", __FILE_NAME__, __LINE__, function);
}

int32_t _zvkcDateTime_Test(const char *itemPtr, const FD *itemFDPtr, const FD *testFDPtr, uint32_t length,
                           int16_t windowYear)
{
    ASSERT_POINTER(itemPtr);
    ASSERT_POINTER(itemFDPtr);
    if (testFDPtr)
        ASSERT_DATE_TIME(testFDPtr);
    else
        ASSERT_DATE_TIME(itemFDPtr);
    if (length == 0) return 0;
    return isValidItem(itemPtr, testFDPtr ? testFDPtr : itemFDPtr, length, windowYear) ? '1' : '0';
}
