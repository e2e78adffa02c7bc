// The hash table.
//
// Faults that these tests are there to catch: figures that drift from the chains; entries lost or orders broken by a resize, by a move to the
// front or by use after a resize has emptied the MRU list; reads beyond a key; a hash that differs from the one that tables are filled
// with elsewhere; a recycled block that is too small for its new entry; states and lists that keep pointing at an entry that has left; child
// entries that take their parent's with them; sizes that wrap around.
#include <functional>
#include <list>
#include <map>
#include <random>
#include <string>
#include <vector>

#include "kvr2/hash_table.h"
#include "support/guarded.h"

namespace {

struct Params : HashParams {
    Params() : HashParams{} {}
};

HashTable *makeTable(uint32_t flags = 0, uint32_t size = 0, uint32_t load = 0)
{
    Params params;
    params.flags = flags;
    params.size = size;
    params.load = load;
    return HashTable_Create(&params);
}

HashEntry *insert(HashTable *table, const std::string &key, const std::string &value)
{
    return HashTable_Insert(table, nullptr, key.data(), key.size(), value.data(), value.size(), 0, 0);
}

HashEntry *find(HashTable *table, const std::string &key, int touch = 0, int inherit = 0)
{
    return HashTable_Find(table, nullptr, key.data(), key.size(), touch, inherit);
}

std::string keyOf(const HashEntry *entry) { return {static_cast<const char *>(entry->key), entry->keyLength}; }

// Holds all stored figures and links against a walk through the chains.
void expectSound(const HashTable *table)
{
    uint32_t used = 0, entries = 0, collisions = 0, chains = 0;
    for (uint32_t i = 0; i < table->size; ++i) {
        uint32_t length = 0;
        const HashEntry *before = nullptr;
        for (const HashEntry *entry = table->slots[i]; entry; before = entry, entry = entry->next) {
            ASSERT_EQ(entry->prev, before);
            ASSERT_EQ(entry->hashValue & table->mask, i);
            ++length;
        }
        used += length > 0;
        chains += length > 1;
        collisions += length > 1 ? length - 1 : 0;
        entries += length;
    }
    EXPECT_EQ(table->used, used);
    EXPECT_EQ(table->freeSlots, table->size - used);
    EXPECT_EQ(table->entries, entries);
    EXPECT_EQ(table->collisions, collisions);
    EXPECT_EQ(table->chains, chains);
    EXPECT_EQ(table->mask, table->size - 1);
    EXPECT_EQ(table->entries, table->inserts - table->removes);
}

std::vector<std::string> keysByUse(const HashTable *table)
{
    std::vector<std::string> keys;
    const HashEntry *newer = nullptr;
    for (const HashEntry *entry = table->mruHead; entry; newer = entry, entry = entry->older) {
        EXPECT_EQ(entry->newer, newer);
        keys.push_back(keyOf(entry));
    }
    EXPECT_EQ(table->mruTail, newer);
    return keys;
}

std::vector<std::string> keysInOrder(const HashTable *table)
{
    std::vector<std::string> keys;
    for (HashEntry *entry = HashTable_Next(table, nullptr); entry; entry = HashTable_Next(table, entry)) keys.push_back(keyOf(entry));
    return keys;
}

std::string captureReport(const std::function<void()> &report)
{
    testing::internal::CaptureStderr();
    report();
    return testing::internal::GetCapturedStderr();
}

uint32_t collide(const void *, uint64_t) { return 5; }

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
    const std::pair<uint64_t, uint32_t> expectedWide[] = {
        {0, 0}, {1, 0x15515fbc}, {~uint64_t{0}, 0x15515ac1}, {uint64_t{1} << 63, 0x95755155}, {1234567890123456789, 0x12275310}};
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
        {0, 0, 64, 48},        {10, 75, 64, 48},      {64, 87, 64, 56},           {64, 93, 64, 60},          {64, 50, 64, 64},
        {1000, 75, 1024, 768}, {1000, 93, 1024, 960}, {65537, 75, 131072, 98304}, {65536, 87, 65536, 57344},
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
    } const small[] = {{1, 75, 0}, {2, 75, 1}, {4, 75, 3}, {8, 75, 6}, {4, 87, 3}, {8, 87, 7}, {8, 93, 7}, {16, 93, 15}, {2, 93, 1}};
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

