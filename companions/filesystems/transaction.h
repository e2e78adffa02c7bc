// The transaction of a run unit: changes of indexed and relative files that are kept together or
// not at all.
//
// With VFS_TRANSACTIONS=on every file of these kinds that is opened takes part. KVR2_COMMIT keeps
// what was changed since the last one, KVR2_ROLLBACK takes it back, and a run unit that ends
// without either, or is killed, has changed nothing.
//
// Indexed: the changes of a file are one LMDB transaction, which is open from the first of them on.
// The run unit reads in it, others read the last commit. LMDB has one writer a store: another
// transaction that wants to change the same file gets 99, or waits as for a record; a program
// without transactions waits until this one has ended. Relative: changed slots are kept in memory
// (slot_changes.h) until the commit.
//
// The commit of one indexed file is LMDB's own. Otherwise all changes go to a journal first
// (commit_journal.h); once that is on the disk the transaction is kept, whatever happens, and its
// files are brought up to date.
//
// Record locks, and the sharing of a file with others, stay until the end of the transaction, also
// after CLOSE: the transaction holds a descriptor of its own of each file that it has changed. A
// file that is opened again meanwhile goes on with that descriptor's locks.
//
// All of it belongs to the thread that made the first change.
#pragma once

#include <sys/types.h>

#include "companions/filesystems/commit_journal.h"
#include "companions/filesystems/indexed_store.h"
#include "companions/filesystems/slot_changes.h"

namespace filesystems {

bool transactionsWanted(); // at OPEN
// Raised by each end of a transaction; `rolledBack` is the number of the last rollback. What a file
// remembers of an older transaction may be gone.
uint64_t transactionNumber();
uint64_t lastRollback();

// The open files of the run unit that take part: their record locks end with the transaction.
void registerOpen(int descriptor);
void registerClosed(int descriptor);

// The descriptor that goes on for a file that was closed with changes, a new one of the caller's;
// -1: there is none. `changed`: the file has changes that are not committed.
int parkedDescriptor(dev_t device, ino_t inode, bool *changed);

// --- indexed files

constexpr int kInTransaction = -40003; // for an error of LMDB: another transaction has changes of the file

MDB_txn *transactionOn(const Store *store); // null: nothing was changed yet
// Joins: the first change of a file. 0, kInTransaction, or another error.
int joinTransaction(Store *store, int descriptor, MDB_txn **txn);
// After a change that was made. `erased`: the record with that primary key is gone; else it is
// there now, as it is.
void logChange(const Store *store, bool erased, const uint8_t *bytes, uint32_t size);

// --- relative files

SlotChanges *slotChangesOf(dev_t device, ino_t inode); // null: nothing was changed yet
SlotChanges *joinTransaction(const char *fileName, int descriptor, uint64_t slotSize);

// A verb failed half way: all verbs do, until the rollback, and so does the commit.
void doomTransaction(uint16_t status);
uint16_t doomOfTransaction(); // 0: none

// 0, or the file status of what went wrong; then all is rolled back.
int commitTransaction();
int rollbackTransaction();

} // namespace filesystems
