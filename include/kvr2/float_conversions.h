/**
 * Between packed or zoned items and floating point, between decimal and binary floating point, and arithmetic on 128-bit binary floats.
 *
 * `prec` is the number of digits of the decimal item and `decs` the number of its decimal places; `decs` may be negative or above `prec`.
 * Zoned items carry their sign in the zone of the last byte. Environment and threads are those of kvr2/decimal.h, the formats those of kvr2/floats.h.
 *
 * Into floating point: the digits, as an integer, and then one division by ten to the `decs`. The operand is validated unless COBOL_BCD_NOVALIDATE has
 * bit 1 (message 903), and then computed on as it stands. Digits beyond what the intermediate format holds:
 *
 * | Result | Exact up to | Beyond |
 * |---|---|---|
 * | binary 32, Decimal32 | 9 digits; Decimal32 is cut to its 7 | as binary 64, Decimal64, then narrowed (Decimal32: cut) |
 * | binary 64 | 17 digits (zoned 19) | as binary 128, then narrowed |
 * | binary 128 | 36 digits | packed: the digits after the first 19 bytes count as zeros |
 * | Decimal64 | 16 digits | as Decimal128, then narrowed |
 * | Decimal128 | 34 digits | rounded |
 *
 * Out of floating point: the value is cut to the item's places, in the `Rnd` forms after half a unit of the last place was added to its magnitude.
 * Digits that do not fit are dropped on the left. A zero is positive. A binary float gives no more significant digits than it is good for, the rest are zeros:
 * 9 for binary 32, 17 for binary 64, 36 for binary 128. A value beyond the item by more than that gives zero; infinities and NaNs give zero, too.
 */
#ifndef KVR2_FLOAT_CONVERSIONS_H
#define KVR2_FLOAT_CONVERSIONS_H

#include "kvr2/floats.h"

ZVK_BEGIN_DECLS

/** Packed to floating point; `DFlt` and `DFlt128` are the same. @return the number @messages 903 */
ZVK_EXPORT float _zvkcBCD_CONV_Pckd_To_SFlt(const uint8_t *src, int32_t prec, int32_t decs);
ZVK_EXPORT double _zvkcBCD_CONV_Pckd_To_LFlt(const uint8_t *src, int32_t prec, int32_t decs);
ZVK_EXPORT ZvkFloat128 _zvkcBCD_CONV_Pckd_To_EFlt(const uint8_t *src, int32_t prec, int32_t decs);
ZVK_EXPORT ZvkDecimal128 _zvkcBCD_CONV_Pckd_To_DFlt(const uint8_t *src, int32_t prec, int32_t decs);
ZVK_EXPORT ZvkDecimal64 _zvkcBCD_CONV_Pckd_To_DFlt64(const uint8_t *src, int32_t prec, int32_t decs);
ZVK_EXPORT ZvkDecimal128 _zvkcBCD_CONV_Pckd_To_DFlt128(const uint8_t *src, int32_t prec, int32_t decs);

/** Zoned to floating point. @return the number @messages 903 */
ZVK_EXPORT float _zvkcBCD_CONV_Znd_To_BFlt32(const uint8_t *src, int32_t prec, int32_t decs);
ZVK_EXPORT double _zvkcBCD_CONV_Znd_To_BFlt64(const uint8_t *src, int32_t prec, int32_t decs);
ZVK_EXPORT ZvkFloat128 _zvkcBCD_CONV_Znd_To_BFlt128(const uint8_t *src, int32_t prec, int32_t decs);
ZVK_EXPORT ZvkDecimal32 _zvkcBCD_CONV_Znd_To_DFlt32(const uint8_t *src, int32_t prec, int32_t decs);
ZVK_EXPORT ZvkDecimal64 _zvkcBCD_CONV_Znd_To_DFlt64(const uint8_t *src, int32_t prec, int32_t decs);
ZVK_EXPORT ZvkDecimal128 _zvkcBCD_CONV_Znd_To_DFlt128(const uint8_t *src, int32_t prec, int32_t decs);

