// The verbs for items that are tied to a locale.
//
// Each side that has a locale becomes an ISO item: its text is translated and a copy of its
// descriptor is rewritten for the ISO layout. The plain verb does its work on the copies, and a
// result goes back into the locale's layout. A check of the sender is made on the ISO text, once.
#include <algorithm>
#include <cstdio>
#include <cstring>

#include "datetime/assertion.h"
#include "datetime/compare_extract.h"
#include "datetime/durations.h"
#include "datetime/locale_table.h"
#include "datetime/locale_text.h"
#include "datetime/move.h"
#include "datetime/range_check.h"
#include "frame/message_calls.h"

namespace {

constexpr char kCheckName[] = "Range_check_locale";

#define ASSERT_HAS_LOCALE(fd) DATETIME_ASSERT((fd)->hasLocale == 1, "( (" #fd ") -> hasLocale) == 1")
#define ASSERT_ONE_HAS_LOCALE(a, b)                                                                                    \
    DATETIME_ASSERT((a)->hasLocale == 1 || (b)->hasLocale == 1,                                                        \
                    "( (" #a ") -> hasLocale) == 1 || ( (" #b ") -> hasLocale) == 1")

// A timestamp has no locale form. Some verbs take it as it is, others stop.
enum class Stamps : bool { Refused, Plain };

bool isPlain(const FD *fd) { return fd->category == ctTIMESTAMP; }

// A side of a verb as the plain verbs take it: the item itself, or its ISO twin.
struct Side {
    const FD *given;
    FD fd;
    char area[kLocaleArea];
    bool translated = false, readable = true;

    explicit Side(FD *own, const LocaleProgram *program, Stamps stamps = Stamps::Refused) : given(own)
    {
        translated = own->hasLocale == 1 && !(stamps == Stamps::Plain && isPlain(own));
        if (translated && (!own->formatLiteralPtr || (own->formatIsStrptime && own->localeIndex == 1)))
            DateTime_updateFormatFromLocale(own, program);
        fd = *own;
        if (translated && own->formatIsStrptime) DateTime_updateFormatToISO(&fd);
        // The verb works in the area.
        if (translated && (fd.storageLength == 0 || fd.storageLength > kLocaleArea)) fd.storageLength = kLocaleArea;
    }

    // The text to read: what `item` holds.
    const char *read(const char *item, const LocaleProgram *program)
    {
        if (!translated) return item;
        readable = DateTime_convertDateTimeFromLocale(item, given, area, program);
        return area;
    }

    // Where the verb is to write a result for `item`.
    char *target(char *item) { return translated ? area : item; }

    // After that, the result into `item`.
    void finish(char *item, const LocaleProgram *program)
    {
        if (translated) DateTime_convertDateTimeToLocale(area, item, given, program);
    }

    void check(const char *text, int16_t windowYear, const NewCallInfo &newCallInfo) const
    {
        if (newCallInfo.rangeCheck != 1) return;
        if (!readable) __assert_fail("testResult == '1'", __FILE_NAME__, __LINE__, kCheckName);
        rangeCheckItem(text, &fd, windowYear, kCheckName);
    }
};

NewCallInfo withoutCheck(NewCallInfo newCallInfo)
{
    newCallInfo.rangeCheck = 0;
    return newCallInfo;
}

} // namespace

void _zvkcDateTime_Move_Locale(const char *senderPtr, char *receiverPtr, FD *senderFDPtr, FD *receiverFDPtr,
                               uint64_t reserved, int16_t windowYear, NewCallInfo newCallInfo, LocaleProgram *program)
{
    ASSERT_POINTER(senderPtr);
    ASSERT_POINTER(receiverPtr);
    ASSERT_POINTER(senderFDPtr);
    ASSERT_POINTER(receiverFDPtr);
    ASSERT_DATE_TIME(senderFDPtr);
    ASSERT_DATE_TIME(receiverFDPtr);
    ASSERT_ONE_HAS_LOCALE(senderFDPtr, receiverFDPtr);
    Side sender(senderFDPtr, program), receiver(receiverFDPtr, program);
    const char *from = sender.read(senderPtr, program);
    sender.check(from, windowYear, newCallInfo);
    _zvkcDateTime_Move(from, receiver.target(receiverPtr), &sender.fd, &receiver.fd, reserved, windowYear,
                       withoutCheck(newCallInfo));
    receiver.finish(receiverPtr, program);
}

void _zvkcDateTime_Edit_Locale(const char *senderPtr, char *receiverPtr, FD *receiverFDPtr, int32_t senderLength,
                               NewCallInfo newCallInfo, LocaleProgram *program)
{
    ASSERT_POINTER(senderPtr);
    ASSERT_POINTER(receiverPtr);
    ASSERT_POINTER(receiverFDPtr);
    ASSERT_DATE_TIME(receiverFDPtr);
    ASSERT_HAS_LOCALE(receiverFDPtr);
    Side receiver(receiverFDPtr, program);
    _zvkcDateTime_Edit(senderPtr, receiver.target(receiverPtr), &receiver.fd, senderLength, withoutCheck(newCallInfo));
    receiver.finish(receiverPtr, program);
}

void _zvkcDateTime_DeEdit_Locale(const char *senderPtr, char *receiverPtr, FD *senderFDPtr, int32_t receiverLength,
                                 int16_t windowYear, NewCallInfo newCallInfo, LocaleProgram *program)
{
    ASSERT_POINTER(senderPtr);
    ASSERT_POINTER(receiverPtr);
    ASSERT_POINTER(senderFDPtr);
    ASSERT_DATE_TIME(senderFDPtr);
    ASSERT_HAS_LOCALE(senderFDPtr);
    Side sender(senderFDPtr, program);
    const char *from = sender.read(senderPtr, program);
    sender.check(from, windowYear, newCallInfo);
    _zvkcDateTime_DeEdit(from, receiverPtr, &sender.fd, receiverLength, windowYear, withoutCheck(newCallInfo));
}

void _zvkcDateTime_Convert_Locale(const char *senderPtr, char *receiverPtr, FD *senderFDPtr, FD *receiverFDPtr,
                                  int32_t senderLength, NewCallInfo, LocaleProgram *program)
{
    ASSERT_POINTER(senderPtr);
    ASSERT_POINTER(receiverPtr);
    ASSERT_POINTER(senderFDPtr);
    ASSERT_POINTER(receiverFDPtr);
    ASSERT_DATE_TIME(receiverFDPtr);
    ASSERT_HAS_LOCALE(receiverFDPtr);
    Side receiver(receiverFDPtr, program);
    _zvkcDateTime_Convert(senderPtr, receiver.target(receiverPtr), senderFDPtr, &receiver.fd, senderLength);
    receiver.finish(receiverPtr, program);
}

static void byDurationsLocale(const char *sourcePtr, FD *sourceFDPtr, char *receiverPtr, uint32_t count,
                              const DurationEntry *durationPtr, int16_t windowYear, NewCallInfo newCallInfo,
                              LocaleProgram *program, bool adding)
{
    ASSERT_POINTER(sourcePtr);
    ASSERT_POINTER(sourceFDPtr);
    ASSERT_POINTER(receiverPtr);
    ASSERT_POINTER(durationPtr);
    ASSERT_DATE_TIME(sourceFDPtr);
    if (isPlain(sourceFDPtr)) {
        if (newCallInfo.rangeCheck == 1) rangeCheckItem(sourcePtr, sourceFDPtr, windowYear);
        return moveByDurations(sourcePtr, sourceFDPtr, receiverPtr, count, durationPtr, windowYear, adding);
    }
    ASSERT_HAS_LOCALE(sourceFDPtr);
    Side source(sourceFDPtr, program);
    const char *from = source.read(sourcePtr, program);
    source.check(from, windowYear, newCallInfo);
    moveByDurations(from, &source.fd, source.target(receiverPtr), count, durationPtr, windowYear, adding);
    source.finish(receiverPtr, program);
}

void _zvkcDateTime_Add_Duration_Locale(const char *source, FD *sourceFD, char *receiver, uint32_t count,
                                       const DurationEntry *durations, int16_t windowYear, NewCallInfo newCallInfo,
                                       LocaleProgram *program)
{
    byDurationsLocale(source, sourceFD, receiver, count, durations, windowYear, newCallInfo, program, true);
}

void _zvkcDateTime_Sub_Duration_Locale(const char *source, FD *sourceFD, char *receiver, uint32_t count,
                                       const DurationEntry *durations, int16_t windowYear, NewCallInfo newCallInfo,
                                       LocaleProgram *program)
{
    byDurationsLocale(source, sourceFD, receiver, count, durations, windowYear, newCallInfo, program, false);
}

int32_t _zvkcDateTime_Find_Duration_Locale(const char *lhsPtr, FD *lhsFDPtr, const char *rhsPtr, FD *rhsFDPtr,
                                           uint32_t unit, int16_t windowYear, NewCallInfo newCallInfo,
                                           LocaleProgram *program)
{
    ASSERT_POINTER(lhsPtr);
    ASSERT_POINTER(lhsFDPtr);
    ASSERT_POINTER(rhsPtr);
    ASSERT_POINTER(rhsFDPtr);
    ASSERT_DATE_TIME(lhsFDPtr);
    ASSERT_DATE_TIME(rhsFDPtr);
    ASSERT_ONE_HAS_LOCALE(lhsFDPtr, rhsFDPtr);
    Side lhs(lhsFDPtr, program, Stamps::Plain), rhs(rhsFDPtr, program, Stamps::Plain);
    const char *left = lhs.read(lhsPtr, program), *right = rhs.read(rhsPtr, program);
    lhs.check(left, windowYear, newCallInfo);
    rhs.check(right, windowYear, newCallInfo);
    return durationBetween(left, &lhs.fd, right, &rhs.fd, unit, windowYear);
}

int32_t _zvkcDateTime_Compare_Locale(const char *leftPtr, const char *rightPtr, FD *leftFDPtr, FD *rightFDPtr,
                                     uint32_t op, int16_t windowYear, NewCallInfo newCallInfo, LocaleProgram *program)
{
    ASSERT_POINTER(leftPtr);
    ASSERT_POINTER(rightPtr);
    ASSERT_POINTER(leftFDPtr);
    ASSERT_POINTER(rightFDPtr);
    ASSERT_DATE_TIME(leftFDPtr);
    ASSERT_DATE_TIME(rightFDPtr);
    ASSERT_ONE_HAS_LOCALE(leftFDPtr, rightFDPtr);
    Side left(leftFDPtr, program), right(rightFDPtr, program);
    const char *leftText = left.read(leftPtr, program), *rightText = right.read(rightPtr, program);
    left.check(leftText, windowYear, newCallInfo);
    right.check(rightText, windowYear, newCallInfo);
    return relationHolds(op, compareItems(leftText, rightText, &left.fd, &right.fd, windowYear));
}

int32_t _zvkcDateTime_Compare_NN_Locale(const char *leftPtr, const char *rightPtr, FD *leftFDPtr, FD *rightFDPtr,
                                        uint32_t leftLength, uint32_t rightLength, uint32_t op, int16_t windowYear,
                                        NewCallInfo newCallInfo, LocaleProgram *program)
{
    ASSERT_POINTER(leftPtr);
    ASSERT_POINTER(rightPtr);
    ASSERT_POINTER(leftFDPtr);
    ASSERT_POINTER(rightFDPtr);
    ASSERT_ONE_HAS_LOCALE(leftFDPtr, rightFDPtr);
    FD *both = leftFDPtr->hasLocale == 1 ? leftFDPtr : rightFDPtr;
    DATETIME_ASSERT(both->storageLength <= kLocaleArea, "storageLength <= sizeof(buffer)");
    char left[kLocaleArea], right[kLocaleArea];
    copyPadded(leftPtr, leftLength, left, kLocaleArea);
    copyPadded(rightPtr, rightLength, right, kLocaleArea);
    return _zvkcDateTime_Compare_Locale(left, right, both, both, op, windowYear, newCallInfo, program);
}

int32_t _zvkcDateTime_Test_Locale(const char *itemPtr, FD *itemFDPtr, FD *testFDPtr, uint32_t length,
                                  int16_t windowYear, LocaleProgram *program)
{
    ASSERT_POINTER(itemPtr);
    ASSERT_POINTER(itemFDPtr);
    if (length == 0) return '0';
    FD *used = testFDPtr ? testFDPtr : itemFDPtr;
    if (used->hasLocale != 1 || isPlain(used))
        return _zvkcDateTime_Test(itemPtr, itemFDPtr, testFDPtr, length, windowYear);
    ASSERT_DATE_TIME(used);
    // The item has so many bytes, whatever the descriptor says.
    FD bounded = *used;
    bounded.storageLength = length;
    Side item(&bounded, program);
    used->formatLiteralPtr = bounded.formatLiteralPtr;
    used->formatIsStrptime = bounded.formatIsStrptime;
    used->formatUpdated = bounded.formatUpdated;
    const char *text = item.read(itemPtr, program);
    if (!item.readable) return '0';
    return isValidItem(text, &item.fd, item.fd.storageLength, windowYear) ? '1' : '0';
}

void _zvkcDateTime_Extract_Alph_Locale(const char *sourcePtr, FD *sourceFDPtr, FD *resultFDPtr, char *resultPtr,
                                       int16_t windowYear, NewCallInfo newCallInfo, LocaleProgram *program)
{
    ASSERT_POINTER(sourceFDPtr);
    ASSERT_POINTER(resultFDPtr);
    _zvkcDateTime_Move_Locale(sourcePtr, resultPtr, sourceFDPtr, resultFDPtr, 0, windowYear, newCallInfo, program);
}

PackedField *_zvkcDateTime_Extract_Int_Locale(PackedField *packed, const char *sourcePtr, FD *sourceFDPtr,
                                              FD *resultFDPtr, int16_t windowYear, NewCallInfo newCallInfo,
                                              LocaleProgram *program)
{
    ASSERT_POINTER(sourcePtr);
    ASSERT_POINTER(sourceFDPtr);
    ASSERT_POINTER(resultFDPtr);
    ASSERT_DATE_TIME(sourceFDPtr);
    ASSERT_ONE_HAS_LOCALE(sourceFDPtr, resultFDPtr);
    Side source(sourceFDPtr, program), result(resultFDPtr, program);
    const char *from = source.read(sourcePtr, program);
    source.check(from, windowYear, newCallInfo);
    return _zvkcDateTime_Extract_Int(packed, from, &source.fd, &result.fd, windowYear, withoutCheck(newCallInfo));
}

PackedField *_zvkcDateTime_Extract_Packed_Locale(PackedField *packed, const char *sourcePtr, FD *sourceFDPtr,
                                                 uint32_t field, int16_t windowYear, NewCallInfo newCallInfo,
                                                 LocaleProgram *program)
{
    ASSERT_POINTER(sourcePtr);
    ASSERT_POINTER(sourceFDPtr);
    ASSERT_DATE_TIME(sourceFDPtr);
    ASSERT_HAS_LOCALE(sourceFDPtr);
    Side source(sourceFDPtr, program);
    const char *from = source.read(sourcePtr, program);
    source.check(from, windowYear, newCallInfo);
    return _zvkcDateTime_Extract_Packed(packed, from, &source.fd, field, windowYear, withoutCheck(newCallInfo));
}

// ---- FUNCTION LOCALE-DATE and LOCALE-TIME

namespace {

// ISO text in the layout of a locale; returns its length.
int32_t isoToLocale(const char *iso, uint32_t category, uint16_t localeId, char *result, const LocaleProgram *program)
{
    FD fd{};
    fd.category = category;
    fd.storageLength = kLocaleArea;
    fd.hasLocale = 1;
    fd.formatIsStrptime = 1;
    fd.localeIndex = localeId;
    DateTime_updateFormatFromLocale(&fd, program);
    char area[kLocaleArea];
    uint32_t length = std::min(DateTime_convertDateTimeToLocale(iso, area, &fd, program), kLocaleArea);
    memcpy(result, area, length);
    return static_cast<int32_t>(length);
}

void checkSource(const char *source, int32_t sourceClass, const char *result)
{
    ASSERT_POINTER(source);
    ASSERT_POINTER(result);
    DATETIME_ASSERT(sourceClass == rltDBCS || sourceClass == rltALPHANUMERIC,
                    "sourceClass == rltDBCS || sourceClass == rltALPHANUMERIC");
}

// The bytes of a source of LOCALE-TIME: eight digits and, only after a sign, four more.
size_t timeLength(const char *source)
{
    constexpr size_t digits = 8, offset = 4;
    size_t length = strnlen(source, digits);
    if (length < digits || (source[digits] != '+' && source[digits] != '-')) return length;
    return digits + 1 + strnlen(source + digits + 1, offset);
}

// Two digits; -1 for what is none.
int32_t pairAt(const char *text)
{
    auto tens = static_cast<unsigned>(text[0] - '0'), ones = static_cast<unsigned>(text[1] - '0');
    return tens > 9 || ones > 9 ? -1 : static_cast<int32_t>(tens * 10 + ones);
}

int32_t checkedPair(const char *source, const char *shown, int at, int32_t highest)
{
    int32_t value = pairAt(source + at);
    if (value < 0 || value > highest) {
        msg::badLocaleTime(shown, value);
        DATETIME_ASSERT(false, "! \"LOCALE-TIME\"");
    }
    return value;
}

// Minutes that a time with an offset from UTC lies before the locale's.
int32_t shiftToLocale(const char *source, size_t length, uint16_t localeId, const LocaleProgram *program)
{
    if (length < 13) return 0;
    int32_t hours = pairAt(source + 9), mins = pairAt(source + 11);
    if (hours) DATETIME_ASSERT(hours > 0 && hours < 24, "hours > 0 && hours < 24");
    if (mins) DATETIME_ASSERT(mins > 0 && mins < 60, "mins > 0 && mins < 60");
    int32_t offset = hours * 60 + mins;
    const TodInfo *tod = localeDescriptorFor(localeId, program)->localeInfo->todInfo;
    return static_cast<int32_t>(tod ? tod->utcOffset : 0) - (source[8] == '-' ? -offset : offset);
}

} // namespace

int32_t _zvkcDateTime_Locale_Date(const char *sourcePtr, int32_t sourceClass, uint16_t localeId, char *resultPtr,
                                  NewCallInfo, LocaleProgram *program)
{
    checkSource(sourcePtr, sourceClass, resultPtr);
    char iso[11];
    snprintf(iso, sizeof iso, "%.4s-%.2s-%.2s", sourcePtr, sourcePtr + 4, sourcePtr + 6);
    FD fd{};
    fd.category = ctDATE;
    DateTime_updateFormatToISO(&fd);
    DATETIME_ASSERT(isValidItem(iso, &fd, kDateForm, 0), "testResult == '1'");
    return isoToLocale(iso, ctDATE, localeId, resultPtr, program);
}

int32_t _zvkcDateTime_Locale_Time(const char *sourcePtr, int32_t sourceClass, uint16_t localeId, char *resultPtr,
                                  NewCallInfo, LocaleProgram *program)
{
    constexpr int32_t kDayMinutes = 1440;
    checkSource(sourcePtr, sourceClass, resultPtr);
    char shown[14] = {};
    size_t length = timeLength(sourcePtr);
    memcpy(shown, sourcePtr, length);
    int32_t hours = checkedPair(shown, shown, 0, 23), minutes = checkedPair(shown, shown, 2, 59),
            seconds = checkedPair(shown, shown, 4, 59);
    int32_t ofDay = hours * 60 + minutes + shiftToLocale(shown, length, localeId, program) % kDayMinutes;
    ofDay = (ofDay + kDayMinutes) % kDayMinutes;
    char iso[16];
    snprintf(iso, sizeof iso, "%02d.%02d.%02d", ofDay / 60 % 24, ofDay % 60, seconds % 60);
    return isoToLocale(iso, ctTIME, localeId, resultPtr, program);
}
