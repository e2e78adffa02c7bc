#include "companions/filesystems/whole_records.h"

#include <cerrno>
#include <climits>
#include <cstdio>
#include <cstring>
#include <fcntl.h>
#include <sys/stat.h>
#include <sys/uio.h>
#include <unistd.h>

#include "companions/filesystems/byte_stream.h"
#include "companions/filesystems/size_limit.h"

namespace filesystems {

namespace {

constexpr uint64_t kPageSize = 4096, kMark = 0x4C414E52554F4A31u;
constexpr uint64_t kLongestImage = uint64_t(1) << 32;

// What the journal begins with; the old and the new image follow.
struct Intent {
    uint64_t mark; // 0: void
    uint64_t device, inode;
    uint64_t offset, size;
    uint64_t sum; // of all, with this word 0
};

uint64_t sumOf(uint64_t sum, const void *data, size_t size)
{
    const uint8_t *bytes = static_cast<const uint8_t *>(data);
    for (size_t i = 0; i < size; ++i) sum = (sum ^ bytes[i]) * 0x100000001b3u;
    return sum;
}

uint64_t sumOf(Intent intent, const uint8_t *before, const uint8_t *after)
{
    intent.sum = 0;
    uint64_t sum = sumOf(0xcbf29ce484222325u, &intent, sizeof intent);
    return sumOf(sumOf(sum, before, intent.size), after, intent.size);
}

bool nameJournal(const WholeRecords *whole, char *name)
{
    char path[PATH_MAX];
    const char *file = resolvedName(whole->fileName, path);
    return file && snprintf(name, PATH_MAX, "%s.kvr2-rewrite", file) < PATH_MAX;
}

bool makeRoom(WholeRecords *whole, size_t size)
{
    if (whole->roomSize >= size) return true;
    free(whole->room);
    whole->room = static_cast<uint8_t *>(malloc(size));
    whole->roomSize = whole->room ? size : 0;
    return whole->room;
}

// Reads an intent of this file into `intent` and its images into the room, with as much room again
// for what the file holds. False: there is none, or `error` says why none can be read.
bool readIntent(WholeRecords *whole, int journal, Intent *intent, int *error)
{
    struct stat about;
    size_t got;
    *error = readAll(journal, intent, sizeof *intent, 0, &got);
    if (*error || got != sizeof *intent || intent->mark != kMark) return false;
    if (fstat(whole->descriptor, &about) != 0) *error = errno;
    if (*error || intent->device != about.st_dev || intent->inode != about.st_ino) return false;
    if (intent->size == 0 || intent->size > kLongestImage) return false;
    if (!makeRoom(whole, 3 * intent->size)) *error = ENOMEM;
    if (!*error) *error = readAll(journal, whole->room, 2 * intent->size, sizeof *intent, &got);
    if (*error || got != 2 * intent->size) return false;
    return intent->sum == sumOf(*intent, whole->room, whole->room + intent->size);
}

// Did a kill stop the change half way? Only then is the file a mixture of both images.
bool isHalfDone(WholeRecords *whole, const Intent &intent, int *error)
{
    const uint8_t *before = whole->room, *after = before + intent.size;
    uint8_t *now = whole->room + 2 * intent.size;
    size_t got;
    *error = readAll(whole->descriptor, now, intent.size, intent.offset, &got);
    if (*error || got != intent.size) return false;
    if (memcmp(now, before, got) == 0 || memcmp(now, after, got) == 0) return false;
    for (size_t i = 0; i < got; ++i)
        if (now[i] != before[i] && now[i] != after[i]) return false;
    return true;
}

int makeVoid(int journal)
{
    uint64_t none = 0;
    return writeAll(journal, true, &none, sizeof none, 0);
}

// Completes what a killed program left; the journal is this program's.
int complete(WholeRecords *whole, int journal)
{
    Intent intent;
    int error;
    if (!readIntent(whole, journal, &intent, &error)) return error;
    if (whole->locksChanges) lockBytes(whole->descriptor, true, intent.offset, intent.size);
    if (isHalfDone(whole, intent, &error))
        error = writeAll(whole->descriptor, true, whole->room + intent.size, intent.size, intent.offset);
    if (!error) error = makeVoid(journal);
    if (whole->locksChanges) unlockBytes(whole->descriptor, intent.offset, intent.size);
    return error;
}

// The journal that the name leads to, and no other program's: the caller has the lock on it. -1:
// there is none, or `error` says why it cannot be opened.
int openJournal(WholeRecords *whole, bool make, int *error)
{
    struct stat about;
    *error = 0;
    if (whole->journal >= 0) {
        if (fstat(whole->journal, &about) == 0 && about.st_nlink) return whole->journal;
        close(whole->journal); // another program has closed the file and removed it
        whole->journal = -1;
    }
    char name[PATH_MAX];
    if (!nameJournal(whole, name)) return -1;
    whole->journal = open(name, O_RDWR | O_CLOEXEC);
    if (whole->journal < 0 && errno == ENOENT && make && fstat(whole->descriptor, &about) == 0) {
        whole->journal = open(name, O_RDWR | O_CREAT | O_EXCL | O_CLOEXEC, 0600);
        // Who may read the file reads its journal.
        if (whole->journal >= 0 && (fchown(whole->journal, about.st_uid, about.st_gid) != 0 ||
                                    fchmod(whole->journal, about.st_mode & 0777) != 0))
            fchmod(whole->journal, about.st_mode & 0666);
    }
    bool notAllowed = errno == EACCES || errno == EPERM || errno == EROFS || errno == ENOENT;
    if (whole->journal < 0 && !notAllowed) *error = errno;
    return whole->journal;
}

int completeAny(WholeRecords *whole)
{
    int error, journal = openJournal(whole, false, &error);
    return journal >= 0 ? complete(whole, journal) : error;
}

// Past the end of the file there is nothing to be torn: a record that the end cuts off is none.
bool needsJournal(const WholeRecords *whole, size_t size, uint64_t offset)
{
    struct stat about;
    if (offset / kPageSize == (offset + size - 1) / kPageSize) return false;
    return fstat(whole->descriptor, &about) != 0 || offset + size <= static_cast<uint64_t>(about.st_size);
}

int replaceWithJournal(WholeRecords *whole, const void *data, size_t size, uint64_t offset)
{
    int error, journal = openJournal(whole, true, &error);
    if (error) return error;
    if (journal < 0) return writeAll(whole->descriptor, true, data, size, offset);
    struct stat about;
    size_t got;
    if (fstat(whole->descriptor, &about) != 0) return errno;
    if (!makeRoom(whole, 2 * size)) return ENOMEM;
    uint8_t *images = whole->room;
    error = readAll(whole->descriptor, images, size, offset, &got);
    if (!error && got != size) error = EIO;
    if (error) return error;
    memcpy(images + size, data, size);

    Intent intent = {kMark, about.st_dev, about.st_ino, offset, size, 0};
    intent.sum = sumOf(intent, images, images + size);
    error = writeAll(journal, true, images, 2 * size, sizeof intent);
    if (!error) error = writeAll(journal, true, &intent, sizeof intent, 0);
    if (error) {
        makeVoid(journal);
        return error;
    }
    error = writeAll(whole->descriptor, true, data, size, offset);
    // As it was; if that fails, too, the journal stays for the next OPEN.
    if (error && writeAll(whole->descriptor, true, images, size, offset) != 0) return error;
    int voided = makeVoid(journal);
    return error ? error : voided;
}

// A reader mends in its own buffer what a killed program left. Nobody completes it meanwhile: the
// reader has the lock on its bytes.
int mend(WholeRecords *whole, uint8_t *data, size_t size, uint64_t offset)
{
    char name[PATH_MAX];
    if (!nameJournal(whole, name)) return 0;
    int journal = open(name, O_RDONLY | O_CLOEXEC), error = 0;
    if (journal < 0) return errno == ENOENT ? 0 : errno;
    Intent intent;
    uint64_t end = offset + size;
    if (readIntent(whole, journal, &intent, &error) && intent.offset < end && offset < intent.offset + intent.size &&
        isHalfDone(whole, intent, &error)) {
        uint64_t from = intent.offset > offset ? intent.offset : offset;
        uint64_t to = intent.offset + intent.size < end ? intent.offset + intent.size : end;
        memcpy(data + (from - offset), whole->room + intent.size + (from - intent.offset), to - from);
    }
    close(journal);
    return error;
}

} // namespace

int startWhole(FCB *fcb, const Opened &opened, WholeRecords *whole)
{
    *whole = {opened.descriptor, fcb->fileName, false, false, false, -1, nullptr, 0};
    if (!opened.seekable) return 0;
    whole->locksReads = whole->heeds = !opened.held.noWriters;
    if (fcb->requestedMode & ZVK_OPEN_INPUT) {
        whole->heeds = true; // of a program that was killed before
        return 0;
    }
    whole->locksChanges = !opened.held.alone;
    char name[PATH_MAX];
    if (fcb->requestedMode & ZVK_OPEN_OUTPUT) {
        if (nameJournal(whole, name)) unlink(name);
        return 0;
    }
    beginChanging(whole->descriptor);
    int error = completeAny(whole);
    endChanging(whole->descriptor);
    return error;
}

void endWhole(WholeRecords *whole)
{
    char name[PATH_MAX];
    if (whole->journal >= 0) {
        beginChanging(whole->descriptor);
        if (completeAny(whole) == 0 && whole->journal >= 0 && nameJournal(whole, name)) unlink(name);
        if (whole->journal >= 0) close(whole->journal);
        endChanging(whole->descriptor);
    }
    free(whole->room);
    whole->room = nullptr;
    whole->roomSize = 0;
    whole->journal = -1;
}

int replaceBytes(WholeRecords *whole, const void *data, size_t size, uint64_t offset)
{
    bool others = whole->locksReads;
    if (others) beginChanging(whole->descriptor);
    int error = others ? completeAny(whole) : 0;
    if (!error) {
        if (whole->locksChanges) lockBytes(whole->descriptor, true, offset, size);
        error = needsJournal(whole, size, offset) ? replaceWithJournal(whole, data, size, offset)
                                                  : writeAll(whole->descriptor, true, data, size, offset);
        if (whole->locksChanges) unlockBytes(whole->descriptor, offset, size);
    }
    if (others) endChanging(whole->descriptor);
    return error;
}

int fetchBytes(WholeRecords *whole, void *data, size_t size, uint64_t offset, size_t *got)
{
    if (whole->locksReads) lockBytes(whole->descriptor, false, offset, size);
    int error = readAll(whole->descriptor, data, size, offset, got);
    if (!error && whole->heeds && *got) error = mend(whole, static_cast<uint8_t *>(data), *got, offset);
    if (whole->locksReads) unlockBytes(whole->descriptor, offset, size);
    return error;
}

} // namespace filesystems
