// Faults these tests are there to catch: updates of two processes that overwrite each other; a file
// or record open to somebody who must be kept out, or kept from somebody who may have it; a lock
// that outlives its time.
#include <memory>
#include <thread>

#include "failing_disk.h"
#include "stored_files.h"

namespace {

TEST(Sharing, TwoProcessesLoseNoUpdate)
{
    TemporaryDirectory directory;
    CompiledFile file(directory.file("i"), indexedFile());
    file.open(ZVK_OPEN_OUTPUT);
    file.write("000001aaaabbbb000000");
    file.close();
    constexpr int updates = 500;
    auto worker = [&] {
        CompiledFile own(directory.file("i"), indexedFile());
        if (own.open(ZVK_OPEN_IO) != "00") _exit(1);
        for (int done = 0; done < updates;) {
            own.move("000001");
            string status = own.read();
            if (status == "99") {
                usleep(50);
                continue;
            }
            if (status != "00") _exit(2);
            char text[32];
            snprintf(text, sizeof text, "000001aaaabbbb%06d", atoi(own.record().substr(14).c_str()) + 1);
            if (own.rewrite(text) != "00") _exit(3);
            ++done;
        }
        own.close();
        _exit(0);
    };
    pid_t children[2];
    for (pid_t &child : children)
        if ((child = fork()) == 0) worker();
    for (pid_t child : children) {
        int ending;
        waitpid(child, &ending, 0);
        EXPECT_EQ(ending, 0);
    }
    ASSERT_EQ(file.open(ZVK_OPEN_IO), "00");
    file.move("000001");
    EXPECT_EQ(file.read(), "00");
    EXPECT_EQ(file.record().substr(14), "001000");
    // The record is locked now, for another open of this process, too.
    CompiledFile other(directory.file("i"), indexedFile());
    ASSERT_EQ(other.open(ZVK_OPEN_IO), "00");
    other.move("000001");
    EXPECT_EQ(other.read(), "99");
    EXPECT_EQ(other.verb(other.fcb->deleteRecord, {}), "99");
    EXPECT_EQ(other.read({.options = ZVK_REQUEST_IGNORE_LOCK}), "00");
    file.close();
    EXPECT_EQ(other.read(), "00");
    other.close();
}

// Who may have a file together with whom: each mode and SHARE clause of one open against each of
// another, both in other processes.
TEST(Sharing, EveryModeAndClauseAgainstEveryOther)
{
    const uint16_t modes[] = {ZVK_OPEN_INPUT, ZVK_OPEN_OUTPUT, ZVK_OPEN_IO, ZVK_OPEN_EXTEND};
    enum { allOther = ZVK_FILE_SHARE_ALL, readOnly = ZVK_FILE_SHARE_READ, noOther = ZVK_FILE_SHARE_NONE };
    for (FileAttributes attributes : {indexedFile(sequentialAccess), relativeFile(sequentialAccess), fixed10})
        for (uint8_t firstShare : {allOther, readOnly, noOther})
            for (uint8_t secondShare : {allOther, readOnly, noOther}) {
                TemporaryDirectory directory;
                const string name = "stl-" + directory.file("f");
                CompiledFile made(name, attributes);
                ASSERT_EQ(made.open(ZVK_OPEN_OUTPUT), "00");
                ASSERT_EQ(made.write("1         2222333355"), "00");
                ASSERT_EQ(made.close(), "00");
                attributes.share = firstShare;
                Peer first(name, attributes);
                attributes.share = secondShare;
                Peer second(name, attributes);
                // Where a writer keeps its place in the file there can be only one.
                auto shareOf = [&](uint8_t share, uint16_t mode) -> uint8_t {
                    if (mode == ZVK_OPEN_OUTPUT) return noOther;
                    bool alone = attributes.organization == 0 ||
                                 (attributes.organization == ZVK_FILE_RELATIVE && mode == ZVK_OPEN_EXTEND);
                    return alone && mode != ZVK_OPEN_INPUT && share == allOther ? uint8_t{readOnly} : share;
                };
                for (uint16_t a : modes)
                    for (uint16_t b : modes) {
                        uint8_t shareA = shareOf(firstShare, a), shareB = shareOf(secondShare, b);
                        auto admits = [](uint8_t share, uint16_t other) {
                            return share == allOther || (share == readOnly && other == ZVK_OPEN_INPUT);
                        };
                        bool together = admits(shareA, b) && admits(shareB, a);
                        string where = std::to_string(attributes.organization) + ": " + std::to_string(a) + " share " +
                                       std::to_string(firstShare) + ", " + std::to_string(b) + " share " +
                                       std::to_string(secondShare);
                        ASSERT_EQ(first.open(a), "00") << where;
                        EXPECT_EQ(second.open(b), together ? "00" : "94") << where;
                        EXPECT_EQ(second.close(), together ? "00" : "42");
                        EXPECT_EQ(first.close(), "00") << where;
                    }
            }
}

TEST(Sharing, ExclusiveLockModeAdmitsNobody)
{
    for (FileAttributes attributes : {indexedFile(), relativeFile(), fixed10}) {
        TemporaryDirectory directory;
        const string name = "stl-" + directory.file("f");
        Peer plain(name, attributes);
        attributes.share = ZVK_FILE_SHARE_ALL;
        attributes.lock = ZVK_FILE_LOCK_EXCLUSIVE;
        Peer exclusive(name, attributes);
        ASSERT_EQ(plain.open(ZVK_OPEN_OUTPUT), "00");
        ASSERT_EQ(plain.write("000001aaaa0001", {.relativeKey = 1}), "00");
        ASSERT_EQ(plain.close(), "00");
        for (uint16_t mode : {ZVK_OPEN_INPUT, ZVK_OPEN_IO}) {
            ASSERT_EQ(exclusive.open(mode), "00");
            EXPECT_EQ(plain.open(ZVK_OPEN_INPUT), "94");
            EXPECT_EQ(plain.open(ZVK_OPEN_OUTPUT), "94");
            EXPECT_EQ(exclusive.read("000001", {.relativeKey = 1}), "00") << "what is not to be shared was not emptied";
            ASSERT_EQ(exclusive.close(), "00");
            ASSERT_EQ(plain.open(ZVK_OPEN_INPUT), "00");
            EXPECT_EQ(exclusive.open(mode), "94");
            ASSERT_EQ(plain.close(), "00");
        }
    }
}

// The two organizations that have record locks, by the same statements: record 1 and record 2.
struct Locking : testing::TestWithParam<uint8_t> {
    TemporaryDirectory directory;
    const string name = "stl-" + directory.file("f");
    FileAttributes attributes = GetParam() == ZVK_FILE_INDEXED ? indexedFile() : relativeFile();

