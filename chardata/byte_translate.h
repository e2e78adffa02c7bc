// Translating bytes through a table of 256 bytes.
#pragma once

#include <cstddef>
#include <cstdint>

// destination[i] = table[source[i]]; the two may be the same storage, but must not overlap
// otherwise.
void zvkTranslateBytes(const uint8_t *source, uint8_t *destination, size_t length, const uint8_t (&table)[256]);
