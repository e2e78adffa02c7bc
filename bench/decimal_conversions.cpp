// Copies and conversions through the exported entries, beside the loop that a programmer would
// write, an addition of the same length in another decimal library and memcpy. Operands and signs
// are random; see decimal_pool.h.
#include <benchmark/benchmark.h>
#include <cstring>
#include <string>

extern "C" {
#define DECNUMDIGITS 34
#include <decNumber.h>
}

#include "decimal_pool.h"
#include "kvr2/decimal_conversions.h"

namespace {

using pool::Integers;
using pool::Items;
using pool::PackedDigits;
using pool::ZonedDigits;

template <class Body>
void loop(benchmark::State &state, Body body)
{
    for (auto _ : state) {
        body();
        benchmark::ClobberMemory();
    }
}

using Convert = uint8_t *(*)(const uint8_t *, uint8_t *, int32_t, int32_t);
using ToInteger = int64_t (*)(const uint8_t *, int32_t);
using FromInteger = uint8_t *(*)(int64_t, uint8_t *, int32_t);
using Plain = void (*)(const uint8_t *, uint8_t *, int);

template <class Body>
void add(const std::string &figure, const char *who, Body body)
{
    benchmark::RegisterBenchmark((figure + "/" + who).c_str(), body);
}

constexpr char kPlainLoop[] = "peer:a plain loop over digits";

void convert(const std::string &figure, Convert entry, Plain plain, pool::Make make, int n)
{
    add(figure, "ours", [=](benchmark::State &state) {
        Items items(make, n, 1);
        pool::Item out{};
        loop(state, [&] { entry(items.next(), out.bytes, n, n); });
    });
    add(figure, kPlainLoop, [=](benchmark::State &state) {
        Items items(make, n, 1);
        pool::Item out{};
        loop(state, [&] { plain(items.next(), out.bytes, n); });
    });
}

void toInteger(const std::string &figure, ToInteger entry, int64_t (*plain)(const uint8_t *, int), pool::Make make,
               int n)
{
    add(figure, "ours", [=](benchmark::State &state) {
        Items items(make, n, 1);
        loop(state, [&] { benchmark::DoNotOptimize(entry(items.next(), n)); });
    });
    add(figure, kPlainLoop, [=](benchmark::State &state) {
        Items items(make, n, 1);
        loop(state, [&] { benchmark::DoNotOptimize(plain(items.next(), n)); });
    });
}

void fromInteger(const std::string &figure, FromInteger entry, void (*plain)(int64_t, uint8_t *, int), int n)
{
    add(figure, "ours", [=](benchmark::State &state) {
        Integers values(n, 1);
        pool::Item out{};
        loop(state, [&] { entry(values.next(), out.bytes, n); });
    });
    add(figure, kPlainLoop, [=](benchmark::State &state) {
        Integers values(n, 1);
        pool::Item out{};
        loop(state, [&] { plain(values.next(), out.bytes, n); });
    });
}

void decNumberAddition(benchmark::State &state)
{
    decContext context;
    decContextDefault(&context, DEC_INIT_DECIMAL128);
    std::mt19937 random(1);
    std::array<decNumber, pool::kSize> numbers;
    for (decNumber &number : numbers) decNumberFromString(&number, pool::randomNumber(random, 15).c_str(), &context);
    decNumber sum;
    size_t at = 0;
    loop(state, [&] {
        decNumberAdd(&sum, &numbers[at % pool::kSize], &numbers[(at + 100) % pool::kSize], &context);
        at++;
    });
}

void copyPacked(benchmark::State &state)
{
    Items items(pool::packed, 15, 1);
    pool::Item out{};
    loop(state, [&] { _zvkcBCD_Cpy_Pckd(items.next(), out.bytes, 15, 15); });
}

// memcpy after a call, as the entry is.
__attribute__((noinline)) void copyBytes(uint8_t *to, const uint8_t *from, size_t size)
{
    benchmark::DoNotOptimize(size);
    memcpy(to, from, size);
}
void copyPlain(benchmark::State &state)
{
    Items items(pool::packed, 15, 1);
    pool::Item out{};
    loop(state, [&] { copyBytes(out.bytes, items.next(), 8); });
}

void registerAll()
{
    for (int n : {1, 2, 3, 7, 15, 16, 18, 31}) {
        std::string digits = ", " + std::to_string(n) + (n == 1 ? " digit" : " digits");
        convert("packed to zoned" + digits, _zvkcBCD_CONV_Pckd_To_ZndTO, pool::plainConvert<PackedDigits, ZonedDigits>,
                pool::packed, n);
        convert("zoned to packed" + digits, _zvkcBCD_CONV_ZndTO_To_Pckd, pool::plainConvert<ZonedDigits, PackedDigits>,
                pool::zoned, n);
        if (n == 15) {
            add("packed to zoned" + digits, "peer:decNumberAdd of 15 digits", decNumberAddition);
            add("zoned to packed" + digits, "peer:decNumberAdd of 15 digits", decNumberAddition);
        }
        if (n > 18) continue;
        toInteger("packed to 8-byte integer" + digits, _zvkcBCD_CONV_Pckd_To_Int8, pool::plainToInteger<PackedDigits>,
                  pool::packed, n);
        toInteger("zoned to 8-byte integer" + digits, _zvkcBCD_CONV_Znd_To_Int8, pool::plainToInteger<ZonedDigits>,
                  pool::zoned, n);
        fromInteger("8-byte integer to packed" + digits, _zvkcBCD_CONV_Int8_To_Pckd,
                    pool::plainFromInteger<PackedDigits>, n);
        fromInteger("8-byte integer to zoned" + digits, _zvkcBCD_CONV_Int8_To_Znd, pool::plainFromInteger<ZonedDigits>,
                    n);
    }
    add("copy packed, 15 digits", "ours", copyPacked);
    add("copy packed, 15 digits", "peer:a call and memcpy", copyPlain);
}

} // namespace

int main(int argc, char **argv)
{
    registerAll();
    benchmark::Initialize(&argc, argv);
    benchmark::RunSpecifiedBenchmarks();
    return 0;
}
