// Environment variables. To nearly all of the library a variable that is empty is one that is not
// set; the few places that tell the two apart call getenv themselves and say so.
#pragma once

#include <cstdlib>

// The value, or null where the variable is not set or empty.
inline const char *environmentText(const char *name)
{
    const char *value = getenv(name);
    return value && *value ? value : nullptr;
}

// Whether a variable that only has to be there is there.
inline bool environmentHas(const char *name) { return environmentText(name) != nullptr; }
