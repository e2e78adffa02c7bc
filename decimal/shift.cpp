// Scaling: a value moved by a number of digit positions while it is copied, to the right with
// truncation or rounding.
//
// Rounding looks at one digit, the most significant one that is dropped: above 4 it goes up, on the
// magnitude. Nothing is validated here, and what falls off on the left is gone. Short packed items
// are done by short_move.h; the others go digit by digit.
#include <algorithm>
#include <cstdio>
#include <cstring>
#include <type_traits>

#include "decimal/copy_steps.h"
#include "decimal/dump.h"
#include "decimal/entry.h"
#include "decimal/shift.h"
#include "decimal/short_move.h"
#include "decimal/words.h"
#include "kvr2/decimal_scaling.h"

namespace bcd {
namespace {

// ---- Packed.

void zeroPacked(uint8_t *dst, int32_t dn)
{
    size_t bytes = packedBytes(dn);
    memset(dst, 0, bytes);
    dst[bytes - 1] = kPlus;
}

int32_t packedDigits(const uint8_t *item, int32_t n)
{
    const uint8_t *last = item + packedBytes(n) - 1;
    return significantDigits(skipZeroBytes(item, last), last);
}

// The digit at a place counted from the right, from 0; 0 beyond the item.
unsigned packedDigit(const uint8_t *item, size_t bytes, int32_t place)
{
    auto nibble = static_cast<size_t>(place) + 1;
    if (nibble / 2 >= bytes) return 0;
    uint8_t byte = item[bytes - 1 - nibble / 2];
    return nibble % 2 ? byte >> 4 : byte & 0x0F;
}

// Any length; offset is what is added to a destination's place to find the source's.
void shiftLong(const uint8_t *src, int32_t sn, uint8_t *dst, int32_t dn, int32_t offset, bool up)
{
    const size_t from = packedBytes(sn), to = packedBytes(dn);
    uint8_t result[UINT8_MAX];
    if (to > sizeof result) return zeroPacked(dst, dn); // far beyond the 63 digits that items can have
    memset(result, 0, to);
    bool carry = up;
    for (int32_t place = 0; place < dn; place++) {
        int32_t source = place + offset;
        unsigned digit = source >= 0 ? packedDigit(src, from, source) : 0;
        if (carry) {
            carry = digit >= 9;
            digit = carry ? 0 : digit + 1;
        }
        auto nibble = static_cast<size_t>(place) + 1;
        result[to - 1 - nibble / 2] |= static_cast<uint8_t>(digit << (nibble % 2 ? 4 : 0));
    }
    result[to - 1] |= signNibble(isNegativeNibble(src[from - 1]));
    memcpy(dst, result, to);
}

} // namespace
} // namespace bcd

using namespace bcd;

void zvkBcdShiftLeftPacked(const uint8_t *src, int32_t sn, uint8_t *dst, int32_t dn, int32_t shift)
{
    if (shift <= 0) return zvkBcdMovePacked(src, sn, dst, dn);
    if (dn <= shift) return zeroPacked(dst, dn); // nothing of the value is left, nor of its sign
    shiftLong(src, sn, dst, dn, -shift, false);
    clearUnusedNibble(dst, dn);
}

void zvkBcdShiftRightPacked(const uint8_t *src, int32_t sn, uint8_t *dst, int32_t dn, int32_t shift, bool round)
{
    if (shift <= 0) return zvkBcdMovePacked(src, sn, dst, dn);
    int32_t count = packedDigits(src, sn);
    if (round ? shift > count : shift >= count) return zeroPacked(dst, dn);
    bool up = round && packedDigit(src, packedBytes(sn), shift - 1) > 4;
    shiftLong(src, sn, dst, dn, shift, up);
    clearUnusedNibble(dst, dn);
}

namespace bcd {
namespace {

// Places `kept` digits before `after` zeros at the right end of the destination, "0"
// elsewhere, and cleans the last of them.
void placeDigits(const uint8_t *digits, int32_t kept, uint8_t *dst, int32_t dn, int32_t after)
{
    int32_t before = dn - kept - after;
    memmove(dst + before, digits, static_cast<size_t>(kept));
    memset(dst, '0', static_cast<size_t>(before));
    memset(dst + before + kept, '0', static_cast<size_t>(after));
    if (kept) dst[before + kept - 1] = zonedDigit(dst[before + kept - 1]);
}

void setTrailingZone(uint8_t *dst, int32_t dn, bool negative) { dst[dn - 1] = zonedDigit(dst[dn - 1], negative); }

} // namespace
} // namespace bcd

void zvkBcdShiftLeftZoned(const uint8_t *src, int32_t sn, uint8_t *dst, int32_t dn, int32_t shift)
{
    if (shift <= 0) return zvkBcdMoveZoned(src, sn, dst, dn);
    const uint8_t *last = src + sn - 1;
    bool negative = overpunchIsNegative(*last);
    const uint8_t *first = skipZeroDigits(src, last);
    if (shift >= dn) {
        memset(dst, '0', static_cast<size_t>(dn));
        return;
    }
    auto kept = std::min(static_cast<int32_t>(last - first) + 1, dn - shift);
    placeDigits(last + 1 - kept, kept, dst, dn, shift);
    setTrailingZone(dst, dn, negative);
}

