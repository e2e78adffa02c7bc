// Faults these tests are there to catch: a wrong status; a file harmed by an OPEN that is refused;
// a crash on a damaged file; a verb that works in a mode where it must not; a full disk that leaves
// half records; a secondary status without a text.
#include <functional>
#include <set>
#include <sys/resource.h>
#include <sys/stat.h>

#include "stored_files.h"
#include "support/require.h"

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
            // A new indexed file is written in large parts, the last by CLOSE.
            string closed = file.close();
            _exit(status == "34" || (indexed && closed == "34") ? 0 : 2);
        });
        EXPECT_EQ(run.status, 0) << prefix << run.signal << run.err;
        CompiledFile file((prefix == "indexed" ? "stl-" : prefix) + directory.file("f"),
                          prefix == "indexed" ? indexedFile() : fixed10);
        ASSERT_EQ(file.open(ZVK_OPEN_INPUT), "00");
        while (file.read({.options = ZVK_REQUEST_NEXT}) == "00")
            EXPECT_EQ(file.record().size(), prefix == "indexed" ? 20u : 10u);
        EXPECT_LE(file.status(), "10");
        file.close();
    }
}

// Which verb does what in which mode, for a file of each organization; and OPEN and CLOSE out of
// turn.
TEST(Open, VerbsOutOfPlace)
{
    for (FileAttributes attributes :
         {fixed10, relativeFile(sequentialAccess), relativeFile(), indexedFile(sequentialAccess), indexedFile()}) {
        TemporaryDirectory directory;
        bool sequential = attributes.access & sequentialAccess;
        CompiledFile file("stl-" + directory.file("f"), attributes);
        const FileRequest one = {.relativeKey = 1};
        struct {
            uint16_t mode;
            const char *read, *write, *change, *start;
        } modes[] = {
            {0, "47", "48", "49", "47"},
            {ZVK_OPEN_OUTPUT, "47", "", "49", "47"},
            {ZVK_OPEN_INPUT, "", "48", "49", attributes.organization ? "" : "30"},
            {ZVK_OPEN_EXTEND, "47", "", "49", "47"},
            {ZVK_OPEN_IO, "", sequential ? "92" : "", "", attributes.organization ? "" : "30"},
        };
        for (auto &m : modes) {
            string where = std::to_string(attributes.organization) + " access " + std::to_string(attributes.access) +
                           " mode " + std::to_string(m.mode);
            if (m.mode == 0) {
                EXPECT_EQ(file.close(), "42");
            } else {
                ASSERT_EQ(file.open(m.mode), "00") << where;
                EXPECT_EQ(file.open(m.mode), "41") << where;
            }
            if (m.mode == ZVK_OPEN_OUTPUT) {
                EXPECT_EQ(file.write("000001aaaa0001", one), "00") << where;
            }
            if (*m.read) {
                EXPECT_EQ(file.read(one), m.read) << where;
            }
            if (*m.write) {
                EXPECT_EQ(file.write("000009aaaa0009", {.relativeKey = 9}), m.write) << where;
            }
            if (*m.change) {
                EXPECT_EQ(file.rewrite("000001aaaa0001", one), m.change) << where;
                EXPECT_EQ(file.verb(file.fcb->deleteRecord, one), m.change) << where;
            }
            if (*m.start) {
                EXPECT_EQ(file.verb(file.fcb->start, one), m.start) << where;
            }
            if (m.mode) {
                EXPECT_EQ(file.close(), "00") << where;
            }
        }
        EXPECT_EQ(file.open(ZVK_OPEN_INPUT | ZVK_OPEN_STATUS_07), "07");
        EXPECT_EQ(file.close(0x4000), "07");
        EXPECT_EQ(file.open(ZVK_OPEN_INPUT), "00");
        EXPECT_EQ(file.close(ZVK_CLOSE_LOCK), "00");
        EXPECT_EQ(file.open(ZVK_OPEN_INPUT), "38");
    }
}

