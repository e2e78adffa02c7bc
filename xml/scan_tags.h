// Elements: start tags with their attributes, and the stack of those that are open.
#pragma once

#include "xml/scanner.h"

namespace xml {

// The root and all in it; `at` is on the root's name.
template <class Text>
bool Scanner<Text>::elements()
{
    p.state = kRootName;
    for (;;) {
        bool empty = false;
        if (!startTag(empty)) return false;
        if (empty && p.depth == 0) return true;
        switch (content()) {
        case Content::Failed:
            return false;
        case Content::RootClosed:
            return true;
        case Content::Child:
            p.state = kElementName;
            break;
        }
    }
}

// From the name to after ">". An element that has an end tag is open then.
template <class Text>
bool Scanner<Text>::startTag(bool &empty)
{
    const uint8_t *name = at;
    if (!readName()) return false;
    const uint8_t *nameEnd = at;
    skipWhite();
    bool more = false;
    if (!need() || !tagRest(125, 126, true, more) || !send(kStartOfElement, name, nameEnd)) return false;
    if (more && !attributes()) return false;

    empty = is('/');
    if (!empty) {
        at += unit;
        return openElement(name, nameEnd);
    }
    p.state = kAfterSlash;
    at += unit;
    return expect('>', 132) && send(kEndOfElement, name, nameEnd);
}

// What follows a name or a value in a start tag: "/", ">", or (where it may) a name.
template <class Text>
bool Scanner<Text>::tagRest(int32_t nameCode, int32_t otherCode, bool nameAllowed, bool &more)
{
    more = false;
    if (is('>') || is('/')) return true;
    uint8_t nameClass = form.nameClassAt(at);
    more = nameAllowed && zvkBeginsName(nameClass);
    return more || fatal(nameClass != kNotInNames ? nameCode : otherCode);
}

template <class Text>
bool Scanner<Text>::attributes()
{
    uint32_t count = 0;
    for (bool more = true; more;) {
        p.state = kInTag;
        const uint8_t *name = at;
        if (!readName()) return false;
        const uint8_t *nameEnd = at;
        skipWhite();
        p.state = kInValue;
        if (!expect('=', 127)) return false;
        if (attributeRepeats(name, nameEnd, count) && !recover(3, at)) return false;
        if (!send(kAttributeName, name, nameEnd)) return false;
        skipWhite();
        if (!attributeValue()) return false;

        p.state = kInTag;
        const uint8_t *afterValue = at;
        skipWhite();
        if (!need() || !tagRest(130, 131, at != afterValue, more)) return false;
    }
    return true;
}

// Only the first ten are compared; this is to stay.
template <class Text>
bool Scanner<Text>::attributeRepeats(const uint8_t *name, const uint8_t *nameEnd, uint32_t &count)
{
    if (count == kComparedAttributes) return false;
    uint32_t length = static_cast<uint32_t>(nameEnd - name);
    bool repeats = false;
    for (uint32_t i = 0; i < count && !repeats; i++)
        repeats = p.attributes[i].length == length && sameBytes(p.text + p.attributes[i].start, name, length);
    p.attributes[count++] = {offset(name), length};
    return repeats;
}

template <class Text>
bool Scanner<Text>::attributeValue()
{
    if (!need()) return false;
    if (!is('"') && !is('\'')) return fatal(128);
    uint16_t quote = form.load(at);
    Run run = is('"') ? Run::InQuotes : Run::InApostrophes;
    at += unit;
    const uint8_t *start = at;
    bool empty = true;
    for (;;) {
        at = form.run(run, at, end);
        if (!need()) return false;
        if (form.load(at) == quote) {
            const uint8_t *stop = at;
            at += unit;
            return (stop == start && !empty) || send(kAttributeCharacters, start, stop);
        }
        bool ampersand = is('&'), less = is('<');
        if (!ampersand && !less) {
            if (!recover(18)) return false;
            skipCharacter();
            continue;
        }
        if (at != start && !send(kAttributeCharacters, start, at)) return false;
        empty = false;
        const uint8_t *here = at;
        if (less && !recoverAs(4, kAttributeCharacters, here, here + unit)) return false;
        at = here + unit;
        if (ampersand && !reference(true)) return false;
        start = at;
    }
}

template <class Text>
bool Scanner<Text>::openElement(const uint8_t *name, const uint8_t *nameEnd)
{
    if (p.depth == p.room) {
        auto *wider = static_cast<XmlName *>(zvkTrackedAlloc(uint64_t{p.room} * 2 * sizeof(XmlName)));
        if (!wider) {
            p.error = kXmlNoStorage;
            return false;
        }
        memcpy(wider, p.open, p.depth * sizeof(XmlName));
        if (p.open != p.inlineOpen) zvkTrackedFree(p.open);
        p.open = wider;
        p.room *= 2;
    }
    p.open[p.depth++] = {offset(name), static_cast<uint32_t>(nameEnd - name)};
    return true;
}

} // namespace xml
