// Deriving the tables of a code page; see page_tables.h.
#include "xml/page_tables.h"

namespace {

CharClass charClassOf(uint16_t c)
{
    switch (c) {
    case '<':
        return kLess;
    case '&':
        return kAmpersand;
    case ']':
        return kCloseBracket;
    case '?':
        return kQuestion;
    case '!':
        return kExclamation;
    case '/':
        return kSlash;
    case '>':
        return kGreater;
    }
    if (zvkIsXmlWhite(c)) return kWhite;
    return zvkIsXmlCharacter(c) ? kData : kIllegal;
}

uint8_t hexValueOf(uint16_t c)
{
    if (c >= '0' && c <= '9') return static_cast<uint8_t>(c - '0');
    if (c >= 'a' && c <= 'f') return static_cast<uint8_t>(c - 'a' + 10);
    if (c >= 'A' && c <= 'F') return static_cast<uint8_t>(c - 'A' + 10);
    return 255;
}

// Control characters fill the bytes up to here.
uint8_t controlLimit(const PageTables &tables) { return tables.markup[' '] == 0x40 ? 0x3F : 0x1F; }

void setStops(StopSet &set, const PageTables &tables, const char *characters)
{
    for (int b = 0; b < 256; b++) set.stops[b] = tables.charClass[b] == kIllegal || tables.charClass[b] == kLook;
    for (; *characters; characters++) {
        uint16_t byte = tables.markup[static_cast<uint8_t>(*characters)];
        if (byte != kNoByte) set.stops[byte] = true;
    }
    set.finish(controlLimit(tables));
}

void setAllStops(PageTables &tables)
{
    constexpr const char *characters[kRuns] = {"<&]", "<&\"", "<&'", "-", "?", "]"}; // as in Run
    for (size_t i = 0; i < kRuns; i++) setStops(tables.stops[i], tables, characters[i]);
}

PageTables utf8Tables()
{
    uint16_t ascii[256];
    for (uint16_t b = 0; b < 256; b++) ascii[b] = b < 0x80 ? b : kNoCharacter;
    PageTables tables;
    zvkDerivePageTables(ascii, tables);
    for (int b = 0x80; b < 256; b++) tables.nameClass[b] = kNameLook;
    tables.charClass[0xEF] = kLook; // U+FFFE and U+FFFF begin so
    setAllStops(tables);
    return tables;
}

} // namespace

void zvkDerivePageTables(const uint16_t (&toUnicode)[256], PageTables &tables)
{
    for (uint16_t &byte : tables.markup) byte = kNoByte;
    for (int b = 0; b < 256; b++) {
        uint16_t c = toUnicode[b];
        tables.charClass[b] = charClassOf(c);
        tables.nameClass[b] = c == kNoCharacter ? kNotInNames : zvkNameClass(c);
        tables.hexValue[b] = hexValueOf(c);
        if (c < 128 && tables.markup[c] == kNoByte) tables.markup[c] = static_cast<uint16_t>(b);
    }
    setAllStops(tables);
}

const PageTables zvkUtf8Tables = utf8Tables();
