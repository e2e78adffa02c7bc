// A record of an indexed file, and its entries in all keys.
//
//     database "r"     primary key -> sequence numbers of the alternate keys with duplicates, 8 bytes each | record
//                                   | checksum of both, 4 bytes
//     database "1"...  alternate key -> primary key
//                      with duplicates: alternate key | sequence number, big-endian -> primary key
//
// The sequence number grows with each duplicate, so duplicates come back in the order in which they
// were written, and the record knows its own, so that REWRITE and DELETE find its entry at once.
// All keys lie within the shortest record.
#include "companions/filesystems/indexed_state.h"

#include <cstring>

namespace filesystems {

namespace {

void putSequence(uint8_t *to, uint64_t number)
{
    number = __builtin_bswap64(number);
    memcpy(to, &number, kSequenceSize);
}

// The entry of an alternate key: with duplicates the number goes after it.
size_t entryKey(const IndexedFile *file, uint32_t key, const uint8_t *record, uint64_t number, KeyRoom &entry)
{
    uint32_t length = file->keys[key].length;
    const uint8_t *bytes = keyIn(file, key, record, entry);
    if (bytes != entry) memcpy(entry, bytes, length);
    if (!hasDuplicates(file, key)) return length;
    putSequence(entry + length, number);
    return length + kSequenceSize;
}

// The number of the next duplicate of a key; 1 when it has none yet.
int nextNumber(IndexedFile *file, MDB_txn *txn, uint32_t key, const uint8_t *record, uint64_t *number)
{
    KeyRoom entry;
    size_t size = entryKey(file, key, record, ~uint64_t(0), entry);
    StoreCursor cursor;
    int error = openCursor(file, txn, key, &cursor);
    if (error) return error;
    MDB_val k = valueOf(entry, size), v;
    cursor.pages.trusting = true; // a number that is there already is refused when the entry is put
    error = moveCursor(&cursor, MDB_SET_RANGE, &k, &v);
    if (!error || error == MDB_NOTFOUND)
        error = moveCursor(&cursor, error == MDB_NOTFOUND ? MDB_LAST : MDB_PREV, &k, &v);
    *number = 1;
    if (!error && k.mv_size == size && memcmp(k.mv_data, entry, size - kSequenceSize) == 0) {
        uint64_t last;
        memcpy(&last, static_cast<uint8_t *>(k.mv_data) + size - kSequenceSize, kSequenceSize);
        *number = __builtin_bswap64(last) + 1;
    }
    closeCursor(&cursor);
    return error == MDB_NOTFOUND ? 0 : error;
}

// The stored form is put together in moduleBuffer2: numbers, then the record.
uint8_t *newRecord(FCB *fcb) { return static_cast<uint8_t *>(fcb->moduleBuffer2); }

// The old record lies in a page that the changes may move: it is copied after the new one.
const uint8_t *copyOfOld(FCB *fcb, const IndexedFile *file, const MDB_val &old)
{
    uint8_t *copy = newRecord(fcb) + numbersSize(file) + file->format.longest + file->sumSize;
    memcpy(copy, old.mv_data, old.mv_size);
    return copy;
}

// Has a record that is there, and is to be replaced by another, the same key?
bool sameKey(const IndexedFile *file, uint32_t key, const uint8_t *record, const uint8_t *old)
{
    KeyRoom room, oldRoom;
    return old && memcmp(keyIn(file, key, record, room), keyIn(file, key, old, oldRoom), file->keys[key].length) == 0;
}

// All that can refuse comes before the first change: 0, MDB_KEYEXIST, or an error.
int findRefusal(IndexedFile *file, MDB_txn *txn, const uint8_t *record, const uint8_t *old)
{
    for (uint32_t key = 1; key < file->keyCount; ++key) {
        if (hasDuplicates(file, key) || sameKey(file, key, record, old)) continue;
        KeyRoom room;
        MDB_val k = valueOf(keyIn(file, key, record, room), file->keys[key].length), v;
        int error = findInStore(file, txn, key, k, &v);
        if (error != MDB_NOTFOUND) return error ? error : MDB_KEYEXIST;
    }
    return 0;
}

// `old`: the stored record that this one replaces, or null.
int putRecord(FCB *fcb, IndexedFile *file, MDB_txn *txn, const uint8_t *record, uint32_t length, const uint8_t *old,
              bool *refused)
{
    uint8_t *stored = newRecord(fcb);
    KeyRoom entry, primaryRoom;
    const uint8_t *oldRecord = old ? old + numbersSize(file) : nullptr;
    MDB_val primary = valueOf(keyIn(file, 0, record, primaryRoom), file->keys[0].length);
    int error = findRefusal(file, txn, record, oldRecord);
    *refused = error == MDB_KEYEXIST;
    if (error) return *refused ? 0 : error;
    uint32_t n = 0;
    bool another = false;
    for (uint32_t key = 1; key < file->keyCount; ++key) {
        bool duplicates = hasDuplicates(file, key);
        uint64_t sequence = 0;
        if (duplicates && old) memcpy(&sequence, old + n * kSequenceSize, kSequenceSize);
        if (!sameKey(file, key, record, oldRecord)) {
            if (old) {
                MDB_val k = valueOf(entry, entryKey(file, key, oldRecord, sequence, entry));
                if ((error = eraseInStore(file, txn, key, k))) return error;
            }
            if (duplicates && (error = nextNumber(file, txn, key, record, &sequence))) return error;
            another |= duplicates && sequence > 1;
            MDB_val k = valueOf(entry, entryKey(file, key, record, sequence, entry));
            error = putInStore(file, txn, key, k, primary, MDB_NOOVERWRITE);
            if (error) return error == MDB_KEYEXIST ? MDB_CORRUPTED : error;
        }
        if (duplicates) memcpy(stored + n++ * kSequenceSize, &sequence, kSequenceSize);
    }
    memcpy(stored + n * kSequenceSize, record, length);
    size_t size = n * kSequenceSize + length;
    if (file->sumSize) putSum(0, stored, size);
    MDB_val value = valueOf(stored, size + file->sumSize);
    error = putInStore(file, txn, 0, primary, value, old ? 0 : MDB_NOOVERWRITE);
    if (!error && another) zvkSetStatus(fcb, 2, fs2DuplicateKey);
    return error;
}

} // namespace

bool isRecord(const IndexedFile *file, const MDB_val &stored)
{
    size_t around = numbersSize(file) + file->sumSize, size = stored.mv_size;
    if (size < around + file->format.shortest || size > around + file->format.longest) return false;
    return !file->sumSize || hasSum(0, static_cast<const uint8_t *>(stored.mv_data), size - file->sumSize);
}

int insertRecord(FCB *fcb, IndexedFile *file, MDB_txn *txn, const uint8_t *record, uint32_t length, bool *refused)
{
    return putRecord(fcb, file, txn, record, length, nullptr, refused);
}

int replaceRecord(FCB *fcb, IndexedFile *file, MDB_txn *txn, const uint8_t *record, uint32_t length, const MDB_val &old,
                  bool *refused)
{
    if (!isRecord(file, old)) return MDB_CORRUPTED;
    return putRecord(fcb, file, txn, record, length, copyOfOld(fcb, file, old), refused);
}

int removeRecord(FCB *fcb, IndexedFile *file, MDB_txn *txn, const MDB_val &old)
{
    if (!isRecord(file, old)) return MDB_CORRUPTED;
    const uint8_t *copy = copyOfOld(fcb, file, old), *record = copy + numbersSize(file);
    KeyRoom entry;
    for (uint32_t key = 1, n = 0; key < file->keyCount; ++key) {
        uint64_t number = 0;
        if (hasDuplicates(file, key)) memcpy(&number, copy + n++ * kSequenceSize, kSequenceSize);
        MDB_val k = valueOf(entry, entryKey(file, key, record, number, entry));
        if (int error = eraseInStore(file, txn, key, k)) return error;
    }
    MDB_val primary = valueOf(keyIn(file, 0, record, entry), file->keys[0].length);
    return eraseInStore(file, txn, 0, primary);
}

} // namespace filesystems
