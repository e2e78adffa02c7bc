#include "companions/filesystems/indexed_store.h"

#include <atomic>
#include <cerrno>
#include <climits>
#include <cstdlib>
#include <cstring>
#include <ctime>
#include <dirent.h>
#include <fcntl.h>
#include <pthread.h>
#include <sys/resource.h>
#include <sys/stat.h>
#include <sys/statvfs.h>
#include <unistd.h>

#include "companions/filesystems/durability.h"
#include "companions/filesystems/size_limit.h"
#include "companions/filesystems/store_faults.h"
#include "companions/filesystems/transaction.h"

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
    VettedPages vetted; // of many changes in one transaction
    uint64_t *marks;    // for the lists of free pages
    uint64_t marksRoom; // pages
    uint64_t ownChange; // the commit that this program made last
    bool many;
    char name[];
};

namespace {

constexpr int kUnsettled = -40004; // a journal comes first

Store *stores;
pthread_mutex_t storesLock = PTHREAD_MUTEX_INITIALIZER;

// Another name of the same file, in the same folder, that has a store: a hard link to it shares its
// records. False: there is none.
bool otherName(const char *file, const struct stat &about, char *name)
{
    const char *slash = strrchr(file, '/');
    char folder[PATH_MAX], path[PATH_MAX];
    snprintf(folder, sizeof folder, "%.*s", slash ? static_cast<int>(slash - file + 1) : 2, slash ? file : "./");
    DIR *entries = opendir(folder);
    bool found = false;
    while (dirent *entry = entries && !found ? readdir(entries) : nullptr) {
        struct stat other;
        if (entry->d_ino != about.st_ino || snprintf(path, sizeof path, "%s%s", folder, entry->d_name) >= PATH_MAX)
            continue;
        if (snprintf(name, PATH_MAX, "%s.mdb", path) >= PATH_MAX || access(name, F_OK) != 0) continue;
        found = stat(path, &other) == 0 && other.st_dev == about.st_dev && other.st_ino == about.st_ino;
    }
    if (entries) closedir(entries);
    if (found) snprintf(name, PATH_MAX, "%s", path);
    return found;
}

bool storeName(FCB *fcb, char *name, const char *suffix)
{
    char path[PATH_MAX], linked[PATH_MAX];
    struct stat about;
    const char *file = resolvedName(fcb->fileName, path);
    if (!file) return failWithErrno(fcb, errno);
    if (snprintf(name, PATH_MAX, "%s.mdb", file) >= PATH_MAX) return failWithErrno(fcb, ENAMETOOLONG);
    // A file of several names has its store beside one of them.
    if (access(name, F_OK) != 0 && stat(file, &about) == 0 && about.st_nlink > 1) {
        if (otherName(file, about, linked))
            file = linked;
        else if (about.st_size)
            return fail(fcb, 30, fs2Link);
    }
    if (snprintf(name, PATH_MAX, "%s.mdb%s", file, suffix) < PATH_MAX) return true;
    return failWithErrno(fcb, ENAMETOOLONG);
}

void enterTransaction(Store *store)
{
    if (store->shared) pthread_rwlock_rdlock(&store->mapLock);
}

// With size 0 as large as another program made it.
void resizeMap(Store *store, size_t size)
{
    MDB_envinfo info;
    if (store->shared) pthread_rwlock_wrlock(&store->mapLock);
    mdb_env_set_mapsize(store->env, size);
    if (mdb_env_info(store->env, &info) == 0) store->mapBytes = info.me_mapsize;
    if (store->shared) pthread_rwlock_unlock(&store->mapLock);
}

// The last change of the folder's entries, in nanoseconds; 0 where that cannot be said.
int64_t folderTimeOf(const Store *store)
{
    struct stat about;
    if (store->folder < 0 || fstat(store->folder, &about) != 0) return 0;
    return int64_t(about.st_mtim.tv_sec) * 1000000000 + about.st_mtim.tv_nsec;
}

// Would another change of the folder have another time? Some file systems keep whole seconds, the
// others the ticks of a clock. Who stamps may be another machine, and clocks are set. So a time
// counts once it has been seen for longer than that, by a clock that nobody sets.
bool isSettled(Store *store, int64_t time)
{
    constexpr int64_t second = 1000000000, tick = second / 50;
    timespec clock;
    // It stands still when the clock that stamps files does, as on a machine too busy for ticks.
    clock_gettime(CLOCK_MONOTONIC_COARSE, &clock);
    const int64_t now = int64_t(clock.tv_sec) * second + clock.tv_nsec;
    if (store->youngTime.load(std::memory_order_acquire) != time) {
        store->youngSince.store(now, std::memory_order_relaxed);
        store->youngTime.store(time, std::memory_order_release);
        return false;
    }
    return now - store->youngSince.load(std::memory_order_relaxed) > (time % second ? tick : 3 * second);
}

// Are the store's files those that were opened, and is there no journal of another? Both are
// entries of one folder: while the folder does not change, the answer does not.
int checkPlace(Store *store, bool settles)
{
    char file[PATH_MAX];
    int64_t time = folderTimeOf(store);
    if (time && time == store->folderTime.load(std::memory_order_relaxed)) return 0;
    if (int error = storeIsReplaced(store)) return error;
    if (hasJournal(fileOfStore(store, file))) return settles ? kUnsettled : 0;
    if (time && isSettled(store, time)) store->folderTime.store(time, std::memory_order_relaxed);
    return 0;
}

// Room for as many pages as the store has; all bits 0. False: there is no storage.
bool makeMarks(uint64_t **marks, uint64_t *room, uint64_t pages)
{
    if (*marks && *room >= pages) return true;
    free(*marks);
    *room = pages * 2;
    *marks = static_cast<uint64_t *>(calloc(*room / 64 + 1, sizeof(uint64_t)));
    return *marks;
}

// What LMDB will trust from its first step on.
int vetChange(Store *store, bool many)
{
    constexpr uint64_t few = 16;
    const StoreSnapshot &now = store->committed;
    store->many = many;
    if (many) {
        if (!makeMarks(&store->vetted.bits, &store->vetted.room, now.lastPage + 1)) return ENOMEM;
        memset(store->vetted.bits, 0, (store->vetted.room / 64 + 1) * sizeof(uint64_t));
    }
    if (!makeMarks(&store->marks, &store->marksRoom, now.lastPage + 1)) return ENOMEM;
    // Long lists that only this program has written since it looked at them need no second look.
    const StoreTree &lists = now.freePages;
    bool known = store->ownChange && store->ownChange == now.change;
    bool isShort = lists.leafPages + lists.overflowPages <= few;
    int error = vetForChange(now, isShort || !known, store->marks);
    store->ownChange = error ? 0 : now.change;
    return error;
}

// What a transaction that has begun sees; a change looks at what LMDB will trust.
int takePages(Store *store, bool change, MDB_txn *txn, bool stuck, uint64_t size, bool many, StoreSnapshot *snapshot)
{
    int error = withPages(store->map, [&] {
        int passed = takeSnapshot(store->map, mdb_txn_id(txn) - change, stuck, size, snapshot);
        return !passed && change ? vetChange(store, many) : passed;
    });
    // Work that was left has not taken its marks away.
    if (error && change && store->marks) memset(store->marks, 0, (store->marksRoom / 64 + 1) * sizeof(uint64_t));
    return error;
}

// `settles`: not before what journals say.
int beginTransaction(Store *store, unsigned flags, MDB_txn **txn, StoreSnapshot *snapshot, bool many,
                     bool settles = true)
{
    char file[PATH_MAX];
    bool cleared = false;
    for (int passed = 0;;) {
        bool renews = flags && *txn;
        uint64_t size;
        int error = sizeOfStore(store->map, &size);
        // Twice the address space while half of it is used. If the system gives no more, LMDB says
        // so once the store is full.
        if (!error && !flags && size > store->mapBytes / 2) resizeMap(store, store->mapBytes * 2);
        enterTransaction(store);
        if (!error) error = renews ? mdb_txn_renew(*txn) : mdb_txn_begin(store->env, nullptr, flags, txn);
        const bool begun = !error;
        if (begun && store->shared) error = checkPlace(store, settles);
        if (!error) error = takePages(store, !flags, *txn, passed > 20, size, many, snapshot);
        if (!error) return 0;
        if (begun && flags) {
            mdb_txn_reset(*txn);
        } else if (begun) {
            mdb_txn_abort(*txn);
            *txn = nullptr;
        }
        leaveTransaction(store);
        if (error == kUnsettled)
            error = settleJournal(fileOfStore(store, file));
        else if (error == kSnapshotPassed && flags && ++passed < 1000)
            error = 0;
        else if (error == MDB_MAP_RESIZED)
            resizeMap(store, 0), error = 0;
        else if (error == MDB_READERS_FULL && !cleared)
            clearDeadReaders(store), cleared = true, error = 0;
        if (error) return error == kSnapshotPassed ? MDB_CORRUPTED : error;
    }
}

// Is there no room for a store to grow? Asks for some after its end, which no data is harmed by.
bool storeIsFull(FCB *fcb)
{
    constexpr off_t some = 65536;
    char name[PATH_MAX];
    if (!storeName(fcb, name, "")) return false;
    int descriptor = open(name, O_RDWR | O_CLOEXEC);
    struct stat about;
    rlimit limit;
    bool full = false;
    if (descriptor >= 0 && fstat(descriptor, &about) == 0) {
        SizeLimitHeldOff guard;
        if (getrlimit(RLIMIT_FSIZE, &limit) == 0 && limit.rlim_cur != RLIM_INFINITY)
            full = static_cast<rlim_t>(about.st_size + some) > limit.rlim_cur;
        if (!full && fallocate(descriptor, FALLOC_FL_KEEP_SIZE, about.st_size, some) != 0) {
            struct statvfs space;
            full = errno == ENOSPC || errno == EDQUOT || errno == EFBIG ||
                   (fstatvfs(descriptor, &space) == 0 && space.f_bavail * space.f_frsize < static_cast<uint64_t>(some));
        }
    }
    if (descriptor >= 0) close(descriptor);
    return full;
}

int openEnvironment(const char *name, bool writable, bool locked, MDB_env **env)
{
    int error = mdb_env_create(env);
    if (error) return error;
    mdb_env_set_mapsize(*env, mapSize());
    mdb_env_set_maxreaders(*env, kMostReaders);
    mdb_env_set_maxdbs(*env, kMostKeys + 2);
    // NOMETASYNC: data is forced before the page that leads to it is written, which the next commit
    // or CLOSE forces.
    Durability durability = wantedDurability();
    unsigned forcing = durability == Durability::none    ? MDB_NOSYNC
                       : durability == Durability::close ? MDB_NOMETASYNC
                                                         : 0;
    unsigned flags = MDB_NOSUBDIR | MDB_NOTLS | forcing | (writable ? 0 : MDB_RDONLY) | (locked ? 0 : MDB_NOLOCK);
    error = mdb_env_open(*env, name, flags, 0666);
    if (error) {
        mdb_env_close(*env);
        *env = nullptr;
    }
    return error;
}

// Opens the environment and makes its record; the caller puts it into the list.
Store *openStore(const char *name, const struct stat &about, bool writable, bool locked, int *error)
{
    MDB_env *env = nullptr;
    heedPageFaults();
    *error = checkHeads(name);
    if (!*error) *error = openEnvironment(name, writable, locked, &env);
    if (*error) return nullptr;
    auto *store = static_cast<Store *>(calloc(1, sizeof(Store) + strlen(name) + 1));
    mdb_filehandle_t descriptor;
    if (!store || mdb_env_get_fd(env, &descriptor) != 0 || !(store->map = openStoreMap(descriptor))) *error = ENOMEM;
    char lock[PATH_MAX];
    struct stat locks = {};
    snprintf(lock, sizeof lock, "%s-lock", name);
    if (!*error && locked && stat(lock, &locks) != 0) *error = kStoreReplaced;
    if (*error) {
        mdb_env_close(env);
        if (store) closeStoreMap(store->map);
        free(store);
        return nullptr;
    }
    MDB_envinfo info;
    mdb_env_info(env, &info);
    store->mapBytes = info.me_mapsize;
    store->device = about.st_dev;
    store->inode = about.st_ino;
    store->process = getpid();
    store->env = env;
    store->users = 1;
    store->writable = writable;
    store->shared = locked;
    pthread_rwlock_init(&store->mapLock, nullptr);
    store->lockDevice = locks.st_dev;
    store->lockInode = locks.st_ino;
    const char *slash = strrchr(name, '/');
    snprintf(lock, sizeof lock, "%.*s", slash ? static_cast<int>(slash - name + 1) : 2, slash ? name : "./");
    store->folder = locked ? open(lock, O_PATH | O_DIRECTORY | O_CLOEXEC) : -1;
    strcpy(store->name, name);
    clearDeadReaders(store);
    return store;
}

// Writable if it can be: another file of this program may want to write.
Store *shareStore(const char *name, const struct stat &about, bool writable, int *error)
{
    writable |= faccessat(AT_FDCWD, name, W_OK, AT_EACCESS) == 0;
    pthread_mutex_lock(&storesLock);
    Store *store = stores;
    while (store && !(store->device == about.st_dev && store->inode == about.st_ino && store->process == getpid()))
        store = store->next;
    if (store && writable && !store->writable)
        *error = EBUSY, store = nullptr;
    else if (store)
        ++store->users;
    else if ((store = openStore(name, about, writable, true, error))) {
        store->next = stores;
        stores = store;
    }
    pthread_mutex_unlock(&storesLock);
    return store;
}

// The databases of all keys, and the store's identity.
int openDatabases(Store *store, const StoredHeader &header, MDB_dbi *data)
{
    MDB_txn *txn = nullptr;
    StoreSnapshot now;
    int error = beginTransaction(store, MDB_RDONLY, &txn, &now, false, false);
    if (error && txn) mdb_txn_abort(txn);
    if (error) return error;
    // LMDB opens a database by its name: nothing but the names is to be looked at for that.
    StoreTree about;
    MDB_val v;
    error = withPages(store->map, [&] {
        int bad = vetForChange(now, false, nullptr);
        if (!bad) bad = findTree(now, kAboutDatabase, &about);
        if (!bad) bad = findValue(now, about, identityKey(), &v);
        const bool same = !bad && v.mv_size == 8 && memcmp(v.mv_data, &header.identity, 8) == 0;
        return bad || same ? bad : MDB_INCOMPATIBLE;
    });
    if (!error) error = mdb_dbi_open(txn, kAboutDatabase, 0, &store->about);
    for (uint32_t key = 0; key < header.keyCount && !error; ++key) {
        char name[8];
        databaseName(key, name);
        error = mdb_dbi_open(txn, name, 0, &data[key]);
    }
    // Committed, or the handles go with it.
    if (error)
        mdb_txn_abort(txn);
    else
        error = mdb_txn_commit(txn);
    leaveTransaction(store);
    return error == MDB_NOTFOUND ? MDB_INCOMPATIBLE : error;
}

} // namespace

