// Indexed files: OPEN, CLOSE and the verbs. Their parts: the store (indexed_store.cpp) and its
// transactions, a record with its entries (indexed_record.cpp), the place of sequential reading and
// START (indexed_position.cpp).
#include "companions/filesystems/indexed_file.h"

#include <cerrno>
#include <cstdlib>
#include <cstring>
#include <ctime>
#include <unistd.h>

#include "companions/filesystems/indexed_state.h"
#include "companions/filesystems/size_limit.h"
#include "companions/filesystems/store_faults.h"
#include "companions/filesystems/transaction.h"
#include "companions/filesystems/verb.h"

namespace filesystems {

namespace {

uint64_t lockNumber(const uint8_t *key, size_t size)
{
    uint64_t sum = 0xcbf29ce484222325u;
    for (size_t i = 0; i < size; ++i) sum = (sum ^ key[i]) * 0x100000001b3u;
    return sum ^ (sum >> 60);
}

void writeRecord(FCB *fcb, FileRequest *request)
{
    IndexedFile *file = indexedFileOf(fcb);
    if (endsForLostChanges(fcb)) return;
    file->locks.release();
    const uint8_t *record = recordOf(fcb, request);
    uint32_t length = lengthOfRequest(file->format, request), keySize = file->keys[0].length;
    KeyRoom room;
    const uint8_t *primary = keyIn(file, 0, record, room);
    if (!file->format.allows(length))
        zvkSetStatus(fcb, 44, fs2RecordLength);
    else if (file->sequential && file->wrote && memcmp(primary, file->lastKey, keySize) <= 0)
        zvkSetStatus(fcb, 21, fs2Sequence);
    else {
        int error;
        bool refused = false;
        MDB_txn *txn = changing(fcb, request, &error);
        if (txn) {
            SizeLimitHeldOff guard;
            error = withPages(mapOfStore(file->store), [&] {
                MDB_val k = valueOf(primary, keySize), v;
                int found = findInStore(file, txn, 0, k, &v);
                refused = found == 0;
                return found == MDB_NOTFOUND ? insertRecord(fcb, file, txn, record, length, &refused) : found;
            });
            error = changed(file, txn, error, !refused, length);
            if (file->transactional && !error && !refused) logChange(file->store, false, record, length);
        }
        if (error)
            failChange(fcb, file, error);
        else if (refused)
            zvkSetStatus(fcb, 22, fs2DuplicateKey);
        else if (file->sequential) {
            memcpy(file->lastKey, primary, keySize);
            file->wrote = true;
        }
    }
}

// REWRITE with a record, DELETE with none.
void changeRecord(FCB *fcb, FileRequest *request, bool rewrite)
{
    IndexedFile *file = indexedFileOf(fcb);
    if (endsForLostChanges(fcb)) return;
    const uint8_t *record = recordOf(fcb, request);
    uint32_t keySize = file->keys[0].length, length = rewrite ? lengthOfRequest(file->format, request) : 0;
    KeyRoom room;
    const uint8_t *primary = file->sequential && !rewrite ? file->lastKey : keyIn(file, 0, record, room);
    if (file->sequential && !(fcb->lastVerb == ZVK_VERB_READ && (fcb->state & ZVK_FILE_READ_VALID)))
        zvkSetStatus(fcb, 43, fs2NotRead);
    else if (file->sequential && memcmp(primary, file->lastKey, keySize) != 0)
        zvkSetStatus(fcb, 21, fs2Sequence);
    else if (rewrite && !file->format.allows(length))
        zvkSetStatus(fcb, 44, fs2RecordLength);
    else if (file->locks.forChange(fcb, request, lockNumber(primary, keySize))) {
        int error;
        bool refused = false, missing = false;
        MDB_txn *txn = changing(fcb, request, &error);
        if (txn) {
            SizeLimitHeldOff guard;
            error = withPages(mapOfStore(file->store), [&] {
                MDB_val k = valueOf(primary, keySize), old;
                int found = findInStore(file, txn, 0, k, &old);
                missing = found == MDB_NOTFOUND;
                if (found) return missing ? 0 : found;
                return rewrite ? replaceRecord(fcb, file, txn, record, length, old, &refused)
                               : removeRecord(fcb, file, txn, old);
            });
            error = changed(file, txn, error, !refused && !missing, length);
            if (file->transactional && !error && !refused && !missing)
                logChange(file->store, !rewrite, rewrite ? record : primary, rewrite ? length : keySize);
        }
        file->locks.release();
        if (error)
            failChange(fcb, file, error);
        else if (refused)
            zvkSetStatus(fcb, 22, fs2DuplicateKey);
        else if (missing)
            zvkSetStatus(fcb, 23, fs2NoRecord);
    }
}

void rewriteRecord(FCB *fcb, FileRequest *request) { changeRecord(fcb, request, true); }
void deleteRecord(FCB *fcb, FileRequest *request) { changeRecord(fcb, request, false); }

// What a READ found: the entry in the key of reference, the primary key and the record as stored.
// All of it lies in the store's pages.
struct FoundEntry {
    MDB_val entry;
    MDB_val primary;
    MDB_val stored;
    bool another; // a record of the same alternate key follows
};

// What an entry leads to. Lengths that this file's entries and records do not have are damage.
int followEntry(IndexedFile *file, MDB_txn *txn, StoreCursor *cursor, const MDB_val &k, const MDB_val &v,
                FoundEntry *found)
{
    size_t keySize = file->keys[0].length;
    if (k.mv_size != entrySize(file, file->reference)) return MDB_CORRUPTED;
    *found = {k, file->reference ? v : k, v, false};
    if (found->primary.mv_size != keySize) return MDB_CORRUPTED;
    if (file->reference) {
        // An entry without its record is damage, not the end of the file.
        int error = findInStore(file, txn, 0, found->primary, &found->stored);
        if (error) return error == MDB_NOTFOUND ? MDB_CORRUPTED : error;
        found->another = cursor && hasDuplicates(file, file->reference) && hasFollower(cursor, &found->entry);
    }
    if (!isRecord(file, found->stored)) return MDB_CORRUPTED;
    // The record must have the key that led to it.
    const uint8_t *record = static_cast<const uint8_t *>(found->stored.mv_data) + numbersSize(file);
    KeyRoom room;
    bool same = memcmp(keyIn(file, file->reference, record, room), k.mv_data, file->keys[file->reference].length) == 0;
    return same ? 0 : MDB_CORRUPTED;
}

// A key that is not there: the entries on both sides of its place must be what they say, since a
// damaged one may have been this key.
int confirmAbsence(IndexedFile *file, MDB_txn *txn, const MDB_val &key)
{
    StoreCursor cursor;
    FoundEntry beside;
    MDB_val k = key, v;
    int error = openCursor(file, txn, file->reference, &cursor);
    if (error) return error;
    error = moveCursor(&cursor, MDB_SET_RANGE, &k, &v);
    const bool last = error == MDB_NOTFOUND;
    if (!error) error = followEntry(file, txn, nullptr, k, v, &beside);
    if (!error || last) error = moveCursor(&cursor, last ? MDB_LAST : MDB_PREV, &k, &v);
    if (!error) error = followEntry(file, txn, nullptr, k, v, &beside);
    closeCursor(&cursor);
    return error ? error : MDB_NOTFOUND;
}

// By key: `cursor` stays closed where the primary key finds the record at once.
// What it finds for the primary key may have its key in `room`.
int findByKey(IndexedFile *file, MDB_txn *txn, const uint8_t *record, StoreCursor *cursor, KeyRoom &room, MDB_val *k,
              MDB_val *v)
{
    const uint32_t key = file->reference;
    const size_t size = file->keys[key].length;
    const MDB_val sought = valueOf(keyIn(file, key, record, room), size);
    int error;
    if (key == 0) {
        *k = sought;
        error = findInStore(file, txn, 0, *k, v);
    } else {
        error = openCursor(file, txn, key, cursor);
        if (!error) error = seekBound(cursor, static_cast<const uint8_t *>(sought.mv_data), size, false, k, v);
        if (!error && k->mv_size < size) return MDB_CORRUPTED;
        if (!error && memcmp(k->mv_data, sought.mv_data, size) != 0) error = MDB_NOTFOUND;
    }
    return error == MDB_NOTFOUND ? confirmAbsence(file, txn, sought) : error;
}

int findEntry(IndexedFile *file, MDB_txn *txn, const FileRequest *request, bool random, const uint8_t *record,
              StoreCursor *cursor, KeyRoom &room, FoundEntry *found)
{
    MDB_val k = {}, v = {};
    int error =
        random ? findByKey(file, txn, record, cursor, room, &k, &v) : openCursor(file, txn, file->reference, cursor);
    if (!error && !random) error = step(file, cursor, request->options & ZVK_REQUEST_PREVIOUS, &k, &v);
    return error ? error : followEntry(file, txn, cursor, k, v, found);
}

constexpr size_t kAheadSize = 65536;
constexpr uint32_t kMostAhead = 1000;
constexpr int64_t kAheadLife = 1000; // milliseconds; what others write is seen after that at the latest

struct AheadEntry {
    uint32_t entrySize, primarySize, storedSize, another;
};

int64_t milliseconds()
{
    timespec now;
    clock_gettime(CLOCK_MONOTONIC_COARSE, &now);
    return int64_t(now.tv_sec) * 1000 + now.tv_nsec / 1000000;
}

// Copies what follows the cursor; the search goes on from the last record that was delivered, so
// what cannot be read is met again when the program gets there.
void fillAhead(IndexedFile *file, MDB_txn *txn, StoreCursor *cursor, bool back)
{
    ReadAhead &ahead = file->ahead;
    uint32_t wanted = ahead.wanted;
    dropAhead(file);
    ahead.wanted = wanted < kMostAhead / 4 ? wanted * 4 : kMostAhead;
    ahead.back = back;
    ahead.madeAt = milliseconds();
    for (uint32_t n = 1; n < wanted; ++n) {
        MDB_val k, v;
        FoundEntry next;
        if (moveCursor(cursor, back ? MDB_PREV : MDB_NEXT, &k, &v)) break;
        if (followEntry(file, txn, cursor, k, v, &next)) break;
        AheadEntry entry = {static_cast<uint32_t>(next.entry.mv_size), static_cast<uint32_t>(next.primary.mv_size),
                            static_cast<uint32_t>(next.stored.mv_size), next.another};
        size_t size = sizeof entry + entry.entrySize + entry.primarySize + entry.storedSize;
        if (size > ahead.capacity - ahead.filled) break;
        uint8_t *to = ahead.buffer + ahead.filled;
        memcpy(to, &entry, sizeof entry);
        memcpy(to += sizeof entry, next.entry.mv_data, entry.entrySize);
        memcpy(to += entry.entrySize, next.primary.mv_data, entry.primarySize);
        memcpy(to + entry.primarySize, next.stored.mv_data, entry.storedSize);
        ahead.filled += size;
    }
}

// The next record out of what was read ahead, and the bytes it takes there; 0: none.
size_t takeAhead(IndexedFile *file, bool back, FoundEntry *found)
{
    ReadAhead &ahead = file->ahead;
    if (ahead.at == ahead.filled || ahead.back != back || file->exact) return 0;
    if (milliseconds() - ahead.madeAt > kAheadLife) return 0;
    AheadEntry entry;
    uint8_t *from = ahead.buffer + ahead.at;
    memcpy(&entry, from, sizeof entry);
    found->entry = valueOf(from + sizeof entry, entry.entrySize);
    found->primary = valueOf(from + sizeof entry + entry.entrySize, entry.primarySize);
    found->stored = valueOf(from + sizeof entry + entry.entrySize + entry.primarySize, entry.storedSize);
    found->another = entry.another;
    return sizeof entry + entry.entrySize + entry.primarySize + entry.storedSize;
}

// The lock of a record that was found, as the statement has it; a refusal is in the status. True if
// it is a new one: what was read before it may be old.
bool lockFound(FCB *fcb, IndexedFile *file, const FoundEntry &found, uint32_t options)
{
    RecordLocks &locks = file->locks;
    if (!locks.active && !locks.looks) return false;
    uint64_t number = lockNumber(static_cast<const uint8_t *>(found.primary.mv_data), found.primary.mv_size);
    if (locks.holding && locks.held == number) return false;
    locks.release();
    return locks.forRead(fcb, number, options) && locks.holding;
}

void deliver(FCB *fcb, IndexedFile *file, FileRequest *request, const FoundEntry &found, uint8_t *record)
{
    size_t numbers = numbersSize(file), size = found.stored.mv_size - numbers - file->sumSize;
    memcpy(file->lastKey, found.primary.mv_data, found.primary.mv_size);
    memcpy(record, static_cast<const uint8_t *>(found.stored.mv_data) + numbers, size);
    memcpy(file->place, found.entry.mv_data, found.entry.mv_size);
    file->placeSize = found.entry.mv_size;
    file->exact = false;
    fcb->recordLength = request->recordLength = static_cast<uint32_t>(size);
    zvkSetStatus(fcb, found.another ? 2 : 0, found.another ? fs2DuplicateKey : fs2None);
}

// One attempt at a READ. False: a lock was taken, and the record must be read anew under it.
bool tryRead(FCB *fcb, IndexedFile *file, FileRequest *request, bool random, uint8_t *record)
{
    bool back = request->options & ZVK_REQUEST_PREVIOUS, ahead = file->ahead.buffer && !random;
    FoundEntry found;
    if (size_t size = ahead ? takeAhead(file, back, &found) : 0) {
        lockFound(fcb, file, found, request->options);
        if (fcb->status > 9) return true;
        deliver(fcb, file, request, found, record);
        file->ahead.at += size;
        return true;
    }
    int error;
    MDB_txn *txn = reading(file, &error);
    StoreCursor cursor;
    cursor.inChange = nullptr;
    KeyRoom room;
    bool again = false, delivered = false;
    if (txn)
        error = withPages(mapOfStore(file->store), [&] {
            if (int none = findEntry(file, txn, request, random, record, &cursor, room, &found)) return none;
            again = lockFound(fcb, file, found, request->options);
            if (again || fcb->status > 9) return 0;
            deliver(fcb, file, request, found, record);
            delivered = true;
            return 0;
        });
    if (delivered && !ahead)
        dropAhead(file);
    else if (delivered && withPages(mapOfStore(file->store), [&] { return fillAhead(file, txn, &cursor, back), 0; }))
        dropAhead(file);
    if (error == MDB_NOTFOUND)
        zvkSetStatus(fcb, random ? 23 : 10, random ? fs2NoRecord : fs2AtEnd);
    else if (error)
        failWithStore(fcb, error);
    closeCursor(&cursor);
    endReading(file);
    return !again;
}

void readRecord(FCB *fcb, FileRequest *request)
{
    IndexedFile *file = indexedFileOf(fcb);
    if (endsForLostChanges(fcb)) return;
    bool random = !file->sequential && !(request->options & (ZVK_REQUEST_NEXT | ZVK_REQUEST_PREVIOUS));
    uint8_t *record = recordOf(fcb, request);
    if (!random && !(fcb->state & ZVK_FILE_POSITION_VALID)) {
        zvkSetStatus(fcb, 46, fs2NoPosition);
    } else if (random && request->key >= file->keyCount) {
        zvkSetStatus(fcb, 23, fs2KeyNumber);
    } else {
        if (random) file->reference = request->key;
        LockWait wait(file->locks.wait, request);
        while (!tryRead(fcb, file, request, random, record) || wait.again(fcb)) {
        }
    }
    if (fcb->status > 9) {
        fcb->state &= ~ZVK_FILE_READ_VALID;
        if (fcb->status != statusRecordLocked) {
            fcb->state &= ~ZVK_FILE_POSITION_VALID;
            file->locks.release();
        }
    } else {
        fcb->state |= ZVK_FILE_READ_VALID | ZVK_FILE_POSITION_VALID;
    }
}

void unlock(FCB *fcb, FileRequest *) { indexedFileOf(fcb)->locks.releaseAll(); }

void endFile(IndexedFile *file)
{
    if (file->snapshot) mdb_txn_abort(file->snapshot);
    leaveStore(file->store);
    if (file->transactional) registerClosed(file->descriptor);
    close(file->descriptor);
}

void closeFile(FCB *fcb)
{
    IndexedFile *file = indexedFileOf(fcb);
    SizeLimitHeldOff guard;
    int error = commitBatch(file);
    if (error)
        failWithStore(fcb, error);
    else if (file->lost)
        fail(fcb, file->lost, fs2Lost);
    else if (file->isNew && file->alone && trimStore(file->store, file->data, file->keyCount))
        error = 0;
    else if (file->committed && (error = forceStore(file->store)))
        failWithStore(fcb, error);
    endFile(file);
}

} // namespace

// EXTEND goes on after the highest key.
int takeHighestKey(IndexedFile *file)
{
    int error;
    MDB_txn *txn = reading(file, &error);
    StoreCursor cursor;
    MDB_val k, v;
    cursor.inChange = nullptr;
    if (txn)
        error = withPages(mapOfStore(file->store), [&] {
            int none = openCursor(file, txn, file->reference, &cursor);
            if (!none) none = moveCursor(&cursor, MDB_LAST, &k, &v);
            if (!none && k.mv_size != file->keys[0].length) none = MDB_CORRUPTED;
            if (!none) memcpy(file->lastKey, k.mv_data, k.mv_size);
            return none;
        });
    if (!error) file->wrote = true;
    closeCursor(&cursor);
    endReading(file);
    return error == MDB_NOTFOUND ? 0 : error;
}

// A record that ends before one of its keys does has no such key: the shortest record reaches to
// the end of the last.
void describeRecords(IndexedFile *file, uint32_t longest, uint32_t shortest, const StoredHeader &header)
{
    file->format = {longest, shortest, longest != shortest};
    file->sumSize = sumSizeOf(header);
    file->keyCount = header.keyCount;
    memcpy(file->keys, header.keys, sizeof file->keys);
    memcpy(file->parts, header.parts, sizeof file->parts);
    for (uint32_t key = 0; key < file->keyCount; ++key) {
        auto end = static_cast<uint32_t>(endOfKey(file->keys[key], file->parts));
        if (file->format.shortest < end) file->format.shortest = end;
        file->numbered += hasDuplicates(file, key);
    }
}

void startIndexed(FCB *fcb, const FIB *fib, const Opened &opened, const StoredHeader &header)
{
    bool input = fcb->requestedMode & ZVK_OPEN_INPUT, io = fcb->requestedMode & ZVK_OPEN_IO;
    IndexedFile *file = newState<IndexedFile>(fcb);
    if (file) {
        file->descriptor = opened.descriptor;
        describeRecords(file, fib->maxRecord, fib->minRecord, header);
        file->sequential = fib->accessMode & ZVK_FILE_ACCESS_SEQUENTIAL;
        file->locks.start(fcb, fib, opened.descriptor);
        file->transactional = file->locks.transactional = transactionsWanted();
        file->seen = transactionNumber();
        if (file->transactional) registerOpen(opened.descriptor);
        file->isNew = fcb->requestedMode & ZVK_OPEN_OUTPUT;
        file->alone = !input && opened.held.alone && !file->transactional;
        size_t own = recordRoom(file);
        fcb->moduleBuffer2 = malloc(own + (input ? kAheadSize : 0));
        if (input) file->ahead = {static_cast<uint8_t *>(fcb->moduleBuffer2) + own, kAheadSize, 0, 0, 1, false, 0};
    }
    if (!fcb->moduleBuffer2)
        fail(fcb, 34, fs2Storage);
    else
        file->store = useStore(fcb, opened, !input, file->transactional, header, file->data);
    if (file && file->store && (fcb->requestedMode & ZVK_OPEN_EXTEND) && file->sequential)
        if (int error = takeHighestKey(file)) failWithStore(fcb, error);
    if (fcb->status > 9) {
        if (file)
            endFile(file);
        else
            close(opened.descriptor);
        return dropBuffers(fcb);
    }
    if (input || io) fcb->read = verb<ZVK_VERB_READ, readRecord>, fcb->start = verb<ZVK_VERB_START, startIndexedAt>;
    if (!input && !(io && file->sequential)) fcb->write = verb<ZVK_VERB_WRITE, writeRecord>;
    if (io) fcb->rewrite = verb<ZVK_VERB_REWRITE, rewriteRecord>;
    if (io) fcb->deleteRecord = verb<ZVK_VERB_DELETE, deleteRecord>;
    if (fib->sharing) fcb->unlock = verb<ZVK_VERB_UNLOCK, unlock>;
    fcb->close = closing<closeFile>;
}

} // namespace filesystems
