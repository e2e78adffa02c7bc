// Copies: an item to one of the same form with another digit count.
//
// Each is the shared move of its digits and then what its sign form needs. Unlike a conversion, a copy of zoned data cleans only the bytes that can carry a
// sign: zones of other bytes pass as they are.
#include "decimal/dump.h"
#include "decimal/entry.h"
#include "decimal/packed.h"
#include "decimal/validation.h"
#include "decimal/zoned.h"
#include "kvr2/decimal_conversions.h"

namespace bcd {
namespace {

// What follows the move, by form. `item` is the whole destination.
template <class Form>
struct AfterCopy;

template <>
struct AfterCopy<forms::Pckd> {
    static constexpr const char *title = "Copy packed ...";
    static void move(const uint8_t *src, int32_t sn, uint8_t *dst, int32_t dn) { zvkBcdMovePacked(src, sn, dst, dn); }
    static void finish(const uint8_t *, int32_t, uint8_t *item, int32_t n, bool keepNegativeZero)
    {
        if (!keepNegativeZero && packedIsNegative(item, n) && zvkBcdIsZeroPacked(item, n)) item[packedBytes(n) - 1] = kPlus;
    }
};

struct MovesZoned {
    static void cleanLast(uint8_t *digits, int32_t n) { digits[n - 1] = zonedDigit(digits[n - 1]); }
};

template <>
struct AfterCopy<forms::ZndTO> : MovesZoned {
    static constexpr const char *title = "Copy zoned ...";
    static void finish(const uint8_t *, int32_t, uint8_t *item, int32_t n, bool keepNegativeZero)
    {
        if (!keepNegativeZero && forms::ZndTO::negative(item, n) && zvkBcdIsZeroZoned(item, n)) cleanLast(item, n);
    }
};

template <>
struct AfterCopy<forms::ZndLO> : MovesZoned {
    static constexpr const char *title = "Copy zoned lo...";
    // The zone that the first byte gets from the source's first byte; none at all if that byte is of no known form.
    static uint8_t zoneFrom(uint8_t byte)
    {
        uint8_t zone = byte & 0xF0;
        bool known = zone == 0x30 || zone == 0x70 || zone == 0xC0 || zone == 0xD0 || zone == 0xF0 || kOverpunch[byte].valid;
        return known ? zoneOf(overpunchIsNegative(byte)) : uint8_t{0};
    }
    static void finish(const uint8_t *src, int32_t, uint8_t *item, int32_t n, bool keepNegativeZero)
    {
        if (n > 1) cleanLast(item, n);
        item[0] = static_cast<uint8_t>(zoneFrom(src[0]) | (overpunchDigit(item[0]) & 0x0F));
        if (!keepNegativeZero && forms::ZndLO::negative(item, n) && zvkBcdIsZeroZoned(item, n)) item[0] = zonedDigit(item[0]);
    }
};

template <>
struct AfterCopy<forms::ZndUS> : MovesZoned {
    static constexpr const char *title = "Copy zoned us...";
    static void finish(const uint8_t *, int32_t, uint8_t *item, int32_t n, bool) { cleanLast(item, n); }
};

template <class Form>
struct AfterSeparateCopy : MovesZoned {
    static void finish(const uint8_t *src, int32_t sn, uint8_t *item, int32_t n, bool keepNegativeZero)
    {
        uint8_t &sign = *Form::signByte(item, n);
        sign = *Form::signByte(src, sn);
        cleanLast(Form::digits(item), n);
        if (!keepNegativeZero && sign == '-' && zvkBcdIsZeroZoned(Form::digits(item), n)) sign = '+';
    }
};
template <>
struct AfterCopy<forms::ZndLS> : AfterSeparateCopy<forms::ZndLS> {
    static constexpr const char *title = "Copy zoned ls...";
};
template <>
struct AfterCopy<forms::ZndTS> : AfterSeparateCopy<forms::ZndTS> {
    static constexpr const char *title = "Copy zoned ts...";
};

// What a dump shows of an item: the digits, without a separate sign's place.
template <class Form>
size_t shownBytes(int32_t n)
{
    return Form::bytes(n) - (Form::separate ? 1 : 0);
}
template <>
size_t shownBytes<forms::Pckd>(int32_t n)
{
    return packedBytes(n);
}

template <class Form>
struct Copy {
    const uint8_t *src;
    uint8_t *dst;
    int32_t dn, sn;

    void dumpOperands() const
    {
        dumpTitle(AfterCopy<Form>::title);
        dumpCopied("op1:", src, sn, shownBytes<Form>(sn));
    }
    void validate(uint32_t mode) const
    {
        if (!checked(kSourceRule, mode)) return;
        if constexpr (requires { Form::separate; }) {
            if constexpr (Form::separate) judgeSeparateSign(*Form::signByte(src, sn));
        }
        judgeSource(check<Form>(src, sn, kCheckStrict));
    }
    uint8_t *work(uint32_t mode) const
    {
        if constexpr (std::is_same_v<Form, forms::Pckd>) {
            zvkBcdMovePacked(src, sn, dst, dn);
        } else {
            if (dn < 1 || sn < 1) return dst;
            zvkBcdMoveZoned(Form::digits(src), sn, Form::digits(dst), dn);
        }
        AfterCopy<Form>::finish(src, sn, dst, dn, mode & ZVK_BCD_KEEP_NEG_ZERO);
        return dst;
    }
    void dumpResult(const uint8_t *) const { dumpCopied("res:", dst, dn, shownBytes<Form>(dn)); }
};

} // namespace
} // namespace bcd

#define COPY(name, form)                                                                                                                   \
    uint8_t *_zvkcBCD_Cpy_##name(const uint8_t *src, uint8_t *dst, int32_t dstDigits, int32_t srcDigits)                                   \
    {                                                                                                                                      \
        return bcd::runEntry(bcd::Copy<bcd::forms::form>{src, dst, dstDigits, srcDigits});                                                 \
    }

COPY(Pckd, Pckd)
COPY(Znd, ZndTO)
COPY(ZndLO, ZndLO)
COPY(ZndUS, ZndUS)
COPY(ZndLS, ZndLS)
COPY(ZndTS, ZndTS)
