// A phrase of INSPECT made ready to be scanned for, and the scan of a group of phrases.
//
// Everything that the statement says in flags, addresses and limits is resolved before the scan:
// signs are out of the operands, BEFORE and AFTER are a region of the item. Places are offsets in
// the item.
#pragma once

#include <cstddef>
#include <cstdint>

#include "kvr2/inspect.h"

// The longest operand whose sign has to be taken out of one of its digits, and so the room of a
// copy.
inline constexpr size_t kSignedCopy = 126;

struct InspectText {
    const uint8_t *data;
    size_t length;
};

struct PreparedPhrase {
    uint32_t kind;   // ZVK_INSPECT_TALLYING and its like
    bool figurative; // the result is one character
    InspectText result, compared;
    void *counter;
    int64_t first, end; // the region; a closed phrase has none: its end is below every place

    // Copies of operands that carry their sign in a digit.
    uint8_t resultCopy[kSignedCopy], comparedCopy[kSignedCopy];

    bool is(uint32_t kinds) const { return (kind & kinds) != 0; }
    void close() { end = -1; }
};

struct InspectedItem {
    uint8_t *data;
    int64_t length;
    bool changed;
};

// Scans the item for the phrases of a group, in statement order at each place; Unit is SingleByte
// or DoubleByte.
template <class Unit>
void zvkScanGroup(InspectedItem &item, PreparedPhrase *phrases, size_t count);
