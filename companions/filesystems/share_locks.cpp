#include "companions/filesystems/share_locks.h"

#include <cerrno>
#include <fcntl.h>
#include <unistd.h>

#include "companions/filesystems/secondary_status.h"

namespace filesystems {

namespace {

int setLock(int descriptor, short type, off_t start, off_t length = 1)
{
    struct flock lock = {};
    lock.l_type = type;
    lock.l_whence = SEEK_SET;
    lock.l_start = start;
    lock.l_len = length;
    return fcntl(descriptor, F_OFD_SETLK, &lock) == 0 ? 0 : errno;
}

bool othersHold(int descriptor, off_t start)
{
    struct flock lock = {};
    lock.l_type = F_WRLCK;
    lock.l_whence = SEEK_SET;
    lock.l_start = start;
    lock.l_len = 1;
    return fcntl(descriptor, F_OFD_GETLK, &lock) == 0 && lock.l_type != F_UNLCK;
}

int takeShared(int descriptor, off_t start) { return setLock(descriptor, F_RDLCK, start); }

int takePresence(int descriptor, bool alone, bool writes)
{
    if (alone && writes) return setLock(descriptor, F_WRLCK, kPresent);
    int error = takeShared(descriptor, kPresent);
    if (!error && alone) {
        error = takeShared(descriptor, kLoners);
        if (!error && othersHold(descriptor, kPresent)) error = EAGAIN;
    }
    return !error && othersHold(descriptor, kLoners) ? EAGAIN : error;
}

int takeWriting(int descriptor, ShareMode share)
{
    int error = share == shareAllOther ? takeShared(descriptor, kWriters) : setLock(descriptor, F_WRLCK, kWriters);
    return !error && othersHold(descriptor, kDeniers) ? EAGAIN : error;
}

int takeDenying(int descriptor)
{
    int error = takeShared(descriptor, kDeniers);
    return !error && othersHold(descriptor, kWriters) ? EAGAIN : error;
}

void waitForLock(int descriptor, short type, off_t start, off_t length = 1)
{
    struct flock lock = {};
    lock.l_type = type;
    lock.l_whence = SEEK_SET;
    lock.l_start = start;
    lock.l_len = length;
    while (fcntl(descriptor, F_OFD_SETLKW, &lock) != 0 && errno == EINTR) {
    }
}

off_t lockOf(uint64_t record) { return kFirstRecordLock + static_cast<off_t>(record & ((uint64_t(1) << 60) - 1)); }

} // namespace

bool takeFile(FCB *fcb, const FIB *fib, int descriptor, SharePolicy policy, ShareHeld *held)
{
    ShareMode share = fib->sharing ? static_cast<ShareMode>(fib->shareMode & ZVK_FILE_SHARE_MASK) : shareDefault;
    if (share == shareDefault) share = policy.byDefault;
    if (fib->sharing && (fib->lockMode & ZVK_FILE_LOCK_MASK) == ZVK_FILE_LOCK_EXCLUSIVE) share = shareNoOther;
    if (share < policy.freest) share = policy.freest;
    if (fcb->requestedMode & ZVK_OPEN_OUTPUT) share = shareNoOther; // what is being replaced is nobody else's

    bool writes = fcb->requestedMode & (ZVK_OPEN_OUTPUT | ZVK_OPEN_IO | ZVK_OPEN_EXTEND);
    int error = takePresence(descriptor, share == shareNoOther, writes);
    if (!error && writes)
        error = takeWriting(descriptor, share);
    else if (!error && share == shareReadOnly)
        error = takeDenying(descriptor);
    *held = {!error && share == shareNoOther, !error && share != shareAllOther};
    if (error == EINVAL || error == EOPNOTSUPP || error == ENOLCK) held->lockless = error, error = 0;
    if (!error) return true;
    if (error == EAGAIN || error == EACCES) return fail(fcb, statusFileInUse, fs2InUse);
    return failWithErrno(fcb, error);
}

void releaseFile(int descriptor) { setLock(descriptor, F_UNLCK, kPresent, kLoners - kPresent + 1); }

bool denyWriters(int descriptor) { return takeDenying(descriptor) == 0; }

void beginMaking(int descriptor) { waitForLock(descriptor, F_WRLCK, kMaking); }
void endMaking(int descriptor) { setLock(descriptor, F_UNLCK, kMaking); }

void beginChanging(int descriptor) { waitForLock(descriptor, F_WRLCK, kChanging); }
void endChanging(int descriptor) { setLock(descriptor, F_UNLCK, kChanging); }

bool lockTransaction(int descriptor)
{
    int error = setLock(descriptor, F_WRLCK, kTransaction);
    return error != EAGAIN && error != EACCES;
}

void lockBytes(int descriptor, bool change, uint64_t offset, uint64_t size)
{
    waitForLock(descriptor, change ? F_WRLCK : F_RDLCK, static_cast<off_t>(offset), static_cast<off_t>(size));
}

void unlockBytes(int descriptor, uint64_t offset, uint64_t size)
{
    setLock(descriptor, F_UNLCK, static_cast<off_t>(offset), static_cast<off_t>(size));
}

Taken lockRecord(int descriptor, uint64_t record)
{
    int error = setLock(descriptor, F_WRLCK, lockOf(record));
    if (error == EBADF)
        error = setLock(descriptor, F_RDLCK, lockOf(record)); // opened for INPUT: holds off writers all the same
    if (!error) return Taken::yes;
    return error == EAGAIN || error == EACCES ? Taken::locked : Taken::failed;
}

Taken lookAtLock(int descriptor, uint64_t record)
{
    return othersHold(descriptor, lockOf(record)) ? Taken::locked : Taken::yes;
}

void unlockRecord(int descriptor, uint64_t record) { setLock(descriptor, F_UNLCK, lockOf(record)); }

void unlockAllRecords(int descriptor) { setLock(descriptor, F_UNLCK, kFirstRecordLock, off_t(1) << 60); }

} // namespace filesystems
