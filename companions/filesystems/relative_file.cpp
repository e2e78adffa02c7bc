// Relative files: record n in the n-th slot after the header.
//
//     slot: length + 1 in four bytes, 0 for no record | the record | checksum of both, four bytes |
//           filled up to the longest record's
//
// A slot is as it was or as it should be, also beside a writer and after a kill (whole_records.h);
// holes of the file are empty slots. A slot that the file's end cuts off holds no record.
//
// READ NEXT, PREVIOUS and START look for a record in a window of slots, one pread for many. What
// this program writes goes into the window, too. Where others may write, the window is only a hint:
// a record that it shows is read again under its lock, and where it shows none it is filled anew
// from that slot on before the search goes on.
#include "companions/filesystems/relative_file.h"

#include <cerrno>
#include <climits>
#include <cstdlib>
#include <cstring>
#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include "companions/filesystems/durability.h"
#include "companions/filesystems/record_format.h"
#include "companions/filesystems/record_locks.h"
#include "companions/filesystems/record_sum.h"
#include "companions/filesystems/stored_header.h"
#include "companions/filesystems/transaction.h"
#include "companions/filesystems/verb.h"
#include "companions/filesystems/whole_records.h"

namespace filesystems {

namespace {

constexpr uint32_t kWord = 4;
constexpr uint64_t kMostRecords = uint64_t(1) << 40;
constexpr size_t kWindowSize = 65536;
constexpr int64_t kNoRecord = -1, kNoLength = -2; // an empty slot; a length word that no record has
constexpr int kDamagedSlot = -1;                  // for an errno

struct RelativeFile {
    int descriptor;
    int error; // of the last transfer: an errno, or `kDamagedSlot`
    RecordFormat format;
    RecordLocks locks;
    WholeRecords whole;
    Durability durability;
    uint64_t slotSize;
    uint32_t sumSize;  // of the checksum in a slot, 0 or 4
    uint64_t place;    // record of the last READ, WRITE or START; 0 before the first
    uint64_t lastRead; // record of the last READ
    bool exact;        // the next sequential READ takes `place` itself
    bool sequential;   // access mode
    bool transactional;
    uint64_t seen; // the transaction that the last verb was in
    char *name;    // of the file itself
    dev_t device;
    ino_t inode;
    SlotChanges *changes; // what it has changed in this file, for the time of a verb
    bool alone;           // nobody else writes: the window is what the file holds
    uint8_t *slot;        // the slot that a verb works on
    uint8_t *window;      // `windowCount` slots from record `windowFirst` on, of at most `windowMost`
    uint64_t windowFirst, windowCount, windowMost;
};

RelativeFile *fileOf(FCB *fcb) { return static_cast<RelativeFile *>(fcb->moduleBuffer); }

uint64_t offsetOf(const RelativeFile *file, uint64_t record)
{
    return kStoredHeaderSize + (record - 1) * file->slotSize;
}

bool failWithFile(FCB *fcb, const RelativeFile *file)
{
    return file->error == kDamagedSlot ? fail(fcb, 30, fs2Damaged) : failWithErrno(fcb, file->error);
}

// False with `error` set: a file whose size cannot be had is not an empty one.
bool slotCount(RelativeFile *file, uint64_t *count)
{
    struct stat about;
    file->error = fstat(file->descriptor, &about) != 0 ? errno : 0;
    if (file->error) return false;
    uint64_t size = static_cast<uint64_t>(about.st_size);
    *count = size < kStoredHeaderSize ? 0 : (size - kStoredHeaderSize) / file->slotSize;
    uint64_t last = file->changes ? file->changes->before(kMostRecords) : 0;
    if (last > *count) *count = last;
    return true;
}

// Length of the record in its slot, `kNoRecord`, or `kNoLength` for damage.
int64_t lengthIn(const RelativeFile *file, uint64_t record, const uint8_t *slot)
{
    uint32_t mark;
    memcpy(&mark, slot, kWord);
    if (!mark) return kNoRecord;
    if (mark - 1 > file->format.longest) return kNoLength;
    if (file->sumSize && !hasSum(record, slot, kWord + mark - 1)) return kNoLength;
    return static_cast<int64_t>(mark) - 1;
}

// A transfer of the file. Where others may write, what a killed commit has left comes first: it may
// be half in the file.
int fetch(RelativeFile *file, uint8_t *to, uint64_t size, uint64_t offset, size_t *got)
{
    for (;;) {
        int error = fetchBytes(&file->whole, to, size, offset, got);
        if (error || !file->whole.locksReads || !hasJournal(file->name)) return error;
        if ((error = settleJournal(file->name))) return error;
    }
}

// Reads a slot into `file->slot`; the record's length, or less than 0: there is none, or `error`
// says why none could be read.
int64_t load(RelativeFile *file, uint64_t record)
{
    size_t got;
    file->error = 0;
    if (record == 0 || record > kMostRecords) return kNoRecord;
    if (const uint8_t *changed = file->changes ? file->changes->find(record) : nullptr) {
        memcpy(file->slot, changed, file->slotSize);
        return lengthIn(file, record, file->slot);
    }
    file->error = fetch(file, file->slot, file->slotSize, offsetOf(file, record), &got);
    if (file->error || got != file->slotSize) return kNoRecord;
    int64_t length = lengthIn(file, record, file->slot);
    if (length == kNoLength) file->error = kDamagedSlot;
    return length;
}

bool inWindow(const RelativeFile *file, uint64_t record)
{
    return record >= file->windowFirst && record - file->windowFirst < file->windowCount;
}

const uint8_t *windowSlot(const RelativeFile *file, uint64_t record)
{
    return file->window + (record - file->windowFirst) * file->slotSize;
}

// The window as the transaction has changed it, also where the file ends before.
void showChanges(RelativeFile *file, uint64_t wanted)
{
    const SlotChanges &changes = *file->changes;
    for (size_t at = changes.from(file->windowFirst);
         at < changes.count && changes.slots[at].record - file->windowFirst < wanted; ++at) {
        uint64_t place = changes.slots[at].record - file->windowFirst;
        if (place >= file->windowCount) {
            memset(file->window + file->windowCount * file->slotSize, 0, (place - file->windowCount) * file->slotSize);
            file->windowCount = place + 1;
        }
        memcpy(file->window + place * file->slotSize, changes.slots[at].bytes, file->slotSize);
    }
}

// Fills the window with the slots from `record` on, or, going back, up to it. False if that slot is
// beyond the end, or on an error.
bool fillWindow(RelativeFile *file, uint64_t record, bool back)
{
    file->windowFirst = !back ? record : record > file->windowMost ? record - file->windowMost + 1 : 1;
    file->windowCount = 0;
    uint64_t wanted = back ? record - file->windowFirst + 1 : file->windowMost;
    size_t got;
    file->error = fetch(file, file->window, wanted * file->slotSize, offsetOf(file, file->windowFirst), &got);
    file->windowCount = got / file->slotSize;
    if (file->changes) showChanges(file, wanted);
    if (!inWindow(file, record)) return false;
    file->error = 0; // what came before the failure is good
    return true;
}

// What may be old goes: the program asks for a place of its own, or begins anew.
void forgetWindow(RelativeFile *file)
{
    if (!file->alone) file->windowCount = 0;
}

bool put(FCB *fcb, RelativeFile *file, uint64_t record, const uint8_t *data, size_t size)
{
    if (file->transactional) {
        if (!file->changes) file->changes = joinTransaction(fcb->fileName, file->descriptor, file->slotSize);
        if (!file->changes || !file->changes->put(record, data, size)) {
            doomTransaction(34);
            return fail(fcb, 34, fs2Storage);
        }
        if (inWindow(file, record)) memcpy(file->window + (record - file->windowFirst) * file->slotSize, data, size);
        return true;
    }
    while (file->whole.locksReads && hasJournal(file->name))
        if (int error = settleJournal(file->name)) return failWithErrno(fcb, error);
    if (int error = replaceBytes(&file->whole, data, size, offsetOf(file, record))) return failWithErrno(fcb, error);
    if (file->durability == Durability::commit && (fcb->mode & ZVK_OPEN_IO))
        if (int error = forceData(file->descriptor)) return failWithErrno(fcb, error);
    if (inWindow(file, record)) memcpy(file->window + (record - file->windowFirst) * file->slotSize, data, size);
    return true;
}

bool store(FCB *fcb, RelativeFile *file, uint64_t record, const uint8_t *data, uint32_t length)
{
    uint32_t mark = length + 1;
    memcpy(file->slot, &mark, kWord);
    memcpy(file->slot + kWord, data, length);
    memset(file->slot + kWord + length, 0, file->slotSize - kWord - length);
    if (file->sumSize) putSum(record, file->slot, kWord + length);
    return put(fcb, file, record, file->slot, file->slotSize);
}

// The first slot from `record` on that is no hole of the file, 0 for none: a number far out must
// not cost a walk through all before it.
uint64_t dataFrom(const RelativeFile *file, uint64_t record)
{
    off_t at = static_cast<off_t>(offsetOf(file, record)), data = lseek(file->descriptor, at, SEEK_DATA);
    if (data < 0) return errno == ENXIO ? 0 : record;
    return data <= at ? record : (static_cast<uint64_t>(data) - kStoredHeaderSize) / file->slotSize + 1;
}

uint64_t beyondHole(const RelativeFile *file, uint64_t record)
{
    uint64_t data = dataFrom(file, record), changed = file->changes ? file->changes->next(record) : 0;
    return changed && (!data || changed < data) ? changed : data;
}

// The last slot before `record` of which a byte is no hole of the file, 0 for none. The system
// looks for data forward only, so the last data before a place is found by halves.
uint64_t dataBefore(const RelativeFile *file, uint64_t record)
{
    off_t end = static_cast<off_t>(offsetOf(file, record)), low = static_cast<off_t>(kStoredHeaderSize), high = end - 1;
    if (record == 1) return 0;
    auto nextData = [&](off_t place) {
        off_t data = lseek(file->descriptor, place, SEEK_DATA);
        if (data < 0) return errno == ENXIO ? end : place; // a file system that knows no holes
        return data < end ? data : end;
    };
    if (nextData(high) == high) return record - 1;
    low = nextData(low);
    if (low == end) return 0;
    while (high - low > 1) {
        off_t middle = low + (high - low) / 2, data = nextData(middle);
        if (data < end)
            low = data;
        else
            high = middle;
    }
    return (static_cast<uint64_t>(low) - kStoredHeaderSize) / file->slotSize + 1;
}

uint64_t beforeHole(const RelativeFile *file, uint64_t record)
{
    uint64_t data = dataBefore(file, record), changed = file->changes ? file->changes->before(record - 1) : 0;
    return changed > data ? changed : data;
}

uint64_t takeFromWindow(RelativeFile *file, uint64_t record)
{
    memcpy(file->slot, windowSlot(file, record), file->slotSize);
    return record;
}

// The record at or after `record`; its number, 0 for none or an error. Its slot is in `file->slot`.
uint64_t findForward(RelativeFile *file, uint64_t record, int64_t *length)
{
    bool fresh = file->alone || !file->locks.active;
    file->error = 0;
    while (record && record <= kMostRecords) {
        bool filled = false;
        if (!inWindow(file, record) && !(filled = fillWindow(file, record, false))) {
            // Beyond the end of the file; the transaction may have records there.
            uint64_t changed = file->error || !file->changes ? 0 : file->changes->next(record);
            if (changed <= record) return 0;
            record = changed;
            continue;
        }
        fresh |= filled;
        for (; inWindow(file, record); ++record) {
            *length = lengthIn(file, record, windowSlot(file, record));
            if (*length >= 0) return takeFromWindow(file, record);
            if (fresh && *length == kNoLength) file->error = kDamagedSlot;
            if (file->error) return 0;
            if (fresh) continue;
            if (!fillWindow(file, record--, false)) return 0; // looks at this slot again
            fresh = true;
        }
        record = beyondHole(file, record);
    }
    return 0;
}

uint64_t findBack(RelativeFile *file, uint64_t record, int64_t *length)
{
    bool fresh = file->alone || !file->locks.active;
    file->error = 0;
    if (record > kMostRecords) record = kMostRecords;
    while (record) {
        if (!inWindow(file, record) || (!fresh && lengthIn(file, record, windowSlot(file, record)) < 0)) {
            fresh = true;
            if (!fillWindow(file, record, true)) {
                uint64_t count;
                if (file->error || !slotCount(file, &count)) return 0;
                if (count < record) record = count; // beyond the end: on with the last slot
                continue;
            }
        }
        *length = lengthIn(file, record, windowSlot(file, record));
        if (*length >= 0) return takeFromWindow(file, record);
        if (*length == kNoLength) file->error = kDamagedSlot;
        if (file->error) return 0;
        record = record > file->windowFirst ? record - 1 : beforeHole(file, record);
    }
    return 0;
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
    *length = load(file, record);
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
        length = load(file, record);
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
        memcpy(recordOf(fcb, request), file->slot + kWord, static_cast<size_t>(length));
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
        if (!file->sequential && load(file, record) >= 0)
            zvkSetStatus(fcb, 22, fs2DuplicateKey);
        else if (file->error)
            failWithFile(fcb, file);
        else if (store(fcb, file, record, recordOf(fcb, request), length)) {
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
        if (load(file, record) < 0)
            noRecordToChange(fcb, file);
        else
            store(fcb, file, record, recordOf(fcb, request), length);
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
        if (load(file, record) < 0)
            noRecordToChange(fcb, file);
        else
            put(fcb, file, record, reinterpret_cast<const uint8_t *>(&none), kWord);
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
        found = load(file, key) >= 0 ? key : 0;
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
    size_t slotSize = size_t(kWord) + format.longest + sumSize;
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
    file->sequential = fib->accessMode & 0x80;
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
