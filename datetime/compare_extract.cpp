// Relations between items, and their subfields as numbers and text.
#include <cstring>

#include "datetime/assertion.h"
#include "datetime/compare_extract.h"
#include "datetime/format_entries.h"
#include "datetime/move.h"
#include "datetime/range_check.h"
#include "decimal/conversion_workers.h"

namespace {

constexpr int32_t kPackedDigits = 27;
constexpr uint32_t kExtractArea = 256;

// Where a field is in the three system forms, -1 where it is not, and its digits. From 13 on.
struct FieldPlace {
    int date, time, timestamp, digits;
};
constexpr FieldPlace kFields[] = {
    {0, -1, 0, 4},    // year
    {5, -1, 5, 2},    // month
    {8, -1, 8, 2},    // day
    {-1, 0, 11, 2},   // hour
    {-1, 3, 14, 2},   // minute
    {-1, 6, 17, 2},   // second
    {-1, -1, 20, 12}, // fraction
    {-1, -1, 20, 12},
};

// Bit per relation, by the sign of the comparison: less, equal, greater.
constexpr uint8_t kHolds[] = {0x2, 0x5, 0x4, 0x6, 0x1, 0x3};

// Places that one side does not carry match anything; so does all after the shorter text.
int compareForms(const char *left, const char *right)
{
    for (; *left && *right; left++, right++) {
        if (*left == *right || *left == 'X' || *right == 'X') continue;
        return static_cast<uint8_t>(*left) > static_cast<uint8_t>(*right) ? 1 : -1;
    }
    return 0;
}

constexpr int kUndecided = 2;

// Two items of one format whose parts lie in the order of their weight need no system form: the
// first part that differs decides. kUndecided where that does not hold, or a fraction, a blank-like
// "X", a NUL or a short item has a say. An entry that is none is left to the conversion, which
// refuses it.
int compareInPlace(const char *left, const char *right, const FD *fd)
{
    uint64_t pos = 0, length = itemLength(fd);
    int sign = 0, lastPlace = -1;
    const FormatEntry *entry = fd->formatEntriesPtr, *last = entry + fd->numberOfEntries;
    for (; entry < last; entry++) {
        uint32_t type = entry->entryType;
        if (!isEntryOf(kTextEntries | kDateEntries | kTimeEntries, type)) return kUndecided;
        uint64_t width = kEntryWidth[type];
        if (width == 0 || width > length - pos) return kUndecided;
        const char *a = left + pos, *b = right + pos;
        pos += width;
        if (isEntryOf(kTextEntries, type)) continue;
        int place = kCopiedTo[type];
        if (place <= lastPlace) {
            // A fraction at the end, of digits: it counts only where all else is the same.
            if (type < ZVK_FE_FRACTION1 || entry + 1 < last) return kUndecided;
            for (uint64_t i = 0; i < width; i++)
                if (!isDigit(a[i]) || !isDigit(b[i])) return kUndecided;
            return sign || memcmp(a, b, width) == 0 ? sign : kUndecided;
        }
        lastPlace = place;
        for (uint64_t i = 0; sign == 0 && i < width; i++) {
            if (!a[i] || !b[i]) return kUndecided; // a NUL ends a system form
            if (a[i] == b[i]) continue;
            if (a[i] == 'X' || b[i] == 'X') return kUndecided;
            sign = static_cast<uint8_t>(a[i]) > static_cast<uint8_t>(b[i]) ? 1 : -1;
        }
    }
    return sign;
}

bool sameFormat(const FD *left, const FD *right)
{
    return left->category == right->category && left->storageLength == right->storageLength &&
           left->numberOfEntries == right->numberOfEntries && left->formatEntriesPtr == right->formatEntriesPtr;
}

// Which entries a category may have.
bool fitsCategory(const FD *fd)
{
    if (fd->category == ctTIMESTAMP) return true;
    uint64_t others = fd->category == ctDATE ? kTimeEntries : kDateEntries;
    for (int i = 0; i < fd->numberOfEntries; i++)
        if (isEntryOf(others, fd->formatEntriesPtr[i].entryType)) return false;
    return true;
}

void toPacked(const char *digits, int32_t count, PackedField *packed)
{
    zvkBcdZonedToPacked(reinterpret_cast<const uint8_t *>(digits), count, packed->bytes, kPackedDigits);
}

} // namespace

