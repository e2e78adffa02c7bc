// Transactions of an indexed file.
//
// A file that others may write commits each change before the verb returns; one that this program
// has alone commits every 10,000 changes and at CLOSE, one that it makes (OUTPUT) every 32 MB. LMDB
// never overwrites a page in use, so a killed program leaves the last commit. Reading goes in a
// snapshot, which ends with the verb: one that stays would hold back the pages that it shows, and
// the store would grow.
//
// The batch of a file that this program has alone goes as a whole when one of its writes fails.
// Changes that the program was told are made go with it: from then on every verb and CLOSE fail.
#include "companions/filesystems/indexed_state.h"
#include "companions/filesystems/transaction.h"

namespace filesystems {

namespace {

constexpr uint32_t kChangesPerCommit = 10000, kCommitsPerReaderCheck = 1000;
constexpr uint64_t kBytesOfNewFile = 32 << 20;

// Is it time to commit a batch? Each commit writes every page that it changed, and in a file that
// grows in no order these are all: one that is being made goes in large parts.
bool isFull(const IndexedFile *file)
{
    const uint64_t limit = bytesPerCommit(file->store);
    if (!file->isNew) return file->changes >= kChangesPerCommit || file->changedBytes >= limit;
    return file->changedBytes >= (limit < kBytesOfNewFile ? limit : kBytesOfNewFile);
}

} // namespace

MDB_txn *reading(IndexedFile *file, int *error)
{
    *error = 0;
    MDB_txn *change = file->batch ? file->batch : file->transactional ? transactionOn(file->store) : nullptr;
    if (change) return (*error = changeIsWhole(file->store)) ? nullptr : change;
    *error = beginReading(file->store, &file->snapshot, &file->view);
    file->snapshotLive = !*error;
    return *error ? nullptr : file->snapshot;
}

void endReading(IndexedFile *file)
{
    if (!file->snapshotLive) return;
    mdb_txn_reset(file->snapshot);
    leaveTransaction(file->store);
    file->snapshotLive = false;
}

MDB_txn *changing(FCB *fcb, const FileRequest *request, int *error)
{
    IndexedFile *file = indexedFileOf(fcb);
    *error = 0;
    if (file->batch) return (*error = changeIsWhole(file->store)) ? nullptr : file->batch;
    if (file->transactional) {
        MDB_txn *txn = transactionOn(file->store);
        if (txn) return (*error = changeIsWhole(file->store)) ? nullptr : txn;
        LockWait wait(file->locks.wait, request);
        while (!txn && (*error = joinTransaction(file->store, file->descriptor, &txn))) {
            failWithStore(fcb, *error);
            if (*error != kInTransaction || !wait.again(fcb)) return nullptr;
        }
        return txn;
    }
    MDB_txn *txn = nullptr;
    *error = beginChange(file->store, &txn, file->alone);
    if (!*error && file->alone) file->batch = txn;
    return txn;
}

int commitBatch(IndexedFile *file)
{
    if (!file->batch) return 0;
    bool acknowledged = file->changes;
    int error = storeIsReplaced(file->store);
    if (error)
        mdb_txn_abort(file->batch);
    else
        error = commitChange(file->store, file->batch);
    file->committed |= !error;
    leaveTransaction(file->store);
    file->batch = nullptr;
    file->changes = 0;
    file->changedBytes = 0;
    file->dropped |= error && acknowledged;
    return error;
}

int changed(IndexedFile *file, MDB_txn *txn, int error, bool made, uint32_t bytes)
{
    if (file->transactional) return error;
    if (file->batch && !error) {
        if (!made) return 0;
        file->changedBytes += bytes;
        ++file->changes;
        return isFull(file) ? commitBatch(file) : 0;
    }
    if (error || !made) {
        mdb_txn_abort(txn);
        file->dropped |= file->batch && file->changes;
        file->batch = nullptr;
        file->changes = 0;
        file->changedBytes = 0;
    } else {
        error = commitChange(file->store, txn);
        file->committed |= !error;
        if (++file->commits % kCommitsPerReaderCheck == 0) clearDeadReaders(file->store);
    }
    leaveTransaction(file->store);
    return error;
}

void failChange(FCB *fcb, IndexedFile *file, int error)
{
    failWithStore(fcb, error);
    if (file->transactional && transactionOn(file->store)) doomTransaction(fcb->status);
    if (file->dropped && !file->lost) file->lost = fcb->status;
}

bool endsForLostChanges(FCB *fcb)
{
    IndexedFile *file = indexedFileOf(fcb);
    uint16_t status = file->lost, doom = file->transactional ? doomOfTransaction() : uint16_t{0};
    if (file->transactional && file->seen != transactionNumber()) {
        // What was read ahead, or written last, may be taken back.
        dropAhead(file);
        if (file->wrote && file->seen < lastRollback()) {
            file->wrote = false;
            if (int error = takeHighestKey(file)) return !failWithStore(fcb, error);
        }
        file->seen = transactionNumber();
    }
    if (!status && !doom) return false;
    fcb->state &= ~(ZVK_FILE_READ_VALID | ZVK_FILE_POSITION_VALID);
    if (doom)
        zvkSetStatus(fcb, doom, fs2Doomed);
    else
        zvkSetStatus(fcb, status, fs2Lost);
    return true;
}

} // namespace filesystems
