// Indexed files: the header in the named file, records and indexes in an LMDB environment beside
// it, NAME.mdb.
#pragma once

#include "companions/filesystems/open_rules.h"
#include "companions/filesystems/stored_header.h"

namespace filesystems {

void startIndexed(FCB *fcb, const FIB *fib, const Opened &opened, const StoredHeader &header);

} // namespace filesystems
