// The scanner: one pass over a document, from its declaration to what follows the root element.
//
// It is written once for the three forms of text. Every step answers true to go on and false to
// unwind, with the reason in `error`; nested elements are on a stack of their own and not on the
// machine's, so that depth is bounded by storage alone.
//
// The place that the scan has come to is `at`. A step is called with `at` on the first unit that is
// its own, and leaves it after the last one.
#include <cstring>

#include "frame/storage.h"
#include "xml/parser.h"
#include "xml/text_forms.h"

namespace {

constexpr int32_t kEndCodes[] = {100, 101, 102, 103, 104, 101, 106, 101, 108, 109, 110,
                                 111, 112, 113, 114, 115, 116, 117, 118, 119, 120, 121};

int32_t ignore(void *, const uint8_t *, uint32_t, uint32_t) { return 0; }

// Names are short: two overlapping loads compare most of them.
bool sameBytes(const uint8_t *left, const uint8_t *right, size_t length)
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

// --- Declaration ---------------------------------------------------------------------------------

// `<?xml version="1.0" encoding="..." standalone="..."?>`, if there is one.
template <class Text>
bool Scanner<Text>::declaration()
{
    const uint8_t *start = at;
    for (const char *c = "<?xml"; *c; c++, at += unit) {
        if (!need()) return false;
        if (is(*c)) continue;
        at = start;
        return true;
    }
    if (!need()) return false;
    if (!isWhite()) {
        at = start;
        return true;
    }

    p.state = kAfterXml;
    skipWhite();
    if (!versionClause() || !clauseEnd(146, kAfterVersion)) return false;
    if (!is('?') && !is('s') && (!encodingClause() || !clauseEnd(151, kAfterEncoding))) return false;
    if (!is('?') && (!standaloneClause() || !clauseEnd(157, kAfterStandalone))) return false;
    return expectWord("?>", 158);
}

// After the clause's name: "=" and the opening quote, whose codes follow each other.
template <class Text>
bool Scanner<Text>::declarationValue(int32_t equals, XmlState state, uint16_t &quote)
{
    p.state = state;
    skipWhite();
    if (!expect('=', equals)) return false;
    skipWhite();
    if (!need()) return false;
    if (!is('"') && !is('\'')) return fatal(equals + 1);
    quote = form.load(at);
    at += unit;
    return need();
}

template <class Text>
bool Scanner<Text>::versionClause()
{
    uint16_t quote = 0;
    if (!expectWord("version", 142) || !declarationValue(143, kInVersion, quote)) return false;
    const uint8_t *value = at;
    if (!readName()) return false;
    if (form.load(at) != quote) return fatal(145);
    at += unit;
    return send(kVersionInformation, value, at - unit);
}

template <class Text>
bool Scanner<Text>::encodingClause()
{
    uint16_t quote = 0;
    if (!expectWord("encoding", 147) || !declarationValue(148, kInEncoding, quote)) return false;
    const uint8_t *value = at;
    if (form.nameClassAt(at) != kNameLetter && !recover(15)) return false;
    if (!readName()) return false;
    if (form.load(at) != quote) return fatal(150);
    at += unit;
    return send(kEncodingDeclaration, value, at - unit);
}

template <class Text>
bool Scanner<Text>::standaloneClause()
{
    uint16_t quote = 0;
    if (!expectWord("standalone", 152) || !declarationValue(153, kInStandalone, quote)) return false;
    const uint8_t *value = at;
    if (!is('y') && !is('n')) return fatal(155);
    if (!expectWord(is('y') ? "yes" : "no", 155) || !need()) return false;
    if (form.load(at) != quote) return fatal(156);
    at += unit;
    return send(kStandaloneDeclaration, value, at - unit);
}

// After a clause: white space, or "?" at once.
template <class Text>
bool Scanner<Text>::clauseEnd(int32_t code, XmlState after)
{
    p.state = after;
    if (!need()) return false;
    if (!is('?') && !isWhite()) return fatal(code);
    skipWhite();
    return need();
}

// --- Between declaration and root, and after the root --------------------------------------------

template <class Text>
Misc Scanner<Text>::misc()
{
    for (;;) {
        skipWhite();
        if (ended()) return Misc::End;
        if (!is('<')) {
            if (!strayText(1)) return Misc::Failed;
            continue;
        }
        const uint8_t *start = at, *next = at + unit, *third = next + unit;
        if (next == end || (isAt(next, '!') && third == end)) {
            at = end;
            documentEnd();
            return Misc::Failed;
        }
        if (isAt(next, '?')) {
            at = third;
            if (!instruction()) return Misc::Failed;
        } else if (isAt(next, '!') && isAt(third, '-')) {
            at = third + unit;
            if (!comment()) return Misc::Failed;
        } else if (isAt(next, '!') && isAt(third, 'D')) {
            return Misc::DocumentType;
        } else if (beginsName(next)) {
            return Misc::Element;
        } else {
            at = start;
            if (!strayText(2)) return Misc::Failed;
        }
    }
}

template <class Text>
bool Scanner<Text>::strayText(int32_t code)
{
    const uint8_t *start = at, *next = at + form.lengthAt(at, end);
    const uint8_t *stop = next;
    while (stop < end && !isAt(stop, '<')) stop += unit;
    if (!recoverAs(code, kContentCharacters, start, stop)) return false;
    at = stop;
    return true;
}

// `<!DOCTYPE root [ ... ]>`, given as it is. Quotes hide what they hold, and so do comments and
// processing instructions inside the brackets, where an apostrophe is just a letter.
template <class Text>
bool Scanner<Text>::documentType()
{
    const uint8_t *start = at;
    at += 2 * unit;
    if (!expectWord("DOCTYPE", 122) || !need()) return false;
    if (!isWhite()) return fatal(122);
    for (uint32_t brackets = 0; need();) {
        bool closing = is('>') && brackets == 0;
        if (is('[')) {
            brackets++;
        } else if (is(']')) {
            if (brackets > 0) brackets--;
        } else if (is('"') || is('\'')) {
            uint16_t quote = form.load(at);
            at += unit;
            while (at < end && form.load(at) != quote) at += unit;
            if (!need()) return false;
        } else if (is('<') && brackets > 0) {
            if (!skipInSubset()) return false;
            continue;
        }
        at += unit;
        if (closing) return send(kDocumentTypeDeclaration, start, at);
    }
    return false;
}

// At "<" between the brackets: passes a comment or processing instruction, else the "<" alone.
template <class Text>
bool Scanner<Text>::skipInSubset()
{
    at += unit;
    if (!need()) return false;
    if (is('?')) return skipTo('?', ">");
    if (!is('!')) return true;
    if (units(at, end) < 3 || !isAt(at + unit, '-') || !isAt(at + 2 * unit, '-')) return true;
    at += 2 * unit;
    return skipTo('-', "->");
}

// To after the next place, from the following unit on, where `first` and `rest` are.
template <class Text>
bool Scanner<Text>::skipTo(char first, const char *rest)
{
    size_t length = strlen(rest);
    for (;;) {
        at += unit;
        if (!need()) return false;
        if (!is(first)) continue;
        if (units(at, end) <= length) {
            at = end;
            return documentEnd();
        }
        size_t same = 0;
        while (same < length && isAt(at + (same + 1) * unit, rest[same])) same++;
        if (same < length) continue;
        at += (length + 1) * unit;
        return true;
    }
}

// --- Processing instructions and comments --------------------------------------------------------

// After "<?".
template <class Text>
bool Scanner<Text>::instruction()
{
    if (!need()) return false;
    if (!beginsName(at)) return fatal(138);
    const uint8_t *target = at;
    if (!readName()) return false;
    const uint8_t *targetEnd = at;
    bool white = isWhite();
    if (!white && !is('?')) return fatal(139);
    if (targetEnd - target == 3 * unit) {
        auto either = [&](int i, char lower, char upper) {
            return isAt(target + i * unit, lower) || isAt(target + i * unit, upper);
        };
        if (either(0, 'x', 'X') && either(1, 'm', 'M') && either(2, 'l', 'L') && !recover(12)) return false;
    }

    skipWhite();
    const uint8_t *data = at;
    if (white) {
        if (!instructionData()) return false;
    } else {
        at += unit;
        if (!expect('>', 140)) return false;
    }
    return send(kInstructionTarget, target, targetEnd) && send(kInstructionData, data, at - 2 * unit);
}

// To after "?>".
template <class Text>
bool Scanner<Text>::instructionData()
{
    for (;;) {
        at = form.run(Run::Instruction, at, end);
        if (!need()) return false;
        if (!is('?')) {
            if (!recover(11)) return false;
            skipCharacter();
            continue;
        }
        at += unit;
        if (!need()) return false;
        if (!is('>')) continue;
        at += unit;
        return true;
    }
}

// After "<!-".
template <class Text>
bool Scanner<Text>::comment()
{
    if (!expect('-', 137)) return false;
    const uint8_t *start = at;
    for (;;) {
        at = form.run(Run::Comment, at, end);
        if (!need()) return false;
        if (!is('-')) {
            if (!recover(9)) return false;
            skipCharacter();
            continue;
        }
        at += unit;
        if (!need()) return false;
        if (!is('-')) continue;
        const uint8_t *second = at;
        at += unit;
        if (!need()) return false;
        if (is('>')) {
            at += unit;
            return send(kComment, start, second - unit);
        }
        if (!recover(10)) return false;
        at = second; // it may be the first of the two that end the comment
    }
}

// --- Elements ------------------------------------------------------------------------------------

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

// --- Document ------------------------------------------------------------------------------------

template <class Text>
bool Scanner<Text>::document()
{
    if (!send(kStartOfDocument, p.text, p.textEnd)) return false;
    p.state = kNothingRead;
    if (!declaration()) return false;

    p.state = kProlog;
    Misc next = misc();
    if (next == Misc::DocumentType) {
        if (!documentType()) return false;
        next = misc();
        if (next == Misc::DocumentType) return fatal(123);
    }
    if (next == Misc::End) return documentEnd();
    if (next != Misc::Element) return false;

    at += unit;
    if (!elements()) return false;

    p.state = kAfterRoot;
    switch (misc()) {
    case Misc::End:
        break;
    case Misc::DocumentType:
        return fatal(159);
    case Misc::Element:
        return fatal(160);
    case Misc::Failed:
        return false;
    }
    return end != p.textEnd ? documentEnd() : send(kEndOfDocument, end, end);
}

} // namespace

bool xmlScan(XmlParser &p)
{
    switch (p.scannerKind) {
    case kSingleByteScanner:
        return Scanner<SingleByteText>(p, {p.tables}).document();
    case kUtf8Scanner:
        return Scanner<Utf8Text>(p, {}).document();
    case kUtf16Scanner:
        return Scanner<Utf16Text>(p, {}).document();
    }
    return false;
}
