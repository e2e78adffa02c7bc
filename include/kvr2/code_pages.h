/**
 * Code pages: the run unit's native and EBCDIC code page, and conversions between them and UTF-16.
 *
 * Native data is in the code set of the process's locale. The EBCDIC code page is the one that
 * `EBCDIC_CODEPAGE` names, or the one that belongs to the locale's language and territory. Both are
 * chosen once, at the first use of any entry here or by `_zvkcSetCodePages`: `Proccom.ccsid` is
 * then the row of the locale, `Proccom.localeName` as in "en_US.UTF-8", `Proccom.ebcdicCodePage` as
 * in "TQX-1140".
 *
 * A code-page name is what the converter library knows ("UTF-8", "ISO8859-15"), or "TQX-" or "tqx-"
 * and the number of a coded character set ("TQX-1140").
 *
 * Statuses are those of the converter library: 0 good, above 0 an error; warnings are reported as
 * 0. Two errors mean that the result is incomplete: 11, a character cut off at the end of the
 * source, and 15, a destination that is too small.
 *
 * The two default converters and the last status are process-wide and not locked: conversions come
 * one at a time. Entries that name a code page open and close a converter in every call.
 *
 * Environment: `EBCDIC_CODEPAGE` (at most 14 bytes), `LC_ALL`, `LC_CTYPE`, `LANG`, read when the
 * code pages are chosen.
 */
#ifndef KVR2_CODE_PAGES_H
#define KVR2_CODE_PAGES_H

#include "kvr2/alphabet.h"
#include "kvr2/export.h"

ZVK_BEGIN_DECLS

/**
 * Values of the name length that stand for the two default code pages; the name is then not looked
 * at.
 */
enum { ZVK_CODE_PAGE_EBCDIC = -1, ZVK_CODE_PAGE_NATIVE = 0 };

/**
 * Chooses the code pages of the run unit, unless that is done.
 *
 * @messages 230 variant 1 (value, locale): `EBCDIC_CODEPAGE` does not suit the locale; it is used
 *           all the same.
 *           230 variant 2 (value, code page used): `EBCDIC_CODEPAGE` is unknown; severe if it is longer than 14 bytes
 * @threads  one at a time
 */
ZVK_EXPORT void _zvkcSetCodePages(void);

/**
 * The chosen names, NUL-ended; chooses them first if need be.
 *
 * @param localeName      64 bytes; gets language and territory, ".", and from the seventh byte on
 *                        the code set
 * @param ebcdicCodePage  16 bytes; gets the name of the EBCDIC code page
 * @messages as `_zvkcSetCodePages`
 * @threads  one at a time until the code pages are chosen, then any
 */
ZVK_EXPORT void _zvkGetLocaleCP(char *localeName, char *ebcdicCodePage);

/**
 * Can a code page be opened?
 *
 * @param name    its name, not NUL-ended
 * @param length  bytes of the name, at most 30
 * @return 0 yes, 1 no
 * @messages 221 (name, status), severe, for a length above 30
 * @threads  any
 */
ZVK_EXPORT int32_t _zvkValidateCPID(const char *name, int32_t length);

/**
 * The most bytes that a character of the NUL-ended code page takes; 0 if it cannot be opened. Any
 * thread.
 */
ZVK_EXPORT uint32_t _zvkGetMaxCharSize(const char *name);

/**
 * The number of a code page.
 *
 * @param name   NUL-ended
 * @param ccsid  gets the number, 0xFFFFFFFF if there is none
 * @return 0 good, 1 the code page has no number, 2 it cannot be opened
 * @threads any
 */
ZVK_EXPORT int32_t _zvkGetCCSID(const char *name, uint32_t *ccsid);

/** The most bytes that a character of the process's locale takes. Any thread. */
ZVK_EXPORT uint64_t _zvkGetMBCurMax(void);

