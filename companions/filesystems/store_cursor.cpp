// Ways through a tree of a store: to a key, to an end, to the entry beside.
//
// The way from the root down to the entry is kept, so the next entry needs no search. A leaf that
// is reached from beside must be whole and have the keys that its branches say; one that a search
// reached must when the search found nothing.
#include <initializer_list>

#include "companions/filesystems/store_page.h"

namespace filesystems {

bool treeMakesSense(const StoreSnapshot &in, const StoreTree &tree)
{
    if (tree.depth > kDeepestTree) return false;
    return tree.depth ? tree.root >= 2 && tree.root < in.pages : tree.root == kNoPage;
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

namespace {

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

} // namespace filesystems
