// The sort engine beside GNU sort, and SORT of a table beside std::sort over decoded keys.
//
// A million records of 100 bytes with an alphanumeric key of 10, from a file to a file: the engine
// reads records of fixed length, GNU sort the same records as lines. Once with room for all, once
// with 32 MiB.
#include <benchmark/benchmark.h>

#include <algorithm>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <dlfcn.h>
#include <random>
#include <string>
#include <unistd.h>
#include <vector>

#include "kvr2/sort.h"

namespace {

constexpr size_t kRecords = 1000000, kLength = 100;

constexpr uint32_t kPrefix = 20; // bytes that all of the records "prefixed" have before their key

struct Files {
    std::string directory, records, prefixed, lines, out;
    Files()
    {
        char name[] = "/tmp/kvr2sortXXXXXX";
        directory = mkdtemp(name);
        records = directory + "/records";
        prefixed = directory + "/prefixed";
        lines = directory + "/lines";
        out = directory + "/out";
        FILE *first = fopen(records.c_str(), "w"), *second = fopen(lines.c_str(), "w");
        FILE *third = fopen(prefixed.c_str(), "w");
        std::mt19937 random(42);
        char record[kLength];
        memset(record, '.', sizeof record);
        for (size_t i = 0; i < kRecords; i++) {
            for (int k = 0; k < 10; k++) record[k] = static_cast<char>('!' + random() % 90);
            fwrite(record, 1, kLength, first);
            fwrite(record, 1, kLength - 1, second);
            fputc('\n', second);
            fprintf(third, "%.*s", kPrefix, "CUSTOMERS OF REGION NORTH");
            fwrite(record, 1, kLength - kPrefix, third);
        }
        fclose(first);
        fclose(second);
        fclose(third);
    }
    ~Files()
    {
        for (const std::string &name : {records, prefixed, lines, out}) unlink(name.c_str());
        rmdir(directory.c_str());
    }
};

const Files &files()
{
    static Files made;
    return made;
}

SortEngine engine()
{
    // bench programs are in build/bin
    char self[4096] = {};
    if (readlink("/proc/self/exe", self, sizeof self - 1) < 0) return nullptr;
    std::string path = self;
    path = path.substr(0, path.rfind('/')) + "/../companions/libvortlite_64r.so";
    void *library = dlopen(path.c_str(), RTLD_NOW);
    return library ? reinterpret_cast<SortEngine>(dlsym(library, "sortmerge")) : nullptr;
}

void sortOurs(benchmark::State &state, uint64_t memory, uint32_t prefix = 0)
{
    const Files &all = files();
    SortEngine sort = engine();
    if (!sort) return state.SkipWithError("no engine");
    SortKeyList keys{1, 0, {{0, prefix + 10, ZVK_KEY_ALPHANUMERIC, 0, ZVK_KEY_ASCENDING, {}}}};
    for (auto _ : state) {
        unlink(all.out.c_str());
        SortIoRecord input{}, output{};
        SortControlRecord control{};
        uint32_t error = 0;
        input.path = prefix ? all.prefixed.c_str() : all.records.c_str();
        output.path = all.out.c_str();
        control.tempDir = all.directory.c_str();
        control.errnoOut = &error;
        if (sort(ZVK_SORT_START, ZVK_SORT_FIXED, kLength, &keys, nullptr, {0, memory, 0}, input, output, control) != 0)
            state.SkipWithError("the engine failed");
    }
}

void sortGnu(benchmark::State &state, const char *memory)
{
    const Files &all = files();
    std::string command = "LC_ALL=C sort -k1.1,1.10 --parallel=2 -S " + std::string(memory) + " -T " + all.directory +
                          " -o " + all.out + " " + all.lines;
    for (auto _ : state) {
        unlink(all.out.c_str());
        if (system(command.c_str()) != 0) state.SkipWithError("sort failed");
    }
}

// ---- tables

constexpr int kRows = 10000, kRowLength = 40, kPackedLength = 5;

struct Row {
    uint8_t bytes[kRowLength];
};

std::vector<Row> makeRows()
{
    std::mt19937 random(7);
    std::vector<Row> rows(kRows);
    for (Row &row : rows) {
        for (uint8_t &byte : row.bytes) byte = static_cast<uint8_t>(random());
        for (int i = 0; i < kPackedLength; i++)
            row.bytes[8 + i] = static_cast<uint8_t>(random() % 10 << 4 | random() % 10);
        row.bytes[8 + kPackedLength - 1] =
            static_cast<uint8_t>((row.bytes[8 + kPackedLength - 1] & 0xF0) | (random() & 1 ? 0xC : 0xD));
    }
    return rows;
}

int64_t decode(const Row &row)
{
    int64_t value = 0;
    const uint8_t *bytes = row.bytes + 8;
    for (int i = 0; i < kPackedLength - 1; i++) value = value * 100 + (bytes[i] >> 4) * 10 + (bytes[i] & 15);
    value = value * 10 + (bytes[kPackedLength - 1] >> 4);
    return (bytes[kPackedLength - 1] & 15) == 0xC ? value : -value;
}

template <class Sort>
void sortTable(benchmark::State &state, Sort sort)
{
    std::vector<Row> rows = makeRows(), work;
    for (auto _ : state) {
        work = rows;
        sort(work);
        benchmark::DoNotOptimize(work.data());
    }
}

void tableOurs(benchmark::State &state)
{
    TableSortKey key{8, kPackedLength, ZVK_KEY_PACKED, 0, ZVK_KEY_ASCENDING, {}};
    sortTable(state, [&](std::vector<Row> &rows) { _zvkcTSort(0, rows.data(), kRowLength, kRows, nullptr, 1, &key); });
}

void tableStd(benchmark::State &state)
{
    sortTable(state, [](std::vector<Row> &rows) {
        std::sort(rows.begin(), rows.end(), [](const Row &a, const Row &b) { return decode(a) < decode(b); });
    });
}

} // namespace

