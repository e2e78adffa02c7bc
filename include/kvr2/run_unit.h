/**
 * Run units: the records that compiled programs and the library share, start-up, program entry and
 * exit.
 *
 * A process has one `Proccom`. A run unit, a COBOL main program and everything it calls up to STOP
 * RUN, has one `Runcom`; it is `Proccom.runcom` while it is active and goes to the list
 * `Proccom.freeru` when it has ended, from where the next run unit takes it. All threads of the
 * process share both records.
 *
 * The compiler lays out a `PCB` for each separately compiled program and an array of `IPCB`s for it
 * and the programs nested in it. A compiled program's prologue calls `_zvkPgmInit`, its epilogue
 * `_zvkPgmExit` or `_zvkPgmTerm`:
 *
 * @code
 *     int LEDGER(void)
 *     {
 *         _zvkPgmInit(&pcb);
 *         if ((pcb.flag & ZVK_PCB_MAIN) && ipcb[0].ent == 1 && (rc = sigsetjmp(_zvkGetJmpBuffer(), 1)) != 0)
 *             goto epilogue;                       // STOP RUN, wherever it was, comes back here
 *         ...
 *     epilogue:
 *         _zvkPgmTerm(&pcb);
 *         return rc;
 *     }
 * @endcode
 *
 * Environment: `__ZVKDEBUG` (trace level, read when the library is loaded), `LANG`, `NLSPATH`,
 * `__COBOL_JVC_CONTAINER`, `__COBOL_TXMN_CONTAINER`, `CPM_CACHE` and `COBRTOPT` (read when the
 * runtime starts).
 */
#ifndef KVR2_RUN_UNIT_H
#define KVR2_RUN_UNIT_H

#include <setjmp.h>
#include <stdio.h>

#include "kvr2/export.h"

ZVK_BEGIN_DECLS

struct HashTable;
struct ZvkSignalRow;
struct PCB;
struct TrackedBlock;

/**
 * Rows and columns of a terminal, laid out as the system's `struct winsize`; all zero for a stream
 * that is no terminal.
 */
typedef struct ZvkWindowSize {
    uint16_t rows;
    uint16_t columns;
    uint16_t xPixels;
    uint16_t yPixels;
} ZvkWindowSize;

/**
 * A host's message routine: exit indication, facility tag "QRNB", text (not terminated), its
 * length, `Runcom.token`.
 */
typedef void (*ZvkMessageRoutine)(int32_t exiting, const char *facility, const char *text, uint32_t length,
                                  uint64_t token);

/** A host's stop or abort routine; the argument is `Runcom.token`. */
typedef void (*ZvkHostRoutine)(uint64_t token);

enum {
    ZVK_PREINIT = 0x02,            /**< `Proccom.flags`: the runtime was started by a host, before any program */
    ZVK_TRACK_STORAGE = 0x04,      /**< `Proccom.flags`: the run unit's storage is tracked */
    ZVK_ABORT_IN_PROGRESS = 0x08,  /**< `Proccom.flags` */
    ZVK_SIGNAL_IN_PROGRESS = 0x10, /**< `Proccom.flags` */

    ZVK_RUNCOM_SIG = 0x01,     /**< `Runcom.flags`: this run unit installed signal handlers */
    ZVK_RUNCOM_RU_TERM = 0x02, /**< `Runcom.flags`: the run unit's termination is under way */

    ZVK_OPTION_CHECK = 0x08000000, /**< `Proccom.programOptions`, `PCB.flag`: run-time checks */
    ZVK_OPTION_DEBUG = 0x02000000, /**< `Proccom.programOptions`, `PCB.flag`: debugging lines */

    ZVK_OPTION_ACCEPT_NEW =
        0x10000000, /**< `Proccom.runtimeOptions`: line mode of ACCEPT where the input is no terminal */
    ZVK_OPTION_TRAP_CORE = 0x40000000, /**< `Proccom.runtimeOptions`: a failure makes a core file */
    ZVK_OPTION_TRAP_DUMP =
        0x20000000, /**< `Proccom.runtimeOptions`: a failure makes a core file; no orderly abort after a signal */

