// SORT of a table in working storage.
//
// The keys of each element are rewritten once into a byte string (kvr2/sort_keys.h), with the
// element's position after it, so that comparing needs no types and no two rows are equal. What is
// sorted is an index whose entries carry the first eight bytes of the string: most compares are one
// compare of two integers and touch no row.
//
//     row       key string, zeros to a multiple of 4, position (native)
//     entry     first 8 bytes of the row as a big-endian number, row number
//
// The position is compared byte by byte in native order like all the rest, its low byte first: of
// more than 256 elements with equal keys number 256 comes out before number 1. Compiled programs
// see this order; it stays.
//
// A small table is copied and written back row by row. In a larger one the elements move within the
// table along the cycles of the permutation, each once.
#include <algorithm>
#include <cstdarg>
#include <cstring>

#include "kvr2/sort_keys.h"

#include "base/bytes.h"
#include "frame/messages.h"
#include "frame/storage.h"

namespace {

constexpr uint32_t kSmallElement = 100;
constexpr uint32_t kSmallCount = 200;
constexpr int32_t kMaxKeys = 64; // more are taken from storage

struct Entry {
    uint64_t prefix;
    uint32_t row;
};

struct TableSort {
    uint8_t *table;
    uint32_t elementLength;
    uint32_t count;
    uint64_t rowBytes; // key string, padding and position, in bytes
    uint8_t *rows;
    Entry *index;
};

uint64_t loadPrefix(const uint8_t *row) { return loadBig<uint64_t>(row); }

// Space for the key strings of one element; 0 if a key is not valid.
uint64_t keySpace(const TableSortKey *const *keys, int32_t keyCount, uint32_t elementLength)
{
    uint64_t space = 0;
    for (int32_t i = 0; i < keyCount; i++) {
        const TableSortKey *key = keys[i];
        uint64_t own = key->keyType <= ZVK_KEY_NATIONAL ? zvkKeySpace(key) : 0;
        if (own == 0 || uint64_t{key->offset} + key->length > elementLength) return 0;
        space += own;
    }
    return space;
}

void buildRows(const TableSort &sort, const TableSortKey *const *keys, int32_t keyCount, const uint8_t *collating)
{
    for (uint32_t i = 0; i < sort.count; i++) {
        uint8_t *row = sort.rows + i * sort.rowBytes, *end = row;
        const uint8_t *element = sort.table + uint64_t{i} * sort.elementLength;
        for (int32_t k = 0; k < keyCount; k++) end = zvkNormaliseKey(keys[k], element, collating, 0, end);
        while ((end - row) & 3) *end++ = 0;
        memcpy(end, &i, sizeof i);
        end += sizeof i;
        // Rows of equal keys have equal length; zeros up to the row's end make them all alike.
        memset(end, 0, static_cast<size_t>(row + sort.rowBytes - end));
        sort.index[i] = {loadPrefix(row), i};
    }
}

void sortIndex(const TableSort &sort)
{
    const uint8_t *rows = sort.rows;
    uint64_t rowBytes = sort.rowBytes;
    std::sort(sort.index, sort.index + sort.count, [rows, rowBytes](const Entry &a, const Entry &b) {
        if (a.prefix != b.prefix) return a.prefix < b.prefix;
        return memcmp(rows + a.row * rowBytes + 8, rows + b.row * rowBytes + 8, rowBytes - 8) < 0;
    });
}

void copyBack(const TableSort &sort, uint8_t *copy)
{
    uint64_t length = sort.elementLength;
    memcpy(copy, sort.table, length * sort.count);
    for (uint32_t i = 0; i < sort.count; i++)
        memcpy(sort.table + i * length, copy + sort.index[i].row * length, length);
}

void followCycles(const TableSort &sort, uint8_t *scratch)
{
    uint64_t length = sort.elementLength;
    for (uint32_t start = 0; start < sort.count; start++) {
        if (sort.index[start].row == start) continue;
        memcpy(scratch, sort.table + start * length, length);
        uint32_t to = start;
        for (;;) {
            uint32_t from = sort.index[to].row;
            sort.index[to].row = to; // in place
            if (from == start) break;
            memcpy(sort.table + to * length, sort.table + from * length, length);
            to = from;
        }
        memcpy(sort.table + to * length, scratch, length);
    }
}

void sortTable(TableSort &sort, const TableSortKey *const *keys, int32_t keyCount, const uint8_t *collating)
{
    uint64_t space = keySpace(keys, keyCount, sort.elementLength);
    if (space == 0) return;
    bool small = sort.elementLength <= kSmallElement && sort.count <= kSmallCount;
    sort.rowBytes = std::max<uint64_t>(((space + 3) & ~uint64_t{3}) + sizeof(uint32_t), sizeof(uint64_t));
    uint64_t copyBytes = uint64_t{sort.elementLength} * (small ? sort.count : 1);
    uint64_t rowsBytes, arenaBytes;
    bool fits = !__builtin_mul_overflow(sort.rowBytes, uint64_t{sort.count}, &rowsBytes) &&
                !__builtin_add_overflow(rowsBytes, copyBytes, &arenaBytes);
    sort.rows = fits ? static_cast<uint8_t *>(zvkAlloc(arenaBytes)) : nullptr;
    sort.index = static_cast<Entry *>(zvkAlloc(sizeof(Entry) * uint64_t{sort.count}));
    if (!sort.rows || !sort.index) {
        zvkNoStorage();
    } else {
        buildRows(sort, keys, keyCount, collating);
        sortIndex(sort);
        if (small)
            copyBack(sort, sort.rows + rowsBytes);
        else
            followCycles(sort, sort.rows + rowsBytes);
    }
    free(sort.rows);
    free(sort.index);
}

} // namespace

void _zvkcTSort(uint64_t, void *table, uint32_t elementLength, int32_t count, const uint8_t *collating,
                int32_t keyCount, ...)
{
    if (elementLength == 0 || count < 2 || keyCount <= 0) return;
    const TableSortKey *some[kMaxKeys];
    const TableSortKey **keys = some;
    if (keyCount > kMaxKeys) {
        keys = static_cast<const TableSortKey **>(zvkAlloc(sizeof(void *) * static_cast<uint64_t>(keyCount)));
        if (!keys) return zvkNoStorage();
    }
    va_list arguments;
    va_start(arguments, keyCount);
    for (int32_t i = 0; i < keyCount; i++) keys[i] = va_arg(arguments, const TableSortKey *);
    va_end(arguments);

    TableSort sort{};
    sort.table = static_cast<uint8_t *>(table);
    sort.elementLength = elementLength;
    sort.count = static_cast<uint32_t>(count);
    sortTable(sort, keys, keyCount, collating);
    if (keys != some) free(keys);
}
