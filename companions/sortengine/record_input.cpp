// Records into the sort; see record_io.h.
//
// Segments are filled one after the other. While one is filled the worker sorts the one before.
// When the budget's last segment is full, the worker merges the older half of them into a run while
// this thread goes on filling what the run before has freed.
#include <algorithm>
#include <cstdlib>
#include <cstring>
#include <fcntl.h>
#include <unistd.h>

#include "file_io.h"
#include "record_io.h"

namespace {

constexpr uint64_t kPointerBytes = sizeof(void *);
constexpr uint64_t kReadBytes = 1u << 18;

Segment *newSegment(Sort *sort)
{
    if (!sort->segments) {
        sort->segments = static_cast<Segment **>(take(sort, kPointerBytes * sort->segmentLimit));
        sort->resident = static_cast<Segment **>(take(sort, kPointerBytes * sort->segmentLimit));
        sort->runJob.segments = static_cast<Segment **>(take(sort, kPointerBytes * sort->segmentLimit));
        if (sort->error) return nullptr;
    }
    auto *segment = static_cast<Segment *>(take(sort, sizeof(Segment)));
    if (!segment) return nullptr;
    *segment = {};
    segment->plan = &sort->plan;
    segment->layout = &sort->layout;
    segment->worker = &sort->worker;
    if (!openSegment(segment, sort->segmentBytes)) return nullptr; // told apart by `error`: there is none
    sort->segments[sort->segmentCount++] = segment;
    return segment;
}

bool addRun(Sort *sort, SortRun run)
{
    if (sort->runCount == sort->runRoom) {
        uint32_t room = sort->runRoom ? 2 * sort->runRoom : 64;
        auto *runs = static_cast<SortRun *>(take(sort, room * sizeof(SortRun)));
        if (!runs) return false;
        if (sort->runCount) memcpy(runs, sort->runs, sort->runCount * sizeof(SortRun));
        sort->runs = runs;
        sort->runRoom = room;
    }
    sort->runs[sort->runCount++] = run;
    sort->runsWritten++;
    return true;
}

// Has the oldest half of the segments in memory written out.
bool startRun(Sort *sort)
{
    if (sort->work.fd < 0 && !openWorkFile(&sort->work, sort->settings.workDirectory))
        return fail(sort, ZVK_SORT_EWORK);
    RunJob &run = sort->runJob;
    run.job.run = writeRun;
    run.worker = &sort->worker;
    run.plan = &sort->plan;
    run.fd = sort->work.fd;
    run.offset = sort->work.size;
    run.bufferBytes = std::max<uint64_t>(std::clamp<uint64_t>(sort->segmentBytes / 4, 1u << 16, 1u << 20),
                                         runHeadBytes(sort->plan) + uint64_t{sort->layout.recordLength} + kLengthWord);
    run.count = std::max(sort->segmentLimit / 2, 1u);
    uint64_t bytes = 0;
    for (uint32_t i = 0; i < run.count; i++) {
        run.segments[i] = sort->resident[i];
        bytes += run.segments[i]->used + uint64_t{runHeadBytes(sort->plan)} * run.segments[i]->count;
    }
    sort->residentCount -= run.count;
    memmove(sort->resident, sort->resident + run.count, sort->residentCount * kPointerBytes);
    if (!addRun(sort, {sort->work.size, sort->work.size + bytes})) return false;
    sort->work.size += bytes;
    submit(&sort->worker, &run.job);
    return true;
}

// Waits for the run that is being written, and takes its segments back.
bool finishRun(Sort *sort)
{
    RunJob &run = sort->runJob;
    if (uint32_t error = waitFor(&sort->worker, &run.job)) return fail(sort, error);
    for (uint32_t i = 0; i < run.count; i++) {
        emptySegment(run.segments[i]);
        run.segments[i]->nextFree = sort->freeSegments;
        sort->freeSegments = run.segments[i];
    }
    run.count = 0;
    return true;
}

bool nextSegment(Sort *sort)
{
    if (!sort->freeSegments && sort->segmentCount < sort->segmentLimit) {
        sort->filling = newSegment(sort);
        if (sort->filling || sort->error) return sort->filling;
        // The system has no more for us: what there is is the budget, and the merge gets the least.
        if (!sort->segmentCount) return fail(sort, ZVK_SORT_ESTORAGE);
        sort->segmentLimit = sort->segmentCount;
        sort->settings.memory = 0;
        free(sort->reserve);
        sort->reserve = nullptr;
    }
    if (!sort->freeSegments) {
        if (!sort->runJob.count && !startRun(sort)) return false;
        if (!finishRun(sort)) return false;
        // The younger half follows at once, so that it is written while its elder's memory is
        // filled.
        if (sort->residentCount >= std::max(sort->segmentLimit / 2, 1u) && !startRun(sort)) return false;
    }
    sort->filling = sort->freeSegments;
    sort->freeSegments = sort->filling->nextFree;
    return true;
}

// The segment being filled is full.
void sealSegment(Sort *sort)
{
    sort->recordCount += sort->filling->count;
    sort->resident[sort->residentCount++] = sort->filling;
    submit(&sort->worker, &sort->filling->job);
    sort->filling = nullptr;
}

// Room for a record in release form; null with `error` set.
uint8_t *makeRoom(Sort *sort, uint32_t bytes)
{
    if (sort->filling && segmentRoom(sort->filling, bytes) == 0) sealSegment(sort);
    if (!sort->filling && !nextSegment(sort)) return nullptr;
    return sort->filling->records + sort->filling->used;
}

void tookRoom(Sort *sort, uint32_t bytes)
{
    Segment *segment = sort->filling;
    if (sort->layout.variable) *offsetSlot(segment, segment->count) = static_cast<uint32_t>(segment->used);
    segment->used += bytes;
    segment->count++;
}

// Records in release form; returns the bytes of whole records, or -1.
int64_t addRecords(Sort *sort, const uint8_t *bytes, uint64_t size)
{
    uint64_t at = 0;
    while (at < size) {
        uint32_t length = sort->layout.recordLength;
        if (sort->layout.variable) {
            if (size - at < kLengthWord) break;
            length = loadWord(bytes + at);
            if (length < kLengthWord || length - kLengthWord > sort->layout.recordLength)
                return fail(sort, ZVK_SORT_EFORM), -1;
        }
        if (size - at < length) break;
        uint8_t *room = makeRoom(sort, length);
        if (!room) return -1;
        memcpy(room, bytes + at, length);
        tookRoom(sort, length);
        at += length;
    }
    return static_cast<int64_t>(at);
}

// Fixed records need no look: they are read to where they stay.
bool readFixed(Sort *sort)
{
    uint32_t length = sort->layout.recordLength;
    for (;;) {
        uint8_t *room = makeRoom(sort, length);
        if (!room) return false;
        uint64_t fit = segmentRoom(sort->filling, length);
        int64_t got = readWhole(sort->inputFd, room, fit * length);
        if (got < 0) return fail(sort, ZVK_SORT_EREAD);
        auto records = static_cast<uint64_t>(got) / length;
        sort->filling->used += records * length;
        sort->filling->count += static_cast<uint32_t>(records);
        if (static_cast<uint64_t>(got) % length) return fail(sort, ZVK_SORT_EFORM);
        if (records < fit) return true;
    }
}

bool readVariable(Sort *sort)
{
    uint64_t size = std::max<uint64_t>(kReadBytes, 2 * (uint64_t{sort->layout.recordLength} + kLengthWord));
    auto *buffer = static_cast<uint8_t *>(take(sort, size));
    uint64_t have = 0;
    while (buffer) {
        int64_t got = readWhole(sort->inputFd, buffer + have, size - have);
        if (got < 0) return fail(sort, ZVK_SORT_EREAD);
        bool last = have + static_cast<uint64_t>(got) < size;
        have += static_cast<uint64_t>(got);
        int64_t used = addRecords(sort, buffer, have);
        if (used < 0) return false;
        have -= static_cast<uint64_t>(used);
        memmove(buffer, buffer + used, have);
        if (last) return have == 0 || fail(sort, ZVK_SORT_EFORM);
    }
    return false;
}

bool collectSpill(Sort *sort, const char *path)
{
    sort->inputFd = open(path, O_RDONLY | O_CLOEXEC);
    if (sort->inputFd < 0) return fail(sort, ZVK_SORT_EREAD);
    bool good = sort->layout.variable ? readVariable(sort) : readFixed(sort);
    close(sort->inputFd);
    sort->inputFd = -1;
    return good;
}

bool collectFile(Sort *sort, FCB *fcb)
{
    if (!openFile(sort, fcb, ZVK_OPEN_INPUT, ZVK_SORT_EOPENIN)) return false;
    uint32_t most = sort->layout.recordLength + (sort->layout.variable ? kLengthWord : 0), bytes = 1;
    bool good = true;
    while (good) {
        uint8_t *room = makeRoom(sort, most);
        good = room && readFile(sort, fcb, room, &bytes);
        if (good && bytes == 0) break;
        if (good) tookRoom(sort, bytes);
    }
    return closeFile(sort, fcb, ZVK_SORT_EREAD) && good;
}

} // namespace

