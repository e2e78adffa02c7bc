// Records of files, through the slots that compiled code calls: sequential formats beside buffered
// standard I/O, indexed files beside SQLite and plain LMDB at the same durability.
#include <algorithm>
#include <benchmark/benchmark.h>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <lmdb.h>
#include <numeric>
#include <random>
#include <sqlite3.h>
#include <string>
#include <sys/stat.h>
#include <unistd.h>

#include "support/compiled_file.h"

namespace {

constexpr int kRecords = 1000000, kIndexed = 200000, kSize = 100;

// A folder of our own: the entries of a shared one change all the time.
struct Folder {
    std::string name;
    Folder()
    {
        const char *base = getenv("TMPDIR");
        name = std::string(base ? base : "/tmp") + "/kvr2-bench-files-XXXXXX";
        if (!mkdtemp(name.data())) abort();
    }
    ~Folder() { rmdir(name.c_str()); }
};

std::string path(const char *name)
{
    static const Folder folder;
    return folder.name + "/" + name;
}

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

// All numbers below `count`, in no order.
const std::vector<int> &order(int count = kIndexed)
{
    static std::vector<int> shuffled;
    if (shuffled.size() != static_cast<size_t>(count)) {
        shuffled.resize(static_cast<size_t>(count));
        std::iota(shuffled.begin(), shuffled.end(), 0);
        std::shuffle(shuffled.begin(), shuffled.end(), std::mt19937(5));
    }
    return shuffled;
}

// Ten digits, as the key is in the record.
void putKey(void *to, int number)
{
    auto *digits = static_cast<uint8_t *>(to);
    for (int i = 9; i >= 0; --i, number /= 10) digits[i] = static_cast<uint8_t>('0' + number % 10);
}

// What a store takes of the disk for each byte of its records and of their entries in alternate
// keys.
double sizeFor(const std::string &name, double data)
{
    struct stat about;
    return stat(name.c_str(), &about) == 0 ? static_cast<double>(about.st_size) / data : 0;
}

enum class Work { load, random, sequential };

void indexedOurs(benchmark::State &state, Work work, int count = kIndexed)
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
        for (int key : order(count)) {
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
        for (int key : order(count)) {
            if (work == Work::random) putKey(fcb->record, key);
            fcb->read(fcb, element, &request);
            check(fcb->status == 0);
        }
        check(file.close() == "00");
    }
    state.counters["store/data"] = sizeFor(name.name + ".mdb", double(count) * kSize);
    state.SetItemsProcessed(state.iterations() * count);
}

