// Waiting for what another program has locked.
//
// How long is said by the statement (RETRY n TIMES, FOR n SECONDS, FOREVER), or for all verbs and
// for OPEN by VFS_LOCK_WAIT: seconds, or "forever"; without both nobody waits. The lock is asked
// for again and again, so a killed holder is noticed, and no order of waiters is kept. Two programs
// that wait for each other do so until the limit: who says FOREVER must lock in one order.
//
//     LockWait wait(&options, request);
//     while (!locks.forRead(...) && wait.again(fcb)) {
//     }
#pragma once

#include <cstdlib>
#include <cstring>
#include <ctime>

#include "companions/filesystems/secondary_status.h"

namespace filesystems {

// VFS_LOCK_WAIT in milliseconds; -1: without end.
inline int64_t lockWaitByDefault()
{
    const char *said = getenv("VFS_LOCK_WAIT");
    if (!said || !*said) return 0;
    if (strcmp(said, "forever") == 0) return -1;
    char *end;
    double seconds = strtod(said, &end);
    return *end || !(seconds > 0) || seconds > 1e9 ? 0 : static_cast<int64_t>(seconds * 1000);
}

class LockWait {
public:
    LockWait(int64_t byDefault, const FileRequest *request) : limit_(byDefault)
    {
        constexpr int32_t mostSeconds = 1000000;
        if (!request || !(request->options & ZVK_REQUEST_RETRY)) return;
        int32_t count = request->retry < 0 ? 0 : request->retry > mostSeconds ? mostSeconds : request->retry;
        switch (request->options & ZVK_REQUEST_RETRY) {
        case ZVK_REQUEST_RETRY_TIMES:
            limit_ = int64_t(count) * kBetweenTries;
            break;
        case ZVK_REQUEST_RETRY_SECONDS:
            limit_ = int64_t(count) * 1000;
            break;
        default:
            limit_ = -1;
        }
    }

    // Is the status that of a lock, and not yet the last word? Then sleeps for a moment, and the
    // verb tries again.
    bool again(FCB *fcb)
    {
        if (limit_ == 0 || (fcb->status != statusRecordLocked && fcb->status != statusFileInUse)) return false;
        int64_t now = milliseconds();
        if (!started_) started_ = now;
        int64_t left = limit_ < 0 ? kBetweenTries : started_ + limit_ - now;
        if (left <= 0) return false;
        if (pause_ > left) pause_ = left;
        timespec time = {pause_ / 1000, pause_ % 1000 * 1000000};
        nanosleep(&time, nullptr);
        if (pause_ < kBetweenTries) pause_ *= 2;
        if (pause_ > kBetweenTries) pause_ = kBetweenTries;
        zvkSetStatus(fcb, 0, fs2None);
        return true;
    }

private:
    static constexpr int64_t kBetweenTries = 100; // milliseconds, of RETRY n TIMES; others begin with 1
    int64_t limit_, started_ = 0, pause_ = 1;

    static int64_t milliseconds()
    {
        timespec now;
        clock_gettime(CLOCK_MONOTONIC, &now);
        return int64_t(now.tv_sec) * 1000 + now.tv_nsec / 1000000;
    }
};

} // namespace filesystems
