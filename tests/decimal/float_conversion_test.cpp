// Faults that these tests are there to catch: a number that is not the nearest to an item; digits
// of an item that are not those of the number, at any count of digits and places; a power of ten
// off by a bit; a half unit added in the wrong place; a cap, limit or hand-over between formats
// that moved; a sign on a zero; bytes beyond an item; any number or item that crashes, traps or
// hangs a conversion.
#include <cfenv>
#include <cmath>
#include <limits>
#include <quadmath.h>

#include "big_integer.h"
#include "decimal/float_forms.h"
#include "items.h"
#include "kvr2/float_conversions.h"
#include "mode_guard.h"
#include "reference.h"
#include "support/child.h"
#include "support/share.h"
#include <gtest/gtest.h>

extern "C" {
ZvkDecimal32 strtod32(const char *text, char **end);
ZvkDecimal64 strtod64(const char *text, char **end);
ZvkDecimal128 strtod128(const char *text, char **end);
}

namespace {

// ---- Binary numbers taken apart.

template <class Value>
struct Binary;
template <>
struct Binary<float> {
    static constexpr int precision = 24, cap = 9;
};
template <>
struct Binary<double> {
    static constexpr int precision = 53, cap = 17;
};
template <>
struct Binary<ZvkFloat128> {
    static constexpr int precision = 113, cap = 36;
};

// Finite, by its magnitude.
Dyadic dyadicOf(ZvkFloat128 value)
{
    if (value == 0) return {};
    int exponent;
    ZvkFloat128 mantissa = frexpq(fabsq(value), &exponent);
    return {BigInteger(static_cast<unsigned __int128>(ldexpq(mantissa, 113))), exponent - 113};
}

// Whether a value lies within half a unit of its last place of N / 10^decs, or a hair more:
// narrowing from a wider format may round a tie that is none.
template <class Value>
bool isNearest(Value value, const std::string &digits, int decs)
{
    BigInteger n(digits);
    if (n.isZero()) return value == 0 && !std::signbit(static_cast<double>(value));
    Dyadic dyadic = dyadicOf(static_cast<ZvkFloat128>(value)); // mantissa of 113 bits
    if (decs < 0) {
        n = n.timesTenTo(-decs);
        decs = 0;
    }
    // Both sides times 10^decs and, if need be, a power of two.
    Dyadic ours = dyadic.timesTenTo(decs), wanted = {n, 0};
    int low = std::min(ours.exponent, 0);
    BigInteger a = ours.mantissa << (ours.exponent - low), b = wanted.mantissa << -low;
    BigInteger distance = a < b ? b - a : a - b;
    // Half a unit, with 2^20 parts in it so that the hair can be told.
    Dyadic half = {BigInteger(1), dyadic.exponent + 113 - Binary<Value>::precision - 1};
    half = half.timesTenTo(decs);
    int shift = 20 + std::max(0, -(half.exponent - low));
    BigInteger limit = half.mantissa.timesPlus((1 << 20) + 1) << (half.exponent - low + shift - 20);
    return !(limit < (distance << shift));
}

struct Operand {
    std::string digits;
    bool negative;
    int prec() const { return static_cast<int>(digits.size()); }
};

Operand randomOperandOf(int prec)
{
    Operand operand = {randomDigits(prec), randomBelow(2) != 0};
    if (operand.digits.find_first_not_of('0') == std::string::npos) operand.negative = false;
    return operand;
}

Bytes packed(const Operand &operand) { return packedItem(operand.digits, operand.negative ? 0x0D : 0x0C); }
Bytes zoned(const Operand &operand) { return zonedItem(operand.digits, operand.negative); }

// As the parsers of decimal texts take it. They cut what is too long for the format, so it is
// rounded here, to the even digit in the middle.
std::string textOf(const Operand &operand, int decs, size_t most = 34)
{
    std::string digits = reference::stripped(operand.digits);
    int exponent = -decs;
    if (digits.size() > most) {
        std::string rest = digits.substr(most), half = "5" + std::string(rest.size() - 1, '0');
        digits.resize(most);
        exponent += static_cast<int>(rest.size());
        if (rest > half || (rest == half && (digits.back() - '0') % 2))
            digits = reference::stripped(reference::add(digits, "1"));
    }
    return (operand.negative ? "-" : "") + digits + "E" + std::to_string(exponent);
}

TEST(DecimalToFloat, IsTheNearestNumber)
{
    Place place;
    for (int prec = 1; prec <= 31; prec++)
        for (int decs = -2; decs <= 40; decs++)
            for (int i = 0; i < std::max(2, shareOf(6)); i++) {
                Operand operand = randomOperandOf(prec);
                auto side = i % 2 ? GuardedItem::AtStart : GuardedItem::AtEnd;
                const uint8_t *item = place.put(packed(operand), side);
                auto check = [&](auto value, const char *what) {
                    if (sizeof value == 4 && decs > 34) return; // perhaps denormal
                    ASSERT_TRUE(isNearest(value, operand.digits, decs)) << what << " of " << textOf(operand, decs);
                    ASSERT_EQ(value < 0, operand.negative) << what << " of " << textOf(operand, decs);
                };
                check(_zvkcBCD_CONV_Pckd_To_SFlt(item, prec, decs), "SFlt");
                check(_zvkcBCD_CONV_Pckd_To_LFlt(item, prec, decs), "LFlt");
                check(_zvkcBCD_CONV_Pckd_To_EFlt(item, prec, decs), "EFlt");
                // Decimal formats: one rounding, to the format's digits.
                std::string text = textOf(operand, decs);
                ZvkDecimal128 wanted = strtod128(text.c_str(), nullptr);
                ZvkDecimal64 wanted64 = strtod64(textOf(operand, decs, 16).c_str(), nullptr);
                ZvkDecimal32 wanted32 = strtod32(textOf(operand, decs, 7).c_str(), nullptr);
                ASSERT_TRUE(_zvkcBCD_CONV_Pckd_To_DFlt(item, prec, decs) == wanted) << text;
                ASSERT_TRUE(_zvkcBCD_CONV_Pckd_To_DFlt128(item, prec, decs) == wanted) << text;
                ASSERT_TRUE(_zvkcBCD_CONV_Pckd_To_DFlt64(item, prec, decs) == wanted64) << text;

                item = place.put(zoned(operand), side);
                check(_zvkcBCD_CONV_Znd_To_BFlt32(item, prec, decs), "BFlt32");
                check(_zvkcBCD_CONV_Znd_To_BFlt64(item, prec, decs), "BFlt64");
                check(_zvkcBCD_CONV_Znd_To_BFlt128(item, prec, decs), "BFlt128");
                ASSERT_TRUE(_zvkcBCD_CONV_Znd_To_DFlt128(item, prec, decs) == wanted) << text;
                ASSERT_TRUE(_zvkcBCD_CONV_Znd_To_DFlt64(item, prec, decs) == wanted64) << text;
                if (prec <= 16) { // longer ones are rounded twice
                    ASSERT_TRUE(_zvkcBCD_CONV_Znd_To_DFlt32(item, prec, decs) == wanted32) << text;
                }
            }
}

TEST(DecimalToFloat, KeepsTheOrderOfMagnitudeOfLongItems)
{
    for (int prec = 32; prec <= 70; prec++) {
        Bytes item = packedItem(std::string(static_cast<size_t>(prec), '7'), 0x0D);
        ZvkFloat128 value = _zvkcBCD_CONV_Pckd_To_EFlt(item.data(), prec, 3);
        ZvkFloat128 wanted = -strtoflt128((std::string(static_cast<size_t>(prec), '7') + "E-3").c_str(), nullptr);
        EXPECT_TRUE(fabsq(value / wanted - 1) < 1e-32Q) << prec;
        Bytes digits = zonedItem(std::string(static_cast<size_t>(prec), '7'), true);
        EXPECT_TRUE(fabsq(_zvkcBCD_CONV_Znd_To_BFlt128(digits.data(), prec, 3) / wanted - 1) < 1e-32Q) << prec;
        EXPECT_TRUE(fabs(static_cast<double>(_zvkcBCD_CONV_Znd_To_DFlt128(digits.data(), prec, 3)) /
                             static_cast<double>(wanted) -
                         1) < 1e-15)
            << prec;
    }
    const uint8_t even[] = {0x91, 0x2C}; // the first nibble of an even item is no digit
    EXPECT_EQ(_zvkcBCD_CONV_Pckd_To_LFlt(even, 2, 0), 12);
    const uint8_t letter[] = {'1', 'K'}; // letters count by their low nibble, not as sign and digit
    EXPECT_EQ(_zvkcBCD_CONV_Znd_To_BFlt64(letter, 2, 0), -21);
}

// ---- Out of floating point, step by step as programs see them.

struct Digits {
    std::string digits; // of the item
    bool negative;
};

template <class Value>
Dyadic powerOfTenth(int n) // 10^-n, rounded
{
    constexpr int precision = Binary<Value>::precision < 53 ? 53 : Binary<Value>::precision;
    if (n <= 0) return Dyadic{BigInteger(1), 0}.timesTenTo(-n).rounded(precision);
    bool sticky;
    Dyadic quotient = Dyadic{BigInteger(1), 0}.dividedByTenTo(n, sticky);
    return quotient.rounded(precision, sticky);
}

// Times 10^n, which is itself rounded where the format does not hold it.
template <class Value>
Dyadic scaledUp(const Dyadic &v, int n)
{
    Dyadic power = powerOfTenth<Value>(-n);
    return Dyadic{v.mantissa * power.mantissa, v.exponent + power.exponent}.rounded(Binary<Value>::precision);
}

template <class Value>
std::string itemDigits(ZvkFloat128 value, int prec, int decs, bool round, int cap = Binary<Value>::cap)
{
    constexpr int precision = Binary<Value>::precision;
    const std::string zero(static_cast<size_t>(prec), '0');
    Dyadic v = dyadicOf(value);
    if (round) {
        Dyadic half = powerOfTenth<Value>(decs);
        half.exponent--;
        v = v.plus(half).rounded(precision);
    }
    if (v.mantissa.isZero()) return zero;
    int places = 0;
    while (places <= decs + 1 && v.notAbove(powerOfTenth<Value>(places + 1))) places++;
    if (places > decs) return zero;
    if (places) v = scaledUp<Value>(v, places);
    if (decs > places) v = scaledUp<Value>(v, decs - places);
    std::string whole = v.whole().decimal();
    if (whole == "0") return zero;
    int length = static_cast<int>(whole.size());
    auto exceeds = [&](int power) { // is more than 10^power
        if (length != power + 1) return length > power + 1;
        return whole[0] > '1' || whole.find_first_not_of('0', 1) != std::string::npos;
    };
    if (precision == 24) {
        if (exceeds(9)) return zero;
        if (length >= 7 && prec >= 9) return itemDigits<double>(value, prec, decs, round, cap);
    } else {
        if (exceeds(prec + cap)) return zero;
        if (precision == 53 && length >= 16 && prec >= 17)
            return itemDigits<ZvkFloat128>(value, prec, decs, round, cap);
    }
    std::string digits = reference::cut(whole, prec);
    size_t first = digits.find_first_not_of('0');
    if (first != std::string::npos)
        for (size_t i = first + static_cast<size_t>(cap); i < digits.size(); i++) digits[i] = '0';
    return digits;
}

template <class Value>
using OutOf = uint8_t *(*)(uint8_t *, int32_t, int32_t, Value);

template <class Value>
void checkOut(OutOf<Value> toPacked, OutOf<Value> toZoned, Value value, int prec, int decs, bool round, Place &place)
{
    std::string digits = itemDigits<Value>(static_cast<ZvkFloat128>(value), prec, decs, round);
    bool negative = value < 0 && digits.find_first_not_of('0') != std::string::npos;
    char text[60];
    quadmath_snprintf(text, sizeof text, "%.36Qg", static_cast<ZvkFloat128>(value));
    Bytes wanted = packedItem(digits, negative ? 0x0D : 0x0C);
    auto side = randomBelow(2) ? GuardedItem::AtStart : GuardedItem::AtEnd;
    uint8_t *dst = place.put(randomBytes(wanted.size()), side);
    ASSERT_EQ(toPacked(dst, prec, decs, value), dst);
    ASSERT_EQ(hex(dst, wanted.size()), hex(wanted))
        << text << " in " << prec << ", " << decs << (round ? " rounded" : "");
    wanted = zonedItem(digits, negative);
    dst = place.put(randomBytes(wanted.size()), side);
    ASSERT_EQ(toZoned(dst, prec, decs, value), dst);
    ASSERT_EQ(hex(dst, wanted.size()), hex(wanted))
        << text << " in " << prec << ", " << decs << (round ? " rounded" : "");
}

template <class Value>
void checkAllCounts(OutOf<Value> toPacked, OutOf<Value> packedRounded, OutOf<Value> toZoned, OutOf<Value> zonedRounded,
                    int rounds)
{
    Place place;
    for (int prec = 1; prec <= 31; prec++)
        for (int decs = 0; decs <= prec + 2; decs++)
            for (int i = 0; i < shareOf(rounds); i++) {
                // Decimal numbers as programs have them, around the item's own size; and any bits.
                std::string text = randomDigits(static_cast<int>(randomBelow(20)) + 1) + "E" +
                                   std::to_string(static_cast<int>(randomBelow(24)) - decs - 12);
                Value value = static_cast<Value>(strtoflt128(text.c_str(), nullptr));
                if (i % 3 == 0) value = static_cast<Value>(value + static_cast<Value>(randomBelow(1000)) / 997);
                if (i % 2) value = -value;
                if (!finiteq(static_cast<ZvkFloat128>(value))) continue;
                checkOut<Value>(toPacked, toZoned, value, prec, decs, false, place);
                checkOut<Value>(packedRounded, zonedRounded, value, prec, decs, true, place);
                if (testing::Test::HasFatalFailure()) return;
            }
}

TEST(FloatToDecimal, Binary32GivesTheDigitsOfEveryStep)
{
    checkAllCounts<float>(_zvkcBCD_CONV_SFlt_To_Pckd, _zvkcBCD_CONV_SFlt_To_PckdRnd, _zvkcBCD_CONV_BFlt32_To_Znd,
                          _zvkcBCD_CONV_BFlt32_To_ZndRnd, 8);
}
TEST(FloatToDecimal, Binary64GivesTheDigitsOfEveryStep)
{
    checkAllCounts<double>(_zvkcBCD_CONV_LFlt_To_Pckd, _zvkcBCD_CONV_LFlt_To_PckdRnd, _zvkcBCD_CONV_BFlt64_To_Znd,
                           _zvkcBCD_CONV_BFlt64_To_ZndRnd, 12);
}
TEST(FloatToDecimal, Binary128GivesTheDigitsOfEveryStep)
{
    checkAllCounts<ZvkFloat128>(_zvkcBCD_CONV_EFlt_To_Pckd, _zvkcBCD_CONV_EFlt_To_PckdRnd, _zvkcBCD_CONV_BFlt128_To_Znd,
                                _zvkcBCD_CONV_BFlt128_To_ZndRnd, 8);
}

// Decimal formats: digits and exponent are moved, nothing is lost but by the half unit's rounding.
template <class Value, class Parse>
void checkDecimals(OutOf<Value> toPacked, OutOf<Value> packedRounded, OutOf<Value> toZoned, int formatDigits,
                   Parse parse)
{
    for (int i = 0; i < shareOf(20000); i++) {
        int prec = static_cast<int>(randomBelow(31)) + 1, decs = static_cast<int>(randomBelow(33));
        std::string digits = randomDigits(static_cast<int>(randomBelow(static_cast<unsigned>(formatDigits))) + 1);
        int exponent = static_cast<int>(randomBelow(30)) - decs - 15;
        bool negative = randomBelow(2);
        std::string text = (negative ? "-" : "") + digits + "E" + std::to_string(exponent);
        // The integer digits of digits * 10^(exponent + decs).
        auto wholeOf = [](const std::string &n, int shift) {
            if (shift >= 0) return reference::stripped(n + std::string(static_cast<size_t>(shift), '0'));
            return static_cast<int>(n.size()) + shift <= 0
                       ? std::string("0")
                       : reference::stripped(n.substr(0, n.size() - static_cast<size_t>(-shift)));
        };
        auto itemOf = [&](const std::string &whole) {
            bool absurd =
                static_cast<int>(whole.size()) > prec + 35 ||
                (static_cast<int>(whole.size()) == prec + 35 && whole != "1" + std::string(whole.size() - 1, '0'));
            std::string kept = absurd && whole.size() > 1 ? "0" : whole;
            kept = reference::cut(kept, prec);
            bool minus = negative && kept.find_first_not_of('0') != std::string::npos;
            return std::pair(packedItem(kept, minus ? 0x0D : 0x0C), zonedItem(kept, minus));
        };
        auto [packedWanted, zonedWanted] = itemOf(wholeOf(digits, exponent + decs));
        Bytes dst = randomBytes(packedWanted.size());
        toPacked(dst.data(), prec, decs, parse(text.c_str()));
        ASSERT_EQ(hex(dst), hex(packedWanted)) << text << " in " << prec << ", " << decs;
        Bytes zonedDst = randomBytes(zonedWanted.size());
        toZoned(zonedDst.data(), prec, decs, parse(text.c_str()));
        ASSERT_EQ(hex(zonedDst), hex(zonedWanted)) << text << " in " << prec << ", " << decs;
        // Half up, where the sum with the half unit fits the format.
        int shift = exponent + decs + 1; // in tenths of the last place
        std::string tenths = wholeOf(digits, shift);
        if (shift >= 0 && static_cast<int>(tenths.size()) < formatDigits) {
            std::string sum = reference::add(tenths, "5");
            packedRounded(dst.data(), prec, decs, parse(text.c_str()));
            ASSERT_EQ(hex(dst), hex(itemOf(reference::stripped(sum.substr(0, sum.size() - 1))).first))
                << text << " rounded";
        }
    }
}

TEST(FloatToDecimal, DecimalFormatsGiveAllTheirDigits)
{
    checkDecimals<ZvkDecimal32>(_zvkcBCD_CONV_DFlt32_To_Pckd, _zvkcBCD_CONV_DFlt32_To_PckdRnd,
                                _zvkcBCD_CONV_DFlt32_To_Znd, 7,
                                [](const char *text) { return strtod32(text, nullptr); });
    checkDecimals<ZvkDecimal64>(_zvkcBCD_CONV_DFlt64_To_Pckd, _zvkcBCD_CONV_DFlt64_To_PckdRnd,
                                _zvkcBCD_CONV_DFlt64_To_Znd, 16,
                                [](const char *text) { return strtod64(text, nullptr); });
    checkDecimals<ZvkDecimal128>(_zvkcBCD_CONV_DFlt_To_Pckd, _zvkcBCD_CONV_DFlt_To_PckdRnd,
                                 _zvkcBCD_CONV_DFlt128_To_Znd, 34,
                                 [](const char *text) { return strtod128(text, nullptr); });
}

std::string packedOf(double value, int prec, int decs)
{
    Bytes dst(static_cast<size_t>(prec / 2 + 1));
    _zvkcBCD_CONV_LFlt_To_Pckd(dst.data(), prec, decs, value);
    return hex(dst);
}

TEST(FloatToDecimal, LimitsSignsAndCaps)
{
    EXPECT_EQ(packedOf(1.5, 2, 0), "001c");
    EXPECT_EQ(packedOf(-0.0, 3, 1), "000c");
    EXPECT_EQ(packedOf(0.7, 1, 1), "7c"); // although it lies below seven tenths
    EXPECT_EQ(packedOf(1e20, 31, 0), "0000000000100000000000000000000c");
    EXPECT_EQ(packedOf(123456789012345678e3, 31, 0), "0000000000123456789012345680000c"); // 17 digits
    EXPECT_EQ(packedOf(-100, 2, 0), "000c"); // digits lost on the left take the sign with them
    EXPECT_EQ(packedOf(1e19, 2, 0), "000c"); // up to 10^19 low-order digits are given
    EXPECT_EQ(packedOf(1.2345678901234512e19, 2, 0), "000c");
    Bytes dst(2);
    {
        ModeGuard mode(ZVK_BCD_KEEP_NEG_ZERO);
        _zvkcBCD_CONV_LFlt_To_Pckd(dst.data(), 2, 0, -100);
        EXPECT_EQ(hex(dst), "000d");
        _zvkcBCD_CONV_LFlt_To_Pckd(dst.data(), 2, 0, -1000); // nothing left up to the digit before the item
        EXPECT_EQ(hex(dst), "000c");
    }
    Bytes wide(6);
    _zvkcBCD_CONV_SFlt_To_Pckd(wide.data(), 11, 0, 1e9F);
    EXPECT_EQ(hex(wide), "01000000000c");
    _zvkcBCD_CONV_SFlt_To_Pckd(wide.data(), 11, 0, 1.5e9F); // the limit of binary 32 does not ask for the item
    EXPECT_EQ(hex(wide), "00000000000c");
    for (double bad : {HUGE_VAL, -HUGE_VAL, std::nan("")}) EXPECT_EQ(packedOf(bad, 3, 0), "000c");
}

TEST(FloatToDecimal, LongItemsAndHugeNumbers)
{
    // 2^200 in 61 digits; a hundred digits; more than any item.
    Bytes dst(51);
    _zvkcBCD_CONV_EFlt_To_Pckd(dst.data(), 101, 0, ldexpq(1, 113));
    EXPECT_EQ(hex(dst), std::string(66, '0') + "10384593717069655257060992658440192" + "c");
    Bytes short31(16);
    _zvkcBCD_CONV_EFlt_To_Pckd(short31.data(), 31, 0, ldexpq(1, 200)); // 61 digits, the last 31 of them
    EXPECT_EQ(hex(short31), reference::cut((BigInteger(1) << 200).decimal(), 31) + "c") << "2^200 from its end";
    _zvkcBCD_CONV_EFlt_To_Pckd(short31.data(), 31, 0, 1e4000Q);
    EXPECT_EQ(hex(short31), std::string(31, '0') + "c");
    std::vector<uint8_t> zoned(5000);
    _zvkcBCD_CONV_BFlt128_To_Znd(zoned.data(), 5000, 0, ldexpq(1, 16383));
    std::string digits(zoned.begin(), zoned.end());
    EXPECT_EQ(digits.substr(0, 5000 - 4932), std::string(5000 - 4932, '0'));
    EXPECT_EQ(digits.substr(5000 - 4932, 40), (BigInteger(1) << 16383).decimal().substr(0, 36) + "0000");
}

TEST(Floats, ConvertAmongThemselves)
{
    ZvkDecimal128 tenth = strtod128("0.1", nullptr);
    EXPECT_EQ(_zvkcBCD_CONV_DFlt_To_LFlt(tenth), 0.1);
    EXPECT_EQ(_zvkcBCD_CONV_DFlt_To_SFlt(tenth), 0.1F);
    EXPECT_TRUE(_zvkcBCD_CONV_DFlt_To_EFlt(tenth) == 0.1Q);
    EXPECT_TRUE(_zvkcBCD_CONV_LFlt_To_DFlt(0.5) == strtod128("0.5", nullptr));
    EXPECT_TRUE(_zvkcBCD_CONV_SFlt_To_DFlt(-0.25F) == strtod128("-0.25", nullptr));
    EXPECT_TRUE(_zvkcBCD_CONV_EFlt_To_DFlt(0.125Q) == strtod128("0.125", nullptr));
    EXPECT_EQ(_zvkcBCD_CONV_DFlt_To_Int8(strtod128("-12.9", nullptr)), -12);
    EXPECT_EQ(_zvkcBCD_CONV_DFlt_To_UInt8(strtod128("18446744073709551615.9", nullptr)), UINT64_MAX);
    EXPECT_EQ(_zvkcBCD_CONV_EFlt_To_Int8(-9223372036854775807.5Q), -9223372036854775807);
    EXPECT_TRUE(_zvkc_SUB_BFlt128(_zvkc_CONV_Int8_To_BFlt128(INT64_MAX), _zvkc_CONV_Int4_To_BFlt128(-1)) ==
                9223372036854775808.0Q);
    EXPECT_TRUE(_zvkc_ADD_BFlt128(_zvkc_CONV_Uns8_To_BFlt128(UINT64_MAX), _zvkc_CONV_Uns4_To_BFlt128(1)) ==
                18446744073709551616.0Q);
    EXPECT_TRUE(_zvkc_DIV_BFlt128(_zvkc_CONV_SFlt_To_BFlt128(1), _zvkc_CONV_LFlt_To_BFlt128(3)) == 1 / 3.0Q);
    EXPECT_TRUE(_zvkc_ABS_BFlt128(_zvkc_MPY_BFlt128(-2, 3)) == 6);
    EXPECT_EQ(_zvkc_CONV_BFlt128_To_Int4(-1.9Q), -1);
    EXPECT_EQ(_zvkc_CONV_BFlt128_To_Uns4(4294967295.5Q), 4294967295u);
    EXPECT_EQ(_zvkc_CONV_BFlt128_To_Int8(-1.9Q), -1);
    EXPECT_EQ(_zvkc_CONV_BFlt128_To_Uns8(18446744073709551615.0Q), UINT64_MAX);
    EXPECT_EQ(_zvkc_CONV_BFlt128_To_SFlt(0.1Q), 0.1F);
    EXPECT_EQ(_zvkc_CONV_BFlt128_To_LFlt(0.1Q), 0.1);
    auto relations = [](ZvkFloat128 a, ZvkFloat128 b) {
        return _zvkc_EQU_BFlt128(a, b) << 5 | _zvkc_NEQ_BFlt128(a, b) << 4 | _zvkc_GEQ_BFlt128(a, b) << 3 |
               _zvkc_LEQ_BFlt128(a, b) << 2 | _zvkc_GRT_BFlt128(a, b) << 1 | _zvkc_LES_BFlt128(a, b);
    };
    EXPECT_EQ(relations(1, 1), 0b101100);
    EXPECT_EQ(relations(2, 1), 0b011010);
    EXPECT_EQ(relations(1, 2), 0b010101);
    EXPECT_EQ(relations(nanq(""), 1), 0b010000);
}

TEST(Floats, AnyBytesNeverTrapNorLeaveTheItem)
{
    ChildRun run = runChild([] {
        ModeGuard mode(ZVK_BCD_NO_VALIDATION);
        feenableexcept(FE_DIVBYZERO | FE_INVALID | FE_OVERFLOW | FE_UNDERFLOW);
        Place place;
        std::vector<Bytes> specials; // infinities, NaNs, signalling ones, denormals, largest, zero
        for (const char *pattern : {"000000000000f07f", "000000000000f0ff", "000000000000f87f", "010000000000f07f",
                                    "0100000000000000", "ffffffffffffef7f", "0000000000000080", "ffffffffffffffff"})
            specials.push_back(fromHex(pattern));
        for (int i = 0; i < 60000; i++) {
            int prec = static_cast<int>(randomBelow(45)), decs = static_cast<int>(randomBelow(80)) - 20;
            if (i % 50 == 0) decs = static_cast<int>(randomness()());
            Bytes bits = randomBytes(16);
            if (i % 4 == 0) {
                const Bytes &special = specials[randomBelow(8)];
                Bytes narrow(special.begin() + 4, special.end()); // for the 4-byte formats, nearly the same
                std::copy(special.begin(), special.end(), bits.begin() + 8);
                std::copy(special.begin(), special.end(), bits.begin());
                if (i % 8 == 0) std::copy(narrow.begin(), narrow.end(), bits.begin());
            }
            float f;
            double d;
            ZvkFloat128 q;
            ZvkDecimal32 d32;
            ZvkDecimal64 d64;
            ZvkDecimal128 d128;
            memcpy(&f, bits.data(), 4);
            memcpy(&d, bits.data(), 8);
            memcpy(&q, bits.data(), 16);
            memcpy(&d32, bits.data(), 4);
            memcpy(&d64, bits.data(), 8);
            memcpy(&d128, bits.data(), 16);
            if (i % 3 == 0) { // often within reach of an item
                bits[15] = static_cast<uint8_t>((bits[15] & 0x80) | 0x3F);
                bits[14] |= 0xF0;
                memcpy(&q, bits.data(), 16);
            }
            auto side = i % 2 ? GuardedItem::AtStart : GuardedItem::AtEnd;
            auto into = [&](auto toPacked, auto toZoned, auto value) {
                Bytes old = randomBytes(static_cast<size_t>(prec / 2 + 1));
                uint8_t *dst = place.put(old, side);
                toPacked(dst, prec, decs, value);
                for (size_t n = 0; n < old.size(); n++) { // digits, and a sign that is written
                    bool last = n + 1 == old.size();
                    if ((dst[n] >> 4) > 9 || (last ? (dst[n] & 15) != 0xC && (dst[n] & 15) != 0xD : (dst[n] & 15) > 9))
                        abort();
                }
                dst = place.put(randomBytes(static_cast<size_t>(prec)), side);
                toZoned(dst, prec, decs, value);
            };
            into(_zvkcBCD_CONV_SFlt_To_Pckd, _zvkcBCD_CONV_BFlt32_To_ZndRnd, f);
            into(_zvkcBCD_CONV_LFlt_To_PckdRnd, _zvkcBCD_CONV_BFlt64_To_Znd, d);
            into(_zvkcBCD_CONV_LFlt_To_Pckd, _zvkcBCD_CONV_BFlt64_To_ZndRnd, d);
            into(_zvkcBCD_CONV_EFlt_To_PckdRnd, _zvkcBCD_CONV_BFlt128_To_Znd, q);
            into(_zvkcBCD_CONV_DFlt32_To_PckdRnd, _zvkcBCD_CONV_DFlt32_To_Znd, d32);
            into(_zvkcBCD_CONV_DFlt64_To_Pckd, _zvkcBCD_CONV_DFlt64_To_ZndRnd, d64);
            into(_zvkcBCD_CONV_DFlt_To_PckdRnd, _zvkcBCD_CONV_DFlt128_To_Znd, d128);

            uint8_t *item = place.put(randomBytes(static_cast<size_t>(prec / 2 + 1)), side);
            _zvkcBCD_CONV_Pckd_To_SFlt(item, prec, decs);
            _zvkcBCD_CONV_Pckd_To_LFlt(item, prec, decs);
            _zvkcBCD_CONV_Pckd_To_EFlt(item, prec, decs);
            _zvkcBCD_CONV_Pckd_To_DFlt(item, prec, decs);
            _zvkcBCD_CONV_Pckd_To_DFlt64(item, prec, decs);
            item = place.put(randomBytes(static_cast<size_t>(prec)), side);
            _zvkcBCD_CONV_Znd_To_BFlt32(item, prec, decs);
            _zvkcBCD_CONV_Znd_To_BFlt128(item, prec, decs);
            _zvkcBCD_CONV_Znd_To_DFlt32(item, prec, decs);

            _zvkcBCD_CONV_DFlt_To_EFlt(d128), _zvkcBCD_CONV_DFlt_To_LFlt(d128), _zvkcBCD_CONV_DFlt_To_SFlt(d128);
            _zvkcBCD_CONV_DFlt_To_Int8(d128), _zvkcBCD_CONV_DFlt_To_UInt8(d128), _zvkcBCD_CONV_EFlt_To_Int8(q);
            _zvkcBCD_CONV_EFlt_To_DFlt(q), _zvkcBCD_CONV_LFlt_To_DFlt(d), _zvkcBCD_CONV_SFlt_To_DFlt(f);
            _zvkc_DIV_BFlt128(q, 0), _zvkc_MPY_BFlt128(q, q), _zvkc_ADD_BFlt128(q, -q), _zvkc_LES_BFlt128(q, q);
            _zvkc_CONV_BFlt128_To_SFlt(q), _zvkc_CONV_BFlt128_To_LFlt(q), _zvkc_CONV_BFlt128_To_Uns4(q);
            _zvkc_CONV_LFlt_To_BFlt128(d), _zvkc_CONV_SFlt_To_BFlt128(f);
        }
        if (fegetexcept() != (FE_DIVBYZERO | FE_INVALID | FE_OVERFLOW | FE_UNDERFLOW)) abort();
    });
    EXPECT_EQ(run.status, 0) << run.signal << run.err;
}

std::string dumpOf(const std::function<void()> &call)
{
    return runChild([&] {
               zvkBcdMode = ZVK_BCD_DEBUG;
               call();
           })
        .err;
}

TEST(FloatDump, HasTitlesItemAndNumber)
{
    static const uint8_t item[] = {0x12, 0x3C}, digits[] = {'1', '2', '3'};
    static uint8_t dst[4];
    const std::string value = " 1.2300000000000000000000000000000000000E+01\n";
    EXPECT_EQ(dumpOf([] { _zvkcBCD_CONV_Pckd_To_EFlt(item, 3, 1); }).substr(0, 56),
              "packed to quad... prec 3 decs 1\nsrc: 3: 123c\ndst  1.2300");
    EXPECT_EQ(dumpOf([] { _zvkcBCD_CONV_Pckd_To_LFlt(item, 3, 1); }),
              "packed to double... prec 3 decs 1\nsrc: 3: 123c\ndst  1.2300000000000000710542735760100185871E+01\n");
    EXPECT_EQ(dumpOf([] { _zvkcBCD_CONV_Znd_To_BFlt32(digits, 3, 0); }),
              "zoned to float ... prec 3 decs 0\nsrc: 3: 313233\ndst  1.2300000000000000000000000000000000000E+02\n");
    std::string decimal = dumpOf([] { _zvkcBCD_CONV_Pckd_To_DFlt64(item, 3, 1); });
    EXPECT_EQ(decimal, "packed to Decimal164... prec 3  decs 1\nsrc: 3: 123c\ndst:  % .34L\n");
    EXPECT_EQ(dumpOf([] { _zvkcBCD_CONV_LFlt_To_PckdRnd(dst, 3, 1, 12.25); }),
              "double to packed rounded... prec 3  decs 1\nin:    1.22500000000000000E+01\ndst: 3: 123c\n");
    EXPECT_EQ(dumpOf([] { _zvkcBCD_CONV_BFlt128_To_Znd(dst, 3, 1, -12.25Q); }),
              "quad to zoned... prec 3  decs 1\nin:   -1.2250000000000000000000000000000000000E+01\ndst: 3: 313272\n");
    EXPECT_EQ(
        dumpOf([] { _zvkcBCD_CONV_DFlt_To_Pckd(dst, 3, 1, strtod128("12.3", nullptr)); }),
        "Decimal128 to packed... prec 3  decs 1\nin:    1.2300000000000000000000000000000000E+01\ndst: 3: 123c\n");
}

TEST(DecimalToFloat, ReportsBadItems)
{
    static const uint8_t bad[] = {0x1A, 0x3C};
    auto reports = [](uint32_t mode) {
        return runChild([=] {
                   zvkBcdMode = mode;
                   _zvkcBCD_CONV_Pckd_To_LFlt(bad, 3, 0);
               }).err.find("ZVK903") != std::string::npos;
    };
    EXPECT_TRUE(reports(0));
    EXPECT_FALSE(reports(ZVK_BCD_NO_VALIDATION));
}

} // namespace
