// From a file's assignment to the name and the file system of what is to be opened.
#pragma once

#include "kvr2/fileio.h"

// The length of the file-system prefix that a name begins with, before its "-"; 0 if it has none.
size_t zvkPrefixLength(const char *name);

// Settles name, prefix and code at the first open of a file or the open of a new name; the status
// and FS2 say what is wrong.
void zvkResolveName(FCB *fcb, const FIB *fib);

// The same for a further file of a concatenation, or a failed OPEN of one that is tried again: the
// name is in place already.
void zvkResolveVolume(FCB *fcb, const FIB *fib);

// Code 12: lets the file decide; and the particulars of names for codes 1 and 2.
void zvkChooseByFile(FCB *fcb);
void zvkAdaptName(FCB *fcb);

// In FCB.state, from the resolution of a name to the end of OPEN: it entered a new generation into
// its group's catalogue.
constexpr uint32_t kGenerationMade = 0x00080000;

// Sets code and canonical prefix.
void zvkSetFileSystem(FCB *fcb, uint8_t code);