TEST(HashTable, CopiesWhatItIsToldTo)
{
    HashTable *table = makeTable();
    std::string key = "NAME", value(20, 'x');
    HashEntry *copied = insert(table, key, value);
    EXPECT_EQ(copied->value, reinterpret_cast<uint8_t *>(copied) + 64); // without MRU the header ends there
    EXPECT_EQ(static_cast<const uint8_t *>(copied->key), static_cast<uint8_t *>(copied->value) + 32);
    EXPECT_EQ(copied->blockSize, 64u + 32 + 16);
    EXPECT_STREQ(static_cast<const char *>(copied->key), "NAME");
    EXPECT_EQ(memcmp(copied->value, value.data(), 20), 0);

    HashEntry *again = insert(table, key, "other");
    EXPECT_EQ(again, copied);
    EXPECT_EQ(memcmp(again->value, value.data(), 20), 0);
    HashEntry *duplicate = HashTable_Insert(table, nullptr, key.data(), 4, "second", 6, 1, 0);
    EXPECT_NE(duplicate, copied);
    EXPECT_EQ(find(table, key), duplicate);

    const char *kept = "KEPT";
    HashEntry *nothing = HashTable_Insert(table, nullptr, kept, 4, &value, 0, 0, 0);
    EXPECT_EQ(nothing->key, kept);
    EXPECT_EQ(nothing->value, &value);
    EXPECT_EQ(nothing->blockSize, 0u);

    HashEntry *keyOnly = HashTable_Insert(table, nullptr, "SIXTEENBYTESLONG", 16, &value, ZVK_HASH_KEY_ONLY, 0, 0);
    EXPECT_EQ(keyOnly->key, keyOnly->value);
    EXPECT_STREQ(static_cast<const char *>(keyOnly->key), "SIXTEENBYTESLONG");
    EXPECT_EQ(keyOnly->blockSize, ZVK_HASH_KEY_ONLY);

    HashEntry *zeros = HashTable_Insert(table, nullptr, "ZEROS", 5, nullptr, 40, 0, 0);
    EXPECT_EQ(std::string(static_cast<char *>(zeros->value), 40), std::string(40, 0));

    for (uint64_t absurd : {~uint64_t{1}, ~uint64_t{16}, ~uint64_t{100}, uint64_t{1} << 63})
        EXPECT_EQ(HashTable_Insert(table, nullptr, "ABSURD", 6, value.data(), absurd, 0, 0), nullptr);
    expectSound(table);
    EXPECT_EQ(table->inserts, 5u);
    HashTable_Destroy(table);
}

TEST(HashTable, StatesCarryAHashFromOneOperationToTheNext)
{
    HashTable *table = makeTable();
    HashState state;
    EXPECT_EQ(HashTable_Find(table, &state, "A", 1, 0, 0), nullptr);
    EXPECT_EQ(state.entry, nullptr);
    HashEntry *entry = HashTable_Insert(table, &state, "A", 1, "v", 1, 0, 0);
    EXPECT_EQ(table->searches, 1u);
    EXPECT_EQ(HashTable_FindHashed(table, &state, "A", 1, 0, 0), entry);
    EXPECT_EQ(state.entry, entry);

    EXPECT_EQ(HashTable_Find(table, ZVK_HASH_TABLE_STATE, "B", 1, 0, 0), nullptr);
    HashEntry *second = HashTable_Insert(table, ZVK_HASH_TABLE_STATE, "B", 1, "v", 1, 0, 0);
    EXPECT_EQ(table->searches, 2u);
    EXPECT_EQ(HashTable_Find(table, ZVK_HASH_TABLE_STATE, "B", 1, 0, 0), second);
    EXPECT_EQ(table->state.entry, second);
    // However an entry leaves, the table's own state must not keep pointing at it.
    EXPECT_EQ(HashTable_Remove(table, "B", 1), second);
    EXPECT_EQ(table->state.entry, nullptr);
    free(second);
    EXPECT_EQ(HashTable_Delete(table, &state, "A", 1), 0);
    EXPECT_EQ(state.entry, nullptr);
    EXPECT_EQ(HashTable_Delete(table, nullptr, "A", 1), 0); // not there
    EXPECT_EQ(table->deletes, 1u);
    EXPECT_EQ(table->removes, 2u);
    EXPECT_EQ(HashTable_IsEmpty(table), 1);
    EXPECT_EQ(HashTable_IsEmpty(nullptr), 1);

    // A state from before a resize still leads to the right slot.
    HashTable_Hash(table, &state, "STALE", 5);
    HashTable_Resize(table, 1024, 0);
    HashTable_Insert(table, &state, "STALE", 5, "v", 1, 0, 0);
    EXPECT_NE(find(table, "STALE"), nullptr);
    expectSound(table);
    HashTable_Destroy(table);
}

