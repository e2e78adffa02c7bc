// Conversions of 64 KiB of single-byte text between the default code pages, beside ICU called
// plainly for the same run.
#include <benchmark/benchmark.h>

#include <cstdlib>
#include <cstring>
#include <unicode/ucnv.h>
#include <vector>

#include "kvr2/code_pages.h"
#include "kvr2/run_unit.h"

namespace {

constexpr size_t kLength = 65536;

struct Buffers {
    std::vector<uint8_t> source = std::vector<uint8_t>(kLength);
    std::vector<uint8_t> result = std::vector<uint8_t>(kLength + 8);
    std::vector<UChar> units = std::vector<UChar>(kLength + 8);
    Buffers()
    {
        setenv("LC_ALL", "C", 1); // so that both default pages are single-byte
        if (!_zvkProccom) {
            static Proccom own;
            own.ccsid = -1;
            _zvkProccom = &own;
        }
        const char text[] = "THE QUICK BROWN FOX JUMPS OVER THE LAZY DOG, 0123456789 times. ";
        for (size_t i = 0; i < kLength; i++) source[i] = static_cast<uint8_t>(text[i % (sizeof text - 1)]);
    }
};

// ICU's converter of a number, by its name.
UConverter *openNumber(const char *number)
{
    UErrorCode status = U_ZERO_ERROR;
    for (int32_t i = 0; i < ucnv_countAvailable(); i++)
        if (strstr(ucnv_getAvailableName(i), number)) return ucnv_open(ucnv_getAvailableName(i), &status);
    return nullptr;
}

void combinedOurs(benchmark::State &state)
{
    Buffers buffers;
    for (auto _ : state) {
        uint32_t capacity = kLength;
        int32_t status = _zvkUniAtoE(buffers.source.data(), kLength, buffers.result.data(), &capacity);
        if (status != 0) state.SkipWithError("conversion");
        benchmark::ClobberMemory();
    }
}

void throughUtf16Ours(benchmark::State &state)
{
    Buffers buffers;
    for (auto _ : state) {
        uint32_t utf16 = 2 * kLength + 4, capacity = kLength + 8;
        uint8_t *units = reinterpret_cast<uint8_t *>(buffers.units.data());
        _zvkConvToUnicode(buffers.source.data(), kLength, units, &utf16, nullptr, ZVK_CODE_PAGE_NATIVE);
        int32_t status =
            _zvkConvFromUnicode(units, utf16, buffers.result.data(), &capacity, nullptr, ZVK_CODE_PAGE_EBCDIC);
        if (status != 0 || capacity != kLength) state.SkipWithError("conversion");
        benchmark::ClobberMemory();
    }
}

void plainIcu(benchmark::State &state)
{
    Buffers buffers;
    UErrorCode status = U_ZERO_ERROR;
    UConverter *native = ucnv_open("ISO-8859-1", &status), *ebcdic = openNumber("-1140_");
    for (auto _ : state) {
        status = U_ZERO_ERROR;
        int32_t units = ucnv_toUChars(native, buffers.units.data(), kLength + 2,
                                      reinterpret_cast<char *>(buffers.source.data()), kLength, &status);
        ucnv_fromUChars(ebcdic, reinterpret_cast<char *>(buffers.result.data()), kLength + 8, buffers.units.data(),
                        units, &status);
        if (U_FAILURE(status)) state.SkipWithError("conversion");
        benchmark::ClobberMemory();
    }
    ucnv_close(native);
    ucnv_close(ebcdic);
}

void namedOurs(benchmark::State &state)
{
    Buffers buffers;
    for (auto _ : state) {
        uint32_t capacity = 64;
        _zvkConvToUnicode(buffers.source.data(), 20, buffers.result.data(), &capacity, "TQX-273", 7);
        benchmark::ClobberMemory();
    }
}

void namedIcu(benchmark::State &state)
{
    Buffers buffers;
    UConverter *probe = openNumber("-273_");
    UErrorCode status = U_ZERO_ERROR;
    char name[64];
    strncpy(name, ucnv_getName(probe, &status), sizeof name - 1);
    ucnv_close(probe);
    for (auto _ : state) {
        status = U_ZERO_ERROR;
        UConverter *converter = ucnv_open(name, &status);
        ucnv_toUChars(converter, buffers.units.data(), 32, reinterpret_cast<char *>(buffers.source.data()), 20,
                      &status);
        ucnv_close(converter);
        benchmark::ClobberMemory();
    }
}

BENCHMARK(combinedOurs)->Name("native to EBCDIC, 64 KiB, by the byte table/ours");
BENCHMARK(plainIcu)->Name("native to EBCDIC, 64 KiB, by the byte table/peer:ICU");
BENCHMARK(throughUtf16Ours)->Name("native to UTF-16 to EBCDIC, 64 KiB/ours");
BENCHMARK(plainIcu)->Name("native to UTF-16 to EBCDIC, 64 KiB/peer:ICU");
BENCHMARK(namedOurs)->Name("20 bytes to UTF-16 from a named page/ours");
BENCHMARK(namedIcu)->Name("20 bytes to UTF-16 from a named page/peer:ICU open, convert, close");

} // namespace

BENCHMARK_MAIN();
