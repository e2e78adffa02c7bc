// Failing calls of shared objects: the library, the file systems, the sort engine and LMDB find the
// program's routines of these names before the system's. Only their calls fail; those of the test
// itself and of the system's libraries do not. The program's target sets ENABLE_EXPORTS.
//
// Under a sanitizer, whose own allocator has those names, only calls of the system fail.
#include <cstdarg>
#include <cstdint>
#include <cstdio>
#include <cstring>
#include <dlfcn.h>
#include <fcntl.h>
#include <malloc.h>
#include <pthread.h>
#include <sys/mman.h>
#include <sys/stat.h>
#include <sys/syscall.h>
#include <sys/uio.h>
#include <unistd.h>

#include "support/failing_calls.h"

static bool search(const void *caller)
{
    Dl_info about{};
    if (!dladdr(caller, &about) || !about.dli_fname) return false;
    const char *slash = strrchr(about.dli_fname, '/');
    const char *name = slash ? slash + 1 : about.dli_fname;
    for (const char *object : {"libkvr2", "zvkrf", "libvortlite", "vortlite", "liblmdb"})
        if (strncmp(name, object, strlen(object)) == 0) return true;
    return false;
}

// A search takes long, and calls come from few places.
static bool isOurs(const void *caller)
{
    static thread_local struct {
        const void *caller;
        bool ours;
    } known[256];
    auto &place = known[reinterpret_cast<uintptr_t>(caller) * 0x9E3779B97F4A7C15u >> 56];
    if (place.caller != caller) place = {caller, search(caller)};
    return place.ours;
}

#define TAKEN extern "C" __attribute__((visibility("default"), noinline))
#define FAILS(kind, error)                                                                                             \
    (failingCall.after >= 0 && isOurs(__builtin_return_address(0)) && callFails(kind, error, __func__))

#ifndef KVR2_SANITIZED
extern "C" {
void *__libc_malloc(size_t size);
void *__libc_calloc(size_t count, size_t size);
void *__libc_realloc(void *block, size_t size);
void *__libc_memalign(size_t alignment, size_t size);
}
static char *copyOf(const char *text, size_t length)
{
    auto *copy = static_cast<char *>(__libc_malloc(length + 1));
    if (!copy) return nullptr;
    memcpy(copy, text, length);
    copy[length] = 0;
    return copy;
}
TAKEN void *malloc(size_t size) { return FAILS(Calls::Storage, ENOMEM) ? nullptr : __libc_malloc(size); }
TAKEN void *calloc(size_t count, size_t size)
{
    return FAILS(Calls::Storage, ENOMEM) ? nullptr : __libc_calloc(count, size);
}
TAKEN void *realloc(void *block, size_t size)
{
    return FAILS(Calls::Storage, ENOMEM) ? nullptr : __libc_realloc(block, size);
}
TAKEN void *aligned_alloc(size_t alignment, size_t size)
{
    return FAILS(Calls::Storage, ENOMEM) ? nullptr : __libc_memalign(alignment, size);
}
TAKEN int posix_memalign(void **block, size_t alignment, size_t size)
{
    if (FAILS(Calls::Storage, ENOMEM)) return ENOMEM;
    *block = __libc_memalign(alignment, size);
    return *block ? 0 : ENOMEM;
}
TAKEN char *strdup(const char *text) { return FAILS(Calls::Storage, ENOMEM) ? nullptr : copyOf(text, strlen(text)); }
TAKEN char *strndup(const char *text, size_t size)
{
    return FAILS(Calls::Storage, ENOMEM) ? nullptr : copyOf(text, strnlen(text, size));
}
#endif

// The system's calls themselves: a routine of the same name cannot be asked for here.
#define TAKE(error, type, name, number, declared, ...)                                                                 \
    TAKEN type name declared                                                                                           \
    {                                                                                                                  \
        return FAILS(Calls::System, error) ? static_cast<type>(-1) : static_cast<type>(syscall(number, __VA_ARGS__));  \
    }
