// Hash tables for the tests: short forms of the calls, and the walk that holds a table's figures
// against its chains.
#pragma once

#include <gtest/gtest.h>
#include <string>
#include <vector>

#include "kvr2/hash_table.h"

struct Params : HashParams {
    Params() : HashParams{} {}
};

inline HashTable *makeTable(uint32_t flags = 0, uint32_t size = 0, uint32_t load = 0)
{
    Params params;
    params.flags = flags;
    params.size = size;
    params.load = load;
    return HashTable_Create(&params);
}

inline HashEntry *insert(HashTable *table, const std::string &key, const std::string &value)
{
    return HashTable_Insert(table, nullptr, key.data(), key.size(), value.data(), value.size(), 0, 0);
}

inline HashEntry *find(HashTable *table, const std::string &key, int touch = 0, int inherit = 0)
{
    return HashTable_Find(table, nullptr, key.data(), key.size(), touch, inherit);
}

inline std::string keyOf(const HashEntry *entry) { return {static_cast<const char *>(entry->key), entry->keyLength}; }

// Holds all stored figures and links against a walk through the chains.
inline void expectSound(const HashTable *table)
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

inline std::vector<std::string> keysByUse(const HashTable *table)
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

inline std::vector<std::string> keysInOrder(const HashTable *table)
{
    std::vector<std::string> keys;
    for (HashEntry *entry = HashTable_Next(table, nullptr); entry; entry = HashTable_Next(table, entry))
        keys.push_back(keyOf(entry));
    return keys;
}

// A hash under which all keys meet in one chain.
inline uint32_t collide(const void *, uint64_t) { return 5; }
