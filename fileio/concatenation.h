// What the list of a file's names asks of generation data groups.
#pragma once

#include "kvr2/fileio.h"

// Prints a record on stdout.
void zvkConcatDump(const ZvkConcatenation *record);