/** Floating point to packed, cut or (`Rnd`) rounded. @return dst */
ZVK_EXPORT uint8_t *_zvkcBCD_CONV_SFlt_To_Pckd(uint8_t *dst, int32_t prec, int32_t decs, float value);
ZVK_EXPORT uint8_t *_zvkcBCD_CONV_SFlt_To_PckdRnd(uint8_t *dst, int32_t prec, int32_t decs, float value);
ZVK_EXPORT uint8_t *_zvkcBCD_CONV_LFlt_To_Pckd(uint8_t *dst, int32_t prec, int32_t decs, double value);
ZVK_EXPORT uint8_t *_zvkcBCD_CONV_LFlt_To_PckdRnd(uint8_t *dst, int32_t prec, int32_t decs, double value);
ZVK_EXPORT uint8_t *_zvkcBCD_CONV_EFlt_To_Pckd(uint8_t *dst, int32_t prec, int32_t decs, ZvkFloat128 value);
ZVK_EXPORT uint8_t *_zvkcBCD_CONV_EFlt_To_PckdRnd(uint8_t *dst, int32_t prec, int32_t decs, ZvkFloat128 value);
ZVK_EXPORT uint8_t *_zvkcBCD_CONV_DFlt32_To_Pckd(uint8_t *dst, int32_t prec, int32_t decs, ZvkDecimal32 value);
ZVK_EXPORT uint8_t *_zvkcBCD_CONV_DFlt32_To_PckdRnd(uint8_t *dst, int32_t prec, int32_t decs, ZvkDecimal32 value);
ZVK_EXPORT uint8_t *_zvkcBCD_CONV_DFlt64_To_Pckd(uint8_t *dst, int32_t prec, int32_t decs, ZvkDecimal64 value);
ZVK_EXPORT uint8_t *_zvkcBCD_CONV_DFlt64_To_PckdRnd(uint8_t *dst, int32_t prec, int32_t decs, ZvkDecimal64 value);
ZVK_EXPORT uint8_t *_zvkcBCD_CONV_DFlt_To_Pckd(uint8_t *dst, int32_t prec, int32_t decs, ZvkDecimal128 value);
ZVK_EXPORT uint8_t *_zvkcBCD_CONV_DFlt_To_PckdRnd(uint8_t *dst, int32_t prec, int32_t decs, ZvkDecimal128 value);

/** Floating point to zoned, cut or (`Rnd`) rounded. @return dst */
ZVK_EXPORT uint8_t *_zvkcBCD_CONV_BFlt32_To_Znd(uint8_t *dst, int32_t prec, int32_t decs, float value);
ZVK_EXPORT uint8_t *_zvkcBCD_CONV_BFlt32_To_ZndRnd(uint8_t *dst, int32_t prec, int32_t decs, float value);
ZVK_EXPORT uint8_t *_zvkcBCD_CONV_BFlt64_To_Znd(uint8_t *dst, int32_t prec, int32_t decs, double value);
ZVK_EXPORT uint8_t *_zvkcBCD_CONV_BFlt64_To_ZndRnd(uint8_t *dst, int32_t prec, int32_t decs, double value);
ZVK_EXPORT uint8_t *_zvkcBCD_CONV_BFlt128_To_Znd(uint8_t *dst, int32_t prec, int32_t decs, ZvkFloat128 value);
ZVK_EXPORT uint8_t *_zvkcBCD_CONV_BFlt128_To_ZndRnd(uint8_t *dst, int32_t prec, int32_t decs, ZvkFloat128 value);
ZVK_EXPORT uint8_t *_zvkcBCD_CONV_DFlt32_To_Znd(uint8_t *dst, int32_t prec, int32_t decs, ZvkDecimal32 value);
ZVK_EXPORT uint8_t *_zvkcBCD_CONV_DFlt32_To_ZndRnd(uint8_t *dst, int32_t prec, int32_t decs, ZvkDecimal32 value);
ZVK_EXPORT uint8_t *_zvkcBCD_CONV_DFlt64_To_Znd(uint8_t *dst, int32_t prec, int32_t decs, ZvkDecimal64 value);
ZVK_EXPORT uint8_t *_zvkcBCD_CONV_DFlt64_To_ZndRnd(uint8_t *dst, int32_t prec, int32_t decs, ZvkDecimal64 value);
ZVK_EXPORT uint8_t *_zvkcBCD_CONV_DFlt128_To_Znd(uint8_t *dst, int32_t prec, int32_t decs, ZvkDecimal128 value);
ZVK_EXPORT uint8_t *_zvkcBCD_CONV_DFlt128_To_ZndRnd(uint8_t *dst, int32_t prec, int32_t decs, ZvkDecimal128 value);

