// Floating-point conversions and intrinsic functions beside what a C program would use for the
// same.
#include <algorithm>
#include <benchmark/benchmark.h>
#include <cmath>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <random>
#include <vector>

extern "C" {
#define DECNUMDIGITS 70
#include <decNumber.h>
}

#include "kvr2/exponentiation.h"
#include "kvr2/float_conversions.h"
#include "kvr2/mathematics.h"
#include "kvr2/numval.h"
#include "kvr2/statistics.h"

namespace {

template <class Body>
void loop(benchmark::State &state, Body body)
{
    for (auto _ : state) {
        body();
        benchmark::ClobberMemory();
    }
}

#define BESIDE(ours, peer, title, peerTitle)                                                                           \
    BENCHMARK(ours)->Name(title "/ours");                                                                              \
    BENCHMARK(peer)->Name(title "/peer:" peerTitle)

// ---- Conversions.

uint8_t packedItem[] = {0x12, 0x34, 0x56, 0x78, 0x90, 0x12, 0x34, 0x5D};
char digitText[] = "-1234567890123.45";
uint8_t item[16];
char text[64];
volatile double amount = -1234567.891;

void packedToDouble(benchmark::State &state)
{
    loop(state, [] { benchmark::DoNotOptimize(_zvkcBCD_CONV_Pckd_To_LFlt(packedItem, 15, 2)); });
}
void digitsByStrtod(benchmark::State &state)
{
    loop(state, [] { benchmark::DoNotOptimize(strtod(digitText, nullptr)); });
}
BESIDE(packedToDouble, digitsByStrtod, "packed to binary 64, 15 digits", "strtod of the digits");

void doubleToPacked(benchmark::State &state)
{
    loop(state, [] { _zvkcBCD_CONV_LFlt_To_Pckd(item, 15, 2, amount); });
}
void doubleToPackedRounded(benchmark::State &state)
{
    loop(state, [] { _zvkcBCD_CONV_LFlt_To_PckdRnd(item, 15, 2, amount); });
}
void doublePrinted(benchmark::State &state)
{
    loop(state, [] { snprintf(text, sizeof text, "%.2f", amount); });
}
BESIDE(doubleToPacked, doublePrinted, "binary 64 to packed, 15 digits", "snprintf(\"%.2f\")");
BESIDE(doubleToPackedRounded, doublePrinted, "binary 64 to packed, rounded, 15 digits", "snprintf(\"%.2f\")");

// ---- NUMVAL.

const ZvkNumvalParameters parameters = {'$', '.', ZVK_CURRENCY_SIGN};
char plain[] = "  12345.67 ", money[] = " -12,345.67", moneyDigits[] = " -12345.67";

// The copy is what a program has to make: an item has no end mark.
double byStrtod(const char *from, size_t length)
{
    char copy[32];
    benchmark::DoNotOptimize(length);
    memcpy(copy, from, length);
    copy[length] = 0;
    return strtod(copy, nullptr);
}

void numval(benchmark::State &state)
{
    double value;
    loop(state, [&] { _zvkcNumval(&parameters, 11, reinterpret_cast<uint8_t *>(plain), &value); });
}
void numvalByStrtod(benchmark::State &state)
{
    loop(state, [] { benchmark::DoNotOptimize(byStrtod(plain, 11)); });
}
void numvalC(benchmark::State &state)
{
    double value;
    loop(state, [&] { _zvkcNumvalC(&parameters, 11, reinterpret_cast<uint8_t *>(money), 0, nullptr, &value); });
}
void numvalCByStrtod(benchmark::State &state)
{
    loop(state, [] { benchmark::DoNotOptimize(byStrtod(moneyDigits, 10)); });
}
BESIDE(numval, numvalByStrtod, "NUMVAL of 12345.67", "strtod of a copy");
BESIDE(numvalC, numvalCByStrtod, "NUMVAL-C of -12,345.67", "strtod of a copy without the comma");

// ---- Exponentiation: 1.05 ** 30 and 2 ** 10.

ZvkPowerDescriptor interest = {2, {}, 3, 2, 0, 18, 9, 9}, doubling = {2, {}, 3, 0, 0, 18, 0, 18};
uint8_t result[20];

void powerOfInterest(benchmark::State &state)
{
    int32_t counter = 1;
    loop(state, [&] {
        _zvkcExpFixedPt(&interest, reinterpret_cast<const uint8_t *>("+30"), reinterpret_cast<const uint8_t *>("+105"),
                        result, &counter);
    });
}
void powerOfTwo(benchmark::State &state)
{
    int32_t counter = 1;
    loop(state, [&] {
        _zvkcExpFixedPt(&doubling, reinterpret_cast<const uint8_t *>("+10"), reinterpret_cast<const uint8_t *>("+002"),
                        result, &counter);
    });
}
void decNumberPowerOf(benchmark::State &state, const char *base, const char *exponent)
{
    decContext context;
    decContextDefault(&context, DEC_INIT_DECIMAL128);
    context.digits = 62;
    decNumber a, b, power;
    decNumberFromString(&a, base, &context);
    decNumberFromString(&b, exponent, &context);
    loop(state, [&] { decNumberPower(&power, &a, &b, &context); });
}
void decNumberInterest(benchmark::State &state) { decNumberPowerOf(state, "1.05", "30"); }
void decNumberTwo(benchmark::State &state) { decNumberPowerOf(state, "2", "10"); }
void powOfDouble(benchmark::State &state)
{
    volatile double base = 1.05, exponent = 30;
    loop(state, [&] { benchmark::DoNotOptimize(pow(base, exponent)); });
}
void powerOfDouble(benchmark::State &state)
{
    volatile double base = 1.05, exponent = 30;
    int32_t counter = 1;
    loop(state, [&] { benchmark::DoNotOptimize(_zvkExpFloat8Float8(base, exponent, &counter)); });
}
BESIDE(powerOfInterest, decNumberInterest, "fixed-point 1.05 ** 30", "decNumberPower");
BESIDE(powerOfTwo, decNumberTwo, "fixed-point 2 ** 10", "decNumberPower");
BENCHMARK(powerOfInterest)->Name("fixed-point 1.05 ** 30, exact/ours");
BENCHMARK(powOfDouble)->Name("fixed-point 1.05 ** 30, exact/peer:pow");
BESIDE(powerOfDouble, powOfDouble, "floating-point 1.05 ** 30", "pow");

// ---- RANDOM and statistics.

void randomNumber(benchmark::State &state)
{
    loop(state, [] { benchmark::DoNotOptimize(_zvkRandom()); });
}
void libraryRandom(benchmark::State &state)
{
    loop(state, [] { benchmark::DoNotOptimize(random()); });
}
BESIDE(randomNumber, libraryRandom, "RANDOM", "random()");

const std::vector<double> &values()
{
    static std::vector<double> made = [] {
        std::vector<double> all(10000);
        std::mt19937 generator(1);
        for (double &x : all) x = static_cast<double>(generator()) / 1000;
        return all;
    }();
    return made;
}

void medianOfTenThousand(benchmark::State &state)
{
    std::vector<double> array(10000);
    double median;
    loop(state, [&] {
        memcpy(array.data(), values().data(), 80000);
        _zvkcMedian(10000, &median, array.data());
    });
}
void medianByNthElement(benchmark::State &state)
{
    std::vector<double> array(10000);
    loop(state, [&] {
        memcpy(array.data(), values().data(), 80000);
        std::nth_element(array.begin(), array.begin() + 4999, array.end());
        benchmark::DoNotOptimize(0.5 * (array[4999] + *std::min_element(array.begin() + 5000, array.end())));
    });
}
void varianceOfTenThousand(benchmark::State &state)
{
    double variance;
    loop(state, [&] { _zvkcVariance(10000, &variance, values().data(), 2147483.6); });
}
void varianceByLoop(benchmark::State &state)
{
    const std::vector<double> &array = values();
    loop(state, [&] {
        double sum = 0, mean = 2147483.6;
        benchmark::DoNotOptimize(mean);
        for (double x : array) sum += (x - mean) * (x - mean);
        benchmark::DoNotOptimize(sum / 10000);
    });
}
BESIDE(medianOfTenThousand, medianByNthElement, "MEDIAN of 10,000", "std::nth_element and the next one");
BESIDE(varianceOfTenThousand, varianceByLoop, "VARIANCE of 10,000", "a plain loop");

} // namespace

BENCHMARK_MAIN();
