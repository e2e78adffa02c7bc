// See store_reader.h.
#include "tools/store_reader.h"

#include <cerrno>
#include <cstring>
#include <fcntl.h>
#include <unistd.h>

#include "companions/filesystems/lock_file.h"
#include "companions/filesystems/share_locks.h"
#include "companions/filesystems/store_layout.h"

namespace file_tool {

static constexpr int kMostTries = 100000;

StoreReader::~StoreReader()
{
    if (txn_) mdb_txn_abort(txn_);
    if (env_) mdb_env_close(env_);
    if (descriptor_ >= 0) ::close(descriptor_);
}

bool StoreReader::fails(int error)
{
    reason_ = mdb_strerror(error);
    damaged_ = error < 0 || error == ENOENT || error == EINVAL;
    return false;
}

bool StoreReader::open(const std::string &path, bool glance)
{
    const std::string store = storeOf(path);
    descriptor_ = ::open(path.c_str(), O_RDONLY | O_CLOEXEC | O_NONBLOCK);
    if (descriptor_ < 0) return fails(errno);
    FCB fcb{};
    FIB fib{};
    filesystems::ShareHeld held;
    fcb.requestedMode = ZVK_OPEN_INPUT;
    if (!filesystems::takeFile(&fcb, &fib, descriptor_, {filesystems::shareAllOther, filesystems::shareAllOther},
                               &held)) {
        reason_ = "a program has it for itself alone; kvr2-file info says which";
        return false;
    }
    if (glance) filesystems::releaseFile(descriptor_);
    filesystems::makeLockFile(store.c_str());
    unsigned flags = MDB_NOSUBDIR | MDB_NOTLS | MDB_RDONLY;
    for (int error = 0;;) {
        error = mdb_env_create(&env_);
        if (!error) mdb_env_set_maxreaders(env_, filesystems::kMostReaders);
        if (!error) mdb_env_set_mapsize(env_, filesystems::mapSize());
        if (!error) error = mdb_env_open(env_, store.c_str(), flags, 0666);
        if (!error) return true;
        if (env_) mdb_env_close(env_);
        env_ = nullptr;
        bool lockFile = (error == EACCES || error == EROFS) && access(store.c_str(), R_OK) == 0;
        if (!lockFile || (flags & MDB_NOLOCK)) return fails(error);
        if (!glance && !filesystems::denyWriters(descriptor_)) {
            reason_ = "a program is writing it, and its lock file may not be used";
            return false;
        }
        flags |= MDB_NOLOCK;
    }
}

StoreReader::Mapped StoreReader::map(const std::string &path, StorePages *pages, bool glance)
{
    if (open(path, glance))
        if (int error = mdb_txn_begin(env_, nullptr, MDB_RDONLY, &txn_)) fails(error);
    if (!txn_ && !damaged_) return Mapped::failed;
    if (!pages->map(storeOf(path))) {
        if (txn_) reason_ = "its store cannot be read";
        return txn_ ? Mapped::failed : Mapped::headless;
    }
    // What is read of a head while others commit is taken only if it is the newest.
    for (int tries = 0; tries < kMostTries && txn_; ++tries) {
        if (pages->takeHead(mdb_txn_id(txn_)))
            return pages->pages() <= pages->filePages() || pages->map(storeOf(path)) ? Mapped::yes : Mapped::headless;
        mdb_txn_reset(txn_);
        if (mdb_txn_renew(txn_) != 0) break;
        if (tries % 100 == 99 && !pages->map(storeOf(path))) return Mapped::headless; // it may have grown
    }
    return pages->takeHead() ? Mapped::yes : Mapped::headless;
}

} // namespace file_tool
