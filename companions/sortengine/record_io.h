// Records into the sort and out of it: USING and GIVING files through their slots, spill files,
// memory.
#pragma once

#include "sort_state.h"

// Fills segments from all of the input, writing runs when the budget is used up; at its end all of
// it is in `resident` and `runs`.
bool collectInput(Sort *sort, const SortIoRecord &input);

// Files, through the routines in their slots. After each of these `sort` may have been abandoned,
// which counts as failure.
bool openFile(Sort *sort, FCB *fcb, uint16_t mode, uint32_t error);
bool closeFile(Sort *sort, FCB *fcb, uint32_t error);
// The next record in release form at `record`, which has room for recordLength bytes and a length
// word; `*bytes` is 0 at the end.
bool readFile(Sort *sort, FCB *fcb, uint8_t *record, uint32_t *bytes);

// `number` counts the records from 1.
bool writeFile(Sort *sort, FCB *fcb, const uint8_t *data, uint32_t length, uint64_t number);

// MERGE: a USING file as a source.
bool openFileSource(Sort *sort, Source *source, FCB *fcb);

// Where the result goes.
struct OutputBuffer {
    Job job; // writes it; must be the first field
    int fd;
    uint8_t *bytes;
    uint64_t used, offset;
};

struct Output {
    const SortIoRecord *to;
    OutputBuffer buffers[2]; // one is filled while the other is written
    uint32_t current;
    uint64_t bytes, records; // put so far
    uint32_t openFiles;
    bool madeFile; // the spill file at the path is ours
};

bool openOutput(Sort *sort, Output *output, const SortIoRecord *to);
bool putRecord(Sort *sort, Output *output, const uint8_t *record, uint32_t bytes);
bool closeOutput(Sort *sort, Output *output);
// After a failure: what was written is no result.
void discardOutput(Sort *sort, Output *output);
