// Floating point to packed and zoned items.
//
// The magnitude, in the `Rnd` forms with half a unit of the item's last place added, is scaled by a
// power of ten so that the item's last place becomes the units, cut to an integer, and the
// integer's digits are the item's. All steps are rounded in the value's own format, which is what
// programs expect: 0.7 lies below seven tenths, but scaled by ten it is 7, and so one decimal place
// gets 7.
//
//     binary formats    a magnitude up to 0.1 is scaled in two steps, first to one digit before the
//                       point. An integer that is too long for its format to be exact in the item is
//                       scaled again in the next wider format. No more significant digits are
//                       given than the format is good for, the others are zeros
//     decimal formats   scaling is a change of the exponent, so all digits are given
//
// An integer far beyond the item gives zero, not its low-order digits; so do infinities and NaNs.
#include <cstdio>

#include "base/quiet_floats.h"
#include "decimal/dump.h"
#include "decimal/entry.h"
#include "decimal/float_dump.h"
#include "decimal/float_forms.h"
#include "decimal/packed.h"
#include "decimal/short_number.h"
#include "decimal/short_product.h"
#include "decimal/zoned.h"
#include "kvr2/float_conversions.h"

namespace bcd {
namespace {

using namespace floats;

// ---- Digits into an item.

template <class Form>
void clear(uint8_t *dst, int32_t prec)
{
    if constexpr (isPacked<Form>) {
        memset(dst, 0, packedBytes(prec));
        dst[packedBytes(prec) - 1] = kPlus;
    } else if (prec > 0) {
        memset(dst, '0', static_cast<size_t>(prec));
    }
}

// The digit at a place counted from the right.
template <class Form>
void setDigit(uint8_t *dst, int32_t prec, int32_t place, unsigned digit)
{
    if constexpr (isPacked<Form>) {
        uint8_t &byte = dst[packedBytes(prec) - 1 - (static_cast<size_t>(place) + 1) / 2];
        byte = static_cast<uint8_t>(place % 2 ? (byte & 0xF0) | digit : (byte & 0x0F) | digit << 4);
    } else {
        dst[prec - 1 - place] = zonedDigit(static_cast<uint8_t>(digit));
    }
}
template <class Form>
unsigned digitAt(const uint8_t *dst, int32_t prec, int32_t place)
{
    if constexpr (isPacked<Form>) {
        uint8_t byte = dst[packedBytes(prec) - 1 - (static_cast<size_t>(place) + 1) / 2];
        return place % 2 ? byte & 0x0F : byte >> 4;
    } else {
        return dst[prec - 1 - place] & 0x0F;
    }
}

template <class Form>
void setSign(uint8_t *dst, int32_t prec, bool negative)
{
    if constexpr (isPacked<Form>)
        setPackedSign(dst, prec, negative);
    else if (prec > 0)
        forms::ZndTO::writeSign(dst, prec, negative);
}

// Digits of a value from a place on, into a cleared item; what does not fit is dropped.
template <class Form>
void setDigits(uint8_t *dst, int32_t prec, int64_t place, u128 value)
{
    for (; value != 0 && place < prec; place++, value /= 10)
        setDigit<Form>(dst, prec, static_cast<int32_t>(place), static_cast<unsigned>(value % 10));
}

// Keeps the first `cap` significant digits and makes zeros of the rest.
template <class Form>
void capDigits(uint8_t *dst, int32_t prec, int cap)
{
    int32_t place = prec - 1;
    while (place >= 0 && digitAt<Form>(dst, prec, place) == 0) place--;
    for (place -= cap; place >= 0; place--) setDigit<Form>(dst, prec, place, 0);
}

template <class Form>
bool isZero(const uint8_t *dst, int32_t prec)
{
    if constexpr (isPacked<Form>)
        return zvkBcdIsZeroPacked(dst, prec);
    else
        return prec <= 0 || zvkBcdIsZeroZoned(dst, prec);
}

template <class Form>
void finish(uint8_t *dst, int32_t prec, bool negative, uint32_t mode)
{
    bool keep = negative && ((mode & ZVK_BCD_KEEP_NEG_ZERO) || !isZero<Form>(dst, prec));
    setSign<Form>(dst, prec, keep);
}

// The low-order digits of a value of up to 38 digits, at most `cap` of them significant. The common
// case, all digits at once.
template <class Form>
void storeShortValue(uint8_t *dst, int32_t prec, u128 value, bool negative, int cap, uint32_t mode)
{
    value %= kIntegerPower[static_cast<size_t>(prec)];
    int digits = digitCount(value);
    if (digits > cap) value -= value % kIntegerPower[static_cast<size_t>(digits - cap)];
    if (value == 0 && !(mode & ZVK_BCD_KEEP_NEG_ZERO)) negative = false;
    if constexpr (isPacked<Form>)
        shortforms::Pckd::write(dst, prec, digitsOf(value), negative);
    else
        shortforms::Znd::write(dst, prec, digitsOf(value), negative);
}

inline bool isShortItem(int32_t prec) { return static_cast<uint32_t>(prec) - 1 < static_cast<uint32_t>(kShortDigits); }

// ---- Binary formats.

// What differs between them: no more integer than this, how far to cut before the digits are taken,
// when the next wider format takes over, and how many significant digits are given.
template <class F>
struct Limits;
template <>
struct Limits<Binary32> {
    using Wider = Binary64;
    static constexpr bool hasWider = true;
    static constexpr double widerFrom = 1e6; // seven digits
    static constexpr int32_t widerPrec = 9;
    static constexpr int cut = 38, cap = 9;
    // One limit for all items, however long: more than 10^9 units of the last place give zero. It
    // stays.
    static bool absurd(float integer, int32_t) { return integer > 1e9F; }
};
template <>
struct Limits<Binary64> {
    using Wider = Binary128;
    static constexpr bool hasWider = true;
    static constexpr double widerFrom = 1e15; // sixteen digits
    static constexpr int32_t widerPrec = 17;
    static constexpr int cut = 16, cap = 17;
    static bool absurd(double integer, int32_t prec) { return integer > power64(prec + int64_t{17}); }
};
template <>
struct Limits<Binary128> {
    using Wider = void;
    static constexpr bool hasWider = false;
    static constexpr int cut = 35, cap = 36;
    static bool absurd(ZvkFloat128 integer, int32_t prec) { return integer > power128(prec + int64_t{36}); }
};

// 10^-n; n may be negative.
template <class F>
typename F::Power tenth(int64_t n)
{
    return n >= 0 ? F::tenth(n) : F::power(-n);
}

// n may be negative.
template <class F>
typename F::Value timesPower(typename F::Value value, int64_t n)
{
    if (n >= 0) return static_cast<typename F::Value>(value * F::power(n));
    return static_cast<typename F::Value>(value / F::power(-n));
}

// How many zeros follow the point of a magnitude of up to 0.1: 1 for 0.1 and 0.02, 2 for 0.01. Not
// asked for more than `most`, where the answer is most + 1.
template <class F>
int64_t leadingPlaces(typename F::Value magnitude, int64_t most)
{
    int64_t places = 0;
    while (places <= most && magnitude <= tenth<F>(places + 1)) places++;
    return places;
}

// The magnitude with the item's last place as its units; 0 when it lies below that place.
template <class F>
typename F::Value scaled(typename F::Value magnitude, int32_t decs)
{
    if (magnitude < 1) {
        if (decs < 0 || magnitude <= tenth<F>(decs + int64_t{1})) return 0;
        int64_t places = magnitude <= tenth<F>(1) ? leadingPlaces<F>(magnitude, decs) : 0;
        if (places) {
            magnitude = timesPower<F>(magnitude, places);
            return places < decs ? timesPower<F>(magnitude, decs - places) : magnitude;
        }
    }
    return decs ? timesPower<F>(magnitude, decs) : magnitude;
}

inline float wholePart(float x) { return __builtin_truncf(x); }
inline double wholePart(double x) { return __builtin_trunc(x); }
inline ZvkFloat128 wholePart(ZvkFloat128 x)
{
    u128 bits = bitsAs<u128>(x);
    int exponent = static_cast<int>(bits >> 112 & 0x7FFF) - 16383;
    if (exponent < 0) return 0;
    if (exponent < 112) bits &= ~((u128{1} << (112 - exponent)) - 1);
    return bitsAs<ZvkFloat128>(bits);
}

// The digits of an integer of any size, eighteen a chunk from the right: its mantissa, doubled as
// often as its exponent says, up to 59 times at once, which carries less than a chunk. Chunks to
// the left of `most` are dropped.
struct Chunks {
    static constexpr uint64_t kChunk = 1'000'000'000'000'000'000u;
    uint64_t chunk[4933 / 18 + 2]; // of the largest number
    int count = 0;

