// The hash table as a whole: hash functions, size, growth and chains, its figures and their report,
// and a map beside it under random use.
//
// Faults that these tests are there to catch: figures that drift from the chains; entries lost by a
// resize; reads beyond a key; a hash that differs from the one that tables are filled with
// elsewhere; sizes that wrap around.
#include <functional>
#include <list>
#include <map>
#include <random>

#include "frame/hash_table_fixture.h"
#include "support/guarded.h"
#include "support/share.h"

namespace {

std::string captureReport(const std::function<void()> &report)
{
    testing::internal::CaptureStderr();
    report();
    return testing::internal::GetCapturedStderr();
}

// The textbook form of the byte hash, one byte at a time.
uint32_t slowHash(const uint8_t *key, size_t length)
{
    auto rot = [](uint32_t x, int k) { return (x << k) | (x >> (32 - k)); };
    uint32_t w[3];
    w[0] = w[1] = w[2] = 0xdeadbeefu + static_cast<uint32_t>(length);
    auto addBytes = [&](size_t n) {
        for (size_t i = 0; i < n; ++i) w[i / 4] += static_cast<uint32_t>(key[i]) << (8 * (i % 4));
    };
    uint32_t &a = w[0], &b = w[1], &c = w[2];
    for (; length > 12; length -= 12, key += 12) {
        addBytes(12);
        a -= c;
        a ^= rot(c, 4);
        c += b;
        b -= a;
        b ^= rot(a, 6);
        a += c;
        c -= b;
        c ^= rot(b, 8);
        b += a;
        a -= c;
        a ^= rot(c, 16);
        c += b;
        b -= a;
        b ^= rot(a, 19);
        a += c;
        c -= b;
        c ^= rot(b, 4);
        b += a;
    }
    if (length == 0) return c;
    addBytes(length);
    c ^= b;
    c -= rot(b, 14);
    a ^= c;
    a -= rot(c, 11);
    b ^= a;
    b -= rot(a, 25);
    c ^= b;
    c -= rot(b, 16);
    a ^= c;
    a -= rot(c, 4);
    b ^= a;
    b -= rot(a, 14);
    c ^= b;
    c -= rot(b, 24);
    return c;
}

} // namespace

TEST(HashTable, HashesBytesLikeTheTextbookAndReadsNothingElse)
{
    HashTable *table = makeTable();
    HashState state;
    const char *famous = "Four score and seven years ago";
    HashTable_Hash(table, &state, famous, 30);
    EXPECT_EQ(state.hashValue, 0x17770551u);
    HashTable_Hash(table, &state, nullptr, 0);
    EXPECT_EQ(state.hashValue, 0xdeadbeefu);

    GuardedItem item(100), other(100);
    std::mt19937 random(1);
    for (size_t length = 1; length <= 60; ++length) {
        for (auto place : {GuardedItem::AtStart, GuardedItem::AtEnd}) {
            uint8_t *key = item.place(length, place), *copy = other.place(length, place);
            for (size_t i = 0; i < length; ++i) key[i] = copy[i] = static_cast<uint8_t>(random());
            HashEntry **slot = HashTable_Hash(table, &state, key, length);
            ASSERT_EQ(state.hashValue, slowHash(key, length)) << length;
            ASSERT_EQ(slot, &table->slots[state.hashValue & table->mask]);
            // Equal bytes elsewhere are the same key; one bit off, anywhere, is another.
            HashTable_Insert(table, &state, key, length, nullptr, 0, 0, 0);
            ASSERT_NE(HashTable_FindHashed(table, &state, copy, length, 0, 0), nullptr);
            for (size_t i = 0; i < length; ++i) {
                copy[i] ^= 0x80;
                ASSERT_EQ(HashTable_FindHashed(table, &state, copy, length, 0, 0), nullptr) << length << " " << i;
                copy[i] ^= 0x80;
            }
            HashTable_Delete(table, &state, key, length);
        }
    }
    EXPECT_EQ(table->searches, 2 + 2 * 60u);
    HashTable_Destroy(table);
}

