// Faults these tests are there to catch: a failed write that is taken for a success, reported as
// something else, or leaves half a change; a file that works only in the thread that opened it.
#include <functional>
#include <map>
#include <thread>

#include "failing_disk.h"
#include "stored_files.h"

namespace {

// Writes to the store fail from some place of a change on: the change is as if it had not been, and
// after CLOSE and OPEN the file is as good as before.
TEST(FailedWrites, IndexedChangeIsUndone)
{
    for (uint8_t share : {0, 3})
        for (auto failure : {FailingDisk::inputOutput, FailingDisk::shortWrite, FailingDisk::full})
            for (int good = 0; good < 3; ++good) {
                TemporaryDirectory directory;
                FileAttributes attributes = indexedFile();
                attributes.share = share;
                CompiledFile file(directory.file("i"), attributes);
                ASSERT_EQ(file.open(ZVK_OPEN_OUTPUT), "00");
                for (int n = 0; n < 300; ++n)
                    ASSERT_LE(file.write(std::to_string(100000 + n) + "same" + std::to_string(1000 + n)), "02");
                ASSERT_EQ(file.close(), "00");
                ASSERT_EQ(file.open(ZVK_OPEN_IO), "00");
                string where = "share " + std::to_string(share) + " failure " + std::to_string(failure) + " after " +
                               std::to_string(good);
                // Where the disk is not full, a short write is no full disk.
                const char *expected = failure == FailingDisk::full ? "34" : "30";
                bool failed = false;
                {
                    FailingDisk disk(failure, good);
                    string status = file.rewrite("100000diff1000x");
                    if (share == 3) status = file.close();
                    failed = disk.writes() > good;
                    EXPECT_TRUE(failed || good) << "a change writes";
                    if (failed) {
                        EXPECT_EQ(status, expected) << where << " " << reason(file);
                        EXPECT_NE(reason(file), "") << where;
                    }
                }
                // What LMDB could not say in its own head is no store any more until the file is
                // opened again.
                if (file.fcb->mode) {
                    ASSERT_EQ(file.close(), "00") << where;
                }
                ASSERT_EQ(file.open(ZVK_OPEN_IO), "00") << where;
                EXPECT_LE(file.write("000000same0000"), "02") << where << reason(file);
                file.move("100000");
                EXPECT_EQ(file.read(), "00");
                EXPECT_EQ(file.record().substr(6, 4), failed ? "same" : "diff") << where;
                size_t count = 0;
                ASSERT_EQ(file.verb(file.fcb->start, {.relation = ZVK_RELATION_FIRST, .key = 1}), "00");
                while (file.read(next) < "10") ++count;
                EXPECT_EQ(count, 301u) << where;
                EXPECT_EQ(file.close(), "00");
            }
}

// The disk fills under a file that this program has alone: changes that the program was told are
// made go with the batch, so nothing after that may look as if all were well.
TEST(FailedWrites, LostBatchIsTold)
{
    TemporaryDirectory directory;
    FileAttributes attributes = {.longest = 20,
                                 .shortest = 20,
                                 .organization = ZVK_FILE_INDEXED,
                                 .access = sequentialAccess,
                                 .keys = {{6, 0, 0, {}}}};
    for (bool atClose : {false, true}) {
        CompiledFile file("stl-" + directory.file("i"), attributes);
        ASSERT_EQ(file.open(ZVK_OPEN_OUTPUT), "00");
        ASSERT_EQ(file.close(), "00");
        ASSERT_EQ(file.open(ZVK_OPEN_EXTEND), "00");
        int written = 0, failed = -1;
        {
            FailingDisk disk(FailingDisk::full);
            for (; written < (atClose ? 100 : 20000) && failed < 0; ++written)
                if (file.write(std::to_string(100000 + written)) > "02") failed = written;
            if (atClose) {
                EXPECT_EQ(failed, -1);
                EXPECT_EQ(file.close(), "34");
            }
        }
        if (!atClose) {
            EXPECT_GT(failed, 0);
            EXPECT_EQ(file.status(), "34");
            for (int n = 0; n < 3; ++n) {
                EXPECT_EQ(file.write(std::to_string(900000 + n)), "34");
                EXPECT_NE(reason(file).find("lost"), string::npos) << reason(file);
            }
            EXPECT_EQ(file.close(), "34");
        }
        ASSERT_EQ(file.open(ZVK_OPEN_EXTEND), "00");
        EXPECT_EQ(file.write("000001"), "00") << "the next OPEN begins anew";
        EXPECT_EQ(file.close(), "00");
        ASSERT_EQ(file.open(ZVK_OPEN_INPUT), "00");
        EXPECT_EQ(file.read(next), "00");
        EXPECT_EQ(file.record().substr(0, 6), "000001");
        EXPECT_EQ(file.read(next), "10");
        EXPECT_EQ(file.close(), "00");
    }
}

TEST(FailedWrites, OthersSayWhatHappened)
{
    for (string organization : {"rsd-", "lsq-", "wbr-", "stl-", "relative"})
        for (auto failure : {FailingDisk::inputOutput, FailingDisk::full}) {
            TemporaryDirectory directory;
            bool relative = organization == "relative";
            const char *expected = failure == FailingDisk::full ? "34" : "30";
            CompiledFile file((relative ? "stl-" : organization) + directory.file("f"),
                              relative ? relativeFile(sequentialAccess) : fixed10);
            ASSERT_EQ(file.open(ZVK_OPEN_OUTPUT), "00");
            ASSERT_EQ(file.write("one"), "00");
            ASSERT_EQ(file.close(), "00");
            ASSERT_EQ(file.open(ZVK_OPEN_EXTEND), "00");
            {
                FailingDisk disk(failure);
                string status = file.write("two");
                if (!relative) status = file.close(); // buffered until then
                EXPECT_EQ(status, expected) << organization;
                if (relative) file.close();
            }
            ASSERT_EQ(file.open(ZVK_OPEN_INPUT), "00");
            EXPECT_EQ(file.read(), "00");
            EXPECT_EQ(file.read(), "10") << organization;
            ASSERT_EQ(file.close(), "00");
        }
}

// One read of the file, or the question how long it is, fails at every place of OPEN and of the
// verb in turn: it is never taken for an empty file or an absent record. What was there stays, what
// was acknowledged is there, and the verb of a record that is there does not say 23.
TEST(FailedReads, AreNoEmptyFileAndNoAbsentRecord)
{
    FileAttributes relative = relativeFile(), inOrder = relativeFile(sequentialAccess), indexed = indexedFile(),
                   indexedInOrder = indexedFile(sequentialAccess);
    struct Case {
        const char *prefix, *what;
        FileAttributes attributes;
        uint16_t mode;
        char verb;
        uint64_t number;
    };
    const Case cases[] = {
        {"rsd-", "variable", varying, ZVK_OPEN_EXTEND, 'w', 3},
        {"rsd-", "fixed", fixed10, ZVK_OPEN_EXTEND, 'w', 3},
        {"lsq-", "lines", varying, ZVK_OPEN_EXTEND, 'w', 3},
        {"wbr-", "binary", fixed10, ZVK_OPEN_EXTEND, 'w', 3},
        {"stl-", "sequential", varying, ZVK_OPEN_EXTEND, 'w', 3},
        {"stl-", "relative", inOrder, ZVK_OPEN_EXTEND, 'w', 3},
        {"stl-", "relative", relative, ZVK_OPEN_IO, 'w', 1},
        {"stl-", "relative", relative, ZVK_OPEN_IO, 'x', 1},
        {"stl-", "relative", relative, ZVK_OPEN_IO, 'd', 1},
        {"stl-", "indexed", indexedInOrder, ZVK_OPEN_EXTEND, 'w', 3},
        {"stl-", "indexed", indexed, ZVK_OPEN_IO, 'x', 1},
    };
    for (const Case &kind : cases) {
        bool happened = true;
        for (int nth = 0; happened && nth < 100; ++nth) {
            TemporaryDirectory directory;
            string where = string(kind.prefix) + kind.what + " " + kind.verb + " read " + std::to_string(nth);
            CompiledFile file(kind.prefix + directory.file("f"), kind.attributes);
            auto text = [&](int n) {
                string number = std::to_string(n);
                return "00000" + number + (kind.attributes.longest == 20 ? "aaaa000" + number : "");
            };
            ASSERT_EQ(file.open(ZVK_OPEN_OUTPUT), "00");
            for (int n = 1; n < 3; ++n) ASSERT_LE(file.write(text(n), {.relativeKey = uint64_t(n)}), "02") << where;
            ASSERT_EQ(file.close(), "00");
            string opened, status = "not done";
            {
                FailingRead disk(nth);
                opened = file.open(kind.mode);
                FileRequest request = {.relativeKey = kind.number};
                file.move(text(1));
                if (opened < "10") {
                    status = kind.verb == 'w'   ? file.write(text(static_cast<int>(kind.number)), request)
                             : kind.verb == 'x' ? file.rewrite(text(1), request)
                                                : file.verb(file.fcb->deleteRecord, request);
                    // One that has an indexed file alone is told by CLOSE that its batch is lost.
                    string closed = file.close();
                    if (!kind.attributes.keys.empty() && closed > "09") status = closed;
                }
                happened = FailingRead::happened();
            }
            EXPECT_NE(opened, "35") << where;
            EXPECT_NE(opened, "05") << where;
            EXPECT_NE(status, "23") << where;
            bool done = status < "10", first = !(done && kind.verb == 'd');
            EXPECT_FALSE(done && kind.number == 1 && kind.verb == 'w') << where << ": it is there";
            ASSERT_EQ(file.open(ZVK_OPEN_INPUT), "00") << where;
            if (first) {
                EXPECT_EQ(file.read(next), "00") << where;
                EXPECT_EQ(file.record().substr(0, 6), "000001") << where;
            }
            EXPECT_EQ(file.read(next), "00") << where;
            EXPECT_EQ(file.record().substr(0, 6), "000002") << where;
            if (done && kind.number == 3) {
                EXPECT_EQ(file.read(next), "00") << where;
                EXPECT_EQ(file.record().substr(0, 6), "000003") << where;
            }
            EXPECT_EQ(file.read(next), "10") << where;
            file.close();
        }
        EXPECT_FALSE(happened) << kind.what << ": a hundred reads";
    }
}

TEST(Threads, FileMovesBetweenThreads)
{
    for (FileAttributes attributes : {indexedFile(), relativeFile(), fixed10}) {
        TemporaryDirectory directory;
        CompiledFile file("stl-" + directory.file("f"), attributes);
        auto inThread = [](const std::function<void()> &body) { std::thread(body).join(); };
        alarm(600); // a lock that belongs to another thread would be waited for
        for (uint8_t share : {0, 3}) {
            file.all.laidOut.fib.sharing = share;
            file.all.laidOut.fib.shareMode = share;
            inThread([&] { EXPECT_EQ(file.open(ZVK_OPEN_OUTPUT), "00"); });
            for (int n = 1; n < 5; ++n)
                inThread([&] {
                    EXPECT_LE(file.write("00000" + std::to_string(n) + "same000" + std::to_string(n),
                                         {.relativeKey = uint64_t(n)}),
                              "02");
                });
            inThread([&] { EXPECT_EQ(file.close(), "00"); });
            inThread([&] { EXPECT_EQ(file.open(ZVK_OPEN_IO), "00"); });
            for (int n = 1; n < 5; ++n) inThread([&] { EXPECT_EQ(file.read(next), "00"); });
            inThread([&] { EXPECT_EQ(file.read(next), "10"); });
            inThread([&] { EXPECT_EQ(file.close(), "00"); });
        }
        alarm(0);
    }
}

// Two files of one program that are the same file, each used by a thread of its own.
TEST(Threads, TwoFilesOfOneProgramAreTheSameFile)
{
    TemporaryDirectory directory;
    CompiledFile one(directory.file("i"), indexedFile()), two(directory.file("i"), indexedFile()),
        reader(directory.file("i"), indexedFile());
    ASSERT_EQ(one.open(ZVK_OPEN_OUTPUT), "00");
    ASSERT_EQ(one.close(), "00");
    ASSERT_EQ(reader.open(ZVK_OPEN_INPUT), "00") << "read first, written later";
    ASSERT_EQ(one.open(ZVK_OPEN_IO), "00");
    ASSERT_EQ(two.open(ZVK_OPEN_IO), "00");
    auto insert = [](CompiledFile &file, int from) {
        for (int n = from; n < 1000; n += 2) {
            char text[32];
            snprintf(text, sizeof text, "%06dsame%04d", n, n);
            EXPECT_LE(file.write(text), "02");
        }
    };
    std::thread other([&] { insert(two, 1); });
    insert(one, 0);
    other.join();
    EXPECT_EQ(one.close(), "00");
    EXPECT_EQ(two.close(), "00");
    int count = 0;
    while (reader.read(next) == "00") ++count;
    EXPECT_EQ(count, 1000);
    EXPECT_EQ(reader.close(), "00");
}

// A program that forks with a file open: the child opens the file for itself, and takes nothing of
// its parent's.
TEST(Threads, ChildProcessOpensForItself)
{
    TemporaryDirectory directory;
    CompiledFile file(directory.file("i"), indexedFile()), childs(directory.file("i"), indexedFile());
    ASSERT_EQ(file.open(ZVK_OPEN_OUTPUT), "00");
    ASSERT_EQ(file.close(), "00");
    ASSERT_EQ(file.open(ZVK_OPEN_IO), "00");
    ASSERT_EQ(file.write("000001aaaa0001"), "00");
    pid_t child = fork();
    if (child == 0) {
        if (childs.open(ZVK_OPEN_IO) != "00") _exit(1);
        for (int n = 2; n < 50; ++n)
            if (childs.write(std::to_string(100000 + n) + "bbbb" + std::to_string(1000 + n)) > "02") _exit(2);
        _exit(childs.close() == "00" ? 0 : 3);
    }
    for (int n = 50; n < 100; ++n)
        EXPECT_LE(file.write(std::to_string(100000 + n) + "bbbb" + std::to_string(1000 + n)), "02");
    int ending;
    waitpid(child, &ending, 0);
    EXPECT_EQ(ending, 0);
    int count = 0;
    ASSERT_EQ(file.verb(file.fcb->start, {.relation = ZVK_RELATION_FIRST}), "00");
    while (file.read(next) == "00") ++count;
    EXPECT_EQ(count, 99);
    EXPECT_EQ(file.close(), "00");
}

} // namespace
