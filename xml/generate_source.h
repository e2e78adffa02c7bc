// How an item is read: its characters without what only fills it, as bytes or units, and whether
// XML allows them all.
#pragma once

#include "xml/generator.h"

namespace xml {

template <class Unit>
const TextPair *Generator<Unit>::pairOf(const XmlPage *page)
{
    const TextPair *&pair = page == encoding_.native ? native_ : ebcdic_;
    if (!page) fail(kUnknownEncoding);
    if (!pair && page && !(pair = zvkTextPair(page, encoding_.document))) fail(kNoBuffers);
    return pair;
}

// Whether the parts of longer characters in a text of UTF-8 make characters that XML allows.
template <class Unit>
bool Generator<Unit>::partsAreCharacters(const SourceText &text) const
{
    for (const uint8_t *at = text.at; at < text.end;) {
        size_t length = 1;
        if (text.pair->kind[*at] == kPart && !zvkIsXmlCharacter(zvkUtf8Character(at, text.end, length))) return false;
        at += length;
    }
    return true;
}

// Sees what a text of bytes is made of; sets `hex`. Characters of a page of several bytes that is
// not UTF-8 are put into UTF-16.
template <class Unit>
bool Generator<Unit>::classify(SourceText &text, const XmlPage *page, bool shifted, WideSource &wide)
{
    text.pair = pairOf(page);
    if (!text.pair) return false;
    uint8_t kinds = text.pair->kindsOf(text.at, text.end);
    if (shifted) kinds |= kPart;
    text.kinds = kinds;
    text.hex = kinds & kIllegalByte;
    if (text.hex || !(kinds & kPart)) return true;
    if (page->pageClass == kUtf8) {
        text.hex = !partsAreCharacters(text);
        return true;
    }
    bool failed = false;
    SourceText units = text;
    bool converted = wide.convert(*page, units, shifted, failed);
    if (failed) return fail(kNoBuffers);
    if (converted) classifyNational(units);
    if (converted && !units.hex)
        text = units;
    else
        text.hex = true;
    return true;
}

template <class Unit>
bool Generator<Unit>::classifyNational(SourceText &text)
{
    text.pair = nullptr;
    text.hex = text.length() % 2 != 0;
    for (const uint8_t *at = text.at; !text.hex && at < text.end; at += 2) {
        uint16_t unit = load<uint16_t>(at);
        bool pair = zvkIsHighSurrogate(unit) && text.end - at >= 4 && zvkIsLowSurrogate(load<uint16_t>(at + 2));
        if (pair) at += 2;
        text.hex = !pair && !zvkIsXmlCharacter(unit);
    }
    return true;
}

inline bool isPair(const uint8_t *at, uint8_t first, uint8_t second) { return at[0] == first && at[1] == second; }

inline void trimBytes(SourceText &text, uint8_t fill)
{
    while (text.at < text.end && text.end[-1] == fill) text.end--;
}
inline void trimPairs(SourceText &text, uint8_t first, uint8_t second)
{
    while (text.length() >= 2 && text.length() % 2 == 0 && isPair(text.end - 2, first, second)) text.end -= 2;
}

// Without blanks around it and without leading zeros; the special values as words.
template <class Unit>
bool Generator<Unit>::numericText(const GenerateNode &node, const uint8_t *edited, SourceText &text)
{
    bool ebcdic = (node.flags >> 4 & 3) == ZVK_XML_CLASS_EBCDIC;
    const XmlPage *page = ebcdic ? encoding_.ebcdic : encoding_.native;
    if (!page) return fail(kUnknownEncoding);
    auto byte = [&](char c) { return static_cast<uint8_t>(page->tables.markup[static_cast<uint8_t>(c)]); };
    text.at = edited;
    text.end = edited + node.numeric.editedLength;
    while (text.at < text.end && *text.at == byte(' ')) text.at++;
    trimBytes(text, byte(' '));

    text.minus = text.at < text.end && *text.at == byte('-');
    if (text.minus) text.at++;
    auto spells = [&](const char *word) {
        return text.length() == 3 && text.at[0] == byte(word[0]) && text.at[1] == byte(word[1]) &&
               text.at[2] == byte(word[2]);
    };
    text.word = spells("INF") ? "INF" : spells("N.N") ? "NaN" : nullptr;
    if (text.word) return true;

    text.comma = option(ZVK_XML_DECIMAL_COMMA);
    auto isPoint = [&](uint8_t b) { return b == byte('.') || (text.comma && b == byte(',')); };
    while (text.length() > 1 && *text.at == byte('0') && !isPoint(text.at[1])) text.at++;
    if (!classify(text, page, false, wideText_)) return false;
    if (text.hex && text.minus) {
        text.at--;
        text.minus = false;
    }
    return true;
}

template <class Unit>
bool Generator<Unit>::leafText(const GenerateNode &node, const uint8_t *data, const uint8_t *edited, SourceText &text)
{
    if (node.flags & ZVK_XML_NODE_NUMERIC) return numericText(node, edited, text);
    text.at = data;
    text.end = data + node.length;
    switch (node.flags >> 4 & 7) {
    case ZVK_XML_CLASS_NATIONAL:
        trimPairs(text, 0x20, 0x00);
        return classifyNational(text);
    case ZVK_XML_CLASS_DBCS:
        trimPairs(text, 0x40, 0x40);
        return classify(text, encoding_.ebcdic, text.length() > 0, wideText_);
    case ZVK_XML_CLASS_EBCDIC:
        trimBytes(text, 0x40);
        return classify(text, encoding_.ebcdic, false, wideText_);
    default:
        trimBytes(text, 0x20);
        return classify(text, encoding_.native, false, wideText_);
    }
}

// The text of an option: it must be one.
template <class Unit>
bool Generator<Unit>::optionText(uint8_t textClass, const void *at, uint64_t length, SourceText &text)
{
    text.at = static_cast<const uint8_t *>(at);
    text.end = text.at + length;
    bool good = textClass & ZVK_XML_TEXT_NATIONAL ? classifyNational(text)
                : textClass & ZVK_XML_TEXT_EBCDIC ? classify(text, encoding_.ebcdic, false, wideName_)
                                                  : classify(text, encoding_.native, false, wideName_);
    return good && (!text.hex || fail(kNameFailed));
}

} // namespace xml
