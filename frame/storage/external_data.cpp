// EXTERNAL data items: storage that the programs of a run unit share by name.
//
// The run unit has a hash table of them. The entry's value is a block made once and never moved:
//
//     | length, 8 bytes | data, `length` bytes | name, terminated |
//
// The name is a copy, because the item outlives the program that was the first to name it: that
// program can be cancelled and unloaded, and its table of names with it.
//
// Every entry of every program that has EXTERNAL items comes through here, on any thread, and
// nearly always finds what it looks for. So the first lookup takes no lock: the table is one that
// can be searched beside an insert (frame/hash_table.cpp says how), and items are not removed while
// the run unit runs. A miss is settled under externalMutex.
#include <algorithm>
#include <climits>
#include <cstdio>
#include <cstdlib>
#include <cstring>

#include "frame/hash_table/hash_table.h"
#include "frame/locks.h"
#include "frame/message_calls.h"
#include "frame/run_unit.h"
#include "frame/storage.h"

namespace {

struct ExternalItem {
    uint64_t length;
    char data[];
};

int printLength(uint64_t length) { return static_cast<int>(std::min<uint64_t>(length, INT_MAX)); }

void freeItem(HashEntry *entry)
{
    free(entry->value);
    free(entry);
}

void printItem(uint64_t, const HashEntry *entry)
{
    const ExternalItem *item = static_cast<const ExternalItem *>(entry->value);
    fprintf(stderr, "\tName: %s\n\tLen:  %ld\n\tData: %*.*s\n", static_cast<const char *>(entry->key),
            static_cast<long>(item->length), printLength(item->length), printLength(item->length), item->data);
}

HashTable *makeTable()
{
    HashParams params = {};
    params.free = freeItem;
    params.print = printItem;
    params.flags = ZVK_HASH_SHARED;
    return HashTable_Create(&params);
}

// The run unit's table, made on first use.
HashTable *tableOf(Runcom *runcom)
{
    HashTable *table = __atomic_load_n(&runcom->externalVars, __ATOMIC_ACQUIRE);
    if (table) return table;
    ZvkGuard guard(&externalMutex);
    table = runcom->externalVars;
    if (!table) {
        table = makeTable();
        __atomic_store_n(&runcom->externalVars, table, __ATOMIC_RELEASE);
    }
    return table;
}

// A row as it is in compiled code's table, its name terminated.
struct Row {
    uint32_t length;
    uint32_t nameLength;
    char name[sizeof(ZvkExternalRow::name) + 1];

    explicit Row(const uint8_t *bytes)
    {
        ZvkExternalRow row;
        memcpy(&row, bytes, sizeof row);
        length = row.length;
        nameLength = static_cast<uint32_t>(strnlen(row.name, sizeof row.name));
        memcpy(name, row.name, nameLength);
        name[nameLength] = 0;
    }
};

// Makes an item and enters it; the state has the name's hash. Null when storage is short.
ExternalItem *makeItem(HashTable *table, HashState *state, const Row &row)
{
    ExternalItem *item =
        static_cast<ExternalItem *>(zvkCalloc(1, sizeof(ExternalItem) + row.length + row.nameLength + 1));
    if (!item) return nullptr;
    item->length = row.length;
    char *name = item->data + row.length;
    memcpy(name, row.name, row.nameLength);
    if (HashTable_Insert(table, state, name, row.nameLength, item, 0, 0, 0)) return item;
    free(item);
    return nullptr;
}

// Messages are written with the mutex released: they can end the run unit, on this very thread.
void *resolve(HashTable *table, const Row &row)
{
    HashState state;
    ExternalItem *item = nullptr;
    if (HashEntry *entry = HashTable_Find(table, &state, row.name, row.nameLength, 0, 0)) {
        item = static_cast<ExternalItem *>(entry->value);
    } else {
        ZvkGuard guard(&externalMutex);
        entry = HashTable_FindHashed(table, &state, row.name, row.nameLength, 0, 0);
        item = entry ? static_cast<ExternalItem *>(entry->value) : makeItem(table, &state, row);
    }
    if (!item) {
        msg::noStorage(ZVK_MSG_SEVERE);
        return nullptr;
    }
    if (item->length != row.length) msg::externalItemLength(row.name, ZVK_MSG_SEVERE);
    return item->data;
}

} // namespace

void _zvkExtVarInit(const uint32_t *items, void **addresses)
{
    uint32_t count = *items;
    Runcom *runcom = zvkCurrentRuncom();
    HashTable *table = runcom ? tableOf(runcom) : nullptr;
    if (!table) {
        msg::noStorage(ZVK_MSG_SEVERE);
        std::fill_n(addresses, count, nullptr);
        return;
    }
    const uint8_t *row = reinterpret_cast<const uint8_t *>(items) + ZVK_EXTERNAL_ROWS;
    for (uint32_t i = 0; i < count; ++i, row += sizeof(ZvkExternalRow)) addresses[i] = resolve(table, Row(row));
}
