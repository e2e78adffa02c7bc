/**
 * Packed and zoned decimal: copies, the conversion matrix, and conversions to and from binary
 * integers.
 *
 * Operands, sign forms, environment and threads are those of kvr2/decimal.h. All of these cut
 * digits on the left without a message, or fill with zeros, and return the destination. A negative
 * zero becomes positive unless COBOL_BCD_NOVALIDATE has bit 2; under COBOL_BCD_EBCDIC results in
 * the forms `ZndTO` and `ZndLO` carry their sign as a letter.
 *
 * | Family | Validated | Messages |
 * |---|---|---|
 * | `Cpy_*`, `CONV_Znd*_To_*` | under COBOL_BCD_SAFE | 903; 40 for a separate sign, which the conversions look at in every mode |
 * | `CONV_Pckd_To_Znd*`, `CONV_Pckd_To_Int*` ... , `CONV_Znd_To_*Int*` | unless COBOL_BCD_NOVALIDATE has bit 1 | 903 |
 * | `CONV_*Int*_To_*`, `CONV_Uns*_To_Pckd` | never | |
 */
#ifndef KVR2_DECIMAL_CONVERSIONS_H
#define KVR2_DECIMAL_CONVERSIONS_H

#include "kvr2/export.h"

ZVK_BEGIN_DECLS

/**
 * MOVE between items of one form: `src` of `srcDigits` digits to `dst` of `dstDigits` digits; they
 * may overlap. @return dst
 */
ZVK_EXPORT uint8_t *_zvkcBCD_Cpy_Pckd(const uint8_t *src, uint8_t *dst, int32_t dstDigits, int32_t srcDigits);
ZVK_EXPORT uint8_t *_zvkcBCD_Cpy_Znd(const uint8_t *src, uint8_t *dst, int32_t dstDigits, int32_t srcDigits);
ZVK_EXPORT uint8_t *_zvkcBCD_Cpy_ZndLO(const uint8_t *src, uint8_t *dst, int32_t dstDigits, int32_t srcDigits);
ZVK_EXPORT uint8_t *_zvkcBCD_Cpy_ZndUS(const uint8_t *src, uint8_t *dst, int32_t dstDigits, int32_t srcDigits);
ZVK_EXPORT uint8_t *_zvkcBCD_Cpy_ZndLS(const uint8_t *src, uint8_t *dst, int32_t dstDigits, int32_t srcDigits);
ZVK_EXPORT uint8_t *_zvkcBCD_Cpy_ZndTS(const uint8_t *src, uint8_t *dst, int32_t dstDigits, int32_t srcDigits);

/**
 * MOVE from packed to a zoned form. The sign of a zero is decided by the source: a negative value
 * that is cut to zero keeps its sign. @return dst
 */
ZVK_EXPORT uint8_t *_zvkcBCD_CONV_Pckd_To_ZndTO(const uint8_t *src, uint8_t *dst, int32_t dstDigits, int32_t srcDigits);
ZVK_EXPORT uint8_t *_zvkcBCD_CONV_Pckd_To_ZndTS(const uint8_t *src, uint8_t *dst, int32_t dstDigits, int32_t srcDigits);
ZVK_EXPORT uint8_t *_zvkcBCD_CONV_Pckd_To_ZndLO(const uint8_t *src, uint8_t *dst, int32_t dstDigits, int32_t srcDigits);
ZVK_EXPORT uint8_t *_zvkcBCD_CONV_Pckd_To_ZndLS(const uint8_t *src, uint8_t *dst, int32_t dstDigits, int32_t srcDigits);
ZVK_EXPORT uint8_t *_zvkcBCD_CONV_Pckd_To_ZndUS(const uint8_t *src, uint8_t *dst, int32_t dstDigits, int32_t srcDigits);

/**
 * MOVE from a zoned form to packed. From `ZndUS` a "+", "-" or blank before the digits and a
 * "+" or "-" after them are skipped and do not count as a sign.
 * @return dst
 */
ZVK_EXPORT uint8_t *_zvkcBCD_CONV_ZndTO_To_Pckd(const uint8_t *src, uint8_t *dst, int32_t dstDigits, int32_t srcDigits);
ZVK_EXPORT uint8_t *_zvkcBCD_CONV_ZndTS_To_Pckd(const uint8_t *src, uint8_t *dst, int32_t dstDigits, int32_t srcDigits);
ZVK_EXPORT uint8_t *_zvkcBCD_CONV_ZndLO_To_Pckd(const uint8_t *src, uint8_t *dst, int32_t dstDigits, int32_t srcDigits);
ZVK_EXPORT uint8_t *_zvkcBCD_CONV_ZndLS_To_Pckd(const uint8_t *src, uint8_t *dst, int32_t dstDigits, int32_t srcDigits);
ZVK_EXPORT uint8_t *_zvkcBCD_CONV_ZndUS_To_Pckd(const uint8_t *src, uint8_t *dst, int32_t dstDigits, int32_t srcDigits);