int storeIsReplaced(const Store *store)
{
    char lock[PATH_MAX];
    struct stat about;
    if (stat(store->name, &about) != 0 || about.st_dev != store->device || about.st_ino != store->inode)
        return kStoreReplaced;
    if (!store->lockInode) return 0;
    snprintf(lock, sizeof lock, "%s-lock", store->name);
    bool same = stat(lock, &about) == 0 && about.st_dev == store->lockDevice && about.st_ino == store->lockInode;
    return same ? 0 : kStoreReplaced;
}

void leaveTransaction(Store *store)
{
    if (store->shared) pthread_rwlock_unlock(&store->mapLock);
}

int beginReading(Store *store, MDB_txn **txn, StoreSnapshot *snapshot)
{
    return beginTransaction(store, MDB_RDONLY, txn, snapshot, false);
}

int beginChange(Store *store, MDB_txn **txn, bool many)
{
    *txn = nullptr;
    return beginTransaction(store, 0, txn, &store->committed, many);
}

int changeIsWhole(const Store *store)
{
    uint64_t size;
    if (int error = sizeOfStore(store->map, &size)) return error;
    return size / store->committed.pageSize < store->committed.pages ? MDB_CORRUPTED : 0;
}

int commitChange(Store *store, MDB_txn *txn)
{
    int error = store->many ? changeIsWhole(store) : 0;
    if (error)
        mdb_txn_abort(txn);
    else
        error = mdb_txn_commit(txn);
    if (error)
        store->ownChange = 0;
    else if (store->ownChange)
        ++store->ownChange;
    return error;
}

