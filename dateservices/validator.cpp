// Holds a date against the calendar, and an era's date against its era.
#include "dateservices/date_parts.h"

namespace dates {
namespace {

// A month and day as one number.
constexpr uint32_t inYear(uint32_t month, uint32_t day) { return month * 100 + day; }

Status validateEra(DateParts &parts, const EraTable *eras)
{
    bool japanese = parts.eraKind == kJapanese;
    int32_t number = japanese ? parts.japaneseEra : parts.chineseEra;
    if (!eras || number < 1 || static_cast<uint32_t>(number) > eras->count) return kNoSuchEra;
    const Era &era = eras->eras[number - 1];
    auto eraYear = static_cast<uint32_t>(parts.year);
    if (eraYear < 1 || eraYear > era.lengthInYears) return kBadEraYear;

    (japanese ? parts.japaneseYear : parts.chineseYear) = parts.year;
    parts.year = static_cast<int32_t>(era.startYear + eraYear - 1);
    calendar::Date date{parts.year, parts.month, parts.day};
    if (parts.dayOfYear) date = calendar::dateOfDay(parts.year, parts.dayOfYear);
    auto month = static_cast<uint32_t>(date.month), day = static_cast<uint32_t>(date.day);
    (japanese ? parts.japaneseMonth : parts.chineseMonth) = date.month;
    (japanese ? parts.japaneseDay : parts.chineseDay) = date.day;

    if (eraYear == 1 && month < era.startMonth) return kBadMonth;
    if (eraYear == 1 && month == era.startMonth && day < era.startDay) return kBadDay;
    if (eraYear == era.lengthInYears && static_cast<uint32_t>(number) < eras->count) {
        const Era &next = (&era)[1];
        auto year = static_cast<uint32_t>(parts.year);
        if (year > next.startYear) return kBadDay;
        if (year == next.startYear && inYear(month, day) >= inYear(next.startMonth, next.startDay)) return kBadDay;
    }
    return kGood;
}

} // namespace

Status validateDate(DateParts &parts, const EraTable *eras)
{
    if (parts.eraKind != kNoEra) {
        Status status = validateEra(parts, eras);
        if (status != kGood) return status;
    }
    if (parts.year < calendar::kFirstLilianYear || parts.year > calendar::kLastYear) return kBeyondCalendar;
    if (parts.dayOfYear) {
        if (parts.dayOfYear < 1 || parts.dayOfYear > calendar::yearLength(parts.year)) return kBadDay;
    } else {
        if (parts.month < 1 || parts.month > 12) return kBadMonth;
        if (!calendar::isDate(parts.year, parts.month, parts.day)) return kBadDay;
    }
    return parts.year == calendar::kFirstLilianYear && lilianOf(parts) < 1 ? kBeforeCalendar : kGood;
}

void setDate(DateParts &parts, int64_t lilian)
{
    calendar::Date date = calendar::dateOf(lilian + calendar::kLilianBase);
    parts.year = date.year;
    parts.month = date.month;
    parts.day = date.day;
    parts.dayOfYear = calendar::dayOfYear(date.year, date.month, date.day);
    parts.weekday = calendar::weekday(lilian + calendar::kLilianBase) + 1;
}

} // namespace dates
