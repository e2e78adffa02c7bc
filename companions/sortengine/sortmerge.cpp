// The engine's entry.
//
//     SORT    input -> segments, sorted by the worker -> (beyond the budget: runs in the
//             work file) -> one merge -> output
//     MERGE   USING files, each in order -> one merge -> output
#include <algorithm>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <new>

#include "control_file.h"
#include "record_io.h"

extern "C" ZVK_EXPORT int32_t sortmerge(int32_t op, uint64_t recordFormat, uint32_t recordLength, const void *fourth,
                                        const char *fifth, SortEighth eighth, SortIoRecord input, SortIoRecord output,
                                        SortControlRecord control);

namespace {

// The worker writes the result's buffers.
struct Running {
    Sort sort;
    Output result;
};

constexpr int32_t kFailure = 16;
constexpr uint64_t kSegmentBytes = 16u << 20; // a segment's index fits the cache about
constexpr uint64_t kLeastSegment = 32u << 10;
constexpr uint32_t kSegments = 8;
constexpr uint64_t kLeastRunBuffer = 16u << 10, kMostRunBuffer = 1u << 20;
constexpr uint64_t kLeastMergeMemory = 4u << 20; // below this a budget would only cost passes
constexpr uint64_t kReserve = 2 * kLeastMergeMemory;
constexpr uint32_t kLeastFanIn = 8;
constexpr uint32_t kMostRecord = 1u << 28; // offsets within a segment are 32 bits

// Cuts the budget into segments: two at least, so that one is filled while the other is sorted or
// written.
void planMemory(Sort *sort)
{
    uint64_t record = uint64_t{sort->layout.recordLength} + kLengthWord + indexBytes(sort->plan, sort->layout);
    uint64_t bytes = std::clamp(sort->settings.memory / kSegments, kLeastSegment, kSegmentBytes);
    sort->segmentBytes = std::max((bytes + 4095) & ~uint64_t{4095}, 4 * record);
    sort->segmentLimit =
        static_cast<uint32_t>(std::clamp<uint64_t>(sort->settings.memory / sort->segmentBytes, 2, 1u << 20));
    sort->reserve = malloc(kReserve); // null: then there is nothing to give back
}

bool mergeOut(Sort *sort, Source *sources, uint32_t count, Output *output)
{
    auto *losers = static_cast<uint32_t *>(take(sort, count * sizeof(uint32_t)));
    if (!losers) return false;
    MergeTree tree;
    plantTree(&tree, &sort->plan, sources, count, losers);
    for (Source *source = winner(tree); !source->done; source = winner(tree)) {
        if (!putRecord(sort, output, source->record, source->bytes) || !source->advance(sort, source)) return false;
        replay(&tree);
    }
    return true;
}

// Opens the runs as the first of the sources.
bool openRuns(Sort *sort, Source *sources, uint64_t size)
{
    auto *buffers = static_cast<uint8_t *>(take(sort, size * sort->runCount));
    if (!buffers) return false;
    for (uint32_t i = 0; i < sort->runCount; i++)
        if (!openRunSource(sort, &sources[i], sort->runs[i].start, sort->runs[i].end, buffers + i * size, size))
            return false;
    return true;
}

bool mergeSegmentsAndRuns(Sort *sort, Output *output)
{
    uint64_t item = runHeadBytes(sort->plan) + uint64_t{sort->layout.recordLength} + kLengthWord;
    uint64_t least = std::max(kLeastRunBuffer, item), memory = std::max(sort->settings.memory / 2, kLeastMergeMemory);
    if (!reduceRuns(sort, static_cast<uint32_t>(std::clamp<uint64_t>(memory / least, kLeastFanIn, UINT32_MAX)), least))
        return false;
    uint32_t count = sort->runCount + sort->residentCount;
    if (count == 0) return true;
    auto *sources = static_cast<Source *>(take(sort, count * sizeof(Source)));
    if (!sources) return false;
    if (sort->runCount && !openRuns(sort, sources, std::max(least, std::min(memory / sort->runCount, kMostRunBuffer))))
        return false;
    for (uint32_t i = 0; i < sort->residentCount; i++)
        openSegmentSource(&sources[sort->runCount + i], sort->resident[i]);
    return mergeOut(sort, sources, count, output);
}

bool mergeFiles(Sort *sort, const SortIoRecord &input, Output *output)
{
    auto *sources = static_cast<Source *>(take(sort, input.count * sizeof(Source)));
    if (!sources) return false;
    uint32_t opened = 0;
    bool good = true;
    for (; good && opened < input.count; opened += good)
        good = openFile(sort, input.files[opened], ZVK_OPEN_INPUT, ZVK_SORT_EOPENIN);
    for (uint32_t i = 0; good && i < input.count; i++) good = openFileSource(sort, &sources[i], input.files[i]);
    good = good && mergeOut(sort, sources, input.count, output);
    for (uint32_t i = 0; i < opened; i++) good = closeFile(sort, input.files[i], ZVK_SORT_EREAD) && good;
    return good;
}

// The program that they are part of may be gone while the worker still sorts.
bool copyKeys(Sort *sort)
{
    constexpr size_t kCollatingBytes = 256;
    size_t bytes = sort->plan.count * sizeof(TableSortKey);
    auto *copy = static_cast<uint8_t *>(take(sort, bytes + kCollatingBytes));
    if (!copy) return false;
    memcpy(copy, sort->plan.keys, bytes);
    sort->plan.keys = reinterpret_cast<const TableSortKey *>(copy);
    if (!sort->plan.collating) return true;
    memcpy(copy + bytes, sort->plan.collating, kCollatingBytes);
    sort->plan.collating = copy + bytes;
    return true;
}

bool run(Sort *sort, int32_t op, const SortIoRecord &input, const SortIoRecord &to, Output *output)
{
    if (!copyKeys(sort)) return false;
    planMemory(sort);
    if (op == ZVK_SORT_MERGE && input.count && !input.path)
        return openOutput(sort, output, &to) && mergeFiles(sort, input, output) && closeOutput(sort, output);
    // A GIVING file may be a USING file as well: it is opened when all has been read.
    return collectInput(sort, input) && openOutput(sort, output, &to) && mergeSegmentsAndRuns(sort, output) &&
           closeOutput(sort, output);
}

void printStatistics(const Sort *sort)
{
    fprintf(stderr,
            "sort: records %llu, runs %u, merge passes before the last %u, work file %llu bytes, segments %u of %llu "
            "bytes, error %u\n",
            static_cast<unsigned long long>(sort->recordCount), sort->runsWritten, sort->passes,
            static_cast<unsigned long long>(sort->work.size), sort->segmentCount,
            static_cast<unsigned long long>(sort->segmentBytes), sort->error);
}

uint32_t prepare(Sort *sort, int32_t op, uint64_t recordFormat, uint32_t recordLength, const void *fourth,
                 const char *fifth, const SortEighth &eighth, const SortControlRecord &control)
{
    auto format = static_cast<uint32_t>(recordFormat);
    sort->layout = {format == ZVK_SORT_VARIABLE, format == ZVK_SORT_FIXED, recordLength};
    sort->element = control.program ? control.program->ipcb : nullptr;
    if ((op != ZVK_SORT_START && op != ZVK_SORT_MERGE) || recordLength == 0 || recordLength > kMostRecord)
        return ZVK_SORT_EREQUEST;
    if (!readSettings(&sort->settings, fifth, eighth, control.tempDir)) return ZVK_SORT_ECONTROL;
    if (uint32_t error = makeKeyPlan(&sort->plan, static_cast<const SortKeyList *>(fourth),
                                     reinterpret_cast<const uint8_t *>(eighth.collating)))
        return error;
    return !sort->layout.variable && sort->plan.reach > recordLength ? static_cast<uint32_t>(ZVK_SORT_ESHORT) : 0;
}

} // namespace

int32_t sortmerge(int32_t op, uint64_t recordFormat, uint32_t recordLength, const void *fourth, const char *fifth,
                  SortEighth eighth, SortIoRecord input, SortIoRecord output, SortControlRecord control)
{
    if (op == ZVK_SORT_END) {
        abandonSorts();
        return 0;
    }
    auto *running = new (std::nothrow) Running{};
    if (!running) {
        if (control.errnoOut) *control.errnoOut = ZVK_SORT_ESTORAGE;
        return kFailure;
    }
    Sort *sort = &running->sort;
    sort->error = prepare(sort, op, recordFormat, recordLength, fourth, fifth, eighth, control);
    if (sort->error == 0) {
        openSort(sort);
        if (!run(sort, op, input, output, &running->result)) discardOutput(sort, &running->result);
        if (sort->settings.statistics) printStatistics(sort);
        closeSort(sort);
    }
    uint32_t error = sort->error;
    delete running;
    // After an operation 11 the caller's frame may be all that is left; its error word is part of
    // it.
    if (control.errnoOut) *control.errnoOut = error;
    return error ? kFailure : 0;
}
