// The entries that end a program or a run unit in an orderly way: return of the main program, STOP
// RUN, a host's and a monitor's calls, CANCEL.
#include "kvr2/termination.h"
#include "base/environment.h"

#include <csetjmp>
#include <cstdio>
#include <cstdlib>
#include <unistd.h>

#include "frame/locks.h"
#include "frame/programs/bound_names.h"
#include "frame/programs/program_table.h"
#include "frame/run_unit.h"
#include "frame/run_unit/run_unit_end.h"
#include "frame/trace.h"

namespace {

bool ending(const Runcom *runcom) { return runcom && (runcom->flags & ZVK_RUNCOM_RU_TERM); }

int signalFlag() { return (_zvkProccom->flags & ZVK_SIGNAL_IN_PROGRESS) != 0; }
int abortFlag() { return (_zvkProccom->flags & ZVK_ABORT_IN_PROGRESS) != 0; }

} // namespace

void _zvkPgmTerm(PCB *pcb)
{
    if (!_zvkProccom) return;
    // Taken under a monitor too, unlike at entry.
    zvkLock(&enterMutex);
    Runcom *runcom = zvkActingRuncom();
    zvkCountExit(&pcb->ipcb->ent, runcom);
    bool isMain = (pcb->flag & ZVK_PCB_MAIN) && pcb->ipcb->ent == 0;
    if (isMain) {
        pcb->lle = nullptr;
        pcb->flag &= ~ZVK_PCB_MAIN;
    }
    zvkUnlock(&enterMutex);

    ZvkTracedName name(pcb);
    int ruTerm = ending(runcom);
    void *jmp = runcom ? static_cast<void *>(runcom->jmp) : nullptr;
    ZVK_TRACE("_zvkPgmTerm: PID %d Proccom @%p Runcom @@%p  main=%d  name=%*.*s jmp=@%p txmn=%d ru_term %u\n",
              _zvkProccom->pid, static_cast<void *>(_zvkProccom), static_cast<void *>(runcom), isMain,
              ZVK_NAME_ARGS(name), jmp, _zvkProccom->txmn, static_cast<unsigned>(ruTerm));
    if (ruTerm) {
        ZVK_TRACE("_zvkPgmTerm: no-op, return to COBOL epilogue of %*.*s ru_term %d\n", ZVK_NAME_ARGS(name), ruTerm);
        return;
    }
    if (!isMain) {
        ZVK_TRACE("_zvkPgmTerm: return to COBOL epilogue of %*.*s run unit @%p  ru_term %d\n", ZVK_NAME_ARGS(name),
                  static_cast<void *>(runcom), ruTerm);
        return;
    }
    RunUnitTerm(kEndMainReturned, 255);
    ZVK_TRACE("_zvkPgmTerm: %p return to COBOL epilogue of %*.*s ru_term %d\n", static_cast<void *>(runcom),
              ZVK_NAME_ARGS(name), ending(runcom));
}

void _zvkRunUnitTerm(int32_t status)
{
    Runcom *runcom = zvkActingRuncom();
    if (!runcom) return;
    const PCB *main = runcom->main;
    ZvkTracedName name(main);
    int ruTerm = ending(runcom);
    ZVK_TRACE("_zvkRunUnitTerm: PID %d Proccom @%p  Runcom @%p  reason=%d  stop=0%p jmp=@%p txmn %d ru_term %d\n",
              _zvkProccom->pid, static_cast<void *>(_zvkProccom), static_cast<void *>(runcom), kEndStopRun,
              reinterpret_cast<void *>(runcom->stop), static_cast<void *>(runcom->jmp), _zvkProccom->txmn, ruTerm);
    if (ruTerm) {
        ZVK_TRACE("_zvkRunUnitTerm: no-op, siglongjmp() to COBOL epilogue of %*.*s via @%p  run unit @%p\n",
                  ZVK_NAME_ARGS(name), static_cast<void *>(runcom->jmp), static_cast<void *>(runcom));
        siglongjmp(runcom->jmp, status);
    }
    RunUnitTerm(kEndStopRun, static_cast<uint32_t>(status));
    // The record is on the free list now, and its buffer still good.
    if (zvkHasProgram(main))
        ZVK_TRACE("_zvkRunUnitTerm: siglongjmp() to COBOL epilogue of %*.*s via @%p  run unit @%p\n",
                  ZVK_NAME_ARGS(name), static_cast<void *>(runcom->jmp), static_cast<void *>(runcom));
    else
        ZVK_TRACE("_zvkRunUnitTerm: siglongjmp() to current wrapper stub via %p  run unit @%p\n",
                  static_cast<void *>(runcom->jmp), static_cast<void *>(runcom));
    siglongjmp(runcom->jmp, status ? status : 255);
}

