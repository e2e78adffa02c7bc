// Faults that these tests are there to catch: a name bound to another function or format; a missing
// or wrong message; a remainder with the wrong sign, or that never ends; a sequence of random
// numbers that is not the given one, is shared by run units, is torn by threads or depends on the
// format of its seed; a factorial's digits or bytes; a trap.
#include <algorithm>
#include <atomic>
#include <cfenv>
#include <cmath>
#include <cstring>
#include <quadmath.h>
#include <random>
#include <thread>
#include <vector>

#include "decimal/reference.h"
#include "intrinsics/dfp.h"
#include "kvr2/mathematics.h"
#include "kvr2/run_unit.h"
#include "support/compiled_program.h"
#include "terse_messages.h"

namespace {

struct Family {
    const char *name;
    double (*first)(double), (*second)(double);
    ZvkFloat128 (*firstQuad)(ZvkFloat128), (*secondQuad)(ZvkFloat128);
    ZvkDecimal128 (*decimal)(ZvkDecimal128);
    double (*library)(double);
    ZvkFloat128 (*quadLibrary)(ZvkFloat128);
    double argument;
    int belowMinusOne, zero, aboveOne; // messages for -1.5, 0 and 1.5
};

#define FAMILY(Name, name, TEXT, argument, below, zero, above)                                                         \
    {                                                                                                                  \
        TEXT, _zvk##Name##Float8, _Dmr_##name, _zvk##Name##Float16, _Dmr_##name##_float16, _Dmr_##name##_decfloat16,   \
            ::name, name##q, argument, below, zero, above                                                              \
    }

const Family kFamilies[] = {
    FAMILY(Acos, acos, "ACOS", 0.3, 179, 0, 176), FAMILY(Asin, asin, "ASIN", 0.3, 179, 0, 176),
    FAMILY(Atan, atan, "ATAN", 0.7, 0, 0, 0),     FAMILY(Cos, cos, "COS", 0.7, 0, 0, 0),
    FAMILY(Sin, sin, "SIN", 0.7, 0, 0, 0),        FAMILY(Tan, tan, "TAN", 0.7, 0, 0, 0),
    FAMILY(Log, log, "LOG", 1.7, 178, 178, 0),    FAMILY(Log10, log10, "LOG10", 1.7, 178, 178, 0),
    FAMILY(Sqrt, sqrt, "SQRT", 1.7, 179, 0, 0),
};

TEST(Functions, AreThoseOfTheLibraryInEachFormat)
{
    for (const Family &family : kFamilies) {
        double x = family.argument, wanted = family.library(x);
        EXPECT_EQ(family.first(x), wanted) << family.name;
        EXPECT_EQ(family.second(x), wanted) << family.name;
        ZvkFloat128 quad = family.quadLibrary(x);
        EXPECT_TRUE(fabsq(quad / wanted - 1) < 1e-15Q) << family.name; // the right library routine, too
        EXPECT_TRUE(family.firstQuad(x) == quad && family.secondQuad(x) == quad) << family.name;
        // Decimal numbers beside binary 128, of a little less precision than they have.
        auto decimal = static_cast<ZvkFloat128>(family.decimal(static_cast<ZvkDecimal128>(x)));
        ZvkFloat128 near = family.quadLibrary(static_cast<ZvkFloat128>(static_cast<ZvkDecimal128>(x)));
        EXPECT_TRUE(fabsq(decimal / near - 1) < 1e-29Q) << family.name;
    }
}

TEST(Functions, ReportWrongArgumentsAndGoOn)
{
    for (const Family &family : kFamilies) {
        const struct {
            double x;
            int message;
        } rows[] = {{-1.5, family.belowMinusOne}, {0, family.zero}, {1.5, family.aboveOne}, {NAN, 0}};
        for (auto &row : rows) {
            Messages wanted(row.message ? 5 : 0, std::to_string(row.message) + " " + family.name);
            EXPECT_EQ(messagesOf([&] {
                          feenableexcept(FE_DIVBYZERO | FE_INVALID);
                          family.first(row.x), family.second(row.x);
                          family.firstQuad(row.x), family.secondQuad(row.x);
                          ZvkDecimal128 decimal = row.x == 0 ? 0 : static_cast<ZvkDecimal128>(row.x);
                          family.decimal(decimal);
                      }),
                      wanted)
                << family.name << row.x;
        }
    }
    EXPECT_EQ(terse([] { printf("%g", _Dmr_log(0)); }).out, "-inf");
}

TEST(Integer, GoesDownAndIntegerPartToZero)
{
    EXPECT_EQ(_zvkInteger(-1.5), -2);
    EXPECT_EQ(_zvkInteger(1.5), 1);
    EXPECT_EQ(_zvkIntegerPart(-1.5), -1);
    EXPECT_TRUE(_zvkInteger16(-1.5Q) == -2 && _zvkIntegerPart16(-1.5Q) == -1);
    EXPECT_TRUE(_zvkInteger16(10000000000000000000000000.5Q) == 10000000000000000000000000.0Q);
}

TEST(Rem, HasTheSignOfTheDividendAndEnds)
{
    const double rows[][3] = {{7, -2, 1}, {-7, 2, -1}, {7, 2, 1},   {6, 3, 0},     {5.5, 2, 1.5},
                              {1, 3, 1},  {1, 0.1, 0}, {-1, 3, -1}, {1e17, 10, 0}, {9007199254740993e3, 1000, 976}};
    for (auto &[x, y, wanted] : rows) {
        EXPECT_EQ(_zvkRemFloat8Float8(x, y), wanted) << x << " " << y;
        EXPECT_EQ(_Dmr_rem(x, y), wanted);
    }
    EXPECT_TRUE(_zvkRemFloat16Float16(-7, 2) == -1 && _Dmr_rem_float16(1e30Q, 7) == 1);
    EXPECT_TRUE(_Dmr_rem_decfloat16(-7, 2) == -1 &&
                _Dmr_rem_decfloat16(strtod128("5.3", nullptr), 2) == strtod128("1.3", nullptr));
    EXPECT_EQ(terse([] { printf("%g", _Dmr_rem(7, 0)); }).out, "0");
    EXPECT_EQ(messagesOf([] { _Dmr_rem(7, 0), _Dmr_rem_float16(7, 0), _Dmr_rem_decfloat16(7, 0); }),
              Messages(3, "177 REM"));
    // Magnitudes: whatever comes out is below the divisor.
    std::mt19937_64 random(10);
    for (int i = 0; i < 20000; i++) {
        uint64_t bits[2] = {random(), random()};
        double x, y;
        memcpy(&x, bits, 8), memcpy(&y, bits + 1, 8);
        if (!std::isfinite(x) || !std::isfinite(y)) continue;
        double rest = _Dmr_rem(x, y);
        ASSERT_LE(std::fabs(rest), std::fabs(y)) << x << " " << y;
        ASSERT_TRUE(rest == 0 || (rest < 0) == (x < 0)) << x << " " << y;
    }
}

constexpr uint64_t kMultiplier = 950706376, kModulus = 2147483647;

TEST(Random, IsTheGivenSequence)
{
    ChildRun run = runChild([] {
        printf("%d", _zvkRandom() == 0.4427071551059872 && 950706376 / 2147483647.0 == 0.4427071551059872);
        uint64_t state = 950706376;
        for (int i = 0; i < 1000; i++) {
            state = state * kMultiplier % kModulus;
            if (_zvkRandom() != static_cast<double>(state) / 2147483647.0) printf("%d ", i);
        }
    });
    EXPECT_EQ(run.out, "1");
    EXPECT_EQ(_zvkRandomInt8(0), 0.4427071551059872);
    EXPECT_EQ(_zvkRandom(), static_cast<double>(kMultiplier * kMultiplier % kModulus) / 2147483647.0);
}

// No number of the sequence is given twice, and none is left out.
TEST(Random, ThreadsShareTheSequence)
{
    constexpr int kThreads = 8, kEach = 200000;
    _zvkRandomInt8(0);
    std::vector<double> drawn(kThreads * kEach), expected;
    std::vector<std::thread> threads;
    std::atomic<int> ready{0};
    for (int t = 0; t < kThreads; t++)
        threads.emplace_back([&drawn, &ready, t] {
            ready++;
            while (ready < kThreads) std::this_thread::yield();
            for (int i = 0; i < kEach; i++) drawn[static_cast<size_t>(t * kEach + i)] = _zvkRandom();
        });
    for (std::thread &thread : threads) thread.join();
    uint64_t state = kMultiplier;
    for (size_t i = 0; i < drawn.size(); i++) {
        state = state * kMultiplier % kModulus;
        expected.push_back(static_cast<double>(state) / 2147483647.0);
    }
    std::sort(drawn.begin(), drawn.end());
    std::sort(expected.begin(), expected.end());
    EXPECT_TRUE(drawn == expected);
}

TEST(Random, TakesSeedsInEveryFormat)
{
    auto first = [](uint64_t s) { return static_cast<double>(s * kMultiplier % kModulus) / 2147483647.0; };
    for (uint64_t seed : {0u, 1u, 2u, 12345u, 2147483644u, 2147483645u}) {
        EXPECT_EQ(_zvkRandomInt8(seed), first(seed + 1));
        EXPECT_EQ(_zvkRandomFloat8(static_cast<double>(seed)), first(seed + 1));
        double next = _zvkRandom();
        EXPECT_TRUE(fabsq(_zvkRandomFloat16(static_cast<ZvkFloat128>(seed)) - first(seed + 1)) < 1e-15Q);
        EXPECT_EQ(_zvkRandom(), next);
        auto decimal = static_cast<double>(_Dmr_random_decfloat16(static_cast<ZvkDecimal128>(seed)));
        EXPECT_NEAR(decimal, first(seed + 1), 1e-15);
        EXPECT_EQ(_zvkRandom(), next);
    }
    EXPECT_EQ(_zvkRandomInt8(2147483646), first(1)); // one modulus for integers
    EXPECT_EQ(_zvkRandomInt8(999999999999999999), first(999999999999999999 % 2147483646 + 1));
    double turns = 2147483646.0 / 2147483645.0;
    EXPECT_EQ(_zvkRandomFloat8(2147483646.0),
              first(static_cast<uint64_t>((turns - 1) * 2147483645.0 + 1))); // another for floats
}

TEST(Random, ReportsBadSeedsAndGoesOn)
{
    TerseRun run = terse([] {
        feenableexcept(FE_DIVBYZERO | FE_INVALID | FE_OVERFLOW);
        printf("%.17g ", _zvkRandomInt8(1'000'000'000'000'000'000) * 2147483647.0);
        printf("%.17g ", _zvkRandomFloat8(-5) * 2147483647.0);
        _zvkRandomFloat16(1e18Q), _Dmr_random_decfloat16(strtod128("1e18", nullptr)), _zvkRandomFloat8(0.5);
        _Dmr_random_decfloat16(strtod128("-0.5", nullptr)), _zvkRandomInt8(UINT64_MAX);
        for (double x : {std::nan(""), HUGE_VAL, -HUGE_VAL, 1e300, -1e300}) _zvkRandomFloat8(x);
    });
    uint64_t reduced = 1'000'000'000'000'000'000 % 2147483646 + 1;
    char wanted[80];
    snprintf(wanted, sizeof wanted, "%.17g %.17g ", static_cast<double>(reduced * kMultiplier % kModulus),
             static_cast<double>(4294967292u * kMultiplier % kModulus)); // -4 as 32 bits
    EXPECT_EQ(run.out, wanted);
    EXPECT_EQ(run.messages,
              (Messages{"176 RANDOM", "163 RANDOM", "176 RANDOM", "176 RANDOM", "180 RANDOM", "163 RANDOM",
                        "180 RANDOM", "176 RANDOM", "176 RANDOM", "163 RANDOM", "176 RANDOM", "163 RANDOM"}));
    EXPECT_EQ(run.status, 0);
}

TEST(Random, BelongsToTheRunUnit)
{
    CompiledProgram program("RANDOMS");
    _zvkPgmInit(&program.pcb);
    _zvkRandomInt8(77);
    EXPECT_EQ(_zvkProccom->runcom->randomSeed, 78 * kMultiplier % kModulus);
    _zvkProccom->runcom->randomSeed = 1; // as it is at the start
    EXPECT_EQ(_zvkRandom(), 0.4427071551059872);
    _zvkProccom->runcom->randomSeed = 0;
    EXPECT_EQ(_zvkRandom(), 0.4427071551059872);
    EXPECT_EQ(fegetexcept() & FE_DIVBYZERO, FE_DIVBYZERO); // a run unit traps, and still does after all calls
    _Dmr_acos(0.5);
    EXPECT_EQ(fegetexcept() & FE_DIVBYZERO, FE_DIVBYZERO);
    _zvkPgmTerm(&program.pcb);
}

TEST(Factorial, HasTheDigitsOfEveryForm)
{
    EXPECT_EQ(messagesOf([] {
                  std::string digits = "1";
                  for (int32_t n = 0; n <= 50; n++) {
                      if (n) digits = reference::stripped(reference::multiply(digits, std::to_string(n)));
                      uint8_t packed[33] = {}, zoned[64] = {};
                      packed[32] = zoned[63] = 0xEE;
                      if (_Dmr_factorial(packed, n) != packed || _Dmr_factorial_deczoned630(zoned, n) != zoned) abort();
                      std::string found;
                      for (int i = 0; i < 63; i++)
                          found += static_cast<char>('0' + (i % 2 ? packed[i / 2] & 15 : packed[i / 2] >> 4));
                      if (found != reference::cut(digits, 63) || (packed[31] & 15) != 0xC || packed[32] != 0xEE)
                          abort();
                      if (std::string(zoned, zoned + 63) != found || zoned[63] != 0xEE) abort();
                      if (n > 29) continue;
                      if (memcmp(_Dmr_factorial_decpacked320(n), packed + 16, 16) != 0) abort();
                      if (_Dmr_factorial_decfloat16(n) != strtod128(digits.c_str(), nullptr)) abort();
                  }
              }),
              Messages{});
    uint8_t kept[32] = {0x77};
    _Dmr_factorial(kept, 51);
    EXPECT_EQ(kept[0], 0x77);
    EXPECT_EQ(messagesOf([&] {
                  _Dmr_factorial(kept, -1), _Dmr_factorial_decfloat16(-1), _Dmr_factorial_decpacked320(INT32_MIN);
              }),
              Messages(3, "163 FACTORIAL"));
    EXPECT_EQ(messagesOf([] {
                  if (!_Dmr_factorial_decpacked320(30) || _Dmr_factorial_decpacked320(51)) abort();
                  // 50! has 65 digits, 34 of them stay.
                  if (_Dmr_factorial_decfloat16(50) != strtod128("3041409320171337804361260816606477E31", nullptr))
                      abort();
              }),
              Messages(3, "176 FACTORIAL"));
}

TEST(Functions, NeverTrap)
{
    TerseRun run = terse([] {
        freopen("/dev/null", "w", stderr);
        feenableexcept(FE_DIVBYZERO | FE_INVALID | FE_OVERFLOW | FE_UNDERFLOW);
        std::mt19937_64 random(11);
        for (int i = 0; i < 300; i++) {
            uint64_t bits[4];
            const uint64_t specials[] = {0,
                                         1,
                                         0x7FF0000000000000,
                                         0x7FF0000000000001,
                                         0xFFF8000000000000,
                                         0x8000000000000000,
                                         0x7FFF000000000001,
                                         0x7800000000000000,
                                         0x7E00000000000000};
            for (uint64_t &word : bits) word = random() % 2 ? specials[random() % 9] : random();
            double d[4];
            ZvkFloat128 q[2];
            ZvkDecimal128 x[2];
            memcpy(d, bits, sizeof d), memcpy(q, bits, sizeof q), memcpy(x, bits, sizeof x);
            for (const Family &family : kFamilies) {
                family.first(d[0]), family.firstQuad(q[0]);
                if (i % 10 == 0) family.decimal(x[0]);
            }
            _zvkInteger(d[0]), _zvkInteger16(q[0]), _zvkIntegerPart(d[1]), _zvkIntegerPart16(q[1]);
            _Dmr_rem(d[0], d[1]), _Dmr_rem_float16(q[0], q[1]), _Dmr_rem_decfloat16(x[0], x[1]);
            _zvkRandomFloat8(d[0]), _zvkRandomFloat16(q[0]), _Dmr_random_decfloat16(x[0]);
        }
    });
    EXPECT_EQ(run.status, 0);
}

} // namespace
