// Pages of a store that the disk does not give, or that are there no more.
//
// A store is read through a map of its file. Where the disk cannot be read under a page, or another
// program cuts the file off while a verb is under way, the system answers the access with SIGBUS.
// Work that looks at pages goes through `withPages`: there the signal ends the work and not the
// program, and the verb fails as for any other damage.
//
//     error = withPages(store->map, [&] { return findValue(snapshot, tree, key, &value); });
//
// The work is left where it is: what it holds (a transaction, a cursor, a lock) is for the caller
// to end, and what it calls may lose nothing by that. LMDB's own work is never left, for LMDB looks
// at pages through a map of its own. One piece of work may be inside another.
//
// Whatever else a SIGBUS is about goes to the handler that was there before.
#pragma once

#include <atomic>
#include <csetjmp>

#include "companions/filesystems/store_pages.h"

namespace filesystems {

struct PageGuard {
    PageGuard *outer;
    const StoreMap *map;
    sigjmp_buf back;
};
// The innermost one of this thread. It has its place when the module is loaded: a signal handler
// must not be the first to ask for it.
extern __thread PageGuard *pageGuard __attribute__((tls_model("initial-exec")));

// At OPEN: takes the signal, if somebody else has it by now.
void heedPageFaults();

template <class Work>
[[gnu::noinline]] int withPages(const StoreMap *map, const Work &work)
{
    PageGuard guard;
    guard.outer = pageGuard;
    guard.map = map;
    if (sigsetjmp(guard.back, 0) != 0) {
        pageGuard = pageGuard->outer;
        return MDB_CORRUPTED;
    }
    pageGuard = &guard;
    std::atomic_signal_fence(std::memory_order_seq_cst);
    int error = work();
    std::atomic_signal_fence(std::memory_order_seq_cst);
    pageGuard = guard.outer;
    return error;
}

} // namespace filesystems
