// The operation of an entry that adds a binary integer to an item (ItemAndInteger in
// arithmetic_entry.h), from its worker.
#pragma once

#include <cstdint>

namespace bcd {

template <class F, class T, int (*worker)(uint8_t *, int32_t, T, int), const char *text>
struct IntegerStep {
    using Form = F;
    using Integer = T;
    static constexpr const char *title = text;
    static void work(uint8_t *op, int32_t digits, T value) { worker(op, digits, value, 0); }
};

// Of the most negative integer, too.
inline uint64_t magnitude(int64_t value)
{
    return value < 0 ? 0 - static_cast<uint64_t>(value) : static_cast<uint64_t>(value);
}

} // namespace bcd
