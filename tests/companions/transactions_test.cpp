// Faults these tests are there to catch: a transaction that is seen or kept in part, by others,
// after a rollback, the end of the run unit or a kill at any moment of a commit; changes of the
// transaction that its own run unit does not see, under all keys; locks that end too early, or not
// at all.
#include <algorithm>
#include <atomic>
#include <map>
#include <new>
#include <random>
#include <sys/mman.h>

#include "failing_disk.h"
#include "stored_files.h"

namespace {

// Variable relative records, so that slots keep their lengths, too.
FileAttributes numberedFile(uint8_t access = 0)
{
    return {.longest = 20, .shortest = 1, .organization = ZVK_FILE_RELATIVE, .access = access};
}

FileRequest numbered(uint64_t number) { return {.relativeKey = number}; }

string textOf(int n, int value)
{
    char text[32];
    snprintf(text, sizeof text, "%06d%04d%04d%06d", n, value % 7, n, value);
    return text;
}

// Everything in a file: by the primary key and the alternate ones, or by number.
string contents(CompiledFile &file)
{
    string all;
    bool indexed = file.attributes.organization == ZVK_FILE_INDEXED;
    for (uint32_t key = 0; key < (indexed ? 3u : 1u); ++key) {
        std::map<string, int> records;
        if (file.verb(file.fcb->start, {.relation = ZVK_RELATION_FIRST, .key = key}) == "00")
            while (file.read({.options = ZVK_REQUEST_NEXT | ZVK_REQUEST_IGNORE_LOCK}) < "10") {
                string text = file.record();
                records[(indexed ? "" : std::to_string(file.fcb->recordNumber) + ":") + text] += 1;
            }
        string now;
        for (const auto &[text, count] : records) now += text + "*" + std::to_string(count) + "\n";
        if (key && now != all) return "keys differ:\n" + all + "key\n" + now;
        all = now;
    }
    return all;
}

string contentsOf(const string &name, const FileAttributes &attributes)
{
    CompiledFile file(name, attributes);
    string status = file.open(ZVK_OPEN_INPUT);
    if (status != "00") return "OPEN " + status + " " + reason(file);
    string all = contents(file);
    file.close();
    return all;
}

class Transactions : public testing::Test {
protected:
    void SetUp() override { setenv("VFS_TRANSACTIONS", "on", 1); }
    void TearDown() override
    {
        rollBack();
        unsetenv("VFS_TRANSACTIONS");
    }
};

// One change of either file at random, and what it should hold then.
struct Model {
    std::map<int, int> indexed, relative;
};

void changeAtRandom(std::mt19937 &random, CompiledFile &indexed, CompiledFile &relative, Model *model)
{
    int n = 1 + static_cast<int>(random() % 40), value = static_cast<int>(random() % 1000);
    bool second = random() % 2;
    CompiledFile &file = second ? relative : indexed;
    std::map<int, int> &should = second ? model->relative : model->indexed;
    // Values differ between the files: record n of the relative one is textOf(n, value), cut.
    string text = textOf(n, value);
    if (second) text.resize(14 + random() % 7);
    FileRequest request = numbered(static_cast<uint64_t>(n));
    bool there = should.count(n);
    switch (random() % 3) {
    case 0:
        ASSERT_EQ(file.write(text, request) > "09", there);
        if (!there) should[n] = second ? static_cast<int>(text.size()) : value;
        break;
    case 1:
        ASSERT_EQ(file.rewrite(text, request) > "09", !there);
        if (there) should[n] = second ? static_cast<int>(text.size()) : value;
        break;
    default:
        file.move(text);
        ASSERT_EQ(file.verb(file.fcb->deleteRecord, request) > "09", !there);
        should.erase(n);
    }
}

size_t lines(const string &text) { return static_cast<size_t>(std::count(text.begin(), text.end(), '\n')); }

TEST_F(Transactions, KeepAllOrNothingAndOthersSeeIt)
{
    std::mt19937 random(7 + tortureSeed());
    TemporaryDirectory directory;
    const string one = "stl-" + directory.file("i"), two = "stl-" + directory.file("r");
    CompiledFile indexed(one, indexedFile()), relative(two, numberedFile());
    for (CompiledFile *file : {&indexed, &relative}) {
        ASSERT_EQ(file->open(ZVK_OPEN_OUTPUT), "00");
        ASSERT_EQ(file->close(), "00");
        ASSERT_EQ(file->open(ZVK_OPEN_IO), "00");
    }
    Model model;
    string keptOne, keptTwo;
    for (int round = 0; round < 60; ++round) {
        Model before = model;
        for (int i = 0; i < 30; ++i) changeAtRandom(random, indexed, relative, &model);
        if (HasFatalFailure()) return;
        string nowOne = contents(indexed), nowTwo = contents(relative);
        ASSERT_EQ(lines(nowOne), model.indexed.size()) << nowOne;
        ASSERT_EQ(lines(nowTwo), model.relative.size()) << nowTwo;
        // Another process sees what was committed last, at OPEN as before.
        pid_t other = fork();
        if (other == 0) {
            bool same = contentsOf(one, indexedFile()) == keptOne && contentsOf(two, numberedFile()) == keptTwo;
            _exit(same ? 0 : 1);
        }
        int ending;
        waitpid(other, &ending, 0);
        ASSERT_EQ(ending, 0) << round;
        switch (random() % 3) {
        case 0:
            ASSERT_EQ(rollBack(), 0);
            model = before;
            break;
        default:
            ASSERT_EQ(commit(), 0);
            keptOne = nowOne;
            keptTwo = nowTwo;
        }
        ASSERT_EQ(contents(indexed), keptOne);
        ASSERT_EQ(contents(relative), keptTwo);
        // CLOSE and OPEN do not end a transaction.
        if (round % 4 == 0) {
            ASSERT_LE(relative.write("closed", numbered(50)), "00");
            ASSERT_LE(indexed.write("000050abcdzzzz"), "02");
            for (CompiledFile *file : {&indexed, &relative}) {
                ASSERT_EQ(file->close(), "00");
                ASSERT_EQ(file->open(ZVK_OPEN_OUTPUT), "94");
                ASSERT_EQ(file->open(ZVK_OPEN_IO), "00");
            }
            EXPECT_NE(contents(relative).find("50:closed"), string::npos);
            EXPECT_NE(contents(indexed).find("abcdzzzz"), string::npos);
            ASSERT_EQ(rollBack(), 0);
            ASSERT_EQ(contents(indexed), keptOne);
            ASSERT_EQ(contents(relative), keptTwo);
        }
    }
    EXPECT_EQ(access((directory.file("i") + ".kvr2-commit").c_str(), F_OK), -1);
    indexed.close();
    relative.close();
}

TEST_F(Transactions, SequentialWritersGoOnAfterARollback)
{
    TemporaryDirectory directory;
    FileAttributes indexed = indexedFile(sequentialAccess), relative = numberedFile(sequentialAccess);
    for (const FileAttributes &attributes : {indexed, relative}) {
        CompiledFile file("stl-" + directory.file(attributes.keys.empty() ? "r" : "i"), attributes);
        ASSERT_EQ(file.open(ZVK_OPEN_OUTPUT), "00");
        for (int n : {1, 2}) ASSERT_LE(file.write(textOf(n, n)), "02");
        ASSERT_EQ(commit(), 0);
        for (int n : {3, 4, 5}) ASSERT_LE(file.write(textOf(n, n)), "02");
        ASSERT_EQ(rollBack(), 0);
        for (int n : {3, 4}) ASSERT_LE(file.write(textOf(n, n + 10)), "02");
        ASSERT_EQ(commit(), 0);
        ASSERT_EQ(file.close(), "00");
        ASSERT_EQ(file.open(ZVK_OPEN_INPUT), "00");
        for (int n : {1, 2, 3, 4}) {
            ASSERT_LE(file.read(next), "02");
            EXPECT_EQ(file.record(), textOf(n, n > 2 ? n + 10 : n));
        }
        EXPECT_EQ(file.read(next), "10");
        file.close();
    }
}

// What was read ahead before a rollback is not read after it.
TEST_F(Transactions, NothingOfARollbackIsReadAhead)
{
    TemporaryDirectory directory;
    for (bool alone : {false, true})
        for (FileAttributes attributes : {indexedFile(), numberedFile()}) {
            if (alone) attributes.share = ZVK_FILE_SHARE_NONE;
            CompiledFile file("stl-" + directory.file("f"), attributes);
            ASSERT_EQ(file.open(ZVK_OPEN_OUTPUT), "00");
            for (int n : {1, 2, 3}) ASSERT_LE(file.write(textOf(n, n), numbered(static_cast<uint64_t>(n))), "02");
            ASSERT_EQ(commit(), 0);
            file.close();
            ASSERT_EQ(file.open(ZVK_OPEN_IO), "00");
            ASSERT_LE(file.read(next), "02");
            ASSERT_LE(file.rewrite(textOf(2, 99), numbered(2)), "02");
            ASSERT_LE(file.write(textOf(4, 4), numbered(4)), "02");
            ASSERT_EQ(rollBack(), 0);
            for (int n : {2, 3}) {
                ASSERT_LE(file.read(next), "02");
                EXPECT_EQ(file.record(), textOf(n, n)) << alone;
            }
            EXPECT_EQ(file.read(next), "10") << alone;
            file.close();
            unlink(directory.file("f").c_str());
        }
}

TEST_F(Transactions, HoldLocksToTheirEnd)
{
    for (const FileAttributes &attributes : {indexedFile(), numberedFile()}) {
        TemporaryDirectory directory;
        const string name = "stl-" + directory.file("f");
        unsetenv("VFS_TRANSACTIONS");
        Peer plain(name, attributes);
        setenv("VFS_TRANSACTIONS", "on", 1);
        Peer other(name, attributes);
        CompiledFile file(name, attributes);
        ASSERT_EQ(file.open(ZVK_OPEN_OUTPUT), "00");
        for (int n = 1; n < 5; ++n) ASSERT_LE(file.write(textOf(n, n), numbered(static_cast<uint64_t>(n))), "02");
        ASSERT_EQ(commit(), 0);
        ASSERT_EQ(file.close(), "00");
        ASSERT_EQ(file.open(ZVK_OPEN_IO), "00");
        ASSERT_EQ(plain.open(ZVK_OPEN_IO), "00");
        ASSERT_EQ(other.open(ZVK_OPEN_IO), "00");
        auto keyed = [&](int n) { return textOf(n, 9); };
        file.move(keyed(1));
        ASSERT_EQ(file.read(numbered(1)), "00");
        file.move(keyed(2));
        ASSERT_EQ(file.read(numbered(2)), "00");
        ASSERT_LE(file.rewrite(keyed(2), numbered(2)), "02");
        ASSERT_EQ(file.verb(file.fcb->start, {.relation = ZVK_RELATION_FIRST}), "00");
        for (int n : {1, 2}) EXPECT_EQ(plain.read(keyed(n), numbered(static_cast<uint64_t>(n))), "99") << n;
        EXPECT_EQ(plain.read(keyed(2), {.options = ZVK_REQUEST_IGNORE_LOCK, .relativeKey = 2}), "00");
        EXPECT_EQ(plain.record(), textOf(2, 2)) << "not committed, and seen";
        EXPECT_EQ(plain.read(keyed(3), numbered(3)), "00");
        // CLOSE of a changed file ends none of its locks.
        ASSERT_EQ(file.close(), "00");
        EXPECT_EQ(plain.read(keyed(2), numbered(2)), "99");
        // A second transaction cannot change the same indexed file, but may wait for the first.
        if (!attributes.keys.empty()) {
            EXPECT_EQ(other.rewrite(keyed(4)), "99");
        }
        ASSERT_EQ(commit(), 0);
        EXPECT_LE(plain.rewrite(keyed(2), numbered(2)), "02");
        EXPECT_LE(other.rewrite(keyed(4), numbered(4)), "02");
        other.die(); // with a change that was not committed
        EXPECT_EQ(plain.read(keyed(4), numbered(4)), "00");
        EXPECT_EQ(plain.record(), textOf(4, 4));
        EXPECT_EQ(plain.close(), "00");
    }
}

// Transfers between accounts in two indexed files and a relative one; killed at any moment, also
// within a commit, while another program has the files open. Their sum stays.
// Relative files have no lock for a whole transaction: two of them commit at the same moment.
TEST_F(Transactions, OfSeveralProgramsEndWhateverTheirOrder)
{
    TemporaryDirectory directory;
    const string names[] = {"stl-" + directory.file("a"), "stl-" + directory.file("b")};
    for (const string &name : names) {
        CompiledFile file(name, relativeFile());
        ASSERT_EQ(file.open(ZVK_OPEN_OUTPUT), "00");
        for (uint64_t n : {1, 2, 3}) ASSERT_EQ(file.write("old", numbered(n)), "00");
        ASSERT_EQ(file.close(), "00");
    }
    ASSERT_EQ(commit(), 0);
    pid_t programs[3];
    for (uint64_t who : {0, 1, 2})
        if (!(programs[who] = fork())) {
            alarm(300); // who waits without end fails
            CompiledFile first(names[who % 2], relativeFile()), second(names[1 - who % 2], relativeFile());
            bool good = first.open(ZVK_OPEN_IO) == "00" && second.open(ZVK_OPEN_IO) == "00";
            for (int n = 0; good && n < shareOf(300); ++n) {
                string text = std::to_string(n);
                good =
                    first.rewrite(text, numbered(who + 1)) == "00" && second.rewrite(text, numbered(who + 1)) == "00";
                good = good && commit() == 0;
            }
            _exit(good ? 0 : 1);
        }
    for (pid_t program : programs) {
        int status = -1;
        waitpid(program, &status, 0);
        EXPECT_TRUE(WIFEXITED(status)) << "it waited for ever";
        EXPECT_EQ(WEXITSTATUS(status), 0) << "a verb or the commit failed";
    }
    for (const string &name : names) {
        string all;
        for (int n : {1, 2, 3}) all += std::to_string(n) + ":" + pad(std::to_string(shareOf(300) - 1), 10) + "*1\n";
        EXPECT_EQ(contentsOf(name, relativeFile()), all);
    }
}

// A user who may only read meets the journal of a commit that is being made, too.
TEST_F(Transactions, AreWaitedForByWhoMayOnlyRead)
{
    if (getuid() != 0) GTEST_SKIP() << "only root can become somebody else";
    TemporaryDirectory directory;
    const string path = directory.file("f"), name = "stl-" + path;
    {
        CompiledFile file(name, relativeFile());
        ASSERT_EQ(file.open(ZVK_OPEN_OUTPUT), "00");
        ASSERT_EQ(file.write("old", numbered(1)), "00");
        ASSERT_EQ(file.close(), "00");
        ASSERT_EQ(commit(), 0);
    }
    chmod(directory.path().c_str(), 0755);
    chmod(path.c_str(), 0644);
    pid_t writer = fork();
    if (writer == 0) {
        CompiledFile file(name, relativeFile());
        bool good = file.open(ZVK_OPEN_IO) == "00";
        while (good) good = file.rewrite("new", numbered(1)) == "00" && commit() == 0;
        _exit(1);
    }
    pid_t reader = fork();
    if (reader == 0) {
        CompiledFile file(name, relativeFile());
        string status = setuid(65534) == 0 ? file.open(ZVK_OPEN_INPUT) : "no other user";
        for (int n = 0; status == "00" && n < shareOf(2000); ++n) status = file.read(numbered(1));
        if (status != "00") fprintf(stderr, "%s %s\n", status.c_str(), reason(file).c_str());
        _exit(status == "00" ? 0 : 1);
    }
    int status = -1;
    waitpid(reader, &status, 0);
    EXPECT_EQ(status, 0);
    kill(writer, SIGKILL);
    waitpid(writer, nullptr, 0);
}

TEST_F(Transactions, KilledAtAnyMoment)
{
    setenv("VFS_DURABILITY", "none", 1);
    std::mt19937 random(11 + tortureSeed());
    TemporaryDirectory directory;
    FileAttributes indexed = indexedFile(), relative = numberedFile();
    const string names[] = {"stl-" + directory.file("a"), "stl-" + directory.file("b"), "stl-" + directory.file("r")};
    auto attributesOf = [&](int i) -> const FileAttributes & { return i == 2 ? relative : indexed; };
    constexpr int accounts = 20, each = 1000;
    for (int i = 0; i < 3; ++i) {
        CompiledFile file(names[i], attributesOf(i));
        ASSERT_EQ(file.open(ZVK_OPEN_OUTPUT), "00");
        for (int n = 1; n <= accounts; ++n)
            ASSERT_LE(file.write(textOf(n, each), numbered(static_cast<uint64_t>(n))), "02");
        ASSERT_EQ(commit(), 0);
        ASSERT_EQ(file.close(), "00");
    }
    auto valueOf = [](CompiledFile &file) { return atoi(file.record().substr(14, 6).c_str()); };
    auto sum = [&](CompiledFile &file) {
        int total = 0, count = 0;
        EXPECT_EQ(file.verb(file.fcb->start, {.relation = ZVK_RELATION_FIRST}), "00");
        for (; file.read({.options = ZVK_REQUEST_NEXT | ZVK_REQUEST_IGNORE_LOCK}) < "10"; ++count)
            total += valueOf(file);
        EXPECT_EQ(count, accounts) << file.status();
        return total;
    };
    // Has them open all the time.
    unsetenv("VFS_TRANSACTIONS");
    CompiledFile witness[] = {CompiledFile(names[0], indexed), CompiledFile(names[1], indexed),
                              CompiledFile(names[2], relative)};
    for (CompiledFile &file : witness) ASSERT_EQ(file.open(ZVK_OPEN_IO), "00");
    setenv("VFS_TRANSACTIONS", "on", 1);
    void *shared = mmap(nullptr, sizeof(std::atomic<int>), PROT_READ | PROT_WRITE, MAP_SHARED | MAP_ANONYMOUS, -1, 0);
    ASSERT_NE(shared, MAP_FAILED);
    std::atomic<int> &commits = *new (shared) std::atomic<int>;
    int moved = 0;
    for (int round = 0; round < killRounds(150); ++round) {
        uint32_t seed = random();
        commits = 0;
        pid_t child = fork();
        if (child == 0) {
            std::mt19937 own(seed);
            CompiledFile files[] = {CompiledFile(names[0], indexed), CompiledFile(names[1], indexed),
                                    CompiledFile(names[2], relative)};
            for (CompiledFile &file : files)
                if (file.open(ZVK_OPEN_IO) != "00") _exit(1);
            for (;;) {
                int from = static_cast<int>(own() % 3), to = static_cast<int>(own() % 3);
                for (auto [i, by] : {std::pair{from, -1}, {to, 1}}) {
                    uint64_t account = 1 + own() % accounts;
                    files[i].move(textOf(static_cast<int>(account), 0));
                    if (files[i].read(numbered(account)) != "00") _exit(2);
                    if (files[i].rewrite(textOf(static_cast<int>(account), valueOf(files[i]) + by), numbered(account)) >
                        "02")
                        _exit(3);
                }
                if (own() % 8 == 0 ? rollBack() : commit()) _exit(4);
                ++commits;
            }
        }
        // While it opens its files, or some time after one of its first commits.
        const int wanted = static_cast<int>(random() % 24);
        int ending;
        while (commits < wanted && waitpid(child, &ending, WNOHANG) == 0) usleep(50);
        usleep(random() % 1000);
        kill(child, SIGKILL);
        waitpid(child, &ending, 0);
        ASSERT_TRUE(WIFSIGNALED(ending)) << WEXITSTATUS(ending);
        int total = 0, last = 0;
        if (round % 2) {
            for (int i = 0; i < 3; ++i) total += last = sum(witness[(i + round / 2) % 3]);
        } else {
            setenv("VFS_TRANSACTIONS", "off", 1);
            for (int i = 0; i < 3; ++i) {
                CompiledFile file(names[(i + round) % 3], attributesOf((i + round) % 3));
                ASSERT_EQ(file.open(ZVK_OPEN_INPUT), "00") << reason(file);
                total += last = sum(file);
                file.close();
            }
            setenv("VFS_TRANSACTIONS", "on", 1);
        }
        ASSERT_EQ(total, 3 * accounts * each) << "round " << round;
        moved += last != accounts * each;
    }
    EXPECT_GT(moved, killRounds(150) / 3);
    munmap(shared, sizeof commits);
    for (CompiledFile &file : witness) file.close();
}

// Killed between any two of the writes and renames of a commit over three files.
TEST_F(Transactions, CommitThatStopsAnywhere)
{
    TemporaryDirectory directory;
    FileAttributes indexed = indexedFile(), relative = numberedFile();
    const string names[] = {"stl-" + directory.file("a"), "stl-" + directory.file("b"), "stl-" + directory.file("r")};
    auto attributesOf = [&](int i) -> const FileAttributes & { return i == 2 ? relative : indexed; };
    int kept = 0, lost = 0, complete = 0;
    for (int good = 0; !complete && good < 400; ++good) {
        for (int i = 0; i < 3; ++i) {
            CompiledFile file(names[i], attributesOf(i));
            ASSERT_EQ(file.open(ZVK_OPEN_OUTPUT), "00");
            ASSERT_LE(file.write(textOf(1, 100), numbered(1)), "02");
            ASSERT_EQ(commit(), 0);
            ASSERT_EQ(file.close(), "00");
        }
        // Another program may have them open all the time.
        unsetenv("VFS_TRANSACTIONS");
        CompiledFile witness[] = {CompiledFile(names[0], indexed), CompiledFile(names[1], indexed),
                                  CompiledFile(names[2], relative)};
        for (CompiledFile &file : witness)
            if (good % 2) {
                ASSERT_EQ(file.open(ZVK_OPEN_IO), "00");
            }
        setenv("VFS_TRANSACTIONS", "on", 1);
        pid_t child = fork();
        if (child == 0) {
            CompiledFile files[] = {CompiledFile(names[0], indexed), CompiledFile(names[1], indexed),
                                    CompiledFile(names[2], relative)};
            for (int i = 0; i < 3; ++i) {
                if (files[i].open(ZVK_OPEN_IO) != "00") _exit(1);
                if (files[i].rewrite(textOf(1, 200 + i), numbered(1)) > "02") _exit(2);
                // Changes that cannot be made twice: a key goes from one record to another.
                if (files[i].write("000003aaaazzzz", numbered(3)) > "02") _exit(3);
                files[i].move("000003");
                if (files[i].verb(files[i].fcb->deleteRecord, numbered(3)) != "00") _exit(3);
                string text = textOf(2, 200 + i).replace(10, 4, "zzzz");
                if (files[i].write(text, numbered(2)) > "02") _exit(3);
            }
            FailingDisk disk(FailingDisk::stopped, good);
            _exit(commit() == 0 ? 0 : 4);
        }
        int ending, news = 0;
        waitpid(child, &ending, 0);
        complete = WIFEXITED(ending) && WEXITSTATUS(ending) == 0;
        ASSERT_TRUE(complete || WIFSIGNALED(ending)) << WEXITSTATUS(ending);
        for (int i = 0; i < 3; ++i) {
            int which = (i + good / 2) % 3;
            string all = good % 2 ? contents(witness[which]) : contentsOf(names[which], attributesOf(which));
            bool isNew = all.find(std::to_string(200 + which)) != string::npos && lines(all) == 2;
            ASSERT_TRUE(isNew || (lines(all) == 1 && all.find("000100") != string::npos)) << all;
            news += isNew;
        }
        ASSERT_TRUE(news == 0 || news == 3) << "stopped at " << good << ": " << news << " files are new";
        ++(news ? kept : lost);
        for (CompiledFile &file : witness)
            if (good % 2) file.close();
        for (const char *name : {"a", "b", "r"})
            EXPECT_EQ(access((directory.file(name) + ".kvr2-commit").c_str(), F_OK), -1) << good << name;
    }
    EXPECT_TRUE(complete);
    EXPECT_GT(kept, 3);
    EXPECT_GT(lost, 3);
}

// A full disk: the transaction is rolled back, and that is told.
TEST_F(Transactions, FullDiskRollsBack)
{
    TemporaryDirectory directory;
    CompiledFile indexed("stl-" + directory.file("i"), indexedFile()),
        relative("stl-" + directory.file("r"), numberedFile());
    for (CompiledFile *file : {&indexed, &relative}) {
        ASSERT_EQ(file->open(ZVK_OPEN_OUTPUT), "00");
        ASSERT_LE(file->write(textOf(1, 1), numbered(1)), "02");
    }
    ASSERT_EQ(commit(), 0);
    string before = contentsOf("stl-" + directory.file("i"), indexedFile());
    indexed.close();
    relative.close();
    for (bool both : {false, true}) {
        ASSERT_EQ(indexed.open(ZVK_OPEN_IO), "00");
        ASSERT_EQ(relative.open(ZVK_OPEN_IO), "00");
        ASSERT_LE(indexed.write(textOf(2, 2)), "02");
        if (both) {
            ASSERT_LE(relative.write(textOf(2, 2), numbered(2)), "00");
        }
        {
            FailingDisk disk(FailingDisk::full);
            EXPECT_GE(commit(), 30);
        }
        EXPECT_EQ(indexed.close(), "00");
        EXPECT_EQ(relative.close(), "00");
        EXPECT_EQ(lines(contentsOf("stl-" + directory.file("i"), indexedFile())), 1u);
        EXPECT_EQ(lines(contentsOf("stl-" + directory.file("r"), numberedFile())), 1u);
    }
}

} // namespace
