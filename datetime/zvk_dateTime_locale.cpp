// Locales of date-time items: the run unit's table of them, SET LOCALE, and the way between a
// locale's text and ISO text.
//
// A program brings a table of the locales that it names. Init_Locale replaces each name by a
// descriptor that all programs of the run unit share; the descriptors hang in a tree, ordered by
// name. Each holds a name for every category, since SET LOCALE can change one category of the
// current locale alone.
//
// A text is read by the system's strptime under one locale and printed by strftime under another
// one.
#include <algorithm>
#include <cstdio>
#include <cstring>
#include <ctime>
#include <langinfo.h>

#include "datetime/format_entries.h"
#include "datetime/locale_text.h"
#include "datetime/move.h"
#include "frame/locale/locale_handles.h"
#include "frame/message_calls.h"
#include "frame/storage.h"
#include "kvr2/run_unit.h"

// An ISO date or time as a format.
FormatEntry kIsoDateEntries[5] = {
    {ZVK_FE_YEAR4_RAW, 0, 0}, {ZVK_FE_MINUS, 0, 0}, {ZVK_FE_MONTH, 0, 0}, {ZVK_FE_MINUS, 0, 0}, {ZVK_FE_DAY, 0, 0}};
FormatEntry kIsoTimeEntries[5] = {
    {ZVK_FE_HOUR24, 0, 0}, {ZVK_FE_PERIOD, 0, 0}, {ZVK_FE_MINUTE, 0, 0}, {ZVK_FE_PERIOD, 0, 0}, {ZVK_FE_SECOND, 0, 0}};

