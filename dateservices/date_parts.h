// What the services work on: the parts of a date, the eras, and the statuses that scanner,
// validator and writer have in common.
#pragma once

#include <cstdint>

#include "calendar/calendar.h"
#include "dateservices/picture.h"
#include "kvr2/dateservices.h"

namespace dates {

struct DateParts {
    EraKind eraKind;
    int32_t year; // in an era, the era's year until the validator has seen it
    int32_t month, day, dayOfYear;
    int32_t hour, minute, second, millisecond;
    int32_t halfOfDay; // kNoHalf once it has gone into the hour
    int32_t weekday;   // 1 Sunday to 7
    int32_t japaneseYear, japaneseMonth, japaneseDay, japaneseEra;
    int32_t chineseYear, chineseMonth, chineseDay, chineseEra;
};

enum HalfOfDay : int32_t { kNoHalf = 0, kMorning = 1, kAfternoon = 2 };

enum Status : int {
    kGood = 0,
    kBeyondCalendar = 1,
    kBadEraYear = 2,
    kUnknownEra = 3,
    kBadDay = 4,
    kCut = 4, // of the writer
    kBadMonth = 8,
    kBadHour = 9,
    kBadMinute = 10,
    kBadSecond = 11,
    kNoEraForDate = 14,
    kBadText = 16,
    kBeforeCalendar = 16, // of the validator
    kBadPicture = 24,
    kNoSuchEra = 26,
    kNotEnough = 32,
    kBadYear = 64,
    kTokenSet = 100
};

inline constexpr size_t kEraName = 7;
inline const char *eraName(const EraTable *table, uint32_t era)
{
    return reinterpret_cast<const char *>(table->eras + table->count) + kEraName * (era - 1);
}

// Bytes of an era's name without the blanks that pad it.
size_t eraNameLength(const char *name);

// The number of the era that a date lies in, or 0.
uint32_t eraOfDate(const EraTable *table, const DateParts &date);

inline int64_t lilianOf(const DateParts &date)
{
    int64_t number = date.dayOfYear ? calendar::dayNumber(date.year, 1, date.dayOfYear)
                                    : calendar::dayNumber(date.year, date.month, date.day);
    return number - calendar::kLilianBase;
}

// Year, month, day, day of the year and weekday.
void setDate(DateParts &parts, int64_t lilian);

// Reads a date under a picture, both cleared of blanks (see normalise). `eras` is null where the
// picture has none or none could be had.
Status scanDate(const char *date, const char *dateEnd, const char *picture, const char *pictureEnd, DateParts &parts,
                const EraTable *eras);

// Holds parts against the calendar and the eras; turns an era's year into the calendar's.
Status validateDate(DateParts &parts, const EraTable *eras);

inline constexpr size_t kOutput = 80;

// Writes parts under a picture into 80 bytes that are blank.
Status writeDate(char *out, const char *picture, const char *pictureEnd, const DateParts &parts, const EraTable *eras);

// Leading blanks away, a to z to upper case, each run of blanks to one "/", a last "/" away.
// Returns the end; `out` has room for `length` bytes.
char *normalise(const char *text, size_t length, char *out);

// The century of a year of two digits by the run unit's window; negative if there is no clock.
int32_t windowedYear(int32_t yy);

} // namespace dates