BENCHMARK_CAPTURE(sortOurs, , 2ull << 30)
    ->Name("SORT of 1,000,000 records in memory/ours")
    ->UseRealTime()
    ->Unit(benchmark::kMillisecond);
BENCHMARK_CAPTURE(sortGnu, , "2G")
    ->Name("SORT of 1,000,000 records in memory/peer:GNU sort")
    ->UseRealTime()
    ->Unit(benchmark::kMillisecond);
BENCHMARK_CAPTURE(sortOurs, , 32ull << 20)
    ->Name("SORT of 1,000,000 records in 32 MiB/ours")
    ->UseRealTime()
    ->Unit(benchmark::kMillisecond);
BENCHMARK_CAPTURE(sortGnu, , "32M")
    ->Name("SORT of 1,000,000 records in 32 MiB/peer:GNU sort")
    ->UseRealTime()
    ->Unit(benchmark::kMillisecond);
BENCHMARK_CAPTURE(sortOurs, , 2ull << 30, kPrefix)
    ->Name("SORT of 1,000,000 records, keys with a common prefix/ours")
    ->UseRealTime()
    ->Unit(benchmark::kMillisecond);
BENCHMARK_CAPTURE(sortOurs, , 2ull << 30)
    ->Name("SORT of 1,000,000 records, keys with a common prefix/peer:the same without it")
    ->UseRealTime()
    ->Unit(benchmark::kMillisecond);
BENCHMARK_CAPTURE(sortOurs, , 2ull << 30)
    ->Name("SORT of 1,000,000 records, spilling saved/ours")
    ->UseRealTime()
    ->Unit(benchmark::kMillisecond);
BENCHMARK_CAPTURE(sortOurs, , 32ull << 20)
    ->Name("SORT of 1,000,000 records, spilling saved/peer:the same in 32 MiB")
    ->UseRealTime()
    ->Unit(benchmark::kMillisecond);
BENCHMARK(tableOurs)->Name("SORT of a table, 10,000 rows, packed key/ours");
BENCHMARK(tableStd)->Name("SORT of a table, 10,000 rows, packed key/peer:std::sort, keys decoded");

BENCHMARK_MAIN();
