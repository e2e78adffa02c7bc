// Secondary statuses of the file-system modules.
//
// FS1 says what a program has to know; FS2 says why. The library's own routines use small numbers
// of theirs (up to 34); those of the modules begin at 100, so that a number in a feedback field
// says who set it. An error of the operating system is 1000 plus its errno.
#pragma once

#include <cstdint>

#include "kvr2/file_module.h"

namespace filesystems {

enum Secondary : uint32_t {
    fs2None = 0,
    fs2AtEnd = 100,
    fs2NoPosition,
    fs2NoRecord,
    fs2DuplicateKey,
    fs2Sequence,
    fs2NotRead,
    fs2RecordLength,
    fs2Truncated,
    fs2LineSplit,
    fs2Torn,
    fs2Absent,
    fs2FileType,
    fs2OpenMode,
    fs2Attributes,
    fs2Header,
    fs2Store,
    fs2InUse,
    fs2RecordLocked,
    fs2TooManyLocks,
    fs2Storage,
    fs2Linage,
    fs2KeyNumber,
    fs2Boundary,
    fs2Organization,
    fs2Full,
    fs2Control,
    fs2KeyLength,
    fs2KeyItem,
    fs2Damaged,
    fs2Lost,
    fs2Readers,
    fs2Replaced,
    fs2Link,
    fs2InTransaction,
    fs2Doomed,
    fs2Uncommitted,
    fs2SeveralNames,
    fs2LockFile,
    fs2Last,
    fs2System = 1000
};

// Statuses beyond the standard's that modules give.
enum : uint16_t { statusFileInUse = 94, statusRecordLocked = 99 };

// What `vfs()` returns: a table whose slot 24 gives the texts.
void **operationTable();

// FS1 and FS2 for an errno; returns false, for tail calls.
bool failWithErrno(FCB *fcb, int error);

inline bool fail(FCB *fcb, uint16_t status, uint32_t fs2)
{
    zvkSetStatus(fcb, status, fs2);
    return false;
}

} // namespace filesystems
