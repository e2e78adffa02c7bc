/**
 * The operator `**`.
 *
 * | Message | When | Result, if the message returns |
 * |---|---|---|
 * | 48 | negative base, exponent no integer | the power of the base without its sign |
 * | 49 | zero to the power of zero | 1 |
 * | 50 | zero to a negative power | 0 |
 * | 58 | a floating-point result is infinite | the infinity |
 * | 51, 59, 60, 61 | fixed point only, see `_zvkcExpFixedPt` | |
 *
 * ON SIZE ERROR: each entry takes the address of a counter. When the counter is not zero, an error adds one to it and no message is written. Set it to 1 before the
 * statement: more than 1 after it is the size error. With 0 in it errors are reported.
 */
#ifndef KVR2_EXPONENTIATION_H
#define KVR2_EXPONENTIATION_H

#include "kvr2/floats.h"

ZVK_BEGIN_DECLS

/** The operands of a fixed-point power, laid out by the compiler. */
typedef struct ZvkPowerDescriptor {
    uint16_t exponentDigits;      /**< digits of the exponent, without its sign byte */
    uint16_t reserved1[2];        /**< not looked at */
    uint16_t baseDigits;          /**< digits of the base, without its sign byte */
    uint16_t baseFraction;        /**< how many of them are decimal places */
    uint16_t reserved2;           /**< not looked at */
    uint16_t resultDigits;        /**< digits of the result, without its sign byte */
    uint16_t resultFraction;      /**< how many of them are decimal places */
    uint16_t resultUnitsPosition; /**< byte of the result that holds the units digit; the sign is byte 0 */
} ZvkPowerDescriptor;
ZVK_AT(ZvkPowerDescriptor, baseDigits, 6);
ZVK_AT(ZvkPowerDescriptor, baseFraction, 8);
ZVK_AT(ZvkPowerDescriptor, resultDigits, 12);
ZVK_AT(ZvkPowerDescriptor, resultFraction, 14);
ZVK_AT(ZvkPowerDescriptor, resultUnitsPosition, 16);

/**
 * Fixed point: result = base ** exponent, exponent an integer. All three are a sign byte, "+" or "-", and then digits.
 *
 * The power is computed digit by digit in 62 places. What does not fit the result is cut, on the right silently.
 *
 * @messages 59: the exponent has more than 9 digits, its last 9 are used. 60: the power has more than 62 digits; nothing is stored. 61: a negative power of a value
 *           that vanished; the result is zero. 51: no digit of a power that is not zero fits the result; it is zero. 49 and 50 as above.
 *           With the counter not zero, 49, 50, 60, 61 and lost digits on the left count, and the result stays as it was
 */
ZVK_EXPORT void _zvkcExpFixedPt(const ZvkPowerDescriptor *descriptor, const uint8_t *exponent, const uint8_t *base,
                                uint8_t *result, int32_t *errorCount);

/** Floating point and integers. @return base ** exponent @messages 48, 49, 50, 58 */
ZVK_EXPORT double _zvkExpFloat8Float8(double base, double exponent, int32_t *errorCount);
ZVK_EXPORT ZvkFloat128 _zvkExpFloat16Float8(ZvkFloat128 base, double exponent, int32_t *errorCount);
ZVK_EXPORT ZvkDecimal128 _zvkExpDFloat16DFloat16(ZvkDecimal128 base, ZvkDecimal128 exponent, int32_t *errorCount);
ZVK_EXPORT double _zvkExpFloat4Float4(float base, float exponent, int32_t *errorCount);
ZVK_EXPORT double _zvkExpInt8Int8(int64_t base, int64_t exponent, int32_t *errorCount);
ZVK_EXPORT double _zvkExpInt4Int4(int32_t base, int32_t exponent, int32_t *errorCount);
ZVK_EXPORT double _zvkExpFloat4Int4(float base, int32_t exponent, int32_t *errorCount);
ZVK_EXPORT double _zvkExpFloat8Int8(double base, int64_t exponent, int32_t *errorCount);
ZVK_EXPORT ZvkFloat128 _zvkExpFloat16Int8(ZvkFloat128 base, int64_t exponent, int32_t *errorCount);
ZVK_EXPORT ZvkDecimal128 _zvkExpDFloat16Int8(ZvkDecimal128 base, int64_t exponent, int32_t *errorCount);

/**
 * The same as a service that programs call by name, on COMP-2 items: result = base ** exponent.
 *
 * @param feedback  the 12-byte condition token: all zero, or severity, number (48, 49, 50, 58), flags and facility of the error. Null: errors are
 *                  reported as messages
 */
ZVK_EXPORT void LSVSDXPD(const ZvkFloat64Item *base, const ZvkFloat64Item *exponent, ZvkFloat64Item *result,
                         void *feedback);

ZVK_END_DECLS

#endif
