#include "companions/filesystems/indexed_store.h"

#include <cerrno>
#include <climits>
#include <cstdlib>
#include <cstring>
#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include "companions/filesystems/durability.h"
#include "companions/filesystems/lock_file.h"
#include "companions/filesystems/size_limit.h"
#include "companions/filesystems/store_faults.h"
#include "companions/filesystems/store_state.h"
#include "companions/filesystems/transaction.h"

namespace filesystems {

namespace {

Store *stores;
pthread_mutex_t storesLock = PTHREAD_MUTEX_INITIALIZER;

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
    if (!*error && locked) makeLockFile(name);
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
    if (error == EACCES && !lockFileIsUsable(name))
        fail(fcb, 91, fs2LockFile);
    else if (error)
        failWithStore(fcb, error);
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
