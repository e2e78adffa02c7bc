// The slots of a closed file.
#pragma once

#include "kvr2/fileio.h"

// Puts the library's routines into all slots and sets the default file system.
void zvkInitSlots(FCB *fcb, FIB *fib);

// The name in force: an allocated one is freed when another takes its place.
void zvkSetFileName(FCB *fcb, char *name, bool allocated);