    ZVK_PCB_ENTER_LOCKED =
        0x20000000, /**< `PCB.flag`: the entry count is taken by compiled code under the library's mutex */
    ZVK_PCB_FOLD_NAMES = 0x01000000, /**< `PCB.flag`: fold the names of CALL and CANCEL to upper case */

    ZVK_LLE_LOADED = 0x01,  /**< `LLE.flags`: loaded by the program manager, so it is to be unloaded */
    ZVK_LLE_SURVIVES = 0x10 /**< `LLE.flags`: this bit outlives the run unit's end */
};
#define ZVK_PCB_MAIN 0x80000000u    /**< `PCB.flag`: the run unit's main program */
#define ZVK_OPTION_TRAP 0x80000000u /**< `Proccom.runtimeOptions`: run units install signal handlers */

/** The run unit. 16-byte aligned; field order is shared with compiled code. */
typedef struct Runcom {
    char eyecatcher[8];              /**< "RUNCOM  " */
    struct Runcom *link;             /**< prior run unit while active, next free record while on `freeru` */
    struct Runcom *parent;           /**< run unit to resume at termination, null for an outermost one */
    struct HashTable *externalFiles; /**< EXTERNAL files by name */
    struct HashTable *externalVars;  /**< EXTERNAL data items by name */
    struct HashTable *plle;          /**< the run unit's program table; its parent is `Proccom.plle` */
    struct PCB *main; /**< main program; null until known; all bits set for a host's run unit with no program yet */
    uint64_t token;   /**< given to `stop`, `abrt` and, last, to `msg` */
    struct ZvkSignalRow *signals; /**< this run unit's copy of the signal table */
    uint64_t context;             /**< kept for the host */
    ZvkHostRoutine stop;          /**< host's stop routine or null */
    ZvkHostRoutine abrt;          /**< host's abort routine or null */
    uint64_t reservedWord;
    ZvkMessageRoutine msg;        /**< host's message routine or null */
    uint32_t id;                  /**< run-unit number; 0 for a record that no run unit has used yet */
    uint32_t active;              /**< programs now entered in this run unit */
    uint32_t errCount;            /**< messages of severity 1 still allowed; 0: no limit */
    uint32_t century;             /**< century window of the date services, 80 at the start */
    uint32_t randomSeed;          /**< seed of FUNCTION RANDOM, 1 at the start */
    uint8_t flags;                /**< ZVK_RUNCOM_... */
    uint8_t upsi[8];              /**< the UPSI switches, "0" or "1" each; compiled code addresses them directly */
    struct TrackedBlock *storage; /**< list of tracked blocks */
    uint32_t reservedCount[2];
    jmp_buf jmp; /**< a sigjmp_buf (the same type here); armed by the compiled main program with sigsetjmp */
} __attribute__((aligned(16))) Runcom;

ZVK_AT(Runcom, link, 8);
ZVK_AT(Runcom, main, 48);
ZVK_AT(Runcom, context, 72);
ZVK_AT(Runcom, msg, 104);
ZVK_AT(Runcom, id, 112);
ZVK_AT(Runcom, flags, 132);
ZVK_AT(Runcom, upsi, 133);
ZVK_AT(Runcom, storage, 144);
ZVK_AT(Runcom, jmp, 160);
ZVK_STATIC_ASSERT(sizeof(jmp_buf) == 200, "sigjmp_buf");

