// The content of elements: text, CDATA sections, end tags, and references, which attribute values
// have as well.
#pragma once

#include "xml/scanner.h"

namespace xml {

// From wherever in an element's content to the name of a child, or to after the root's end tag.
template <class Text>
Content Scanner<Text>::content()
{
    p.state = kInContent;
    bool inCdata = false;
    for (const uint8_t *start = at;;) {
        at = form.run(inCdata ? Run::Cdata : Run::Content, at, end);
        if (!need()) return Content::Failed;
        switch (form.classAt(at)) {
        case kLess: {
            if (!flush(start)) return Content::Failed;
            p.state = kElementName;
            const uint8_t *less = at;
            at += unit;
            if (!need()) return Content::Failed;
            uint8_t nameClass = form.nameClassAt(at);
            if (zvkBeginsName(nameClass)) return Content::Child;
            if (is('/')) {
                at += unit;
                if (!endTag()) return Content::Failed;
                if (p.depth == 0) return Content::RootClosed;
            } else if (is('!')) {
                if (!exclamation(inCdata)) return Content::Failed;
            } else if (is('?')) {
                p.state = kInstructionInContent;
                at += unit;
                if (!instruction()) return Content::Failed;
            } else if (nameClass != kNotInNames) {
                fatal(135);
                return Content::Failed;
            } else {
                if (!recover(7)) return Content::Failed;
                at = less + unit;
            }
            p.state = kInContent;
            start = at;
            break;
        }
        case kAmpersand:
            if (!flush(start)) return Content::Failed;
            at += unit;
            if (!reference(false)) return Content::Failed;
            p.state = kInContent;
            start = at;
            break;
        case kCloseBracket:
            if (!cdataEndOrBracket(start, inCdata)) return Content::Failed;
            break;
        default:
            if (!recover(6)) return Content::Failed;
            skipCharacter();
        }
    }
}

// At "]": the end of a CDATA section, or data.
template <class Text>
bool Scanner<Text>::cdataEndOrBracket(const uint8_t *&start, bool &inCdata)
{
    if (units(at, end) < 3 || !isAt(at + unit, ']') || !isAt(at + 2 * unit, '>')) {
        at += unit;
        return true;
    }
    if (!flush(start)) return false;
    const uint8_t *mark = at;
    if (inCdata ? !send(kEndOfCdata, mark, mark + 3 * unit) : !recoverAs(8, kContentCharacters, mark, mark + 3 * unit))
        return false;
    inCdata = false;
    start = at = mark + 3 * unit;
    return true;
}

// After "</".
template <class Text>
bool Scanner<Text>::endTag()
{
    if (!need()) return false;
    if (!beginsName(at)) return fatal(133);
    const uint8_t *name = at;
    if (!readName()) return false;
    const uint8_t *nameEnd = at;
    skipWhite();
    if (!need()) return false;
    if (!is('>')) return fatal(134);

    XmlName opened = p.open[--p.depth];
    bool same = nameEnd - name == opened.length && sameBytes(p.text + opened.start, name, opened.length);
    if (same ? !send(kEndOfElement, name, nameEnd) : !recoverAs(5, kEndOfElement, name, nameEnd)) return false;
    at += unit;
    return true;
}

// At "!" after "<" in content: a comment or the start of a CDATA section.
template <class Text>
bool Scanner<Text>::exclamation(bool &inCdata)
{
    const uint8_t *start = at - unit;
    p.state = kAfterExclamation;
    at += unit;
    if (!need()) return false;
    if (is('-')) {
        p.state = kCommentInContent;
        at += unit;
        return comment();
    }
    p.state = kCdataStart;
    if (!expectWord("[CDATA[", 136)) return false;
    inCdata = true;
    return send(kStartOfCdata, start, at);
}

// --- References ----------------------------------------------------------------------------------

// After "&".
template <class Text>
bool Scanner<Text>::reference(bool inValue)
{
    p.state = inValue ? kReferenceInValue : kReferenceInContent;
    if (!need()) return false;
    bool good = false;
    if (is('#')) {
        at += unit;
        good = numericReference(inValue);
    } else if (beginsName(at)) {
        good = namedReference(inValue);
    } else {
        return fatal(141);
    }
    if (inValue) p.state = kInValue;
    return good;
}

constexpr struct {
    char name[5];
    char character;
} kPredefined[] = {{"amp", '&'}, {"apos", '\''}, {"gt", '>'}, {"lt", '<'}, {"quot", '"'}};

template <class Text>
bool Scanner<Text>::namedReference(bool inValue)
{
    const uint8_t *name = at;
    if (!readName()) return false;
    const uint8_t *nameEnd = at;
    bool closed = is(';');
    if (closed) {
        for (const auto &entity : kPredefined) {
            size_t length = strnlen(entity.name, sizeof entity.name), same = 0;
            if (units(name, nameEnd) != length) continue;
            while (same < length && isAt(name + same * unit, entity.name[same])) same++;
            if (same < length) continue;
            at += unit;
            XmlHandler handler = p.handlers[inValue ? kAttributeCharacter : kContentCharacter];
            return send(handler, name, nameEnd, form.mark(entity.character));
        }
    }
    if (!recoverAs(17, inValue ? kUnknownInAttribute : kUnknownInContent, name, nameEnd)) return false;
    if (closed) at += unit;
    return true;
}

// After "&#".
template <class Text>
bool Scanner<Text>::numericReference(bool inValue)
{
    constexpr uint32_t largest = 0x10FFFF;
    if (!need()) return false;
    uint32_t base = is('x') ? 16 : 10, value = 0;
    if (base == 16) at += unit;
    for (;; at += unit) {
        if (!need()) return false;
        if (is(';')) break;
        uint8_t digit = form.hexAt(at);
        if (digit >= base) {
            size_t length = form.lengthAt(at, end);
            XmlSlot slot = inValue ? kAttributeCharacters : kContentCharacters;
            if (!recoverAs(base == 16 ? 13 : 14, slot, at, at + length)) return false;
            at += length - unit;
        } else if (value <= largest) {
            value = value * base + digit;
        }
    }

    XmlHandler handler = p.handlers[inValue ? kAttributeNationalCharacter : kContentNationalCharacter];
    const uint8_t *semicolon = at;
    if (!zvkIsXmlCharacter(value)) {
        if (value > largest) value = largest;
        if (!recover(16)) return false;
    }
    at = semicolon + unit;
    return send(handler, semicolon, semicolon, value);
}

} // namespace xml
