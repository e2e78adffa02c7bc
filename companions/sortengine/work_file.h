// The work file: runs that did not fit into memory.
//
// All runs of a sort are in one file, one after the other, so that the number of runs is not
// bound by the number of descriptors. The file has no name from the moment it is open: a crash
// leaves nothing behind. A run's items are the key prefix, tail and record; of plain keys the
// record alone.
//
// One merge reads all runs at once, unless their buffers would take more memory than there is: then
// the first runs are merged into longer ones, after the others in the same file, and only as many
// as bring the rest within bounds.
#pragma once

#include "merge.h"
#include "worker.h"

struct WorkFile {
    int fd;
    uint64_t size;
};

// Merges `count` segments into the work file at `offset`.
struct RunJob {
    Job job; // must be the first field
    Worker *worker;
    const KeyPlan *plan;
    int fd;
    uint64_t offset;
    uint64_t bufferBytes;
    Segment **segments;
    uint32_t count;
};

inline uint32_t runHeadBytes(const KeyPlan &plan) { return plan.plain ? 0 : kPrefixBytes + plan.tailBytes; }

bool openWorkFile(WorkFile *work, const char *directory);
void writeRun(Job *job);

// A run as a source of a merge; the buffer holds at least the longest item.
bool openRunSource(Sort *sort, Source *source, uint64_t start, uint64_t end, uint8_t *buffer, uint64_t bufferSize);

// Merges neighbouring runs into longer ones until no more than `most` are left, each read through a
// buffer of `bufferSize` bytes.
bool reduceRuns(Sort *sort, uint32_t most, uint64_t bufferSize);
