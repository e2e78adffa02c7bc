// Which encoding a document is in: from its first bytes, the program's code page and its own
// declaration.
//
// The first bytes say which family it is of. The program's code page must be of the same family, or
// the parse ends (320 to 325). Within the single-byte families program and declaration must agree;
// where they do not, or one of them is unusable, the program is asked (70 to 89, and from 100000
// on).
#include <cstring>

#include "base/bytes.h"
#include "xml/parser.h"
#include "xml/utf8_walk.h"

namespace {

enum DocumentClass : uint8_t {
    kAscii = 0,           // below 0x80 only
    kAsciiDeclared = 1,   // no UTF-8, with a declaration
    kAsciiUndeclared = 2, // no UTF-8, without one
    kEbcdicDeclared = 3,
    kEbcdicUndeclared = 4,
    kUtf8Document = 5,
    kUtf16BigDocument = 6,
    kUtf16Document = 7,
    kUcs4Document = 8,
    kUnknownDocument = 9
};

constexpr uint32_t kDefaultEbcdic = 1140, kDefaultAscii = 819;
constexpr size_t kLongestName = 60; // a declared name is shorter

// After an exception before the scan the parse is over, unless it was a question.
bool refuse(XmlParser &p, int32_t code)
{
    xmlException(p, p.text, static_cast<uint32_t>(p.textEnd - p.text), code);
    return false;
}

// White space as the first bytes of a document can have it, in UTF-16 and ASCII.
bool isLeadingWhite(uint8_t b) { return b == 0x09 || b == 0x0A || b == 0x0D || b == 0x20; }
bool opensUtf16(uint8_t b) { return isLeadingWhite(b) || b == '<' || b == kNextLine; }

DocumentClass asciiClass(XmlParser &p, Utf8Walk &walk)
{
    walk = zvkWalkUtf8(p.text, p.textEnd);
    if (walk.ascii) return kAscii;
    if (walk.invalid == p.textEnd) return kUtf8Document;
    return p.text[0] == '<' && p.text[1] == '?' ? kAsciiDeclared : kAsciiUndeclared;
}

// Skips a mark.
DocumentClass classify(XmlParser &p, Utf8Walk &walk)
{
    if (p.textEnd - p.text < 4) return kUnknownDocument;
    const uint8_t *b = p.text;
    if (b[0] == 0xEF && b[1] == 0xBB && b[2] == 0xBF) {
        p.text += 3;
        walk = zvkWalkUtf8(p.text, p.textEnd);
        return kUtf8Document;
    }
    if (b[0] == 0xC2 && b[1] == 0x85) {
        walk = zvkWalkUtf8(p.text, p.textEnd);
        return kUtf8Document;
    }
    if (b[0] == 0xFE && b[1] == 0xFF && b[2] == 0 && opensUtf16(b[3])) return kUtf16BigDocument;
    if (b[0] == 0xFF && b[1] == 0xFE && opensUtf16(b[2]) && b[3] == 0) {
        p.text += 2;
        return kUtf16Document;
    }
    if (b[0] == 0xFF && b[1] == 0xFE && b[2] == 0 && b[3] == 0) return kUcs4Document;
    if (b[0] == 0 && opensUtf16(b[1])) return kUtf16BigDocument;
    if (opensUtf16(b[0]) && b[1] == 0) return b[2] == 0 && b[3] == 0 ? kUcs4Document : kUtf16Document;
    if (b[0] == 0x4C && b[1] == 0x6F) return kEbcdicDeclared;
    if (b[0] == 0x4C || b[0] == 0x40 || b[0] == 0x05 || b[0] == 0x15 || b[0] == 0x25) return kEbcdicUndeclared;
    if ((isLeadingWhite(b[0]) || b[0] == '<') && b[1] < 0x80) return asciiClass(p, walk);
    return kUnknownDocument;
}

// The code for a document and a program of different families, 0 if they go together.
int32_t disagreement(DocumentClass document, PageClass program)
{
    bool ebcdic = zvkIsEbcdicPage(program), utf16 = zvkIsUtf16Page(program);
    bool ascii = program == kAsciiSingle || program == kAsciiMixed;
    switch (document) {
    case kAscii:
    case kAsciiDeclared:
    case kAsciiUndeclared:
        return ebcdic ? 323 : utf16 ? 321 : 0;
    case kEbcdicDeclared:
    case kEbcdicUndeclared:
        return ascii ? 322 : utf16 ? 320 : 0;
    case kUtf8Document:
        return ebcdic ? 325 : utf16 ? 324 : 0;
    default:
        return 0;
    }
}

// A small reader of the declaration, in ASCII or EBCDIC. What it looks for are characters that have
// the same place in all pages of a family.
struct DeclarationReader {
    const uint8_t *at, *end;
    bool ebcdic;

