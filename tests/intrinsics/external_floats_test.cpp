// Faults that these tests are there to catch: a picture's point or exponent in the wrong place,
// either way; text that is no part of a number taken for one; a value out of range that is not
// reported; bits of hexadecimal numbers; access beyond an item; a trap.
#include <cfenv>
#include <cmath>
#include <cstring>
#include <quadmath.h>
#include <random>

#include "intrinsics/dfp.h"
#include "intrinsics/hex_floats.h"
#include "kvr2/external_floats.h"
#include "support/guarded.h"
#include "terse_messages.h"

namespace {

// Integer and fraction digits, and "V" for an assumed point.
ZvkExternalFloatSource source(const std::string &text, int integer, int fraction, int width, bool assumed = false)
{
    auto length = static_cast<int16_t>(text.size());
    return {static_cast<int16_t>(assumed ? -length : length), static_cast<int16_t>(fraction),
            static_cast<int16_t>(integer), static_cast<int16_t>(width)};
}

double read(const std::string &text, int integer = 2, int fraction = 3, bool assumed = false)
{
    ZvkExternalFloatSource picture = source(text, integer, fraction, 8, assumed);
    GuardedItem item(text.size());
    memcpy(item.data(), text.data(), text.size());
    double value = -1, decimal = 0;
    EXPECT_EQ(_zvkcConvExtFltToIntFlt(&picture, item.data(), &value, 0), 0);
    ZvkDecimal64 narrow;
    EXPECT_EQ(_zvkcConvExtFltToDFlt(&picture, item.data(), &narrow, 0), 0);
    decimal = static_cast<double>(narrow);
    EXPECT_LE(std::fabs(decimal - value), std::fabs(value) * 1e-15); // 16 digits
    return value;
}

TEST(ExternalFloat, IsRead)
{
    EXPECT_EQ(read("+12.345E+02"), 1234.5);
    EXPECT_EQ(read("-12,345e-02"), -0.12345);
    EXPECT_EQ(read(" 12.345E 02"), 1234.5);
    EXPECT_EQ(read("+12345E+02", 2, 3, true), 1234.5);
    EXPECT_EQ(read("+12345E+02", 5, 0), 1234500);
    EXPECT_EQ(read(" 1 2 . 5 E1"), 125); // what does not belong to it is passed over
    EXPECT_EQ(read("x+y1z2.E-1q5"), 12e-15);
    EXPECT_EQ(read("12E+1-3"), 12e13);
    EXPECT_EQ(read("E5"), 0); // no digit
    EXPECT_EQ(read("+.E+05"), 0);
    EXPECT_EQ(read(""), 0);
    // The letter R reads the table one row further down.
    EXPECT_EQ(read("R12"), 12);
    EXPECT_EQ(read("1R2.5E1"), 1250); // as if after a point, so that no other is taken
}

TEST(ExternalFloat, HasItsWidths)
{
    const std::string text = "+1.1E+00";
    auto item = reinterpret_cast<const uint8_t *>(text.data());
    ZvkExternalFloatSource picture = source(text, 1, 1, 4);
    uint8_t result[17];
    auto as = [&](auto zero, int width, auto entry) {
        picture.width = static_cast<int16_t>(width);
        memset(result, 0xEE, sizeof result);
        EXPECT_EQ(entry(&picture, item, result + 1, 1), 0);
        EXPECT_TRUE(sizeof zero == 16 || result[1 + sizeof zero] == 0xEE);
        memcpy(&zero, result + 1, sizeof zero);
        return zero;
    };
    EXPECT_EQ(as(0.0F, 4, _zvkcConvExtFltToIntFlt), 1.1F);
    EXPECT_EQ(as(0.0, 8, _zvkcConvExtFltToIntFlt), 1.1);
    EXPECT_TRUE(as(0.0Q, 16, _zvkcConvExtFltToIntFlt) == 1.1Q && as(0.0Q, 7, _zvkcConvExtFltToIntFlt) == 1.1Q);
    EXPECT_EQ(as(0.0, 8, _Dmr_convertExtToIntFloat), 1.1);
    EXPECT_TRUE(as(ZvkDecimal128{}, 16, _zvkcConvExtFltToDFlt) == strtod128("1.1", nullptr));
    EXPECT_TRUE(as(ZvkDecimal64{}, 8, _zvkcConvExtFltToDFlt) == static_cast<ZvkDecimal64>(strtod128("1.1", nullptr)));
    EXPECT_TRUE(as(ZvkDecimal32{}, 4, _zvkcConvExtFltToDFlt) == static_cast<ZvkDecimal32>(strtod128("1.1", nullptr)));
    picture.width = 7;
    EXPECT_EQ(runChild([&] { _exit(_Dmr_convertExtToIntFloat(&picture, item, result, 0) != 0); }).err,
              "_Dmr_convertExtToIntFloat not implemented 9(1).9(1)E99\n");
}

TEST(ExternalFloat, OutOfRangeIsTheLargest)
{
    const std::string text = "-9.9E+99";
    auto item = reinterpret_cast<const uint8_t *>(text.data());
    ZvkExternalFloatSource picture = source(text, 1, 1, 4);
    float value = 0;
    EXPECT_NE(_zvkcConvExtFltToIntFlt(&picture, item, &value, 0), 0);
    EXPECT_EQ(value, -__FLT_MAX__);
    EXPECT_EQ(messagesOf([&] {
                  if (_zvkcConvExtFltToIntFlt(&picture, item, &value, 1) != 0) abort();
              }),
              Messages{"53"});
    ZvkDecimal32 decimal;
    EXPECT_NE(_zvkcConvExtFltToDFlt(&picture, item, &decimal, 0), 0);
    EXPECT_TRUE(static_cast<ZvkDecimal128>(decimal) == strtod128("-9.999999E96", nullptr));
    const std::string huge = "+1E+99999";
    picture = source(huge, 1, 0, 16);
    ZvkFloat128 quad = 0;
    EXPECT_NE(_zvkcConvExtFltToIntFlt(&picture, reinterpret_cast<const uint8_t *>(huge.data()), &quad, 0), 0);
    EXPECT_TRUE(quad == FLT128_MAX);
    ZvkDecimal128 wide;
    EXPECT_NE(_zvkcConvExtFltToDFlt(&picture, reinterpret_cast<const uint8_t *>(huge.data()), &wide, 0), 0);
    EXPECT_TRUE(wide == strtod128("9.999999999999999999999999999999999E6144", nullptr));
}

// `picture` as COBOL writes it, "+99.999E+99": signs "+" or "-", "V" an assumed point.
std::string write(double value, const std::string &picture)
{
    ZvkExternalFloatTarget target = {};
    size_t e = picture.find('E'), point = picture.find_first_of(".,V");
    bool assumed = point != std::string::npos && picture[point] == 'V';
    auto length = static_cast<int16_t>(picture.size() - (assumed ? 1 : 0));
    target.length = static_cast<int16_t>(assumed ? -length : length);
    target.integerDigits = static_cast<int16_t>((point == std::string::npos ? e : point) - 1);
    target.fractionDigits = static_cast<int16_t>(point == std::string::npos ? 0 : e - point - 1);
    target.mantissaSign = static_cast<uint8_t>(picture[0]);
    target.exponentSign = static_cast<uint8_t>(picture[e + 1]);
    target.decimalPoint = static_cast<uint8_t>(point == std::string::npos ? '.' : picture[point]);
    GuardedItem item(static_cast<size_t>(length));
    auto text = [&] { return std::string(item.data(), item.data() + length); };
    _zvkcConvIntFltToExtFlt(&target, &value, item.data());
    std::string written = text();
    ZvkFloat128 quad = value;
    for (auto entry : {_zvkcConvIntEFltToExtFlt, _Dmr_convertIntToExtFloat}) {
        entry(&target, &quad, item.data());
        EXPECT_EQ(text(), written);
    }
    return written;
}

TEST(ExternalFloat, IsWritten)
{
    EXPECT_EQ(write(1234.5, "+99.999E+99"), "+12.345E+02");
    EXPECT_EQ(write(-1234.5, "-99,999E-99"), "-12,345E 02");
    EXPECT_EQ(write(1234.5, "-9.9999E+99"), " 1.2345E+03");
    EXPECT_EQ(write(0.00012345, "+99.999E-99"), "+12.345E-05");
    EXPECT_EQ(write(1234.5, "+99V999E+99"), "+12345E+02");
    // Without integer digits the exponent stays that of one; a tie goes to the even digit.
    EXPECT_EQ(write(1234.5, "+.9999E+99"), "+.1234E+03");
    EXPECT_EQ(write(0, "+99.99E+99"), "+00.00E+00");
    EXPECT_EQ(write(5, "+9.E+99"), "+5.E+00");
    EXPECT_EQ(write(7, "+9E+99"), "+7E+00");
    EXPECT_EQ(write(9.9996, "+9.999E+99"), "+1.000E+01");
    EXPECT_EQ(write(HUGE_VAL, "+9.9999999E+99"), "+INFINITY     ");
    EXPECT_EQ(write(-HUGE_VAL, "+9.9E+99"), "-INFINIT");
    EXPECT_EQ(write(std::nan(""), "+9.9E+99"), "+NAN    ");
    EXPECT_EQ(write(1e105, "+9.9E+99"), "+1.0E+10"); // an exponent of three digits loses the last one

    std::mt19937 random(12);
    for (int i = 0; i < 2000; i++) { // there and back
        double value = std::ldexp(static_cast<double>(random()), static_cast<int>(random() % 400) - 200);
        std::string text = write(random() % 2 ? value : -value, "-999.999999999999999E-99");
        EXPECT_NEAR(read(text, 3, 15) / value, text[0] == '-' ? -1 : 1, 1e-15) << text;
    }
    ZvkExternalFloatTarget none = {};
    ZvkFloat128 one = 1;
    EXPECT_EQ(runChild([&] { _Dmr_convertIntToExtFloat(&none, &one, nullptr); }).err,
              "_Dmr_convertIntToExtFloat not implemented. 9(0).9(0)E99\n");
}

TEST(ExternalFloat, TakesAnyPictureItemAndNumber)
{
    TerseRun run = terse([] {
        feenableexcept(FE_DIVBYZERO | FE_INVALID | FE_OVERFLOW | FE_UNDERFLOW);
        std::mt19937_64 random(13);
        GuardedItem item(300), out(16);
        const char letters[] = "0123456789+-.,Ee R";
        for (int i = 0; i < 20000; i++) {
            auto length = static_cast<int16_t>(random() % 300);
            auto digits = [&] { return static_cast<int16_t>(random() % 4 ? random() % 40 : random()); };
            ZvkExternalFloatSource from = {length, digits(), digits(), digits()};
            ZvkExternalFloatTarget to = {
                length, digits(), digits(), static_cast<uint8_t>(random()), static_cast<uint8_t>(random()), '.'};
            if (random() % 2) from.length = to.length = static_cast<int16_t>(-length);
            auto side = random() % 2 ? GuardedItem::AtStart : GuardedItem::AtEnd;
            uint8_t *at = item.place(static_cast<size_t>(length), side);
            for (int n = 0; n < length; n++)
                at[n] = static_cast<uint8_t>(random() % 3 ? letters[random() % 18] : random());
            uint8_t *result = out.place(from.width == 4 ? 4 : from.width == 8 ? 8 : 16, side);
            _zvkcConvExtFltToIntFlt(&from, at, result, 0), _zvkcConvExtFltToDFlt(&from, at, result, 0);
            uint64_t bits[2] = {random(), random() % 3 ? random() : 0x7FFF800000000000 | random() << 63};
            ZvkFloat128 quad;
            double value;
            memcpy(&quad, bits, 16), memcpy(&value, bits + random() % 2, 8);
            _zvkcConvIntFltToExtFlt(&to, &value, at), _zvkcConvIntEFltToExtFlt(&to, &quad, at);
        }
    });
    EXPECT_EQ(run.messages, Messages{});
    EXPECT_EQ(run.status, 0);
}

// Of the bits of hexadecimal numbers, by their definition.
double hexValue(uint32_t hex)
{
    double value = std::ldexp(static_cast<double>(hex & 0xFFFFFF), 4 * (static_cast<int>(hex >> 24 & 0x7F) - 64) - 24);
    return hex >> 31 ? -value : value;
}

uint32_t bitsOf(float value)
{
    uint32_t bits;
    memcpy(&bits, &value, 4);
    return bits;
}

TEST(HexFloat, ConvertsBothWays)
{
    EXPECT_EQ(_zvkcConvHex4toIEEE(0x41100000, 7), bitsOf(1));
    EXPECT_EQ(_zvkcConvHex4toIEEE(0xC1100000, 7), bitsOf(-1));
    EXPECT_EQ(_zvkcConvIEEE4toHex(bitsOf(1), 7), 0x41100000u);
    EXPECT_EQ(_zvkcConvHex4toIEEE(0xC1000000, 7), 0u); // no fraction: +0, whatever the sign
    EXPECT_EQ(_zvkcConvIEEE4toHex(bitsOf(-0.0F), 7), 0u);
    EXPECT_EQ(_zvkcConvHex8toIEEE(0x4110000000000000, 1), 0u);
    EXPECT_EQ(_zvkcConvIEEE8toHex(0x3FF0000000000000, 1), 0u);
    std::mt19937 random(14);
    for (int i = 0; i < 200000; i++) {
        auto hex = static_cast<uint32_t>(random());
        if (i % 2) hex = (hex & 0x8FFFFFFF) | 0x30000000 | (hex & 0x10000000) << 2; // mostly in range
        double value = hexValue(hex);
        uint32_t ieee = 7, back = 7, fault = zvkHexToIeee(hex, &ieee);
        if (std::fabs(value) >= 0x1p128) {
            ASSERT_EQ(fault, 53u) << std::hex << hex;
        } else {
            ASSERT_EQ(fault, 0u);
            float wanted = static_cast<float>(value); // 24 bits: exact, but for denormals, which become zero
            if (std::fabs(value) < 0x1p-126) wanted = value < 0 ? -0.0F : 0;
            ASSERT_EQ(ieee, bitsOf(wanted)) << std::hex << hex;
        }
        // From binary, cut to the bits that hexadecimal leaves: at least 21.
        auto bits = static_cast<uint32_t>(random());
        if (i % 10 == 0) bits &= 0x807FFFFF; // denormal
        float number;
        memcpy(&number, &bits, 4);
        if (!std::isfinite(number) || number == 0) continue;
        ASSERT_EQ(zvkIeeeToHex(bits, &back), 0u);
        ASSERT_LE(std::fabs(hexValue(back)), std::fabs(static_cast<double>(number)));
        ASSERT_NEAR(hexValue(back) / static_cast<double>(number), 1, 0x1p-20) << std::hex << bits;
        ASSERT_TRUE((back & 0x00F00000) != 0); // normal form
    }
}

TEST(HexFloat, ReportsWhatDoesNotFit)
{
    EXPECT_EQ(messagesOf([] {
                  if (_zvkcConvHex4toIEEE(0x7FFFFFFF, 77) != 77) abort();
                  if (_zvkcConvIEEE4toHex(bitsOf(-HUGE_VALF), 78) != 78) abort();
                  if (_zvkcConvIEEE4toHex(0x7FC00000, 79) != 79) abort();
              }),
              (Messages{"53", "53", "54"}));
    uint32_t kept = 5;
    EXPECT_EQ(zvkHexToIeee(0x7FFFFFFF, &kept), 53u);
    EXPECT_EQ(zvkIeeeToHex(0x7F800001, &kept), 54u);
    EXPECT_EQ(kept, 5u);
}

} // namespace
