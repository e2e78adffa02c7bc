// Holds off SIGXFSZ, the signal of the file-size limit, so that a write beyond the limit fails with
// EFBIG and becomes a file status. The signal is held off for this thread only and taken away again
// if it came: programs may have a handler of their own for it.
#pragma once

#include <cerrno>
#include <csignal>
#include <ctime>

namespace filesystems {

struct SizeLimitHeldOff {
    sigset_t before;

    SizeLimitHeldOff()
    {
        sigset_t one;
        sigemptyset(&one);
        sigaddset(&one, SIGXFSZ);
        pthread_sigmask(SIG_BLOCK, &one, &before);
    }
    ~SizeLimitHeldOff()
    {
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
