// Faults these tests are there to catch: a byte that something has changed in a file of the default
// file system, delivered as data with a good status; a file of version 1, without checksums, that
// is not read any more, or is written in the other form.
#include <lmdb.h>
#include <map>
#include <random>
#include <sys/stat.h>

#include "stored_files.h"

namespace {

constexpr int kCount = 60;

string textOf(int n)
{
    char text[48];
    snprintf(text, sizeof text, "%06d%04d%04d%06d", n, n % 7, n, n * 7);
    return text;
}

struct Kind {
    const char *what;
    FileAttributes attributes;
};

std::vector<Kind> kinds()
{
    FileAttributes fixed = {.longest = 20, .shortest = 20}, relative = relativeFile();
    relative.longest = 20;
    return {{"sequential, fixed", fixed},
            {"sequential, variable", varying},
            {"relative", relative},
            {"indexed", indexedFile()}};
}

bool isSequential(const Kind &kind) { return !kind.attributes.organization; }

void make(const string &path, const Kind &kind)
{
    CompiledFile file("stl-" + path, kind.attributes);
    ASSERT_EQ(file.open(ZVK_OPEN_OUTPUT), "00");
    for (int n = 1; n <= kCount; ++n) ASSERT_LE(file.write(textOf(n), {.relativeKey = static_cast<uint64_t>(n)}), "02");
    ASSERT_EQ(file.close(), "00");
}

// What READ gives with a good status must be what was written, under each key and by each number.
void readAll(const string &path, const Kind &kind, int *good, int *wrong)
{
    CompiledFile file("stl-" + path, kind.attributes);
    if (file.open(ZVK_OPEN_INPUT) != "00") return;
    auto look = [&](int n) {
        bool right =
            n > 0 ? file.record() == textOf(n) : file.record() == textOf(atoi(file.record().substr(0, 6).c_str()));
        ++*(right ? good : wrong);
    };
    for (uint32_t key = 0; key < (kind.attributes.keys.empty() ? 1u : 3u); ++key) {
        if (!kind.attributes.keys.empty() &&
            file.verb(file.fcb->start, {.relation = ZVK_RELATION_FIRST, .key = key}) > "09")
            continue;
        for (int n = 1; n < 3 * kCount && file.read(next) < "10"; ++n) look(isSequential(kind) ? n : 0);
    }
    for (int n = 1; n <= kCount && !isSequential(kind); ++n) {
        file.move(textOf(n));
        if (file.read({.relativeKey = static_cast<uint64_t>(n)}) < "10") look(n);
    }
    file.close();
}

TEST(Checksums, NoChangedByteIsDelivered)
{
    std::mt19937 random(3 + tortureSeed());
    for (const Kind &kind : kinds()) {
        TemporaryDirectory directory;
        const string path = directory.file("f"), data = path + (kind.attributes.keys.empty() ? "" : ".mdb");
        make(path, kind);
        const string before = readFile(data);
        int good = 0, wrong = 0, whole = 0, ended = 0;
        readAll(path, kind, &whole, &wrong);
        ASSERT_EQ(wrong, 0);
        const int rounds = torture("FLIPS", 400, 4);
        for (int round = 0; round < rounds; ++round) {
            string content = before;
            for (int flips = round % 3 ? 1 : 6; flips; --flips) {
                size_t from = kind.attributes.keys.empty() ? 4096 : 8192;
                content[from + random() % (content.size() - from)] ^= static_cast<char>(1 << random() % 8);
            }
            writeFile(data, content);
            // The store's own pages have no checksums: damage in them may end the program.
            int ends[2], found[2] = {};
            ASSERT_EQ(pipe(ends), 0);
            pid_t child = fork();
            if (child == 0) {
                alarm(20);
                readAll(path, kind, &found[0], &found[1]);
                _exit(write(ends[1], found, sizeof found) == sizeof found ? 0 : 1);
            }
            close(ends[1]);
            ended += read(ends[0], found, sizeof found) != sizeof found;
            close(ends[0]);
            waitpid(child, nullptr, 0);
            good += found[0];
            wrong += found[1];
        }
        tortureFigure("flips of %s: %d times, %d records good, %d wrong, the program ended %d times", kind.what, rounds,
                      good, wrong, ended);
        EXPECT_EQ(wrong, 0) << kind.what;
        EXPECT_GT(good, rounds * whole / 4) << kind.what;
        if (kind.attributes.keys.empty()) {
            EXPECT_EQ(ended, 0) << kind.what;
        }
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