    char peek() const { return at == end ? '\0' : ebcdic ? fromEbcdic(*at) : static_cast<char>(*at); }
    char take()
    {
        char c = peek();
        if (at != end) at++;
        return c;
    }
    bool takes(const char *word)
    {
        for (; *word; word++)
            if (take() != *word) return false;
        return true;
    }
    void skipWhite()
    {
        while (at != end && (peek() == ' ' || peek() == '\t' || peek() == '\n' || peek() == '\r')) at++;
    }

    static char fromEbcdic(uint8_t b)
    {
        // Letters lie in three rows of nine, digits at the end of the last row.
        uint8_t row = b >> 4, column = b & 15;
        if (row == 0xF && column <= 9) return static_cast<char>('0' + column);
        if (column >= 1 && column <= 9) {
            if (row == 0x8) return static_cast<char>('a' + column - 1);
            if (row == 0x9) return static_cast<char>('j' + column - 1);
            if (row == 0xA && column >= 2) return static_cast<char>('s' + column - 2);
            if (row == 0xC) return static_cast<char>('A' + column - 1);
            if (row == 0xD) return static_cast<char>('J' + column - 1);
            if (row == 0xE && column >= 2) return static_cast<char>('S' + column - 2);
        }
        switch (b) {
        case 0x40:
        case 0x15:
        case 0x25:
        case 0x05:
        case 0x0D:
            return ' ';
        case 0x4B:
            return '.';
        case 0x4C:
            return '<';
        case 0x60:
            return '-';
        case 0x6D:
            return '_';
        case 0x6E:
            return '>';
        case 0x6F:
            return '?';
        case 0x7A:
            return ':';
        case 0x7D:
            return '\'';
        case 0x7E:
            return '=';
        case 0x7F:
            return '"';
        }
        return '\x01';
    }
};

struct DeclaredName {
    const uint8_t *place = nullptr;
    uint32_t length = 0; // bytes in the document; 0: there is none that is usable
    char name[kLongestName];
};

bool isNameCharacter(char c)
{
    return (c >= 'a' && c <= 'z') || (c >= 'A' && c <= 'Z') || (c >= '0' && c <= '9') || c == '-' || c == '.' ||
           c == '_';
}

// The value of a clause, after its name.
bool readValue(DeclarationReader &reader, DeclaredName &value)
{
    reader.skipWhite();
    if (reader.take() != '=') return false;
    reader.skipWhite();
    char quote = reader.take();
    if (quote != '"' && quote != '\'') return false;
    value.place = reader.at;
    for (value.length = 0; isNameCharacter(reader.peek()); value.length++) {
        if (value.length == kLongestName - 1) return false;
        value.name[value.length] = reader.take();
    }
    value.name[value.length] = '\0';
    return reader.take() == quote;
}

bool readDeclaredName(const XmlParser &p, bool ebcdic, DeclaredName &declared)
{
    DeclarationReader reader{p.text, p.textEnd, ebcdic};
    if (!reader.takes("<?xml")) return false;
    for (;;) {
        const uint8_t *before = reader.at;
        reader.skipWhite();
        if (reader.at == before) return false;
        char clause = reader.take();
        if (clause == 'e') return reader.takes("ncoding") && readValue(reader, declared) && declared.length > 0;
        if (clause != 'v' || !reader.takes("ersion") || !readValue(reader, declared)) return false;
    }
}

// Asks about the encoding; true for an answer of 0.
bool ask(XmlParser &p, const DeclaredName &declared, bool isDeclared, int32_t code)
{
    if (isDeclared) return xmlException(p, declared.place, declared.length, code);
    return xmlException(p, p.text, static_cast<uint32_t>(p.textEnd - p.text), code);
}

// What the two single-byte families differ in.
struct Family {
    uint32_t defaultCcsid;
    int32_t unknownName, foreignName, programUnusable, neitherUsable, nothingUsable, conflict;
    bool (*has)(PageClass);
};
constexpr Family kEbcdicFamily = {kDefaultEbcdic, 70, 70, 71, 73, 72, 100000, zvkIsEbcdicPage};
constexpr Family kAsciiFamily = {kDefaultAscii, 80, 85, 81, 89, 89, 200000, zvkIsAsciiPage};

// The procedure's answer to a conflict is the declared number, or 0.
bool settleConflict(XmlParser &p, const DeclaredName &declared, const XmlPage *ofDeclaration, const Family &family,
                    const XmlPage *&page)
{
    int32_t code = family.conflict + ofDeclaration->ccsid;
    p.error = code;
    int32_t answer = p.handlers[kException](p.context, declared.place, declared.length, static_cast<uint32_t>(code));
    if (answer == 0) return true;
    if (answer == ofDeclaration->ccsid) {
        page = ofDeclaration;
        return true;
    }
    p.error = kXmlUnwound;
    return false;
}

// Null and false if the parse is over.
bool choosePage(XmlParser &p, const XmlPage *program, const Family &family, bool mayBeDeclared, const XmlPage *&page)
{
    DeclaredName declared;
    bool isDeclared = mayBeDeclared && readDeclaredName(p, &family == &kEbcdicFamily, declared);
    if (program && !family.has(program->pageClass)) program = nullptr;
    page = program ? program : zvkXmlPageOfCcsid(family.defaultCcsid);
    if (!isDeclared) return program || ask(p, declared, false, family.nothingUsable);

    const XmlPage *ofDeclaration = zvkXmlPage(declared.name);
    bool known = ofDeclaration && ofDeclaration->ccsid > 0;
    if (!known || !family.has(ofDeclaration->pageClass)) {
        if (!program) return ask(p, declared, true, family.neitherUsable);
        return ask(p, declared, true, known ? family.foreignName : family.unknownName);
    }
    if (!program) {
        page = ofDeclaration;
        return ask(p, declared, true, family.programUnusable);
    }
    if (static_cast<uint32_t>(ofDeclaration->ccsid) == p.programCcsid || ofDeclaration == program) return true;
    return settleConflict(p, declared, ofDeclaration, family, page);
}

// How far the scan of UTF-8 can get.
void setUtf8(XmlParser &p, const Utf8Walk &walk)
{
    p.scannerKind = kUtf8Scanner;
    p.tables = &zvkUtf8Tables;
    p.scanEnd = walk.secondPlane;
    if (walk.secondPlane != walk.invalid)
        p.endCode = 162;
    else if (walk.invalid != p.textEnd && !walk.truncated)
        p.endCode = 161;
}

} // namespace

