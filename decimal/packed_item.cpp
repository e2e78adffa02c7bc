// The zero test and the shared move of packed items.
#include "decimal/packed.h"

using namespace bcd;

int zvkBcdIsZeroPacked(const uint8_t *address, int32_t digits)
{
    size_t bytes = packedBytes(digits);
    if (bytes <= kMostBytes) return loadItem(address, bytes) >> 4 == 0;
    const uint8_t *last = address + bytes - 1;
    for (; last - address >= 8; address += 8)
        if (load<uint64_t>(address) != 0) return 0;
    return skipZeroBytes(address, last) == last && (*last & 0xF0) == 0;
}

void zvkBcdMovePacked(const uint8_t *source, int32_t sourceDigits, uint8_t *destination, int32_t destinationDigits)
{
    size_t from = packedBytes(sourceDigits);
    size_t to = packedBytes(destinationDigits);
    if (from <= kMostBytes && to <= kMostBytes) {
        u128 value = loadItem(source, from);
        auto sign = signNibble(isNegativeNibble(static_cast<uint8_t>(value)));
        storeItem(destination, to, (value & ~u128{0x0F}) | sign);
    } else {
        bool negative = isNegativeNibble(source[from - 1]);
        size_t kept = from < to ? from : to;
        memmove(destination + to - kept, source + from - kept, kept);
        memset(destination, 0, to - kept);
        setPackedSign(destination, destinationDigits, negative);
    }
    clearUnusedNibble(destination, destinationDigits);
}
