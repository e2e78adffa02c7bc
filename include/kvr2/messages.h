/**
 * Run-time messages.
 *
 * A message is a number, a variant and inserts; its text and severity come from the catalog
 * `kvr2run.cat`, found through `NLSPATH`. docs/messages.md lists all of them. On the message stream
 * (`COBMSGS`, default stderr) it looks like this, wrapped to the terminal's width and followed by
 * an empty line:
 *
 *     ZVK903S  A packed or zoned decimal item holds data that is no number.
 *
 * | Severity | Letter | What follows |
 * |---|---|---|
 * | 0 | I | the caller goes on |
 * | 1 | W | the caller goes on; counts against the option ERRCOUNT |
 * | 2, 3 | S, C | a traceback and the line ZVK901S, then the run unit is aborted |
 *
 * The control word of a message:
 *
 * | Value or bits | Meaning |
 * |---|---|
 * | exactly 0x100, 0x101 | open, close the catalog; the number is ignored |
 * | low 8 bits otherwise | variant of the text, from 0 |
 * | 0x0400 | no traceback |
 * | 0x0800 | severity 2, whatever the catalog says |
 * | 0x1000 | severity 0, whatever the catalog says |
 * | 0x2000 | the text goes into a buffer instead, cut to its size: the first two inserts are its address and its size in bytes (32 bits); nothing is written, nothing ends |
 *
 * The inserts must be those that docs/messages.md lists for the number; a catalog text that asks
 * for others is treated as missing. A site may add numbers of its own to the catalog; their inserts
 * are between its texts and its callers.
 */
#ifndef KVR2_MESSAGES_H
#define KVR2_MESSAGES_H

#include <stdarg.h>

#include "kvr2/export.h"

ZVK_BEGIN_DECLS

/**
 * Writes a message.
 *
 * @param number    message number
 * @param control   see above
 * @param reserved  not looked at
 * @param args      the inserts; consumed
 * @return 0, or 0xFFFFFFFF after message 995. Does not return from a message that ends the run unit
 * @threads any; the lines of one message stay together on the stream, but the text buffer is one
 *          for the process
 */
ZVK_EXPORT uint32_t writeERRmsg(uint32_t number, uint32_t control, uint64_t reserved, va_list *args);

/** Writes a message, with the inserts as arguments; otherwise as `writeERRmsg`. */
ZVK_EXPORT uint32_t _zvkWriteERRmsg(uint32_t number, uint32_t control, ...);

/** Ends the run unit at the program's own wish, with message 901 (also `ZVKABORT`). */
ZVK_EXPORT void ZVKABEND(void);
ZVK_EXPORT void ZVKABORT(void);

/** Message 177: the second argument of FUNCTION MOD is zero. */
ZVK_EXPORT void _Dmr_issue_Mod_ErrMsg(void);
/** Message 177: the second argument of FUNCTION REM is zero. */
ZVK_EXPORT void _Dmr_issue_Rem_ErrMsg(void);
/** Message 162: the argument of FUNCTION CHAR is out of range. */
ZVK_EXPORT void _Dmr_char_msg(void);
/** Message 157: the argument of FUNCTION ORD is out of range. */
ZVK_EXPORT void _Dmr_ord_msg(void);

ZVK_END_DECLS

#endif
