// What the console verbs share: the device streams, their locks, writing that retries, flushing
// before a read.
#pragma once

#include <cerrno>
#include <cstdint>
#include <cstdio>

#include "kvr2/run_unit.h"

// Holds a stream's lock for a scope.
class StreamLock {
public:
    explicit StreamLock(FILE *stream) : stream_(stream) { flockfile(stream_); }
    ~StreamLock() { release(); }
    void release()
    {
        if (stream_) funlockfile(stream_);
        stream_ = nullptr;
    }
    StreamLock(const StreamLock &) = delete;
    StreamLock &operator=(const StreamLock &) = delete;

private:
    FILE *stream_;
};

// The stream of a device, bound now if it is not yet; null only for SYSPUNCH without a file.
FILE *zvkConsoleInput();
FILE *zvkConsoleOutput();
FILE *zvkSysin();
FILE *zvkSysout();
FILE *zvkSyspunch();

// True for errors after which a read or write is tried again. EAGAIN waits until the descriptor is
// ready, or for a moment.
bool zvkRetryAfter(int error, FILE *stream, short events);

// Writes to a stream that the caller has locked; gives up without a word on an error that is not to
// be retried.
void zvkWriteText(FILE *stream, const void *text, size_t length);

void zvkFlushLocked(FILE *stream);

// So that what was shown earlier, a prompt above all, is visible before a read from stdin blocks.
void zvkFlushMessagesBeforeRead();
void zvkFlushOutputBeforeRead();
