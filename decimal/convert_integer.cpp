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
#include "decimal/zoned_bytes.h"
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

    // Clean items that fit the word. A letter in the last place is not decoded here, so its item
    // goes the long way.
    template <class Word>
    [[gnu::always_inline]] bool shortValue(Integer &result) const
    {
        if (static_cast<uint32_t>(sn) - 1 >= kWordDigits<Word>) return false;
        Word digits;
        bool negative;
        if constexpr (isPacked<Form>) {
            shortforms::Pckd::Raw<Word> raw(src, sn);
            if (!raw.hasSign() || !areDigits(raw.digits)) return false;
            digits = raw.digits & ((Word{1} << (4 * sn)) - 1); // the first nibble of an even item is no digit
            negative = raw.negative();
        } else {
            const uint8_t last = src[sn - 1];
            Gatherer gatherer;
            digits = gatherBeforeLast<Word>(gatherer, src, sn) | (last & 0x0F);
            if ((last & 0xB0) != 0x30 || (last & 0x0F) > 9 || !gatherer.clean()) return false;
            negative = last & 0x40;
        }
        uint64_t value = limbValue(lowWord(digits));
        if constexpr (sizeof(Word) > 8) value += kLimb * limbValue(highWord(digits)); // longer ones wrap
        const uint64_t minus = std::is_signed_v<Integer> ? 0 - uint64_t{negative} : 0;
        result = static_cast<Integer>((value ^ minus) - minus);
        return true;
    }
    bool quick(uint32_t, Integer &result) const { return shortValue<uint64_t>(result); }
    bool quickLong(Integer &result) const { return shortValue<u128>(result); }

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

// Of an item longer than a word everything before the word is zero.
template <class Word>
void writePacked(Word digits, bool negative, uint8_t *dst, int32_t n)
{
    constexpr int32_t most = kWordDigits<Word>;
    if (n > most) {
        size_t before = packedBytes(n) - packedBytes(most);
        memset(dst, 0, before);
        dst += before;
        n = most;
    }
    shortforms::Pckd::write(dst, n, digits, negative);
}

// The digits of a magnitude, in the word that holds them.
template <class Write>
[[gnu::always_inline]] inline void withDigits(uint64_t magnitude, Write write)
{
    if (magnitude < 100'000'000)
        write(uint64_t{eightDigits(static_cast<uint32_t>(magnitude))});
    else if (magnitude < kLimb / 10) // one nibble stays free for a packed item's sign
        write(limbDigits(magnitude));
    else
        write(digitsOf(u128{magnitude}));
}

// Of as many digits as an item has room for.
template <class Word>
inline bool allZero(Word digits, int32_t n)
{
    return n < static_cast<int32_t>(2 * sizeof(Word)) ? !anyBit(digits & ((Word{1} << (4 * n)) - 1)) : !anyBit(digits);
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
        const uint64_t sign = value < 0 ? ~uint64_t{0} : 0;
        const uint64_t magnitude = (static_cast<uint64_t>(value) ^ sign) - sign;
        if (!isPacked<Form> && static_cast<uint32_t>(dn - 1) < 8 && magnitude < 100'000'000) {
            const ByteDigits digits{eightBytes(static_cast<uint32_t>(magnitude)) & ~uint64_t{0} >> (64 - 8 * dn)};
            digits.write(dst, dn, sign && digits.bytes);
            return dst;
        }
        withDigits(magnitude, [&](auto digits) {
            const int32_t n = dn > 0 ? dn : 0;
            const bool negative = sign && !allZero(digits, n); // a zero is positive
            if constexpr (isPacked<Form>)
                writePacked(digits, negative, dst, n);
            else if (n > 0)
                shortforms::Znd::write(dst, n, digits, negative);
        });
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

#define TO_BINARY(Name, form, type)                                                                                    \
    type Name(const uint8_t *src, int32_t srcDigits)                                                                   \
    {                                                                                                                  \
        return bcd::runEntry<bcd::ToBinary<bcd::forms::form, type>>(src, srcDigits);                                   \
    }
#define FROM_BINARY(Name, type, form)                                                                                  \
    uint8_t *Name(type value, uint8_t *dst, int32_t dstDigits)                                                         \
    {                                                                                                                  \
        return bcd::runEntry<bcd::FromBinary<type, bcd::forms::form>>(value, dst, dstDigits);                          \
    }

TO_BINARY(_zvkcBCD_CONV_Pckd_To_Int1, Pckd, int8_t)
TO_BINARY(_zvkcBCD_CONV_Pckd_To_Int2, Pckd, int16_t)
TO_BINARY(_zvkcBCD_CONV_Pckd_To_Int4, Pckd, int32_t)
TO_BINARY(_zvkcBCD_CONV_Pckd_To_Int8, Pckd, int64_t)
TO_BINARY(_zvkcBCD_CONV_Pckd_To_Uns1, Pckd, uint8_t)
TO_BINARY(_zvkcBCD_CONV_Pckd_To_Uns2, Pckd, uint16_t)
TO_BINARY(_zvkcBCD_CONV_Pckd_To_Uns4, Pckd, uint32_t)
TO_BINARY(_zvkcBCD_CONV_Pckd_To_Uns8, Pckd, uint64_t)
TO_BINARY(_zvkcBCD_CONV_Znd_To_Int4, ZndTO, int32_t)
TO_BINARY(_zvkcBCD_CONV_Znd_To_Int8, ZndTO, int64_t)
TO_BINARY(_zvkcBCD_CONV_Znd_To_UInt4, ZndTO, uint32_t)
TO_BINARY(_zvkcBCD_CONV_Znd_To_UInt8, ZndTO, uint64_t)
FROM_BINARY(_zvkcBCD_CONV_Int1_To_Pckd, int8_t, Pckd)
FROM_BINARY(_zvkcBCD_CONV_Int2_To_Pckd, int16_t, Pckd)
FROM_BINARY(_zvkcBCD_CONV_Int4_To_Pckd, int32_t, Pckd)
FROM_BINARY(_zvkcBCD_CONV_Int8_To_Pckd, int64_t, Pckd)
FROM_BINARY(_zvkcBCD_CONV_Uns1_To_Pckd, uint8_t, Pckd)
FROM_BINARY(_zvkcBCD_CONV_Uns2_To_Pckd, uint16_t, Pckd)
FROM_BINARY(_zvkcBCD_CONV_Uns4_To_Pckd, uint32_t, Pckd)
FROM_BINARY(_zvkcBCD_CONV_Uns8_To_Pckd, uint64_t, Pckd)
FROM_BINARY(_zvkcBCD_CONV_Int4_To_Znd, int32_t, ZndTO)
FROM_BINARY(_zvkcBCD_CONV_Int8_To_Znd, int64_t, ZndTO)
FROM_BINARY(_zvkcBCD_CONV_UInt4_To_Znd, uint32_t, ZndTO)
FROM_BINARY(_zvkcBCD_CONV_UInt8_To_Znd, uint64_t, ZndTO)

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
