/**
 * Console verbs: DISPLAY, ACCEPT and STOP with a literal.
 *
 * The mnemonic devices are bound to streams on first use, through the environment: `SYSIN` or
 * `SYSIPT`; `SYSOUT`, `SYSLIST` or `SYSLST`; `SYSPUNCH` or `SYSPCH`; `CONSOLE` for both directions.
 * A name that ends in "%" is completed with the program's name, the time and the process id;
 * `COBOUTDIR` goes before names that do not begin with "." or "/". What is unset, or cannot
 * be opened, is stdin or stdout, but for `SYSPUNCH`, which is then missing. `COBOL_DISPLAY_FLUSH`,
 * read at the first DISPLAY of the process, makes every DISPLAY flush its stream if it begins with
 * "1".
 *
 * Any thread of the run unit may come here. A statement holds its stream's lock: lines from several
 * threads do not mix.
 */
#ifndef KVR2_CONSOLE_H
#define KVR2_CONSOLE_H

#include "kvr2/export.h"

ZVK_BEGIN_DECLS

enum {
    ZVK_DISPLAY_SYSOUT = 1,   /**< `DisplayRequest.device` */
    ZVK_DISPLAY_CONSOLE = 2,  /**< `DisplayRequest.device` */
    ZVK_DISPLAY_SYSPUNCH = 3, /**< `DisplayRequest.device` */

    ZVK_DISPLAY_NO_ADVANCING = 0x01, /**< `DisplayRequest.options`: no line end */

    ZVK_DISPLAY_FLOAT = 1,          /**< `DisplayItem.kind`: floating point of 4, 8 or 16 bytes */
    ZVK_DISPLAY_TEXT = 2,           /**< `DisplayItem.kind`: characters as they are; 4 and 5 mean the same */
    ZVK_DISPLAY_SIGNED_BINARY = 3,  /**< `DisplayItem.kind`: 1 to 8 bytes, those of 3 read as 4, those of 5 to 7 as 8 */
    ZVK_DISPLAY_UNSIGNED_BINARY = 7 /**< `DisplayItem.kind`: likewise */
};

/** A DISPLAY statement. */
typedef struct DisplayRequest {
    int32_t itemCount;    /**< zero or less: only the line end */
    uint8_t device;       /**< ZVK_DISPLAY_SYSOUT ... */
    uint8_t options;      /**< ZVK_DISPLAY_NO_ADVANCING */
    uint8_t decimalPoint; /**< character shown as decimal point of a floating-point item */
    uint8_t reserved7;
} DisplayRequest;

ZVK_AT(DisplayRequest, device, 4);
ZVK_AT(DisplayRequest, options, 5);
ZVK_AT(DisplayRequest, decimalPoint, 6);

/** An item of a DISPLAY statement; 32 bytes. */
typedef struct DisplayItem {
    const void *address; /**< at any alignment; null shows "(NULL)" */
    uint64_t size;       /**< bytes of storage */
    /**
     * in: digits of a number to show; out: bytes of text made of the item. Set it anew for every
     * call
     */
    uint64_t width;
    uint32_t kind; /**< ZVK_DISPLAY_FLOAT ... */
    uint32_t reserved28;
} DisplayItem;

ZVK_AT(DisplayItem, size, 8);
ZVK_AT(DisplayItem, width, 16);
ZVK_AT(DisplayItem, kind, 24);
ZVK_STATIC_ASSERT(sizeof(DisplayItem) == 32, "DisplayItem");

/**
 * Capture of DISPLAY: while the pointer is set, the text of a statement's first item goes there
 * instead of to the stream, and its length to the other; the other items are not shown. Who sets
 * the pointer owns the buffer, whose size is not checked.
 */
ZVK_EXPORT extern uint8_t *_zvkDebugBuf;
ZVK_EXPORT extern uint32_t _zvkDebugBufLen;

/**
 * DISPLAY.
 *
 * A binary number shows its last `width` digits, and a "-" before them where it is negative. A
 * floating-point number shows a blank or "-", the decimal point, `width` digits, "E", a blank or
 * "-", and the exponent: 1.5 with 4 digits is " .1500E 01".
 *
 * @param items  `request->itemCount` items; each one's `width` is rewritten
 * @messages 168 SYSPUNCH has no file, stdout is used; 169 no such device, nothing is written; 170
 *           an item of no valid kind or size, after
 *           the items before it and the line end. A failing write is not reported: the item is given up
 * @threads  any
 */
ZVK_EXPORT void _zvkcDisplay(const DisplayRequest *request, DisplayItem *items);

enum {
    ZVK_ACCEPT_DAY_OF_WEEK = 0x01,
    ZVK_ACCEPT_SYSIN = 0x02,
    ZVK_ACCEPT_TIME = 0x04,
    ZVK_ACCEPT_DAY = 0x08,
    ZVK_ACCEPT_DATE = 0x10,
    ZVK_ACCEPT_CONSOLE = 0x20,
    ZVK_ACCEPT_LONG_YEAR = 0x40, /**< with DATE or DAY: a year of four digits */
    ZVK_ACCEPT_DBCS = 0x80       /**< the target is a DBCS item: pad with its blank */
};

/**
 * ACCEPT from a device (ZVK_ACCEPT_SYSIN, ZVK_ACCEPT_CONSOLE) or from the clock.
 *
 * From a terminal, and from anything else with the run-time option ACCEPT=NEW, one line is read,
 * and what does not fit is dropped. Otherwise line ends count for nothing and reading goes on until
 * the target is full or the input ends. A target that gets at least one byte is padded with blanks;
 * if nothing comes, it stays as it was.
 *
 * From the clock the target gets local time as text, cut or padded with blanks: DATE yymmdd, DAY
 * yyddd, TIME hhmmsscc, DAY-OF-WEEK 1 (Monday) to 7.
 *
 * @param flags   ZVK_ACCEPT_...; of several clock forms DATE, DAY, TIME, DAY-OF-WEEK is the order
 * @param length  bytes of the target; below 1 nothing happens
 * @messages 200 variant 1 ("ACCEPT", errno): the read failed; what came before stays in the target
 * @threads  any
 */
ZVK_EXPORT void _zvkcAccept(uint32_t flags, int64_t length, uint8_t *target);

/**
 * ACCEPT of a national item, from a device that delivers UTF-16, low byte first.
 *
 * As `_zvkcAccept`, but a short input is not padded, and what does not fit of a line is dropped up
 * to the first byte 0x0A.
 *
 * @param flags   ZVK_ACCEPT_CONSOLE, else SYSIN is read
 * @param length  points to the code units of the target, taken as signed 32 bits
 * @messages 200 variant 1 ("ACCEPT", errno)
 * @threads  any
 */
ZVK_EXPORT void _zvkAcceptUnicode(int32_t flags, const uint64_t *length, uint16_t *target);

/**
 * STOP with a literal: shows it on SYSOUT and waits for a line from SYSIN, which is dropped.
 *
 * @param length  bytes of text
 * @messages 200 variant 1 ("STOP", errno): the read failed
 * @threads  any
 */
ZVK_EXPORT void _zvkcStopLiteral(uint64_t length, const uint8_t *text);

ZVK_END_DECLS

#endif
