#include "companions/filesystems/indexed_file.h"

#include <unistd.h>

namespace filesystems {

bool createStore(FCB *fcb, const StoredHeader &) { return fail(fcb, 37, fs2Organization); }

void startIndexed(FCB *fcb, const FIB *, const Opened &opened, const StoredHeader &)
{
    close(opened.descriptor);
    fail(fcb, 37, fs2Organization);
}

} // namespace filesystems
