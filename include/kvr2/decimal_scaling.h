/**
 * Packed and zoned decimal: scaling by powers of ten.
 *
 * Source and destination have the same form. `shift` is a number of digit positions; 0 is a plain
 * move. `Right` cuts, `RightRnd` rounds half up on the magnitude by the first digit that is
 * dropped. Digits that fall off on the left are lost, a carry out of the destination too; no
 * message is issued and nothing is validated. A negative zero becomes positive unless
 * COBOL_BCD_NOVALIDATE has bit 2. Operands, forms and threads: kvr2/decimal.h.
 */
#ifndef KVR2_DECIMAL_SCALING_H
#define KVR2_DECIMAL_SCALING_H

#include "kvr2/export.h"

ZVK_BEGIN_DECLS

/** Pckd: dst = src moved by `shift` digits. @return dst */
ZVK_EXPORT uint8_t *_zvkcBCD_SHFD_Pckd_Left(const uint8_t *src, uint8_t *dst, int32_t dstDigits, int32_t srcDigits,
                                            int32_t shift);
ZVK_EXPORT uint8_t *_zvkcBCD_SHFD_Pckd_Right(const uint8_t *src, uint8_t *dst, int32_t dstDigits, int32_t srcDigits,
                                             int32_t shift);
ZVK_EXPORT uint8_t *_zvkcBCD_SHFD_Pckd_RightRnd(const uint8_t *src, uint8_t *dst, int32_t dstDigits, int32_t srcDigits,
                                                int32_t shift);

/** Znd: dst = src moved by `shift` digits. @return dst */
ZVK_EXPORT uint8_t *_zvkcBCD_SHFD_Znd_Left(const uint8_t *src, uint8_t *dst, int32_t dstDigits, int32_t srcDigits,
                                           int32_t shift);
ZVK_EXPORT uint8_t *_zvkcBCD_SHFD_Znd_Right(const uint8_t *src, uint8_t *dst, int32_t dstDigits, int32_t srcDigits,
                                            int32_t shift);
ZVK_EXPORT uint8_t *_zvkcBCD_SHFD_Znd_RightRnd(const uint8_t *src, uint8_t *dst, int32_t dstDigits, int32_t srcDigits,
                                               int32_t shift);

/** ZndLO: dst = src moved by `shift` digits. @return dst */
ZVK_EXPORT uint8_t *_zvkcBCD_SHFD_ZndLO_Left(const uint8_t *src, uint8_t *dst, int32_t dstDigits, int32_t srcDigits,
                                             int32_t shift);
ZVK_EXPORT uint8_t *_zvkcBCD_SHFD_ZndLO_Right(const uint8_t *src, uint8_t *dst, int32_t dstDigits, int32_t srcDigits,
                                              int32_t shift);
ZVK_EXPORT uint8_t *_zvkcBCD_SHFD_ZndLO_RightRnd(const uint8_t *src, uint8_t *dst, int32_t dstDigits, int32_t srcDigits,
                                                 int32_t shift);

/** ZndUS: dst = src moved by `shift` digits. @return dst */
ZVK_EXPORT uint8_t *_zvkcBCD_SHFD_ZndUS_Left(const uint8_t *src, uint8_t *dst, int32_t dstDigits, int32_t srcDigits,
                                             int32_t shift);
ZVK_EXPORT uint8_t *_zvkcBCD_SHFD_ZndUS_Right(const uint8_t *src, uint8_t *dst, int32_t dstDigits, int32_t srcDigits,
                                              int32_t shift);
ZVK_EXPORT uint8_t *_zvkcBCD_SHFD_ZndUS_RightRnd(const uint8_t *src, uint8_t *dst, int32_t dstDigits, int32_t srcDigits,
                                                 int32_t shift);

/** ZndTS: dst = src moved by `shift` digits. @return dst */
ZVK_EXPORT uint8_t *_zvkcBCD_SHFD_ZndTS_Left(const uint8_t *src, uint8_t *dst, int32_t dstDigits, int32_t srcDigits,
                                             int32_t shift);
ZVK_EXPORT uint8_t *_zvkcBCD_SHFD_ZndTS_Right(const uint8_t *src, uint8_t *dst, int32_t dstDigits, int32_t srcDigits,
                                              int32_t shift);
ZVK_EXPORT uint8_t *_zvkcBCD_SHFD_ZndTS_RightRnd(const uint8_t *src, uint8_t *dst, int32_t dstDigits, int32_t srcDigits,
                                                 int32_t shift);

/** ZndLS: dst = src moved by `shift` digits. @return dst */
ZVK_EXPORT uint8_t *_zvkcBCD_SHFD_ZndLS_Left(const uint8_t *src, uint8_t *dst, int32_t dstDigits, int32_t srcDigits,
                                             int32_t shift);
ZVK_EXPORT uint8_t *_zvkcBCD_SHFD_ZndLS_Right(const uint8_t *src, uint8_t *dst, int32_t dstDigits, int32_t srcDigits,
                                              int32_t shift);
ZVK_EXPORT uint8_t *_zvkcBCD_SHFD_ZndLS_RightRnd(const uint8_t *src, uint8_t *dst, int32_t dstDigits, int32_t srcDigits,
                                                 int32_t shift);

ZVK_END_DECLS

#endif
