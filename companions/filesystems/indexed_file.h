// Indexed files: the header in the named file, records and indexes in an LMDB environment beside
// it, NAME.mdb.
#ifndef COMPANIONS_FILESYSTEMS_INDEXED_FILE_H
#define COMPANIONS_FILESYSTEMS_INDEXED_FILE_H

#include "companions/filesystems/open_rules.h"
#include "companions/filesystems/stored_header.h"

namespace filesystems {

void startIndexed(FCB *fcb, const FIB *fib, const Opened &opened, const StoredHeader &header);

} // namespace filesystems

#endif
