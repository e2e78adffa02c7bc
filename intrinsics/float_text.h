// Clean number texts to floating point: sign, digits with at most one point, perhaps an exponent.
#pragma once

#include "decimal/float_forms.h"

namespace floats {

// The nearest number. A binary one comes from the C library's routine for the format, with the
// text's point turned into the radix of the locale. `outOfRange`: the value is too large, or became
// zero, for the format. The text begins with a sign or a blank.
template <class F>
typename F::Value parseText(char *text, bool &outOfRange);

} // namespace floats
