// Faults these tests are there to catch: a key of several parts that is put together in another
// order for one verb than for another, or out of bytes of another record; a file that is opened as
// if it had other parts; a part outside the record.
#include <map>
#include <random>

#include "stored_files.h"

namespace {

// Primary key: bytes 16 to 17, then 0 to 1. Alternate key: bytes 8 to 9, 2 to 3, 12, duplicates.
// One in one piece after them: bytes 4 to 5.
FileAttributes splitFile(uint8_t access = 0)
{
    return {.longest = 20,
            .shortest = 18,
            .organization = ZVK_FILE_INDEXED,
            .access = access,
            .keys = {{4, 16, ZVK_FILE_KEY_PARTS, {1}},
                     {5, 8, ZVK_FILE_KEY_PARTS | ZVK_FILE_KEY_DUPLICATES, {2}},
                     {2, 4, ZVK_FILE_KEY_DUPLICATES, {}}},
            .keyParts = {{2, 0, 0, {}}, {2, 2, 0, {}}, {1, 12, 0, {}}}};
}
string primaryOf(const string &record) { return record.substr(16, 2) + record.substr(0, 2); }
string alternateOf(const string &record) { return record.substr(8, 2) + record.substr(2, 2) + record.substr(12, 1); }

// All verbs at random, in batches and one by one, against maps of the keys as they should be.
TEST(SplitKeys, AgreeWithAMapOverRandomVerbs)
{
    for (const char *transactions : {"off", "on"}) {
        TemporaryDirectory directory;
        setenv("VFS_TRANSACTIONS", transactions, 1);
        CompiledFile file("stl-" + directory.file("s"), splitFile());
        std::map<string, string> model, committed; // records by primary key
        std::mt19937 random(11);
        auto text = [&] {
            string record(18 + random() % 3, ' ');
            for (char &c : record) c = static_cast<char>('a' + random() % 3);
            return record;
        };
        ASSERT_EQ(file.open(ZVK_OPEN_OUTPUT), "00") << reason(file);
        for (int i = 0; i < 3000; ++i) {
            if (i == 100) {
                ASSERT_EQ(file.close(), "00");
                ASSERT_EQ(file.open(ZVK_OPEN_IO), "00") << reason(file);
            }
            string record = text(), key = primaryOf(record);
            switch (i < 100 ? 0 : random() % 4) {
            case 0:
                ASSERT_EQ(file.write(record) < "10", !model.count(key)) << i;
                model.insert({key, record});
                break;
            case 1:
                ASSERT_EQ(file.rewrite(record) < "10", model.count(key) == 1) << i;
                if (model.count(key)) model[key] = record;
                break;
            case 2:
                file.move(record);
                ASSERT_EQ(file.verb(file.fcb->deleteRecord, {}), model.count(key) ? "00" : "23") << i;
                model.erase(key);
                break;
            default:
                file.move(record);
                ASSERT_EQ(file.read(), model.count(key) ? "00" : "23") << i;
                if (model.count(key)) {
                    ASSERT_EQ(file.record(), model[key]);
                }
            }
            if (i % 40 == 39 && !strcmp(transactions, "on")) {
                if (random() % 2) {
                    ASSERT_EQ(commit(), 0);
                    committed = model;
                } else {
                    ASSERT_EQ(rollBack(), 0);
                    model = committed;
                }
            }
            if (i < 100 || i % 50) continue;
            // By the alternate key from a place on, and by the primary one.
            file.move(record);
            string wanted = alternateOf(record);
            size_t left = 0;
            for (auto &one : model) left += alternateOf(one.second) >= wanted;
            string status = file.verb(file.fcb->start, {.relation = ZVK_RELATION_NOT_LESS, .key = 1});
            ASSERT_EQ(status, left ? "00" : "23");
            for (string last = wanted; left; --left) {
                ASSERT_LE(file.read(next), "02");
                ASSERT_EQ(model.at(primaryOf(file.record())), file.record());
                ASSERT_GE(alternateOf(file.record()), last);
                last = alternateOf(file.record());
            }
            ASSERT_EQ(file.verb(file.fcb->start, {.relation = ZVK_RELATION_FIRST}), "00");
            for (auto &one : model) {
                ASSERT_EQ(file.read(next), "00");
                ASSERT_EQ(file.record(), one.second);
            }
            ASSERT_EQ(file.read(next), "10");
        }
        if (!strcmp(transactions, "on")) {
            ASSERT_EQ(commit(), 0);
        }
        ASSERT_EQ(file.close(), "00");
    }
    unsetenv("VFS_TRANSACTIONS");
}

// A program whose key table knows no parts says how long the key is and where it begins.
TEST(SplitKeys, AreKnownByTheFile)
{
    TemporaryDirectory directory;
    const string path = "stl-" + directory.file("s"), record = "bbccddeeffgghhiiaa";
    {
        CompiledFile file(path, splitFile());
        ASSERT_EQ(file.open(ZVK_OPEN_OUTPUT), "00");
        ASSERT_EQ(file.write(record), "00");
        ASSERT_EQ(file.write("bcccddeeffgghhiiaa"), "02");
        ASSERT_EQ(file.close(), "00");
    }
    FileAttributes plain = splitFile();
    plain.keyParts.clear();
    for (FileKey &key : plain.keys) key.flags &= ZVK_FILE_KEY_DUPLICATES, key.reserved[0] = 0;
    CompiledFile file(path, plain);
    ASSERT_EQ(file.open(ZVK_OPEN_IO), "00") << reason(file);
    file.move(record);
    EXPECT_EQ(file.read({.key = 1}), "02");
    EXPECT_EQ(file.record(), record);
    file.move("bcXXXXXXXXXXXXXXaa");
    EXPECT_EQ(file.read(), "00");
    EXPECT_EQ(file.record(), "bcccddeeffgghhiiaa");
    ASSERT_EQ(file.close(), "00");
}

TEST(SplitKeys, OtherPartsAreOtherAttributes)
{
    TemporaryDirectory directory;
    const string path = "stl-" + directory.file("s");
    CompiledFile made(path, splitFile());
    ASSERT_EQ(made.open(ZVK_OPEN_OUTPUT), "00");
    ASSERT_EQ(made.write("bbccddeeffgghhiiaa"), "00");
    ASSERT_EQ(made.close(), "00");
    auto opens = [&](auto change, uint16_t mode = ZVK_OPEN_INPUT, const string &name = "") {
        FileAttributes other = splitFile();
        change(other);
        CompiledFile file(name.empty() ? path : name, other);
        string status = file.open(mode);
        if (status < "10") file.close();
        return status;
    };
    EXPECT_EQ(opens([](FileAttributes &) {}), "00");
    EXPECT_EQ(opens([](FileAttributes &a) { a.keyParts[0].position = 1; }), "39");
    EXPECT_EQ(opens([](FileAttributes &a) { a.keyParts[1].position = 3; }), "39");
    EXPECT_EQ(opens([](FileAttributes &a) { a.keys[1].reserved[0] = 1; }), "39");
    EXPECT_EQ(opens([](FileAttributes &a) { a.keys[0].length = 5; }), "39");
    EXPECT_EQ(opens([](FileAttributes &a) {
                  a.keys[2] = {2, 4, ZVK_FILE_KEY_DUPLICATES | ZVK_FILE_KEY_PARTS, {1}};
              }),
              "39");
    // What cannot be stored leaves the file that is there as it is.
    const string other = "stl-" + directory.file("other");
    for (const string &name : {path, other}) {
        EXPECT_EQ(opens([](FileAttributes &a) { a.keyParts[0].position = 19; }, ZVK_OPEN_OUTPUT, name), "39");
        EXPECT_EQ(opens([](FileAttributes &a) { a.keyParts[2].length = 0; }, ZVK_OPEN_OUTPUT, name), "39");
        EXPECT_EQ(opens([](FileAttributes &a) { a.keys[1].length = 3; }, ZVK_OPEN_OUTPUT, name), "39");
        EXPECT_EQ(opens([](FileAttributes &a) { a.keys[0].reserved[0] = 200; }, ZVK_OPEN_OUTPUT, name), "39");
    }
    EXPECT_EQ(opens([](FileAttributes &) {}), "00");
}

} // namespace
