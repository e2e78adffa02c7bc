// The dump's lines; see float_dump.h.
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

// One digit, 34 after the point, exponent.
void decimalLine(ZvkDecimal128 value)
{
    floats::DecimalParts number = floats::Decimal128::parts(value);
    const char sign = number.negative ? '-' : ' ';
    if (!number.finite) {
        fprintf(stderr, "in:   %c%s\n", sign, floats::Decimal128::isNan(value) ? "NAN" : "INF");
        return;
    }
    const int count = floats::digitCount(number.coefficient);
    char digits[36] = "00000000000000000000000000000000000";
    for (int i = count; i-- > 0; number.coefficient /= 10) digits[i] = static_cast<char>('0' + number.coefficient % 10);
    fprintf(stderr, "in:   %c%c.%sE%+.2d\n", sign, digits[0], digits + 1, count ? number.exponent + count - 1 : 0);
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
// A conversion that printf does not know: it shows itself and no number. It stays.
void bcd::dumpFloatResult(ZvkDecimal128) { fputs("dst:  % .34L\n", stderr); }
void bcd::dumpFloatSource(float value) { dumpFloatSource(static_cast<double>(value)); }
void bcd::dumpFloatSource(double value) { fprintf(stderr, "in:   % .17E\n", value); }
void bcd::dumpFloatSource(ZvkFloat128 value) { quadLine("in:   ", value); }
void bcd::dumpFloatSource(ZvkDecimal32 value) { dumpFloatSource(static_cast<ZvkDecimal128>(value)); }
void bcd::dumpFloatSource(ZvkDecimal64 value) { dumpFloatSource(static_cast<ZvkDecimal128>(value)); }
void bcd::dumpFloatSource(ZvkDecimal128 value) { decimalLine(value); }
