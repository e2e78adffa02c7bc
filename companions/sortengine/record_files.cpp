// USING and GIVING files through the routines in their slots; see record_io.h.
//
// A routine may end the run unit and with it this sort, so each call is followed by a look at
// `error` before anything of the sort is touched.
#include <algorithm>
#include <cstring>

#include "kvr2/fileio.h"

#include "record_io.h"

static constexpr uint16_t kStatusCut = 4; // READ: the file's record is longer than its area and was cut

static constexpr uint16_t kStatusAtEnd = 10;

static bool abandoned(const Sort *sort) { return sort->error == ZVK_SORT_EABANDONED; }

bool openFile(Sort *sort, FCB *fcb, uint16_t mode, uint32_t error)
{
    fcb->requestedMode = mode;
    fcb->open(fcb, sort->element);
    if (abandoned(sort)) return false;
    return fcb->status <= 9 || fail(sort, error);
}

bool closeFile(Sort *sort, FCB *fcb, uint32_t error)
{
    if (abandoned(sort)) return false;
    // The status of a verb that failed before stays, for whoever reports the failure.
    uint16_t failed = sort->error && fcb->status > kStatusAtEnd ? fcb->status : uint16_t{0};
    fcb->closeOptions = 0;
    fcb->close(fcb, sort->element);
    if (abandoned(sort)) return false;
    if (failed) fcb->status = failed;
    return fcb->status <= 9 || fail(sort, error);
}

// Bytes of a record without the blanks beyond `most`; a longer one stays longer.
static uint32_t cutBlanks(const uint8_t *data, uint32_t length, uint32_t most)
{
    while (length > most && data[length - 1] == ' ') length--;
    return length;
}

bool readFile(Sort *sort, FCB *fcb, uint8_t *record, uint32_t *bytes)
{
    const RecordLayout &layout = sort->layout;
    FileRequest request{};
    request.options = ZVK_REQUEST_NEXT;
    uint8_t statement = fcb->statement;
    fcb->statement = ZVK_STATEMENT_AT_END;
    fcb->read(fcb, sort->element, &request);
    if (abandoned(sort)) return false;
    fcb->statement = statement;
    *bytes = 0;
    if (fcb->status == kStatusAtEnd) return true;
    if (fcb->status > 9) return fail(sort, ZVK_SORT_EREAD);
    if (fcb->status == kStatusCut) return fail(sort, ZVK_SORT_ELONG);
    uint32_t length = cutBlanks(fcb->record, request.recordLength, layout.recordLength);
    if (length > layout.recordLength) return fail(sort, ZVK_SORT_ELONG);
    if (layout.variable) {
        *bytes = length + kLengthWord;
        memcpy(record, bytes, kLengthWord);
        memcpy(record + kLengthWord, fcb->record, length);
        return true;
    }
    memcpy(record, fcb->record, length);
    memset(record + length, layout.blankFill ? ' ' : 0, layout.recordLength - length);
    *bytes = layout.recordLength;
    return true;
}

static bool advanceFile(Sort *sort, Source *source)
{
    const KeyPlan &plan = sort->plan;
    // The record before is kept until its successor has been compared with it.
    std::swap(source->scratch, source->other);
    uint32_t keyRoom = plan.keyBytes + kPrefixBytes, bytes;
    uint8_t *record = source->scratch + keyRoom;
    if (!readFile(sort, source->file, record, &bytes)) return false;
    if (bytes == 0) {
        source->done = true;
        return true;
    }
    sort->recordCount++;
    if ((sort->layout.variable ? bytes - kLengthWord : bytes) < plan.reach) return fail(sort, ZVK_SORT_ESHORT);
    KeyHead head;
    readKey(plan, dataOf(sort->layout, record), source->scratch, &head);
    if (source->record && compareHeads(plan, head, source->head) < 0) return fail(sort, ZVK_SORT_EORDER);
    source->head = head;
    source->record = record;
    source->bytes = bytes;
    return true;
}

bool openFileSource(Sort *sort, Source *source, FCB *fcb)
{
    uint64_t room = uint64_t{sort->plan.keyBytes} + kPrefixBytes + sort->layout.recordLength + kLengthWord;
    *source = {};
    source->file = fcb;
    source->advance = advanceFile;
    source->scratch = static_cast<uint8_t *>(take(sort, room));
    source->other = static_cast<uint8_t *>(take(sort, room));
    return source->scratch && source->other && advanceFile(sort, source);
}

// ---- GIVING

// Bytes that a record has in the file at least, filled with blanks: all of them in a fixed file and
// in one of nothing but records' bytes.
static uint32_t leastBytes(const FCB *fcb, uint32_t most)
{
    constexpr uint8_t kBinaryFiles = 7;
    if (!fcb->fib) return 0;
    return fcb->code == kBinaryFiles || fcb->fib->minRecord == most ? most : 0;
}

bool writeFile(Sort *sort, FCB *fcb, const uint8_t *data, uint32_t length, uint64_t number)
{
    uint32_t most = fcb->fib && fcb->fib->maxRecord ? fcb->fib->maxRecord : fcb->maxRecord;
    if (most) length = cutBlanks(data, length, most);
    if (most && length > most) return fail(sort, ZVK_SORT_ELONG);
    memcpy(fcb->record, data, length);
    if (uint32_t least = leastBytes(fcb, most); length < least) {
        memset(fcb->record + length, ' ', least - length);
        length = least;
    }
    FileRequest request{};
    request.recordLength = length;
    request.relativeKey = number; // a relative file that is accessed by number gets them in order, too
    fcb->write(fcb, sort->element, &request);
    if (abandoned(sort)) return false;
    return fcb->status <= 9 || fail(sort, ZVK_SORT_EWRITE);
}
