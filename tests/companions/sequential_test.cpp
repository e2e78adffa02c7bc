// Faults these tests are there to catch: records that come back changed, cut or out of order; half
// records after a kill; a REWRITE that harms its neighbours; lines and pages that are not as a text
// tool expects them.
#include <algorithm>
#include <random>
#include <sys/stat.h>
#include <sys/xattr.h>

#include "failing_disk.h"
#include "stored_files.h"

namespace {

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
    EXPECT_EQ(readFile(directory.file("t")), "\n0\n1\n2\n\n\n3\n");
}

// A line written AFTER ADVANCING stays open, and a record BEFORE ADVANCING ends it: the page's
// counter does not know of that line, and pages must not grow by it. What a kill leaves of a line
// can be told from a last line that an editor left without its end.
TEST(LineSequential, LineThatAKillCutOffIsNoRecord)
{
    TemporaryDirectory directory;
    const string path = directory.file("t");
    const FileAttributes attributes = {.longest = 10, .shortest = 0};
    string all = "old line\n"; // 6,000 bytes in one block
    for (int n = 1000; all.size() < 6009; ++n) all += std::to_string(n) + "\n";
    string lines;
    while (lines.size() < 4200) lines += "another\n";
    auto killed = [&](size_t size) { // leaves that much of the file, and what it said of its block
        unlink(path.c_str());
        writeFile(path, "old line\n");
        pid_t child = fork();
        if (child == 0) {
            CompiledFile file("lsq-" + path, attributes);
            file.open(ZVK_OPEN_EXTEND);
            for (int n = 1000; n < 2200; ++n) file.write(std::to_string(n));
            FailingDisk disk(FailingDisk::killed, static_cast<int>(size - 9));
            file.close();
            _exit(0);
        }
        waitpid(child, nullptr, 0);
        return getxattr(path.c_str(), "user.kvr2.block-end", nullptr, 0) > 0;
    };
    auto expect = [&](const string &content, bool cutOff) {
        string where = std::to_string(content.size()) + (cutOff ? " cut off" : " good");
        const size_t whole = content.rfind('\n') + 1;
        CompiledFile file("lsq-" + path, attributes);
        ASSERT_EQ(file.open(ZVK_OPEN_INPUT), "00");
        int count = 0;
        while (file.read() == "00") ++count;
        EXPECT_EQ(count, std::count(content.begin(), content.end(), '\n') + (whole < content.size() && !cutOff))
            << where;
        file.close();
        ASSERT_EQ(file.open(ZVK_OPEN_EXTEND), "00");
        EXPECT_EQ(file.write("new"), "00");
        EXPECT_EQ(file.close(), "00");
        string kept = cutOff ? content.substr(0, whole) : content;
        EXPECT_EQ(readFile(path), kept + (kept.empty() || kept.back() == '\n' ? "" : "\n") + "new\n") << where;
    };
    if (!killed(100)) GTEST_SKIP() << "no extended attributes here";
    for (size_t size : {size_t(11), size_t(42), size_t(4096), size_t(4099), size_t(5000), size_t(5004)}) {
        ASSERT_TRUE(killed(size));
        ASSERT_EQ(readFile(path), all.substr(0, size));
        expect(all.substr(0, size), true);
        EXPECT_LT(getxattr(path.c_str(), "user.kvr2.block-end", nullptr, 0), 0);
        // Somebody puts something else into the same file: its last line is nobody's torn one.
        for (string other : {string("another\nlast"), string("x"), all.substr(0, 9) + "1000\n1001 new", lines + "last",
                             all.substr(0, 9)}) {
            ASSERT_TRUE(killed(size));
            writeFile(path, other);
            ASSERT_GT(getxattr(path.c_str(), "user.kvr2.block-end", nullptr, 0), 0) << "written over, not made anew";
            expect(other, false);
        }
    }
}

