// The scanner: one pass over a document, from its declaration to what follows the root element.
//
// It is written once for the three forms of text. Every step answers true to go on and false to
// unwind, with the reason in `error`; nested elements are on a stack of their own and not on the
// machine's, so that depth is bounded by storage alone.
//
// The place that the scan has come to is `at`. A step is called with `at` on the first unit that is
// its own, and leaves it after the last one.
//
// The steps are in scan_prolog.h (declaration, document type, comments, instructions), scan_tags.h
// (elements and their attributes), scan_content.h (text and references); scanner.cpp has the whole
// and compiles it for each form, in one piece, so that they are joined where that is faster.
#pragma once

#include <cstring>

#include "frame/storage.h"
#include "xml/parser.h"
#include "xml/text_forms.h"

namespace xml {

inline constexpr int32_t kEndCodes[] = {100, 101, 102, 103, 104, 101, 106, 101, 108, 109, 110,
                                        111, 112, 113, 114, 115, 116, 117, 118, 119, 120, 121};

inline int32_t ignore(void *, const uint8_t *, uint32_t, uint32_t) { return 0; }

// Names are short: two overlapping loads compare most of them.
inline bool sameBytes(const uint8_t *left, const uint8_t *right, size_t length)
{
    if (length > 16) return memcmp(left, right, length) == 0;
    if (length >= 8) {
        return load<uint64_t>(left) == load<uint64_t>(right) &&
               load<uint64_t>(left + length - 8) == load<uint64_t>(right + length - 8);
    }
    for (size_t i = 0; i < length; i++)
        if (left[i] != right[i]) return false;
    return true;
}

// What follows between declaration, document type declaration and root.
enum class Misc { Failed, End, DocumentType, Element };

// How an element's content was left.
enum class Content { Failed, Child, RootClosed };

template <class Text>
class Scanner {
public:
    Scanner(XmlParser &parser, Text text) : p(parser), form(text), at(p.text), end(p.scanEnd) {}
    bool document();

private:
    static constexpr size_t unit = Text::unit;

    XmlParser &p;
    const Text form;
    const uint8_t *at;
    const uint8_t *const end;

    // Looking.
    bool ended() const { return at == end; }
    bool is(char c) const { return form.load(at) == form.mark(c); }
    bool isAt(const uint8_t *place, char c) const { return form.load(place) == form.mark(c); }
    bool beginsName(const uint8_t *place) const { return zvkBeginsName(form.nameClassAt(place)); }
    bool isWhite() const { return form.whiteAt(at, end) != 0; }
    void skipCharacter() { at += form.lengthAt(at, end); }
    void skipWhite()
    {
        const uint8_t *place = at;
        while (place < end) {
            size_t length = form.whiteAt(place, end);
            if (length == 0) break;
            place += length;
        }
        at = place;
    }
    static uint32_t units(const uint8_t *from, const uint8_t *to) { return static_cast<uint32_t>((to - from) / unit); }
    uint32_t offset(const uint8_t *place) const { return static_cast<uint32_t>(place - p.text); }

    // Telling.
    bool send(XmlSlot slot, const uint8_t *from, const uint8_t *to) { return send(p.handlers[slot], from, to, 0); }
    bool send(XmlHandler handler, const uint8_t *from, const uint8_t *to, uint32_t value)
    {
        if (__builtin_expect(handler(p.context, from, units(from, to), value) == 0, 1)) return true;
        p.error = kXmlUnwound;
        return false;
    }
    bool fatal(int32_t code)
    {
        xmlException(p, p.text, units(p.text, at), code);
        return false;
    }
    bool documentEnd();
    bool recover(int32_t code, const uint8_t *upTo);
    bool recover(int32_t code) { return recover(code, at + form.lengthAt(at, end)); }
    // Recovers, and then gives the text that the code's rule names, unless the parse was silent
    // before.
    bool recoverAs(int32_t code, XmlSlot slot, const uint8_t *from, const uint8_t *to);

    // Expecting.
    bool need() { return !ended() || documentEnd(); }
    bool expect(char c, int32_t code)
    {
        if (!need()) return false;
        if (!is(c)) return fatal(code);
        at += unit;
        return true;
    }
    bool expectWord(const char *word, int32_t code)
    {
        for (; *word; word++)
            if (!expect(*word, code)) return false;
        return true;
    }
    bool readName();

    // Steps.
    bool declaration();
    bool declarationValue(int32_t equals, XmlState state, uint16_t &quote);
    bool versionClause();
    bool encodingClause();
    bool standaloneClause();
    bool clauseEnd(int32_t code, XmlState after);
    Misc misc();
    bool strayText(int32_t code);
    bool documentType();
    bool skipInSubset();
    bool skipTo(char first, const char *rest);
    bool instruction();
    bool instructionData();
    bool comment();
    bool elements();
    bool startTag(bool &empty);
    bool attributes();
    bool attribute();
    bool attributeRepeats(const uint8_t *name, const uint8_t *nameEnd, uint32_t &count);
    bool attributeValue();
    bool tagRest(int32_t nameCode, int32_t otherCode, bool nameAllowed, bool &more);
    bool openElement(const uint8_t *name, const uint8_t *nameEnd);
    Content content();
    bool cdataEndOrBracket(const uint8_t *&start, bool &inCdata);
    bool flush(const uint8_t *start) { return at == start || send(kContentCharacters, start, at); }
    bool endTag();
    bool exclamation(bool &inCdata);
    bool reference(bool inValue);
    bool namedReference(bool inValue);
    bool numericReference(bool inValue);
};

// --- Telling -------------------------------------------------------------------------------------

// There is nothing more to read: the end of the document, or what is no text.
template <class Text>
bool Scanner<Text>::documentEnd()
{
    if (p.endCode) {
        at = end;
        return fatal(p.endCode);
    }
    xmlException(p, p.text, units(p.text, p.textEnd), kEndCodes[p.state]);
    return false;
}

// After an answer of 0 the parse goes on in silence.
template <class Text>
bool Scanner<Text>::recover(int32_t code, const uint8_t *upTo)
{
    if (!xmlException(p, p.text, units(p.text, upTo), code)) return false;
    if (!p.silent)
        for (XmlHandler &handler : p.handlers) handler = ignore;
    p.silent = true;
    return true;
}

template <class Text>
bool Scanner<Text>::recoverAs(int32_t code, XmlSlot slot, const uint8_t *from, const uint8_t *to)
{
    XmlHandler handler = p.handlers[slot];
    return recover(code) && send(handler, from, to, 0);
}

template <class Text>
bool Scanner<Text>::readName()
{
    at = form.nameEnd(at, end);
    return need();
}

} // namespace xml
