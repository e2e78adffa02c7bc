// PERFORMs that may meet themselves (circles.cpp).
#pragma once

#include <cstdint>
#include <vector>

#include "cobol/meaning/names.h"

namespace kvrcob {

// The circles of a program's procedures: those that perform each other.
class Circles {
public:
    Circles() = default;
    Circles(Meaning &meaning, Program &p);
    // Whether a PERFORM in the procedure `in` of this range may meet itself.
    bool mayMeet(size_t in, size_t from, size_t end) const;

private:
    std::vector<uint32_t> of_; // of each procedure; equal numbers: one circle
};

} // namespace kvrcob
