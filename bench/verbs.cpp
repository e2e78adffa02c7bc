// INSPECT, STRING, UNSTRING, SEARCH ALL, a class test and a comparison, each beside the loop or the
// C library's routines that a C programmer would write for the same.
#include <benchmark/benchmark.h>

#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <vector>

#include "kvr2/conditions.h"
#include "kvr2/inspect.h"
#include "kvr2/search_all.h"
#include "kvr2/string_unstring.h"

namespace {

constexpr size_t kLine = 80, kLong = 65536;

std::vector<uint8_t> textOf(size_t length)
{
    const char text[] = "THE QUICK BROWN FOX, OF 1,234.50 DOLLARS, JUMPS OVER A LAZY DOG; ";
    std::vector<uint8_t> item(length);
    for (size_t i = 0; i < length; i++) item[i] = static_cast<uint8_t>(text[i % (sizeof text - 1)]);
    return item;
}

InspectBlock statement(std::vector<uint8_t> &item, uint32_t kind, const char *compared, const void *result)
{
    size_t length = compared ? strlen(compared) : 0;
    InspectBlock block{};
    block.phraseCount = 1;
    block.length = item.size();
    block.data = item.data();
    block.phrases[0].result = {kind, 0, length, const_cast<void *>(result)};
    block.phrases[0].compared = {0, 0, length, const_cast<char *>(compared)};
    return block;
}

void tallyOurs(benchmark::State &state)
{
    auto item = textOf(static_cast<size_t>(state.range(0)));
    uint64_t counter = 0;
    InspectBlock block = statement(item, ZVK_INSPECT_TALLYING, ",", &counter);
    for (auto _ : state) {
        _zvkcInspect(&block);
        benchmark::ClobberMemory();
    }
}
void tallyLoop(benchmark::State &state)
{
    auto item = textOf(static_cast<size_t>(state.range(0)));
    uint64_t counter = 0;
    uint8_t wanted = ',';
    for (auto _ : state) {
        benchmark::DoNotOptimize(wanted);
        for (uint8_t byte : item) counter += byte == wanted;
        benchmark::DoNotOptimize(counter);
    }
}

// The replaced byte goes back and forth, so that there is something to replace in every round.
void replaceOurs(benchmark::State &state)
{
    auto item = textOf(static_cast<size_t>(state.range(0)));
    InspectBlock there = statement(item, ZVK_INSPECT_REPLACING, ",", "."),
                 back = statement(item, ZVK_INSPECT_REPLACING, ".", ",");
    bool turn = false;
    for (auto _ : state) {
        _zvkcInspect((turn = !turn) ? &there : &back);
        benchmark::ClobberMemory();
    }
}
void replaceLoop(benchmark::State &state)
{
    auto item = textOf(static_cast<size_t>(state.range(0)));
    uint8_t from = '.', to = ',';
    for (auto _ : state) {
        std::swap(from, to);
        benchmark::DoNotOptimize(from);
        for (uint8_t &byte : item)
            if (byte == from) byte = to;
        benchmark::ClobberMemory();
    }
}

const char kUpper[] = "ABCDEFGHIJKLMNOPQRSTUVWXYZ", kLower[] = "abcdefghijklmnopqrstuvwxyz";

void convertOurs(benchmark::State &state)
{
    auto item = textOf(kLong);
    InspectBlock block = statement(item, ZVK_INSPECT_CONVERTING, kUpper, kLower);
    for (auto _ : state) {
        _zvkcInspect(&block);
        benchmark::ClobberMemory();
    }
}
void convertLoop(benchmark::State &state)
{
    auto item = textOf(kLong);
    uint8_t table[256];
    for (auto _ : state) {
        for (size_t i = 0; i < 256; i++) table[i] = static_cast<uint8_t>(i);
        for (size_t i = 0; i < 26; i++) table[static_cast<uint8_t>(kUpper[i])] = static_cast<uint8_t>(kLower[i]);
        for (uint8_t &byte : item) byte = table[byte];
        benchmark::ClobberMemory();
    }
}

#define BESIDE_A_LOOP(ours, loop, title, length)                                                                       \
    BENCHMARK(ours)->Name(title "/ours")->Arg(length);                                                                 \
    BENCHMARK(loop)->Name(title "/peer:byte loop")->Arg(length)

BESIDE_A_LOOP(tallyOurs, tallyLoop, "INSPECT TALLYING ALL of a byte, 80 bytes", kLine);
BESIDE_A_LOOP(tallyOurs, tallyLoop, "INSPECT TALLYING ALL of a byte, 64 KiB", kLong);
BESIDE_A_LOOP(replaceOurs, replaceLoop, "INSPECT REPLACING ALL of a byte, 80 bytes", kLine);
BESIDE_A_LOOP(replaceOurs, replaceLoop, "INSPECT REPLACING ALL of a byte, 64 KiB", kLong);
BENCHMARK(convertOurs)->Name("INSPECT CONVERTING, 64 KiB/ours");
BENCHMARK(convertLoop)->Name("INSPECT CONVERTING, 64 KiB/peer:table loop");

// A CSV line of twelve fields.
constexpr size_t kFields = 12, kFieldSize = 12;
const char kCsv[] = "100234,SMITH,JOHN,12 MAIN STREET,SPRINGFIELD,IL,62704,2024-11-03,1250.00,EUR,A,last field";

void unstringOurs(benchmark::State &state)
{
    char items[kFields][kFieldSize];
    UnstringTarget targets[kFields] = {};
    for (size_t i = 0; i < kFields; i++) {
        targets[i].address = items[i];
        targets[i].size = kFieldSize;
    }
    UnstringBlock block{};
    block.source = kCsv;
    block.sourceLength = sizeof kCsv - 1;
    block.delimiterCount = 1;
    block.targetCount = kFields;
    block.delimiters[0] = {",", 1, 0, 0};
    uint32_t overflow = 0;
    for (auto _ : state) {
        _zvkcUnString(&block, targets, nullptr, &overflow);
        benchmark::ClobberMemory();
    }
}
void unstringStrsep(benchmark::State &state)
{
    char items[kFields][kFieldSize], line[sizeof kCsv];
    for (auto _ : state) {
        memcpy(line, kCsv, sizeof line); // strsep writes into it
        char *rest = line;
        for (size_t i = 0; i < kFields && rest; i++) {
            const char *field = strsep(&rest, ",");
            size_t length = strlen(field), kept = length < kFieldSize ? length : kFieldSize;
            memcpy(items[i], field, kept);
            memset(items[i] + kept, ' ', kFieldSize - kept);
        }
        benchmark::ClobberMemory();
    }
}
BENCHMARK(unstringOurs)->Name("UNSTRING of a CSV line of 12 fields/ours");
BENCHMARK(unstringStrsep)->Name("UNSTRING of a CSV line of 12 fields/peer:strsep, memcpy and memset");

// Six items: three whole, three up to the first blank.
const char kCity[] = "SPRINGFIELD         ", kFirst[] = "JOHN                ", kLast[] = "SMITH               ";

void stringOurs(benchmark::State &state)
{
    char target[80];
    struct {
        StringBlock head;
        StringSource more[2];
        StringGroup group;
        StringSource rest[2];
    } block{};
    block.head.target = target;
    block.head.targetLength = sizeof target;
    block.head.groupCount = 2;
    block.head.groups[0].delimiter = " ";
    block.head.groups[0].delimiterLength = 1;
    block.head.groups[0].sourceCount = 3;
    block.head.groups[0].sources[0] = {kFirst, sizeof kFirst - 1};
    block.more[0] = {kLast, sizeof kLast - 1};
    block.more[1] = {kCity, sizeof kCity - 1};
    block.group.sourceCount = 3;
    block.group.sources[0] = {", ", 2};
    block.rest[0] = {"62704", 5};
    block.rest[1] = {" IL", 3};
    uint32_t overflow = 0;
    for (auto _ : state) {
        memset(target, ' ', sizeof target);
        _zvkcString(&block.head, nullptr, &overflow);
        benchmark::ClobberMemory();
    }
}
void stringSnprintf(benchmark::State &state)
{
    char target[81];
    for (auto _ : state) {
        auto upTo = [](const char *item) { return static_cast<int>(strcspn(item, " ")); };
        int length = snprintf(target, sizeof target, "%.*s%.*s%.*s%s%s%s", upTo(kFirst), kFirst, upTo(kLast), kLast,
                              upTo(kCity), kCity, ", ", "62704", " IL");
        memset(target + length, ' ', sizeof target - static_cast<size_t>(length));
        benchmark::ClobberMemory();
    }
}
BENCHMARK(stringOurs)->Name("STRING of six items/ours");
BENCHMARK(stringSnprintf)->Name("STRING of six items/peer:snprintf");

// Rows of 40 bytes: a packed key of 9 digits, and its digits as text.
struct Row {
    uint8_t packed[5];
    char text[12];
    char rest[23];
};
constexpr int kRows = 100000;

void setPacked(uint8_t *item, unsigned value)
{
    item[4] = static_cast<uint8_t>(value % 10 << 4 | 0x0C);
    value /= 10;
    for (int i = 3; i >= 0; i--, value /= 100) item[i] = static_cast<uint8_t>(value / 10 % 10 << 4 | value % 10);
}
unsigned keyOf(unsigned row) { return row * 7 + 1000; }

const std::vector<Row> &rows()
{
    static const std::vector<Row> all = [] {
        std::vector<Row> made(kRows);
        for (unsigned i = 0; i < kRows; i++) {
            setPacked(made[i].packed, keyOf(i));
            char text[16];
            snprintf(text, sizeof text, "CU%010u", keyOf(i));
            memcpy(made[i].text, text, sizeof made[i].text);
        }
        return made;
    }();
    return all;
}

// Arguments in no order, so that no path through the table is learned.
constexpr unsigned kWanted = 4096;
std::vector<Row> wantedRows()
{
    std::vector<Row> wanted;
    uint32_t seed = 1;
    for (unsigned i = 0; i < kWanted; i++) {
        seed = seed * 1664525 + 1013904223;
        wanted.push_back(rows()[(seed >> 8) % kRows]);
    }
    return wanted;
}

void searchOurs(benchmark::State &state, uint8_t type, uint32_t length, uint64_t offset)
{
    struct {
        SearchHeader head;
        uint64_t length;
        uint8_t form;
    } header{};
    header.head.keyCount = header.head.argumentCount = 1;
    header.head.keys[0] = {type, {}, length, offset};
    header.length = length;
    auto wanted = wantedRows();
    auto *table = reinterpret_cast<uint8_t *>(const_cast<Row *>(rows().data()));
    unsigned next = 0;
    for (auto _ : state) {
        const uint8_t *value = reinterpret_cast<const uint8_t *>(&wanted[next++ % kWanted]) + offset;
        SearchArgument argument = {value, value};
        benchmark::DoNotOptimize(_zvkcSrchAll(&header.head, table, kRows, sizeof(Row), &argument, nullptr, nullptr));
    }
}
void searchBsearch(benchmark::State &state, int (*compare)(const void *, const void *))
{
    auto wanted = wantedRows();
    unsigned next = 0;
    for (auto _ : state)
        benchmark::DoNotOptimize(bsearch(&wanted[next++ % kWanted], rows().data(), kRows, sizeof(Row), compare));
}
int64_t packedValue(const Row *row)
{
    int64_t value = 0;
    for (int i = 0; i < 4; i++) value = value * 100 + (row->packed[i] >> 4) * 10 + (row->packed[i] & 15);
    value = value * 10 + (row->packed[4] >> 4);
    return (row->packed[4] & 15) == 13 ? -value : value;
}
int comparePacked(const void *left, const void *right)
{
    int64_t a = packedValue(static_cast<const Row *>(left)), b = packedValue(static_cast<const Row *>(right));
    return (a > b) - (a < b);
}
int compareText(const void *left, const void *right)
{
    return memcmp(static_cast<const Row *>(left)->text, static_cast<const Row *>(right)->text, sizeof Row::text);
}
BENCHMARK_CAPTURE(searchOurs, packed, ZVK_SEARCH_PACKED, 5, offsetof(Row, packed))
    ->Name("SEARCH ALL of 100,000 rows, packed key/ours");
BENCHMARK_CAPTURE(searchBsearch, packed, comparePacked)->Name("SEARCH ALL of 100,000 rows, packed key/peer:bsearch");
BENCHMARK_CAPTURE(searchOurs, text, ZVK_SEARCH_ALPHANUMERIC, 12, offsetof(Row, text))
    ->Name("SEARCH ALL of 100,000 rows, alphanumeric key/ours");
BENCHMARK_CAPTURE(searchBsearch, text, compareText)->Name("SEARCH ALL of 100,000 rows, alphanumeric key/peer:bsearch");

const uint8_t kNumber[] = "012345678901234";

void numericOurs(benchmark::State &state)
{
    for (auto _ : state) benchmark::DoNotOptimize(_zvkcClasZonedDec(ZVK_CLASS_SIGN_NONE, kNumber, 15));
}
// The item and its length come from outside, as they do for the entry.
__attribute__((noinline)) int areDigits(const uint8_t *item, int length)
{
    for (int i = 0; i < length; i++)
        if (item[i] < '0' || item[i] > '9') return 0;
    return 1;
}
void numericLoop(benchmark::State &state)
{
    int length = 15;
    for (auto _ : state) {
        benchmark::DoNotOptimize(length);
        benchmark::DoNotOptimize(areDigits(kNumber, length));
    }
}
BENCHMARK(numericOurs)->Name("NUMERIC of 15 zoned bytes/ours");
BENCHMARK(numericLoop)->Name("NUMERIC of 15 zoned bytes/peer:byte loop");

struct Compared {
    uint8_t weights[256];
    std::vector<uint8_t> left = textOf(kLine), right = left;
    Compared()
    {
        for (int i = 0; i < 256; i++) weights[i] = static_cast<uint8_t>(255 - i);
        right.back() ^= 1;
    }
};
__attribute__((noinline)) int compareWeights(const uint8_t *left, const uint8_t *right, int length,
                                             const uint8_t *weights)
{
    for (int i = 0; i < length; i++)
        if (weights[left[i]] != weights[right[i]]) return weights[left[i]] - weights[right[i]];
    return 0;
}
void compareOurs(benchmark::State &state)
{
    Compared items;
    for (auto _ : state)
        benchmark::DoNotOptimize(_zvkcCmpACS(items.left.data(), kLine, items.right.data(), kLine, items.weights));
}
void compareLoop(benchmark::State &state)
{
    Compared items;
    int length = kLine;
    for (auto _ : state) {
        benchmark::DoNotOptimize(length);
        benchmark::DoNotOptimize(compareWeights(items.left.data(), items.right.data(), length, items.weights));
    }
}
BENCHMARK(compareOurs)->Name("comparison of 80 bytes under an alphabet/ours");
BENCHMARK(compareLoop)->Name("comparison of 80 bytes under an alphabet/peer:byte loop");

} // namespace

BENCHMARK_MAIN();
