// The debug dump of conversions to and from floating point (COBOL_BCD_DEBUG).
//
//     packed to double... prec 3 decs 1
//     src: 3: 123c
//     dst  1.2300000000000000000000000000000000000E+01
//
// Spaces and spellings of the titles differ from entry to entry; tools read them as they are.
#pragma once

#include "decimal/float_forms.h"

namespace bcd {

void dumpFloatTitle(const char *title, int32_t prec, int32_t decs);
void dumpDigits(const char *label, int32_t prec, const uint8_t *item, size_t bytes);

// The line of a number: as a result ("dst") and as a source ("in:").
void dumpFloatResult(float value);
void dumpFloatResult(double value);
void dumpFloatResult(ZvkFloat128 value);
void dumpFloatResult(ZvkDecimal32 value);
void dumpFloatResult(ZvkDecimal64 value);
void dumpFloatResult(ZvkDecimal128 value);
void dumpFloatSource(float value);
void dumpFloatSource(double value);
void dumpFloatSource(ZvkFloat128 value);
void dumpFloatSource(ZvkDecimal32 value);
void dumpFloatSource(ZvkDecimal64 value);
void dumpFloatSource(ZvkDecimal128 value);

} // namespace bcd
