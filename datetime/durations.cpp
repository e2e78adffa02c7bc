// Durations: adding and subtracting them, and the duration between two items.
//
// The work is on the fields of the system form. Carries are divisions and steps of the calendar's
// day numbers, whatever the size of the duration: nothing counts months or days one by one.
//
//     31 January 2026 + 1 month            28 February 2026
//     31 December 2026 23:59:59 + 1 second 1 January 2027
#include <cstdio>
#include <cstring>

#include "calendar/calendar.h"
#include "datetime/assertion.h"
#include "datetime/compare_extract.h"
#include "datetime/durations.h"
#include "datetime/range_check.h"

namespace {

constexpr int64_t kSecond = 1000000000000; // picoseconds
constexpr int64_t kMicrosecond = 1000000;
constexpr double kDaysOfYear = 365.25;

struct Fields {
    int64_t year = 0, month = 0, day = 0, hour = 0, minute = 0, second = 0, picoseconds = 0;
};

bool hasDate(uint32_t category) { return category != ctTIME; }

Fields readFields(const char *item, const FD *fd, int16_t windowYear)
{
    SystemForm form;
    itemToSystemForm(item, fd, form.text, windowYear, false);
    Fields fields;
    if (hasDate(fd->category)) {
        fields.year = DateTime_ATOL(form.text, 0, 4);
        fields.month = DateTime_ATOL(form.text, 5, 2);
        fields.day = DateTime_ATOL(form.text, 8, 2);
    }
    if (fd->category != ctDATE) {
        const char *time = form.text + (fd->category == ctTIMESTAMP ? kTimeInTimestamp : 0);
        fields.hour = DateTime_ATOL(time, 0, 2);
        fields.minute = DateTime_ATOL(time, 3, 2);
        fields.second = DateTime_ATOL(time, 6, 2);
        fields.picoseconds = DateTime_ATOL(time, 9, 12);
    }
    return fields;
}

void writeFields(const Fields &fields, char *item, const FD *fd, int16_t windowYear)
{
    char date[64], time[96];
    snprintf(date, sizeof date, "%04lld-%02lld-%02lld", static_cast<long long>(fields.year),
             static_cast<long long>(fields.month % 100), static_cast<long long>(fields.day % 100));
    snprintf(time, sizeof time, "%02lld:%02lld:%02lld.%012lld", static_cast<long long>(fields.hour % 100),
             static_cast<long long>(fields.minute % 100), static_cast<long long>(fields.second % 100),
             static_cast<long long>(fields.picoseconds));
    SystemForm form;
    if (hasDate(fd->category)) memcpy(form.text, date, kDateForm);
    if (fd->category == ctTIME) memcpy(form.text, time, kTimeForm);
    if (fd->category == ctTIMESTAMP) {
        form.text[kDateForm] = '-';
        memcpy(form.text + kTimeInTimestamp, time, kTimeForm);
    }
    systemFormToItem(form.text, item, fd, windowYear);
}

int32_t checkedMonthLength(const Fields &fields)
{
    DATETIME_ASSERT(fields.month >= 1 && fields.month <= 12, "month >= 1 && month <= 12");
    return calendar::monthLength(fields.year, fields.month);
}

// The day that so many days from the first of the month lead to.
void settleDay(Fields &fields)
{
    calendar::Date date = calendar::dateOf(calendar::dayNumber(fields.year, fields.month, 1) + fields.day - 1);
    fields.year = date.year;
    fields.month = date.month;
    fields.day = date.day;
}

void moveDays(Fields &fields, int64_t days, bool adding)
{
    fields.day += days;
    if (adding) {
        if (fields.day > checkedMonthLength(fields)) settleDay(fields);
        return;
    }
    if (fields.day > 0) return;
    // The day is one of the month before. How long the present month is does not matter, so that a
    // month 13 is no reason to stop.
    if (--fields.month == 0) {
        fields.month = 12;
        fields.year--;
    }
    fields.day += checkedMonthLength(fields);
    if (fields.day <= 0) settleDay(fields);
}

void moveMonths(Fields &fields, int64_t months, bool adding)
{
    fields.month += months;
    if (adding ? fields.month > 12 : fields.month <= 0) {
        int64_t years = calendar::floorDiv(fields.month - 1, 12);
        fields.month -= years * 12;
        fields.year += years;
    }
    int32_t length = checkedMonthLength(fields);
    if (fields.day > length) fields.day = length;
}

// What `value` is too many or too few of its unit, as a number of the next one.
int64_t carryOf(int64_t &value, int64_t unit, bool adding)
{
    if (adding ? value < unit : value >= 0) return 0;
    int64_t carry = calendar::floorDiv(value, unit);
    value -= carry * unit;
    return carry;
}

// Without a date to carry into, hours that are too many still raise the day, which counts for
// nothing in a TIME; hours that are too few do not lower it. On purpose.
void moveHours(Fields &fields, int64_t hours, bool adding, bool carry)
{
    fields.hour += hours;
    int64_t days = carryOf(fields.hour, 24, adding);
    if (days == 0) return;
    if (carry)
        moveDays(fields, days, adding);
    else if (adding)
        fields.day += days;
}

void moveMinutes(Fields &fields, int64_t minutes, bool adding, bool carry)
{
    fields.minute += minutes;
    if (int64_t hours = carryOf(fields.minute, 60, adding)) moveHours(fields, hours, adding, carry);
}

void moveSeconds(Fields &fields, int64_t seconds, bool adding, bool carry)
{
    fields.second += seconds;
    if (int64_t minutes = carryOf(fields.second, 60, adding)) moveMinutes(fields, minutes, adding, carry);
}

void movePicoseconds(Fields &fields, int64_t picoseconds, bool adding, bool carry)
{
    fields.picoseconds += picoseconds;
    if (int64_t seconds = carryOf(fields.picoseconds, kSecond, adding)) moveSeconds(fields, seconds, adding, carry);
}

void applyDuration(Fields &fields, const DurationEntry &duration, bool adding, bool carry)
{
    int64_t value = duration.value;
    if ((value < 0) == adding) value = -value; // the sign is the verb's
    switch (duration.unit) {
    case duYears:
        fields.year += value;
        break;
    case duMonths:
        moveMonths(fields, value, adding);
        break;
    case duDays:
        moveDays(fields, value, adding);
        break;
    case duHours:
        moveHours(fields, value, adding, carry);
        break;
    case duMinutes:
        moveMinutes(fields, value, adding, carry);
        break;
    case duSeconds:
        moveSeconds(fields, value, adding, carry);
        break;
    case duMicroseconds:
        movePicoseconds(fields, value * kMicrosecond, adding, carry);
        break;
    case duPicoseconds:
        DATETIME_ASSERT(!adding, "! \"duPicoseconds\"");
        movePicoseconds(fields, value, adding, carry);
        break;
    default:
        DATETIME_ASSERT(false, "! \"unit\"");
    }
    DATETIME_ASSERT(!adding || fields.year <= calendar::kLastYear, "year <= 9999");
}

struct Difference {
    int64_t years = 0, months = 0, days = 0, hours = 0, minutes = 0, seconds = 0, picoseconds = 0;
};

void borrow(int64_t &value, int64_t unit, int64_t &next)
{
    if (value >= 0) return;
    value += unit;
    next--;
}

// The later side less the earlier one, each field borrowing from the next.
Difference differenceOf(Fields later, const Fields &earlier, bool dates)
{
    int64_t laterDay = calendar::dayOfYear(later.year, later.month, later.day);
    int64_t earlierDay = calendar::dayOfYear(earlier.year, earlier.month, earlier.day);
    Difference result;
    result.picoseconds = later.picoseconds - earlier.picoseconds;
    borrow(result.picoseconds, kSecond, later.second);
    result.seconds = later.second - earlier.second;
    borrow(result.seconds, 60, later.minute);
    result.minutes = later.minute - earlier.minute;
    borrow(result.minutes, 60, later.hour);
    result.hours = later.hour - earlier.hour;
    if (!dates) return result;
    if (result.hours < 0) {
        result.hours += 24;
        laterDay--;
        later.day--;
    }
    result.months = later.month - earlier.month - (later.day < earlier.day);
    result.days = laterDay - earlierDay;
    if (result.days < 0 && result.months < 0) {
        later.year--;
        result.days += calendar::yearLength(later.year);
        result.months += 12;
    }
    result.years = later.year - earlier.year;
    return result;
}

double inUnit(const Difference &difference, uint32_t unit)
{
    auto years = static_cast<double>(difference.years);
    if (unit == duYears) return years;
    if (unit == duMonths) return static_cast<double>(difference.months) + years * 12.0;
    double value = static_cast<double>(difference.days) + years * kDaysOfYear;
    if (unit == duDays) return value;
    value = static_cast<double>(difference.hours) + value * 24.0;
    if (unit == duHours) return value;
    value = static_cast<double>(difference.minutes) + value * 60.0;
    if (unit == duMinutes) return value;
    value = static_cast<double>(difference.seconds) + value * 60.0;
    if (unit == duSeconds) return value;
    int64_t micros = difference.picoseconds / kMicrosecond; // whole ones
    if (unit == duMicroseconds) return static_cast<double>(micros) + value * 1e6;
    return static_cast<double>(difference.picoseconds) + value * 1e12;
}

} // namespace

