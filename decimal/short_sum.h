// Addition and subtraction of short clean items, packed and zoned.
#pragma once

#include <type_traits>

#include "decimal/integer_magnitude.h"
#include "decimal/one_digit.h"
#include "decimal/short_number.h"
#include "decimal/short_product.h"
#include "decimal/zoned_bytes.h"

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

// A sum, and what the odd rules of some entries ask about it.
template <class Word>
struct SumIn {
    NumberIn<Word> number;
    bool complemented; // the first magnitude was subtracted from: it was the smaller one
};

// Nothing but the sum. Signs of real data are as good as random, so there is no branch on them:
// both results are worked out and one is taken.
template <bool subtract, class Word>
[[gnu::always_inline]] inline SumIn<Word> plainSum(const NumberIn<Word> &a, const NumberIn<Word> &b)
{
    const bool differ = (a.negative != b.negative) != subtract;
    const bool complemented = differ & (a.digits < b.digits);
    const Word swap = (a.digits ^ b.digits) & maskOf<Word>(complemented);
    const Word sum = addDigits(a.digits, b.digits);
    const Word difference = subtractDigits(a.digits ^ swap, b.digits ^ swap);
    const Word digits = sum ^ ((sum ^ difference) & maskOf<Word>(differ));
    return {{digits, a.negative != complemented}, complemented};
}

template <bool subtract, bool reducePairs, class Word>
[[gnu::always_inline]] inline NumberIn<Word> sumOf(const NumberIn<Word> &a, const NumberIn<Word> &b)
{
    SumIn<Word> sum = plainSum<subtract>(a, b);
    // Operands of equal length are subtracted as they come, and the complement is taken afterwards.
    // The first test is for few digits, which have no nineties: nothing predicts the second.
    if (subtract && reducePairs && sum.number.digits >= 0x0910 && sum.complemented && sameLength(a.digits, b.digits))
        sum.number.digits = reducedPairs(sum.number.digits);
    return sum.number;
}

// dst = op1 + op2, or op1 - op2. False, and nothing is written, unless all three items fit the word
// and the operands are clean.
template <bool subtract, class Word>
[[gnu::always_inline]] inline bool shortZonedSum(const auto &call)
{
    using shortforms::Znd;
    if (!Znd::fits(call.dstDigits, Word{}) || !Znd::fits(call.op1Digits, Word{}) || !Znd::fits(call.op2Digits, Word{}))
        return false;
    NumberIn<Word> a, b;
    Gatherer gatherer;
    bool valid = Znd::gather(gatherer, call.op1, call.op1Digits, a);
    valid &= Znd::gather(gatherer, call.op2, call.op2Digits, b);
    if (!(valid & gatherer.clean())) return false;
    NumberIn<Word> sum = sumOf<subtract, false>(a, b);
    Znd::write(call.dst, call.dstDigits, sum.digits, sum.negative);
    return true;
}

// The same for items that fit the word, and not half of it, a digit a byte.
template <bool subtract, class Word>
[[gnu::always_inline]] inline bool byteZonedSum(const auto &call)
{
    if (!fitBytes<Word>(call.op1Digits, call.op2Digits, call.dstDigits)) return false;
    if (sizeof(Word) > 4 && fitBytes<HalfOf<Word>>(call.op1Digits, call.op2Digits, call.dstDigits)) return false;
    Word excess = 0;
    const auto a = signedBytes(loadBytes<Word>(call.op1, call.op1Digits), excess);
    const auto b = signedBytes(loadBytes<Word>(call.op2, call.op2Digits), excess);
    if (anyExcess(excess)) return false;
    const auto sum = sumOfBytes<subtract>(a, b).number;
    storeBytes(call.dst, call.dstDigits, sum.digits, sum.sign);
    return true;
}

// The same for more digits.
template <bool subtract>
[[gnu::always_inline]] inline bool longZonedSum(const auto &call)
{
    const auto fits = [](int32_t n) { return static_cast<uint32_t>(n - 1) < static_cast<uint32_t>(kLongBytes); };
    if (!fits(call.op1Digits) || !fits(call.op2Digits) || !fits(call.dstDigits)) return false;
    LongBytes a = loadLongBytes(call.op1, call.op1Digits), b = loadLongBytes(call.op2, call.op2Digits);
    u128 excess = excessOf(a.high) | excessOf(b.high);
    const auto first = signedBytes(a.low, excess), second = signedBytes(b.low, excess);
    if (anyExcess(excess)) return false;
    a.low = first.digits;
    b.low = second.digits;
    const unsigned differ = first.sign ^ second.sign ^ (subtract ? kByteMinus : 0);
    bool smaller;
    const LongBytes sum = sumOfLongBytes(a, b, differ != 0, smaller);
    storeLongBytes(call.dst, call.dstDigits, sum, first.sign ^ (differ & (0 - unsigned{smaller})));
    return true;
}

