// When a record is locked, and for how long.
//
// A file open for I-O that others may write, too, locks the record of each READ (LOCK MODE
// AUTOMATIC, and the default) or of READ WITH LOCK only (MANUAL). The lock goes with the next verb,
// or, with locks on several records, with UNLOCK or CLOSE. REWRITE and DELETE of a record that
// somebody else has locked are refused whether or not this open reads with locks. A file that
// nobody else can write has no locks at all.
#pragma once

#include "companions/filesystems/lock_wait.h"
#include "companions/filesystems/secondary_status.h"
#include "companions/filesystems/share_locks.h"

namespace filesystems {

struct RecordLocks {
    int descriptor;
    bool active;    // others may write
    bool automatic; // READ locks by itself
    bool multiple;
    bool transactional; // locks stay until the transaction ends
    bool looks;         // INPUT with sharing: READ does not read what is locked
    bool holding;
    uint64_t held;
    int64_t wait; // milliseconds, of verbs that do not say

    void start(const FCB *fcb, const FIB *fib, int file)
    {
        uint8_t share = fib->sharing ? fib->shareMode & ZVK_FILE_SHARE_MASK : 0,
                lock = fib->sharing ? fib->lockMode & ZVK_FILE_LOCK_MASK : 0;
        descriptor = file;
        wait = lockWaitByDefault();
        active = (fcb->requestedMode & ZVK_OPEN_IO) && share != shareNoOther && share != shareReadOnly &&
                 lock != ZVK_FILE_LOCK_EXCLUSIVE;
        automatic = lock != ZVK_FILE_LOCK_MANUAL;
        multiple = fib->sharing && (fib->shareMode & ZVK_FILE_LOCK_COUNT);
        looks = fib->sharing && (fcb->requestedMode & ZVK_OPEN_INPUT);
    }

    // The lock of the verb before goes, unless this verb is about that record.
    void release()
    {
        if (holding && !multiple && !transactional) unlockRecord(descriptor, held);
        holding = false;
    }

    void releaseAll()
    {
        if (!transactional) unlockAllRecords(descriptor);
        holding = false;
    }

    // WITH NO LOCK takes none, and still heeds those of others; only IGNORING LOCK does not.
    bool forRead(FCB *fcb, uint64_t record, uint32_t options)
    {
        if (options & ZVK_REQUEST_IGNORE_LOCK) return true;
        bool wanted = active && ((options & ZVK_REQUEST_LOCK) || (automatic && !(options & ZVK_REQUEST_NO_LOCK)));
        if (wanted) return take(fcb, record);
        if ((active || looks) && lookAtLock(descriptor, record) == Taken::locked)
            return fail(fcb, statusRecordLocked, fs2RecordLocked);
        return true;
    }

    // Before a change; the lock goes with the next verb.
    bool forChange(FCB *fcb, const FileRequest *request, uint64_t record)
    {
        if (!active) return true;
        LockWait waiting(wait, request);
        while (!take(fcb, record))
            if (!waiting.again(fcb)) return false;
        return true;
    }

private:
    bool take(FCB *fcb, uint64_t record)
    {
        if (holding && held == record && !transactional) return true;
        Taken taken = lockRecord(descriptor, record);
        if (taken == Taken::locked) return fail(fcb, statusRecordLocked, fs2RecordLocked);
        if (taken == Taken::failed) return fail(fcb, 93, fs2TooManyLocks);
        release();
        holding = true;
        held = record;
        return true;
    }
};

} // namespace filesystems
