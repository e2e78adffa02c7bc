// Program entry and exit: what a compiled program's prologue and epilogue call.
//
// The first entry of a program in a run unit registers it: its name goes into the run unit's
// program table, its PCB learns where the UPSI switches are, its files are made known and a year
// window becomes a base year. Every entry counts. Later entries take one mutex only, since a batch
// program enters its subprograms millions of times.
#include <cstdlib>
#include <cstring>
#include <ctime>

#include "frame/locks.h"
#include "frame/message_calls.h"
#include "frame/programs/program_table.h"
#include "frame/run_unit.h"
#include "frame/run_unit/run_unit_mutex.h"
#include "frame/trace.h"
#include "frame/upcalls.h"

namespace {

constexpr uint8_t kYearWindows[3] = {2, 2, 0};  // compilers from this version on know year windows
constexpr uint8_t kProgramWords[3] = {5, 1, 1}; // and from this on the program word

bool atLeast(const PCB *pcb, const uint8_t (&version)[3]) { return memcmp(pcb->version, version, 3) >= 0; }

bool runtimeStarted() { return _zvkProccom && _zvkProccom->programOptions; }

bool haveRunUnitWithMain() { return _zvkProccom->runcom && _zvkProccom->runcom->main; }

void count(int32_t *entries)
{
    ++*entries;
    if (Runcom *runcom = zvkCurrentRuncom()) runcom->active++;
}

void enter(PCB *pcb)
{
    if (pcb->flag & ZVK_PCB_ENTER_LOCKED) {
        _zvkPgmEnterLock(&pcb->ipcb->ent);
        return;
    }
    ZvkGuard guard(&enterMutex);
    count(&pcb->ipcb->ent);
}

// Several threads may enter programs at once.
void setFirstEntry(uint32_t value) { __atomic_store_n(&_zvkProccom->firstEntry, value, __ATOMIC_RELAXED); }

// Makes sure that the runtime runs and a run unit with a main program is active.
void ensureRunUnit(PCB *pcb)
{
    RunUnitMutexGuard guard;
    if (runtimeStarted()) {
        setFirstEntry(1);
    } else {
        InitCobolRte(pcb);
        if (!_zvkProccom) return;
        zvkRearmRunUnitMutex();
        setFirstEntry(_zvkProccom->txmn ? 0 : 1);
    }
    // A run unit that a host made for itself keeps its wrapper stub: programs come and go in it,
    // and none of them ends it. A run unit that begins with this entry has this program as its
    // main, also where a host started the runtime: the program's end has to end it.
    if (haveRunUnitWithMain()) return;
    if (!_zvkProccom->runcom) RunUnitInit(pcb);
    if (!_zvkProccom->runcom) return;
    _zvkProccom->runcom->main = pcb;
    pcb->flag |= ZVK_PCB_MAIN;
}

// The year of the clock, as FUNCTION CURRENT-DATE tells it.
void readCurrentYear()
{
    time_t now = time(nullptr);
    struct tm parts;
    char date[32] = "";
    if (localtime_r(&now, &parts)) strftime(date, sizeof date, "%Y%m%d%H%M%S", &parts);
    ZVK_TRACE("current date %s\n", date);
    date[4] = 0;
    _zvkProccom->currentYear = static_cast<uint32_t>(atoi(date));
    ZVK_TRACE("current year %d\n", _zvkProccom->currentYear);
}

// A window given as an offset becomes a base year; a base year is checked for a window that has
// passed. Messages 240 and 241.
void resolveYearWindow(PCB *pcb)
{
    if (pcb->yearWindow == ZVK_NO_YEAR_WINDOW || !atLeast(pcb, kYearWindows)) return;
    readCurrentYear();
    char name[161];
    snprintf(name, sizeof name, "%.*s", static_cast<int>(pcb->nameLength), pcb->name);
    auto year = static_cast<int64_t>(_zvkProccom->currentYear);
    int64_t window = pcb->yearWindow;
    if (window < 0) {
        int64_t base = year + window;
        ZVK_TRACE("curr year %d  base %d\n", static_cast<int>(year), static_cast<int>(base));
        if (base < 1900 || base > 2099)
            msg::badYearWindow(name, static_cast<int32_t>(window), static_cast<int32_t>(base));
        else
            pcb->yearWindow = static_cast<int32_t>(base);
        return;
    }
    ZVK_TRACE("curr year %d  base %d\n", static_cast<int>(year), static_cast<int>(window));
    if (year > window + 100)
        msg::yearWindowPast(static_cast<int32_t>(window), static_cast<int32_t>(window + 100), name);
}

// What a registration sets up, with programMutex held. False without storage.
bool introduce(PCB *pcb, LLE *lle)
{
    constexpr uint32_t optionBits = ZVK_OPTION_CHECK | ZVK_OPTION_DEBUG;
    pcb->flag = (pcb->flag & ~optionBits) | (_zvkProccom->programOptions & optionBits);
    pcb->upsi = _zvkProccom->runcom->upsi;
    if (atLeast(pcb, kProgramWords)) pcb->pgmWord = &_zvkProccom->pgmWord;
    lle->pcb = pcb;
    pcb->ipcb->pcb = pcb;
    return pcb->ipcb->fileCount <= 0 || zvkRegisterFiles(pcb->ipcb->fileCount, pcb->ipcb->files, pcb->fibs);
}

// What a registration may complain about. A complaint may end the run unit, or call a host's
// routine that enters programs, so it is made when no mutex is held any more.
void examine(PCB *pcb)
{
    if (pcb->ipcb->fileCount > 0) zvkCheckFiles(pcb->ipcb->fileCount, pcb->ipcb->files, pcb->fibs, pcb);
    resolveYearWindow(pcb);
}

// The entry of the program in the run unit's table: found, or made in the same step, with
// programMutex held over both. Null without storage.
LLE *findOrAdd(PCB *pcb, bool &locked)
{
    HashState state{};
    IPCB *ipcb = pcb->ipcb;
    HashEntry *found = zvkFindProgram(pcb->name, pcb->nameLength, &state, &locked, pcb, "");
    if (found) {
        LLE *lle = zvkProgramOf(found);
        if (!lle->entry || lle->entry == ipcb->entry) {
            lle->ipcb = ipcb;
            return lle;
        }
        locked = zvkLockPrograms(); // another program of the same name: it gets an entry of its own
    }
    LLE lle{};
    lle.ipcb = ipcb;
    lle.name = pcb->name;
    lle.nameLength = pcb->nameLength;
    lle.entry = ipcb->entry;
    HashEntry *added = zvkAddProgram(&lle, found ? nullptr : &state, found ? ZVK_ADD_DUPLICATE : ZVK_ADD_LOCAL);
    return added ? zvkProgramOf(added) : nullptr;
}

void registerProgram(PCB *pcb)
{
    bool locked = false, fresh = false, stored = false;
    if (LLE *lle = findOrAdd(pcb, locked)) {
        fresh = !lle->pcb;
        stored = !fresh || introduce(pcb, lle);
        pcb->lle = lle;
    }
    if (locked) zvkUnlockPrograms();
    if (!stored) zvkNoStorage();
    if (fresh) examine(pcb);
}

} // namespace

