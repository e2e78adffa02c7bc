// Status handling of the library's own routines, beyond what modules do likewise
// (kvr2/file_module.h).
#pragma once

#include "kvr2/file_module.h"

// The feedback field of a verb that made no sense: zero.
void zvkResetFeedback(const FIB *fib);