// What a module cannot do with a file is refused at OPEN, and says why.
TEST(Open, ImpossibleFiles)
{
    TemporaryDirectory directory;
    const string path = directory.file("x");
    auto opened = [&](const string &prefix, FileAttributes attributes, uint16_t mode, const char *why) {
        CompiledFile file(prefix + path, attributes);
        string status = file.open(mode);
        EXPECT_NE(reason(file).find(why), string::npos) << reason(file);
        if (file.fcb->mode)
            file.close();
        else
            EXPECT_EQ(readFile(path), "line\n") << "refused, and harmed";
        if (status < "10") writeFile(path, "line\n");
        return status;
    };
    writeFile(path, "line\n");
    EXPECT_EQ(opened("lsq-", indexedFile(), ZVK_OPEN_INPUT, "organization"), "37");
    EXPECT_EQ(opened("rsd-", relativeFile(), ZVK_OPEN_INPUT, "organization"), "37");
    FileAttributes odd = fixed10;
    odd.longest = odd.shortest = 0;
    for (string prefix : {"lsq-", "rsd-", "wbr-", "stl-"})
        EXPECT_EQ(opened(prefix, odd, ZVK_OPEN_OUTPUT, "record length"), "39") << prefix;
    odd = indexedFile();
    odd.keys.clear();
    EXPECT_EQ(opened("stl-", odd, ZVK_OPEN_OUTPUT, "no such key"), "39");
    odd.keys = {{6, 15, 0, {}}};
    EXPECT_EQ(opened("stl-", odd, ZVK_OPEN_OUTPUT, "key too long"), "39") << "a key beyond the record";
    odd.longest = odd.shortest = 600;
    odd.keys = {{501, 0, 0, {}}};
    EXPECT_EQ(opened("stl-", odd, ZVK_OPEN_OUTPUT, "key too long"), "37");
    odd.keys = {{500, 0, 0, {}}, {500, 100, ZVK_FILE_KEY_DUPLICATES, {}}};
    EXPECT_EQ(opened("stl-", odd, ZVK_OPEN_OUTPUT, ""), "00");
    odd = fixed10;
    odd.linage = ZVK_FILE_LINAGE | ZVK_FILE_LINAGE_FOOTING;
    odd.body = 3, odd.footing = 4;
    EXPECT_EQ(opened("lsq-", odd, ZVK_OPEN_OUTPUT, "LINAGE"), "30");
}

// A program without the rights of root, which ignores them all. A file of this user is made first;
// nobody else may do with it what its mode denies.
void asNobody(const std::function<void()> &body)
{
    loadFileModules();
    ChildRun run = runChild([&] {
        if (setgid(65534) != 0 || setuid(65534) != 0) _exit(77);
        body();
    });
    EXPECT_EQ(run.status, 0) << run.err << run.signal;
}

#define ONLY_AS_ROOT                                                                                                   \
    if (getuid() != 0) GTEST_SKIP() << "only root can become somebody else"

