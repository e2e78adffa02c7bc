// XML's view of characters: which are allowed in a document, which in a name.
#pragma once

#include <cstdint>

enum NameClass : uint8_t {
    kNotInNames = 0,
    kNameLetter = 1,  // a name can begin with it
    kNameSign = 2,    // with "_" and ":", too
    kNameFurther = 4, // a name can hold it, but not begin with it
    kNameLook = 8     // a byte of a longer character: only that tells
};

inline bool zvkBeginsName(uint8_t nameClass) { return nameClass >= kNameLetter && nameClass < kNameFurther; }

// Of a character of the first plane.
NameClass zvkNameClass(uint16_t character);

// Allowed in a document. A lone surrogate is not.
constexpr bool zvkIsXmlCharacter(uint32_t c)
{
    if (c < 0x20) return c == 0x09 || c == 0x0A || c == 0x0D;
    return c < 0xD800 || (c >= 0xE000 && c < 0xFFFE) || (c >= 0x10000 && c <= 0x10FFFF);
}

constexpr uint16_t kNextLine = 0x85; // the new line of EBCDIC

constexpr bool zvkIsXmlWhite(uint32_t c) { return c == ' ' || c == 0x09 || c == 0x0A || c == 0x0D || c == kNextLine; }

constexpr bool zvkIsSurrogate(uint32_t c) { return (c & 0xFFFFF800) == 0xD800; }
constexpr bool zvkIsHighSurrogate(uint32_t c) { return (c & 0xFFFFFC00) == 0xD800; }
constexpr bool zvkIsLowSurrogate(uint32_t c) { return (c & 0xFFFFFC00) == 0xDC00; }
constexpr uint32_t zvkPair(uint32_t high, uint32_t low) { return 0x10000 + ((high & 0x3FF) << 10) + (low & 0x3FF); }
