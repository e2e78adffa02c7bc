#include "companions/filesystems/removed_lines.h"

#include <cerrno>
#include <climits>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include "companions/filesystems/byte_stream.h"
#include "companions/filesystems/durability.h"
#include "companions/filesystems/open_rules.h"

namespace filesystems {

// The copy's file, which is empty until CLOSE.
static bool beginCopy(FCB *fcb, RemovedLines *lines, int descriptor)
{
    char room[PATH_MAX], copy[PATH_MAX];
    struct stat about;
    const char *name = resolvedName(fcb->fileName, room);
    if (!name || fstat(descriptor, &about) != 0) return failWithErrno(fcb, errno);
    if (about.st_nlink != 1) return fail(fcb, 30, fs2SeveralNames);
    if (snprintf(copy, sizeof copy, "%s.kvr2-lines", name) >= PATH_MAX) return failWithErrno(fcb, ENAMETOOLONG);
    if (unlink(copy) != 0 && errno != ENOENT) return failWithErrno(fcb, errno);
    int made = open(copy, O_WRONLY | O_CREAT | O_EXCL | O_CLOEXEC, 0600);
    if (made < 0) return failWithErrno(fcb, errno);
    int error = fchown(made, about.st_uid, about.st_gid) != 0 || fchmod(made, about.st_mode & 0777) != 0 ? errno : 0;
    lines->name = error ? nullptr : strdup(name);
    lines->copyName = lines->name ? strdup(copy) : nullptr;
    if (!error && !lines->copyName) error = ENOMEM;
    if (!error) return lines->descriptor = made, true;
    free(lines->name);
    lines->name = nullptr;
    close(made);
    unlink(copy);
    return failWithErrno(fcb, error);
}

bool removeLine(FCB *fcb, RemovedLines *lines, int descriptor, uint64_t from, uint64_t to)
{
    if (!lines->name && !beginCopy(fcb, lines, descriptor)) return false;
    if (lines->count && lines->ranges[lines->count - 1].to == from) {
        lines->ranges[lines->count - 1].to = to;
        return true;
    }
    if (lines->count == lines->room) {
        size_t wanted = lines->room ? 2 * lines->room : 64;
        void *grown = realloc(lines->ranges, wanted * sizeof *lines->ranges);
        if (!grown) return failWithErrno(fcb, ENOMEM);
        lines->ranges = static_cast<RemovedLines::Range *>(grown);
        lines->room = wanted;
    }
    lines->ranges[lines->count++] = {from, to};
    return true;
}

// Bytes of the file from `from` to `to`, at the copy's `*at`.
static int copyBytes(const RemovedLines *lines, int descriptor, uint64_t from, uint64_t to, uint64_t *at)
{
    char part[1 << 16];
    int error = 0;
    while (from < to && !error) {
        size_t wanted = to - from < sizeof part ? static_cast<size_t>(to - from) : sizeof part, got;
        error = readAll(descriptor, part, wanted, from, &got);
        if (!error && got != wanted) error = EIO; // it has become shorter
        if (!error) error = writeAll(lines->descriptor, true, part, wanted, *at);
        from += wanted, *at += wanted;
    }
    return error;
}

int takeLinesOut(RemovedLines *lines, int descriptor, uint64_t size)
{
    if (!lines->name) return 0;
    uint64_t at = 0, from = 0;
    int error = 0;
    struct stat ours, there;
    for (size_t n = 0; n < lines->count && !error; ++n) {
        error = copyBytes(lines, descriptor, from, lines->ranges[n].from, &at);
        from = lines->ranges[n].to;
    }
    if (!error) error = copyBytes(lines, descriptor, from, size, &at);
    const bool force = wantedDurability() != Durability::none;
    if (!error && force) error = forceData(lines->descriptor);
    if (close(lines->descriptor) != 0 && !error) error = errno;
    // Somebody may have removed or replaced the file meanwhile: what is there is not ours.
    if (!error && (stat(lines->name, &there) != 0 || fstat(descriptor, &ours) != 0)) error = errno;
    if (!error && (there.st_dev != ours.st_dev || there.st_ino != ours.st_ino)) error = ESTALE;
    if (!error && rename(lines->copyName, lines->name) != 0) error = errno;
    if (error)
        unlink(lines->copyName);
    else if (force)
        forceDirectory(lines->name);
    free(lines->name);
    free(lines->copyName);
    free(lines->ranges);
    *lines = {};
    return error;
}

} // namespace filesystems