namespace {

constexpr uint32_t kUnknownLocale = 1000, kNoFormat = 1002;
constexpr int kRutLocaleWord = 7;
constexpr size_t kSlotText = ZVK_LOCALE_NAME - 1;
constexpr char kIsoDate[] = "%Y-%m-%d", kIsoTime[] = "%H.%M.%S";

enum Slot { kCtype, kNumeric, kTimeSlot, kCollate, kMonetary, kMessages, kAll, kTod, kNamedSlots };

// By the codes of SET LOCALE.
struct Category {
    int slot, system; // -1: the system has none
    const char *name;
};
constexpr Category kCategories[] = {
    {},
    {kAll, LC_ALL, "LC_ALL"},
    {kCollate, LC_COLLATE, "LC_COLLATE"},
    {kCtype, LC_CTYPE, "LC_CTYPE"},
    {kMessages, LC_MESSAGES, "LC_MESSAGES"},
    {kMonetary, LC_MONETARY, "LC_MONETARY"},
    {kNumeric, LC_NUMERIC, "LC_NUMERIC"},
    {kTimeSlot, LC_TIME, "LC_TIME"},
    {kTod, -1, "LC_TOD"},
};

locale_t defaultLocale; // "C", the ISO side of every translation
LocaleInfo currentInfo; // the current locale's; it is one

void putName(LocaleInfo *info, int slot, const char *name)
{
    char *to = info->names[slot];
    size_t length = strnlen(name, kSlotText);
    memcpy(to, name, length);
    memset(to + length, 0, ZVK_LOCALE_NAME - length);
}

TodInfo *newTodInfo()
{
    auto *info = static_cast<TodInfo *>(zvkCalloc(1, sizeof(TodInfo)));
    DATETIME_ASSERT(info != nullptr, "todInfo != ((void *)0)");
    info->zoneName = "";
    return info;
}

char *privateCopy(const char *text, int16_t length)
{
    if (length <= 0) return nullptr;
    auto *copy = static_cast<char *>(zvkAlloc(static_cast<uint64_t>(length) + 1));
    DATETIME_ASSERT(copy != nullptr, "copy != ((void *)0)");
    memcpy(copy, text, static_cast<size_t>(length));
    copy[length] = 0;
    return copy;
}

// The order of names: by their common length, then the shorter first.
int compareNames(const char *a, int aLength, const char *b, int bLength)
{
    int common = std::min(aLength, bLength);
    int sign = common > 0 ? memcmp(a, b, static_cast<size_t>(common)) : 0;
    return sign ? sign : aLength - bLength;
}

int compareLocales(const GeneratedLocaleInfo *wanted, const LocaleDescriptor *known)
{
    int sign = compareNames(wanted->localeName, wanted->localeNameLen, known->localeName, known->localeNameLen);
    if (sign) return sign;
    return compareNames(wanted->libraryName, wanted->libraryNameLen, known->libraryName, known->libraryNameLen);
}

LocaleDescriptor *runRutAddLocaleToRut(const GeneratedLocaleInfo *wanted)
{
    LocaleDescriptor **link = &rutLocaleTable()->localeTreeRoot;
    while (*link) {
        int sign = compareLocales(wanted, *link);
        if (sign == 0) return *link;
        link = sign < 0 ? &(*link)->left : &(*link)->right;
    }
    *link = runRutCreateLocaleDescriptor(wanted->localeName, wanted->libraryName, wanted->localeNameLen,
                                         wanted->libraryNameLen);
    return *link;
}

void runRutAddLocalesToRutFromMgt(MgtLocaleTable *mgtLocaleTablePtr)
{
    auto *slots = mgtLocaleTablePtr->generatedLocaleInfoPtrStruct;
    for (uint32_t i = 2; i < mgtLocaleTablePtr->mgtLocaleTableLength; i++) {
        DATETIME_ASSERT(
            slots[i].generatedLocaleInfoPtr != nullptr,
            "( (mgtLocaleTablePtr)-> generatedLocaleInfoPtrStruct[i].generatedLocaleInfoPtr ) != ((void *)0)");
        slots[i].generatedLocaleInfoPtr =
            runRutAddLocaleToRut(static_cast<const GeneratedLocaleInfo *>(slots[i].generatedLocaleInfoPtr));
    }
}

LocaleDescriptor *newDescriptor()
{
    auto *made = static_cast<LocaleDescriptor *>(zvkCalloc(1, sizeof(LocaleDescriptor)));
    DATETIME_ASSERT(made != nullptr, "localeDescriptorPtr != ((void *)0)");
    return made;
}

LocaleDescriptor *describeCurrentLocale()
{
    const char *name = zvkLocaleName(LC_ALL);
    LocaleDescriptor *current = newDescriptor();
    current->localeNameLen = static_cast<int16_t>(std::min<size_t>(strlen(name), INT16_MAX));
    current->localeName = privateCopy(name, current->localeNameLen);
    current->localeInfo = &currentInfo;
    for (const Category &category : kCategories)
        if (category.name && category.system >= 0 && category.slot != kAll)
            putName(&currentInfo, category.slot, zvkLocaleName(category.system));
    putName(&currentInfo, kAll, name);
    putName(&currentInfo, kTod, name);
    currentInfo.todInfo = newTodInfo();
    return current;
}

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
    DATETIME_ASSERT(type != ZVK_FE_LITERAL && type != ZVK_FE_CHAR, "! \"feLiteral\"");
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
    DATETIME_ASSERT(defaultLocale != nullptr, "defaultLocale != (locale_t)0");
    DATETIME_ASSERT(timeFDPtr->category != ctTIMESTAMP, "timeFDPtr->category != ctTIMESTAMP");
}

} // namespace

RutLocaleTable *rutLocaleTable() { return reinterpret_cast<RutLocaleTable *>(_Dmr_rut.words[kRutLocaleWord]); }

LocaleDescriptor *localeDescriptorFor(uint16_t localeIndex, const LocaleProgram *program)
{
    RutLocaleTable *rutLocaleTablePtr = rutLocaleTable();
    ASSERT_POINTER(rutLocaleTablePtr);
    if (localeIndex == 1) return rutLocaleTablePtr->currentLocaleDescriptorPtr;
    const LocaleProgram *owningMgtPtr = program;
    ASSERT_POINTER(owningMgtPtr);
    const MgtLocaleTable *mgtLocaleTablePtr = owningMgtPtr->mgtLocaleTablePtr;
    ASSERT_POINTER(mgtLocaleTablePtr);
    DATETIME_ASSERT(localeIndex >= 2 && localeIndex < mgtLocaleTablePtr->mgtLocaleTableLength,
                    "localeIndex < mgtLocaleTableLength");
    return static_cast<LocaleDescriptor *>(
        mgtLocaleTablePtr->generatedLocaleInfoPtrStruct[localeIndex].generatedLocaleInfoPtr);
}

