// Between decimal items and binary integers of 1, 2, 4 and 8 bytes.
//
// Into binary nothing is tested: a value that is too long wraps. Out of binary the digits that do
// not fit are dropped on the left. When only zeros are left of a negative value the item is
// positive, unless the mode keeps negative zeros.
#include <cstdio>
#include <type_traits>

#include "decimal/dump.h"
#include "decimal/entry.h"
#include "decimal/magnitude.h"
#include "decimal/one_digit.h"
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

    // As signed, with the magnitude wrapped round; `minus` is all bits of a negative one.
    [[gnu::always_inline]] static void give(uint64_t value, uint64_t minus, Integer &result)
    {
        if constexpr (std::is_signed_v<Integer>) value = (value ^ minus) - minus;
        result = static_cast<Integer>(value);
    }
    // Of the byte that carries the sign, in a zoned number that is clean.
    static uint64_t minusOf(unsigned last) { return signMask(uint64_t{last} << 57); }

    // Clean items of two or three digits.
    [[gnu::always_inline]] bool fewPacked(Integer &result) const
    {
        const unsigned units = src[1] >> 4, sign = src[1] & 0x0F, tens = src[0] & 0x0F;
        unsigned hundreds = src[0] >> 4;
        if (sign < 10 || units > 9 || tens > 9 || hundreds > 9) return false;
        if (sn == 2) hundreds = 0; // the first nibble of an even item is no digit
        give(units + tens * 10 + hundreds * 100, maskOf<uint64_t>(isNegativeNibble(static_cast<uint8_t>(sign))),
             result);
        return true;
    }
    // Of two or three digits, known here. A letter in the last place is not decoded, nor below, so
    // its item goes the long way.
    template <int32_t n>
    [[gnu::always_inline]] bool fewZoned(Integer &result) const
    {
        const unsigned last = src[n - 1] ^ 0x30u, tens = src[n - 2] ^ 0x30u, hundreds = n > 2 ? src[0] ^ 0x30u : 0;
        const unsigned units = last & ~kByteMinus;
        if (units > 9 || tens > 9 || hundreds > 9) return false;
        give(units + tens * 10 + hundreds * 100, minusOf(last), result);
        return true;
    }

    // Four to eight digits, a digit a byte.
    [[gnu::always_inline]] bool eightDigitsValue(Integer &result) const
    {
        if (static_cast<uint32_t>(sn - 4) > 4) return false;
        uint64_t excess = 0;
        const auto number = signedBytes(loadBytes<uint64_t>(src, sn), excess);
        if (anyExcess(excess)) return false;
        give(valueOfBytes(number.digits), minusOf(number.sign), result);
        return true;
    }

    // The same for 9 to 24 digits, eight at a time.
    [[gnu::always_inline]] bool longZonedValue(Integer &result) const
    {
        if (sn <= 8 || sn > 24) return false;
        uint64_t excess = 0;
        const auto last = signedBytes(loadBig<uint64_t>(src + sn - 8) ^ kByteZones<uint64_t>, excess);
        uint64_t value = valueOfBytes(last.digits);
        uint64_t weight = 100'000'000;
        int32_t before = sn - 8; // digits that are still to come
        if (before > 8) {
            const uint64_t middle = loadBig<uint64_t>(src + before - 8) ^ kByteZones<uint64_t>;
            excess |= excessOf(middle);
            value += weight * valueOfBytes(middle);
            weight *= weight;
            before -= 8;
        }
        // Digits that have been counted are shifted out.
        const uint64_t front = loadBig<uint64_t>(src) ^ kByteZones<uint64_t>;
        excess |= excessOf(front >> (64 - 8 * before));
        if (anyExcess(excess)) return false;
        give(value + weight * valueOfBytes(front >> (64 - 8 * before)), minusOf(last.sign), result);
        return true;
    }

    // Clean items that fit the word.
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
        give(value, maskOf<uint64_t>(negative), result);
        return true;
    }
    bool quick(uint32_t, Integer &result) const
    {
        // Such short calls feel every jump, so the code of the shortest comes first.
        if (static_cast<uint32_t>(sn) < 4) {
            if (__builtin_expect(sn == 1, 1)) return digitValue<Form>(src, result);
            if constexpr (isPacked<Form>)
                return sn != 0 && fewPacked(result);
            else
                return __builtin_expect(sn == 2, 1) ? fewZoned<2>(result) : sn == 3 && fewZoned<3>(result);
        }
        if constexpr (isPacked<Form>)
            return shortValue<uint64_t>(result);
        else
            return eightDigitsValue(result);
    }
    bool quickLong(Integer &result) const
    {
        if constexpr (!isPacked<Form>) {
            if (longZonedValue(result)) return true;
        }
        return shortValue<u128>(result);
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

// Of an item longer than a word everything before the word is zero.
template <class Word>
uint8_t *writePackedWord(Word digits, bool negative, bool keep, uint8_t *dst, int32_t n)
{
    constexpr int32_t most = kWordDigits<Word>;
    const bool minus = resultSign(negative, keep, anyBit(lowDigits(digits, n)));
    uint8_t *to = dst;
    if (n > most) {
        const size_t before = packedBytes(n) - packedBytes(most);
        memset(dst, 0, before);
        to += before;
        n = most;
    }
    shortforms::Pckd::write(to, n, digits, minus);
    return dst;
}

// In the word that holds the digits.
[[gnu::noinline]] uint8_t *writeLongPacked(uint64_t magnitude, bool negative, bool keep, uint8_t *dst, int32_t n)
{
    if (n < 0) n = 0;
    if (magnitude < 100'000'000)
        return writePackedWord(uint64_t{eightDigits(static_cast<uint32_t>(magnitude))}, negative, keep, dst, n);
    if (magnitude < kLimb / 10) // one nibble stays free for the sign
        return writePackedWord(limbDigits(magnitude), negative, keep, dst, n);
    return writePackedWord(digitsOf(u128{magnitude}), negative, keep, dst, n);
}

[[gnu::always_inline]] inline uint8_t *writePacked(uint64_t magnitude, bool negative, bool keep, uint8_t *dst,
                                                   int32_t n)
{
    if (static_cast<uint32_t>(n - 2) > 1 || magnitude >= 1000)
        return writeLongPacked(magnitude, negative, keep, dst, n);
    const uint32_t digits = threeDigitsApart<0x10>(static_cast<uint32_t>(magnitude)) & (n == 2 ? 0x0FFu : 0xFFFu);
    const uint32_t sign = kPlus + resultSign(negative, keep, digits != 0);
    storeBig<uint16_t>(dst, static_cast<uint16_t>(digits << 4 | sign));
    return dst;
}

// Into items of more than eight digits; a magnitude has 20 at most. Where two of the stores
// overlap, the second one is right.
[[gnu::noinline]] uint8_t *writeLongZoned(uint64_t magnitude, bool negative, bool keep, uint8_t *dst, int32_t n)
{
    if (n < 1) return dst;
    const uint64_t upper = magnitude / 100'000'000;
    const uint64_t last = eightBytes(static_cast<uint32_t>(magnitude % 100'000'000));
    const uint64_t middle = eightBytes(static_cast<uint32_t>(upper % 100'000'000));
    if (n <= 16) {
        const uint64_t front = middle << (8 * (16 - n));
        storeBig<uint64_t>(dst, front | kByteZones<uint64_t>);
        storeBytes(dst + n - 8, 8, last, resultSign(signOf(negative), keep, (front | last) != 0));
        return dst;
    }
    if (n > 24) memset(dst, '0', static_cast<size_t>(n) - 24);
    uint64_t front = eightBytes(static_cast<uint32_t>(upper / 100'000'000));
    if (n < 24) front <<= 8 * (24 - n);
    storeBig<uint64_t>(n > 24 ? dst + n - 24 : dst, front | kByteZones<uint64_t>);
    storeBig<uint64_t>(dst + n - 16, middle | kByteZones<uint64_t>);
    storeBytes(dst + n - 8, 8, last, resultSign(signOf(negative), keep, (front | middle | last) != 0));
    return dst;
}

[[gnu::always_inline]] inline uint8_t *writeZoned(uint64_t magnitude, bool negative, bool keep, uint8_t *dst, int32_t n)
{
    if (__builtin_expect(!fitBytes<uint64_t>(n), 0)) return writeLongZoned(magnitude, negative, keep, dst, n);
    auto write = [=](int32_t length, auto digits) __attribute__((always_inline))
    {
        digits &= static_cast<decltype(digits)>(~uint64_t{0} >> (64 - 8 * length)); // what is beyond is cut
        storeBytes(dst, length, digits, resultSign(signOf(negative), keep, digits != 0));
        return dst;
    };
    if (n <= 3) {
        if (__builtin_expect(magnitude >= 1000, 0)) magnitude %= 1000;
        const uint32_t digits = threeDigitsApart<0x100>(static_cast<uint32_t>(magnitude));
        if (n == 2) return write(2, digits);
        return n == 3 ? write(3, digits) : write(1, digits);
    }
    if (__builtin_expect(magnitude >= 100'000'000, 0)) magnitude %= 100'000'000;
    return write(n, eightBytes(static_cast<uint32_t>(magnitude)));
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
    static bool keeps(uint32_t mode) { return mode & ZVK_BCD_KEEP_NEG_ZERO; }
    bool negative() const { return value < 0; }
    uint64_t magnitude() const
    {
        const auto minus = maskOf<uint64_t>(negative());
        return (static_cast<uint64_t>(value) ^ minus) - minus;
    }

    uint8_t *work(uint32_t mode) const
    {
        if (dn == 1 && digitFrom<Form>(value, dst)) return dst;
        const uint64_t number = magnitude();
        if constexpr (isPacked<Form>)
            return writePacked(number, negative(), keeps(mode), dst, dn);
        else
            return writeZoned(number, negative(), keeps(mode), dst, dn);
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
    ZVK_SHORT_ENTRY type Name(const uint8_t *src, int32_t srcDigits)                                                   \
    {                                                                                                                  \
        return bcd::runEntry<bcd::ToBinary<bcd::forms::form, type>>(src, srcDigits);                                   \
    }
#define FROM_BINARY(Name, type, form)                                                                                  \
    ZVK_SHORT_ENTRY uint8_t *Name(type value, uint8_t *dst, int32_t dstDigits)                                         \
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
