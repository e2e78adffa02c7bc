// Records of files, through the slots that compiled code calls: sequential formats beside buffered
// standard I/O, indexed files beside SQLite.
#include <algorithm>
#include <benchmark/benchmark.h>
#include <cstdio>
#include <numeric>
#include <random>
#include <sqlite3.h>
#include <string>
#include <unistd.h>

#include "support/compiled_file.h"

namespace {

constexpr int kRecords = 1000000, kIndexed = 200000, kSize = 100;

std::string path(const char *name) { return "/tmp/kvr2-bench-files-" + std::to_string(getpid()) + "-" + name; }

struct Removed {
    std::string name;
    ~Removed()
    {
        for (const char *suffix : {"", ".mdb", ".mdb-lock"}) unlink((name + suffix).c_str());
    }
};

void check(bool good)
{
    if (good) return;
    fputs("a verb failed\n", stderr);
    _exit(1);
}

void sequentialOurs(benchmark::State &state, const char *prefix)
{
    Removed name{path("ours")};
    CompiledFile file(std::string(prefix) + name.name, {.longest = kSize, .shortest = kSize});
    for (auto _ : state) {
        FileRequest request = {};
        check(file.open(ZVK_OPEN_OUTPUT) == "00");
        memset(file.fcb->record, 'x', kSize);
        for (int i = 0; i < kRecords; ++i) file.fcb->write(file.fcb, file.program.ipcb.data(), &request);
        check(file.close() == "00" && file.open(ZVK_OPEN_INPUT) == "00");
        int read = 0;
        for (;; ++read) {
            file.fcb->statement = ZVK_STATEMENT_AT_END;
            file.fcb->read(file.fcb, file.program.ipcb.data(), &request);
            if (file.fcb->status) break;
        }
        check(read == kRecords && file.close() == "00");
    }
    state.SetItemsProcessed(state.iterations() * kRecords * 2);
}

void fwriteFread(benchmark::State &state)
{
    Removed name{path("stdio")};
    char record[kSize];
    memset(record, 'x', kSize);
    for (auto _ : state) {
        FILE *file = fopen(name.name.c_str(), "w");
        for (int i = 0; i < kRecords; ++i) fwrite(record, kSize, 1, file);
        fclose(file);
        file = fopen(name.name.c_str(), "r");
        int read = 0;
        while (fread(record, kSize, 1, file) == 1) ++read;
        check(read == kRecords);
        fclose(file);
    }
    state.SetItemsProcessed(state.iterations() * kRecords * 2);
}

void fputsGetline(benchmark::State &state)
{
    Removed name{path("stdio")};
    std::string record(kSize, 'x');
    record += '\n';
    char *line = nullptr;
    size_t room = 0;
    for (auto _ : state) {
        FILE *file = fopen(name.name.c_str(), "w");
        for (int i = 0; i < kRecords; ++i) fputs(record.c_str(), file);
        fclose(file);
        file = fopen(name.name.c_str(), "r");
        int read = 0;
        while (getline(&line, &room, file) > 0) ++read;
        check(read == kRecords);
        fclose(file);
    }
    free(line);
    state.SetItemsProcessed(state.iterations() * kRecords * 2);
}

const std::vector<int> &order()
{
    static const std::vector<int> shuffled = [] {
        std::vector<int> all(kIndexed);
        std::iota(all.begin(), all.end(), 0);
        std::shuffle(all.begin(), all.end(), std::mt19937(5));
        return all;
    }();
    return shuffled;
}

// Ten digits, as the key stands in the record.
void putKey(void *to, int number)
{
    auto *digits = static_cast<uint8_t *>(to);
    for (int i = 9; i >= 0; --i, number /= 10) digits[i] = static_cast<uint8_t>('0' + number % 10);
}

enum class Work { load, random, sequential };

void indexedOurs(benchmark::State &state, Work work)
{
    Removed name{path("indexed")};
    CompiledFile file(
        "stl-" + name.name,
        {.longest = kSize, .shortest = kSize, .organization = ZVK_FILE_INDEXED, .access = 0, .keys = {{10, 0, 0, {}}}});
    FCB *fcb = file.fcb;
    IPCB *element = file.program.ipcb.data();
    FileRequest request = {};
    auto load = [&] {
        check(file.open(ZVK_OPEN_OUTPUT) == "00");
        memset(fcb->record, 'x', kSize);
        for (int key : order()) {
            putKey(fcb->record, key);
            fcb->write(fcb, element, &request);
            check(fcb->status == 0);
        }
        check(file.close() == "00");
    };
    load();
    for (auto _ : state) {
        if (work == Work::load) {
            load();
            continue;
        }
        check(file.open(ZVK_OPEN_INPUT) == "00");
        request.options = work == Work::sequential ? ZVK_REQUEST_NEXT : 0;
        for (int key : order()) {
            if (work == Work::random) putKey(fcb->record, key);
            fcb->read(fcb, element, &request);
            check(fcb->status == 0);
        }
        check(file.close() == "00");
    }
    state.SetItemsProcessed(state.iterations() * kIndexed);
}

void sqlite(benchmark::State &state, Work work)
{
    Removed name{path("sqlite")};
    sqlite3 *db = nullptr;
    char key[10], record[kSize];
    memset(record, 'x', kSize);
    auto load = [&] {
        sqlite3_stmt *insert;
        unlink(name.name.c_str());
        sqlite3_open(name.name.c_str(), &db);
        sqlite3_exec(db, "pragma synchronous=off; create table t(k blob primary key, r blob) without rowid; begin",
                     nullptr, nullptr, nullptr);
        sqlite3_prepare_v2(db, "insert into t values(?,?)", -1, &insert, nullptr);
        for (int number : order()) {
            putKey(key, number);
            sqlite3_bind_blob(insert, 1, key, 10, SQLITE_STATIC);
            sqlite3_bind_blob(insert, 2, record, kSize, SQLITE_STATIC);
            check(sqlite3_step(insert) == SQLITE_DONE);
            sqlite3_reset(insert);
        }
        sqlite3_finalize(insert);
        sqlite3_exec(db, "commit", nullptr, nullptr, nullptr);
        sqlite3_close(db);
    };
    load();
    for (auto _ : state) {
        if (work == Work::load) {
            load();
            continue;
        }
        sqlite3_stmt *select;
        sqlite3_open(name.name.c_str(), &db);
        sqlite3_exec(db, "begin", nullptr, nullptr, nullptr);
        bool random = work == Work::random;
        sqlite3_prepare_v2(db, random ? "select r from t where k=?" : "select r from t order by k", -1, &select,
                           nullptr);
        for (int number : order()) {
            putKey(key, number);
            if (random) sqlite3_bind_blob(select, 1, key, 10, SQLITE_STATIC);
            check(sqlite3_step(select) == SQLITE_ROW);
            memcpy(record, sqlite3_column_blob(select, 0), kSize);
            if (random) sqlite3_reset(select);
        }
        sqlite3_finalize(select);
        sqlite3_exec(db, "commit", nullptr, nullptr, nullptr);
        sqlite3_close(db);
    }
    state.SetItemsProcessed(state.iterations() * kIndexed);
}

BENCHMARK_CAPTURE(sequentialOurs, rsd, "rsd-")
    ->Name("record sequential, 1M records written and read/ours")
    ->Unit(benchmark::kMillisecond);
BENCHMARK(fwriteFread)
    ->Name("record sequential, 1M records written and read/peer:fwrite and fread")
    ->Unit(benchmark::kMillisecond);
BENCHMARK_CAPTURE(sequentialOurs, lsq, "lsq-")
    ->Name("line sequential, 1M records written and read/ours")
    ->Unit(benchmark::kMillisecond);
BENCHMARK(fputsGetline)
    ->Name("line sequential, 1M records written and read/peer:fputs and getline")
    ->Unit(benchmark::kMillisecond);
#define INDEXED(work, name)                                                                                            \
    BENCHMARK_CAPTURE(indexedOurs, work, Work::work)->Name("indexed, " name "/ours")->Unit(benchmark::kMillisecond);   \
    BENCHMARK_CAPTURE(sqlite, work, Work::work)->Name("indexed, " name "/peer:SQLite")->Unit(benchmark::kMillisecond);
INDEXED(load, "200k records loaded in random order")
INDEXED(random, "200k random reads")
INDEXED(sequential, "200k sequential reads")

} // namespace

// SQLite runs with synchronous=off here: both leave the data to the system.
static const int durability = setenv("VFS_DURABILITY", "none", 0);

BENCHMARK_MAIN();
