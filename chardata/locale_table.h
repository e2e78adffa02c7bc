// The locale table: which code pages belong to a language and territory.
//
// The only table of the library that is keyed by country. A row gives the EBCDIC code pages with
// and without the euro sign and the pair of bytes that is a blank in double-byte data; the other
// columns are kept for catalogues of code pages and are not read here.
//
//     const CodePageRow &row = kCodePageRows[_zvkProccom->ccsid];      // after _zvkcSetCodePages
#pragma once

#include <cstddef>
#include <cstdint>

struct CodePageRow {
    char key[6];           // language and territory in upper case, "EN_US"
    uint8_t dbcsBlank[2];  // the blank of double-byte data in the locale's own code page
    char ebcdicBase[15];   // EBCDIC code page without euro; may be empty
    char ebcdicEuro[15];   // EBCDIC code page with euro: the row's default
    char pcFirst[15];      // the columns from here on are data for catalogues only
    char pcSecond[15];     //
    char windows[15];      //
    char windowsOther[15]; //
    char isoFirst[15];     //
    char isoSecond[15];    //
};
static_assert(sizeof(CodePageRow) == 128);
static_assert(offsetof(CodePageRow, dbcsBlank) == 6);
static_assert(offsetof(CodePageRow, ebcdicBase) == 8);
static_assert(offsetof(CodePageRow, ebcdicEuro) == 23);
static_assert(offsetof(CodePageRow, pcFirst) == 38);
static_assert(offsetof(CodePageRow, windows) == 68);
static_assert(offsetof(CodePageRow, isoFirst) == 98);
static_assert(offsetof(CodePageRow, isoSecond) == 113);

inline constexpr int kCodePageRowCount = 53;
inline constexpr int kDefaultCodePageRow = 8; // EN_US, for locales that have no row

extern const CodePageRow kCodePageRows[kCodePageRowCount];