/** MOVE between zoned forms. @return dst */
ZVK_EXPORT uint8_t *_zvkcBCD_CONV_ZndTO_To_ZndTO(const uint8_t *src, uint8_t *dst, int32_t dstDigits,
                                                 int32_t srcDigits);
ZVK_EXPORT uint8_t *_zvkcBCD_CONV_ZndTO_To_ZndTS(const uint8_t *src, uint8_t *dst, int32_t dstDigits,
                                                 int32_t srcDigits);
ZVK_EXPORT uint8_t *_zvkcBCD_CONV_ZndTO_To_ZndLO(const uint8_t *src, uint8_t *dst, int32_t dstDigits,
                                                 int32_t srcDigits);
ZVK_EXPORT uint8_t *_zvkcBCD_CONV_ZndTO_To_ZndLS(const uint8_t *src, uint8_t *dst, int32_t dstDigits,
                                                 int32_t srcDigits);
ZVK_EXPORT uint8_t *_zvkcBCD_CONV_ZndTO_To_ZndUS(const uint8_t *src, uint8_t *dst, int32_t dstDigits,
                                                 int32_t srcDigits);
ZVK_EXPORT uint8_t *_zvkcBCD_CONV_ZndTS_To_ZndTO(const uint8_t *src, uint8_t *dst, int32_t dstDigits,
                                                 int32_t srcDigits);
ZVK_EXPORT uint8_t *_zvkcBCD_CONV_ZndTS_To_ZndTS(const uint8_t *src, uint8_t *dst, int32_t dstDigits,
                                                 int32_t srcDigits);
ZVK_EXPORT uint8_t *_zvkcBCD_CONV_ZndTS_To_ZndLO(const uint8_t *src, uint8_t *dst, int32_t dstDigits,
                                                 int32_t srcDigits);
ZVK_EXPORT uint8_t *_zvkcBCD_CONV_ZndTS_To_ZndLS(const uint8_t *src, uint8_t *dst, int32_t dstDigits,
                                                 int32_t srcDigits);
ZVK_EXPORT uint8_t *_zvkcBCD_CONV_ZndTS_To_ZndUS(const uint8_t *src, uint8_t *dst, int32_t dstDigits,
                                                 int32_t srcDigits);
ZVK_EXPORT uint8_t *_zvkcBCD_CONV_ZndLO_To_ZndTO(const uint8_t *src, uint8_t *dst, int32_t dstDigits,
                                                 int32_t srcDigits);
ZVK_EXPORT uint8_t *_zvkcBCD_CONV_ZndLO_To_ZndTS(const uint8_t *src, uint8_t *dst, int32_t dstDigits,
                                                 int32_t srcDigits);
ZVK_EXPORT uint8_t *_zvkcBCD_CONV_ZndLO_To_ZndLO(const uint8_t *src, uint8_t *dst, int32_t dstDigits,
                                                 int32_t srcDigits);
ZVK_EXPORT uint8_t *_zvkcBCD_CONV_ZndLO_To_ZndLS(const uint8_t *src, uint8_t *dst, int32_t dstDigits,
                                                 int32_t srcDigits);
ZVK_EXPORT uint8_t *_zvkcBCD_CONV_ZndLO_To_ZndUS(const uint8_t *src, uint8_t *dst, int32_t dstDigits,
                                                 int32_t srcDigits);
ZVK_EXPORT uint8_t *_zvkcBCD_CONV_ZndLS_To_ZndTO(const uint8_t *src, uint8_t *dst, int32_t dstDigits,
                                                 int32_t srcDigits);
ZVK_EXPORT uint8_t *_zvkcBCD_CONV_ZndLS_To_ZndTS(const uint8_t *src, uint8_t *dst, int32_t dstDigits,
                                                 int32_t srcDigits);
ZVK_EXPORT uint8_t *_zvkcBCD_CONV_ZndLS_To_ZndLO(const uint8_t *src, uint8_t *dst, int32_t dstDigits,
                                                 int32_t srcDigits);
ZVK_EXPORT uint8_t *_zvkcBCD_CONV_ZndLS_To_ZndLS(const uint8_t *src, uint8_t *dst, int32_t dstDigits,
                                                 int32_t srcDigits);
ZVK_EXPORT uint8_t *_zvkcBCD_CONV_ZndLS_To_ZndUS(const uint8_t *src, uint8_t *dst, int32_t dstDigits,
                                                 int32_t srcDigits);
ZVK_EXPORT uint8_t *_zvkcBCD_CONV_ZndUS_To_ZndTO(const uint8_t *src, uint8_t *dst, int32_t dstDigits,
                                                 int32_t srcDigits);
ZVK_EXPORT uint8_t *_zvkcBCD_CONV_ZndUS_To_ZndTS(const uint8_t *src, uint8_t *dst, int32_t dstDigits,
                                                 int32_t srcDigits);
