// The hash table: chains in a power of two of slots.
//
// A key's hash, cut to the table's size, picks a slot; the slot holds a doubly linked chain of
// entries, the last inserted first. An entry is one block: the header, then a copy of the value,
// then a copy of the key, each at a multiple of 16 (or neither, when the caller keeps them).
// "PAYROLL" with a value of 48 bytes:
//
//     0           64          112         128
//     | HashEntry | value     | PAYROLL\0 |
//
// Tables can stand in line: a run unit's program table has the process's table as its parent, and
// an entry that came from there is a header of its own that refers to the parent's entry. An entry
// with a parent shares key and value with it.
//
// Lookups beside an insert. The table of EXTERNAL items is searched without a lock while another
// thread may insert. Three things make that safe, and cost nothing on this machine:
//   - Whatever a lookup follows (slots, mask, chain links) is stored with release and loaded with
//     acquire order, and an entry is
//     complete before it is linked. Nothing that a lookup reads of an entry changes afterwards, but for `next`.
//   - A growing table shows its larger slot array before its larger mask, and a lookup loads the
//     mask first: the index always fits.
//   - A shared table keeps the arrays it outgrew (they add up to less than the present one) until
//     it is cleared. While entries move to the new array a lookup may be led into another chain. It
//     then ends at that chain's end and reports a miss, never a wrong entry, since every match
//     compares the whole key.
#include "frame/hash_table/hash_table.h"

#include <algorithm>
#include <bit>
#include <cstdio>
#include <cstdlib>
#include <cstring>

#include "frame/hash_table/hash_functions.h"
#include "frame/storage.h"

