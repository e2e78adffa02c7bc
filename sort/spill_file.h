// Spill files: what does not fit the record buffer goes to a file of the temporary directory, named
// after process and thread.
#pragma once

#include <cstdint>

#include "frame/thread_record.h"

constexpr uint64_t kSortBufferBytes = 0x40000;
constexpr uint64_t kSpillPathBytes = 1024;

// "sortwki." for released records, "sortwko." for the engine's result.
enum class Spill { Input, Output };

// Puts the file's name into `record->spillPath`; false, with an empty name, if it does not fit.
bool zvkNameSpillFile(ZvkThreadRecord *record, Spill kind);

// Appends to the file of that name, making it if need be, and sees it to the disk. Refused: the
// file is as it was before.
enum class Append { Done, Refused, Damaged };
Append zvkAppendSpill(const char *path, const uint8_t *bytes, uint64_t size);

// Reads up to `size` bytes at `offset`; fewer at the end of the file, none if it cannot be read.
uint64_t zvkReadSpill(const char *path, uint8_t *bytes, uint64_t size, uint64_t offset);
