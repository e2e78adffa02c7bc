// MOVE to an alphanumeric-edited item.
//
//     picture "XX/XX0X"   source "ABCDE"            ->   "AB/CD0E"
//                         source "ABC"              ->   "AB/C 0 "     insertions show though the source has run out
//                         source "ABC", repeated    ->   "AB/CA0B"
#include "kvr2/edited_moves.h"

extern "C" void _zvkcMoveAlphaNumEdit(const AlphaEditRecord *record, const uint8_t *source, int32_t sourceLength,
                                      uint8_t *destination)
{
    const uint8_t *picture = record->picture, *next = source, *end = source + (sourceLength > 0 ? sourceLength : 0);
    for (int position = 0; position < record->length; position++) {
        uint8_t symbol = *picture++;
        if (symbol == '/' || symbol == '0' || symbol == ' ') {
            *destination++ = symbol;
        } else if (symbol == 0x81 && *picture == 0x40) { // the DBCS blank of a mixed picture: two bytes, one position
            *destination++ = symbol;
            *destination++ = *picture++;
        } else {
            if (next == end && record->repeat) next = source;
            *destination++ = next == end ? uint8_t{' '} : *next++;
        }
    }
}
