// The files that a message catalog may be: candidates by NLSPATH, and whether one is safe to open.
#pragma once

#include <cstddef>

// The path of an entry of NLSPATH, from `entry` to `end`, for a locale: %N is the catalog's name,
// %L the locale, %l, %t and %c its language, territory and code set. False for a path that is too
// long.
bool zvkCatalogCandidate(const char *entry, const char *end, const char *locale, char *path, size_t size);

// Whether a file is a compiled catalog that holds the tables that its head tells of, and all texts
// that these point to. The system's catopen reads the tables before it looks at the file's size and
// follows an offset a good way beyond its end, so a damaged catalog would take the process down.
bool zvkCatalogIsWhole(const char *path);