// A record comes back as it was written, or is refused.
TEST(LineSequential, RecordsThatLookLikeLineEnds)
{
    TemporaryDirectory directory;
    const FileAttributes attributes = {.longest = 10, .shortest = 0};
    CompiledFile file("lsq-" + directory.file("t"), attributes);
    for (string text : {"a\r", "\r", "a\r\r", "a\rb", "\rb", "a\r  ", "a\nb", "ninebytes\r", "", "a"})
        for (uint32_t option : {0u, uint32_t(ZVK_REQUEST_AFTER), uint32_t(ZVK_REQUEST_BEFORE)}) {
            ASSERT_EQ(file.open(ZVK_OPEN_OUTPUT), "00");
            string status = file.write(text, {.options = option, .advance = 1});
            ASSERT_EQ(file.write("second", {.options = option, .advance = 1}), "00");
            ASSERT_EQ(file.close(), "00");
            ASSERT_EQ(file.open(ZVK_OPEN_INPUT), "00");
            if (option == ZVK_REQUEST_AFTER) file.read(); // the line before the first
            if (status == "00") {
                EXPECT_EQ(file.read(), "00");
                string blanks = pad(file.record(), 10);
                EXPECT_EQ(blanks, pad(text, 10));
            } else {
                EXPECT_EQ(status, "30");
            }
            EXPECT_EQ(file.read(), "00");
            EXPECT_EQ(file.record().substr(0, 6), "second");
            file.close();
        }
}

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
        {"a5", 0, 0, 5, true},                                 // on line 5, and the paper stays there
        {"b1", ZVK_REQUEST_AFTER, ZVK_ADVANCE_PAGE, 1, false}, // open on line 1
        {"b2", ZVK_REQUEST_BEFORE, 1, 2, false},               //
        {"b6", ZVK_REQUEST_AFTER, 4, 6, true},                 // open on the page's last line
        {"b7", 0, 0, 1, true},                                 // on the first line of the margin
        {"d1", ZVK_REQUEST_AFTER, ZVK_ADVANCE_PAGE, 1, false}, //
    };
    for (auto &w : writes) {
        EXPECT_EQ(file.write(w.text, {.options = w.options, .advance = w.advance}), "00") << w.text;
        EXPECT_EQ(file.fcb->linageCounter, w.counter) << w.text;
        EXPECT_EQ(!!(file.request.options & ZVK_REQUEST_END_OF_PAGE), w.endOfPage) << w.text;
    }
    file.close();
    // The first page has its top margin as well; every page begins 9 lines behind the one before.
    EXPECT_EQ(readFile(directory.file("t")),
              "\na1\n\n\na4\na5\n\n\n\n\nb1\nb2\n\n\n\nb6\nb7\n\n\n\n\n\n\n\n\n\n\n\nd1\n");
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

TEST(Concatenation, FurtherFilesAndTheirPrefixes)
{
    TemporaryDirectory directory;
    auto name = [&](const char *file) { return directory.file(file); };
    writeFile(name("a"), "1         2         ");
    writeFile(name("b"), "3         ");
    writeFile(name("none"), "");
    struct {
        string list;
        const char *read; // first characters of the records, then the status at the end
    } cases[] = {
        {"rsd-" + name("a") + ":" + name("b"), "12310"},
        {"rsd-" + name("a") + ":" + name("none") + ":" + name("none") + ":RSD-" + name("b"), "12310"},
        {"rsd-" + name("a") + ":str-" + name("b"), "1233"}, // the same module, and yet refused
        {"rsd-" + name("a") + ":wbr-" + name("b"), "1233"},
        {"rsd-" + name("a") + ":xyz-" + name("b"), "1233"},
        {"wbr-" + name("a") + ":raw-" + name("b"), "12310"},
        {"rsd-" + name("a") + ":" + name("absent"), "1235"},
        {"lsq-" + name("b") + ":nat-" + name("b"), "3310"},
    };
    for (auto &c : cases) {
        CompiledFile file(c.list, fixed10);
        ASSERT_EQ(file.open(ZVK_OPEN_INPUT), "00") << c.list;
        string read;
        while (file.read() < "10") read += file.record()[0];
        EXPECT_EQ(read + file.status(), c.read) << c.list;
        if (file.status() == "33") {
            EXPECT_EQ(file.fcb->fs2, 39u);
        }
        if (file.fcb->mode) {
            EXPECT_EQ(file.close(), "00");
        }
    }
    // An OPEN that is tried again must not write over the first file.
    CompiledFile file("rsd-" + name("a") + ":" + name("b"), fixed10);
    for (uint16_t mode : {ZVK_OPEN_OUTPUT, ZVK_OPEN_OUTPUT, ZVK_OPEN_IO, ZVK_OPEN_EXTEND})
        EXPECT_EQ(file.open(mode), "33");
    EXPECT_EQ(readFile(name("a")).size(), 20u);
    EXPECT_EQ(file.open(ZVK_OPEN_INPUT), "00");
    EXPECT_EQ(file.close(), "00");
}

