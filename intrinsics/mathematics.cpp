// The trigonometric and logarithmic functions, SQRT, INTEGER, INTEGER-PART and REM: one test of the
// argument with its message, then the library's function of the format.
#include "kvr2/mathematics.h"
#include "base/quiet_floats.h"
#include "intrinsics/float_functions.h"
#include "intrinsics/function_errors.h"

namespace {

using namespace floats;

// The order of two numbers without a trap; 2 when one is a NaN.
template <class F>
int order(typename F::Value a, typename F::Value b)
{
    if (F::isNan(a) || F::isNan(b)) return 2;
    return quietly([&] { return a < b ? -1 : a > b; });
}

template <class F>
void checkArc(typename F::Value x, const char *function)
{
    if (order<F>(x, -1) == -1) reportArgument(msg::argumentTooSmall, function);
    if (order<F>(x, 1) == 1) reportTooLarge(function, 1);
}

template <class F>
void checkLogarithm(typename F::Value x, const char *function)
{
    if (order<F>(x, 0) <= 0) reportArgument(msg::badLogarithmArgument, function);
}

template <class F>
void checkRoot(typename F::Value x, const char *function)
{
    if (order<F>(x, 0) == -1) reportArgument(msg::argumentTooSmall, function);
}

template <class F>
void checkNothing(typename F::Value, const char *)
{
}

template <class F>
typename F::Value integer(typename F::Value x)
{
    return quietly([&] { return Functions<F>::floor(x); });
}

template <class F>
typename F::Value integerPart(typename F::Value x)
{
    return quietly([&] { return Functions<F>::trunc(x); });
}

// By subtracting quotients in the format, as 1 has no rest by 0.1 although 0.1 is a little more
// than a tenth. More than one turn is for quotients that the format does not hold; a turn that
// brings the rest no nearer leaves it to the exact remainder.
template <class F>
typename F::Value remainderOf(typename F::Value dividend, typename F::Value divisor)
{
    using Value = typename F::Value;
    if (!F::isFinite(dividend) || !F::isFinite(divisor)) return Functions<F>::fmod(dividend, divisor);
    const Value most = magnitudeOf<F>(divisor);
    Value rest = dividend;
    do {
        Value next = rest - Functions<F>::trunc(rest / divisor) * divisor;
        const bool nearer = magnitudeOf<F>(next) < most || magnitudeOf<F>(next) < magnitudeOf<F>(rest);
        if (!nearer) return Functions<F>::fmod(dividend, divisor);
        rest = next;
    } while (!(magnitudeOf<F>(rest) < most));
    if (dividend > 0 && rest < 0) return rest + most;
    if (dividend < 0 && rest > 0) return rest - most;
    return rest;
}

template <class F>
typename F::Value rem(typename F::Value dividend, typename F::Value divisor)
{
    if (order<F>(divisor, 0) == 0) {
        reportArgument(msg::argumentNotPositive, "REM");
        return 0;
    }
    return quietly([&] { return remainderOf<F>(dividend, divisor); });
}

} // namespace

#define FUNCTION(entry, F, Value, function, check, name)                                                               \
    Value entry(Value x)                                                                                               \
    {                                                                                                                  \
        check<floats::F>(x, name);                                                                                     \
        return quietly([&] { return floats::Functions<floats::F>::function(x); });                                     \
    }

FUNCTION(_zvkAcosFloat8, Binary64, double, acos, checkArc, "ACOS")
FUNCTION(_Dmr_acos, Binary64, double, acos, checkArc, "ACOS")
FUNCTION(_zvkAcosFloat16, Binary128, ZvkFloat128, acos, checkArc, "ACOS")
FUNCTION(_Dmr_acos_float16, Binary128, ZvkFloat128, acos, checkArc, "ACOS")
FUNCTION(_Dmr_acos_decfloat16, Decimal128, ZvkDecimal128, acos, checkArc, "ACOS")

FUNCTION(_zvkAsinFloat8, Binary64, double, asin, checkArc, "ASIN")
FUNCTION(_Dmr_asin, Binary64, double, asin, checkArc, "ASIN")
FUNCTION(_zvkAsinFloat16, Binary128, ZvkFloat128, asin, checkArc, "ASIN")
FUNCTION(_Dmr_asin_float16, Binary128, ZvkFloat128, asin, checkArc, "ASIN")
FUNCTION(_Dmr_asin_decfloat16, Decimal128, ZvkDecimal128, asin, checkArc, "ASIN")