TAKE(EIO, ssize_t, read, SYS_read, (int fd, void *to, size_t size), fd, to, size)
TAKE(ENOSPC, ssize_t, write, SYS_write, (int fd, const void *from, size_t size), fd, from, size)
TAKE(EIO, ssize_t, pread, SYS_pread64, (int fd, void *to, size_t size, off_t at), fd, to, size, at)
TAKE(EIO, ssize_t, pread64, SYS_pread64, (int fd, void *to, size_t size, off64_t at), fd, to, size, at)
TAKE(ENOSPC, ssize_t, pwrite, SYS_pwrite64, (int fd, const void *from, size_t size, off_t at), fd, from, size, at)
TAKE(ENOSPC, ssize_t, pwrite64, SYS_pwrite64, (int fd, const void *from, size_t size, off64_t at), fd, from, size, at)
TAKE(ENOSPC, ssize_t, writev, SYS_writev, (int fd, const iovec *parts, int count), fd, parts, count)
TAKE(ENOSPC, ssize_t, pwritev, SYS_pwritev, (int fd, const iovec *parts, int count, off_t at), fd, parts, count, at, 0)
TAKE(ENOSPC, ssize_t, pwritev64, SYS_pwritev, (int fd, const iovec *parts, int count, off64_t at), fd, parts, count, at,
     0)
TAKE(EIO, off_t, lseek, SYS_lseek, (int fd, off_t at, int whence), fd, at, whence)
TAKE(EIO, int, fstat, SYS_fstat, (int fd, struct stat *status), fd, status)
TAKE(EIO, int, fsync, SYS_fsync, (int fd), fd)
TAKE(EIO, int, fdatasync, SYS_fdatasync, (int fd), fd)
TAKE(EIO, int, ftruncate, SYS_ftruncate, (int fd, off_t size), fd, size)
TAKE(ENOSPC, int, fallocate, SYS_fallocate, (int fd, int mode, off_t at, off_t size), fd, mode, at, size)
TAKE(EACCES, int, unlink, SYS_unlink, (const char *path), path)
TAKE(EACCES, int, rename, SYS_rename, (const char *from, const char *to), from, to)

static int openFile(const char *path, int flags, mode_t mode)
{
    return static_cast<int>(syscall(SYS_openat, AT_FDCWD, path, flags, mode));
}
#define TAKE_OPEN(name)                                                                                                \
    TAKEN int name(const char *path, int flags, ...)                                                                   \
    {                                                                                                                  \
        va_list arguments;                                                                                             \
        va_start(arguments, flags);                                                                                    \
        const mode_t mode = flags & O_CREAT ? va_arg(arguments, mode_t) : 0;                                           \
        va_end(arguments);                                                                                             \
        return FAILS(Calls::System, EMFILE) ? -1 : openFile(path, flags, mode);                                        \
    }
TAKE_OPEN(open)
TAKE_OPEN(open64)
TAKEN void *mmap(void *at, size_t size, int protection, int flags, int fd, off_t offset)
{
    if (FAILS(Calls::System, ENOMEM)) return MAP_FAILED;
    return reinterpret_cast<void *>(syscall(SYS_mmap, at, size, protection, flags, fd, offset));
}

// Those that are more than one call of the system.
template <class Routine>
static Routine *next(const char *name)
{
    return reinterpret_cast<Routine *>(dlsym(RTLD_NEXT, name));
}
TAKEN int mkostemp(char *path, int flags)
{
    return FAILS(Calls::System, EMFILE) ? -1 : next<int(char *, int)>("mkostemp")(path, flags);
}
TAKEN FILE *fopen(const char *path, const char *mode)
{
    return FAILS(Calls::System, EMFILE) ? nullptr : next<FILE *(const char *, const char *)>("fopen")(path, mode);
}
TAKEN int pthread_create(pthread_t *thread, const pthread_attr_t *attributes, void *(*body)(void *), void *argument)
{
    if (FAILS(Calls::System, EAGAIN)) return EAGAIN;
    return next<int(pthread_t *, const pthread_attr_t *, void *(*)(void *), void *)>("pthread_create")(
        thread, attributes, body, argument);
}
