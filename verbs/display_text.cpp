// The text of a displayed item: characters as they are, binary numbers, floating-point numbers.
//
// A binary number shows as many digits as its item has, the last ones if it has more, and a "-"
// before them. A floating-point number is formatted by the C library as " 1.500E+00" and then made
// a fraction, which is the form that programs have always shown:
//
//     " 1.500E+00"   the digit moves over the point, the item's decimal point to where it
//                    was, the exponent grows by one
//     " .1500E 01"   a blank stands for an exponent's "+"
#include "verbs/display_text.h"

#include <algorithm>
#include <cmath>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <quadmath.h>

#include "base/bytes.h"

namespace {

constexpr uint64_t kMostDigits = 1000; // so that sign, point and exponent fit into the buffer

// The item as 64 bits, sign-extended or not. A size of 3 is read as 4 bytes, 5 to 7 as 8: the
// storage is that large.
uint64_t loadBinary(const void *address, uint64_t size, bool isSigned)
{
    switch (size) {
    case 1:
        return isSigned ? static_cast<uint64_t>(load<int8_t>(address)) : load<uint8_t>(address);
    case 2:
        return isSigned ? static_cast<uint64_t>(load<int16_t>(address)) : load<uint16_t>(address);
    case 3:
    case 4:
        return isSigned ? static_cast<uint64_t>(load<int32_t>(address)) : load<uint32_t>(address);
    default:
        return load<uint64_t>(address);
    }
}

const char *binaryText(DisplayItem &item, bool isSigned, char *end)
{
    if (item.size < 1 || item.size > 8) return nullptr;
    uint64_t value = loadBinary(item.address, item.size, isSigned);
    bool negative = isSigned && static_cast<int64_t>(value) < 0;
    if (negative) value = -value;
    uint64_t digits = std::min(item.width, kMostDigits);
    char *text = end;
    for (uint64_t i = 0; i < digits; i++, value /= 10) *--text = static_cast<char>('0' + value % 10);
    if (negative) *--text = '-';
    item.width = static_cast<uint64_t>(end - text);
    return text;
}

const char *namedText(DisplayItem &item, const char *name)
{
    item.width = strlen(name);
    return name;
}

// Turns d.ddd into .dddd, and the exponent with it.
void makeFraction(char *text, char decimalPoint)
{
    text[2] = text[1];
    text[1] = decimalPoint;
    char *sign = strchr(text, 'E') + 1;
    int exponent = static_cast<int>(strtol(sign, nullptr, 10)) + 1;
    if (exponent >= 0) *sign = ' ';
    snprintf(sign + 1, 12, "%.2d", std::abs(exponent));
}

const char *floatText(DisplayItem &item, char decimalPoint, char (&buffer)[kDisplayBuffer])
{
    // "#": the point stands even if no digit follows it.
    int precision = static_cast<int>(std::min(item.width, kMostDigits)) - 1;
    if (item.size == 16) {
        __float128 value = load<__float128>(item.address);
        long double narrowed = static_cast<long double>(value);
        if (std::isinf(narrowed)) return namedText(item, "Infinity");
        if (std::isnan(narrowed)) return namedText(item, "NaN");
        quadmath_snprintf(buffer, sizeof buffer, "%# .*QE", precision, value);
    } else if (item.size == 8 || item.size == 4) {
        double value = item.size == 8 ? load<double>(item.address) : static_cast<double>(load<float>(item.address));
        if (std::isinf(value)) return namedText(item, "Infinity");
        if (std::isnan(value)) return namedText(item, "NaN");
        snprintf(buffer, sizeof buffer, "%# .*E", precision, value);
    } else {
        return nullptr;
    }
    makeFraction(buffer, decimalPoint);
    item.width = strlen(buffer);
    return buffer;
}

} // namespace

const char *zvkDisplayText(DisplayItem &item, char decimalPoint, char (&buffer)[kDisplayBuffer])
{
    if (!item.address) return namedText(item, "(NULL)");
    switch (item.kind) {
    case ZVK_DISPLAY_FLOAT:
        return floatText(item, decimalPoint, buffer);
    case ZVK_DISPLAY_TEXT:
    case 4:
    case 5:
        item.width = item.size;
        return static_cast<const char *>(item.address);
    case ZVK_DISPLAY_SIGNED_BINARY:
        return binaryText(item, true, buffer + sizeof buffer);
    case ZVK_DISPLAY_UNSIGNED_BINARY:
        return binaryText(item, false, buffer + sizeof buffer);
    default:
        return nullptr;
    }
}
