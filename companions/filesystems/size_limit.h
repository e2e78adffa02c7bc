// Holds off SIGXFSZ, the signal of the file-size limit, so that a write beyond the limit fails with
// EFBIG and becomes a file status. The signal is held off for this thread only and taken away again
// if it came: programs may have a handler of their own for it.
#pragma once

#include <cerrno>
#include <csignal>
#include <ctime>
#include <sys/resource.h>

namespace filesystems {

struct SizeLimitHeldOff {
    bool limited; // mostly not: then it costs one call and not three
    sigset_t before;

    SizeLimitHeldOff()
    {
        rlimit limit;
        limited = getrlimit(RLIMIT_FSIZE, &limit) != 0 || limit.rlim_cur != RLIM_INFINITY;
        if (!limited) return;
        sigset_t one;
        sigemptyset(&one);
        sigaddset(&one, SIGXFSZ);
        pthread_sigmask(SIG_BLOCK, &one, &before);
    }
    ~SizeLimitHeldOff()
    {
        if (!limited) return;
        int kept = errno;
        if (!sigismember(&before, SIGXFSZ)) {
            sigset_t pending, one;
            sigpending(&pending);
            if (sigismember(&pending, SIGXFSZ)) {
                timespec now = {};
                sigemptyset(&one);
                sigaddset(&one, SIGXFSZ);
                sigtimedwait(&one, nullptr, &now);
            }
            pthread_sigmask(SIG_SETMASK, &before, nullptr);
        }
        errno = kept;
    }
    SizeLimitHeldOff(const SizeLimitHeldOff &) = delete;
    SizeLimitHeldOff &operator=(const SizeLimitHeldOff &) = delete;
};

} // namespace filesystems
