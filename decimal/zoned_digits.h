// Zoned operands after their leading zeros, for what goes through zoned items digit by digit.
#pragma once

#include <cstring>

#include "decimal/zoned.h"

namespace bcd {

// Bytes with a low nibble of 0 are skipped on the left, one byte is kept. Every digit is the low
// nibble but that of the last byte, which is decoded.
struct ZonedOperand {
    const uint8_t *start;
    const uint8_t *last;

    ZonedOperand(const uint8_t *item, int32_t n) : last(item + n - 1) { start = skipZeroDigits(item, last); }

    size_t digits() const { return static_cast<size_t>(last - start) + 1; }
    uint8_t digit(const uint8_t *p) const { return p == last ? overpunchDigit(*p) : *p & 0x0F; }
    bool negative() const { return overpunchIsNegative(*last); }

    void cutTo(size_t most)
    {
        if (digits() > most) start = last + 1 - most;
    }
};

// One digit of an addition or a subtraction.
inline uint8_t addDigit(unsigned a, unsigned b, bool &carry)
{
    unsigned sum = a + b + carry;
    carry = sum > 9;
    return static_cast<uint8_t>((carry ? sum + 6 : sum) & 15);
}

inline uint8_t subtractDigit(int a, int b, bool &borrow)
{
    int difference = a - b - borrow;
    borrow = difference < 0;
    return static_cast<uint8_t>((borrow ? difference + 10 : difference) & 15);
}

// Turns the ten's complement into the digits of the result, `digits` bytes that end with `last`. No
// pair is reduced here, unlike in packed items.
inline void complementDigits(uint8_t *last, size_t digits)
{
    bool carry = true;
    for (uint8_t *p = last; digits > 0; p--, digits--) *p = zonedDigit(addDigit(9u - (*p & 0x0F) % 10u, 0, carry));
}

} // namespace bcd
