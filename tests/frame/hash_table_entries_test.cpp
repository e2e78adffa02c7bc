// Entries of the hash table: what is copied, states, recycled blocks, routines of the owner, the
// order of use, parents, removal.
//
// Faults that these tests are there to catch: orders broken by a resize, by a move to the front or
// by use after a resize has emptied the MRU list; a recycled block that is too small for its new
// entry; states and lists that keep pointing at an entry that has left; child entries that take
// their parent's with them.
#include "frame/hash_table_fixture.h"

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
        // The address sanitizer sees a write after a block that is too small.
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

    // A resize empties the list; entries come back to it one by one, and those that do not must
    // survive all that follows.
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

// Random operations beside the standard library's containers, with figures, chains and order of use
// checked all along.
