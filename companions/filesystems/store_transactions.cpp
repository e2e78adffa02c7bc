// Transactions of a store: see indexed_store.h.
#include "companions/filesystems/store_state.h"

#include <cerrno>
#include <cstdlib>
#include <cstring>

#include "companions/filesystems/store_faults.h"
#include "companions/filesystems/transaction.h"

namespace filesystems {

namespace {

void enterTransaction(Store *store)
{
    if (store->shared) pthread_rwlock_rdlock(&store->mapLock);
}

// With size 0 as large as another program made it.
void resizeMap(Store *store, size_t size)
{
    MDB_envinfo info;
    if (store->shared) pthread_rwlock_wrlock(&store->mapLock);
    mdb_env_set_mapsize(store->env, size);
    if (mdb_env_info(store->env, &info) == 0) store->mapBytes = info.me_mapsize;
    if (store->shared) pthread_rwlock_unlock(&store->mapLock);
}

// Room for as many pages as the store has; all bits 0. False: there is no storage.
bool makeMarks(uint64_t **marks, uint64_t *room, uint64_t pages)
{
    if (*marks && *room >= pages) return true;
    free(*marks);
    *room = pages * 2;
    *marks = static_cast<uint64_t *>(calloc(*room / 64 + 1, sizeof(uint64_t)));
    return *marks;
}

// What LMDB will trust from its first step on.
int vetChange(Store *store, bool many)
{
    constexpr uint64_t few = 16;
    const StoreSnapshot &now = store->committed;
    store->many = many;
    if (many) {
        if (!makeMarks(&store->vetted.bits, &store->vetted.room, now.lastPage + 1)) return ENOMEM;
        memset(store->vetted.bits, 0, (store->vetted.room / 64 + 1) * sizeof(uint64_t));
    }
    if (!makeMarks(&store->marks, &store->marksRoom, now.lastPage + 1)) return ENOMEM;
    // Long lists that only this program has written since it looked at them need no second look.
    const StoreTree &lists = now.freePages;
    bool known = store->ownChange && store->ownChange == now.change;
    bool isShort = lists.leafPages + lists.overflowPages <= few;
    int error = vetForChange(now, isShort || !known, store->marks);
    store->ownChange = error ? 0 : now.change;
    return error;
}

// What a transaction that has begun sees; a change looks at what LMDB will trust.
int takePages(Store *store, bool change, MDB_txn *txn, bool stuck, uint64_t size, bool many, StoreSnapshot *snapshot)
{
    int error = withPages(store->map, [&] {
        int passed = takeSnapshot(store->map, mdb_txn_id(txn) - change, stuck, size, snapshot);
        return !passed && change ? vetChange(store, many) : passed;
    });
    // Work that was left has not taken its marks away.
    if (error && change && store->marks) memset(store->marks, 0, (store->marksRoom / 64 + 1) * sizeof(uint64_t));
    return error;
}

} // namespace

int beginTransaction(Store *store, unsigned flags, MDB_txn **txn, StoreSnapshot *snapshot, bool many, bool settles)
{
    char file[PATH_MAX];
    bool cleared = false;
    for (int passed = 0;;) {
        bool renews = flags && *txn;
        uint64_t size;
        int error = sizeOfStore(store->map, &size);
        // Twice the address space while half of it is used. If the system gives no more, LMDB says
        // so once the store is full.
        if (!error && !flags && size > store->mapBytes / 2) resizeMap(store, store->mapBytes * 2);
        enterTransaction(store);
        if (!error) error = renews ? mdb_txn_renew(*txn) : mdb_txn_begin(store->env, nullptr, flags, txn);
        const bool begun = !error;
        if (begun && store->shared) error = checkPlace(store, settles);
        if (!error) error = takePages(store, !flags, *txn, passed > 20, size, many, snapshot);
        if (!error) return 0;
        if (begun && flags) {
            mdb_txn_reset(*txn);
        } else if (begun) {
            mdb_txn_abort(*txn);
            *txn = nullptr;
        }
        leaveTransaction(store);
        if (error == kUnsettled)
            error = settleJournal(fileOfStore(store, file));
        else if (error == kSnapshotPassed && flags && ++passed < 1000)
            error = 0;
        else if (error == MDB_MAP_RESIZED)
            resizeMap(store, 0), error = 0;
        else if (error == MDB_READERS_FULL && !cleared)
            clearDeadReaders(store), cleared = true, error = 0;
        if (error) return error == kSnapshotPassed ? MDB_CORRUPTED : error;
    }
}

void leaveTransaction(Store *store)
{
    if (store->shared) pthread_rwlock_unlock(&store->mapLock);
}

int beginReading(Store *store, MDB_txn **txn, StoreSnapshot *snapshot)
{
    return beginTransaction(store, MDB_RDONLY, txn, snapshot, false);
}

int beginChange(Store *store, MDB_txn **txn, bool many)
{
    *txn = nullptr;
    return beginTransaction(store, 0, txn, &store->committed, many);
}

int changeIsWhole(const Store *store)
{
    uint64_t size;
    if (int error = sizeOfStore(store->map, &size)) return error;
    return size / store->committed.pageSize < store->committed.pages ? MDB_CORRUPTED : 0;
}

int commitChange(Store *store, MDB_txn *txn)
{
    int error = store->many ? changeIsWhole(store) : 0;
    // Before the commit, which another thread's change may follow at once.
    if (store->ownChange) ++store->ownChange;
    if (error)
        mdb_txn_abort(txn);
    else
        error = mdb_txn_commit(txn);
    if (error) store->ownChange = 0;
    return error;
}

const StoreMap *mapOfStore(const Store *store) { return store->map; }

const StoreSnapshot &committedState(const Store *store) { return store->committed; }
bool makesManyChanges(const Store *store) { return store->many; }
VettedPages *vettedPages(Store *store) { return store->many ? &store->vetted : nullptr; }

int beginRedo(Store *store, MDB_txn **txn)
{
    *txn = nullptr;
    return beginTransaction(store, 0, txn, &store->committed, true, false);
}

// The tree "about" has one page or two.
static int vetAbout(Store *store)
{
    return withPages(store->map, [&] {
        StoreTree about;
        int error = findTree(store->committed, kAboutDatabase, &about);
        return error ? error : vetTree(store->committed, about, vettedPages(store));
    });
}

uint64_t lastJournal(Store *store, MDB_txn *txn)
{
    MDB_val k = valueOf("journal", 7), v;
    uint64_t number = 0;
    if (vetAbout(store) == 0 && mdb_get(txn, store->about, &k, &v) == 0 && v.mv_size == sizeof number)
        memcpy(&number, v.mv_data, sizeof number);
    return number;
}

int noteJournal(Store *store, MDB_txn *txn, uint64_t number)
{
    if (int error = vetAbout(store)) return error;
    MDB_val k = valueOf("journal", 7), v = valueOf(&number, sizeof number);
    return mdb_put(txn, store->about, &k, &v, 0);
}

void clearDeadReaders(Store *store)
{
    int dead;
    if (store->shared) mdb_reader_check(store->env, &dead);
}

} // namespace filesystems
