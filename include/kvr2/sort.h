/**
 * SORT and MERGE: the verbs that compiled code calls, the contract of the sort engine, and SORT of
 * a table.
 *
 * # SORT and MERGE of files
 *
 * `_zvkSortMerge` starts a sort; an INPUT PROCEDURE calls `_zvkRelease` for each record, an OUTPUT
 * PROCEDURE `_zvkReturn`:
 *
 * @code
 *     _zvkSortMerge(1, &block, &desc, keys, control, &noFiles, &noFiles, eighth);      // SORT ... INPUT PROCEDURE
 *     ... _zvkRelease(length, record, &status); ...                                   // RELEASE
 *     _zvkSortMerge(3, &block, ...);  // the INPUT PROCEDURE has ended: sort
 *     while (status = 0, _zvkReturn(&length, record, &status), status == 0) ...       // RETURN ... AT END
 * @endcode
 *
 * The library keeps released records in a buffer of 262,144 bytes and beyond that in a spill file
 * `sortwki.PID.THREAD` of the temporary directory (`TMPDIR`, or "."). The sorting is done by an
 * engine, `libvortlite_64r.so`, which is loaded at the first SORT; its result waits in the buffer
 * or in `sortwko.PID.THREAD`.
 *
 * Records in the buffer and in spill files have the release form: format 2, a native 4-byte length
 * that counts itself, then the bytes; any other format, `recordLength` bytes.
 *
 * # The engine
 *
 * An engine exports `sortmerge`, if possible with the symbol version KVR2_6.1.0, of type
 * SortEngine. The runtime does not look at the fourth, fifth and eighth words of a SORT; for the
 * engine that comes with this library they mean:
 *
 * - fourth: a SortKeyList;
 * - fifth: the name of a SORT-CONTROL file, or an empty one. The file may be absent. Its lines are
 *   `NAME=value`; "*" or "#" begins a comment: `MEMORY=64M` (bytes, or with K, M or G; goes before
 *   the eighth's budget), `WORKDIR=/var/tmp` (for work files), `STATISTICS=YES` (a line on stderr);
 * - eighth: a SortEighth.
 */
#ifndef KVR2_SORT_H
#define KVR2_SORT_H

#include "kvr2/file_records.h"

ZVK_BEGIN_DECLS

/** `op` of `_zvkSortMerge`; any other sets SORT-RETURN to 0. */
enum {
    ZVK_SORT_START = 1,
    ZVK_SORT_MERGE = 2,
    ZVK_SORT_RUN = 3,    /**< the INPUT PROCEDURE has ended */
    ZVK_SORT_FAILED = 4, /**< the program reports a failure: SORT-RETURN 16, message 26 */
    ZVK_SORT_END = 11    /**< the run unit ends */
};

/** What compiled code says about a SORT statement. */
typedef struct SortVerbBlock {
    int16_t *sortReturn;  /**< SORT-RETURN */
    uint32_t messageOff;  /**< nonzero: no message 26 */
    uint32_t engineFlags; /**< for the engine */
    uint32_t lineNumber;
    uint32_t reserved20;
    PCB *program;
} SortVerbBlock;
ZVK_AT(SortVerbBlock, messageOff, 8);
ZVK_AT(SortVerbBlock, lineNumber, 16);
ZVK_AT(SortVerbBlock, program, 24);
ZVK_STATIC_ASSERT(sizeof(SortVerbBlock) == 32, "SortVerbBlock");

/**
 * `SortRecordDesc.recordFormat`; any other is fixed length, too, but a short record is not filled.
 */
enum { ZVK_SORT_FIXED = 1, ZVK_SORT_VARIABLE = 2 };

typedef struct SortRecordDesc {
    uint32_t recordFormat; /**< ZVK_SORT_FIXED, ZVK_SORT_VARIABLE */
    uint32_t reserved4;
    uint32_t recordLength; /**< bytes, of variable records the most */
    uint32_t reserved12;
} SortRecordDesc;
ZVK_AT(SortRecordDesc, recordLength, 8);

/** USING or GIVING files; none for an INPUT or OUTPUT PROCEDURE. */
typedef struct SortFileList {
    uint32_t count;
    uint32_t reserved4;
    FCB **files;
} SortFileList;
ZVK_AT(SortFileList, files, 8);
ZVK_STATIC_ASSERT(sizeof(SortFileList) == 16, "SortFileList");

