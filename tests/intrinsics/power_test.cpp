// Faults that these tests are there to catch: a digit of a fixed-point power or of a reciprocal; digits
// that do not fit cut on the wrong side, or stored under ON SIZE ERROR; an error that is reported where
// it should count, or the reverse; the rules for bases that are zero or negative mixed up in a format.
#include <cfenv>
#include <cmath>
#include <cstring>
#include <quadmath.h>
#include <random>

#include "decimal/big_integer.h"
#include "decimal/reference.h"
#include "intrinsics/dfp.h"
#include "kvr2/exponentiation.h"
#include "terse_messages.h"

namespace {

struct Field {
    int digits, fraction;
};

// The result of one call, with two bytes around it that must not change.
std::string power(const std::string &base, int baseFraction, const std::string &exponent, Field field, int32_t &counter)
{
    ZvkPowerDescriptor descriptor = {};
    descriptor.exponentDigits = static_cast<uint16_t>(exponent.size() - 1);
    descriptor.baseDigits = static_cast<uint16_t>(base.size() - 1);
    descriptor.baseFraction = static_cast<uint16_t>(baseFraction);
    descriptor.resultDigits = static_cast<uint16_t>(field.digits);
    descriptor.resultFraction = static_cast<uint16_t>(field.fraction);
    descriptor.resultUnitsPosition = static_cast<uint16_t>(field.digits - field.fraction);
    std::string result(static_cast<size_t>(field.digits) + 3, '?');
    auto bytes = [](const std::string &text) { return reinterpret_cast<const uint8_t *>(text.data()); };
    _zvkcExpFixedPt(&descriptor, bytes(exponent), bytes(base), reinterpret_cast<uint8_t *>(result.data()) + 1, &counter);
    EXPECT_TRUE(result.front() == '?' && result.back() == '?');
    return result.substr(1, result.size() - 2);
}

std::string power(const std::string &base, const std::string &exponent, Field field = {6, 0}, int baseFraction = 0)
{
    int32_t counter = 1; // ON SIZE ERROR
    std::string result = power(base, baseFraction, exponent, field, counter);
    return counter == 1 ? result : "counted " + result;
}

TEST(FixedPower, IsExact)
{
    EXPECT_EQ(power("+2", "+10"), "+001024");
    EXPECT_EQ(power("-2", "+3"), "-000008");
    EXPECT_EQ(power("-2", "+2"), "+000004");
    EXPECT_EQ(power("-7", "+0"), "+000001");
    EXPECT_EQ(power("+0", "+5"), "+000000");
    EXPECT_EQ(power("+2", "-2", {6, 3}), "+000250");
    EXPECT_EQ(power("-2", "-3", {6, 3}), "-000125");
    EXPECT_EQ(power("+15", "+3", {6, 2}, 1), "+000337"); // 3.375, cut
    EXPECT_EQ(power("+005", "-1", {6, 2}, 2), "+002000"); // 1 / 0.05

    // By multiplying as often as the exponent says.
    std::mt19937 random(4);
    for (int i = 0; i < 3000; i++) {
        int length = static_cast<int>(random() % 12) + 1, times = static_cast<int>(random() % 9);
        std::string base;
        for (int n = 0; n < length; n++) base += static_cast<char>('0' + random() % 10);
        if (length * times > 62 || reference::stripped(base) == "0") continue;
        int baseFraction = static_cast<int>(random() % static_cast<unsigned>(length + 3));
        Field field = {static_cast<int>(random() % 40) + 1, 0};
        field.fraction = static_cast<int>(random() % static_cast<unsigned>(field.digits + 1));
        bool negative = random() % 2, reciprocal = random() % 2;
        std::string whole = "1";
        for (int n = 0; n < times; n++) whole = reference::stripped(reference::multiply(whole, base));
        int places = baseFraction * times;
        if (reciprocal && times) // 10^(fraction + places) / power
            whole = reference::divide("1" + std::string(static_cast<size_t>(field.fraction + places), '0'), whole).first;
        else if (places > field.fraction)
            whole = reference::cut("0" + whole, std::max(static_cast<int>(whole.size()), places - field.fraction + 1))
                        .substr(0, static_cast<size_t>(std::max(static_cast<int>(whole.size()), places - field.fraction + 1) -
                                                       (places - field.fraction)));
        else
            whole += std::string(static_cast<size_t>(field.fraction - places), '0');
        whole = reference::stripped(whole);
        if (whole == "0") continue; // vanishes: below
        std::string wanted = (negative && times % 2 ? "-" : "+") + reference::cut(whole, field.digits);
        if (static_cast<int>(whole.size()) > field.digits)
            wanted = "counted " + std::string(static_cast<size_t>(field.digits) + 1, '?');
        ASSERT_EQ(power((negative ? "-" : "+") + base, (reciprocal ? "-0" : "+0") + std::to_string(times), field, baseFraction),
                  wanted)
            << base << " ** " << times << " with " << baseFraction << " in " << field.digits << "," << field.fraction;
    }
}

TEST(FixedPower, ReportsOrCounts)
{
    struct {
        const char *base;
        int baseFraction;
        const char *exponent;
        Field field;
        Messages messages;
        const char *result;
        bool counts; // under ON SIZE ERROR, which leaves the result alone
    } rows[] = {
        {"+00", 0, "+0", {4, 1}, {"49"}, "+0010", true},
        {"+0", 0, "-1", {4, 1}, {"50"}, "+0000", true},
        {"+9", 0, "+70", {4, 0}, {"60", "51"}, "+0000", true},
        {"+1005", 3, "+30", {6, 4}, {"60"}, "+011614", true}, // 90 places; the first 62 digits are kept
        {"+123", 0, "+2", {4, 0}, {}, "+5129", true},         // 15129
        {"+10", 0, "+4", {3, 0}, {"51"}, "+000", true},
        {"+1", 1, "+5", {4, 2}, {"51"}, "+0000", false},
        {"-300", 0, "-1", {4, 2}, {"51"}, "+0000", false},
        {"+1", 0, "+1000000002", {2, 0}, {"59"}, "+01", false},
        {"+2", 0, "+9000000003", {2, 0}, {"59"}, "+08", false},
        {"+001", 3, "-999999999", {4, 2}, {"51"}, "+0000", true},
    };
    for (auto &row : rows) {
        std::string result;
        int32_t counter = 0;
        auto call = [&] { result = power(row.base, row.baseFraction, row.exponent, row.field, counter); };
        TerseRun run = terse([&] {
            call();
            printf("%s %d", result.c_str(), counter);
        });
        EXPECT_EQ(run.messages, row.messages) << row.base << row.exponent;
        EXPECT_EQ(run.out, std::string(row.result) + " 0");
        run = terse([&] {
            counter = 7;
            call();
            printf("%s %d", result.c_str(), counter);
        });
        EXPECT_EQ(run.messages, row.counts ? Messages{} : row.messages) << row.base << row.exponent;
        EXPECT_EQ(run.out, row.counts ? std::string(static_cast<size_t>(row.field.digits) + 1, '?') + " 8"
                                      : std::string(row.result) + " 7");
    }
}

TEST(FixedPower, TakesAnyBytes)
{
    TerseRun run = terse([] {
        freopen("/dev/null", "w", stderr);
        std::mt19937 random(5);
        for (int i = 0; i < 3000; i++) {
            std::string base(random() % 40 + 1, ' '), exponent(random() % 14 + 1, ' ');
            for (char &c : base) c = static_cast<char>(random());
            for (char &c : exponent) c = static_cast<char>(random() % 3 ? random() % 3 + '0' : random());
            if (random() % 2) exponent[0] = '-';
            Field field = {static_cast<int>(random() % 200), static_cast<int>(random() % 220)};
            int32_t counter = static_cast<int32_t>(random() % 2);
            power(base, static_cast<int>(random() % 50), exponent, field, counter);
        }
        if (testing::Test::HasFailure()) abort();
    });
    EXPECT_EQ(run.status, 0);
}

int32_t counted; // of the last call

template <class Call>
double with(int32_t counter, Call call)
{
    counted = counter;
    return static_cast<double>(call(&counted));
}

TEST(FloatPower, FollowsTheRulesInEveryFormat)
{
    const double bases[] = {2, 1.5, -2, -8, 0, -0.0, 10, 1e300}, exponents[] = {0, 1, 2, -1, 0.5, -0.5, 3, 400};
    for (double base : bases)
        for (double exponent : exponents) {
            uint32_t report = 0;
            double wanted = 0;
            if (base != 0 || exponent > 0) wanted = std::pow(base, exponent);
            if (base == 0) wanted = exponent == 0 ? 1 : 0, report = exponent == 0 ? 49 : exponent < 0 ? 50 : 0;
            if (base < 0 && exponent != std::trunc(exponent)) wanted = std::pow(-base, exponent), report = 48;
            auto check = [&](const char *name, auto call, bool mayBeInfinite) {
                bool infinite = std::isinf(wanted) && mayBeInfinite;
                if (std::isinf(wanted) && !mayBeInfinite) return;
                double value = with(5, call);
                bool right = infinite ? value == wanted : std::fabs(value - wanted) <= std::fabs(wanted) * 1e-15;
                EXPECT_TRUE(right) << name << base << " ** " << exponent << " is " << value;
                EXPECT_EQ(counted, 5 + (report != 0) + infinite) << name << base << " ** " << exponent;
                Messages messages;
                if (report) messages.push_back(std::to_string(report));
                if (infinite) messages.push_back("58");
                if (messages.empty()) return;
                EXPECT_EQ(messagesOf([&] { with(0, call); }), messages) << name << base << exponent;
            };
            check("Float8Float8 ", [&](int32_t *c) { return _zvkExpFloat8Float8(base, exponent, c); }, true);
            check("Float16Float8 ", [&](int32_t *c) { return _zvkExpFloat16Float8(base, exponent, c); }, false);
            auto decimal = [](double x) { return static_cast<ZvkDecimal128>(x); };
            check("DFloat16DFloat16 ", [&](int32_t *c) { return _zvkExpDFloat16DFloat16(decimal(base), decimal(exponent), c); },
                  false);
            if (base == std::trunc(base) && exponent == std::trunc(exponent) && std::fabs(base) < 1e9) {
                auto b = static_cast<int64_t>(base), e = static_cast<int64_t>(exponent);
                auto b4 = static_cast<int32_t>(b), e4 = static_cast<int32_t>(e);
                check("Int8Int8 ", [&](int32_t *c) { return _zvkExpInt8Int8(b, e, c); }, true);
                check("Int4Int4 ", [&](int32_t *c) { return _zvkExpInt4Int4(b4, e4, c); }, true);
                check("Float4Int4 ", [&](int32_t *c) { return _zvkExpFloat4Int4(static_cast<float>(base), e4, c); }, true);
                check("Float8Int8 ", [&](int32_t *c) { return _zvkExpFloat8Int8(base, e, c); }, true);
                check("Float16Int8 ", [&](int32_t *c) { return _zvkExpFloat16Int8(base, e, c); }, false);
                check("DFloat16Int8 ", [&](int32_t *c) { return _zvkExpDFloat16Int8(decimal(base), e, c); }, false);
            }
            if (std::fabs(base) < 1e30)
                check("Float4Float4 ",
                      [&](int32_t *c) { return _zvkExpFloat4Float4(static_cast<float>(base), static_cast<float>(exponent), c); },
                      true);
        }
    // Infinite results of the 16-byte formats, and an exponent of 1, which computes nothing.
    EXPECT_EQ(messagesOf([] { with(0, [](int32_t *c) { return _zvkExpFloat16Int8(10, 5000, c); }); }), Messages{"58"});
    EXPECT_EQ(messagesOf([] { with(0, [](int32_t *c) { return _zvkExpDFloat16Int8(10, 7000, c); }); }), Messages{"58"});
    EXPECT_EQ(with(0, [](int32_t *c) { return _zvkExpInt8Int8(5, 1, c); }), 5);
    EXPECT_EQ(messagesOf([] { with(0, [](int32_t *c) { return _zvkExpFloat8Int8(INFINITY, 1, c); }); }), Messages{});
    // More digits than binary 64 has.
    int32_t counter = 1;
    EXPECT_TRUE(_zvkExpFloat16Int8(3, 60, &counter) == 42391158275216203514294433201.0Q);
    EXPECT_TRUE(_zvkExpDFloat16Int8(3, 60, &counter) == strtod128("42391158275216203514294433201", nullptr));
}

TEST(FloatPower, IsAService)
{
    double base = -8, exponent = 0.5, result = 0;
    uint8_t token[12];
    auto call = [&] {
        memset(token, 0xFF, sizeof token);
        LSVSDXPD(&base, &exponent, &result, token);
        uint16_t parts[2];
        memcpy(parts, token, 4);
        return std::pair(parts[0], parts[1]);
    };
    EXPECT_EQ(call(), std::pair(uint16_t{2}, uint16_t{48}));
    EXPECT_EQ(result, std::pow(8, 0.5));
    EXPECT_EQ(memcmp(token + 4, "\x51LSV\0\0\0\0", 8), 0);
    base = 0, exponent = -1;
    EXPECT_EQ(call(), std::pair(uint16_t{3}, uint16_t{50}));
    base = 2, exponent = 3;
    EXPECT_EQ(call(), std::pair(uint16_t{0}, uint16_t{0}));
    EXPECT_EQ(result, 8);
    base = 0, exponent = 0;
    EXPECT_EQ(messagesOf([&] { LSVSDXPD(&base, &exponent, &result, nullptr); }), Messages{"49"});
}

TEST(FloatPower, NeverTraps)
{
    TerseRun run = terse([] {
        feenableexcept(FE_DIVBYZERO | FE_INVALID | FE_OVERFLOW | FE_UNDERFLOW);
        std::mt19937_64 random(6);
        for (int i = 0; i < 5000; i++) {
            uint64_t bits[4] = {random(), random(), random(), random()};
            const uint64_t specials[] = {0, 1, 0x7FF0000000000000, 0x7FF0000000000001, 0xFFF8000000000000, 0x8000000000000000,
                                         0x7FFF000000000000, 0x7800000000000000, 0x7C00000000000000};
            for (uint64_t &word : bits)
                if (random() % 3 == 0) word = specials[random() % 9];
            double d, e;
            float f, g;
            ZvkFloat128 q;
            ZvkDecimal128 x, y;
            memcpy(&d, bits, 8), memcpy(&e, bits + 1, 8), memcpy(&f, bits, 4), memcpy(&g, bits + 1, 4);
            memcpy(&q, bits, 16), memcpy(&x, bits, 16), memcpy(&y, bits + 2, 16);
            int32_t counter = 1;
            auto n = static_cast<int64_t>(bits[2]);
            _zvkExpFloat8Float8(d, e, &counter), _zvkExpFloat16Float8(q, e, &counter), _zvkExpFloat4Float4(f, g, &counter);
            _zvkExpInt8Int8(static_cast<int64_t>(bits[0]), n, &counter), _zvkExpFloat8Int8(d, n, &counter);
            _zvkExpFloat4Int4(f, static_cast<int32_t>(n), &counter), _zvkExpFloat16Int8(q, n % 100, &counter);
            if (i % 20 == 0) _zvkExpDFloat16DFloat16(x, y, &counter), _zvkExpDFloat16Int8(x, n % 50, &counter);
        }
    });
    EXPECT_EQ(run.status, 0);
    EXPECT_EQ(run.messages, Messages{});
}

} // namespace
