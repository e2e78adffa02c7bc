// The zero test and the shared move of zoned items.
#include "decimal/zoned.h"

#include "decimal/words.h"

using namespace bcd;

int zvkBcdIsZeroZoned(const uint8_t *address, int32_t digits)
{
    if (digits < 1) return 1;
    const uint8_t *last = address + digits - 1;
    for (; last - address >= 8; address += 8)
        if (load<uint64_t>(address) & 0x0F0F0F0F0F0F0F0Fu) return 0;
    return skipZeroDigits(address, last) == last && overpunchDigit(*last) == 0;
}

void zvkBcdMoveZoned(const uint8_t *source, int32_t sourceDigits, uint8_t *destination, int32_t destinationDigits)
{
    if (destinationDigits < 1) return;
    size_t to = forms::ZndTO::bytes(destinationDigits);
    size_t from = forms::ZndTO::bytes(sourceDigits);
    Overpunch last = from ? kOverpunch[source[from - 1]] : kOverpunch[0];
    size_t kept = from < to ? from : to;
    memmove(destination + to - kept, source + from - kept, kept);
    memset(destination, '0', to - kept);
    destination[to - 1] = zonedDigit(last.digit, last.negative);
}
