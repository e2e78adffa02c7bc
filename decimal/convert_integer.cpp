// Between decimal items and binary integers of 1, 2, 4 and 8 bytes.
//
// Into binary nothing is tested: a value that is too long wraps. Out of binary the digits that do
// not fit are dropped on the left.
#include <cstdio>
#include <type_traits>

#include "decimal/dump.h"
#include "decimal/entry.h"
#include "decimal/magnitude.h"
#include "decimal/packed.h"
#include "decimal/short_product.h"
#include "decimal/validation.h"
#include "decimal/zoned.h"
#include "kvr2/decimal_conversions.h"

namespace bcd {
namespace {

// How a dump names and shows an integer.
template <class Integer>
struct Shown;
template <>
struct Shown<int8_t> {
    static constexpr const char *name = "int8", *conversion = "%hhd";
};
template <>
struct Shown<uint8_t> {
    static constexpr const char *name = "uint8", *conversion = "%hhu";
};
template <>
struct Shown<int16_t> {
    static constexpr const char *name = "int16", *conversion = "%hd";
};
template <>
struct Shown<uint16_t> {
    static constexpr const char *name = "uint16", *conversion = "%hu";
};
template <>
struct Shown<int32_t> {
    static constexpr const char *name = "int32", *conversion = "%d";
};
template <>
struct Shown<uint32_t> {
    static constexpr const char *name = "uint32", *conversion = "%u";
};
template <>
struct Shown<int64_t> {
    static constexpr const char *name = "int64", *conversion = "%lld";
};
template <>
struct Shown<uint64_t> {
    static constexpr const char *name = "uint64", *conversion = "%llu";
};

template <class Integer>
void dumpInteger(const char *label, Integer value)
{
    if constexpr (sizeof(Integer) == 8)
        dumpNumber(label, Shown<Integer>::conversion, static_cast<int64_t>(value));
    else
        dumpNumber(label, Shown<Integer>::conversion, static_cast<int32_t>(value));
}

template <class From, class To>
void dumpConversion(const From &from, const To &to)
{
    char text[40];
    snprintf(text, sizeof text, "%s to %s...", from, to);
    dumpTitle(text);
}

// ---- Decimal to binary.

template <class Form>
uint64_t magnitude(const uint8_t *item, int32_t digits)
{
    if constexpr (isPacked<Form>)
        return packedMagnitude(item, digits);
    else
        return zonedMagnitude(item, digits);
}

template <class Form>
constexpr const char *shortName = isPacked<Form> ? "packed" : "zoned";

template <class Form, class Integer>
struct ToBinary {
    const uint8_t *src;
    int32_t sn;

    void dumpOperands() const
    {
        dumpConversion(shortName<Form>, Shown<Integer>::name);
        dumpCopied("in: ", src, sn, Form::bytes(sn));
    }
    bool quick(uint32_t, Integer &result) const requires(isPacked<Form>)
    {
        if (sn < 1 || static_cast<uint32_t>(sn) > kWordDigits<uint64_t>) return false;
        shortforms::Pckd::Raw<uint64_t> raw(src, sn);
        if (!raw.hasSign() || !areDigits(raw.digits)) return false;
        uint64_t value =
            limbValue(raw.digits & ((uint64_t{1} << (4 * sn)) - 1)); // the first nibble of an even item is no digit
        result = static_cast<Integer>(std::is_signed_v<Integer> && raw.negative() ? -value : value);
        return true;
    }

    void validate(uint32_t mode) const
    {
        if (checked(kArithmeticRule, mode) && sn > 0) judgeSource(check<Form>(src, sn, kCheckArithmetic));
    }
    Integer work(uint32_t) const
    {
        if (!isPacked<Form> && sn < 1) return 0;
        uint64_t value = magnitude<Form>(src, sn);
        if (std::is_signed_v<Integer> && Form::negative(src, sn)) value = -value;
        return static_cast<Integer>(value);
    }
    void dumpResult(Integer result) const { dumpInteger("out:", result); }
};

// ---- Binary to decimal.

void writePacked(uint64_t value, bool negative, uint8_t *dst, int32_t digits)
{
    using shortforms::Pckd;
    if (digits < 0) digits = 0;
    if (digits > kShortDigits) {
        size_t before = packedBytes(digits) - packedBytes(kShortDigits);
        memset(dst, 0, before);
        dst += before;
        digits = kShortDigits;
    }
    if (value < kLimb && static_cast<uint32_t>(digits) <= kWordDigits<uint64_t>)
        Pckd::write(dst, digits, limbDigits(value), negative);
    else
        Pckd::write(dst, digits, digitsOf(u128{value}), negative);
}

// Whether nothing but zeros is left of a number in so many digits.
bool losesAll(uint64_t magnitude, int32_t digits)
{
    if (digits > 19) return magnitude == 0;
    uint64_t unit = 1;
    for (int32_t i = 0; i < digits && unit <= magnitude; i++) unit *= 10;
    return unit <= magnitude && magnitude % unit == 0;
}

template <class Integer, class Form>
struct FromBinary {
    Integer value;
    uint8_t *dst;
    int32_t dn;

