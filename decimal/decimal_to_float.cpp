// Packed and zoned items to floating point.
//
// The digits become an integer, the integer a number, and one division by ten to the item's decimal
// places puts the point right. Each step takes the narrowest format that holds what it works on:
//
//     up to 2^53 and 22 places         binary 64: integer and power are exact, one rounding
//     other values                     binary 128, rounded once more into the narrower result
//
// For example +123.45 in five digits and two places is 12345 / 100. Binary 32 is binary 64
// narrowed. A zero is positive; a bad operand is reported and computed on as it is.
#include "base/quiet_floats.h"
#include "decimal/entry.h"
#include "decimal/float_dump.h"
#include "decimal/float_forms.h"
#include "decimal/magnitude.h"
#include "decimal/short_product.h"
#include "decimal/validation.h"
#include "kvr2/float_conversions.h"

namespace bcd {
namespace {

using namespace floats;

// Dump titles; decimal formats have two spaces, some spellings are odd, and both stay.
template <class Form, class F>
constexpr const char *intoTitle = nullptr;
#define TITLE(Form, F, text)                                                                                           \
    template <>                                                                                                        \
    constexpr const char *intoTitle<forms::Form, F> = text
TITLE(Pckd, Binary128, "packed to quad... prec %d decs %d");
TITLE(ZndTO, Binary128, "zoned to quad... prec %d decs %d");
TITLE(Pckd, Binary64, "packed to double... prec %d decs %d");
TITLE(ZndTO, Binary64, "zoned to double... prec %d decs %d");
TITLE(Pckd, Binary32, "packed to float ... prec %d decs %d");
TITLE(ZndTO, Binary32, "zoned to float ... prec %d decs %d");
TITLE(Pckd, Decimal128, "packed to Decimal128... prec %d  decs %d");
TITLE(ZndTO, Decimal128, "zoned to Decimal128... prec %d  decs %d");
TITLE(Pckd, Decimal64, "packed to Decimal164... prec %d  decs %d");
TITLE(ZndTO, Decimal64, "zoned to Decimal164... prec %d  decs %d");
TITLE(ZndTO, Decimal32, "zoned to Decimal132... prec %d  decs %d");
#undef TITLE

template <class F>
typename F::Value scaledDown(typename F::Value value, int32_t decs)
{
    return decs >= 0 ? value / F::power(decs) : value * F::power(-int64_t{decs});
}

ZvkFloat128 quotient128(LongMagnitude digits, int32_t decs)
{
    auto value = static_cast<ZvkFloat128>(digits.value);
    for (int32_t left = digits.dropped; left > 0; left -= kExact128) value *= power128(std::min(left, kExact128));
    return scaledDown<Binary128>(value, decs);
}

ZvkDecimal128 quotientDecimal128(LongMagnitude digits, int32_t decs)
{
    return scaledDown<Decimal128>(decimal128Of(digits.value) * Decimal128::power(digits.dropped), decs);
}

bool isExact64(u128 value, int32_t decs)
{
    return value <= uint64_t{1} << 53 && static_cast<uint32_t>(decs) <= static_cast<uint32_t>(kExact64);
}

template <class F>
typename F::Value quotientOf(LongMagnitude digits, int32_t decs)
{
    if constexpr (std::is_same_v<F, Binary128>) {
        return quotient128(digits, decs);
    } else if constexpr (std::is_same_v<F, Decimal128>) {
        return quotientDecimal128(digits, decs);
    } else if constexpr (!F::isDecimal) { // binary 64, and binary 32 as its narrowed form
        double value =
            digits.dropped == 0 && isExact64(digits.value, decs)
                ? static_cast<double>(static_cast<int64_t>(digits.value)) / kPower64[static_cast<size_t>(decs)]
                : static_cast<double>(quotient128(digits, decs));
        return static_cast<typename F::Value>(value);
    } else { // Decimal64, and Decimal32 as its narrowed form
        ZvkDecimal64 value =
            digits.dropped == 0 && digits.value < kIntegerPower[16]
                ? scaledDown<Decimal64>(static_cast<ZvkDecimal64>(static_cast<uint64_t>(digits.value)), decs)
                : static_cast<ZvkDecimal64>(quotientDecimal128(digits, decs));
        return static_cast<typename F::Value>(value);
    }
}

template <class Form, class F>
struct ToFloat {
    using Value = typename F::Value;
    const uint8_t *src;
    int32_t prec;
    int32_t decs;

