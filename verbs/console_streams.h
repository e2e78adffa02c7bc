// What the console verbs share: the device streams, their locks, flushing before a
// read.
#pragma once

#include <cerrno>
#include <cstdint>
#include <cstdio>

#include "frame/whole_writes.h"
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

// So that what was shown earlier, a prompt above all, is visible before a read from stdin blocks.
void zvkFlushMessagesBeforeRead();
void zvkFlushOutputBeforeRead();
