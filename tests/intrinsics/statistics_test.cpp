// Faults that these tests are there to catch: a median that is not the middle, takes quadratic time on
// equal or sorted values or runs away on NaNs; elements lost from the array; a sum in another order or
// precision; the rate counted as an amount; a wrong argument that is not reported; a trap.
#include <algorithm>
#include <cfenv>
#include <cmath>
#include <cstring>
#include <ctime>
#include <quadmath.h>
#include <random>
#include <vector>

#include "intrinsics/statistics.h"
#include "kvr2/statistics.h"
#include "terse_messages.h"

namespace {

// Every form of the function gives the same for numbers that all formats hold.
double median(std::vector<double> values)
{
    auto count = static_cast<uint32_t>(values.size());
    std::vector<double> array = values;
    double stored = -1, value = _zvkcMedianFloat8(count, array.data());
    std::sort(array.begin(), array.end());
    std::vector<double> sorted = values;
    std::sort(sorted.begin(), sorted.end());
    EXPECT_EQ(array, sorted); // only the order changes
    array = values;
    _zvkcMedian(count, &stored, array.data());
    EXPECT_EQ(stored, value);
    std::vector<ZvkFloat128> quads(values.begin(), values.end());
    std::vector<ZvkDecimal128> decimals;
    for (double x : values) decimals.push_back(static_cast<ZvkDecimal128>(x));
    ZvkFloat128 storedQuad = -1;
    EXPECT_TRUE(_zvkcMedian16(count, &storedQuad, quads.data()) == value && storedQuad == value);
    EXPECT_TRUE(_zvkcMedianFloat16(count, &storedQuad, quads.data()) == value && storedQuad == value);
    EXPECT_TRUE(zvkMedianDecimal128(count, decimals.data()) == static_cast<ZvkDecimal128>(value));
    return value;
}

TEST(Median, IsTheMiddle)
{
    EXPECT_EQ(median({}), 0);
    EXPECT_EQ(median({3}), 3);
    EXPECT_EQ(median({1, 2, 3, 4}), 2.5);
    EXPECT_EQ(median({3, 1, 2}), 2);
    std::mt19937 random(7);
    for (int i = 0; i < 3000; i++) {
        std::vector<double> values(random() % 40 + 1);
        unsigned spread = 1 + random() % 60; // often many equal ones
        for (double &x : values) x = static_cast<double>(random() % spread) / 4;
        std::vector<double> sorted = values;
        std::sort(sorted.begin(), sorted.end());
        size_t k = (sorted.size() - 1) / 2;
        double wanted = sorted.size() % 2 ? sorted[k] : 0.5 * (sorted[k] + sorted[k + 1]);
        ASSERT_EQ(median(values), wanted);
    }
}

TEST(Median, IsFastOnAMillionOfAnyOrder)
{
    constexpr size_t count = 1'000'000;
    std::mt19937 random(8);
    std::vector<double> values(count);
    auto time = [&](const char *what, auto fill) {
        for (size_t i = 0; i < count; i++) values[i] = fill(i);
        clock_t start = clock();
        _zvkcMedianFloat8(static_cast<uint32_t>(count), values.data());
        EXPECT_LT(clock() - start, CLOCKS_PER_SEC) << what;
    };
    time("equal", [](size_t) { return 5.0; });
    time("two values", [](size_t i) { return static_cast<double>(i % 2); });
    time("rising", [](size_t i) { return static_cast<double>(i); });
    time("falling", [](size_t i) { return static_cast<double>(count - i); });
    time("organ pipes", [](size_t i) { return static_cast<double>(std::min(i, count - i)); });
    time("hole", [](size_t i) { return std::fabs(static_cast<double>(i) - static_cast<double>(count) / 2); });
    time("random", [&](size_t) { return static_cast<double>(random()); });
    time("NaNs", [&](size_t) { return random() % 2 ? NAN : static_cast<double>(random()); });
}

// Arrays may lie at any address.
template <class Value>
struct Unaligned {
    std::vector<uint8_t> bytes;
    explicit Unaligned(const std::vector<double> &values) : bytes(values.size() * sizeof(Value) + 1)
    {
        for (size_t i = 0; i < values.size(); i++) {
            auto value = static_cast<Value>(values[i]);
            memcpy(bytes.data() + 1 + i * sizeof value, &value, sizeof value);
        }
    }
    auto at();
};

template <>
auto Unaligned<double>::at()
{
    return reinterpret_cast<ZvkFloat64Item *>(bytes.data() + 1);
}
template <>
auto Unaligned<ZvkFloat128>::at()
{
    return reinterpret_cast<ZvkFloat128Item *>(bytes.data() + 1);
}

TEST(Variance, IsThatOfThePopulation)
{
    std::vector<double> values = {2, 4, 4, 4, 5, 5, 7, 9};
    Unaligned<double> doubles(values);
    Unaligned<ZvkFloat128> quads(values);
    double result = -1;
    ZvkFloat128 quad = -1;
    _zvkcVariance(8, &result, doubles.at(), 5);
    EXPECT_EQ(result, 4);
    _zvkcStandardDeviation(8, &result, doubles.at(), 5);
    EXPECT_EQ(result, 2);
    _zvkcVariance16(8, &quad, quads.at(), 5);
    EXPECT_TRUE(quad == 4);
    _zvkcStandardDeviation16(7, &quad, quads.at(), 5);
    EXPECT_TRUE(fabsq(quad - sqrtq(16 / 7.0Q)) < 1e-33Q); // the 9 is left out
    _zvkcVariance(0, &result, nullptr, 5);
    EXPECT_EQ(result, 0);
    _zvkcVariance(1, &result, doubles.at(), 2);
    EXPECT_EQ(result, 0);
    // In the order of the array: the large ones first drown the small ones.
    double ordered[3] = {1e8, 1, 1}, sum = 1e16;
    sum += 1;
    sum += 1;
    _zvkcVariance(3, &result, ordered, 0);
    EXPECT_EQ(result, sum / 3);
}

TEST(Finance, PresentValueAndAnnuity)
{
    std::vector<double> flat = {0, 1, 2}, values = {0.5, 3, 9};
    double result = -1;
    ZvkFloat128 quad = -1;
    _zvkcPresentValue(3, &result, flat.data());
    EXPECT_EQ(result, 3);
    _zvkcPresentValue(3, &result, values.data());
    EXPECT_EQ(result, 2 + 4);
    _zvkcPresentValue(1, &result, values.data());
    EXPECT_EQ(result, 0);
    _zvkcPresentValue(0, &result, nullptr);
    EXPECT_EQ(result, 0);
    _zvkcPresentValue16(3, &quad, Unaligned<ZvkFloat128>(values).at());
    EXPECT_TRUE(quad == 6);
    EXPECT_EQ(_Dmr_present_value(-0.5), 0u);
    EXPECT_EQ(_Dmr_present_value_float16(0), 0u);
    EXPECT_EQ(_Dmr_present_value_decfloat16(1), 0u);

    EXPECT_EQ(_Dmr_annuity(0, 4), 0.25);
    EXPECT_EQ(_zvkcAnnuityFloat8(1, 1), 2);
    EXPECT_EQ(_zvkcAnnuityFloat8(0.5, 2), 0.5 / (1 - 1 / 2.25));
    EXPECT_TRUE(_zvkcAnnuityFloat16(0, 3) == 1 / 3.0Q);
    EXPECT_TRUE(fabsq(_zvkcAnnuityFloat16(0.5Q, 2) - 0.9Q) < 1e-33Q);
}

TEST(Finance, ReportsWrongArgumentsAndGoesOn)
{
    double rate[2] = {-1, 5}, result = 0;
    EXPECT_EQ(messagesOf([&] { _zvkcPresentValue(2, &result, rate); }), Messages{"100 PRESENT-VALUE"});
    EXPECT_EQ(messagesOf([] {
                  if (_Dmr_present_value(-1) != 0xFFFFFFFF || _Dmr_present_value_float16(-2) != 0xFFFFFFFF ||
                      _Dmr_present_value_decfloat16(-1) != 0xFFFFFFFF || _Dmr_present_value(NAN) != 0xFFFFFFFF)
                      abort();
              }),
              Messages(4, "100 PRESENT-VALUE"));
    EXPECT_EQ(messagesOf([] { _Dmr_annuity(-0.1, 0); }), (Messages{"163 ANNUITY", "177 ANNUITY"}));
    EXPECT_EQ(messagesOf([] { _zvkcAnnuityFloat16(0, -1); }), Messages{"177 ANNUITY"});
}

TEST(Statistics, NeverTrap)
{
    TerseRun run = terse([] {
        freopen("/dev/null", "w", stderr);
        feenableexcept(FE_DIVBYZERO | FE_INVALID | FE_OVERFLOW | FE_UNDERFLOW);
        std::mt19937_64 random(9);
        for (int i = 0; i < 2000; i++) {
            uint64_t bits[20];
            const uint64_t specials[] = {0, 1, 0x7FF0000000000000, 0x7FF0000000000001, 0xBFF0000000000001, 0xFFFF000000000001};
            for (uint64_t &word : bits) word = random() % 2 ? specials[random() % 6] : random();
            double d[20], result;
            ZvkFloat128 q[10], quad;
            ZvkDecimal128 x[10];
            memcpy(d, bits, sizeof d), memcpy(q, bits, sizeof q), memcpy(x, bits, sizeof x);
            _zvkcVariance(20, &result, d, d[0]), _zvkcStandardDeviation(20, &result, d, d[1]);
            _zvkcVariance16(10, &quad, q, q[0]), _zvkcStandardDeviation16(10, &quad, q, q[1]);
            _zvkcPresentValue(20, &result, d), _zvkcPresentValue16(10, &quad, q);
            _Dmr_annuity(d[2], d[3]), _zvkcAnnuityFloat16(q[2], q[3]);
            _Dmr_present_value(d[4]), _Dmr_present_value_float16(q[4]), _Dmr_present_value_decfloat16(x[4]);
            _zvkcMedian(20, &result, d), _zvkcMedian16(10, &quad, q), zvkMedianDecimal128(10, x);
        }
        double tiny[3] = {-0.9999999999999999, 1, 1}, many[300];
        std::fill(std::begin(many), std::end(many), 1);
        many[0] = tiny[0];
        _zvkcPresentValue(300, tiny, many); // the factor becomes zero
    });
    EXPECT_EQ(run.status, 0);
}

} // namespace
