// Sign forms of zoned decimal.
//
// A zoned number is one digit a byte, the digit in the low nibble; what differs between the five
// forms is only where the sign sits: in the zone of the last byte ("12p" is -120), of the first
// byte, in a byte of its own behind or before the digits, or nowhere. Each form is a traits type
// that knows how to find the digits and how to read and write the sign. The algorithms of this room
// are written once, over those types, and an exported entry is one line that picks its form.
//
// A byte that can carry a sign is decoded by one table, whatever the mode: data comes from ASCII
// and from EBCDIC machines.
#pragma once

#include <array>
#include <cstddef>
#include <cstdint>

namespace bcd {

// A byte that can carry a sign, decoded.
struct alignas(4) Overpunch { // one load
    uint8_t digit;            // 0 to 9; above 9 only for bytes that no form has
    bool negative;
    bool valid; // a validator passes it as the first or last byte
};

inline constexpr std::array<Overpunch, 256> kOverpunch = [] {
    std::array<Overpunch, 256> table{};
    for (unsigned byte = 0; byte < 256; byte++) {
        auto digit = static_cast<uint8_t>(byte & 0x0F);
        unsigned zone = byte & 0xF0;
        bool minus = zone == 0x70 || zone == 0xD0;
        bool plus = zone == 0x30 || zone == 0xC0 || zone == 0xF0;
        table[byte] = {digit, minus && digit < 10, (minus || plus) && digit < 10};
        if (byte >= 'A' && byte <= 'I') table[byte] = {static_cast<uint8_t>(byte - 0x40), false, true};
        if (byte >= 'J' && byte <= 'R') table[byte] = {static_cast<uint8_t>(byte - 0x49), true, true};
    }
    table['{'] = table[' '] = table[0] = {0, false, true};
    table['}'] = {0, true, true};
    return table;
}();

inline uint8_t overpunchDigit(uint8_t byte) { return kOverpunch[byte].digit; }
inline bool overpunchIsNegative(uint8_t byte) { return kOverpunch[byte].negative; }

inline constexpr uint8_t kZonePlus = 0x30;
inline constexpr uint8_t kZoneMinus = 0x70;

constexpr uint8_t zoneOf(bool negative) { return negative ? kZoneMinus : kZonePlus; }

// "0" to "9" and, as a sign byte in the native form, "p" to "y".
constexpr uint8_t zonedDigit(uint8_t digit) { return static_cast<uint8_t>(kZonePlus | (digit & 0x0F)); }
constexpr uint8_t zonedDigit(uint8_t digit, bool negative)
{
    return static_cast<uint8_t>(zoneOf(negative) | (digit & 0x0F));
}

// As a sign byte in the letter form, which conversions write under mode bit 0x80: "{", "A" to "I",
// "}", "J" to "R".
inline uint8_t letterDigit(uint8_t digit, bool negative)
{
    if (digit == 0) return negative ? '}' : '{';
    return static_cast<uint8_t>((negative ? 0x49 : 0x40) + digit);
}

// As a digit that carries no sign.
inline void cleanLast(uint8_t *digits, int32_t n) { digits[n - 1] = zonedDigit(digits[n - 1]); }

inline bool isSignLetter(uint8_t byte) { return byte == '{' || byte == '}' || (byte >= 'A' && byte <= 'R'); }

// The first byte whose low nibble is not 0, or `last`.
inline const uint8_t *skipZeroDigits(const uint8_t *start, const uint8_t *last)
{
    while (start < last && (*start & 0x0F) == 0) start++;
    return start;
}

namespace forms {

// What the forms with an overpunch and the unsigned form share: n bytes for n digits.
struct Inline {
    static constexpr bool separate = false;
    static size_t bytes(int32_t n) { return n > 0 ? static_cast<size_t>(n) : 0; }
    static const uint8_t *digits(const uint8_t *item) { return item; }
    static uint8_t *digits(uint8_t *item) { return item; }
};

// Trailing overpunch: `Znd` in the arithmetic entries, `ZndTO` in the conversions.
struct ZndTO : Inline {
    static constexpr const char *name = "zonedto";
    static constexpr const char *shiftName = "zoned";
    static const uint8_t *signByte(const uint8_t *item, int32_t n) { return item + n - 1; }
    static uint8_t *signByte(uint8_t *item, int32_t n) { return item + n - 1; }
    static bool negative(const uint8_t *item, int32_t n) { return overpunchIsNegative(*signByte(item, n)); }
    // Writes the byte that carries the sign; its digit must stand there, decoded or as a digit.
    static void writeSign(uint8_t *item, int32_t n, bool minus)
    {
        *signByte(item, n) = zonedDigit(*signByte(item, n), minus);
    }
};

// Leading overpunch.
struct ZndLO : Inline {
    static constexpr const char *name = "zonedlo";
    static constexpr const char *shiftName = "zonedlo";
    static const uint8_t *signByte(const uint8_t *item, int32_t) { return item; }
    static uint8_t *signByte(uint8_t *item, int32_t) { return item; }
    static bool negative(const uint8_t *item, int32_t n) { return overpunchIsNegative(*signByte(item, n)); }
    static void writeSign(uint8_t *item, int32_t n, bool minus)
    {
        *signByte(item, n) = zonedDigit(*signByte(item, n), minus);
    }
};

// Unsigned.
struct ZndUS : Inline {
    static constexpr const char *name = "zonedus";
    static constexpr const char *shiftName = "zonedus";
    static bool negative(const uint8_t *, int32_t) { return false; }
    static void writeSign(uint8_t *, int32_t, bool) {}
};

// "+" or "-" in a byte of its own, which the digit count leaves out.
struct Separate {
    static constexpr bool separate = true;
    static size_t bytes(int32_t n) { return n > 0 ? static_cast<size_t>(n) + 1 : 1; }
};

// Trailing separate sign.
struct ZndTS : Separate {
    static constexpr const char *name = "zonedts";
    static constexpr const char *shiftName = "zonedts";
    static const uint8_t *digits(const uint8_t *item) { return item; }
    static uint8_t *digits(uint8_t *item) { return item; }
    static const uint8_t *signByte(const uint8_t *item, int32_t n) { return item + n; }
    static uint8_t *signByte(uint8_t *item, int32_t n) { return item + n; }
    static bool negative(const uint8_t *item, int32_t n) { return *signByte(item, n) == '-'; }
    static void writeSign(uint8_t *item, int32_t n, bool minus) { *signByte(item, n) = minus ? '-' : '+'; }
};

// Leading separate sign.
struct ZndLS : Separate {
    static constexpr const char *name = "zonedls";
    static constexpr const char *shiftName = "zonedls";
    static const uint8_t *digits(const uint8_t *item) { return item + 1; }
    static uint8_t *digits(uint8_t *item) { return item + 1; }
    static const uint8_t *signByte(const uint8_t *item, int32_t) { return item; }
    static uint8_t *signByte(uint8_t *item, int32_t) { return item; }
    static bool negative(const uint8_t *item, int32_t n) { return *signByte(item, n) == '-'; }
    static void writeSign(uint8_t *item, int32_t n, bool minus) { *signByte(item, n) = minus ? '-' : '+'; }
};

} // namespace forms
} // namespace bcd

// 1 when all digits are zero, else 0. Ignores zones; the last byte is decoded as a sign byte.
int zvkBcdIsZeroZoned(const uint8_t *address, int32_t digits);

// Moves the bytes right-aligned, cut or filled with "0" on the left. Only the last byte is rebuilt,
// with its digit decoded and the zone of its sign; the others keep their zones, and a sign carried
// in a leading byte stays where it lands. The items may overlap.
void zvkBcdMoveZoned(const uint8_t *source, int32_t sourceDigits, uint8_t *destination, int32_t destinationDigits);
