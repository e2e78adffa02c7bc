/**
 * The records of a COBOL file: `FIB`, what the compiler knows of it, and `FCB`, its state and its
 * operations.
 *
 * Compiled code lays out one of each per file, and calls the operations in the FCB's slots
 * directly. While a file is closed, all slots but `open` and `useProc` hold the library's error
 * routines; a successful OPEN fills them with those of a file-system module (kvr2/fileio.h). All
 * numbers are native.
 */
#ifndef KVR2_FILE_RECORDS_H
#define KVR2_FILE_RECORDS_H

#include "kvr2/run_unit.h"

ZVK_BEGIN_DECLS

/** `FIB.organization`; 0 is sequential. */
enum { ZVK_FILE_LINE_SEQUENTIAL = 0x40, ZVK_FILE_INDEXED = 0x20, ZVK_FILE_RELATIVE = 0x10 };

/** `FIB.accessMode`; 0 is dynamic. */
enum { ZVK_FILE_ACCESS_SEQUENTIAL = 0x80, ZVK_FILE_ACCESS_RANDOM = 0x40 };

/** `FIB.attributes` */
enum {
    ZVK_FILE_OPTIONAL = 0x80,
    ZVK_FILE_ASSIGN_ENVIRONMENT = 0x20, /**< the assignment names an environment variable */
    ZVK_FILE_ASSIGN_LITERAL = 0x08,     /**< the assignment is a literal */
    ZVK_FILE_ASSIGN_ITEM = 0x04,        /**< the assignment is a data item */
    ZVK_FILE_EXTERNAL = 0x02
};

/** `FIB.linage` */
enum {
    ZVK_FILE_LINAGE = 0x80,
    ZVK_FILE_LINAGE_FOOTING = 0x40,
    ZVK_FILE_LINAGE_TOP = 0x20,
    ZVK_FILE_LINAGE_BOTTOM = 0x10
};

/** `FIB.shareMode` */
enum {
    ZVK_FILE_SHARE_ALL = 1, /**< what others may do; none of these: the file system's default */
    ZVK_FILE_SHARE_READ = 2,
    ZVK_FILE_SHARE_NONE = 3,
    ZVK_FILE_SHARE_MASK = 0x07,
    ZVK_FILE_LOCK_COUNT = 0x08,
    ZVK_FILE_STATUS_NATIONAL = 0x10,
    ZVK_FILE_FEEDBACK_EBCDIC = 0x40,
    ZVK_FILE_STATUS_EBCDIC = 0x80
};

/** `FIB.lockMode & ZVK_FILE_LOCK_MASK`; 0 is the file system's default. */
enum { ZVK_FILE_LOCK_MASK = 0x07, ZVK_FILE_LOCK_MANUAL = 1, ZVK_FILE_LOCK_AUTOMATIC = 2, ZVK_FILE_LOCK_EXCLUSIVE = 3 };

/**
 * One key of an indexed file; 12 bytes.
 *
 * A key of several parts has ZVK_FILE_KEY_PARTS, the length of all parts together, and the position
 * of the first. `reserved[0]` says how many more parts it has: they are entries of their own after
 * the `keyCount` keys of the table, those of the first such key first.
 */
typedef struct FileKey {
    uint32_t length;   /**< bytes */
    uint32_t position; /**< of its first byte in the record, from 0 */
    uint8_t flags;     /**< ZVK_FILE_KEY_... */
    uint8_t reserved[3];
} FileKey;
ZVK_AT(FileKey, position, 4);
ZVK_AT(FileKey, flags, 8);
ZVK_STATIC_ASSERT(sizeof(FileKey) == 12, "FileKey");

/** `FileKey.flags`: WITH DUPLICATES; further parts follow the key table. */
enum { ZVK_FILE_KEY_DUPLICATES = 0x80, ZVK_FILE_KEY_PARTS = 0x40 };

/** One group of the LINAGE block: body, footing, top, bottom, in this order; 36 bytes each. */
typedef struct FileLinageGroup {
    uint8_t reserved[2];
    char name[30];  /**< of the data item that gives the value, blank for a literal */
    uint32_t value; /**< lines */
} FileLinageGroup;
ZVK_AT(FileLinageGroup, name, 2);
ZVK_AT(FileLinageGroup, value, 32);
ZVK_STATIC_ASSERT(sizeof(FileLinageGroup) == 36, "FileLinageGroup");

