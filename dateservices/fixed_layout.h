// Pictures whose every element has its place: "YYYY-MM-DD", "DD.MM.YYYY HH:MI:SS".
//
// Most pictures are numbers of a fixed width with a character between them. Where each number is in
// the text is then known from the picture alone, and a date is read or written without a walk: a
// loop over places. Pictures with names, eras, a half of the day, a Z or a year of two digits have
// no such layout, and a text that does not suit the layout is walked as if there were none, so that
// it gets the walk's own status.
#pragma once

#include <cstdint>

#include "dateservices/date_parts.h"

namespace dates {

struct FixedPart {
    uint8_t width;        // digits: 2, 3 or 4
    uint8_t at;           // in the text
    uint16_t least, most; // values that the scanner takes
    int32_t DateParts::*value;
};

struct FixedLayout {
    static constexpr size_t kMostParts = 8, kMostText = 32;
    uint8_t count = 0; // 0: the picture has no layout
    uint8_t length = 0;
    bool scannable = false; // it names a day, and does not begin with a literal
    bool alone = false;     // no two literals are neighbours, and none is the last
    FixedPart parts[kMostParts];
    char text[kMostText]; // the picture, with blanks after it: copied whole, at a length that is known
};

// The layout of a picture whose elements are known.
FixedLayout layoutOf(const Picture &picture);

// Reads a date; false where it does not suit the layout, and nothing is changed. The date has been
// cleared of blanks. Where literals are `alone` it need not be: a blank can then only be in the
// place of a literal, where it counts as any character does.
bool scanFixed(const FixedLayout &layout, const char *date, const char *dateEnd, DateParts &parts);

// Writes a date into blanks, FixedLayout::kMostText of them at least.
void writeFixed(const FixedLayout &layout, char *out, const DateParts &parts);

} // namespace dates
