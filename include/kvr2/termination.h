/**
 * The ways in which a run unit ends: return of the main program, STOP RUN, a host's call, CANCEL of
 * one program, and abort after a failure.
 *
 * All of them close files, free EXTERNAL data, unload programs and give the run-unit record back.
 * While that is under way, a further attempt to end the same run unit does nothing but go on to
 * where it was headed.
 */
#ifndef KVR2_TERMINATION_H
#define KVR2_TERMINATION_H

#include "kvr2/run_unit.h"

ZVK_BEGIN_DECLS

/**
 * Exit of a program at the end of its run or at GOBACK. The main program's last exit ends the run
 * unit.
 * @param pcb  the program
 * @threads any; the entry counts are taken under the entry mutex
 */
ZVK_EXPORT void _zvkPgmTerm(PCB *pcb);

/**
 * STOP RUN: ends the run unit and jumps to the main program's epilogue through the buffer of
 * `_zvkGetJmpBuffer`, which must be armed. Does not return to its caller, except without a runtime.
 *
 * @param status  the value that `sigsetjmp` returns there; 0 becomes 255. A host's stop routine is
 *                followed by `exit(status)`
 */
ZVK_EXPORT void _zvkRunUnitTerm(int32_t status);

/**
 * A host ends the run unit after a failure of its own (exit status 6 if its stop routine returns);
 * returns.
 */
ZVK_EXPORT void _zvkCleanUp(void);

/**
 * A host ends the run unit (also `ZVKCOBOLTERM`); its stop routine is not called.
 * @param function  1: end the whole runtime too; 9: the run unit only; any other: `*rc` = 1 and
 *                  nothing else
 * @param rc        receives 0 or 1
 */
ZVK_EXPORT void _zvkCOBOLTerm(uint32_t function, uint32_t *rc);
ZVK_EXPORT void ZVKCOBOLTERM(uint32_t function, uint32_t *rc);

/**
 * The end after a failure: a core file if the option TRAP asks for one, the end of the runtime,
 * then SIGABRT in the main thread, the thread's end in another, or a jump to the epilogue with 6
 * under a monitor.
 * @param cored  nonzero: a core file exists already
 */
ZVK_EXPORT void _zvkAbort(int32_t cored);

/**
 * Makes a core file of the running process with `/usr/bin/gcore`, named by `COBCORE` (default
 * "core%"), and goes on.
 * @return 1 if one was made, 0 if not (a core size limit of 0 forbids it), `Proccom.txmn` under a
 *         monitor
 */
ZVK_EXPORT uint32_t ZVKDUMP(void);

/** As `ZVKDUMP`, but 0 under a monitor. */
ZVK_EXPORT uint32_t _zvkCore(void);

/**
 * A transaction monitor's end of a task: STOP RUN with status 1, unless the run unit is ending
 * already.
 */
ZVK_EXPORT void _zvk_cpm_exit(void);

/**
 * A transaction monitor's cancel of a task: as `_zvkCleanUp`, unless the run unit is ending
 * already.
 */
ZVK_EXPORT void _zvk_cpm_cancel(void);

/**
 * CANCEL: the program starts afresh at its next CALL.
 *
 * @param names   the caller's bound programs, as for `_zvkDynLd`; may be null
 * @param length  bytes of `name`; as for `_zvkDynLd`
 * @param name    the data item
 * @param caller  the calling program
 * @return 1 if the program is active and was not cancelled, else 0, also for a name that nobody
 *         knows
 */
ZVK_EXPORT int32_t _zvkCancel(int32_t *names, int64_t length, uint8_t *name, PCB *caller);

/**
 * Resets a program to its initial state: entry counts, status bits and open files (not EXTERNAL
 * ones) of it and its nested programs.
 * @param ipcb  the program's IPCB array
 */
ZVK_EXPORT void _zvkCloseReset(int32_t *ipcb);

ZVK_END_DECLS

#endif
