/**
 * Files: what compiled code calls, and the contract of file-system modules.
 *
 * # A file's life
 *
 * The library stores no record. OPEN, CLOSE and the verbs go through the slots of the file's `FCB`
 * (kvr2/file_records.h). While a file is closed its `open` slot holds `_zvkGenericOpen`, which
 * finds the real name and the file system, loads that file system's module and lets it open the
 * file; the other slots hold the `_zvk...Error` routines below, which give a verb that makes no
 * sense its status. After a successful OPEN the slots are the module's own, and READ or WRITE run
 * with no library code between. The module's CLOSE ends in `_zvkGenericClose`.
 *
 * | Code | Prefix | Module | Stores |
 * |---|---|---|---|
 * | 1 | jgt, qvr | zvkrfstl_64r.so | all organizations |
 * | 2 | hdk | zvkrfhdk_64r.so | |
 * | 3 | psx | zvkrfpsx_64r.so | |
 * | 4 | lsq, nat | zvkrflsq_64r.so | line sequential text |
 * | 5 | stl | zvkrfstl_64r.so | all organizations; the default |
 * | 6 | rsd, str | zvkrfrsd_64r.so | record sequential |
 * | 7 | wbr, raw | zvkrfwbrm_64r.so | fixed binary records |
 * | 8 | rql | zvkrfrql_64r.so | |
 * | 9 | pip, fif | zvkrfpipe_64r.so | |
 * | 10 | sok | zvkrfsocket_64r.so | |
 * | 11 | mqu | zvkrfmqueue_64r.so | |
 * | 12 | plx | the file itself decides | |
 *
 * Modules are looked for in the library's own directory, by the system's search rules (an installed
 * library has its own modules on its run path), and in `/opt/tqx/cobol/rte/usr/lib/`.
 *
 * Environment: `VFS_NO_FORCE_FS` (absent or foreign files go to jgt instead of stl),
 * `VFS_DEBUG_OPEN`, `VFS_DEBUG_ERROR` (traces), `TXMN_TK_HDK_SERVER`, and for generations
 * `gdg_home`, `HOME`, `RQLINSTANCE`, `RQLDBDFT`.
 *
 * # Writing a module
 *
 * A module is a shared object that exports `_IO_Init` and, if it has texts for its secondary
 * statuses, `vfs`. It sees the public headers only.
 *
 * `_IO_Init(fcb, element)` is called at each OPEN, after the name was found: it stores its routines
 * in the FCB's slots, `open` among them, or a status above 9 (with FS2) in `fcb->status` and
 * `fcb->fs2` if it cannot serve the file. Then the library calls `open`:
 *
 * - The name is `fcb->fileName`, the wish `fcb->requestedMode`, the file's attributes are in
 *   `fcb->fib` (for an EXTERNAL file those of the program that defined it first). `fcb->mode` is 0.
 * - On success (status below 10) the module leaves slots for the verbs that the mode allows and the
 *   error routines for the others. An OPTIONAL file that is absent at OPEN INPUT gets status 5,
 *   ZVK_FILE_ABSENT in `fcb->state`, and keeps the error routines in its slots.
 * - A LINAGE file's module puts the values of the FIB's block into `linageBody` ... `linageBottom`;
 *   the library then starts the first page.
 * - Of the FCB a module may use `moduleBuffer`, `moduleBuffer2` (blocks from malloc or
 *   aligned_alloc; the library frees them at CLOSE, after the module's own close), `moduleWord`,
 *   `moduleFlag`, `moduleWords`, `moduleByte`, and it keeps `recordLength` and `recordNumber`.
 *
 * A verb is `slot(fcb, element, request)`. The module does the following, in this order:
 *
 * 1. `fcb->currentVerb` = the verb; the work, on `fcb->record` and the request; FS1 into
 *    `fcb->status`, FS2 into `fcb->fs2` (0 where there is no more to say).
 * 2. It keeps ZVK_FILE_READ_VALID (the last READ was successful) and ZVK_FILE_POSITION_VALID (there
 *    is a position to read on from) in `fcb->state`.
 * 3. `zvkFinishVerb(fcb, element, verb)` (kvr2/file_module.h): stores both statuses in the
 *    program's fields, goes to the USE procedure if the status is above 9, and makes the verb
 *    `lastVerb`.
 *
 * CLOSE: the module writes out and frees what is its own, sets status and FS2 and calls
 * `_zvkGenericClose(fcb, element, 0)`, which does the rest.
 *
 * A READ that meets the end of a file with ZVK_FILE_CONCATENATED in `fcb->state` goes on with the
 * next file by `zvkNextVolume(fcb, element)` (kvr2/file_module.h): 1: opened, read again through
 * `fcb->read`; 0: there is none, status 10.
 */
