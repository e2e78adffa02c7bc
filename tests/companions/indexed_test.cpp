// Faults these tests are there to catch: a record lost, found by a key that it no longer has, or
// out of order by any key; duplicates in the wrong order; a START that misses; a key taken from
// bytes that the record does not have.
#include <algorithm>
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
        snprintf(text, sizeof text, "%06u%04u%04u%06u", unsigned(random() % 500), unsigned(random() % 7),
                 unsigned(random() % 3000), unsigned(random() % 1000000));
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
            {ZVK_RELATION_EQUAL, "ABAAAA", 0, 1},    {ZVK_RELATION_EQUAL, "AB", 2, 1},
            {ZVK_RELATION_EQUAL, "AC", 2, -1},       {ZVK_RELATION_GREATER, "AB", 2, 3},
            {ZVK_RELATION_GREATER, "CAAAAA", 0, -1}, {ZVK_RELATION_NOT_LESS, "ABB", 3, 2},
            {ZVK_RELATION_LESS, "AB", 2, 0},         {ZVK_RELATION_LESS, "AAAAAA", 0, -1},
            {ZVK_RELATION_NOT_GREATER, "AB", 2, 2},  {ZVK_RELATION_NOT_GREATER, "ZZ", 2, 3},
            {ZVK_RELATION_FIRST, "", 0, 0},          {ZVK_RELATION_LAST, "", 0, 3},
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

// START with every relation, by every key and with any part of it, then a walk in both directions,
// against sorted lists. Duplicates come in the order of their WRITEs, or backwards by READ
// PREVIOUS. Alone, shared and for INPUT.
TEST(Indexed, StartAndWalkByAlternateKeysWithDuplicates)
{
    TemporaryDirectory directory;
    FileAttributes attributes = indexedFile();
    std::mt19937 random(11);
    struct Entry {
        string key;
        int order;
        string record;
    };
    std::vector<Entry> lists[3];
    {
        CompiledFile file(directory.file("i"), attributes);
        ASSERT_EQ(file.open(ZVK_OPEN_OUTPUT), "00");
        for (int i = 0; i < 120; ++i) {
            // Bytes over 0x7F, too: keys are compared as bytes without a sign.
            string record(20, ' ');
            for (int at = 0; at < 6; ++at)
                record[static_cast<size_t>(at)] = static_cast<char>("\x00\x41\x80\xFF"[random() % 4]);
            for (int at = 6; at < 10; ++at)
                record[static_cast<size_t>(at)] = static_cast<char>("\x41\xFF"[random() % 2]);
            for (int at = 10; at < 14; ++at) record[static_cast<size_t>(at)] = static_cast<char>(random());
            string status = file.write(record);
            if (status > "02") continue;
            const size_t from[] = {0, 6, 10}, size[] = {6, 4, 4};
            for (int key = 0; key < 3; ++key) lists[key].push_back({record.substr(from[key], size[key]), i, record});
        }
        ASSERT_EQ(file.close(), "00");
    }
    for (auto &list : lists)
        std::sort(list.begin(), list.end(),
                  [](const Entry &a, const Entry &b) { return a.key != b.key ? a.key < b.key : a.order < b.order; });
    ASSERT_GT(lists[0].size(), 60u);
    for (uint8_t share : {0, 2, 3})
        for (uint16_t mode : {ZVK_OPEN_INPUT, ZVK_OPEN_IO}) {
            attributes.share = share;
            CompiledFile file(directory.file("i"), attributes);
            ASSERT_EQ(file.open(mode), "00");
            for (int i = 0; i < 1500; ++i) {
                uint32_t key = random() % 3, relation = random() % 7;
                const auto &list = lists[key];
                string record = list[random() % list.size()].record;
                if (random() % 2) record[key == 0 ? 2 : key == 1 ? 7 : 11] = static_cast<char>(random());
                string whole = record.substr(key == 0 ? 0 : key == 1 ? 6 : 10, key == 0 ? 6 : 4);
                uint32_t length = random() % (whole.size() + 1);
                string part = length ? whole.substr(0, length) : whole;
                auto compare = [&](const Entry &e) { return e.key.compare(0, part.size(), part); };
                int found = -1, count = static_cast<int>(list.size());
                for (int n = 0; n < count; ++n) {
                    int c = compare(list[static_cast<size_t>(n)]);
                    bool first = (relation == ZVK_RELATION_EQUAL && c == 0) ||
                                 (relation == ZVK_RELATION_GREATER && c > 0) ||
                                 (relation == ZVK_RELATION_NOT_LESS && c >= 0) || relation == ZVK_RELATION_FIRST;
                    bool last = (relation == ZVK_RELATION_LESS && c < 0) ||
                                (relation == ZVK_RELATION_NOT_GREATER && c <= 0) || relation == ZVK_RELATION_LAST;
                    if (last || (first && found < 0)) found = n;
                }
                file.move(record);
                string where = std::to_string(mode) + " share " + std::to_string(share) + ", step " + std::to_string(i);
                ASSERT_EQ(file.verb(file.fcb->start, {.relation = relation, .key = key, .keyLength = length}),
                          found < 0 ? "23" : "00")
                    << where;
                bool back = random() % 2;
                for (int steps = 0; steps < 6 && found >= 0; ++steps) {
                    string status = file.read(back ? previous : next);
                    if (found >= count) {
                        ASSERT_EQ(status, "10") << where;
                        break;
                    }
                    const Entry &now = list[static_cast<size_t>(found)];
                    bool another = key == 1 && found + 1 < count && list[static_cast<size_t>(found) + 1].key == now.key;
                    ASSERT_EQ(status, another ? "02" : "00") << where;
                    ASSERT_EQ(file.record(), now.record) << where;
                    if (random() % 5 == 0) back = !back;
                    found += back ? -1 : 1;
                    if (found < 0) {
                        ASSERT_EQ(file.read(previous), "10") << where;
                    }
                }
            }
            EXPECT_EQ(file.verb(file.fcb->start, {.key = 3}), "23") << "no such key";
            EXPECT_EQ(file.read({.key = 3}), "23");
            EXPECT_EQ(file.close(), "00");
        }
}