void zvkBcdShiftRightZoned(const uint8_t *src, int32_t sn, uint8_t *dst, int32_t dn, int32_t shift, bool round)
{
    if (shift <= 0) return zvkBcdMoveZoned(src, sn, dst, dn);
    const uint8_t *last = src + sn - 1;
    const uint8_t *first = skipZeroDigits(src, last);
    auto count = static_cast<int32_t>(last - first) + 1;
    if (round ? shift > count : shift >= count) {
        memset(dst, '0', static_cast<size_t>(dn));
        return;
    }
    bool negative = overpunchIsNegative(*last);
    bool up = round && (last[1 - shift] & 0x0F) > 4;
    const uint8_t *end = last + 1 - shift;
    auto kept = std::min(count - shift, dn);
    placeDigits(end - kept, kept, dst, dn, 0);
    for (int32_t i = dn - 1; up && i >= 0; i--) {
        uint8_t digit = dst[i] & 0x0F;
        up = digit >= 9;
        dst[i] = zonedDigit(up ? uint8_t{0} : static_cast<uint8_t>(digit + 1));
    }
    setTrailingZone(dst, dn, negative);
}

namespace bcd {
namespace {

template <class Form>
constexpr const char *nameOf()
{
    if constexpr (isPacked<Form>)
        return "packed";
    else
        return Form::shiftName;
}

template <class Form, Direction direction>
struct Shift {
    const uint8_t *src;
    uint8_t *dst;
    int32_t dn, sn, shift;

    template <class Word>
    bool inWord(uint32_t mode, uint8_t *&result) const
    {
        result = dst;
        return shortMove<direction, Word>(src, sn, dst, dn, shift, mode & ZVK_BCD_KEEP_NEG_ZERO);
    }
    bool quick(uint32_t mode, uint8_t *&result) const requires(isPacked<Form>)
    {
        return inWord<uint64_t>(mode, result) || inWord<u128>(mode, result);
    }

    void dumpOperands() const
    {
        static constexpr const char *ways[] = {"left", "right", "right round"};
        char title[48];
        snprintf(title, sizeof title, "Shift %s %s %%d ...", nameOf<Form>(), ways[static_cast<int>(direction)]);
        dumpTitle(title, shift);
        dumpCopied("op1:", src, sn, shownBytes<Form>(sn));
    }
    uint8_t *work(uint32_t mode) const
    {
        constexpr bool round = direction == Direction::RightRounded;
        if (!isPacked<Form> && (sn < 1 || dn < 1)) return dst;
        const uint8_t sign = sn > 0 ? copiedSign<Form>(src, sn) : uint8_t{0};
        if constexpr (isPacked<Form>) {
            if constexpr (direction == Direction::Left)
                zvkBcdShiftLeftPacked(src, sn, dst, dn, shift);
            else
                zvkBcdShiftRightPacked(src, sn, dst, dn, shift, round);
        } else {
            if constexpr (direction == Direction::Left)
                zvkBcdShiftLeftZoned(Form::digits(src), sn, Form::digits(dst), dn, shift);
            else
                zvkBcdShiftRightZoned(Form::digits(src), sn, Form::digits(dst), dn, shift, round);
        }
        AfterCopy<Form>::finish(sign, dst, dn, mode & ZVK_BCD_KEEP_NEG_ZERO);
        return dst;
    }
    // The label of zoned results is "op2" on purpose.
    void dumpResult(const uint8_t *) const
    {
        dumpCopied(isPacked<Form> ? "res:" : "op2:", dst, dn, shownBytes<Form>(dn));
    }
};

} // namespace
} // namespace bcd

#define SHIFT(Name, form, direction)                                                                                   \
    uint8_t *Name(const uint8_t *src, uint8_t *dst, int32_t dstDigits, int32_t srcDigits, int32_t shift)               \
    {                                                                                                                  \
        return bcd::runEntry<bcd::Shift<bcd::forms::form, bcd::Direction::direction>>(src, dst, dstDigits, srcDigits,  \
                                                                                      shift);                          \
    }

SHIFT(_zvkcBCD_SHFD_Pckd_Left, Pckd, Left)
SHIFT(_zvkcBCD_SHFD_Pckd_Right, Pckd, Right)
SHIFT(_zvkcBCD_SHFD_Pckd_RightRnd, Pckd, RightRounded)
SHIFT(_zvkcBCD_SHFD_Znd_Left, ZndTO, Left)
SHIFT(_zvkcBCD_SHFD_Znd_Right, ZndTO, Right)
SHIFT(_zvkcBCD_SHFD_Znd_RightRnd, ZndTO, RightRounded)
SHIFT(_zvkcBCD_SHFD_ZndLO_Left, ZndLO, Left)
SHIFT(_zvkcBCD_SHFD_ZndLO_Right, ZndLO, Right)
SHIFT(_zvkcBCD_SHFD_ZndLO_RightRnd, ZndLO, RightRounded)
SHIFT(_zvkcBCD_SHFD_ZndUS_Left, ZndUS, Left)
SHIFT(_zvkcBCD_SHFD_ZndUS_Right, ZndUS, Right)
SHIFT(_zvkcBCD_SHFD_ZndUS_RightRnd, ZndUS, RightRounded)
SHIFT(_zvkcBCD_SHFD_ZndTS_Left, ZndTS, Left)
SHIFT(_zvkcBCD_SHFD_ZndTS_Right, ZndTS, Right)
SHIFT(_zvkcBCD_SHFD_ZndTS_RightRnd, ZndTS, RightRounded)
SHIFT(_zvkcBCD_SHFD_ZndLS_Left, ZndLS, Left)
SHIFT(_zvkcBCD_SHFD_ZndLS_Right, ZndLS, Right)
SHIFT(_zvkcBCD_SHFD_ZndLS_RightRnd, ZndLS, RightRounded)
