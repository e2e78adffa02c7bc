// Steps on the pairs of packed digits, for what goes through packed items byte by byte.
#pragma once

#include "decimal/packed.h"

namespace bcd {

// The stored digits are the ten's complement of the result: turns `bytes` bytes that end with
// `last` round, but for the sign. Each pair that ends the carry or comes after it loses 90 when it
// is 91 to 99, an oddity that compiled programs see and that stays.
inline void complementPairs(uint8_t *last, size_t bytes)
{
    unsigned units = *last >> 4;
    bool carry = units == 0;
    *last = static_cast<uint8_t>((carry ? 0 : (10 - units) << 4) | (*last & 0x0F));
    for (uint8_t *p = last - 1; bytes > 1; p--, bytes--) {
        unsigned value = 99u + carry - (kPairValue[*p] > 99 ? 99 : kPairValue[*p]);
        carry = value > 99;
        if (carry) value = 0;
        if (value > 90) value -= 90;
        *p = kValuePair[value];
    }
}

// One step of a subtraction.
inline uint8_t subtractPair(int first, int second, bool &borrow)
{
    int difference = first - second - borrow; // -101 to 100: a bad high digit reads as 100
    borrow = difference < 0;
    return kValuePair[static_cast<size_t>(difference + 200) % 100];
}

template <class T>
inline bool hasOnlyDigits(T nibbles)
{
    return ((nibbles >> 3) & (nibbles >> 2 | nibbles >> 1) & all<T>(0x11)) == 0;
}

// Sixes for the digits that carried: bit 0 of a nibble in `carried` tells of the nibble below,
// `wrapped` of the top one.
template <class T>
inline T sixes(T carried, bool wrapped)
{
    constexpr T topSix = static_cast<T>(T{0x60} << (8 * (sizeof(T) - 1)));
    carried &= all<T>(0x11);
    return static_cast<T>((carried >> 2) + (carried >> 3) + (wrapped ? topSix : 0));
}

// One step of the addition: as many digit pairs as T has bytes. The carry is that of the top digit,
// also where the plain sum wraps round (8 + 8).
template <class T>
inline T addWord(T a, T b, bool &carry)
{
    a = static_cast<T>(a + carry);
    T sum, raised;
    carry = __builtin_add_overflow(a, b, &sum);
    carry |= __builtin_add_overflow(sum, all<T>(0x66), &raised);
    return static_cast<T>(sum + sixes<T>(a ^ b ^ raised, carry));
}

// One step of a carry that runs on.
template <class T>
inline T incrementWord(T a, bool &carry)
{
    T sum = static_cast<T>(a + 1);
    T raised = static_cast<T>(a + all<T>(0x66) + 1);
    carry = raised < sum;
    return static_cast<T>(sum + sixes<T>(a ^ raised, carry));
}

} // namespace bcd
