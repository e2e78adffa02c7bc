// DISPLAY of a line to a file beside fprintf of the same line; edited moves beside snprintf of a
// comparable number.
#include <benchmark/benchmark.h>

#include <cstdio>
#include <cstring>

#include "kvr2/console.h"
#include "kvr2/edited_moves.h"
#include "kvr2/run_unit.h"

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
        snprintf(item, sizeof item, "%10s%3ld,%03ld.%02ld%s", "$", size / 100000, size / 100 % 1000, size % 100,
                 number < 0 ? "CR" : "  ");
        benchmark::DoNotOptimize(item);
    }
}

void displayOurs(benchmark::State &state)
{
    static Proccom own;
    if (!_zvkProccom) _zvkProccom = &own;
    FILE *file = _zvkProccom->sysout = tmpfile();
    int32_t number = 0;
    const char name[] = "CUSTOMER ";
    const DisplayRequest request{3, ZVK_DISPLAY_SYSOUT, 0, '.', 0};
    for (auto _ : state) {
        if (++number % 100000 == 0) rewind(file);
        DisplayItem items[3] = {{name, sizeof name - 1, 0, ZVK_DISPLAY_TEXT, 0},
                                {&number, sizeof number, 9, ZVK_DISPLAY_SIGNED_BINARY, 0},
                                {" BALANCE DUE", 12, 0, ZVK_DISPLAY_TEXT, 0}};
        _zvkcDisplay(&request, items);
    }
    _zvkProccom->sysout = nullptr;
    fclose(file);
}

void displayFprintf(benchmark::State &state)
{
    FILE *file = tmpfile();
    int32_t number = 0;
    const char name[] = "CUSTOMER ";
    for (auto _ : state) {
        if (++number % 100000 == 0) rewind(file);
        fprintf(file, "%.*s%.9d%.*s\n", 9, name, number, 12, " BALANCE DUE");
    }
    fclose(file);
}

BENCHMARK(displayOurs)->Name("DISPLAY of three items to a file/ours");
BENCHMARK(displayFprintf)->Name("DISPLAY of three items to a file/peer:fprintf");
BENCHMARK(editOurs)->Name("edit $$,$$$,$$9.99CR/ours");
BENCHMARK(editSnprintf)->Name("edit $$,$$$,$$9.99CR/peer:snprintf");

} // namespace

BENCHMARK_MAIN();