TEST(HashTable, RecyclesBlocksThatFitAndNoOthers)
{
    HashTable *table = makeTable();
    auto cycle = [&](const std::string &key, uint64_t valueLength, const std::string &value) {
        HashTable_Insert(table, nullptr, key.data(), key.size(), value.data(), valueLength, 0, 0);
        HashEntry *entry = find(table, key);
        // The address sanitizer sees a write behind a block that is too small.
        if (valueLength && valueLength != ZVK_HASH_KEY_ONLY) memset(entry->value, 'w', valueLength);
        EXPECT_EQ(keyOf(entry), key);
        HashTable_Delete(table, nullptr, key.data(), key.size());
    };
    auto figures = [&] { return std::pair(table->reuses, table->evicts); };
    cycle("FIRST", 48, std::string(48, 'v'));
    EXPECT_EQ(figures(), std::pair(0u, 0u));
    cycle("SECOND", 40, std::string(40, 'v'));
    EXPECT_EQ(figures(), std::pair(1u, 0u));
    cycle("LARGER", 200, std::string(200, 'v'));
    EXPECT_EQ(figures(), std::pair(1u, 1u));
    cycle("KEYONLY", ZVK_HASH_KEY_ONLY, "");
    EXPECT_EQ(figures(), std::pair(2u, 1u));
    cycle("KEYONLYX", ZVK_HASH_KEY_ONLY, ""); // a key longer than the last
    EXPECT_EQ(figures(), std::pair(2u, 2u));
    cycle("SHORT", 300, std::string(300, 'v')); // the key would fit, the value would not
    EXPECT_EQ(figures(), std::pair(2u, 3u));
    cycle("HEADER", 0, "");
    EXPECT_EQ(figures(), std::pair(3u, 3u));
    cycle("HEADER2", 0, "");
    EXPECT_EQ(figures(), std::pair(4u, 3u));
    cycle("X", 1, "v");
    EXPECT_EQ(figures(), std::pair(4u, 4u));
    expectSound(table);
    HashTable_Destroy(table);
}

TEST(HashTable, RoutinesOfTheOwner)
{
    static int given, taken;
    given = taken = 0;
    Params params;
    params.user = 77;
    params.alloc = [](uint64_t size, uint64_t user) -> void * {
        EXPECT_EQ(user, 77u);
        ++given;
        void *block = aligned_alloc(16, size);
        memset(block, 0xAA, size); // what it gives need not be cleared
        return block;
    };
    params.free = [](HashEntry *entry) {
        ++taken;
        free(entry);
    };
    HashTable *table = HashTable_Create(&params);
    for (int i = 0; i < 10; ++i) insert(table, std::to_string(i), "value");
    EXPECT_STREQ(static_cast<const char *>(find(table, "7")->key), "7");
    HashTable_Delete(table, nullptr, "3", 1);
    EXPECT_EQ(given, 10);
    EXPECT_EQ(taken, 1);
    EXPECT_EQ(table->freeEntries, nullptr);
    HashTable_Clear(table);
    EXPECT_EQ(taken, 10);
    HashTable_Destroy(table);

    static HashTable *rehashed;
    params = Params();
    params.rehash = [](uint64_t, HashEntry **slots, uint32_t mask) {
        EXPECT_EQ(mask, 63u);
        EXPECT_TRUE(rehashed->flags & ZVK_HASH_TABLE_RESIZING);
        HashTable_Resize(rehashed, 4096, 0); // refused while one is going on
        for (uint32_t i = 0; i <= mask; ++i) {
            for (HashEntry *entry = slots[i], *next; entry; entry = next) {
                next = entry->next;
                entry->prev = nullptr;
                HashEntry **slot = &rehashed->slots[entry->hashValue & rehashed->mask];
                entry->next = *slot;
                if (*slot) (*slot)->prev = entry;
                *slot = entry;
                ++rehashed->entries;
            }
        }
    };
    rehashed = HashTable_Create(&params);
    insert(rehashed, "A", "v");
    insert(rehashed, "B", "v");
    HashTable_Resize(rehashed, 256, 0);
    EXPECT_EQ(rehashed->size, 256u);
    EXPECT_NE(find(rehashed, "A"), nullptr);
    EXPECT_NE(find(rehashed, "B"), nullptr);
    HashTable_Destroy(rehashed);
}