#ifndef KVR2_FILEIO_H
#define KVR2_FILEIO_H

#include "kvr2/file_records.h"

ZVK_BEGIN_DECLS

/** `FileRequest.options` */
enum {
    ZVK_REQUEST_NEXT = 0x0001,        /**< READ NEXT */
    ZVK_REQUEST_PREVIOUS = 0x0002,    /**< READ PREVIOUS */
    ZVK_REQUEST_KEY = 0x0004,         /**< READ by `key`, DELETE or REWRITE by the record's own key: random access */
    ZVK_REQUEST_LOCK = 0x0010,        /**< WITH LOCK */
    ZVK_REQUEST_NO_LOCK = 0x0020,     /**< WITH NO LOCK: takes none, heeds those of others */
    ZVK_REQUEST_IGNORE_LOCK = 0x0040, /**< IGNORING LOCK */
    ZVK_REQUEST_BEFORE = 0x0100,      /**< WRITE BEFORE ADVANCING: the record, then the lines */
    ZVK_REQUEST_AFTER = 0x0200,       /**< WRITE AFTER ADVANCING: the lines, then the record */
    ZVK_REQUEST_RETRY_TIMES = 0x1000, /**< RETRY `retry` TIMES: a locked record is asked for again, every 0.1 seconds */
    ZVK_REQUEST_RETRY_SECONDS = 0x2000, /**< RETRY FOR `retry` SECONDS */
    ZVK_REQUEST_RETRY_FOREVER = 0x3000, /**< RETRY FOREVER */
    ZVK_REQUEST_RETRY = 0x3000,         /**< these two bits */
    ZVK_REQUEST_END_OF_PAGE = 0x0400    /**< result of WRITE: the footing area was reached (AT END-OF-PAGE) */
};

/** `FileRequest.relation`, of START */
enum {
    ZVK_RELATION_EQUAL = 0,
    ZVK_RELATION_GREATER,
    ZVK_RELATION_NOT_LESS,
    ZVK_RELATION_LESS,
    ZVK_RELATION_NOT_GREATER,
    ZVK_RELATION_FIRST, /**< START FIRST */
    ZVK_RELATION_LAST   /**< START LAST */
};

/** `FileRequest.advance`: to the next page */
#define ZVK_ADVANCE_PAGE (-1)

/**
 * The particulars of a READ, WRITE, REWRITE, START, DELETE or UNLOCK statement; compiled code
 * zeroes what a statement does not say. 48 bytes.
 */
typedef struct FileRequest {
    uint32_t options;      /**< ZVK_REQUEST_... */
    uint32_t relation;     /**< START: ZVK_RELATION_... */
    uint32_t key;          /**< READ by key, START: 0 the primary key, n the n-th alternate key */
    uint32_t keyLength;    /**< START: bytes of the key that count, 0 all of it */
    uint32_t recordLength; /**< WRITE, REWRITE: bytes of the record; result of READ: bytes read */
    /**
     * WRITE ... ADVANCING: lines, or ZVK_ADVANCE_PAGE. Without BEFORE and AFTER the record has its
     * line end after it; in a file that is advanced anywhere, or has LINAGE, compiled code makes
     * such a WRITE one AFTER 1 line. With RETRY it is `retry`
     */
    union {
        int32_t advance;
        int32_t retry; /**< RETRY: times or seconds */
    };
    uint64_t relativeKey; /**< relative file: record number, from 1; result of a sequential READ or WRITE */
    uint8_t *into;        /**< null: the record is `fcb->record`; otherwise the record is here */
    /**
     * relative file: the largest number that the RELATIVE KEY item holds (999 for PIC 9(3)), 0
     * without such an item. A sequential READ that finds a larger one gives status 14, a WRITE
     * status 24.
     */
    uint64_t relativeKeyLimit;
} FileRequest;
ZVK_AT(FileRequest, recordLength, 16);
ZVK_AT(FileRequest, relativeKey, 24);
ZVK_AT(FileRequest, relativeKeyLimit, 40);
ZVK_STATIC_ASSERT(sizeof(FileRequest) == 48, "FileRequest");

/** A module's text for a secondary status: `text(fcb->moduleBuffer, fs2, 0, 1)`; null for none. */
typedef const char *(*FileText)(void *buffer, uint32_t fs2, int32_t reserved, int32_t reserved2);
/** Its slot in the table that the module's `vfs()` returns. */
#define ZVK_FILE_TEXT_SLOT 24

/** What a module exports under the name `_IO_Init`. */
typedef void (*FileModuleInit)(FCB *fcb, IPCB *element);
/**
 * What a module may export under the name `vfs`: returns its operation table of at least 25 words.
 */
typedef void **(*FileModuleTable)(void);

