// The pages that a change will meet, looked at before it begins.
//
// LMDB trusts what it finds. It reads the way to the key, copies each page of it, takes free pages
// from the lists and mends a leaf that gets low with one beside it; so these are the pages that are
// held whole here.
#include <initializer_list>

#include "companions/filesystems/store_page.h"

namespace filesystems {

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
