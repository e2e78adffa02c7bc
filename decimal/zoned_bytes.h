// Zoned numbers of up to seven digits in one register, a digit a byte.
//
// For so few digits folding them into packed form and back costs more than the sum. The bytes are
// added as they are, with the same trick as nibbles (short_number.h): raised by 0xF6, a byte
// overflows exactly when the digits' sum is above 9.
//
//     a + b:  s = a + F6..F6 + b      bytes that carried are right; the others are 0xFx, six too much
//     a - b:  d = a - b               bytes that borrowed are 0xFx, six too much
#pragma once

#include "decimal/words.h"
#include "decimal/zoned.h"

namespace bcd {

// A number of seven digits, and room for a carry.
struct ByteDigits {
    uint64_t bytes; // units in the lowest byte

    static constexpr uint32_t kDigits = 7;
    static constexpr uint64_t kZones = 0x3030303030303030u;

    // Any bytes; `excess` gets bits where one but the last is not "0" to "9".
    [[gnu::always_inline]] static ByteDigits read(const uint8_t *item, int32_t n, uint8_t lastDigit, uint64_t &excess)
    {
        uint64_t bytes = loadShort(item, static_cast<size_t>(n)) ^ kZones >> (64 - 8 * n);
        bytes = (bytes & ~uint64_t{0xFF}) | lastDigit;
        excess |= ((bytes + 0x7676767676767676u) | bytes) & 0x8080808080808080u;
        return {bytes};
    }
    [[gnu::always_inline]] void write(uint8_t *item, int32_t n, bool negative) const
    {
        uint64_t zoned = bytes | kZones | uint64_t{negative} << 6;
        storeShort(item, static_cast<size_t>(n), zoned);
    }

    static uint64_t lessSixes(uint64_t sum)
    {
        constexpr uint64_t lows = 0x0F0F0F0F0F0F0F0Fu;
        return (sum - (sum >> 4 & 0x0101010101010101u) * 6) & lows;
    }
    friend ByteDigits addDigits(ByteDigits a, ByteDigits b)
    {
        return {lessSixes(a.bytes + 0xF6F6F6F6F6F6F6F6u + b.bytes)};
    }
    friend ByteDigits subtractDigits(ByteDigits a, ByteDigits b) { return {lessSixes(a.bytes - b.bytes)}; }

    friend ByteDigits operator^(ByteDigits a, ByteDigits b) { return {a.bytes ^ b.bytes}; }
    friend ByteDigits operator&(ByteDigits a, ByteDigits b) { return {a.bytes & b.bytes}; }
    friend bool operator<(ByteDigits a, ByteDigits b) { return a.bytes < b.bytes; }
};

} // namespace bcd