TEST(Open, PermissionsAreAStatus)
{
    ONLY_AS_ROOT;
    for (string organization : {"rsd-", "lsq-", "stl-", "relative", "indexed"}) {
        TemporaryDirectory directory;
        FileAttributes attributes = organization == "indexed"    ? indexedFile()
                                    : organization == "relative" ? relativeFile()
                                                                 : fixed10;
        string prefix = organization[3] == '-' ? organization : "stl-", path = directory.file("f");
        CompiledFile made(prefix + path, attributes);
        ASSERT_EQ(made.open(ZVK_OPEN_OUTPUT), "00");
        ASSERT_EQ(made.write("000001aaaa0001", {.relativeKey = 1}), "00");
        ASSERT_EQ(made.close(), "00");
        chmod(directory.path().c_str(), 0755);
        const string before = readFile(path);
        auto open = [&](const string &name, uint16_t mode) {
            CompiledFile file(name, attributes);
            string status = file.open(mode);
            if (status == "91" && reason(file).find("ermission denied") == string::npos)
                return "no reason: " + reason(file);
            if (status < "10" && (mode & ZVK_OPEN_INPUT) && file.read(next) > "09") return "read " + file.status();
            if (file.fcb->mode) file.close();
            return status;
        };
        chmod(path.c_str(), 0644);
        chmod((path + ".mdb").c_str(), 0644);
        asNobody([&] {
            fprintf(stderr, "%s", organization.c_str());
            REQUIRE(open(prefix + path, ZVK_OPEN_INPUT) ==
                    "00"); // an indexed file, too, though its lock file cannot be written
            for (uint16_t mode : {ZVK_OPEN_OUTPUT, ZVK_OPEN_IO, ZVK_OPEN_EXTEND})
                REQUIRE(open(prefix + path, mode) == "91");
            REQUIRE(open(prefix + directory.file("new"), ZVK_OPEN_OUTPUT) == "91");
        });
        if (organization == "indexed") { // the file may be written, but not the store, nor the directory
            chmod(path.c_str(), 0666);
            asNobody([&] { REQUIRE(open(prefix + path, ZVK_OPEN_OUTPUT) == "91"); });
            EXPECT_EQ(readFile(path), before);
            chmod((path + ".mdb").c_str(), 0666);
            asNobody([&] { REQUIRE(open(prefix + path, ZVK_OPEN_OUTPUT) == "00"); });
            writeFile(path, before); // a header without its store
            EXPECT_EQ(open(prefix + path, ZVK_OPEN_INPUT), "30");
            chmod((path + ".mdb").c_str(), 0644);
        }
        chmod(path.c_str(), 0600);
        asNobody([&] { REQUIRE(open(prefix + path, ZVK_OPEN_INPUT) == "91"); });
        if (organization == "indexed") {
            chmod(path.c_str(), 0644);
            chmod((path + ".mdb").c_str(), 0600);
            asNobody([&] { REQUIRE(open(prefix + path, ZVK_OPEN_INPUT) == "91"); });
        }
        chmod(directory.path().c_str(), 0700);
        asNobody([&] { REQUIRE(open(prefix + path, ZVK_OPEN_INPUT) == "91"); });
        EXPECT_EQ(readFile(path), before);
    }
}

// A reader that LMDB's locks cannot serve holds writers off, and is held off by them.
TEST(Open, ReaderOfAnotherUserAndAWriter)
{
    ONLY_AS_ROOT;
    TemporaryDirectory directory;
    const string path = directory.file("i");
    FileAttributes attributes = indexedFile();
    Peer writer(path, attributes);
    ASSERT_EQ(writer.open(ZVK_OPEN_OUTPUT), "00");
    ASSERT_EQ(writer.write("000001aaaa0001"), "00");
    ASSERT_EQ(writer.close(), "00");
    ASSERT_EQ(writer.open(ZVK_OPEN_IO), "00"); // makes the lock file
    chmod(directory.path().c_str(), 0755);
    for (const char *suffix : {"", ".mdb", ".mdb-lock"}) chmod((path + suffix).c_str(), 0644);
    asNobody([&] {
        CompiledFile reader(path, attributes);
        REQUIRE(reader.open(ZVK_OPEN_INPUT) == "94");
        REQUIRE(writer.close() == "00");
        REQUIRE(reader.open(ZVK_OPEN_INPUT) == "00");
        REQUIRE(writer.open(ZVK_OPEN_IO) == "94");
        REQUIRE(reader.read(next) == "00" && reader.record().substr(0, 6) == "000001");
        REQUIRE(reader.close() == "00");
        REQUIRE(writer.open(ZVK_OPEN_IO) == "00");
    });
}

// Whoever looks at an indexed file first makes its lock file, and the owner must write it.
TEST(Open, LockFileOfAnotherUser)
{
    if (getuid() != 0) GTEST_SKIP() << "only root can become somebody else";
    TemporaryDirectory directory;
    chmod(directory.path().c_str(), 0777);
    const string path = directory.file("i"), lock = path + ".mdb-lock";
    const FileAttributes attributes = indexedFile();
    auto open = [&](uint16_t mode) {
        CompiledFile file(path, attributes);
        string status = file.open(mode), why = status < "10" ? "" : " " + reason(file);
        if (file.fcb->mode) file.close();
        return status + why;
    };
    struct stat about;
    asNobody([&] { REQUIRE(open(ZVK_OPEN_OUTPUT) == "00"); });
    chmod((path + ".mdb").c_str(), 0640);
    EXPECT_EQ(open(ZVK_OPEN_INPUT), "00");
    ASSERT_EQ(stat(lock.c_str(), &about), 0);
    EXPECT_EQ(about.st_mode & 0777, 0640u);
    asNobody([&] { REQUIRE(open(ZVK_OPEN_IO) == "00"); });

    // Who cannot give it to the owner lets all who may read the store write it.
    unlink(lock.c_str());
    for (const string &name : {path, path + ".mdb"})
        ASSERT_EQ(chown(name.c_str(), 0, 0) + chmod(name.c_str(), 0644), 0);
    asNobody([&] { REQUIRE(open(ZVK_OPEN_INPUT) == "00"); });
    ASSERT_EQ(stat(lock.c_str(), &about), 0);
    EXPECT_EQ(about.st_mode & 0777, 0666u);

    chmod(path.c_str(), 0666);
    chmod((path + ".mdb").c_str(), 0666);
    ASSERT_EQ(chown(lock.c_str(), 0, 0) + chmod(lock.c_str(), 0600), 0);
    asNobody([&] {
        REQUIRE(open(ZVK_OPEN_IO) == "91 no permission for the lock file of the record store (NAME.mdb-lock)");
    });
}

