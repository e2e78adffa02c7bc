// What the library's constructor shares with the runtime's start and with its tests.
#pragma once

#include <cstddef>

#include "kvr2/run_unit.h"

// The NLSPATH entry for a library that was loaded from `libraryDirectory` (with or without a final
// "/").
void zvkCatalogPath(const char *libraryDirectory, char *path, size_t size);

// Reads the terminal's size; a descriptor that is no terminal leaves the record as it is.
void zvkReadWindowSize(int descriptor, ZvkWindowSize *into);
