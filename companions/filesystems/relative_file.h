// Relative files: record n in the n-th slot behind the header.
#ifndef COMPANIONS_FILESYSTEMS_RELATIVE_FILE_H
#define COMPANIONS_FILESYSTEMS_RELATIVE_FILE_H

#include "companions/filesystems/open_rules.h"

namespace filesystems {

void startRelative(FCB *fcb, const FIB *fib, const Opened &opened);

} // namespace filesystems

#endif
