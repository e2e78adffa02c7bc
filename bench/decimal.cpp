// Packed and zoned arithmetic through the exported entries, with validation on as by default,
// beside decNumber, the compiler's 128-bit decimal float and the plain loops that a programmer
// would write. Operands and signs are random; see decimal_pool.h.
#include <benchmark/benchmark.h>
#include <cstring>
#include <string>
#include <vector>

extern "C" {
#define DECNUMDIGITS 68
#include <decNumber.h>
}

#include "decimal_pool.h"
#include "kvr2/decimal.h"
#include "kvr2/decimal_scaling.h"

namespace {

using pool::Integers;
using pool::Items;
using pool::PackedDigits;
using pool::ZonedDigits;

constexpr int kLengths[] = {7, 15, 18, 31};

decContext wide()
{
    decContext context;
    decContextDefault(&context, DEC_INIT_BASE);
    context.digits = 68;
    context.traps = 0;
    return context;
}

template <class Body>
void loop(benchmark::State &state, Body body)
{
    for (auto _ : state) {
        body();
        benchmark::ClobberMemory();
    }
}

using Binary = uint8_t *(*)(const uint8_t *, const uint8_t *, uint8_t *, int32_t, int32_t, int32_t);
using BinaryNumber = decNumber *(*)(decNumber *, const decNumber *, const decNumber *, decContext *);

void ours(benchmark::State &state, Binary entry, pool::Make make, int n1, int n2, int nd)
{
    Items a(make, n1, 1), b(make, n2, 2);
    pool::Item out{};
    loop(state, [&] { entry(a.next(), b.next(), out.bytes, nd, n2, n1); });
}

struct Numbers {
    std::vector<decNumber> numbers;
    size_t at = 0;

