/**
 * The mathematical intrinsic functions, REM, INTEGER, FACTORIAL and RANDOM.
 *
 * Every function exists for binary 64, binary 128 and Decimal128; it takes its arguments by value
 * and returns the result. A wrong argument is reported, with the function's name, and the function
 * goes on if the message lets it:
 *
 * | Message | When |
 * |---|---|
 * | 163 | RANDOM, FACTORIAL of a negative number |
 * | 176 | ACOS, ASIN of more than 1; RANDOM of 10^18 or more; FACTORIAL in 31 digits of more than 29 |
 * | 177 | REM with a divisor of zero, which gives 0 |
 * | 178 | LOG, LOG10 of zero or less |
 * | 179 | ACOS, ASIN of less than -1; SQRT of a negative number |
 * | 180 | RANDOM of a number that is no integer |
 *
 * Formats: kvr2/floats.h. Threads: any; RANDOM's sequence belongs to the run unit and is not
 * locked.
 */
#ifndef KVR2_MATHEMATICS_H
#define KVR2_MATHEMATICS_H

#include "kvr2/floats.h"

ZVK_BEGIN_DECLS

/** FUNCTION ACOS. @return the result @messages 179, 176 */
ZVK_EXPORT double _zvkAcosFloat8(double x);
ZVK_EXPORT double _Dmr_acos(double x);
ZVK_EXPORT ZvkFloat128 _zvkAcosFloat16(ZvkFloat128 x);
ZVK_EXPORT ZvkFloat128 _Dmr_acos_float16(ZvkFloat128 x);
ZVK_EXPORT ZvkDecimal128 _Dmr_acos_decfloat16(ZvkDecimal128 x);

/** FUNCTION ASIN. @return the result @messages 179, 176 */
ZVK_EXPORT double _zvkAsinFloat8(double x);
ZVK_EXPORT double _Dmr_asin(double x);
ZVK_EXPORT ZvkFloat128 _zvkAsinFloat16(ZvkFloat128 x);
ZVK_EXPORT ZvkFloat128 _Dmr_asin_float16(ZvkFloat128 x);
ZVK_EXPORT ZvkDecimal128 _Dmr_asin_decfloat16(ZvkDecimal128 x);

/** FUNCTION ATAN. @return the result */
ZVK_EXPORT double _zvkAtanFloat8(double x);
ZVK_EXPORT double _Dmr_atan(double x);
ZVK_EXPORT ZvkFloat128 _zvkAtanFloat16(ZvkFloat128 x);
ZVK_EXPORT ZvkFloat128 _Dmr_atan_float16(ZvkFloat128 x);
ZVK_EXPORT ZvkDecimal128 _Dmr_atan_decfloat16(ZvkDecimal128 x);

/** FUNCTION COS. @return the result */
ZVK_EXPORT double _zvkCosFloat8(double x);
ZVK_EXPORT double _Dmr_cos(double x);
ZVK_EXPORT ZvkFloat128 _zvkCosFloat16(ZvkFloat128 x);
ZVK_EXPORT ZvkFloat128 _Dmr_cos_float16(ZvkFloat128 x);
ZVK_EXPORT ZvkDecimal128 _Dmr_cos_decfloat16(ZvkDecimal128 x);

/** FUNCTION SIN. @return the result */
ZVK_EXPORT double _zvkSinFloat8(double x);
ZVK_EXPORT double _Dmr_sin(double x);
ZVK_EXPORT ZvkFloat128 _zvkSinFloat16(ZvkFloat128 x);
ZVK_EXPORT ZvkFloat128 _Dmr_sin_float16(ZvkFloat128 x);
ZVK_EXPORT ZvkDecimal128 _Dmr_sin_decfloat16(ZvkDecimal128 x);

/** FUNCTION TAN. @return the result */
ZVK_EXPORT double _zvkTanFloat8(double x);
ZVK_EXPORT double _Dmr_tan(double x);
ZVK_EXPORT ZvkFloat128 _zvkTanFloat16(ZvkFloat128 x);
ZVK_EXPORT ZvkFloat128 _Dmr_tan_float16(ZvkFloat128 x);
ZVK_EXPORT ZvkDecimal128 _Dmr_tan_decfloat16(ZvkDecimal128 x);

/** FUNCTION LOG, the natural logarithm. @return the result @messages 178 */
ZVK_EXPORT double _zvkLogFloat8(double x);
ZVK_EXPORT double _Dmr_log(double x);
ZVK_EXPORT ZvkFloat128 _zvkLogFloat16(ZvkFloat128 x);
ZVK_EXPORT ZvkFloat128 _Dmr_log_float16(ZvkFloat128 x);
ZVK_EXPORT ZvkDecimal128 _Dmr_log_decfloat16(ZvkDecimal128 x);

