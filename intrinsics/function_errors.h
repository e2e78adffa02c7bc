// What the intrinsic functions say of wrong arguments. All take the function's name; 176 also the
// largest argument that is allowed, which the catalog's text may leave out.
#pragma once

#include <cstdint>

#include "frame/message_calls.h"

// Which message: one of msg's functions that take the name alone.
using ArgumentMessage = uint32_t (*)(const char *function, uint32_t control);

[[gnu::cold, gnu::noinline]] inline void reportArgument(ArgumentMessage message, const char *function)
{
    message(function, 0);
}

[[gnu::cold, gnu::noinline]] inline void reportTooLarge(const char *function, int64_t largest)
{
    msg::argumentAbove(function, largest);
}
