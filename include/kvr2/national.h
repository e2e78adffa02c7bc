/**
 * National data (UTF-16, little-endian units) and DBCS data (two-byte characters): moves,
 * comparisons, case, conversion and the DBCS class tests.
 *
 * Lengths are bytes; items may be at any alignment. Conversions, collation and case go by the
 * run unit's code pages and locale, which are chosen at the first use (`code_pages.h`), and come
 * one at a time. DBCS comparison uses the collation of the C library's locale.
 */
#ifndef KVR2_NATIONAL_H
#define KVR2_NATIONAL_H

#include "kvr2/export.h"

ZVK_BEGIN_DECLS

/**
 * MOVE between national items.
 *
 * The rest of a longer destination is filled with the bytes 0x00 0x20, which is no blank of
 * UTF-16; compiled programs are generated for it.
 *
 * @param length        bytes of the destination, an odd one is left alone; negative: JUSTIFIED RIGHT
 * @param sourceLength  bytes; the items must not overlap
 * @return units moved
 * @threads any
 */
ZVK_EXPORT int32_t _zvkMoveUnicode(uint8_t *destination, int32_t length, const uint8_t *source, int32_t sourceLength);

/**
 * FUNCTION NATIONAL-OF and DISPLAY-OF: native bytes to UTF-16 and back.
 *
 * @param length       bytes of the source
 * @param destination  NATIONAL-OF: twice as many bytes as the source has. DISPLAY-OF: for each unit
 *                     as many bytes as the longest character of the native code page takes
 * @return bytes stored; 0 after a failure
 * @messages 221, 222 as `_zvkConvToUnicode` and `_zvkConvFromUnicode`
 * @threads  one at a time
 */
ZVK_EXPORT int32_t _Dmr_national_of(int32_t length, const uint8_t *source, uint8_t *destination);
ZVK_EXPORT int32_t _Dmr_display_of(int32_t length, const uint8_t *source, uint8_t *destination);

/**
 * Compares national items by the collation of the locale; trailing blanks do not count.
 *
 * @return -1, 0 or 1; the status of the collation library if it has no collator
 * @messages 224 (locale, status): no collator
 * @threads  one at a time until the code pages are chosen, then any
 */
ZVK_EXPORT int32_t _zvkCompareUnicode(const uint8_t *left, int32_t leftLength, const uint8_t *right,
                                      int32_t rightLength);

/**
 * Case of national data, by the rules of the locale; a result may be longer than its source.
 *
 * @param capacity  in: bytes at destination; out: bytes stored
 * @return status of the conversion library: 0 good, above 0 an error
 * @messages 225 (status): the case could not be changed, or the destination is too small
 * @threads  one at a time until the code pages are chosen, then any
 */
ZVK_EXPORT int32_t _zvkLowerCaseUnicode(uint8_t *destination, uint32_t *capacity, const uint8_t *source,
                                        uint32_t length);
ZVK_EXPORT int32_t _zvkUpperCaseUnicode(uint8_t *destination, uint32_t *capacity, const uint8_t *source,
                                        uint32_t length);

/**
 * Compares DBCS items by the collation of the C library's locale. The shorter one is padded with
 * the pair 0x81 0x40, whatever the code page. A NUL byte ends an operand.
 *
 * @return below 0, 0 or above 0
 * @messages 907: no storage for operands of more than some hundred bytes
 * @threads  any
 */
ZVK_EXPORT int32_t _zvkcDBCSCmp(const uint8_t *left, int32_t leftLength, const uint8_t *right, int32_t rightLength);

/** The same with a literal that is repeated, or cut, to the length of the item. */
ZVK_EXPORT int32_t _zvkcDBCSCmpMultiByteFig(const uint8_t *left, int32_t length, const uint8_t *literal,
                                            int32_t literalLength);

/**
 * MOVE of DBCS items whose length is known only at run time; they may overlap.
 *
 * @param length        bytes of the destination; negative: JUSTIFIED RIGHT
 * @param sourceLength  bytes of the source; negative: padding is 0x40 0x40, otherwise the DBCS
 *                      blank of the locale
 * @threads any, once the code pages are chosen
 */
ZVK_EXPORT void _zvkcDBCSMoveVarLenOverlap(uint8_t *destination, int32_t length, const uint8_t *source,
                                           int32_t sourceLength);

/**
 * Class tests DBCS and KANJI: 1 if all characters are EBCDIC double-byte ones of the class or
 * double-byte blanks, else 0; an empty item gives 1.
 *
 * @param length  positive: native data, which is converted; negative: EBCDIC double-byte data of
 *                that many bytes, without shift codes
 * @messages those of `_zvkConvToEBCDIC`, for native data
 * @threads  one at a time for native data
 */
ZVK_EXPORT int32_t _zvkcClasDBCS(const uint8_t *item, int32_t length);
ZVK_EXPORT int32_t _zvkcClasKanji(const uint8_t *item, int32_t length);

ZVK_END_DECLS

#endif
