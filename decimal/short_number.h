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
// Which nibbles carried or borrowed shows in their own top bits, so the two halves of a word are corrected apart. The nibble of a packed item's
// sign stays in the word as a 0: so nothing has to be shifted on the way from the item and back.
//
// An item with any unclean byte is not read at all. It goes the long way through the validators and the general workers, which define what
// comes of it.
#pragma once

#include "decimal/packed.h"
#include "decimal/words.h"
#include "decimal/zoned.h"

namespace bcd {

inline constexpr int32_t kShortDigits = 31;

template <class Word>
struct NumberIn {
    Word digits; // units in the second lowest nibble, the lowest nibble is 0
    bool negative;

    Word value() const { return digits >> 4; } // units in the lowest nibble
};

using ShortNumber = NumberIn<u128>;

inline bool isShort(int32_t digits) { return static_cast<uint32_t>(digits) - 1 < static_cast<uint32_t>(kShortDigits); }

template <class T>
inline bool hasOnlyDigits(T nibbles)
{
    return ((nibbles >> 3) & (nibbles >> 2 | nibbles >> 1) & all<T>(0x11)) == 0;
}

// A nibble's top bit moved to where a six has its bits.
inline uint64_t sixWhere(uint64_t topBits)
{
    topBits &= all<uint64_t>(0x88);
    return topBits >> 1 | topBits >> 2;
}

// The sixes to take off a sum of a number that was raised by sixes.
inline uint64_t sixesLeft(uint64_t sum, uint64_t raised, uint64_t other)
{
    return sixWhere(~((raised & other) | ((raised | other) & ~sum)));
}

// The sixes that were borrowed too much.
inline uint64_t sixesBorrowed(uint64_t difference, uint64_t from, uint64_t other)
{
    return sixWhere((~from & other) | ((~from | other) & difference));
}

// What does not fit is lost on the left.
inline uint64_t addDigits(uint64_t a, uint64_t b)
{
    uint64_t raised = a + all<uint64_t>(0x66);
    uint64_t sum = raised + b;
    return sum - sixesLeft(sum, raised, b);
}

inline u128 addDigits(u128 a, u128 b)
{
    uint64_t raisedLow = lowWord(a) + all<uint64_t>(0x66);
    uint64_t raisedHigh = highWord(a) + all<uint64_t>(0x66);
    uint64_t low;
    bool carry = __builtin_add_overflow(raisedLow, lowWord(b), &low);
    uint64_t high = raisedHigh + highWord(b) + carry;
    return fromWords(high - sixesLeft(high, raisedHigh, highWord(b)), low - sixesLeft(low, raisedLow, lowWord(b)));
}

// a must not be below b.
inline uint64_t subtractDigits(uint64_t a, uint64_t b)
{
    uint64_t difference = a - b;
    return difference - sixesBorrowed(difference, a, b);
}

inline u128 subtractDigits(u128 a, u128 b)
{
    u128 difference = a - b;
    uint64_t high = highWord(difference), low = lowWord(difference);
    return fromWords(high - sixesBorrowed(high, highWord(a), highWord(b)), low - sixesBorrowed(low, lowWord(a), lowWord(b)));
}

// Where the first digit stands; numbers of one length have the same.
inline int leadingPlace(uint64_t digits) { return (63 - __builtin_clzll(digits | 0x10)) / 4; }
inline int leadingPlace(u128 digits)
{
    uint64_t high = highWord(digits);
    return high ? 16 + (63 - __builtin_clzll(high)) / 4 : leadingPlace(lowWord(digits));
}

// A form as the arithmetic on short numbers sees it.
namespace shortforms {

struct Pckd {
    // False, and nothing is read into `number`, when the item is too long or a validator might have something to say about it.
    static bool read(const uint8_t *item, int32_t n, ShortNumber &number) { return isShort(n) && readWord(item, n, number); }

    // The item must fit the word.
    template <class Word>
    static bool readWord(const uint8_t *item, int32_t n, NumberIn<Word> &number)
    {
        Word raw;
        if constexpr (sizeof(Word) == 8)
            raw = loadShort(item, packedBytes(n));
        else
            raw = loadItem(item, packedBytes(n));
        unsigned sign = static_cast<unsigned>(raw) & 0x0F;
        number = {raw ^ sign, sign == 0x0B || sign == 0x0D};
        auto unclean = [](uint64_t word) { return (word >> 3) & (word >> 2 | word >> 1); };
        uint64_t found = unclean(lowWord(number.digits));
        if constexpr (sizeof(Word) > 8) found |= unclean(highWord(number.digits));
        return ((found & all<uint64_t>(0x11)) == 0) & (sign >= 10);
    }

    static void write(uint8_t *item, int32_t n, u128 digits, bool negative)
    {
        storeItem(item, packedBytes(n), digits | signNibble(negative));
        clearUnusedNibble(item, n);
    }

    static void write(uint8_t *item, int32_t n, uint64_t digits, bool negative)
    {
        storeShort(item, packedBytes(n), digits | signNibble(negative));
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
        number = {digits << 4, last.negative};
        return last.valid & ((bad & 0x8080808080808080u) == 0);
    }

    static void write(uint8_t *item, int32_t n, u128 digits, bool negative)
    {
        writeValue(item, n, digits >> 4);
        if (negative) item[n - 1] |= kZoneMinus;
    }

    // Up to 32 digits, units in the lowest nibble.
    static void writeValue(uint8_t *item, int32_t n, u128 digits)
    {
        for (int32_t left = n; left > 0; left -= 8, digits >>= 32) {
            uint64_t bytes = unpacked(static_cast<uint32_t>(digits));
            if (left >= 8)
                storeBig<uint64_t>(item + left - 8, bytes);
            else
                storeShort(item, static_cast<size_t>(left), bytes);
        }
    }
};

} // namespace shortforms
} // namespace bcd
