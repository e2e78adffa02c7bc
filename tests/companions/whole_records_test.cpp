// Faults these tests are there to catch: a record that is half old and half new, with a good
// status: beside a writer, or after one was killed.
#include <algorithm>
#include <random>
#include <sys/stat.h>

#include "failing_disk.h"
#include "stored_files.h"

namespace {

struct Kind {
    const char *prefix, *what;
    bool relative, variable;
};
const Kind kinds[] = {{"rsd-", "rsd fixed", false, false},
                      {"rsd-", "rsd variable", false, true},
                      {"wbr-", "wbr", false, false},
                      {"stl-", "stl sequential", false, true},
                      {"stl-", "stl relative", true, false}};

FileAttributes attributesOf(const Kind &kind, uint32_t size)
{
    return {.longest = size,
            .shortest = kind.variable ? 1 : size,
            .organization = uint8_t(kind.relative ? ZVK_FILE_RELATIVE : 0),
            .access = uint8_t(kind.relative ? 0 : sequentialAccess)};
}

bool isWhole(const string &record) { return record.find_first_not_of(record[0]) == string::npos; }

// REWRITE of the second record, of WRITE into an empty slot.
string change(CompiledFile &file, const Kind &kind, const string &record, bool rewrite)
{
    if (kind.relative)
        return rewrite ? file.rewrite(record, {.relativeKey = 2}) : file.write(record, {.relativeKey = 3});
    file.read(next);
    file.read(next);
    return file.rewrite(record);
}

// The writer is killed after so many bytes of all that it writes. What readers get, one that has
// the file open all the time, too, is a record that was written; the next program that changes the
// file finds it the same way.
TEST(WholeRecords, KilledRewrite)
{
    constexpr uint32_t size = 10000;
    const string old(size, 'o'), changed(size, 'n');
    for (const Kind &kind : kinds)
        for (bool rewrite : {true, false}) {
            if (!rewrite && !kind.relative) continue;
            TemporaryDirectory directory;
            const FileAttributes attributes = attributesOf(kind, size);
            const string path = directory.file("f");
            int halves = 0;
            bool done = false;
            for (int bytes = 0; !done; bytes += 1009) {
                string where = string(kind.what) + (rewrite ? " rewrite " : " write ") + std::to_string(bytes);
                CompiledFile file(kind.prefix + path, attributes), early(kind.prefix + path, attributes);
                ASSERT_EQ(file.open(ZVK_OPEN_OUTPUT), "00");
                for (uint64_t n : {1, 2, 4}) ASSERT_EQ(file.write(old, {.relativeKey = n}), "00") << where;
                ASSERT_EQ(file.close(), "00");
                string before = readFile(path);
                ASSERT_EQ(early.open(ZVK_OPEN_INPUT), "00");
                pid_t child = fork();
                if (child == 0) {
                    if (file.open(ZVK_OPEN_IO) != "00") _exit(1);
                    FailingDisk disk(FailingDisk::killed, bytes);
                    _exit(change(file, kind, changed, rewrite) == "00" ? 0 : 1);
                }
                int ending;
                waitpid(child, &ending, 0);
                done = WIFEXITED(ending);
                EXPECT_TRUE(!done || WEXITSTATUS(ending) == 0) << where;
                string torn = readFile(path);
                std::vector<string> seen;
                auto look = [&](CompiledFile &reader, uint16_t mode) {
                    if (mode) {
                        ASSERT_EQ(reader.open(mode), "00") << where;
                    }
                    string all;
                    while (reader.read(next) < "10") {
                        EXPECT_TRUE(isWhole(reader.record())) << where;
                        EXPECT_EQ(reader.record().size(), size) << where;
                        all += reader.record()[0];
                    }
                    EXPECT_EQ(reader.status(), "10") << where;
                    seen.push_back(all);
                    reader.close();
                };
                look(early, 0);
                look(file, ZVK_OPEN_INPUT);
                EXPECT_EQ(readFile(path), torn) << "a reader changes nothing";
                look(file, ZVK_OPEN_IO);
                look(file, ZVK_OPEN_INPUT);
                const string without = "ooo", with = rewrite ? "ono" : "oono";
                for (const string &all : seen) {
                    EXPECT_TRUE(all == without || all == with) << where << " " << all;
                    EXPECT_EQ(all, seen[0]) << where;
                }
                EXPECT_TRUE(!done || seen[0] == with) << where;
                halves += readFile(path) != torn;

                // A copy that is put back in place of the torn file is what it was.
                if (bytes % 3 == 0) {
                    writeFile(path, before);
                    seen.clear();
                    look(file, ZVK_OPEN_IO);
                    EXPECT_EQ(seen.back(), without) << where;
                    EXPECT_EQ(readFile(path), before);
                }
                struct stat about;
                EXPECT_NE(stat((path + ".kvr2-rewrite").c_str(), &about), 0) << "gone with CLOSE";
            }
            EXPECT_GT(halves, 4) << kind.what << ": kills in the middle";
        }
}

// What a killed program left is not put into a file that was restored before anybody opened it, and
// the journal goes with CLOSE and with OUTPUT.
TEST(WholeRecords, JournalOfAnotherContent)
{
    constexpr uint32_t size = 10000;
    struct stat about;
    for (const Kind &kind : kinds) {
        TemporaryDirectory directory;
        const string path = directory.file("f"), journal = path + ".kvr2-rewrite";
        CompiledFile file(kind.prefix + path, attributesOf(kind, size));
        ASSERT_EQ(file.open(ZVK_OPEN_OUTPUT), "00");
        for (uint64_t n : {1, 2}) ASSERT_EQ(file.write(string(size, 'o'), {.relativeKey = n}), "00");
        ASSERT_EQ(file.close(), "00");
        string before = readFile(path), other = before;
        std::replace(other.end() - 2 * size, other.end(), 'o', 'x');
        for (const string &content : {before, other}) {
            pid_t child = fork();
            if (child == 0) {
                file.open(ZVK_OPEN_IO);
                FailingDisk disk(FailingDisk::killed, 2 * size + 6000);
                change(file, kind, string(size, 'n'), true);
                _exit(1);
            }
            waitpid(child, nullptr, 0);
            EXPECT_EQ(stat(journal.c_str(), &about), 0) << kind.what;
            EXPECT_NE(readFile(path), before) << kind.what;
            writeFile(path, content);
            ASSERT_EQ(file.open(ZVK_OPEN_IO), "00");
            EXPECT_EQ(file.close(), "00");
            EXPECT_EQ(readFile(path), content) << kind.what;
            writeFile(path, before);
        }
        ASSERT_EQ(file.open(ZVK_OPEN_IO), "00");
        EXPECT_EQ(change(file, kind, string(size, 'n'), true), "00");
        EXPECT_EQ(file.close(), "00");
        EXPECT_NE(stat(journal.c_str(), &about), 0) << kind.what << ": gone with CLOSE";
        writeFile(journal, "rubbish");
        ASSERT_EQ(file.open(ZVK_OPEN_OUTPUT), "00");
        EXPECT_EQ(file.close(), "00");
        EXPECT_NE(stat(journal.c_str(), &about), 0) << kind.what << ": gone with OUTPUT";
    }
}

// Nobody is killed: one program changes records, others read them.
TEST(WholeRecords, ReaderBesideAWriter)
{
    for (const Kind &kind : kinds)
        for (uint32_t size : {1000u, 9000u}) {
            TemporaryDirectory directory;
            const FileAttributes attributes = attributesOf(kind, size);
            const uint64_t count = 600'000 / size;
            CompiledFile file(kind.prefix + directory.file("f"), attributes);
            ASSERT_EQ(file.open(ZVK_OPEN_OUTPUT), "00");
            for (uint64_t n = 1; n <= count; ++n) ASSERT_EQ(file.write(string(size, 'a'), {.relativeKey = n}), "00");
            ASSERT_EQ(file.close(), "00");
            pid_t writer = fork();
            if (writer == 0) {
                for (char letter = 'b';; letter = letter == 'z' ? 'a' : static_cast<char>(letter + 1)) {
                    if (file.open(ZVK_OPEN_IO) != "00") _exit(1);
                    while (file.read(next) == "00")
                        if (file.rewrite(string(size, letter), {.relativeKey = file.request.relativeKey}) != "00")
                            _exit(2);
                    file.close();
                }
            }
            int torn = 0, read = 0;
            timespec begin, now;
            clock_gettime(CLOCK_MONOTONIC, &begin);
            do {
                ASSERT_EQ(file.open(ZVK_OPEN_INPUT), "00");
                while (file.read(next) == "00") ++read, torn += !isWhole(file.record());
                EXPECT_EQ(file.status(), "10");
                file.close();
                clock_gettime(CLOCK_MONOTONIC, &now);
            } while (now.tv_sec - begin.tv_sec + (now.tv_nsec - begin.tv_nsec) / 1e9 < 0.4);
            EXPECT_EQ(torn, 0) << kind.what << " of " << read << " records of " << size;
            EXPECT_EQ(waitpid(writer, nullptr, WNOHANG), 0) << "it writes still";
            kill(writer, SIGKILL);
            waitpid(writer, nullptr, 0);
        }
}

} // namespace