    Numbers(int digits, unsigned seed, decContext *context) : numbers(pool::kSize)
    {
        std::mt19937 random(seed);
        for (decNumber &number : numbers)
            decNumberFromString(&number, pool::randomNumber(random, digits).c_str(), context);
    }
    const decNumber *next() { return &numbers[at++ % pool::kSize]; }
};

void decNumbers(benchmark::State &state, BinaryNumber routine, int n1, int n2)
{
    decContext context = wide();
    Numbers a(n1, 1, &context), b(n2, 2, &context);
    decNumber out;
    loop(state, [&] { routine(&out, a.next(), b.next(), &context); });
}

// C++ has no name for the type.
typedef float Decimal128 __attribute__((mode(TD)));

void decimalFloat(benchmark::State &state, int n)
{
    std::vector<Decimal128> numbers;
    std::mt19937 random(1);
    for (size_t i = 0; i < pool::kSize; i++) {
        Decimal128 value = 0;
        std::string number = pool::randomNumber(random, n);
        for (size_t d = 1; d < number.size(); d++) value = value * 10 + (number[d] - '0');
        numbers.push_back(number[0] == '-' ? -value : value);
    }
    size_t at = 0;
    loop(state, [&] {
        Decimal128 out = numbers[at % pool::kSize] + numbers[(at + 100) % pool::kSize];
        at++;
        benchmark::DoNotOptimize(out);
    });
}

template <class Digits>
void byteLoop(benchmark::State &state, pool::Make make, int n)
{
    Items a(make, n, 1), b(make, n, 2);
    pool::Item out{};
    loop(state, [&] { pool::plainAdd<Digits>(a.next(), b.next(), out.bytes, n); });
}

template <class Integer>
void integerOurs(benchmark::State &state, uint8_t *(*entry)(uint8_t *, int32_t, Integer), pool::Make make, int n,
                 int valueDigits)
{
    Items a(make, n, 1);
    Integers values(valueDigits, 2);
    loop(state, [&] { entry(a.next(), n, static_cast<Integer>(values.next())); });
}

template <class Digits>
void integerLoop(benchmark::State &state, pool::Make make, int n, int valueDigits)
{
    Items a(make, n, 1);
    Integers values(valueDigits, 2);
    loop(state, [&] { pool::plainAddInteger<Digits>(a.next(), n, values.next()); });
}

void compareOurs(benchmark::State &state, int n)
{
    Items a(pool::packed, n, 1), b(pool::packed, n, 2);
    loop(state, [&] { benchmark::DoNotOptimize(_zvkcBCD_GRT_Pckd(a.next(), b.next(), n, n)); });
}

void shiftOurs(benchmark::State &state, int n)
{
    Items a(pool::packed, n, 1);
    pool::Item out{};
    loop(state, [&] { _zvkcBCD_SHFD_Pckd_Left(a.next(), out.bytes, n, n, 4); });
}

__attribute__((noinline)) void copyBytes(uint8_t *to, const uint8_t *from, size_t size)
{
    benchmark::DoNotOptimize(size);
    memcpy(to, from, size);
}

void copyPeer(benchmark::State &state, int n)
{
    Items a(pool::packed, n, 1);
    pool::Item out{};
    loop(state, [&] { copyBytes(out.bytes, a.next(), static_cast<size_t>(n) / 2 + 1); });
}

template <class Body>
void add(const std::string &figure, const char *who, Body body)
{
    benchmark::RegisterBenchmark((figure + "/" + who).c_str(), body);
}

constexpr char kPlainLoop[] = "peer:a plain loop over digits";

void registerZonedSums(int n)
{
    std::string digits = ", " + std::to_string(n) + (n == 1 ? " digit" : " digits");
    add("zoned ADD" + digits, "ours", [n](benchmark::State &s) { ours(s, _zvkcBCD_ADD_Znd, pool::zoned, n, n, n); });
    add("zoned ADD" + digits, kPlainLoop, [n](benchmark::State &s) { byteLoop<ZonedDigits>(s, pool::zoned, n); });
    add("zoned SUB" + digits, "ours", [n](benchmark::State &s) { ours(s, _zvkcBCD_SUB_Znd, pool::zoned, n, n, n); });
    add("zoned SUB" + digits, kPlainLoop, [n](benchmark::State &s) { byteLoop<ZonedDigits>(s, pool::zoned, n); });
}

void registerSums(int n)
{
    std::string digits = ", " + std::to_string(n) + " digits";
    add("packed ADD" + digits, "ours", [n](benchmark::State &s) { ours(s, _zvkcBCD_ADD_Pckd, pool::packed, n, n, n); });
    add("packed ADD" + digits, "peer:decNumberAdd", [n](benchmark::State &s) { decNumbers(s, decNumberAdd, n, n); });
    add("packed ADD" + digits, "peer:_Decimal128", [n](benchmark::State &s) { decimalFloat(s, n); });
    add("packed ADD" + digits, kPlainLoop, [n](benchmark::State &s) { byteLoop<PackedDigits>(s, pool::packed, n); });
    add("packed SUB" + digits, "ours", [n](benchmark::State &s) { ours(s, _zvkcBCD_SUB_Pckd, pool::packed, n, n, n); });
    add("packed SUB" + digits, "peer:decNumberSubtract",
        [n](benchmark::State &s) { decNumbers(s, decNumberSubtract, n, n); });
    registerZonedSums(n);
}

void registerIntegerSums(int n, int value)
{
    std::string digits =
        ", " + std::to_string(n) + (n == 1 ? " digit" : " digits") + " and an integer of " + std::to_string(value);
    if (value < 10) {
        add("packed ADD in place" + digits, "ours",
            [=](benchmark::State &s) { integerOurs(s, _zvkcBCD_ADD_Pckd_Int4, pool::packed, n, value); });
        add("zoned ADD in place" + digits, "ours",
            [=](benchmark::State &s) { integerOurs(s, _zvkcBCD_ADD_Znd_Int4, pool::zoned, n, value); });
    } else {
        add("packed ADD in place" + digits, "ours",
            [=](benchmark::State &s) { integerOurs(s, _zvkcBCD_ADD_Pckd_Int8, pool::packed, n, value); });
        add("zoned ADD in place" + digits, "ours",
            [=](benchmark::State &s) { integerOurs(s, _zvkcBCD_ADD_Znd_Int8, pool::zoned, n, value); });
    }
    add("packed ADD in place" + digits, kPlainLoop,
        [=](benchmark::State &s) { integerLoop<PackedDigits>(s, pool::packed, n, value); });
    add("zoned ADD in place" + digits, kPlainLoop,
        [=](benchmark::State &s) { integerLoop<ZonedDigits>(s, pool::zoned, n, value); });
}

void registerAll()
{
    for (int n : {1, 2, 3}) registerZonedSums(n);
    for (int n : kLengths) {
        registerSums(n);
        std::string digits = ", " + std::to_string(n) + " digits";
        add("packed compare" + digits, "ours", [n](benchmark::State &s) { compareOurs(s, n); });
        add("packed compare" + digits, "peer:decNumberCompare",
            [n](benchmark::State &s) { decNumbers(s, decNumberCompare, n, n); });
        add("packed shift by 4" + digits, "ours", [n](benchmark::State &s) { shiftOurs(s, n); });
        add("packed shift by 4" + digits, "peer:a call and memcpy", [n](benchmark::State &s) { copyPeer(s, n); });
    }
    for (int n : {1, 2, 3, 7, 15, 18, 31}) registerIntegerSums(n, 1);
    registerIntegerSums(3, 3);
    registerIntegerSums(7, 5);
    registerIntegerSums(15, 5);
    registerIntegerSums(18, 9);
    registerIntegerSums(18, 15);
    add("packed MPY, 15 by 15 into 31", "ours",
        [](benchmark::State &s) { ours(s, _zvkcBCD_MPY_Pckd, pool::packed, 15, 15, 31); });
    add("packed MPY, 15 by 15 into 31", "peer:decNumberMultiply",
        [](benchmark::State &s) { decNumbers(s, decNumberMultiply, 15, 15); });
    add("packed DIV, 31 by 15", "ours",
        [](benchmark::State &s) { ours(s, _zvkcBCD_DIV_Pckd, pool::packed, 31, 15, 31); });
    add("packed DIV, 31 by 15", "peer:decNumberDivideInteger",
        [](benchmark::State &s) { decNumbers(s, decNumberDivideInteger, 31, 15); });
    add("packed DIV, 15 by 7", "ours",
        [](benchmark::State &s) { ours(s, _zvkcBCD_DIV_Pckd, pool::packed, 15, 7, 15); });
    add("packed DIV, 15 by 7", "peer:decNumberDivideInteger",
        [](benchmark::State &s) { decNumbers(s, decNumberDivideInteger, 15, 7); });
}

} // namespace

int main(int argc, char **argv)
{
    registerAll();
    benchmark::Initialize(&argc, argv);
    benchmark::RunSpecifiedBenchmarks();
    return 0;
}
