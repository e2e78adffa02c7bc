// The pages of an indexed file's store, read without trust.
//
// LMDB follows every number that it finds in a page, so one damaged byte of a file can end the
// program. Reading goes through here instead: each number that leads to a page or into one is held
// against the page and the file before it is used, and a page that makes no sense is MDB_CORRUPTED.
// A change is LMDB's own work; before it, the pages that the change will meet are looked at here
// (`vet...`).
//
// What a page is made of:
//
//     head, 16 bytes     its number, flags, where the free middle begins and ends
//     offsets            two bytes a node, in the order of the keys
//     nodes              leaf: key and value; branch: the first key of the page that it leads to
//
// The first two pages are heads: the newer leads to the tree of free pages and to the tree that
// holds the roots of all others. A snapshot is what one of them leads to; LMDB's transaction keeps
// its pages from being used anew.
//
// A key that is not found is a claim, too: then the pages on the way are checked whole, and the
// leaf against the keys that led to it, so that a damaged key cannot hide a record.
#pragma once

#include <cstdint>

#include <lmdb.h>

namespace filesystems {

constexpr int kDeepestTree = 32;

// A tree, as the page that leads to it has it.
struct StoreTree {
    uint32_t pad;
    uint16_t flags, depth;
    uint64_t branchPages, leafPages, overflowPages, entries, root;
};
static_assert(sizeof(StoreTree) == 48);

struct StoreSnapshot {
    const uint8_t *base;
    uint64_t pages; // that may be touched: of the file, and of the snapshot
    uint64_t lastPage;
    uint64_t change; // the number of the commit
    uint32_t pageSize;
    StoreTree freePages, names;
};

// The file as this module maps it. Larger maps come as it grows; the old ones stay until the end,
// since others may still read in them.
struct StoreMap;
StoreMap *openStoreMap(int descriptor);
void closeStoreMap(StoreMap *map);
bool isInMap(const StoreMap *map, const void *address); // also for signal handlers

// Before LMDB opens a store: do its two heads make sense? 0, MDB_CORRUPTED or an errno.
int checkHeads(const char *name);

// The size of the file, asked before LMDB looks at it: 0, an errno, or MDB_CORRUPTED if not even
// the heads are there.
int sizeOfStore(const StoreMap *map, uint64_t *size);

// The snapshot of a commit; kSnapshotPassed: a writer went past it, so begin anew. `stuck`: a
// writer that was killed after its commit can leave LMDB's readers at the one before it until
// another writer comes. Then the newer one is taken: who read the older one and wrote by it would
// lose the commit between. LMDB keeps the pages of both for its reader.
constexpr int kSnapshotPassed = -40003;
int takeSnapshot(StoreMap *map, uint64_t change, bool stuck, uint64_t size, StoreSnapshot *snapshot);

// The tree of a database by its name: 0, MDB_NOTFOUND or MDB_CORRUPTED.
int findTree(const StoreSnapshot &in, const char *name, StoreTree *tree);
int findValue(const StoreSnapshot &in, const StoreTree &tree, const MDB_val &key, MDB_val *value);

// A place in a tree: the way from its root down to a leaf.
struct PageCursor {
    struct Level {
        const uint8_t *page;
        uint32_t node, nodes;
    };
    const StoreSnapshot *in;
    const StoreTree *tree;
    bool trusting; // a key that is not found needs no proof
    int depth;     // 0: nowhere
    Level path[kDeepestTree];
};
// MDB_FIRST, MDB_LAST, MDB_NEXT, MDB_PREV, MDB_SET_RANGE, MDB_SET, as of LMDB's cursors.
int movePageCursor(PageCursor *cursor, MDB_cursor_op where, MDB_val *k, MDB_val *v);

// --- before LMDB touches pages

// Pages that were found good in one transaction, so that many changes look at them once.
struct VettedPages {
    uint64_t *bits;
    uint64_t room; // pages
};

enum class Touch {
    path,    // the pages that lead to the key, and the key's own
    removal, // and those beside them if the leaf loses so much that LMDB will mend it
    around,  // and those beside them in any case
};

// What leads to a key; also for a key that is not there.
int vetPath(const StoreSnapshot &in, const StoreTree &tree, const MDB_val &key, Touch touch, VettedPages *vetted);
// All pages of a small tree: that of the databases' names, for one.
int vetTree(const StoreSnapshot &in, const StoreTree &tree, VettedPages *vetted);
// The first and the last entry's way.
int vetEnds(const StoreSnapshot &in, const StoreTree &tree, VettedPages *vetted);
// The names' tree with what it says of each tree, and the lists of free pages. `marks`: as many
// bits as the snapshot has pages, all 0, and so again afterwards.
int vetForChange(const StoreSnapshot &in, bool lists, uint64_t *marks);

} // namespace filesystems
