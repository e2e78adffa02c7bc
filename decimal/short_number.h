// Numbers of up to 31 digits in two registers.
//
// Nearly all items of real programs have at most 31 digits and clean bytes. Such an item is read as one 128-bit word with a digit a nibble,
// packed and zoned alike (12 3D and "12s" both give 0x123 and minus), and addition and subtraction of whole numbers are then a few
// operations on all digits at once:
//
//     a + b:  s = a + 0x66..6 + b      every nibble that carries is right; the others have six too much
//             s - 6 in each nibble that did not carry
//     a - b:  d = a - b, a not below b  every nibble that borrowed took 16 where 10 was meant
//             d - 6 in each nibble that borrowed
//
// An item with any unclean byte is not read at all. It goes the long way through the validators and the general workers, which define what
// comes of it.
#pragma once

#include "decimal/packed.h"
#include "decimal/words.h"
#include "decimal/zoned.h"

namespace bcd {

inline constexpr int32_t kShortDigits = 31;

struct ShortNumber {
    u128 digits; // units in the lowest nibble; the top nibble is 0
    bool negative;
};

inline bool isShort(int32_t digits) { return static_cast<uint32_t>(digits) - 1 < static_cast<uint32_t>(kShortDigits); }

template <class T>
inline bool hasOnlyDigits(T nibbles)
{
    return ((nibbles >> 3) & (nibbles >> 2 | nibbles >> 1) & all<T>(0x11)) == 0;
}

inline u128 addDigits(u128 a, u128 b)
{
    constexpr u128 sixes = all<u128>(0x66) >> 4;
    u128 raised = a + sixes;
    u128 sum = raised + b;
    u128 notCarried = ~(raised ^ b ^ sum) & (all<u128>(0x11) & ~u128{1});
    return sum - (notCarried >> 2 | notCarried >> 3);
}

// a must not be below b.
inline u128 subtractDigits(u128 a, u128 b)
{
    u128 difference = a - b;
    u128 borrowed = (a ^ b ^ difference) & (all<u128>(0x11) & ~u128{1});
    return difference - (borrowed >> 2 | borrowed >> 3);
}

// At least 1.
inline int digitCount(u128 digits)
{
    auto high = static_cast<uint64_t>(digits >> 64);
    if (high) return 32 - __builtin_clzll(high) / 4;
    return 16 - __builtin_clzll(static_cast<uint64_t>(digits) | 1) / 4;
}

// A form as the arithmetic on short numbers sees it.
namespace shortforms {

struct Pckd {
    // False, and nothing is read into `number`, when the item is too long or a validator might have something to say about it.
    static bool read(const uint8_t *item, int32_t n, ShortNumber &number)
    {
        if (!isShort(n)) return false;
        u128 raw = loadItem(item, packedBytes(n));
        unsigned sign = static_cast<unsigned>(raw) & 0x0F;
        number = {raw >> 4, sign == 0x0B || sign == 0x0D};
        return (sign >= 10) & hasOnlyDigits(number.digits);
    }

    static void write(uint8_t *item, int32_t n, u128 digits, bool negative)
    {
        storeItem(item, packedBytes(n), digits << 4 | signNibble(negative));
        clearUnusedNibble(item, n);
    }
};

struct Znd {
    // Eight digit bytes to eight nibbles.
    static uint32_t packed(uint64_t bytes)
    {
        bytes = (bytes | bytes >> 4) & 0x00FF00FF00FF00FFu;
        bytes = (bytes | bytes >> 8) & 0x0000FFFF0000FFFFu;
        return static_cast<uint32_t>(bytes | bytes >> 16);
    }

    static uint64_t unpacked(uint32_t nibbles)
    {
        uint64_t bytes = nibbles;
        bytes = (bytes | bytes << 16) & 0x0000FFFF0000FFFFu;
        bytes = (bytes | bytes << 8) & 0x00FF00FF00FF00FFu;
        bytes = (bytes | bytes << 4) & 0x0F0F0F0F0F0F0F0Fu;
        return bytes | 0x3030303030303030u;
    }

    // Every byte but the last must be "0" to "9"; the last is decoded.
    static bool read(const uint8_t *item, int32_t n, ShortNumber &number)
    {
        if (!isShort(n)) return false;
        constexpr uint64_t zones = 0x3030303030303030u;
        const Overpunch &last = kOverpunch[item[n - 1]];
        u128 digits = 0;
        uint64_t bad = 0;
        for (int32_t left = n, at = 0; left > 0; left -= 8, at += 32) {
            uint64_t bytes =
                left >= 8 ? loadBig<uint64_t>(item + left - 8) : loadShort(item, static_cast<size_t>(left)) | zones << (8 * left);
            if (at == 0) bytes = (bytes & ~uint64_t{0xFF}) | zonedDigit(last.digit);
            bytes ^= zones;
            bad |= (bytes + 0x7676767676767676u) | bytes;
            digits |= u128{packed(bytes)} << at;
        }
        number = {digits, last.negative};
        return last.valid & ((bad & 0x8080808080808080u) == 0);
    }

    static void write(uint8_t *item, int32_t n, u128 digits, bool negative)
    {
        for (int32_t left = n; left > 0; left -= 8, digits >>= 32) {
            uint64_t bytes = unpacked(static_cast<uint32_t>(digits));
            if (left >= 8)
                storeBig<uint64_t>(item + left - 8, bytes);
            else
                storeShort(item, static_cast<size_t>(left), bytes);
        }
        if (negative) item[n - 1] |= kZoneMinus;
    }
};

} // namespace shortforms
} // namespace bcd
