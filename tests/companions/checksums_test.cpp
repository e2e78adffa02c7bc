// Faults these tests are there to catch: a byte that something has changed in a file of the default
// file system, delivered as data with a good status; a file of version 1, without checksums, that
// is not read any more, or is written in the other form.
#include <lmdb.h>
#include <map>
#include <random>
#include <sys/stat.h>
#include <tuple>

#include "stored_files.h"

namespace {

constexpr int kCount = 60;

struct Kind {
    const char *what;
    FileAttributes attributes;
    int count = kCount;
    size_t size = 20;
};

// Record n as it was written, or as a change leaves it: then it has another alternate key. Made
// once and kept: the rounds below ask for the same few records millions of times.
const string &textOf(int n, size_t size = 20, bool changed = false)
{
    static std::map<std::tuple<int, size_t, bool>, string> made;
    auto [at, isNew] = made.try_emplace({n, size, changed});
    if (!isNew) return at->second;
    char text[48];
    snprintf(text, sizeof text, "%06d%04d%04d%06d", n, changed ? 9000 + n % 3 : n % 7, n, n * 7);
    string &all = at->second = text;
    while (all.size() < size) all += static_cast<char>('a' + (all.size() * 31 + static_cast<size_t>(n)) % 26);
    return all;
}

std::vector<Kind> kinds()
{
    FileAttributes fixed = {.longest = 20, .shortest = 20}, relative = relativeFile();
    relative.longest = 20;
    return {{"sequential, fixed", fixed},
            {"sequential, variable", varying},
            {"relative", relative},
            {"indexed", indexedFile()}};
}

// Trees of three levels, and records that are too long for a page.
std::vector<Kind> allKinds()
{
    std::vector<Kind> all = kinds();
    FileAttributes deep = indexedFile(), wide = indexedFile();
    deep.longest = deep.shortest = 240;
    deep.keys = {{220, 10, 0, {}}, {4, 6, ZVK_FILE_KEY_DUPLICATES, {}}, {6, 0, 0, {}}};
    wide.longest = wide.shortest = 5000;
    all.push_back({"indexed, deep", deep, 300, 240});
    all.push_back({"indexed, long records", wide, 40, 5000});
    return all;
}

bool isIndexed(const Kind &kind) { return !kind.attributes.keys.empty(); }
bool isSequential(const Kind &kind) { return !kind.attributes.organization; }

void make(const string &path, const Kind &kind)
{
    CompiledFile file("stl-" + path, kind.attributes);
    ASSERT_EQ(file.open(ZVK_OPEN_OUTPUT), "00");
    for (int n = 1; n <= kind.count; ++n)
        ASSERT_LE(file.write(textOf(n, kind.size), {.relativeKey = static_cast<uint64_t>(n)}), "02");
    ASSERT_EQ(file.close(), "00");
}

// What READ gives with a good status must be what was written, under each key and by each number.
void readAll(const string &path, const Kind &kind, int *good, int *wrong)
{
    CompiledFile file("stl-" + path, kind.attributes);
    if (file.open(ZVK_OPEN_INPUT) != "00") return;
    auto look = [&](int n) {
        string record = file.record();
        int number = n > 0 ? n : atoi(record.substr(0, 6).c_str());
        bool right = record == textOf(number, kind.size) || record == textOf(number, kind.size, true);
        ++*(right ? good : wrong);
    };
    for (uint32_t key = 0; key < (isIndexed(kind) ? 3u : 1u); ++key) {
        if (isIndexed(kind) && file.verb(file.fcb->start, {.relation = ZVK_RELATION_FIRST, .key = key}) > "09")
            continue;
        for (int n = 1; n < 3 * kind.count && file.read(next) < "10"; ++n) look(isSequential(kind) ? n : 0);
    }
    for (int n = 1; n <= kind.count && !isSequential(kind); ++n) {
        file.move(textOf(n, kind.size));
        string status = file.read({.relativeKey = static_cast<uint64_t>(n)});
        if (status < "10") look(n);
        // A record is there, or something is wrong: a damaged key must not hide it.
        if (isIndexed(kind) && status == "23") ++*wrong;
    }
    file.close();
}

// Changes of a damaged file, and its readers afterwards: a status, and no end of the program.
void changeAll(const string &path, const Kind &kind, std::mt19937 &random, int *good, int *wrong)
{
    FileAttributes attributes = kind.attributes;
    if (random() % 2) attributes.share = ZVK_FILE_SHARE_NONE; // alone: many changes in one transaction
    CompiledFile file("stl-" + path, attributes);
    if (file.open(ZVK_OPEN_IO) != "00") return;
    for (int step = 0; step < 60; ++step) {
        int n = 1 + static_cast<int>(random() % static_cast<unsigned>(kind.count + 20));
        unsigned what = random() % 4;
        const string &text = textOf(n, kind.size, n <= kind.count);
        file.move(text);
        if (what == 0)
            file.verb(file.fcb->deleteRecord, {});
        else if (what == 1)
            file.write(text);
        else if (what == 2)
            file.rewrite(text);
        else
            file.read(step % 2 ? next : FileRequest{});
    }
    file.close();
    // What was deleted is not there any more.
    int missing = 0;
    readAll(path, kind, good, &missing);
    CompiledFile again("stl-" + path, kind.attributes);
    if (again.open(ZVK_OPEN_INPUT) != "00") return;
    while (again.read(next) < "10") {
        int n = atoi(again.record().substr(0, 6).c_str());
        *wrong += again.record() != textOf(n, kind.size) && again.record() != textOf(n, kind.size, true);
    }
    again.close();
}

TEST(Checksums, NoChangedByteIsDelivered)
{
    std::mt19937 random(3 + tortureSeed());
    for (const Kind &kind : allKinds()) {
        TemporaryDirectory directory;
        const string path = directory.file("f"), data = path + (isIndexed(kind) ? ".mdb" : "");
        make(path, kind);
        const string before = readFile(data);
        int good = 0, wrong = 0, whole = 0, ended = 0, cut = 0;
        readAll(path, kind, &whole, &wrong);
        ASSERT_EQ(wrong, 0) << kind.what;
        for (unsigned seed = 0; seed < 4 && isIndexed(kind); ++seed) { // a whole file takes the changes
            std::mt19937 own(seed);
            int left = 0;
            changeAll(path, kind, own, &left, &wrong);
            ASSERT_EQ(wrong, 0) << kind.what;
            ASSERT_GT(left, whole / 2) << kind.what;
            ASSERT_TRUE(readFile(data) != before) << kind.what;
            writeFile(data, before);
        }
        const int rounds = torture("FLIPS", shareOf(400), static_cast<int>(allKinds().size()));
        for (int round = 0; round < rounds; ++round) {
            string content = before;
            for (int flips = round % 3 ? 1 : 6; flips; --flips) {
                size_t from = isIndexed(kind) ? 0 : 4096;
                content[from + random() % (content.size() - from)] ^= static_cast<char>(1 << random() % 8);
            }
            if (isIndexed(kind) && round % 50 == 49) content.resize(random() % content.size()), ++cut;
            writeFile(data, content);
            int ends[2], found[2] = {};
            const unsigned seed = random();
            ASSERT_EQ(pipe(ends), 0);
            fflush(stdout);
            pid_t child = fork();
            if (child == 0) {
                for (int number : {SIGSEGV, SIGBUS, SIGABRT, SIGFPE}) signal(number, SIG_DFL);
                alarm(600);
                readAll(path, kind, &found[0], &found[1]);
                std::mt19937 own(seed);
                int goodAfter = 0;
                if (isIndexed(kind)) changeAll(path, kind, own, &goodAfter, &found[1]);
                _exit(write(ends[1], found, sizeof found) == sizeof found ? 0 : 1);
            }
            close(ends[1]);
            bool told = read(ends[0], found, sizeof found) == sizeof found;
            ended += !told;
            close(ends[0]);
            waitpid(child, nullptr, 0);
            good += found[0];
            wrong += found[1];
            if (const char *keep = getenv("KVR2_TORTURE_KEEP"); keep && (!told || found[1])) {
                string kept = string(keep) + "/" + std::to_string(seed);
                writeFile(kept, readFile(path));
                writeFile(kept + ".mdb", content);
                printf("%s: round %d, %s, seed %u\n", kind.what, round, told ? "wrong data" : "ended", seed);
            }
        }
        tortureFigure("flips of %s: %d times (%d cut off), %d records good, %d wrong, the program ended %d times",
                      kind.what, rounds, cut, good, wrong, ended);
        EXPECT_EQ(wrong, 0) << kind.what;
        EXPECT_GT(good, rounds * whole / 5) << kind.what;
        EXPECT_EQ(ended, 0) << kind.what;
    }
}

// Makes an old file of a new one: version 1 in the header, and no checksum after the records.
void makeOld(const string &path, const Kind &kind)
{
    string content = readFile(path), old = content.substr(0, 4096);
    old[11] = 1;
    memset(old.data() + 40, 0, 8);
    uint64_t sum = 0xcbf29ce484222325u;
    for (unsigned char byte : old) sum = (sum ^ byte) * 0x100000001b3u;
    memcpy(old.data() + 40, &sum, 8);
    if (kind.attributes.keys.empty()) {
        bool variable = isSequential(kind) && kind.attributes.longest != kind.attributes.shortest;
        size_t before = kind.attributes.organization || variable ? 4 : 0;
        for (size_t at = 4096; at < content.size();) {
            uint32_t length = kind.attributes.longest;
            if (variable) memcpy(&length, content.data() + at, 4);
            old += content.substr(at, before + length);
            // All records are of the full length: nothing fills a slot up.
            at += before + length + 4;
        }
    } else {
        MDB_env *env;
        MDB_txn *txn;
        MDB_dbi data;
        MDB_cursor *cursor;
        MDB_val k, v;
        std::map<string, string> all;
        ASSERT_EQ(mdb_env_create(&env), 0);
        mdb_env_set_maxdbs(env, 10);
        ASSERT_EQ(mdb_env_open(env, (path + ".mdb").c_str(), MDB_NOSUBDIR | MDB_NOLOCK, 0666), 0);
        ASSERT_EQ(mdb_txn_begin(env, nullptr, 0, &txn), 0);
        ASSERT_EQ(mdb_dbi_open(txn, "r", 0, &data), 0);
        ASSERT_EQ(mdb_cursor_open(txn, data, &cursor), 0);
        while (mdb_cursor_get(cursor, &k, &v, MDB_NEXT) == 0)
            all[string(static_cast<char *>(k.mv_data), k.mv_size)] =
                string(static_cast<char *>(v.mv_data), v.mv_size - 4);
        mdb_cursor_close(cursor);
        for (auto &[key, value] : all) {
            k = {key.size(), const_cast<char *>(key.data())};
            v = {value.size(), value.data()};
            ASSERT_EQ(mdb_put(txn, data, &k, &v, 0), 0);
        }
        ASSERT_EQ(mdb_txn_commit(txn), 0);
        mdb_env_close(env);
    }
    writeFile(path, old);
}

TEST(Checksums, FilesOfVersionOneStayAsTheyAre)
{
    for (const Kind &kind : kinds()) {
        TemporaryDirectory directory;
        const string path = directory.file("f");
        make(path, kind);
        makeOld(path, kind);
        const size_t size = readFile(path).size();
        CompiledFile file("stl-" + path, kind.attributes);
        ASSERT_EQ(file.open(ZVK_OPEN_INPUT), "00") << kind.what;
        for (int n = 1; n <= kCount; ++n) {
            ASSERT_LE(file.read(next), "02") << kind.what;
            ASSERT_EQ(file.record(), textOf(n)) << kind.what;
        }
        EXPECT_EQ(file.read(next), "10");
        file.close();
        // Changes, additions, and all of it read again.
        FileRequest second = {.relativeKey = 2};
        ASSERT_EQ(file.open(ZVK_OPEN_IO), "00");
        file.move(textOf(2));
        ASSERT_LE(file.read(isSequential(kind) ? next : second), "02");
        string changed = isSequential(kind) ? textOf(1) : textOf(2);
        changed.replace(14, 6, "change");
        ASSERT_LE(file.rewrite(changed, second), "02") << kind.what;
        file.close();
        if (isSequential(kind)) {
            ASSERT_EQ(file.open(ZVK_OPEN_EXTEND), "00");
            ASSERT_EQ(file.write(textOf(kCount + 1)), "00");
            file.close();
            EXPECT_EQ(readFile(path).size() - size, (size - 4096) / kCount) << kind.what;
        }
        ASSERT_EQ(file.open(ZVK_OPEN_INPUT), "00");
        int count = 0, changes = 0;
        for (; file.read(next) < "10"; ++count) changes += file.record().substr(14, 6) == "change";
        EXPECT_EQ(file.status(), "10") << kind.what;
        EXPECT_EQ(count, kCount + isSequential(kind)) << kind.what;
        EXPECT_EQ(changes, 1) << kind.what;
        file.close();
    }
}

} // namespace