TEST(HashTable, HashesIntegers)
{
    HashTable *table = makeTable(ZVK_HASH_INT32), *wide = makeTable(ZVK_HASH_INT64);
    HashState state;
    const std::pair<uint32_t, uint32_t> expected[] = {
        {0, 0xc0a9496a}, {1, 0x27922c9d}, {0xffffffff, 0x70f499d3}, {123456789, 0xb14e17d1}, {0x80000000, 0xad16aa14}};
    for (auto [key, hash] : expected) {
        HashTable_Hash(table, &state, &key, sizeof key);
        EXPECT_EQ(state.hashValue, hash) << key;
    }
    // With shifts that fill up with zeros the first and the third would come out differently.
    const std::pair<uint64_t, uint32_t> expectedWide[] = {{0, 0},
                                                          {1, 0x15515fbc},
                                                          {~uint64_t{0}, 0x15515ac1},
                                                          {uint64_t{1} << 63, 0x95755155},
                                                          {1234567890123456789, 0x12275310}};
    for (auto [key, hash] : expectedWide) {
        HashTable_Hash(wide, &state, &key, sizeof key);
        EXPECT_EQ(state.hashValue, hash) << key;
    }
    GuardedItem item(3);
    memcpy(item.data(), "abc", 3);
    HashTable_Hash(table, &state, item.data(), 3); // shorter than the integer: must not fault
    HashTable_Hash(wide, &state, item.data(), 3);
    HashTable_Destroy(table);
    HashTable_Destroy(wide);
}

TEST(HashTable, SizesAndLimits)
{
    struct {
        uint32_t size, load, slots, limit;
    } const cases[] = {
        {0, 0, 64, 48},        {10, 75, 64, 48},           {64, 87, 64, 56},
        {64, 93, 64, 60},      {64, 50, 64, 64},           {1000, 75, 1024, 768},
        {1000, 93, 1024, 960}, {65537, 75, 131072, 98304}, {65536, 87, 65536, 57344},
    };
    for (auto &each : cases) {
        HashTable *table = makeTable(0, each.size, each.load);
        EXPECT_EQ(table->size, each.slots);
        EXPECT_EQ(table->limit, each.limit) << each.size << " " << each.load;
        EXPECT_EQ(table->load, each.load ? each.load : 75);
        EXPECT_EQ(reinterpret_cast<uintptr_t>(table) % 16, 0u);
        HashTable_Destroy(table);
    }
    HashTable *table = makeTable();
    struct {
        uint32_t size, load, limit;
    } const small[] = {{1, 75, 0}, {2, 75, 1}, {4, 75, 3},   {8, 75, 6}, {4, 87, 3},
                       {8, 87, 7}, {8, 93, 7}, {16, 93, 15}, {2, 93, 1}};
    for (auto &each : small) {
        HashTable_Resize(table, each.size, each.load);
        EXPECT_EQ(table->size, each.size);
        EXPECT_EQ(table->limit, each.limit) << each.size << " " << each.load;
    }
    HashTable_Resize(table, 0, 0);
    EXPECT_EQ(table->size, 32u);
    EXPECT_EQ(table->load, 93u);
    HashTable_Destroy(table);
}

TEST(HashTable, GrowsWhenTheLimitIsReached)
{
    HashTable *table = makeTable();
    for (int i = 1; i <= 47; ++i) insert(table, "KEY" + std::to_string(i), "v");
    EXPECT_EQ(table->size, 64u);
    insert(table, "KEY48", "v");
    EXPECT_EQ(table->size, 128u);
    EXPECT_EQ(table->grows, 1u);
    expectSound(table);
    HashTable_Destroy(table);
}

TEST(HashTable, EqualHashesMakeOneChainAndGrowItOnlySoFar)
{
    Params params;
    params.hash = collide;
    HashTable *table = HashTable_Create(&params);
    for (int i = 0; i < 3; ++i) insert(table, std::to_string(i), "v");
    EXPECT_EQ(table->size, 64u);
    EXPECT_EQ(keysInOrder(table), (std::vector<std::string>{"2", "1", "0"}));
    insert(table, "3", "v"); // four times as many entries as slots in use
    EXPECT_EQ(table->size, 128u);
    EXPECT_EQ(keysInOrder(table), (std::vector<std::string>{"3", "2", "1", "0"})); // a resize keeps a chain's order
    for (int i = 4; i < 500; ++i) insert(table, std::to_string(i), "v");
    EXPECT_LE(table->size, 1u << 20); // names chosen to collide must not eat up the storage
    expectSound(table);
    find(table, "250", 1);
    EXPECT_EQ(keyOf(table->slots[5]), "250");
    find(table, "0", 0);
    EXPECT_EQ(keyOf(table->slots[5]), "250");
    expectSound(table);
    for (const char *key : {"250", "0", "77"}) HashTable_Delete(table, nullptr, key, strlen(key)); // head, end, middle
    expectSound(table);
    EXPECT_EQ(table->entries, 497u);
    HashTable_Destroy(table);
}