const StoreMap *mapOfStore(const Store *store) { return store->map; }

const StoreSnapshot &committedState(const Store *store) { return store->committed; }
bool makesManyChanges(const Store *store) { return store->many; }
VettedPages *vettedPages(Store *store) { return store->many ? &store->vetted : nullptr; }

const char *fileOfStore(const Store *store, char *room)
{
    snprintf(room, PATH_MAX, "%.*s", static_cast<int>(strlen(store->name) - strlen(".mdb")), store->name);
    return room;
}

int beginRedo(Store *store, MDB_txn **txn)
{
    *txn = nullptr;
    return beginTransaction(store, 0, txn, &store->committed, true, false);
}

// The tree "about" has one page or two.
static int vetAbout(Store *store)
{
    return withPages(store->map, [&] {
        StoreTree about;
        int error = findTree(store->committed, kAboutDatabase, &about);
        return error ? error : vetTree(store->committed, about, vettedPages(store));
    });
}

uint64_t lastJournal(Store *store, MDB_txn *txn)
{
    MDB_val k = valueOf("journal", 7), v;
    uint64_t number = 0;
    if (vetAbout(store) == 0 && mdb_get(txn, store->about, &k, &v) == 0 && v.mv_size == sizeof number)
        memcpy(&number, v.mv_data, sizeof number);
    return number;
}