    void dumpOperands() const
    {
        dumpConversion(Shown<Integer>::name, shortName<Form>);
        dumpInteger("in: ", value);
    }
    uint8_t *work(uint32_t) const
    {
        bool negative = value < 0;
        uint64_t magnitude = negative ? -static_cast<uint64_t>(value) : static_cast<uint64_t>(value);
        if (negative && losesAll(magnitude, dn)) negative = false; // a zero is positive
        if constexpr (isPacked<Form>)
            writePacked(magnitude, negative, dst, dn);
        else if (dn > 0)
            shortforms::Znd::write(dst, dn, digitsOf(u128{magnitude}), negative);
        return dst;
    }
    void dumpResult(const uint8_t *) const { dumpCopied("out:", dst, dn, Form::bytes(dn)); }
};

unsigned digitFromRight(const uint8_t *item, size_t bytes, int32_t place)
{
    uint8_t byte = item[bytes - 1 - (static_cast<size_t>(place) + 1) / 2];
    return place % 2 ? byte & 0x0F : byte >> 4;
}

} // namespace
} // namespace bcd

#define TO_BINARY(From, form, To, type)                                                                                \
    type _zvkcBCD_CONV_##From##_To_##To(const uint8_t *src, int32_t srcDigits)                                         \
    {                                                                                                                  \
        return bcd::runEntry<bcd::ToBinary<bcd::forms::form, type>>(src, srcDigits);                                   \
    }
#define FROM_BINARY(From, type, To, form)                                                                              \
    uint8_t *_zvkcBCD_CONV_##From##_To_##To(type value, uint8_t *dst, int32_t dstDigits)                               \
    {                                                                                                                  \
        return bcd::runEntry<bcd::FromBinary<type, bcd::forms::form>>(value, dst, dstDigits);                          \
    }

TO_BINARY(Pckd, Pckd, Int1, int8_t)
TO_BINARY(Pckd, Pckd, Int2, int16_t)
TO_BINARY(Pckd, Pckd, Int4, int32_t)
TO_BINARY(Pckd, Pckd, Int8, int64_t)
TO_BINARY(Pckd, Pckd, Uns1, uint8_t)
TO_BINARY(Pckd, Pckd, Uns2, uint16_t)
TO_BINARY(Pckd, Pckd, Uns4, uint32_t)
TO_BINARY(Pckd, Pckd, Uns8, uint64_t)
TO_BINARY(Znd, ZndTO, Int4, int32_t)
TO_BINARY(Znd, ZndTO, Int8, int64_t)
TO_BINARY(Znd, ZndTO, UInt4, uint32_t)
TO_BINARY(Znd, ZndTO, UInt8, uint64_t)
FROM_BINARY(Int1, int8_t, Pckd, Pckd)
FROM_BINARY(Int2, int16_t, Pckd, Pckd)
FROM_BINARY(Int4, int32_t, Pckd, Pckd)
FROM_BINARY(Int8, int64_t, Pckd, Pckd)
FROM_BINARY(Uns1, uint8_t, Pckd, Pckd)
FROM_BINARY(Uns2, uint16_t, Pckd, Pckd)
FROM_BINARY(Uns4, uint32_t, Pckd, Pckd)
FROM_BINARY(Uns8, uint64_t, Pckd, Pckd)
FROM_BINARY(Int4, int32_t, Znd, ZndTO)
FROM_BINARY(Int8, int64_t, Znd, ZndTO)
FROM_BINARY(UInt4, uint32_t, Znd, ZndTO)
FROM_BINARY(UInt8, uint64_t, Znd, ZndTO)

// No mode word, no dump, no validation: lengths come from the compiler's own items.
uint64_t _zvkcBCD_CONV_Pckd_To_Len8(const uint8_t *src, int32_t srcDigits, int32_t fractionDigits)
{
    if (srcDigits <= 0 || bcd::packedIsNegative(src, srcDigits)) return 0;
    if (fractionDigits <= 0) return bcd::packedMagnitude(src, srcDigits);
    const size_t bytes = bcd::packedBytes(srcDigits);
    uint64_t value = 0;
    bool fraction = false;
    for (int32_t place = srcDigits - 1; place >= 0; place--) {
        unsigned digit = bcd::digitFromRight(src, bytes, place);
        if (place >= fractionDigits)
            value = value * 10 + digit;
        else
            fraction |= digit != 0;
    }
    return value + fraction;
}
