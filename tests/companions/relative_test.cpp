// Faults these tests are there to catch: a record in the wrong slot, a hole delivered as a record,
// a READ that repeats or skips records, a START that misses, a number that the program cannot hold.
#include <map>
#include <random>

#include "stored_files.h"

namespace {

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

struct RelativeModel {
    std::map<uint64_t, string> records;
    uint64_t place = 0;
    bool exact = false, valid = true;

    uint64_t forward(uint64_t from) const
    {
        auto found = records.lower_bound(from);
        return found == records.end() ? 0 : found->first;
    }
    uint64_t back(uint64_t from) const
    {
        auto found = records.upper_bound(from);
        return found == records.begin() ? 0 : std::prev(found)->first;
    }
    uint64_t start(uint32_t relation, uint64_t key) const
    {
        switch (relation) {
        case ZVK_RELATION_EQUAL:
            return records.count(key) ? key : 0;
        case ZVK_RELATION_GREATER:
            return forward(key + 1);
        case ZVK_RELATION_NOT_LESS:
            return forward(key);
        case ZVK_RELATION_LESS:
            return key ? back(key - 1) : 0;
        case ZVK_RELATION_NOT_GREATER:
            return back(key);
        case ZVK_RELATION_FIRST:
            return forward(0);
        default:
            return back(~uint64_t(0));
        }
    }
};

// All verbs at random against a map that does the same; alone, where the window of slots is
// trusted, and while another process changes records in between.
TEST(Relative, AgreesWithAMapOverRandomVerbs)
{
    enum Others { nobody, denied, writing };
    for (Others others : {nobody, denied, writing}) {
        TemporaryDirectory directory;
        FileAttributes attributes = {.longest = 30, .shortest = 1, .organization = ZVK_FILE_RELATIVE, .access = 0};
        Peer peer(directory.file("r"), attributes);
        if (others == denied) attributes.share = ZVK_FILE_SHARE_READ;
        CompiledFile file(directory.file("r"), attributes);
        RelativeModel model;
        uint64_t lastRead = 0; // by this file's last verb
        std::mt19937 random(static_cast<unsigned>(others) + 1);
        ASSERT_EQ(file.open(ZVK_OPEN_OUTPUT), "00");
        ASSERT_EQ(file.close(), "00");
        ASSERT_EQ(file.open(ZVK_OPEN_IO), "00");
        ASSERT_EQ(peer.open(others == writing ? ZVK_OPEN_IO : ZVK_OPEN_INPUT), "00");
        for (int i = 0; i < 6000; ++i) {
            uint64_t n =
                random() % 20 ? 1 + random() % 60 : 1 + random() % 9000; // dense at first, far out beyond a window
            FileRequest at = {.relativeKey = n};
            string text = std::to_string(i) + string(random() % 20, 'x');
            bool there = model.records.count(n);
            string where = std::to_string(others) + ", step " + std::to_string(i);
            bool byPeer = others == writing && random() % 3 == 0;
            // What this file read last is locked.
            bool locked = byPeer && n == lastRead;
            if (!byPeer) lastRead = 0;
            switch (random() % 6) {
            case 0: {
                at.recordLength = static_cast<uint32_t>(text.size());
                ASSERT_EQ(byPeer ? peer.write(text, at) : file.write(text, at), locked  ? "99"
                                                                                : there ? "22"
                                                                                        : "00")
                    << where;
                if (!there && !locked) model.records[n] = text;
                break;
            }
            case 1:
                at.recordLength = static_cast<uint32_t>(text.size());
                ASSERT_EQ(byPeer ? peer.rewrite(text, at) : file.rewrite(text, at), locked  ? "99"
                                                                                    : there ? "00"
                                                                                            : "23")
                    << where;
                if (there && !locked) model.records[n] = text;
                break;
            case 2:
                ASSERT_EQ(byPeer ? peer.erase("", at) : file.verb(file.fcb->deleteRecord, at), locked  ? "99"
                                                                                               : there ? "00"
                                                                                                       : "23")
                    << where;
                if (!locked) model.records.erase(n);
                break;
            case 3: {
                lastRead = 0;
                uint32_t relation = random() % 7;
                uint64_t found = model.start(relation, n);
                ASSERT_EQ(file.verb(file.fcb->start, {.relation = relation, .relativeKey = n}), found ? "00" : "23")
                    << where;
                model.place = found, model.exact = model.valid = found;
                break;
            }
            case 4:
                lastRead = there ? n : 0;
                ASSERT_EQ(file.read(at), there ? "00" : "23") << where;
                model.valid = there;
                if (!there) break;
                ASSERT_EQ(file.record(), model.records[n]) << where;
                model.place = n, model.exact = false;
                break;
            default: {
                bool back = random() % 2;
                lastRead = 0;
                for (int steps = 0; steps < 3; ++steps) {
                    uint64_t found = !back         ? model.forward(model.exact ? model.place : model.place + 1)
                                     : model.exact ? model.back(model.place)
                                     : model.place ? model.back(model.place - 1)
                                                   : 0;
                    ASSERT_EQ(file.read(back ? previous : next), !model.valid ? "46" : found ? "00" : "10") << where;
                    if (!model.valid) break;
                    lastRead = 0;
                    model.valid = found;
                    if (!found) break;
                    ASSERT_EQ(file.request.relativeKey, found) << where;
                    ASSERT_EQ(file.record(), model.records[found]) << where;
                    model.place = lastRead = found, model.exact = false;
                }
            }
            }
        }
        ASSERT_EQ(file.close(), "00");
        ASSERT_EQ(file.open(ZVK_OPEN_INPUT), "00");
        for (auto &[n, text] : model.records) {
            ASSERT_EQ(file.read(next), "00");
            ASSERT_EQ(file.request.relativeKey, n);
            ASSERT_EQ(file.record(), text);
        }
        EXPECT_EQ(file.read(next), "10");
        EXPECT_EQ(file.read(next), "46");
        file.close();
    }
}

TEST(Relative, SequentialAccess)
{
    TemporaryDirectory directory;
    FileAttributes attributes = {
        .longest = 10, .shortest = 3, .organization = ZVK_FILE_RELATIVE, .access = sequentialAccess};
    CompiledFile file(directory.file("r"), attributes);
    ASSERT_EQ(file.open(ZVK_OPEN_OUTPUT), "00");
    for (uint64_t n : {1, 2, 3}) {
        EXPECT_EQ(file.write("rec" + std::to_string(n), {.relativeKey = 77}), "00");
        EXPECT_EQ(file.request.relativeKey, n) << "the number of the next record, whatever the item held";
    }
    EXPECT_EQ(file.write("no"), "44");
    EXPECT_EQ(file.write("more than ten"), "44");
    EXPECT_EQ(file.close(), "00");
    ASSERT_EQ(file.open(ZVK_OPEN_IO), "00");
    EXPECT_EQ(file.rewrite("none"), "43");
    EXPECT_EQ(file.verb(file.fcb->deleteRecord, {}), "43");
    EXPECT_EQ(file.write("none"), "92");
    EXPECT_EQ(file.read(), "00");
    EXPECT_EQ(file.rewrite("longer one"), "00") << "a slot holds any length";
    EXPECT_EQ(file.rewrite("again"), "43");
    EXPECT_EQ(file.read(), "00");
    EXPECT_EQ(file.rewrite("to"), "44");
    EXPECT_EQ(file.rewrite("three"), "43") << "a REWRITE lies between";
    EXPECT_EQ(file.read(), "00");
    EXPECT_EQ(file.verb(file.fcb->deleteRecord, {}), "00");
    EXPECT_EQ(file.read(), "10");
    EXPECT_EQ(file.verb(file.fcb->deleteRecord, {}), "43");
    EXPECT_EQ(file.read(), "46");
    EXPECT_EQ(file.verb(file.fcb->start, {.relation = ZVK_RELATION_EQUAL, .relativeKey = 3}), "23");
    EXPECT_EQ(file.read(), "46");
    EXPECT_EQ(file.verb(file.fcb->start, {.relation = ZVK_RELATION_FIRST}), "00");
    EXPECT_EQ(file.read(), "00");
    EXPECT_EQ(file.record(), "longer one");
    EXPECT_EQ(file.close(), "00");
    ASSERT_EQ(file.open(ZVK_OPEN_EXTEND), "00");
    EXPECT_EQ(file.write("extended"), "00");
    EXPECT_EQ(file.request.relativeKey, 3u) << "behind the last record, not behind the last slot";
    EXPECT_EQ(file.close(), "00");
}

TEST(Relative, NumbersThatTheKeyItemCannotHold)
{
    TemporaryDirectory directory;
    CompiledFile file(directory.file("r"), relativeFile(sequentialAccess));
    ASSERT_EQ(file.open(ZVK_OPEN_OUTPUT), "00");
    const FileRequest oneDigit = {.relativeKeyLimit = 9};
    for (int n = 1; n <= 9; ++n) EXPECT_EQ(file.write("r", oneDigit), "00");
    EXPECT_EQ(file.write("ten", oneDigit), "24");
    EXPECT_EQ(file.write("ten"), "00") << "without a RELATIVE KEY item";
    EXPECT_EQ(file.close(), "00");
    ASSERT_EQ(file.open(ZVK_OPEN_INPUT), "00");
    for (int n = 1; n <= 9; ++n) EXPECT_EQ(file.read(oneDigit), "00");
    EXPECT_EQ(file.read(oneDigit), "14");
    EXPECT_EQ(file.read(oneDigit), "46");
    EXPECT_EQ(file.close(), "00");
    ASSERT_EQ(file.open(ZVK_OPEN_INPUT), "00");
    for (int n = 1; n <= 10; ++n) EXPECT_EQ(file.read(), "00");
    EXPECT_EQ(file.close(), "00");
}

// A record number far out makes a file with a hole of many gigabytes, which no READ may walk
// through.
TEST(Relative, HolesCostNothing)
{
    TemporaryDirectory directory;
    CompiledFile file(directory.file("r"), relativeFile());
    ASSERT_EQ(file.open(ZVK_OPEN_OUTPUT), "00");
    constexpr uint64_t far = 100'000'000'000;
    EXPECT_EQ(file.write("near", {.relativeKey = 2}), "00");
    string status = file.write("far", {.relativeKey = far});
    EXPECT_EQ(file.close(), "00");
    if (status == "34") GTEST_SKIP() << "this file system holds no file of a terabyte";
    ASSERT_EQ(status, "00");
    ASSERT_EQ(file.open(ZVK_OPEN_IO), "00");
    EXPECT_EQ(file.read(next), "00");
    EXPECT_EQ(file.read(next), "00");
    EXPECT_EQ(file.request.relativeKey, far);
    EXPECT_EQ(file.verb(file.fcb->start, {.relation = ZVK_RELATION_GREATER, .relativeKey = 2}), "00");
    EXPECT_EQ(file.read(next), "00");
    EXPECT_EQ(file.record().substr(0, 3), "far");
    EXPECT_EQ(file.read(next), "10");

    // Back again, and from beyond the end. A walk would take minutes.
    alarm(600);
    EXPECT_EQ(file.verb(file.fcb->start, {.relation = ZVK_RELATION_LAST}), "00");
    EXPECT_EQ(file.read(previous), "00");
    EXPECT_EQ(file.request.relativeKey, far);
    EXPECT_EQ(file.read(previous), "00");
    EXPECT_EQ(file.request.relativeKey, 2u);
    EXPECT_EQ(file.read(previous), "10");
    for (uint64_t key : {far, far - 1, far / 2, uint64_t(3)}) {
        EXPECT_EQ(file.verb(file.fcb->start, {.relation = ZVK_RELATION_LESS, .relativeKey = key}), "00");
        EXPECT_EQ(file.read(next), "00");
        EXPECT_EQ(file.request.relativeKey, 2u) << key;
    }
    EXPECT_EQ(file.verb(file.fcb->deleteRecord, {.relativeKey = far}), "00");
    EXPECT_EQ(file.close(), "00");
    FileAttributes inOrder = relativeFile(sequentialAccess);
    CompiledFile extended(directory.file("r"), inOrder);
    ASSERT_EQ(extended.open(ZVK_OPEN_EXTEND), "00");
    EXPECT_EQ(extended.write("third"), "00");
    EXPECT_EQ(extended.request.relativeKey, 3u);
    EXPECT_EQ(extended.close(), "00");
    alarm(0);
}

// Something else has written into the file: a length that no record has is no empty slot, and the
// records around it are as good as before.
TEST(Relative, ImpossibleLengthIsDamage)
{
    TemporaryDirectory directory;
    CompiledFile file("stl-" + directory.file("r"), relativeFile());
    ASSERT_EQ(file.open(ZVK_OPEN_OUTPUT), "00");
    for (uint64_t n = 1; n < 4; ++n) ASSERT_EQ(file.write("record", {.relativeKey = n}), "00");
    ASSERT_EQ(file.close(), "00");
    string content = readFile(directory.file("r"));
    content[4096 + 18] = 12; // a record of 11 bytes in a file of 10
    for (int io = 0; io < 2; ++io) {
        writeFile(directory.file("r"), content);
        ASSERT_EQ(file.open(io ? uint16_t{ZVK_OPEN_IO} : uint16_t{ZVK_OPEN_INPUT}), "00");
        EXPECT_EQ(file.read(next), "00");
        EXPECT_EQ(file.read(next), "30");
        EXPECT_EQ(reason(file), "record damaged");
        EXPECT_EQ(file.read({.relativeKey = 2}), "30");
        EXPECT_EQ(file.verb(file.fcb->start, {.relation = ZVK_RELATION_EQUAL, .relativeKey = 2}), "30");
        EXPECT_EQ(file.verb(file.fcb->start, {.relation = ZVK_RELATION_LESS, .relativeKey = 3}), "30");
        if (io) {
            EXPECT_EQ(file.write("x", {.relativeKey = 2}), "30");
            EXPECT_EQ(file.rewrite("x", {.relativeKey = 2}), "30");
            EXPECT_EQ(file.verb(file.fcb->deleteRecord, {.relativeKey = 2}), "30");
        }
        EXPECT_EQ(file.verb(file.fcb->start, {.relation = ZVK_RELATION_GREATER, .relativeKey = 2}), "00");
        EXPECT_EQ(file.read(next), "00");
        EXPECT_EQ(file.read(next), "10");
        EXPECT_EQ(file.close(), "00");
        EXPECT_EQ(readFile(directory.file("r")), content);
    }
    CompiledFile inOrder("stl-" + directory.file("r"), relativeFile(sequentialAccess));
    ASSERT_EQ(inOrder.open(ZVK_OPEN_EXTEND), "00");
    ASSERT_EQ(inOrder.close(), "00");
    content[4096 + 36] = 12;
    writeFile(directory.file("r"), content);
    EXPECT_EQ(inOrder.open(ZVK_OPEN_EXTEND), "30") << "where its records end is not known";
}

} // namespace
