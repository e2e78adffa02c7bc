// Failing calls of a program that is linked from the library's objects. Included by one file of it;
// its target links the names with --wrap, as tests/frame does.
#pragma once

#include <cstdarg>
#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include "support/failing_calls.h"

#define KVR2_WRAP(kind, error, refused, type, name, declared, passed)                                                  \
    extern "C" type __real_##name declared;                                                                            \
    extern "C" type __wrap_##name declared;                                                                            \
    type __wrap_##name declared { return callFails(kind, error, #name) ? refused : __real_##name passed; }

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
    return callFails(Calls::System, EMFILE, "open") ? -1 : __real_open(path, flags, mode);
}