    Chunks(ZvkFloat128 integer, int most)
    {
        most = std::min(most, static_cast<int>(std::size(chunk)));
        u128 bits = bitsAs<u128>(integer);
        int exponent = static_cast<int>(bits >> 112 & 0x7FFF) - 16383 - 112;
        u128 mantissa = (bits & ((u128{1} << 112) - 1)) | u128{1} << 112;
        if (exponent < 0) mantissa >>= -exponent;
        for (; mantissa != 0 && count < most; mantissa /= kChunk)
            chunk[count++] = static_cast<uint64_t>(mantissa % kChunk);
        while (exponent > 0) {
            int step = std::min(exponent, 59);
            uint64_t carry = 0;
            for (int i = 0; i < count; i++) {
                u128 value = (u128{chunk[i]} << step) + carry;
                carry = static_cast<uint64_t>(value / kChunk);
                chunk[i] = static_cast<uint64_t>(value % kChunk);
            }
            if (carry && count < most) chunk[count++] = carry;
            exponent -= step;
        }
    }
};

// An integer-valued number of any size.
template <class Form>
void storeLongValue(uint8_t *dst, int32_t prec, ZvkFloat128 integer, bool negative, int cut, int cap, uint32_t mode)
{
    clear<Form>(dst, prec);
    bool any = false;
    const Chunks digits(integer, prec / 18 + 1);
    int64_t place = 0;
    for (int i = 0; i < digits.count && place <= prec; i++, place += 18) {
        uint64_t rest = digits.chunk[i];
        // The digit to the left of the item counts: when it alone is there, the item is a negative
        // zero.
        int64_t seen = prec + int64_t{1} - place;
        any |= (seen >= 18 ? rest : rest % static_cast<uint64_t>(kIntegerPower[static_cast<size_t>(seen)])) != 0;
        setDigits<Form>(dst, prec, place, rest);
    }
    if (prec < cut && !any) return;
    capDigits<Form>(dst, prec, cap);
    finish<Form>(dst, prec, negative, mode);
}

// Whether no digit is left up to the one before the item.
template <class F>
bool cutToNothing(u128 value, int32_t prec)
{
    return prec < Limits<F>::cut && prec >= 0 && value % kIntegerPower[static_cast<size_t>(prec) + 1] == 0;
}

template <class Form, class F>
void fromBinary(uint8_t *dst, int32_t prec, int32_t decs, typename F::Value value, bool round, int cap, uint32_t mode)
{
    using Value = typename F::Value;
    if (!F::isFinite(value)) return clear<Form>(dst, prec);
    Value magnitude = magnitudeOf<F>(value);
    if (round) magnitude = static_cast<Value>(magnitude + tenth<F>(decs) / 2);
    Value integer = wholePart(scaled<F>(magnitude, decs));
    if (integer == 0 || !F::isFinite(integer)) return clear<Form>(dst, prec);
    if (integer >= 10 && Limits<F>::absurd(integer, prec)) return clear<Form>(dst, prec);

    if constexpr (Limits<F>::hasWider) {
        if (integer >= static_cast<Value>(Limits<F>::widerFrom) && prec >= Limits<F>::widerPrec)
            return fromBinary<Form, typename Limits<F>::Wider>(dst, prec, decs, value, round, cap, mode);
    }
    const bool negative = F::signBit(value);
    if (isShortItem(prec) && integer < static_cast<Value>(1e38)) {
        auto whole = static_cast<u128>(integer);
        if (cutToNothing<F>(whole, prec)) return clear<Form>(dst, prec);
        return storeShortValue<Form>(dst, prec, whole, negative, cap, mode);
    }
    storeLongValue<Form>(dst, prec, static_cast<ZvkFloat128>(integer), negative, Limits<F>::cut, cap, mode);
}

// ---- Decimal formats.

inline constexpr int kDecimalCut = 33, kDecimalExcess = 34;

inline bool isPowerOfTen(u128 value) { return value == kIntegerPower[static_cast<size_t>(digitCount(value) - 1)]; }

template <class Form, class F>
void fromDecimal(uint8_t *dst, int32_t prec, int32_t decs, typename F::Value value, bool round, uint32_t mode)
{
    const bool negative = F::signBit(value);
    value = magnitudeOf<F>(value);
    if (round) value = value + F::make(5, -int64_t{decs} - 1);
    DecimalParts number = F::parts(value);
    clear<Form>(dst, prec);
    int64_t zeros = int64_t{number.exponent} + decs; // of the scaled integer, after its coefficient
    u128 integer = number.coefficient;
    if (!number.finite || integer == 0 || digitCount(integer) + zeros <= 0) return;
    if (zeros < 0) {
        integer /= kIntegerPower[static_cast<size_t>(-zeros)];
        zeros = 0;
    }

    int64_t power = digitCount(integer) - 1 + zeros; // of the first digit
    int64_t most = int64_t{prec} + kDecimalExcess;
    if (power > 0 && (power > most || (power == most && !isPowerOfTen(integer)))) return;
    int64_t kept = int64_t{prec} + 1 - zeros; // digits of the coefficient up to the one before the item
    if (prec < kDecimalCut && (kept <= 0 || (kept < 38 && integer % kIntegerPower[static_cast<size_t>(kept)] == 0)))
        return;
    if (isShortItem(prec)) {
        if (zeros < prec)
            integer =
                integer % kIntegerPower[static_cast<size_t>(prec - zeros)] * kIntegerPower[static_cast<size_t>(zeros)];
        else
            integer = 0;
        return storeShortValue<Form>(dst, prec, integer, negative, kShortDigits, mode);
    }
    setDigits<Form>(dst, prec, zeros, integer);
    finish<Form>(dst, prec, negative, mode);
}

// ---- Entries.

template <class Form, class F, bool Round>
struct FromFloat {
    uint8_t *dst;
    int32_t prec;
    int32_t decs;
    typename F::Value value;