/** File information block: read-only for the library. */
struct FIB {
    uint8_t reserved0[3];
    uint8_t sharing; /**< nonzero: SHARE and LOCK attributes apply, and the file has an UNLOCK slot */
    uint32_t index;  /**< the file's index in the program, from 1 */
    uint8_t code;    /**< default file-system code */
    char prefix[3];  /**< default file-system prefix */
    uint8_t organization;
    uint8_t accessMode;   /**< ZVK_FILE_ACCESS_... */
    uint8_t recordFormat; /**< 1 where records differ in length; compared for EXTERNAL files only */
    uint8_t attributes;
    uint32_t maxRecord; /**< bytes */
    uint32_t minRecord; /**< bytes */
    uint32_t reserved24;
    uint32_t keyCount;
    char name[44]; /**< COBOL file name, terminated */
    uint16_t assignmentLength;
    uint16_t feedbackLength; /**< of the FILE STATUS feedback field */
    uint8_t lockMode;        /**< ZVK_FILE_LOCK_... */
    uint8_t linage;
    uint8_t shareMode;
    uint8_t reserved83[5];
    uint32_t statusOffset;      /**< of the status field from its base cell */
    uint32_t feedbackOffset;    /**< of the feedback field from its base cell */
    uint32_t keysOffset;        /**< from the FIB's start: FileKey[keyCount], then the further parts of keys */
    uint32_t relativeKeyOffset; /**< from the FIB's start: 36 bytes that describe the RELATIVE KEY */
    uint32_t attributeOffset;   /**< from the FIB's start: 8 bytes, compared for EXTERNAL files */
    uint32_t linageOffset;      /**< from the FIB's start: FileLinageGroup[4] */
    uint64_t reserved112;
    uint8_t **recordArea; /**< cell that holds the record area's base address */
    char *assignment;
    uint8_t **statusBase;   /**< cell that holds a base address; null without FILE STATUS */
    uint8_t **feedbackBase; /**< likewise for the feedback field */
};
ZVK_AT(FIB, sharing, 3);
ZVK_AT(FIB, index, 4);
ZVK_AT(FIB, prefix, 9);
ZVK_AT(FIB, organization, 12);
ZVK_AT(FIB, attributes, 15);
ZVK_AT(FIB, maxRecord, 16);
ZVK_AT(FIB, keyCount, 28);
ZVK_AT(FIB, name, 32);
ZVK_AT(FIB, assignmentLength, 76);
ZVK_AT(FIB, lockMode, 80);
ZVK_AT(FIB, shareMode, 82);
ZVK_AT(FIB, statusOffset, 88);
ZVK_AT(FIB, keysOffset, 96);
ZVK_AT(FIB, linageOffset, 108);
ZVK_AT(FIB, recordArea, 120);
ZVK_AT(FIB, assignment, 128);
ZVK_AT(FIB, statusBase, 136);
ZVK_AT(FIB, feedbackBase, 144);

/** `FCB.requestedMode`, `FCB.mode` */
enum {
    ZVK_OPEN_INPUT = 0x8000,
    ZVK_OPEN_OUTPUT = 0x4000,
    ZVK_OPEN_IO = 0x2000,
    ZVK_OPEN_EXTEND = 0x1000,
    ZVK_OPEN_STATUS_07 = 0x0400
};

/** `FCB.closeOptions` */
enum {
    ZVK_CLOSE_NO_USE = 0x0001,
    ZVK_CLOSE_NEXT_VOLUME = 0x0400,
    ZVK_CLOSE_NO_REWIND = 0x0800,
    ZVK_CLOSE_LOCK = 0x1000,
    ZVK_CLOSE_STATUS_07 = 0x6800 /**< any of these: a CLOSE of a file without reels has status 07 */
};

/** `FCB.state` */
enum {
    ZVK_FILE_NAME_ALLOCATED = 0x00400000,
    ZVK_FILE_CONCATENATED = 0x00800000,
    ZVK_FILE_FIB_OF_PROGRAM = 0x01000000, /**< the FIB is found through the program: an EXTERNAL file */
    ZVK_FILE_POSITION_VALID = 0x02000000,
    ZVK_FILE_READ_VALID = 0x08000000
};
#define ZVK_FILE_ABSENT 0x80000000u /**< `FCB.state`: an OPTIONAL file was absent at OPEN */

/** `FCB.currentVerb`, `FCB.lastVerb` */
enum {
    ZVK_VERB_CLOSE = 1,
    ZVK_VERB_OPEN = 2,
    ZVK_VERB_UNLOCK = 4,
    ZVK_VERB_DELETE = 8,
    ZVK_VERB_START = 0x10,
    ZVK_VERB_REWRITE = 0x20,
    ZVK_VERB_WRITE = 0x40,
    ZVK_VERB_READ = 0x80
};

/** `FCB.statement` */
enum { ZVK_STATEMENT_INVALID_KEY = 0x80, ZVK_STATEMENT_AT_END = 0x20, ZVK_STATEMENT_NEXT = 0x02 };

struct FileRequest;

/**
 * OPEN, CLOSE: `slot(fcb, element)`, with the element of the program's IPCB array whose statement
 * it is.
 */
typedef void (*FileOperation)(FCB *fcb, IPCB *element);
/**
 * READ, WRITE, REWRITE, START, DELETE, UNLOCK: the statement's particulars in a request,
 * kvr2/fileio.h.
 */
