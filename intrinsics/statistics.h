// MEDIAN of Decimal128 numbers, which has no exported name; otherwise as _zvkcMedianFloat8.
#pragma once

#include "kvr2/floats.h"

ZvkDecimal128 zvkMedianDecimal128(uint32_t count, ZvkDecimal128Item *array);