TEST(HashTable, BehavesLikeAMapUnderRandomUse)
{
    HashRoutine narrow = [](const void *key, uint64_t length) -> uint32_t {
        return static_cast<const uint8_t *>(key)[length - 1] % 13;
    };
    for (HashRoutine hash : {HashRoutine{nullptr}, narrow}) {
        for (uint32_t flags : {0u, unsigned{ZVK_HASH_MRU}, unsigned{ZVK_HASH_SHARED}}) {
            Params params;
            params.hash = hash;
            params.flags = flags;
            HashTable *table = HashTable_Create(&params);
            std::map<std::string, std::string> model;
            std::list<std::string> used; // last used first
            std::mt19937 random(7);
            auto use = [&](const std::string &key) {
                used.remove(key);
                used.push_front(key);
            };
            for (int step = 0; step < shareOf(6000); ++step) {
                std::string key = "K" + std::to_string(random() % 300);
                uint32_t size = table->size;
                switch (random() % 8) {
                case 0:
                case 1:
                case 2: {
                    std::string value(random() % 60 + 1, static_cast<char>('a' + step % 26));
                    bool fresh = model.emplace(key, value).second;
                    HashEntry *entry = insert(table, key, value);
                    ASSERT_EQ(std::string(static_cast<char *>(entry->value), model[key].size()), model[key]);
                    if (table->size != size) used.clear();
                    if (fresh) use(key);
                    break;
                }
                case 3:
                case 4: {
                    HashEntry *entry = find(table, key, step % 2);
                    ASSERT_EQ(entry != nullptr, model.count(key) == 1);
                    if (entry) {
                        ASSERT_EQ(keyOf(entry), key);
                    }
                    if (entry && step % 2) use(key);
                    break;
                }
                case 5:
                case 6:
                    HashTable_Delete(table, nullptr, key.data(), key.size());
                    used.remove(key);
                    model.erase(key);
                    break;
                default:
                    if (random() % 50 == 0) {
                        HashTable_Resize(table, static_cast<uint32_t>(random() % 300 + 1), 0);
                        used.clear();
                    } else if (random() % 100 == 0) {
                        HashTable_Clear(table);
                        used.clear();
                        model.clear();
                    }
                }
                ASSERT_EQ(table->entries, model.size());
                if (step % 16 == 0) {
                    expectSound(table);
                    if (flags & ZVK_HASH_MRU) {
                        ASSERT_EQ(keysByUse(table), std::vector<std::string>(used.begin(), used.end()));
                    }
                }
                if (testing::Test::HasFailure()) return;
            }
            ASSERT_EQ(keysInOrder(table).size(), model.size());
            HashTable_Destroy(table);
        }
    }
}

TEST(HashTable, AMillionNames)
{
    constexpr uint32_t kCount = 1'000'000;
    HashTable *table = makeTable(ZVK_HASH_MRU);
    auto name = [](uint32_t i, char *into) { return static_cast<uint64_t>(snprintf(into, 16, "PGM%07u", i)); };
    char key[16];
    for (uint32_t round = 0; round < 2; ++round) {
        for (uint32_t i = 0; i < kCount; ++i) {
            uint64_t length = name(i, key);
            ASSERT_NE(HashTable_Insert(table, nullptr, key, length, &i, sizeof i, 0, 0), nullptr);
        }
        ASSERT_EQ(table->entries, kCount);
        expectSound(table);
        for (uint32_t i = 0; i < kCount; ++i) {
            uint64_t length = name(i, key);
            HashEntry *entry = HashTable_Find(table, nullptr, key, length, 1, 0);
            ASSERT_TRUE(entry && memcmp(entry->value, &i, sizeof i) == 0) << key;
        }
        if (round == 0)
            for (uint32_t i = 0; i < kCount; ++i) HashTable_Delete(table, nullptr, key, name(i, key));
        else
            HashTable_Clear(table);
        ASSERT_EQ(HashTable_IsEmpty(table), 1);
        expectSound(table);
    }
    EXPECT_EQ(table->inserts, 2 * kCount);
    EXPECT_EQ(table->deletes, 2 * kCount);
    EXPECT_EQ(table->removes, 2 * kCount);
    EXPECT_EQ(table->searches, 5 * kCount);
    EXPECT_EQ(table->reuses, kCount);
    EXPECT_EQ(table->evicts, 0u);
    EXPECT_EQ(table->size, 2097152u);
    EXPECT_EQ(table->grows, 15u);
    HashTable_Destroy(table);
}