void sqlite(benchmark::State &state, Work work, int count = kIndexed)
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
        for (int number : order(count)) {
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
        for (int number : order(count)) {
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
    state.SetItemsProcessed(state.iterations() * count);
}

// --- one commit a change, of a file that others may change, too

// Alternate key n: four digits of the number that the record is given, with duplicates; the rest is
// a piece of noise.
void putRecord(void *to, int number, int value)
{
    static const std::string noise = [] {
        std::mt19937 random(7);
        std::string all(1 << 16, 0);
        for (char &c : all) c = static_cast<char>(' ' + random() % 95);
        return all;
    }();
    auto *bytes = static_cast<uint8_t *>(to);
    memcpy(bytes, noise.data() + static_cast<size_t>(number) * 101 % (noise.size() - kSize), kSize);
    putKey(bytes, number);
    for (int key = 0; key < 4; ++key, value = (value * 7 + 3) % 10000)
        for (int i = 3, rest = value % 10000; i >= 0; --i, rest /= 10)
            bytes[10 + 4 * key + i] = static_cast<uint8_t>('0' + rest % 10);
}

// How the changes of a row are forced: by us, by SQLite, by LMDB.
struct Forcing {
    const char *ours, *sqlite;
    unsigned lmdb;
    int changes;
};
constexpr Forcing kForcings[] = {
    {"none", "off", MDB_NOSYNC, 20000}, {"close", "full", MDB_NOMETASYNC, 500}, {"commit", "full", 0, 500}};

void changesOurs(benchmark::State &state)
{
    const Forcing &forcing = kForcings[state.range(1)];
    setenv("VFS_DURABILITY", forcing.ours, 1);
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
        for (int i = 0; i < forcing.changes; ++i) {
            putRecord(fcb->record, order()[static_cast<size_t>(value) % kIndexed], value);
            ++value;
            fcb->rewrite(fcb, file.program.ipcb.data(), &request);
            check(fcb->status < 10);
        }
    check(file.close() == "00");
    setenv("VFS_DURABILITY", "none", 1);
    // A key with duplicates: its bytes, a number, the primary key; the record has the number, too.
    const double size = kSize + static_cast<double>(state.range(0)) * (4 + 8 + 10 + 8);
    state.counters["store/data"] = sizeFor(name.name + ".mdb", kIndexed * size);
    state.SetItemsProcessed(state.iterations() * forcing.changes);
}

void changesSqlite(benchmark::State &state)
{
    const Forcing &forcing = kForcings[state.range(1)];
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
    sqlite3_exec(
        db,
        (std::string("pragma journal_mode=wal; pragma synchronous=") + forcing.sqlite + ";" + create + "begin").c_str(),
        nullptr, nullptr, nullptr);
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
        for (int i = 0; i < forcing.changes; ++i, ++value)
            run(update, order()[static_cast<size_t>(value) % kIndexed], value);
    sqlite3_finalize(insert);
    sqlite3_finalize(update);
    sqlite3_close(db);
    state.SetItemsProcessed(state.iterations() * forcing.changes);
}

// The records alone, without a second key: what a change costs below our keys, locks and checks.
void changesLmdb(benchmark::State &state)
{
    const Forcing &forcing = kForcings[state.range(0)];
    Removed name{path("changes-lmdb")};
    MDB_env *env;
    MDB_txn *txn;
    MDB_dbi data;
    uint8_t record[kSize];
    MDB_val k = {10, record}, v = {kSize, record};
    mdb_env_create(&env);
    mdb_env_set_mapsize(env, size_t(1) << 32);
    check(mdb_env_open(env, name.name.c_str(), MDB_NOSUBDIR | MDB_NOTLS | forcing.lmdb, 0666) == 0);
    mdb_txn_begin(env, nullptr, 0, &txn);
    mdb_dbi_open(txn, nullptr, 0, &data);
    for (int key : order()) putRecord(record, key, key), mdb_put(txn, data, &k, &v, 0);
    check(mdb_txn_commit(txn) == 0);
    int value = 0;
    for (auto _ : state)
        for (int i = 0; i < forcing.changes; ++i, ++value) {
            putRecord(record, order()[static_cast<size_t>(value) % kIndexed], value);
            check(mdb_txn_begin(env, nullptr, 0, &txn) == 0 && mdb_put(txn, data, &k, &v, 0) == 0 &&
                  mdb_txn_commit(txn) == 0);
        }
    mdb_env_close(env);
    state.SetItemsProcessed(state.iterations() * forcing.changes);
}

#define CHANGES(what, keys, forcing)                                                                                   \
    BENCHMARK(changesOurs)->Args({keys, forcing})->Name("indexed, " what "/ours")->Unit(benchmark::kMillisecond);      \
    BENCHMARK(changesSqlite)                                                                                           \
        ->Args({keys, forcing})                                                                                        \
        ->Name("indexed, " what "/peer:SQLite, WAL")                                                                   \
        ->Unit(benchmark::kMillisecond)
#define CHANGES_OF_LMDB(what, forcing)                                                                                 \
    BENCHMARK(changesLmdb)->Arg(forcing)->Name("indexed, " what "/peer:LMDB")->Unit(benchmark::kMillisecond)

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
CHANGES("20k committed changes, 0 alternate keys", 0, 0);
CHANGES_OF_LMDB("20k committed changes of records alone", 0);
CHANGES("20k committed changes, 1 alternate key", 1, 0);
CHANGES("20k committed changes, 4 alternate keys", 4, 0);
CHANGES("500 changes, each in order on the disk (close)", 0, 1);
CHANGES_OF_LMDB("500 changes of records alone, each in order on the disk", 1);
CHANGES("500 changes, each on the disk (commit)", 0, 2);
CHANGES_OF_LMDB("500 changes of records alone, each on the disk", 2);
CHANGES("500 changes, each on the disk (commit), 4 alternate keys", 4, 2);

void growth(int count, const std::string &said)
{
    struct Row {
        Work work;
        const char *what;
    };
    for (Row row : {Row{Work::load, " records loaded in random order"}, Row{Work::random, " random reads"},
                    Row{Work::sequential, " sequential reads"}}) {
        auto add = [&](const char *who, auto run) {
            const std::string name = "indexed, " + said + row.what + who;
            benchmark::RegisterBenchmark(name.c_str(), [=](benchmark::State &state) { run(state, row.work, count); })
                ->Unit(benchmark::kMillisecond)
                ->Iterations(1);
        };
        add("/ours", indexedOurs);
        add("/peer:SQLite", sqlite);
    }
}

} // namespace

// But where a row says something else, nobody forces data to the disk.
static const int durability = setenv("VFS_DURABILITY", "none", 0);

// --growth: the same with 1,000,000 and 5,000,000 records, which takes minutes.
int main(int argc, char **argv)
{
    int kept = 1;
    for (int i = 1; i < argc; ++i)
        if (strcmp(argv[i], "--growth") == 0)
            growth(1000000, "1M"), growth(5000000, "5M");
        else
            argv[kept++] = argv[i];
    benchmark::Initialize(&kept, argv);
    benchmark::RunSpecifiedBenchmarks();
}
