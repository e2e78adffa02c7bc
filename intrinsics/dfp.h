// The routines of the decimal floating-point library that this room uses. Its own headers want a C
// compiler with decimal types; C++ has them by mode only.
#pragma once

#include "kvr2/floats.h"

extern "C" {
ZvkDecimal128 strtod128(const char *text, char **end);
ZvkDecimal128 powd128(ZvkDecimal128 base, ZvkDecimal128 exponent);
ZvkDecimal128 acosd128(ZvkDecimal128 x);
ZvkDecimal128 asind128(ZvkDecimal128 x);
ZvkDecimal128 atand128(ZvkDecimal128 x);
ZvkDecimal128 cosd128(ZvkDecimal128 x);
ZvkDecimal128 sind128(ZvkDecimal128 x);
ZvkDecimal128 tand128(ZvkDecimal128 x);
ZvkDecimal128 logd128(ZvkDecimal128 x);
ZvkDecimal128 log10d128(ZvkDecimal128 x);
ZvkDecimal128 sqrtd128(ZvkDecimal128 x);
ZvkDecimal128 fmodd128(ZvkDecimal128 x, ZvkDecimal128 y);
ZvkDecimal128 truncd128(ZvkDecimal128 x);
}
