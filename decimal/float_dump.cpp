// The dump's lines; see float_dump.h. Decimal floats print through the conversions that libdfp adds
// to the C library's printf.
#include "decimal/float_dump.h"

#include <cstdio>
#include <quadmath.h>

namespace {

void quadLine(const char *label, ZvkFloat128 value)
{
    char text[64];
    quadmath_snprintf(text, sizeof text, "% .37QE", value);
    fprintf(stderr, "%s%s\n", label, text);
}

// The compiler's check of formats does not know the decimal conversions.
void decimalLine(const char *format, ZvkDecimal128 value)
{
    int (*print)(FILE *, const char *, ...) = fprintf;
    print(stderr, format, value);
}

} // namespace

void bcd::dumpFloatTitle(const char *title, int32_t prec, int32_t decs)
{
    int (*print)(FILE *, const char *, ...) = fprintf;
    print(stderr, title, prec, decs);
    fputc('\n', stderr);
}

void bcd::dumpDigits(const char *label, int32_t prec, const uint8_t *item, size_t bytes)
{
    fprintf(stderr, "%s: %d: ", label, prec);
    for (size_t i = 0; i < bytes; i++) fprintf(stderr, "%2.2x", item[i]);
    fputc('\n', stderr);
}

void bcd::dumpFloatResult(float value) { dumpFloatResult(static_cast<double>(value)); }
void bcd::dumpFloatResult(double value) { fprintf(stderr, "dst % .37E\n", value); }
void bcd::dumpFloatResult(ZvkFloat128 value) { quadLine("dst ", value); }
void bcd::dumpFloatResult(ZvkDecimal32 value) { dumpFloatResult(static_cast<ZvkDecimal128>(value)); }
void bcd::dumpFloatResult(ZvkDecimal64 value) { dumpFloatResult(static_cast<ZvkDecimal128>(value)); }
// The conversion ends in L and so shows no number. It stays.
void bcd::dumpFloatResult(ZvkDecimal128 value) { decimalLine("dst:  % .34DDL\n", value); }
void bcd::dumpFloatSource(float value) { dumpFloatSource(static_cast<double>(value)); }
void bcd::dumpFloatSource(double value) { fprintf(stderr, "in:   % .17E\n", value); }
void bcd::dumpFloatSource(ZvkFloat128 value) { quadLine("in:   ", value); }
void bcd::dumpFloatSource(ZvkDecimal32 value) { dumpFloatSource(static_cast<ZvkDecimal128>(value)); }
void bcd::dumpFloatSource(ZvkDecimal64 value) { dumpFloatSource(static_cast<ZvkDecimal128>(value)); }
void bcd::dumpFloatSource(ZvkDecimal128 value) { decimalLine("in:   % .34DDE\n", value); }
