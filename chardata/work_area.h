// A work area of a size that is known only at run time: on the stack while it fits, else from
// storage that is released with it.
//
//     WorkArea<32768> units(2 * length + 4);
//     if (!units.data()) return ...;            // message 907 has been issued
#pragma once

#include <cstddef>
#include <cstdint>

#include "kvr2/storage.h"

template <size_t StackBytes>
class WorkArea {
public:
    explicit WorkArea(size_t size)
    {
        if (size <= StackBytes) return;
        data_ = static_cast<uint8_t *>(_zvkMalloc(size, 907, 0));
    }
    ~WorkArea()
    {
        if (data_ != stack_) _zvkcfree(data_);
    }
    WorkArea(const WorkArea &) = delete;
    WorkArea &operator=(const WorkArea &) = delete;

    uint8_t *data() { return data_; }

private:
    alignas(16) uint8_t stack_[StackBytes];
    uint8_t *data_ = stack_;
};
