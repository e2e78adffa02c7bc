// The message catalog: opening it under whatever locale it is installed for, and texts that are
// safe to format.
#pragma once

#include <cstddef>
#include <cstdint>

inline constexpr char kCatalogName[] = "kvr2run.cat";

// What the catalog's control record says, or the defaults without one.
struct MessageSettings {
    char prefix[3];          // before each number
    char severityLetters[4]; // for the severities 0 to 3
    char noSpaceText[80];    // where there is no buffer for a text
    bool singleByte;         // the locale's, when a catalog was opened; only then are lines wrapped
    char *buffer;            // the process's one text buffer, null if it could not be had or the catalog is closed
    size_t bufferSize;
};
extern MessageSettings messageSettings;

void zvkOpenCatalog();
void zvkCloseCatalog();
bool zvkCatalogIsOpen();

// The text of a message with its severity digit, or null. Texts whose conversions do not fit the
// inserts that the number is raised with are as good as missing: a translated catalog must not be
// able to crash a program.
const char *zvkCatalogText(uint32_t number, uint32_t variant);

// Whether a format asks for no other inserts than `inserts` tells: s a string, d 32 bits, l 64
// bits, p an address. Null stands for a number that the library does not know, one of a site's own:
// its inserts are between the catalog and its caller, and only %n and what is no conversion are
// refused.
bool zvkTextFits(const char *format, const char *inserts);
