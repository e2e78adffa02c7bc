// Case of native data: FUNCTION LOWER-CASE and UPPER-CASE.
//
// Byte by byte by the process's locale; the tables of the C library are what tolower and toupper
// look at.
#include <cctype>

#include "base/signed_length.h"
#include "frame/locale/locale_handles.h"
#include "kvr2/conditions.h"

namespace {

void changeCase(const int32_t *table, int32_t length, const uint8_t *source, uint8_t *destination)
{
    for (size_t i = 0, size = plainLength(length); i < size; i++)
        destination[i] = static_cast<uint8_t>(table[source[i]]);
}

// For a process whose locale cannot be asked.
void changeAsciiCase(uint8_t first, int32_t length, const uint8_t *source, uint8_t *destination)
{
    for (size_t i = 0, size = plainLength(length); i < size; i++) {
        bool letter = static_cast<uint8_t>(source[i] - first) < 26;
        destination[i] = static_cast<uint8_t>(letter ? source[i] ^ 0x20 : source[i]);
    }
}

void toLower(int32_t length, const uint8_t *source, uint8_t *destination)
{
    if (!zvkLocaleName(LC_CTYPE)) return changeAsciiCase('A', length, source, destination);
    changeCase(*__ctype_tolower_loc(), length, source, destination);
}

void toUpper(int32_t length, const uint8_t *source, uint8_t *destination)
{
    if (!zvkLocaleName(LC_CTYPE)) return changeAsciiCase('a', length, source, destination);
    changeCase(*__ctype_toupper_loc(), length, source, destination);
}

} // namespace

extern "C" {

void _zvkToLower(int32_t length, const uint8_t *source, uint8_t *destination) { toLower(length, source, destination); }
void _Dmr_lower_case(int32_t length, const uint8_t *source, uint8_t *destination)
{
    toLower(length, source, destination);
}
void _zvkToUpper(int32_t length, const uint8_t *source, uint8_t *destination) { toUpper(length, source, destination); }
void _Dmr_upper_case(int32_t length, const uint8_t *source, uint8_t *destination)
{
    toUpper(length, source, destination);
}
}
