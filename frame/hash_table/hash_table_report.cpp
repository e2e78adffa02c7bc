// What a hash table shows of itself on stderr: its entries, and its figures with a recount of the
// chains.
#include <algorithm>
#include <climits>
#include <cstdio>

#include "frame/hash_table/hash_table.h"

namespace {

int printLength(uint64_t length) { return static_cast<int>(std::min<uint64_t>(length, INT_MAX)); }

double ratio(uint32_t figure, uint32_t base) { return static_cast<double>(figure) / (base ? base : 1); }
double percent(uint32_t figure, uint32_t base) { return 100 * ratio(figure, base); }

struct ChainCount {
    size_t used = 0;
    size_t entries = 0;
    size_t collisions = 0;
    size_t chains = 0; // of more than one entry
    size_t shortest = 0;
    size_t longest = 0;
    const HashEntry *longestChain = nullptr;
};

ChainCount countChains(const HashTable *table)
{
    ChainCount count;
    for (uint32_t i = 0; i < table->size; ++i) {
        size_t length = 0;
        for (const HashEntry *entry = table->slots[i]; entry; entry = entry->next) ++length;
        if (length == 0) continue;
        count.shortest = count.used ? std::min(count.shortest, length) : length;
        ++count.used;
        count.entries += length;
        count.collisions += length - 1;
        count.chains += length > 1;
        if (length > count.longest) {
            count.longest = length;
            count.longestChain = table->slots[i];
        }
    }
    return count;
}

void showLongestChain(const ChainCount &count)
{
    if (count.chains == 0) return;
    fputs("Largest hash chain: ", stderr);
    for (const HashEntry *entry = count.longestChain; entry; entry = entry->next) {
        int length = printLength(entry->keyLength);
        fprintf(stderr, "%*.*s,", length, length, static_cast<const char *>(entry->key));
    }
    fputc('\n', stderr);
}

// A first finding is shown and makes the next report mend it. Both checks flip the same bit, so two
// findings at once cancel out.
void checkFigures(HashTable *table, const ChainCount &count)
{
    if (count.collisions != table->collisions || count.chains != table->chains) {
        if (table->flags & ZVK_HASH_TABLE_REPAIR) {
            table->collisions = static_cast<uint32_t>(count.collisions);
            table->chains = static_cast<uint32_t>(count.chains);
            table->used = static_cast<uint32_t>(count.used);
            table->freeSlots = table->size - table->used;
        } else {
            fprintf(stderr,
                    "Hash stats bad...\n  Collisions = %zd vs %zd (actual)\n  Chains     = %zd vs %zd (actual)\n",
                    static_cast<ssize_t>(table->collisions), static_cast<ssize_t>(count.collisions),
                    static_cast<ssize_t>(table->chains), static_cast<ssize_t>(count.chains));
            table->flags ^= ZVK_HASH_TABLE_REPAIR;
        }
    }
    if (table->entries != table->inserts - table->removes) {
        fputs("Hash entry counts bad...\n", stderr);
        table->flags ^= ZVK_HASH_TABLE_REPAIR;
    }
}

} // namespace

void hashTablePrintEntry(uint64_t number, const HashEntry *entry)
{
    // A key that was not copied need not be terminated; the precision ends it.
    fprintf(stderr, "  %lu:0x%p key=(%ld)@0x%p %.*s value=(%ld)@0x%p parent=0x%p\n", number,
            static_cast<const void *>(entry), static_cast<long>(entry->keyLength), entry->key,
            printLength(entry->keyLength), static_cast<const char *>(entry->key), static_cast<long>(entry->blockSize),
            entry->value, static_cast<const void *>(entry->parent));
}

void HashTable_Dump(const HashTable *table)
{
    if (HashTable_IsEmpty(table)) return;
    fprintf(stderr, "Hash table @0x%p contents:\n", static_cast<const void *>(table));
    fprintf(stderr, "Entries: %d\n", static_cast<int>(table->entries));
    fprintf(stderr, "State:   0x%x %d 0x%p\n", table->state.hashValue, static_cast<int>(table->state.slot),
            static_cast<const void *>(table->state.entry));
    uint64_t number = 0;
    for (uint32_t i = 0; i < table->size; ++i) {
        if (table->slots[i]) fprintf(stderr, "Slot # %d\n", static_cast<int>(i));
        for (const HashEntry *entry = table->slots[i]; entry; entry = entry->next) table->print(++number, entry);
    }
    if (!(table->flags & ZVK_HASH_TABLE_MRU)) return;
    fputs("MRU ordering:\n", stderr);
    number = 0;
    for (const HashEntry *entry = table->mruHead; entry; entry = entry->older) table->print(++number, entry);
}

