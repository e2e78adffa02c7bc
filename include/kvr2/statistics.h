/**
 * FUNCTION MEDIAN, VARIANCE, STANDARD-DEVIATION, PRESENT-VALUE and ANNUITY, on arrays of `count` numbers in one format.
 *
 * The mean that VARIANCE and STANDARD-DEVIATION take is computed by compiled code. No numbers give 0. Formats: kvr2/floats.h. Threads: any.
 */
#ifndef KVR2_STATISTICS_H
#define KVR2_STATISTICS_H

#include "kvr2/floats.h"

ZVK_BEGIN_DECLS

/** MEDIAN; changes the order of the array. The 16-byte forms store the result and return it. */
ZVK_EXPORT void _zvkcMedian(uint32_t count, ZvkFloat64Item *result, ZvkFloat64Item *array);
ZVK_EXPORT double _zvkcMedianFloat8(uint32_t count, ZvkFloat64Item *array);
ZVK_EXPORT ZvkFloat128 _zvkcMedian16(uint32_t count, ZvkFloat128Item *result, ZvkFloat128Item *array);
ZVK_EXPORT ZvkFloat128 _zvkcMedianFloat16(uint32_t count, ZvkFloat128Item *result, ZvkFloat128Item *array);

/** VARIANCE: the mean of the squared distances from `mean`. STANDARD-DEVIATION: its square root. */
ZVK_EXPORT void _zvkcVariance(uint32_t count, ZvkFloat64Item *result, const ZvkFloat64Item *array, double mean);
ZVK_EXPORT void _zvkcVariance16(uint32_t count, ZvkFloat128Item *result, const ZvkFloat128Item *array,
                                ZvkFloat128 mean);
ZVK_EXPORT void _zvkcStandardDeviation(uint32_t count, ZvkFloat64Item *result, const ZvkFloat64Item *array,
                                       double mean);
ZVK_EXPORT void _zvkcStandardDeviation16(uint32_t count, ZvkFloat128Item *result, const ZvkFloat128Item *array,
                                         ZvkFloat128 mean);

/** PRESENT-VALUE: the first number is the rate, the amounts follow it; `count` counts them all. @messages 100: the rate is not above -1 */
ZVK_EXPORT void _zvkcPresentValue(uint32_t count, ZvkFloat64Item *result, const ZvkFloat64Item *array);
ZVK_EXPORT void _zvkcPresentValue16(uint32_t count, ZvkFloat128Item *result, const ZvkFloat128Item *array);

/** PRESENT-VALUE computed by compiled code: looks at the rate only. @return 0, or 0xFFFFFFFF after message 100 */
ZVK_EXPORT uint32_t _Dmr_present_value(double rate);
ZVK_EXPORT uint32_t _Dmr_present_value_float16(ZvkFloat128 rate);
ZVK_EXPORT uint32_t _Dmr_present_value_decfloat16(ZvkDecimal128 rate);

/** ANNUITY; the first two names are one. @return the annuity @messages 163: negative rate. 177: the number of periods is not above 0 */
ZVK_EXPORT double _Dmr_annuity(double rate, double periods);
ZVK_EXPORT double _zvkcAnnuityFloat8(double rate, double periods);
ZVK_EXPORT ZvkFloat128 _zvkcAnnuityFloat16(ZvkFloat128 rate, ZvkFloat128 periods);

ZVK_END_DECLS

#endif
