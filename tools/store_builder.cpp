#include "tools/store_builder.h"

#include <cerrno>
#include <climits>
#include <cstring>
#include <fcntl.h>
#include <sys/random.h>
#include <sys/stat.h>
#include <unistd.h>

#include "companions/filesystems/byte_stream.h"
#include "companions/filesystems/record_sum.h"
#include "companions/filesystems/share_locks.h"
#include "kvr2/file_module.h"

namespace file_tool {

using filesystems::kSequenceSize;

static constexpr uint32_t kChangesPerCommit = 20000;

static MDB_val valueOf(std::string_view bytes) { return {bytes.size(), const_cast<char *>(bytes.data())}; }

static bool hasDuplicates(const FileKey &key) { return key.flags & ZVK_FILE_KEY_DUPLICATES; }

StoreBuilder::~StoreBuilder()
{
    if (txn_) mdb_txn_abort(txn_);
    if (env_) mdb_env_close(env_);
    if (!made_) return;
    unlink(path_.c_str());
    unlink((path_ + ".mdb").c_str());
}

bool StoreBuilder::good(int error)
{
    if (error) say("%s.mdb: %s", path_.c_str(), mdb_strerror(error));
    return error == 0;
}

bool StoreBuilder::ready() { return txn_ || good(mdb_txn_begin(env_, nullptr, 0, &txn_)); }

bool StoreBuilder::step()
{
    if (++changes_ % kChangesPerCommit) return true;
    MDB_txn *txn = txn_;
    txn_ = nullptr;
    return good(mdb_txn_commit(txn)) && ready();
}

bool StoreBuilder::create(const std::string &path, const filesystems::StoredHeader &header)
{
    path_ = path;
    header_ = header;
    header_.checksum = 0;
    if (getrandom(&header_.identity, sizeof header_.identity, 0) != static_cast<ssize_t>(sizeof header_.identity))
        return say("%s: no random number: %s", path.c_str(), strerror(errno)), false;
    header_.checksum = filesystems::checksumOf(header_);
    unlink((path + ".mdb").c_str());
    made_ = true;
    if (!good(mdb_env_create(&env_))) return false;
    mdb_env_set_maxdbs(env_, filesystems::kMostKeys + 2);
    mdb_env_set_mapsize(env_, filesystems::mapSize());
    if (!good(mdb_env_open(env_, (path + ".mdb").c_str(), MDB_NOSUBDIR | MDB_NOLOCK | MDB_NOTLS | MDB_NOSYNC, 0666)))
        return false;
    if (!ready()) return false;
    for (uint32_t key = 0; key < header_.keyCount; ++key) {
        char name[8];
        filesystems::databaseName(key, name);
        if (!good(mdb_dbi_open(txn_, name, MDB_CREATE, &data_[key]))) return false;
    }
    MDB_dbi about;
    MDB_val k = filesystems::identityKey(), v = {sizeof header_.identity, &header_.identity};
    return good(mdb_dbi_open(txn_, filesystems::kAboutDatabase, MDB_CREATE, &about)) &&
           good(mdb_put(txn_, about, &k, &v, 0));
}

bool StoreBuilder::append(uint32_t key, const Entry &entry)
{
    MDB_val k = valueOf(entry.key), v = valueOf(entry.value);
    return good(mdb_put(txn_, data_[key], &k, &v, MDB_APPEND)) && step();
}

bool StoreBuilder::has(std::string_view primaryKey)
{
    MDB_val k = valueOf(primaryKey), v;
    return mdb_get(txn_, data_[0], &k, &v) == 0;
}

int StoreBuilder::nextNumber(uint32_t key, std::string_view value, uint64_t *number)
{
    std::string last = std::string(value) + std::string(kSequenceSize, '\xFF');
    MDB_cursor *cursor;
    MDB_val k = valueOf(last), v;
    int error = mdb_cursor_open(txn_, data_[key], &cursor);
    if (error) return error;
    error = mdb_cursor_get(cursor, &k, &v, MDB_SET_RANGE);
    error = mdb_cursor_get(cursor, &k, &v, error == MDB_NOTFOUND ? MDB_LAST : MDB_PREV);
    *number = 1;
    if (!error && k.mv_size == last.size() && memcmp(k.mv_data, value.data(), value.size()) == 0) {
        memcpy(number, static_cast<char *>(k.mv_data) + value.size(), kSequenceSize);
        *number = __builtin_bswap64(*number) + 1;
    }
    mdb_cursor_close(cursor);
    return error == MDB_NOTFOUND ? 0 : error;
}

StoreBuilder::Added StoreBuilder::add(std::string_view record, const std::vector<uint64_t> &numbers)
{
    for (uint32_t key = 0; key < header_.keyCount; ++key)
        if (filesystems::endOfKey(header_.keys[key], header_.parts) > record.size()) return Added::refused;
    std::vector<std::string> entries(header_.keyCount);
    stored_.clear();
    size_t n = 0;
    for (uint32_t key = 0; key < header_.keyCount; ++key) {
        entries[key] = keyIn(header_, key, record);
        if (!key || !hasDuplicates(header_.keys[key])) continue;
        uint64_t number = n < numbers.size() ? numbers[n] : 0;
        ++n;
        if (!number && !good(nextNumber(key, entries[key], &number))) return Added::failed;
        uint64_t swapped = __builtin_bswap64(number);
        stored_.append(reinterpret_cast<char *>(&number), kSequenceSize);
        entries[key].append(reinterpret_cast<char *>(&swapped), kSequenceSize);
    }
    // All that can refuse comes before the first change.
    for (uint32_t key = 0; key < header_.keyCount; ++key) {
        MDB_val k = valueOf(entries[key]), v;
        int error = mdb_get(txn_, data_[key], &k, &v);
        if (!error) return Added::refused;
        if (error != MDB_NOTFOUND) return good(error), Added::failed;
    }
    stored_ += record;
    if (filesystems::sumSizeOf(header_)) {
        uint32_t sum = filesystems::recordSum(0, stored_.data(), stored_.size());
        stored_.append(reinterpret_cast<char *>(&sum), sizeof sum);
    }
    for (uint32_t key = 0; key < header_.keyCount; ++key) {
        MDB_val k = valueOf(entries[key]), v = valueOf(key ? std::string_view(entries[0]) : std::string_view(stored_));
        if (!good(mdb_put(txn_, data_[key], &k, &v, 0))) return Added::failed;
    }
    return step() ? Added::yes : Added::failed;
}

int forceFile(const std::string &path)
{
    int descriptor = ::open(path.c_str(), O_RDONLY | O_CLOEXEC);
    int error = descriptor < 0 || fsync(descriptor) != 0 ? errno : 0;
    if (descriptor >= 0) ::close(descriptor);
    size_t slash = path.rfind('/');
    std::string directory = slash == std::string::npos ? "." : slash ? path.substr(0, slash) : "/";
    descriptor = ::open(directory.c_str(), O_RDONLY | O_DIRECTORY | O_CLOEXEC);
    if (descriptor >= 0) {
        fsync(descriptor); // not every file system does that for a directory
        ::close(descriptor);
    }
    return error;
}

bool StoreBuilder::finish()
{
    MDB_txn *txn = txn_;
    txn_ = nullptr;
    if (!good(mdb_txn_commit(txn)) || !good(mdb_env_sync(env_, 1))) return false;
    mdb_env_close(env_);
    env_ = nullptr;
    int descriptor = ::open(path_.c_str(), O_RDWR | O_CREAT | O_TRUNC | O_CLOEXEC, 0666);
    int error = descriptor < 0 ? errno : filesystems::writeAll(descriptor, true, &header_, sizeof header_, 0);
    if (descriptor >= 0 && ::close(descriptor) != 0 && !error) error = errno;
    if (!error) error = forceFile(path_);
    if (error) return say("%s: %s", path_.c_str(), strerror(error)), false;
    made_ = false;
    return true;
}

// --- the place of the old file

OwnedFile::~OwnedFile()
{
    if (descriptor_ >= 0) ::close(descriptor_);
}

bool OwnedFile::take()
{
    char room[PATH_MAX];
    if (realpath(path_.c_str(), room)) path_ = room;
    descriptor_ = ::open(path_.c_str(), O_RDWR | O_CLOEXEC | O_NONBLOCK);
    if (descriptor_ < 0) return say("%s: %s", path_.c_str(), strerror(errno)), false;
    FCB fcb{};
    FIB fib{};
    filesystems::ShareHeld held;
    fcb.requestedMode = ZVK_OPEN_IO;
    fib.sharing = 1;
    fib.shareMode = filesystems::shareNoOther;
    if (!filesystems::takeFile(&fcb, &fib, descriptor_, {filesystems::shareNoOther, filesystems::shareAllOther}, &held))
        return say("%s: the file is in use; kvr2-file info says by whom", path_.c_str()), false;
    if (held.lockless)
        return say("%s: no locks on this file system, so others may have the file open", path_.c_str()), false;

    return complete();
}

// A killed command: if the new store is there already, and its header not, that follows. What it
// left before or after that moment goes, for the file may be another by now.
bool OwnedFile::complete()
{
    StoredHeaderFile old, made;
    StorePages pages;
    uint64_t identity;
    if (access(newName().c_str(), F_OK) != 0 || !made.read(newName()) || !old.read(path_)) return true;
    if (access((newName() + ".mdb").c_str(), F_OK) == 0) return true;
    if (!pages.map(path_ + ".mdb") || !pages.takeHead() || !identityOf(pages, &identity)) return true;
    if (identity == old.header().identity || identity != made.header().identity) {
        unlink(newName().c_str());
        return true;
    }
    say("%s: completing what an interrupted command left", path_.c_str());
    return replaceByNew();
}

bool OwnedFile::replaceByNew()
{
    StoredHeaderFile made;
    std::string store = newName() + ".mdb", old = path_ + ".mdb";
    bool isThere = access(store.c_str(), F_OK) == 0;
    auto stays = [&](const std::string &name, const char *why) {
        say("%s: %s", name.c_str(), why);
        unlink(newName().c_str());
        unlink(store.c_str());
        return false;
    };
    if (!made.read(newName())) return stays(newName(), made.reason());
    struct stat about;
    if (stat(old.c_str(), &about) == 0 && isThere &&
        (chmod(store.c_str(), about.st_mode & 07777) != 0 || chown(store.c_str(), about.st_uid, about.st_gid) != 0))
        say("%s: its owner and rights could not be kept: %s", old.c_str(), strerror(errno));
    if (isThere) {
        unlink((old + "-lock").c_str());
        if (rename(store.c_str(), old.c_str()) != 0) return stays(old, strerror(errno));
    }

    // From here on the file is between its old and its new form.
    int error = forceFile(old);
    if (!error) error = filesystems::writeAll(descriptor_, true, &made.header(), filesystems::kStoredHeaderSize, 0);
    if (!error && fsync(descriptor_) != 0) error = errno;
    if (error) {
        say("%s: %s; it gives file status 30 until the change is completed: kvr2-file compact %s", path_.c_str(),
            strerror(error), path_.c_str());
        return false;
    }
    unlink(newName().c_str());
    return true;
}

} // namespace file_tool
