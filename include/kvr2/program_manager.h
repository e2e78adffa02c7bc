/**
 * The program manager: dynamic CALL and CANCEL, and the cache of loaded programs.
 *
 * A program called by name is looked for in the caller's own table of bound programs, in the run
 * unit's program table, in the process-wide table of programs kept loaded, and then as a shared
 * object: in each directory of `COBPATH` (default "."), as NAME and NAME.so, then by the system's
 * search rules. In a shared object the entry is the symbol of the program's name, else "main", else
 * "_start".
 *
 * Environment: `COBPATH`; `COBOL_CPM_CACHE` (1, y, t, e, a, s, on: keep programs loaded between run
 * units; 0, n, f, d, off: do not; otherwise the second run unit of a process turns it on);
 * `COB_CPM_SIZE_MAX` (zero: off, nonzero: on, if COBOL_CPM_CACHE is unset); `CPM_CACHE` (set: on).
 */
#ifndef KVR2_PROGRAM_MANAGER_H
#define KVR2_PROGRAM_MANAGER_H

#include "kvr2/run_unit.h"

ZVK_BEGIN_DECLS

/**
 * The dynamic CALL: turns the name in a data item into the address of a program, loading it if need
 * be.
 *
 * The name is cut at 160 bytes; trailing blanks and zero bytes do not count. A name in `names` is
 * answered from `entries` at once.
 *
 * @param names     the caller's bound programs: int32 count; per program three int32: index into
 *                  the caller's IPCB array from 1, length of the
 *                  name, offset of the name counted from the end of these rows; then the names. May be null
 * @param length    bytes of `name`
 * @param name      the data item; not terminated
 * @param caller    the calling program; ZVK_PCB_FOLD_NAMES in its flag folds the name to upper case
 * @param entries   addresses parallel to the rows of `names`
 * @param failures  nonzero on entry if the CALL has an ON EXCEPTION phrase: a failure then adds 1
 *                  and is not reported
 * @return for a name in `names` the value of `entries`; otherwise two words in this thread's
 *         scratch: the entry address, 0 after a failure, and 0.
 *         The words live until this thread's next call that returns scratch
 * @messages 96 with the cause: blank name, not found, no entry point, no storage
 * @threads any; two threads that call the same new program load it once
 */
ZVK_EXPORT uint64_t *_zvkDynLd(int32_t *names, int64_t length, uint8_t *name, PCB *caller, uint64_t *entries,
                               uint32_t *failures);

/**
 * Reads `COBOL_CPM_CACHE` and `COB_CPM_SIZE_MAX` into `Proccom.cache`. Called at the runtime's
 * start.
 * @return 0 without a runtime, else the cache mode: 0 off, 1 on, 2 decided by the second run unit
 */
ZVK_EXPORT uint32_t _zvk_cpm_create(void);

/**
 * Unloads all programs of the process-wide table; while a run unit is active their entries stay,
 * without an address. Keeps caching as it is.
 */
ZVK_EXPORT void _zvk_cpm_destroy(void);

/**
 * Keeps programs loaded between run units from now on (also `ZVK_CPM_ENABLE`), in this process and
 * in those that it starts.
 */
ZVK_EXPORT void _zvk_cpm_enable(void);
ZVK_EXPORT void ZVK_CPM_ENABLE(void);

/**
 * Unloads all programs that were kept and keeps none from now on (also `ZVK_CPM_DISABLE`), in this
 * process and in those that it starts.
 */
ZVK_EXPORT void _zvk_cpm_disable(void);
ZVK_EXPORT void ZVK_CPM_DISABLE(void);

/**
 * Unloads one program that was kept (also `ZVK_CPM_UNLOAD`). Nothing of it may be running.
 * @param name  terminated
 * @return 1 if the process-wide table has it, else 0
 */
ZVK_EXPORT int32_t _zvk_cpm_unload(const char *name);
ZVK_EXPORT int32_t ZVK_CPM_UNLOAD(const char *name);

/** As `_zvk_cpm_destroy` (also `ZVK_CPM_UNLOAD_ALL`). */
ZVK_EXPORT void _zvk_cpm_unload_all(void);
ZVK_EXPORT void ZVK_CPM_UNLOAD_ALL(void);

/**
 * Prints on stderr whether COBOL is active and the statistics of the process-wide table (also
 * `ZVK_CPM_STATS`).
 */
ZVK_EXPORT void _zvk_cpm_stats(void);
ZVK_EXPORT void ZVK_CPM_STATS(void);

/** `_zvk_cpm_stats` and the table's contents. */
ZVK_EXPORT void _zvk_cpm_print(void);

ZVK_END_DECLS

#endif
