// Line sequential files, "lsq" and "nat": text, a record a line.
//
// WRITE drops the blanks at the end of the record and ends it with LF. READ takes LF or CR LF for
// the end, and fills the record with blanks. A line that is longer than the record gives its first
// part with status 06, and the next READ goes on after it. A last line without LF is a record:
// editors write such files; EXTEND ends it first. But if it is what a kill left of a block, it is
// none, and EXTEND writes over it. A record with an LF in it would come back as two, and one that
// ends in CR without it, so WRITE refuses them with status 30.
//
// REWRITE in I-O replaces a line by one that is not longer; DELETE takes one out at CLOSE
// (removed_lines.h).
#include "companions/filesystems/linage.h"
#include "companions/filesystems/sequential_file.h"

namespace filesystems {

struct Lines {
    static constexpr bool devices = true;
    static constexpr bool deletes = true;

    static void open(FCB *fcb, const FIB *fib, SequentialFile *file)
    {
        file->format.shortest = 0;
        file->stream.announces = true;
        if (file->format.longest == 0)
            fail(fcb, 39, fs2RecordLength);
        else if (file->linage)
            file->firstPage = startLinage(fcb, fib) && (fcb->requestedMode & ZVK_OPEN_OUTPUT);
    }

    static uint64_t wholeSize(FCB *fcb, SequentialFile *file, uint64_t size, bool extend)
    {
        int descriptor = file->stream.descriptor;
        if (int error = findCutOff(descriptor, size, &file->cutOff)) failWithErrno(fcb, error);
        if (file->cutOff && !extend) return endOfLastLine(fcb, descriptor, size);
        if (!extend || size == 0) return size;
        file->stream.announced = file->cutOff; // by the program that was killed; withdrawn at CLOSE
        uint8_t last = '\n';
        size_t got;
        int error = readAll(descriptor, &last, 1, size - 1, &got);
        if (error || !got) failWithErrno(fcb, error ? error : EIO);
        if (last != '\n' && file->cutOff) return endOfLastLine(fcb, descriptor, size);
        file->lineOpen = last != '\n';
        return size;
    }

    static uint64_t endOfLastLine(FCB *fcb, int descriptor, uint64_t size)
    {
        char part[4096];
        while (size) {
            size_t length = size < sizeof part ? static_cast<size_t>(size) : sizeof part;
            size_t got;
            int error = readAll(descriptor, part, length, size - length, &got);
            if (error || got != length) {
                failWithErrno(fcb, error ? error : EIO);
                return size;
            }
            if (const void *end = memrchr(part, '\n', length))
                return size - length + static_cast<size_t>(static_cast<const char *>(end) - part) + 1;
            size -= length;
        }
        return 0;
    }

    // From a terminal or a pipe a line is taken as soon as it is whole.
    static void waitForLine(ByteStream &stream, size_t most)
    {
        while (stream.available() < most &&
               !(stream.available() && memchr(stream.buffer + stream.at, '\n', stream.available())) &&
               stream.need(stream.available() + 1)) {
        }
    }

    static Found read(SequentialFile *file, uint8_t *record, uint32_t *length)
    {
        ByteStream &stream = file->stream;
        uint32_t longest = file->format.longest;
        // A line that fits ends within its record and CR LF.
        const uint8_t *line = stream.buffer + stream.at;
        size_t window = stream.available() < longest + 2 ? stream.available() : longest + 2;
        const uint8_t *end = static_cast<const uint8_t *>(memchr(line, '\n', window));
        if (!end) {
            if (!stream.seekable)
                waitForLine(stream, longest + 2);
            else
                stream.need(longest + 2);
            if (stream.error) return Found::failed;
            if (stream.available() == 0) return Found::end;
            line = stream.buffer + stream.at;
            window = stream.available() < longest + 2 ? stream.available() : longest + 2;
            end = static_cast<const uint8_t *>(memchr(line, '\n', window));
            if (!end && file->cutOff && window < longest + 2) return Found::end;
        }
        size_t size = end ? static_cast<size_t>(end - line) : window;
        size_t used = end ? size + 1 : size;
        if (end && size && line[size - 1] == '\r') --size;
        Found found = Found::record;
        if (size > longest) {
            size = used = longest;
            found = Found::split;
        }
        memcpy(record, line, size);
        memset(record + size, ' ', longest - size);
        file->lastPlace = stream.offset();
        stream.at += used;
        // The rest of a line that was given in parts is no record of its own, nor is its beginning.
        const bool part = found == Found::split || file->lineGoesOn;
        file->lineGoesOn = found == Found::split;
        file->lastUsed = part ? 0 : static_cast<uint32_t>(used);
        file->lastLength = *length = static_cast<uint32_t>(size);
        return found;
    }

