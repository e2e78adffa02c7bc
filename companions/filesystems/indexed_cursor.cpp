// Looking into the store: in a snapshot without LMDB (store_pages.h), and in a change that is under
// way with it, since only LMDB knows the pages that the change has made.
//
// A change of one verb looks before it changes anything in the tree that it asks about, so the last
// commit answers it. In a change of many verbs LMDB is asked, after the pages that it will meet
// were looked at: those of the last commit, for the new ones are its own. What leads to a key in
// the new tree and is still of the old one led to the key there, too, or is beside a page that was
// taken away, and then it was looked at when that was done.
#include "companions/filesystems/indexed_state.h"

#include <cstring>

namespace filesystems {

namespace {

const StoreSnapshot &stateBelow(IndexedFile *file, MDB_txn *txn)
{
    return txn == file->snapshot ? file->view : committedState(file->store);
}

bool asksLmdb(const IndexedFile *file, MDB_txn *txn) { return txn != file->snapshot && makesManyChanges(file->store); }

// The tree of a key in a snapshot, as it was looked up last.
int treeOf(IndexedFile *file, const StoreSnapshot &in, uint32_t key, const StoreTree **tree)
{
    KnownTree &known = file->trees[key];
    *tree = &known.tree;
    if (known.known && known.change == in.change) return 0;
    char name[8];
    databaseName(key, name);
    known.known = false; // the search may be left
    int error = findTree(in, name, &known.tree);
    known.known = !error;
    known.change = in.change;
    return error == MDB_NOTFOUND ? MDB_CORRUPTED : error;
}

int vetKey(IndexedFile *file, uint32_t key, const MDB_val &k, Touch touch)
{
    const StoreSnapshot &in = committedState(file->store);
    const StoreTree *tree;
    int error = treeOf(file, in, key, &tree);
    return error ? error : vetPath(in, *tree, k, touch, vettedPages(file->store));
}

int vetMove(StoreCursor *cursor, MDB_cursor_op where, const MDB_val &k)
{
    IndexedFile *file = cursor->file;
    MDB_val at, v;
    if (where == MDB_SET || where == MDB_SET_RANGE) return vetKey(file, cursor->key, k, Touch::around);
    if ((where == MDB_NEXT || where == MDB_PREV) && mdb_cursor_get(cursor->inChange, &at, &v, MDB_GET_CURRENT) == 0)
        return vetKey(file, cursor->key, at, Touch::around);
    const StoreTree *tree;
    int error = treeOf(file, *cursor->in, cursor->key, &tree);
    return error ? error : vetEnds(*cursor->in, *tree, vettedPages(file->store));
}

} // namespace

int openCursor(IndexedFile *file, MDB_txn *txn, uint32_t key, StoreCursor *cursor)
{
    cursor->file = file;
    cursor->key = key;
    cursor->in = &stateBelow(file, txn);
    cursor->inChange = nullptr;
    cursor->pages.in = cursor->in;
    cursor->pages.trusting = false;
    cursor->pages.depth = 0;
    if (asksLmdb(file, txn)) return mdb_cursor_open(txn, file->data[key], &cursor->inChange);
    return treeOf(file, *cursor->in, key, &cursor->pages.tree);
}

void closeCursor(StoreCursor *cursor)
{
    if (cursor->inChange) mdb_cursor_close(cursor->inChange);
    cursor->inChange = nullptr;
}

int moveCursor(StoreCursor *cursor, MDB_cursor_op where, MDB_val *k, MDB_val *v)
{
    if (!cursor->inChange) return movePageCursor(&cursor->pages, where, k, v);
    int error = vetMove(cursor, where, *k);
    return error ? error : mdb_cursor_get(cursor->inChange, k, v, where);
}

bool hasFollower(StoreCursor *cursor, const MDB_val *at)
{
    MDB_val k, v;
    const size_t length = cursor->file->keys[cursor->key].length, size = at->mv_size;
    if (!cursor->inChange) {
        PageCursor ahead = cursor->pages;
        return !movePageCursor(&ahead, MDB_NEXT, &k, &v) && k.mv_size == size &&
               memcmp(k.mv_data, at->mv_data, length) == 0;
    }
    uint8_t entry[kKeyRoom];
    memcpy(entry, at->mv_data, size);
    bool follows = !moveCursor(cursor, MDB_NEXT, &k, &v) && k.mv_size == size && memcmp(k.mv_data, entry, length) == 0;
    k = valueOf(entry, size);
    moveCursor(cursor, MDB_SET, &k, &v);
    return follows;
}

int findInStore(IndexedFile *file, MDB_txn *txn, uint32_t key, const MDB_val &k, MDB_val *v)
{
    MDB_val sought = k;
    if (asksLmdb(file, txn)) {
        int error = vetKey(file, key, k, Touch::path);
        return error ? error : mdb_get(txn, file->data[key], &sought, v);
    }
    PageCursor cursor;
    cursor.in = &stateBelow(file, txn);
    cursor.trusting = false;
    int error = treeOf(file, *cursor.in, key, &cursor.tree);
    return error ? error : movePageCursor(&cursor, MDB_SET, &sought, v);
}

int putInStore(IndexedFile *file, MDB_txn *txn, uint32_t key, MDB_val k, MDB_val v, unsigned flags)
{
    int error = vetKey(file, key, k, Touch::path);
    return error ? error : mdb_put(txn, file->data[key], &k, &v, flags);
}

int eraseInStore(IndexedFile *file, MDB_txn *txn, uint32_t key, MDB_val k)
{
    int error = vetKey(file, key, k, makesManyChanges(file->store) ? Touch::around : Touch::removal);
    if (!error) error = mdb_del(txn, file->data[key], &k, nullptr);
    // What the record says must be there.
    return error == MDB_NOTFOUND ? MDB_CORRUPTED : error;
}

} // namespace filesystems
