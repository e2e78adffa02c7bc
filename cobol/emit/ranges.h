// Ranges of procedures that become C functions of their own (ranges.cpp).
#pragma once

#include <cstdint>
#include <utility>
#include <vector>

#include "cobol/syntax/tree.h"

namespace kvrcob {

// How control goes through a program, as its statements were emitted. Procedures are named by their
// indices.
struct Flow {
    struct Perform {
        uint32_t site;
        size_t in, from, end; // the procedure that it is in; the range's first one and that which ends it
        bool circle;          // it may meet itself
    };
    std::vector<Perform> performs;
    std::vector<std::pair<size_t, size_t>> jumps;        // GO TO: in, to
    std::vector<std::pair<size_t, size_t>> sectionExits; // EXIT SECTION: in, the section
    std::vector<uint8_t> entered;  // control comes into it from the library, or from outside the program
    std::vector<uint8_t> endsAway; // its last statement is a GO TO, STOP RUN or GOBACK
};

struct Range {
    size_t first, last;        // paragraphs and sections
    size_t end;                // the one that ends it: `last`, or its section
    std::vector<size_t> exits; // where GO TO, in it or in what it performs, may go on outside
    bool holds(size_t procedure) const { return procedure >= first && procedure <= last; }
};

// The index of the last paragraph of a range that ends with this procedure (control.cpp).
size_t lastOf(const Program &p, size_t index);

// Those inside others come after them.
std::vector<Range> rangesAsFunctions(const Program &p, const Flow &flow);
// Of each procedure: the index of the innermost range that it is in, or -1.
std::vector<int> ownersOf(const Program &p, const std::vector<Range> &ranges);

} // namespace kvrcob
