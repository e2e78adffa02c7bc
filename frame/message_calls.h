// Every message that the library raises, as a function with typed inserts:
//
//     msg::badYearWindow(name, window, base);                     240, as its text has it
//     msg::externalItemLength(item, ZVK_MSG_SEVERE);              66, with bits of the control word
//
// The functions are generated from the "$ Call" lines of messages/kvr2run.msg, so an insert that is
// missing, too much or of the wrong kind does not compile. zvkWriteMsg itself is for numbers that
// are data: those of the date services' tables, and those that callers of the library pass.
#pragma once

#include <concepts>

#include "frame/messages.h"

namespace msg {

// An insert of 32 bits, and one of 64. Neither is made from the other, nor from a pointer.
struct Int32 {
    int32_t value;
    template <std::integral T>
    requires(sizeof(T) <= 4 && !std::same_as<T, bool>) constexpr Int32(T number) : value(static_cast<int32_t>(number))
    {
    }
};

struct Int64 {
    int64_t value;
    template <std::integral T>
    requires(sizeof(T) == 8) constexpr Int64(T number) : value(static_cast<int64_t>(number))
    {
    }
};

#include "message_calls.inc"

} // namespace msg