TEST(HashTable, OrderOfUse)
{
    HashTable *table = makeTable(ZVK_HASH_MRU);
    for (const char *key : {"A", "B", "C", "D"}) insert(table, key, "value");
    EXPECT_EQ(keysByUse(table), (std::vector<std::string>{"D", "C", "B", "A"}));
    find(table, "B", 1);
    find(table, "A", 2);
    find(table, "C", 0);
    EXPECT_EQ(keysByUse(table), (std::vector<std::string>{"A", "B", "D", "C"}));
    HashTable_Delete(table, nullptr, "C", 1); // tail
    HashTable_Delete(table, nullptr, "A", 1); // head
    EXPECT_EQ(keysByUse(table), (std::vector<std::string>{"B", "D"}));

    // A resize empties the list; entries come back to it one by one, and those that do not must survive all that follows.
    insert(table, "E", "value");
    HashTable_Resize(table, 128, 0);
    EXPECT_EQ(keysByUse(table), std::vector<std::string>{});
    EXPECT_EQ(table->entries, 3u);
    find(table, "D", 1);
    EXPECT_EQ(keysByUse(table), std::vector<std::string>{"D"});
    HashTable_Resize(table, 256, 0);
    EXPECT_EQ(table->entries, 3u);
    expectSound(table);
    HashTable_Delete(table, nullptr, "B", 1);
    find(table, "E", 1);
    find(table, "D", 1);
    EXPECT_EQ(keysByUse(table), (std::vector<std::string>{"D", "E"}));
    HashTable_Clear(table);
    EXPECT_EQ(keysByUse(table), std::vector<std::string>{});
    expectSound(table);
    HashTable_Destroy(table);

    // Where all share one slot, the last used stand first in the chain after a resize.
    Params params;
    params.hash = collide;
    params.flags = ZVK_HASH_MRU;
    table = HashTable_Create(&params);
    for (const char *key : {"A", "B", "C"}) insert(table, key, "value");
    find(table, "B", 1);
    HashTable_Resize(table, 128, 0);
    EXPECT_EQ(keysInOrder(table), (std::vector<std::string>{"B", "C", "A"}));
    HashTable_Destroy(table);
}

TEST(HashTable, LooksThroughToItsParent)
{
    HashTable *parent = makeTable(ZVK_HASH_MRU);
    Params params;
    params.parent = parent;
    HashTable *child = HashTable_Create(&params);
    HashEntry *old = insert(parent, "OLD", "value");
    insert(parent, "NEW", "value");

    EXPECT_EQ(find(child, "OLD", 1, 0), nullptr);
    EXPECT_EQ(find(child, "NONE", 1, 1), nullptr);
    HashEntry *reference = find(child, "OLD", 1, 1);
    ASSERT_NE(reference, nullptr);
    EXPECT_EQ(reference->parent, old);
    EXPECT_EQ(reference->key, old->key);
    EXPECT_EQ(reference->value, old->value);
    EXPECT_EQ(reference->blockSize, 0u);
    EXPECT_EQ(keysByUse(parent), (std::vector<std::string>{"OLD", "NEW"})); // it was used there, too
    find(parent, "NEW", 1);
    uint32_t searches = parent->searches;
    EXPECT_EQ(find(child, "OLD", 2), reference);
    EXPECT_EQ(parent->searches, searches);
    EXPECT_EQ(find(child, "OLD", 1), reference);
    EXPECT_EQ(parent->searches, searches + 1);
    EXPECT_EQ(keysByUse(parent), (std::vector<std::string>{"OLD", "NEW"}));

    HashTable_Delete(child, nullptr, "OLD", 3);
    EXPECT_EQ(child->freeChildren, reference);
    EXPECT_EQ(find(parent, "OLD"), old);
    EXPECT_EQ(find(child, "NEW", 1, 1), reference); // recycled
    EXPECT_EQ(child->reuses, 1u);

    HashEntry *both = HashTable_Insert(child, nullptr, "BOTH", 4, "value", 5, 0, 1);
    ASSERT_NE(both->parent, nullptr);
    EXPECT_EQ(find(parent, "BOTH"), both->parent);
    EXPECT_NE(both->parent->value, nullptr);
    // The parent's entry stays where it has one already, and the reference is to that one.
    HashEntry *again = HashTable_Insert(child, nullptr, "OLD", 3, "else", 4, 0, 1);
    EXPECT_EQ(again->parent, old);
    EXPECT_EQ(again->value, old->value);
    HashEntry *orphan = HashTable_Insert(parent, nullptr, "ORPHAN", 6, "value", 5, 0, 1); // no parent to insert into
    EXPECT_EQ(orphan->parent, nullptr);

    expectSound(parent);
    expectSound(child);
    HashTable_Destroy(child);
    EXPECT_EQ(parent->entries, 4u);
    HashTable_Destroy(parent);
}