/** The process. 16-byte aligned, zeroed when the library is loaded. */
typedef struct Proccom {
    char eyecatcher[8];     /**< "PROCCOM" and a zero byte */
    Runcom *runcom;         /**< current run unit, null when none is active */
    Runcom *freeru;         /**< head of the list of free records, linked through `Runcom.link` */
    struct HashTable *plle; /**< process-wide program table, null unless programs are cached */
    char *libDir;           /**< directory this library was loaded from, with its final "/" */
    char *installDir;       /**< "/opt/tqx/cobol/rte/usr/lib/" */
    char *cobpath;          /**< parsed COBPATH: terminated strings, an empty one last */
    uint64_t pgmWord;       /**< a word for compiled code's own use; its address goes into `PCB.pgmWord` */
    char *tempDir;          /**< private copy of the temporary directory */
    ZvkRoutine abortHook;   /**< called once when the process aborts */
    uint64_t codePageHook;  /**< code pages' own */
    uint64_t codePageWord;  /**< code pages' own */
    FILE *sysin;            /**< device streams, each null until first used */
    FILE *sysout;
    FILE *msgs;
    FILE *conIn;
    FILE *conOut;
    FILE *syspunch;
    uint64_t spareWords[6]; /**< cleared when the runtime ends */
    int32_t pid;            /**< process id when the library was loaded */
    uint64_t mainThread;    /**< `pthread_self()` when the library was loaded */
    uint32_t
        firstEntry;     /**< 1 for a run unit started by a program, 0 for the first start under a transaction monitor */
    uint32_t threadKey; /**< pthread key of the per-thread area, 0xFFFFFFFF when there is none */
    void *threadFallback;    /**< the one per-thread area that serves when no key could be made */
    uint32_t runUnitCount;   /**< next run-unit number */
    uint32_t errCount;       /**< option ERRCOUNT */
    uint32_t programOptions; /**< ZVK_OPTION_CHECK, ZVK_OPTION_DEBUG; nonzero once options were parsed */
    uint32_t runtimeOptions; /**< ZVK_OPTION_ACCEPT_NEW and the TRAP bits */
    uint32_t txmn;  /**< nonzero under a monitor or container: take no mutex, the process counts as single-threaded */
    uint32_t jvc;   /**< container level from __COBOL_JVC_CONTAINER */
    uint32_t debug; /**< trace level from __ZVKDEBUG */
    uint32_t cache; /**< program cache: 0 off, 1 on, 2 decided by the second run unit */
    int32_t ccsid;  /**< row of the chosen code page, -1 until chosen */
    uint32_t currentYear; /**< four digits; set when a program with a year window starts */
    ZvkWindowSize winStdin;
    ZvkWindowSize winStdout;
    ZvkWindowSize winStderr; /**< its columns are what messages are wrapped to */
    uint8_t flags;           /**< ZVK_PREINIT ... ZVK_SIGNAL_IN_PROGRESS */
    char fileSystem[3];      /**< option FILESYS in lower case, zeros when not given */
    char upsi[8];            /**< option UPSI */
    char ebcdicCodePage[16]; /**< name of the chosen EBCDIC code page */
    char localeName[64];     /**< language and territory, ".", code set, as in "en_US.UTF-8" */
} __attribute__((aligned(16))) Proccom;

ZVK_AT(Proccom, runcom, 8);
ZVK_AT(Proccom, plle, 24);
ZVK_AT(Proccom, pgmWord, 56);
ZVK_AT(Proccom, abortHook, 72);
ZVK_AT(Proccom, sysin, 96);
ZVK_AT(Proccom, pid, 192);
ZVK_AT(Proccom, threadKey, 212);
ZVK_AT(Proccom, programOptions, 232);
ZVK_AT(Proccom, txmn, 240);
ZVK_AT(Proccom, winStdin, 264);
ZVK_AT(Proccom, flags, 288);
ZVK_AT(Proccom, upsi, 292);

typedef struct FCB FCB;
typedef struct FIB FIB;

/**
 * A program of a compilation unit: the program itself first in the array, its nested programs
 * after it. 56 bytes.
 */
typedef struct IPCB {
    int32_t ent;      /**< current entries of this program */
    uint32_t status;  /**< bits 30 and 31 are cleared when the program is cancelled */
    ZvkRoutine entry; /**< entry address */
    int32_t nested;   /**< number of nested programs; first element only */
    uint32_t reserved20;
    FCB **files; /**< the program's file control records */
    int32_t fileCount;
    uint32_t reserved36;
    uint64_t reserved40;
    struct PCB *pcb; /**< set by `_zvkPgmInit` */
} IPCB;

