// Copying a name into a field of fixed width.
#pragma once

#include <algorithm>
#include <cstddef>
#include <cstring>

// Copies at most `limit` bytes of a NUL-ended text, and what the field can hold with a NUL behind
// it; the rest of the field becomes NULs.
template <size_t Size>
void copyText(char (&to)[Size], const char *text, size_t limit = Size - 1)
{
    limit = std::min(limit, Size - 1);
    size_t length = 0;
    while (length < limit && text[length]) length++;
    memcpy(to, text, length);
    memset(to + length, 0, Size - length);
}