TEST(HashTable, ReportsItsFigures)
{
    HashTable *table = makeTable();
    std::string report = captureReport([&] { HashTable_Stats(table); });
    for (const char *line : {"\tSize:       64\n\t  Mask:       3f\n\t  Avail:      48 (75%)\n\t    Used:        0 (0% "
                             "of Avail, 0% of Size)\n"
                             "\t    Free:        64 (133% of Avail, 100% of Size)\n\tResizes:    0  , +0 -0\n",
                             "\t    Min len:    0\n", "\tBad stats:      0\n"})
        EXPECT_NE(report.find(line), std::string::npos) << line << "\nin\n" << report;
    EXPECT_EQ(captureReport([&] { HashTable_Dump(table); }), "");
    HashTable_Destroy(table);

    Params params;
    params.hash = collide;
    table = HashTable_Create(&params);
    GuardedItem raw(3); // a key that is not copied need not be terminated
    memcpy(raw.data(), "TWO", 3);
    insert(table, "ONE", "value");
    HashTable_Insert(table, nullptr, raw.data(), 3, nullptr, 0, 0, 0);
    report = captureReport([&] { HashTable_Stats(table); });
    for (const char *line : {"Largest hash chain: TWO,ONE,\nHash table at: ",
                             "\tSearches:   2\n\t  Lookups:    0 (0%)\n\t  Inserts:    2 (100%)\n",
                             "\tCollisions: 1 (50% of Entries, 100% of Used)\n\t  Total:      1 (50% of Inserts)\n\t  "
                             "Chains:     1 (100% of Used)\n",
                             "\t    Min len:    2\n\t    Max len:    2\n\t    Avg len:    2.00\n\tAvg Search len: 2.00 "
                             "of Used, 0.04 of Avail, 0.03 of "
                             "Size\n"})
        EXPECT_NE(report.find(line), std::string::npos) << line << "\nin\n" << report;

    // Wrong figures are told once, then mended.
    table->collisions = 9;
    table->freeSlots = 5;
    report = captureReport([&] { HashTable_Stats(table); });
    EXPECT_NE(report.find("Hash stats bad...\n  Collisions = 9 vs 1 (actual)\n  Chains     = 1 vs 1 (actual)\n"),
              std::string::npos)
        << report;
    EXPECT_NE(report.find("\tBad stats:      1\n"), std::string::npos);
    EXPECT_EQ(captureReport([&] { HashTable_Stats(table); }).find("Hash stats bad"), std::string::npos);
    expectSound(table);

    report = captureReport([&] { HashTable_Dump(table); });
    char head[400];
    snprintf(head, sizeof head,
             "Hash table @0x%p contents:\nEntries: 2\nState:   0x0 0 0x(nil)\nSlot # 5\n  1:0x%p key=(3)@0x%p TWO "
             "value=(0)@0x(nil)",
             static_cast<void *>(table), static_cast<void *>(table->slots[5]), table->slots[5]->key);
    EXPECT_EQ(report.rfind(head, 0), 0u) << report;
    EXPECT_EQ(report.find("MRU"), std::string::npos);
    ++table->inserts;
    EXPECT_NE(captureReport([&] { HashTable_Stats(table); }).find("Hash entry counts bad...\n"), std::string::npos);
    HashTable_Destroy(table);

    table = makeTable(ZVK_HASH_MRU);
    insert(table, "A", "value");
    report = captureReport([&] { HashTable_Dump(table); });
    EXPECT_NE(report.find("MRU ordering:\n  1:0x"), std::string::npos) << report;
    HashTable_Destroy(table);
}
