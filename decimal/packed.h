// Packed decimal items: two digits a byte, the sign in the low nibble of the last byte.
//
// An item of n digits takes (n >> 1) + 1 bytes: +123 in three digits is 12 3C, in four digits 00 12
// 3C. With an even n the high nibble of the first byte belongs to no digit: whoever writes an item
// clears it, whoever reads one takes it as a digit all the same. Sign nibbles 0xB and 0xD are
// negative, all others positive; 0xC and 0xD are the two that are written.
#pragma once

#include <array>
#include <cstddef>
#include <cstdint>
#include <type_traits>

#include "decimal/words.h"

namespace bcd {

inline size_t packedBytes(int32_t digits) { return digits > 0 ? (static_cast<size_t>(digits) >> 1) + 1 : 1; }

inline constexpr uint8_t kPlus = 0x0C;
inline constexpr uint8_t kMinus = 0x0D;

constexpr bool isNegativeNibble(uint8_t last) { return (last & 0x0F) == 0x0B || (last & 0x0F) == 0x0D; }
constexpr uint8_t signNibble(bool negative) { return static_cast<uint8_t>(kPlus + negative); }

inline bool packedIsNegative(const uint8_t *item, int32_t digits)
{
    return isNegativeNibble(item[packedBytes(digits) - 1]);
}

inline void setPackedSign(uint8_t *item, int32_t digits, bool negative)
{
    uint8_t *last = item + packedBytes(digits) - 1;
    *last = static_cast<uint8_t>((*last & 0xF0) | signNibble(negative));
}

// The last thing that is done to a packed result.
inline void clearUnusedNibble(uint8_t *item, int32_t digits)
{
    if ((digits & 1) == 0) item[0] &= 0x0F;
}

// The first byte that is not 0x00, or `last`.
inline const uint8_t *skipZeroBytes(const uint8_t *start, const uint8_t *last)
{
    while (start < last && *start == 0) start++;
    return start;
}

// Digits of an item whose leading zero bytes are gone.
inline int32_t significantDigits(const uint8_t *start, const uint8_t *last)
{
    auto bytes = static_cast<int32_t>(last - start) + 1;
    return bytes == 1 || (*start & 0xF0) != 0 ? 2 * bytes - 1 : 2 * bytes - 2;
}

// A packed byte as its value 0 to 99. A low nibble above 9 counts as 0, so the last byte of an item
// reads as ten times its digit; a high nibble above 9 gives 100.
inline constexpr std::array<uint8_t, 256> kPairValue = [] {
    std::array<uint8_t, 256> table{};
    for (unsigned byte = 0; byte < 256; byte++) {
        unsigned high = byte >> 4;
        unsigned low = byte & 0x0F;
        table[byte] = static_cast<uint8_t>(high > 9 ? 100 : 10 * high + (low > 9 ? 0 : low));
    }
    return table;
}();

// And back, for sums up to 199 without a reduction.
inline constexpr std::array<uint8_t, 200> kValuePair = [] {
    std::array<uint8_t, 200> table{};
    for (unsigned value = 0; value < 200; value++)
        table[value] = static_cast<uint8_t>(value % 100 / 10 << 4 | value % 10);
    return table;
}();

namespace forms {

struct Pckd {
    static constexpr const char *name = "packed";
    static size_t bytes(int32_t n) { return packedBytes(n); }
    static bool negative(const uint8_t *item, int32_t n) { return packedIsNegative(item, n); }
};

} // namespace forms

template <class Form>
inline constexpr bool isPacked = std::is_same_v<Form, forms::Pckd>;

} // namespace bcd

// 1 when all digits are zero, else 0. Sees whole bytes but for the sign nibble.
int zvkBcdIsZeroPacked(const uint8_t *address, int32_t digits);

// Moves right-aligned, cut or filled on the left, and normalises the sign nibble. The items may
// overlap. A zero keeps its sign.
void zvkBcdMovePacked(const uint8_t *source, int32_t sourceDigits, uint8_t *destination, int32_t destinationDigits);
