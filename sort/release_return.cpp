// RELEASE and RETURN: records into and out of the sort, one at a time.
//
// Both work on the thread's buffer of 262,144 bytes. `fill` counts what lies in it while records
// come in, and what has been taken while they go out; -1 says that the engine has run and nothing
// was taken yet. When the buffer is full it goes to the input spill file. The result comes either
// from the buffer itself, sorted in place, or in chunks from the output spill file. A record that
// crosses the end of a chunk is not put together: the next chunk is read from that record's first
// byte on. USING files may have records longer than the buffer; these RETURN reads from the file to
// the record's place. RELEASE has no way for them and refuses them.
#include <cstring>
#include <unistd.h>

#include "kvr2/sort.h"

#include "base/bytes.h"
#include "frame/storage.h"
#include "frame/thread_record.h"
#include "sort/spill_file.h"

namespace {

constexpr uint16_t kSortFailed = 16, kAtEnd = 1;
constexpr uint32_t kLengthWord = 4;

ZvkThreadRecord *sortRecord()
{
    auto *record = static_cast<ZvkThreadRecord *>(zvkThreadScratch(-1));
    return record && record->buffer && record->spillPath && record->recordDesc ? record : nullptr;
}

bool spillBuffer(ZvkThreadRecord *record)
{
    bool first = !record->spillPath[0];
    if (!zvkNameSpillFile(record, Spill::Input)) return false;
    if (first) unlink(record->spillPath); // left by a process of that number that came to grief
    Append result = zvkAppendSpill(record->spillPath, record->buffer, static_cast<uint64_t>(record->fill));
    if (result != Append::Done) {
        if (first) { // all that was released is still in the buffer
            unlink(record->spillPath);
            record->spillPath[0] = 0;
        } else if (result == Append::Damaged) {
            record->fill = -1; // this sort is over: no RELEASE and no op 3 has a use for such a file
        }
        return false;
    }
    record->fill = 0;
    record->cursor = record->buffer;
    return true;
}

bool releaseRecord(ZvkThreadRecord *record, uint32_t length, const void *data)
{
    const auto *desc = static_cast<const SortRecordDesc *>(record->recordDesc);
    bool variable = desc->recordFormat == ZVK_SORT_VARIABLE;
    if (!variable && length > desc->recordLength) length = desc->recordLength;
    uint64_t extra = variable ? kLengthWord : desc->recordLength - length;
    uint64_t total = length + extra;
    if (record->fill < 0 || total > kSortBufferBytes) return false;
    if (total + static_cast<uint64_t>(record->fill) > record->capacity && !spillBuffer(record)) return false;

    if (variable) {
        auto word = static_cast<uint32_t>(total);
        memcpy(record->cursor, &word, kLengthWord);
        record->cursor += kLengthWord;
    }
    memcpy(record->cursor, data, length);
    record->cursor += length;
    if (desc->recordFormat == ZVK_SORT_FIXED) {
        memset(record->cursor, ' ', extra);
        record->cursor += extra;
    }
    // In the other fixed formats a short record counts in full, but the next one follows it
    // directly.
    record->fill += static_cast<int64_t>(total);
    return true;
}

// How a RETURN ends.
enum class Returned { Record, AtEnd, Failed };

// The next chunk of the result.
Returned refill(ZvkThreadRecord *record)
{
    if (record->spillPath[0]) {
        uint64_t count;
        if (!zvkReadSpill(record, record->buffer, record->capacity, record->fileOffset, &count))
            return Returned::Failed;
        zvkForgetSpillBelow(record, record->fileOffset);
        record->fileOffset += count;
        if (count < record->capacity) zvkDropSpill(record);
        if (count == 0) {
            record->fill = 0;
            return Returned::AtEnd;
        }
        record->capacity = count;
    } else if (record->fill == 0) {
        return Returned::AtEnd;
    }
    record->fill = 0;
    record->cursor = record->buffer;
    return Returned::Record;
}

// Bytes of the record at the cursor with its length word; more than any buffer holds if the word
// itself is cut off.
uint64_t sizeAtCursor(const ZvkThreadRecord *record, const SortRecordDesc *desc)
{
    if (desc->recordFormat != ZVK_SORT_VARIABLE) return desc->recordLength;
    if (record->capacity - static_cast<uint64_t>(record->fill) <= kLengthWord) return record->capacity + 1;
    return load<uint32_t>(record->cursor);
}

// A record at the start of a chunk that does not hold it: longer than the buffer, it goes from the
// file to its place.
bool returnLongRecord(ZvkThreadRecord *record, uint64_t head, uint64_t size, void *data)
{
    const auto *desc = static_cast<const SortRecordDesc *>(record->recordDesc);
    if (record->fill != 0 || !record->spillPath[0] || size > desc->recordLength) return false;
    uint64_t start = record->fileOffset - record->capacity + head, count;
    if (!zvkReadSpill(record, static_cast<uint8_t *>(data), size, start, &count) || count != size) return false;
    record->fileOffset = start + size;
    return true;
}

// The sorted records cannot be read, or what is there is no result of an engine. It is not the end
// of the data, and must not be taken for it.
Returned fail(ZvkThreadRecord *record)
{
    zvkDropSpill(record);
    record->fill = 0;
    return Returned::Failed;
}

Returned returnRecord(ZvkThreadRecord *record, uint32_t *length, void *data)
{
    const auto *desc = static_cast<const SortRecordDesc *>(record->recordDesc);
    if (record->fill < 1) {
        Returned filled = refill(record);
        if (filled == Returned::Failed) return fail(record);
        if (filled == Returned::AtEnd) return filled;
    }

    uint64_t left = record->capacity - static_cast<uint64_t>(record->fill), head = 0, size = desc->recordLength;
    if (desc->recordFormat == ZVK_SORT_VARIABLE) {
        head = kLengthWord;
        if (left < head || load<uint32_t>(record->cursor) < head) return fail(record);
        size = load<uint32_t>(record->cursor) - head;
    }
    if (head + size > left) {
        if (!returnLongRecord(record, head, size, data)) return fail(record);
        *length = static_cast<uint32_t>(size);
        return Returned::Record;
    }
    record->cursor += head;
    record->fill += static_cast<int64_t>(head);
    memcpy(data, record->cursor, size);
    record->cursor += size;
    record->fill += static_cast<int64_t>(size);
    *length = static_cast<uint32_t>(size);

    auto taken = static_cast<uint64_t>(record->fill);
    if (record->spillPath[0] && taken < record->capacity && taken + sizeAtCursor(record, desc) > record->capacity) {
        record->fileOffset -= record->capacity - taken;
        record->fill = 0;
        record->cursor = record->buffer;
    }
    if (static_cast<uint64_t>(record->fill) == record->capacity) record->fill = 0;
    return Returned::Record;
}

uint32_t sortErrno(uint32_t *value)
{
    auto *record = static_cast<ZvkThreadRecord *>(zvkThreadScratch(-1));
    uint32_t number = record ? record->sortErrno : 0;
    if (value) *value = number;
    return number;
}

} // namespace

void _zvkRelease(uint32_t length, void *record, uint16_t *status)
{
    ZvkThreadRecord *thread = sortRecord();
    if (!thread || !releaseRecord(thread, length, record)) *status = kSortFailed;
}

void _zvkReturn(uint32_t *length, void *record, uint16_t *status)
{
    ZvkThreadRecord *thread = sortRecord();
    Returned end = thread ? returnRecord(thread, length, record) : Returned::AtEnd;
    if (end == Returned::AtEnd) *status = kAtEnd;
    if (end != Returned::Failed) return;
    *status = kSortFailed;
    zvkReportReturnFailure(thread, ZVK_SORT_EREAD);
}

uint32_t ZVKGETSORTERRNO(uint32_t *value) { return sortErrno(value); }
uint32_t zvkGetSortErrno(uint32_t *value) { return sortErrno(value); }
