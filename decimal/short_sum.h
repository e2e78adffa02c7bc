// Addition and subtraction of short clean items, packed and zoned.
#pragma once

#include "decimal/short_number.h"

namespace bcd {

// Packed subtraction that had to complement its result takes 90 off each pair 91 to 99, but not off the units' byte: 1001 - 2000 gives -99
// on the digits 00099. Compiled programs see this today, so it stays.
inline u128 reducedPairs(u128 digits)
{
    auto reduced = [](uint64_t word, uint64_t pairs) {
        uint64_t ninetyUp = (word >> 7) & (word >> 4);                                  // the high digit is 9: bits 3 and 0
        uint64_t notNinety = ((word & all<uint64_t>(0x0F)) + all<uint64_t>(0x0F)) >> 4; // the low digit is not 0
        uint64_t reduce = ninetyUp & notNinety & pairs;
        return word ^ (reduce << 4 | reduce << 7);
    };
    return fromWords(reduced(highWord(digits), all<uint64_t>(0x01)), reduced(lowWord(digits), all<uint64_t>(0x01) - 1));
}

// dst = op1 + op2, or op1 - op2. False, and nothing is written, unless all three items are short and the operands clean.
template <class ShortForm, bool subtract, bool reducePairs, class Call>
inline bool shortSum(const Call &call)
{
    ShortNumber a, b;
    if (!isShort(call.dstDigits) || !ShortForm::read(call.op1, call.op1Digits, a) || !ShortForm::read(call.op2, call.op2Digits, b))
        return false;
    u128 result;
    bool negative = a.negative;
    if ((a.negative != b.negative) == subtract) {
        result = addDigits(a.digits, b.digits);
    } else if (a.digits >= b.digits) {
        result = subtractDigits(a.digits, b.digits);
    } else {
        result = subtractDigits(b.digits, a.digits);
        negative = !negative;
        // Operands of equal length are subtracted as they come, and the complement is taken afterwards.
        if (subtract && reducePairs && leadingPlace(a.digits) == leadingPlace(b.digits)) result = reducedPairs(result);
    }
    ShortForm::write(call.dst, call.dstDigits, result, negative);
    return true;
}

} // namespace bcd
