// Multiplication and division of short clean items through binary.
//
// 31 digits are two limbs to the base 10^16, each 16 nibbles of the number's word: so a limb
// becomes binary, and binary a limb, in one register, and products of limbs fit 128 bits.
#pragma once

#include "decimal/short_number.h"

namespace bcd {

inline constexpr uint64_t kLimb = 10'000'000'000'000'000u; // 10^16

// 16 digits, one a nibble, to their value: pairs of digits, then of pairs, and so on.
inline uint64_t limbValue(uint64_t nibbles)
{
    uint64_t v = nibbles - 6 * ((nibbles >> 4) & 0x0F0F0F0F0F0F0F0Fu);
    v = (v & 0x00FF00FF00FF00FFu) + 100 * ((v >> 8) & 0x00FF00FF00FF00FFu);
    v = (v & 0x0000FFFF0000FFFFu) + 10000 * ((v >> 16) & 0x0000FFFF0000FFFFu);
    return (v & 0xFFFFFFFFu) + 100000000 * (v >> 32);
}

// The same backwards for a value below 10^8: each step splits lanes by a multiplication, as the
// quotient of a lane fits the lane. The last one leaves the two digits of a pair `apart`, by 0x10
// or by 0x100.
template <unsigned apart>
inline uint64_t eightDigitsApart(uint32_t value)
{
    uint64_t v = value + (uint64_t{1} << 32) * (value / 10000) -
                 uint64_t{10000} * (value / 10000); // lanes: tens of thousands, rest
    uint64_t hundreds = ((v * 10486) >> 20) & 0x0000007F0000007Fu;
    v += hundreds * (0x10000 - 100);
    uint64_t tens = ((v * 103) >> 10) & 0x000F000F000F000Fu;
    return v + tens * (apart - 10);
}

// And for a value below 1000.
template <unsigned apart>
inline uint32_t threeDigitsApart(uint32_t value)
{
    const uint32_t tens = value * 205 >> 11, hundreds = value * 41 >> 12;
    return value + tens * (apart - 10) + hundreds * (apart * (apart - 10));
}

// A digit a byte.
inline uint64_t eightBytes(uint32_t value) { return eightDigitsApart<0x100>(value); }

// A digit a nibble.
inline uint32_t eightDigits(uint32_t value)
{
    uint64_t v = eightDigitsApart<0x10>(value);
    v = (v | v >> 8) & 0x0000FFFF0000FFFFu;
    return static_cast<uint32_t>(v | v >> 16);
}

// Below 10^16.
inline uint64_t limbDigits(uint64_t value)
{
    auto high = static_cast<uint32_t>(value / 100000000);
    auto low = static_cast<uint32_t>(value % 100000000);
    return uint64_t{eightDigits(high)} << 32 | eightDigits(low);
}

struct Split {
    uint64_t quotient;
    uint64_t rest;
};

// Division by 10^16 of a value whose quotient fits: the estimate from the upper bits is right or
// one too small.
inline Split splitLimb(u128 value)
{
    constexpr auto reciprocal = static_cast<uint64_t>((u128{1} << 117) / kLimb); // 2^(45 + 72) / 10^16, below 2^64
    auto upper = static_cast<uint64_t>(value >> 45);
    auto quotient = static_cast<uint64_t>((u128{upper} * reciprocal) >> 72);
    uint64_t rest = static_cast<uint64_t>(value) - quotient * kLimb;
    bool more = rest >= kLimb;
    return {quotient + more, rest - (more ? kLimb : 0)};
}

inline u128 digitsOf(u128 value)
{
    if (value < kLimb) return limbDigits(static_cast<uint64_t>(value));
    Split split = splitLimb(value);
    return u128{limbDigits(split.quotient)} << 64 | limbDigits(split.rest);
}

inline u128 valueOf(u128 digits)
{
    uint64_t low = limbValue(static_cast<uint64_t>(digits));
    auto high = static_cast<uint64_t>(digits >> 64);
    return high ? u128{limbValue(high)} * kLimb + low : low;
}

// The 62 digits of a product, in two words of 32.
struct LongDigits {
    u128 low;
    u128 high;
};

inline u128 digitsOf(const Split &limbs) { return fromWords(limbDigits(limbs.quotient), limbDigits(limbs.rest)); }

inline LongDigits multiplyDigits(uint64_t a, uint64_t b)
{
    return {digitsOf(splitLimb(u128{limbValue(a)} * limbValue(b))), 0};
}

inline LongDigits multiplyDigits(u128 a, u128 b)
{
    if (highWord(a | b) == 0) return multiplyDigits(lowWord(a), lowWord(b));
    uint64_t a0 = limbValue(lowWord(a)), a1 = limbValue(highWord(a));
    uint64_t b0 = limbValue(lowWord(b)), b1 = limbValue(highWord(b));
    Split lowest = splitLimb(u128{a0} * b0);
    Split middle = splitLimb(u128{a0} * b1 + u128{a1} * b0 + lowest.quotient);
    Split highest = splitLimb(u128{a1} * b1 + middle.quotient);
    return {digitsOf(Split{middle.rest, lowest.rest}), digitsOf(highest)};
}

// By a divisor above the upper half, so that the quotient fits: one instruction where the compiler
// would call a routine.
inline Split divideWord(u128 value, uint64_t by)
{
    Split result;
    asm("divq %4"
        : "=a"(result.quotient), "=d"(result.rest)
        : "a"(static_cast<uint64_t>(value)), "d"(static_cast<uint64_t>(value >> 64)), "r"(by)
        : "cc");
    return result;
}

struct Quotient {
    u128 digits;
    u128 restDigits;
};

// b must not be zero.
inline Quotient divideDigits(u128 a, u128 b)
{
    u128 dividend = valueOf(a);
    u128 divisor = valueOf(b);
    if (divisor >> 64) {
        u128 quotient = dividend / divisor;
        return {digitsOf(quotient), digitsOf(dividend - quotient * divisor)};
    }
    auto by = static_cast<uint64_t>(divisor);
    auto upper = static_cast<uint64_t>(dividend >> 64);
    auto lower = static_cast<uint64_t>(dividend);
    if (upper == 0) return {digitsOf(lower / by), digitsOf(lower % by)};
    const Split lowest = divideWord(u128{upper % by} << 64 | lower, by);
    return {digitsOf(u128{upper / by} << 64 | lowest.quotient), digitsOf(lowest.rest)};
}

} // namespace bcd