/** Where the engine's input is or where its output goes. */
typedef struct SortIoRecord {
    const char *path; /**< spill file, null for none */
    uint32_t bytes;   /**< bytes of records in `memory` */
    uint32_t reserved12;
    uint8_t *memory; /**< records in release form; for output the place to leave them in */
    uint32_t count;  /**< USING or GIVING files */
    uint32_t reserved28;
    FCB **files;
} SortIoRecord;
ZVK_AT(SortIoRecord, bytes, 8);
ZVK_AT(SortIoRecord, memory, 16);
ZVK_AT(SortIoRecord, count, 24);
ZVK_AT(SortIoRecord, files, 32);
ZVK_STATIC_ASSERT(sizeof(SortIoRecord) == 40, "SortIoRecord");

typedef struct SortControlRecord {
    uint32_t engineFlags; /**< `SortVerbBlock.engineFlags` */
    uint32_t reserved4;
    const char *tempDir; /**< directory for work files */
    uint32_t *errnoOut;  /**< the engine stores its error number here, ZVK_SORT_E... */
    uint32_t errnoValue; /**< what `errnoOut` points to, in the caller's copy */
    uint32_t reserved28;
    PCB *program; /**< null without a SortVerbBlock */
} SortControlRecord;
ZVK_AT(SortControlRecord, tempDir, 8);
ZVK_AT(SortControlRecord, errnoOut, 16);
ZVK_AT(SortControlRecord, errnoValue, 24);
ZVK_AT(SortControlRecord, program, 32);
ZVK_STATIC_ASSERT(sizeof(SortControlRecord) == 40, "SortControlRecord");

/** The eighth argument, three words that are handed to the engine by value. */
typedef struct SortEighth {
    uint64_t collating; /**< address of a table of 256 bytes for alphanumeric keys, or 0 */
    uint64_t memory;    /**< memory budget in bytes, or 0 for a share of the machine */
    uint64_t flags;     /**< ZVK_SORT_STABLE */
} SortEighth;
ZVK_STATIC_ASSERT(sizeof(SortEighth) == 24, "SortEighth");

/**
 * `SortEighth.flags`: records with equal keys keep their order (WITH DUPLICATES IN ORDER). The
 * engine that comes with the library always does so.
 */
#define ZVK_SORT_STABLE 1u

/** `TableSortKey.keyType` */
enum {
    ZVK_KEY_ALPHANUMERIC = 1,
    ZVK_KEY_ZONED = 2,
    ZVK_KEY_BINARY = 3, /**< native, 1 to 8 bytes */
    ZVK_KEY_PACKED = 4,
    ZVK_KEY_FLOAT = 5,    /**< 4 or 8 bytes */
    ZVK_KEY_NATIONAL = 6, /**< by the stored bytes */
    ZVK_KEY_DBCS = 7      /**< the engine only: by the stored bytes, without a collating table */
};

/** `TableSortKey.signFlags`; zoned: the place of the sign, none for unsigned */
enum {
    ZVK_KEY_LEADING_SEPARATE = 1,
    ZVK_KEY_TRAILING_SEPARATE = 2,
    ZVK_KEY_LEADING = 4,
    ZVK_KEY_TRAILING = 8,
    ZVK_KEY_SIGNED = 16 /**< binary */
};

/** `TableSortKey.orderFlags`: set ascending, clear descending */
enum { ZVK_KEY_ASCENDING = 1 };

/** A sort key; 16 bytes. */
typedef struct TableSortKey {
    uint32_t offset;  /**< in the record or table element */
    uint32_t length;  /**< bytes */
    uint32_t keyType; /**< ZVK_KEY_... */
    uint8_t signFlags;
    uint8_t orderFlags;
    uint8_t reserved[2];
} TableSortKey;
ZVK_AT(TableSortKey, length, 4);
ZVK_AT(TableSortKey, keyType, 8);
ZVK_AT(TableSortKey, signFlags, 12);
ZVK_AT(TableSortKey, orderFlags, 13);
ZVK_STATIC_ASSERT(sizeof(TableSortKey) == 16, "TableSortKey");

/**
 * The fourth argument of a SORT as the engine reads it: `count` keys after the two words, the most
 * significant first.
 */
typedef struct SortKeyList {
    uint32_t count;
    uint32_t reserved4;
    TableSortKey keys[1];
} SortKeyList;
ZVK_AT(SortKeyList, keys, 8);

/** Most keys of one sort, and most bytes of all of them together, that the engine takes. */
#define ZVK_SORT_MAX_KEYS 256
#define ZVK_SORT_MAX_KEY_BYTES 65536

