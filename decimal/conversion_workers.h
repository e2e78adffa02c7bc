// Between packed and zoned digits: the workers under the conversion cells, also for other files of
// the room.
#pragma once

#include <cstdint>

// Digits right-aligned, cut or filled with "0" on the left; the last byte carries the sign as a
// trailing overpunch, but for a single zero digit.
void zvkBcdPackedToZoned(const uint8_t *source, int32_t sourceDigits, uint8_t *destination, int32_t destinationDigits);

// Digits right-aligned, cut or filled on the left; the sign from the last byte: zone 0x70 is minus,
// or, in the EBCDIC convention, by the table of sign bytes.
void zvkBcdZonedToPacked(const uint8_t *source, int32_t sourceDigits, uint8_t *destination, int32_t destinationDigits);

// Every byte becomes an ASCII digit.
void zvkBcdCleanZoned(uint8_t *field, int32_t length);