TEST(Indexed, SequentialAccess)
{
    TemporaryDirectory directory;
    CompiledFile file(directory.file("i"), indexedFile(sequentialAccess));
    ASSERT_EQ(file.open(ZVK_OPEN_OUTPUT), "00");
    EXPECT_EQ(file.write("000002aaaa0002"), "00");
    EXPECT_EQ(file.write("000001aaaa0001"), "21");
    EXPECT_EQ(file.write("000002aaaa0001"), "21");
    EXPECT_EQ(file.write("000004aaaa0002"), "22") << "an alternate key without duplicates";
    EXPECT_EQ(file.write("000004aaaa0004"), "02");
    EXPECT_EQ(file.close(), "00");
    ASSERT_EQ(file.open(ZVK_OPEN_EXTEND), "00");
    EXPECT_EQ(file.write("000003aaaa0003"), "21") << "EXTEND goes on behind the highest key";
    EXPECT_EQ(file.write("000006bbbb0006"), "00");
    EXPECT_EQ(file.close(), "00");
    ASSERT_EQ(file.open(ZVK_OPEN_IO), "00");
    EXPECT_EQ(file.rewrite("000002xxxx0002"), "43");
    EXPECT_EQ(file.verb(file.fcb->deleteRecord, {}), "43");
    EXPECT_EQ(file.write("000009xxxx0009"), "92");
    EXPECT_EQ(file.read(), "00");
    EXPECT_EQ(file.rewrite("000003xxxx0002"), "21") << "REWRITE keeps the primary key";
    EXPECT_EQ(file.rewrite("000002xxxx0002"), "43");
    EXPECT_EQ(file.read(), "00");
    EXPECT_EQ(file.record().substr(0, 6), "000004");
    EXPECT_EQ(file.rewrite("000004bbbb0004"), "02");
    EXPECT_EQ(file.read(), "00");
    file.move("whatever the record area holds");
    EXPECT_EQ(file.verb(file.fcb->deleteRecord, {}), "00") << "DELETE takes the record read";
    EXPECT_EQ(file.read(), "10");
    EXPECT_EQ(file.read(), "46");
    file.move("      bbbb");
    EXPECT_EQ(file.verb(file.fcb->start, {.key = 1}), "00");
    EXPECT_EQ(file.read(), "00") << "its duplicate is gone";
    EXPECT_EQ(file.record().substr(0, 6), "000004");
    file.move("      zzzz");
    EXPECT_EQ(file.verb(file.fcb->start, {.key = 1}), "23");
    EXPECT_EQ(file.read(), "46");
    EXPECT_EQ(file.close(), "00");
}

