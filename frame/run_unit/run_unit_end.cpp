// The end of a run unit: programs reset, files closed, programs unloaded, streams flushed, storage
// freed, the record back on the free list.
//
// `ru_term` is set for as long as this lasts and keeps every other attempt from starting over. The
// record lives on in the free list, because the jump to the main program's epilogue still goes
// through its buffer.
#include "frame/run_unit/run_unit_end.h"

#include <cstdlib>
#include <unistd.h>

#include "frame/locks.h"
#include "frame/programs/program_table.h"
#include "frame/run_unit.h"
#include "frame/run_unit/run_unit_mutex.h"
#include "frame/signals.h"
#include "frame/storage.h"
#include "frame/streams/stream_sync.h"
#include "frame/trace.h"
#include "frame/upcalls.h"

namespace {

bool hasProgram(const LLE *lle) { return lle && lle->pcb && lle->pcb->ipcb; }

// A program and its nested ones: counts and marks first, then files, since closing one may run code
// that looks at the marks.
template <class Reset>
void forEachElement(IPCB *ipcb, Reset reset)
{
    for (int32_t i = 0; i <= ipcb[0].nested; i++) reset(ipcb[i]);
}

template <class Close>
void forEachFile(IPCB *ipcb, Close close)
{
    forEachElement(ipcb, [&](IPCB &element) {
        for (int32_t i = 0; element.files && i < element.fileCount; i++) {
            FCB *file = element.files[i];
            if (file && zvkFileIsClosing(file)) continue;
            if (file && zvkFileIsOpen(file))
                close(file, &element);
            else if (file)
                zvkForgetFailedOpen(file);
        }
    });
}

void clearMain(PCB *pcb)
{
    if (!pcb) return;
    pcb->flag &= ~ZVK_PCB_MAIN;
    pcb->lle = nullptr;
}

void resetPrograms(HashTable *programs)
{
    for (HashEntry *entry = HashTable_Next(programs, nullptr); entry; entry = HashTable_Next(programs, entry)) {
        LLE *lle = zvkProgramOf(entry);
        if (!hasProgram(lle)) continue;
        IPCB *ipcb = lle->pcb->ipcb;
        forEachElement(ipcb, [](IPCB &element) {
            element.ent = 0;
            element.status &= ~ZVK_IPCB_STATUS_30;
            clearMain(element.pcb);
        });
        forEachFile(ipcb, [](FCB *file, IPCB *element) { zvkCloseFile(file, element, false); });
        // A program that the process keeps loaded is registered anew by its next run unit, with
        // that run unit's record and EXTERNAL files.
        lle->pcb = nullptr;
    }
}

// What this run unit loaded for itself is closed; what the process keeps loaded stays. The load
// flag goes with it, bit 4 survives.
void unloadPrograms(HashTable *programs)
{
    for (HashEntry *entry = HashTable_Next(programs, nullptr); entry; entry = HashTable_Next(programs, entry)) {
        if (entry->parent) continue;
        auto *lle = static_cast<LLE *>(entry->value);
        if (!lle || !lle->load) continue;
        zvkUnloadProgram(lle);
        lle->flags &= ZVK_LLE_SURVIVES;
    }
}

void flushStandardStreams()
{
    if (!_zvkProccom->msgs) zvkSyncStream(stderr);
    if (!_zvkProccom->sysout && !_zvkProccom->conOut) zvkSyncStream(stdout);
}

void emptyTable(HashTable *table, const char *title)
{
    if (!table) return;
    if (zvkTracing() && !HashTable_IsEmpty(table)) {
        fputs(title, stderr);
        HashTable_Dump(table);
    }
    HashTable_Clear(table);
}

void emptyTables(Runcom *runcom)
{
    emptyTable(runcom->externalFiles, "External Files\n");
    emptyTable(runcom->externalVars, "External Variables\n");
    emptyTable(runcom->plle, "External Programs - RunUnit PLLE\n");
    if (zvkTracing() && _zvkProccom->plle && !HashTable_IsEmpty(_zvkProccom->plle)) {
        fputs("External Programs - Global PLLE\n", stderr);
        HashTable_Dump(_zvkProccom->plle);
    }
}

void clearTerm(Runcom *runcom) { runcom->flags &= static_cast<uint8_t>(~ZVK_RUNCOM_RU_TERM); }

void restoreSignals(Runcom *runcom)
{
    if ((_zvkProccom->flags & ZVK_SIGNAL_IN_PROGRESS) || !(runcom->flags & ZVK_RUNCOM_SIG)) return;
    runcom->flags &= static_cast<uint8_t>(~ZVK_RUNCOM_SIG);
    zvkSignalRestore();
}

void releaseEverything(Runcom *runcom)
{
    if (runcom->plle) {
        resetPrograms(runcom->plle);
        unloadPrograms(runcom->plle);
    }
    flushStandardStreams();
    if (_zvkProccom->flags & ZVK_TRACK_STORAGE) zvkTrackedFreeAll();
    emptyTables(runcom);
}

// A host's routines do not come back into the run unit: the process ends when they return.
[[noreturn]] void leaveThrough(ZvkHostRoutine routine, uint64_t token, uint32_t status)
{
    routine(token);
    exit(static_cast<int>(status));
}

} // namespace