void moveByDurations(const char *source, const FD *fd, char *receiver, uint32_t words, const DurationEntry *durations,
                     int16_t windowYear, bool adding)
{
    Fields fields = readFields(source, fd, windowYear);
    bool carry = fd->category == ctTIMESTAMP;
    for (uint64_t i = 0; i < (uint64_t{words} + 1) / 2; i++) applyDuration(fields, durations[i], adding, carry);
    writeFields(fields, receiver, fd, windowYear);
}

int32_t durationBetween(const char *lhs, const FD *lhsFD, const char *rhs, const FD *rhsFD, uint32_t unit,
                        int16_t windowYear)
{
    DATETIME_ASSERT(unit >= duYears && unit <= duPicoseconds, "! \"unit\"");
    bool swapped = compareItems(lhs, rhs, lhsFD, rhsFD, windowYear) < 0;
    Fields left = readFields(lhs, lhsFD, windowYear), right = readFields(rhs, rhsFD, windowYear);
    bool dates = hasDate(lhsFD->category) && hasDate(rhsFD->category);
    double value = inUnit(swapped ? differenceOf(right, left, dates) : differenceOf(left, right, dates), unit);
    auto low = static_cast<uint32_t>(static_cast<__int128>(value));
    return static_cast<int32_t>(swapped ? 0 - low : low);
}

