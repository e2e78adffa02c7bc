// The SORT-CONTROL file: what a site says about the sorts of a program.
#pragma once

#include "sort_state.h"

// Settings from the file, if there is one, and from the eighth argument. False if a line makes no
// sense.
bool readSettings(SortSettings *settings, const char *controlFile, const SortEighth &eighth, const char *tempDirectory);
