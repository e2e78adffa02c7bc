// Transactions of an indexed file.
//
// A file that others may write commits each change before the verb returns; one that this program
// has alone commits every 10,000 changes and at CLOSE. LMDB never overwrites a page in use, so a
// killed program leaves the last commit. Reading goes in a snapshot: INPUT keeps one for some
// records, the rest take a new one each time, so that a program sees at once what others did before
// it read.
#include "companions/filesystems/indexed_state.h"
#include "companions/filesystems/size_limit.h"

namespace filesystems {

static constexpr uint32_t changesPerCommit = 10000, readsPerSnapshot = 1000;

bool snapshotIsOld(const IndexedFile *file) { return file->reads + 1 >= readsPerSnapshot; }

MDB_txn *reading(IndexedFile *file, bool keep, int *error)
{
    *error = 0;
    if (file->batch) return file->batch;
    if (file->snapshotLive && keep && ++file->reads < readsPerSnapshot) return file->snapshot;
    if (file->snapshotLive) mdb_txn_reset(file->snapshot);
    file->snapshotLive = file->cursorOn = false;
    file->reads = 0;
    *error = file->snapshot ? mdb_txn_renew(file->snapshot)
                            : mdb_txn_begin(environmentOf(file->store), nullptr, MDB_RDONLY, &file->snapshot);
    if (*error) return nullptr;
    file->snapshotLive = true;
    return file->snapshot;
}

void endReading(IndexedFile *file)
{
    if (file->snapshotLive) mdb_txn_reset(file->snapshot);
    file->snapshotLive = file->cursorOn = false;
}

MDB_txn *changing(IndexedFile *file, int *error)
{
    *error = 0;
    if (file->batch) return file->batch;
    endReading(file);
    MDB_txn *txn = nullptr;
    *error = mdb_txn_begin(environmentOf(file->store), nullptr, 0, &txn);
    if (!*error && file->alone) file->batch = txn;
    return txn;
}

int changed(IndexedFile *file, MDB_txn *txn, int error, bool made)
{
    SizeLimitHeldOff guard;
    if (error) {
        mdb_txn_abort(txn);
        file->batch = nullptr;
        file->changes = 0;
        return error;
    }
    if (file->batch) {
        if (!made || ++file->changes < changesPerCommit) return 0;
        file->batch = nullptr;
        file->changes = 0;
        return mdb_txn_commit(txn);
    }
    if (made) return mdb_txn_commit(txn);
    mdb_txn_abort(txn);
    return 0;
}

} // namespace filesystems
