// Relative files: record n in the n-th slot after the header.
#pragma once

#include "companions/filesystems/open_rules.h"

namespace filesystems {

void startRelative(FCB *fcb, const FIB *fib, const Opened &opened, uint32_t sumSize);

} // namespace filesystems
