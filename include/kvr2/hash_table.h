/**
 * The hash table behind the run-time library's name tables: programs, EXTERNAL files, EXTERNAL data
 * items.
 *
 * It keys on byte strings and keeps entries in chains, in a power of two of slots that doubles when
 * the table fills. It can keep its entries in order of use (MRU), and it can have a parent: a run
 * unit's table so looks through to the process's. Deleted entries go to free lists and are used
 * again. The table counts all it does; `HashTable_Stats` shows the figures.
 *
 * @code
 *     HashParams params = {0};
 *     HashTable *table = HashTable_Create(&params);
 *     HashState state;
 *     HashEntry *entry = HashTable_Find(table, &state, "PAYROLL", 7, 1, 0);
 *     if (!entry)
 *         entry = HashTable_Insert(table, &state, "PAYROLL", 7, &lle, sizeof lle, 0, 0);   // hashed once for both
 *     ...
 *     HashTable_Destroy(table);
 * @endcode
 *
 * @par States
 * A `HashState` carries a key's hash from one operation to the next. Wherever an operation takes
 * one, null means "none, hash the key" and ZVK_HASH_TABLE_STATE means the state that is part of the
 * table.
 *
 * @par Threads
 * The table has no lock: its owner serialises all operations. One exception: in a table made with
 * ZVK_HASH_SHARED, `HashTable_Find` and `HashTable_FindHashed` with `touch` 0, `inherit` 0 and a
 * state of the caller's own may run in any number of threads beside one `HashTable_Insert`. Such a
 * lookup sees every entry whole or not at all, but can miss one while the table grows; who misses
 * looks again under the lock. The figures are not exact then.
 */
#ifndef KVR2_HASH_TABLE_H
#define KVR2_HASH_TABLE_H

#include "kvr2/export.h"

ZVK_BEGIN_DECLS

typedef struct HashTable HashTable;
typedef struct HashEntry HashEntry;

/**
 * An entry. 80 bytes in a table with MRU; in any other it ends, after 64 bytes, before `older`.
 * Copied values and keys follow it.
 */
struct HashEntry {
    /**
     * entry of the parent table that this one refers to, or null; `key` and `value` are then that
     * entry's
     */
    HashEntry *parent;
    HashEntry *prev; /**< chain, towards its front */
    HashEntry *next; /**< chain, towards its end */
    const void *key; /**< a copied key has a zero byte after it */
    void *value;
    uint64_t keyLength; /**< bytes */
    /**
     * 0: nothing was copied; ZVK_HASH_KEY_ONLY: the key was; otherwise bytes of the whole block,
     * this header included
     */
    uint64_t blockSize;
    uint32_t hashValue;
    uint32_t reserved60;
    HashEntry *older; /**< MRU only */
    HashEntry *newer; /**< MRU only */
};

ZVK_AT(HashEntry, next, 16);
ZVK_AT(HashEntry, key, 24);
ZVK_AT(HashEntry, value, 32);
ZVK_AT(HashEntry, keyLength, 40);
ZVK_AT(HashEntry, blockSize, 48);
ZVK_AT(HashEntry, hashValue, 56);
ZVK_AT(HashEntry, older, 64);
ZVK_STATIC_ASSERT(sizeof(HashEntry) == 80, "HashEntry");

/** What one operation found out about a key, for the next. */
typedef struct HashState {
    uint32_t hashValue;
    uint32_t slot;    /**< index into `HashTable.slots` */
    HashEntry *entry; /**< the entry found, or null */
} HashState;

ZVK_AT(HashState, entry, 8);
ZVK_STATIC_ASSERT(sizeof(HashState) == 16, "HashState");

/** The hash of a key of `length` bytes. Must not change for a key as long as it is in a table. */
typedef uint32_t (*HashRoutine)(const void *key, uint64_t length);
/** Kept for the table's owner; the table itself compares lengths, pointers and bytes. */
typedef int32_t (*HashCompareRoutine)(const void *key1, const void *key2, uint64_t length);
/** Shows an entry on stderr; `number` counts from 1 in each list of a dump. */
typedef void (*HashPrintRoutine)(uint64_t number, const HashEntry *entry);
/**
 * Gives a block of `size` bytes for an entry, 16-byte aligned; with null the table takes one from
 * the heap.
 */
typedef void *(*HashAllocRoutine)(uint64_t size, uint64_t user);
/**
 * Takes back an entry that left the table. Without such a routine it goes to a free list and in the
 * end to free().
 */
typedef void (*HashFreeRoutine)(HashEntry *entry);
/**
 * Moves every entry under `oldSlots` (`oldMask` + 1 chains) into the table's new slots, and counts
 * it.
 */
typedef void (*HashRehashRoutine)(uint64_t user, HashEntry **oldSlots, uint32_t oldMask);

