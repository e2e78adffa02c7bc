// The default file system, "stl", "jgt" and "qvr": sequential, relative and indexed files behind a
// header that holds their attributes.
#include <cerrno>
#include <climits>
#include <sys/random.h>
#include <sys/stat.h>
#include <unistd.h>

#include "companions/filesystems/back_to_back.h"
#include "companions/filesystems/indexed_file.h"
#include "companions/filesystems/indexed_store.h"
#include "companions/filesystems/record_locks.h"
#include "companions/filesystems/record_sum.h"
#include "companions/filesystems/relative_file.h"
#include "companions/filesystems/stored_header.h"
#include "companions/filesystems/transaction.h"

namespace filesystems {

namespace {

// An attribute combination that cannot be stored: refused before the file is touched. Of a file
// that is there the keys may have parts that the program does not know (`made`: there is none).
bool attributesPossible(FCB *fcb, const FIB *fib, bool made)
{
    if (fib->maxRecord == 0 || fib->minRecord > fib->maxRecord) return fail(fcb, 39, fs2RecordLength);
    if (!(fib->organization & ZVK_FILE_INDEXED)) return true;
    if (fib->keyCount == 0 || fib->keyCount > kMostKeys) return fail(fcb, 39, fs2KeyNumber);
    StoredHeader header;
    describeFile(fib, &header);
    for (uint32_t i = 0; i < fib->keyCount; ++i) {
        const FileKey &key = header.keys[i];
        bool good = key.length && key.position < fib->maxRecord;
        if (made || isSplit(key)) good = keyMakesSense(key, header.parts, fib->maxRecord);
        if (!good) return fail(fcb, 39, fs2KeyLength);
        if (key.length > kLongestKey) return fail(fcb, 37, fs2KeyLength);
    }
    return true;
}

// Where a file system gives no locks, a sequential file is a file like any other. What the verbs of
// an indexed file do, and those of a relative one that others may change, is right only with them.
bool needsLocks(const FCB *fcb, const FIB *fib)
{
    RecordLocks locks = {};
    locks.start(fcb, fib, -1);
    return (fib->organization & ZVK_FILE_INDEXED) || ((fib->organization & ZVK_FILE_RELATIVE) && locks.active);
}

// The store of an indexed file comes first: a program killed between the two leaves an empty file,
// which counts as absent.
bool makeFile(FCB *fcb, const Opened &opened, const StoredHeader &expected, StoredHeader *header)
{
    bool indexed = expected.organization & ZVK_FILE_INDEXED;
    *header = expected;
    if ((indexed && !storeCanBeMade(fcb)) || !emptyFile(fcb, opened, 0)) return false;
    if (getrandom(&header->identity, sizeof header->identity, 0) != static_cast<ssize_t>(sizeof header->identity))
        header->identity = reinterpret_cast<uintptr_t>(fcb) ^ static_cast<uint64_t>(getpid());
    if (indexed && !createStore(fcb, *header)) return false;
    return writeHeader(fcb, opened.descriptor, header);
}

SharePolicy sharingOf(const FCB *fcb, const FIB *fib)
{
    bool indexed = fib->organization & ZVK_FILE_INDEXED, relative = fib->organization & ZVK_FILE_RELATIVE;
    if (!indexed && !relative) return sequentialSharing(fcb);
    if (!(fcb->requestedMode & ZVK_OPEN_EXTEND)) return {shareAllOther, shareAllOther};
    return {shareNoOther, relative ? shareReadOnly : shareAllOther}; // a relative file's EXTEND keeps its place
}

// A commit that somebody was killed in comes first. OUTPUT, too: the file may be one of several.
bool settleFirst(FCB *fcb)
{
    char path[PATH_MAX];
    const char *name = resolvedName(fcb->fileName, path);
    int error = name && hasJournal(name) ? settleJournal(name) : 0;
    if (error) failWithStore(fcb, error);
    return error == 0;
}

// Waits until nobody else makes the file: another program may have made it in the meantime.
bool takeMaking(FCB *fcb, Opened *opened)
{
    beginMaking(opened->descriptor);
    if (fcb->requestedMode & ZVK_OPEN_OUTPUT) return true;
    struct stat about;
    if (fstat(opened->descriptor, &about) != 0) return failWithErrno(fcb, errno);
    if (about.st_size) {
        opened->created = false;
        opened->size = static_cast<uint64_t>(about.st_size);
        zvkSetStatus(fcb, 0, fs2None);
    }
    return true;
}

void openStored(FCB *fcb, IPCB *element)
{
    const FIB *fib = zvkFibOf(fcb, element);
    bool indexed = fib->organization & ZVK_FILE_INDEXED, relative = fib->organization & ZVK_FILE_RELATIVE;
    if (!attributesPossible(fcb, fib, fcb->requestedMode & ZVK_OPEN_OUTPUT)) return;
    Opened opened = openByRules(fcb, fib,
                                {.sharing = sharingOf(fcb, fib),
                                 .emptyIsAbsent = true,
                                 .parked = indexed || relative ? parkedDescriptor : nullptr});
    if (opened.descriptor < 0) return;
    if (opened.held.lockless && needsLocks(fcb, fib)) {
        failWithErrno(fcb, opened.held.lockless);
        close(opened.descriptor);
        return;
    }
    if (((indexed || relative) && !settleFirst(fcb)) || (opened.created && !takeMaking(fcb, &opened))) {
        close(opened.descriptor);
        return;
    }

    StoredHeader expected, header;
    describeFile(fib, &expected);
    bool good = opened.created ? attributesPossible(fcb, fib, true) && makeFile(fcb, opened, expected, &header)
                               : readHeader(fcb, opened.descriptor, expected, &header);
    if (opened.created) opened.size = kStoredHeaderSize;
    endMaking(opened.descriptor);
    if (!good)
        close(opened.descriptor);
    else if (indexed)
        startIndexed(fcb, fib, opened, header);
    else if (relative)
        startRelative(fcb, fib, opened, sumSizeOf(header));
    else
        startSequential<BackToBack>(fcb, fib, opened, kStoredHeaderSize, sumSizeOf(header));
}

} // namespace

} // namespace filesystems

extern "C" {
ZVK_EXPORT void _IO_Init(FCB *fcb, IPCB *element);
ZVK_EXPORT void **vfs(void);

void _IO_Init(FCB *fcb, IPCB *) { fcb->open = filesystems::openStored; }
void **vfs(void) { return filesystems::operationTable(); }
}
