// The work file; see work_file.h.
#include "work_file.h"

#include <algorithm>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <fcntl.h>
#include <unistd.h>

#include "file_io.h"
#include "sort_state.h"

bool openWorkFile(WorkFile *work, const char *directory)
{
    work->fd = open(directory, O_TMPFILE | O_RDWR | O_CLOEXEC, 0600);
    if (work->fd >= 0) return true;
    // A file system without unnamed files.
    char path[1100];
    snprintf(path, sizeof path, "%s/sortwkx.XXXXXX", directory);
    work->fd = mkostemp(path, O_CLOEXEC);
    if (work->fd >= 0) unlink(path);
    return work->fd >= 0;
}

namespace {

struct RunWriter {
    RunJob *run;
    uint8_t *buffer;
    uint64_t used;
    bool good;
};

void flushRun(RunWriter *writer)
{
    if (writer->good) writer->good = writeWholeAt(writer->run->fd, writer->buffer, writer->used, writer->run->offset);
    writer->run->offset += writer->used;
    writer->used = 0;
}

void putItem(RunWriter *writer, const Source *source)
{
    const KeyPlan &plan = *writer->run->plan;
    uint64_t bytes = runHeadBytes(plan) + uint64_t{source->bytes};
    if (writer->used + bytes > writer->run->bufferBytes) flushRun(writer);
    uint8_t *at = writer->buffer + writer->used;
    if (!plan.plain) {
        memcpy(at, &source->head.first, 8);
        memcpy(at + 8, &source->head.next, 4);
        if (plan.tailBytes) memcpy(at + kPrefixBytes, source->head.tail, plan.tailBytes);
        at += runHeadBytes(plan);
    }
    memcpy(at, source->record, source->bytes);
    writer->used += bytes;
}

uint32_t mergeToRun(RunJob *run, RunWriter *writer, Source *sources, uint32_t *losers)
{
    for (uint32_t i = 0; i < run->count; i++) openSegmentSource(&sources[i], run->segments[i]);
    MergeTree tree;
    plantTree(&tree, run->plan, sources, run->count, losers);
    while (!winner(tree)->done && writer->good) {
        if (run->worker->cancel) return ZVK_SORT_EABANDONED;
        putItem(writer, winner(tree));
        advanceSegment(nullptr, winner(tree));
        replay(&tree);
    }
    flushRun(writer);
    return writer->good ? 0 : ZVK_SORT_EWORK;
}

// Makes the next item of a run whole in the buffer, reading on if need be.
bool loadItem(Sort *sort, Source *source, uint64_t bytes)
{
    uint64_t left = source->have - source->taken;
    if (left >= bytes) return true;
    if (bytes > source->bufferSize) return fail(sort, ZVK_SORT_EWORK);
    memmove(source->buffer, source->buffer + source->taken, left);
    uint64_t want = source->bufferSize - left;
    if (want > source->end - source->offset) want = source->end - source->offset;
    if (readWholeAt(sort->work.fd, source->buffer + left, want, source->offset) != static_cast<int64_t>(want))
        return fail(sort, ZVK_SORT_EWORK);
    source->offset += want;
    source->taken = 0;
    source->have = left + want;
    // The system fetches the next piece while this one is merged.
    if (source->offset < source->end)
        posix_fadvise(sort->work.fd, static_cast<off_t>(source->offset), static_cast<off_t>(source->bufferSize),
                      POSIX_FADV_WILLNEED);
    return source->have >= bytes || fail(sort, ZVK_SORT_EWORK);
}

bool advanceRun(Sort *sort, Source *source)
{
    const KeyPlan &plan = sort->plan;
    const RecordLayout &layout = sort->layout;
    uint32_t headBytes = runHeadBytes(plan);
    if (source->taken == source->have && source->offset == source->end) {
        source->done = true;
        return true;
    }
    uint64_t bytes = layout.recordLength;
    if (layout.variable) {
        if (!loadItem(sort, source, headBytes + kLengthWord)) return false;
        bytes = loadWord(source->buffer + source->taken + headBytes);
    }
    if (!loadItem(sort, source, headBytes + bytes)) return false;
    const uint8_t *item = source->buffer + source->taken;
    source->record = item + headBytes;
    source->bytes = static_cast<uint32_t>(bytes);
    source->taken += headBytes + bytes;
    if (plan.plain) {
        uint8_t scratch[kPrefixBytes];
        readKey(plan, dataOf(layout, source->record), scratch, &source->head);
    } else {
        memcpy(&source->head.first, item, 8);
        memcpy(&source->head.next, item + 8, 4);
        source->head.tail = item + kPrefixBytes;
    }
    return true;
}

} // namespace

