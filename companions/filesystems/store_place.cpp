// Where the store of a file is, and whether it is still there: see store_state.h.
#include "companions/filesystems/store_state.h"

#include <cerrno>
#include <cstring>
#include <ctime>
#include <dirent.h>
#include <fcntl.h>
#include <sys/resource.h>
#include <sys/stat.h>
#include <sys/statvfs.h>
#include <unistd.h>

#include "companions/filesystems/size_limit.h"
#include "companions/filesystems/transaction.h"

namespace filesystems {

// Another name of the same file, in the same folder, that has a store: a hard link to it shares its
// records. False: there is none.
static bool otherName(const char *file, const struct stat &about, char *name)
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

const char *fileOfStore(const Store *store, char *room)
{
    snprintf(room, PATH_MAX, "%.*s", static_cast<int>(strlen(store->name) - strlen(".mdb")), store->name);
    return room;
}

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

// The last change of the folder's entries, in nanoseconds; 0 where that cannot be said.
static int64_t folderTimeOf(const Store *store)
{
    struct stat about;
    if (store->folder < 0 || fstat(store->folder, &about) != 0) return 0;
    return int64_t(about.st_mtim.tv_sec) * 1000000000 + about.st_mtim.tv_nsec;
}

// Would another change of the folder have another time? Some file systems keep whole seconds, the
// others the ticks of a clock. Who stamps may be another machine, and clocks are set. So a time
// counts once it has been seen for longer than that, by a clock that nobody sets.
static bool isSettled(Store *store, int64_t time)
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

} // namespace filesystems
