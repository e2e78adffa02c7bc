// One running sort, from the engine's call to its return.
//
// Everything it owns hangs on this record, so that both its end and an operation 11 from within (a
// file's routine ended the run unit) can free it with one call. After that `error` is
// ZVK_SORT_EABANDONED and the code on the way back touches nothing any more: whoever has called a
// file's routine looks at `error` first. The routine may also jump out of the engine, past all of
// its frames, and operation 11 comes later. So the record is not on the stack, and what the worker
// looks at, keys and collating table too, belongs to it.
#pragma once

#include "merge.h"
#include "segment.h"
#include "work_file.h"

struct SortSettings {
    uint64_t memory;
    char workDirectory[1024];
    bool statistics;
};

struct SortRun { // a sorted stretch of the work file
    uint64_t start, end;
};

struct MemoryBlock;

struct Sort {
    Sort *outer; // a sort that this one was started inside of, in the same thread, or that was abandoned before it
    uint32_t error;
    RecordLayout layout;
    KeyPlan plan;
    SortSettings settings;
    IPCB *element; // for the files' routines
    Worker worker;

    uint64_t segmentBytes;
    uint32_t segmentLimit; // segments that the budget allows
    uint32_t segmentCount;
    Segment **segments; // all there are
    Segment *freeSegments;
    Segment **resident; // filled, in the order of the input
    uint32_t residentCount;
    Segment *filling;

    WorkFile work;
    RunJob runJob; // writes the oldest segments out
    SortRun *runs;
    uint32_t runCount, runRoom;
    uint32_t runsWritten, passes; // for the statistics: runs made from segments, merges before the last one

    void *reserve; // storage that is given back when the system refuses more: runs and merges need some
    int inputFd, outputFd;
    MemoryBlock *blocks;
    uint64_t recordCount;
};

// Makes this thread's sort; it is what an operation 11 finds.
void openSort(Sort *sort);
void closeSort(Sort *sort);
// Operation 11: frees all that the sorts of this thread have, but not their records: the frames
// that made them may still come back.
void abandonSorts();

// Storage that goes with the sort; null with `error` set.
void *take(Sort *sort, uint64_t bytes);

inline bool fail(Sort *sort, uint32_t error)
{
    if (sort->error == 0) sort->error = error;
    return false;
}
