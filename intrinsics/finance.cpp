// FUNCTION PRESENT-VALUE and ANNUITY.
#include "base/quiet_floats.h"
#include "intrinsics/float_functions.h"
#include "intrinsics/function_errors.h"
#include "intrinsics/stored.h"
#include "kvr2/statistics.h"

namespace {

using namespace floats;

// A NaN is no rate either. The comparison is quiet so that it cannot trap.
template <class F>
bool isRate(typename F::Value rate)
{
    return quietly([&] { return rate > -1; });
}

template <class F>
typename F::Value presentValue(uint32_t count, const void *amounts)
{
    using Value = typename F::Value;
    const Stored<Value> *array = storedAt<Value>(amounts);
    if (count == 0) return 0;
    const Value rate = array[0];
    if (!isRate<F>(rate)) reportArgument(msg::rateTooSmall, "PRESENT-VALUE");
    return quietly([&] {
        Value factor = 1, sum = 0;
        for (uint32_t i = 1; i < count; i++) {
            factor *= 1 + rate;
            sum += array[i] / factor;
        }
        return sum;
    });
}

template <class F>
uint32_t checkRate(typename F::Value rate)
{
    if (isRate<F>(rate)) return 0;
    reportArgument(msg::rateTooSmall, "PRESENT-VALUE");
    return 0xFFFFFFFF;
}

template <class F>
typename F::Value annuity(typename F::Value rate, typename F::Value periods)
{
    const bool negativeRate = quietly([&] { return rate < 0; });
    const bool noPeriods = quietly([&] { return periods <= 0; });
    if (negativeRate) reportArgument(msg::negativeArgument, "ANNUITY");
    if (noPeriods) reportArgument(msg::argumentNotPositive, "ANNUITY");
    return quietly([&]() -> typename F::Value {
        if (rate == 0) return 1 / periods;
        return rate / (1 - Functions<F>::pow(1 + rate, -periods));
    });
}

} // namespace

void _zvkcPresentValue(uint32_t count, ZvkFloat64Item *result, const ZvkFloat64Item *array)
{
    *result = presentValue<Binary64>(count, array);
}

void _zvkcPresentValue16(uint32_t count, ZvkFloat128Item *result, const ZvkFloat128Item *array)
{
    *result = presentValue<Binary128>(count, array);
}

uint32_t _Dmr_present_value(double rate) { return checkRate<Binary64>(rate); }
uint32_t _Dmr_present_value_float16(ZvkFloat128 rate) { return checkRate<Binary128>(rate); }
uint32_t _Dmr_present_value_decfloat16(ZvkDecimal128 rate) { return checkRate<Decimal128>(rate); }

double _Dmr_annuity(double rate, double periods) { return annuity<Binary64>(rate, periods); }
double _zvkcAnnuityFloat8(double rate, double periods) { return annuity<Binary64>(rate, periods); }
ZvkFloat128 _zvkcAnnuityFloat16(ZvkFloat128 rate, ZvkFloat128 periods) { return annuity<Binary128>(rate, periods); }
