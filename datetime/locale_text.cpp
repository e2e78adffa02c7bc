// Items that are tied to a locale: the way between a locale's text and ISO text.
//
// A text is read by the system's strptime under one locale and printed by strftime under another
// one. A format that the locale itself gives is read as a whole; one of entries element by element,
// as each element's text may have another length in the other locale.
#include <algorithm>
#include <cstring>
#include <ctime>
#include <langinfo.h>

#include "datetime/format_entries.h"
#include "datetime/locale_table.h"
#include "datetime/locale_text.h"
#include "datetime/move.h"
#include "frame/locale/locale_handles.h"
#include "frame/message_calls.h"

// An ISO date or time as a format.
FormatEntry kIsoDateEntries[5] = {
    {ZVK_FE_YEAR4_RAW, 0, 0}, {ZVK_FE_MINUS, 0, 0}, {ZVK_FE_MONTH, 0, 0}, {ZVK_FE_MINUS, 0, 0}, {ZVK_FE_DAY, 0, 0}};
FormatEntry kIsoTimeEntries[5] = {
    {ZVK_FE_HOUR24, 0, 0}, {ZVK_FE_PERIOD, 0, 0}, {ZVK_FE_MINUTE, 0, 0}, {ZVK_FE_PERIOD, 0, 0}, {ZVK_FE_SECOND, 0, 0}};

namespace {

constexpr uint32_t kUnknownLocale = 1000, kNoFormat = 1002;
constexpr char kIsoDate[] = "%Y-%m-%d", kIsoTime[] = "%H.%M.%S";

const LocaleInfo *localeInfoFor(const FD *fd, const LocaleProgram *program)
{
    return localeDescriptorFor(fd->localeIndex, program)->localeInfo;
}

// The locale of an item's texts; the run unit stops if the system does not know it.
locale_t openLocale(const FD *fd, const LocaleProgram *program, uint32_t message)
{
    const char *name = localeInfoFor(fd, program)->names[kTimeSlot];
    locale_t useLocale = zvkTimeLocale(name);
    if (!useLocale && message == kNoFormat) msg::noLocaleFormat(fd->category == ctDATE ? "DATE" : "TIME", name);
    if (!useLocale && message == kUnknownLocale) msg::unknownLocale(name);
    DATETIME_ASSERT(useLocale != nullptr, "useLocale != (locale_t)0");
    return useLocale;
}

const char *isoFormat(const FD *fd) { return fd->category == ctDATE ? kIsoDate : kIsoTime; }

// ---- a format of entries, element by element

// What strptime and strftime call an entry; null for one that is copied as it is. The century's is
// none that they know, so that such an item never reads; on purpose.
const char *elementFormat(uint32_t type)
{
    switch (type) {
    case ZVK_FE_DAY:
        return "%d";
    case ZVK_FE_DAY_OF_YEAR:
        return "%j";
    case ZVK_FE_MONTH:
        return "%m";
    case ZVK_FE_YEAR2:
        return "%y";
    case ZVK_FE_YEAR4:
        return "%Y";
    case ZVK_FE_HOUR24:
        return "%H";
    case ZVK_FE_HOUR12:
        return "%I";
    case ZVK_FE_MINUTE:
        return "%M";
    case ZVK_FE_SECOND:
        return "%S";
    case ZVK_FE_CENTURY:
        return "@C";
    case ZVK_FE_TIME24_SHORT:
        return "%R";
    case ZVK_FE_DATE_SHORT:
        return "%D";
    case ZVK_FE_TIME12:
        return "%r";
    default:
        return nullptr;
    }
}

struct Translation {
    const char *at, *end; // of the source, which is terminated
    char *out;            // room for kLocaleArea bytes
    uint32_t length;
    locale_t from, to;
    const char *hourText; // of a 12-hour field that waits for its half
    uint32_t hourOut;
    bool good;