// Records of many lengths, some of several pages, are lengthened, shortened and deleted, against a
// map.
TEST(Indexed, VariableLengths)
{
    TemporaryDirectory directory;
    FileAttributes attributes = indexedFile();
    attributes.longest = 20000;
    attributes.shortest = 14; // up to the end of the last key
    CompiledFile file(directory.file("i"), attributes);
    std::map<string, string> model;
    std::mt19937 random(5);
    ASSERT_EQ(file.open(ZVK_OPEN_OUTPUT), "00");
    for (int i = 0; i < 1500; ++i) {
        if (i == 500) {
            ASSERT_EQ(file.close(), "00");
            ASSERT_EQ(file.open(ZVK_OPEN_IO), "00");
        }
        char keys[32];
        unsigned number = random() % 200;
        snprintf(keys, sizeof keys, "%06u%04u%04u", number, unsigned(random() % 5), number);
        string key(keys, 6), record = string(keys, 14) +
                                      string(random() % (random() % 10 ? 300 : 19986), static_cast<char>('a' + i % 26));
        bool there = model.count(key);
        unsigned verb = i < 500 ? 0 : random() % 4;
        if (verb == 0) {
            ASSERT_EQ(file.write(record) > "02", there) << i;
            if (!there) model[key] = record;
        } else if (verb == 1) {
            ASSERT_EQ(file.rewrite(record) > "02", !there) << i;
            if (there) model[key] = record;
        } else if (verb == 2) {
            file.move(record);
            ASSERT_EQ(file.verb(file.fcb->deleteRecord, {}), model.erase(key) ? "00" : "23") << i;
        } else {
            file.move(record);
            ASSERT_EQ(file.read(), there ? "00" : "23") << i;
            if (there) {
                ASSERT_EQ(file.record(), model[key]);
            }
        }
    }
    EXPECT_EQ(file.write("too short key"), "44");
    EXPECT_EQ(file.rewrite("too short key"), "44");
    EXPECT_EQ(file.close(), "00");
    ASSERT_EQ(file.open(ZVK_OPEN_INPUT), "00");
    for (uint32_t key : {1u, 0u}) {
        ASSERT_EQ(file.verb(file.fcb->start, {.relation = ZVK_RELATION_FIRST, .key = key}), "00");
        size_t count = 0;
        while (file.read(next) < "10") {
            ASSERT_EQ(file.record(), model[file.record().substr(0, 6)]);
            ++count;
        }
        EXPECT_EQ(count, model.size());
    }
    file.close();
}

// A program may say that its records can end before a key does. Such a record has no such key, and
// is refused.
TEST(Indexed, RecordsMustHoldTheirKeys)
{
    TemporaryDirectory directory;
    FileAttributes attributes = indexedFile();
    attributes.shortest = 0;
    CompiledFile file(directory.file("i"), attributes);
    ASSERT_EQ(file.open(ZVK_OPEN_OUTPUT), "00");
    EXPECT_EQ(file.write("000001aaaa000"), "44");
    EXPECT_EQ(file.write(""), "44");
    EXPECT_EQ(file.write("000001aaaa0001"), "00");
    EXPECT_EQ(file.close(), "00");
    ASSERT_EQ(file.open(ZVK_OPEN_IO), "00");
    EXPECT_EQ(file.rewrite("000001bbbb"), "44");
    file.move("000001");
    EXPECT_EQ(file.verb(file.fcb->deleteRecord, {}), "00");
    EXPECT_EQ(file.close(), "00");
}

} // namespace