/**
 * Bytes to UTF-16 (little-endian code units).
 *
 * @param source       sourceLength bytes in the code page
 * @param destination  at any alignment
 * @param capacity     in: bytes at destination, of which an odd one is left alone; out: bytes
 *                     stored
 * @param name         the code page, not NUL-ended
 * @param nameLength   bytes of the name, at most 30; 0 the native page, -1 the EBCDIC page
 * @return status; with 11 and 15 what could be converted has been stored
 * @messages 221 (name, status) the code page cannot be opened; 222 (status) the conversion failed,
 *           which with 11 and 15 only informs
 * @threads  one at a time
 */
ZVK_EXPORT int32_t _zvkConvToUnicode(const uint8_t *source, uint32_t sourceLength, uint8_t *destination,
                                     uint32_t *capacity, const char *name, int32_t nameLength);

/**
 * UTF-16 to bytes; the mirror image of `_zvkConvToUnicode`.
 *
 * @param source        sourceLength bytes of UTF-16, at any alignment; an odd byte at the end is
 *                      left out
 * @param capacity      in: bytes at destination; out: bytes stored; left as it was where the status
 *                      is not 0
 * @return status; with 15 the destination is full of what had room
 * @messages 221 (name, status); 222 (status) for every error
 * @threads  one at a time
 */
ZVK_EXPORT int32_t _zvkConvFromUnicode(const uint8_t *source, uint32_t sourceLength, uint8_t *destination,
                                       uint32_t *capacity, const char *name, int32_t nameLength);

/**
 * Native bytes to the EBCDIC page.
 *
 * @param capacity  in: bytes at destination; out: what is left of them, capacity less bytes stored.
 *                  After a failure: 0 where the
 *                  destination was filled, else as it was
 * @return status
 * @messages 221, 222 as above, 907
 * @threads  one at a time
 */
ZVK_EXPORT int32_t _zvkUniAtoE(const uint8_t *source, uint32_t length, uint8_t *destination, uint32_t *capacity);

/** Bytes of the EBCDIC page to native bytes; otherwise as `_zvkUniAtoE`. */
ZVK_EXPORT int32_t _zvkUniEtoA(const uint8_t *source, uint32_t length, uint8_t *destination, uint32_t *capacity);

/**
 * Native bytes to EBCDIC, with a say in the shift codes around double-byte data (shift-out 0x0E,
 * shift-in 0x0F).
 *
 * A source that is one shift code alone is stored as it is.
 *
 * @param length    bytes of the source; negative: the result is double-byte data without its shift
 *                  codes
 * @param capacity  in: bytes at destination; negative: mixed data, an open shift-out is closed at
 *                  the end of the result.
 *                  out: bytes stored; 0 after a failure. A longer result is cut
 * @return status; the conversion's work area has room for 5/3 of the capacity, so a source far
 *         longer than that fails with 15
 * @messages as `_zvkUniAtoE`
 * @threads  one at a time
 */
ZVK_EXPORT int32_t _zvkConvToEBCDIC(const uint8_t *source, int32_t length, uint8_t *destination, int32_t *capacity);

/**
 * EBCDIC to native bytes, padded with blanks (0x20) to the capacity.
 *
 * A source that is one shift code alone is stored as it is, without padding.
 *
 * @param length    bytes of the source; negative: double-byte data, shift codes are supplied where
 *                  they are missing
 * @param capacity  in: bytes at destination; negative: the blanks go before the text. out:
 *                  bytes of text stored; 0 after a failure
 * @return status
 * @messages as `_zvkUniEtoA`
 * @threads  one at a time
 */
ZVK_EXPORT int32_t _zvkConvToASCII(const uint8_t *source, int32_t length, uint8_t *destination, int32_t *capacity);

/**
 * Stores the two translate tables of an EBCDIC alphabet in the record.
 *
 * The tables are two and equal: both lead from EBCDIC to native bytes.
 *
 * @messages 230 variant 4: the tables could not be made, besides 221 and 222
 * @threads  any; a busy mutex shows on stderr
 */
ZVK_EXPORT void _zvkcEBCDIC(AlphabetRecord *record);

ZVK_END_DECLS

#endif
