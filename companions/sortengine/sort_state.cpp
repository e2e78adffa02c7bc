// A running sort's record; see sort_state.h.
#include "sort_state.h"

#include <cstdlib>
#include <cstring>
#include <unistd.h>

struct MemoryBlock {
    MemoryBlock *next;
    uint64_t pad;
};

// In the thread's static block: storage that is taken at the first use would end the process where
// there is none.
#define IN_STATIC_BLOCK __attribute__((tls_model("initial-exec")))
IN_STATIC_BLOCK static thread_local Sort *innermost;
IN_STATIC_BLOCK static thread_local Sort *abandoned;

void openSort(Sort *sort)
{
    sort->outer = innermost;
    sort->inputFd = sort->outputFd = sort->work.fd = -1;
    openWorker(&sort->worker);
    innermost = sort;
}

static void freeAll(Sort *sort)
{
    closeWorker(&sort->worker);
    for (uint32_t i = 0; i < sort->segmentCount; i++) closeSegment(sort->segments[i]);
    for (int fd : {sort->inputFd, sort->outputFd, sort->work.fd})
        if (fd >= 0) close(fd);
    free(sort->reserve);
    sort->reserve = nullptr;
    while (MemoryBlock *block = sort->blocks) {
        sort->blocks = block->next;
        free(block);
    }
}

static void takeOut(Sort **list, const Sort *sort)
{
    while (*list && *list != sort) list = &(*list)->outer;
    if (*list) *list = sort->outer;
}

void closeSort(Sort *sort)
{
    if (sort->error == ZVK_SORT_EABANDONED) return takeOut(&abandoned, sort);
    freeAll(sort);
    takeOut(&innermost, sort);
}

void abandonSorts()
{
    while (Sort *sort = innermost) {
        innermost = sort->outer;
        freeAll(sort);
        sort->error = ZVK_SORT_EABANDONED;
        sort->outer = abandoned;
        abandoned = sort;
    }
}

void *take(Sort *sort, uint64_t bytes)
{
    auto *block = bytes < UINT64_MAX - sizeof(MemoryBlock)
                      ? static_cast<MemoryBlock *>(malloc(sizeof(MemoryBlock) + bytes))
                      : nullptr;
    if (!block) {
        fail(sort, ZVK_SORT_ESTORAGE);
        return nullptr;
    }
    memset(static_cast<void *>(block), 0, sizeof(MemoryBlock));
    block->next = sort->blocks;
    sort->blocks = block;
    return block + 1;
}
