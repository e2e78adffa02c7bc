#include "companions/filesystems/store_pages.h"

#include <atomic>
#include <cerrno>
#include <cstdlib>
#include <cstring>
#include <fcntl.h>
#include <pthread.h>
#include <sys/mman.h>
#include <sys/stat.h>
#include <unistd.h>

namespace filesystems {

namespace {

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

// --- one page

struct Node {
    const uint8_t *bytes, *key;
    size_t keySize;
    size_t size; // in the page
};

const uint8_t *pageOf(const StoreSnapshot &in, uint64_t number) { return in.base + number * in.pageSize; }

// A leaf or branch whose head makes sense.
int enterPage(const StoreSnapshot &in, uint64_t number, bool leaf, PageCursor::Level *level)
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
bool nodeAt(const StoreSnapshot &in, const PageCursor::Level &level, uint32_t number, Node *node)
{
    size_t offset = load<uint16_t>(level.page + kHeadSize + 2 * size_t(number));
    if (offset < load<uint16_t>(level.page + 14) || offset + kNodeSize > in.pageSize) return false;
    node->bytes = level.page + offset;
    node->key = node->bytes + kNodeSize;
    node->keySize = load<uint16_t>(node->bytes + 6);
    node->size = kNodeSize + node->keySize;
    return offset + node->size <= in.pageSize;
}

uint64_t childOf(const Node &node)
{
    return load<uint16_t>(node.bytes) | uint64_t(load<uint16_t>(node.bytes + 2)) << 16 |
           uint64_t(load<uint16_t>(node.bytes + 4)) << 32;
}

size_t valueSize(const Node &node) { return load<uint16_t>(node.bytes) | size_t(load<uint16_t>(node.bytes + 2)) << 16; }

// Where the value of a leaf's node is. One that is elsewhere lies whole in the file, too.
bool valueAt(const StoreSnapshot &in, const PageCursor::Level &level, Node *node, MDB_val *value)
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

// The pages of a value that is elsewhere, as LMDB uses and frees them.
bool valuePagesAreGood(const StoreSnapshot &in, const MDB_val &value)
{
    const uint8_t *page = static_cast<const uint8_t *>(value.mv_data) - kHeadSize;
    uint64_t first = static_cast<uint64_t>(page - in.base) / in.pageSize, count = load<uint32_t>(page + 12);
    return load<uint64_t>(page) == first && load<uint16_t>(page + 10) == kOverflow &&
           count * in.pageSize >= kHeadSize + value.mv_size && count <= in.pages - first;
}

bool isElsewhere(const Node &node) { return load<uint16_t>(node.bytes + 4) & kValueElsewhere; }

int compare(const void *a, size_t aSize, const void *b, size_t bSize)
{
    int order = memcmp(a, b, aSize < bSize ? aSize : bSize);
    return order ? order : aSize < bSize ? -1 : aSize > bSize;
}

// Every node of a page: they lie in it side by side, without a gap, and their keys ascend if they
// are to be compared (`order`).
bool pageIsWhole(const StoreSnapshot &in, const PageCursor::Level &level, bool leaf, bool order)
{
    uint16_t sizes[kLargestPage / 2]; // of the node that begins there
    uint32_t upper = load<uint16_t>(level.page + 14);
    if (upper % 2) return false;
    memset(sizes + upper / 2, 0, in.pageSize - upper);
    Node last = {}, node;
    for (uint32_t n = 0; n < level.nodes; ++n) {
        MDB_val value;
        if (!nodeAt(in, level, n, &node) || (leaf && !valueAt(in, level, &node, &value))) return false;
        size_t at = static_cast<size_t>(node.bytes - level.page);
        if (at % 2 || sizes[at / 2]) return false;
        sizes[at / 2] = static_cast<uint16_t>((node.size + 1) & ~size_t(1));
        // The first key of a branch is not used.
        if (order && n > (leaf ? 0u : 1u) && compare(last.key, last.keySize, node.key, node.keySize) >= 0) return false;
        last = node;
    }
    uint32_t found = 0;
    for (uint32_t at = upper; at < in.pageSize; at += sizes[at / 2], ++found)
        if (!sizes[at / 2]) return false;
    return found == level.nodes;
}

// --- ways through a tree

bool treeMakesSense(const StoreSnapshot &in, const StoreTree &tree)
{
    if (tree.depth > kDeepestTree) return false;
    return tree.depth ? tree.root >= 2 && tree.root < in.pages : tree.root == kNoPage;
}

// From `level` on down to a leaf, always by the first node or always by the last.
int goDown(PageCursor *cursor, int level, uint64_t page, bool last)
{
    const int depth = cursor->tree->depth;
    for (;; ++level) {
        bool leaf = level == depth - 1;
        PageCursor::Level *here = &cursor->path[level];
        if (int error = enterPage(*cursor->in, page, leaf, here)) return error;
        if (!pageIsWhole(*cursor->in, *here, leaf, true)) return MDB_CORRUPTED;
        here->node = last ? here->nodes - 1 : 0;
        if (leaf) break;
        Node node;
        if (!nodeAt(*cursor->in, *here, here->node, &node)) return MDB_CORRUPTED;
        page = childOf(node);
    }
    cursor->depth = depth;
    return 0;
}

// Are the keys of the leaf those that its branches say?
bool leafIsInPlace(const PageCursor &cursor)
{
    const PageCursor::Level &leaf = cursor.path[cursor.depth - 1];
    Node bound, node;
    bool below = false, above = false;
    for (int level = cursor.depth - 2; level >= 0 && !(below && above); --level) {
        const PageCursor::Level &branch = cursor.path[level];
        if (!below && branch.node > 0) {
            below = true;
            if (!nodeAt(*cursor.in, branch, branch.node, &bound) || !nodeAt(*cursor.in, leaf, 0, &node) ||
                compare(node.key, node.keySize, bound.key, bound.keySize) < 0)
                return false;
        }
        if (!above && branch.node + 1 < branch.nodes) {
            above = true;
            if (!nodeAt(*cursor.in, branch, branch.node + 1, &bound) ||
                !nodeAt(*cursor.in, leaf, leaf.nodes - 1, &node) ||
                compare(node.key, node.keySize, bound.key, bound.keySize) >= 0)
                return false;
        }
    }
    return true;
}

// The leaf beside, its first or last node: 0, MDB_NOTFOUND or MDB_CORRUPTED.
int moveToLeafBeside(PageCursor *cursor, bool back)
{
    int level = cursor->depth - 2;
    while (level >= 0 &&
           (back ? cursor->path[level].node == 0 : cursor->path[level].node + 1 >= cursor->path[level].nodes))
        --level;
    if (level < 0) return MDB_NOTFOUND;
    PageCursor::Level &branch = cursor->path[level];
    branch.node += back ? ~0u : 1u;
    Node node;
    if (!nodeAt(*cursor->in, branch, branch.node, &node)) return MDB_CORRUPTED;
    int error = goDown(cursor, level + 1, childOf(node), back);
    return error ? error : leafIsInPlace(*cursor) ? 0 : MDB_CORRUPTED;
}

int moveToEnd(PageCursor *cursor, bool last)
{
    cursor->depth = 0;
    if (!treeMakesSense(*cursor->in, *cursor->tree)) return MDB_CORRUPTED;
    if (cursor->tree->depth == 0) return MDB_NOTFOUND;
    int error = goDown(cursor, 0, cursor->tree->root, last);
    return error ? error : leafIsInPlace(*cursor) ? 0 : MDB_CORRUPTED;
}

int moveBeside(PageCursor *cursor, bool back)
{
    if (!cursor->depth) return moveToEnd(cursor, back);
    PageCursor::Level &leaf = cursor->path[cursor->depth - 1];
    if (back ? leaf.node > 0 : leaf.node + 1 < leaf.nodes) {
        leaf.node += back ? ~0u : 1u;
        return 0;
    }
    if (!back && leaf.node >= leaf.nodes) leaf.node = leaf.nodes - 1;
    return moveToLeafBeside(cursor, back);
}

// To the leaf where the key is, or would be, and in it to the first node that is not below it: the
// place after the last if all are. `same`: it is there.
int seek(PageCursor *cursor, const MDB_val &key, bool *same)
{
    const StoreSnapshot &in = *cursor->in;
    const int depth = cursor->tree->depth;
    *same = false;
    cursor->depth = 0;
    if (!treeMakesSense(in, *cursor->tree)) return MDB_CORRUPTED;
    if (depth == 0) return MDB_NOTFOUND;
    uint64_t page = cursor->tree->root;
    for (int level = 0; level < depth; ++level) {
        bool leaf = level == depth - 1;
        PageCursor::Level *here = &cursor->path[level];
        if (int error = enterPage(in, page, leaf, here)) return error;
        Node node;
        uint32_t low = leaf ? 0 : 1, high = here->nodes;
        while (low < high) {
            uint32_t middle = (low + high) / 2;
            if (!nodeAt(in, *here, middle, &node)) return MDB_CORRUPTED;
            int order = compare(node.key, node.keySize, key.mv_data, key.mv_size);
            *same = *same || (leaf && order == 0);
            if (leaf ? order < 0 : order <= 0)
                low = middle + 1;
            else
                high = middle;
        }
        here->node = leaf ? low : low - 1;
        if (leaf) break;
        if (!nodeAt(in, *here, here->node, &node)) return MDB_CORRUPTED;
        page = childOf(node);
    }
    cursor->depth = depth;
    return 0;
}

// A key that was not found: is that so? Looks at all that led to its place.
int confirmAbsence(const PageCursor &cursor)
{
    for (int level = 0; level < cursor.depth; ++level)
        if (!pageIsWhole(*cursor.in, cursor.path[level], level == cursor.depth - 1, true)) return MDB_CORRUPTED;
    if (!leafIsInPlace(cursor)) return MDB_CORRUPTED;
    const PageCursor::Level &leaf = cursor.path[cursor.depth - 1];
    for (bool back : {false, true}) {
        if (back ? leaf.node > 0 : leaf.node < leaf.nodes) continue;
        PageCursor beside = cursor;
        int error = moveToLeafBeside(&beside, back);
        if (error && error != MDB_NOTFOUND) return error;
    }
    return 0;
}

int entryUnder(const PageCursor &cursor, MDB_val *k, MDB_val *v)
{
    const PageCursor::Level &leaf = cursor.path[cursor.depth - 1];
    Node node;
    if (leaf.node >= leaf.nodes || !nodeAt(*cursor.in, leaf, leaf.node, &node)) return MDB_CORRUPTED;
    *k = {node.keySize, const_cast<uint8_t *>(node.key)};
    return valueAt(*cursor.in, leaf, &node, v) ? 0 : MDB_CORRUPTED;
}

} // namespace

int movePageCursor(PageCursor *cursor, MDB_cursor_op where, MDB_val *k, MDB_val *v)
{
    int error;
    bool same;
    switch (where) {
    case MDB_FIRST:
    case MDB_LAST:
        error = moveToEnd(cursor, where == MDB_LAST);
        break;
    case MDB_NEXT:
    case MDB_PREV:
        error = moveBeside(cursor, where == MDB_PREV);
        break;
    default:
        error = seek(cursor, *k, &same);
        if (error || same) break;
        if (!cursor->trusting && (error = confirmAbsence(*cursor))) break;
        if (where == MDB_SET)
            error = MDB_NOTFOUND;
        else if (cursor->path[cursor->depth - 1].node == cursor->path[cursor->depth - 1].nodes)
            error = moveBeside(cursor, false);
    }
    return error ? error : entryUnder(*cursor, k, v);
}

int findValue(const StoreSnapshot &in, const StoreTree &tree, const MDB_val &key, MDB_val *value)
{
    PageCursor cursor;
    cursor.in = &in;
    cursor.tree = &tree;
    cursor.trusting = false;
    MDB_val k = key;
    return movePageCursor(&cursor, MDB_SET, &k, value);
}

int findTree(const StoreSnapshot &in, const char *name, StoreTree *tree)
{
    MDB_val value, key = {strlen(name), const_cast<char *>(name)};
    if (int error = findValue(in, in.names, key, &value)) return error;
    if (value.mv_size != sizeof *tree) return MDB_CORRUPTED;
    memcpy(tree, value.mv_data, sizeof *tree);
    return tree->flags == 0 && treeMakesSense(in, *tree) ? 0 : MDB_CORRUPTED;
}

// --- the map, and snapshots

namespace {

struct Mapping {
    Mapping *older;
    const uint8_t *base;
    size_t size;
};

// A head page: magic, version, address, size of the map, the two trees, the last page, the change.
constexpr size_t kTreesAt = kHeadSize + 24, kLastPageAt = kTreesAt + 2 * sizeof(StoreTree), kChangeAt = kLastPageAt + 8,
                 kHeadEnd = kChangeAt + 8;

bool isHead(const uint8_t *page, uint64_t number)
{
    constexpr uint32_t magic = 0xBEEFC0DE;
    return load<uint64_t>(page) == number && load<uint16_t>(page + 10) == kHead &&
           load<uint32_t>(page + kHeadSize) == magic && load<uint32_t>(page + kHeadSize + 4) == 1;
}

// What a head leads to, if it makes sense. A page of the store that no commit has written yet may
// be beyond the end of the file, but not far.
int readHead(const uint8_t *page, uint64_t filePages, StoreSnapshot *snapshot)
{
    constexpr uint16_t numbers = 0x08, oneFile = 0x4000; // the keys of the free pages; a store that is no folder
    StoreTree trees[2];
    memcpy(trees, page + kTreesAt, sizeof trees);
    snapshot->pageSize = trees[0].pad;
    snapshot->lastPage = load<uint64_t>(page + kLastPageAt);
    snapshot->change = load<uint64_t>(page + kChangeAt);
    snapshot->pages = snapshot->lastPage < filePages ? snapshot->lastPage + 1 : filePages;
    snapshot->freePages = trees[0];
    snapshot->names = trees[1];
    bool good = (trees[0].flags & ~oneFile) == numbers && trees[1].flags == 0 && snapshot->lastPage >= 1 &&
                snapshot->lastPage < filePages + filePages / 2 + 4096 && treeMakesSense(*snapshot, trees[0]) &&
                treeMakesSense(*snapshot, trees[1]);
    return good ? 0 : MDB_CORRUPTED;
}

} // namespace

struct StoreMap {
    int descriptor;
    pthread_mutex_t growing;
    std::atomic<Mapping *> mapping;
};

StoreMap *openStoreMap(int descriptor)
{
    auto *map = static_cast<StoreMap *>(calloc(1, sizeof(StoreMap)));
    if (!map) return nullptr;
    map->descriptor = descriptor;
    pthread_mutex_init(&map->growing, nullptr);
    return map;
}

void closeStoreMap(StoreMap *map)
{
    if (!map) return;
    while (Mapping *one = map->mapping) {
        map->mapping = one->older;
        munmap(const_cast<uint8_t *>(one->base), one->size);
        free(one);
    }
    pthread_mutex_destroy(&map->growing);
    free(map);
}

// A map that holds so many bytes; with room for the file to grow. Null: the system gives none.
static const uint8_t *mapOf(StoreMap *map, size_t size)
{
    constexpr size_t least = size_t(1) << 22;
    Mapping *now = map->mapping.load(std::memory_order_acquire);
    if (now && now->size >= size) return now->base;
    pthread_mutex_lock(&map->growing);
    now = map->mapping.load(std::memory_order_acquire);
    if (!now || now->size < size) {
        auto *grown = static_cast<Mapping *>(malloc(sizeof(Mapping)));
        size_t wanted = size < least ? least : size * 2;
        void *base = grown ? mmap(nullptr, wanted, PROT_READ, MAP_SHARED, map->descriptor, 0) : MAP_FAILED;
        if (base == MAP_FAILED) {
            free(grown);
            now = nullptr;
        } else {
            *grown = {now, static_cast<const uint8_t *>(base), wanted};
            map->mapping.store(now = grown, std::memory_order_release);
        }
    }
    pthread_mutex_unlock(&map->growing);
    return now ? now->base : nullptr;
}

// One look at both heads. The older may have been hit by a write that failed, and it counts no
// more; but it is a head, and changes write the two in turn.
static int lookAtHeads(int descriptor, uint64_t fileSize)
{
    uint8_t heads[2][kHeadEnd];
    uint64_t changes[2];
    uint32_t pageSize = 0;
    for (uint64_t number = 0; number < 2; ++number) {
        ssize_t got = pread(descriptor, heads[number], kHeadEnd, static_cast<off_t>(number * pageSize));
        if (got < 0) return errno;
        if (got != static_cast<ssize_t>(kHeadEnd) || !isHead(heads[number], number)) return MDB_INVALID;
        uint32_t size = load<uint32_t>(heads[number] + kTreesAt);
        if (size < 512 || size > kLargestPage || (size & (size - 1)) || (number && size != pageSize))
            return MDB_CORRUPTED;
        pageSize = size;
        changes[number] = load<uint64_t>(heads[number] + kChangeAt);
    }
    if (changes[0] != changes[1] && changes[0] + 1 != changes[1] && changes[1] + 1 != changes[0]) return MDB_CORRUPTED;
    StoreSnapshot snapshot;
    return readHead(heads[changes[1] > changes[0]], fileSize / pageSize, &snapshot);
}

int checkHeads(const char *name)
{
    constexpr int tries = 100; // others may be writing
    struct stat about;
    int descriptor = open(name, O_RDONLY | O_CLOEXEC | O_NONBLOCK);
    if (descriptor < 0) return errno;
    int error = MDB_CORRUPTED;
    for (int n = 0; error && n < tries; ++n)
        error = fstat(descriptor, &about) != 0 ? errno : lookAtHeads(descriptor, static_cast<uint64_t>(about.st_size));
    close(descriptor);
    return error;
}

static uint64_t changeOf(const uint8_t *head)
{
    return __atomic_load_n(reinterpret_cast<const uint64_t *>(head + kChangeAt), __ATOMIC_ACQUIRE);
}

// The head of a change is written over by the second one after it. So the newest is read in peace:
// nobody writes it before the next is there. One that a newer follows may be hit while it is read.
int sizeOfStore(const StoreMap *map, uint64_t *size)
{
    constexpr uint64_t heads = 2 * 4096; // as pages are here at least, where LMDB looks first
    struct stat about;
    if (fstat(map->descriptor, &about) != 0) return errno;
    *size = static_cast<uint64_t>(about.st_size);
    return *size < heads ? MDB_CORRUPTED : 0;
}

int takeSnapshot(StoreMap *map, uint64_t change, bool older, uint64_t size, StoreSnapshot *snapshot)
{
    const uint8_t *base = mapOf(map, size);
    if (!base) return ENOMEM;
    const uint32_t pageSize = load<uint32_t>(base + kTreesAt);
    if (pageSize < 512 || pageSize > kLargestPage || (pageSize & (pageSize - 1)) || size < 2 * uint64_t(pageSize))
        return MDB_CORRUPTED;
    const uint8_t *heads[] = {base, base + pageSize}, *wanted = nullptr;
    for (uint64_t number : {0, 1}) {
        if (!isHead(heads[number], number)) return MDB_CORRUPTED;
        if (changeOf(heads[number]) == change) wanted = heads[number];
    }
    if (!wanted) return changeOf(heads[0]) < change && changeOf(heads[1]) < change ? MDB_CORRUPTED : kSnapshotPassed;
    uint8_t copy[kHeadEnd], second[kHeadEnd];
    memcpy(copy, wanted, sizeof copy);
    memcpy(second, wanted, sizeof second);
    bool newest = changeOf(heads[0]) <= change && changeOf(heads[1]) <= change;
    if (!newest && (!older || changeOf(wanted) != change || memcmp(copy, second, sizeof copy) != 0))
        return kSnapshotPassed;
    // It may have grown since it was asked.
    int error = 0;
    if (load<uint64_t>(copy + kLastPageAt) >= size / pageSize) error = sizeOfStore(map, &size);
    if (!error && !(base = mapOf(map, size))) error = ENOMEM;
    if (!error) error = readHead(copy, size / pageSize, snapshot);
    if (!error && (snapshot->pageSize != pageSize || snapshot->change != change)) error = MDB_CORRUPTED;
    snapshot->base = base;
    return error;
}

// --- before LMDB touches pages

namespace {

// True if the page was looked at before.
bool wasVetted(const VettedPages *vetted, uint64_t page)
{
    return vetted && page < vetted->room && (vetted->bits[page / 64] >> page % 64 & 1);
}

void noteVetted(VettedPages *vetted, uint64_t page)
{
    if (vetted && page < vetted->room) vetted->bits[page / 64] |= uint64_t(1) << page % 64;
}

int vetPage(const StoreSnapshot &in, uint64_t number, bool leaf, PageCursor::Level *level, VettedPages *vetted)
{
    if (int error = enterPage(in, number, leaf, level)) return error;
    if (wasVetted(vetted, number)) return 0;
    // LMDB copes with keys in any order; a search that must not fail looks at that by itself.
    if (!pageIsWhole(in, *level, leaf, false)) return MDB_CORRUPTED;
    noteVetted(vetted, number);
    return 0;
}

// Pages from one of `level` down to a leaf, along the first or the last nodes.
int vetEdge(const StoreSnapshot &in, const StoreTree &tree, int level, uint64_t page, bool last, VettedPages *vetted)
{
    for (;; ++level) {
        bool leaf = level == tree.depth - 1;
        PageCursor::Level here;
        if (int error = vetPage(in, page, leaf, &here, vetted)) return error;
        if (leaf) return 0;
        Node node;
        if (!nodeAt(in, here, last ? here.nodes - 1 : 0, &node)) return MDB_CORRUPTED;
        page = childOf(node);
    }
}

// LMDB mends a page that is less than a quarter full with one beside it.
bool getsLow(const StoreSnapshot &in, const PageCursor::Level &leaf, size_t goes)
{
    size_t room = in.pageSize - kHeadSize, lower = load<uint16_t>(leaf.page + 12),
           upper = load<uint16_t>(leaf.page + 14);
    size_t used = room - (upper - lower);
    return leaf.nodes <= 2 || used < goes + 2 || (used - goes - 2) * 10 < room * 3;
}

int vetBeside(const PageCursor &cursor, VettedPages *vetted)
{
    const StoreSnapshot &in = *cursor.in;
    Node node;
    int error = 0;
    for (int level = 0; level < cursor.depth - 1 && !error; ++level) {
        const PageCursor::Level &branch = cursor.path[level];
        const uint32_t at = branch.node;
        uint32_t beside[] = {0, at ? at - 1 : 0, at + 1 < branch.nodes ? at + 1 : at};
        for (uint32_t n : beside)
            for (bool last : {false, true}) {
                if (error || (n == 0 && last && at != 1)) continue;
                if (!nodeAt(in, branch, n, &node)) return MDB_CORRUPTED;
                error = vetEdge(in, *cursor.tree, level + 1, childOf(node), last, vetted);
            }
    }
    return error;
}

} // namespace

int vetPath(const StoreSnapshot &in, const StoreTree &tree, const MDB_val &key, Touch touch, VettedPages *vetted)
{
    PageCursor cursor;
    cursor.in = &in;
    cursor.tree = &tree;
    bool same;
    int error = seek(&cursor, key, &same);
    if (error) return error == MDB_NOTFOUND ? 0 : error;
    bool known = true;
    for (int level = 0; level < cursor.depth && !error; ++level) {
        PageCursor::Level &here = cursor.path[level], again;
        uint64_t number = load<uint64_t>(here.page);
        known = known && wasVetted(vetted, number);
        error = vetPage(in, number, level == cursor.depth - 1, &again, vetted);
    }
    if (!error && !known && !leafIsInPlace(cursor)) error = MDB_CORRUPTED;
    if (error) return error;
    const PageCursor::Level &leaf = cursor.path[cursor.depth - 1];
    Node node = {};
    if (same) {
        MDB_val value;
        if (!nodeAt(in, leaf, leaf.node, &node) || !valueAt(in, leaf, &node, &value)) return MDB_CORRUPTED;
        if (isElsewhere(node) && !valuePagesAreGood(in, value)) return MDB_CORRUPTED;
    }
    bool beside = touch == Touch::around || (touch == Touch::removal && getsLow(in, leaf, node.size));
    return beside ? vetBeside(cursor, vetted) : 0;
}

static int vetBelow(const StoreSnapshot &in, const StoreTree &tree, int level, uint64_t page, VettedPages *vetted)
{
    bool leaf = level == tree.depth - 1;
    PageCursor::Level here;
    int error = vetPage(in, page, leaf, &here, vetted);
    for (uint32_t n = 0; n < here.nodes && !error && !leaf; ++n) {
        Node node;
        error = nodeAt(in, here, n, &node) ? vetBelow(in, tree, level + 1, childOf(node), vetted) : MDB_CORRUPTED;
    }
    return error;
}

int vetTree(const StoreSnapshot &in, const StoreTree &tree, VettedPages *vetted)
{
    if (!treeMakesSense(in, tree)) return MDB_CORRUPTED;
    return tree.depth ? vetBelow(in, tree, 0, tree.root, vetted) : 0;
}

int vetEnds(const StoreSnapshot &in, const StoreTree &tree, VettedPages *vetted)
{
    if (!treeMakesSense(in, tree)) return MDB_CORRUPTED;
    int error = 0;
    for (bool last : {false, true})
        if (tree.depth && !error) error = vetEdge(in, tree, 0, tree.root, last, vetted);
    return error;
}

namespace {

// The list of one change: how many, then the numbers of the pages, which descend. Marks each, or
// takes the marks away; false for a number that no free page has.
bool markList(const StoreSnapshot &in, const MDB_val &value, uint64_t *marks, bool set)
{
    const auto *list = static_cast<const uint8_t *>(value.mv_data);
    size_t words = value.mv_size / sizeof(uint64_t);
    uint64_t count = words ? load<uint64_t>(list) : 0, before = in.lastPage + 1;
    if (!words || count > words - 1) return false;
    for (uint64_t i = 1; i <= count; ++i) {
        uint64_t page = load<uint64_t>(list + sizeof(uint64_t) * i), bit = uint64_t(1) << page % 64;
        if (page < 2 || page >= before || (set && (marks[page / 64] & bit))) return false;
        if (set)
            marks[page / 64] |= bit;
        else
            marks[page / 64] &= ~bit;
        before = page;
    }
    return true;
}

// The tree of free pages: keys are numbers of eight bytes, in the order of the machine.
int vetLists(const StoreSnapshot &in, int level, uint64_t page, uint64_t *marks, uint64_t *last, bool set)
{
    const StoreTree &tree = in.freePages;
    bool leaf = level == tree.depth - 1;
    PageCursor::Level here;
    if (int error = enterPage(in, page, leaf, &here)) return error;
    if (set && !pageIsWhole(in, here, leaf, false)) return MDB_CORRUPTED;
    for (uint32_t n = 0; n < here.nodes; ++n) {
        Node node;
        MDB_val value;
        if (!nodeAt(in, here, n, &node)) return MDB_CORRUPTED;
        if (!leaf) {
            if (int error = vetLists(in, level + 1, childOf(node), marks, last, set)) return error;
            continue;
        }
        if (node.keySize != sizeof(uint64_t) || !valueAt(in, here, &node, &value)) return MDB_CORRUPTED;
        uint64_t change = load<uint64_t>(node.key);
        if (change <= *last || change > in.change) return MDB_CORRUPTED;
        *last = change;
        if (isElsewhere(node) && !valuePagesAreGood(in, value)) return MDB_CORRUPTED;
        if (!markList(in, value, marks, set)) return MDB_CORRUPTED;
    }
    return 0;
}

} // namespace

int vetForChange(const StoreSnapshot &in, bool lists, uint64_t *marks)
{
    if (int error = vetTree(in, in.names, nullptr)) return error;
    PageCursor cursor;
    cursor.in = &in;
    cursor.tree = &in.names;
    MDB_val k, v;
    cursor.trusting = false;
    cursor.depth = 0;
    int error = movePageCursor(&cursor, MDB_FIRST, &k, &v);
    for (; !error; error = movePageCursor(&cursor, MDB_NEXT, &k, &v)) {
        StoreTree tree;
        const PageCursor::Level &leaf = cursor.path[cursor.depth - 1];
        Node node;
        if (!nodeAt(in, leaf, leaf.node, &node) || load<uint16_t>(node.bytes + 4) != kValueIsTree ||
            v.mv_size != sizeof tree)
            return MDB_CORRUPTED;
        memcpy(&tree, v.mv_data, sizeof tree);
        if (tree.flags || !treeMakesSense(in, tree)) return MDB_CORRUPTED;
    }
    if (error != MDB_NOTFOUND) return error;
    if (!lists || !in.freePages.depth) return 0;
    uint64_t last = 0;
    error = vetLists(in, 0, in.freePages.root, marks, &last, true);
    last = 0;
    if (error)
        memset(marks, 0, (in.lastPage / 64 + 1) * sizeof *marks);
    else
        vetLists(in, 0, in.freePages.root, marks, &last, false);
    return error;
}

} // namespace filesystems
