// Spill files: what does not fit the record buffer goes to a file of the temporary directory, named
// after process and thread.
#pragma once

#include <cstdint>

#include "frame/thread_record.h"

// sort_merge.cpp: RETURN could not get at the sorted records. SORT-RETURN 16, and message 26.
void zvkReportReturnFailure(ZvkThreadRecord *record, uint32_t error);

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

// Reads up to `size` bytes at `offset` of the file that `record->spillPath` names; fewer come at
// its end only. False if the file cannot be opened or read: what is missing is then not the end of
// the data. The file is opened once, so that a program that uses up its descriptors in between can
// still read it.
bool zvkReadSpill(ZvkThreadRecord *record, uint8_t *bytes, uint64_t size, uint64_t offset, uint64_t *count);

// Gives the file's space below `offset` back to the disk; its bytes are read and not needed again.
void zvkForgetSpillBelow(ZvkThreadRecord *record, uint64_t offset);

// Closes the file that RETURN reads. zvkDropSpill removes it, too.
void zvkCloseSpill(ZvkThreadRecord *record);
void zvkDropSpill(ZvkThreadRecord *record);
