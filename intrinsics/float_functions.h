// The library functions of each format that has intrinsic functions, under one name.
#pragma once

#include <cmath>
#include <quadmath.h>

#include "decimal/float_forms.h"
#include "intrinsics/dfp.h"

namespace floats {

template <class F>
struct Functions;

template <>
struct Functions<Binary64> {
    static double acos(double x) { return ::acos(x); }
    static double asin(double x) { return ::asin(x); }
    static double atan(double x) { return ::atan(x); }
    static double cos(double x) { return ::cos(x); }
    static double sin(double x) { return ::sin(x); }
    static double tan(double x) { return ::tan(x); }
    static double log(double x) { return ::log(x); }
    static double log10(double x) { return ::log10(x); }
    static double sqrt(double x) { return ::sqrt(x); }
    static double pow(double x, double y) { return ::pow(x, y); }
    static double fmod(double x, double y) { return ::fmod(x, y); }
    static double trunc(double x) { return ::trunc(x); }
    static double floor(double x) { return ::floor(x); }
};

template <>
struct Functions<Binary128> {
    using Value = ZvkFloat128;
    static Value acos(Value x) { return acosq(x); }
    static Value asin(Value x) { return asinq(x); }
    static Value atan(Value x) { return atanq(x); }
    static Value cos(Value x) { return cosq(x); }
    static Value sin(Value x) { return sinq(x); }
    static Value tan(Value x) { return tanq(x); }
    static Value log(Value x) { return logq(x); }
    static Value log10(Value x) { return log10q(x); }
    static Value sqrt(Value x) { return sqrtq(x); }
    static Value pow(Value x, Value y) { return powq(x, y); }
    static Value fmod(Value x, Value y) { return fmodq(x, y); }
    static Value trunc(Value x) { return truncq(x); }
    static Value floor(Value x) { return floorq(x); }
};

template <>
struct Functions<Decimal128> {
    using Value = ZvkDecimal128;
    static Value acos(Value x) { return acosd128(x); }
    static Value asin(Value x) { return asind128(x); }
    static Value atan(Value x) { return atand128(x); }
    static Value cos(Value x) { return cosd128(x); }
    static Value sin(Value x) { return sind128(x); }
    static Value tan(Value x) { return tand128(x); }
    static Value log(Value x) { return logd128(x); }
    static Value log10(Value x) { return log10d128(x); }
    static Value sqrt(Value x) { return sqrtd128(x); }
    static Value pow(Value x, Value y) { return powd128(x, y); }
    static Value fmod(Value x, Value y) { return fmodd128(x, y); }
    static Value trunc(Value x) { return truncd128(x); }
};

} // namespace floats
