// The per-thread record: scratch storage for results of unknown length, and what SORT keeps between
// its verbs.
#pragma once

#include <cstddef>
#include <cstdint>

struct ZvkThreadRecord {
    uint64_t threadId; // pthread_self() at creation
    uint8_t *scratch;
    uint64_t scratchSize;
    // SORT's fields; how they are used is told in sort/.
    int64_t fill;
    uint64_t fileOffset;
    char *spillPath;
    uint8_t *buffer;
    uint8_t *cursor;
    const void *recordDesc;
    const void *eighthArg;
    const void *usingList;
    const void *givingList;
    const void *fourthArg;
    const void *fifthArg;
    const char *tempDir;
    uint64_t capacity;
    uint32_t engineFlags;
    uint32_t sortErrno;
    uint16_t active;
    int32_t spillHandle;   // descriptor of the spill file that RETURN reads, plus 1; 0 none
    const void *verbBlock; // of the sort under way, for what RETURN has to say
};
static_assert(sizeof(ZvkThreadRecord) == 152 && offsetof(ZvkThreadRecord, active) == 136);

// size -1: this thread's record, or null if it has none; 0: the record, made if need be; otherwise
// scratch of at least `size` bytes, whose old content is not kept. Null without a Proccom, and
// after message 907. A thread's scratch result lives until its next such call.
void *zvkThreadScratch(int64_t size);

// The runtime's end: frees this thread's record, then the key. Threads that still run lose their
// records to the system's cleanup.
void zvkReleaseThreadRecord();
void zvkDeleteThreadKey();