namespace {

constexpr uint32_t kMinSize = 64;
constexpr uint32_t kMaxSize = 0x80000000u;

// A chain of equal hashes does not get shorter by more slots. Crowding makes a table grow up to
// this size only; beyond it the load does.
constexpr uint32_t kMaxCrowdedSize = 1u << 20;

constexpr size_t kHeader = offsetof(HashEntry, older);
constexpr size_t kMruHeader = sizeof(HashEntry);

template <class T>
T loadShared(const T &place)
{
    return __atomic_load_n(&place, __ATOMIC_ACQUIRE);
}
template <class T>
void storeShared(T &place, T value)
{
    __atomic_store_n(&place, value, __ATOMIC_RELEASE);
}

// Not an atomic increment: a count may be lost between threads, and that is all.
void countSearch(HashTable *table)
{
    __atomic_store_n(&table->searches, __atomic_load_n(&table->searches, __ATOMIC_RELAXED) + 1, __ATOMIC_RELAXED);
}

bool keepsMru(const HashTable *table) { return table->flags & ZVK_HASH_TABLE_MRU; }
bool isKeyOnly(const HashEntry *entry) { return entry->blockSize == ZVK_HASH_KEY_ONLY; }

uint32_t hashKey(const HashTable *table, const void *key, uint64_t length)
{
    return table->hash == zvkhash::bytes ? zvkhash::bytes(key, length) : table->hash(key, length);
}

HashState *chooseState(HashTable *table, HashState *given, HashState *own)
{
    if (!given) return own;
    return given == ZVK_HASH_TABLE_STATE ? &table->state : given;
}

// The state that an operation works with. Without one from the caller the key is hashed into `own`.
HashState *hashedState(HashTable *table, HashState *given, HashState *own, const void *key, uint64_t length)
{
    if (!given) HashTable_Hash(table, own, key, length);
    return chooseState(table, given, own);
}

// ---- slots

// An array of slots has this in front.
struct SlotArray {
    HashEntry **outgrown; // the array before, in a shared table
    uint64_t reserved;
};
static_assert(sizeof(SlotArray) % 16 == 0);

HashEntry **newSlots(uint32_t size)
{
    void *block = zvkCalloc(1, sizeof(SlotArray) + uint64_t{size} * sizeof(HashEntry *));
    return block ? reinterpret_cast<HashEntry **>(static_cast<SlotArray *>(block) + 1) : nullptr;
}

SlotArray *arrayOf(HashEntry **slots) { return reinterpret_cast<SlotArray *>(slots) - 1; }

void freeSlotArrays(HashEntry **slots)
{
    while (slots) {
        HashEntry **outgrown = arrayOf(slots)->outgrown;
        free(arrayOf(slots));
        slots = outgrown;
    }
}

uint32_t roundUpSize(uint32_t size) { return size > kMaxSize ? kMaxSize : std::bit_ceil(size); }

uint32_t limitOf(uint32_t size, uint32_t load)
{
    switch (load) {
    case 93:
        return size < 16 ? size * 15 / 16 : size - size / 16;
    case 87:
        return size < 8 ? size * 7 / 8 : size - size / 8;
    case 75:
        return size < 8 ? size * 6 / 8 : size - (size / 4 & ~1u);
    default:
        return size;
    }
}

// ---- the list in order of use

// Entries of a table that has been resized are on no list until they are used again.
bool isOnMru(const HashTable *table, const HashEntry *entry)
{
    return entry->older || entry->newer || table->mruHead == entry;
}

void leaveMru(HashTable *table, HashEntry *entry)
{
    if (!isOnMru(table, entry)) return;
    (entry->newer ? entry->newer->older : table->mruHead) = entry->older;
    (entry->older ? entry->older->newer : table->mruTail) = entry->newer;
    entry->older = entry->newer = nullptr;
}

void becomeMruHead(HashTable *table, HashEntry *entry)
{
    if (table->mruHead == entry) return;
    leaveMru(table, entry);
    entry->older = table->mruHead;
    if (table->mruHead) table->mruHead->newer = entry;
    table->mruHead = entry;
    if (!table->mruTail) table->mruTail = entry;
}

// ---- chains

void linkInFront(HashEntry **slot, HashEntry *entry)
{
    HashEntry *head = *slot;
    entry->prev = nullptr;
    storeShared(entry->next, head);
    if (head) head->prev = entry;
    storeShared(*slot, entry);
}

void unlink(HashEntry **slot, HashEntry *entry)
{
    storeShared(entry->prev ? entry->prev->next : *slot, entry->next);
    if (entry->next) entry->next->prev = entry->prev;
}

HashEntry **slotOf(const HashTable *table, const HashEntry *entry)
{
    return &table->slots[entry->hashValue & table->mask];
}

// Links an entry and counts it.
void addEntry(HashTable *table, HashEntry *entry)
{
    HashEntry **slot = slotOf(table, entry);
    ++table->entries;
    if (HashEntry *head = *slot) {
        ++table->collisions;
        ++table->collisionsTotal;
        if (!head->next) {
            ++table->chains;
            ++table->chainsTotal;
            table->chainsMax = std::max(table->chainsMax, table->chains);
        }
    } else {
        ++table->used;
        --table->freeSlots;
    }
    linkInFront(slot, entry);
}

// Unlinks an entry and counts it out. Its `next` stays, for a caller that is going through the
// chain.
void takeOut(HashTable *table, HashEntry *entry)
{
    HashEntry **slot = slotOf(table, entry);
    unlink(slot, entry);
    if (HashEntry *head = *slot) {
        --table->collisions;
        if (!head->next) --table->chains;
    } else {
        --table->used;
        ++table->freeSlots;
    }
    if (keepsMru(table)) leaveMru(table, entry);
    if (table->state.entry == entry) table->state.entry = entry->next;
    --table->entries;
    ++table->removes;
}

void recycle(HashTable *table, HashEntry *entry)
{
    ++table->deletes;
    if (table->free) {
        table->free(entry);
        return;
    }
    HashEntry *&list = entry->parent ? table->freeChildren : table->freeEntries;
    entry->prev = nullptr;
    entry->next = list;
    list = entry;
}

void freeList(HashEntry *&list)
{
    while (HashEntry *entry = list) {
        list = entry->next;
        free(entry);
    }
}

// ---- finding

// The mask is loaded before the slots; see the head of this file.
[[gnu::always_inline]] inline HashEntry *findInChain(const HashTable *table, uint32_t hash, const void *key,
                                                     uint64_t length)
{
    uint32_t mask = loadShared(table->mask);
    HashEntry *const *slots = loadShared(table->slots);
    for (HashEntry *entry = loadShared(slots[hash & mask]); entry; entry = loadShared(entry->next)) {
        if (entry->hashValue == hash && entry->keyLength == length &&
            (entry->key == key || zvkhash::equal(entry->key, key, length)))
            return entry;
    }
    return nullptr;
}

HashEntry *insertHere(HashTable *table, uint32_t hash, const void *key, uint64_t length, const void *value,
                      uint64_t valueLength, bool duplicates, HashEntry *parentEntry);

HashEntry *findInParent(const HashTable *table, uint32_t hash, const void *key, uint64_t length, int32_t touch);

[[gnu::noinline]] void moveToFront(HashTable *table, HashEntry *entry)
{
    HashEntry **slot = slotOf(table, entry);
    unlink(slot, entry);
    linkInFront(slot, entry);
}

inline void touchEntry(HashTable *table, HashEntry *entry, const void *key, uint64_t length, int32_t touch)
{
    if (entry->prev) moveToFront(table, entry);
    // The parent's order of use is what decides which program makes room when storage is short.
    if (touch == 1 && table->parent) findInParent(table, entry->hashValue, key, length, touch);
    if (keepsMru(table)) becomeMruHead(table, entry);
}

[[gnu::noinline]] HashEntry *inheritEntry(HashTable *table, uint32_t hash, const void *key, uint64_t length,
                                          int32_t touch)
{
    HashEntry *parentEntry = findInParent(table, hash, key, length, touch);
    return parentEntry ? insertHere(table, hash, key, length, nullptr, 0, true, parentEntry) : nullptr;
}

[[gnu::always_inline]] inline HashEntry *find(HashTable *table, HashState *state, const void *key, uint64_t length,
                                              int32_t touch, int32_t inherit)
{
    uint32_t hash = state->hashValue;
    HashEntry *entry = findInChain(table, hash, key, length);
    if (entry) {
        if (touch) touchEntry(table, entry, key, length, touch);
    } else if (inherit && table->parent) {
        entry = inheritEntry(table, hash, key, length, touch);
    }
    state->slot = hash & loadShared(table->mask);
    state->entry = entry;
    return entry;
}

[[gnu::noinline]] HashEntry *findInParent(const HashTable *table, uint32_t hash, const void *key, uint64_t length,
                                          int32_t touch)
{
    HashState state = {hash, 0, nullptr};
    countSearch(table->parent);
    return find(table->parent, &state, key, length, touch, 0);
}

// ---- inserting

constexpr uint64_t kAlign = 15;

// Bytes of an entry's block, 0 if there is no such number.
uint64_t blockSizeFor(const HashTable *table, uint64_t length, uint64_t valueLength, bool reference)
{
    uint64_t header = keepsMru(table) ? kMruHeader : kHeader;
    if (valueLength == 0 || reference) return header;
    uint64_t value = 0, size = 0;
    if (valueLength != ZVK_HASH_KEY_ONLY) {
        if (__builtin_add_overflow(valueLength, kAlign, &value)) return 0;
        value &= ~kAlign;
    }
    // Never less than a byte after the key, which keeps it terminated.
    if (__builtin_add_overflow(header + 16, value, &size) || __builtin_add_overflow(size, length, &size)) return 0;
    return size & ~kAlign;
}

// Whether a recycled block has room for `size` bytes. A block of which only the key was copied
// knows the key's length alone.
bool fits(const HashTable *table, const HashEntry *block, uint64_t size, uint64_t length)
{
    if (isKeyOnly(block))
        return length <= block->keyLength && size <= blockSizeFor(table, block->keyLength, ZVK_HASH_KEY_ONLY, false);
    return size <= (block->blockSize ? block->blockSize : blockSizeFor(table, 0, 0, true));
}

HashEntry *takeRecycled(HashTable *table, uint64_t size, uint64_t length, bool reference)
{
    HashEntry *&list = reference ? table->freeChildren : table->freeEntries;
    HashEntry *block = list;
    if (!block) return nullptr;
    list = block->next;
    if (fits(table, block, size, length)) {
        ++table->reuses;
        return block;
    }
    ++table->evicts;
    free(block);
    return nullptr;
}

HashEntry *newBlock(HashTable *table, uint64_t size, uint64_t length, bool reference)
{
    if (size == 0) return nullptr;
    void *block = table->alloc ? table->alloc(size, table->user) : takeRecycled(table, size, length, reference);
    if (!block) block = zvkAlloc(size);
    if (block) memset(block, 0, size);
    return static_cast<HashEntry *>(block);
}

void growIfFull(HashTable *table)
{
    if (table->flags & ZVK_HASH_TABLE_RESIZING) return;
    bool crowded = table->entries / 4 >= table->used && table->size < kMaxCrowdedSize;
    if ((crowded || table->entries >= table->limit) && table->size < kMaxSize)
        HashTable_Resize(table, 2 * table->size, 0);
}

// Inserts into this table alone; with `parentEntry`, an entry that refers to that one.
HashEntry *insertHere(HashTable *table, uint32_t hash, const void *key, uint64_t length, const void *value,
                      uint64_t valueLength, bool duplicates, HashEntry *parentEntry)
{
    if (!duplicates)
        if (HashEntry *present = findInChain(table, hash, key, length)) return present;

    uint64_t size = blockSizeFor(table, length, valueLength, parentEntry != nullptr);
    HashEntry *entry = newBlock(table, size, length, parentEntry != nullptr);
    if (!entry) return nullptr;

    entry->hashValue = hash;
    entry->keyLength = length;
    entry->parent = parentEntry;
    if (parentEntry) {
        entry->key = parentEntry->key;
        entry->value = parentEntry->value;
    } else if (valueLength == 0) {
        entry->key = key;
        entry->value = const_cast<void *>(value);
    } else {
        uint8_t *behind = reinterpret_cast<uint8_t *>(entry) + (keepsMru(table) ? kMruHeader : kHeader);
        uint8_t *keyCopy = behind;
        if (valueLength != ZVK_HASH_KEY_ONLY) {
            if (value) memcpy(behind, value, valueLength);
            keyCopy += (valueLength + kAlign) & ~kAlign;
        }
        if (length) memcpy(keyCopy, key, length);
        entry->value = behind;
        entry->key = keyCopy;
        entry->blockSize = valueLength == ZVK_HASH_KEY_ONLY ? ZVK_HASH_KEY_ONLY : size;
    }

    addEntry(table, entry);
    growIfFull(table);
    if (keepsMru(table)) becomeMruHead(table, entry);
    ++table->inserts;
    return entry;
}

// ---- moving to another array of slots

// Adds the chains of an old array again, each from its end, so that it keeps its order; with
// `offMruOnly`, the entries on no list alone.
void addChains(HashTable *table, HashEntry *const *slots, uint32_t size, bool offMruOnly)
{
    for (uint32_t i = 0; i < size; ++i) {
        HashEntry *last = slots[i];
        if (!last) continue;
        while (last->next) last = last->next;
        for (HashEntry *entry = last, *before; entry; entry = before) {
            before = entry->prev;
            if (!offMruOnly || !isOnMru(table, entry)) addEntry(table, entry);
        }
    }
}

// Adds all entries again, the longest unused first: those that no one used since the last resize,
// then the list from its tail. The list is left empty on purpose.
void addByUse(HashTable *table, HashEntry *const *slots, uint32_t size)
{
    addChains(table, slots, size, true);
    HashEntry *entry = table->mruTail;
    table->mruHead = table->mruTail = nullptr;
    while (entry) {
        HashEntry *newer = entry->newer;
        entry->older = entry->newer = nullptr;
        addEntry(table, entry);
        entry = newer;
    }
}

} // namespace

