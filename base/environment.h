// Environment variables. The library asks for them here and nowhere else.
#pragma once

#include <cstdlib>

// The value, also an empty one; null where the variable is not set. To nearly all of the library a
// variable that is empty is one that is not set: the others are for that.
inline const char *environmentValue(const char *name) { return getenv(name); }

// The value, or null where the variable is not set or empty.
inline const char *environmentText(const char *name)
{
    const char *value = environmentValue(name);
    return value && *value ? value : nullptr;
}

// Whether a variable that only has to be there is there.
inline bool environmentHas(const char *name) { return environmentText(name) != nullptr; }