void _zvkPgmInit(PCB *pcb)
{
    // A later entry while all is set up needs no more than the count. What this looks at changes
    // only when a run unit starts or ends, which a program that is being entered cannot overlap.
    if (__builtin_expect(pcb->lle && runtimeStarted() && !_zvkProccom->debug && haveRunUnitWithMain(), true)) {
        setFirstEntry(1);
        enter(pcb);
        return;
    }
    ensureRunUnit(pcb);
    Runcom *runcom = zvkCurrentRuncom();
    if (!runcom) return; // no storage, and the message came back
    ZvkTracedName name(pcb);
    ZVK_TRACE("_zvkPgmInit: PID %d Proccom @%p Runcom @%p  sig %d  PLLE @%p  Main=@%p  Name=%*.*s\n", _zvkProccom->pid,
              static_cast<void *>(_zvkProccom), static_cast<void *>(runcom), runcom->flags & ZVK_RUNCOM_SIG,
              static_cast<void *>(runcom->plle), static_cast<void *>(runcom->main), ZVK_NAME_ARGS(name));
    if (pcb->lle)
        ZVK_TRACE("_zvkPgmInit: subsequent usage PCB %p  PLLE %p\n", static_cast<void *>(pcb),
                  static_cast<void *>(runcom->plle));
    else
        registerProgram(pcb);
    enter(pcb);
}

void _zvkPgmEnterLock(int32_t *ipcb)
{
    zvkLock(&enterMutex);
    count(ipcb);
}

void _zvkPgmEnterUnlock(void) { zvkUnlock(&enterMutex); }

void _zvkPgmExit(int32_t *ipcb)
{
    ZvkGuard guard(&enterMutex);
    zvkCountExit(ipcb, zvkCurrentOrFreeRuncom());
}

void *_zvkGetJmpBuffer(void)
{
    Runcom *runcom = zvkCurrentOrFreeRuncom();
    if (!runcom) return nullptr;
    ZvkTracedName name(runcom->main);
    if (runcom->main)
        ZVK_TRACE("_zvkGetJmpBuffer: returning jmp_buf (%p) for current run unit (%*.*s) %p\n",
                  static_cast<void *>(runcom->jmp), ZVK_NAME_ARGS(name), static_cast<void *>(runcom));
    else
        ZVK_TRACE("_zvkGetJmpBuffer: returning jmp_buf (%p) for current run unit wrapper stub %p\n",
                  static_cast<void *>(runcom->jmp), static_cast<void *>(runcom));
    return runcom->jmp;
}
