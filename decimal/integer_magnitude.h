// Binary integers as decimal arithmetic takes them: by their magnitude.
#pragma once

#include <cstdint>

namespace bcd {

// Of the most negative integer, too.
inline uint64_t magnitude(int64_t value)
{
    return value < 0 ? 0 - static_cast<uint64_t>(value) : static_cast<uint64_t>(value);
}

} // namespace bcd