// The sum of packed items that fit the word; their lengths may be known where this is called.
template <bool subtract, class Word>
[[gnu::always_inline]] inline bool packedSum(const auto &call, int32_t op1Digits, int32_t op2Digits,
                                             NumberIn<Word> &sum)
{
    shortforms::Pckd::Raw<Word> a(call.op1, op1Digits), b(call.op2, op2Digits);
    if (!a.hasSign() || !b.hasSign() || !areDigits(a.digits, b.digits)) return false;
    sum = sumOf<subtract, true, Word>(a, b);
    return true;
}

// The same into an item.
template <bool subtract, class Word>
[[gnu::always_inline]] inline bool shortPackedSum(const auto &call)
{
    using shortforms::Pckd;
    NumberIn<Word> sum;
    const auto longest = static_cast<uint32_t>(call.op1Digits | call.op2Digits | call.dstDigits);
    if (longest > kWordDigits<Word>) return false;
    if (sizeof(Word) == 8 && longest <= 3) {
        const int32_t common = call.op1Digits & call.op2Digits & call.dstDigits;
        if (common == 1 && longest == 1) return digitSum<forms::Pckd, subtract>(call.op1, call.op2, call.dst);
        if (common & 2) { // all of two bytes
            if (!packedSum<subtract>(call, 3, 3, sum)) return false;
            Pckd::writeCut(call.dst, 3, lowDigits(sum.digits, call.dstDigits), sum.negative);
            return true;
        }
    }
    if (!packedSum<subtract>(call, call.op1Digits, call.op2Digits, sum)) return false;
    Pckd::write(call.dst, call.dstDigits, sum.digits, sum.negative);
    return true;
}

// The digits of an integer's magnitude, where they fit the word.
[[gnu::always_inline]] inline bool integerDigits(uint64_t value, uint64_t &digits)
{
    if (value >= kLimb / 10) return false;
    if (__builtin_expect(value < 10, 1)) // ADD 1 TO COUNTER
        digits = value;
    else
        digits = value < 1000          ? threeDigitsApart<0x10>(static_cast<uint32_t>(value))
                 : value < 100'000'000 ? eightDigits(static_cast<uint32_t>(value))
                                       : limbDigits(value);
    return true;
}
inline bool integerDigits(uint64_t value, u128 &digits)
{
    digits = digitsOf(u128{value});
    return true;
}

// What a packed step changes beside the plain sum: the sign turns where the units borrow.
template <bool subtract, class Word>
inline bool unitsBorrow(const NumberIn<Word> &item, const NumberIn<Word> &integer)
{
    const bool differ = (item.negative != integer.negative) != subtract;
    return differ & ((lowWord(item.digits) & 15) < (lowWord(integer.digits) & 15));
}

// item + value where the item has 16 to 31 digits and nothing happens beyond its last 15, which is
// the rule: only those are touched.
template <class Form, bool subtract>
[[gnu::always_inline]] inline bool tailIntegerSum(const auto &call)
{
    constexpr bool packed = std::is_same_v<Form, shortforms::Pckd>;
    constexpr int32_t kTail = kWordDigits<uint64_t>;
    const int32_t n = call.opDigits;
    NumberIn<uint64_t> item, integer;
    if (!isShort(n) || n <= kTail || call.value == 0) return false;
    uint8_t *tail;
    if constexpr (packed) {
        tail = call.op + Form::bytes(n) - Form::bytes(kTail);
        // The front may overlap the tail; digits are digits.
        const auto front = loadBig<uint64_t>(call.op);
        typename Form::template Raw<uint64_t> raw(tail, kTail);
        if (!raw.hasSign() || !areDigits(front >> 4, front & 0x0F, raw.digits)) return false;
        item = raw;
    } else {
        tail = call.op + n - kTail;
        Gatherer gatherer;
        bool valid = Form::gather(gatherer, tail, kTail, item);
        gatherer.digits(call.op, n - kTail);
        if (!(valid & gatherer.clean())) return false;
    }
    integer.negative = call.value < 0;
    if (!integerDigits(magnitude(call.value), integer.digits)) return false;

    SumIn<uint64_t> sum = plainSum<subtract>(item, integer);
    if (sum.complemented | (sum.number.digits >> (4 * kTail) != 0)) return false;
    if constexpr (packed) sum.number.negative ^= unitsBorrow<subtract>(item, integer);
    Form::write(tail, kTail, sum.number.digits, sum.number.negative);
    if constexpr (packed) clearUnusedNibble(call.op, n);
    return true;
}

