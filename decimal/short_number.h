// Numbers of up to 31 digits in two registers.
//
// Nearly all items of real programs have at most 31 digits and clean bytes. Such an item is read as
// one 128-bit word with a digit a nibble, packed and zoned alike (12 3D and "12s" both give 0x123
// and minus), and addition and subtraction of whole numbers are then a few operations on all digits
// at once:
//
//     a + b:  s = a + 0x66..6 + b      every nibble that carries is right; the others have six too much
//             s - 6 in each nibble that did not carry
//     a - b:  d = a - b, a not below b  every nibble that borrowed took 16 where 10 was meant
//             d - 6 in each nibble that borrowed
//
// Which nibbles carried or borrowed shows in bit 0 of the nibble above them: it is not the
// exclusive or of the operands' bits there. For that the top nibble of the word stays free.
//
// An item with any unclean byte is not read at all. It goes the long way through the validators and
// the general workers, which define what comes of it.
#pragma once

#include "decimal/packed.h"
#include "decimal/words.h"
#include "decimal/zoned.h"
#include "decimal/zoned_words.h"

namespace bcd {

inline constexpr int32_t kShortDigits = 31;

// Digits that fit a word beside the free nibble.
template <class Word>
inline constexpr uint32_t kWordDigits = 2 * sizeof(Word) - 1;

template <class Word>
struct NumberIn {
    Word digits; // units in the lowest nibble
    bool negative;
};

using ShortNumber = NumberIn<u128>;

inline bool isShort(int32_t digits) { return static_cast<uint32_t>(digits) - 1 < static_cast<uint32_t>(kShortDigits); }

// A six for every digit.
template <class Word>
inline constexpr Word kSixes = all<Word>(0x66) >> 4;

// Bit 0 of every nibble that has a digit below it.
template <class Word>
inline constexpr Word kAbove = all<Word>(0x11) - 1;

inline bool anyBit(uint64_t word) { return word != 0; }
inline bool anyBit(u128 word) { return (highWord(word) | lowWord(word)) != 0; }

// The low n digits.
inline uint64_t lowDigits(uint64_t digits, int32_t n)
{
    return n < 16 ? digits & ((uint64_t{1} << (4 * n)) - 1) : digits;
}
inline u128 lowDigits(u128 digits, int32_t n)
{
    if (n > 16) return fromWords(lowDigits(highWord(digits), n - 16), lowWord(digits));
    return lowDigits(lowWord(digits), n);
}

// The sign of a result, 0 or what a minus is there: a zero has one only where the mode keeps it.
inline unsigned resultSign(unsigned sign, bool keepsZero, bool anyDigit)
{
    return pick(keepsZero | anyDigit, sign, 0u);
}

// All digits of all numbers are 0 to 9: the raise that an addition begins with carries nowhere.
template <class Word, class... Words>
inline bool areDigits(Word first, Words... others)
{
    auto change = [](Word digits) { return digits ^ (digits + kSixes<Word>); };
    return !anyBit((change(first) | ... | change(others)) & kAbove<Word>);
}

// A six below each marked bit.
inline uint64_t sixesBelow(uint64_t marks) { return (marks >> 3) * 3; }
inline u128 sixesBelow(u128 marks)
{
    uint64_t low = lowWord(marks) >> 3 | highWord(marks) << 61;
    return fromWords(sixesBelow(highWord(marks)), low * 3);
}

// A digit more than both operands have may come out.
template <class Word>
inline Word addDigits(Word a, Word b)
{
    Word raised = a + kSixes<Word>;
    Word sum = raised + b;
    return sum - sixesBelow(~(raised ^ b ^ sum) & kAbove<Word>);
}

// a must not be below b.
template <class Word>
inline Word subtractDigits(Word a, Word b)
{
    Word difference = a - b;
    return difference - sixesBelow((a ^ b ^ difference) & kAbove<Word>);
}

// Whether the smaller number, a, has as many digits as b, which is not zero. A zero has none.
inline bool sameLength(uint64_t a, uint64_t b) { return a >> (60 - (__builtin_clzll(b) & 60)) != 0; }
inline bool sameLength(u128 a, u128 b)
{
    if (highWord(b)) return highWord(a) && sameLength(highWord(a), highWord(b));
    return sameLength(lowWord(a), lowWord(b));
}

// A form as the arithmetic on short numbers sees it.
namespace shortforms {

struct Pckd {
    // An item of 0 to 31 digits.
    static size_t bytes(int32_t n) { return (static_cast<size_t>(n) >> 1) + 1; }

