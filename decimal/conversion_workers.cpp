// Between packed and zoned digits; see conversion_workers.h.
//
// Both ways work from the right, eight digits at a time: four packed bytes are spread to eight
// zoned ones, or gathered from them, by shifts and masks (words.h).
#include "decimal/conversion_workers.h"

#include <algorithm>
#include <cstring>

#include "decimal/mode.h"
#include "decimal/packed.h"
#include "decimal/words.h"
#include "decimal/zoned.h"

using namespace bcd;

void zvkBcdPackedToZoned(const uint8_t *source, int32_t sourceDigits, uint8_t *destination, int32_t destinationDigits)
{
    if (destinationDigits < 1) return;
    const uint8_t *last = source + packedBytes(sourceDigits) - 1;
    const uint8_t *first = skipZeroBytes(source, last);
    int32_t count = significantDigits(first, last);
    if (count < destinationDigits)
        memset(destination, '0', static_cast<size_t>(destinationDigits - count));
    else
        count = destinationDigits;

    auto digit = static_cast<uint8_t>(*last >> 4);
    bool singleZero = count == 1 && digit == 0 && first == last;
    uint8_t *to = destination + destinationDigits - 1;
    *to-- = zonedDigit(digit, isNegativeNibble(*last) && !singleZero);
    const uint8_t *from = last - 1;
    int32_t left = count - 1;
    for (; left >= 8; left -= 8, from -= 4, to -= 8)
        storeBig<uint64_t>(to - 7, spread(loadBig<uint32_t>(from - 3)) | all<uint64_t>(kZonePlus));
    for (; left >= 2; left -= 2, from--) {
        *to-- = zonedDigit(*from);
        *to-- = zonedDigit(static_cast<uint8_t>(*from >> 4));
    }
    if (left) *to = zonedDigit(*from);
}

void zvkBcdZonedToPacked(const uint8_t *source, int32_t sourceDigits, uint8_t *destination, int32_t destinationDigits)
{
    const size_t bytes = packedBytes(destinationDigits);
    if (sourceDigits < 1 || destinationDigits < 1) {
        memset(destination, 0, bytes);
        destination[bytes - 1] = kPlus;
        return;
    }
    const bool ebcdic = mode() & ZVK_BCD_EBCDIC;
    const uint8_t *last = source + sourceDigits - 1;
    const uint8_t *first = skipZeroDigits(source, last);
    auto count = static_cast<int32_t>(last - first) + 1;
    if (destinationDigits > count) memset(destination, 0, (static_cast<size_t>(destinationDigits - count) >> 1) + 1);
    count = std::min(count, destinationDigits);

    uint8_t *to = destination + bytes - 1;
    if (ebcdic)
        *to-- = static_cast<uint8_t>(overpunchDigit(*last) << 4 | signNibble(overpunchIsNegative(*last)));
    else // other forms of the sign are not decoded here: the low nibble is the digit
        *to-- = static_cast<uint8_t>(*last << 4 | signNibble((*last & 0xF0) == kZoneMinus));
    const uint8_t *from = last - 1;
    int32_t left = count - 1;
    for (; left > 10; left -= 8, from -= 8, to -= 4) storeBig<uint32_t>(to - 3, gather(loadBig<uint64_t>(from - 7)));
    // The high digit of a pair is decoded, so that an overpunched first byte reads correctly.
    for (; left >= 2; left -= 2, from -= 2)
        *to-- = static_cast<uint8_t>(overpunchDigit(from[-1]) << 4 | (from[0] & 0x0F));
    if (left) *to = ebcdic ? overpunchDigit(*from) : *from & 0x0F;
    clearUnusedNibble(destination, destinationDigits);
}

void zvkBcdCleanZoned(uint8_t *field, int32_t length)
{
    for (int32_t i = 0; i < length; i++) field[i] = zonedDigit(field[i]);
}
