// Hexadecimal floating point: sign, exponent in excess 64 over base 16, 24 bits of fraction without a
// hidden bit. 1.0 is 0x41100000: a sixteenth times 16 to the power of 1.
//
// For callers that report errors themselves: 0, or the number of the message that tells the fault, and
// then nothing is stored.
#pragma once

#include <cstdint>

uint32_t zvkHexToIeee(uint32_t hex, uint32_t *ieee);
uint32_t zvkIeeeToHex(uint32_t ieee, uint32_t *hex);
