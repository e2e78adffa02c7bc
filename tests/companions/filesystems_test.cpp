// Faults these tests are there to catch: records that come back changed, cut or out of order; half records after a kill or a full disk; a wrong status; a
// file harmed by an OPEN that is refused; updates of two processes that overwrite each other; a crash on a damaged file.
#include <csignal>
#include <fcntl.h>
#include <map>
#include <random>
#include <sys/resource.h>
#include <sys/stat.h>
#include <sys/wait.h>
#include <unistd.h>

#include "support/child.h"
#include "support/compiled_file.h"

using std::string;

namespace {

string pad(string text, size_t size) { return text.append(size - text.size(), ' '); }

const FileAttributes fixed10 = {.longest = 10, .shortest = 10};
const FileAttributes varying = {.longest = 40, .shortest = 1};

// Key 0 in bytes 0 to 5, key 1 in 6 to 9 with duplicates, key 2 in 10 to 13 without.
FileAttributes indexedFile(uint8_t access = 0)
{
    return {.longest = 20,
            .shortest = 20,
            .organization = ZVK_FILE_INDEXED,
            .access = access,
            .keys = {{6, 0, 0, {}}, {4, 6, ZVK_FILE_KEY_DUPLICATES, {}}, {4, 10, 0, {}}}};
}

TEST(Sequential, RecordsComeBackAsTheyWentIn)
{
    for (string prefix : {"rsd-", "wbr-", "stl-", "lsq-"})
        for (bool variable : {false, true}) {
            if (prefix == "wbr-" && variable) continue;
            TemporaryDirectory directory;
            CompiledFile file(prefix + directory.file("x"), variable ? varying : fixed10);
            ASSERT_EQ(file.open(ZVK_OPEN_OUTPUT), "00") << prefix << file.fcb->fs2;
            std::vector<string> written;
            for (int i = 0; i < 30000; ++i) {
                string text = std::to_string(i) + string(variable ? i % 30 : 0, 'x');
                ASSERT_EQ(file.write(text), "00");
                written.push_back(variable || prefix == "lsq-" ? text : pad(text, 10));
            }
            ASSERT_EQ(file.close(), "00");
            ASSERT_EQ(file.open(ZVK_OPEN_EXTEND), "00") << prefix << file.fcb->fs2;
            ASSERT_EQ(file.write("last"), "00");
            written.push_back(variable || prefix == "lsq-" ? "last" : pad("last", 10));
            ASSERT_EQ(file.close(), "00");
            ASSERT_EQ(file.open(ZVK_OPEN_INPUT), "00");
            for (const string &text : written) {
                ASSERT_EQ(file.read(), "00") << prefix << text;
                ASSERT_EQ(file.record(), text);
            }
            EXPECT_EQ(file.read(), "10");
            EXPECT_EQ(file.read(), "46");
            EXPECT_EQ(file.close(), "00");
        }
}

TEST(Sequential, TornLastRecordIsNotDeliveredAndWrittenOver)
{
    TemporaryDirectory directory;
    for (bool variable : {false, true}) {
        string path = directory.file(variable ? "v" : "f");
        CompiledFile file("rsd-" + path, variable ? varying : fixed10);
        file.open(ZVK_OPEN_OUTPUT);
        file.write("one");
        file.write("two");
        file.close();
        string whole = readFile(path);
        for (size_t cut = 1; cut < whole.size() / 2; ++cut) {
            writeFile(path, whole.substr(0, whole.size() - cut));
            ASSERT_EQ(file.open(ZVK_OPEN_INPUT), "00");
            EXPECT_EQ(file.read(), "00");
            EXPECT_EQ(file.read(), "10") << cut;
            file.close();
            ASSERT_EQ(file.open(ZVK_OPEN_EXTEND), "00");
            file.write("two");
            file.close();
            EXPECT_EQ(readFile(path), whole) << cut;
        }
    }
}

TEST(LineSequential, LinesOfAllKinds)
{
    TemporaryDirectory directory;
    string path = directory.file("t");
    writeFile(path, "a\r\n\nexactlyten\nmore than ten\nend");
    CompiledFile file("lsq-" + path, fixed10);
    ASSERT_EQ(file.open(ZVK_OPEN_INPUT), "00");
    const std::pair<const char *, const char *> expected[] = {{"00", "a"},          {"00", ""},    {"00", "exactlyten"},
                                                              {"06", "more than "}, {"00", "ten"}, {"00", "end"}};
    for (auto [status, text] : expected) {
        EXPECT_EQ(file.read(), status);
        EXPECT_EQ(file.record(), text);
    }
    EXPECT_EQ(file.read(), "10");
    file.close();
    ASSERT_EQ(file.open(ZVK_OPEN_EXTEND), "00");
    EXPECT_EQ(file.write("x\ny"), "30");
    EXPECT_EQ(file.write("after", {.options = ZVK_REQUEST_AFTER, .advance = 2}), "00");
    EXPECT_EQ(file.write("page", {.options = ZVK_REQUEST_AFTER, .advance = ZVK_ADVANCE_PAGE}), "00");
    file.close();
    EXPECT_EQ(readFile(path), "a\r\n\nexactlyten\nmore than ten\nend\n\nafter\fpage\n");
}

TEST(LineSequential, LinageTurnsPages)
{
    TemporaryDirectory directory;
    FileAttributes paged = fixed10;
    paged.linage = ZVK_FILE_LINAGE | ZVK_FILE_LINAGE_FOOTING | ZVK_FILE_LINAGE_TOP | ZVK_FILE_LINAGE_BOTTOM;
    paged.body = 3, paged.footing = 3, paged.top = 1, paged.bottom = 1;
    CompiledFile file("lsq-" + directory.file("t"), paged);
    ASSERT_EQ(file.open(ZVK_OPEN_OUTPUT), "00");
    uint32_t counters[] = {2, 3, 1, 2};
    bool ends[] = {false, true, true, false};
    for (int i = 0; i < 4; ++i) {
        EXPECT_EQ(file.write(std::to_string(i)), "00");
        EXPECT_EQ(file.fcb->linageCounter, counters[i]);
        EXPECT_EQ(!!(file.request.options & ZVK_REQUEST_END_OF_PAGE), ends[i]) << i;
    }
    file.close();
    EXPECT_EQ(readFile(directory.file("t")), "0\n1\n2\n\n\n3\n");
}

// A line written AFTER ADVANCING stays open, and a record BEFORE ADVANCING ends it: the page's counter must know of that line, or pages grow.
TEST(LineSequential, LinageCountsMixedAdvancing)
{
    TemporaryDirectory directory;
    FileAttributes paged = fixed10;
    paged.linage = ZVK_FILE_LINAGE | ZVK_FILE_LINAGE_FOOTING | ZVK_FILE_LINAGE_TOP | ZVK_FILE_LINAGE_BOTTOM;
    paged.body = 6, paged.footing = 5, paged.top = 1, paged.bottom = 2;
    CompiledFile file("lsq-" + directory.file("t"), paged);
    ASSERT_EQ(file.open(ZVK_OPEN_OUTPUT), "00");
    struct {
        const char *text;
        uint32_t options;
        int32_t advance;
        uint32_t counter;
        bool endOfPage;
    } writes[] = {
        {"a1", 0, 0, 2, false},                                // BEFORE, by default
        {"a4", ZVK_REQUEST_AFTER, 2, 4, false},                // stays open on line 4
        {"a5", 0, 0, 6, true},                                 // on line 5; the next one on 6
        {"b1", ZVK_REQUEST_AFTER, ZVK_ADVANCE_PAGE, 1, false}, // open on line 1
        {"b2", ZVK_REQUEST_BEFORE, 1, 3, false},               //
        {"b6", ZVK_REQUEST_AFTER, 3, 6, true},                 // open on the page's last line
        {"c1", 0, 0, 2, true},                                 // its end turns the page
        {"d1", ZVK_REQUEST_AFTER, ZVK_ADVANCE_PAGE, 1, false}, //
    };
    for (auto &w : writes) {
        EXPECT_EQ(file.write(w.text, {.options = w.options, .advance = w.advance}), "00") << w.text;
        EXPECT_EQ(file.fcb->linageCounter, w.counter) << w.text;
        EXPECT_EQ(!!(file.request.options & ZVK_REQUEST_END_OF_PAGE), w.endOfPage) << w.text;
    }
    file.close();
    // Every page begins 9 lines behind the one before.
    EXPECT_EQ(readFile(directory.file("t")), "a1\n\n\na4\na5\n\n\n\n\nb1\nb2\n\n\n\nb6\n\n\n\nc1\n\n\n\n\n\n\n\n\nd1\n");
}

TEST(Relative, SlotsByNumberAndInOrder)
{
    TemporaryDirectory directory;
    FileAttributes attributes = {.longest = 10, .shortest = 10, .organization = ZVK_FILE_RELATIVE, .access = 0};
    CompiledFile file(directory.file("r"), attributes);
    ASSERT_EQ(file.open(ZVK_OPEN_OUTPUT), "00");
    for (uint64_t n : {5, 2, 9}) EXPECT_EQ(file.write("r" + std::to_string(n), {.relativeKey = n}), "00");
    EXPECT_EQ(file.write("again", {.relativeKey = 5}), "22");
    EXPECT_EQ(file.write("none", {.relativeKey = 0}), "24");
    file.close();
    ASSERT_EQ(file.open(ZVK_OPEN_IO), "00");
    EXPECT_EQ(file.read({.relativeKey = 3}), "23");
    EXPECT_EQ(file.read({.relativeKey = 5}), "00");
    EXPECT_EQ(file.rewrite("new5", {.relativeKey = 5}), "00");
    EXPECT_EQ(file.verb(file.fcb->deleteRecord, {.relativeKey = 2}), "00");
    EXPECT_EQ(file.verb(file.fcb->deleteRecord, {.relativeKey = 2}), "23");
    EXPECT_EQ(file.verb(file.fcb->start, {.relation = ZVK_RELATION_NOT_LESS, .relativeKey = 1}), "00");
    EXPECT_EQ(file.read({.options = ZVK_REQUEST_NEXT}), "00");
    EXPECT_EQ(file.record(), pad("new5", 10));
    EXPECT_EQ(file.read({.options = ZVK_REQUEST_NEXT}), "00");
    EXPECT_EQ(file.request.relativeKey, 9u);
    EXPECT_EQ(file.read({.options = ZVK_REQUEST_PREVIOUS}), "00");
    EXPECT_EQ(file.request.relativeKey, 5u);
    EXPECT_EQ(file.verb(file.fcb->start, {.relation = ZVK_RELATION_GREATER, .relativeKey = 9}), "23");
    file.close();
}

// All verbs at random against a map that does the same, with both alternate keys.
TEST(Indexed, AgreesWithAMapOverRandomVerbs)
{
    TemporaryDirectory directory;
    CompiledFile file(directory.file("i"), indexedFile());
    std::map<string, string> model;
    std::mt19937 random(7);
    ASSERT_EQ(file.open(ZVK_OPEN_OUTPUT), "00") << file.fcb->fs2;
    for (int i = 0; i < 6000; ++i) {
        if (i == 1000 || i == 4000) {
            ASSERT_EQ(file.close(), "00");
            ASSERT_EQ(file.open(ZVK_OPEN_IO), "00") << file.fcb->fs2;
        }
        char text[32];
        snprintf(text, sizeof text, "%06u%04u%04u%06u", unsigned(random() % 500), unsigned(random() % 7), unsigned(random() % 3000),
                 unsigned(random() % 1000000));
        string record(text, 20), key = record.substr(0, 6);
        bool taken = false, sameAlternate = false;
        for (auto &[k, r] : model) {
            if (k != key && r.substr(10, 4) == record.substr(10, 4)) taken = true;
            if (k != key && r.substr(6, 4) == record.substr(6, 4)) sameAlternate = true;
        }
        unsigned verb = i < 1000 ? 0 : random() % 4;
        if (verb == 0) {
            string status = file.write(record);
            ASSERT_EQ(status, model.count(key) || taken ? "22" : sameAlternate ? "02" : "00") << i;
            if (status < "10") model[key] = record;
        } else if (verb == 1) {
            bool moved = model.count(key) && model[key].substr(6, 4) != record.substr(6, 4);
            string status = file.rewrite(record);
            ASSERT_EQ(status, !model.count(key) ? "23" : taken ? "22" : moved && sameAlternate ? "02" : "00") << i;
            if (status < "10") model[key] = record;
        } else if (verb == 2) {
            file.move(record);
            ASSERT_EQ(file.verb(file.fcb->deleteRecord, {}), model.erase(key) ? "00" : "23");
        } else {
            file.move(record);
            ASSERT_EQ(file.read(), model.count(key) ? "00" : "23");
            if (model.count(key)) {
                ASSERT_EQ(file.record(), model[key]);
            }
        }
    }
    ASSERT_EQ(file.close(), "00");
    ASSERT_EQ(file.open(ZVK_OPEN_INPUT), "00");
    for (auto &[key, record] : model) {
        ASSERT_EQ(file.read({.options = ZVK_REQUEST_NEXT}), "00");
        ASSERT_EQ(file.record(), record);
    }
    EXPECT_EQ(file.read({.options = ZVK_REQUEST_NEXT}), "10");
    for (uint32_t key : {1u, 2u}) { // every record once by each alternate key, in its order
        ASSERT_EQ(file.verb(file.fcb->start, {.relation = ZVK_RELATION_FIRST, .key = key}), "00");
        string last;
        size_t count = 0;
        while (file.read({.options = ZVK_REQUEST_NEXT}) < "10") {
            string now = file.record().substr(key == 1 ? 6 : 10, 4);
            EXPECT_LE(last, now);
            EXPECT_EQ(model[file.record().substr(0, 6)], file.record());
            last = now;
            ++count;
        }
        EXPECT_EQ(count, model.size());
    }
    file.close();
}

TEST(Indexed, StartWithEveryRelationAndBothDirections)
{
    TemporaryDirectory directory;
    CompiledFile file(directory.file("i"), indexedFile());
    ASSERT_EQ(file.open(ZVK_OPEN_OUTPUT), "00");
    const char *keys[] = {"AAAAAA", "ABAAAA", "ABZZZZ", "CAAAAA"};
    for (int i = 0; i < 4; ++i) file.write(string(keys[i]) + "same" + std::to_string(1000 + i));
    file.close();
    for (uint16_t mode : {ZVK_OPEN_INPUT, ZVK_OPEN_IO}) {
        ASSERT_EQ(file.open(mode), "00");
        struct {
            uint32_t relation;
            const char *key;
            uint32_t length;
            int next;
        } cases[] = {
            {ZVK_RELATION_EQUAL, "ABAAAA", 0, 1},   {ZVK_RELATION_EQUAL, "AB", 2, 1},        {ZVK_RELATION_EQUAL, "AC", 2, -1},
            {ZVK_RELATION_GREATER, "AB", 2, 3},     {ZVK_RELATION_GREATER, "CAAAAA", 0, -1}, {ZVK_RELATION_NOT_LESS, "ABB", 3, 2},
            {ZVK_RELATION_LESS, "AB", 2, 0},        {ZVK_RELATION_LESS, "AAAAAA", 0, -1},    {ZVK_RELATION_NOT_GREATER, "AB", 2, 2},
            {ZVK_RELATION_NOT_GREATER, "ZZ", 2, 3}, {ZVK_RELATION_FIRST, "", 0, 0},          {ZVK_RELATION_LAST, "", 0, 3},
        };
        for (auto &c : cases) {
            file.move(c.key);
            string status = file.verb(file.fcb->start, {.relation = c.relation, .keyLength = c.length});
            EXPECT_EQ(status, c.next < 0 ? "23" : "00") << c.relation << c.key;
            if (c.next < 0) {
                EXPECT_EQ(file.read({.options = ZVK_REQUEST_NEXT}), "46");
            }
            for (int i = c.next; i >= 0; --i) {
                ASSERT_EQ(file.read({.options = ZVK_REQUEST_PREVIOUS}), "00");
                EXPECT_EQ(file.record().substr(0, 6), keys[i]);
            }
        }
        // Duplicates in the order of their WRITE, status 02 while another follows.
        file.move("      same");
        EXPECT_EQ(file.read({.key = 1}), "02");
        for (int i = 1; i < 4; ++i) {
            EXPECT_EQ(file.read({.options = ZVK_REQUEST_NEXT}), i < 3 ? "02" : "00");
            EXPECT_EQ(file.record().substr(0, 6), keys[i]);
        }
        EXPECT_EQ(file.read({.options = ZVK_REQUEST_NEXT}), "10");
        file.close();
    }
}

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

// A writer is killed at some moment; a pipe tells which records were acknowledged, or closed over.
TEST(Crash, KilledWriterLosesNothingThatWasPromised)
{
    std::mt19937 random(3);
    for (int round = 0; round < 120; ++round) {
        TemporaryDirectory directory;
        bool indexed = round % 2;
        string name = (indexed ? "stl-" : "rsd-") + directory.file("f");
        FileAttributes attributes = indexed ? indexedFile() : varying;
        if (indexed) {
            CompiledFile made(name, attributes);
            made.open(ZVK_OPEN_OUTPUT);
            made.close();
        }
        int promised[2];
        ASSERT_EQ(pipe(promised), 0);
        pid_t child = fork();
        if (child == 0) {
            CompiledFile file(name, attributes);
            int n = 0;
            for (int opened = 0;; ++opened) {
                if (file.open(indexed ? ZVK_OPEN_IO : opened ? ZVK_OPEN_EXTEND : ZVK_OPEN_OUTPUT) > "09") _exit(1);
                for (int i = 0; i < 100; ++i) {
                    char text[32];
                    snprintf(text, sizeof text, "%06daaaa%04d", n, n);
                    if (file.write(text) > "09") _exit(2);
                    ++n;
                    if (indexed && write(promised[1], &n, sizeof n) < 0) _exit(3);
                }
                if (file.close() != "00") _exit(4);
                if (!indexed && write(promised[1], &n, sizeof n) < 0) _exit(5);
                if (n > 9000) _exit(0);
            }
        }
        close(promised[1]);
        usleep(500 + random() % 20000);
        kill(child, SIGKILL);
        int ending, n = 0, last = 0;
        waitpid(child, &ending, 0);
        ASSERT_TRUE(WIFSIGNALED(ending) || WEXITSTATUS(ending) == 0) << ending;
        while (read(promised[0], &n, sizeof n) == sizeof n) last = n;
        close(promised[0]);
        CompiledFile file(name, attributes);
        string opened = file.open(ZVK_OPEN_INPUT);
        if (!indexed && opened == "35" && last == 0) continue; // killed before it made the file
        ASSERT_EQ(opened, "00");
        int count = 0;
        while (file.read({.options = ZVK_REQUEST_NEXT}) == "00") ASSERT_EQ(atoi(file.record().substr(0, 6).c_str()), count++);
        EXPECT_EQ(file.status(), "10");
        EXPECT_GE(count, last);
        if (indexed && count) { // the alternate keys know the same records
            file.verb(file.fcb->start, {.relation = ZVK_RELATION_FIRST, .key = 2});
            int other = 0;
            while (file.read({.options = ZVK_REQUEST_NEXT}) < "10") ++other;
            EXPECT_EQ(other, count);
        }
        file.close();
    }
}

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

TEST(Concatenation, ReadsOneFileAfterTheOther)
{
    TemporaryDirectory directory;
    writeFile(directory.file("a"), "1\n2\n");
    writeFile(directory.file("b"), "3\n");
    CompiledFile file("lsq-" + directory.file("a") + ":" + directory.file("b"), fixed10);
    ASSERT_EQ(file.open(ZVK_OPEN_INPUT), "00");
    for (string text : {"1", "2", "3"}) {
        EXPECT_EQ(file.read(), "00");
        EXPECT_EQ(file.record(), text);
    }
    EXPECT_EQ(file.read(), "10");
    EXPECT_EQ(file.close(), "00");
}

} // namespace
