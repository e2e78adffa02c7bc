// The sort engine: a shared object of its own, loaded when the first SORT of the process needs it.
#pragma once

#include "kvr2/sort.h"

// The engine's entry; null, after a line on stderr, if there is none. Chooses the temporary
// directory at the first load.
SortEngine zvkSortEngine();

// The entry if it was ever found; does not load.
SortEngine zvkLoadedSortEngine();

// Closes the library. Its entry stays known: a thread may still be in it.
void zvkCloseSortEngine();