int compareItems(const char *left, const char *right, const FD *leftFD, const FD *rightFD, int16_t windowYear)
{
    if (sameFormat(leftFD, rightFD) && fitsCategory(leftFD)) {
        int sign = compareInPlace(left, right, leftFD);
        if (sign != kUndecided) return sign;
    }
    SystemForm leftForm, rightForm;
    itemToSystemForm(left, leftFD, leftForm.text, windowYear, true);
    itemToSystemForm(right, rightFD, rightForm.text, windowYear, true);
    bool skipLeft = leftFD->category == ctTIMESTAMP && rightFD->category == ctTIME;
    bool skipRight = leftFD->category == ctTIME && rightFD->category == ctTIMESTAMP;
    return compareForms(leftForm.text + (skipLeft ? kTimeInTimestamp : 0),
                        rightForm.text + (skipRight ? kTimeInTimestamp : 0));
}

int32_t relationHolds(uint32_t op, int sign) { return op < sizeof kHolds ? kHolds[op] >> (sign + 1) & 1 : 0; }

int32_t _zvkcDateTime_Compare(const char *leftPtr, const char *rightPtr, const FD *leftFDPtr, const FD *rightFDPtr,
                              uint32_t op, int16_t windowYear, NewCallInfo newCallInfo)
{
    ASSERT_POINTER(leftPtr);
    ASSERT_POINTER(rightPtr);
    ASSERT_POINTER(leftFDPtr);
    ASSERT_POINTER(rightFDPtr);
    ASSERT_DATE_TIME(leftFDPtr);
    ASSERT_DATE_TIME(rightFDPtr);
    if (newCallInfo.rangeCheck == 1) {
        rangeCheckItem(leftPtr, leftFDPtr, windowYear);
        rangeCheckItem(rightPtr, rightFDPtr, windowYear);
    }
    return relationHolds(op, compareItems(leftPtr, rightPtr, leftFDPtr, rightFDPtr, windowYear));
}

void _zvkcDateTime_Extract_Alph(const char *sourcePtr, const FD *sourceFDPtr, const FD *resultFDPtr, char *resultPtr,
                                int16_t windowYear, NewCallInfo newCallInfo)
{
    ASSERT_POINTER(sourcePtr);
    ASSERT_POINTER(sourceFDPtr);
    ASSERT_POINTER(resultFDPtr);
    ASSERT_POINTER(resultPtr);
    ASSERT_DATE_TIME(sourceFDPtr);
    if (newCallInfo.rangeCheck == 1) rangeCheckItem(sourcePtr, sourceFDPtr, windowYear);
    newCallInfo.rangeCheck = 0;
    _zvkcDateTime_Move(sourcePtr, resultPtr, sourceFDPtr, resultFDPtr, 0, windowYear, newCallInfo);
}

PackedField *_zvkcDateTime_Extract_Int(PackedField *packed, const char *sourcePtr, const FD *sourceFDPtr,
                                       const FD *resultFDPtr, int16_t windowYear, NewCallInfo newCallInfo)
{
    ASSERT_POINTER(sourcePtr);
    ASSERT_POINTER(sourceFDPtr);
    ASSERT_POINTER(resultFDPtr);
    ASSERT_DATE_TIME(sourceFDPtr);
    ASSERT_DATE_TIME(resultFDPtr);
    if (newCallInfo.rangeCheck == 1) rangeCheckItem(sourcePtr, sourceFDPtr, windowYear);
    DATETIME_ASSERT(resultFDPtr->storageLength > 0 && resultFDPtr->storageLength <= kExtractArea,
                    "resultFDPtr->storageLength <= sizeof(result)");
    char area[kExtractArea] = {};
    moveItem(sourcePtr, area, sourceFDPtr, resultFDPtr, windowYear);
    toPacked(area, static_cast<int32_t>(resultFDPtr->storageLength), packed);
    return packed;
}

PackedField *_zvkcDateTime_Extract_Packed(PackedField *packed, const char *sourcePtr, const FD *sourceFDPtr,
                                          uint32_t field, int16_t windowYear, NewCallInfo newCallInfo)
{
    ASSERT_POINTER(sourcePtr);
    ASSERT_POINTER(sourceFDPtr);
    ASSERT_DATE_TIME(sourceFDPtr);
    if (newCallInfo.rangeCheck == 1) rangeCheckItem(sourcePtr, sourceFDPtr, windowYear);
    DATETIME_ASSERT(field >= duYears && field <= duPicoseconds, "field >= duYears && field <= duPicoseconds");
    const FieldPlace &place = kFields[field - duYears];
    uint32_t category = sourceFDPtr->category;
    int at = category == ctDATE ? place.date : category == ctTIME ? place.time : place.timestamp;
    DATETIME_ASSERT(at >= 0, "! \"field\"");
    SystemForm form;
    itemToSystemForm(sourcePtr, sourceFDPtr, form.text, windowYear, false);
    toPacked(form.text + at, place.digits, packed);
    return packed;
}
