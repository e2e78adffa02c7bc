// Dates beside the C library: day numbers beside timegm, pictures beside strptime and strftime,
// items beside both, and comparisons beside memcmp of the text.
#include <benchmark/benchmark.h>

#include <cstring>
#include <ctime>
#include <string>
#include <vector>

#include "kvr2/kvr2.h"

namespace {

// Days of some sixty years, in no order.
constexpr size_t kDays = 1024;

struct Days {
    std::vector<tm> parts;
    std::vector<std::string> iso, stamps, german;
    std::vector<int32_t> lilian, dates;
    Days()
    {
        for (size_t i = 0; i < kDays; i++) {
            time_t at = static_cast<time_t>(i * 7919 % 20000) * 86400 + static_cast<time_t>(i * 104729 % 86400);
            tm each;
            gmtime_r(&at, &each);
            char text[64];
            strftime(text, sizeof text, "%Y-%m-%d", &each);
            iso.push_back(text);
            strftime(text, sizeof text, "%d.%m.%Y", &each);
            german.push_back(text);
            strftime(text, sizeof text, "%Y-%m-%d-%H:%M:%S.123456", &each);
            stamps.push_back(text);
            parts.push_back(each);
            lilian.push_back(static_cast<int32_t>(at / 86400) + 141428);
            dates.push_back((each.tm_year + 1900) * 10000 + (each.tm_mon + 1) * 100 + each.tm_mday);
        }
    }
};

const Days &days()
{
    static Days made;
    return made;
}

void integerOfDate(benchmark::State &state)
{
    size_t i = 0;
    for (auto _ : state) benchmark::DoNotOptimize(_zvkIntegerOfDate(days().dates[i++ % kDays]));
}
void integerOfDateSystem(benchmark::State &state)
{
    size_t i = 0;
    for (auto _ : state) {
        int32_t date = days().dates[i++ % kDays];
        tm parts{};
        parts.tm_year = date / 10000 - 1900;
        parts.tm_mon = date / 100 % 100 - 1;
        parts.tm_mday = date % 100;
        benchmark::DoNotOptimize(timegm(&parts));
    }
}

ZVK_VSTRING(10) isoPicture{10, {'Y', 'Y', 'Y', 'Y', '-', 'M', 'M', '-', 'D', 'D'}};

void lsvdays(benchmark::State &state)
{
    size_t i = 0;
    ZVK_VSTRING(10) text{10, {}};
    int32_t lilian;
    FeedbackCode fc;
    for (auto _ : state) {
        memcpy(text.text, days().iso[i++ % kDays].data(), 10);
        LSVDAYS(reinterpret_cast<VSTRING *>(&text), reinterpret_cast<VSTRING *>(&isoPicture), &lilian, &fc);
        benchmark::DoNotOptimize(lilian);
    }
}
void lsvdaysSystem(benchmark::State &state)
{
    size_t i = 0;
    for (auto _ : state) {
        tm parts{};
        strptime(days().iso[i++ % kDays].c_str(), "%Y-%m-%d", &parts);
        benchmark::DoNotOptimize(timegm(&parts));
    }
}

void lsvdate(benchmark::State &state)
{
    size_t i = 0;
    char out[80];
    FeedbackCode fc;
    for (auto _ : state) {
        LSVDATE(&days().lilian[i++ % kDays], reinterpret_cast<VSTRING *>(&isoPicture), out, &fc);
        benchmark::DoNotOptimize(out);
        benchmark::ClobberMemory();
    }
}
void lsvdateSystem(benchmark::State &state)
{
    size_t i = 0;
    char out[80];
    for (auto _ : state) {
        tm parts;
        time_t at = (days().lilian[i++ % kDays] - 141428) * int64_t{86400};
        gmtime_r(&at, &parts);
        strftime(out, sizeof out, "%Y-%m-%d", &parts);
        benchmark::DoNotOptimize(out);
        benchmark::ClobberMemory();
    }
}

void lsvsecs(benchmark::State &state)
{
    size_t i = 0;
    ZVK_VSTRING(19) text{19, {}}, picture{19, {}};
    memcpy(picture.text, "YYYY-MM-DD-HH:MI:SS", 19);
    double seconds;
    FeedbackCode fc;
    for (auto _ : state) {
        memcpy(text.text, days().stamps[i++ % kDays].data(), 19);
        LSVSECS(reinterpret_cast<VSTRING *>(&text), reinterpret_cast<VSTRING *>(&picture), &seconds, &fc);
        benchmark::DoNotOptimize(seconds);
    }
}
void lsvsecsSystem(benchmark::State &state)
{
    size_t i = 0;
    for (auto _ : state) {
        tm parts{};
        strptime(days().stamps[i++ % kDays].c_str(), "%Y-%m-%d-%H:%M:%S", &parts);
        benchmark::DoNotOptimize(timegm(&parts));
    }
}

FormatEntry kIso[] = {{15, 0, 0}, {3, 0, 0}, {12, 0, 0}, {3, 0, 0}, {10, 0, 0}};
FormatEntry kGerman[] = {{10, 0, 0}, {4, 0, 0}, {12, 0, 0}, {4, 0, 0}, {15, 0, 0}};
FormatEntry kStamp[] = {{15, 0, 0}, {3, 0, 0},  {12, 0, 0}, {3, 0, 0},  {10, 0, 0}, {3, 0, 0}, {16, 0, 0},
                        {7, 0, 0},  {18, 0, 0}, {7, 0, 0},  {19, 0, 0}, {4, 0, 0},  {31, 0, 0}};

FD descriptor(uint32_t category, FormatEntry *entries, int16_t count, uint32_t length)
{
    FD fd{};
    fd.category = category;
    fd.storageLength = length;
    fd.diffLength.actualLength = static_cast<int16_t>(length);
    fd.numberOfEntries = count;
    fd.formatLiteralPtr = "";
    fd.formatEntriesPtr = entries;
    return fd;
}

void moveDate(benchmark::State &state)
{
    FD from = descriptor(ctDATE, kIso, 5, 10), to = descriptor(ctDATE, kGerman, 5, 10);
    size_t i = 0;
    char out[10];
    for (auto _ : state) {
        _zvkcDateTime_Move(days().iso[i++ % kDays].data(), out, &from, &to, 0, 1950, NewCallInfo{});
        benchmark::DoNotOptimize(out);
        benchmark::ClobberMemory();
    }
}
void moveDateSystem(benchmark::State &state)
{
    size_t i = 0;
    char out[16];
    for (auto _ : state) {
        tm parts{};
        strptime(days().iso[i++ % kDays].c_str(), "%Y-%m-%d", &parts);
        strftime(out, sizeof out, "%d.%m.%Y", &parts);
        benchmark::DoNotOptimize(out);
        benchmark::ClobberMemory();
    }
}

void compareStamps(benchmark::State &state)
{
    FD fd = descriptor(ctTIMESTAMP, kStamp, 13, 26);
    size_t i = 0;
    for (auto _ : state) {
        const std::string &a = days().stamps[i % kDays], &b = days().stamps[(i + 1) % kDays];
        i++;
        benchmark::DoNotOptimize(_zvkcDateTime_Compare(a.data(), b.data(), &fd, &fd, ZVK_LESS, 1950, NewCallInfo{}));
    }
}
void compareStampsSystem(benchmark::State &state)
{
    size_t i = 0, length = 26;
    benchmark::DoNotOptimize(length);
    for (auto _ : state) {
        const std::string &a = days().stamps[i % kDays], &b = days().stamps[(i + 1) % kDays];
        i++;
        benchmark::DoNotOptimize(memcmp(a.data(), b.data(), length) < 0);
    }
}

BENCHMARK(integerOfDate)->Name("INTEGER-OF-DATE");
BENCHMARK(integerOfDateSystem)->Name("INTEGER-OF-DATE/timegm");
BENCHMARK(lsvdays)->Name("LSVDAYS");
BENCHMARK(lsvdaysSystem)->Name("LSVDAYS/strptime+timegm");
BENCHMARK(lsvdate)->Name("LSVDATE");
BENCHMARK(lsvdateSystem)->Name("LSVDATE/gmtime_r+strftime");
BENCHMARK(lsvsecs)->Name("LSVSECS");
BENCHMARK(lsvsecsSystem)->Name("LSVSECS/strptime+timegm");
BENCHMARK(moveDate)->Name("MOVE DATE");
BENCHMARK(moveDateSystem)->Name("MOVE DATE/strptime+strftime");
BENCHMARK(compareStamps)->Name("compare TIMESTAMP");
BENCHMARK(compareStampsSystem)->Name("compare TIMESTAMP/memcmp");

} // namespace

BENCHMARK_MAIN();
