// Writing to streams so that nothing is lost when a signal comes, or a pipe is full.
//
// The C library's streams forget what they hold when the write of it is interrupted (EINTR: a host
// with a timer) or would block (EAGAIN: a pipe that another process made so). A retry then begins
// after the gap. So text goes out only when the descriptor says that it can be written to, and no
// more of it at a time than a pipe that says so takes at once: such a write neither waits nor is
// interrupted.
//
// A host that gives a stream a larger buffer, and fills it itself, has the C library's rules.
#pragma once

#include <cstddef>
#include <cstdio>

// True for errors after which a read or write is tried again. EAGAIN waits until the descriptor is
// ready, or for a moment.
bool zvkRetryAfter(int error, FILE *stream, short events);

// Writes to a stream that the caller has locked; gives up without a word on an error that is not to
// be retried.
void zvkWriteText(FILE *stream, const void *text, size_t length);

// Flushes a stream that the caller has locked. False: what it held is lost; errno says why.
bool zvkFlushWhole(FILE *stream);

void zvkFlushLocked(FILE *stream);