typedef void (*FileVerb)(FCB *fcb, IPCB *element, struct FileRequest *request);
/** What a failed verb ends in: `variant` nonzero names the text of message 201. */
typedef void (*FileFailure)(FCB *fcb, uint32_t variant, IPCB *element);

/** File control record; 328 bytes. */
struct FCB {
    char eyecatcher[3]; /**< "FCB" */
    uint8_t sharing;    /**< as FIB.sharing; 1 for a record that the library made */
    uint32_t index;     /**< the file's index in the program, from 1 */
    uint8_t code;       /**< file-system code in force */
    char prefix[3];     /**< prefix in force */
    uint8_t defaultCode;
    char defaultPrefix[3];
    uint64_t reserved16;
    void **moduleOperations; /**< the module's operation table, what its `vfs()` returned; slot 24 gives FS2 texts */
    uint16_t requestedMode;  /**< ZVK_OPEN_... */
    uint16_t mode;           /**< in force, 0 when closed */
    uint16_t closeOptions;   /**< ZVK_CLOSE_... */
    uint16_t lastCloseOptions;
    uint32_t state; /**< ZVK_FILE_... */
    uint32_t reserved44;
    FIB *fib;
    uint16_t status;  /**< FS1 as a number, two digits */
    uint8_t lastVerb; /**< ZVK_VERB_... */
    uint8_t currentVerb;
    uint8_t reserved60[3];
    uint8_t statement; /**< ZVK_STATEMENT_... */
    uint64_t reserved64[2];
    char *fileName; /**< name in force */
    uint64_t reserved88;
    uint8_t *recordArea; /**< its first word points back to the FCB */
    uint8_t *record;     /**< record data, 32 bytes into the area */
    void *moduleBuffer;  /**< buffers of the module, freed at CLOSE */
    void *moduleBuffer2;
    uint32_t maxRecord; /**< bytes */
    uint32_t reserved132;
    uint32_t moduleWord; /**< 0 before the module's open */
    uint32_t reserved140;
    uint16_t moduleFlag; /**< 1 before the module's open */
    uint16_t reserved146;
    uint32_t recordLength; /**< bytes of the record last read */
    /**
     * of the record last read or written: relative number, or its place in a sequential file; from
     * 1
     */
    uint64_t recordNumber;
    uint32_t linageBody;    /**< LINAGE: lines of the page body */
    uint32_t linageFooting; /**< first line of the footing area, 0 without */
    uint32_t linageTop;     /**< lines of the top margin */
    uint32_t linageBottom;  /**< lines of the bottom margin */
    uint32_t linagePage; /**< lines of the body of the page being written; taken from linageBody when a page begins */
    uint32_t linageCounter; /**< LINAGE-COUNTER */
    uint32_t moduleWords;   /**< the module's own */
    uint8_t moduleByte;
    uint8_t openMark; /**< 2 after a successful open */
    uint8_t reserved190[2];
    FileVerb read;
    FileVerb write;
    FileVerb rewrite;
    FileVerb start;
    FileVerb deleteRecord; /**< DELETE */
    FileOperation close;
    FileOperation open;
    FileFailure useProc;
    /**
     * USE procedures for INPUT, OUTPUT, I-O, EXTEND and no mode: each null or a routine and its
     * argument
     */
    void **useTable;
    uint64_t reserved264;
    struct ZvkConcatenation *concatenation;
    uint32_t fs2; /**< secondary status */
    uint32_t reserved284;
    uint64_t reserved288[2];
    FileVerb unlock;
    uint64_t reserved312[2];
};
ZVK_AT(FCB, index, 4);
ZVK_AT(FCB, prefix, 9);
ZVK_AT(FCB, defaultPrefix, 13);
ZVK_AT(FCB, moduleOperations, 24);
ZVK_AT(FCB, requestedMode, 32);
ZVK_AT(FCB, lastCloseOptions, 38);
ZVK_AT(FCB, state, 40);
ZVK_AT(FCB, fib, 48);
ZVK_AT(FCB, status, 56);
ZVK_AT(FCB, currentVerb, 59);
ZVK_AT(FCB, statement, 63);
ZVK_AT(FCB, fileName, 80);
ZVK_AT(FCB, recordArea, 96);
ZVK_AT(FCB, record, 104);
ZVK_AT(FCB, moduleBuffer, 112);
ZVK_AT(FCB, maxRecord, 128);
ZVK_AT(FCB, moduleWord, 136);
ZVK_AT(FCB, moduleFlag, 144);
ZVK_AT(FCB, recordLength, 148);
ZVK_AT(FCB, moduleWords, 184);
ZVK_AT(FCB, openMark, 189);
ZVK_AT(FCB, read, 192);
ZVK_AT(FCB, useProc, 248);
ZVK_AT(FCB, useTable, 256);
ZVK_AT(FCB, concatenation, 272);
ZVK_AT(FCB, fs2, 280);
ZVK_AT(FCB, unlock, 304);
ZVK_STATIC_ASSERT(sizeof(FCB) == 328, "FCB");

ZVK_END_DECLS

#endif
