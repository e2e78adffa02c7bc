// The calls that led to a failure.
#pragma once

#include <cstdint>
#include <cstdio>

// Prints the call chain on a stream (null: stderr). With `traceback_lines` in the environment set
// to something that does not begin with "0", source lines are looked up with addr2line, which is
// slow. `mode` is not looked at.
void zvkTraceback(uint64_t mode, FILE *stream);

// How many of the innermost of `count` frames are the library's own; none where all are.
int zvkOwnFrames(void *const *frames, int count);

// Whether `traceback_lines` asks for source lines.
bool zvkTracebackWantsLines();
