// The program tables: which programs a run unit knows (`Runcom.plle`) and which the process keeps
// loaded (`Proccom.plle`).
//
// Both map a program's name to an LLE. The run unit's table has the process-wide one as its parent,
// so that a lookup falls through; an entry that was found there is a local reference to the
// parent's entry. The process-wide table exists while programs are cached and keeps its entries in
// the order of their use.
#pragma once

#include "frame/run_unit.h"
#include "kvr2/hash_table.h"
#include "kvr2/program_manager.h"

// A run unit's table, looking through to the process-wide one; null without storage.
HashTable *zvkNewProgramTable();

// Turns caching on and makes the process-wide table, if there is none yet; every run unit's table
// looks through to it from then on.
void zvkStartProgramCache();

// programMutex, unless the process counts as single-threaded; true if it was taken.
bool zvkLockPrograms();
void zvkUnlockPrograms();

// Looks a program up in the current run unit's table, then through to the process-wide one. When it
// is not found the state is ready for zvkAddProgram, and programMutex stays held if *lockHeld comes
// back true, so that lookup and insert are one step.
HashEntry *zvkFindProgram(const char *name, uint32_t length, HashState *state, bool *lockHeld, const PCB *caller,
                          const char *verb);

enum ZvkAddProgram {
    ZVK_ADD_LOCAL = 0,    // in the run unit's table
    ZVK_ADD_PROCESS = 1,  // in the process-wide table too, if there is one
    ZVK_ADD_DUPLICATE = 2 // in the run unit's table, beside another program of the same name
};

// Adds a copy of an LLE; its name then points to the entry's own copy. `state` from the failed
// lookup, or null. Null without storage.
HashEntry *zvkAddProgram(const LLE *lle, HashState *state, ZvkAddProgram where);

// The LLE of an entry, whether it owns it or refers to the parent table's.
inline LLE *zvkProgramOf(const HashEntry *entry)
{
    return static_cast<LLE *>(entry->parent ? entry->parent->value : entry->value);
}

// Forgets what was loaded and closes it, if the program manager loaded it.
void zvkUnloadProgram(LLE *lle);

// What the loader said of an object that is there and was refused; empty for one that is not there.
struct ZvkRefusal {
    char text[600];
};

// Finds and loads a program by its name: 0 loaded, 3 no memory, 5 or 7 not found or refused, 1
// loaded but broken.
int zvkLoadProgram(LLE *lle, ZvkRefusal *refusal);