TEST(Concatenation, OptionalFilesMayBeAbsent)
{
    TemporaryDirectory directory;
    FileAttributes optional = fixed10;
    optional.optional = true;
    writeFile(directory.file("b"), "1         ");
    CompiledFile file("rsd-" + directory.file("a") + ":" + directory.file("b") + ":" + directory.file("c"), optional);
    ASSERT_EQ(file.open(ZVK_OPEN_INPUT), "00");
    EXPECT_EQ(file.read(), "00");
    EXPECT_EQ(file.read(), "10");
    EXPECT_EQ(file.close(), "00");
    CompiledFile none("rsd-" + directory.file("a") + ":" + directory.file("c"), optional);
    ASSERT_EQ(none.open(ZVK_OPEN_INPUT), "05");
    EXPECT_EQ(none.open(ZVK_OPEN_INPUT), "41");
    EXPECT_EQ(none.read(), "10");
    EXPECT_EQ(none.read(), "46");
    EXPECT_EQ(none.close(), "00");
    EXPECT_EQ(none.close(), "42");
}

TEST(Sequential, RewriteInPlace)
{
    for (string prefix : {"rsd-", "wbr-", "stl-"})
        for (bool variable : {false, true}) {
            if (prefix == "wbr-" && variable) continue;
            TemporaryDirectory directory;
            CompiledFile file(prefix + directory.file("f"), variable ? varying : fixed10);
            constexpr int records = 20000; // more than a buffer
            ASSERT_EQ(file.open(ZVK_OPEN_OUTPUT), "00");
            auto text = [&](int i, char c) { return string(variable ? 1 + static_cast<size_t>(i) % 40 : 10, c); };
            for (int i = 0; i < records; ++i) ASSERT_EQ(file.write(text(i, 'a')), "00");
            ASSERT_EQ(file.close(), "00");
            ASSERT_EQ(file.open(ZVK_OPEN_IO), "00");
            EXPECT_EQ(file.rewrite("a"), "43");
            for (int i = 0; i < records; ++i) {
                ASSERT_EQ(file.read(), "00");
                if (i == 3 && variable) {
                    EXPECT_EQ(file.rewrite(text(i, 'x') + "y"), "44") << "records lie back to back";
                } else if (i % 7 == 3) {
                    ASSERT_EQ(file.rewrite(text(i, 'b')), "00");
                    ASSERT_EQ(file.rewrite(text(i, 'c')), "43");
                }
            }
            EXPECT_EQ(file.read(), "10");
            EXPECT_EQ(file.rewrite("a"), "43");
            EXPECT_EQ(file.read(), "46");
            EXPECT_EQ(file.write("a"), "92");
            ASSERT_EQ(file.close(), "00");
            ASSERT_EQ(file.open(ZVK_OPEN_INPUT), "00");
            for (int i = 0; i < records; ++i) {
                ASSERT_EQ(file.read(), "00");
                ASSERT_EQ(file.record(), text(i, i % 7 == 3 && !(i == 3 && variable) ? 'b' : 'a')) << i;
            }
            EXPECT_EQ(file.read(), "10");
            ASSERT_EQ(file.close(), "00");
        }
}

