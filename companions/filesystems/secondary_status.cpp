#include "companions/filesystems/secondary_status.h"

#include <cerrno>

namespace filesystems {

namespace {

const char *const kTexts[fs2Last - fs2AtEnd] = {
    "end of file",
    "no record position to read on from",
    "no such record",
    "duplicate key",
    "key out of sequence, or key changed",
    "the last statement was no successful READ",
    "record length not allowed",
    "record longer than the record area, cut",
    "line longer than the record area, the rest follows",
    "incomplete record",
    "optional file absent",
    "not a file of records: directory, pipe or device",
    "open mode not possible for this file",
    "file has other attributes",
    "file header damaged or foreign",
    "record store of the indexed file missing or damaged",
    "file in use by another open",
    "record locked by another open",
    "too many locks",
    "no storage",
    "LINAGE values not possible",
    "no such key",
    "record number out of bounds",
    "organization not stored by this file system",
    "no space left for the file",
    "record holds a line end",
    "key too long",
    "record number larger than the RELATIVE KEY item",
    "record damaged",
    "changes since the last commit are lost: a write failed; close the file",
    "too many programs have the indexed file open",
    "record store or its lock file removed or replaced while the file is open",
    "hard link to an indexed file whose store is beside a name in another folder",
    "file has changes of another transaction",
    "transaction cannot be committed: a change failed; roll it back",
    "file has changes that are not committed",
    "lines are not deleted from a file of several names (hard links)",
    "no permission for the lock file of the record store (NAME.mdb-lock)",
};

const char *textOf(void *, uint32_t fs2, int32_t, int32_t)
{
    if (fs2 >= fs2AtEnd && fs2 < fs2Last) return kTexts[fs2 - fs2AtEnd];
    if (fs2 > fs2System && fs2 < fs2System + 200) {
        const char *text = strerrordesc_np(static_cast<int>(fs2 - fs2System));
        return text ? text : "system failure";
    }
    return nullptr;
}

} // namespace

void **operationTable()
{
    static void *table[ZVK_FILE_TEXT_SLOT + 1];
    table[ZVK_FILE_TEXT_SLOT] = reinterpret_cast<void *>(textOf);
    return table;
}

bool failWithErrno(FCB *fcb, int error)
{
    uint16_t status = 93;
    switch (error) {
    case ENOENT:
    case ENOTDIR:
        status = 35;
        break;
    case EACCES:
    case EPERM:
    case EROFS:
        status = 91;
        break;
    case EISDIR:
    case ENXIO:
    case ESPIPE:
    case ETXTBSY:
        status = 37;
        break;
    case ENOSPC:
    case EDQUOT:
    case EFBIG:
    case ENOMEM:
        status = 34;
        break;
    case EIO:
        status = 30;
        break;
    default:
        break;
    }
    return fail(fcb, status, fs2System + static_cast<uint32_t>(error));
}

} // namespace filesystems
