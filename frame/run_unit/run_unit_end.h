// The end of run units and of the runtime, for the entries in termination.cpp, the signal routine
// and the library's destructor.
#pragma once

#include <cstdint>

#include "kvr2/run_unit.h"

// Why a run unit ends. Numbers above 5 are seen in traces only, but for the destructor's.
enum ZvkEndReason : uint32_t {
    kEndMainReturned = 0,
    kEndRuntime = 2,
    kEndStopRun = 3,
    kEndHost = 4,
    kEndAbort = 5,
    kEndUnload = 6,
    kTraceTaskExit = 1001,
    kTraceTaskCancel = 1002
};

// Ends the acting run unit. `status` is the process's exit status after a host's stop or abort
// routine.
void RunUnitTerm(uint32_t reason, uint32_t status);

// Ends the process by SIGABRT, whatever the program has made of that signal.
[[noreturn]] void zvkEndByAbort();

// Ends all run units and the runtime, and frees Proccom.
void TermCobolRte(uint32_t reason);

// Resets one program, in two steps: its marks, under the lock that guards them, then its files. A
// CLOSE may run a USE procedure that enters programs, so no lock is held over it. At CANCEL the
// program is also forgotten by the run unit, so that its next CALL registers it anew.
void zvkResetMarks(IPCB *ipcb, bool cancelled);
void zvkCloseOwnFiles(IPCB *ipcb);

// Makes a core file: 1 made, 0 not.
uint32_t zvkMakeCore();

// Sets the soft core limit to 0, so that no second core file is written.
void zvkForbidCore();

// The trace line that every attempt at a core file has.
void zvkTraceCore();

// Whether the options ask for core files.
inline bool zvkWantsCore() { return _zvkProccom->runtimeOptions & (ZVK_OPTION_TRAP_CORE | ZVK_OPTION_TRAP_DUMP); }
