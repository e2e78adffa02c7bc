// Sequential files: what their formats have in common.
//
// A format is a traits type that reads, writes and replaces one record at the stream's place; this
// file has the rules around it: modes, positions, statuses, the end of the file and the next file
// of a concatenation. `openSequential<Format>` puts `SequentialVerbs<Format>` into the FCB's slots.
//
//     struct BinaryRecords {
//         static bool open(FCB *, SequentialFile *);                        // beyond the common; may refuse
//         static uint64_t wholeSize(SequentialFile *, uint64_t size);       // bytes of the file that are whole records
//         static Found read(SequentialFile *, uint8_t *record, uint32_t *length);
//         static bool write(FCB *, SequentialFile *, const uint8_t *record, uint32_t length, FileRequest *);
//         static const uint8_t *image(FCB *, SequentialFile *, const uint8_t *record, uint32_t length);
//                                                                           // REWRITE: `lastLength` bytes, or null
//         static void finish(FCB *, SequentialFile *);                      // before the last flush
//         static constexpr bool devices;
//         static constexpr bool deletes;
//     };
#pragma once

#include <cerrno>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <sys/stat.h>
#include <unistd.h>

#include "companions/filesystems/byte_stream.h"
#include "companions/filesystems/durability.h"
#include "companions/filesystems/open_rules.h"
#include "companions/filesystems/record_format.h"
#include "companions/filesystems/record_sum.h"
#include "companions/filesystems/removed_lines.h"
#include "companions/filesystems/verb.h"
#include "companions/filesystems/whole_records.h"

namespace filesystems {

enum class Found { record, cut, split, end, damaged, failed };

struct SequentialFile {
    ByteStream stream;
    WholeRecords changes;
    RecordFormat format;
    uint32_t sumSize;    // of the checksum after each record, 0 or 4
    uint8_t *spare;      // room for one record and its checksum
    uint64_t dataStart;  // bytes of a header before the records
    uint64_t whole;      // input: end of the last whole record
    uint64_t lastPlace;  // I-O: where the data of the last record read begins
    uint32_t lastLength; // and its length
    uint32_t lastUsed;   // line sequential: with its line end; 0: it is a part of a line
    RemovedLines removed;
    uint64_t records; // read or written so far
    bool lineOpen;    // line sequential output: the last record has no line end yet
    bool cutOff;      // line sequential input: a last line without its end is no record
    bool lineGoesOn;  // line sequential input: the last record was not all of its line
    bool linage;
    bool firstPage; // LINAGE: the first page's top margin is still to be written
};

constexpr size_t kStreamBufferSize = 256 * 1024;

inline SequentialFile *sequentialFileOf(FCB *fcb) { return static_cast<SequentialFile *>(fcb->moduleBuffer); }

template <class Format>
struct SequentialVerbs {
    static void read(FCB *fcb, IPCB *element, FileRequest *request)
    {
        FileRequest none = {};
        if (!request) request = &none;
        SequentialFile *file = sequentialFileOf(fcb);
        fcb->currentVerb = ZVK_VERB_READ;
        if (!(fcb->state & ZVK_FILE_POSITION_VALID)) {
            fcb->state &= ~ZVK_FILE_READ_VALID;
            zvkSetStatus(fcb, 46, fs2NoPosition);
            return zvkFinishVerb(fcb, element, ZVK_VERB_READ);
        }
        uint32_t length = 0;
        Found found = Format::read(file, recordOf(fcb, request), &length);
        if (__builtin_expect(found == Found::end, 0)) {
            int next = zvkNextVolume(fcb, element);
            if (next > 0) return fcb->read(fcb, element, request);
            if (next < 0) return;
        }
        switch (found) {
        case Found::record:
            zvkSetStatus(fcb, 0, fs2None);
            break;
        case Found::cut:
            zvkSetStatus(fcb, 4, fs2Truncated);
            break;
        case Found::split:
            zvkSetStatus(fcb, 6, fs2LineSplit);
            break;
        case Found::end:
            zvkSetStatus(fcb, 10, fs2AtEnd);
            break;
        case Found::damaged:
            zvkSetStatus(fcb, 30, fs2Torn);
            break;
        case Found::failed:
            failWithErrno(fcb, file->stream.error);
            break;
        }
        if (fcb->status > 9) {
            fcb->state &= ~(ZVK_FILE_READ_VALID | ZVK_FILE_POSITION_VALID);
        } else {
            fcb->state |= ZVK_FILE_READ_VALID;
            fcb->recordLength = request->recordLength = length;
            fcb->recordNumber = ++file->records;
        }
        zvkFinishVerb(fcb, element, ZVK_VERB_READ);
    }

