// The operation of an entry that adds a binary integer to an item (ItemAndInteger in
// arithmetic_entry.h), from its short cut and its worker.
#pragma once

#include "decimal/short_sum.h"

namespace bcd {

// F is the item's form, Short the form as the short cut sees it.
template <class F, class Short, bool subtract, class T, int (*worker)(uint8_t *, int32_t, T, int), const char *text>
struct IntegerStep {
    using Form = F;
    using Integer = T;
    static constexpr const char *title = text;
    static constexpr bool packed = std::is_same_v<Short, shortforms::Pckd>;

    static bool quick(const auto &call)
    {
        if constexpr (packed)
            return shortIntegerSum<Short, subtract, uint64_t>(call);
        else
            return shortestIntegerSum<subtract>(call);
    }
    static bool quickLong(const auto &call)
    {
        if (!packed && shortIntegerSum<Short, subtract, uint64_t>(call)) return true;
        return tailIntegerSum<Short, subtract>(call) || shortIntegerSum<Short, subtract, u128>(call);
    }
    static void work(uint8_t *op, int32_t digits, T value) { worker(op, digits, value, 0); }
};

} // namespace bcd
