// Whole reads and writes on descriptors.
#pragma once

#include <cstdint>

// Both keep on until all is done; reading also ends at the end of the file. -1 after a failure.
int64_t readWhole(int fd, uint8_t *bytes, uint64_t size);
int64_t readWholeAt(int fd, uint8_t *bytes, uint64_t size, uint64_t offset);
bool writeWholeAt(int fd, const uint8_t *bytes, uint64_t size, uint64_t offset);
