// Sharing of files and locks on records, between processes and between two opens of one process.
//
// Both are advisory locks of the open file description (F_OFD_SETLK), on bytes far beyond any data:
// the system frees them when the descriptor closes or its process dies, so a killed program leaves
// nothing locked. They never wait, so there is no deadlock: what another open holds gives status 94
// at OPEN (file in use) or 99 at a verb (record locked).
//
// Three bytes say who has the file open. `kPresent` is locked shared by every open, exclusively by
// one that shares with nobody. `kWriters` is locked shared by every open that writes, exclusively
// by one that admits no other writer. A reader's descriptor can take shared locks only: one that
// admits no writer locks `kDeniers`, one that admits nobody `kLoners`. Each takes its locks first
// and looks for the other side's afterwards: of two at the same moment at least one sees the other.
//
// Only transfers wait for each other: the bytes of a record while it is changed in place or read.
// Who holds them waits for nothing but the disk.
#pragma once

#include <cstdint>

#include "kvr2/file_module.h"

namespace filesystems {

// What others may do while the file is open.
enum ShareMode : uint8_t {
    shareDefault = 0,
    shareAllOther = ZVK_FILE_SHARE_ALL,
    shareReadOnly = ZVK_FILE_SHARE_READ,
    shareNoOther = ZVK_FILE_SHARE_NONE
};

// The bytes that are locked; those of transfers are the data's own.
constexpr int64_t kFirstRecordLock = int64_t(1) << 60;
constexpr int64_t kPresent = int64_t(1) << 62, kWriters = kPresent + 1, kDeniers = kPresent + 2, kLoners = kPresent + 3,
                  kMaking = kPresent + 4, kChanging = kPresent + 5, kTransaction = kPresent + 6;

// How an open shares: what it has without a SHARE clause, and the freest that a clause may give it.
struct SharePolicy {
    ShareMode byDefault;
    ShareMode freest;
};

// What is certain while the file is open.
struct ShareHeld {
    bool alone;       // nobody else has it open
    bool noWriters;   // nobody else writes it
    int lockless = 0; // the errno of a file system without locks: nothing keeps others out
};

// Takes the file for an open in this mode. False: in use, or an error; the status is set.
bool takeFile(FCB *fcb, const FIB *fib, int descriptor, SharePolicy policy, ShareHeld *held);

// Gives back what `takeFile` has taken.
void releaseFile(int descriptor);

// A reader admits no writer from now on, whatever it said; false if there is one, or no lock can be
// had.
bool denyWriters(int descriptor);

// One program makes the content of an empty file, others wait that long. Not for OUTPUT, which is
// alone.
void beginMaking(int descriptor);
void endMaking(int descriptor);

// One program at a time changes records in place, of those that may at all; others wait.
void beginChanging(int descriptor);
void endChanging(int descriptor);

// One transaction at a time changes an indexed file. False: another has; it does not wait.
bool lockTransaction(int descriptor);

// The bytes of a transfer, for its time; waits for those of others.
void lockBytes(int descriptor, bool change, uint64_t offset, uint64_t size);
void unlockBytes(int descriptor, uint64_t offset, uint64_t size);

enum class Taken { yes, locked, failed };

// Locks, looks at, and releases the lock of one record, named by any number below 2^60.
Taken lockRecord(int descriptor, uint64_t record);
Taken lookAtLock(int descriptor, uint64_t record);
void unlockRecord(int descriptor, uint64_t record);
void unlockAllRecords(int descriptor);

} // namespace filesystems
