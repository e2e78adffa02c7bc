// Items of one digit, packed and zoned: one byte, in and out, by tables.
//
// For a byte and its sign any arithmetic is more work than to look up all there is to know about
// it. Its value is doubled, which makes room for the sign of a zero: a sum of zero has the sign of
// its first operand, so a negative value is one less there.
//
//               first   second               first + second
//     +5           10       10       +5 - 5       10 - 10 =  0       +0
//     -5          -11      -10       -5 + 5      -11 + 10 = -1       -0
//     -0           -1        0       -5 - 6      -11 - 12 = -23      -1, cut to a digit
//
// Bytes that a validator might have something to say about are none of these.
#pragma once

#include <array>
#include <cstdint>
#include <type_traits>

#include "decimal/packed.h"
#include "decimal/zoned.h"

namespace bcd {

template <class Form>
struct OneDigit {
    // No sum and no difference with one of these falls among the results.
    static constexpr int8_t kNoFirst = 100, kNoSecond = 60;
    static constexpr int kLowest = -37, kHighest = 36;

    std::array<int8_t, 256> first, second;
    std::array<uint8_t, kHighest - kLowest + 1> sums;
    std::array<uint8_t, kHighest - kLowest + 1> steps; // in place, with the item's own sign

    static constexpr uint8_t byteOf(int digit, bool negative)
    {
        if (isPacked<Form>) return static_cast<uint8_t>(digit << 4 | signNibble(negative));
        return zonedDigit(static_cast<uint8_t>(digit), negative);
    }

    constexpr OneDigit() : first{}, second{}, sums{}, steps{}
    {
        for (unsigned byte = 0; byte < 256; byte++) {
            const unsigned digit = isPacked<Form> ? byte >> 4 : byte & 0x0F;
            const bool hasSign = isPacked<Form> ? (byte & 0x0F) >= 10 : (byte & 0xB0) == 0x30;
            const bool negative = isPacked<Form> ? isNegativeNibble(static_cast<uint8_t>(byte)) : (byte & 0x40) != 0;
            const bool clean = digit < 10 && hasSign;
            const int doubled = static_cast<int>(2 * digit);
            first[byte] = clean ? static_cast<int8_t>(negative ? -doubled - 1 : doubled) : kNoFirst;
            second[byte] = clean ? static_cast<int8_t>(negative ? -doubled : doubled) : kNoSecond;
        }
        for (int index = kLowest; index <= kHighest; index++) {
            const bool firstNegative = index & 1;
            const int sum = (index + firstNegative) / 2, digit = (sum < 0 ? -sum : sum) % 10;
            sums[at(index)] = byteOf(digit, sum < 0 || (sum == 0 && firstNegative));
            steps[at(index)] = byteOf(digit, firstNegative);
        }
    }
    static constexpr unsigned at(int index) { return static_cast<unsigned>(index - kLowest); }
    constexpr int firstOf(uint8_t byte) const { return static_cast<int>(first[byte]); }
    constexpr int secondOf(uint8_t byte) const { return static_cast<int>(second[byte]); }
};
template <class Form>
inline constexpr OneDigit<Form> kOneDigit;

// dst = op1 + op2, or op1 - op2. These are false, and nothing is written, unless all is clean.
template <class Form, bool subtract>
[[gnu::always_inline]] inline bool digitSum(const uint8_t *op1, const uint8_t *op2, uint8_t *dst)
{
    constexpr const auto &table = kOneDigit<Form>;
    const int first = table.firstOf(*op1), second = table.secondOf(*op2);
    const unsigned at = table.at(subtract ? first - second : first + second);
    if (__builtin_expect(at >= table.sums.size(), 0)) return false;
    *dst = table.sums[at];
    return true;
}

// item + value, or item - value, into the item. An item that nothing is added to stays as it is.
template <class Form, bool subtract>
[[gnu::always_inline]] inline bool digitStep(uint8_t *item, int64_t value)
{
    constexpr const auto &table = kOneDigit<Form>;
    if (__builtin_expect(static_cast<uint64_t>(value) + 9 > 18 || value == 0, 0)) return false;
    const int first = table.firstOf(*item), second = 2 * static_cast<int>(value);
    const unsigned at = table.at(subtract ? first - second : first + second);
    if (__builtin_expect(at >= table.sums.size(), 0)) return false;
    // In packed items the sign does not turn: it would turn for the borrow of the units and again
    // for that of the whole item.
    *item = isPacked<Form> ? table.steps[at] : table.sums[at];
    return true;
}

// From one form to another, a negative zero as a positive one.
template <class From, class To>
[[gnu::always_inline]] inline bool digitConverted(const uint8_t *src, uint8_t *dst)
{
    const int doubled = kOneDigit<From>.secondOf(*src);
    if (__builtin_expect(doubled == kOneDigit<From>.kNoSecond, 0)) return false;
    *dst = kOneDigit<To>.sums[kOneDigit<To>.at(doubled)];
    return true;
}

// And between an item and an integer; an unsigned one takes the magnitude.
template <class Form, class Integer>
[[gnu::always_inline]] inline bool digitValue(const uint8_t *src, Integer &value)
{
    const int doubled = kOneDigit<Form>.secondOf(*src);
    if (__builtin_expect(doubled == kOneDigit<Form>.kNoSecond, 0)) return false;
    const int signedValue = doubled >> 1;
    value = static_cast<Integer>(std::is_unsigned_v<Integer> && signedValue < 0 ? -signedValue : signedValue);
    return true;
}
template <class Form, class Integer>
[[gnu::always_inline]] inline bool digitFrom(Integer value, uint8_t *dst)
{
    // A negative one of more digits may give a zero; whether that has a sign depends on the mode.
    constexpr unsigned below = std::is_signed_v<Integer> ? 9 : 0;
    if (__builtin_expect(static_cast<uint64_t>(value) + below > 9 + below, 0)) return false;
    *dst = kOneDigit<Form>.sums[kOneDigit<Form>.at(2 * static_cast<int>(value))];
    return true;
}

} // namespace bcd