void HashTable_Stats(HashTable *table)
{
    if (!table) return;
    ChainCount count = countChains(table);
    showLongestChain(count);
    checkFigures(table, count);

    auto figure = [](uint32_t value) { return static_cast<ssize_t>(value); };
    // An entry that was deleted counts as deleted and as removed, so this can go below zero.
    int64_t lookups = int64_t{table->searches} - table->inserts - table->deletes - table->removes;
    fprintf(stderr,
            "Hash table at: %p\n"
            "\tParent at:  %p\n"
            "\tSlots at:   %p\n"
            "\tSize:       %zd\n"
            "\t  Mask:       %zx\n"
            "\t  Avail:      %zd (%.0f%%)\n"
            "\t    Used:        %zd (%.0f%% of Avail, %.0f%% of Size)\n"
            "\t    Free:        %zd (%.0f%% of Avail, %.0f%% of Size)\n"
            "\tResizes:    %d %c, +%zd -%zd\n"
            "\tSearches:   %zd\n"
            "\t  Lookups:    %zd (%0.f%%)\n"
            "\t  Inserts:    %zd (%.0f%%)\n"
            "\t  Deletes:    %zd (%.0f%%)\n"
            "\t  Removes:    %zd (%.0f%%)\n"
            "\t  Reuses:     %zd (%.0f%%)\n"
            "\t  Evicts:     %zd (%.0f%%)\n"
            "\tEntries:    %zd\n"
            "\tCollisions: %zd (%.0f%% of Entries, %0.f%% of Used)\n"
            "\t  Total:      %zd (%.0f%% of Inserts)\n"
            "\t  Chains:     %zd (%.0f%% of Used)\n"
            "\t    Total:      %zd\n"
            "\t    Max:        %zd\n"
            "\t    Min len:    %zd\n"
            "\t    Max len:    %zd\n"
            "\t    Avg len:    %0.2f\n"
            "\tAvg Search len: %.2f of Used, %.2f of Avail, %.2f of Size\n"
            "\tAvg entry size: %0.2f\n"
            "\tBad stats:      %d\n",
            static_cast<void *>(table), static_cast<void *>(table->parent), static_cast<void *>(table->slots),
            figure(table->size), size_t{table->mask}, figure(table->limit), percent(table->limit, table->size),
            figure(table->used), percent(table->used, table->limit), percent(table->used, table->size),
            figure(table->freeSlots), percent(table->freeSlots, table->limit), percent(table->freeSlots, table->size),
            static_cast<int>(table->grows + table->shrinks), table->flags & ZVK_HASH_TABLE_RESIZING ? 'A' : ' ',
            figure(table->grows), figure(table->shrinks), figure(table->searches), static_cast<ssize_t>(lookups),
            100 * static_cast<double>(lookups) / (table->searches ? table->searches : 1), figure(table->inserts),
            percent(table->inserts, table->searches), figure(table->deletes), percent(table->deletes, table->searches),
            figure(table->removes), percent(table->removes, table->searches), figure(table->reuses),
            percent(table->reuses, table->inserts), figure(table->evicts), percent(table->evicts, table->inserts),
            figure(table->entries), figure(table->collisions), percent(table->collisions, table->entries),
            percent(table->collisions, table->used), figure(table->collisionsTotal),
            percent(table->collisionsTotal, table->inserts), figure(table->chains), percent(table->chains, table->used),
            figure(table->chainsTotal), figure(table->chainsMax), static_cast<ssize_t>(count.shortest),
            static_cast<ssize_t>(count.longest),
            count.used ? static_cast<double>(count.entries) / static_cast<double>(count.used) : 0.0,
            ratio(table->entries, table->used), ratio(table->entries, table->limit), ratio(table->entries, table->size),
            ratio(table->entryBytes, table->entries), table->flags & ZVK_HASH_TABLE_REPAIR ? 1 : 0);
}
