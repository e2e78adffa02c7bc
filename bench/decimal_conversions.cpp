// Copies and conversions of 15 digits, through the exported entries, beside an addition of the same
// length in another decimal library and beside memcpy.
#include <benchmark/benchmark.h>
#include <cstring>

extern "C" {
#define DECNUMDIGITS 34
#include <decNumber.h>
}

#include "kvr2/decimal_conversions.h"

namespace {

const uint8_t packed[8] = {0x12, 0x34, 0x56, 0x78, 0x90, 0x12, 0x34, 0x5D};
uint8_t zoned[] = "12345678901234u";
uint8_t out[32];

template <class Body>
void loop(benchmark::State &state, Body body)
{
    for (auto _ : state) {
        body();
        benchmark::ClobberMemory();
    }
}

void packedToZoned(benchmark::State &state)
{
    loop(state, [] { _zvkcBCD_CONV_Pckd_To_ZndTO(packed, out, 15, 15); });
}
void zonedToPacked(benchmark::State &state)
{
    loop(state, [] { _zvkcBCD_CONV_ZndTO_To_Pckd(zoned, out, 15, 15); });
}
void packedToInteger(benchmark::State &state)
{
    loop(state, [] { benchmark::DoNotOptimize(_zvkcBCD_CONV_Pckd_To_Int8(packed, 15)); });
}
void integerToPacked(benchmark::State &state)
{
    int64_t value = -123456789012345;
    loop(state, [&] {
        benchmark::DoNotOptimize(value);
        _zvkcBCD_CONV_Int8_To_Pckd(value, out, 15);
    });
}

void decNumberAddition(benchmark::State &state)
{
    decContext context;
    decContextDefault(&context, DEC_INIT_DECIMAL128);
    decNumber a, b, sum;
    decNumberFromString(&a, "123456789012345", &context);
    decNumberFromString(&b, "987654321098765", &context);
    loop(state, [&] { decNumberAdd(&sum, &a, &b, &context); });
}

#define BESIDE_ADDITION(routine, title)                                                                                \
    BENCHMARK(routine)->Name(title "/ours");                                                                           \
    BENCHMARK(decNumberAddition)->Name(title "/peer:decNumberAdd of 15 digits")

BESIDE_ADDITION(packedToZoned, "packed to zoned, 15 digits");
BESIDE_ADDITION(zonedToPacked, "zoned to packed, 15 digits");
BESIDE_ADDITION(packedToInteger, "packed to 8-byte integer, 15 digits");
BESIDE_ADDITION(integerToPacked, "8-byte integer to packed, 15 digits");

void copyPacked(benchmark::State &state)
{
    loop(state, [] { _zvkcBCD_Cpy_Pckd(packed, out, 15, 15); });
}

// memcpy behind a call, as the entry is.
__attribute__((noinline)) void copyBytes(uint8_t *to, const uint8_t *from, size_t size)
{
    benchmark::DoNotOptimize(size);
    memcpy(to, from, size);
}
void copyPlain(benchmark::State &state)
{
    loop(state, [] { copyBytes(out, packed, 8); });
}
BENCHMARK(copyPacked)->Name("copy packed, 15 digits/ours");
BENCHMARK(copyPlain)->Name("copy packed, 15 digits/peer:a call and memcpy");

} // namespace

BENCHMARK_MAIN();
