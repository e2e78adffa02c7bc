// Where compiled code called the library, for messages about its data.
#pragma once

#include <cstddef>

// Puts "program LEDGER, line ledger.cob:120" into `text`, for the innermost call that came from
// outside the library; what is not known is left out. The program is the one that registered from
// the object that called; the line is looked up only where `traceback_lines` asks for lines, since
// that starts another process. Returns false, with an empty text, where nothing is known.
bool zvkDescribeCallSite(char *text, size_t size);