HashTable *HashTable_Create(const HashParams *params)
{
    HashTable *table = static_cast<HashTable *>(zvkCalloc(1, sizeof(HashTable)));
    if (!table) return nullptr;
    table->size = roundUpSize(std::max(params->size, kMinSize));
    table->slots = newSlots(table->size);
    if (!table->slots) {
        free(table);
        return nullptr;
    }
    table->mask = table->size - 1;
    table->freeSlots = table->size;
    table->load = params->load ? params->load : 75;
    table->limit = limitOf(table->size, table->load);
    table->flags = ZVK_HASH_TABLE_OWNED;
    if (params->flags & ZVK_HASH_MRU) table->flags |= ZVK_HASH_TABLE_MRU;
    if (params->flags & ZVK_HASH_SHARED) table->flags |= ZVK_HASH_TABLE_SHARED;
    table->parent = params->parent;
    table->user = params->user;
    HashRoutine byType = params->flags & ZVK_HASH_INT32   ? zvkhash::int32
                         : params->flags & ZVK_HASH_INT64 ? zvkhash::int64
                                                          : zvkhash::bytes;
    table->hash = params->hash ? params->hash : byType;
    table->compare = params->compare;
    table->print = params->print ? params->print : hashTablePrintEntry;
    table->alloc = params->alloc;
    table->free = params->free;
    table->rehash = params->rehash;
    return table;
}

