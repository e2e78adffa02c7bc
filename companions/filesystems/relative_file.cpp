// Relative files: record n in the n-th slot behind the header.
//
//     slot: length + 1 in four bytes, 0 for no record | the longest record's bytes
//
// A slot goes out in one pwrite, so a killed program leaves it as it was or as it should be; holes of the file are empty slots. A slot that the
// file's end cuts off holds no record.
#include "companions/filesystems/relative_file.h"

#include <errno.h>
#include <stdlib.h>
#include <string.h>
#include <sys/stat.h>
#include <unistd.h>

#include "companions/filesystems/byte_stream.h"
#include "companions/filesystems/record_format.h"
#include "companions/filesystems/record_locks.h"
#include "companions/filesystems/stored_header.h"

namespace filesystems {

namespace {

constexpr uint32_t word = 4;
constexpr uint64_t mostRecords = uint64_t(1) << 40;

struct RelativeFile {
    ByteStream stream; // of READ NEXT; the other verbs go to the slots directly
    RecordFormat format;
    RecordLocks locks;
    uint64_t slotSize;
    uint64_t place;    // record of the last READ, WRITE or START; 0 before the first
    uint64_t lastRead; // record of the last READ
    bool exact;        // the next sequential READ takes `place` itself
    bool sequential;   // access mode
    uint8_t *slot;
};

RelativeFile *fileOf(FCB *fcb) { return static_cast<RelativeFile *>(fcb->moduleBuffer); }

uint64_t offsetOf(const RelativeFile *file, uint64_t record) { return storedHeaderSize + (record - 1) * file->slotSize; }

uint64_t slotCount(const RelativeFile *file)
{
    struct stat about;
    if (fstat(file->stream.descriptor, &about) != 0 || about.st_size < static_cast<off_t>(storedHeaderSize)) return 0;
    return (static_cast<uint64_t>(about.st_size) - storedHeaderSize) / file->slotSize;
}

// Length of the record in a slot, or -1 for none.
int64_t lengthIn(const RelativeFile *file, const uint8_t *slot)
{
    uint32_t mark;
    memcpy(&mark, slot, word);
    return mark == 0 || mark - 1 > file->format.longest ? -1 : static_cast<int64_t>(mark) - 1;
}

// Reads a slot into `file->slot`; the record's length, or -1.
int64_t load(RelativeFile *file, uint64_t record)
{
    if (record == 0 || record > mostRecords) return -1;
    ssize_t got = pread(file->stream.descriptor, file->slot, file->slotSize, static_cast<off_t>(offsetOf(file, record)));
    file->stream.error = got < 0 ? errno : 0;
    return got == static_cast<ssize_t>(file->slotSize) ? lengthIn(file, file->slot) : -1;
}

bool store(FCB *fcb, RelativeFile *file, uint64_t record, const uint8_t *data, uint32_t length)
{
    uint32_t mark = length + 1;
    memcpy(file->slot, &mark, word);
    memcpy(file->slot + word, data, length);
    memset(file->slot + word + length, 0, file->format.longest - length);
    int error = writeAll(file->stream.descriptor, true, file->slot, file->slotSize, offsetOf(file, record));
    return !error || failWithErrno(fcb, error);
}

// The next record from `place` on, through the buffer; its number, 0 at the end.
uint64_t findNext(FCB *fcb, RelativeFile *file, int64_t *length)
{
    uint64_t record = file->exact && file->place ? file->place : file->place + 1;
    ByteStream &stream = file->stream;
    // What others write must be seen, and is not in the buffer.
    if (!(fcb->mode & ZVK_OPEN_INPUT) || stream.offset() != offsetOf(file, record) || stream.atEnd) stream.seek(offsetOf(file, record));
    for (; stream.need(file->slotSize); ++record) {
        const uint8_t *slot = stream.buffer + stream.at;
        stream.at += file->slotSize;
        *length = lengthIn(file, slot);
        if (*length < 0) continue;
        memcpy(file->slot, slot, file->slotSize);
        return record;
    }
    return 0;
}

uint64_t findPrevious(RelativeFile *file, int64_t *length)
{
    uint64_t record = file->exact ? file->place : file->place ? file->place - 1 : 0;
    for (; record; --record)
        if ((*length = load(file, record)) >= 0) return record;
    return 0;
}

void finish(FCB *fcb, IPCB *element, uint8_t verb) { zvkFinishVerb(fcb, element, verb); }

void readRecord(FCB *fcb, IPCB *element, FileRequest *request)
{
    RelativeFile *file = fileOf(fcb);
    fcb->currentVerb = ZVK_VERB_READ;
    zvkSetStatus(fcb, 0, fs2None);
    bool random = !file->sequential && !(request->options & (ZVK_REQUEST_NEXT | ZVK_REQUEST_PREVIOUS));
    uint64_t record = 0;
    int64_t length = -1;
    file->stream.error = 0;
    if (random) {
        record = request->relativeKey;
        length = load(file, record);
        if (length < 0) record = 0;
        if (!record) zvkSetStatus(fcb, 23, fs2NoRecord);
    } else if (!(fcb->state & ZVK_FILE_POSITION_VALID)) {
        zvkSetStatus(fcb, 46, fs2NoPosition);
    } else {
        record = request->options & ZVK_REQUEST_PREVIOUS ? findPrevious(file, &length) : findNext(fcb, file, &length);
        if (!record) zvkSetStatus(fcb, 10, fs2AtEnd);
    }
    if (file->stream.error) failWithErrno(fcb, file->stream.error);
    if (record && fcb->status < 10) {
        if (!(file->locks.holding && file->locks.held == record)) file->locks.release();
        // What was read before the lock may have changed since.
        if (file->locks.forRead(fcb, record, request->options) && file->locks.active && (length = load(file, record)) < 0)
            zvkSetStatus(fcb, random ? 23 : 10, fs2NoRecord);
    }
    if (fcb->status > 9) {
        fcb->state &= ~ZVK_FILE_READ_VALID;
        if (fcb->status != statusRecordLocked) fcb->state &= ~ZVK_FILE_POSITION_VALID;
    } else {
        memcpy(recordOf(fcb, request), file->slot + word, static_cast<size_t>(length));
        file->place = file->lastRead = record;
        file->exact = false;
        fcb->state |= ZVK_FILE_READ_VALID | ZVK_FILE_POSITION_VALID;
        fcb->recordLength = request->recordLength = static_cast<uint32_t>(length);
        fcb->recordNumber = request->relativeKey = record;
    }
    finish(fcb, element, ZVK_VERB_READ);
}

// Sequential WRITE goes behind the last record; random WRITE into an empty slot.
void writeRecord(FCB *fcb, IPCB *element, FileRequest *request)
{
    RelativeFile *file = fileOf(fcb);
    fcb->currentVerb = ZVK_VERB_WRITE;
    zvkSetStatus(fcb, 0, fs2None);
    file->locks.release();
    uint32_t length = lengthOfRequest(file->format, request);
    uint64_t record = file->sequential ? file->place + 1 : request->relativeKey;
    if (!file->format.allows(length))
        zvkSetStatus(fcb, 44, fs2RecordLength);
    else if (record == 0 || record > mostRecords)
        zvkSetStatus(fcb, 24, fs2Boundary);
    else if (file->locks.forChange(fcb, record)) {
        if (!file->sequential && load(file, record) >= 0)
            zvkSetStatus(fcb, 22, fs2DuplicateKey);
        else if (store(fcb, file, record, recordOf(fcb, request), length)) {
            if (file->sequential) file->place = record;
            fcb->recordNumber = request->relativeKey = record;
        }
        file->locks.release();
    }
    finish(fcb, element, ZVK_VERB_WRITE);
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

void rewriteRecord(FCB *fcb, IPCB *element, FileRequest *request)
{
    RelativeFile *file = fileOf(fcb);
    fcb->currentVerb = ZVK_VERB_REWRITE;
    zvkSetStatus(fcb, 0, fs2None);
    uint32_t length = lengthOfRequest(file->format, request);
    uint64_t record = recordToChange(fcb, file, request);
    if (record && !file->format.allows(length))
        zvkSetStatus(fcb, 44, fs2RecordLength);
    else if (record && file->locks.forChange(fcb, record)) {
        if (load(file, record) < 0)
            zvkSetStatus(fcb, 23, fs2NoRecord);
        else
            store(fcb, file, record, recordOf(fcb, request), length);
        file->locks.release();
    }
    finish(fcb, element, ZVK_VERB_REWRITE);
}

void deleteRecord(FCB *fcb, IPCB *element, FileRequest *request)
{
    RelativeFile *file = fileOf(fcb);
    fcb->currentVerb = ZVK_VERB_DELETE;
    zvkSetStatus(fcb, 0, fs2None);
    uint64_t record = recordToChange(fcb, file, request);
    if (record && file->locks.forChange(fcb, record)) {
        uint32_t none = 0;
        if (load(file, record) < 0)
            zvkSetStatus(fcb, 23, fs2NoRecord);
        else if (int error = writeAll(file->stream.descriptor, true, &none, word, offsetOf(file, record)))
            failWithErrno(fcb, error);
        file->locks.release();
    }
    finish(fcb, element, ZVK_VERB_DELETE);
}

void startAt(FCB *fcb, IPCB *element, FileRequest *request)
{
    RelativeFile *file = fileOf(fcb);
    fcb->currentVerb = ZVK_VERB_START;
    zvkSetStatus(fcb, 0, fs2None);
    file->locks.release();
    uint64_t key = request->relativeKey, last = slotCount(file), found = 0;
    uint64_t from = 0, step = 1;
    switch (request->relation) {
    case ZVK_RELATION_EQUAL:
        found = load(file, key) >= 0 ? key : 0;
        break;
    case ZVK_RELATION_GREATER:
        from = key + 1;
        break;
    case ZVK_RELATION_NOT_LESS:
        from = key ? key : 1;
        break;
    case ZVK_RELATION_FIRST:
        from = 1;
        break;
    case ZVK_RELATION_LESS:
        from = key && key - 1 < last ? key - 1 : last, step = ~uint64_t(0);
        break;
    case ZVK_RELATION_NOT_GREATER:
        from = key < last ? key : last, step = ~uint64_t(0);
        break;
    case ZVK_RELATION_LAST:
        from = last, step = ~uint64_t(0);
        break;
    default:
        break;
    }
    if ((request->relation == ZVK_RELATION_LESS) && key == 0) from = 0;
    for (uint64_t record = from; !found && record && record <= last; record += step)
        if (load(file, record) >= 0) found = record;
    if (found) {
        file->place = found;
        file->exact = true;
        fcb->state |= ZVK_FILE_POSITION_VALID;
    } else {
        fcb->state &= ~ZVK_FILE_POSITION_VALID;
        zvkSetStatus(fcb, 23, fs2NoRecord);
    }
    fcb->state &= ~ZVK_FILE_READ_VALID;
    finish(fcb, element, ZVK_VERB_START);
}

void unlock(FCB *fcb, IPCB *element, FileRequest *)
{
    fcb->currentVerb = ZVK_VERB_UNLOCK;
    zvkSetStatus(fcb, 0, fs2None);
    fileOf(fcb)->locks.releaseAll();
    finish(fcb, element, ZVK_VERB_UNLOCK);
}

void closeFile(FCB *fcb, IPCB *element)
{
    RelativeFile *file = fileOf(fcb);
    fcb->currentVerb = ZVK_VERB_CLOSE;
    zvkSetStatus(fcb, 0, fs2None);
    if (close(file->stream.descriptor) != 0 && errno != EINTR) failWithErrno(fcb, errno);
    _zvkGenericClose(fcb, element, 0);
}

} // namespace

void startRelative(FCB *fcb, const FIB *fib, const Opened &opened)
{
    RelativeFile *file = newState<RelativeFile>(fcb);
    RecordFormat format = recordFormatOf(fib);
    size_t slotSize = size_t(word) + format.longest;
    size_t capacity = 65536 > 2 * slotSize ? 65536 : 2 * slotSize;
    fcb->moduleBuffer2 = malloc(capacity + slotSize);
    if (!file || !fcb->moduleBuffer2) {
        fail(fcb, 34, fs2Storage);
        close(opened.descriptor);
        return dropBuffers(fcb);
    }
    file->stream.descriptor = opened.descriptor;
    file->stream.seekable = true;
    file->stream.buffer = static_cast<uint8_t *>(fcb->moduleBuffer2);
    file->stream.capacity = capacity;
    file->slot = file->stream.buffer + capacity;
    file->format = format;
    file->slotSize = slotSize;
    file->sequential = fib->accessMode & 0x80;
    file->locks.start(fcb, fib, opened.descriptor);
    if (fcb->requestedMode & ZVK_OPEN_EXTEND)
        for (file->place = slotCount(file); file->place && load(file, file->place) < 0; --file->place) {
        }
    bool input = fcb->requestedMode & ZVK_OPEN_INPUT, io = fcb->requestedMode & ZVK_OPEN_IO;
    if (input || io) fcb->read = readRecord, fcb->start = startAt;
    if (!input && !(io && file->sequential)) fcb->write = writeRecord;
    if (io) fcb->rewrite = rewriteRecord, fcb->deleteRecord = deleteRecord;
    if (fib->sharing) fcb->unlock = unlock;
    fcb->close = closeFile;
}

} // namespace filesystems
