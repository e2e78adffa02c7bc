// Indexed files: the header in the named file, records and indexes in an LMDB environment beside it, NAME.mdb.
//
//     database "r"     primary key -> sequence numbers of the alternate keys with duplicates, 8 bytes each | record
//     database "1"...  alternate key -> primary key
//                      with duplicates: alternate key | sequence number, big-endian -> primary key
//
// The sequence number grows with each duplicate, so duplicates come back in the order in which they were written, and the record knows its own, so
// that REWRITE and DELETE find its entry at once. A file that others may write commits each change; one that is open for this program alone commits every
// 10,000 changes and at CLOSE. LMDB never overwrites a page in use, so a killed program leaves the last commit.
#include "companions/filesystems/indexed_file.h"

#include <errno.h>
#include <fcntl.h>
#include <limits.h>
#include <lmdb.h>
#include <pthread.h>
#include <stdlib.h>
#include <string.h>
#include <sys/stat.h>
#include <unistd.h>

#include "companions/filesystems/record_format.h"
#include "companions/filesystems/record_locks.h"
#include "companions/filesystems/size_limit.h"

namespace filesystems {

namespace {

constexpr size_t mapSize = size_t(1) << 36;
constexpr uint32_t changesPerCommit = 10000, readsPerSnapshot = 1000;
constexpr uint32_t sequenceSize = 8;
constexpr size_t keyRoom = 512;

// One LMDB environment may be open only once in a process; the files of a program that are the same file share it.
struct Store {
    dev_t device;
    ino_t inode;
    MDB_env *env;
    uint32_t users;
    bool writable;
    Store *next;
};
Store *stores;
pthread_mutex_t storesLock = PTHREAD_MUTEX_INITIALIZER;

struct IndexedFile {
    int descriptor;
    Store *store;
    MDB_txn *batch;    // exclusive: the transaction that is being filled
    MDB_txn *snapshot; // reading
    bool snapshotLive;
    MDB_cursor *cursor; // INPUT: on the record last read, while `cursorOn`
    bool cursorOn;
    bool exclusive, sequential, exact, positioned;
    uint32_t changes, reads;
    uint32_t keyCount, numbered; // keys; alternates with duplicates
    FileKey keys[mostKeys];
    MDB_dbi data[mostKeys];
    RecordFormat format;
    RecordLocks locks;
    uint32_t reference; // key of reference
    uint8_t place[keyRoom];
    size_t placeSize;
    uint8_t lastKey[keyRoom]; // primary key of the last READ, or of the last sequential WRITE
    bool wrote;
};

IndexedFile *fileOf(FCB *fcb) { return static_cast<IndexedFile *>(fcb->moduleBuffer); }

bool duplicates(const IndexedFile *file, uint32_t key) { return key && (file->keys[key].flags & ZVK_FILE_KEY_DUPLICATES); }

bool failWithStore(FCB *fcb, int error)
{
    // LMDB says EIO when the system took only a part of what it wrote: the disk or the file-size limit is full.
    if (error == EIO) return fail(fcb, 34, fs2Full);
    if (error > 0) return failWithErrno(fcb, error);
    if (error == MDB_MAP_FULL || error == MDB_TXN_FULL) return fail(fcb, 34, fs2Full);
    return fail(fcb, 30, fs2Store);
}

bool storeName(FCB *fcb, char *name, const char *suffix)
{
    if (snprintf(name, PATH_MAX, "%s.mdb%s", fcb->fileName, suffix) < PATH_MAX) return true;
    return failWithErrno(fcb, ENAMETOOLONG);
}

int openEnvironment(const char *name, bool writable, MDB_env **env)
{
    int error = mdb_env_create(env);
    if (error) return error;
    mdb_env_set_mapsize(*env, mapSize);
    mdb_env_set_maxdbs(*env, mostKeys + 2);
    unsigned flags = MDB_NOSUBDIR | MDB_NOTLS | MDB_NOSYNC | (writable ? 0 : MDB_RDONLY);
    error = mdb_env_open(*env, name, flags, 0666);
    if (error) {
        mdb_env_close(*env);
        *env = nullptr;
    }
    return error;
}

void databaseName(uint32_t key, char *name) { snprintf(name, 8, key ? "%u" : "r", key); }

// Pages that the file's end cuts off would end the program when they are touched; as zeros they are an error of the store.
bool completePages(const char *name, MDB_env *env)
{
    MDB_envinfo info;
    MDB_stat about;
    struct stat file;
    if (mdb_env_info(env, &info) || mdb_env_stat(env, &about) || stat(name, &file)) return false;
    off_t size = static_cast<off_t>((info.me_last_pgno + 1) * about.ms_psize);
    return file.st_size >= size || truncate(name, size) == 0;
}

Store *useStore(FCB *fcb, bool writable, int *error)
{
    char name[PATH_MAX];
    struct stat about;
    *error = 0;
    if (!storeName(fcb, name, "")) return nullptr;
    if (stat(name, &about) != 0 || about.st_size == 0) {
        *error = MDB_INVALID;
        return nullptr;
    }
    pthread_mutex_lock(&storesLock);
    Store *store = stores;
    while (store && !(store->device == about.st_dev && store->inode == about.st_ino)) store = store->next;
    if (store && writable && !store->writable)
        *error = EBUSY, store = nullptr;
    else if (store)
        ++store->users;
    else {
        MDB_env *env = nullptr;
        *error = openEnvironment(name, writable, &env);
        int dead;
        if (!*error) mdb_reader_check(env, &dead); // places of readers that were killed
        if (!*error && !completePages(name, env)) {
            mdb_env_close(env);
            *error = MDB_CORRUPTED;
        }
        store = *error ? nullptr : static_cast<Store *>(calloc(1, sizeof(Store)));
        if (store) {
            *store = {about.st_dev, about.st_ino, env, 1, writable, stores};
            stores = store;
        } else if (!*error) {
            mdb_env_close(env);
            *error = ENOMEM;
        }
    }
    pthread_mutex_unlock(&storesLock);
    return store;
}

void leaveStore(Store *store)
{
    if (!store) return;
    pthread_mutex_lock(&storesLock);
    if (--store->users == 0) {
        Store **link = &stores;
        while (*link != store) link = &(*link)->next;
        *link = store->next;
        mdb_env_close(store->env);
        free(store);
    }
    pthread_mutex_unlock(&storesLock);
}

MDB_txn *reading(IndexedFile *file, bool keep, int *error)
{
    *error = 0;
    if (file->batch) return file->batch;
    if (file->snapshotLive && keep && ++file->reads < readsPerSnapshot) return file->snapshot;
    if (file->snapshotLive) mdb_txn_reset(file->snapshot);
    file->snapshotLive = file->cursorOn = false;
    file->reads = 0;
    *error = file->snapshot ? mdb_txn_renew(file->snapshot) : mdb_txn_begin(file->store->env, nullptr, MDB_RDONLY, &file->snapshot);
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
    *error = mdb_txn_begin(file->store->env, nullptr, 0, &txn);
    if (!*error && file->exclusive) file->batch = txn;
    return txn;
}

// Ends a change: `error` undoes it, and in a batch all since the last commit, which cannot be told apart.
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

MDB_val valueOf(const void *data, size_t size) { return {size, const_cast<void *>(data)}; }

uint64_t lockNumber(const uint8_t *key, size_t size)
{
    uint64_t sum = 0xcbf29ce484222325u;
    for (size_t i = 0; i < size; ++i) sum = (sum ^ key[i]) * 0x100000001b3u;
    return sum ^ (sum >> 60);
}

const uint8_t *keyIn(const IndexedFile *file, uint32_t key, const uint8_t *record) { return record + file->keys[key].position; }

void putSequence(uint8_t *to, uint64_t number)
{
    number = __builtin_bswap64(number);
    memcpy(to, &number, sequenceSize);
}

// The entry of an alternate key: with duplicates the number goes behind it.
size_t entryKey(const IndexedFile *file, uint32_t key, const uint8_t *record, uint64_t number, uint8_t *entry)
{
    uint32_t length = file->keys[key].length;
    memcpy(entry, keyIn(file, key, record), length);
    if (!duplicates(file, key)) return length;
    putSequence(entry + length, number);
    return length + sequenceSize;
}

// The number of the next duplicate of a key; 1 when it has none yet.
int nextNumber(IndexedFile *file, MDB_txn *txn, uint32_t key, const uint8_t *record, uint64_t *number)
{
    uint8_t entry[keyRoom];
    size_t size = entryKey(file, key, record, ~uint64_t(0), entry);
    MDB_cursor *cursor;
    int error = mdb_cursor_open(txn, file->data[key], &cursor);
    if (error) return error;
    MDB_val k = valueOf(entry, size), v;
    error = mdb_cursor_get(cursor, &k, &v, MDB_SET_RANGE);
    error = mdb_cursor_get(cursor, &k, &v, error == MDB_NOTFOUND ? MDB_LAST : MDB_PREV);
    *number = 1;
    if (!error && k.mv_size == size && memcmp(k.mv_data, entry, size - sequenceSize) == 0) {
        uint64_t last;
        memcpy(&last, static_cast<uint8_t *>(k.mv_data) + size - sequenceSize, sequenceSize);
        *number = __builtin_bswap64(last) + 1;
    }
    mdb_cursor_close(cursor);
    return error == MDB_NOTFOUND ? 0 : error;
}

uint8_t *moduleRecord(FCB *fcb) { return static_cast<uint8_t *>(fcb->moduleBuffer2); }

// The stored form is put together in moduleBuffer2: numbers, then the record. `old`: the record that it replaces, or null.
int putRecord(FCB *fcb, IndexedFile *file, MDB_txn *txn, const uint8_t *record, uint32_t length, const MDB_val *old, bool *refused)
{
    uint8_t *stored = moduleRecord(fcb), entry[keyRoom];
    const uint8_t *oldNumbers = old ? static_cast<const uint8_t *>(old->mv_data) : nullptr;
    const uint8_t *oldRecord = old ? oldNumbers + file->numbered * sequenceSize : nullptr;
    MDB_val primary = valueOf(keyIn(file, 0, record), file->keys[0].length), value;
    int error;
    *refused = false;
    // All that can refuse comes before the first change.
    for (uint32_t key = 1; key < file->keyCount; ++key) {
        if (duplicates(file, key)) continue;
        if (old && memcmp(keyIn(file, key, record), keyIn(file, key, oldRecord), file->keys[key].length) == 0) continue;
        MDB_val k = valueOf(keyIn(file, key, record), file->keys[key].length);
        error = mdb_get(txn, file->data[key], &k, &value);
        if (error != MDB_NOTFOUND) {
            *refused = !error;
            return error;
        }
    }
    // The old record lies in a page that the changes below may move: it is copied behind the new one.
    uint8_t *copy = stored + file->numbered * sequenceSize + file->format.longest;
    if (old) {
        memcpy(copy, old->mv_data, old->mv_size);
        oldNumbers = copy;
        oldRecord = copy + file->numbered * sequenceSize;
    }
    uint32_t n = 0;
    bool another = false;
    for (uint32_t key = 1; key < file->keyCount; ++key) {
        uint8_t *number = stored + n * sequenceSize;
        uint64_t sequence = 0, oldSequence = 0;
        if (duplicates(file, key)) {
            if (old) memcpy(&oldSequence, oldNumbers + n * sequenceSize, sequenceSize);
            ++n;
        }
        if (old && memcmp(keyIn(file, key, record), keyIn(file, key, oldRecord), file->keys[key].length) == 0) {
            if (duplicates(file, key)) memcpy(number, &oldSequence, sequenceSize);
            continue;
        }
        if (old) {
            MDB_val k = valueOf(entry, entryKey(file, key, oldRecord, oldSequence, entry));
            if ((error = mdb_del(txn, file->data[key], &k, nullptr))) return error;
        }
        if (duplicates(file, key)) {
            if ((error = nextNumber(file, txn, key, record, &sequence))) return error;
            memcpy(number, &sequence, sequenceSize);
            another |= sequence > 1;
        }
        MDB_val k = valueOf(entry, entryKey(file, key, record, sequence, entry));
        if ((error = mdb_put(txn, file->data[key], &k, &primary, 0))) return error;
    }
    memcpy(stored + n * sequenceSize, record, length);
    value = valueOf(stored, n * sequenceSize + length);
    error = mdb_put(txn, file->data[0], &primary, &value, old ? 0 : MDB_NOOVERWRITE);
    if (!error && another) zvkSetStatus(fcb, 2, fs2DuplicateKey);
    return error;
}

void writeRecord(FCB *fcb, IPCB *element, FileRequest *request)
{
    IndexedFile *file = fileOf(fcb);
    fcb->currentVerb = ZVK_VERB_WRITE;
    zvkSetStatus(fcb, 0, fs2None);
    file->locks.release();
    const uint8_t *record = recordOf(fcb, request);
    uint32_t length = lengthOfRequest(file->format, request), keySize = file->keys[0].length;
    const uint8_t *primary = keyIn(file, 0, record);
    if (!file->format.allows(length))
        zvkSetStatus(fcb, 44, fs2RecordLength);
    else if (file->sequential && file->wrote && memcmp(primary, file->lastKey, keySize) <= 0)
        zvkSetStatus(fcb, 21, fs2Sequence);
    else {
        int error;
        bool refused = false;
        MDB_txn *txn = changing(file, &error);
        if (txn) {
            MDB_val k = valueOf(primary, keySize), v;
            error = mdb_get(txn, file->data[0], &k, &v);
            if (error == 0)
                refused = true;
            else if (error == MDB_NOTFOUND) {
                SizeLimitHeldOff guard;
                error = putRecord(fcb, file, txn, record, length, nullptr, &refused);
            }
            error = changed(file, txn, error, !refused);
        }
        if (error)
            failWithStore(fcb, error);
        else if (refused)
            zvkSetStatus(fcb, 22, fs2DuplicateKey);
        else if (file->sequential) {
            memcpy(file->lastKey, primary, keySize);
            file->wrote = true;
        }
    }
    zvkFinishVerb(fcb, element, ZVK_VERB_WRITE);
}

// REWRITE with a record, DELETE with none.
void changeRecord(FCB *fcb, IPCB *element, FileRequest *request, uint8_t verb)
{
    IndexedFile *file = fileOf(fcb);
    bool rewrite = verb == ZVK_VERB_REWRITE;
    fcb->currentVerb = verb;
    zvkSetStatus(fcb, 0, fs2None);
    const uint8_t *record = recordOf(fcb, request);
    uint32_t keySize = file->keys[0].length, length = rewrite ? lengthOfRequest(file->format, request) : 0;
    const uint8_t *primary = file->sequential && !rewrite ? file->lastKey : keyIn(file, 0, record);
    if (file->sequential && !(fcb->lastVerb == ZVK_VERB_READ && (fcb->state & ZVK_FILE_READ_VALID)))
        zvkSetStatus(fcb, 43, fs2NotRead);
    else if (file->sequential && memcmp(primary, file->lastKey, keySize) != 0)
        zvkSetStatus(fcb, 21, fs2Sequence);
    else if (rewrite && !file->format.allows(length))
        zvkSetStatus(fcb, 44, fs2RecordLength);
    else if (file->locks.forChange(fcb, lockNumber(primary, keySize))) {
        int error;
        bool refused = false, missing = false;
        MDB_txn *txn = changing(file, &error);
        if (txn) {
            SizeLimitHeldOff guard;
            MDB_val k = valueOf(primary, keySize), old;
            error = mdb_get(txn, file->data[0], &k, &old);
            if (error == MDB_NOTFOUND)
                missing = true, error = 0;
            else if (!error && rewrite)
                error = putRecord(fcb, file, txn, record, length, &old, &refused);
            else if (!error) {
                uint8_t *copy = moduleRecord(fcb), entry[keyRoom];
                memcpy(copy, old.mv_data, old.mv_size);
                const uint8_t *oldRecord = copy + file->numbered * sequenceSize;
                for (uint32_t key = 1, n = 0; key < file->keyCount && !error; ++key) {
                    uint64_t number = 0;
                    if (duplicates(file, key)) memcpy(&number, copy + n++ * sequenceSize, sequenceSize);
                    MDB_val e = valueOf(entry, entryKey(file, key, oldRecord, number, entry));
                    error = mdb_del(txn, file->data[key], &e, nullptr);
                }
                if (!error) error = mdb_del(txn, file->data[0], &k, nullptr);
            }
            error = changed(file, txn, error, !refused && !missing);
        }
        file->locks.release();
        if (error)
            failWithStore(fcb, error);
        else if (refused)
            zvkSetStatus(fcb, 22, fs2DuplicateKey);
        else if (missing)
            zvkSetStatus(fcb, 23, fs2NoRecord);
    }
    zvkFinishVerb(fcb, element, verb);
}

void rewriteRecord(FCB *fcb, IPCB *element, FileRequest *request) { changeRecord(fcb, element, request, ZVK_VERB_REWRITE); }
void deleteRecord(FCB *fcb, IPCB *element, FileRequest *request) { changeRecord(fcb, element, request, ZVK_VERB_DELETE); }

// Moves on from the place: in `k` and `v` the entry found.
int step(IndexedFile *file, MDB_cursor *cursor, bool previous, MDB_val *k, MDB_val *v)
{
    if (file->cursorOn && !file->exact) return mdb_cursor_get(cursor, k, v, previous ? MDB_PREV : MDB_NEXT);
    if (file->placeSize == 0) return previous ? MDB_NOTFOUND : mdb_cursor_get(cursor, k, v, MDB_FIRST);
    *k = valueOf(file->place, file->placeSize);
    int error = mdb_cursor_get(cursor, k, v, MDB_SET_RANGE);
    bool same = !error && k->mv_size == file->placeSize && memcmp(k->mv_data, file->place, file->placeSize) == 0;
    if (same && file->exact) return 0;
    if (previous) return mdb_cursor_get(cursor, k, v, error == MDB_NOTFOUND ? MDB_LAST : MDB_PREV);
    return same ? mdb_cursor_get(cursor, k, v, MDB_NEXT) : error;
}

// Bounds of a generic key: the first entry that is not below `bytes`, or not at it either (`beyond`).
int seekBound(MDB_cursor *cursor, const uint8_t *bytes, size_t size, bool beyond, MDB_val *k, MDB_val *v)
{
    uint8_t bound[keyRoom];
    memcpy(bound, bytes, size);
    if (beyond) {
        while (size && bound[size - 1] == 0xFF) --size;
        if (!size) return MDB_NOTFOUND;
        ++bound[size - 1];
    }
    *k = valueOf(bound, size);
    return mdb_cursor_get(cursor, k, v, MDB_SET_RANGE);
}

int cursorFor(IndexedFile *file, MDB_txn *txn, MDB_cursor **cursor)
{
    if (file->cursorOn) {
        *cursor = file->cursor;
        return 0;
    }
    return mdb_cursor_open(txn, file->data[file->reference], cursor);
}

// Does another record of the same alternate key follow? Leaves the cursor where it was.
bool hasFollower(IndexedFile *file, MDB_cursor *cursor, const MDB_val *at)
{
    MDB_val k, v;
    uint8_t entry[keyRoom];
    size_t length = file->keys[file->reference].length, size = at->mv_size;
    memcpy(entry, at->mv_data, size);
    bool follows = !mdb_cursor_get(cursor, &k, &v, MDB_NEXT) && memcmp(k.mv_data, entry, length) == 0;
    k = valueOf(entry, size);
    mdb_cursor_get(cursor, &k, &v, MDB_SET);
    return follows;
}

void dropCursor(IndexedFile *file)
{
    if (file->cursor) mdb_cursor_close(file->cursor);
    file->cursor = nullptr;
    file->cursorOn = false;
}

void readRecord(FCB *fcb, IPCB *element, FileRequest *request)
{
    IndexedFile *file = fileOf(fcb);
    fcb->currentVerb = ZVK_VERB_READ;
    zvkSetStatus(fcb, 0, fs2None);
    bool random = !file->sequential && !(request->options & (ZVK_REQUEST_NEXT | ZVK_REQUEST_PREVIOUS));
    uint8_t *record = recordOf(fcb, request);
    uint32_t keySize = file->keys[0].length;
    if (!random && !(fcb->state & ZVK_FILE_POSITION_VALID)) {
        fcb->state &= ~ZVK_FILE_READ_VALID;
        zvkSetStatus(fcb, 46, fs2NoPosition);
        return zvkFinishVerb(fcb, element, ZVK_VERB_READ);
    }
    uint32_t wanted = random ? request->key : file->reference;
    bool input = fcb->mode & ZVK_OPEN_INPUT;
    if (wanted >= file->keyCount) zvkSetStatus(fcb, 23, fs2KeyNumber);
    // Twice: the lock is taken on the record found, and what was read before it may be old.
    for (bool locked = false; fcb->status < 10;) {
        int error;
        if (!random && file->cursor && !file->cursorOn) dropCursor(file);
        if (file->cursor && file->reads + 1 >= readsPerSnapshot) dropCursor(file);
        if (random) dropCursor(file);
        MDB_txn *txn = reading(file, input && !random, &error);
        MDB_cursor *cursor = nullptr;
        MDB_val k = {}, v = {}, primary, value = {};
        if (random) file->reference = wanted;
        bool direct = random && wanted == 0;
        if (txn && direct) {
            k = valueOf(keyIn(file, 0, record), keySize);
            error = mdb_get(txn, file->data[0], &k, &v);
        } else if (txn && !(error = cursorFor(file, txn, &cursor))) {
            if (random) {
                size_t size = file->keys[wanted].length;
                error = seekBound(cursor, keyIn(file, wanted, record), size, false, &k, &v);
                if (!error && memcmp(k.mv_data, keyIn(file, wanted, record), size) != 0) error = MDB_NOTFOUND;
            } else {
                error = step(file, cursor, request->options & ZVK_REQUEST_PREVIOUS, &k, &v);
            }
        }
        uint8_t entry[keyRoom];
        size_t entrySize = k.mv_size;
        uint64_t lock = 0;
        uint16_t status = 0;
        if (!error && k.mv_size <= keyRoom) {
            memcpy(entry, k.mv_data, entrySize);
            primary = file->reference ? v : k;
            value = v;
            if (file->reference) error = mdb_get(txn, file->data[0], &primary, &value);
            if (!error && (value.mv_size < file->numbered * sequenceSize ||
                           value.mv_size - file->numbered * sequenceSize > file->format.longest || primary.mv_size != keySize))
                error = MDB_CORRUPTED;
            if (!error && duplicates(file, file->reference) && hasFollower(file, cursor, &k)) status = 2;
        }
        if (!error && (file->locks.active || file->locks.looks)) {
            lock = lockNumber(static_cast<const uint8_t *>(primary.mv_data), keySize);
            if (!locked || lock != file->locks.held) {
                if (!(file->locks.holding && file->locks.held == lock)) file->locks.release();
                bool held = file->locks.holding;
                locked = file->locks.forRead(fcb, lock, request->options) && file->locks.holding && !held;
                if (locked) {
                    if (cursor && cursor != file->cursor) mdb_cursor_close(cursor);
                    endReading(file);
                    continue;
                }
            }
        }
        if (!error && fcb->status < 10) {
            uint32_t length = static_cast<uint32_t>(value.mv_size - file->numbered * sequenceSize);
            memcpy(file->lastKey, primary.mv_data, keySize);
            memcpy(record, static_cast<const uint8_t *>(value.mv_data) + file->numbered * sequenceSize, length);
            memcpy(file->place, entry, entrySize);
            file->placeSize = entrySize;
            file->exact = false;
            fcb->recordLength = request->recordLength = length;
            zvkSetStatus(fcb, status, status ? fs2DuplicateKey : fs2None);
        } else if (error == MDB_NOTFOUND) {
            zvkSetStatus(fcb, random ? 23 : 10, random ? fs2NoRecord : fs2AtEnd);
        } else if (error) {
            failWithStore(fcb, error);
        }
        if (cursor && input && !random && !file->batch && fcb->status < 10) {
            file->cursor = cursor;
            file->cursorOn = true;
        } else {
            if (cursor == file->cursor) file->cursor = nullptr;
            file->cursorOn = false;
            if (cursor) mdb_cursor_close(cursor);
        }
        if (!input && !file->batch) endReading(file);
        break;
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
    zvkFinishVerb(fcb, element, ZVK_VERB_READ);
}

void startAt(FCB *fcb, IPCB *element, FileRequest *request)
{
    IndexedFile *file = fileOf(fcb);
    fcb->currentVerb = ZVK_VERB_START;
    zvkSetStatus(fcb, 0, fs2None);
    file->locks.release();
    dropCursor(file);
    fcb->state &= ~(ZVK_FILE_READ_VALID | ZVK_FILE_POSITION_VALID);
    if (request->key >= file->keyCount) {
        zvkSetStatus(fcb, 23, fs2KeyNumber);
        return zvkFinishVerb(fcb, element, ZVK_VERB_START);
    }
    const uint8_t *key = keyIn(file, request->key, recordOf(fcb, request));
    size_t size = file->keys[request->key].length;
    if (request->keyLength && request->keyLength < size) size = request->keyLength;
    int error;
    MDB_txn *txn = reading(file, false, &error);
    MDB_cursor *cursor = nullptr;
    MDB_val k, v;
    file->reference = request->key;
    if (txn && !(error = cursorFor(file, txn, &cursor))) {
        uint32_t relation = request->relation;
        if (relation == ZVK_RELATION_FIRST)
            error = mdb_cursor_get(cursor, &k, &v, MDB_FIRST);
        else if (relation == ZVK_RELATION_LAST)
            error = mdb_cursor_get(cursor, &k, &v, MDB_LAST);
        else {
            bool beyond = relation == ZVK_RELATION_GREATER || relation == ZVK_RELATION_NOT_GREATER;
            error = seekBound(cursor, key, size, beyond, &k, &v);
            if (relation == ZVK_RELATION_EQUAL && !error && memcmp(k.mv_data, key, size) != 0) error = MDB_NOTFOUND;
            if (relation == ZVK_RELATION_LESS || relation == ZVK_RELATION_NOT_GREATER)
                error = mdb_cursor_get(cursor, &k, &v, error == MDB_NOTFOUND ? MDB_LAST : MDB_PREV);
        }
        if (!error) {
            memcpy(file->place, k.mv_data, k.mv_size);
            file->placeSize = k.mv_size;
            file->exact = true;
            fcb->state |= ZVK_FILE_POSITION_VALID;
        }
        mdb_cursor_close(cursor);
    }
    if (!file->batch) endReading(file);
    if (error == MDB_NOTFOUND)
        zvkSetStatus(fcb, 23, fs2NoRecord);
    else if (error)
        failWithStore(fcb, error);
    zvkFinishVerb(fcb, element, ZVK_VERB_START);
}

void unlock(FCB *fcb, IPCB *element, FileRequest *)
{
    fcb->currentVerb = ZVK_VERB_UNLOCK;
    zvkSetStatus(fcb, 0, fs2None);
    fileOf(fcb)->locks.releaseAll();
    zvkFinishVerb(fcb, element, ZVK_VERB_UNLOCK);
}

void endFile(IndexedFile *file)
{
    dropCursor(file);
    if (file->snapshot) mdb_txn_abort(file->snapshot);
    leaveStore(file->store);
    close(file->descriptor);
}

void closeFile(FCB *fcb, IPCB *element)
{
    IndexedFile *file = fileOf(fcb);
    fcb->currentVerb = ZVK_VERB_CLOSE;
    zvkSetStatus(fcb, 0, fs2None);
    dropCursor(file);
    SizeLimitHeldOff guard;
    if (file->batch)
        if (int error = mdb_txn_commit(file->batch)) failWithStore(fcb, error);
    endFile(file);
    _zvkGenericClose(fcb, element, 0);
}

// The databases of all keys, and the store's identity.
int openDatabases(IndexedFile *file, const StoredHeader &header)
{
    MDB_txn *txn;
    MDB_dbi about;
    int error = mdb_txn_begin(file->store->env, nullptr, MDB_RDONLY, &txn);
    if (error) return error;
    MDB_val k = valueOf("identity", 8), v;
    error = mdb_dbi_open(txn, "about", 0, &about);
    if (!error) error = mdb_get(txn, about, &k, &v);
    if (!error && (v.mv_size != 8 || memcmp(v.mv_data, &header.identity, 8) != 0)) error = MDB_INCOMPATIBLE;
    for (uint32_t key = 0; key < file->keyCount && !error; ++key) {
        char name[8];
        databaseName(key, name);
        error = mdb_dbi_open(txn, name, 0, &file->data[key]);
    }
    // Committed, or the handles go with it.
    if (error)
        mdb_txn_abort(txn);
    else
        error = mdb_txn_commit(txn);
    return error == MDB_NOTFOUND ? MDB_INCOMPATIBLE : error;
}

} // namespace

bool createStore(FCB *fcb, const StoredHeader &header)
{
    char name[PATH_MAX], lock[PATH_MAX];
    if (!storeName(fcb, name, "") || !storeName(fcb, lock, "-lock")) return false;
    if ((unlink(name) && errno != ENOENT) || (unlink(lock) && errno != ENOENT)) return failWithErrno(fcb, errno);
    SizeLimitHeldOff guard;
    MDB_env *env = nullptr;
    MDB_txn *txn = nullptr;
    int error = openEnvironment(name, true, &env);
    if (!error) error = mdb_txn_begin(env, nullptr, 0, &txn);
    for (uint32_t key = 0; key < header.keyCount && !error; ++key) {
        char database[8];
        MDB_dbi data;
        databaseName(key, database);
        error = mdb_dbi_open(txn, database, MDB_CREATE, &data);
    }
    MDB_dbi about;
    if (!error) error = mdb_dbi_open(txn, "about", MDB_CREATE, &about);
    MDB_val k = valueOf("identity", 8), v = valueOf(&header.identity, 8);
    if (!error) error = mdb_put(txn, about, &k, &v, 0);
    if (!error)
        error = mdb_txn_commit(txn);
    else if (txn)
        mdb_txn_abort(txn);
    if (env) mdb_env_close(env);
    return !error || failWithStore(fcb, error);
}

void startIndexed(FCB *fcb, const FIB *fib, const Opened &opened, const StoredHeader &header)
{
    bool input = fcb->requestedMode & ZVK_OPEN_INPUT, io = fcb->requestedMode & ZVK_OPEN_IO;
    IndexedFile *file = newState<IndexedFile>(fcb);
    int error = ENOMEM;
    if (file) {
        file->descriptor = opened.descriptor;
        file->format = recordFormatOf(fib);
        file->keyCount = header.keyCount;
        memcpy(file->keys, header.keys, sizeof file->keys);
        for (uint32_t key = 1; key < file->keyCount; ++key) file->numbered += duplicates(file, key);
        file->sequential = fib->accessMode & 0x80;
        file->locks.start(fcb, fib, opened.descriptor);
        file->exclusive = !input && opened.held.alone;
        // Numbers and record as stored, twice: the new and the old.
        fcb->moduleBuffer2 = malloc(2 * (size_t(file->numbered) * sequenceSize + file->format.longest));
        if (fcb->moduleBuffer2) file->store = useStore(fcb, !input, &error);
        if (file->store) error = openDatabases(file, header);
    }
    if (!error && file->store && (fcb->requestedMode & ZVK_OPEN_EXTEND) && file->sequential) {
        MDB_txn *txn = reading(file, false, &error);
        MDB_cursor *cursor = nullptr;
        MDB_val k, v;
        if (txn && !(error = cursorFor(file, txn, &cursor))) {
            if (!mdb_cursor_get(cursor, &k, &v, MDB_LAST)) {
                memcpy(file->lastKey, k.mv_data, k.mv_size);
                file->wrote = true;
            }
            mdb_cursor_close(cursor);
        }
        endReading(file);
    }
    if (error || !file->store) {
        if (error) failWithStore(fcb, error);
        if (file)
            endFile(file);
        else
            close(opened.descriptor);
        return dropBuffers(fcb);
    }
    if (input || io) fcb->read = readRecord, fcb->start = startAt;
    if (!input && !(io && file->sequential)) fcb->write = writeRecord;
    if (io) fcb->rewrite = rewriteRecord, fcb->deleteRecord = deleteRecord;
    if (fib->sharing) fcb->unlock = unlock;
    fcb->close = closeFile;
}

} // namespace filesystems
