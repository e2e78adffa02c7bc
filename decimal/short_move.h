// Copies and shifts of short packed items.
//
// The digits are one word, so a shift is a shift of that word, and rounding the addition of one.
// Nothing is validated on the way: nibbles above 9 move like digits, and only rounding leaves them
// to others.
#pragma once

#include "decimal/short_number.h"

namespace bcd {

enum class Direction { Left, Right, RightRounded };

// False, and nothing is written, when the items do not fit the word or the digits are all shifted
// out: what sign is left then is the general routine's business.
template <Direction direction, class Word>
[[gnu::always_inline]] inline bool shortMove(const uint8_t *src, int32_t sn, uint8_t *dst, int32_t dn, int32_t shift,
                                             bool keepNegativeZero)
{
    using shortforms::Pckd;
    if (static_cast<uint32_t>(sn | dn | shift) > kWordDigits<Word>) return false;
    Pckd::Raw<Word> raw(src, sn);
    Word digits = raw.digits;
    if (shift != 0) {
        if constexpr (direction == Direction::Left) {
            if (shift >= dn) return false;
            digits <<= 4 * shift;
        } else {
            bool up = direction == Direction::RightRounded && (digits >> (4 * (shift - 1)) & 0x0F) > 4;
            digits >>= 4 * shift;
            if (up && !areDigits(digits)) return false;
            if (up) digits = addDigits(digits, Word{1});
            if (!anyBit(digits)) return false;
        }
    }
    bool negative = raw.negative();
    if (negative && !keepNegativeZero)
        negative = anyBit(digits & ((Word{1} << (4 * dn)) - 1)); // of what is left in the destination
    Pckd::write(dst, dn, digits, negative);
    return true;
}

} // namespace bcd
