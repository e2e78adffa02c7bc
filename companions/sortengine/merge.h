// Merging: many sources that are each in order become one.
//
// A source is a sorted segment, a run of the work file or, for MERGE, a USING file; all show the
// head record's key prefix, so that the tree compares without knowing which is which. The tree is a
// tournament of losers: the winner goes out, its source moves on and plays only against the losers
// on its way up, one compare a level. Among equal keys the earlier source wins, which keeps their
// order.
#pragma once

#include "segment.h"

struct Sort;

// Head of a source. `advance` moves to the next record; it sets `done` at the end, and returns
// false after an error.
struct Source {
    KeyHead head;
    const uint8_t *record; // release form
    uint32_t bytes;
    bool done;
    bool (*advance)(Sort *, Source *);

    const Segment *segment; // a sorted segment
    uint32_t position;

    uint64_t offset, end; // a run: what of the work file was not read yet
    uint8_t *buffer;
    uint64_t bufferSize, have, taken;

    FCB *file; // MERGE
    uint8_t *scratch, *other;
};

struct MergeTree {
    const KeyPlan *plan;
    Source *sources;
    uint32_t count;
    uint32_t *losers; // [0] is the winner
};

// `losers` has room for `count` numbers; all sources are at their first record.
void plantTree(MergeTree *tree, const KeyPlan *plan, Source *sources, uint32_t count, uint32_t *losers);
inline Source *winner(const MergeTree &tree) { return &tree.sources[tree.losers[0]]; }
// The winner has moved on.
void replay(MergeTree *tree);

void openSegmentSource(Source *source, const Segment *segment);
bool advanceSegment(Sort *sort, Source *source);
