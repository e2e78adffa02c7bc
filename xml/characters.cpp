// Name characters as bits, one for each character of the first plane, made from the ranges at
// compile time; see characters.h.
#include "xml/characters.h"

#include <cstddef>

#include "xml/name_ranges.h"

namespace {

struct CharacterSet {
    uint64_t words[65536 / 64];
    constexpr bool has(uint32_t c) const { return words[c >> 6] >> (c & 63) & 1; }
};

template <size_t Count>
constexpr CharacterSet setOf(const CharacterRange (&ranges)[Count])
{
    CharacterSet set{};
    for (const CharacterRange &range : ranges)
        for (uint32_t c = range.first; c <= range.last; c++) set.words[c >> 6] |= uint64_t{1} << (c & 63);
    return set;
}

constexpr CharacterSet starts = setOf(kNameStart), further = setOf(kNameOther);

} // namespace

NameClass zvkNameClass(uint16_t character)
{
    if (starts.has(character)) return character == ':' || character == '_' ? kNameSign : kNameLetter;
    return further.has(character) ? kNameFurther : kNotInNames;
}
