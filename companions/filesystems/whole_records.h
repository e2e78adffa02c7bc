// Records that are changed in place are seen whole, or as they were.
//
// Beside other programs: the system does not keep a read and a write of the same bytes apart. A
// change locks its bytes, a read the bytes that it reads (F_OFD_SETLKW, for the time of the
// transfer), where somebody else may be there at all.
//
// After a kill: the system stops a write between two pages only, so a record that lies in one page
// is old or new. One that crosses a page goes to a journal beside the file first,
// NAME.kvr2-rewrite, as it was and as it shall be, with a checksum; then to its place; then the
// journal is made void. The next program that opens the file for changes completes what it finds
// there, and a reader does so in its own buffer. The journal is heeded only where the file holds a
// mixture of the two images, byte for byte: a file that was restored from a copy in the meantime
// keeps what it has. It goes with CLOSE. Where the directory takes no new file there is no journal,
// and only the locks protect.
//
//     error = replaceBytes(&whole, record, size, offset);      // REWRITE
//     error = fetchBytes(&whole, buffer, room, offset, &got);  // READ
#pragma once

#include <cstddef>

#include "companions/filesystems/open_rules.h"

namespace filesystems {

struct WholeRecords {
    int descriptor;
    const char *fileName;
    bool locksReads;   // somebody else may change records
    bool locksChanges; // somebody else may read them
    bool heeds;        // a journal may be there
    int journal;       // its descriptor, -1: none yet
    uint8_t *room;     // for an image of a record
    size_t roomSize;
};

// At OPEN. One for changes completes what a killed program left; OUTPUT discards it. 0 or an errno.
int startWhole(FCB *fcb, const Opened &opened, WholeRecords *whole);
// At CLOSE, and after an OPEN that failed.
void endWhole(WholeRecords *whole);

// As readAll and writeAll.
int fetchBytes(WholeRecords *whole, void *data, size_t size, uint64_t offset, size_t *got);
int replaceBytes(WholeRecords *whole, const void *data, size_t size, uint64_t offset);

} // namespace filesystems