ZVK_AT(IPCB, status, 4);
ZVK_AT(IPCB, entry, 8);
ZVK_AT(IPCB, nested, 16);
ZVK_AT(IPCB, files, 24);
ZVK_AT(IPCB, fileCount, 32);
ZVK_AT(IPCB, pcb, 48);
ZVK_STATIC_ASSERT(sizeof(IPCB) == 56, "IPCB");

/** The bits 30 and 31 of `IPCB.status`. */
#define ZVK_IPCB_STATUS_30 0x40000000u
#define ZVK_IPCB_STATUS_31 0x80000000u

struct LLE;

/** A separately compiled program. */
typedef struct PCB {
    uint8_t reserved0[5];
    uint8_t version[3]; /**< compiler: version, release, modification */
    IPCB *ipcb;         /**< the program's IPCB array */
    const char *name;   /**< program name, not terminated */
    uint32_t nameLength;
    uint32_t flag;   /**< ZVK_PCB_... and the ZVK_OPTION_CHECK and ZVK_OPTION_DEBUG bits, which the library sets */
    struct LLE *lle; /**< null until the program is registered in this run unit */
    uint64_t reserved40;
    FIB **fibs;    /**< file information blocks, parallel to the IPCB's file list */
    uint8_t *upsi; /**< set by the library to `Runcom.upsi` */
    uint8_t reserved64[36];
    /**
     * 9999 none; negative: offset from the current year; otherwise, and after registration, a base
     * year
     */
    int32_t yearWindow;
    uint64_t *pgmWord; /**< set by the library to `Proccom.pgmWord` if the compiler version is at least 5.1.1 */
} PCB;

ZVK_AT(PCB, version, 5);
ZVK_AT(PCB, ipcb, 8);
ZVK_AT(PCB, name, 16);
ZVK_AT(PCB, nameLength, 24);
ZVK_AT(PCB, flag, 28);
ZVK_AT(PCB, lle, 32);
ZVK_AT(PCB, fibs, 48);
ZVK_AT(PCB, upsi, 56);
ZVK_AT(PCB, yearWindow, 100);
ZVK_AT(PCB, pgmWord, 104);

/** Value of `PCB.yearWindow` for a program without a year window. */
#define ZVK_NO_YEAR_WINDOW 9999

/** Load list entry: what a program table holds for a program name. */
typedef struct LLE {
    void *load; /**< the loader's handle, null for a statically bound program */
    ZvkRoutine entry;
    const char *name; /**< not terminated */
    PCB *pcb;
    IPCB *ipcb;
    uint32_t nameLength;
    uint32_t flags; /**< ZVK_LLE_... */
} LLE;

ZVK_STATIC_ASSERT(sizeof(LLE) == 48, "LLE");

/**
 * The process record; null before the library's constructor ran and again after the runtime's end.
 */
ZVK_EXPORT extern Proccom *_zvkProccom;

/** Process-wide object of the date-time items; its eighth word points to the locale table. */
typedef struct DmrRut {
    uint64_t words[21];
} DmrRut;
ZVK_STATIC_ASSERT(sizeof(DmrRut) == 168, "_Dmr_rut");
ZVK_EXPORT extern DmrRut _Dmr_rut;

/**
 * First call of a program's prologue, at every entry.
 *
 * Starts the runtime and a run unit where none is active, registers the program in the run unit's
 * program table at its first entry, and counts the entry. With ZVK_PCB_ENTER_LOCKED in `pcb->flag`
 * it returns with the entry mutex held, and compiled code calls `_zvkPgmEnterUnlock`.
 *
 * At registration the CHECK and DEBUG bits of `pcb->flag`, `pcb->upsi`, and, by compiler version,
 * `pcb->pgmWord` are set, files are made known, and a year window is resolved into its base year.
 *
 * @param pcb  the program; `name`, `nameLength`, `ipcb`, `version` and `yearWindow` filled by the
 *             compiler
 * @messages 240 if a year window given as an offset resolves outside 1900 to 2099; 241 if a
 *           window's 100 years have all passed;
 *           75 for EXTERNAL files that do not agree; 907 without storage; 171 to 174, 181, 182 for options
 * @threads  any; starts and registrations are serialised
 */
