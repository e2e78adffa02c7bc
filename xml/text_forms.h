// The three forms of a document's text: bytes of a code page, UTF-8, UTF-16.
//
// A form knows how wide a unit is, what class a unit is of, how long the character at a place is,
// whether it is allowed, and how far a run goes. The scanner is written once, over a form. In UTF-8
// the scan never gets to bytes that are no character, or to one above U+FFFF, so forms need not
// look for them; see utf8_walk.h.
#pragma once

#include "base/bytes.h"
#include "xml/page_tables.h"

inline const StopSet &stopsOf(const PageTables &tables, Run run) { return tables.stops[static_cast<size_t>(run)]; }

struct SingleByteText {
    static constexpr size_t unit = 1;
    const PageTables *tables;

    uint16_t load(const uint8_t *at) const { return *at; }
    uint16_t mark(char c) const { return tables->markup[static_cast<uint8_t>(c)]; }
    CharClass classAt(const uint8_t *at) const { return tables->charClass[*at]; }
    uint8_t nameClassAt(const uint8_t *at) const { return tables->nameClass[*at]; }
    const uint8_t *nameEnd(const uint8_t *at, const uint8_t *end) const
    {
        while (at < end && tables->nameClass[*at] != kNotInNames) at++;
        return at;
    }
    uint8_t hexAt(const uint8_t *at) const { return tables->hexValue[*at]; }
    size_t whiteAt(const uint8_t *at, const uint8_t *) const { return tables->charClass[*at] == kWhite; }
    size_t lengthAt(const uint8_t *, const uint8_t *) const { return 1; }
    bool allowedAt(const uint8_t *at, const uint8_t *) const { return tables->charClass[*at] != kIllegal; }
    const uint8_t *run(Run kind, const uint8_t *at, const uint8_t *end) const
    {
        return stopsOf(*tables, kind).next(at, end);
    }
};

struct Utf8Text {
    static constexpr size_t unit = 1;

    uint16_t load(const uint8_t *at) const { return *at; }
    static constexpr uint16_t mark(char c) { return static_cast<uint8_t>(c); }
    CharClass classAt(const uint8_t *at) const { return zvkUtf8Tables.charClass[*at]; }
    uint8_t nameClassAt(const uint8_t *at) const
    {
        uint8_t c = zvkUtf8Tables.nameClass[*at];
        return c == kNameLook ? static_cast<uint8_t>(zvkNameClass(characterAt(at))) : c;
    }
    const uint8_t *nameEnd(const uint8_t *at, const uint8_t *end) const
    {
        for (;;) {
            uint8_t nameClass = kNotInNames;
            while (at < end && (nameClass = zvkUtf8Tables.nameClass[*at]) != kNotInNames && nameClass != kNameLook)
                at++;
            if (at == end || nameClass != kNameLook || zvkNameClass(characterAt(at)) == kNotInNames) return at;
            at += lengthAt(at, end);
        }
    }
    uint8_t hexAt(const uint8_t *at) const { return zvkUtf8Tables.hexValue[*at]; }
    size_t whiteAt(const uint8_t *at, const uint8_t *) const
    {
        if (zvkUtf8Tables.charClass[*at] == kWhite) return 1;
        return *at == 0xC2 && at[1] == 0x85 ? 2 : 0; // U+0085
    }
    size_t lengthAt(const uint8_t *at, const uint8_t *) const { return *at < 0x80 ? 1 : *at < 0xE0 ? 2 : 3; }
    bool allowedAt(const uint8_t *at, const uint8_t *) const
    {
        CharClass c = zvkUtf8Tables.charClass[*at];
        return c == kLook ? zvkIsXmlCharacter(characterAt(at)) : c != kIllegal;
    }
    const uint8_t *run(Run kind, const uint8_t *at, const uint8_t *end) const
    {
        const StopSet &stops = stopsOf(zvkUtf8Tables, kind);
        // The set stops at every EF; most of what begins so is allowed.
        while ((at = stops.next(at, end)) < end && *at == 0xEF && allowedAt(at, end)) at += 3;
        return at;
    }

private:
    static uint16_t characterAt(const uint8_t *at)
    {
        if (*at < 0x80) return *at;
        if (*at < 0xE0) return static_cast<uint16_t>((at[0] & 0x1F) << 6 | (at[1] & 0x3F));
        return static_cast<uint16_t>((at[0] & 0x0F) << 12 | (at[1] & 0x3F) << 6 | (at[2] & 0x3F));
    }
};

// Little-endian units at any alignment. A pair of surrogates is one character, and no part of a
// name.
struct Utf16Text {
    static constexpr size_t unit = 2;

    uint16_t load(const uint8_t *at) const { return ::load<uint16_t>(at); }
    static constexpr uint16_t mark(char c) { return static_cast<uint8_t>(c); }
    CharClass classAt(const uint8_t *at) const
    {
        uint16_t c = load(at);
        if (c < 0x80) return zvkUtf8Tables.charClass[c];
        return c == kNextLine ? kWhite : kData;
    }
    uint8_t nameClassAt(const uint8_t *at) const { return zvkNameClass(load(at)); }
    const uint8_t *nameEnd(const uint8_t *at, const uint8_t *end) const
    {
        while (at < end && nameClassAt(at) != kNotInNames) at += unit;
        return at;
    }
    uint8_t hexAt(const uint8_t *at) const
    {
        uint16_t c = load(at);
        return c < 0x80 ? zvkUtf8Tables.hexValue[c] : 255;
    }
    size_t whiteAt(const uint8_t *at, const uint8_t *) const { return classAt(at) == kWhite ? unit : 0; }
    size_t lengthAt(const uint8_t *at, const uint8_t *end) const { return isPair(at, end) ? 2 * unit : unit; }
    bool allowedAt(const uint8_t *at, const uint8_t *end) const
    {
        return zvkIsXmlCharacter(load(at)) || isPair(at, end);
    }
    const uint8_t *run(Run kind, const uint8_t *at, const uint8_t *end) const;

private:
    bool isPair(const uint8_t *at, const uint8_t *end) const
    {
        return end - at >= 4 && zvkIsHighSurrogate(load(at)) && zvkIsLowSurrogate(load(at + 2));
    }
};

inline const uint8_t *Utf16Text::run(Run kind, const uint8_t *at, const uint8_t *end) const
{
    const StopSet &stops = stopsOf(zvkUtf8Tables, kind);
    for (;;) {
        // Eight units of U+0080 to U+D7FF, or of those below that stop nothing, go at once.
        while (end - at >= 16) {
            __m128i units = _mm_loadu_si128(reinterpret_cast<const __m128i *>(at));
            // Saturated to bytes, all above 0xFF is 0xFF (or, from 0x8000 on, 0): neither stops a
            // run below.
            __m128i high =
                _mm_cmpeq_epi16(_mm_subs_epu16(units, _mm_set1_epi16(static_cast<short>(0xD7FF))), _mm_setzero_si128());
            __m128i isAscii = _mm_cmpeq_epi16(_mm_srli_epi16(units, 7), _mm_setzero_si128());
            bool plain = _mm_movemask_epi8(high) == 0xFFFF;
            if (plain && _mm_movemask_epi8(isAscii) != 0) {
                for (int i = 0; i < 16 && plain; i += 2) {
                    uint16_t c = load(at + i);
                    if (c < 0x80 && stops.stops[c]) plain = false;
                }
            }
            if (!plain) break;
            at += 16;
        }
        if (end - at < 2) return at;
        uint16_t c = load(at);
        if (c < 0x80 ? stops.stops[c] : !allowedAt(at, end)) return at;
        at += lengthAt(at, end);
    }
}