TEST(Sequential, RecordsOfOtherLengths)
{
    TemporaryDirectory directory;
    CompiledFile file("rsd-" + directory.file("f"), varying);
    ASSERT_EQ(file.open(ZVK_OPEN_OUTPUT), "00");
    EXPECT_EQ(file.write(""), "44");
    EXPECT_EQ(file.write("0123456789abcdef"), "00");
    EXPECT_EQ(file.write("short"), "00");
    EXPECT_EQ(file.write(string(41, 'x'), {}), "44");
    ASSERT_EQ(file.close(), "00");
    FileAttributes shorter = {.longest = 8, .shortest = 1};
    CompiledFile reader("rsd-" + directory.file("f"), shorter);
    ASSERT_EQ(reader.open(ZVK_OPEN_IO), "00");
    EXPECT_EQ(reader.read(), "04") << "longer than the record area: cut";
    EXPECT_EQ(reader.record(), "01234567");
    EXPECT_EQ(reader.rewrite("12345678"), "44") << "not the length that it has in the file";
    EXPECT_EQ(reader.read(), "00");
    EXPECT_EQ(reader.record(), "short");
    ASSERT_EQ(reader.close(), "00");
    EXPECT_EQ(reader.open(ZVK_OPEN_EXTEND), "39");
    writeFile(directory.file("f"), string("\x03\0\0\0abc\xFF\xFF\xFF\x7Fgarbage", 18));
    ASSERT_EQ(file.open(ZVK_OPEN_INPUT), "00");
    EXPECT_EQ(file.read(), "00");
    EXPECT_EQ(file.read(), "30") << "a length that no record can have";
    EXPECT_EQ(file.read(), "46");
    ASSERT_EQ(file.close(), "00");
    EXPECT_EQ(file.open(ZVK_OPEN_EXTEND), "39");
    EXPECT_EQ(readFile(directory.file("f")).size(), 18u) << "damage is not cut off";
}

TEST(LineSequential, AdvancingAndBlanks)
{
    TemporaryDirectory directory;
    CompiledFile file("lsq-" + directory.file("t"), fixed10);
    ASSERT_EQ(file.open(ZVK_OPEN_OUTPUT), "00");
    EXPECT_EQ(file.write("  a  "), "00");
    EXPECT_EQ(file.write(""), "00");
    EXPECT_EQ(file.write("b", {.options = ZVK_REQUEST_BEFORE, .advance = 3}), "00");
    EXPECT_EQ(file.write("c", {.options = ZVK_REQUEST_BEFORE, .advance = 0}), "00");
    EXPECT_EQ(file.write("d", {.options = ZVK_REQUEST_BEFORE, .advance = ZVK_ADVANCE_PAGE}), "00");
    EXPECT_EQ(file.write("e", {.options = ZVK_REQUEST_AFTER, .advance = 1}), "00");
    EXPECT_EQ(file.write("f", {.options = ZVK_REQUEST_AFTER, .advance = 0}), "00");
    EXPECT_EQ(file.close(), "00");
    EXPECT_EQ(readFile(directory.file("t")), "  a\n\nb\n\n\nc\rd\f\ne\rf\n");
}

// Every page takes the same lines, whichever way its records are written; the counter says on which
// line of the body the paper stands.
TEST(LineSequential, LinagePagesHaveOneLength)
{
    FileAttributes paged = fixed10;
    paged.linage = ZVK_FILE_LINAGE | ZVK_FILE_LINAGE_FOOTING | ZVK_FILE_LINAGE_TOP | ZVK_FILE_LINAGE_BOTTOM;
    paged.body = 7, paged.footing = 6, paged.top = 2, paged.bottom = 3;
    constexpr size_t page = 12;
    for (unsigned seed = 1; seed < 30; ++seed) {
        TemporaryDirectory directory;
        CompiledFile file("lsq-" + directory.file("t"), paged);
        std::mt19937 random(seed);
        ASSERT_EQ(file.open(ZVK_OPEN_OUTPUT), "00");
        EXPECT_EQ(file.fcb->linageCounter, 1u);
        std::vector<std::pair<string, uint32_t>> expected; // each record, and its line of the body
        bool open = false;
        for (int n = 0; n < 40; ++n) {
            uint32_t counter = file.fcb->linageCounter;
            bool after = random() % 2;
            int32_t lines = random() % 6 ? 1 + static_cast<int32_t>(random() % 4) : ZVK_ADVANCE_PAGE;
            string text = "r" + std::to_string(n);
            ASSERT_EQ(file.write(text, {.options = uint32_t(after ? ZVK_REQUEST_AFTER : ZVK_REQUEST_BEFORE),
                                        .advance = lines}),
                      "00");
            expected.emplace_back(text, after ? file.fcb->linageCounter : counter + open);
            bool turns = lines < 0 || counter + static_cast<uint32_t>(lines) > paged.body;
            open = after || (open && lines == 1 && !turns);
            // Beyond the body AFTER, or in the footing area.
            if (lines > 0 && after) {
                bool turned = counter + static_cast<uint32_t>(lines) > paged.body;
                EXPECT_EQ(file.fcb->linageCounter, turned ? 1 : counter + static_cast<uint32_t>(lines));
                EXPECT_EQ(!!(file.request.options & ZVK_REQUEST_END_OF_PAGE),
                          turned || file.fcb->linageCounter >= paged.footing);
            }
        }
        ASSERT_EQ(file.close(), "00");
        string content = readFile(directory.file("t")), line;
        size_t number = 0, record = 0;
        for (char c : content) {
            if (c != '\n') {
                line += c;
                continue;
            }
            if (!line.empty()) {
                ASSERT_LT(record, expected.size());
                EXPECT_EQ(line, expected[record].first) << seed;
                EXPECT_EQ(number % page, paged.top + expected[record].second - 1) << seed << line;
                ++record;
            }
            line.clear();
            ++number;
        }
        EXPECT_EQ(record, expected.size());
    }
}