void writeRun(Job *job)
{
    auto *run = reinterpret_cast<RunJob *>(job);
    for (uint32_t i = 0; i < run->count; i++)
        if (uint32_t error = waitFor(run->worker, &run->segments[i]->job)) {
            job->error = error;
            return;
        }
    if (run->worker->cancel) return; // some were not sorted
    RunWriter writer{run, static_cast<uint8_t *>(malloc(run->bufferBytes)), 0, true};
    auto *sources = static_cast<Source *>(malloc(run->count * sizeof(Source)));
    auto *losers = static_cast<uint32_t *>(malloc(run->count * sizeof(uint32_t)));
    job->error = ZVK_SORT_ESTORAGE;
    if (writer.buffer && sources && losers) job->error = mergeToRun(run, &writer, sources, losers);
    free(writer.buffer);
    free(sources);
    free(losers);
}

bool openRunSource(Sort *sort, Source *source, uint64_t start, uint64_t end, uint8_t *buffer, uint64_t bufferSize)
{
    *source = {};
    source->offset = start;
    source->end = end;
    source->buffer = buffer;
    source->bufferSize = bufferSize;
    source->advance = advanceRun;
    return advanceRun(sort, source);
}

namespace {

struct Reduction {
    RunJob run;
    RunWriter writer;
    Source *sources;
    uint32_t *losers;
    uint8_t *buffers;
    uint64_t bufferSize;
};

bool mergeRuns(Sort *sort, Reduction *reduction, const SortRun *runs, uint32_t count, SortRun *merged)
{
    *merged = {sort->work.size, sort->work.size};
    for (uint32_t i = 0; i < count; i++) {
        merged->end += runs[i].end - runs[i].start;
        if (!openRunSource(sort, &reduction->sources[i], runs[i].start, runs[i].end,
                           reduction->buffers + i * reduction->bufferSize, reduction->bufferSize))
            return false;
    }
    RunWriter *writer = &reduction->writer;
    reduction->run.offset = merged->start;
    MergeTree tree;
    plantTree(&tree, &sort->plan, reduction->sources, count, reduction->losers);
    while (!winner(tree)->done && writer->good) {
        putItem(writer, winner(tree));
        if (!winner(tree)->advance(sort, winner(tree))) return false;
        replay(&tree);
    }
    flushRun(writer);
    if (!writer->good) return fail(sort, ZVK_SORT_EWORK);
    sort->work.size = merged->end;
    // Gives their space back, where the file system can.
    for (uint32_t i = 0; i < count; i++)
        (void)fallocate(sort->work.fd, FALLOC_FL_PUNCH_HOLE | FALLOC_FL_KEEP_SIZE, static_cast<off_t>(runs[i].start),
                        static_cast<off_t>(runs[i].end - runs[i].start));
    return true;
}

} // namespace

bool reduceRuns(Sort *sort, uint32_t most, uint64_t bufferSize)
{
    if (sort->runCount <= most) return true;
    Reduction reduction{};
    reduction.run.plan = &sort->plan;
    reduction.run.fd = sort->work.fd;
    reduction.run.bufferBytes = std::max<uint64_t>(1u << 20, bufferSize);
    reduction.writer = {&reduction.run, static_cast<uint8_t *>(take(sort, reduction.run.bufferBytes)), 0, true};
    reduction.sources = static_cast<Source *>(take(sort, most * sizeof(Source)));
    reduction.losers = static_cast<uint32_t *>(take(sort, most * sizeof(uint32_t)));
    reduction.buffers = static_cast<uint8_t *>(take(sort, most * bufferSize));
    reduction.bufferSize = bufferSize;
    if (sort->error) return false;
    while (sort->runCount > most) {
        uint32_t excess = sort->runCount - most, out = 0;
        for (uint32_t i = 0; i < sort->runCount;) {
            uint32_t count = std::min({most, excess + 1, sort->runCount - i});
            SortRun merged = sort->runs[i];
            if (count > 1 && !mergeRuns(sort, &reduction, &sort->runs[i], count, &merged)) return false;
            sort->runs[out++] = merged;
            excess -= count - 1;
            i += count;
        }
        sort->runCount = out;
        sort->passes++;
    }
    return true;
}