bool collectInput(Sort *sort, const SortIoRecord &input)
{
    for (uint32_t i = 0; i < input.count && !input.path; i++)
        if (!collectFile(sort, input.files[i])) return false;
    if (input.path && !collectSpill(sort, input.path)) return false;
    if (input.bytes) {
        int64_t used = addRecords(sort, input.memory, input.bytes);
        if (used < 0) return false;
        if (used != input.bytes) return fail(sort, ZVK_SORT_EFORM);
    }
    if (sort->filling) {
        // The last one is not worth the worker unless there are others to be sorted beside it.
        sort->recordCount += sort->filling->count;
        sort->resident[sort->residentCount++] = sort->filling;
        if (sort->residentCount == 1 && !sort->runCount)
            sort->filling->job.error = 0, sort->filling->job.run(&sort->filling->job);
        if (sort->filling->job.error) return fail(sort, sort->filling->job.error);
        if (!sort->filling->entries && sort->filling->count) submit(&sort->worker, &sort->filling->job);
        sort->filling = nullptr;
    }
    if (sort->runJob.count && !finishRun(sort)) return false;
    for (uint32_t i = sort->residentCount; i-- > 0;) // from the end: the worker comes from the other side
        if (uint32_t error = waitFor(&sort->worker, &sort->resident[i]->job)) return fail(sort, error);
    return true;
}
