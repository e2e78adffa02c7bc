// A segment: a piece of memory full of records, sorted by itself.
//
// Records are one after the other in release form; those of variable length have their offsets
// at the arena's far end, growing towards them. A full segment is sorted by the worker while the
// next one is filled. Sorting permutes an index, never the records: 16 bytes an entry, 12 of them
// the key's prefix. One radix pass over the first bits that differ deals the entries out to 2,048
// buckets, which are then small enough for the cache. Equal keys are told apart by their place, so
// their order stays.
#pragma once

#include "key_plan.h"
#include "worker.h"

struct RecordLayout {
    bool variable;
    bool blankFill;
    uint32_t recordLength;
};
constexpr uint32_t kLengthWord = 4;

inline uint32_t loadWord(const uint8_t *from)
{
    uint32_t word;
    __builtin_memcpy(&word, from, sizeof word);
    return word;
}

struct Entry {
    uint64_t first;
    uint32_t next;
    uint32_t index;
};
static_assert(sizeof(Entry) == 16);

struct Segment {
    Job job; // sorts it; must be the first field
    const KeyPlan *plan;
    const RecordLayout *layout;
    Worker *worker;
    uint8_t *records;
    uint64_t capacity; // bytes of the arena; record and index space together stay within it
    uint64_t used;
    uint32_t count;
    Entry *entries; // in order once sorted
    uint8_t *tails; // tailBytes a record, by index
    Segment *nextFree;
};

bool openSegment(Segment *segment, uint64_t capacity);
void emptySegment(Segment *segment); // ready to be filled again
void closeSegment(Segment *segment);

// Index bytes that sorting takes for a record.
inline uint64_t indexBytes(const KeyPlan &plan, const RecordLayout &layout)
{
    return 2 * sizeof(Entry) + (plan.plain ? 0 : plan.tailBytes) + (layout.variable ? sizeof(uint32_t) : 0);
}

// Records of `bytes` in release form that still fit.
inline uint64_t segmentRoom(const Segment *segment, uint64_t bytes)
{
    uint64_t each = indexBytes(*segment->plan, *segment->layout);
    uint64_t taken = segment->used + segment->count * each;
    return taken >= segment->capacity ? 0 : (segment->capacity - taken) / (bytes + each);
}

inline uint32_t *offsetSlot(const Segment *segment, uint32_t index)
{
    return reinterpret_cast<uint32_t *>(segment->records + segment->capacity) - 1 - index;
}

inline const uint8_t *recordAt(const Segment *segment, uint32_t index)
{
    return segment->records +
           (segment->layout->variable ? *offsetSlot(segment, index) : uint64_t{index} * segment->layout->recordLength);
}

// A record's bytes without the length word.
inline const uint8_t *dataOf(const RecordLayout &layout, const uint8_t *record)
{
    return layout.variable ? record + kLengthWord : record;
}

inline const uint8_t *tailAt(const Segment *segment, uint32_t index)
{
    const KeyPlan &plan = *segment->plan;
    return plan.plain ? plainTail(plan, dataOf(*segment->layout, recordAt(segment, index)))
                      : segment->tails + uint64_t{index} * plan.tailBytes;
}

void sortSegment(Job *job);