/** FUNCTION LOG10. @return the result @messages 178 */
ZVK_EXPORT double _zvkLog10Float8(double x);
ZVK_EXPORT double _Dmr_log10(double x);
ZVK_EXPORT ZvkFloat128 _zvkLog10Float16(ZvkFloat128 x);
ZVK_EXPORT ZvkFloat128 _Dmr_log10_float16(ZvkFloat128 x);
ZVK_EXPORT ZvkDecimal128 _Dmr_log10_decfloat16(ZvkDecimal128 x);

/** FUNCTION SQRT. @return the result @messages 179 */
ZVK_EXPORT double _zvkSqrtFloat8(double x);
ZVK_EXPORT double _Dmr_sqrt(double x);
ZVK_EXPORT ZvkFloat128 _zvkSqrtFloat16(ZvkFloat128 x);
ZVK_EXPORT ZvkFloat128 _Dmr_sqrt_float16(ZvkFloat128 x);
ZVK_EXPORT ZvkDecimal128 _Dmr_sqrt_decfloat16(ZvkDecimal128 x);

/**
 * FUNCTION INTEGER: the greatest integer that is not above x. FUNCTION INTEGER-PART: x without its
 * fraction.
 * @return the integer
 */
ZVK_EXPORT double _zvkInteger(double x);
ZVK_EXPORT ZvkFloat128 _zvkInteger16(ZvkFloat128 x);
ZVK_EXPORT double _zvkIntegerPart(double x);
ZVK_EXPORT ZvkFloat128 _zvkIntegerPart16(ZvkFloat128 x);

/**
 * FUNCTION REM: what a division of `dividend` by `divisor` leaves, with the sign of the dividend.
 * @return the remainder
 * @messages 177
 */
ZVK_EXPORT double _zvkRemFloat8Float8(double dividend, double divisor);
ZVK_EXPORT double _Dmr_rem(double dividend, double divisor);
ZVK_EXPORT ZvkFloat128 _zvkRemFloat16Float16(ZvkFloat128 dividend, ZvkFloat128 divisor);
ZVK_EXPORT ZvkFloat128 _Dmr_rem_float16(ZvkFloat128 dividend, ZvkFloat128 divisor);
ZVK_EXPORT ZvkDecimal128 _Dmr_rem_decfloat16(ZvkDecimal128 dividend, ZvkDecimal128 divisor);

/**
 * FUNCTION RANDOM: the next number of the run unit's sequence, which begins with 0.4427071551059872
 * when no seed was given.
 *
 * @return at least 0, below 1
 * @threads  any; each number of the sequence goes to one of them
 */
ZVK_EXPORT double _zvkRandom(void);

/**
 * FUNCTION RANDOM with a seed: begins the run unit's sequence anew.
 * @return its first number
 * @messages 163, 176, 180
 */
ZVK_EXPORT double _zvkRandomInt8(uint64_t seed);
ZVK_EXPORT double _zvkRandomFloat8(double seed);
ZVK_EXPORT ZvkFloat128 _zvkRandomFloat16(ZvkFloat128 seed);
ZVK_EXPORT ZvkDecimal128 _Dmr_random_decfloat16(ZvkDecimal128 seed);

/**
 * FUNCTION FACTORIAL. Arguments up to 50; above, and after message 163, nothing is stored and a
 * value is 0, an address null.
 *
 * `_Dmr_factorial` stores 63 packed digits (32 bytes), `_Dmr_factorial_deczoned630` 63 zoned
 * digits, and both return `destination`. `_Dmr_factorial_decpacked320` gives the address of 31
 * packed digits (16 bytes, read only; the low-order ones of more than 31),
 * `_Dmr_factorial_decfloat16` the number, rounded to 34 digits; more than 29 is reported first in
 * these two.
 *
 * @messages 163; in the last two 176
 */
ZVK_EXPORT uint8_t *_Dmr_factorial(uint8_t *destination, int32_t n);
ZVK_EXPORT uint8_t *_Dmr_factorial_deczoned630(uint8_t *destination, int32_t n);
ZVK_EXPORT const uint8_t *_Dmr_factorial_decpacked320(int32_t n);
ZVK_EXPORT ZvkDecimal128 _Dmr_factorial_decfloat16(int32_t n);

ZVK_END_DECLS

#endif
