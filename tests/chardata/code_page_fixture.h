// Runs a test under code pages of its own, whatever locales this machine has.
#pragma once

#include <string>

#include "kvr2/run_unit.h"

// A Proccom for the test if the library has made none, and the chosen code pages in it; the library
// forgets the pages it used before.
//
//     useCodePages(48, "ja_JP.eucJP", "TQX-1399");
void useCodePages(int32_t row, const std::string &localeName, const std::string &ebcdicCodePage);