// Every number that a module can give has a text, and no two the same; what the library gives
// itself has none here.
TEST(Open, SecondaryStatusesHaveTexts)
{
    TemporaryDirectory directory;
    CompiledFile file("stl-" + directory.file("f"), fixed10);
    ASSERT_EQ(file.open(ZVK_OPEN_OUTPUT), "00");
    std::set<string> texts;
    uint32_t count = 0;
    for (uint32_t fs2 = 100; file.fcb->fs2 = fs2, !reason(file).empty(); ++fs2, ++count) texts.insert(reason(file));
    EXPECT_EQ(texts.size(), count);
    EXPECT_GE(count, 28u);
    for (uint32_t fs2 : {0u, 2u, 34u, 99u, 100 + count, 999u, 1000u, 4000000000u}) {
        file.fcb->fs2 = fs2;
        EXPECT_EQ(reason(file), "") << fs2;
    }
    for (uint32_t fs2 : {1000u + ENOENT, 1000u + EIO, 1000u + ENOSPC, 1199u}) {
        file.fcb->fs2 = fs2;
        EXPECT_NE(reason(file), "") << fs2;
    }
    file.close();
}

// One file of the run unit, in two programs: one FCB, one position, each program's own status
// field.
TEST(Open, ExternalFileOfTwoPrograms)
{
    for (FileAttributes attributes : {fixed10, relativeFile(), indexedFile()}) {
        TemporaryDirectory directory;
        ChildRun run = runChild([&] {
            attributes.external = true;
            const string name = "stl-" + directory.file("x");
            CompiledFile one(name, attributes), two(name, attributes);
            REQUIRE(one.fcb == two.fcb);
            REQUIRE(one.open(ZVK_OPEN_OUTPUT) == "00" && two.status() == "??");
            REQUIRE(two.open(ZVK_OPEN_INPUT) == "41");
            REQUIRE(two.write("000001aaaa0001", {.relativeKey = 1}) == "00");
            REQUIRE(one.write("000002bbbb0002", {.relativeKey = 2}) == "00");
            REQUIRE(two.close() == "00");
            REQUIRE(one.read() == "47" && two.status() == "00");
            REQUIRE(two.open(ZVK_OPEN_INPUT) == "00");
            REQUIRE(one.read(next) == "00" && two.record().substr(0, 6) == "000001");
            REQUIRE(two.read(next) == "00" && one.record().substr(0, 6) == "000002");
            REQUIRE(one.read(next) == "10" && two.status() == "00");
            REQUIRE(one.close() == "00");
        });
        EXPECT_EQ(run.status, 0) << int(attributes.organization) << run.err << run.signal;
    }
}

// An item gets the file's name after the file was registered; a message after CLOSE tells it.
TEST(Open, ExternalFileOfAnItem)
{
    TemporaryDirectory directory;
    ChildRun run = runChild([&] {
        CompiledFile file("", {.external = true});
        const string name = "rsd-" + directory.file("x");
        file.all.assign(name);
        REQUIRE(file.open(ZVK_OPEN_OUTPUT) == "00" && file.close() == "00");
        file.all.assign("another");
        REQUIRE(name == file.fcb->fileName);
        file.all.assign("");
        REQUIRE(file.open(ZVK_OPEN_INPUT) == "95");
    });
    EXPECT_EQ(run.status, 0) << run.err << run.signal;
}

} // namespace
