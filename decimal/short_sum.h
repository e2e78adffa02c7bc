// Addition and subtraction of short clean items, packed and zoned.
#pragma once

#include "decimal/short_number.h"

namespace bcd {

// Packed subtraction that had to complement its result takes 90 off each pair 91 to 99, but not off the units' byte: 1001 - 2000 gives -99
// on the digits 00099. Compiled programs see this today, so it stays.
inline uint64_t reducedPairs(uint64_t digits, uint64_t lowest = 0x0100)
{
    uint64_t ninetyUp = (digits >> 7) & (digits >> 4);                                // the pair's high digit is 9: bits 3 and 0
    uint64_t notNinety = ((digits & all<uint64_t>(0x0F)) + all<uint64_t>(0x0F)) >> 4; // its low digit is not 0
    uint64_t reduce = ninetyUp & notNinety & (all<uint64_t>(0x01) & (0 - lowest));
    return digits ^ (reduce << 4 | reduce << 7);
}
inline u128 reducedPairs(u128 digits) { return fromWords(reducedPairs(highWord(digits), 1), reducedPairs(lowWord(digits))); }

// Nothing but the sum, into `digits` and `negative`.
template <bool subtract, bool reducePairs, class Word>
[[gnu::always_inline]] inline NumberIn<Word> sumOf(const NumberIn<Word> &a, const NumberIn<Word> &b)
{
    if ((a.negative != b.negative) == subtract) return {addDigits(a.digits, b.digits), a.negative};
    if (a.digits >= b.digits) return {subtractDigits(a.digits, b.digits), a.negative};
    Word result = subtractDigits(b.digits, a.digits);
    // Operands of equal length are subtracted as they come, and the complement is taken afterwards.
    if (subtract && reducePairs && leadingPlace(a.digits) == leadingPlace(b.digits)) result = reducedPairs(result);
    return {result, !a.negative};
}

// dst = op1 + op2, or op1 - op2. False, and nothing is written, unless all three items are short and the operands clean.
template <class ShortForm, bool subtract, bool reducePairs, class Call>
inline bool shortSum(const Call &call)
{
    ShortNumber a, b;
    if (!isShort(call.dstDigits) || !ShortForm::read(call.op1, call.op1Digits, a) || !ShortForm::read(call.op2, call.op2Digits, b))
        return false;
    ShortNumber sum = sumOf<subtract, reducePairs>(a, b);
    ShortForm::write(call.dst, call.dstDigits, sum.digits, sum.negative);
    return true;
}

// The same for packed items. Up to 15 digits they need one register only.
template <bool subtract, class Call>
[[gnu::always_inline]] inline bool shortPackedSum(const Call &call)
{
    using shortforms::Pckd;
    auto counts = static_cast<uint32_t>(call.op1Digits | call.op2Digits | call.dstDigits);
    auto sumIn = [&]<class Word>(Word) {
        NumberIn<Word> a, b;
        // Both are read before either answer is looked at: two short chains side by side.
        bool firstGood = Pckd::readWord(call.op1, call.op1Digits, a), secondGood = Pckd::readWord(call.op2, call.op2Digits, b);
        if (!firstGood || !secondGood) return false;
        NumberIn<Word> sum = sumOf<subtract, true>(a, b);
        Pckd::write(call.dst, call.dstDigits, sum.digits, sum.negative);
        return true;
    };
    if (counts <= 15) return sumIn(uint64_t{});
    return counts <= static_cast<uint32_t>(kShortDigits) && sumIn(u128{});
}

} // namespace bcd
