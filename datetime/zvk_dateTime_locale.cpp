// Locales of date-time items: the run unit's table of them, and SET LOCALE. The texts of items are
// in locale_text.cpp.
//
// A program brings a table of the locales that it names. Init_Locale replaces each name by a
// descriptor that all programs of the run unit share; the descriptors hang in a tree, ordered by
// name. Each holds a name for every category, since SET LOCALE can change one category of the
// current locale alone.
#include <algorithm>
#include <cstdio>
#include <cstring>

#include "datetime/format_entries.h"
#include "datetime/locale_table.h"
#include "datetime/locale_text.h"
#include "datetime/move.h"
#include "frame/locale/locale_handles.h"
#include "frame/message_calls.h"
#include "frame/storage.h"
#include "kvr2/run_unit.h"

namespace {

constexpr int kRutLocaleWord = 7;
constexpr size_t kSlotText = ZVK_LOCALE_NAME - 1;

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

locale_t plainSideLocale() { return defaultLocale; }
LocaleInfo *currentLocaleInfo() { return &currentInfo; }

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
