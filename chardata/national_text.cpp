// National data: moves, comparison, case, and conversion from and to native bytes.
//
// Collation and case are the locale's, by way of the conversion layer. Its collator is opened at
// the first comparison and closed with the layer; a collator may be used by many threads at once.
#include <algorithm>
#include <unicode/ucol.h>
#include <unicode/ustring.h>

#include "base/signed_length.h"
#include "base/text_units.h"
#include "chardata/conversion_layer.h"
#include "frame/message_calls.h"
#include "kvr2/national.h"

namespace {

// The bytes of a blank the wrong way around. It is to stay: compiled programs compare with it.
constexpr uint8_t kFill[2] = {0x00, 0x20};

// Unit by unit from the first one on, so that items that overlap come out the same everywhere.
void copyUnits(uint8_t *to, const uint8_t *from, size_t units)
{
    for (size_t i = 0; i < 2 * units; i += 2) Utf16::store(to + i, Utf16::load(from + i));
}

const UChar *units(const uint8_t *item) { return reinterpret_cast<const UChar *>(item); }

// Null after message 224, with the status in the layer.
const UCollator *collator()
{
    zvkStartConversionLayer();
    ConversionLayer &layer = zvkConversionLayer;
    if (UCollator *present = __atomic_load_n(&layer.collator, __ATOMIC_ACQUIRE)) return present;
    UErrorCode status = U_ZERO_ERROR;
    UCollator *opened = ucol_open(layer.collationLocale, &status);
    if (U_FAILURE(status)) {
        layer.status = status;
        msg::noCollator(layer.collationLocale, static_cast<int32_t>(status));
        return nullptr;
    }
    UCollator *none = nullptr;
    if (__atomic_compare_exchange_n(&layer.collator, &none, opened, false, __ATOMIC_ACQ_REL, __ATOMIC_ACQUIRE))
        return opened;
    ucol_close(opened);
    return none;
}

// Units without trailing blanks; a sole first unit stays.
int32_t significantUnits(const uint8_t *item, int32_t length)
{
    int32_t count = static_cast<int32_t>(plainLength(length) / 2);
    while (count > 1 && Utf16::load(item + 2 * (size_t(count) - 1)) == ' ') count--;
    return count;
}

using ChangeCase = int32_t (*)(UChar *, int32_t, const UChar *, int32_t, const char *, UErrorCode *);

int32_t changeCase(ChangeCase change, uint8_t *destination, uint32_t *capacity, const uint8_t *source, uint32_t length)
{
    zvkStartConversionLayer();
    ConversionLayer &layer = zvkConversionLayer;
    auto room = static_cast<int32_t>(*capacity / 2);
    UErrorCode status = U_ZERO_ERROR;
    int32_t stored = change(reinterpret_cast<UChar *>(destination), room, units(source),
                            static_cast<int32_t>(length / 2), layer.collationLocale, &status);
    // For a destination that is too small the answer is the length that it would need.
    *capacity = 2 * static_cast<uint32_t>(std::clamp(stored, 0, room));
    if (status > U_ZERO_ERROR) {
        layer.status = status;
        msg::caseFailed(static_cast<int32_t>(status));
        return status;
    }
    return U_ZERO_ERROR;
}

} // namespace

extern "C" {

int32_t _zvkMoveUnicode(uint8_t *destination, int32_t length, const uint8_t *source, int32_t sourceLength)
{
    SignedLength item(length); // negative: right-justified
    size_t room = item.size / 2, given = plainLength(sourceLength) / 2, moved = std::min(room, given),
           rest = room - moved;
    if (item.negative) {
        fillPairs(destination, 2 * rest, kFill, 0);
        copyUnits(destination + 2 * rest, source + 2 * (given - moved), moved);
    } else {
        copyUnits(destination, source, moved);
        fillPairs(destination + 2 * moved, 2 * rest, kFill, 0);
    }
    return static_cast<int32_t>(moved);
}

int32_t _Dmr_national_of(int32_t length, const uint8_t *source, uint8_t *destination)
{
    uint32_t size = static_cast<uint32_t>(plainLength(length)), capacity = 2 * size;
    int32_t status = _zvkConvToUnicode(source, size, destination, &capacity, nullptr, ZVK_CODE_PAGE_NATIVE);
    return status == U_ZERO_ERROR || zvkIsOverflow(status) ? static_cast<int32_t>(capacity) : 0;
}

int32_t _Dmr_display_of(int32_t length, const uint8_t *source, uint8_t *destination)
{
    zvkStartConversionLayer();
    const UConverter *native = zvkNativeConverter();
    if (!native) return 0;
    uint32_t size = static_cast<uint32_t>(plainLength(length));
    uint64_t most = uint64_t{size / 2} * static_cast<uint64_t>(ucnv_getMaxCharSize(native));
    uint32_t capacity = static_cast<uint32_t>(std::min<uint64_t>(most, INT32_MAX));
    int32_t status = _zvkConvFromUnicode(source, size, destination, &capacity, nullptr, ZVK_CODE_PAGE_NATIVE);
    return status == U_ZERO_ERROR ? static_cast<int32_t>(capacity) : 0;
}

int32_t _zvkCompareUnicode(const uint8_t *left, int32_t leftLength, const uint8_t *right, int32_t rightLength)
{
    const UCollator *rules = collator();
    if (!rules) return zvkConversionLayer.status;
    int32_t leftUnits = significantUnits(left, leftLength), rightUnits = significantUnits(right, rightLength);
    return ucol_strcoll(rules, units(left), leftUnits, units(right), rightUnits);
}

int32_t _zvkLowerCaseUnicode(uint8_t *destination, uint32_t *capacity, const uint8_t *source, uint32_t length)
{
    return changeCase(u_strToLower, destination, capacity, source, length);
}

int32_t _zvkUpperCaseUnicode(uint8_t *destination, uint32_t *capacity, const uint8_t *source, uint32_t length)
{
    return changeCase(u_strToUpper, destination, capacity, source, length);
}
}
