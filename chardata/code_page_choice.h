// Which code pages the run unit uses.
//
// The locale's name gives a row of the locale table and the native code set; the row, or the
// environment, gives the EBCDIC code page. The choice is in Proccom (`ccsid` the row,
// `localeName`, `ebcdicCodePage`) and is made once.
#pragma once

#include "chardata/locale_table.h"
#include "kvr2/run_unit.h"

struct CodePageChoice {
    int32_t row;
    char localeName[sizeof Proccom::localeName];
    char ebcdicCodePage[sizeof Proccom::ebcdicCodePage];
};

// The choice for a locale of that name, whose code set is `codeSet`, and the value of
// EBCDIC_CODEPAGE (null: unset). Issues message 230.
void zvkChooseCodePages(const char *locale, const char *codeSet, const char *ebcdicCodePage, CodePageChoice &choice);

// The choice that is in Proccom, made now if it is not made yet.
void zvkCurrentCodePages(CodePageChoice &choice);

// The row of the choice: for the DBCS blank, say.
const CodePageRow &zvkCurrentCodePageRow();