    static void write(FCB *fcb, FileRequest *request)
    {
        SequentialFile *file = sequentialFileOf(fcb);
        uint32_t length = lengthOfRequest(file->format, request);
        if (__builtin_expect(!file->format.allows(length), 0))
            zvkSetStatus(fcb, 44, fs2RecordLength);
        else if (Format::write(fcb, file, recordOf(fcb, request), length, request))
            fcb->recordNumber = ++file->records;
        if (__builtin_expect(file->stream.standard, 0)) showNow(fcb, file);
    }

    // A record for a standard stream goes out at once, and after what DISPLAY has written.
    static void showNow(FCB *fcb, SequentialFile *file)
    {
        fflush(stdout);
        if (!file->stream.flush() && fcb->status < 10) failWithErrno(fcb, file->stream.error);
    }

    // REWRITE replaces the bytes of the record that was read last: there is no more room.
    static void rewrite(FCB *fcb, FileRequest *request)
    {
        SequentialFile *file = sequentialFileOf(fcb);
        uint32_t length = lengthOfRequest(file->format, request);
        if (fcb->lastVerb != ZVK_VERB_READ || !(fcb->state & ZVK_FILE_READ_VALID))
            zvkSetStatus(fcb, 43, fs2NotRead);
        else if (const uint8_t *record = Format::image(fcb, file, recordOf(fcb, request), length))
            replace(fcb, file, record, file->lastLength);
    }

    static void replace(FCB *fcb, SequentialFile *file, const uint8_t *record, uint32_t length)
    {
        ByteStream &stream = file->stream;
        size_t size = length + file->sumSize;
        memmove(file->spare, record, length);
        if (file->sumSize) putSum(file->lastPlace, file->spare, length);
        int error = replaceBytes(&file->changes, file->spare, size, file->lastPlace);
        if (error) {
            failWithErrno(fcb, error);
            return;
        }
        if (file->lastPlace >= stream.base) memcpy(stream.buffer + (file->lastPlace - stream.base), file->spare, size);
    }

    // DELETE, where the format has it.
    static void remove(FCB *fcb, FileRequest *)
    {
        SequentialFile *file = sequentialFileOf(fcb);
        if (fcb->lastVerb != ZVK_VERB_READ || !(fcb->state & ZVK_FILE_READ_VALID))
            zvkSetStatus(fcb, 43, fs2NotRead);
        else if (!file->lastUsed)
            zvkSetStatus(fcb, 30, fs2LineSplit);
        else
            removeLine(fcb, &file->removed, file->stream.descriptor, file->lastPlace, file->lastPlace + file->lastUsed);
    }

    static void unlock(FCB *, FileRequest *) {}

    static void close(FCB *fcb)
    {
        SequentialFile *file = sequentialFileOf(fcb);
        if (fcb->mode & (ZVK_OPEN_OUTPUT | ZVK_OPEN_EXTEND)) {
            Format::finish(fcb, file);
            if (!file->stream.flush() && fcb->status < 10) failWithErrno(fcb, file->stream.error);
            file->stream.withdraw();
        }
        if (!(fcb->mode & ZVK_OPEN_INPUT) && file->stream.seekable && wantedDurability() != Durability::none)
            if (int error = forceData(file->stream.descriptor); error && fcb->status < 10) failWithErrno(fcb, error);
        if (file->removed.name) {
            struct stat about;
            int error = fstat(file->stream.descriptor, &about) != 0 ? errno : 0;
            uint64_t size =
                file->whole < static_cast<uint64_t>(about.st_size) ? file->whole : static_cast<uint64_t>(about.st_size);
            int failed = takeLinesOut(&file->removed, file->stream.descriptor, error ? 0 : size);
            if ((error || (error = failed)) && fcb->status < 10) failWithErrno(fcb, error);
        }
        if (file->stream.whole) endWhole(file->stream.whole);
        if (::close(file->stream.descriptor) != 0 && fcb->status < 10 && errno != EINTR) failWithErrno(fcb, errno);
    }

