// The operator `**` in floating point: the library's power of the format under the rules of COBOL
// for bases that are zero or negative. Each rule that is broken counts, or is reported, and has a
// result all the same.
#include <cmath>
#include <quadmath.h>

#include "base/bytes.h"
#include "base/quiet_floats.h"
#include "intrinsics/dfp.h"
#include "intrinsics/float_functions.h"
#include "intrinsics/power_errors.h"
#include "kvr2/exponentiation.h"

namespace {

using namespace floats;

// `report` takes a message number.
template <class F, class Report>
typename F::Value powerOf(typename F::Value base, typename F::Value exponent, Report report)
{
    typename F::Value result;
    if (base < 0) {
        // The libraries do not all set errno, so the exponent itself is looked at.
        bool undefined = F::isFinite(base) && F::isFinite(exponent) && Functions<F>::trunc(exponent) != exponent;
        if (undefined) report(kMsgNegativeBase);
        result = Functions<F>::pow(undefined ? -base : base, exponent);
    } else if (base == 0 && exponent == 0) {
        report(kMsgZeroToZero);
        return 1;
    } else if (base == 0 && exponent < 0) {
        report(kMsgZeroToNegative);
        return 0;
    } else if (base == 0 && exponent > 0) {
        return 0;
    } else {
        result = Functions<F>::pow(base, exponent);
    }
    if (!F::isFinite(result) && !F::isNan(result)) report(kMsgInfinite);
    return result;
}

template <class F, class Base, class Exponent>
typename F::Value power(Base base, Exponent exponent, int32_t *errorCount)
{
    if constexpr (std::is_integral_v<Exponent>) {
        if (exponent == 1) return quietly([&] { return static_cast<typename F::Value>(base); });
    }
    uint32_t errors[2];
    int count = 0;
    auto result = quietly([&] {
        return powerOf<F>(static_cast<typename F::Value>(base), static_cast<typename F::Value>(exponent),
                          [&](uint32_t number) { errors[count++] = number; });
    });
    for (int i = 0; i < count; i++) reportPower(errors[i], errorCount);
    return result;
}

// As all callable services have it.
struct Feedback {
    uint16_t severity;
    uint16_t messageNumber;
    uint8_t flags;
    char facility[3];
    uint32_t instanceInfo;
};
static_assert(sizeof(Feedback) == 12);

constexpr Feedback kSuccess = {0, 0, 0, {0, 0, 0}, 0};
constexpr uint8_t kErrorFlags = 0x59, kWarningFlags = 0x51;

} // namespace

#define POWER(entry, Result, F, Base, Exponent)                                                                        \
    Result entry(Base base, Exponent exponent, int32_t *errorCount)                                                    \
    {                                                                                                                  \
        return power<floats::F>(base, exponent, errorCount);                                                           \
    }

POWER(_zvkExpFloat8Float8, double, Binary64, double, double)
POWER(_zvkExpFloat16Float8, ZvkFloat128, Binary128, ZvkFloat128, double)
POWER(_zvkExpDFloat16DFloat16, ZvkDecimal128, Decimal128, ZvkDecimal128, ZvkDecimal128)
POWER(_zvkExpFloat4Float4, double, Binary64, float, float)
POWER(_zvkExpInt8Int8, double, Binary64, int64_t, int64_t)
POWER(_zvkExpInt4Int4, double, Binary64, int32_t, int32_t)
POWER(_zvkExpFloat4Int4, double, Binary64, float, int32_t)
POWER(_zvkExpFloat8Int8, double, Binary64, double, int64_t)
POWER(_zvkExpFloat16Int8, ZvkFloat128, Binary128, ZvkFloat128, int64_t)
POWER(_zvkExpDFloat16Int8, ZvkDecimal128, Decimal128, ZvkDecimal128, int64_t)

void LSVSDXPD(const ZvkFloat64Item *base, const ZvkFloat64Item *exponent, ZvkFloat64Item *result, void *feedback)
{
    int32_t noSizeError = 0;
    if (!feedback) {
        *result = _zvkExpFloat8Float8(*base, *exponent, &noSizeError);
        return;
    }
    Feedback token = kSuccess;
    *result = quietly([&] {
        return powerOf<Binary64>(*base, *exponent, [&](uint32_t number) {
            bool warning = number == kMsgNegativeBase || number == kMsgZeroToZero;
            token = {static_cast<uint16_t>(warning ? 2 : 3),
                     static_cast<uint16_t>(number),
                     warning ? kWarningFlags : kErrorFlags,
                     {'L', 'S', 'V'},
                     0};
        });
    });
    store<Feedback>(feedback, token);
}
