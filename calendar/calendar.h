// The Gregorian calendar, once for all rooms: leap years, months, and days as numbers.
//
// Everything here counts days from 1 March of the year 0, the day after a leap day: in a year that
// begins in March the leap day is the last one, so that the lengths of the months before a day
// follow one line,
//
//     days before month m (March is 0) = (153 * m + 2) / 5        0, 31, 61, 92, 122, 153, 184, 214, 245, 275, 306, 337
//
// and a number is taken apart by divisions alone, with no search and no loop. The families that
// number days from another one only subtract: kIntegerBase makes 1601-01-01 day 1, kLilianBase
// 1582-10-15.
//
//     calendar::dayNumber(2026, 12, 31) - calendar::kLilianBase        162246
//     calendar::dateOf(162246 + calendar::kLilianBase)                 {2026, 12, 31}
#pragma once

#include <cstdint>

namespace calendar {

inline constexpr int32_t kFirstLilianYear = 1582;
inline constexpr int32_t kFirstIntegerYear = 1601;
inline constexpr int32_t kLastYear = 9999;

struct Date {
    int32_t year, month, day;
};

constexpr int64_t floorDiv(int64_t a, int64_t b) { return a / b - (a % b != 0 && (a < 0) != (b < 0)); }

// Of the years that 4 divides, 25 divides those that 100 does, and 16 those of them that 400 does.
constexpr bool isLeapYear(int64_t year) { return (year & 3) == 0 && ((year & 15) == 0 || year % 25 != 0); }
constexpr int32_t yearLength(int64_t year) { return isLeapYear(year) ? 366 : 365; }

// Months of 31 days and of 30 as bits, January in bit 0.
inline constexpr uint32_t kLongMonths = 0xAD5, kShortMonths = 0x528;

// Days of a month; 0 for a month that does not exist.
constexpr int32_t monthLength(int64_t year, int64_t month)
{
    if (month < 1 || month > 12) return 0;
    uint32_t bit = 1u << (month - 1);
    if (kLongMonths & bit) return 31;
    return kShortMonths & bit ? 30 : isLeapYear(year) ? 29 : 28;
}

// Days of a common year before each month, the year's length last. From March on a leap year has
// one more.
inline constexpr int16_t kDaysBefore[13] = {0, 31, 59, 90, 120, 151, 181, 212, 243, 273, 304, 334, 365};

// 0 for a month that does not exist.
constexpr int32_t dayOfYear(int64_t year, int64_t month, int64_t day)
{
    if (month < 1 || month > 12) return 0;
    return static_cast<int32_t>(kDaysBefore[month - 1] + day + (month > 2 && isLeapYear(year)));
}

constexpr bool isDate(int64_t year, int64_t month, int64_t day) { return day >= 1 && day <= monthLength(year, month); }

// Days from 0000-03-01 to a day of a year and month; months 1 to 12, any year and day.
constexpr int64_t dayNumber(int64_t year, int64_t month, int64_t day)
{
    int64_t shifted = month > 2 ? year : year - 1;
    auto fromMarch = static_cast<uint32_t>(month > 2 ? month - 3 : month + 9);
    auto inYear = static_cast<int64_t>((153 * fromMarch + 2) / 5);
    if (shifted >= 0 && shifted < 1000000) { // the years that there are: short divisions
        auto y = static_cast<uint32_t>(shifted);
        uint32_t centuries = y / 100;
        return int64_t{y * 365 + y / 4 - centuries + centuries / 4} + inYear + day - 1;
    }
    return shifted * 365 + floorDiv(shifted, 4) - floorDiv(shifted, 100) + floorDiv(shifted, 400) + inYear + day - 1;
}

// The date of a day number, whatever the number.
constexpr Date dateOf(int64_t number)
{
    bool usual = number >= 0 && number < 400000000;
    int64_t era = usual ? static_cast<uint32_t>(number) / 146097 : floorDiv(number, 146097); // 400 years
    auto inEra = static_cast<uint32_t>(number - era * 146097);
    uint32_t yearOfEra = (inEra - inEra / 1460 + inEra / 36524 - inEra / 146096) / 365;
    uint32_t inYear = inEra - (365 * yearOfEra + yearOfEra / 4 - yearOfEra / 100);
    uint32_t fromMarch = (5 * inYear + 2) / 153;
    auto day = static_cast<int32_t>(inYear - (153 * fromMarch + 2) / 5 + 1);
    auto month = static_cast<int32_t>(fromMarch < 10 ? fromMarch + 3 : fromMarch - 9);
    return {static_cast<int32_t>(era * 400 + yearOfEra + (month <= 2)), month, day};
}

// The date of a day of a year, which may be up to 366 in any year: in a common one that is {year,
// 13, 1}, which no test takes for a date.
constexpr Date dateOfDay(int32_t year, int32_t day)
{
    int32_t leap = isLeapYear(year);
    if (leap && day == 60) return {year, 2, 29};
    if (leap && day > 60) day--;
    int32_t month = day / 30; // the month before, or the month itself
    if (day < 1 || month > 12) return {year, day < 1 ? 0 : 13, day < 1 ? 0 : day - kDaysBefore[12]};
    if (kDaysBefore[month] < day) month++;
    return {year, month, day - kDaysBefore[month - 1]};
}

// Day 1 is the day after the base.
inline constexpr int64_t kIntegerBase = dayNumber(1601, 1, 1) - 1;
inline constexpr int64_t kLilianBase = dayNumber(1582, 10, 15) - 1;
inline constexpr int32_t kLastInteger = static_cast<int32_t>(dayNumber(9999, 12, 31) - kIntegerBase);
inline constexpr int32_t kLastLilian = static_cast<int32_t>(dayNumber(9999, 12, 31) - kLilianBase);
static_assert(kLastInteger == 3067671 && kLastLilian == 3074324);

// 0 Sunday to 6 Saturday, of a day number that is not negative.
constexpr int32_t weekday(int64_t number) { return static_cast<int32_t>(static_cast<uint32_t>(number + 3) % 7); }
static_assert(weekday(kLilianBase + 1) == 5); // a Friday

} // namespace calendar
