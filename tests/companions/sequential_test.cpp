// Faults these tests are there to catch: records that come back changed, cut or out of order; half records after a kill; a REWRITE that harms its neighbours;
// lines and pages that are not as a text tool expects them.
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
    EXPECT_EQ(readFile(directory.file("t")), "0\n1\n2\n\n\n3\n");
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