/** Between decimal and binary floating point: the nearest number. @return the number */
ZVK_EXPORT ZvkFloat128 _zvkcBCD_CONV_DFlt_To_EFlt(ZvkDecimal128 value);
ZVK_EXPORT double _zvkcBCD_CONV_DFlt_To_LFlt(ZvkDecimal128 value);
ZVK_EXPORT float _zvkcBCD_CONV_DFlt_To_SFlt(ZvkDecimal128 value);
ZVK_EXPORT ZvkDecimal128 _zvkcBCD_CONV_EFlt_To_DFlt(ZvkFloat128 value);
ZVK_EXPORT ZvkDecimal128 _zvkcBCD_CONV_LFlt_To_DFlt(double value);
ZVK_EXPORT ZvkDecimal128 _zvkcBCD_CONV_SFlt_To_DFlt(float value);

/** To an integer, by cutting the fraction. What a value beyond the integer's range gives has no meaning. @return the integer */
ZVK_EXPORT int64_t _zvkcBCD_CONV_DFlt_To_Int8(ZvkDecimal128 value);
ZVK_EXPORT uint64_t _zvkcBCD_CONV_DFlt_To_UInt8(ZvkDecimal128 value);
ZVK_EXPORT int64_t _zvkcBCD_CONV_EFlt_To_Int8(ZvkFloat128 value);

/** Arithmetic on 128-bit binary floats. A division by zero gives an infinity or a NaN. @return the result */
ZVK_EXPORT ZvkFloat128 _zvkc_ADD_BFlt128(ZvkFloat128 op1, ZvkFloat128 op2);
ZVK_EXPORT ZvkFloat128 _zvkc_SUB_BFlt128(ZvkFloat128 op1, ZvkFloat128 op2);
ZVK_EXPORT ZvkFloat128 _zvkc_MPY_BFlt128(ZvkFloat128 op1, ZvkFloat128 op2);
ZVK_EXPORT ZvkFloat128 _zvkc_DIV_BFlt128(ZvkFloat128 op1, ZvkFloat128 op2);
ZVK_EXPORT ZvkFloat128 _zvkc_ABS_BFlt128(ZvkFloat128 value);

/** From and to 128-bit binary floats; into an integer the fraction is cut. @return the number */
ZVK_EXPORT ZvkFloat128 _zvkc_CONV_Int4_To_BFlt128(int32_t value);
ZVK_EXPORT ZvkFloat128 _zvkc_CONV_Uns4_To_BFlt128(uint32_t value);
ZVK_EXPORT ZvkFloat128 _zvkc_CONV_Int8_To_BFlt128(int64_t value);
ZVK_EXPORT ZvkFloat128 _zvkc_CONV_Uns8_To_BFlt128(uint64_t value);
ZVK_EXPORT ZvkFloat128 _zvkc_CONV_SFlt_To_BFlt128(float value);
ZVK_EXPORT ZvkFloat128 _zvkc_CONV_LFlt_To_BFlt128(double value);
ZVK_EXPORT int32_t _zvkc_CONV_BFlt128_To_Int4(ZvkFloat128 value);
ZVK_EXPORT uint32_t _zvkc_CONV_BFlt128_To_Uns4(ZvkFloat128 value);
ZVK_EXPORT int64_t _zvkc_CONV_BFlt128_To_Int8(ZvkFloat128 value);
ZVK_EXPORT uint64_t _zvkc_CONV_BFlt128_To_Uns8(ZvkFloat128 value);
ZVK_EXPORT float _zvkc_CONV_BFlt128_To_SFlt(ZvkFloat128 value);
ZVK_EXPORT double _zvkc_CONV_BFlt128_To_LFlt(ZvkFloat128 value);

/** Comparisons of 128-bit binary floats: op1 equal to, not equal to, not below, not above, above, below op2. With a NaN all but NEQ are false. @return 1 or 0 */
ZVK_EXPORT int32_t _zvkc_EQU_BFlt128(ZvkFloat128 op1, ZvkFloat128 op2);
ZVK_EXPORT int32_t _zvkc_NEQ_BFlt128(ZvkFloat128 op1, ZvkFloat128 op2);
ZVK_EXPORT int32_t _zvkc_GEQ_BFlt128(ZvkFloat128 op1, ZvkFloat128 op2);
ZVK_EXPORT int32_t _zvkc_LEQ_BFlt128(ZvkFloat128 op1, ZvkFloat128 op2);
ZVK_EXPORT int32_t _zvkc_GRT_BFlt128(ZvkFloat128 op1, ZvkFloat128 op2);
ZVK_EXPORT int32_t _zvkc_LES_BFlt128(ZvkFloat128 op1, ZvkFloat128 op2);

ZVK_END_DECLS

#endif
