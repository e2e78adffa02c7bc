// The calls that led to a failure.
#pragma once

#include <cstdint>
#include <cstdio>

// Prints the call chain on a stream (null: stderr). With `traceback_lines` in the environment set
// to something that does not begin with "0", source lines are looked up with addr2line, which is
// slow. `mode` is not looked at.
void zvkTraceback(uint64_t mode, FILE *stream);
