// See float_text.h.
#include "intrinsics/float_text.h"

#include <cerrno>
#include <cstdlib>
#include <cstring>
#include <langinfo.h>
#include <quadmath.h>

#include "intrinsics/dfp.h"

namespace floats {

char radixCharacter() { return *nl_langinfo(RADIXCHAR); }

namespace {

template <class F>
typename F::Value parse(const char *text)
{
    if constexpr (std::is_same_v<F, Binary64>)
        return strtod(text, nullptr);
    else if constexpr (std::is_same_v<F, Binary128>)
        return strtoflt128(text, nullptr);
    else
        return strtod128(text, nullptr);
}

} // namespace

template <class F>
typename F::Value parseText(char *text, bool &outOfRange)
{
    if (char *point = strchr(text, '.')) *point = radixCharacter();
    errno = 0;
    auto value = parse<F>(text);
    // A denormal number passes, although it sets ERANGE.
    outOfRange = errno == ERANGE && (!F::isFinite(value) || value == 0);
    return value;
}

template double parseText<Binary64>(char *text, bool &outOfRange);
template ZvkFloat128 parseText<Binary128>(char *text, bool &outOfRange);
template ZvkDecimal128 parseText<Decimal128>(char *text, bool &outOfRange);

} // namespace floats
