// What a copy or a shift does to its destination after the digits are there, by sign form, and what
// a dump shows of such an item.
#pragma once

#include <cstddef>
#include <cstdint>

#include "decimal/packed.h"
#include "decimal/zoned.h"

namespace bcd {

// The byte that carries the source's sign; read before the move, since the items may overlap.
template <class Form>
uint8_t copiedSign(const uint8_t *src, int32_t sn)
{
    if constexpr (requires { Form::signByte(src, sn); }) return *Form::signByte(src, sn);
    return 0;
}

// What follows the move, by form: `sign` is what copiedSign gave, `item` the whole destination.
template <class Form>
struct AfterCopy;

template <>
struct AfterCopy<forms::Pckd> {
    static constexpr const char *copyTitle = "Copy packed ...";

    static void finish(uint8_t, uint8_t *item, int32_t n, bool keepNegativeZero)
    {
        if (!keepNegativeZero && packedIsNegative(item, n) && zvkBcdIsZeroPacked(item, n))
            item[packedBytes(n) - 1] = kPlus;
    }
};

template <>
struct AfterCopy<forms::ZndTO> {
    static constexpr const char *copyTitle = "Copy zoned ...";
    static void finish(uint8_t, uint8_t *item, int32_t n, bool keepNegativeZero)
    {
        if (!keepNegativeZero && forms::ZndTO::negative(item, n) && zvkBcdIsZeroZoned(item, n)) cleanLast(item, n);
    }
};

template <>
struct AfterCopy<forms::ZndLO> {
    static constexpr const char *copyTitle = "Copy zoned lo...";
    // The zone that the first byte gets from the source's first byte; none at all if that byte is
    // of no known form.
    static uint8_t zoneFrom(uint8_t byte)
    {
        uint8_t zone = byte & 0xF0;
        bool known =
            zone == 0x30 || zone == 0x70 || zone == 0xC0 || zone == 0xD0 || zone == 0xF0 || kOverpunch[byte].valid;
        return known ? zoneOf(overpunchIsNegative(byte)) : uint8_t{0};
    }
    static void finish(uint8_t sign, uint8_t *item, int32_t n, bool keepNegativeZero)
    {
        if (n > 1) cleanLast(item, n);
        item[0] = static_cast<uint8_t>(zoneFrom(sign) | (overpunchDigit(item[0]) & 0x0F));
        if (!keepNegativeZero && forms::ZndLO::negative(item, n) && zvkBcdIsZeroZoned(item, n))
            item[0] = zonedDigit(item[0]);
    }
};

template <>
struct AfterCopy<forms::ZndUS> {
    static constexpr const char *copyTitle = "Copy zoned us...";
    static void finish(uint8_t, uint8_t *item, int32_t n, bool) { cleanLast(item, n); }
};

template <class Form>
struct AfterSeparateCopy {
    static void finish(uint8_t sign, uint8_t *item, int32_t n, bool keepNegativeZero)
    {
        cleanLast(Form::digits(item), n);
        if (!keepNegativeZero && sign == '-' && zvkBcdIsZeroZoned(Form::digits(item), n)) sign = '+';
        *Form::signByte(item, n) = sign;
    }
};
template <>
struct AfterCopy<forms::ZndLS> : AfterSeparateCopy<forms::ZndLS> {
    static constexpr const char *copyTitle = "Copy zoned ls...";
};
template <>
struct AfterCopy<forms::ZndTS> : AfterSeparateCopy<forms::ZndTS> {
    static constexpr const char *copyTitle = "Copy zoned ts...";
};

// What a dump shows of an item: the digits, without a separate sign's place.
template <class Form>
inline size_t shownBytes(int32_t n)
{
    return Form::bytes(n) - (Form::separate ? 1 : 0);
}
template <>
inline size_t shownBytes<forms::Pckd>(int32_t n)
{
    return packedBytes(n);
}

} // namespace bcd