void _zvkCleanUp(void)
{
    Runcom *runcom = zvkActingRuncom();
    if (!runcom) return;
    ZVK_TRACE("_zvkCleanUp: PID %d Proccom @%p  Runcom @%p  signal=%u  abort=%u\n", _zvkProccom->pid,
              static_cast<void *>(_zvkProccom), static_cast<void *>(runcom), signalFlag(), abortFlag());
    if (ending(runcom)) {
        ZVK_TRACE("_zvkCleanup: no-op, return to caller,  run unit @%p\n", static_cast<void *>(runcom));
        return;
    }
    _zvkProccom->flags |= ZVK_ABORT_IN_PROGRESS;
    RunUnitTerm(kEndHost, 6);
    ZVK_TRACE("_zvkCleanup: done, return to caller,  run unit @%p\n", static_cast<void *>(runcom));
}

void _zvkCOBOLTerm(uint32_t function, uint32_t *rc)
{
    *rc = 0;
    if (!_zvkProccom) return;
    if (function != 1 && function != 9) {
        *rc = 1;
        return;
    }
    Runcom *runcom = zvkActingRuncom();
    ZVK_TRACE("_zvkCOBOLTerm: PID %d Proccom @%p  Runcom @%p  signal=%u  abort=%u\n", _zvkProccom->pid,
              static_cast<void *>(_zvkProccom), static_cast<void *>(runcom), signalFlag(), abortFlag());
    if (runcom && !ending(runcom)) {
        runcom->stop = nullptr; // so that control comes back here, to the host
        runcom->token = 0;
        RunUnitTerm(function == 1 ? kEndStopRun : kEndHost, 19);
    }
    if (function == 1) TermCobolRte(kEndRuntime);
}

extern "C" void ZVKCOBOLTERM(uint32_t, uint32_t *) __attribute__((alias("_zvkCOBOLTerm")));

// The monitor's two ways of ending a task differ in their names and in what they call.
static void endTask(const char *who, uint32_t traceReason, void (*end)())
{
    if (!_zvkProccom) {
        // There is no trace switch without a Proccom, so this line shows under the environment
        // variable alone.
        if (environmentValue("__ZVKDEBUG"))
            fprintf(stderr, "%s: PID %d Proccom @%p Runcom @%p txmn %d\n", who, getpid(), nullptr, nullptr, 0);
        return;
    }
    Runcom *runcom = zvkActingRuncom();
    ZVK_TRACE("%s: PID %d Proccom @%p Runcom @%p txmn %d reason=%d\n", who, _zvkProccom->pid,
              static_cast<void *>(_zvkProccom), static_cast<void *>(runcom), _zvkProccom->txmn, traceReason);
    bool tracing = zvkTracing();
    if (!ending(runcom)) end();
    if (tracing) fprintf(stderr, "%s: return to TXMN\n", who);
}

void _zvk_cpm_exit(void)
{
    endTask("_zvk_cpm_exit", kTraceTaskExit, [] { _zvkRunUnitTerm(1); });
}

void _zvk_cpm_cancel(void) { endTask("_zvk_cpm_cancel", kTraceTaskCancel, _zvkCleanUp); }

// The program that a CANCEL names, or null: bound in the caller, or known to the run unit.
static IPCB *programToCancel(int32_t *names, const char *text, uint32_t length, PCB *caller)
{
    int32_t row = zvkBoundNameRow(names, text, length);
    if (row >= 0) return &caller->ipcb[zvkBoundNameElement(names, row) - 1];
    HashState state{};
    bool locked = false;
    HashEntry *found = zvkFindProgram(text, length, &state, &locked, caller, "CANCEL");
    if (locked) zvkUnlockPrograms();
    LLE *lle = found ? zvkProgramOf(found) : nullptr;
    return lle && lle->pcb ? lle->pcb->ipcb : nullptr;
}

int32_t _zvkCancel(int32_t *names, int64_t length, uint8_t *name, PCB *caller)
{
    char text[ZVK_CALL_NAME_MAX + 1];
    uint32_t textLength = zvkCallNameLength(name, length);
    if (!textLength) return 0;
    zvkCopyCallName(name, textLength, caller, text);
    IPCB *ipcb = programToCancel(names, text, textLength, caller);
    if (!ipcb) return 0;
    {
        ZvkGuard guard(&enterMutex);
        if (ipcb->ent >= 1) return 1;
        zvkResetMarks(ipcb, true);
    }
    zvkCloseOwnFiles(ipcb);
    return 0;
}

void _zvkCloseReset(int32_t *ipcb)
{
    auto *program = reinterpret_cast<IPCB *>(ipcb);
    zvkResetMarks(program, false);
    zvkCloseOwnFiles(program);
}
