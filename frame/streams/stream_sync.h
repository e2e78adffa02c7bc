// Streams whose text must be on disk before the next statement runs.
#pragma once

#include <cstdio>
#include <unistd.h>

// Flushes a stream and its descriptor, under the stream's own lock.
inline void zvkSyncStream(FILE *stream)
{
    if (!stream) return;
    flockfile(stream);
    fflush_unlocked(stream);
    fdatasync(fileno_unlocked(stream));
    funlockfile(stream);
}
