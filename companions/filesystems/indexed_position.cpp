// Where an indexed file is read on from.
//
// The place is an entry of the key of reference, kept as bytes: a sequential READ looks it up and
// takes the entry after or before it, or after START the entry itself (`exact`), even if somebody
// deleted it in the meantime.
//
// START with a part of a key compares that many bytes. Each relation is one bound: the first entry
// not below the bytes, or the first beyond all that begin with them; LESS and NOT GREATER take the
// entry before it.
#include "companions/filesystems/indexed_state.h"
#include "companions/filesystems/store_faults.h"

#include <cstring>

namespace filesystems {

namespace {

int seekRelation(StoreCursor *cursor, uint32_t relation, const uint8_t *key, size_t size, MDB_val *k, MDB_val *v)
{
    if (relation == ZVK_RELATION_FIRST) return moveCursor(cursor, MDB_FIRST, k, v);
    if (relation == ZVK_RELATION_LAST) return moveCursor(cursor, MDB_LAST, k, v);
    bool beyond = relation == ZVK_RELATION_GREATER || relation == ZVK_RELATION_NOT_GREATER;
    int error = seekBound(cursor, key, size, beyond, k, v);
    if (error && error != MDB_NOTFOUND) return error;
    if (relation == ZVK_RELATION_EQUAL && !error && k->mv_size < size) return MDB_CORRUPTED;
    if (relation == ZVK_RELATION_EQUAL && !error && memcmp(k->mv_data, key, size) != 0) return MDB_NOTFOUND;
    if (relation == ZVK_RELATION_LESS || relation == ZVK_RELATION_NOT_GREATER)
        return moveCursor(cursor, error == MDB_NOTFOUND ? MDB_LAST : MDB_PREV, k, v);
    return error;
}

} // namespace

int step(IndexedFile *file, StoreCursor *cursor, bool previous, MDB_val *k, MDB_val *v)
{
    if (file->placeSize == 0) return previous ? MDB_NOTFOUND : moveCursor(cursor, MDB_FIRST, k, v);
    *k = valueOf(file->place, file->placeSize);
    int error = moveCursor(cursor, MDB_SET_RANGE, k, v);
    if (error && error != MDB_NOTFOUND) return error;
    bool same = !error && k->mv_size == file->placeSize && memcmp(k->mv_data, file->place, file->placeSize) == 0;
    if (same && file->exact) return 0;
    if (same) return moveCursor(cursor, previous ? MDB_PREV : MDB_NEXT, k, v);

    // The entry at the place is gone. What comes before the place must be below it: a damaged entry
    // leads the search astray, past good ones.
    MDB_val before, record;
    int none = moveCursor(cursor, error == MDB_NOTFOUND ? MDB_LAST : MDB_PREV, &before, &record);
    if (!none && (before.mv_size != entrySize(file, file->reference) ||
                  memcmp(before.mv_data, file->place, before.mv_size) >= 0))
        return MDB_CORRUPTED;
    if (previous) {
        *k = before;
        *v = record;
        return none;
    }
    if (error) return error;
    *k = valueOf(file->place, file->placeSize);
    return moveCursor(cursor, MDB_SET_RANGE, k, v);
}

int seekBound(StoreCursor *cursor, const uint8_t *bytes, size_t size, bool beyond, MDB_val *k, MDB_val *v)
{
    uint8_t bound[kKeyRoom];
    memcpy(bound, bytes, size);
    if (beyond) {
        while (size && bound[size - 1] == 0xFF) --size;
        if (!size) return MDB_NOTFOUND;
        ++bound[size - 1];
    }
    *k = valueOf(bound, size);
    return moveCursor(cursor, MDB_SET_RANGE, k, v);
}

void dropAhead(IndexedFile *file)
{
    file->ahead.at = file->ahead.filled = 0;
    file->ahead.wanted = 1;
}

void startIndexedAt(FCB *fcb, FileRequest *request)
{
    IndexedFile *file = indexedFileOf(fcb);
    if (endsForLostChanges(fcb)) return;
    file->locks.release();
    dropAhead(file);
    fcb->state &= ~(ZVK_FILE_READ_VALID | ZVK_FILE_POSITION_VALID);
    if (request->key >= file->keyCount) return zvkSetStatus(fcb, 23, fs2KeyNumber);
    KeyRoom room;
    const uint8_t *key = keyIn(file, request->key, recordOf(fcb, request), room);
    size_t size = file->keys[request->key].length;
    if (request->keyLength && request->keyLength < size) size = request->keyLength;
    int error;
    MDB_txn *txn = reading(file, &error);
    StoreCursor cursor;
    MDB_val k, v;
    file->reference = request->key;
    cursor.inChange = nullptr;
    if (txn)
        error = withPages(mapOfStore(file->store), [&] {
            int none = openCursor(file, txn, file->reference, &cursor);
            if (!none) none = seekRelation(&cursor, request->relation, key, size, &k, &v);
            if (!none && k.mv_size != entrySize(file, file->reference)) none = MDB_CORRUPTED;
            if (!none) memcpy(file->place, k.mv_data, k.mv_size);
            return none;
        });
    if (txn && !error) {
        file->placeSize = k.mv_size;
        file->exact = true;
        fcb->state |= ZVK_FILE_POSITION_VALID;
    }
    closeCursor(&cursor);
    if (!file->batch) endReading(file);
    if (error == MDB_NOTFOUND)
        zvkSetStatus(fcb, 23, fs2NoRecord);
    else if (error)
        failWithStore(fcb, error);
}

} // namespace filesystems