// item + value, or item - value, into the item. False, and nothing is written, unless item and
// integer fit the word, the integer has no more digits than the item, and the item is clean.
template <class Form, bool subtract, class Word>
[[gnu::always_inline]] inline bool shortIntegerSum(const auto &call)
{
    constexpr bool packed = std::is_same_v<Form, shortforms::Pckd>;
    const int32_t n = call.opDigits;
    NumberIn<Word> item, integer;
    if (packed && n == 1 && digitStep<forms::Pckd, subtract>(call.op, call.value)) return true;
    if (static_cast<uint32_t>(n) - 1 >= kWordDigits<Word>) return false;
    if constexpr (packed) {
        typename Form::template Raw<Word> raw(call.op, n);
        item = raw;
        if (!raw.hasSign() || !areDigits(raw.digits)) return false;
    } else {
        if (!Form::read(call.op, n, item)) return false;
    }
    if (call.value == 0) return true; // the item is not even normalised
    integer.negative = call.value < 0;
    if (!integerDigits(magnitude(call.value), integer.digits)) return false;
    const int32_t room = packed ? n | 1 : n;
    if (anyBit(integer.digits >> (4 * room))) return false;

    SumIn<Word> sum = plainSum<subtract>(item, integer);
    if constexpr (packed) {
        sum.number.negative ^= unitsBorrow<subtract>(item, integer);
        // Every complement loses the nineties, whatever the lengths are.
        if (sum.complemented) sum.number.digits = reducedPairs(sum.number.digits);
    }
    Form::write(call.op, n, sum.number.digits, sum.number.negative);
    return true;
}

// The same for zoned items and integers that fit the word, a digit a byte.
template <bool subtract, class Word>
[[gnu::always_inline]] inline bool byteIntegerSum(const auto &call, Word integer)
{
    const int32_t n = call.opDigits;
    if (n < kByteDigits<Word> && integer >> (8 * n)) return false;
    Word excess = 0;
    const auto item = signedBytes(loadBytes<Word>(call.op, n), excess);
    if (anyExcess(excess)) return false;
    if (call.value == 0) return true;
    const auto sum = sumOfBytes<subtract>(item, {integer, signOf(call.value < 0)}).number;
    storeBytes(call.op, n, sum.digits, sum.sign);
    return true;
}

// For zoned items of 9 to 31 digits where nothing happens beyond the last eight; only those are
// touched.
template <bool subtract>
[[gnu::always_inline]] inline bool byteTailSum(const auto &call, uint64_t integer)
{
    const int32_t before = call.opDigits - kByteDigits<uint64_t>;
    uint8_t *tail = call.op + before;
    uint64_t excess = 0;
    const auto item = signedBytes(loadBytes<uint64_t>(tail, kByteDigits<uint64_t>), excess);
    // The last of these loads may reach into the tail, but not to its last byte.
    for (int32_t at = 0; at < before; at += kByteDigits<uint64_t>)
        excess |= excessOf(load<uint64_t>(call.op + at) ^ kByteZones<uint64_t>);
    if (anyExcess(excess)) return false;
    if (call.value == 0) return true;
    const auto sum = sumOfBytes<subtract>(item, {integer, signOf(call.value < 0)});
    if (sum.beyond) return false;
    storeBytes(tail, kByteDigits<uint64_t>, sum.number.digits, sum.number.sign);
    return true;
}

template <bool subtract>
[[gnu::always_inline]] inline bool shortestIntegerSum(const auto &call)
{
    if (!isShort(call.opDigits)) return false;
    const uint64_t value = magnitude(call.value);
    if (value < 10 && call.opDigits == 1) return digitStep<forms::ZndTO, subtract>(call.op, call.value);
    if (value < 10 && fitBytes<uint32_t>(call.opDigits))
        return byteIntegerSum<subtract>(call, static_cast<uint32_t>(value));
    if (value >= 100'000'000) return false;
    const uint64_t integer = value < 10 ? value : eightBytes(static_cast<uint32_t>(value));
    if (call.opDigits > kByteDigits<uint64_t>) return byteTailSum<subtract>(call, integer);
    return byteIntegerSum<subtract>(call, integer);
}

} // namespace bcd
