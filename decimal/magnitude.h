// The digits of an item as one integer.
#pragma once

#include <algorithm>

#include "decimal/packed.h"
#include "decimal/zoned.h"

namespace bcd {

// Of the low-order digits, wrapping round.
inline uint64_t packedMagnitude(const uint8_t *item, int32_t digits)
{
    const uint8_t *last = item + packedBytes(digits) - 1;
    const uint8_t *at = skipZeroBytes(item, last);
    uint64_t value = 0;
    if (at < last) {
        // The first nibble of an even item is no digit; after skipped bytes there is no such nibble any more.
        uint8_t first = at == item && (digits & 1) == 0 ? *at & 0x0F : *at;
        value = kPairValue[first];
        for (at++; at < last; at++) value = value * 100 + kPairValue[*at];
    }
    return value * 10 + (*last >> 4);
}

// The digits by their low nibbles: a letter in the last place is not decoded here.
inline uint64_t zonedMagnitude(const uint8_t *item, int32_t digits)
{
    uint64_t value = 0;
    for (int32_t i = 0; i < digits; i++) value = value * 10 + (item[i] & 0x0F);
    return value;
}

// Of the high-order digits: value times 10^dropped. Packed items keep 36 digits and of longer ones
// the first 19 bytes that are not zero, zoned items 38.
struct LongMagnitude {
    u128 value;
    int32_t dropped;
};

template <class Form>
inline LongMagnitude longMagnitude(const uint8_t *item, int32_t digits)
{
    if constexpr (isPacked<Form>) {
        const uint8_t *last = item + packedBytes(digits) - 1;
        const uint8_t *at = skipZeroBytes(item, last);
        const uint8_t *stop = last - at > 19 ? at + 19 : last;
        u128 value = 0;
        for (const uint8_t *p = at; p < stop; p++)
            value = value * 100 + kPairValue[p == item && (digits & 1) == 0 ? *p & 0x0F : *p];
        if (stop - at < 19) return {value * 10 + (*last >> 4), 0};
        return {value, static_cast<int32_t>(last - stop) * 2 + 1};
    } else {
        if (digits < 1) return {0, 0};
        const uint8_t *last = item + digits - 1;
        const uint8_t *at = skipZeroDigits(item, last);
        const uint8_t *stop = last - at >= 38 ? at + 38 : last + 1;
        u128 value = 0;
        for (; at < stop; at++) value = value * 10 + (*at & 0x0F);
        return {value, static_cast<int32_t>(last + 1 - stop)};
    }
}

} // namespace bcd