/**
 * The `open` slot of a closed file: OPEN.
 *
 * @param fcb      `requestedMode` and `statement` set
 * @param element  the element of the program's IPCB array whose statement it is
 * @par status 00, 05, 07; 33 name or concatenation not valid, 34 no storage, 37 a concatenation
 *      that is not read sequentially, 91 no permission,
 *              93 the system failed, 95 the name is empty or several, 96 no file system; and the module's own
 * @messages 200 where the program can see no status
 * @threads  one at a time for one FCB
 */
ZVK_EXPORT void _zvkGenericOpen(FCB *fcb, IPCB *element);

/**
 * The end of every CLOSE; a module calls it with the status of its own close in the FCB.
 * @param variant  nonzero names the text of message 201 for a failure
 */
ZVK_EXPORT void _zvkGenericClose(FCB *fcb, IPCB *element, uint32_t variant);

/**
 * The slots of a file while their verb makes no sense: status and FS2 by the file's state, USE
 * procedure.
 *
 * | Routine | Statuses |
 * |---|---|
 * | `_zvkOpenError` | 38 closed WITH LOCK, 41 open already, 30 |
 * | `_zvkCloseError` | 00 an OPTIONAL file that was absent, 42 not open, 30 |
 * | `_zvkReadError` | 47 not open for INPUT, 23 no such record, 46 no next record, 10 at end, 30 |
 * | `_zvkWriteError` | 92 not allowed in sequential access, 48 not open for output, 30 |
 * | `_zvkRewriteError`, `_zvkDeleteError` | 49 not open for I-O, 30 |
 * | `_zvkStartError` | 47 not open for INPUT or I-O, 23 no such record, 30 |
 * | `_zvkUnlockError` | 42 not open, 30 |
 */
ZVK_EXPORT void _zvkOpenError(FCB *fcb, IPCB *element);
ZVK_EXPORT void _zvkCloseError(FCB *fcb, IPCB *element);
ZVK_EXPORT void _zvkReadError(FCB *fcb, IPCB *element);
ZVK_EXPORT void _zvkWriteError(FCB *fcb, IPCB *element);
ZVK_EXPORT void _zvkRewriteError(FCB *fcb, IPCB *element);
ZVK_EXPORT void _zvkStartError(FCB *fcb, IPCB *element);
ZVK_EXPORT void _zvkDeleteError(FCB *fcb, IPCB *element);
ZVK_EXPORT void _zvkUnlockError(FCB *fcb, IPCB *element);

/**
 * What follows a failed verb: nothing with INVALID KEY (20 to 24) or AT END (10) in the statement,
 * the USE procedure, nothing for a program that has a status or feedback field or for a status
 * below 30, and message 200 otherwise.
 * @param variant  nonzero names the text of message 201 that explains the failure
 * @messages 200
 */
ZVK_EXPORT void _zvkCallUseProc(FCB *fcb, uint32_t variant, IPCB *element);

/** A file name that stands for several files; kept in `FCB.concatenation` from OPEN to CLOSE. */
typedef struct ZvkConcatenation {
    uint32_t entries;
    uint32_t next;       /**< index of the next name */
    uint32_t generation; /**< relative number of the generation given last, 0, -1, -2, ..., while a group is walked */
    uint32_t flags;      /**< bit 0: a group's generations are being walked */
    char nameSpace[4];   /**< the file's prefix, "???" before it is known */
    char *text;          /**< copy of the whole string, after the record */
    char *names[256];    /**< into `text` */
} ZvkConcatenation;
ZVK_AT(ZvkConcatenation, nameSpace, 16);
ZVK_AT(ZvkConcatenation, text, 24);

/**
 * Does a file name stand for several files: names separated by ":", or a generation data group?
 *
 * @param name      terminated; not changed
 * @param isConcat  receives 1 for several files or a whole group, else 0
 * @param create    nonzero: a relative generation above the newest is wanted, and is entered into
 *                  its group
 * @param prefix    the file's 3-letter prefix
 * @return a record for `_zvk_Concat_Next`, to be freed with `_zvk_Concat_Free`; null for a plain
 *         file (`*isConcat` 0), or if the list is not valid
 *         (`*isConcat` 1)
 */
ZVK_EXPORT ZvkConcatenation *_zvk_Concat_Check(char *name, uint32_t *isConcat, uint32_t create, uint32_t *prefix);

/**
 * The next file's name, or null after the last; good until the next call of any thread, so copy
 * it.
 */
ZVK_EXPORT const char *_zvk_Concat_Next(ZvkConcatenation *record);

/** Frees a record; null does nothing. */
ZVK_EXPORT void _zvk_Concat_Free(ZvkConcatenation *record);

ZVK_END_DECLS

#endif