FUNCTION(_zvkAtanFloat8, Binary64, double, atan, checkNothing, "ATAN")
FUNCTION(_Dmr_atan, Binary64, double, atan, checkNothing, "ATAN")
FUNCTION(_zvkAtanFloat16, Binary128, ZvkFloat128, atan, checkNothing, "ATAN")
FUNCTION(_Dmr_atan_float16, Binary128, ZvkFloat128, atan, checkNothing, "ATAN")
FUNCTION(_Dmr_atan_decfloat16, Decimal128, ZvkDecimal128, atan, checkNothing, "ATAN")

FUNCTION(_zvkCosFloat8, Binary64, double, cos, checkNothing, "COS")
FUNCTION(_Dmr_cos, Binary64, double, cos, checkNothing, "COS")
FUNCTION(_zvkCosFloat16, Binary128, ZvkFloat128, cos, checkNothing, "COS")
FUNCTION(_Dmr_cos_float16, Binary128, ZvkFloat128, cos, checkNothing, "COS")
FUNCTION(_Dmr_cos_decfloat16, Decimal128, ZvkDecimal128, cos, checkNothing, "COS")

FUNCTION(_zvkSinFloat8, Binary64, double, sin, checkNothing, "SIN")
FUNCTION(_Dmr_sin, Binary64, double, sin, checkNothing, "SIN")
FUNCTION(_zvkSinFloat16, Binary128, ZvkFloat128, sin, checkNothing, "SIN")
FUNCTION(_Dmr_sin_float16, Binary128, ZvkFloat128, sin, checkNothing, "SIN")
FUNCTION(_Dmr_sin_decfloat16, Decimal128, ZvkDecimal128, sin, checkNothing, "SIN")

FUNCTION(_zvkTanFloat8, Binary64, double, tan, checkNothing, "TAN")
FUNCTION(_Dmr_tan, Binary64, double, tan, checkNothing, "TAN")
FUNCTION(_zvkTanFloat16, Binary128, ZvkFloat128, tan, checkNothing, "TAN")
FUNCTION(_Dmr_tan_float16, Binary128, ZvkFloat128, tan, checkNothing, "TAN")
FUNCTION(_Dmr_tan_decfloat16, Decimal128, ZvkDecimal128, tan, checkNothing, "TAN")

FUNCTION(_zvkLogFloat8, Binary64, double, log, checkLogarithm, "LOG")
FUNCTION(_Dmr_log, Binary64, double, log, checkLogarithm, "LOG")
FUNCTION(_zvkLogFloat16, Binary128, ZvkFloat128, log, checkLogarithm, "LOG")
FUNCTION(_Dmr_log_float16, Binary128, ZvkFloat128, log, checkLogarithm, "LOG")
FUNCTION(_Dmr_log_decfloat16, Decimal128, ZvkDecimal128, log, checkLogarithm, "LOG")

FUNCTION(_zvkLog10Float8, Binary64, double, log10, checkLogarithm, "LOG10")
FUNCTION(_Dmr_log10, Binary64, double, log10, checkLogarithm, "LOG10")
FUNCTION(_zvkLog10Float16, Binary128, ZvkFloat128, log10, checkLogarithm, "LOG10")
FUNCTION(_Dmr_log10_float16, Binary128, ZvkFloat128, log10, checkLogarithm, "LOG10")
FUNCTION(_Dmr_log10_decfloat16, Decimal128, ZvkDecimal128, log10, checkLogarithm, "LOG10")

FUNCTION(_zvkSqrtFloat8, Binary64, double, sqrt, checkRoot, "SQRT")
FUNCTION(_Dmr_sqrt, Binary64, double, sqrt, checkRoot, "SQRT")
FUNCTION(_zvkSqrtFloat16, Binary128, ZvkFloat128, sqrt, checkRoot, "SQRT")
FUNCTION(_Dmr_sqrt_float16, Binary128, ZvkFloat128, sqrt, checkRoot, "SQRT")
FUNCTION(_Dmr_sqrt_decfloat16, Decimal128, ZvkDecimal128, sqrt, checkRoot, "SQRT")

double _zvkInteger(double x) { return integer<Binary64>(x); }
ZvkFloat128 _zvkInteger16(ZvkFloat128 x) { return integer<Binary128>(x); }
double _zvkIntegerPart(double x) { return integerPart<Binary64>(x); }
ZvkFloat128 _zvkIntegerPart16(ZvkFloat128 x) { return integerPart<Binary128>(x); }

#define REM(entry, F, Value)                                                                                           \
    Value entry(Value dividend, Value divisor) { return rem<floats::F>(dividend, divisor); }

REM(_zvkRemFloat8Float8, Binary64, double)
REM(_Dmr_rem, Binary64, double)
REM(_zvkRemFloat16Float16, Binary128, ZvkFloat128)
REM(_Dmr_rem_float16, Binary128, ZvkFloat128)
REM(_Dmr_rem_decfloat16, Decimal128, ZvkDecimal128)