    // Blanks at its end do not count, and blanks fill the line up: it reads the same.
    static const uint8_t *image(FCB *fcb, SequentialFile *file, const uint8_t *record, uint32_t length)
    {
        if (!isLine(fcb, record, &length)) return nullptr;
        if (length > file->lastLength) return fail(fcb, 44, fs2RecordLength), nullptr;
        memcpy(file->spare, record, length);
        memset(file->spare + length, ' ', file->lastLength - length);
        return file->spare;
    }

    static bool write(FCB *fcb, SequentialFile *file, const uint8_t *record, uint32_t length, FileRequest *request)
    {
        if (!isLine(fcb, record, &length)) return false;
        if (__builtin_expect(
                request->options & (ZVK_REQUEST_BEFORE | ZVK_REQUEST_AFTER) || file->linage || file->lineOpen, 0))
            return writeAdvancing(fcb, file, record, length, request);
        uint8_t *room = file->stream.reserve(length + 1);
        if (!room) return failWithErrno(fcb, file->stream.error);
        memcpy(room, record, length);
        room[length] = '\n';
        file->stream.commit(length + 1);
        return true;
    }

    static void finish(FCB *, SequentialFile *file)
    {
        if (file->lineOpen && file->stream.reserve(1)) lineEnds(file, 1);
    }

private:
    // Would the record come back as it is? Its length goes down to its last byte that is no blank.
    static bool isLine(FCB *fcb, const uint8_t *record, uint32_t *length)
    {
        while (*length && record[*length - 1] == ' ') --*length;
        bool ends = *length && record[*length - 1] == '\r';
        return !(ends || memchr(record, '\n', *length)) || fail(fcb, 30, fs2Control);
    }

    static void lineEnds(SequentialFile *file, size_t count)
    {
        memset(file->stream.buffer + file->stream.at, '\n', count);
        file->stream.commit(count);
        if (count) file->lineOpen = false;
    }

    // Advancing moves the paper under the line being written. In the file a line written BEFORE
    // ADVANCING has its ends after it; one written AFTER stays without until the next record or
    // CLOSE moves on. No lines at all is overprinting: CR.
    static bool writeAdvancing(FCB *fcb, SequentialFile *file, const uint8_t *record, uint32_t length,
                               FileRequest *request)
    {
        bool after = request->options & ZVK_REQUEST_AFTER;
        bool said = request->options & (ZVK_REQUEST_BEFORE | ZVK_REQUEST_AFTER);
        int32_t lines = said ? request->advance : 1;
        bool page = lines == ZVK_ADVANCE_PAGE;
        if (lines < 0 && !page) lines = 0;
        constexpr int32_t kMostLines = 4096;
        if (lines > kMostLines) lines = kMostLines;
        uint32_t feed = page ? 0 : static_cast<uint32_t>(lines);
        uint32_t margin = file->firstPage ? fcb->linageTop : 0;
        // A record BEFORE ADVANCING does not go on the line of one that was written AFTER. With
        // LINAGE the counter does not know of the line that is between them, and the paper catches
        // up with the counter after the record.
        const bool lead = !after && file->lineOpen;
        LinageStep step = {};
        if (file->linage) {
            step = linageStep(fcb, linagePlace(fcb), page, feed);
            feed = step.lines;
            page = false;
        }
        const bool caughtUp = file->linage && lead && feed;
        if (caughtUp) --feed;
        // Room for all of it at once, so that a record is never torn from its lines: they may be
        // more than the buffer has.
        size_t room = size_t(margin) + lead + length + feed + 2;
        if (room > file->stream.capacity) return fail(fcb, 34, fs2Full);
        if (!file->stream.reserve(room)) return failWithErrno(fcb, file->stream.error);
        lineEnds(file, margin);
        if (after)
            advance(file, page, feed);
        else
            lineEnds(file, lead);
        memcpy(file->stream.buffer + file->stream.at, record, length);
        file->stream.commit(length);
        file->lineOpen = true;
        if (!after && (feed || !caughtUp)) {
            advance(file, page, feed);
            file->lineOpen = false;
        }
        file->firstPage = false;
        if (file->linage) {
            takeLinageStep(fcb, step);
            if (step.endOfPage) request->options |= ZVK_REQUEST_END_OF_PAGE;
        }
        return true;
    }

    static void advance(SequentialFile *file, bool page, uint32_t feed)
    {
        if (!page && feed) return lineEnds(file, feed);
        if (!page && !file->lineOpen) return;
        file->stream.buffer[file->stream.at] = page ? '\f' : '\r';
        file->stream.commit(1);
    }
};

} // namespace filesystems

extern "C" {
ZVK_EXPORT void _IO_Init(FCB *fcb, IPCB *element);
ZVK_EXPORT void **vfs(void);

void _IO_Init(FCB *fcb, IPCB *element) { filesystems::initSequential<filesystems::Lines>(fcb, element); }
void **vfs(void) { return filesystems::operationTable(); }
}