    void dumpOperands() const
    {
        char title[64];
        snprintf(title, sizeof title, "%s to %s%s... prec %%d  decs %%d", F::name, isPacked<Form> ? "packed" : "zoned",
                 Round ? " rounded" : "");
        dumpFloatTitle(title, prec, decs);
        dumpFloatSource(value);
    }
    // Items of up to 15 digits from a number that fits them with room to spare: nothing can come of
    // the steps but the digits.
    bool quick(uint32_t, uint8_t *&result) const requires(std::is_same_v<F, Binary64>)
    {
        constexpr uint64_t least = 0x3FC0000000000000, most = 0x4330000000000000; // 0.125 and 2^52
        uint64_t bits = bitsAs<uint64_t>(value) << 1 >> 1;
        if (static_cast<uint32_t>(prec) - 1 >= kWordDigits<uint64_t> || static_cast<uint32_t>(decs) > 15) return false;
        if (bits - least >= most - least) return false;
        double units = bitsAs<double>(bits);
        if constexpr (Round) units += kHalfUnit[static_cast<size_t>(decs)];
        units *= kPower64[static_cast<size_t>(decs)];
        if (!(units < 9e15)) return false;
        uint64_t whole = static_cast<uint64_t>(static_cast<int64_t>(units));
        if (whole == 0 || whole >= static_cast<uint64_t>(kIntegerPower[static_cast<size_t>(prec)])) return false;
        bool negative = F::signBit(value);
        if constexpr (isPacked<Form>)
            shortforms::Pckd::write(dst, prec, limbDigits(whole), negative);
        else
            shortforms::Znd::write(dst, prec, u128{limbDigits(whole)}, negative);
        result = dst;
        return true;
    }
    uint8_t *work(uint32_t mode) const
    {
        quietly([this, mode] {
            if constexpr (F::isDecimal)
                fromDecimal<Form, F>(dst, prec, decs, value, Round, mode);
            else
                fromBinary<Form, F>(dst, prec, decs, value, Round, Limits<F>::cap, mode);
        });
        return dst;
    }
    void dumpResult(const uint8_t *) const { dumpDigits("dst", prec, dst, Form::bytes(prec)); }

