// The slots of a relative file: reading, writing and looking for records.
//
//     slot: length + 1 in four bytes, 0 for no record | the record | checksum of both, four bytes |
//           filled up to the longest record's
//
// A slot is as it was or as it should be, also beside a writer and after a kill (whole_records.h);
// holes of the file are empty slots. A slot that the file's end cuts off holds no record.
//
// READ NEXT, PREVIOUS and START look for a record in a window of slots, one pread for many. What
// this program writes goes into the window, too. Where others may write, the window is only a hint:
// a record that it shows is read again under its lock, and where it shows none it is filled anew
// from that slot on before the search goes on.
#pragma once

#include <sys/types.h>

#include "companions/filesystems/durability.h"
#include "companions/filesystems/record_format.h"
#include "companions/filesystems/record_locks.h"
#include "companions/filesystems/transaction.h"
#include "companions/filesystems/whole_records.h"

namespace filesystems {

constexpr uint32_t kSlotWord = 4; // of a slot's length
constexpr uint64_t kMostRecords = uint64_t(1) << 40;
constexpr int64_t kNoRecord = -1, kNoLength = -2; // an empty slot; a length word that no record has
constexpr int kDamagedSlot = -1;                  // for an errno

struct RelativeFile {
    int descriptor;
    int error; // of the last transfer: an errno, or `kDamagedSlot`
    RecordFormat format;
    RecordLocks locks;
    WholeRecords whole;
    Durability durability;
    uint64_t slotSize;
    uint32_t sumSize;  // of the checksum in a slot, 0 or 4
    uint64_t place;    // record of the last READ, WRITE or START; 0 before the first
    uint64_t lastRead; // record of the last READ
    bool exact;        // the next sequential READ takes `place` itself
    bool sequential;   // access mode
    bool transactional;
    uint64_t seen; // the transaction that the last verb was in
    char *name;    // of the file itself
    dev_t device;
    ino_t inode;
    SlotChanges *changes; // what it has changed in this file, for the time of a verb
    bool alone;           // nobody else writes: the window is what the file holds
    uint8_t *slot;        // the slot that a verb works on
    uint8_t *window;      // `windowCount` slots from record `windowFirst` on, of at most `windowMost`
    uint64_t windowFirst, windowCount, windowMost;
};

// False with `error` set: a file whose size cannot be had is not an empty one.
bool slotCount(RelativeFile *file, uint64_t *count);

// Reads a slot into `file->slot`; the record's length, or less than 0: there is none, or `error`
// says why none could be read.
int64_t loadSlot(RelativeFile *file, uint64_t record);
// Writes the first `size` bytes of a slot; false with the status set.
bool putSlot(FCB *fcb, RelativeFile *file, uint64_t record, const uint8_t *data, size_t size);
// The same for a record, with its length and its checksum.
bool storeRecord(FCB *fcb, RelativeFile *file, uint64_t record, const uint8_t *data, uint32_t length);

// The record at or after `record`, or at or before it; its number, 0 for none or an error. Its slot
// is in `file->slot`.
uint64_t findForward(RelativeFile *file, uint64_t record, int64_t *length);
uint64_t findBack(RelativeFile *file, uint64_t record, int64_t *length);
// What may be old goes: the program asks for a place of its own, or begins anew.
void forgetWindow(RelativeFile *file);

} // namespace filesystems
