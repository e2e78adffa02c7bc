// The library's allocators.
//
// All blocks are 16-byte aligned. Sizes come from callers unchecked: one that cannot be met, be it
// so large that header and rounding would wrap around, fails like any other allocation, with null.
//
//     plain     zvkAlloc, zvkCalloc; free with free()
//     tracked   on a list of the run unit while storage is tracked, so that its end frees all of it
//     sized     know their size; for code that was written against an allocator that could be asked
#pragma once

#include <cstddef>
#include <cstdint>
#include <cstdlib>

#include "kvr2/storage.h"

void *zvkAlloc(uint64_t size);
void *zvkCalloc(uint64_t count, uint64_t size);

// In front of a tracked block's data.
struct TrackedBlock {
    TrackedBlock *next;
    TrackedBlock **link; // the `next` of the block before, or the list's head; null for a block on no list
};
static_assert(sizeof(TrackedBlock) == 16);

// Not locked: storage is tracked under a monitor only, where the process counts as single-threaded.
void *zvkTrackedAlloc(uint64_t size);
void *zvkTrackedCalloc(uint64_t count, uint64_t size);
void zvkTrackedFree(void *data);
void zvkTrackedFreeAll(); // the run unit that is being ended

// zvkSizedRealloc does not free the old block: its callers keep pointers into it.
void *zvkSizedAlloc(uint64_t size);
void *zvkSizedCalloc(uint64_t count, uint64_t size);
void *zvkSizedRealloc(void *data, uint64_t size);
void zvkSizedFree(void *data);