    void add(const char *text, size_t count)
    {
        count = std::min<size_t>(count, kLocaleArea - length);
        memcpy(out + length, text, count);
        length += static_cast<uint32_t>(count);
    }
};

size_t print(char (&area)[kLocaleArea], const char *format, const tm &parts, locale_t locale)
{
    return strftime_l(area, sizeof area, format, &parts, locale);
}

// One element; false if it cannot be read.
bool translateElement(Translation &t, const char *format)
{
    tm parts{};
    const char *behind = strptime_l(t.at, format, &parts, t.from);
    if (!behind) return false;
    char area[kLocaleArea];
    if (strcmp(format, "%I") == 0) {
        t.hourText = t.at;
        t.hourOut = t.length;
    }
    t.add(area, print(area, format, parts, t.to));
    t.at = behind;
    return true;
}

// The hour alone does not tell the half of the day: both texts are joined and read again, the hour
// is put where it was, and the half is written in its own place.
bool translateHalf(Translation &t)
{
    tm parts{};
    const char *behind = strptime_l(t.at, "%p", &parts, t.from);
    if (!behind) return false;
    if (t.hourText) {
        char joined[kLocaleArea];
        size_t half = std::min<size_t>(static_cast<size_t>(behind - t.at), sizeof joined - 3);
        memcpy(joined, t.hourText, 2);
        memcpy(joined + 2, t.at, half);
        joined[2 + half] = 0;
        size_t hourDigits = isDigit(joined[1]) ? 2 : 1;
        if (hourDigits == 1) memmove(joined + 1, joined + 2, half + 1);
        parts = tm{};
        if (!strptime_l(joined, "%I%p", &parts, t.from)) return false;
        char area[kLocaleArea];
        size_t count = print(area, "%I", parts, t.to);
        if (t.hourOut + count <= kLocaleArea) memcpy(t.out + t.hourOut, area, count);
    }
    const char *half = nl_langinfo_l(parts.tm_hour < 12 ? AM_STR : PM_STR, t.to);
    t.add(half, strlen(half));
    t.at = behind;
    return true;
}

bool translateEntry(Translation &t, const FormatEntry *entry)
{
    uint32_t type = entry->entryType;
    DATETIME_ASSERT(isEntryOf(kTextEntries | kDateEntries | kTimeEntries, type), "! \"entryType\"");
    DATETIME_ASSERT(type != ZVK_FE_LITERAL, "! \"feLiteral\"");
    if (type == ZVK_FE_AM_PM || type == ZVK_FE_AM_PM_LOCALE) return translateHalf(t);
    if (const char *format = elementFormat(type)) return translateElement(t, format);
    size_t width = std::min<size_t>(kEntryWidth[type], static_cast<size_t>(t.end - t.at));
    t.add(t.at, width);
    t.at += width;
    return true;
}

// Through the entries, or the source's end. Returns whether all could be read.
bool translateEntries(Translation &t, const FD *fd)
{
    for (int i = 0; i < fd->numberOfEntries && t.at < t.end; i++)
        if (!translateEntry(t, fd->formatEntriesPtr + i)) return false;
    return true;
}

// An item as a terminated text.
struct ItemText {
    char text[kLocaleArea];
    uint32_t length;
    ItemText(const char *item, uint32_t storage) : length(std::min(storage, kLocaleArea - 1))
    {
        memcpy(text, item, length);
        text[length] = 0;
    }
};

void checkTranslation(const char *timePtr, const FD *timeFDPtr)
{
    ASSERT_POINTER(timePtr);
    ASSERT_POINTER(timeFDPtr);
    DATETIME_ASSERT(timeFDPtr->hasLocale == 1, "( (timeFDPtr) -> hasLocale) == 1");
    DATETIME_ASSERT(plainSideLocale() != nullptr, "defaultLocale != (locale_t)0");
    DATETIME_ASSERT(timeFDPtr->category != ctTIMESTAMP, "timeFDPtr->category != ctTIMESTAMP");
}

} // namespace

void DateTime_updateFormatFromLocale(FD *fd, const LocaleProgram *program)
{
    DATETIME_ASSERT(fd->category == ctDATE || fd->category == ctTIME,
                    "timeFDPtr->category == ctDATE || timeFDPtr->category == ctTIME");
    locale_t useLocale = openLocale(fd, program, kNoFormat);
    fd->formatLiteralPtr = nl_langinfo_l(fd->category == ctDATE ? D_FMT : T_FMT, useLocale);
    fd->formatIsStrptime = 1;
    fd->formatUpdated = 1;
}

void DateTime_updateFormatToISO(FD *fd)
{
    DATETIME_ASSERT(fd->category == ctDATE || fd->category == ctTIME,
                    "timeFDPtr->category == ctDATE || timeFDPtr->category == ctTIME");
    bool date = fd->category == ctDATE;
    fd->formatEntriesPtr = date ? kIsoDateEntries : kIsoTimeEntries;
    fd->numberOfEntries = 5;
    fd->formatLiteralPtr = isoFormat(fd);
    fd->storageLength = date ? 10 : 8;
    fd->diffLength.actualLength = date ? 10 : 8;
    fd->hasLocale = 1;
    fd->formatIsStrptime = 0;
}

