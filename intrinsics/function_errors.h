// What the intrinsic functions say of wrong arguments. All take the function's name; 176 also the
// largest argument that is allowed, which the catalog's text may leave out.
#pragma once

#include <cstdint>

#include "frame/messages.h"

enum : uint32_t {
    kMsgRateTooSmall = 100,
    kMsgNegativeArgument = 163,
    kMsgArgumentTooLarge = 176,
    kMsgArgumentNotPositive = 177,
    kMsgLogarithmArgument = 178,
    kMsgArgumentTooSmall = 179,
    kMsgNotInteger = 180,
};

[[gnu::cold, gnu::noinline]] inline void reportArgument(uint32_t number, const char *function)
{
    zvkWriteMsg(number, 0, function);
}

[[gnu::cold, gnu::noinline]] inline void reportTooLarge(const char *function, int64_t largest)
{
    zvkWriteMsg(kMsgArgumentTooLarge, 0, function, largest);
}
