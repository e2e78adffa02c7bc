#include "failing_disk.h"

#include <cerrno>
#include <csignal>
#include <cstdarg>
#include <cstdlib>
#include <cstring>
#include <fcntl.h>
#include <sys/stat.h>
#include <sys/syscall.h>
#include <sys/uio.h>
#include <unistd.h>

namespace {

FailingDisk::Failure failing = FailingDisk::none;
int goodWrites, seen;

bool recording;

// Through a descriptor of O_DSYNC a write is on the disk at once.
void record(int fd, long offset, const void *data, size_t size)
{
    struct stat about;
    if (!recording || syscall(SYS_fstat, fd, &about) != 0) return;
    RecordingDisk::writes.push_back({about.st_ino, offset, std::string(static_cast<const char *>(data), size)});
    if (offset >= 0 && (fcntl(fd, F_GETFL) & O_DSYNC)) RecordingDisk::writes.push_back({about.st_ino, -1, ""});
}

// True if the call fails now; a short write is not one of them, `size` is what it may take.
bool failsNow(size_t *size)
{
    if (failing == FailingDisk::none || seen++ < goodWrites) return false;
    if (failing == FailingDisk::stopped) kill(getpid(), SIGKILL);
    if (failing == FailingDisk::shortWrite) *size = *size / 2 + !(*size / 2);
    errno = failing == FailingDisk::full ? ENOSPC : EIO;
    return failing != FailingDisk::shortWrite;
}

ssize_t writeAt(int fd, const void *data, size_t size, off_t offset)
{
    if (failing == FailingDisk::killed) { // after so many bytes of all writes
        if (static_cast<int>(size) > goodWrites) {
            syscall(SYS_pwrite64, fd, data, goodWrites, offset);
            kill(getpid(), SIGKILL);
        }
        goodWrites -= static_cast<int>(size);
        return syscall(SYS_pwrite64, fd, data, size, offset);
    }
    if (failsNow(&size)) return -1;
    record(fd, offset, data, size);
    return syscall(SYS_pwrite64, fd, data, size, offset);
}

// With offset -1 where the file stands.
ssize_t writeVector(int fd, const iovec *parts, int count, off_t offset)
{
    size_t size = parts[0].iov_len;
    if (failsNow(&size)) return -1;
    bool cut = size != parts[0].iov_len;
    long place = offset < 0 ? lseek(fd, 0, SEEK_CUR) : offset;
    for (int i = 0; recording && i < count; ++i) {
        record(fd, place, parts[i].iov_base, parts[i].iov_len);
        place += static_cast<long>(parts[i].iov_len);
    }
    if (offset < 0)
        return cut ? syscall(SYS_write, fd, parts[0].iov_base, size) : syscall(SYS_writev, fd, parts, count);
    return cut ? syscall(SYS_pwrite64, fd, parts[0].iov_base, size, offset)
               : syscall(SYS_pwritev, fd, parts, count, offset, 0);
}

bool lockless;

std::string shrinking; // empty: no file
unsigned long shrinkingInode;
long shrinkTo;
int asksToGo;

void shrink(const struct stat &about)
{
    if (shrinking.empty() || about.st_ino != shrinkingInode || asksToGo-- > 0) return;
    if (truncate(shrinking.c_str(), shrinkTo) != 0) abort();
    shrinking.clear();
}

int readsToGo = -1; // until one fails; -1: none does

bool readFailsNow()
{
    if (readsToGo < 0 || readsToGo-- > 0) return false;
    errno = EIO;
    return true;
}

} // namespace

RecordingDisk::RecordingDisk()
{
    writes.clear();
    recording = true;
}
RecordingDisk::~RecordingDisk() { recording = false; }
std::vector<RecordedWrite> RecordingDisk::writes;

LocklessDisk::LocklessDisk() { lockless = true; }
LocklessDisk::~LocklessDisk() { lockless = false; }

ShrinkingFile::ShrinkingFile(const std::string &name, long size, int nth)
{
    struct stat about;
    if (stat(name.c_str(), &about) != 0) abort();
    shrinkingInode = about.st_ino;
    shrinkTo = size;
    asksToGo = nth;
    shrinking = name;
}
ShrinkingFile::~ShrinkingFile() { shrinking.clear(); }
bool ShrinkingFile::happened() { return shrinking.empty(); }

FailingRead::FailingRead(int nth) { readsToGo = nth; }
FailingRead::~FailingRead() { readsToGo = -1; }
bool FailingRead::happened() { return readsToGo < 0; }