bool xmlRecognise(XmlParser &p)
{
    Utf8Walk walk{};
    auto documentClass = classify(p, walk);
    switch (documentClass) {
    case kUtf16BigDocument:
        return refuse(p, 315);
    case kUcs4Document:
        return refuse(p, 316);
    case kUnknownDocument:
        return refuse(p, 317);
    default:
        break;
    }

    const XmlPage *program = zvkXmlPageOfCcsid(p.programCcsid);
    PageClass programClass = program ? program->pageClass : kUnknownPage;
    if (int32_t code = disagreement(documentClass, programClass)) return refuse(p, code);
    if (documentClass == kAscii && programClass == kUtf8) documentClass = kUtf8Document;
    p.documentClass = documentClass;

    if (documentClass == kUtf16Document) {
        p.scannerKind = kUtf16Scanner;
        p.tables = &zvkUtf8Tables;
        p.scanEnd = p.text + ((p.textEnd - p.text) & ~ptrdiff_t{1});
        p.textEnd = p.scanEnd;
        uint32_t units = static_cast<uint32_t>((p.textEnd - p.text) / 2);
        return programClass == kUtf16Little || xmlException(p, p.text, units, 92);
    }
    if (documentClass == kUtf8Document) {
        setUtf8(p, walk);
        return true;
    }
    bool ebcdic = documentClass == kEbcdicDeclared || documentClass == kEbcdicUndeclared;
    bool mayBeDeclared = documentClass != kEbcdicUndeclared && documentClass != kAsciiUndeclared;
    const XmlPage *page = nullptr;
    if (!choosePage(p, program, ebcdic ? kEbcdicFamily : kAsciiFamily, mayBeDeclared, page)) return false;
    if (!page) {
        p.error = kXmlNoStorage; // the two defaults are always there
        return false;
    }
    if (page->pageClass == kUtf8) {
        setUtf8(p, walk);
    } else {
        p.scannerKind = kSingleByteScanner;
        p.tables = &page->tables;
    }
    return true;
}
