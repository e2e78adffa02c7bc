// OPEN: which file modes need which file, what OPTIONAL allows, and which descriptors can hold
// records.
//
// A name is opened without waiting and without cutting it, then looked at, then taken
// (share_locks.h). OUTPUT empties it only when nothing can refuse any more. So a pipe does not hang
// the program, and a file that is refused is not touched.
#pragma once

#include <sys/types.h>

#include "companions/filesystems/secondary_status.h"
#include "companions/filesystems/share_locks.h"

namespace filesystems {

struct Opened {
    int descriptor = -1;   // -1: refused, or absent
    bool seekable = false; // a regular file
    bool created = false;  // absent or empty before
    uint64_t size = 0;
    ShareHeld held = {};
    bool standard = false; // one of the process's own streams
};

// Finds the descriptor of a file that was closed, but goes on (transaction.h); -1: it does not.
using Parked = int (*)(dev_t device, ino_t inode, bool *changed);

// What differs between file systems.
struct OpenRules {
    SharePolicy sharing;
    bool devices = false;       // character devices will do
    bool emptyIsAbsent = false; // a file of no bytes counts as absent
    Parked parked = nullptr;
};

// Opens `fcb->fileName` as the requested mode and OPTIONAL have it. With descriptor -1 the status
// is set; status 5 with an ABSENT state is a success for the caller too.
Opened openByRules(FCB *fcb, const FIB *fib, const OpenRules &rules);

// The name of the file itself where the name is a symbolic link to it: what belongs to a file is
// beside the file. `room` has PATH_MAX bytes; null with errno set.
const char *resolvedName(const char *name, char *room);

// OUTPUT: cuts a file down to `size` bytes; false with the status set.
bool emptyFile(FCB *fcb, const Opened &opened, uint64_t size);

// The block that holds a module's state, zeroed, in `fcb->moduleBuffer`.
template <class State>
State *newState(FCB *fcb)
{
    fcb->moduleBuffer = calloc(1, sizeof(State));
    return static_cast<State *>(fcb->moduleBuffer);
}

// After an OPEN that failed: the library frees buffers only at CLOSE.
inline void dropBuffers(FCB *fcb)
{
    free(fcb->moduleBuffer);
    free(fcb->moduleBuffer2);
    fcb->moduleBuffer = fcb->moduleBuffer2 = nullptr;
}

} // namespace filesystems
