// What is around the root element: the declaration, the document type declaration, comments and
// processing instructions. The last two come inside elements as well.
#pragma once

#include "xml/scanner.h"

namespace xml {

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

} // namespace xml
