// Calls of the system that fail, one after the other: a path is run once for each allocation (or
// each call of the system) that it makes, and each time another one of them fails.
//
//     failEach(Calls::Storage, [] { zvkSomething(); });
//
// Every run is a child process. It may come to its end or end with a message, by SIGABRT; any other
// signal, a hang or a failed REQUIRE is a failure. Included by one file of a test program, whose
// target links its names with --wrap, as tests/frame does.
#pragma once

#include <cerrno>
#include <csignal>
#include <cstdarg>
#include <cstdlib>
#include <fcntl.h>
#include <functional>
#include <gtest/gtest.h>
#include <sys/stat.h>
#include <unistd.h>

#include "support/child.h"

enum class Calls { Storage, System };

struct FailingCall {
    Calls kind = Calls::Storage;
    int after = -1; // calls that still succeed; below 0: all of them
    bool reached = false;
};
inline FailingCall failingCall;

inline bool callFails(Calls kind, int error)
{
    if (failingCall.kind != kind || failingCall.after < 0 || failingCall.after-- != 0) return false;
    failingCall.reached = true;
    errno = error;
    return true;
}

#define KVR2_WRAP(kind, error, refused, type, name, declared, passed)                                                  \
    extern "C" type __real_##name declared;                                                                            \
    extern "C" type __wrap_##name declared;                                                                            \
    type __wrap_##name declared { return callFails(kind, error) ? refused : __real_##name passed; }

KVR2_WRAP(Calls::Storage, ENOMEM, nullptr, void *, malloc, (size_t size), (size))
KVR2_WRAP(Calls::Storage, ENOMEM, nullptr, void *, calloc, (size_t count, size_t size), (count, size))
KVR2_WRAP(Calls::Storage, ENOMEM, nullptr, void *, realloc, (void *block, size_t size), (block, size))
KVR2_WRAP(Calls::Storage, ENOMEM, nullptr, void *, aligned_alloc, (size_t alignment, size_t size), (alignment, size))
KVR2_WRAP(Calls::Storage, ENOMEM, nullptr, char *, strdup, (const char *text), (text))
KVR2_WRAP(Calls::Storage, ENOMEM, nullptr, char *, strndup, (const char *text, size_t size), (text, size))
KVR2_WRAP(Calls::System, EIO, -1, ssize_t, read, (int fd, void *to, size_t size), (fd, to, size))
KVR2_WRAP(Calls::System, ENOSPC, -1, ssize_t, write, (int fd, const void *from, size_t size), (fd, from, size))
KVR2_WRAP(Calls::System, EIO, -1, ssize_t, pread, (int fd, void *to, size_t size, off_t at), (fd, to, size, at))
KVR2_WRAP(Calls::System, ENOSPC, -1, ssize_t, pwrite, (int fd, const void *from, size_t size, off_t at),
          (fd, from, size, at))
KVR2_WRAP(Calls::System, EIO, -1, off_t, lseek, (int fd, off_t at, int whence), (fd, at, whence))
KVR2_WRAP(Calls::System, EIO, -1, int, fstat, (int fd, struct stat *status), (fd, status))
KVR2_WRAP(Calls::System, EIO, -1, int, fsync, (int fd), (fd))
KVR2_WRAP(Calls::System, EACCES, -1, int, unlink, (const char *path), (path))

extern "C" int __real_open(const char *path, int flags, ...);
extern "C" int __wrap_open(const char *path, int flags, ...);
int __wrap_open(const char *path, int flags, ...)
{
    va_list arguments;
    va_start(arguments, flags);
    const mode_t mode = flags & O_CREAT ? va_arg(arguments, mode_t) : 0;
    va_end(arguments);
    return callFails(Calls::System, EMFILE) ? -1 : __real_open(path, flags, mode);
}

// `before` and `after` run without failures, in the same child; returns how many calls failed.
inline int failEach(Calls kind, const std::function<void()> &path, const std::function<void()> &before = {},
                    const std::function<void()> &after = {})
{
    constexpr int kNotReached = 77, kMost = 3000;
    for (int n = 0; n < kMost; n++) {
        ChildRun run = runChild(
            [&] {
                if (before) before();
                failingCall = {kind, n, false};
                path();
                failingCall.after = -1;
                if (!failingCall.reached) exit(kNotReached);
                if (after) after();
            },
            {.seconds = 60});
        if (run.status == kNotReached) return n;
        EXPECT_TRUE(run.status == 0 || run.signal == SIGABRT)
            << "call " << n << ": status " << run.status << ", signal " << run.signal << (run.timedOut ? ", hangs" : "")
            << "\n"
            << run.err;
        if (testing::Test::HasFailure()) return n;
    }
    ADD_FAILURE() << "the path never comes to an end without a failure";
    return kMost;
}