LocaleDescriptor *runRutCreateLocaleDescriptor(const char *name, const char *library, int16_t nameLength,
                                               int16_t libraryNameLength)
{
    LocaleDescriptor *made = newDescriptor();
    if (nameLength <= 0) {
        DATETIME_ASSERT(libraryNameLength == 0, "libraryNameLength == 0");
        return made;
    }
    made->localeName = privateCopy(name, nameLength);
    made->localeNameLen = nameLength;
    made->libraryName = privateCopy(library, libraryNameLength);
    made->libraryNameLen = libraryNameLength;
    made->localeInfo = static_cast<LocaleInfo *>(zvkCalloc(1, sizeof(LocaleInfo)));
    DATETIME_ASSERT(made->localeInfo != nullptr, "localeInfo != ((void *)0)");
    locale_t testLocale = zvkTimeLocale(made->localeName);
    if (!testLocale) msg::unknownLocale(made->localeName);
    DATETIME_ASSERT(testLocale != nullptr, "testLocale != (locale_t)0");
    for (int slot = 0; slot < kNamedSlots; slot++) putName(made->localeInfo, slot, made->localeName);
    made->localeInfo->todInfo = newTodInfo();
    return made;
}

LocaleProgram *_zvkcDateTime_Init_Locale(LocaleProgram *owningMgtPtr)
{
    ASSERT_POINTER(owningMgtPtr);
    MgtLocaleTable *mgtLocaleTablePtr = owningMgtPtr->mgtLocaleTablePtr;
    ASSERT_POINTER(mgtLocaleTablePtr);
    DATETIME_ASSERT(owningMgtPtr->Run_mgtLocaleTableCopiedToRut == 0,
                    "( (owningMgtPtr) ->Run_mgtLocaleTableCopiedToRut ) == 0x00");
    if (!rutLocaleTable()) {
        auto *table = static_cast<RutLocaleTable *>(zvkCalloc(1, sizeof(RutLocaleTable)));
        DATETIME_ASSERT(table != nullptr, "rutLocaleTablePtr != ((void *)0)");
        table->defaultLocaleDescriptorPtr = runRutCreateLocaleDescriptor("POSIX", nullptr, 5, 0);
        defaultLocale = zvkPlainLocale();
        table->currentLocaleDescriptorPtr = describeCurrentLocale();
        _Dmr_rut.words[kRutLocaleWord] = reinterpret_cast<uint64_t>(table);
    }
    if (mgtLocaleTablePtr->mgtLocaleTableLength >= 2)
        mgtLocaleTablePtr->generatedLocaleInfoPtrStruct[1].generatedLocaleInfoPtr =
            rutLocaleTable()->defaultLocaleDescriptorPtr;
    runRutAddLocalesToRutFromMgt(mgtLocaleTablePtr);
    owningMgtPtr->Run_mgtLocaleTableCopiedToRut = 1;
    return owningMgtPtr;
}

// ---- SET LOCALE

// The present name of a category. That of all of them is the one of LC_CTYPE; on purpose.
static void saveName(const LocaleInfo *info, uint32_t category, char *saveTo, uint32_t saveLength)
{
    int slot = category == ZVK_LC_ALL ? kCtype : kCategories[category].slot;
    const char *name = info->names[slot];
    if (*name == 0 || strcmp(name, "C") == 0 || strcmp(name, "POSIX") == 0) name = "DEFAULT";
    copyPadded(name, strlen(name), saveTo, saveLength);
}

static void setCategory(LocaleInfo *info, uint32_t code, const char *name)
{
    const Category &category = kCategories[code];
    if (code == ZVK_LC_ALL) {
        // The first slot, LC_CTYPE, keeps its name; on purpose.
        for (int slot = 1; slot < ZVK_LOCALE_SLOTS; slot++) putName(info, slot, name);
    } else {
        putName(info, category.slot, name);
    }
    if (category.system < 0 || zvkSetLocale(category.system, name)) return;
    msg::refusedLocale(category.name, name);
    DATETIME_ASSERT(false, "setlocale(category, newLocaleName) != ((void *)0)");
}

