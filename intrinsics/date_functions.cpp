// FUNCTION CURRENT-DATE, INTEGER-OF-DATE and its like, and the windows of two-digit years.
//
// A valid argument is one step to a day number of the calendar and one back. What is not valid is
// reported, and if the message lets the program go on, the same steps run on the number as it is:
// the calendar takes any.
#include <cstring>

#include "calendar/calendar.h"
#include "calendar/clock.h"
#include "calendar/decimal_text.h"
#include "frame/message_calls.h"
#include "kvr2/date_functions.h"

namespace {

constexpr int32_t kLowestWindow = 1699, kHighestWindow = 10000;

bool inYears(int32_t year) { return year >= calendar::kFirstIntegerYear && year <= calendar::kLastYear; }

void checkDayNumber(int32_t dayNumber, const char *function)
{
    if (dayNumber < 1 || dayNumber > calendar::kLastInteger) msg::dayNumberOutOfRange(function);
}

// The year that a window of `window` years ends in.
int64_t windowEnd(int32_t window, const char *function)
{
    char now[21];
    _zvkCurrentDate(now);
    int64_t end = (now[0] & 15) * 1000 + (now[1] & 15) * 100 + (now[2] & 15) * 10 + (now[3] & 15);
    end += window;
    if (end < kLowestWindow || end > kHighestWindow)
        msg::yearWindowOutOfRange(function, window, static_cast<int32_t>(end));
    return end;
}

// The year with the last two digits `yy` in the hundred years up to `end`.
int64_t yearInWindow(int64_t end, int32_t yy)
{
    int64_t century = end / 100 * 100;
    if (end % 100 < yy) century -= 100;
    return century + yy;
}

void putYear(char *destination, int64_t year) { calendar::putDigits(destination, 4, static_cast<uint64_t>(year)); }

} // namespace

void _zvkCurrentDate(char *buffer)
{
    calendar::ClockReading now;
    if (!calendar::readClock(now)) {
        memset(buffer, '0', 21);
        buffer[16] = '+';
        return;
    }
    putYear(buffer, calendar::yearOf(now.local));
    const int fields[] = {now.local.tm_mon + 1, now.local.tm_mday, now.local.tm_hour,
                          now.local.tm_min,     now.local.tm_sec,  now.microseconds / 10000};
    for (int i = 0; i < 6; i++) calendar::putDigits(buffer + 4 + 2 * i, 2, static_cast<uint64_t>(fields[i]));

    // Summer time moves the offset away from zero, also where the clock moves towards it; programs
    // know it so.
    int32_t west = now.zoneMinutes;
    if (now.local.tm_isdst > 0) west += west < 0 ? -60 : 60;
    buffer[16] = west <= 0 ? '+' : '-';
    auto magnitude = static_cast<uint64_t>(west < 0 ? -west : west);
    calendar::putDigits(buffer + 17, 2, magnitude / 60);
    calendar::putDigits(buffer + 19, 2, magnitude % 60);
}

int32_t _zvkIntegerOfDate(int32_t date)
{
    int32_t year = date / 10000, month = date / 100 % 100, day = date % 100;
    if (!inYears(year) || !calendar::isDate(year, month, day)) {
        msg::dateOutOfRange("INTEGER-OF-DATE");
        if (month < 1 || month > 12) return 0;
    }
    return static_cast<int32_t>(calendar::dayNumber(year, month, day) - calendar::kIntegerBase);
}

int32_t _zvkIntegerOfDay(int32_t day)
{
    int32_t year = day / 1000, ofYear = day % 1000;
    if (!inYears(year) || ofYear < 1 || ofYear > calendar::yearLength(year)) msg::dayOutOfRange("INTEGER-OF-DAY");
    return static_cast<int32_t>(calendar::dayNumber(year, 1, ofYear) - calendar::kIntegerBase);
}

int32_t _zvkDateOfInteger(int32_t dayNumber)
{
    checkDayNumber(dayNumber, "DATE-OF-INTEGER");
    calendar::Date date = calendar::dateOf(dayNumber + calendar::kIntegerBase);
    return static_cast<int32_t>(int64_t{date.year} * 10000 + date.month * 100 + date.day);
}

int32_t _zvkDayOfInteger(int32_t dayNumber)
{
    checkDayNumber(dayNumber, "DAY-OF-INTEGER");
    calendar::Date date = calendar::dateOf(dayNumber + calendar::kIntegerBase);
    return static_cast<int32_t>(int64_t{date.year} * 1000 + calendar::dayOfYear(date.year, date.month, date.day));
}

void _zvkYearToYYYY(int32_t yy, int32_t window, char *destination, const char *functionName)
{
    putYear(destination, yearInWindow(windowEnd(window, functionName), yy));
}

void _zvkDayToYYYYDDD(int32_t yyddd, int32_t window, char *destination)
{
    putYear(destination, yearInWindow(windowEnd(window, "DAY-TO-YYYYDDD"), yyddd / 1000));
    calendar::putDigits(destination + 4, 3, static_cast<uint64_t>(yyddd % 1000));
}

void _zvkDateToYYYYMMDD(int32_t yymmdd, int32_t window, char *destination)
{
    putYear(destination, yearInWindow(windowEnd(window, "DATE-TO-YYYYMMDD"), yymmdd / 10000));
    calendar::putDigits(destination + 4, 4, static_cast<uint64_t>(yymmdd % 10000));
}