int noteJournal(Store *store, MDB_txn *txn, uint64_t number)
{
    if (int error = vetAbout(store)) return error;
    MDB_val k = valueOf("journal", 7), v = valueOf(&number, sizeof number);
    return mdb_put(txn, store->about, &k, &v, 0);
}

int forceStore(Store *store)
{
    unsigned flags;
    bool never = mdb_env_get_flags(store->env, &flags) == 0 && (flags & MDB_NOSYNC);
    return never ? 0 : mdb_env_sync(store->env, 1);
}

// The pages that the trees of the databases have, and those of the file; 0: not known.
static uint64_t usedPages(Store *store, const MDB_dbi *data, uint32_t count, uint64_t *all)
{
    MDB_txn *txn = nullptr;
    MDB_envinfo info;
    uint64_t used = 0;
    int error = mdb_env_info(store->env, &info);
    if (!error) error = mdb_txn_begin(store->env, nullptr, MDB_RDONLY, &txn);
    for (uint32_t n = 0; n < count && !error; ++n) {
        MDB_stat about;
        error = mdb_stat(txn, data[n], &about);
        used += about.ms_branch_pages + about.ms_leaf_pages + about.ms_overflow_pages;
    }
    if (txn) mdb_txn_abort(txn);
    *all = error ? 0 : info.me_last_pgno + 1;
    return error ? 0 : used;
}