TEST(HashTable, RemoveHandsTheEntryOverAndIterationGoesOn)
{
    HashTable *table = makeTable();
    for (int i = 0; i < 200; ++i) insert(table, std::to_string(i), "value");
    EXPECT_EQ(HashTable_Next(nullptr, nullptr), nullptr);
    int taken = 0;
    for (HashEntry *entry = HashTable_Next(table, nullptr), *next; entry; entry = next) {
        EXPECT_EQ(HashTable_Remove(table, entry->key, entry->keyLength), entry);
        next = HashTable_Next(table, entry);
        free(entry);
        ++taken;
    }
    EXPECT_EQ(taken, 200);
    EXPECT_EQ(table->deletes, 0u);
    EXPECT_EQ(table->removes, 200u);
    EXPECT_EQ(table->freeEntries, nullptr);
    expectSound(table);
    HashTable_Destroy(table);
}

// Random operations beside the standard library's containers, with figures, chains and order of use checked all along.
TEST(HashTable, BehavesLikeAMapUnderRandomUse)
{
    HashRoutine narrow = [](const void *key, uint64_t length) -> uint32_t { return static_cast<const uint8_t *>(key)[length - 1] % 13; };
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
            for (int step = 0; step < 6000; ++step) {
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
    for (const char *line :
         {"\tSize:       64\n\t  Mask:       3f\n\t  Avail:      48 (75%)\n\t    Used:        0 (0% of Avail, 0% of Size)\n"
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
    for (const char *line :
         {"Largest hash chain: TWO,ONE,\nHash table at: ", "\tSearches:   2\n\t  Lookups:    0 (0%)\n\t  Inserts:    2 (100%)\n",
          "\tCollisions: 1 (50% of Entries, 100% of Used)\n\t  Total:      1 (50% of Inserts)\n\t  Chains:     1 (100% of Used)\n",
          "\t    Min len:    2\n\t    Max len:    2\n\t    Avg len:    2.00\n\tAvg Search len: 2.00 of Used, 0.04 of Avail, 0.03 of "
          "Size\n"})
        EXPECT_NE(report.find(line), std::string::npos) << line << "\nin\n" << report;

    // Wrong figures are told once, then mended.
    table->collisions = 9;
    table->freeSlots = 5;
    report = captureReport([&] { HashTable_Stats(table); });
    EXPECT_NE(report.find("Hash stats bad...\n  Collisions = 9 vs 1 (actual)\n  Chains     = 1 vs 1 (actual)\n"), std::string::npos)
        << report;
    EXPECT_NE(report.find("\tBad stats:      1\n"), std::string::npos);
    EXPECT_EQ(captureReport([&] { HashTable_Stats(table); }).find("Hash stats bad"), std::string::npos);
    expectSound(table);

    report = captureReport([&] { HashTable_Dump(table); });
    char head[400];
    snprintf(head, sizeof head,
             "Hash table @0x%p contents:\nEntries: 2\nState:   0x0 0 0x(nil)\nSlot # 5\n  1:0x%p key=(3)@0x%p TWO value=(0)@0x(nil)",
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