/** The engine's error numbers: message 26, ZVKGETSORTERRNO. */
enum {
    ZVK_SORT_EKEYS =
        1, /**< the key list is not valid: no keys, an unknown type, a length that the type does not have */
    ZVK_SORT_ESHORT = 2,   /**< a record is shorter than its keys reach */
    ZVK_SORT_EOPENIN = 3,  /**< a USING file could not be opened */
    ZVK_SORT_EREAD = 4,    /**< a USING file or spill file could not be read */
    ZVK_SORT_EFORM = 5,    /**< the spill file or buffer does not hold whole records */
    ZVK_SORT_EOPENOUT = 6, /**< a GIVING file or the result's spill file could not be opened */
    ZVK_SORT_EWRITE =
        7, /**< a GIVING file or the result's spill file could not be written or closed: the disk is full */
    ZVK_SORT_EWORK = 8,       /**< a work file could not be made, written or read: the work directory's disk is full */
    ZVK_SORT_ESTORAGE = 9,    /**< no storage */
    ZVK_SORT_ECONTROL = 10,   /**< the SORT-CONTROL file has a line that makes no sense, or cannot be read */
    ZVK_SORT_EORDER = 11,     /**< MERGE: a USING file is not in order */
    ZVK_SORT_ELONG = 12,      /**< a record is longer than a GIVING file's, or than the sort's */
    ZVK_SORT_EABANDONED = 13, /**< the run unit ended during the sort */
    ZVK_SORT_EREQUEST = 14    /**< an operation or record description that the engine does not know */
};

/**
 * The engine's entry, `sortmerge`. All records and the three words go by value, on the stack.
 *
 * @param op            ZVK_SORT_START, ZVK_SORT_MERGE; ZVK_SORT_END with everything zero abandons
 *                      the thread's running sort
 * @param recordFormat  first word of the SortRecordDesc
 * @param input   files, if there are; otherwise the spill file at `path`, then the `bytes` at
 *                `memory`
 * @param output  files, the spill file at `path`, or with neither `memory`, for as many bytes as
 *                the input has
 * @return SORT-RETURN in the low 16 bits: 0, or 16 with an error number stored through
 *         `control.errnoOut`
 * @threads any, each with a sort of its own
 */
typedef int32_t (*SortEngine)(int32_t op, uint64_t recordFormat, uint32_t recordLength, const void *fourth,
                              const char *fifth, SortEighth eighth, SortIoRecord input, SortIoRecord output,
                              SortControlRecord control);

/**
 * SORT and MERGE statements.
 *
 * @param op       ZVK_SORT_START ...
 * @param block    null for ZVK_SORT_END only
 * @param fourth   the keys, for the engine
 * @param fifth    a name for the engine; its first blank is overwritten with a NUL
 * @param eighth   three words for the engine
 * @par SORT-RETURN 0; 16 after a failure; unchanged if the engine could not be loaded, after a line
 *      on stderr
 * @messages 26 with program, line and error number for SORT-RETURN 16; 13 for a sort inside the
 *           engine's run of another; 907
 * @threads  any, each with a sort of its own
 */
ZVK_EXPORT void _zvkSortMerge(int32_t op, SortVerbBlock *block, SortRecordDesc *desc, void *fourth, char *fifth,
                              SortFileList *usingList, SortFileList *givingList, uint64_t *eighth);

/**
 * RELEASE: a record of `length` bytes into the sort. Fixed records of format ZVK_SORT_FIXED are
 * filled with blanks.
 * @param status  set to 16 if the record could not be stored; otherwise left alone
 */
ZVK_EXPORT void _zvkRelease(uint32_t length, void *record, uint16_t *status);

/**
 * RETURN: the next record in order.
 * @param length  receives its length in bytes
 * @param status  set to 1 at the end; to 16 where the sorted records cannot be read; otherwise left
 *                alone
 * @par SORT-RETURN 16 where the records cannot be read
 * @messages 26 with error number ZVK_SORT_EREAD, with SORT-RETURN 16
 */
ZVK_EXPORT void _zvkReturn(uint32_t *length, void *record, uint16_t *status);

/** Stores and returns the error number of this thread's last SORT or MERGE. */
ZVK_EXPORT uint32_t ZVKGETSORTERRNO(uint32_t *value);
ZVK_EXPORT uint32_t zvkGetSortErrno(uint32_t *value);

/**
 * SORT of a table, in place.
 *
 * Elements with equal keys come out by the low byte of their old position first, then the next
 * byte: in the old order up to 256 of them. Packed keys: the sign nibble 0xC is positive, any other
 * negative, an unsigned 0xF as well.
 *
 * @param collating  table of 256 bytes for alphanumeric keys, or null
 * @param keyCount   number of TableSortKey pointers that follow, the most significant first; types
 *                   up to ZVK_KEY_NATIONAL. With any other type, or a
 *                   key that the element does not hold, the table stays as it was
 * @messages 907
 * @threads  any, on tables of their own
 */
ZVK_EXPORT void _zvkcTSort(uint64_t reserved, void *table, uint32_t elementLength, int32_t count,
                           const uint8_t *collating, int32_t keyCount, ...);

ZVK_END_DECLS

#endif
