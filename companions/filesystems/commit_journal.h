// The journal of a commit that is not LMDB's alone: several files, or a relative one.
//
//     NAME.kvr2-commit of the first file: a mark, a sum, then for each file its kind, its name and
//         the changes in order; complete and on the disk, it is the decision
//     NAME.kvr2-commit of every other file: the name of the first one's
//
// The names are there before the decision, and go before it. Who commits holds a lock on the
// decision (flock, which ends with the process). Who meets NAME.kvr2-commit, at OPEN or at a verb
// of a file that it has open, waits for that lock; if the journal is still there then, its maker
// was killed: a complete one is brought into all its files, another one is removed, and the file is
// as before.
//
// The changes of an indexed file must not be made twice: its store keeps the number of the last
// journal that was brought in, in the same LMDB transaction. Slots may be written twice.
#pragma once

#include <cstddef>
#include <cstdint>

#include "companions/filesystems/slot_changes.h"

namespace filesystems {

// What a file changes in a commit.
struct JournalPart {
    const char *name; // of the file itself, absolute
    bool indexed;
    const uint8_t *changes; // indexed: a byte (1 put, 2 erase), four bytes of length, record or primary key
    size_t size;
    const SlotChanges *slots; // relative
};

struct CommitJournal {
    int descriptor;
    uint64_t number;
    char name[4096];
};

// Names first: makes the journal of the first part, locks it, and writes the others'. 0 or an
// errno, and nothing is left.
int beginJournal(CommitJournal *journal, const JournalPart *parts, size_t count);
// The decision. 0 or an errno; after an error nothing is decided, and `endJournal` takes it away.
int decide(CommitJournal *journal, const JournalPart *parts, size_t count, bool force);
void endJournal(CommitJournal *journal, const JournalPart *parts, size_t count);

// Is there a journal that concerns this file?
bool hasJournal(const char *name);
// Waits for its maker, or brings it to its end; 0, an errno or an error of LMDB.
int settleJournal(const char *name);

// The slots of a transaction into a relative file that nobody reads meanwhile; 0 or an errno.
int writeSlots(int descriptor, const SlotChanges &slots);

} // namespace filesystems