/** A table. 224 bytes, 16-byte aligned; readable by all, written by the operations only. */
struct HashTable {
    HashTable *parent;
    HashEntry **slots;       /**< array of `size` chains */
    HashEntry *mruHead;      /**< most recently used */
    HashEntry *mruTail;      /**< least recently used */
    HashEntry *freeEntries;  /**< recycled entries that had a key and value of their own */
    HashEntry *freeChildren; /**< recycled entries that referred to a parent's */
    HashState state;         /**< the table's own */
    uint32_t size;           /**< slots, a power of two */
    uint32_t load;  /**< 75, 87 or 93: percent of the slots that may fill before the table grows; any other: all */
    uint32_t limit; /**< the number of entries that `load` comes to: the one that reaches it makes the table grow */
    uint32_t used;  /**< slots in use */
    uint32_t entries;
    uint32_t mask; /**< `size` - 1 */
    uint32_t grows;
    uint32_t shrinks;
    uint32_t freeSlots;
    uint32_t searches; /**< keys hashed, and lookups passed on by a child table */
    uint32_t inserts;
    uint32_t deletes; /**< entries taken out and recycled */
    uint32_t removes; /**< entries taken out in any way */
    uint32_t collisions;
    uint32_t chains; /**< chains of more than one entry */
    uint32_t collisionsTotal;
    uint32_t chainsTotal;
    uint32_t chainsMax;
    uint32_t reuses; /**< entries taken from a free list */
    uint32_t evicts; /**< entries on a free list that did not fit what was wanted, and were freed */
    uint32_t entryBytes;
    uint8_t flags; /**< ZVK_HASH_TABLE_... */
    uint8_t reserved149[3];
    HashRoutine hash;
    HashCompareRoutine compare;
    HashPrintRoutine print;
    HashAllocRoutine alloc;
    HashFreeRoutine free;
    HashRehashRoutine rehash;
    uint64_t user; /**< given to `alloc` and `rehash` */
    uint64_t spare[2];
};

ZVK_AT(HashTable, slots, 8);
ZVK_AT(HashTable, mruHead, 16);
ZVK_AT(HashTable, mruTail, 24);
ZVK_AT(HashTable, freeEntries, 32);
ZVK_AT(HashTable, freeChildren, 40);
ZVK_AT(HashTable, state, 48);
ZVK_AT(HashTable, size, 64);
ZVK_AT(HashTable, entries, 80);
ZVK_AT(HashTable, freeSlots, 96);
ZVK_AT(HashTable, removes, 112);
ZVK_AT(HashTable, chainsMax, 132);
ZVK_AT(HashTable, entryBytes, 144);
ZVK_AT(HashTable, flags, 148);
ZVK_AT(HashTable, hash, 152);
ZVK_AT(HashTable, rehash, 192);
ZVK_AT(HashTable, user, 200);
ZVK_AT(HashTable, spare, 208);
ZVK_STATIC_ASSERT(sizeof(HashTable) == 224, "HashTable");

/** What a new table is to be; zero it first. */
typedef struct HashParams {
    HashTable *parent;
    uint64_t user;
    HashRoutine hash; /**< null: by the key type that `flags` names */
    HashCompareRoutine compare;
    HashPrintRoutine print; /**< null: one line with addresses, key and sizes */
    HashAllocRoutine alloc;
    HashFreeRoutine free;
    HashRehashRoutine rehash;
    uint32_t size;  /**< slots; rounded up to a power of two and to 64 at least */
    uint32_t load;  /**< 75 (also for 0), 87 or 93; see `HashTable.load` */
    uint32_t flags; /**< ZVK_HASH_MRU ... ZVK_HASH_INT64 */
} HashParams;

ZVK_AT(HashParams, hash, 16);
ZVK_AT(HashParams, size, 64);
ZVK_AT(HashParams, flags, 72);
ZVK_STATIC_ASSERT(sizeof(HashParams) == 80, "HashParams");

enum {
    ZVK_HASH_MRU = 1, /**< `HashParams.flags`: keep the entries in order of use */
    ZVK_HASH_SHARED =
        2, /**< lookups run beside inserts: slot arrays that the table outgrew are kept until it is cleared */
    ZVK_HASH_INT32 = 4, /**< keys are 32-bit integers */
    ZVK_HASH_INT64 = 8, /**< keys are 64-bit integers */

    ZVK_HASH_TABLE_OWNED = 0x01,    /**< `HashTable.flags`: HashTable_Destroy frees the record */
    ZVK_HASH_TABLE_REPAIR = 0x02,   /**< HashTable_Stats puts wrong figures right */
    ZVK_HASH_TABLE_RESIZING = 0x04, /**< entries are being moved */
    ZVK_HASH_TABLE_MRU = 0x08,      /**< see ZVK_HASH_MRU */
    ZVK_HASH_TABLE_SHARED = 0x10    /**< see ZVK_HASH_SHARED */
};

/** The table's own state, where an operation takes a `HashState`. */
#define ZVK_HASH_TABLE_STATE ((HashState *)~(uintptr_t)0)

/** A value length: copy the key only; the entry's value is its key. */
#define ZVK_HASH_KEY_ONLY (~(uint64_t)0)