bool DateTime_convertDateTimeFromLocale(const char *timePtr, const FD *timeFDPtr, char *newTimePtr,
                                        const LocaleProgram *program)
{
    checkTranslation(timePtr, timeFDPtr);
    locale_t useLocale = openLocale(timeFDPtr, program, kUnknownLocale);
    ItemText item(timePtr, timeFDPtr->storageLength);
    if (timeFDPtr->formatIsStrptime) {
        tm parts{};
        bool read = strptime_l(item.text, timeFDPtr->formatLiteralPtr, &parts, useLocale);
        char area[kLocaleArea];
        size_t length = print(area, isoFormat(timeFDPtr), parts, plainSideLocale());
        memcpy(newTimePtr, area, length);
        memset(newTimePtr + length, ' ', kLocaleArea - length);
        return read;
    }
    Translation t{item.text, item.text + item.length, newTimePtr, 0, useLocale, plainSideLocale(), nullptr, 0, true};
    bool read = translateEntries(t, timeFDPtr);
    memset(newTimePtr + t.length, ' ', kLocaleArea - t.length);
    return read;
}

uint32_t DateTime_convertDateTimeToLocale(const char *timePtr, char *newTimePtr, const FD *newTimeFDPtr,
                                          const LocaleProgram *program)
{
    checkTranslation(timePtr, newTimeFDPtr);
    ASSERT_POINTER(newTimePtr);
    DATETIME_ASSERT(newTimeFDPtr->formatLiteralPtr != nullptr, "( (newTimeFDPtr) -> formatLiteralPtr) != ((void *)0)");
    locale_t useLocale = openLocale(newTimeFDPtr, program, kUnknownLocale);
    char area[kLocaleArea];
    size_t length = 0;
    if (newTimeFDPtr->formatIsStrptime) {
        ItemText iso(timePtr, newTimeFDPtr->category == ctDATE ? 10 : 8);
        tm parts{};
        strptime_l(iso.text, isoFormat(newTimeFDPtr), &parts, plainSideLocale());
        length = print(area, newTimeFDPtr->formatLiteralPtr, parts, useLocale);
    } else {
        DATETIME_ASSERT(newTimeFDPtr->formatEntriesPtr != nullptr,
                        "( (newTimeFDPtr) -> formatEntriesPtr) != ((void *)0)");
        DATETIME_ASSERT(newTimeFDPtr->numberOfEntries > 0, "( (newTimeFDPtr) -> numberOfEntries) > 0");
        ItemText iso(timePtr, newTimeFDPtr->storageLength);
        Translation t{iso.text, iso.text + iso.length, area, 0, plainSideLocale(), useLocale, nullptr, 0, true};
        translateEntries(t, newTimeFDPtr);
        length = t.length;
    }
    size_t copied = std::min<size_t>(length, newTimeFDPtr->storageLength);
    memcpy(newTimePtr, area, copied);
    memset(newTimePtr + copied, ' ', newTimeFDPtr->storageLength - copied);
    return static_cast<uint32_t>(length);
}

void DateTime_retrieveTimeZoneDifference(const char *sender, const FD *senderFD, char *out, const FD *receiverFD,
                                         int16_t windowYear, const LocaleProgram *program, NewCallInfo newCallInfo)
{
    constexpr int32_t kDayMinutes = 1440;
    auto offsetOf = [program](const FD *fd) {
        const LocaleInfo *info = fd->hasLocale == 1 ? localeInfoFor(fd, program) : currentLocaleInfo();
        return info->todInfo ? static_cast<int32_t>(info->todInfo->utcOffset) : 0;
    };
    int64_t difference = (int64_t{offsetOf(receiverFD)} - offsetOf(senderFD)) % kDayMinutes;
    DurationEntry duration{duMinutes, static_cast<int32_t>(difference)};
    if (difference > 0)
        _zvkcDateTime_Add_Duration(sender, senderFD, out, 2, &duration, windowYear, newCallInfo);
    else if (difference < 0)
        _zvkcDateTime_Sub_Duration(sender, senderFD, out, 2, &duration, windowYear, newCallInfo);
    else
        memmove(out, sender, senderFD->storageLength);
}
