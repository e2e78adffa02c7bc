// Numbers as digits of a fixed width, and back.
#pragma once

#include <cstdint>

namespace calendar {

// The low-order `width` digits.
template <class Byte, class Number>
inline void putDigits(Byte *text, int32_t width, Number value)
{
    static_assert(static_cast<Number>(-1) > 0, "unsigned: a negative number has no digits of its own");
    for (int32_t i = width - 1; i >= 0; i--) {
        text[i] = static_cast<Byte>('0' | value % 10);
        value /= 10;
    }
}

} // namespace calendar
