// Faults these tests are there to catch: records lost that were promised, half records, and an
// index that disagrees with its records, after the program was killed.
#include <functional>
#include <map>
#include <random>

#include "stored_files.h"

namespace {

// Runs `body` in another process and kills it after some time; `body` says through the function it
// gets how far its promises reach. Returns the last promise.
int killedAt(std::mt19937 &random, const std::function<void(const std::function<void(int)> &)> &body)
{
    int promises[2];
    EXPECT_EQ(pipe(promises), 0);
    pid_t child = fork();
    if (child == 0) {
        body([&](int promised) {
            if (write(promises[1], &promised, sizeof promised) < 0) _exit(9);
        });
        _exit(0);
    }
    close(promises[1]);
    usleep(500 + random() % 15000);
    kill(child, SIGKILL);
    int ending, promised = 0, last = 0;
    waitpid(child, &ending, 0);
    EXPECT_TRUE(WIFSIGNALED(ending) || WEXITSTATUS(ending) == 0) << WEXITSTATUS(ending);
    while (read(promises[0], &promised, sizeof promised) == sizeof promised) last = promised;
    close(promises[0]);
    return last;
}

struct Writing {
    const char *what;
    const char *prefix;
    FileAttributes attributes;
    uint16_t mode;   // of every OPEN but the first
    bool atOnce;     // what WRITE acknowledged is promised, not only what CLOSE did
    bool madeBefore; // the mode needs a file
};

string textOf(int n)
{
    char text[32];
    snprintf(text, sizeof text, "%06daaaa%04d", n, n % 10000);
    return text;
}

// A writer of ascending records, opening and closing its file.
TEST(Crash, KilledWriterLosesNothingThatWasPromised)
{
    FileAttributes fixed20 = {.longest = 20, .shortest = 20}, indexed = indexedFile(), numbered = relativeFile(),
                   numberedInOrder;
    numbered.longest = numbered.shortest = 20;
    numberedInOrder = numbered;
    numberedInOrder.access = sequentialAccess;
    FileAttributes indexedInOrder = indexedFile(sequentialAccess);
    const Writing kinds[] = {
        {"record sequential, variable", "rsd-", varying, ZVK_OPEN_EXTEND, false, false},
        {"record sequential, fixed", "rsd-", fixed20, ZVK_OPEN_EXTEND, false, false},
        {"line sequential", "lsq-", varying, ZVK_OPEN_EXTEND, false, false},
        {"binary", "wbr-", fixed20, ZVK_OPEN_EXTEND, false, false},
        {"sequential, variable", "stl-", varying, ZVK_OPEN_EXTEND, false, false},
        {"sequential, fixed", "stl-", fixed20, ZVK_OPEN_EXTEND, false, false},
        {"relative, shared", "stl-", numbered, ZVK_OPEN_IO, true, true},
        {"relative, extended", "stl-", numberedInOrder, ZVK_OPEN_EXTEND, true, false},
        {"indexed, shared", "stl-", indexed, ZVK_OPEN_IO, true, true},
        {"indexed, alone", "stl-", indexedInOrder, ZVK_OPEN_EXTEND, false, false},
    };
    std::mt19937 random(3 + tortureSeed());
    for (const Writing &kind : kinds)
        for (int round = 0; round < killRounds(30); ++round) {
            TemporaryDirectory directory;
            string name = kind.prefix + directory.file("f");
            if (kind.madeBefore) {
                CompiledFile made(name, kind.attributes);
                made.open(ZVK_OPEN_OUTPUT);
                made.close();
            }
            int promised = killedAt(random, [&](auto promise) {
                CompiledFile file(name, kind.attributes);
                for (int n = 0, opened = 0; n < 9000; ++opened) {
                    if (file.open(opened || kind.madeBefore ? kind.mode : uint16_t{ZVK_OPEN_OUTPUT}) > "09") _exit(1);
                    for (int i = 0; i < 100; ++i) {
                        if (file.write(textOf(n), {.relativeKey = static_cast<uint64_t>(n) + 1}) > "09") _exit(2);
                        ++n;
                        if (kind.atOnce) promise(n);
                    }
                    if (file.close() != "00") _exit(3);
                    promise(n);
                }
            });
            CompiledFile file(name, kind.attributes);
            string opened = file.open(ZVK_OPEN_INPUT);
            if (opened == "35" && promised == 0) continue; // killed before it made the file
            ASSERT_EQ(opened, "00") << kind.what;
            int count = 0;
            while (file.read(next) < "10") ASSERT_EQ(file.record().substr(0, 14), textOf(count++)) << kind.what;
            EXPECT_EQ(file.status(), "10") << kind.what;
            EXPECT_GE(count, promised) << kind.what;
            file.close();
            // Whatever was torn is written over.
            if (!(kind.mode & ZVK_OPEN_EXTEND)) continue;
            ASSERT_EQ(file.open(ZVK_OPEN_EXTEND), "00") << kind.what;
            ASSERT_LE(file.write(textOf(count)), "02") << kind.what;
            ASSERT_EQ(file.close(), "00");
            ASSERT_EQ(file.open(ZVK_OPEN_INPUT), "00");
            for (int n = 0; n <= count; ++n) ASSERT_LE(file.read(next), "02") << kind.what;
            EXPECT_EQ(file.record().substr(0, 14), textOf(count));
            EXPECT_EQ(file.read(next), "10") << kind.what;
            file.close();
        }
}

// A program that changes and deletes records under all keys: afterwards each key leads to the same
// records, and each record is one that was written whole.
TEST(Crash, KilledChangesLeaveTheKeysInStep)
{
    std::mt19937 random(17 + tortureSeed());
    for (int round = 0; round < killRounds(60); ++round) {
        TemporaryDirectory directory;
        FileAttributes attributes = indexedFile();
        if (round % 2) attributes.share = ZVK_FILE_SHARE_NONE; // alone: many changes a commit
        string name = "stl-" + directory.file("f");
        {
            CompiledFile file(name, attributes);
            ASSERT_EQ(file.open(ZVK_OPEN_OUTPUT), "00");
            for (int n = 0; n < 50; ++n) ASSERT_LE(file.write(textOf(n) + "000000"), "02");
            ASSERT_EQ(file.close(), "00");
        }
        int promised = killedAt(random, [&](auto promise) {
            CompiledFile file(name, attributes);
            if (file.open(ZVK_OPEN_IO) != "00") _exit(1);
            for (int n = 1; n < 100000; ++n) {
                char text[32];
                // Record 0 counts; another one moves between alternate keys, comes and goes.
                snprintf(text, sizeof text, "000000aaaa0000%06d", n);
                if (file.rewrite(text) > "02") _exit(2);
                promise(n);
                snprintf(text, sizeof text, "%06u%04u%04u%06u", 1 + unsigned(n) * 7 % 49, unsigned(n) % 5,
                         100 + unsigned(n) % 9000, unsigned(n));
                file.move(text);
                if (n % 3 && file.verb(file.fcb->deleteRecord, {}) > "23") _exit(3);
                if (n % 3 == 0 && file.rewrite(text) > "23") _exit(4);
                if (n % 3 == 2 && file.write(text) > "22") _exit(5);
            }
        });
        CompiledFile file(name, attributes);
        ASSERT_EQ(file.open(ZVK_OPEN_INPUT), "00");
        std::map<string, string> records;
        while (file.read(next) < "10") records[file.record().substr(0, 6)] = file.record();
        EXPECT_EQ(file.status(), "10");
        if (round % 2 == 0) {
            EXPECT_GE(atoi(records["000000"].substr(14).c_str()), promised);
        }
        for (uint32_t key : {1u, 2u}) {
            size_t count = 0;
            string status = file.verb(file.fcb->start, {.relation = ZVK_RELATION_FIRST, .key = key});
            while (status < "10" && (status = file.read(next)) < "10") {
                EXPECT_EQ(file.record(), records[file.record().substr(0, 6)]);
                ++count;
            }
            EXPECT_EQ(status, "10");
            EXPECT_EQ(count, records.size()) << key;
        }
        file.close();
    }
}

// A program that is killed in the middle of a change, while another has the file open, leaves no
// lock and no half change to the other.
TEST(Crash, KilledBesideAnotherProgram)
{
    std::mt19937 random(23 + tortureSeed());
    constexpr int most = 40; // kills of one file: the keys of textOf are enough for 10,000 records
    for (int part = 0; part < killRounds(most); part += most)
        for (FileAttributes attributes : {indexedFile(), relativeFile()}) {
            TemporaryDirectory directory;
            attributes.optional = true;
            string name = "stl-" + directory.file("f");
            Peer other(name, attributes);
            ASSERT_EQ(other.open(ZVK_OPEN_IO), "05");
            auto keyed = [](int n) { return FileRequest{.relativeKey = static_cast<uint64_t>(n) + 1}; };
            int written = 0;
            alarm(600); // a lock that nobody holds any more would be waited for
            for (int round = part; round < killRounds(most) && round < part + most; ++round) {
                int from = written;
                int promised = killedAt(random, [&](auto promise) {
                    CompiledFile file(name, attributes);
                    if (file.open(ZVK_OPEN_IO) != "00") _exit(1);
                    for (int n = from; n < from + 200; ++n) { // the keys of textOf are enough for 10,000
                        if (file.write(textOf(n), keyed(n)) > "02") _exit(2);
                        promise(n + 1);
                    }
                });
                if (promised > written) written = promised;
                // The next record may be there, too: its WRITE was not acknowledged yet.
                string status = other.write(textOf(written), keyed(written));
                ASSERT_TRUE(status <= "02" || status == "22") << status;
                ++written;
                ASSERT_EQ(other.read(textOf(written - 1), keyed(written - 1)), "00");
                ASSERT_EQ(other.rewrite(textOf(written - 1), keyed(written - 1)), "00");
            }
            alarm(0);
            ASSERT_EQ(other.start("", {.relation = ZVK_RELATION_FIRST}), "00");
            for (int n = 0; n < written; ++n) ASSERT_LE(other.read(next), "02") << n;
            EXPECT_EQ(other.read(next), "10");
            EXPECT_EQ(other.close(), "00");
        }
}

// Several programs find that an OPTIONAL file is absent, and all of them make it.
TEST(Crash, ManyMakersOfOneFile)
{
    for (int round = 0; round < 25; ++round)
        for (FileAttributes attributes : {indexedFile(), relativeFile()}) {
            TemporaryDirectory directory;
            attributes.optional = true;
            string name = "stl-" + directory.file("f");
            pid_t children[4];
            for (int who = 0; who < 4; ++who) {
                children[who] = fork();
                if (children[who]) continue;
                CompiledFile file(name, attributes);
                string status = file.open(ZVK_OPEN_IO);
                if (status != "00" && status != "05") _exit(1);
                if (file.write(textOf(who + 1), {.relativeKey = static_cast<uint64_t>(who) + 1}) > "02") _exit(2);
                _exit(file.close() == "00" ? 0 : 3);
            }
            for (pid_t child : children) {
                int ending;
                waitpid(child, &ending, 0);
                EXPECT_EQ(WEXITSTATUS(ending), 0) << ending;
            }
            CompiledFile file(name, attributes);
            ASSERT_EQ(file.open(ZVK_OPEN_INPUT), "00");
            int count = 0;
            while (file.read(next) < "10") ++count;
            EXPECT_EQ(count, 4) << round;
            file.close();
        }
}

} // namespace