ZVK_EXPORT void _zvkPgmInit(PCB *pcb);

/**
 * Takes the entry mutex and counts an entry of `ipcb`, also under a monitor; `_zvkPgmEnterUnlock`
 * must follow. @threads any
 */
ZVK_EXPORT void _zvkPgmEnterLock(int32_t *ipcb);

/**
 * Releases the entry mutex that `_zvkPgmEnterLock` or `_zvkPgmInit` took. @threads the one that
 * took it
 */
ZVK_EXPORT void _zvkPgmEnterUnlock(void);

/**
 * Exit of a program that does not end a run unit: takes back the count of one entry, never below 0.
 *
 * @param ipcb  the program's IPCB, whose first word is its entry count
 * @threads any
 */
ZVK_EXPORT void _zvkPgmExit(int32_t *ipcb);

/**
 * The jump buffer of the current run unit, or of the one that has just ended; null before the
 * library's constructor ran. The compiled main program arms it with `sigsetjmp`; STOP RUN jumps
 * through it with the program's status, or 255 for 0.
 * @threads any
 */
ZVK_EXPORT void *_zvkGetJmpBuffer(void);

/**
 * A host prepares the runtime (also `ZVKCOBOLINIT`).
 *
 * | function | effect |
 * |---|---|
 * | 1, `stop` not null | starts the runtime if needed, makes sure that a run unit exists, stores `stop` and `token` in it |
 * | 9 | starts if needed, begins a run unit for a transaction, stores `token` as its abort routine |
 * | 10 | starts if needed, stores `token` as the run unit's context |
 *
 * @param stop   called with `token` when the run unit ends
 * @param rc     receives 0, or 1 for any other function
 * @threads one at a time, before programs run
 */
ZVK_EXPORT void _zvkCOBOLInit(uint32_t function, ZvkHostRoutine stop, uint32_t *rc, uint64_t token);
ZVK_EXPORT void ZVKCOBOLINIT(uint32_t function, ZvkHostRoutine stop, uint32_t *rc, uint64_t token);

/**
 * A host prepares the next run unit: starts the runtime if needed and stores the routines and
 * values in the record that the next run unit takes.
 *
 * @param function  1; any other sets `*rc` to 1 and does nothing
 * @param rc        receives 0 or 1
 * @param msg       receives the run unit's messages instead of the message stream
 * @param abrt      called with `token` when the run unit aborts
 * @param context   kept for the host
 * @threads one at a time, before programs run
 */
ZVK_EXPORT void _zvkCOBOLInit1(int32_t function, ZvkHostRoutine stop, uint32_t *rc, uint64_t token,
                               ZvkMessageRoutine msg, ZvkHostRoutine abrt, uint64_t context);

/**
 * Starts the runtime if needed (`*rc` = 0); if it was started under a monitor or container, `*rc` =
 * 1; else `*rc` stays.
 */
ZVK_EXPORT void _zvkCOBOLHostInit(uint32_t *rc);

/** Begins a run unit nested in the current one, which is resumed when the new one ends. */
ZVK_EXPORT void _zvkCOBOLLink(void);

/**
 * A transaction monitor starts a task: starts the runtime if needed, deepens `Proccom.txmn`, begins
 * a run unit with `msg` and `context`.
 */
ZVK_EXPORT void _zvk_cpm_init(ZvkMessageRoutine msg, uint64_t context);

/**
 * Begins a run unit for a transaction, nested where one is active; starts the runtime as under a
 * monitor if nothing exists.
 */
ZVK_EXPORT void _zvkTxmnRunUnit(uint64_t reserved, ZvkMessageRoutine msg, uint64_t context);

ZVK_END_DECLS

#endif