FailingDisk::FailingDisk(Failure failure, int good)
{
    seen = 0;
    goodWrites = good;
    failing = failure;
}
FailingDisk::~FailingDisk() { failing = none; }
int FailingDisk::writes() { return seen; }

#define TAKEN extern "C" __attribute__((visibility("default")))
TAKEN ssize_t pwrite(int fd, const void *data, size_t size, off_t offset) { return writeAt(fd, data, size, offset); }
TAKEN ssize_t pwrite64(int fd, const void *data, size_t size, off64_t offset)
{
    return writeAt(fd, data, size, offset);
}
TAKEN ssize_t pwritev(int fd, const iovec *parts, int count, off_t offset)
{
    return writeVector(fd, parts, count, offset);
}
TAKEN ssize_t pwritev64(int fd, const iovec *parts, int count, off64_t offset)
{
    return writeVector(fd, parts, count, offset);
}
TAKEN ssize_t writev(int fd, const iovec *parts, int count) { return writeVector(fd, parts, count, -1); }
TAKEN ssize_t pread(int fd, void *data, size_t size, off_t offset)
{
    return readFailsNow() ? -1 : syscall(SYS_pread64, fd, data, size, offset);
}
TAKEN ssize_t pread64(int fd, void *data, size_t size, off64_t offset)
{
    return readFailsNow() ? -1 : syscall(SYS_pread64, fd, data, size, offset);
}
TAKEN int fstat(int fd, struct stat *about)
{
    if (readFailsNow()) return -1;
    int result = static_cast<int>(syscall(SYS_fstat, fd, about));
    if (result == 0) shrink(*about);
    return result;
}
static int control(int fd, int what, void *with)
{
    bool locks = what == F_SETLK || what == F_SETLKW || what == F_GETLK || what == F_OFD_SETLK ||
                 what == F_OFD_SETLKW || what == F_OFD_GETLK;
    if (lockless && locks) return errno = ENOLCK, -1;
    return static_cast<int>(syscall(SYS_fcntl, fd, what, with));
}
TAKEN int fcntl(int fd, int what, ...)
{
    va_list rest;
    va_start(rest, what);
    void *with = va_arg(rest, void *);
    va_end(rest);
    return control(fd, what, with);
}
TAKEN int fcntl64(int fd, int what, ...)
{
    va_list rest;
    va_start(rest, what);
    void *with = va_arg(rest, void *);
    va_end(rest);
    return control(fd, what, with);
}
// Only files that a program makes for itself are of interest: their names come and go.
static int openAndRecord(const char *name, int flags, mode_t mode)
{
    int fd = static_cast<int>(syscall(SYS_openat, AT_FDCWD, name, flags, mode));
    if (recording && fd >= 0 && (flags & O_EXCL)) record(fd, RecordedWrite::made, name, strlen(name));
    return fd;
}
TAKEN int open(const char *name, int flags, ...)
{
    va_list rest;
    va_start(rest, flags);
    mode_t mode = flags & O_CREAT ? va_arg(rest, mode_t) : 0;
    va_end(rest);
    return openAndRecord(name, flags, mode);
}
TAKEN int open64(const char *name, int flags, ...)
{
    va_list rest;
    va_start(rest, flags);
    mode_t mode = flags & O_CREAT ? va_arg(rest, mode_t) : 0;
    va_end(rest);
    return openAndRecord(name, flags, mode);
}
TAKEN int unlink(const char *name)
{
    size_t none = 1;
    if (recording) RecordingDisk::writes.push_back({0, RecordedWrite::removed, name});
    if (failing == FailingDisk::stopped) failsNow(&none);
    return static_cast<int>(syscall(SYS_unlink, name));
}
TAKEN int link(const char *name, const char *more)
{
    struct stat about;
    int result = static_cast<int>(syscall(SYS_linkat, AT_FDCWD, name, AT_FDCWD, more, 0));
    if (recording && result == 0 && stat(name, &about) == 0)
        RecordingDisk::writes.push_back({about.st_ino, RecordedWrite::linked, more});
    return result;
}
TAKEN int fsync(int fd)
{
    record(fd, -1, "", 0);
    return recording ? 0 : static_cast<int>(syscall(SYS_fsync, fd));
}
TAKEN int fdatasync(int fd)
{
    record(fd, -1, "", 0);
    return recording ? 0 : static_cast<int>(syscall(SYS_fdatasync, fd));
}