bool trimStore(Store *store, const MDB_dbi *data, uint32_t count)
{
    constexpr uint64_t fewPages = 256;
    char name[PATH_MAX];
    struct stat about;
    uint64_t all, used = usedPages(store, data, count, &all);
    if (store->shared || !used || all < used + used / 2 + fewPages) return false;
    if (snprintf(name, sizeof name, "%s.kvr2-new", store->name) >= PATH_MAX || stat(store->name, &about) != 0)
        return false;
    unlink(name);
    int descriptor = open(name, O_RDWR | O_CREAT | O_EXCL | O_CLOEXEC, about.st_mode & 0777);
    if (descriptor < 0) return false;
    bool force = wantedDurability() != Durability::none;
    bool good = fchmod(descriptor, about.st_mode & 0777) == 0 && fchown(descriptor, about.st_uid, about.st_gid) == 0 &&
                storeIsReplaced(store) == 0 && mdb_env_copyfd2(store->env, descriptor, MDB_CP_COMPACT) == 0 &&
                (!force || forceData(descriptor) == 0);
    if (close(descriptor) != 0) good = false;
    if (good) good = rename(name, store->name) == 0;
    if (!good) unlink(name);
    if (good && force) forceDirectory(store->name);
    return good;
}

void clearDeadReaders(Store *store)
{
    int dead;
    if (store->shared) mdb_reader_check(store->env, &dead);
}

uint64_t bytesPerCommit(const Store *store) { return store->mapBytes / 16; }

bool failWithStore(FCB *fcb, int error)
{
    // LMDB says EIO also when the system took only a part of what it wrote, as a full disk or the
    // file-size limit makes it.
    if (error == EIO && storeIsFull(fcb)) return fail(fcb, 34, fs2Full);
    if (error > 0) return failWithErrno(fcb, error);
    if (error == MDB_READERS_FULL) return fail(fcb, 93, fs2Readers);
    if (error == kStoreReplaced) return fail(fcb, 30, fs2Replaced);
    if (error == kInTransaction) return fail(fcb, statusRecordLocked, fs2InTransaction);
    if (error == MDB_MAP_FULL || error == MDB_TXN_FULL) return fail(fcb, 34, fs2Full);
    return fail(fcb, 30, fs2Store);
}

void leaveStore(Store *store)
{
    if (!store) return;
    pthread_mutex_lock(&storesLock);
    if (--store->users == 0) {
        if (store->shared) {
            Store **link = &stores;
            while (*link != store) link = &(*link)->next;
            *link = store->next;
        }
        mdb_env_close(store->env);
        closeStoreMap(store->map);
        if (store->folder >= 0) close(store->folder);
        pthread_rwlock_destroy(&store->mapLock);
        free(store->vetted.bits);
        free(store->marks);
        free(store);
    }
    pthread_mutex_unlock(&storesLock);
}

