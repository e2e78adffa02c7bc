// The store of an indexed file: an LMDB environment in NAME.mdb, beside the file itself, which
// holds only the header.
//
// LMDB's own locks (NAME.mdb-lock) keep writers and readers of one file apart. Where the share
// locks on the file itself already say that nobody else can be in the way, the environment is
// opened without them: a file that is open for this program alone, and one that is read while
// nobody may write it. A transaction of such a file belongs to no thread. A reader who may not
// write NAME.mdb-lock, as LMDB's locks need it, admits no writer instead.
//
// NAME is the file itself: a symbolic link to it leads to the same store.
//
// The address space of a store is given at its opening and grows when half of it is used, in this
// program before a change and in others when they meet the new size.
#pragma once

#include "companions/filesystems/open_rules.h"
#include "companions/filesystems/store_layout.h"
#include "companions/filesystems/store_pages.h"

namespace filesystems {

struct Store;

// May this program write the file's store, or make it? Asked before anything of an old file goes.
// False with the status set.
bool storeCanBeMade(FCB *fcb);

// Makes the empty store of a new file out of any old one; false with the status set.
bool createStore(FCB *fcb, const StoredHeader &header);

// Opens the file's store; null with the status set. `data` receives the databases of all keys.
// `shared`: with LMDB's locks in any case.
Store *useStore(FCB *fcb, const Opened &opened, bool writable, bool shared, const StoredHeader &header, MDB_dbi *data);
// For a journal: the store of `fcb->fileName`; null with `error` set.
Store *useSharedStore(FCB *fcb, const StoredHeader &header, MDB_dbi *data, int *error);
void keepStore(Store *store); // one more `leaveStore` is due
void leaveStore(Store *store);

// The name of the file whose store it is, in `room` of PATH_MAX bytes.
const char *fileOfStore(const Store *store, char *room);

// Transactions. A change or a reading that could not begin needs no `leaveTransaction`; all others
// do after their end. `beginReading` renews the one that it is given, or makes it; what it reads is
// in `snapshot`.
int beginReading(Store *store, MDB_txn **txn, StoreSnapshot *snapshot);
// `many`: the transaction is of more than one verb.
int beginChange(Store *store, MDB_txn **txn, bool many);
int commitChange(Store *store, MDB_txn *txn);
// Is the file still as long as when the change began? Asked at each verb of one that lasts.
int changeIsWhole(const Store *store);
// For the changes of a journal, which wait for none.
int beginRedo(Store *store, MDB_txn **txn);
void leaveTransaction(Store *store);
// For `withPages`.
const StoreMap *mapOfStore(const Store *store);
// While there is a change: what was committed before it, and what it has looked at.
const StoreSnapshot &committedState(const Store *store);
bool makesManyChanges(const Store *store);
VettedPages *vettedPages(Store *store); // null for a change of one verb
// The number of the journal that was brought in last (commit_journal.h); 0: none.
uint64_t lastJournal(Store *store, MDB_txn *txn);
int noteJournal(Store *store, MDB_txn *txn, uint64_t number);
// Are NAME.mdb and its lock file those that were opened? 0, or `kStoreReplaced`: what others see
// and lock is something else.
int storeIsReplaced(const Store *store);
constexpr int kStoreReplaced = -40001;

// CLOSE: forces what was committed to the disk, if the program's durability has it so.
int forceStore(Store *store);

// CLOSE of a file that was made: each commit of records in no order writes most pages anew, and the
// last ones leave more free pages than used ones. A store with much more than it uses is replaced
// by a copy without them, NAME.mdb.kvr2-new until it is whole; its data is on the disk, as
// `forceStore` has it. False: it stays as it is.
bool trimStore(Store *store, const MDB_dbi *data, uint32_t count);

// Frees the places of readers that were killed, and with them the pages that they hold.
void clearDeadReaders(Store *store);
// A batch of so many bytes is committed, however few its changes.
uint64_t bytesPerCommit(const Store *store);

// FS1 and FS2 for what LMDB returned; returns false, for tail calls.
bool failWithStore(FCB *fcb, int error);

inline MDB_val valueOf(const void *data, size_t size) { return {size, const_cast<void *>(data)}; }

} // namespace filesystems
