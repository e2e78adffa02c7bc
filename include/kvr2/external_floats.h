/**
 * External floating point ("+1.234E+05" as a picture describes it) and hexadecimal floating point
 * (base 16, as host data has it).
 */
#ifndef KVR2_EXTERNAL_FLOATS_H
#define KVR2_EXTERNAL_FLOATS_H

#include "kvr2/floats.h"

ZVK_BEGIN_DECLS

/**
 * The picture of an external floating-point item, for a move out of it. The item's length counts
 * the sign, the digits, the point, the "E", and the exponent's sign and two digits.
 */
typedef struct ZvkExternalFloatSource {
    int16_t length;         /**< bytes of the item; negated when the point is assumed ("V") */
    int16_t fractionDigits; /**< digits after the point */
    int16_t integerDigits;  /**< digits before it */
    int16_t width;          /**< bytes of the floating-point item: 4, 8 or 16 */
} ZvkExternalFloatSource;

/** The picture, for a move into it. */
typedef struct ZvkExternalFloatTarget {
    int16_t length;
    int16_t fractionDigits;
    int16_t integerDigits;
    uint8_t mantissaSign; /**< "+": the sign is always written; "-": a plus is written as a blank */
    uint8_t exponentSign; /**< the same for the exponent */
    uint8_t decimalPoint; /**< "." or "," */
} ZvkExternalFloatTarget;
ZVK_AT(ZvkExternalFloatSource, width, 6);
ZVK_AT(ZvkExternalFloatTarget, mantissaSign, 6);
ZVK_AT(ZvkExternalFloatTarget, decimalPoint, 8);

/**
 * External to binary floating point, or (`DFlt`) to decimal floating point.
 *
 * Whatever is no part of a number is skipped. Without a digit the result is 0. A value out of range
 * becomes the width's largest one.
 *
 * @param descriptor  the picture; its width is that of the result, of 4 or 8 bytes, all others are
 *           taken as 16
 * @param item        the external item
 * @param result      at any alignment
 * @param report      not 0: a value out of range is message 53
 * @return 0, or not 0 for a value out of range when `report` is 0
 */
ZVK_EXPORT int32_t _zvkcConvExtFltToIntFlt(const ZvkExternalFloatSource *descriptor, const uint8_t *item, void *result,
                                           int32_t report);
ZVK_EXPORT int32_t _zvkcConvExtFltToDFlt(const ZvkExternalFloatSource *descriptor, const uint8_t *item, void *result,
                                         int32_t report);

/**
 * As `_zvkcConvExtFltToIntFlt` for widths of 4, 8 and 16; others are refused with a line on stderr.
 * @return as above
 */
ZVK_EXPORT int32_t _Dmr_convertExtToIntFloat(const ZvkExternalFloatSource *descriptor, const uint8_t *item,
                                             void *result, int32_t report);

/**
 * Binary 64, or (`EFlt`) binary 128, to external floating point: rounded to the picture's digits.
 * The exponent is adjusted to two integer digits and more; without any it is that of one digit, and
 * the item a tenth of the value. An infinity is written as its sign and "INFINITY", a NaN as its
 * sign and "NAN", cut or filled with blanks.
 */
ZVK_EXPORT void _zvkcConvIntFltToExtFlt(const ZvkExternalFloatTarget *descriptor, const ZvkFloat64Item *value,
                                        uint8_t *item);
ZVK_EXPORT void _zvkcConvIntEFltToExtFlt(const ZvkExternalFloatTarget *descriptor, const ZvkFloat128Item *value,
                                         uint8_t *item);

/**
 * As `_zvkcConvIntEFltToExtFlt`; a picture of more than 34 digits, or of none, is refused with a
 * line on stderr.
 */
ZVK_EXPORT void _Dmr_convertIntToExtFloat(const ZvkExternalFloatTarget *descriptor, const ZvkFloat128Item *value,
                                          uint8_t *item);

/**
 * Between hexadecimal and binary floating point of 4 bytes, as their bits in integer registers. A
 * zero is +0; what is too small becomes a zero.
 *
 * @return the converted bits, or `otherwise` after a message
 * @messages 53: too large, or an infinity. 54: a NaN
 */
ZVK_EXPORT uint32_t _zvkcConvHex4toIEEE(uint32_t hex, uint32_t otherwise);
ZVK_EXPORT uint32_t _zvkcConvIEEE4toHex(uint32_t ieee, uint32_t otherwise);

/** The 8-byte conversions do nothing on this platform. @return 0 */
ZVK_EXPORT uint64_t _zvkcConvHex8toIEEE(uint64_t hex, uint64_t otherwise);
ZVK_EXPORT uint64_t _zvkcConvIEEE8toHex(uint64_t ieee, uint64_t otherwise);

ZVK_END_DECLS

#endif
