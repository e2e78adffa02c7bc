// Moves that fill: a literal repeated over an item, and a move whose lengths are known only at run
// time.
#include <cstring>

#include "base/signed_length.h"
#include "kvr2/edited_moves.h"

extern "C" {

void _zvkcMoveFigConst(uint8_t *destination, int32_t length, const uint8_t *literal, int32_t literalLength)
{
    if (literalLength <= 0) return;
    SignedLength item(length); // negative: right-justified
    size_t piece = static_cast<size_t>(literalLength), rest = item.size % piece;
    uint8_t *whole = destination;
    if (item.negative) {
        memcpy(destination, literal + piece - rest, rest);
        whole += rest;
    } else {
        memcpy(destination + item.size - rest, literal, rest);
    }
    if (piece == 1) {
        memset(whole, *literal, item.size);
        return;
    }
    for (size_t copies = item.size / piece; copies > 0; copies--, whole += piece) memcpy(whole, literal, piece);
}

void _zvkcMoveVarLenOverlap(uint8_t *destination, int32_t length, const uint8_t *source, int32_t sourceLength)
{
    SignedLength to(length), from(sourceLength); // negative: right-justified; pad with 0x40
    if (to.size <= from.size) {
        memmove(destination, to.negative ? source + from.size - to.size : source, to.size);
        return;
    }
    size_t padding = to.size - from.size;
    // The source is moved first: the padding may cover it.
    memmove(to.negative ? destination + padding : destination, source, from.size);
    memset(to.negative ? destination : destination + from.size, from.negative ? 0x40 : 0x20, padding);
}
}
