// Faults these tests are there to catch: a generation resolved to the wrong file, entered twice,
// lost between processes or threads; a roll-off that takes what it must keep; numbers that wrap in
// the wrong order; a damaged catalogue that crashes or is written beyond its end; names that run
// commands.
#include <cstring>
#include <ctime>
#include <fcntl.h>
#include <string>
#include <sys/stat.h>
#include <sys/wait.h>
#include <thread>
#include <unistd.h>
#include <utime.h>
#include <vector>

#include "kvr2/generations.h"
#include "support/child.h"
#include "support/compiled_file.h"
#include "support/require.h"

using std::string;

namespace {

constexpr size_t kLimit = 12, kDays = 16, kFlags = 20, kEntries = 24, kNewest = 28, kEpoch = 32, kFirstEntry = 96;

struct Group {
    TemporaryDirectory directory;
    string base = directory.file("daily");

    explicit Group(int limit = 255, int days = 0, int flags = 0)
    {
        EXPECT_EQ(GDG_Create(base.data(), limit, days, flags, "sys"), 0);
    }
    string catalogue() const { return base + ".catalogue"; }
    string file(int number) const
    {
        char text[32];
        snprintf(text, sizeof text, ".g%04dv00", number);
        return base + text;
    }
    uint32_t word(size_t offset) const
    {
        uint32_t value;
        memcpy(&value, readFile(catalogue()).data() + offset, 4);
        return value;
    }
    uint32_t entry(int i) const { return word(kFirstEntry + 4 * static_cast<size_t>(i)); }
    void setWord(size_t offset, uint32_t value) const
    {
        string image = readFile(catalogue());
        memcpy(image.data() + offset, &value, 4);
        writeFile(catalogue(), image);
    }
    // The result of GDS_Name and the name without the group's own part.
    string ask(const string &suffix, bool create = false) const
    {
        char *name = nullptr;
        int rc = GDS_Name((base + suffix).c_str(), &name, create, "sys");
        string shown = std::to_string(rc) + " " + (name ? string(name).substr(base.size()) : "none");
        free(name);
        return shown;
    }
    // Makes the next generation, with a file.
    void grow(int times = 1) const
    {
        for (int i = 0; i < times; i++) {
            char *name = nullptr;
            ASSERT_EQ(GDS_Name((base + "(+1)").c_str(), &name, 1, "sys"), 1);
            writeFile(name, "x");
            free(name);
        }
    }
    bool has(int number) const { return access(file(number).c_str(), F_OK) == 0; }
};

TEST(Generations, NamesResolve)
{
    Group group;
    EXPECT_EQ(readFile(group.catalogue()).size(), 4096u);
    EXPECT_EQ(readFile(group.catalogue()).substr(0, 4), "GDG\n");
    EXPECT_EQ(group.ask(""), "-1 ");
    EXPECT_EQ(group.ask("(0)"), "0 none") << "an empty group has no newest";
    EXPECT_EQ(group.ask("(+1)"), "0 none") << "not made unless that is wanted";
    EXPECT_EQ(group.ask("(+1)", true), "1 .g0001v00");
    EXPECT_EQ(group.word(kEntries), 1u);
    writeFile(group.file(1), "1");
    group.grow(3);
    EXPECT_EQ(group.ask("(0)"), "1 .g0004v00");
    EXPECT_EQ(group.ask("(-1)"), "1 .g0003v00");
    EXPECT_EQ(group.ask("(-3)"), "1 .g0001v00");
    EXPECT_EQ(group.ask("(-4)"), "0 none");
    EXPECT_EQ(group.ask("(2)"), "1 .g0002v00") << "without a sign it counts back from the newest";
    EXPECT_EQ(group.ask("(*)"), "-1 ");
    EXPECT_EQ(group.ask(".g0002v00"), "1 .g0002v00");
    EXPECT_EQ(group.ask(".g0009v00"), "0 none");
    EXPECT_EQ(group.ask("(+2)", true), "1 .g0006v00");
    for (const char *bad : {"(x)", "()", "(10000)", "(1x)", "(99999999999999999999)", ".g0002v01", ".gx002v00"})
        EXPECT_EQ(group.ask(bad), "0 none") << bad;
    EXPECT_EQ(GDS_Name(string(5000, 'n').c_str(), nullptr, 1, "sys"), 0);
    EXPECT_EQ(GDS_Name("/nowhere/at/all(0)", nullptr, 1, nullptr), 0);
}

TEST(Generations, RollOff)
{
    Group scratch(3, 0, ZVK_GDG_SCRATCH);
    scratch.grow(4);
    EXPECT_EQ(scratch.word(kEntries), 3u);
    EXPECT_FALSE(scratch.has(1));
    EXPECT_TRUE(scratch.has(2) && scratch.has(4));

    Group keep(3, 0, 0);
    keep.grow(4);
    EXPECT_EQ(keep.word(kEntries), 3u);
    EXPECT_TRUE(keep.has(1)) << "without Scratch the file stays";

    Group young(3, 7, ZVK_GDG_SCRATCH);
    young.grow(4);
    EXPECT_EQ(young.word(kEntries), 4u) << "younger than 7 days";
    utimbuf old{time(nullptr) - 8 * 86400, time(nullptr) - 8 * 86400};
    utime(young.file(1).c_str(), &old);
    utime(young.file(2).c_str(), &old);
    young.grow();
    EXPECT_FALSE(young.has(1) || young.has(2));
    EXPECT_EQ(young.word(kEntries), 3u);

    Group empty(3, 0, ZVK_GDG_EMPTY | ZVK_GDG_SCRATCH);
    empty.grow(4);
    EXPECT_EQ(empty.word(kEntries), 1u) << "all of them roll off";
    EXPECT_TRUE(empty.has(4) && !empty.has(3));

    Group gone(3);
    gone.grow(3);
    unlink(gone.file(1).c_str());
    unlink(gone.file(2).c_str());
    gone.grow();
    EXPECT_EQ(gone.word(kEntries), 2u) << "what has no file goes first";
}

TEST(Generations, NumbersWrap)
{
    Group group;
    group.grow();
    group.setWord(kFirstEntry, 9999);
    group.setWord(kNewest, 9999);
    rename(group.file(1).c_str(), group.file(9999).c_str());
    group.grow();
    EXPECT_EQ(group.word(kNewest), 1u);
    EXPECT_EQ(group.word(kEpoch), 32768u);
    EXPECT_EQ(group.entry(1), 32769u);
    EXPECT_EQ(group.ask("(-1)"), "1 .g9999v00");
    // An old generation that turns up goes where it belongs.
    writeFile(group.file(9998), "old");
    EXPECT_EQ(group.ask(".g9998v00"), "1 .g9998v00");
    EXPECT_EQ(group.ask("(-2)"), "1 .g9998v00");

    // The counter at its end: all entries are numbered anew.
    Group last;
    last.grow();
    rename(last.file(1).c_str(), last.file(9500).c_str());
    last.setWord(kFirstEntry, 0xFFFF8000u | 9500);
    last.setWord(kNewest, 9500);
    last.setWord(kEpoch, 0xFFFF8000u);
    writeFile(last.file(3), "3");
    EXPECT_EQ(last.ask(".g0003v00"), "1 .g0003v00");
    EXPECT_EQ(last.entry(0), 9500u);
    EXPECT_EQ(last.entry(1), 32768u + 3);
}

TEST(Generations, Administration)
{
    Group group(5, 2, 0);
    EXPECT_EQ(GDG_Create(group.base.data(), 5, 0, 0, "sys"), -1) << "exists";
    EXPECT_EQ(GDG_Create(group.base.data(), 1001, 0, 0, "sys"), -1);
    EXPECT_EQ(GDG_Create(nullptr, 5, 0, 0, "sys"), -1);
    EXPECT_EQ(GDG_Alter(group.base.data(), 0, -1, 3, "sys"), 0);
    EXPECT_EQ(group.word(kLimit), 255u);
    EXPECT_EQ(group.word(kDays), 2u);
    EXPECT_EQ(group.word(kFlags), 3u);
    EXPECT_EQ(GDG_Alter(group.base.data(), 10, 0, 0, "sys"), 0);
    group.grow(3);
    unlink(group.file(2).c_str());
    EXPECT_EQ(GDG_Verify(group.base.data(), "sys"), 0);
    EXPECT_EQ(group.word(kEntries), 2u);
    writeFile(group.file(7), "7");
    EXPECT_EQ(GDG_Rebuild(group.base.data(), "sys"), 0);
    EXPECT_EQ(group.word(kEntries), 3u);
    EXPECT_EQ(group.ask("(0)"), "1 .g0007v00");

    testing::internal::CaptureStdout();
    EXPECT_EQ(GDG_List(group.base.data(), "sys"), 0);
    fflush(stdout);
    EXPECT_EQ(testing::internal::GetCapturedStdout(),
              "GDG: " + group.base + "\n  Catalogue   = " + group.catalogue() +
                  "\n  Limit       = 10\n  Days        = 0\n  NoEmpty\n  NoScratch\n  Entries     = 3\n  GDS:\n"
                  "1            0: " +
                  group.file(1) + "\n2            0: " + group.file(3) + "\n3            0: " + group.file(7) + "\n");
    string third = group.base + "(0)";
    EXPECT_EQ(GDG_remove(third.data(), "sys"), 0);
    EXPECT_TRUE(group.has(7)) << "no Scratch";
    EXPECT_EQ(group.word(kEntries), 2u);
    EXPECT_EQ(GDG_Alter(group.base.data(), -1, -1, ZVK_GDG_SCRATCH, "sys"), 0);
    EXPECT_EQ(GDG_remove(group.base.data(), "sys"), 0);
    EXPECT_FALSE(group.has(1) || group.has(3));
    EXPECT_NE(access(group.catalogue().c_str(), F_OK), 0);
    EXPECT_EQ(GDG_Unlink(group.base.data(), "sys"), -1) << "not there any more";
    EXPECT_EQ(GDG_Rebuild(group.base.data(), "sys"), 0) << "makes a group of what is left";
    EXPECT_EQ(group.ask("(0)"), "1 .g0007v00");
}

TEST(Generations, OtherByteOrderIsReadOnceAndLosesItsFlags)
{
    Group group(9, 0, 3);
    group.grow(2);
    string image = readFile(group.catalogue());
    for (size_t at = 4; at < image.size(); at += 4)
        std::swap(image[at], image[at + 3]), std::swap(image[at + 1], image[at + 2]);
    writeFile(group.catalogue(), image);
    testing::internal::CaptureStdout();
    EXPECT_EQ(group.ask("(0)"), "1 .g0002v00");
    fflush(stdout);
    EXPECT_EQ(testing::internal::GetCapturedStdout(), "Info: Endian swapped!\n");
    EXPECT_EQ(group.word(4), 1234u);
    EXPECT_EQ(group.word(kLimit), 9u);
    EXPECT_EQ(group.word(kFlags), 0u);
}

TEST(Generations, TwentyProcessesAndThreadsAddTheirOwn)
{
    Group group(1000);
    auto add = [&](int times) {
        for (int i = 0; i < times; i++) {
            char *name = nullptr;
            if (GDS_Name((group.base + "(+1)").c_str(), &name, 1, "sys") != 1) _exit(1);
            int file = open(name, O_CREAT | O_EXCL | O_WRONLY, 0666); // twice the same generation fails here
            if (file < 0) _exit(2);
            close(file);
            free(name);
        }
    };
    std::vector<pid_t> children;
    for (int p = 0; p < 10; p++) {
        pid_t child = fork();
        if (child == 0) {
            add(25);
            std::thread a([&] { add(13); }), b([&] { add(12); });
            a.join();
            b.join();
            _exit(0);
        }
        children.push_back(child);
    }
    for (pid_t child : children) {
        int status = 0;
        waitpid(child, &status, 0);
        EXPECT_EQ(status, 0);
    }
    EXPECT_EQ(group.word(kEntries), 500u);
    for (int i = 0; i < 500; i++) ASSERT_EQ(group.entry(i), static_cast<uint32_t>(i + 1));
}

// An OPEN that fails leaves no entry without a file, and a catalogue that cannot be used is named
// where the output goes to a plain file.
TEST(Generations, AFailedOpenLeavesNoEntry)
{
    Group group(5);
    loadFileModules();
    ChildRun run = runChild([&] {
        CompiledFile refused("psx-" + group.base + "(+1)", {.longest = 20, .shortest = 20}); // no such module
        for (int i = 0; i < 3; i++) REQUIRE(refused.open(ZVK_OPEN_OUTPUT) > "09");
        CompiledFile file("rsd-" + group.base + "(+1)", {.longest = 20, .shortest = 20});
        REQUIRE(file.open(ZVK_OPEN_OUTPUT) == "00" && file.close() == "00");
    });
    EXPECT_EQ(run.status, 0) << run.err;
    EXPECT_EQ(group.word(kEntries), 1u);
    EXPECT_EQ(group.entry(0), 1u);

    EXPECT_EQ(truncate((group.base + ".catalogue").c_str(), 100), 0);
    run = runChild([&] {
        CompiledFile file("rsd-" + group.base + "(+1)", {.longest = 20, .shortest = 20});
        REQUIRE(file.open(ZVK_OPEN_OUTPUT) == "00" && file.close() == "00");
    });
    EXPECT_EQ(run.status, 0) << run.err;
    EXPECT_NE(run.err.find("Warning: GDG catalogue " + group.base + ".catalogue cannot be used"), string::npos)
        << run.err;
}

TEST(Generations, DamagedCataloguesAreHarmless)
{
    Group group(20);
    group.grow(12);
    string whole = readFile(group.catalogue());
    ChildRun run = runChild([&] {
        auto tryIt = [&](const string &image) {
            writeFile(group.catalogue(), image);
            group.ask("(0)");
            group.ask("(-2)");
            group.ask("(+1)", true);
            GDG_Verify(const_cast<char *>(group.base.c_str()), "sys");
            REQUIRE(readFile(group.catalogue()).size() <= 4096);
        };
        for (size_t at = 0; at < 200; at++) {
            for (int flip : {0xFF, 0x01}) {
                string changed = whole;
                changed[at] = static_cast<char>(changed[at] ^ flip);
                tryIt(changed);
            }
        }
        for (size_t size : {0, 1, 95, 96, 100, 4095}) tryIt(whole.substr(0, size));
    });
    EXPECT_GOOD(run);
}

TEST(Generations, AFullCatalogueRefusesTheNextOne)
{
    Group group(1000, 100);
    group.grow(1000);
    testing::internal::CaptureStderr();
    EXPECT_EQ(group.ask("(+1)", true), "0 none");
    EXPECT_NE(testing::internal::GetCapturedStderr().find("Error: GDG_add("), string::npos);
    EXPECT_EQ(group.word(kEntries), 1000u);
    EXPECT_EQ(readFile(group.catalogue()).size(), 4096u);
}

TEST(Generations, RebuildFindsWhatIsThereOldestFirst)
{
    Group group(3, 0, ZVK_GDG_SCRATCH);
    for (int number : {4, 1, 6, 2, 5, 3}) writeFile(group.file(number), "x");
    ASSERT_EQ(GDG_Rebuild(group.base.data(), "sys"), 0);
    EXPECT_EQ(group.word(kEntries), 3u);
    for (int number = 1; number <= 6; number++) EXPECT_EQ(group.has(number), number > 3) << number;
    EXPECT_EQ(group.ask("(0)"), "1 .g0006v00");
}

// A name whose catalogue has no place must not be looked for in the catalogue of the name before.
TEST(Generations, ANameWithoutAPlaceIsNoGroup)
{
    ChildRun run = runChild([] {
        unsetenv("HOME");
        unsetenv("gdg_home");
        Group group;
        group.grow();
        char *name = nullptr;
        REQUIRE(GDS_Name("/elsewhere/other(0)", &name, 0, "ora") == 0 && !name);
        REQUIRE(GDS_Name((group.directory.path() + "/" + string(254, 'n') + "(0)").c_str(), &name, 0, "sys") == 0 &&
                !name);
        REQUIRE(group.ask("(0)") == "1 .g0001v00");
    });
    EXPECT_GOOD(run);
}

} // namespace
