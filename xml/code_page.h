// A code page as XML sees it: its class, its number, the name that a declaration gives it, and for
// pages of single bytes the character of each byte.
//
// A page is made once, from ICU's converter, and kept to the end of the process: there are as many
// as ICU has converters. Any thread may ask.
//
//     const XmlPage *page = zvkXmlPageOfCcsid(1140);      // class 2, "tqx-1140"
#pragma once

#include <cstdint>

#include "xml/page_tables.h"

// Classes of a code page, told by what a blank and an ideographic blank become in it.
enum PageClass : int8_t {
    kUtf16Big = -3,
    kEbcdicMixed = -2,
    kAsciiMixed = -1,
    kUnknownPage = 0,
    kAsciiSingle = 1,
    kEbcdicSingle = 2,
    kUtf16Little = 3,
    kUtf8 = 4
};

inline bool zvkIsEbcdicPage(PageClass c) { return c == kEbcdicSingle || c == kEbcdicMixed; }
inline bool zvkIsUtf16Page(PageClass c) { return c == kUtf16Little || c == kUtf16Big; }
// The ASCII family, of which UTF-8 is one.
inline bool zvkIsAsciiPage(PageClass c) { return c == kAsciiSingle || c == kAsciiMixed || c == kUtf8; }

struct XmlPage {
    const XmlPage *next;
    char converter[64];    // ICU's name
    char declaredName[64]; // for the encoding declaration
    int32_t ccsid;         // below 0: it cannot be read; 0: there is none
    uint8_t maxCharSize;
    PageClass pageClass;
    bool asciiAsIs;            // the printable characters of ASCII are their own bytes
    uint16_t toUnicode[256];   // of a byte alone; kNoCharacter if it is none
    uint32_t fromUnicode[256]; // character << 8 | byte, sorted
    uint32_t fromUnicodeCount;
    PageTables tables;

    bool singleByte() const { return maxCharSize == 1; }
    // The byte of a character in a page of single bytes, -1 if the page has none.
    int byteOf(uint32_t character) const;
};

// Null if there is no such converter, or no storage. A name is at most 63 bytes.
const XmlPage *zvkXmlPage(const char *name);
const XmlPage *zvkXmlPageOfCcsid(uint32_t ccsid);