void zvkResetMarks(IPCB *ipcb, bool cancelled)
{
    if (!ipcb || ipcb[0].nested < 0) return;
    LLE *lle = ipcb[0].pcb ? ipcb[0].pcb->lle : nullptr;
    forEachElement(ipcb, [&](IPCB &element) {
        element.ent = 0;
        element.status &= ~(ZVK_IPCB_STATUS_30 | ZVK_IPCB_STATUS_31);
        if (!element.pcb) return;
        element.pcb->flag &= ~ZVK_PCB_MAIN;
        if (cancelled) element.pcb->lle = nullptr;
    });
    if (cancelled && lle) lle->pcb = nullptr;
}

void zvkCloseOwnFiles(IPCB *ipcb)
{
    if (!ipcb || ipcb[0].nested < 0) return;
    forEachFile(ipcb, [](FCB *file, IPCB *element) {
        if (!zvkFileIsExternal(file)) zvkCloseFile(file, element, true);
    });
}

void RunUnitTerm(uint32_t reason, uint32_t status)
{
    if (!_zvkProccom) return;
    Runcom *runcom = zvkActingRuncom();
    if (!runcom) return;
    ZVK_TRACE("RunUnitTerm: PID %d Proccom @%p Runcom @%p  PLLE @%p  reason=%d  signal=%u  abort=%u  stop=@%p  "
              "abrt=@%p  jmp=@%p  txmn=%d  "
              "ru_term %d\n",
              _zvkProccom->pid, static_cast<void *>(_zvkProccom), static_cast<void *>(runcom),
              static_cast<void *>(runcom->plle), reason, (_zvkProccom->flags & ZVK_SIGNAL_IN_PROGRESS) != 0,
              (_zvkProccom->flags & ZVK_ABORT_IN_PROGRESS) != 0, reinterpret_cast<void *>(runcom->stop),
              reinterpret_cast<void *>(runcom->abrt), static_cast<void *>(runcom->jmp), _zvkProccom->txmn,
              (runcom->flags & ZVK_RUNCOM_RU_TERM) != 0);
    runcom->flags |= ZVK_RUNCOM_RU_TERM;
    bool locked = !zvkSingleThreaded();
    if (locked) zvkEnterRunUnitMutex();
    // With no current run unit the mutex stays held and ru_term set, on purpose: the process is
    // beyond its last run unit.
    if (!_zvkProccom->runcom) return;

    releaseEverything(runcom);
    if (locked) zvkLeaveRunUnitMutex();
    _zvkProccom->abortHook = nullptr;

    ZvkHostRoutine stop = runcom->stop, abrt = runcom->abrt;
    uint64_t token = runcom->token;
    if (_zvkProccom->txmn) {
        _zvkProccom->txmn--;
        runcom->msg = nullptr;
    }
    Runcom *parent = runcom->parent;
    runcom->link = _zvkProccom->freeru;
    _zvkProccom->freeru = runcom;
    _zvkProccom->runcom = parent;
    if (parent) {
        runcom->parent = nullptr;
        ZvkTracedName name(parent->main);
        ZVK_TRACE("RunUnitTerm: %p Resuming prior Run Unit... PID %d Proccom @%p Runcom @@%p txmn %d  Name: %*.*s\n",
                  static_cast<void *>(runcom), _zvkProccom->pid, static_cast<void *>(_zvkProccom),
                  static_cast<void *>(parent), _zvkProccom->txmn, ZVK_NAME_ARGS(name));
    } else if (reason == kEndUnload) {
        restoreSignals(runcom); // no handler may outlive its code
        clearTerm(runcom);
        ZVK_TRACE("RunUnitTerm: %p returning due to Fini\n", static_cast<void *>(runcom));
        return;
    } else if (reason == kEndRuntime) {
        // TermCobolRte called us and goes on itself; there is no run unit left to end.
    } else if (_zvkProccom->cache != 1) {
        _zvk_cpm_destroy();
    }
    restoreSignals(runcom);
    clearTerm(runcom);
    if (reason <= kEndRuntime) {
        ZVK_TRACE("RunUnitTerm: %p returning due to <= COBOLterm\n", static_cast<void *>(runcom));
        return;
    }
    if (reason == kEndAbort && abrt) leaveThrough(abrt, token, status);
    if (stop) leaveThrough(stop, token, status);
    ZVK_TRACE("RunUnitTerm: returning due to %d\n", reason);
}
