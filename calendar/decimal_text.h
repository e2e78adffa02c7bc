// Numbers as digits of a fixed width, and back.
#pragma once

#include <cstdint>

namespace calendar {

// The low-order `width` digits.
template <class Byte>
inline void putDigits(Byte *text, int32_t width, uint64_t value)
{
    for (int32_t i = width - 1; i >= 0; i--) {
        text[i] = static_cast<Byte>('0' | value % 10);
        value /= 10;
    }
}

} // namespace calendar
