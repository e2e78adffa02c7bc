// What the frame's own files use of the hash table beyond kvr2/hash_table.h.
#pragma once

#include "kvr2/hash_table.h"

// Deletes a key that has not been hashed yet.
inline int32_t HashTable_Delete(HashTable *table, const void *key, uint64_t length)
{
    return HashTable_Delete(table, nullptr, key, length);
}

// The print routine of a table that was given none (hash_table_report.cpp).
void hashTablePrintEntry(uint64_t number, const HashEntry *entry);
