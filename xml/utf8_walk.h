// One walk over a document as UTF-8, ahead of the scan.
//
// It tells the three sorts of ASCII-family documents apart, and where the scan of a UTF-8 document
// has to stop. So the scan itself need not check sequences of bytes again.
#pragma once

#include <cstdint>

struct Utf8Walk {
    bool ascii;                 // bytes below 0x80 only
    const uint8_t *invalid;     // the first byte that belongs to no character; the end if all do
    bool truncated;             // what begins there is a character that the end cuts off
    const uint8_t *secondPlane; // the first character above U+FFFF before that; `invalid` if there is none
};

Utf8Walk zvkWalkUtf8(const uint8_t *text, const uint8_t *end);
