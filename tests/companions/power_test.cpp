// Faults these tests are there to catch: a loss of power that takes what was promised, or that
// leaves a store in which a record or a key is missing.
//
// The writes of a program are recorded with the moments at which they are forced. A cut leaves all
// that was forced before it, and of the rest any part, in any order.
#include <map>
#include <memory>
#include <random>
#include <sys/stat.h>

#include "failing_disk.h"
#include "stored_files.h"

namespace {

string textOf(int n, char letter)
{
    char text[32];
    snprintf(text, sizeof text, "%06d%c%03d%04d%06d", n, letter, n % 7, n, 0);
    return text;
}

unsigned long inodeOf(const string &path)
{
    struct stat about;
    return stat(path.c_str(), &about) == 0 ? about.st_ino : 0;
}

// The content of a file after a cut in front of write `end`. It was made at `begin`: writes before
// are of another file that had its inode, and so are those after the inode was given away again.
string afterCut(const std::vector<RecordedWrite> &writes, unsigned long inode, const string &before, size_t end,
                std::mt19937 &random, size_t begin = 0)
{
    for (size_t i = begin + 1; i < end; ++i)
        if (writes[i].inode == inode && writes[i].offset == RecordedWrite::made) end = i;
    size_t forced = 0;
    for (size_t i = begin; i < end; ++i)
        if (writes[i].inode == inode && writes[i].offset < 0 && writes[i].offset != RecordedWrite::linked) forced = i;
    string content = before;
    for (size_t i = begin; i < end; ++i) {
        const RecordedWrite &one = writes[i];
        if (one.inode != inode || one.offset < 0 || (i >= forced && random() % 3 == 0)) continue;
        size_t at = static_cast<size_t>(one.offset);
        if (content.size() < at + one.bytes.size()) content.resize(at + one.bytes.size());
        content.replace(at, one.bytes.size(), one.bytes);
    }
    return content;
}

class PowerCut : public testing::TestWithParam<const char *> {};

// A program that changes a shared file, or one that it has alone; `done` says after which write
// each verb returned.
TEST_P(PowerCut, LeavesAStoreOfOneCommit)
{
    std::mt19937 random(5 + tortureSeed());
    setenv("VFS_DURABILITY", GetParam(), 1);
    const bool commit = !strcmp(GetParam(), "commit");
    for (bool alone : {false, true}) {
        TemporaryDirectory directory;
        const string path = directory.file("f"), store = path + ".mdb";
        FileAttributes attributes = indexedFile();
        if (alone) attributes.share = ZVK_FILE_SHARE_NONE;
        CompiledFile file("stl-" + path, attributes);
        ASSERT_EQ(file.open(ZVK_OPEN_OUTPUT), "00");
        for (int n = 0; n < 60; ++n) ASSERT_LE(file.write(textOf(n, 'a')), "02");
        ASSERT_EQ(file.close(), "00");
        const string before = readFile(store);
        const unsigned long inode = inodeOf(store);

        // What the file should hold after each change.
        std::vector<size_t> done;
        std::vector<std::map<int, char>> states(1);
        for (int n = 0; n < 60; ++n) states[0][n] = 'a';
        std::vector<RecordedWrite> writes;
        {
            RecordingDisk disk;
            ASSERT_EQ(file.open(ZVK_OPEN_IO), "00");
            for (int step = 0; step < 60; ++step) {
                int n = static_cast<int>(random() % 80);
                std::map<int, char> state = states.back();
                string text = textOf(n, static_cast<char>('b' + step % 20));
                if (!state.count(n)) {
                    ASSERT_LE(file.write(text), "02");
                    state[n] = text[6];
                } else if (random() % 3) {
                    ASSERT_LE(file.rewrite(text), "02");
                    state[n] = text[6];
                } else {
                    file.move(text);
                    ASSERT_EQ(file.verb(file.fcb->deleteRecord, {}), "00");
                    state.erase(n);
                }
                states.push_back(state);
                done.push_back(RecordingDisk::writes.size());
            }
            ASSERT_EQ(file.close(), "00");
            writes = RecordingDisk::writes;
        }
        const size_t closed = writes.size();
        ASSERT_GT(closed, 4u);
        for (int round = 0; round < torture("CUTS", 150, 8); ++round) {
            size_t end = round ? random() % (closed + 1) : closed;
            writeFile(store, afterCut(writes, inode, before, end, random));
            string where = string(GetParam()) + (alone ? " alone" : " shared") + " cut at " + std::to_string(end);
            ASSERT_EQ(file.open(ZVK_OPEN_INPUT), "00") << where;
            std::map<int, char> found[3];
            for (uint32_t key = 0; key < 3; ++key) {
                ASSERT_EQ(file.verb(file.fcb->start, {.relation = ZVK_RELATION_FIRST, .key = key}), "00") << where;
                while (file.read(next) < "10") found[key][std::stoi(file.record().substr(0, 6))] = file.record()[6];
                ASSERT_EQ(file.status(), "10") << where;
                ASSERT_EQ(found[key], found[0]) << where << " key " << key;
            }
            file.close();
            // `close`: the last change may still be under way to the disk.
            size_t least = 0, most = 0;
            while (most < done.size() && done[most] <= end) ++most;
            if (!alone) least = commit || !most ? most : most - 1;
            if (end == closed) least = states.size() - 1;
            bool known = false;
            for (size_t i = least; i < states.size(); ++i) known |= states[i] == found[0];
            ASSERT_TRUE(known) << where << ": no state of after verb " << least;
        }
    }
    setenv("VFS_DURABILITY", "none", 1);
}

// A file that was made while writes were recorded, after a cut: is its name there, and what does it
// hold? A name is on the disk when its folder was forced; until then it may be as it was before.
bool madeFileAfterCut(const std::vector<RecordedWrite> &writes, const string &name, unsigned long folder, size_t end,
                      std::mt19937 &random, string *content)
{
    size_t forced = 0;
    for (size_t i = 0; i < end; ++i)
        if (writes[i].inode == folder && writes[i].offset == RecordedWrite::forced) forced = i;
    unsigned long inode = 0;
    size_t made = 0;
    for (size_t i = 0; i < end; ++i) {
        const RecordedWrite &one = writes[i];
        if (one.offset > RecordedWrite::forced || one.offset == RecordedWrite::forced || one.bytes != name) continue;
        if (i >= forced && random() % 2) break; // the folder keeps the order of its changes
        inode = one.offset == RecordedWrite::removed ? 0 : one.inode;
        made = i;
        // What is linked was made, and perhaps written, under another name.
        while (one.offset == RecordedWrite::linked && made &&
               !(writes[made].inode == inode && writes[made].offset == RecordedWrite::made))
            --made;
    }
    if (inode) *content = afterCut(writes, inode, "", end, random, made);
    return inode;
}

// Transfers between accounts in two indexed files and a relative one, each a transaction: after a
// cut the files hold what one of the commits left, together.
TEST_P(PowerCut, LeavesTransactionsWhole)
{
    std::mt19937 random(9 + tortureSeed());
    constexpr int accounts = 12, each = 1000, transfers = 12, files = 3;
    using State = std::vector<int>; // of all accounts
    FileAttributes relative = relativeFile();
    relative.longest = relative.shortest = 20;
    setenv("VFS_DURABILITY", GetParam(), 1);
    const int rounds = torture("CUTS", 80, 4), cutsEach = 20;
    for (int round = 0; round < rounds; round += cutsEach) {
        TemporaryDirectory directory;
        const string path[files] = {directory.file("a"), directory.file("b"), directory.file("r")};
        const string data[files] = {path[0] + ".mdb", path[1] + ".mdb", path[2]};
        string before[files];
        unsigned long inodes[files];
        auto text = [](int n, int value) {
            char line[32];
            snprintf(line, sizeof line, "%06d%04d%04d%06d", n, n % 5, n, value);
            return string(line);
        };
        auto numbered = [](int n) { return FileRequest{.relativeKey = static_cast<uint64_t>(n)}; };
        auto attributesOf = [&](int i) { return i == 2 ? relative : indexedFile(); };
        auto valueOf = [](const CompiledFile &file) { return atoi(file.record().substr(14, 6).c_str()); };
        unsetenv("VFS_TRANSACTIONS");
        for (int i = 0; i < files; ++i) {
            CompiledFile file("stl-" + path[i], attributesOf(i));
            ASSERT_EQ(file.open(ZVK_OPEN_OUTPUT), "00");
            for (int n = 1; n <= accounts; ++n) ASSERT_LE(file.write(text(n, each), numbered(n)), "02");
            ASSERT_EQ(file.close(), "00");
            before[i] = readFile(data[i]);
            inodes[i] = inodeOf(data[i]);
        }
        std::vector<State> states{State(files * accounts, each)};
        std::vector<size_t> done;
        std::vector<RecordedWrite> writes;
        setenv("VFS_TRANSACTIONS", "on", 1);
        {
            RecordingDisk disk;
            std::vector<std::unique_ptr<CompiledFile>> open;
            for (int i = 0; i < files; ++i) {
                open.push_back(std::make_unique<CompiledFile>("stl-" + path[i], attributesOf(i)));
                ASSERT_EQ(open[static_cast<size_t>(i)]->open(ZVK_OPEN_IO), "00");
            }
            for (int transfer = 0; transfer < transfers; ++transfer) {
                State state = states.back();
                for (int part = 0; part < 4; ++part) {
                    auto which = static_cast<size_t>(random() % files);
                    int n = 1 + static_cast<int>(random() % accounts), by = part % 2 ? 7 : -7;
                    CompiledFile &file = *open[which];
                    file.move(text(n, 0));
                    ASSERT_EQ(file.read(numbered(n)), "00");
                    ASSERT_LE(file.rewrite(text(n, valueOf(file) + by), numbered(n)), "02");
                    state[which * accounts + static_cast<size_t>(n) - 1] += by;
                }
                ASSERT_EQ(commit(), 0);
                states.push_back(state);
                done.push_back(RecordingDisk::writes.size());
            }
            for (auto &file : open) ASSERT_EQ(file->close(), "00");
            writes = RecordingDisk::writes;
        }
        unsetenv("VFS_TRANSACTIONS");
        struct stat folder;
        ASSERT_EQ(stat(path[0].substr(0, path[0].rfind('/')).c_str(), &folder), 0);
        for (int cut = 0; cut < cutsEach && round + cut < rounds; ++cut) {
            const size_t end = cut ? random() % (writes.size() + 1) : writes.size();
            const string where =
                string(GetParam()) + " cut at " + std::to_string(end) + " of " + std::to_string(writes.size());
            for (int i = 0; i < files; ++i) {
                writeFile(data[i], afterCut(writes, inodes[i], before[i], end, random));
                string journal = path[i] + ".kvr2-commit", content;
                unlink((path[i] + ".mdb-lock").c_str());
                unlink(journal.c_str());
                if (madeFileAfterCut(writes, journal, folder.st_ino, end, random, &content))
                    writeFile(journal, content);
            }
            State found;
            for (int i = 0; i < files; ++i) {
                CompiledFile file("stl-" + path[i], attributesOf(i));
                ASSERT_EQ(file.open(ZVK_OPEN_INPUT), "00") << where << reason(file);
                while (file.read(next) < "10") found.push_back(valueOf(file));
                ASSERT_EQ(file.status(), "10") << where;
                file.close();
            }
            size_t least = 0;
            while (least < done.size() && done[least] <= end) ++least;
            // `close`: the last commit may still be under way to the disk.
            if (least && strcmp(GetParam(), "commit") != 0) --least;
            bool known = false;
            for (size_t i = least; i < states.size(); ++i) known |= states[i] == found;
            ASSERT_TRUE(known) << where << ": no state of after commit " << least;
        }
    }
    setenv("VFS_DURABILITY", "none", 1);
}

INSTANTIATE_TEST_SUITE_P(Durabilities, PowerCut, testing::Values("close", "commit"));

// CLOSE forces what the other kinds of files hold.
TEST(Durability, CloseForcesTheData)
{
    std::mt19937 random(5);
    setenv("VFS_DURABILITY", "close", 1);
    for (string kind : {"rsd-", "wbr-", "lsq-", "stl-", "relative"})
        for (uint16_t mode : {uint16_t{ZVK_OPEN_EXTEND}, uint16_t{ZVK_OPEN_IO}}) {
            TemporaryDirectory directory;
            const string path = directory.file("f");
            CompiledFile file((kind == "relative" ? "stl-" : kind) + path,
                              kind == "relative" ? relativeFile(sequentialAccess) : fixed10);
            ASSERT_EQ(file.open(ZVK_OPEN_OUTPUT), "00");
            ASSERT_EQ(file.write("one"), "00");
            ASSERT_EQ(file.close(), "00");
            string before = readFile(path);
            std::vector<RecordedWrite> writes;
            {
                RecordingDisk disk;
                ASSERT_EQ(file.open(mode), "00");
                if (mode == ZVK_OPEN_IO) file.read(next);
                EXPECT_EQ(mode == ZVK_OPEN_IO ? file.rewrite("new") : file.write("two"), "00");
                EXPECT_EQ(file.close(), "00");
                writes = RecordingDisk::writes;
            }
            for (int round = 0; round < 10; ++round)
                EXPECT_EQ(afterCut(writes, inodeOf(path), before, writes.size(), random), readFile(path)) << kind;
            EXPECT_NE(readFile(path), before);
        }
    setenv("VFS_DURABILITY", "none", 1);
}

} // namespace
