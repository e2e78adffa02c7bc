#include "companions/filesystems/open_rules.h"

#include <cerrno>
#include <cstdlib>
#include <cstring>
#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include "companions/filesystems/lock_wait.h"

namespace filesystems {

namespace {

Opened refused(int descriptor = -1)
{
    if (descriptor >= 0) close(descriptor);
    return {};
}

// An OPTIONAL file that is not there: a success for INPUT, which reads none; created by I-O and
// EXTEND.
Opened absent(FCB *fcb)
{
    fcb->state |= ZVK_FILE_ABSENT;
    fail(fcb, 5, fs2Absent);
    return refused();
}

// The process's own stream that a name means, or -1. It goes on where the program's ACCEPT and
// DISPLAY are, and may be a pipe: a copy of its descriptor serves, for opening the name anew would
// begin at the start of a file that it was redirected to.
int standardStream(const FCB *fcb)
{
    bool input = fcb->requestedMode & ZVK_OPEN_INPUT;
    bool output = fcb->requestedMode & (ZVK_OPEN_OUTPUT | ZVK_OPEN_EXTEND);
    if (input && strcmp(fcb->fileName, "/dev/stdin") == 0) return STDIN_FILENO;
    if (output && strcmp(fcb->fileName, "/dev/stdout") == 0) return STDOUT_FILENO;
    if (output && strcmp(fcb->fileName, "/dev/stderr") == 0) return STDERR_FILENO;
    return -1;
}

// Does the name lead to another file by now, or to none?
bool isReplaced(const char *name, const struct stat &ours)
{
    struct stat there;
    return stat(name, &there) != 0 || there.st_dev != ours.st_dev || there.st_ino != ours.st_ino;
}

Opened openStandard(FCB *fcb, int stream)
{
    constexpr int kAboveStandard = 3;
    int copy = fcntl(stream, F_DUPFD_CLOEXEC, kAboveStandard);
    if (copy < 0) failWithErrno(fcb, errno);
    return {.descriptor = copy, .standard = true};
}

// Opens the name, or makes the file; -1 with errno.
int openName(const FCB *fcb, bool optional, bool devices, bool *created)
{
    bool output = fcb->requestedMode & ZVK_OPEN_OUTPUT, input = fcb->requestedMode & ZVK_OPEN_INPUT;
    int flags = O_NONBLOCK | O_NOCTTY | O_CLOEXEC | (input ? O_RDONLY : O_RDWR);
    int descriptor = open(fcb->fileName, flags);
    *created = descriptor < 0 && errno == ENOENT && !input && (output || optional);
    if (*created) descriptor = open(fcb->fileName, flags | O_CREAT, 0666);
    if (descriptor >= 0 || errno != EACCES || !output || !devices) return descriptor;

    // A device or terminal that can be written only.
    struct stat about;
    if (stat(fcb->fileName, &about) == 0 && S_ISCHR(about.st_mode))
        return open(fcb->fileName, O_WRONLY | O_NOCTTY | O_CLOEXEC);
    errno = EACCES;
    return -1;
}

Opened openDevice(FCB *fcb, int descriptor, bool possible)
{
    if (!possible || !(fcb->requestedMode & (ZVK_OPEN_INPUT | ZVK_OPEN_OUTPUT))) {
        fail(fcb, 37, fs2FileType);
        return refused(descriptor);
    }
    fcntl(descriptor, F_SETFL, fcntl(descriptor, F_GETFL) & ~O_NONBLOCK);
    return {.descriptor = descriptor};
}

// Takes the file, or waits for it.
bool takeInTurn(FCB *fcb, const FIB *fib, int descriptor, SharePolicy policy, ShareHeld *held)
{
    LockWait wait(lockWaitByDefault(), nullptr);
    while (!takeFile(fcb, fib, descriptor, policy, held)) {
        if (fcb->status != statusFileInUse) return false;
        releaseFile(descriptor); // what was taken of it would hold off the others meanwhile
        if (!wait.again(fcb)) return false;
    }
    return true;
}

Opened openRegular(FCB *fcb, const FIB *fib, const OpenRules &rules, int descriptor, struct stat about, bool created,
                   bool *replaced)
{
    bool output = fcb->requestedMode & ZVK_OPEN_OUTPUT;
    bool changed = false;
    int goesOn = rules.parked ? rules.parked(about.st_dev, about.st_ino, &changed) : -1;
    if (goesOn >= 0) {
        close(descriptor);
        descriptor = goesOn;
    }
    if (changed && output) {
        fail(fcb, statusFileInUse, fs2Uncommitted);
        return refused(descriptor);
    }

    ShareHeld held;
    if (!takeInTurn(fcb, fib, descriptor, rules.sharing, &held)) return refused(descriptor);
    if (fstat(descriptor, &about) != 0) { // anew: another open may have written until now
        failWithErrno(fcb, errno);
        return refused(descriptor);
    }
    *replaced = goesOn < 0 && isReplaced(fcb->fileName, about);

    if (about.st_size == 0 && rules.emptyIsAbsent && !output) {
        if (!(fib->attributes & ZVK_FILE_OPTIONAL)) {
            fail(fcb, 35, fs2Absent);
            return refused(descriptor);
        }
        if (fcb->requestedMode & ZVK_OPEN_INPUT) {
            close(descriptor);
            return absent(fcb);
        }
        created = true;
    }
    if (created && !output) zvkSetStatus(fcb, 5, fs2Absent);
    return {.descriptor = descriptor,
            .seekable = true,
            .created = created || output,
            .size = static_cast<uint64_t>(about.st_size),
            .held = held};
}

// One attempt; `*replaced`: what was opened, and is locked, has lost its name meanwhile.
Opened openOnce(FCB *fcb, const FIB *fib, const OpenRules &rules, bool *replaced)
{
    bool optional = fib->attributes & ZVK_FILE_OPTIONAL, created = false;
    zvkSetStatus(fcb, 0, fs2None);
    fcb->state &= ~ZVK_FILE_ABSENT;
    if (int stream = rules.devices ? standardStream(fcb) : -1; stream >= 0) return openStandard(fcb, stream);

    int descriptor = openName(fcb, optional, rules.devices, &created);
    if (descriptor < 0) {
        if (errno == ENOENT && optional && (fcb->requestedMode & ZVK_OPEN_INPUT)) return absent(fcb);
        failWithErrno(fcb, errno);
        return refused();
    }
    struct stat about;
    if (fstat(descriptor, &about) != 0) {
        failWithErrno(fcb, errno);
        return refused(descriptor);
    }
    if (S_ISREG(about.st_mode)) return openRegular(fcb, fib, rules, descriptor, about, created, replaced);
    return openDevice(fcb, descriptor, rules.devices && S_ISCHR(about.st_mode));
}

} // namespace

// The one before may have put another file in this one's place before it ended, as CLOSE does after
// DELETE of lines: what is written into the old one would be lost.
Opened openByRules(FCB *fcb, const FIB *fib, const OpenRules &rules)
{
    constexpr int most = 10; // a file system whose numbers are not always the same
    for (int tries = 1;; ++tries) {
        bool replaced = false;
        Opened opened = openOnce(fcb, fib, rules, &replaced);
        if (!replaced || tries == most) return opened;
        if (opened.descriptor >= 0) close(opened.descriptor);
    }
}

const char *resolvedName(const char *name, char *room)
{
    char link;
    return readlink(name, &link, 1) == 1 ? realpath(name, room) : name;
}

bool emptyFile(FCB *fcb, const Opened &opened, uint64_t size)
{
    return opened.size <= size || ftruncate(opened.descriptor, static_cast<off_t>(size)) == 0 ||
           failWithErrno(fcb, errno);
}

} // namespace filesystems