const char *_zvkcDateTime_Set_Locale(int32_t numberOfCategories, const uint32_t *categoryPtr, char *saveTo,
                                     uint32_t saveLength, char *saveLibrary, uint32_t saveLibraryLength,
                                     int32_t fromLocaleId, const char *newLocaleName, uint32_t newNameLength,
                                     LocaleProgram *program)
{
    DATETIME_ASSERT(numberOfCategories > 0, "numberOfCategories > 0");
    ASSERT_POINTER(categoryPtr);
    RutLocaleTable *rutLocaleTablePtr = rutLocaleTable();
    ASSERT_POINTER(rutLocaleTablePtr);
    LocaleDescriptor *currentLocaleDescriptorPtr = rutLocaleTablePtr->currentLocaleDescriptorPtr;
    ASSERT_POINTER(currentLocaleDescriptorPtr);
    ASSERT_POINTER(currentLocaleDescriptorPtr->localeInfo);
    LocaleInfo *info = currentLocaleDescriptorPtr->localeInfo;
    for (int32_t i = 0; i < numberOfCategories; i++)
        DATETIME_ASSERT(categoryPtr[i] >= ZVK_LC_ALL && categoryPtr[i] <= ZVK_LC_TOD, "! \"category\"");

    if (saveTo) {
        DATETIME_ASSERT(numberOfCategories == 1, "numberOfCategories == 1");
        saveName(info, *categoryPtr, saveTo, saveLength);
    }
    if (saveLibrary) memset(saveLibrary, ' ', saveLibraryLength);
    const char *present = info->names[kCategories[*categoryPtr].slot];
    if (fromLocaleId == ZVK_LOCALE_SAVE_ONLY) return present;

    char name[kLocaleArea];
    if (fromLocaleId == ZVK_LOCALE_BY_NAME) {
        ASSERT_POINTER(newLocaleName);
        size_t length = std::min<size_t>(newNameLength, sizeof name - 1);
        while (length && newLocaleName[length - 1] == ' ') length--;
        memcpy(name, newLocaleName, length);
        name[length] = 0;
    } else {
        const LocaleDescriptor *from = rutLocaleTablePtr->defaultLocaleDescriptorPtr;
        if (fromLocaleId != ZVK_LOCALE_DEFAULT) {
            DATETIME_ASSERT(fromLocaleId >= 2, "fromLocaleId >= 2");
            from = localeDescriptorFor(static_cast<uint16_t>(fromLocaleId), program);
        }
        snprintf(name, sizeof name, "%s", from->localeName ? from->localeName : "");
    }
    for (int32_t i = 0; i < numberOfCategories; i++) setCategory(info, categoryPtr[i], name);
    return present;
}

// ---- formats and translations

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
        size_t length = print(area, isoFormat(timeFDPtr), parts, defaultLocale);
        memcpy(newTimePtr, area, length);
        memset(newTimePtr + length, ' ', kLocaleArea - length);
        return read;
    }
    Translation t{item.text, item.text + item.length, newTimePtr, 0, useLocale, defaultLocale, nullptr, 0, true};
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
        strptime_l(iso.text, isoFormat(newTimeFDPtr), &parts, defaultLocale);
        length = print(area, newTimeFDPtr->formatLiteralPtr, parts, useLocale);
    } else {
        DATETIME_ASSERT(newTimeFDPtr->formatEntriesPtr != nullptr,
                        "( (newTimeFDPtr) -> formatEntriesPtr) != ((void *)0)");
        DATETIME_ASSERT(newTimeFDPtr->numberOfEntries > 0, "( (newTimeFDPtr) -> numberOfEntries) > 0");
        ItemText iso(timePtr, newTimeFDPtr->storageLength);
        Translation t{iso.text, iso.text + iso.length, area, 0, defaultLocale, useLocale, nullptr, 0, true};
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
        const LocaleInfo *info = fd->hasLocale == 1 ? localeInfoFor(fd, program) : &currentInfo;
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
