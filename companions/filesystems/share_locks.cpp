#include "companions/filesystems/share_locks.h"

#include <errno.h>
#include <fcntl.h>
#include <unistd.h>

#include "companions/filesystems/secondary_status.h"

namespace filesystems {

static constexpr off_t firstRecordLock = off_t(1) << 60;
static constexpr off_t present = (off_t(1) << 62), writers = present + 1, deniers = present + 2;

static int setLock(int descriptor, short type, off_t start, off_t length = 1)
{
    struct flock lock = {};
    lock.l_type = type;
    lock.l_whence = SEEK_SET;
    lock.l_start = start;
    lock.l_len = length;
    return fcntl(descriptor, F_OFD_SETLK, &lock) == 0 ? 0 : errno;
}

static bool othersHold(int descriptor, off_t start)
{
    struct flock lock = {};
    lock.l_type = F_WRLCK;
    lock.l_whence = SEEK_SET;
    lock.l_start = start;
    lock.l_len = 1;
    return fcntl(descriptor, F_OFD_GETLK, &lock) == 0 && lock.l_type != F_UNLCK;
}

// A descriptor that cannot write can take no exclusive lock; a reader that shares with nobody looks instead, after its own shared lock.
static int takeExclusively(int descriptor, bool canWrite, off_t start)
{
    if (canWrite) return setLock(descriptor, F_WRLCK, start);
    int error = setLock(descriptor, F_RDLCK, start);
    return error ? error : othersHold(descriptor, start) ? EAGAIN : 0;
}

static int takeShared(int descriptor, off_t start) { return setLock(descriptor, F_RDLCK, start); }

bool takeFile(FCB *fcb, const FIB *fib, int descriptor, ShareMode byDefault)
{
    ShareMode share = fib->sharing ? static_cast<ShareMode>(fib->shareMode & ZVK_FILE_SHARE_MASK) : shareDefault;
    if (share == shareDefault) share = byDefault;
    if (fib->sharing && (fib->lockMode & 7) == lockExclusive) share = shareNoOther;
    if (fcb->requestedMode & ZVK_OPEN_OUTPUT) share = shareNoOther; // what is being replaced is nobody else's

    bool writes = fcb->requestedMode & (ZVK_OPEN_OUTPUT | ZVK_OPEN_IO | ZVK_OPEN_EXTEND);
    int error = share == shareNoOther ? takeExclusively(descriptor, writes, present) : takeShared(descriptor, present);
    if (!error && writes) {
        error = share == shareReadOnly ? takeExclusively(descriptor, true, writers) : takeShared(descriptor, writers);
        if (!error && othersHold(descriptor, deniers)) error = EAGAIN;
    } else if (!error && share == shareReadOnly) {
        error = takeShared(descriptor, deniers);
        if (!error && othersHold(descriptor, writers)) error = EAGAIN;
    }
    if (!error || error == EINVAL || error == EOPNOTSUPP || error == ENOLCK) return true; // a file system without locks
    if (error == EAGAIN || error == EACCES) return fail(fcb, statusFileInUse, fs2InUse);
    return failWithErrno(fcb, error);
}

static off_t lockOf(uint64_t record) { return firstRecordLock + static_cast<off_t>(record & ((uint64_t(1) << 60) - 1)); }

Taken lockRecord(int descriptor, uint64_t record)
{
    int error = setLock(descriptor, F_WRLCK, lockOf(record));
    if (error == EBADF) error = setLock(descriptor, F_RDLCK, lockOf(record)); // opened for INPUT: holds off writers all the same
    if (!error) return Taken::yes;
    return error == EAGAIN || error == EACCES ? Taken::locked : Taken::failed;
}

Taken lookAtLock(int descriptor, uint64_t record) { return othersHold(descriptor, lockOf(record)) ? Taken::locked : Taken::yes; }

void unlockRecord(int descriptor, uint64_t record) { setLock(descriptor, F_UNLCK, lockOf(record)); }

void unlockAllRecords(int descriptor) { setLock(descriptor, F_UNLCK, firstRecordLock, off_t(1) << 60); }

} // namespace filesystems