void HashTable_Destroy(HashTable *table)
{
    if (!table) return;
    HashTable_Clear(table);
    freeList(table->freeEntries);
    freeList(table->freeChildren);
    freeSlotArrays(table->slots);
    table->slots = nullptr;
    if (table->flags & ZVK_HASH_TABLE_OWNED) free(table);
}

void HashTable_Clear(HashTable *table)
{
    if (!table) return;
    // By the slots and not by the figures: the owner's rehash routine may not have kept them.
    for (uint32_t i = 0; i < table->size; ++i) {
        HashEntry *entry = table->slots[i];
        if (!entry) continue;
        storeShared(table->slots[i], static_cast<HashEntry *>(nullptr));
        while (entry) {
            HashEntry *next = entry->next;
            recycle(table, entry);
            entry = next;
        }
    }
    table->removes += table->entries;
    table->entries = table->used = table->collisions = table->chains = 0;
    table->freeSlots = table->size;
    table->mruHead = table->mruTail = nullptr;
    table->state.entry = nullptr;
    freeSlotArrays(arrayOf(table->slots)->outgrown);
    arrayOf(table->slots)->outgrown = nullptr;
}

HashEntry **HashTable_Hash(HashTable *table, HashState *state, const void *key, uint64_t length)
{
    HashState own;
    state = chooseState(table, state, &own);
    countSearch(table);
    uint32_t hash = hashKey(table, key, length);
    uint32_t mask = loadShared(table->mask);
    *state = {hash, hash & mask, nullptr};
    return &loadShared(table->slots)[hash & mask];
}