/**
 * Makes a table.
 *
 * @return the table, or null when storage is short; HashTable_Destroy ends it
 * @threads any
 */
ZVK_EXPORT HashTable *HashTable_Create(const HashParams *params);

/**
 * Empties a table, frees its free lists and slots and, if it owns its record, the record. Null does
 * nothing. @threads the table's owner
 */
ZVK_EXPORT void HashTable_Destroy(HashTable *table);

/**
 * Takes out and recycles all entries. Slots and free lists stay. Null does nothing. @threads the
 * table's owner
 */
ZVK_EXPORT void HashTable_Clear(HashTable *table);

/**
 * Hashes a key, and counts a search.
 *
 * @param state   receives hash and slot; its entry becomes null
 * @param key     `length` bytes, at any alignment; for a table of integers, the integer
 * @return the address of the key's slot
 */
ZVK_EXPORT HashEntry **HashTable_Hash(HashTable *table, HashState *state, const void *key, uint64_t length);

/**
 * Looks a key up: HashTable_Hash, then HashTable_FindHashed.
 *
 * @return the entry or null
 * @threads see the head of this file
 */
ZVK_EXPORT HashEntry *HashTable_Find(HashTable *table, HashState *state, const void *key, uint64_t length,
                                     int32_t touch, int32_t inherit);

/**
 * Looks up a key whose hash is in the state.
 *
 * @param state    in: hash (a null state: the key is hashed here); out: slot, and the entry or null
 * @param touch    0: leave all orders as they are. Otherwise a found entry goes to the front of its
 *                 chain and of the MRU list;
 *                 1: in the parent table too
 * @param inherit  nonzero: a key that only the parent table has gets an entry here that refers to
 *                 the parent's
 * @return the entry or null; null also when storage for an inherited entry is short
 */
ZVK_EXPORT HashEntry *HashTable_FindHashed(HashTable *table, HashState *state, const void *key, uint64_t length,
                                           int32_t touch, int32_t inherit);

/**
 * Adds a key.
 *
 * @param state        in: the key's hash, from a lookup (a null state: the key is hashed here)
 * @param valueLength  0: nothing is copied, `key` and `value` must live as long as the entry.
 *                     ZVK_HASH_KEY_ONLY: the key is copied, `value`
 *                     is ignored. Otherwise value and key are copied; a null `value` gives zeros
 * @param duplicates   0: a key that is there already keeps its entry and value, and that entry is
 *                     the result
 * @param alsoParent   nonzero: the key and value go into the parent table, if there is one, and the
 *                     entry here refers to that one
 * @return the entry, or null when storage is short
 */
ZVK_EXPORT HashEntry *HashTable_Insert(HashTable *table, HashState *state, const void *key, uint64_t length,
                                       const void *value, uint64_t valueLength, int32_t duplicates, int32_t alsoParent);

/**
 * Takes a key's entry out, if there is one, and recycles it. The parent's entry, if it referred to
 * one, stays.
 *
 * @param state  in: the key's hash (a null state: the key is hashed here); out: `entry` is the
 *               entry that followed in the chain
 * @return 0
 */
ZVK_EXPORT int32_t HashTable_Delete(HashTable *table, HashState *state, const void *key, uint64_t length);

/**
 * Takes a key's entry out and hands it over.
 *
 * @return the entry, now the caller's (a block for free(), unless the table has an `alloc`
 *         routine), or null. HashTable_Next still
 *         goes on from it, until the table changes.
 */
ZVK_EXPORT HashEntry *HashTable_Remove(HashTable *table, const void *key, uint64_t length);

/**
 * Goes through the entries, by slot.
 *
 * @param entry  null for the first, else the one before
 * @return the next entry, null after the last. An insert or a lookup with `touch` in between may
 *         repeat or leave out entries.
 */
ZVK_EXPORT HashEntry *HashTable_Next(const HashTable *table, const HashEntry *entry);

/** 1 for a table without entries and for null, else 0. */
ZVK_EXPORT int32_t HashTable_IsEmpty(const HashTable *table);

/** Shows all entries on stderr; nothing for an empty table. */
ZVK_EXPORT void HashTable_Dump(const HashTable *table);

/**
 * Recounts the chains and shows the table's figures on stderr. The first report that finds wrong
 * figures says so and sets ZVK_HASH_TABLE_REPAIR; the next puts them right.
 */
ZVK_EXPORT void HashTable_Stats(HashTable *table);

/**
 * Gives the table another number of slots. It stays as it is, with a line on stderr, when storage
 * is short.
 *
 * A table with MRU forgets the order of use: its list starts afresh with the next entries that are
 * inserted or touched.
 *
 * @param size  rounded up to a power of two; 0: twice the number of entries, 32 at least
 * @param load  see `HashTable.load`; 0 leaves it
 */
ZVK_EXPORT void HashTable_Resize(HashTable *table, uint32_t size, uint32_t load);

ZVK_END_DECLS

#endif
