// Records of files, through the slots that compiled code calls: sequential formats beside buffered
// standard I/O, indexed files beside SQLite and plain LMDB at the same durability.
#include <algorithm>
#include <benchmark/benchmark.h>
#include <cstdio>
#include <lmdb.h>
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
        for (const char *suffix : {"", ".mdb", ".mdb-lock", "-lock", "-wal", "-shm"}) unlink((name + suffix).c_str());
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

// Ten digits, as the key is in the record.
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

// --- one commit a change, of a file that others may change, too; no data is forced to the disk

constexpr int kChanges = 20000;

// Alternate key n: four digits of the number that the record is given, with duplicates.
void putRecord(void *to, int number, int value)
{
    auto *bytes = static_cast<uint8_t *>(to);
    memset(bytes, 'x', kSize);
    putKey(bytes, number);
    for (int key = 0; key < 4; ++key, value = value * 7 + 3) {
        char digits[16];
        snprintf(digits, sizeof digits, "%04d", value % 10000);
        memcpy(bytes + 10 + 4 * key, digits, 4);
    }
}

void changesOurs(benchmark::State &state)
{
    Removed name{path("changes")};
    FileAttributes attributes = {
        .longest = kSize, .shortest = kSize, .organization = ZVK_FILE_INDEXED, .access = 0, .keys = {{10, 0, 0, {}}}};
    for (uint32_t key = 0; key < state.range(0); ++key)
        attributes.keys.push_back({4, 10 + 4 * key, ZVK_FILE_KEY_DUPLICATES, {}});
    CompiledFile file("stl-" + name.name, attributes);
    FCB *fcb = file.fcb;
    FileRequest request = {};
    check(file.open(ZVK_OPEN_OUTPUT) == "00");
    for (int key : order()) {
        putRecord(fcb->record, key, key);
        fcb->write(fcb, file.program.ipcb.data(), &request);
        check(fcb->status < 10);
    }
    check(file.close() == "00" && file.open(ZVK_OPEN_IO) == "00");
    int value = 0;
    for (auto _ : state)
        for (int i = 0; i < kChanges; ++i) {
            putRecord(fcb->record, order()[static_cast<size_t>(value) % kIndexed], value);
            ++value;
            fcb->rewrite(fcb, file.program.ipcb.data(), &request);
            check(fcb->status < 10);
        }
    check(file.close() == "00");
    state.SetItemsProcessed(state.iterations() * kChanges);
}

void changesSqlite(benchmark::State &state)
{
    Removed name{path("changes-sqlite")};
    sqlite3 *db;
    sqlite3_stmt *update, *insert;
    const char *columns[] = {"a0", "a1", "a2", "a3"};
    std::string create = "create table t(k blob primary key", set = "update t set r=?2",
                values = "insert into t values(?1";
    for (int i = 0; i < state.range(0); ++i) {
        create += std::string(", ") + columns[i] + " blob";
        set += std::string(", ") + columns[i] + "=?" + std::to_string(i + 3);
        values += ", ?" + std::to_string(i + 3);
    }
    create += ", r blob) without rowid;";
    for (int i = 0; i < state.range(0); ++i)
        create += std::string("create index i") + columns[i] + " on t(" + columns[i] + ");";
    sqlite3_open(name.name.c_str(), &db);
    sqlite3_exec(db, ("pragma journal_mode=wal; pragma synchronous=off;" + create + "begin").c_str(), nullptr, nullptr,
                 nullptr);
    check(sqlite3_prepare_v2(db, (values + ", ?2)").c_str(), -1, &insert, nullptr) == SQLITE_OK);
    check(sqlite3_prepare_v2(db, (set + " where k=?1").c_str(), -1, &update, nullptr) == SQLITE_OK);
    uint8_t record[kSize];
    auto run = [&](sqlite3_stmt *statement, int number, int value) {
        putRecord(record, number, value);
        sqlite3_bind_blob(statement, 1, record, 10, SQLITE_STATIC);
        sqlite3_bind_blob(statement, 2, record, kSize, SQLITE_STATIC);
        for (int i = 0; i < state.range(0); ++i)
            sqlite3_bind_blob(statement, i + 3, record + 10 + 4 * i, 4, SQLITE_STATIC);
        check(sqlite3_step(statement) == SQLITE_DONE);
        sqlite3_reset(statement);
    };
    for (int key : order()) run(insert, key, key);
    sqlite3_exec(db, "commit", nullptr, nullptr, nullptr);
    int value = 0;
    for (auto _ : state)
        for (int i = 0; i < kChanges; ++i, ++value) run(update, order()[static_cast<size_t>(value) % kIndexed], value);
    sqlite3_finalize(insert);
    sqlite3_finalize(update);
    sqlite3_close(db);
    state.SetItemsProcessed(state.iterations() * kChanges);
}

// The records alone, without a second key: what a change costs below our keys, locks and checks.
void changesLmdb(benchmark::State &state)
{
    Removed name{path("changes-lmdb")};
    MDB_env *env;
    MDB_txn *txn;
    MDB_dbi data;
    uint8_t record[kSize];
    MDB_val k = {10, record}, v = {kSize, record};
    mdb_env_create(&env);
    mdb_env_set_mapsize(env, size_t(1) << 32);
    check(mdb_env_open(env, name.name.c_str(), MDB_NOSUBDIR | MDB_NOTLS | MDB_NOSYNC, 0666) == 0);
    mdb_txn_begin(env, nullptr, 0, &txn);
    mdb_dbi_open(txn, nullptr, 0, &data);
    for (int key : order()) putRecord(record, key, key), mdb_put(txn, data, &k, &v, 0);
    check(mdb_txn_commit(txn) == 0);
    int value = 0;
    for (auto _ : state)
        for (int i = 0; i < kChanges; ++i, ++value) {
            putRecord(record, order()[static_cast<size_t>(value) % kIndexed], value);
            check(mdb_txn_begin(env, nullptr, 0, &txn) == 0 && mdb_put(txn, data, &k, &v, 0) == 0 &&
                  mdb_txn_commit(txn) == 0);
        }
    mdb_env_close(env);
    state.SetItemsProcessed(state.iterations() * kChanges);
}

#define CHANGES(keys)                                                                                                  \
    BENCHMARK(changesOurs)                                                                                             \
        ->Arg(keys)                                                                                                    \
        ->Name("indexed, 20k committed changes, " #keys " alternate keys/ours")                                        \
        ->Unit(benchmark::kMillisecond);                                                                               \
    BENCHMARK(changesSqlite)                                                                                           \
        ->Arg(keys)                                                                                                    \
        ->Name("indexed, 20k committed changes, " #keys " alternate keys/peer:SQLite, WAL")                            \
        ->Unit(benchmark::kMillisecond)

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
CHANGES(0);
BENCHMARK(changesLmdb)
    ->Name("indexed, 20k committed changes of records alone/peer:LMDB")
    ->Unit(benchmark::kMillisecond);
CHANGES(1);
CHANGES(4);

} // namespace

// SQLite runs with synchronous=off here: both leave the data to the system.
static const int durability = setenv("VFS_DURABILITY", "none", 0);

BENCHMARK_MAIN();
