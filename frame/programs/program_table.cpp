// The program tables; see program_table.h.
#include "frame/programs/program_table.h"

#include <cstdio>

#include "frame/locks.h"
#include "frame/messages.h"
#include "frame/trace.h"

namespace {

void printProgram(uint64_t, const HashEntry *entry)
{
    const LLE *lle = zvkProgramOf(entry);
    fprintf(stderr, "\tName: %.*s\n\tLLE:  %p load %p entry %p pcb %p ipcb %p flags 0x%x%s\n",
            static_cast<int>(entry->keyLength), static_cast<const char *>(entry->key), static_cast<const void *>(lle),
            lle->load, reinterpret_cast<void *>(lle->entry), static_cast<const void *>(lle->pcb),
            static_cast<const void *>(lle->ipcb), lle->flags, entry->parent ? " (cached)" : "");
}

// All run units, active ones and free ones, look through to the process-wide table from now on.
void linkRunUnits(HashTable *parent)
{
    for (Runcom *runcom = _zvkProccom->runcom; runcom; runcom = runcom->parent)
        if (runcom->plle) runcom->plle->parent = parent;
    for (Runcom *runcom = _zvkProccom->freeru; runcom; runcom = runcom->link)
        if (runcom->plle) runcom->plle->parent = parent;
}

} // namespace

HashTable *zvkNewProgramTable()
{
    HashParams params{};
    params.parent = _zvkProccom->plle;
    params.print = printProgram;
    return HashTable_Create(&params);
}

void zvkStartProgramCache()
{
    _zvkProccom->cache = 1;
    if (_zvkProccom->plle) return;
    HashParams params{};
    params.print = printProgram;
    params.flags = ZVK_HASH_MRU;
    _zvkProccom->plle = HashTable_Create(&params);
    if (!_zvkProccom->plle) {
        zvkNoStorage();
        return;
    }
    linkRunUnits(_zvkProccom->plle);
}

bool zvkLockPrograms()
{
    if (zvkSingleThreaded()) return false;
    zvkLock(&programMutex);
    return true;
}

void zvkUnlockPrograms() { zvkUnlock(&programMutex); }

HashEntry *zvkFindProgram(const char *name, uint32_t length, HashState *state, bool *lockHeld, const PCB *caller,
                          const char *verb)
{
    Runcom *runcom = zvkCurrentRuncom();
    *lockHeld = false;
    if (!runcom || !runcom->plle) return nullptr;
    if (*verb) {
        ZvkTracedName callerName(caller);
        ZVK_TRACE("_zvk_cpm: %s %.*s from %*.*s\n", verb, static_cast<int>(length), name, ZVK_NAME_ARGS(callerName));
    }
    bool locked = zvkLockPrograms();
    HashEntry *found = HashTable_Find(runcom->plle, state, name, length, 1, 1);
    if (found && locked) zvkUnlockPrograms();
    *lockHeld = !found && locked;
    return found;
}

HashEntry *zvkAddProgram(const LLE *lle, HashState *state, ZvkAddProgram where)
{
    Runcom *runcom = zvkCurrentRuncom();
    if (!runcom || !runcom->plle) return nullptr;
    HashEntry *entry = HashTable_Insert(runcom->plle, state, lle->name, lle->nameLength, lle, sizeof *lle,
                                        where == ZVK_ADD_DUPLICATE, where == ZVK_ADD_PROCESS);
    if (!entry) return nullptr;
    // The caller's copy of the name may go; the entry's stays as long as the LLE.
    HashEntry *owner = entry->parent ? entry->parent : entry;
    zvkProgramOf(entry)->name = static_cast<const char *>(owner->key);
    return entry;
}
