// Clean number texts to floating point: sign, digits with at most one point, perhaps an exponent.
#pragma once

#include "decimal/float_forms.h"

namespace floats {

// The text through the C library's routine for the format, with its point turned into the radix of
// the locale. `outOfRange`: the value is too large, or became zero, for the format.
template <class F>
typename F::Value parseText(char *text, bool &outOfRange);

// The locale's radix character.
char radixCharacter();

} // namespace floats