    static constexpr std::array<double, 16> kHalfUnit = [] {
        std::array<double, 16> table{};
        for (size_t n = 0; n < table.size(); n++) table[n] = 1 / kPower64[n] / 2;
        return table;
    }();
};

} // namespace
} // namespace bcd

#define FROM_FLOAT(entry, rounded, form, format, type)                                                                 \
    uint8_t *entry(uint8_t *dst, int32_t prec, int32_t decs, type value)                                               \
    {                                                                                                                  \
        return bcd::runEntry<bcd::FromFloat<bcd::forms::form, floats::format, false>>(dst, prec, decs, value);         \
    }                                                                                                                  \
    uint8_t *rounded(uint8_t *dst, int32_t prec, int32_t decs, type value)                                             \
    {                                                                                                                  \
        return bcd::runEntry<bcd::FromFloat<bcd::forms::form, floats::format, true>>(dst, prec, decs, value);          \
    }

FROM_FLOAT(_zvkcBCD_CONV_SFlt_To_Pckd, _zvkcBCD_CONV_SFlt_To_PckdRnd, Pckd, Binary32, float)
FROM_FLOAT(_zvkcBCD_CONV_LFlt_To_Pckd, _zvkcBCD_CONV_LFlt_To_PckdRnd, Pckd, Binary64, double)
FROM_FLOAT(_zvkcBCD_CONV_EFlt_To_Pckd, _zvkcBCD_CONV_EFlt_To_PckdRnd, Pckd, Binary128, ZvkFloat128)
FROM_FLOAT(_zvkcBCD_CONV_DFlt32_To_Pckd, _zvkcBCD_CONV_DFlt32_To_PckdRnd, Pckd, Decimal32, ZvkDecimal32)
FROM_FLOAT(_zvkcBCD_CONV_DFlt64_To_Pckd, _zvkcBCD_CONV_DFlt64_To_PckdRnd, Pckd, Decimal64, ZvkDecimal64)
FROM_FLOAT(_zvkcBCD_CONV_DFlt_To_Pckd, _zvkcBCD_CONV_DFlt_To_PckdRnd, Pckd, Decimal128, ZvkDecimal128)
FROM_FLOAT(_zvkcBCD_CONV_BFlt32_To_Znd, _zvkcBCD_CONV_BFlt32_To_ZndRnd, ZndTO, Binary32, float)
FROM_FLOAT(_zvkcBCD_CONV_BFlt64_To_Znd, _zvkcBCD_CONV_BFlt64_To_ZndRnd, ZndTO, Binary64, double)
FROM_FLOAT(_zvkcBCD_CONV_BFlt128_To_Znd, _zvkcBCD_CONV_BFlt128_To_ZndRnd, ZndTO, Binary128, ZvkFloat128)
FROM_FLOAT(_zvkcBCD_CONV_DFlt32_To_Znd, _zvkcBCD_CONV_DFlt32_To_ZndRnd, ZndTO, Decimal32, ZvkDecimal32)
FROM_FLOAT(_zvkcBCD_CONV_DFlt64_To_Znd, _zvkcBCD_CONV_DFlt64_To_ZndRnd, ZndTO, Decimal64, ZvkDecimal64)
FROM_FLOAT(_zvkcBCD_CONV_DFlt128_To_Znd, _zvkcBCD_CONV_DFlt128_To_ZndRnd, ZndTO, Decimal128, ZvkDecimal128)
