// Errors of the operator `**`: to the program's counter, or as a message.
#pragma once

#include <cstdint>

#include "frame/message_calls.h"

enum : uint32_t {
    kMsgNegativeBase = 48,
    kMsgZeroToZero = 49,
    kMsgZeroToNegative = 50,
    kMsgInfinite = 58,
    kMsgPowerTooLong = 60,
    kMsgZeroReciprocal = 61,
};

// True when the program has ON SIZE ERROR: the counter holds it and no message was written.
inline bool reportPower(uint32_t number, int32_t *errorCount)
{
    if (errorCount && *errorCount != 0) {
        *errorCount = static_cast<int32_t>(static_cast<uint32_t>(*errorCount) + 1);
        return true;
    }
    switch (number) {
    case kMsgNegativeBase:
        msg::negativeBase();
        break;
    case kMsgZeroToZero:
        msg::zeroToZero();
        break;
    case kMsgZeroToNegative:
        msg::zeroToNegative();
        break;
    case kMsgInfinite:
        msg::powerInfinite();
        break;
    case kMsgPowerTooLong:
        msg::powerTooLong();
        break;
    default:
        msg::zeroReciprocal();
        break;
    }
    return false;
}