HashEntry *HashTable_Find(HashTable *table, HashState *state, const void *key, uint64_t length, int32_t touch,
                          int32_t inherit)
{
    HashState own;
    state = chooseState(table, state, &own);
    countSearch(table);
    state->hashValue = hashKey(table, key, length);
    return find(table, state, key, length, touch, inherit);
}

HashEntry *HashTable_FindHashed(HashTable *table, HashState *state, const void *key, uint64_t length, int32_t touch,
                                int32_t inherit)
{
    HashState own;
    return find(table, hashedState(table, state, &own, key, length), key, length, touch, inherit);
}

HashEntry *HashTable_Insert(HashTable *table, HashState *state, const void *key, uint64_t length, const void *value,
                            uint64_t valueLength, int32_t duplicates, int32_t alsoParent)
{
    HashState own;
    uint32_t hash = hashedState(table, state, &own, key, length)->hashValue;
    HashEntry *parentEntry = nullptr;
    if (alsoParent && table->parent) {
        parentEntry = insertHere(table->parent, hash, key, length, value, valueLength, duplicates, nullptr);
        if (!parentEntry) return nullptr;
    }
    return insertHere(table, hash, key, length, value, valueLength, duplicates, parentEntry);
}

int32_t HashTable_Delete(HashTable *table, HashState *state, const void *key, uint64_t length)
{
    HashState own;
    state = hashedState(table, state, &own, key, length);
    if (HashEntry *entry = find(table, state, key, length, 0, 0)) {
        takeOut(table, entry);
        state->entry = entry->next;
        recycle(table, entry);
    }
    return 0;
}

HashEntry *HashTable_Remove(HashTable *table, const void *key, uint64_t length)
{
    HashState state;
    HashEntry *entry = HashTable_Find(table, &state, key, length, 0, 0);
    if (entry) takeOut(table, entry);
    return entry;
}

HashEntry *HashTable_Next(const HashTable *table, const HashEntry *entry)
{
    if (HashTable_IsEmpty(table)) return nullptr;
    if (entry && entry->next) return entry->next;
    for (uint32_t i = entry ? (entry->hashValue & table->mask) + 1 : 0; i < table->size; ++i)
        if (table->slots[i]) return table->slots[i];
    return nullptr;
}

int32_t HashTable_IsEmpty(const HashTable *table) { return !table || table->entries == 0; }

void HashTable_Resize(HashTable *table, uint32_t size, uint32_t load)
{
    if (!table || (table->flags & ZVK_HASH_TABLE_RESIZING)) return;
    table->flags |= ZVK_HASH_TABLE_RESIZING;
    if (size == 0)
        size = static_cast<uint32_t>(std::min<uint64_t>(2 * uint64_t{std::max(table->entries, 16u)}, kMaxSize));
    size = roundUpSize(size);
    HashEntry **slots = newSlots(size);
    if (!slots) {
        fputs("HashTable_Resize alloc error, continuing\n", stderr);
        table->flags &= static_cast<uint8_t>(~ZVK_HASH_TABLE_RESIZING);
        return;
    }

    HashEntry **oldSlots = table->slots;
    uint32_t oldSize = table->size;
    ++(size >= oldSize ? table->grows : table->shrinks);
    storeShared(table->slots, slots); // before the mask; see the head of this file
    storeShared(table->mask, size - 1);
    table->size = size;
    if (load) table->load = load;
    table->limit = limitOf(size, table->load);
    table->used = table->entries = table->collisions = table->chains = 0;
    table->freeSlots = size;
    table->state.slot = table->state.hashValue & table->mask;

    if (table->rehash)
        table->rehash(table->user, oldSlots, oldSize - 1);
    else if (keepsMru(table))
        addByUse(table, oldSlots, oldSize);
    else
        addChains(table, oldSlots, oldSize, false);

    if (table->flags & ZVK_HASH_TABLE_SHARED)
        arrayOf(slots)->outgrown = oldSlots;
    else
        freeSlotArrays(oldSlots);
    table->flags &= static_cast<uint8_t>(~ZVK_HASH_TABLE_RESIZING);
}