ZVK_EXPORT uint8_t *_zvkcBCD_CONV_ZndUS_To_ZndLO(const uint8_t *src, uint8_t *dst, int32_t dstDigits,
                                                 int32_t srcDigits);
ZVK_EXPORT uint8_t *_zvkcBCD_CONV_ZndUS_To_ZndLS(const uint8_t *src, uint8_t *dst, int32_t dstDigits,
                                                 int32_t srcDigits);
ZVK_EXPORT uint8_t *_zvkcBCD_CONV_ZndUS_To_ZndUS(const uint8_t *src, uint8_t *dst, int32_t dstDigits,
                                                 int32_t srcDigits);

/**
 * Decimal to binary: the signed value, or for Uns and UInt the magnitude; too large a value wraps.
 * @return the value
 */
ZVK_EXPORT int8_t _zvkcBCD_CONV_Pckd_To_Int1(const uint8_t *src, int32_t srcDigits);
ZVK_EXPORT int16_t _zvkcBCD_CONV_Pckd_To_Int2(const uint8_t *src, int32_t srcDigits);
ZVK_EXPORT int32_t _zvkcBCD_CONV_Pckd_To_Int4(const uint8_t *src, int32_t srcDigits);
ZVK_EXPORT int64_t _zvkcBCD_CONV_Pckd_To_Int8(const uint8_t *src, int32_t srcDigits);
ZVK_EXPORT uint8_t _zvkcBCD_CONV_Pckd_To_Uns1(const uint8_t *src, int32_t srcDigits);
ZVK_EXPORT uint16_t _zvkcBCD_CONV_Pckd_To_Uns2(const uint8_t *src, int32_t srcDigits);
ZVK_EXPORT uint32_t _zvkcBCD_CONV_Pckd_To_Uns4(const uint8_t *src, int32_t srcDigits);
ZVK_EXPORT uint64_t _zvkcBCD_CONV_Pckd_To_Uns8(const uint8_t *src, int32_t srcDigits);
ZVK_EXPORT int32_t _zvkcBCD_CONV_Znd_To_Int4(const uint8_t *src, int32_t srcDigits);
ZVK_EXPORT int64_t _zvkcBCD_CONV_Znd_To_Int8(const uint8_t *src, int32_t srcDigits);
ZVK_EXPORT uint32_t _zvkcBCD_CONV_Znd_To_UInt4(const uint8_t *src, int32_t srcDigits);
ZVK_EXPORT uint64_t _zvkcBCD_CONV_Znd_To_UInt8(const uint8_t *src, int32_t srcDigits);

/** Binary to decimal. @return dst */
ZVK_EXPORT uint8_t *_zvkcBCD_CONV_Int1_To_Pckd(int8_t value, uint8_t *dst, int32_t dstDigits);
ZVK_EXPORT uint8_t *_zvkcBCD_CONV_Int2_To_Pckd(int16_t value, uint8_t *dst, int32_t dstDigits);
ZVK_EXPORT uint8_t *_zvkcBCD_CONV_Int4_To_Pckd(int32_t value, uint8_t *dst, int32_t dstDigits);
ZVK_EXPORT uint8_t *_zvkcBCD_CONV_Int8_To_Pckd(int64_t value, uint8_t *dst, int32_t dstDigits);
ZVK_EXPORT uint8_t *_zvkcBCD_CONV_Uns1_To_Pckd(uint8_t value, uint8_t *dst, int32_t dstDigits);
ZVK_EXPORT uint8_t *_zvkcBCD_CONV_Uns2_To_Pckd(uint16_t value, uint8_t *dst, int32_t dstDigits);
ZVK_EXPORT uint8_t *_zvkcBCD_CONV_Uns4_To_Pckd(uint32_t value, uint8_t *dst, int32_t dstDigits);
ZVK_EXPORT uint8_t *_zvkcBCD_CONV_Uns8_To_Pckd(uint64_t value, uint8_t *dst, int32_t dstDigits);
ZVK_EXPORT uint8_t *_zvkcBCD_CONV_Int4_To_Znd(int32_t value, uint8_t *dst, int32_t dstDigits);
ZVK_EXPORT uint8_t *_zvkcBCD_CONV_Int8_To_Znd(int64_t value, uint8_t *dst, int32_t dstDigits);
ZVK_EXPORT uint8_t *_zvkcBCD_CONV_UInt4_To_Znd(uint32_t value, uint8_t *dst, int32_t dstDigits);
ZVK_EXPORT uint8_t *_zvkcBCD_CONV_UInt8_To_Znd(uint64_t value, uint8_t *dst, int32_t dstDigits);

/**
 * A length from an item with `fractionDigits` decimal places: any fraction counts as one more; a
 * negative item counts as 0. Looks at no mode and validates nothing.
 */
ZVK_EXPORT uint64_t _zvkcBCD_CONV_Pckd_To_Len8(const uint8_t *src, int32_t srcDigits, int32_t fractionDigits);

ZVK_END_DECLS

#endif
