// Edited moves beside snprintf of a comparable number.
#include <benchmark/benchmark.h>

#include <cstdio>
#include <cstring>

#include "kvr2/edited_moves.h"

namespace {

constexpr char kPicture[] = "$$,$$$,$$9.99CR";

struct Record {
    alignas(8) uint8_t bytes[64];
    Record()
    {
        auto *record = reinterpret_cast<NumericEditRecord *>(bytes);
        record->length = sizeof kPicture - 1;
        record->decimalPoint = '.';
        record->currencySign = '$';
        record->editClass = ZVK_EDIT_FLOAT_CURRENCY_PLUS;
        memcpy(bytes + offsetof(NumericEditRecord, picture), kPicture, sizeof kPicture - 1);
    }
    const NumericEditRecord *get() const { return reinterpret_cast<const NumericEditRecord *>(bytes); }
};

// Different numbers in turn, so that no branch is learned by heart.
constexpr int kNumbers = 64;

void editOurs(benchmark::State &state)
{
    Record record;
    uint8_t numbers[kNumbers][10], item[16];
    unsigned seed = 1;
    for (auto &number : numbers) {
        seed = seed * 1103515245 + 12345;
        char text[11];
        snprintf(text, sizeof text, "%c%09u", seed & 0x10000 ? '-' : '+',
                 (seed >> 8) % (seed & 0x20000 ? 1000000u : 1000000000u) % 1000000000u);
        memcpy(number, text, sizeof number);
    }
    int next = 0;
    for (auto _ : state) {
        _zvkcMoveNumToNumEdit(record.get(), numbers[next++ % kNumbers], item);
        benchmark::DoNotOptimize(item);
    }
}

void editSnprintf(benchmark::State &state)
{
    int64_t numbers[kNumbers];
    unsigned seed = 1;
    for (int64_t &number : numbers) {
        seed = seed * 1103515245 + 12345;
        number = (seed >> 8) % (seed & 0x20000 ? 1000000u : 1000000000u) % 1000000000u;
        if (seed & 0x10000) number = -number;
    }
    char item[64];
    int next = 0;
    for (auto _ : state) {
        int64_t number = numbers[next++ % kNumbers], size = number < 0 ? -number : number;
        snprintf(item, sizeof item, "%10s%3ld,%03ld.%02ld%s", "$", size / 100000, size / 100 % 1000, size % 100, number < 0 ? "CR" : "  ");
        benchmark::DoNotOptimize(item);
    }
}

BENCHMARK(editOurs)->Name("edit $$,$$$,$$9.99CR/ours");
BENCHMARK(editSnprintf)->Name("edit $$,$$$,$$9.99CR/peer:snprintf");

} // namespace

BENCHMARK_MAIN();
