// The library's allocators; see storage.h for the families.
#include "frame/storage.h"

#include <algorithm>
#include <cstring>

#include "frame/messages.h"
#include "frame/run_unit.h"

static_assert(alignof(max_align_t) >= 16, "malloc and calloc give 16-byte aligned blocks");

// ---- plain

void *zvkAlloc(uint64_t size)
{
    uint64_t rounded;
    if (__builtin_add_overflow(size, 15, &rounded)) return nullptr;
    // aligned_alloc wants whole units; a block of no bytes still gets an address of its own.
    return aligned_alloc(16, std::max<uint64_t>(rounded & ~uint64_t{15}, 16));
}

// calloc and not a cleared aligned_alloc: large blocks come from the system cleared already.
void *zvkCalloc(uint64_t count, uint64_t size) { return calloc(count, size); }

void *_zvkMalloc(uint64_t size, uint32_t number, uint32_t control)
{
    void *block = zvkAlloc(size);
    if (!block) zvkWriteMsg(number, control);
    return block;
}

void *_zvkcalloc(int32_t clear, uint64_t size)
{
    if (size == 0) return nullptr;
    return clear == 1 ? zvkCalloc(1, size) : zvkAlloc(size);
}

void _zvkcfree(void *block) { free(block); }

void *_Dmr_mem_alloc(uint64_t size) { return zvkAlloc(size); }

void _Dmr_mem_free(void *block) { free(block); }

// ---- tracked
//
// Every block has the header, tracked or not: it can be freed after tracking was turned on or off
// in between. A block knows the place that points to it and not the block before, so that leaving
// the list takes no run unit to look at: a nested run unit may free what its parent allocated.

static TrackedBlock **trackedList()
{
    Runcom *runcom = zvkCurrentRuncom();
    return runcom && (_zvkProccom->flags & ZVK_TRACK_STORAGE) ? &runcom->storage : nullptr;
}

static void *track(TrackedBlock *block)
{
    if (!block) return nullptr;
    TrackedBlock **list = trackedList();
    block->next = list ? *list : nullptr;
    block->link = list;
    if (list) {
        if (block->next) block->next->link = &block->next;
        *list = block;
    }
    return block + 1;
}

void *zvkTrackedAlloc(uint64_t size)
{
    uint64_t whole;
    if (__builtin_add_overflow(size, sizeof(TrackedBlock), &whole)) return nullptr;
    return track(static_cast<TrackedBlock *>(zvkAlloc(whole)));
}

void *zvkTrackedCalloc(uint64_t count, uint64_t size)
{
    uint64_t whole;
    if (__builtin_mul_overflow(count, size, &whole) || __builtin_add_overflow(whole, sizeof(TrackedBlock), &whole))
        return nullptr;
    return track(static_cast<TrackedBlock *>(zvkCalloc(1, whole)));
}

void zvkTrackedFree(void *data)
{
    if (!data) return;
    TrackedBlock *block = static_cast<TrackedBlock *>(data) - 1;
    // A run unit that starts forgets the list of its record's last use; such a block's place then
    // points elsewhere.
    if (block->link && *block->link == block) {
        *block->link = block->next;
        if (block->next) block->next->link = block->link;
    }
    free(block);
}

void zvkTrackedFreeAll()
{
    Runcom *runcom = zvkActingRuncom();
    if (!runcom) return;
    TrackedBlock *block = runcom->storage;
    runcom->storage = nullptr;
    while (block) {
        TrackedBlock *next = block->next;
        free(block);
        block = next;
    }
}

// ---- sized

namespace {

struct SizedBlock {
    uint64_t size;
    uint64_t reserved;
};
static_assert(sizeof(SizedBlock) == 16);

void *giveOut(void *whole, uint64_t size)
{
    if (!whole) return nullptr;
    SizedBlock *block = static_cast<SizedBlock *>(whole);
    *block = {size, 0};
    return block + 1;
}

} // namespace

void *zvkSizedAlloc(uint64_t size)
{
    uint64_t whole;
    if (__builtin_add_overflow(size, sizeof(SizedBlock), &whole)) return nullptr;
    return giveOut(zvkAlloc(whole), size);
}

void *zvkSizedCalloc(uint64_t count, uint64_t size)
{
    uint64_t bytes, whole;
    if (__builtin_mul_overflow(count, size, &bytes) || __builtin_add_overflow(bytes, sizeof(SizedBlock), &whole))
        return nullptr;
    return giveOut(zvkCalloc(1, whole), bytes);
}

void *zvkSizedRealloc(void *data, uint64_t size)
{
    void *fresh = zvkSizedAlloc(size);
    if (fresh && data) memcpy(fresh, data, std::min(size, (static_cast<SizedBlock *>(data) - 1)->size));
    return fresh;
}

void zvkSizedFree(void *data)
{
    if (data) free(static_cast<SizedBlock *>(data) - 1);
}
