// How every room reports an error: a number, a control word, and the inserts that the number's text
// takes.
//
// The severity in the catalog decides what happens then: 0 and 1 return to the caller, 2 and 3 end
// the run unit. Callers must be written for both, since a site can change the catalog and string
// mode always returns.
#pragma once

#include <cstdint>

#include "kvr2/messages.h"

// The control word's low 8 bits choose the variant of the text; these bits may be added.
enum : uint32_t {
    ZVK_MSG_OPEN_CATALOG = 0x100,  // exactly this: open the catalog
    ZVK_MSG_CLOSE_CATALOG = 0x101, // exactly this: close it
    ZVK_MSG_NO_TRACEBACK = 0x0400,
    ZVK_MSG_SEVERE = 0x0800,   // severity forced to 2
    ZVK_MSG_INFORM = 0x1000,   // severity forced to 0, no ending
    ZVK_MSG_TO_STRING = 0x2000 // the first two inserts are a result buffer and its size; nothing is written
};

uint32_t zvkWriteMsg(uint32_t number, uint32_t control, ...);

// Whether the catalog has a text for a number's variant that fits the library's inserts. Where a
// variant only says more than the set's first text, callers fall back on that: a site's own catalog
// may lack it.
bool zvkHasMessage(uint32_t number, uint32_t variant);

// The general answer to a failed allocation.
inline void zvkNoStorage() { zvkWriteMsg(907, 0); }
