// Streams whose text must be on disk before the next statement runs.
#pragma once

#include <cstdio>
#include <unistd.h>

#include "frame/whole_writes.h"

// Flushes a stream and its descriptor, under the stream's own lock.
inline void zvkSyncStream(FILE *stream)
{
    if (!stream) return;
    flockfile(stream);
    zvkFlushWhole(stream);
    fdatasync(fileno_unlocked(stream));
    funlockfile(stream);
}
