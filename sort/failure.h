// What message 26 says of a failed sort beside the engine's number.
#pragma once

#include <cstddef>
#include <cstdint>

#include "kvr2/sort.h"

// The sides of the statement that failed. Null for what it does not have.
struct SortSides {
    const SortFileList *usingList;
    const SortFileList *givingList;
    const char *input;   // spill file of the released records
    const char *output;  // spill file of the result
    const char *control; // name of the SORT-CONTROL file
};

// ": file CUSTOMERS (/data/customers), file status 35", or which other file it was; empty where the
// error is about none, or about which is not known.
void zvkDescribeSortFailure(uint32_t error, const SortSides &sides, char *text, size_t size);
