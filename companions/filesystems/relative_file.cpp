// Relative files: OPEN, CLOSE and the verbs. Record n is in the n-th slot after the header
// (relative_slots.h).
#include "companions/filesystems/relative_file.h"

#include <cerrno>
#include <climits>
#include <cstdlib>
#include <cstring>
#include <sys/stat.h>
#include <unistd.h>

#include "companions/filesystems/relative_slots.h"
#include "companions/filesystems/verb.h"

namespace filesystems {

namespace {

constexpr size_t kWindowSize = 65536;

RelativeFile *fileOf(FCB *fcb) { return static_cast<RelativeFile *>(fcb->moduleBuffer); }

bool failWithFile(FCB *fcb, const RelativeFile *file)
{
    return file->error == kDamagedSlot ? fail(fcb, 30, fs2Damaged) : failWithErrno(fcb, file->error);
}

uint64_t findFromPlace(RelativeFile *file, bool back, int64_t *length)
{
    if (back) return findBack(file, file->exact ? file->place : file->place ? file->place - 1 : 0, length);
    return findForward(file, file->exact && file->place ? file->place : file->place + 1, length);
}

// What the transaction has changed, and whether it can go on. After a rollback the window may show
// what is gone, and sequential WRITE goes on after the last record again.
bool endsForTransaction(FCB *fcb, RelativeFile *file)
{
    if (!file->transactional) return false;
    file->changes = slotChangesOf(file->device, file->inode);
    if (file->seen != transactionNumber()) {
        bool back = file->seen < lastRollback();
        file->seen = transactionNumber();
        uint64_t count;
        int64_t length;
        if (back) file->windowCount = 0;
        if (back && !(fcb->mode & (ZVK_OPEN_INPUT | ZVK_OPEN_IO)) && slotCount(file, &count))
            file->place = findBack(file, count, &length);
    }
    if (!doomOfTransaction()) return false;
    zvkSetStatus(fcb, doomOfTransaction(), fs2Doomed);
    return true;
}

// Locks the record that a READ found, as the statement has it, and reads it anew where others
// write. False: it is gone. A refusal is in the status.
bool takeRecord(FCB *fcb, RelativeFile *file, uint64_t record, const FileRequest *request, int64_t *length)
{
    if (!(file->locks.holding && file->locks.held == record)) file->locks.release();
    LockWait wait(file->locks.wait, request);
    bool waited = false;
    while (!file->locks.forRead(fcb, record, request->options)) {
        if (!wait.again(fcb)) return true;
        waited = true;
    }
    if (!file->locks.active && !waited) return true;
    *length = loadSlot(file, record);
    return *length >= 0;
}

uint64_t readNextRecord(FCB *fcb, RelativeFile *file, const FileRequest *request, int64_t *length)
{
    for (;;) {
        uint64_t record = findFromPlace(file, request->options & ZVK_REQUEST_PREVIOUS, length);
        if (record == 0) {
            zvkSetStatus(fcb, 10, fs2AtEnd);
            return 0;
        }
        if (request->relativeKeyLimit && record > request->relativeKeyLimit) {
            zvkSetStatus(fcb, 14, fs2KeyItem);
            return 0;
        }
        if (takeRecord(fcb, file, record, request, length) || file->error) return record;
        file->place = record; // deleted in the meantime: on from there
        file->exact = false;
    }
}

void readRecord(FCB *fcb, FileRequest *request)
{
    RelativeFile *file = fileOf(fcb);
    if (endsForTransaction(fcb, file)) return;
    bool random = !file->sequential && !(request->options & (ZVK_REQUEST_NEXT | ZVK_REQUEST_PREVIOUS));
    uint64_t record = 0;
    int64_t length = -1;
    file->error = 0;
    if (random) {
        forgetWindow(file);
        record = request->relativeKey;
        length = loadSlot(file, record);
        if (length < 0 || !takeRecord(fcb, file, record, request, &length)) zvkSetStatus(fcb, 23, fs2NoRecord);
    } else if (!(fcb->state & ZVK_FILE_POSITION_VALID)) {
        zvkSetStatus(fcb, 46, fs2NoPosition);
    } else {
        record = readNextRecord(fcb, file, request, &length);
    }
    if (file->error) failWithFile(fcb, file);
    if (fcb->status > 9) {
        fcb->state &= ~ZVK_FILE_READ_VALID;
        if (fcb->status != statusRecordLocked) {
            fcb->state &= ~ZVK_FILE_POSITION_VALID;
            file->locks.release();
        }
    } else {
        memcpy(recordOf(fcb, request), file->slot + kSlotWord, static_cast<size_t>(length));
        file->place = file->lastRead = record;
        file->exact = false;
        fcb->state |= ZVK_FILE_READ_VALID | ZVK_FILE_POSITION_VALID;
        fcb->recordLength = request->recordLength = static_cast<uint32_t>(length);
        fcb->recordNumber = request->relativeKey = record;
    }
}

// Sequential WRITE goes after the last record; random WRITE into an empty slot.
void writeRecord(FCB *fcb, FileRequest *request)
{
    RelativeFile *file = fileOf(fcb);
    if (endsForTransaction(fcb, file)) return;
    file->locks.release();
    uint32_t length = lengthOfRequest(file->format, request);
    uint64_t record = file->sequential ? file->place + 1 : request->relativeKey;
    if (!file->format.allows(length))
        zvkSetStatus(fcb, 44, fs2RecordLength);
    else if (record == 0 || record > kMostRecords)
        zvkSetStatus(fcb, 24, fs2Boundary);
    else if (request->relativeKeyLimit && record > request->relativeKeyLimit)
        zvkSetStatus(fcb, 24, fs2KeyItem);
    else if (file->locks.forChange(fcb, request, record)) {
        file->error = 0;
        if (!file->sequential && loadSlot(file, record) >= 0)
            zvkSetStatus(fcb, 22, fs2DuplicateKey);
        else if (file->error)
            failWithFile(fcb, file);
        else if (storeRecord(fcb, file, record, recordOf(fcb, request), length)) {
            if (file->sequential) file->place = record;
            fcb->recordNumber = request->relativeKey = record;
        }
        file->locks.release();
    }
}

// REWRITE and DELETE: the record that they are about, or 0 with the status set.
uint64_t recordToChange(FCB *fcb, RelativeFile *file, const FileRequest *request)
{
    if (file->sequential) {
        if (fcb->lastVerb == ZVK_VERB_READ && (fcb->state & ZVK_FILE_READ_VALID)) return file->lastRead;
        zvkSetStatus(fcb, 43, fs2NotRead);
        return 0;
    }
    if (request->relativeKey == 0) zvkSetStatus(fcb, 23, fs2NoRecord);
    return request->relativeKey;
}

void noRecordToChange(FCB *fcb, const RelativeFile *file)
{
    if (file->error)
        failWithFile(fcb, file);
    else
        zvkSetStatus(fcb, 23, fs2NoRecord);
}

void rewriteRecord(FCB *fcb, FileRequest *request)
{
    RelativeFile *file = fileOf(fcb);
    if (endsForTransaction(fcb, file)) return;
    uint32_t length = lengthOfRequest(file->format, request);
    uint64_t record = recordToChange(fcb, file, request);
    if (record && !file->format.allows(length))
        zvkSetStatus(fcb, 44, fs2RecordLength);
    else if (record && file->locks.forChange(fcb, request, record)) {
        if (loadSlot(file, record) < 0)
            noRecordToChange(fcb, file);
        else
            storeRecord(fcb, file, record, recordOf(fcb, request), length);
        file->locks.release();
    }
}

void deleteRecord(FCB *fcb, FileRequest *request)
{
    RelativeFile *file = fileOf(fcb);
    if (endsForTransaction(fcb, file)) return;
    uint64_t record = recordToChange(fcb, file, request);
    if (record && file->locks.forChange(fcb, request, record)) {
        uint32_t none = 0;
        if (loadSlot(file, record) < 0)
            noRecordToChange(fcb, file);
        else
            putSlot(fcb, file, record, reinterpret_cast<const uint8_t *>(&none), kSlotWord);
        file->locks.release();
    }
}

void startAt(FCB *fcb, FileRequest *request)
{
    RelativeFile *file = fileOf(fcb);
    if (endsForTransaction(fcb, file)) return;
    file->locks.release();
    file->error = 0;
    forgetWindow(file);
    uint64_t key = request->relativeKey, found = 0;
    int64_t length;
    switch (request->relation) {
    case ZVK_RELATION_EQUAL:
        found = loadSlot(file, key) >= 0 ? key : 0;
        break;
    case ZVK_RELATION_GREATER:
        found = key < kMostRecords ? findForward(file, key + 1, &length) : 0;
        break;
    case ZVK_RELATION_NOT_LESS:
        found = findForward(file, key ? key : 1, &length);
        break;
    case ZVK_RELATION_FIRST:
        found = findForward(file, 1, &length);
        break;
    case ZVK_RELATION_LESS:
        found = key ? findBack(file, key - 1, &length) : 0;
        break;
    case ZVK_RELATION_NOT_GREATER:
        found = findBack(file, key, &length);
        break;
    case ZVK_RELATION_LAST:
        found = findBack(file, kMostRecords, &length);
        break;
    default:
        break;
    }
    if (found) {
        file->place = found;
        file->exact = true;
        fcb->state |= ZVK_FILE_POSITION_VALID;
    } else {
        fcb->state &= ~ZVK_FILE_POSITION_VALID;
        zvkSetStatus(fcb, 23, fs2NoRecord);
        if (file->error) failWithFile(fcb, file);
    }
    fcb->state &= ~ZVK_FILE_READ_VALID;
}

void unlock(FCB *fcb, FileRequest *) { fileOf(fcb)->locks.releaseAll(); }

void closeFile(FCB *fcb)
{
    RelativeFile *file = fileOf(fcb);
    if (!(fcb->mode & ZVK_OPEN_INPUT) && file->durability != Durability::none)
        if (int error = forceData(file->descriptor)) failWithErrno(fcb, error);
    endWhole(&file->whole);
    if (file->transactional) registerClosed(file->descriptor);
    free(file->name);
    if (close(file->descriptor) != 0 && errno != EINTR) failWithErrno(fcb, errno);
}

} // namespace

void startRelative(FCB *fcb, const FIB *fib, const Opened &opened, uint32_t sumSize)
{
    RelativeFile *file = newState<RelativeFile>(fcb);
    RecordFormat format = recordFormatOf(fib);
    size_t slotSize = size_t(kSlotWord) + format.longest + sumSize;
    size_t most = kWindowSize / slotSize ? kWindowSize / slotSize : 1;
    fcb->moduleBuffer2 = malloc((most + 1) * slotSize);
    if (!file || !fcb->moduleBuffer2) {
        fail(fcb, 34, fs2Storage);
        close(opened.descriptor);
        return dropBuffers(fcb);
    }
    file->descriptor = opened.descriptor;
    file->window = static_cast<uint8_t *>(fcb->moduleBuffer2);
    file->windowMost = most;
    file->slot = file->window + most * slotSize;
    file->alone = opened.held.noWriters;
    file->format = format;
    file->slotSize = slotSize;
    file->sumSize = sumSize;
    file->sequential = fib->accessMode & ZVK_FILE_ACCESS_SEQUENTIAL;
    file->locks.start(fcb, fib, opened.descriptor);
    file->transactional = file->locks.transactional = transactionsWanted();
    file->seen = transactionNumber();
    char path[PATH_MAX];
    const char *resolved = resolvedName(fcb->fileName, path);
    file->name = strdup(resolved ? resolved : fcb->fileName);
    if (!file->name) {
        fail(fcb, 34, fs2Storage);
        close(opened.descriptor);
        return dropBuffers(fcb);
    }
    struct stat about;
    if (fstat(opened.descriptor, &about) == 0) file->device = about.st_dev, file->inode = about.st_ino;
    if (file->transactional) file->changes = slotChangesOf(file->device, file->inode);
    int64_t length;
    file->durability = wantedDurability();
    file->error = startWhole(fcb, opened, &file->whole);
    uint64_t count;
    if (!file->error && (fcb->requestedMode & ZVK_OPEN_EXTEND) && slotCount(file, &count))
        file->place = findBack(file, count, &length);
    if (file->error) { // the last record is not known, or one is half changed: nothing may be written
        failWithFile(fcb, file);
        endWhole(&file->whole);
        free(file->name);
        close(opened.descriptor);
        return dropBuffers(fcb);
    }
    bool input = fcb->requestedMode & ZVK_OPEN_INPUT, io = fcb->requestedMode & ZVK_OPEN_IO;
    if (input || io) fcb->read = verb<ZVK_VERB_READ, readRecord>, fcb->start = verb<ZVK_VERB_START, startAt>;
    if (!input && !(io && file->sequential)) fcb->write = verb<ZVK_VERB_WRITE, writeRecord>;
    if (file->transactional) registerOpen(opened.descriptor);
    if (io) fcb->rewrite = verb<ZVK_VERB_REWRITE, rewriteRecord>;
    if (io) fcb->deleteRecord = verb<ZVK_VERB_DELETE, deleteRecord>;
    if (fib->sharing) fcb->unlock = verb<ZVK_VERB_UNLOCK, unlock>;
    fcb->close = closing<closeFile>;
}

} // namespace filesystems
