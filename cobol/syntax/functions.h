// The intrinsic functions: what comes out and how many arguments go in. The parser knows the names
// from here, the emitter (emit/functions.cpp and its like) the rest.
#pragma once

#include <cstddef>

#include "cobol/text/words.h"

namespace kvrcob {

enum class FunctionResult : uint8_t { Integer, Number, Float, Text, OfArgument };

struct FunctionRow {
    const char *name;
    FunctionResult result;
    int least, most; // arguments; -1: any number
};

// The rows, in the order of their names.
const FunctionRow *functionRows(size_t &count);

// The row of a name, null if there is no such function.
const FunctionRow *functionRow(Word name);

} // namespace kvrcob
