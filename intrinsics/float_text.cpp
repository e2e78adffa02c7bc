// See float_text.h.
#include "intrinsics/float_text.h"

#include <algorithm>
#include <cerrno>
#include <cstdlib>
#include <cstring>
#include <langinfo.h>
#include <quadmath.h>

namespace floats {

namespace {

// The decimal library's own routine keeps a locale of every call, so this is done here: 38 digits
// and a mark for those after them, rounded once to the format's 34, and then the exponent.
ZvkDecimal128 parseDecimal(const char *text, bool &outOfRange)
{
    const bool negative = *text == '-';
    u128 value = 0;
    int64_t exponent = 0;
    bool point = false, more = false;
    for (text++; *text && *text != 'E'; text++) {
        if (*text == '.') {
            point = true;
            continue;
        }
        const auto digit = static_cast<unsigned>(*text - '0');
        if (value < kIntegerPower[37]) {
            value = value * 10 + digit;
            exponent -= point;
        } else {
            more |= digit != 0;
            exponent += !point;
        }
    }
    if (*text == 'E') // far beyond the format all exponents are one
        exponent += std::clamp(strtol(text + 1, nullptr, 10), -100000L, 100000L);
    if (more && value % 5 == 0) value++; // no tie any more
    auto result = decimal128Of(value);
    if (value != 0) { // in two steps, as the powers alone may lie beyond the format
        result = result * Decimal128::power(exponent / 2);
        result = result * Decimal128::power(exponent - exponent / 2);
    }
    outOfRange = !Decimal128::isFinite(result) || (result == 0 && value != 0);
    return negative ? -result : result;
}

} // namespace

template <class F>
typename F::Value parseText(char *text, bool &outOfRange)
{
    if constexpr (F::isDecimal) {
        return parseDecimal(text, outOfRange);
    } else {
        if (char *point = strchr(text, '.')) *point = *nl_langinfo(RADIXCHAR);
        errno = 0;
        typename F::Value value;
        if constexpr (std::is_same_v<F, Binary64>)
            value = strtod(text, nullptr);
        else
            value = strtoflt128(text, nullptr);
        // A denormal number passes, although it sets ERANGE.
        outOfRange = errno == ERANGE && (!F::isFinite(value) || value == 0);
        return value;
    }
}

template double parseText<Binary64>(char *text, bool &outOfRange);
template ZvkFloat128 parseText<Binary128>(char *text, bool &outOfRange);
template ZvkDecimal128 parseText<Decimal128>(char *text, bool &outOfRange);

} // namespace floats
