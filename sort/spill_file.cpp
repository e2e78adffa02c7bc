// Spill files; see spill_file.h.
#include "sort/spill_file.h"

#include <cerrno>
#include <cstdio>
#include <cstring>
#include <fcntl.h>
#include <unistd.h>

#include "frame/run_unit.h"
#include "frame/upcalls.h"

namespace {

int openSpill(const char *path, int flags)
{
    int fd;
    do fd = open(path, flags | O_CLOEXEC, 0666);
    while (fd < 0 && (errno == EINTR || errno == EAGAIN || errno == ETIMEDOUT));
    return fd;
}

bool writeAll(int fd, const uint8_t *bytes, uint64_t size)
{
    while (size) {
        ssize_t written = write(fd, bytes, size);
        if (written < 0 && errno == EINTR) continue;
        if (written <= 0) return false;
        bytes += written;
        size -= static_cast<uint64_t>(written);
    }
    return true;
}

// False, with an empty name, if the name does not fit.
bool nameOf(const ZvkThreadRecord *record, Spill kind, char *path)
{
    const char *directory = record->tempDir ? record->tempDir : ".";
    size_t length = strlen(directory);
    int size =
        snprintf(path, kSpillPathBytes, "%s%s%s%010u.%010u", directory,
                 length && directory[length - 1] == '/' ? "" : "/", kind == Spill::Input ? "sortwki." : "sortwko.",
                 static_cast<uint32_t>(_zvkProccom->pid), static_cast<uint32_t>(record->threadId));
    bool fits = size > 0 && static_cast<uint64_t>(size) < kSpillPathBytes;
    if (!fits) path[0] = 0;
    return fits;
}

} // namespace

bool zvkNameSpillFile(ZvkThreadRecord *record, Spill kind) { return nameOf(record, kind, record->spillPath); }

Append zvkAppendSpill(const char *path, const uint8_t *bytes, uint64_t size)
{
    int fd = openSpill(path, O_RDWR | O_CREAT | O_APPEND);
    if (fd < 1) return Append::Refused;
    off_t before = lseek(fd, 0, SEEK_END);
    // A file that cannot be synchronised at all (EINVAL) is as good as it gets.
    bool good = before >= 0 && writeAll(fd, bytes, size) && (fdatasync(fd) == 0 || errno == EINVAL);
    bool whole = good || before < 0 || ftruncate(fd, before) == 0;
    if (close(fd) != 0) whole = good = false;
    return good ? Append::Done : whole ? Append::Refused : Append::Damaged;
}

bool zvkReadSpill(ZvkThreadRecord *record, uint8_t *bytes, uint64_t size, uint64_t offset, uint64_t *count)
{
    *count = 0;
    if (!record->spillHandle) record->spillHandle = openSpill(record->spillPath, O_RDWR) + 1;
    if (!record->spillHandle) return false;
    while (*count < size) {
        ssize_t got =
            pread(record->spillHandle - 1, bytes + *count, size - *count, static_cast<off_t>(offset + *count));
        if (got < 0 && errno == EINTR) continue;
        if (got < 0) return false;
        if (got == 0) break;
        *count += static_cast<uint64_t>(got);
    }
    return true;
}

void zvkForgetSpillBelow(ZvkThreadRecord *record, uint64_t offset)
{
    // A file system that cannot do this keeps the space until the file goes.
    if (record->spillHandle && offset)
        fallocate(record->spillHandle - 1, FALLOC_FL_PUNCH_HOLE | FALLOC_FL_KEEP_SIZE, 0, static_cast<off_t>(offset));
}

void zvkCloseSpill(ZvkThreadRecord *record)
{
    if (record->spillHandle) close(record->spillHandle - 1);
    record->spillHandle = 0;
}

void zvkRemoveSpillFiles()
{
    auto *record = static_cast<ZvkThreadRecord *>(zvkThreadScratch(-1));
    if (!record || !record->spillPath) return;
    if (record->spillPath[0]) unlink(record->spillPath);
    // While the engine runs only the statement knows the file of the released records. The path in
    // the thread's record stays, for threads of the engine read it.
    char input[kSpillPathBytes];
    if (record->active && nameOf(record, Spill::Input, input)) unlink(input);
}

void zvkDropSpill(ZvkThreadRecord *record)
{
    zvkCloseSpill(record);
    if (record->spillPath[0]) unlink(record->spillPath);
    record->spillPath[0] = 0;
}