// The lines beside one that is replaced stay as they are, whatever it ends with.
TEST(LineSequential, RewriteInPlace)
{
    TemporaryDirectory directory;
    const string path = directory.file("t");
    CompiledFile file("lsq-" + path, {.longest = 6000, .shortest = 1});
    const string far(5000, 'x');
    writeFile(path, "one\ntwo\r\n\n" + far + "\nlast");
    ASSERT_EQ(file.open(ZVK_OPEN_IO), "00");
    EXPECT_EQ(file.rewrite("x"), "43");
    ASSERT_EQ(file.read(next), "00");
    EXPECT_EQ(file.rewrite("four"), "44");
    EXPECT_EQ(file.rewrite("a\nb"), "43") << "the last verb was no READ";
    ASSERT_EQ(file.read(next), "00");
    EXPECT_EQ(file.rewrite("a\nb"), "30");
    ASSERT_EQ(file.read(next), "00");
    EXPECT_EQ(file.rewrite("  "), "00") << "an empty line takes blanks";
    ASSERT_EQ(file.read(next), "00");
    EXPECT_EQ(file.rewrite(string(4990, 'y')), "00");
    ASSERT_EQ(file.read(next), "00");
    EXPECT_EQ(file.rewrite("l    "), "00");
    EXPECT_EQ(file.read(next), "10");
    EXPECT_EQ(file.close(), "00");
    EXPECT_EQ(readFile(path), "one\ntwo\r\n\n" + string(4990, 'y') + string(10, ' ') + "\nl   ");
    ASSERT_EQ(file.open(ZVK_OPEN_IO), "00");
    for (int i = 0; i < 2; ++i) ASSERT_EQ(file.read(next), "00");
    EXPECT_EQ(file.rewrite("2"), "00");
    EXPECT_EQ(file.close(), "00");
    EXPECT_EQ(readFile(path).substr(0, 9), "one\n2  \r\n");
}

