// A length whose sign says something else: JUSTIFIED RIGHT, a figurative value, another padding.
//
//     SignedLength item(-7);          // item.size is 7, item.negative is true
#pragma once

#include <cstddef>
#include <cstdint>

struct SignedLength {
    explicit SignedLength(int32_t value)
        : negative(value < 0), size(static_cast<size_t>(value < 0 ? -int64_t{value} : int64_t{value}))
    {
    }
    bool negative;
    size_t size;
};

// A length that has no business to be negative: then there is nothing.
inline size_t plainLength(int64_t value) { return value > 0 ? static_cast<size_t>(value) : 0; }