// The databases, for the handles of one environment are opened by one thread at a time.
Store *withDatabases(Store *store, const StoredHeader &header, MDB_dbi *data, int *error)
{
    if (!store) return nullptr;
    pthread_mutex_lock(&storesLock);
    *error = openDatabases(store, header, data);
    pthread_mutex_unlock(&storesLock);
    if (!*error) return store;
    leaveStore(store);
    return nullptr;
}

void keepStore(Store *store)
{
    pthread_mutex_lock(&storesLock);
    ++store->users;
    pthread_mutex_unlock(&storesLock);
}

Store *useSharedStore(FCB *fcb, const StoredHeader &header, MDB_dbi *data, int *error)
{
    char name[PATH_MAX];
    struct stat about;
    *error = 0;
    if (!storeName(fcb, name, "") || stat(name, &about) != 0) return *error = MDB_INVALID, nullptr;
    return withDatabases(shareStore(name, about, true, error), header, data, error);
}

Store *useStore(FCB *fcb, const Opened &opened, bool writable, bool shared, const StoredHeader &header, MDB_dbi *data)
{
    char name[PATH_MAX];
    struct stat about;
    int error = 0;
    Store *store = nullptr;
    if (!storeName(fcb, name, "")) return nullptr;
    if (stat(name, &about) != 0 || about.st_size == 0)
        error = MDB_INVALID;
    else if (!shared && (opened.held.alone || (!writable && opened.held.noWriters)))
        store = openStore(name, about, writable, false, &error);
    else
        store = shareStore(name, about, writable, &error);
    if (error == EACCES && !writable && access(name, R_OK) == 0) {
        // It is the lock file that this reader may not write.
        if (!denyWriters(opened.descriptor)) {
            fail(fcb, statusFileInUse, fs2InUse);
            return nullptr;
        }
        store = openStore(name, about, false, false, &error);
    }
    store = withDatabases(store, header, data, &error);
    if (error) failWithStore(fcb, error);
    return store;
}

bool storeCanBeMade(FCB *fcb)
{
    char name[PATH_MAX];
    if (!storeName(fcb, name, "")) return false;
    int descriptor = open(name, O_RDWR | O_CREAT | O_NONBLOCK | O_CLOEXEC, 0666);
    if (descriptor < 0) return failWithErrno(fcb, errno);
    close(descriptor);
    return true;
}

bool createStore(FCB *fcb, const StoredHeader &header)
{
    char name[PATH_MAX], lock[PATH_MAX];
    if (!storeName(fcb, name, "") || !storeName(fcb, lock, "-lock")) return false;
    // Nobody who has this file open uses them, but a program may still have a file open that was
    // removed since: it keeps its own store, and finds that it was replaced.
    struct stat old;
    bool known = stat(name, &old) == 0;
    unlink(lock);
    if (unlink(name) != 0 && errno != ENOENT && truncate(name, 0) != 0) return failWithErrno(fcb, errno);
    SizeLimitHeldOff guard;
    MDB_env *env = nullptr;
    MDB_txn *txn = nullptr;
    int error = openEnvironment(name, true, false, &env);
    if (!error) error = mdb_txn_begin(env, nullptr, 0, &txn);
    for (uint32_t key = 0; key < header.keyCount && !error; ++key) {
        char database[8];
        MDB_dbi data;
        databaseName(key, database);
        error = mdb_dbi_open(txn, database, MDB_CREATE, &data);
    }
    MDB_dbi about;
    if (!error) error = mdb_dbi_open(txn, kAboutDatabase, MDB_CREATE, &about);
    MDB_val k = identityKey(), v = valueOf(&header.identity, 8);
    if (!error) error = mdb_put(txn, about, &k, &v, 0);
    if (!error)
        error = mdb_txn_commit(txn);
    else if (txn)
        mdb_txn_abort(txn);
    if (env) mdb_env_close(env);
    // The same people as before may use it. What is not ours to give stays as the system made it.
    if (known && (chmod(name, old.st_mode & 0777) != 0 || chown(name, old.st_uid, old.st_gid) != 0)) errno = 0;
    return !error || failWithStore(fcb, error);
}

} // namespace filesystems