    static FileRequest with(int record, uint32_t options = 0)
    {
        return {.options = options, .relativeKey = static_cast<uint64_t>(record)};
    }
    string text(int record) const
    {
        return GetParam() == ZVK_FILE_INDEXED ? "00000" + std::to_string(record) + "same000" + std::to_string(record)
                                              : "r";
    }
    void SetUp() override
    {
        CompiledFile file(name, attributes);
        ASSERT_EQ(file.open(ZVK_OPEN_OUTPUT), "00");
        for (int record : {1, 2, 3}) ASSERT_LE(file.write(text(record), with(record)), "02");
        ASSERT_EQ(file.close(), "00");
    }
};
INSTANTIATE_TEST_SUITE_P(Organizations, Locking, testing::Values(ZVK_FILE_INDEXED, ZVK_FILE_RELATIVE),
                         [](const auto &organization) {
                             return organization.param == ZVK_FILE_INDEXED ? "Indexed" : "Relative";
                         });

TEST_P(Locking, AutomaticLocksGoWithTheNextVerb)
{
    Peer one(name, attributes), two(name, attributes);
    FileAttributes reader = attributes;
    reader.share = ZVK_FILE_SHARE_ALL;
    Peer looker(name, reader), plain(name, attributes);
    ASSERT_EQ(one.open(ZVK_OPEN_IO), "00");
    ASSERT_EQ(two.open(ZVK_OPEN_IO), "00");
    ASSERT_EQ(looker.open(ZVK_OPEN_INPUT), "00");
    ASSERT_EQ(plain.open(ZVK_OPEN_INPUT), "00");
    EXPECT_EQ(one.read(text(1), with(1)), "00");
    EXPECT_EQ(one.read(text(1), with(1)), "00") << "its own lock";
    EXPECT_EQ(two.read(text(1), with(1)), "99");
    EXPECT_EQ(two.read(text(1), with(1, ZVK_REQUEST_NO_LOCK)), "99") << "takes no lock, and heeds the others'";
    EXPECT_EQ(two.read(text(1), with(1, ZVK_REQUEST_IGNORE_LOCK)), "00");
    EXPECT_EQ(two.rewrite(text(1), with(1)), "99");
    EXPECT_EQ(two.erase(text(1), with(1)), "99");
    EXPECT_EQ(looker.read(text(1), with(1)), "99") << "INPUT with a SHARE clause looks at locks";
    EXPECT_EQ(plain.read(text(1), with(1)), "00");
    EXPECT_EQ(two.read(text(2), with(2)), "00");
    EXPECT_EQ(one.read(text(2), with(2)), "99");
    EXPECT_EQ(two.read(text(1), with(1)), "00") << "the READ that was refused ended the lock on record 1";
    EXPECT_EQ(one.read(text(2), with(2)), "00");
    EXPECT_EQ(one.rewrite(text(2), with(2)), "00");
    EXPECT_EQ(two.read(text(2), with(2)), "00") << "REWRITE ends the lock";
    EXPECT_EQ(two.start(text(1), {.relation = ZVK_RELATION_EQUAL, .relativeKey = 1}), "00");
    EXPECT_EQ(one.read(text(2), with(2)), "00") << "START ends the lock";
    EXPECT_EQ(one.read(text(9), with(9)), "23");
    EXPECT_EQ(two.read(text(2), with(2)), "00") << "a READ that finds nothing ends the lock";
    EXPECT_EQ(one.erase(text(3), with(3)), "00");
    EXPECT_EQ(one.write(text(3), with(3)).substr(0, 1), "0");
    EXPECT_EQ(two.close(), "00");
    EXPECT_EQ(one.read(text(2), with(2)), "00") << "CLOSE ends the lock";
    ASSERT_EQ(two.open(ZVK_OPEN_IO), "00");
    one.die();
    EXPECT_EQ(two.read(text(2), with(2)), "00") << "a killed program leaves nothing locked";
}

TEST_P(Locking, SequentialReadStopsAtALockAndGoesOnFromThere)
{
    Peer one(name, attributes), two(name, attributes);
    ASSERT_EQ(one.open(ZVK_OPEN_IO), "00");
    ASSERT_EQ(two.open(ZVK_OPEN_IO), "00");
    EXPECT_EQ(one.read(text(2), with(2)), "00");
    EXPECT_EQ(two.read(next), "00");
    EXPECT_EQ(two.read(next), "99");
    EXPECT_EQ(two.read(next), "99");
    EXPECT_EQ(one.read(text(3), with(3)), "00");
    EXPECT_EQ(two.read(next), "00");
    EXPECT_EQ(two.record().substr(0, 6), (text(2) + string(10, ' ')).substr(0, 6));
    EXPECT_EQ(two.read(next), "99");
    EXPECT_EQ(two.read({.options = ZVK_REQUEST_NEXT | ZVK_REQUEST_IGNORE_LOCK}), "00");
    EXPECT_EQ(two.read(next), "10");
}

TEST_P(Locking, ManualLocksOnlyWhatIsSaid)
{
    attributes.share = ZVK_FILE_SHARE_ALL;
    attributes.lock = ZVK_FILE_LOCK_MANUAL;
    Peer one(name, attributes), two(name, attributes);
    ASSERT_EQ(one.open(ZVK_OPEN_IO), "00");
    ASSERT_EQ(two.open(ZVK_OPEN_IO), "00");
    EXPECT_EQ(one.read(text(1), with(1)), "00");
    EXPECT_EQ(two.read(text(1), with(1, ZVK_REQUEST_LOCK)), "00") << "a READ without LOCK locks nothing";
    EXPECT_EQ(one.read(text(1), with(1)), "99");
    EXPECT_EQ(one.rewrite(text(1), with(1)), "99");
    EXPECT_EQ(two.unlock(), "00");
    EXPECT_EQ(one.rewrite(text(1), with(1)), "00") << "nobody has it";
    EXPECT_EQ(two.read(text(1), with(1)), "00") << "a REWRITE locks only while it works";
}

TEST_P(Locking, SeveralLocksStayUntilUnlock)
{
    for (uint8_t lock : {ZVK_FILE_LOCK_MANUAL, ZVK_FILE_LOCK_AUTOMATIC}) {
        attributes.share = ZVK_FILE_SHARE_ALL | ZVK_FILE_LOCK_COUNT;
        attributes.lock = lock;
        Peer one(name, attributes), two(name, attributes);
        ASSERT_EQ(one.open(ZVK_OPEN_IO), "00");
        ASSERT_EQ(two.open(ZVK_OPEN_IO), "00");
        uint32_t option = lock == ZVK_FILE_LOCK_MANUAL ? ZVK_REQUEST_LOCK : 0;
        for (int record : {1, 2, 3}) EXPECT_EQ(one.read(text(record), with(record, option)), "00");
        EXPECT_EQ(one.rewrite(text(2), with(2)), "00");
        for (int record : {1, 2, 3}) EXPECT_EQ(two.read(text(record), with(record, option)), "99") << record;
        EXPECT_EQ(one.read(text(1), with(1)), "00");
        EXPECT_EQ(one.unlock(), "00");
        for (int record : {1, 2, 3}) EXPECT_EQ(two.read(text(record), with(record, option)), "00") << record;
        EXPECT_EQ(two.close(), "00");
        EXPECT_EQ(one.read(text(3), with(3)), "00");
    }
}

// Each of three processes counts in one record.
TEST_P(Locking, TwoProcessesLoseNoUpdate)
{
    constexpr int updates = 300;
    CompiledFile file(name, attributes);
    auto counted = [&](int value) {
        char digits[16];
        snprintf(digits, sizeof digits, "%04d", value);
        return GetParam() == ZVK_FILE_INDEXED ? "000001same0001" + string(digits) : string(digits);
    };
    auto valueOf = [&](const string &record) {
        return atoi(record.substr(GetParam() == ZVK_FILE_INDEXED ? 14 : 0, 4).c_str());
    };
    pid_t children[3];
    for (pid_t &child : children) {
        child = fork();
        if (child) continue;
        CompiledFile own(name, attributes);
        if (own.open(ZVK_OPEN_IO) != "00") _exit(1);
        for (int done = 0; done < updates;) {
            own.move("000001");
            string status = own.read(with(1));
            if (status == "99") {
                usleep(20);
                continue;
            }
            if (status != "00") _exit(2);
            status = own.rewrite(counted(valueOf(own.record()) + 1), with(1));
            if (status != "00" && status != "02") _exit(3);
            ++done;
        }
        own.close();
        _exit(0);
    }
    for (pid_t child : children) {
        int ending;
        waitpid(child, &ending, 0);
        EXPECT_EQ(ending, 0);
    }
    ASSERT_EQ(file.open(ZVK_OPEN_INPUT), "00");
    file.move("000001");
    EXPECT_EQ(file.read(with(1)), "00");
    EXPECT_EQ(valueOf(file.record()), 3 * updates);
    file.close();
}

// Three processes insert records under one alternate key at a time: each is there, once, by both
// keys.
TEST(Sharing, ProcessesInsertSideBySide)
{
    TemporaryDirectory directory;
    const string name = directory.file("i");
    CompiledFile file(name, indexedFile());
    ASSERT_EQ(file.open(ZVK_OPEN_OUTPUT), "00");
    ASSERT_EQ(file.close(), "00");
    constexpr int each = 400;
    pid_t children[3];
    for (int who = 0; who < 3; ++who) {
        children[who] = fork();
        if (children[who]) continue;
        CompiledFile own(name, indexedFile());
        if (own.open(ZVK_OPEN_IO) != "00") _exit(1);
        for (int i = 0; i < each; ++i) {
            char text[32];
            snprintf(text, sizeof text, "%06dsame%04d", 3 * i + who, 3 * i + who);
            if (own.write(text) > "02") _exit(2);
        }
        _exit(own.close() == "00" ? 0 : 3);
    }
    for (pid_t child : children) {
        int ending;
        waitpid(child, &ending, 0);
        EXPECT_EQ(ending, 0);
    }
    ASSERT_EQ(file.open(ZVK_OPEN_INPUT), "00");
    for (int i = 0; i < 3 * each; ++i) {
        ASSERT_EQ(file.read(next), "00");
        ASSERT_EQ(atoi(file.record().substr(0, 6).c_str()), i);
    }
    EXPECT_EQ(file.read(next), "10");
    file.move("      same");
    string status = file.verb(file.fcb->start, {.relation = ZVK_RELATION_EQUAL, .key = 1});
    int count = 0, lastOf[3] = {-1, -1, -1};
    while (status < "10" && (status = file.read(next)) < "10") {
        int number = atoi(file.record().substr(0, 6).c_str());
        EXPECT_GT(number, lastOf[number % 3]) << "duplicates of one program in the order of its WRITEs";
        lastOf[number % 3] = number;
        ++count;
    }
    EXPECT_EQ(count, 3 * each);
    file.close();
}

// Programs that are killed while they read leave places in the store's table of readers; they must
// not use it up.
TEST(Sharing, KilledReadersLeaveRoomForOthers)
{
    TemporaryDirectory directory;
    const string name = directory.file("i");
    CompiledFile file(name, indexedFile());
    ASSERT_EQ(file.open(ZVK_OPEN_OUTPUT), "00");
    file.write("000001aaaabbbb");
    ASSERT_EQ(file.close(), "00");
    Peer keeper(name, indexedFile()); // the table lives as long as somebody has the file open
    ASSERT_EQ(keeper.open(ZVK_OPEN_INPUT), "00");
    for (int i = 0; i < 150; ++i) {
        Peer reader(name, indexedFile());
        ASSERT_EQ(reader.open(ZVK_OPEN_INPUT), "00") << i;
        ASSERT_EQ(reader.read(next), "00") << i;
        reader.die();
    }
}

// EXTEND that others may write beside: each change is committed, and nobody waits for anybody.
TEST(Sharing, ExtendWithAllOtherLetsOthersWrite)
{
    TemporaryDirectory directory;
    const string name = directory.file("i");
    CompiledFile made(name, indexedFile());
    ASSERT_EQ(made.open(ZVK_OPEN_OUTPUT), "00");
    ASSERT_EQ(made.close(), "00");
    FileAttributes shared = indexedFile();
    shared.share = ZVK_FILE_SHARE_ALL;
    Peer one(name, shared), two(name, shared);
    ASSERT_EQ(one.open(ZVK_OPEN_EXTEND), "00");
    ASSERT_EQ(two.open(ZVK_OPEN_IO), "00");
    EXPECT_EQ(one.write("000001aaaa0001"), "00");
    alarm(600); // a wait would be for ever
    EXPECT_EQ(two.write("000002aaaa0002"), "02");
    alarm(0);
    EXPECT_EQ(two.read("000001"), "00");
}

// Waiting has an end, ends when the lock does, and the record is the one that the other has left.
// Where there are no locks, no status says that there are too many, no OPEN empties what it cannot
// make anew, and what works alone works.
TEST(Sharing, WithoutLocks)
{
    TemporaryDirectory directory;
    CompiledFile indexed(directory.file("i"), indexedFile()), relative(directory.file("r"), relativeFile()),
        lines("rsd-" + directory.file("s"), fixed10);
    for (CompiledFile *file : {&indexed, &relative, &lines}) {
        ASSERT_EQ(file->open(ZVK_OPEN_OUTPUT), "00");
        ASSERT_EQ(file->write("000001aaaabbbb000000", {.relativeKey = 1}), "00");
        ASSERT_EQ(file->close(), "00");
    }
    {
        LocklessDisk disk;
        for (uint16_t mode : {uint16_t{ZVK_OPEN_OUTPUT}, uint16_t{ZVK_OPEN_IO}, uint16_t{ZVK_OPEN_INPUT}}) {
            EXPECT_EQ(indexed.open(mode), "93") << mode;
            EXPECT_EQ(reason(indexed), strerrordesc_np(ENOLCK)) << mode;
        }
        EXPECT_EQ(relative.open(ZVK_OPEN_IO), "93");
        EXPECT_EQ(reason(relative), strerrordesc_np(ENOLCK));
        ASSERT_EQ(relative.open(ZVK_OPEN_INPUT), "00");
        EXPECT_EQ(relative.read(next), "00");
        EXPECT_EQ(relative.close(), "00");
        FileAttributes noOther = relativeFile();
        noOther.share = ZVK_FILE_SHARE_NONE;
        CompiledFile alone(directory.file("r"), noOther);
        ASSERT_EQ(alone.open(ZVK_OPEN_IO), "00");
        EXPECT_EQ(alone.read({.relativeKey = 1}), "00");
        EXPECT_EQ(alone.rewrite("changed", {.relativeKey = 1}), "00");
        EXPECT_EQ(alone.close(), "00");
        ASSERT_EQ(lines.open(ZVK_OPEN_EXTEND), "00");
        EXPECT_EQ(lines.write("second"), "00");
        EXPECT_EQ(lines.close(), "00");
    }
    ASSERT_EQ(indexed.open(ZVK_OPEN_IO), "00");
    EXPECT_EQ(indexed.read(next), "00");
    EXPECT_EQ(indexed.record(), "000001aaaabbbb000000");
    indexed.close();
    ASSERT_EQ(lines.open(ZVK_OPEN_INPUT), "00");
    EXPECT_EQ(lines.read(), "00");
    EXPECT_EQ(lines.read(), "00");
    EXPECT_EQ(lines.record(), pad("second", 10));
    lines.close();
}

TEST(Waiting, ForARecordOrAFile)
{
    auto since = [](timespec start) {
        timespec now;
        clock_gettime(CLOCK_MONOTONIC, &now);
        return static_cast<double>(now.tv_sec - start.tv_sec) + static_cast<double>(now.tv_nsec - start.tv_nsec) / 1e9;
    };
    auto afterAWhile = [](auto what) {
        return std::thread([what] {
            usleep(150000);
            what();
        });
    };
    FileAttributes numbered = relativeFile();
    numbered.longest = numbered.shortest = 20;
    for (const FileAttributes &attributes : {indexedFile(), numbered}) {
        TemporaryDirectory directory;
        const string name = "stl-" + directory.file("f");
        auto other = std::make_unique<Peer>(name, attributes);
        CompiledFile file(name, attributes);
        ASSERT_EQ(file.open(ZVK_OPEN_OUTPUT), "00");
        ASSERT_EQ(file.write("000001aaaabbbbold", {.relativeKey = 1}), "00");

        // OPEN waits for the file itself.
        setenv("VFS_LOCK_WAIT", "30", 1);
        EXPECT_EQ(other->open(ZVK_OPEN_IO), "94") << "its environment is its own";
        file.close();
        ASSERT_EQ(other->open(ZVK_OPEN_IO), "00");
        unsetenv("VFS_LOCK_WAIT");
        ASSERT_EQ(file.open(ZVK_OPEN_IO), "00");
        const FileRequest keyed = {.relativeKey = 1};
        ASSERT_EQ(other->read("000001", keyed), "00");
        file.move("000001");
        EXPECT_EQ(file.read(keyed), "99");

        timespec start;
        clock_gettime(CLOCK_MONOTONIC, &start);
        for (uint32_t how : {ZVK_REQUEST_RETRY_TIMES, ZVK_REQUEST_RETRY_SECONDS})
            EXPECT_EQ(file.read({.options = how, .retry = how == ZVK_REQUEST_RETRY_TIMES ? 4 : 1, .relativeKey = 1}),
                      "99");
        EXPECT_GT(since(start), 1.3);

        // Until the other has changed it, which is what is read then.
        FileRequest forever = {.options = ZVK_REQUEST_RETRY_FOREVER, .relativeKey = 1};
        std::thread changer = afterAWhile([&] { other->rewrite("000001aaaabbbbnew", keyed); });
        EXPECT_EQ(file.read(forever), "00");
        EXPECT_EQ(file.record().substr(14, 3), "new");
        changer.join();
        EXPECT_EQ(other->rewrite("000001aaaabbbbtoo", keyed), "99");
        std::thread ours = afterAWhile([&] { file.verb(file.fcb->start, {.relation = ZVK_RELATION_FIRST}); });
        EXPECT_EQ(other->rewrite("000001aaaabbbbtoo", forever), "00");
        ours.join();

        // Or until it is killed. Nothing is held meanwhile that keeps the store's pages.
        ASSERT_EQ(other->read("000001", keyed), "00");
        std::thread killer = afterAWhile([&] { other->die(); });
        file.move("000001");
        EXPECT_EQ(
            file.verb(file.fcb->deleteRecord, {.options = ZVK_REQUEST_RETRY_SECONDS, .retry = 600, .relativeKey = 1}),
            "00");
        killer.join();
        EXPECT_EQ(file.close(), "00");

        // A value of the environment goes for all verbs, and for OPEN.
        setenv("VFS_LOCK_WAIT", "0.3", 1);
        Peer holder(name, attributes);
        ASSERT_EQ(holder.open(ZVK_OPEN_OUTPUT), "00");
        clock_gettime(CLOCK_MONOTONIC, &start);
        EXPECT_EQ(file.open(ZVK_OPEN_IO), "94");
        EXPECT_GT(since(start), 0.25);
        setenv("VFS_LOCK_WAIT", "600", 1);
        std::thread ending = afterAWhile([&] { holder.die(); });
        EXPECT_EQ(file.open(ZVK_OPEN_IO), "00");
        ending.join();
        file.close();
        unsetenv("VFS_LOCK_WAIT");
    }
}

// The file that was waited for may have lost its name to another.
TEST(Waiting, ForAFileThatIsReplaced)
{
    TemporaryDirectory directory;
    const string path = directory.file("lines"), name = "lsq-" + path;
    writeFile(path, "one\ntwo\nthree\n");
    CompiledFile holder(name, fixed10), waiter(name, fixed10);
    ASSERT_EQ(holder.open(ZVK_OPEN_IO), "00");
    ASSERT_EQ(holder.read(), "00");
    ASSERT_EQ(holder.verb(holder.fcb->deleteRecord, {}), "00");
    setenv("VFS_LOCK_WAIT", "600", 1);
    std::thread ending([&] {
        usleep(150000);
        EXPECT_EQ(holder.close(), "00");
    });
    EXPECT_EQ(waiter.open(ZVK_OPEN_EXTEND), "00");
    ending.join();
    unsetenv("VFS_LOCK_WAIT");
    EXPECT_EQ(waiter.write("four"), "00");
    EXPECT_EQ(waiter.close(), "00");
    EXPECT_EQ(readFile(path), "two\nthree\nfour\n");
}

} // namespace
