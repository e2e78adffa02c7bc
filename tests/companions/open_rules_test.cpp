// Faults these tests are there to catch: a wrong status; a file harmed by an OPEN that is refused; a crash on a damaged file; a verb that works in a mode where it
// must not; a full disk that leaves half records; a secondary status without a text.
#include <sys/resource.h>
#include <sys/stat.h>

#include "stored_files.h"

namespace {

TEST(Open, RefusalsLeaveTheFileUnharmed)
{
    TemporaryDirectory directory;
    mkdir(directory.file("dir").c_str(), 0777);
    mkfifo(directory.file("pipe").c_str(), 0666);
    writeFile(directory.file("text"), "just a text, no records\n");
    for (string prefix : {"stl-", "rsd-", "wbr-", "lsq-"})
        for (uint16_t mode : {ZVK_OPEN_INPUT, ZVK_OPEN_OUTPUT, ZVK_OPEN_EXTEND}) {
            EXPECT_EQ(CompiledFile(prefix + directory.file("dir")).open(mode), "37") << prefix << mode;
            EXPECT_EQ(CompiledFile(prefix + directory.file("pipe")).open(mode), "37") << prefix << mode;
            if (mode != ZVK_OPEN_OUTPUT) {
                EXPECT_EQ(CompiledFile(prefix + directory.file("none")).open(mode), "35");
            }
        }
    EXPECT_EQ(CompiledFile("stl-" + directory.file("text")).open(ZVK_OPEN_EXTEND), "39");
    EXPECT_EQ(readFile(directory.file("text")), "just a text, no records\n");

    FileAttributes optional = fixed10;
    optional.optional = true;
    CompiledFile absent("stl-" + directory.file("opt"), optional);
    EXPECT_EQ(absent.open(ZVK_OPEN_INPUT), "05");
    EXPECT_EQ(absent.read(), "10");
    EXPECT_EQ(absent.close(), "00");
    EXPECT_EQ(absent.open(ZVK_OPEN_EXTEND), "05");
    EXPECT_EQ(absent.close(), "00");

    CompiledFile file(directory.file("i"), indexedFile());
    ASSERT_EQ(file.open(ZVK_OPEN_OUTPUT), "00");
    EXPECT_EQ(CompiledFile(directory.file("i"), indexedFile()).open(ZVK_OPEN_INPUT), "94");
    file.write("000001aaaabbbb");
    file.close();
    FileAttributes other = indexedFile();
    other.keys[1].flags = 0;
    EXPECT_EQ(CompiledFile(directory.file("i"), other).open(ZVK_OPEN_INPUT), "39");
    EXPECT_EQ(CompiledFile(directory.file("i"), fixed10).open(ZVK_OPEN_IO), "39");
    string header = readFile(directory.file("i")), store = readFile(directory.file("i.mdb"));
    for (size_t size : {11, 100, 4095}) {
        writeFile(directory.file("i"), header.substr(0, size));
        EXPECT_EQ(file.open(ZVK_OPEN_IO), "30") << size;
    }
    string damaged = header;
    damaged[33] ^= 1;
    writeFile(directory.file("i"), damaged);
    EXPECT_EQ(file.open(ZVK_OPEN_INPUT), "30");
    writeFile(directory.file("i"), header);
    for (size_t size : {0, 100, 5000, 8192}) {
        writeFile(directory.file("i.mdb"), store.substr(0, size));
        string status = file.open(ZVK_OPEN_INPUT);
        if (status < "10") status = file.read({.options = ZVK_REQUEST_NEXT}), file.close();
        EXPECT_EQ(status, "30") << size;
    }
    writeFile(directory.file("i.mdb"), store);
    EXPECT_EQ(file.open(ZVK_OPEN_INPUT), "00");
    EXPECT_EQ(file.read({.options = ZVK_REQUEST_NEXT}), "00");
    file.close();
}

TEST(Open, FullDiskIsAStatusAndLeavesWholeRecords)
{
    for (string prefix : {"rsd-", "lsq-", "stl-", "indexed"}) {
        TemporaryDirectory directory;
        ChildRun run = runChild([&] {
            bool indexed = prefix == "indexed";
            CompiledFile file((indexed ? "stl-" : prefix) + directory.file("f"), indexed ? indexedFile() : fixed10);
            rlimit limit = {300001, 300001};
            if (file.open(ZVK_OPEN_OUTPUT) != "00") _exit(1);
            setrlimit(RLIMIT_FSIZE, &limit);
            string status;
            for (int i = 0; i < 100000 && status < "10"; ++i) {
                char text[32];
                snprintf(text, sizeof text, "%06daaaa%04d", i, i % 10000);
                status = file.write(indexed ? text : "123456789x");
            }
            file.close();
            _exit(status == "34" ? 0 : 2);
        });
        EXPECT_EQ(run.status, 0) << prefix << run.signal << run.err;
        CompiledFile file((prefix == "indexed" ? "stl-" : prefix) + directory.file("f"), prefix == "indexed" ? indexedFile() : fixed10);
        ASSERT_EQ(file.open(ZVK_OPEN_INPUT), "00");
        while (file.read({.options = ZVK_REQUEST_NEXT}) == "00") EXPECT_EQ(file.record().size(), prefix == "indexed" ? 20u : 10u);
        EXPECT_LE(file.status(), "10");
        file.close();
    }
}

} // namespace