    // What is in an item that fits the word, clean or not.
    template <class Word>
    struct Raw {
        Word digits;
        unsigned sign;

        Raw(const uint8_t *item, int32_t n)
        {
            Word whole = loadAs<Word>(item, bytes(n));
            digits = shiftedRight(whole, 4);
            sign = static_cast<unsigned>(whole) & 0x0F;
        }
        bool negative() const { return isNegativeNibble(static_cast<uint8_t>(sign)); }
        bool hasSign() const { return sign >= 10; }
        operator NumberIn<Word>() const { return {digits, negative()}; }
    };

    // False, and nothing is read into `number`, when the item is too long or a validator might have
    // something to say about it.
    static bool read(const uint8_t *item, int32_t n, ShortNumber &number)
    {
        if (!isShort(n)) return false;
        Raw<u128> raw(item, n);
        number = raw;
        return raw.hasSign() && areDigits(raw.digits);
    }

    // Digits that are no more than the item has.
    template <class Word>
    static void writeCut(uint8_t *item, int32_t n, Word digits, unsigned minus)
    {
        storeAs<Word>(item, bytes(n), shiftedLeft(digits, 4) | (kPlus + minus));
    }

    template <class Word>
    static void write(uint8_t *item, int32_t n, Word digits, bool negative)
    {
        if constexpr (sizeof(Word) == 8) {
            // The first nibble of an even item is no digit.
            if ((n & 1) == 0) digits &= (Word{1} << (4 * n)) - 1;
            writeCut(item, n, digits, negative);
        } else {
            writeCut(item, n, digits, negative);
            clearUnusedNibble(item, n);
        }
    }
};

struct Znd {
    // An item of 1 to 15, or 31, digits. Every byte but the last must be "0" to "9"; the last is
    // decoded. Whether the item was clean is known when the gatherer is asked as well.
    template <class Word>
    [[gnu::always_inline]] static bool gather(Gatherer &gatherer, const uint8_t *item, int32_t n,
                                              NumberIn<Word> &number)
    {
        const auto last = load<Overpunch>(&kOverpunch[item[n - 1]]);
        number = {gatherBeforeLast<Word>(gatherer, item, n) | last.digit, last.negative};
        return last.valid;
    }

    static bool fits(int32_t n, auto word) { return static_cast<uint32_t>(n) - 1 < kWordDigits<decltype(word)>; }

    template <class Word>
    [[gnu::always_inline]] static bool read(const uint8_t *item, int32_t n, NumberIn<Word> &number)
    {
        if (!fits(n, Word{})) return false;
        Gatherer gatherer;
        bool valid = gather(gatherer, item, n, number);
        return valid & gatherer.clean();
    }

    template <class Word>
    [[gnu::always_inline]] static void write(uint8_t *item, int32_t n, Word digits, bool negative)
    {
        writeDigits(item, n, digits);
        item[n - 1] = zonedDigit(static_cast<uint8_t>(digits), negative);
    }

    // At any length; digits beyond the word's are zeros.
    template <class Word>
    [[gnu::always_inline]] static void writeDigits(uint8_t *item, int32_t n, Word digits)
    {
        if (n > 0) spreadItem(item, n, digits);
    }
};

} // namespace shortforms
} // namespace bcd
