// What an open store is made of: for indexed_store.cpp, store_place.cpp and store_transactions.cpp,
// which each do a part of indexed_store.h.
#pragma once

#include <atomic>
#include <climits>
#include <pthread.h>
#include <sys/types.h>

#include "companions/filesystems/indexed_store.h"

namespace filesystems {

// An environment with LMDB's locks may be open only once in a process; the files of a program that
// are the same file share it. A child process takes none of its parent's.
struct Store {
    dev_t device;
    ino_t inode;
    pid_t process;
    MDB_env *env;
    uint32_t users;
    bool writable;
    bool shared;
    Store *next;
    pthread_rwlock_t mapLock; // shared: held by every transaction, for itself alone by who changes the map
    dev_t lockDevice;         // of the lock file
    ino_t lockInode;
    std::atomic<uint64_t> mapBytes; // of LMDB's map
    MDB_dbi about;
    StoreMap *map;
    int folder;                                             // -1: not known
    std::atomic<int64_t> folderTime, youngTime, youngSince; // isSettled
    // The change that is being made: one at a time, LMDB sees to that.
    StoreSnapshot committed;
    VettedPages vetted;              // of many changes in one transaction
    uint64_t *marks;                 // for the lists of free pages
    uint64_t marksRoom;              // pages
    std::atomic<uint64_t> ownChange; // the commit that this program made last; 0: not known
    bool many;
    char name[];
};

// The name of the store of `fcb->fileName`, or of a file beside it, in `name` of PATH_MAX bytes;
// false with the status set.
bool storeName(FCB *fcb, char *name, const char *suffix);
// Is there no room for a store to grow? Asks for some after its end, which no data is harmed by.
bool storeIsFull(FCB *fcb);

// Are the store's files those that were opened, and is there no journal of another? Both are
// entries of one folder: while the folder does not change, the answer does not.
// 0, `kStoreReplaced`, or with `settles` `kUnsettled`: a journal comes first.
int checkPlace(Store *store, bool settles);
constexpr int kUnsettled = -40004;

// A transaction of LMDB that sees pages which were looked at; with `settles` not before what
// journals say.
int beginTransaction(Store *store, unsigned flags, MDB_txn **txn, StoreSnapshot *snapshot, bool many,
                     bool settles = true);

} // namespace filesystems