static void byDurations(const char *sourcePtr, const FD *sourceFDPtr, char *receiverPtr, uint32_t count,
                        const DurationEntry *durationPtr, int16_t windowYear, NewCallInfo newCallInfo, bool adding)
{
    ASSERT_POINTER(sourcePtr);
    ASSERT_POINTER(sourceFDPtr);
    ASSERT_POINTER(receiverPtr);
    ASSERT_POINTER(durationPtr);
    ASSERT_DATE_TIME(sourceFDPtr);
    if (newCallInfo.rangeCheck == 1) rangeCheckItem(sourcePtr, sourceFDPtr, windowYear);
    moveByDurations(sourcePtr, sourceFDPtr, receiverPtr, count, durationPtr, windowYear, adding);
}

void _zvkcDateTime_Add_Duration(const char *source, const FD *sourceFD, char *receiver, uint32_t count,
                                const DurationEntry *durations, int16_t windowYear, NewCallInfo newCallInfo)
{
    byDurations(source, sourceFD, receiver, count, durations, windowYear, newCallInfo, true);
}

void _zvkcDateTime_Sub_Duration(const char *source, const FD *sourceFD, char *receiver, uint32_t count,
                                const DurationEntry *durations, int16_t windowYear, NewCallInfo newCallInfo)
{
    byDurations(source, sourceFD, receiver, count, durations, windowYear, newCallInfo, false);
}

int32_t _zvkcDateTime_Find_Duration(const char *lhsPtr, const FD *lhsFDPtr, const char *rhsPtr, const FD *rhsFDPtr,
                                    uint32_t unit, int16_t windowYear, NewCallInfo newCallInfo)
{
    ASSERT_POINTER(lhsPtr);
    ASSERT_POINTER(lhsFDPtr);
    ASSERT_POINTER(rhsPtr);
    ASSERT_POINTER(rhsFDPtr);
    ASSERT_DATE_TIME(lhsFDPtr);
    ASSERT_DATE_TIME(rhsFDPtr);
    if (newCallInfo.rangeCheck == 1) {
        rangeCheckItem(lhsPtr, lhsFDPtr, windowYear);
        rangeCheckItem(rhsPtr, rhsFDPtr, windowYear);
    }
    return durationBetween(lhsPtr, lhsFDPtr, rhsPtr, rhsFDPtr, unit, windowYear);
}