// A third of the lines goes, a third is written over; the file is the same but for that, also for
// one who reads it meanwhile.
TEST(LineDelete, TakesLinesOutAtClose)
{
    std::mt19937 random(3);
    setenv("VFS_DURABILITY", "close", 1);
    for (int round = 0; round < 20; ++round) {
        TemporaryDirectory directory;
        const string path = directory.file("f"), aside = path + ".kvr2-lines";
        string text, want;
        std::vector<std::pair<string, string>> lines; // with their ends
        for (unsigned n = 0, count = random() % 3000; n < count; ++n)
            lines.push_back({string(1 + random() % 60, static_cast<char>('a' + n % 26)), random() % 5 ? "\n" : "\r\n"});
        if (lines.size() && round % 2) lines.back().second = ""; // as editors leave it
        for (auto &[line, end] : lines) text += line + end;
        writeFile(path, text);
        if (round % 3 == 0) symlink(path.c_str(), directory.file("link").c_str());
        writeFile(aside, "what a program that was killed left");
        CompiledFile file("lsq-" + (round % 3 ? path : directory.file("link")), {.longest = 60, .shortest = 60}),
            reader("lsq-" + path, {.longest = 60, .shortest = 60});
        if (round % 3 == 0 && !lines.empty()) chmod(path.c_str(), 0640);
        ASSERT_EQ(file.open(ZVK_OPEN_IO), "00");
        ASSERT_EQ(reader.open(ZVK_OPEN_INPUT), "00");
        for (auto &[line, end] : lines) {
            ASSERT_EQ(file.read(next), "00");
            ASSERT_EQ(reader.read(next), "00");
            switch (random() % 3) {
            case 0:
                ASSERT_EQ(file.verb(file.fcb->deleteRecord, {}), "00");
                ASSERT_EQ(file.verb(file.fcb->deleteRecord, {}), "43");
                ASSERT_EQ(file.rewrite("x"), "43");
                break;
            case 1:
                ASSERT_EQ(file.rewrite("X"), "00");
                want += "X" + string(line.size() - 1, ' ') + end;
                break;
            default:
                want += line + end;
            }
        }
        ASSERT_EQ(file.read(next), "10");
        ASSERT_EQ(file.close(), "00");
        ASSERT_EQ(reader.read(next), "10");
        reader.close();
        EXPECT_EQ(readFile(path), want);
        struct stat about;
        EXPECT_TRUE(stat(path.c_str(), &about) == 0 && (round % 3 || lines.empty() || (about.st_mode & 0777) == 0640));
        EXPECT_TRUE(access(aside.c_str(), F_OK) != 0 || want.size() == text.size());
    }
    setenv("VFS_DURABILITY", "none", 1);
}

TEST(LineDelete, RefusalsAndKillsLeaveTheFile)
{
    TemporaryDirectory directory;
    const string path = directory.file("f"), text = "one\n" + string(25, 'l') + "\nthree\n";
    writeFile(path, text);
    CompiledFile file("lsq-" + path, fixed10);
    ASSERT_EQ(file.open(ZVK_OPEN_IO), "00");
    EXPECT_EQ(file.verb(file.fcb->deleteRecord, {}), "43");
    ASSERT_EQ(file.read(next), "00");
    // A copy cannot be made.
    ASSERT_EQ(mkdir((path + ".kvr2-lines").c_str(), 0777), 0);
    EXPECT_GE(file.verb(file.fcb->deleteRecord, {}), "30");
    rmdir((path + ".kvr2-lines").c_str());
    // No part of a line.
    for (const char *status : {"06", "06", "00"}) {
        ASSERT_EQ(file.read(next), status);
        EXPECT_EQ(file.verb(file.fcb->deleteRecord, {}), "30");
    }
    ASSERT_EQ(file.read(next), "00");
    // The other name would keep the line.
    ASSERT_EQ(link(path.c_str(), directory.file("other").c_str()), 0);
    EXPECT_EQ(file.verb(file.fcb->deleteRecord, {}), "30");
    EXPECT_NE(reason(file).find("hard links"), string::npos);
    unlink(directory.file("other").c_str());
    EXPECT_EQ(file.close(), "00");
    EXPECT_EQ(readFile(path), text);
    // Killed before CLOSE.
    pid_t child = fork();
    if (child == 0) {
        file.open(ZVK_OPEN_IO), file.read(next), file.verb(file.fcb->deleteRecord, {});
        kill(getpid(), file.status() == "00" ? SIGKILL : SIGABRT);
    }
    int ended;
    EXPECT_TRUE(waitpid(child, &ended, 0) == child && WTERMSIG(ended) == SIGKILL);
    EXPECT_EQ(readFile(path), text);
    // Replaced under the open file: what is there is not overwritten.
    ASSERT_EQ(file.open(ZVK_OPEN_IO), "00");
    ASSERT_EQ(file.read(next), "00");
    ASSERT_EQ(file.verb(file.fcb->deleteRecord, {}), "00");
    unlink(path.c_str());
    writeFile(path, "another");
    EXPECT_GE(file.close(), "30");
    EXPECT_EQ(readFile(path), "another");
    EXPECT_NE(access((path + ".kvr2-lines").c_str(), F_OK), 0);
}

} // namespace
