// An open indexed file, and what its verbs are made of: transactions, the record with its entries
// in all keys, the place of sequential reading.
#pragma once

#include "companions/filesystems/indexed_store.h"
#include "companions/filesystems/record_format.h"
#include "companions/filesystems/record_locks.h"
#include "companions/filesystems/record_sum.h"

namespace filesystems {

constexpr size_t kKeyRoom = 512;

// INPUT reads ahead: entries with their records, copied out of one snapshot, which ends with the
// verb. A reader that waits for its terminal, or was killed, so holds no page of the store.
struct ReadAhead {
    uint8_t *buffer;
    size_t capacity, at, filled;
    uint32_t wanted; // entries that the next filling takes: few after a change of place
    bool back;
    int64_t madeAt; // milliseconds
};

// The tree of a key as of a commit.
struct KnownTree {
    uint64_t change;
    bool known;
    StoreTree tree;
};

struct IndexedFile {
    int descriptor;
    Store *store;
    MDB_txn *batch;     // alone: the transaction that is being filled
    MDB_txn *snapshot;  // reading
    StoreSnapshot view; // its pages
    bool snapshotLive;
    bool alone, isNew, sequential, exact; // isNew: opened for OUTPUT
    bool transactional;
    uint64_t seen;  // the transaction that the last verb was in
    bool committed; // something, since OPEN
    bool dropped;   // acknowledged changes of a batch went with it
    uint16_t lost;  // the status of that, which every verb gives from then on; 0: none
    uint32_t changes, commits;
    uint64_t changedBytes;
    ReadAhead ahead;
    uint32_t keyCount, numbered; // keys; alternates with duplicates
    FileKey keys[kMostKeys];
    KeyPart parts[kMostKeyParts];
    MDB_dbi data[kMostKeys];
    KnownTree trees[kMostKeys];
    RecordFormat format;
    uint32_t sumSize; // of the checksum after a record, 0 or 4
    RecordLocks locks;
    uint32_t reference; // key of reference
    uint8_t place[kKeyRoom];
    size_t placeSize;
    uint8_t lastKey[kKeyRoom]; // primary key of the last READ, or of the last sequential WRITE
    bool wrote;
};

inline IndexedFile *indexedFileOf(FCB *fcb) { return static_cast<IndexedFile *>(fcb->moduleBuffer); }

inline bool hasDuplicates(const IndexedFile *file, uint32_t key)
{
    return key && (file->keys[key].flags & ZVK_FILE_KEY_DUPLICATES);
}

// The key of a record; one of several parts is put together in `room`.
using KeyRoom = uint8_t[kKeyRoom];
inline const uint8_t *keyIn(const IndexedFile *file, uint32_t key, const uint8_t *record, KeyRoom &room)
{
    return bytesOfKey(file->keys[key], file->parts, record, room);
}

// --- indexed_transactions.cpp: one change at a time, or many in a batch

// The transaction to read in: the batch, or a new snapshot. Null with `error` set.
MDB_txn *reading(IndexedFile *file, int *error);
void endReading(IndexedFile *file); // every verb that reads ends with it

MDB_txn *changing(FCB *fcb, const FileRequest *request, int *error);
// Ends a change, with the signal of the size limit held off: an `error` undoes it, and in a batch
// all since the last commit, which cannot be told apart (`dropped`).
int changed(IndexedFile *file, MDB_txn *txn, int error, bool made, uint32_t bytes);
int commitBatch(IndexedFile *file);
// FS1 and FS2 of a change that failed.
void failChange(FCB *fcb, IndexedFile *file, int error);
// True if acknowledged changes were lost before: the verb has no work, and the status says so.
bool endsForLostChanges(FCB *fcb);

// The keys and records of the file, out of its header.
void describeRecords(IndexedFile *file, uint32_t longest, uint32_t shortest, const StoredHeader &header);
// EXTEND, and sequential WRITE after a rollback, go on after the highest key.
int takeHighestKey(IndexedFile *file);

// --- indexed_cursor.cpp: looking into the store, and what changes it

// In one tree of a snapshot, or of a change.
struct StoreCursor {
    IndexedFile *file;
    uint32_t key;
    const StoreSnapshot *in;
    MDB_cursor *inChange; // null: in the snapshot
    PageCursor pages;
};
// Needs `closeCursor` if it gave 0.
int openCursor(IndexedFile *file, MDB_txn *txn, uint32_t key, StoreCursor *cursor);
void closeCursor(StoreCursor *cursor);
// As LMDB's cursors are moved; MDB_FIRST, MDB_LAST, MDB_NEXT, MDB_PREV, MDB_SET and MDB_SET_RANGE.
int moveCursor(StoreCursor *cursor, MDB_cursor_op where, MDB_val *k, MDB_val *v);
// Does another record of the same alternate key follow? Leaves the cursor where it was.
bool hasFollower(StoreCursor *cursor, const MDB_val *at);

int findInStore(IndexedFile *file, MDB_txn *txn, uint32_t key, const MDB_val &k, MDB_val *v);
int putInStore(IndexedFile *file, MDB_txn *txn, uint32_t key, MDB_val k, MDB_val v, unsigned flags);
int eraseInStore(IndexedFile *file, MDB_txn *txn, uint32_t key, MDB_val k);

// --- indexed_record.cpp: a record and its entries in all keys

// Bytes before a record as it is stored: the numbers of its keys with duplicates.
inline size_t numbersSize(const IndexedFile *file) { return size_t(file->numbered) * kSequenceSize; }
// Bytes that `moduleBuffer2` needs: two records as stored.
inline size_t recordRoom(const IndexedFile *file)
{
    return 2 * (numbersSize(file) + file->format.longest + file->sumSize);
}

// Is this a record that this file can have, as it was written? Others are damage of the store.
bool isRecord(const IndexedFile *file, const MDB_val &stored);

// Each does its work in `txn`. `refused`: an alternate key without duplicates is there already, and
// nothing was changed. Status 02 is set where it holds.
int insertRecord(FCB *fcb, IndexedFile *file, MDB_txn *txn, const uint8_t *record, uint32_t length, bool *refused);
int replaceRecord(FCB *fcb, IndexedFile *file, MDB_txn *txn, const uint8_t *record, uint32_t length, const MDB_val &old,
                  bool *refused);
int removeRecord(FCB *fcb, IndexedFile *file, MDB_txn *txn, const MDB_val &old);

// --- indexed_position.cpp: cursors, the place of sequential reading, START

// Bytes of an entry's key. An entry of another length is damage.
inline size_t entrySize(const IndexedFile *file, uint32_t key)
{
    return file->keys[key].length + (hasDuplicates(file, key) ? kSequenceSize : 0);
}
void dropAhead(IndexedFile *file);
// Puts a cursor of the key of reference on the entry that a sequential READ takes next.
int step(IndexedFile *file, StoreCursor *cursor, bool previous, MDB_val *k, MDB_val *v);
// Puts a cursor on the first entry that is not below `bytes`, or is not at them either (`beyond`).
int seekBound(StoreCursor *cursor, const uint8_t *bytes, size_t size, bool beyond, MDB_val *k, MDB_val *v);
void startIndexedAt(FCB *fcb, FileRequest *request);

} // namespace filesystems
