// Faults these tests are there to catch: a store of an indexed file that runs out of places for
// readers, that grows without bound beside a reader that does nothing, that two programs write
// without seeing each other, or whose damage overruns a buffer.
#include <fcntl.h>
#include <functional>
#include <lmdb.h>
#include <memory>
#include <sys/stat.h>

#include "failing_disk.h"
#include "stored_files.h"

namespace {

const FileAttributes plain = {
    .longest = 20, .shortest = 20, .organization = ZVK_FILE_INDEXED, .access = 0, .keys = {{6, 0, 0, {}}}};

string keyed(int n) { return std::to_string(100000 + n) + "record"; }

void makeFile(CompiledFile &file, int records)
{
    ASSERT_EQ(file.open(ZVK_OPEN_OUTPUT), "00");
    for (int n = 0; n < records; ++n) ASSERT_EQ(file.write(keyed(n)), "00");
    ASSERT_EQ(file.close(), "00");
}

off_t sizeOf(const string &path)
{
    struct stat about;
    return stat(path.c_str(), &about) == 0 ? about.st_size : -1;
}

TEST(Store, HundredsOfReaders)
{
    TemporaryDirectory directory;
    CompiledFile made("stl-" + directory.file("i"), plain);
    makeFile(made, 3);
    std::vector<std::unique_ptr<CompiledFile>> readers;
    for (int n = 0; n < 300; ++n) {
        readers.push_back(std::make_unique<CompiledFile>("stl-" + directory.file("i"), plain));
        ASSERT_EQ(readers.back()->open(ZVK_OPEN_INPUT), "00") << n;
        ASSERT_EQ(readers.back()->read(next), "00") << n << reason(*readers.back());
    }
    for (auto &reader : readers) EXPECT_EQ(reader->close(), "00");
}

// All places are taken by readers that live: the status says so, and is not that of a damaged
// store.
TEST(Store, NoPlaceForAReaderIsTold)
{
    TemporaryDirectory directory;
    CompiledFile file("stl-" + directory.file("i"), plain);
    makeFile(file, 3);
    int ready[2], done[2];
    ASSERT_EQ(pipe(ready) + pipe(done), 0);
    pid_t holder = fork();
    if (holder == 0) {
        close(done[1]);
        MDB_env *env;
        mdb_env_create(&env);
        mdb_env_set_maxreaders(env, 1);
        bool good = mdb_env_open(env, (directory.file("i") + ".mdb").c_str(), MDB_NOSUBDIR | MDB_NOTLS, 0666) == 0;
        MDB_txn *txn;
        while (good && mdb_txn_begin(env, nullptr, MDB_RDONLY, &txn) == 0) {
        }
        char byte = good;
        if (write(ready[1], &byte, 1) != 1) _exit(1);
        _exit(static_cast<int>(read(done[0], &byte, 1)));
    }
    char byte = 0;
    ASSERT_EQ(read(ready[0], &byte, 1), 1);
    ASSERT_EQ(byte, 1);
    EXPECT_EQ(file.open(ZVK_OPEN_INPUT), "93");
    EXPECT_EQ(file.fcb->fs2, 130u);
    close(done[0]);
    close(done[1]);
    close(ready[0]);
    close(ready[1]);
    waitpid(holder, nullptr, 0);
    EXPECT_EQ(file.open(ZVK_OPEN_INPUT), "00");
    EXPECT_EQ(file.close(), "00");
}

// A reader that waits for its user does not hold back the pages that it has read.
TEST(Store, IdleReaderDoesNotMakeItGrow)
{
    TemporaryDirectory directory;
    const string path = directory.file("i");
    Peer idle("stl-" + path, plain);
    CompiledFile file("stl-" + path, plain);
    makeFile(file, 2000);
    ASSERT_EQ(idle.open(ZVK_OPEN_INPUT), "00");
    for (int n = 0; n < 50; ++n) ASSERT_EQ(idle.read(next), "00");
    ASSERT_EQ(file.open(ZVK_OPEN_IO), "00");
    for (int n = 0; n < 300; ++n) ASSERT_EQ(file.rewrite(keyed(n * 7 % 2000)), "00");
    off_t size = sizeOf(path + ".mdb");
    for (int n = 0; n < 3000; ++n) ASSERT_EQ(file.rewrite(keyed(n * 7 % 2000)), "00");
    EXPECT_LE(sizeOf(path + ".mdb"), size + size / 2);
    for (int n = 50; n < 2000; ++n) {
        ASSERT_EQ(idle.read(next), "00");
        ASSERT_EQ(idle.record().substr(0, 6), keyed(n).substr(0, 6));
    }
    EXPECT_EQ(idle.read(next), "10");
    EXPECT_EQ(file.close(), "00");
}

// What was read ahead is not old news for long, and a change of direction or of place drops it.
TEST(Store, ReadAheadFollowsTheFile)
{
    TemporaryDirectory directory;
    Peer reader("stl-" + directory.file("i"), plain);
    CompiledFile file("stl-" + directory.file("i"), plain);
    makeFile(file, 400);
    ASSERT_EQ(reader.open(ZVK_OPEN_INPUT), "00");
    auto at = [&](int n) { EXPECT_EQ(reader.record().substr(0, 6), keyed(n).substr(0, 6)); };
    for (int n = 0; n < 100; ++n) ASSERT_EQ(reader.read(next), "00"), at(n);
    for (int n = 98; n >= 50; --n) ASSERT_EQ(reader.read(previous), "00"), at(n);
    for (int n = 51; n < 90; ++n) ASSERT_EQ(reader.read(next), "00"), at(n);
    ASSERT_EQ(reader.read(keyed(200)), "00");
    ASSERT_EQ(reader.read(next), "00"), at(201);
    ASSERT_EQ(reader.start(keyed(300), {.relation = ZVK_RELATION_EQUAL}), "00");
    for (int n = 300; n < 320; ++n) ASSERT_EQ(reader.read(next), "00"), at(n);
    ASSERT_EQ(file.open(ZVK_OPEN_IO), "00");
    for (int n = 320; n < 399; ++n) {
        file.move(keyed(n));
        ASSERT_EQ(file.verb(file.fcb->deleteRecord, {}), "00");
    }
    EXPECT_EQ(file.close(), "00");
    usleep(1'200'000);
    ASSERT_EQ(reader.read(next), "00"), at(399);
    EXPECT_EQ(reader.read(next), "10");
}

// The address space of a store grows while two programs have it open.
TEST(Store, GrowsBeyondItsAddressSpace)
{
    TemporaryDirectory directory;
    setenv("VFS_INDEXED_MAP", "1", 1);
    FileAttributes attributes = plain;
    attributes.longest = attributes.shortest = 150;
    Peer other("stl-" + directory.file("i"), attributes);
    CompiledFile file("stl-" + directory.file("i"), attributes);
    makeFile(file, 0);
    ASSERT_EQ(other.open(ZVK_OPEN_IO), "00");
    ASSERT_EQ(file.open(ZVK_OPEN_IO), "00");
    for (int n = 0; n < 20000; ++n) ASSERT_EQ(file.write(keyed(n)), "00") << n << reason(file);
    for (int n = 0; n < 20000; n += 1000) EXPECT_EQ(other.read(keyed(n)), "00") << n;
    EXPECT_EQ(other.write(keyed(20000)), "00");
    file.move(keyed(20000));
    EXPECT_EQ(file.read(), "00");
    EXPECT_EQ(file.close(), "00");
    EXPECT_EQ(other.close(), "00");
    // One that has it alone commits before its batch is larger than the room.
    ASSERT_EQ(file.open(ZVK_OPEN_OUTPUT), "00");
    for (int n = 0; n < 20000; ++n) ASSERT_EQ(file.write(keyed(n)), "00") << n << reason(file);
    EXPECT_EQ(file.close(), "00");
    EXPECT_GT(sizeOf(directory.file("i") + ".mdb"), 3 << 20);
    unsetenv("VFS_INDEXED_MAP");
}

// Lengths of entries in a page that something else has written: a status, and no byte beyond a
// buffer.
TEST(Store, DamagedLengthsAreAStatus)
{
    TemporaryDirectory directory;
    CompiledFile file("stl-" + directory.file("i"), plain);
    makeFile(file, 3);
    const string path = directory.file("i") + ".mdb";
    const string whole = readFile(path);
    for (uint16_t length : {uint16_t(0xFFFF), uint16_t(513), uint16_t(100), uint16_t(7), uint16_t(5), uint16_t(0)})
        for (int record = 0; record < 3; ++record) {
            // A node of a page: ..., length of the key in two bytes, the key.
            string damaged = whole;
            int found = 0;
            for (size_t at = 0; (at = damaged.find(keyed(record).substr(0, 6) + keyed(record), at + 1)) != string::npos;
                 ++found)
                memcpy(&damaged[at - 2], &length, 2);
            ASSERT_GT(found, 0);
            writeFile(path, damaged);
            ASSERT_EQ(file.open(ZVK_OPEN_INPUT), "00");
            for (uint8_t relation : {ZVK_RELATION_FIRST, ZVK_RELATION_NOT_LESS, ZVK_RELATION_LAST}) {
                file.move("100000");
                string status = file.verb(file.fcb->start, {.relation = relation});
                while (status == "00" && (status = file.read(next)) == "00") EXPECT_EQ(file.record().size(), 20u);
            }
            file.close();
            string opened = file.open(ZVK_OPEN_EXTEND);
            if (opened < "10") file.close();
            // The entry itself is never delivered.
            ASSERT_EQ(file.open(ZVK_OPEN_INPUT), "00");
            int good = 0;
            while (file.read(next) < "10") ++good;
            EXPECT_EQ(file.status(), "30") << length << " " << record;
            EXPECT_LE(good, record);
            file.close();
        }
}

// Somebody empties or shortens a store that is open: what is cut off is a status, and no end of the
// program.
TEST(Store, ShortenedUnderAnOpenFile)
{
    FileAttributes wide = plain;
    wide.longest = wide.shortest = 200;
    for (bool alone : {false, true})
        for (off_t size : {0, 100, 4096, 8191, 8192, 12288, 40000, 100000}) {
            TemporaryDirectory directory;
            const string path = directory.file("i");
            ChildRun run = runChild([&] {
                FileAttributes attributes = wide;
                if (alone) attributes.share = ZVK_FILE_SHARE_NONE;
                CompiledFile file("stl-" + path, attributes), reader("stl-" + path, wide);
                makeFile(file, 1000);
                if (file.open(ZVK_OPEN_IO) != "00" || (!alone && reader.open(ZVK_OPEN_INPUT) != "00")) _exit(1);
                if (file.rewrite(keyed(1)) != "00" || (!alone && reader.read(next) != "00")) _exit(2);
                if (truncate((path + ".mdb").c_str(), size) != 0) _exit(3);
                int refused = 0;
                for (int n = 0; n < 1000; n += 7) {
                    file.move(keyed(n));
                    for (string status : {n % 2 ? file.rewrite(keyed(n)) : file.read(),
                                          alone ? "00" : reader.read(n % 3 ? next : FileRequest{})}) {
                        if (status > "09" && status != "30" && status != "46") _exit(4);
                        refused += status == "30";
                    }
                }
                reader.close();
                file.close();
                _exit(refused || alone ? 0 : 5); // one that is alone may have all pages that it needs
            });
            EXPECT_EQ(run.status, 0) << size << alone << " signal " << run.signal;
        }
}

TEST(Store, SymbolicLinkIsTheFile)
{
    TemporaryDirectory directory;
    const string path = directory.file("i"), link = directory.file("link");
    ASSERT_EQ(symlink("i", link.c_str()), 0);
    Peer direct("stl-" + path, plain);
    CompiledFile file("stl-" + link, plain);
    for (bool made : {false, true}) { // the link leads to nothing, or to a file
        makeFile(file, 3);
        EXPECT_EQ(sizeOf(link + ".mdb"), -1) << made;
        ASSERT_EQ(direct.open(ZVK_OPEN_IO), "00");
        ASSERT_EQ(file.open(ZVK_OPEN_IO), "00");
        EXPECT_EQ(direct.write(keyed(7)), "00");
        file.move(keyed(7));
        EXPECT_EQ(file.read(), "00");
        EXPECT_EQ(direct.rewrite(keyed(7)), "99");
        EXPECT_EQ(file.close(), "00");
        EXPECT_EQ(direct.close(), "00");
    }
}

// The lock file, or the file itself, goes while a program has it open. What it then writes would be
// seen by nobody, or would meet another writer unseen: it is told.
TEST(Store, RemovedFilesNeverHideAWriter)
{
    for (const char *gone : {".mdb-lock", "", ".mdb"})
        for (bool alone : {false, true}) {
            TemporaryDirectory directory;
            const string path = directory.file("i"), where = string(gone) + (alone ? " alone" : "");
            FileAttributes attributes = plain;
            if (alone) attributes.share = ZVK_FILE_SHARE_NONE;
            CompiledFile file("stl-" + path, attributes), other("stl-" + path, plain);
            makeFile(file, 3);
            ASSERT_EQ(file.open(ZVK_OPEN_IO), "00");
            ASSERT_EQ(file.rewrite(keyed(1)), "00");
            string removed = path + gone;
            if (alone && !strcmp(gone, ".mdb-lock")) continue; // it has none
            ASSERT_EQ(unlink(removed.c_str()), 0) << removed;
            pid_t child = fork(); // another program makes what it needs
            if (child == 0) {
                bool good = other.open(*gone == '.' && gone[4] ? ZVK_OPEN_IO : ZVK_OPEN_OUTPUT) == "00";
                good = good && other.write(keyed(5)) == "00";
                _exit(good && other.close() == "00" ? 0 : 1);
            }
            int ending;
            waitpid(child, &ending, 0);
            // The file itself is still locked by the program that has it open.
            bool refused = !strcmp(gone, ".mdb");
            EXPECT_EQ(WEXITSTATUS(ending), refused ? 1 : 0) << where;
            string status = file.write(keyed(8));
            if (alone) {
                EXPECT_EQ(status, "00") << where;
                EXPECT_EQ(file.close(), "30") << where;
            } else {
                EXPECT_EQ(status, "30") << where;
                EXPECT_NE(reason(file).find("replaced"), string::npos) << where;
                EXPECT_EQ(file.read(next), "30") << where;
                file.close();
            }
            if (refused) continue;
            ASSERT_EQ(other.open(ZVK_OPEN_INPUT), "00") << where;
            EXPECT_EQ(other.read(next), "00");
            int count = 1;
            while (other.read(next) == "00") ++count;
            EXPECT_EQ(count, *gone ? 4 : 1) << where;
            other.close();
        }
}

// The folder's clock is another machine's, an hour behind, and keeps whole seconds. That a time is
// old does not say that it was long ago, and a second change has the same time as the first.
TEST(Store, RemovalIsSeenWhateverTheClocksSay)
{
    TemporaryDirectory directory;
    const string path = directory.file("i"), folder = path.substr(0, path.rfind('/'));
    const time_t stamped = time(nullptr) - 3600;
    auto stamp = [&] {
        const timespec times[] = {{stamped, 0}, {stamped, 0}};
        return utimensat(AT_FDCWD, folder.c_str(), times, 0);
    };
    CompiledFile file("stl-" + path, plain);
    makeFile(file, 3);
    ASSERT_EQ(file.open(ZVK_OPEN_IO), "00");
    ASSERT_EQ(stamp(), 0);
    for (int n = 0; n < 5; ++n) ASSERT_EQ(file.rewrite(keyed(1)), "00");
    ASSERT_EQ(unlink((path + ".mdb-lock").c_str()), 0);
    ASSERT_EQ(stamp(), 0);
    EXPECT_EQ(file.rewrite(keyed(2)), "30");
    file.close();
}

// The store is cut off after the verb has asked for its size; a disk that cannot be read under a
// page looks the same. The verb fails, and not the program; nothing is left locked or half done.
TEST(Store, PagesThatGoDuringAVerb)
{
#ifdef __SANITIZE_THREAD__
    GTEST_SKIP() << "the sanitizer handles the signal itself";
#endif
    constexpr int records = 2000;
    constexpr long page = 4096;
    struct Verb {
        const char *name;
        std::function<string(CompiledFile &)> make;
    };
    const Verb verbs[] = {
        {"read", [](CompiledFile &file) { return file.move(keyed(1500)), file.read(); }},
        {"read next", [](CompiledFile &file) { return file.read(next); }},
        {"start", [](CompiledFile &file) { return file.verb(file.fcb->start, {.relation = ZVK_RELATION_LAST}); }},
        {"write", [](CompiledFile &file) { return file.write(keyed(3000)); }},
        {"rewrite", [](CompiledFile &file) { return file.rewrite(keyed(1500)); }},
        {"delete", [](CompiledFile &file) { return file.move(keyed(1500)), file.verb(file.fcb->deleteRecord, {}); }},
    };
    TemporaryDirectory directory;
    const string path = directory.file("i"), store = path + ".mdb";
    CompiledFile made("stl-" + path, plain);
    makeFile(made, records);
    // Free pages that a reader holds, so that there are long lists of them.
    int ready[2];
    ASSERT_EQ(pipe(ready), 0);
    pid_t reader = fork();
    if (reader == 0) {
        MDB_env *env;
        MDB_txn *txn;
        mdb_env_create(&env);
        mdb_env_set_maxreaders(env, 8192);
        bool good = mdb_env_open(env, store.c_str(), MDB_NOSUBDIR, 0666) == 0 &&
                    mdb_txn_begin(env, nullptr, MDB_RDONLY, &txn) == 0;
        if (!good || ::write(ready[1], "", 1) != 1) _exit(1);
        for (;;) pause();
    }
    char byte;
    ASSERT_EQ(::read(ready[0], &byte, 1), 1);
    ASSERT_EQ(made.open(ZVK_OPEN_IO), "00");
    for (int n = 0; n < 250; ++n) ASSERT_EQ(made.rewrite(keyed(n * 7 % records)), "00");
    ASSERT_EQ(made.close(), "00");
    kill(reader, SIGKILL);
    waitpid(reader, nullptr, 0);
    close(ready[0]), close(ready[1]);
    const string before = readFile(store);
    FileAttributes noOther = plain;
    noOther.share = ZVK_FILE_SHARE_NONE;
    auto check = [&](const Verb &one, uint16_t mode, bool alone, long left) {
        CompiledFile file("stl-" + path, alone ? noOther : plain);
        ASSERT_EQ(file.open(mode), "00");
        const string where =
            string(one.name) + (alone ? " alone " : " shared ") + std::to_string(mode) + " " + std::to_string(left);
        string status;
        {
            ShrinkingFile cut(store, left * page);
            status = one.make(file);
            EXPECT_TRUE(ShrinkingFile::happened()) << where;
        }
        writeFile(store, before); // a disk that was away comes back
        EXPECT_TRUE(status == "30" || (left > 2 && status == "00")) << where << ": " << status;
        if (status == "30") {
            EXPECT_EQ((file.move(keyed(7)), file.read()), "00") << where;
            if (mode == ZVK_OPEN_IO) {
                EXPECT_EQ(file.rewrite(keyed(7)), "00") << where << reason(file);
            }
            EXPECT_EQ(file.close(), "00") << where;
        }
        file.close();
        writeFile(store, before);
        unlink((store + "-lock").c_str());
    };
    const long pages = static_cast<long>(before.size()) / page;
    for (long left : {2L, 10L, pages / 2, pages - 1})
        for (bool alone : {false, true})
            for (const Verb &one : verbs) {
                if (&one - verbs < 3) check(one, ZVK_OPEN_INPUT, alone, left);
                check(one, ZVK_OPEN_IO, alone, left);
            }
    // What is no matter of pages ends the program as it did.
    pid_t child = fork();
    if (child == 0) {
        signal(SIGBUS, SIG_DFL);
        CompiledFile file("stl-" + path, plain);
        if (file.open(ZVK_OPEN_INPUT) != "00") _exit(1);
        raise(SIGBUS);
        _exit(2);
    }
    int ending;
    waitpid(child, &ending, 0);
    EXPECT_TRUE(WIFSIGNALED(ending) && WTERMSIG(ending) == SIGBUS) << ending;
}

TEST(Store, HardLinkIsTheFileItself)
{
    TemporaryDirectory directory;
    const string path = directory.file("i"), link = directory.file("link"), folder = directory.file("sub");
    ASSERT_EQ(mkdir(folder.c_str(), 0777), 0);
    CompiledFile file("stl-" + path, indexedFile()), linked("stl-" + link, indexedFile()),
        far("stl-" + folder + "/link", indexedFile());
    ASSERT_EQ(file.open(ZVK_OPEN_OUTPUT), "00");
    ASSERT_EQ(file.write("000001aaaabbbb"), "00");
    ASSERT_EQ(file.close(), "00");
    ASSERT_EQ(::link(path.c_str(), link.c_str()), 0);
    ASSERT_EQ(::link(path.c_str(), (folder + "/link").c_str()), 0);

    ASSERT_EQ(file.open(ZVK_OPEN_IO), "00");
    ASSERT_EQ(linked.open(ZVK_OPEN_IO), "00");
    ASSERT_EQ(linked.write("000002aaaacccc"), "02");
    file.move("000002");
    EXPECT_EQ(file.read(), "00");
    EXPECT_EQ(linked.read(), "99");
    EXPECT_EQ(linked.close(), "00");
    EXPECT_EQ(file.close(), "00");
    // OUTPUT makes the same store anew, and none of its own.
    ASSERT_EQ(linked.open(ZVK_OPEN_OUTPUT), "00");
    ASSERT_EQ(linked.write("000003aaaabbbb"), "00");
    ASSERT_EQ(linked.close(), "00");
    EXPECT_EQ(sizeOf(link + ".mdb"), -1);
    ASSERT_EQ(file.open(ZVK_OPEN_INPUT), "00");
    EXPECT_EQ(file.read(next), "00");
    EXPECT_EQ(file.record().substr(0, 6), "000003");
    EXPECT_EQ(file.read(next), "10");
    file.close();
    // In another folder the store is not found: refused, and nothing is made or emptied.
    for (uint16_t mode : {uint16_t{ZVK_OPEN_INPUT}, uint16_t{ZVK_OPEN_IO}, uint16_t{ZVK_OPEN_OUTPUT}}) {
        EXPECT_EQ(far.open(mode), "30");
        EXPECT_EQ(reason(far).substr(0, 9), "hard link");
    }
    EXPECT_EQ(sizeOf(folder + "/link.mdb"), -1);
    EXPECT_EQ(file.open(ZVK_OPEN_INPUT), "00");
    file.close();
}

// Records in no order, over many commits: each leaves the pages of the one before free. With and
// without room for the copy that leaves them out, the file holds the same.
TEST(Store, NewFileIsNotMadeOfFreePages)
{
    constexpr int records = 20000, longest = 100;
    FileAttributes wide = indexedFile();
    wide.longest = wide.shortest = longest;
    for (const char *durability : {"none", "close"}) {
        off_t small = 0, large = 0;
        for (bool trimmed : {true, false}) {
            TemporaryDirectory directory;
            setenv("VFS_INDEXED_MAP", "4", 1); // small commits
            setenv("VFS_DURABILITY", durability, 1);
            const string path = directory.file("f"), aside = path + ".mdb.kvr2-new";
            CompiledFile file("stl-" + path, wide);
            ASSERT_EQ(file.open(ZVK_OPEN_OUTPUT), "00");
            for (int n = 0; n < records; ++n) {
                char text[32];
                snprintf(text, sizeof text, "%06d%04d%04x", n * 7919 % records, n % 100, n % 65536);
                ASSERT_LE(file.write(text), "02");
            }
            if (!trimmed) mkdir(aside.c_str(), 0777);
            ASSERT_EQ(file.close(), "00");
            (trimmed ? small : large) = sizeOf(path + ".mdb");
            EXPECT_EQ(access(aside.c_str(), F_OK) == 0, !trimmed);
            ASSERT_EQ(file.open(ZVK_OPEN_IO), "00") << reason(file);
            for (int n = 0; n < records; ++n) {
                ASSERT_EQ(file.read(next), "00");
                ASSERT_EQ(atoi(file.record().substr(0, 6).c_str()), n);
            }
            ASSERT_EQ(file.read(next), "10");
            EXPECT_EQ(file.verb(file.fcb->start, {.relation = ZVK_RELATION_LAST, .key = 1}), "00");
            EXPECT_LE(file.write("90000000990000"), "22");
            EXPECT_EQ(file.close(), "00");
            rmdir(aside.c_str());
        }
        EXPECT_LT(small, large * 3 / 4);
    }
    setenv("VFS_DURABILITY", "none", 1);
    unsetenv("VFS_INDEXED_MAP");
}

} // namespace
