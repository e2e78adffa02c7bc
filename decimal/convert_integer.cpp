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

    // As signed, with the magnitude wrapped round.
    [[gnu::always_inline]] static void give(uint64_t value, bool negative, Integer &result)
    {
        const uint64_t minus = std::is_signed_v<Integer> ? 0 - uint64_t{negative} : 0;
        result = static_cast<Integer>((value ^ minus) - minus);
    }

    // Clean items of 1 to 3 digits.
    [[gnu::always_inline]] bool fewPacked(Integer &result) const
    {
        const unsigned last = src[sn >> 1], units = last >> 4, sign = last & 0x0F;
        unsigned tens = 0, hundreds = 0;
        if (sn > 1) {
            tens = src[0] & 0x0Fu;
            hundreds = src[0] >> 4;
        }
        if (sign < 10 || units > 9 || tens > 9 || hundreds > 9) return false;
        if (sn == 2) hundreds = 0; // the first nibble of an even item is no digit
        give(units + tens * 10 + hundreds * 100, isNegativeNibble(static_cast<uint8_t>(sign)), result);
        return true;
    }
    // A letter in the last place is not decoded here, nor below, so its item goes the long way.
    [[gnu::always_inline]] bool fewZoned(Integer &result) const
    {
        const unsigned last = src[sn - 1] ^ 0x30u;
        unsigned value = last & ~kByteMinus;
        if (value > 9) return false;
        if (sn > 1) {
            const unsigned tens = src[sn - 2] ^ 0x30u;
            if (tens > 9) return false;
            value += tens * 10;
        }
        if (sn > 2) {
            const unsigned hundreds = src[0] ^ 0x30u;
            if (hundreds > 9) return false;
            value += hundreds * 100;
        }
        give(value, last & kByteMinus, result);
        return true;
    }

    // Up to eight digits, a digit a byte.
    [[gnu::always_inline]] bool eightDigitsValue(Integer &result) const
    {
        if (!fitBytes<uint64_t>(sn)) return false;
        uint64_t excess = 0;
        const auto number = signedBytes(loadBytes<uint64_t>(src, sn), excess);
        if (anyExcess(excess)) return false;
        give(valueOfBytes(number.digits), number.sign != 0, result);
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
        give(value + weight * valueOfBytes(front >> (64 - 8 * before)), last.sign != 0, result);
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
        give(value, negative, result);
        return true;
    }
    bool quick(uint32_t, Integer &result) const
    {
        const bool few = static_cast<uint32_t>(sn - 1) < 3;
        if constexpr (isPacked<Form>)
            return few ? fewPacked(result) : shortValue<uint64_t>(result);
        else
            return (few && fewZoned(result)) || eightDigitsValue(result);
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

// The same for a magnitude below 1000 and an item of 1 to 3 digits.
[[gnu::always_inline]] inline void writeFewPacked(unsigned magnitude, bool negative, bool keep, uint8_t *dst, int32_t n)
{
    const unsigned hundreds = magnitude / 100;
    unsigned digits = hundreds << 8 | kValuePair[magnitude - hundreds * 100];
    if (n < 3) digits &= n == 2 ? 0xFF : 0x0F;
    const unsigned item = digits << 4 | signNibble(negative && (keep || digits));
    if (n > 1) *dst++ = static_cast<uint8_t>(item >> 8);
    *dst = static_cast<uint8_t>(item);
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

// The low n digits of 1 to 8, a byte each.
[[gnu::always_inline]] inline uint64_t lowBytes(uint64_t magnitude, int32_t n)
{
    if (magnitude < 10 || n == 1) return magnitude % 10;
    if (n <= 3) {
        const auto number = static_cast<uint32_t>(magnitude < 1000 ? magnitude : magnitude % 1000);
        const uint64_t tens = number / 10;
        const uint64_t digits = number - tens * 10 + (tens % 10 << 8) + (tens / 10 << 16);
        return n == 2 ? digits & 0xFFFF : digits;
    }
    const uint64_t low = magnitude < 100'000'000 ? magnitude : magnitude % 100'000'000;
    return eightBytes(static_cast<uint32_t>(low)) & ~uint64_t{0} >> (64 - 8 * n);
}

uint64_t signOf(bool negative) { return negative ? kByteMinus : 0; }

// Into items of more than eight digits; a magnitude has 20 at most. Where two of the stores
// overlap, the second one is right.
inline void writeZoned(uint64_t magnitude, bool negative, bool keep, uint8_t *dst, int32_t n)
{
    const uint64_t upper = magnitude / 100'000'000;
    const uint64_t last = eightBytes(static_cast<uint32_t>(magnitude % 100'000'000));
    const uint64_t middle = eightBytes(static_cast<uint32_t>(upper % 100'000'000));
    if (n <= 16) {
        const uint64_t front = middle << (8 * (16 - n));
        storeBig<uint64_t>(dst, front | kByteZones<uint64_t>);
        storeBytes(dst + n - 8, 8, last, signOf(negative && (keep || (front | last))));
        return;
    }
    if (n > 24) memset(dst, '0', static_cast<size_t>(n) - 24);
    uint64_t front = eightBytes(static_cast<uint32_t>(upper / 100'000'000));
    if (n < 24) front <<= 8 * (24 - n);
    storeBig<uint64_t>(n > 24 ? dst + n - 24 : dst, front | kByteZones<uint64_t>);
    storeBig<uint64_t>(dst + n - 16, middle | kByteZones<uint64_t>);
    storeBytes(dst + n - 8, 8, last, signOf(negative && (keep || (front | middle | last))));
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
    uint8_t *work(uint32_t mode) const
    {
        const bool keep = mode & ZVK_BCD_KEEP_NEG_ZERO;
        const uint64_t sign = value < 0 ? ~uint64_t{0} : 0;
        const uint64_t magnitude = (static_cast<uint64_t>(value) ^ sign) - sign;
        if constexpr (isPacked<Form>) {
            if (static_cast<uint32_t>(dn - 1) < 3 && magnitude < 1000) {
                writeFewPacked(static_cast<unsigned>(magnitude), sign != 0, keep, dst, dn);
                return dst;
            }
            withDigits(magnitude, [&](auto digits) {
                const int32_t n = dn > 0 ? dn : 0;
                writePacked(digits, sign && (keep || !allZero(digits, n)), dst, n);
            });
        } else if (fitBytes<uint64_t>(dn)) {
            const uint64_t digits = lowBytes(magnitude, dn);
            storeBytes(dst, dn, digits, signOf(sign && (keep || digits)));
        } else if (dn > 0) {
            writeZoned(magnitude, sign != 0, keep, dst, dn);
        }
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