    // The slots for the mode that is being opened; the others keep the error routines of a closed
    // file.
    static void setSlots(FCB *fcb, const FIB *fib)
    {
        if (fcb->requestedMode & (ZVK_OPEN_INPUT | ZVK_OPEN_IO)) fcb->read = read;
        if (fcb->requestedMode & (ZVK_OPEN_OUTPUT | ZVK_OPEN_EXTEND)) fcb->write = verb<ZVK_VERB_WRITE, write>;
        if (fcb->requestedMode & ZVK_OPEN_IO) fcb->rewrite = verb<ZVK_VERB_REWRITE, rewrite>;
        if (Format::deletes && (fcb->requestedMode & ZVK_OPEN_IO)) fcb->deleteRecord = verb<ZVK_VERB_DELETE, remove>;
        if (fib->sharing) fcb->unlock = verb<ZVK_VERB_UNLOCK, unlock>;
        fcb->close = closing<close>;
    }
};

// Buffers and place of a file whose descriptor is open; the file's data begins at `dataStart`. On
// failure the status is set and the descriptor closed.
template <class Format>
bool startSequential(FCB *fcb, const FIB *fib, const Opened &opened, uint64_t dataStart, uint32_t sumSize = 0)
{
    SequentialFile *file = newState<SequentialFile>(fcb);
    RecordFormat format = recordFormatOf(fib);
    size_t capacity =
        kStreamBufferSize > 2 * size_t(format.longest) + 64 ? kStreamBufferSize : 2 * size_t(format.longest) + 64;
    fcb->moduleBuffer2 = malloc(capacity + format.longest + kSumSize);
    if (!file || !fcb->moduleBuffer2) fail(fcb, 34, fs2Storage);
    if (fcb->status < 10) {
        file->format = format;
        file->dataStart = dataStart;
        file->sumSize = sumSize;
        file->linage = fib->linage & ZVK_FILE_LINAGE;
        ByteStream &stream = file->stream;
        stream.descriptor = opened.descriptor;
        stream.seekable = opened.seekable;
        stream.standard = opened.standard;
        stream.buffer = static_cast<uint8_t *>(fcb->moduleBuffer2);
        stream.capacity = capacity;
        file->spare = stream.buffer + capacity;
        stream.base = dataStart;
        file->whole = ~uint64_t(0);
        stream.whole = &file->changes;
        if (int error = startWhole(fcb, opened, &file->changes)) failWithErrno(fcb, error);
        if (fcb->status < 10) Format::open(fcb, fib, file);
        if (fcb->status < 10 && (fcb->requestedMode & ZVK_OPEN_OUTPUT)) emptyFile(fcb, opened, dataStart);
        if (fcb->status < 10 && opened.seekable && !(fcb->requestedMode & ZVK_OPEN_OUTPUT)) {
            bool extend = fcb->requestedMode & ZVK_OPEN_EXTEND;
            file->whole = Format::wholeSize(fcb, file, opened.size, extend);
            stream.seek(extend && fcb->status < 10 ? file->whole : dataStart);
            if (fcb->status < 10 && extend && file->whole < opened.size &&
                ftruncate(opened.descriptor, static_cast<off_t>(file->whole)))
                failWithErrno(fcb, errno);
        }
    }
    if (fcb->status > 9) {
        if (file && file->stream.whole) endWhole(file->stream.whole);
        ::close(opened.descriptor);
        dropBuffers(fcb);
        return false;
    }
    SequentialVerbs<Format>::setSlots(fcb, fib);
    return true;
}

// I-O changes records in place without locks on them, and EXTEND keeps its place in the file:
// neither admits another writer.
inline SharePolicy sequentialSharing(const FCB *fcb)
{
    if (fcb->requestedMode & ZVK_OPEN_INPUT) return {shareAllOther, shareAllOther};
    return {fcb->requestedMode & ZVK_OPEN_IO ? shareReadOnly : shareNoOther, shareReadOnly};
}

template <class Format>
void openSequential(FCB *fcb, IPCB *element)
{
    const FIB *fib = zvkFibOf(fcb, element);
    Opened opened = openByRules(fcb, fib, {.sharing = sequentialSharing(fcb), .devices = Format::devices});
    if (opened.descriptor >= 0) startSequential<Format>(fcb, fib, opened, 0);
}

// The body of a sequential module's `_IO_Init`.
template <class Format>
void initSequential(FCB *fcb, IPCB *element)
{
    const FIB *fib = zvkFibOf(fcb, element);
    if (fib->organization & (ZVK_FILE_INDEXED | ZVK_FILE_RELATIVE))
        zvkSetStatus(fcb, 37, fs2Organization);
    else
        fcb->open = openSequential<Format>;
}

} // namespace filesystems
