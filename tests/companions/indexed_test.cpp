// Faults these tests are there to catch: a record lost, found by a key that it no longer has, or out of order by any key; duplicates in the wrong order; a START
// that misses; a key taken from bytes that the record does not have.
#include <map>
#include <random>

#include "stored_files.h"

namespace {

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

} // namespace
