// Texts on their way into a document: one code point at a time where it must be, whole runs where
// nothing is in the way.
//
// What a byte of a source becomes in the document (itself, another byte, an entity, a character of
// several bytes, a reference) depends on the pair of code pages alone. A TextPair is that as a
// table, made once for each pair and kept to the end of the process. National texts, and characters
// of several bytes, go by code point: see putCharacter.
#pragma once

#include <cstdint>

#include "xml/code_page.h"

// How the document is written.
enum class Target : uint8_t { SingleByte, Utf8, Utf16 };

// What to do with a byte of a source. Bits, so that those of a whole text can be put together.
enum ByteKind : uint8_t {
    kPlain = 0,      // one unit, in `unit`
    kEscaped = 1,    // several units or an entity: by its character
    kPart = 2,       // a byte of a longer character
    kIllegalByte = 4 // no character, or one that XML does not allow: the text goes in hexadecimal
};

struct TextPair {
    const TextPair *next;
    const XmlPage *source, *target;
    uint8_t kind[256]; // ByteKind
    uint8_t unit[256];
    bool same;       // plain bytes are themselves
    bool asciiPlain; // printable ASCII but for the five entities is plain

    // The kinds of a text's bytes, put together.
    uint8_t kindsOf(const uint8_t *at, const uint8_t *end) const;
};

// Null without storage. `target` is a page of single bytes, UTF-8 or UTF-16.
const TextPair *zvkTextPair(const XmlPage *source, const XmlPage *target);

inline Target zvkTargetOf(const XmlPage &page)
{
    if (page.pageClass == kUtf8) return Target::Utf8;
    return zvkIsUtf16Page(page.pageClass) ? Target::Utf16 : Target::SingleByte;
}

// The entity of a character, null for those that need none.
const char *zvkEntityOf(uint32_t character);

// The character at a place of UTF-8, and its length; 0 for bytes that are none.
uint32_t zvkUtf8Character(const uint8_t *at, const uint8_t *end, size_t &length);
