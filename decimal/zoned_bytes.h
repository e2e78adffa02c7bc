// Zoned numbers of up to 24 digits in one to three registers, a digit a byte.
//
// For so few digits folding them into packed form and back costs more than the sum. The bytes are
// added as they are, with the same trick as nibbles (short_number.h): raised by 0xF6, a byte
// overflows exactly when the digits' sum is above 9.
//
//     a + b:  s = a + F6..F6 + b      bytes that carried are right; the others are 0xFx, six too much
//     a - b:  d = a - b               bytes that borrowed are 0xFx, six too much
//
// One test of all bytes validates an item. A sign that is a letter does not pass it: such an item
// is left to the ways that decode its last byte by a table.
#pragma once

#include <type_traits>

#include "decimal/words.h"
#include "decimal/zoned.h"

namespace bcd {

// Digits that fit a word.
template <class Word>
inline constexpr int32_t kByteDigits = sizeof(Word);

template <class Word>
using HalfOf = std::conditional_t<(sizeof(Word) > 8), uint64_t, uint32_t>;

template <class Word>
inline constexpr Word kByteZones = all<Word>(0x30);

// Whether all lengths are from 1 to what the word holds.
template <class Word>
inline bool fitBytes(auto... lengths)
{
    return (static_cast<uint32_t>(lengths - 1) | ...) < static_cast<uint32_t>(kByteDigits<Word>);
}

// An item that fits the word, without the zones of "0" to "9"; the last byte is the lowest.
template <class Word>
[[gnu::always_inline]] inline Word loadBytes(const uint8_t *item, int32_t n)
{
    if constexpr (sizeof(Word) > 8) {
        if (n <= 8) return loadBytes<uint64_t>(item, n);
        const uint64_t front = loadBig<uint64_t>(item) ^ kByteZones<uint64_t>;
        return fromWords(front >> (8 * (16 - n)), loadBig<uint64_t>(item + n - 8) ^ kByteZones<uint64_t>);
    }
    if (n > 3) {
        const Word back = loadBig<uint32_t>(item + n - 4) ^ 0x30303030u;
        if constexpr (sizeof(Word) == 4) return back;
        const Word front = loadBig<uint32_t>(item) ^ 0x30303030u;
        return front << (8 * (n - 4)) | back;
    }
    if (n == 1) return item[0] ^ 0x30u;
    const uint32_t front = loadBig<uint16_t>(item);
    return n == 2 ? front ^ 0x3030u : (front << 8 | item[2]) ^ 0x303030u;
}

// A sign as it is in the last byte: the bit that "0" to "9" and "p" to "y" differ in.
inline constexpr unsigned kByteMinus = 0x40;
inline unsigned signOf(bool negative) { return negative * kByteMinus; }

// The low n digits.
template <class Word>
[[gnu::always_inline]] inline void storeBytes(uint8_t *item, int32_t n, Word digits, unsigned sign)
{
    const Word zoned = digits | kByteZones<Word> | sign;
    if (sizeof(Word) > 8 && n > 8) {
        storeItem(item, static_cast<size_t>(n), zoned);
    } else if (n > 3) {
        if (sizeof(Word) > 4) storeBig<uint32_t>(item, static_cast<uint32_t>(zoned >> (8 * (n - 4))));
        storeBig<uint32_t>(item + n - 4, static_cast<uint32_t>(zoned));
    } else if (n == 1) {
        item[0] = static_cast<uint8_t>(zoned);
    } else if (n == 2) {
        storeBig<uint16_t>(item, static_cast<uint16_t>(zoned));
    } else {
        storeBig<uint16_t>(item, static_cast<uint16_t>(zoned >> 8));
        item[2] = static_cast<uint8_t>(zoned);
    }
}

// Bit 7 of some byte is set unless all bytes are digits.
template <class Word>
inline Word excessOf(Word bytes)
{
    return (bytes + all<Word>(0x76)) | bytes;
}
template <class Word>
inline bool anyExcess(Word excess)
{
    return (excess & all<Word>(0x80)) != 0;
}

template <class Word>
struct ByteNumber {
    Word digits;
    unsigned sign; // 0 or kByteMinus
};

// An item's bytes as a number; what is wrong with them is added to `excess`.
template <class Word>
[[gnu::always_inline]] inline ByteNumber<Word> signedBytes(Word bytes, Word &excess)
{
    const Word digits = bytes & ~Word{kByteMinus};
    excess |= excessOf(digits);
    return {digits, static_cast<unsigned>(bytes) & kByteMinus};
}

template <class Word>
struct ByteSum {
    ByteNumber<Word> number;
    bool beyond; // a carry went out of the word, or the first magnitude was the smaller one
};

// Takes the six off each byte that is 0xFx.
template <class Word>
inline Word withoutSixes(Word bytes)
{
    if constexpr (sizeof(Word) > 8)
        return fromWords(withoutSixes(highWord(bytes)), withoutSixes(lowWord(bytes)));
    else
        return (bytes - (bytes >> 4 & all<Word>(0x06))) & all<Word>(0x0F);
}

// Signs of real data are as good as random, so there is no branch on them, nor on which of the
// magnitudes is the smaller one.
template <bool subtract, class Word>
[[gnu::always_inline]] inline ByteSum<Word> sumOfBytes(ByteNumber<Word> a, ByteNumber<Word> b)
{
    const unsigned differ = a.sign ^ b.sign ^ (subtract ? kByteMinus : 0);
    const Word first = a.digits - b.digits;
    const Word smaller = signMask(first);
    const Word raised = a.digits + b.digits + all<Word>(0xF6);
    const Word sum = pick(differ != 0, (first ^ smaller) - smaller, raised);
    // Below zero, or carried: then the top digit is no 0xFx any more.
    const unsigned below = static_cast<unsigned>(smaller) & kByteMinus;
    const unsigned within = static_cast<unsigned>(raised >> (8 * sizeof(Word) - 8)) & kByteMinus;
    const bool beyond = (within ^ ((within ^ below) & differ)) == differ;
    return {{withoutSixes(sum), a.sign ^ (differ & static_cast<unsigned>(smaller))}, beyond};
}

// Up to 24 digits: sixteen in two registers, and those before them in a third.
struct LongBytes {
    uint64_t high;
    u128 low;
};
inline constexpr int32_t kLongBytes = 24;

[[gnu::always_inline]] inline LongBytes loadLongBytes(const uint8_t *item, int32_t n)
{
    const int32_t before = n - kByteDigits<u128>;
    if (before < 1) return {0, loadBytes<u128>(item, n)};
    return {loadBytes<uint64_t>(item, before), loadBytes<u128>(item + before, kByteDigits<u128>)};
}

[[gnu::always_inline]] inline void storeLongBytes(uint8_t *item, int32_t n, LongBytes digits, unsigned sign)
{
    const int32_t before = n - kByteDigits<u128>;
    if (before < 1) return storeBytes(item, n, digits.low, sign);
    storeBytes(item, before, digits.high, 0);
    storeBytes(item + before, kByteDigits<u128>, digits.low, sign);
}

// The same sum, with what goes over from the low part to the high one.
[[gnu::always_inline]] inline LongBytes sumOfLongBytes(LongBytes a, LongBytes b, bool differ, bool &smaller)
{
    const LongBytes first{a.high - b.high - (a.low < b.low), a.low - b.low};
    const uint64_t mask = signMask(first.high);
    const u128 difference = (first.low ^ fromWords(mask, mask)) - fromWords(mask, mask);
    const u128 raised = a.low + b.low + all<u128>(0xF6);
    const bool carry = raised < all<u128>(0xF6);
    smaller = mask != 0;
    return {withoutSixes(pick(differ, (first.high ^ mask) + (smaller & (first.low == 0)),
                              a.high + b.high + all<uint64_t>(0xF6) + carry)),
            withoutSixes(pick(differ, difference, raised))};
}

// The value of eight digits: pairs, then fours, then all.
inline uint64_t valueOfBytes(uint64_t bytes)
{
    bytes = (bytes + (bytes >> 8) * 10) & 0x00FF00FF00FF00FFu;
    bytes = (bytes + (bytes >> 16) * 100) & 0x0000FFFF0000FFFFu;
    return (bytes & 0xFFFF) + (bytes >> 32) * 10000;
}

} // namespace bcd
