// Addition and subtraction of short clean items, packed and zoned.
#pragma once

#include "decimal/short_number.h"

namespace bcd {

// Packed subtraction that had to complement its result takes 90 off each pair 91 to 99, but not off
// the units' byte: 1001 - 2000 gives -99 on the digits 00099. Compiled programs see this today, so
// it stays. The bytes are the item's, from the one with bit `lowest` on.
inline uint64_t reducedBytes(uint64_t bytes, uint64_t lowest)
{
    uint64_t ninetyUp = (bytes >> 7) & (bytes >> 4); // the pair's high digit is 9: bits 3 and 0
    uint64_t notNinety = ((bytes & all<uint64_t>(0x0F)) + all<uint64_t>(0x0F)) >> 4; // its low digit is not 0
    uint64_t reduce = ninetyUp & notNinety & (all<uint64_t>(0x01) & (0 - lowest));
    return bytes ^ (reduce << 4 | reduce << 7);
}
inline uint64_t reducedPairs(uint64_t digits) { return reducedBytes(digits << 4, 0x0100) >> 4; }
inline u128 reducedPairs(u128 digits)
{
    u128 bytes = shiftedLeft(digits, 4);
    return shiftedRight(fromWords(reducedBytes(highWord(bytes), 1), reducedBytes(lowWord(bytes), 0x0100)), 4);
}

// Nothing but the sum, into `digits` and `negative`.
template <bool subtract, bool reducePairs, class Word>
[[gnu::always_inline]] inline NumberIn<Word> sumOf(const NumberIn<Word> &a, const NumberIn<Word> &b)
{
    if ((a.negative != b.negative) == subtract) return {addDigits(a.digits, b.digits), a.negative};
    if (a.digits >= b.digits) return {subtractDigits(a.digits, b.digits), a.negative};
    Word result = subtractDigits(b.digits, a.digits);
    // Operands of equal length are subtracted as they come, and the complement is taken afterwards.
    if (subtract && reducePairs && sameLength(a.digits, b.digits)) result = reducedPairs(result);
    return {result, !a.negative};
}

// dst = op1 + op2, or op1 - op2. False, and nothing is written, unless all three items are short
// and the operands clean.
template <bool subtract>
inline bool shortZonedSum(const auto &call)
{
    using shortforms::Znd;
    ShortNumber a, b;
    if (!isShort(call.dstDigits) || !Znd::read(call.op1, call.op1Digits, a) || !Znd::read(call.op2, call.op2Digits, b))
        return false;
    ShortNumber sum = sumOf<subtract, false>(a, b);
    Znd::write(call.dst, call.dstDigits, sum.digits, sum.negative);
    return true;
}

// The same for packed items that fit the word.
template <bool subtract, class Word>
[[gnu::always_inline]] inline bool shortPackedSum(const auto &call)
{
    using shortforms::Pckd;
    if (static_cast<uint32_t>(call.op1Digits | call.op2Digits | call.dstDigits) > kWordDigits<Word>) return false;
    Pckd::Raw<Word> a(call.op1, call.op1Digits), b(call.op2, call.op2Digits);
    if (!a.hasSign() || !b.hasSign() || !areDigits(a.digits, b.digits)) return false;
    NumberIn<Word> sum = sumOf<subtract, true, Word>(a, b);
    Pckd::write(call.dst, call.dstDigits, sum.digits, sum.negative);
    return true;
}

} // namespace bcd