    void dumpOperands() const
    {
        dumpFloatTitle(intoTitle<Form, F>, prec, decs);
        dumpDigits("src", prec, src, Form::bytes(prec));
    }
    // Clean packed items of up to 15 digits into a format that no exception can come of.
    bool quick(uint32_t, Value &result) const requires(isPacked<Form> && !F::isDecimal && sizeof(Value) <= 8)
    {
        if (static_cast<uint32_t>(prec) - 1 >= kWordDigits<uint64_t>) return false;
        if (static_cast<uint32_t>(decs) > static_cast<uint32_t>(kExact64)) return false;
        shortforms::Pckd::Raw<uint64_t> raw(src, prec);
        if (!raw.hasSign() || !areDigits(raw.digits)) return false;
        // The first nibble of an even item is no digit.
        auto integer = static_cast<int64_t>(limbValue(raw.digits & ((uint64_t{1} << (4 * prec)) - 1)));
        if (raw.negative()) integer = -integer; // an integer has no negative zero
        result = static_cast<Value>(static_cast<double>(integer) / kPower64[static_cast<size_t>(decs)]);
        return true;
    }
    void validate(uint32_t mode) const
    {
        if (checked(kArithmeticRule, mode) && prec > 0) judgeSource(check<Form>(src, prec, kCheckArithmetic));
    }
    Value work(uint32_t) const
    {
        return quietly([this] {
            LongMagnitude digits = longMagnitude<Form>(src, prec);
            Value value = quotientOf<F>(digits, decs);
            return digits.value != 0 && Form::negative(src, prec) ? -value : value;
        });
    }
    void dumpResult(Value value) const { dumpFloatResult(value); }
};

} // namespace
} // namespace bcd

#define TO_FLOAT(entry, form, format, type)                                                                            \
    type entry(const uint8_t *src, int32_t prec, int32_t decs)                                                         \
    {                                                                                                                  \
        return bcd::runEntry<bcd::ToFloat<bcd::forms::form, floats::format>>(src, prec, decs);                         \
    }

TO_FLOAT(_zvkcBCD_CONV_Pckd_To_SFlt, Pckd, Binary32, float)
TO_FLOAT(_zvkcBCD_CONV_Pckd_To_LFlt, Pckd, Binary64, double)
TO_FLOAT(_zvkcBCD_CONV_Pckd_To_EFlt, Pckd, Binary128, ZvkFloat128)
TO_FLOAT(_zvkcBCD_CONV_Pckd_To_DFlt, Pckd, Decimal128, ZvkDecimal128)
TO_FLOAT(_zvkcBCD_CONV_Pckd_To_DFlt64, Pckd, Decimal64, ZvkDecimal64)
TO_FLOAT(_zvkcBCD_CONV_Pckd_To_DFlt128, Pckd, Decimal128, ZvkDecimal128)
TO_FLOAT(_zvkcBCD_CONV_Znd_To_BFlt32, ZndTO, Binary32, float)
TO_FLOAT(_zvkcBCD_CONV_Znd_To_BFlt64, ZndTO, Binary64, double)
TO_FLOAT(_zvkcBCD_CONV_Znd_To_BFlt128, ZndTO, Binary128, ZvkFloat128)
TO_FLOAT(_zvkcBCD_CONV_Znd_To_DFlt32, ZndTO, Decimal32, ZvkDecimal32)
TO_FLOAT(_zvkcBCD_CONV_Znd_To_DFlt64, ZndTO, Decimal64, ZvkDecimal64)
TO_FLOAT(_zvkcBCD_CONV_Znd_To_DFlt128, ZndTO, Decimal128, ZvkDecimal128)
