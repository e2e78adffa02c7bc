// One page of a store, and what is inside it (store_pages.h says how it is laid out).
//
// What leads from a page to another, or to a key or value, is given out only after it was held
// against the page's size and the file's. Reading and vetting are made of these.
#pragma once

#include <cstring>

#include "companions/filesystems/store_pages.h"

namespace filesystems {

constexpr uint16_t kBranch = 1, kLeaf = 2, kOverflow = 4, kHead = 8;
constexpr uint16_t kValueElsewhere = 1, kValueIsTree = 2;
constexpr size_t kHeadSize = 16, kNodeSize = 8;
constexpr uint64_t kNoPage = ~uint64_t(0);
constexpr uint32_t kLargestPage = 65536;

template <class T>
T load(const uint8_t *from)
{
    T value;
    memcpy(&value, from, sizeof value);
    return value;
}

struct Node {
    const uint8_t *bytes, *key;
    size_t keySize;
    size_t size; // in the page
};

inline const uint8_t *pageOf(const StoreSnapshot &in, uint64_t number) { return in.base + number * in.pageSize; }

// A leaf or branch whose head makes sense.
inline int enterPage(const StoreSnapshot &in, uint64_t number, bool leaf, PageCursor::Level *level)
{
    if (number < 2 || number >= in.pages) return MDB_CORRUPTED;
    const uint8_t *page = pageOf(in, number);
    uint16_t lower = load<uint16_t>(page + 12), upper = load<uint16_t>(page + 14);
    if (load<uint64_t>(page) != number || load<uint16_t>(page + 10) != (leaf ? kLeaf : kBranch)) return MDB_CORRUPTED;
    if (lower < kHeadSize || lower > upper || upper > in.pageSize || lower % 2) return MDB_CORRUPTED;
    *level = {page, 0, (lower - static_cast<uint32_t>(kHeadSize)) / 2};
    return level->nodes < (leaf ? 1u : 2u) ? MDB_CORRUPTED : 0;
}

// A node, if it lies in its page with its key.
inline bool nodeAt(const StoreSnapshot &in, const PageCursor::Level &level, uint32_t number, Node *node)
{
    size_t offset = load<uint16_t>(level.page + kHeadSize + 2 * size_t(number));
    if (offset < load<uint16_t>(level.page + 14) || offset + kNodeSize > in.pageSize) return false;
    node->bytes = level.page + offset;
    node->key = node->bytes + kNodeSize;
    node->keySize = load<uint16_t>(node->bytes + 6);
    node->size = kNodeSize + node->keySize;
    return offset + node->size <= in.pageSize;
}

inline uint64_t childOf(const Node &node)
{
    return load<uint16_t>(node.bytes) | uint64_t(load<uint16_t>(node.bytes + 2)) << 16 |
           uint64_t(load<uint16_t>(node.bytes + 4)) << 32;
}

inline size_t valueSize(const Node &node)
{
    return load<uint16_t>(node.bytes) | size_t(load<uint16_t>(node.bytes + 2)) << 16;
}

// Where the value of a leaf's node is. One that is elsewhere lies whole in the file, too.
inline bool valueAt(const StoreSnapshot &in, const PageCursor::Level &level, Node *node, MDB_val *value)
{
    const uint8_t *end = level.page + in.pageSize, *at = node->key + node->keySize;
    uint16_t flags = load<uint16_t>(node->bytes + 4);
    value->mv_size = valueSize(*node);
    size_t here = flags & kValueElsewhere ? sizeof(uint64_t) : value->mv_size;
    if (here > static_cast<size_t>(end - at) || (flags & ~(kValueElsewhere | kValueIsTree))) return false;
    node->size += here;
    value->mv_data = const_cast<uint8_t *>(at);
    if (!(flags & kValueElsewhere)) return true;
    uint64_t first = load<uint64_t>(at), count = (kHeadSize + value->mv_size + in.pageSize - 1) / in.pageSize;
    if (first < 2 || first >= in.pages || count > in.pages - first) return false;
    value->mv_data = const_cast<uint8_t *>(pageOf(in, first) + kHeadSize);
    return true;
}

inline bool isElsewhere(const Node &node) { return load<uint16_t>(node.bytes + 4) & kValueElsewhere; }

inline int compare(const void *a, size_t aSize, const void *b, size_t bSize)
{
    int order = memcmp(a, b, aSize < bSize ? aSize : bSize);
    return order ? order : aSize < bSize ? -1 : aSize > bSize;
}

bool valuePagesAreGood(const StoreSnapshot &in, const MDB_val &value);
bool pageIsWhole(const StoreSnapshot &in, const PageCursor::Level &level, bool leaf, bool order);

// --- store_cursor.cpp: for vetting, too

bool treeMakesSense(const StoreSnapshot &in, const StoreTree &tree);
int seek(PageCursor *cursor, const MDB_val &key, bool *same);
bool leafIsInPlace(const PageCursor &cursor);

} // namespace filesystems
