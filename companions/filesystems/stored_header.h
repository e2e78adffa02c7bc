// The header of a file of the default file system: its first 4096 bytes.
//
// "STL" at bytes 8 to 10 lets the library find the module of a file whose assignment names none.
// The rest are the attributes that the file was created with, so that an OPEN with others gets
// status 39 and not garbage, and a checksum over them. Records begin after the header; those of an
// indexed file are in the store beside it, which bears the same `identity`.
#pragma once

#include "companions/filesystems/secondary_status.h"

namespace filesystems {

constexpr uint32_t kMostKeys = 255;
constexpr uint64_t kStoredHeaderSize = 4096;

struct StoredHeader {
    char magic[8];
    char mark[3];    // "STL"
    uint8_t version; // 1: records without checksums (record_sum.h); 2
    uint8_t organization;
    uint8_t variable;
    uint8_t reserved[2];
    uint32_t longest;
    uint32_t shortest;
    uint32_t keyCount;
    uint32_t reserved28;
    uint64_t identity;
    uint64_t checksum; // of the header with this word 0
    FileKey keys[kMostKeys];
    uint8_t rest[kStoredHeaderSize - 48 - sizeof(FileKey) * kMostKeys];
};
static_assert(sizeof(StoredHeader) == kStoredHeaderSize);

uint64_t checksumOf(StoredHeader header);
// Do its first bytes say that it is one?
bool hasMark(const StoredHeader &header);

// The header that a file of these attributes has, identity and checksum apart.
void describeFile(const FIB *fib, StoredHeader *header);

// Writes a new file's header; false with the status set.
bool writeHeader(FCB *fcb, int descriptor, StoredHeader *header);

// Reads the header and compares it with the program's attributes: 30 for a damaged one, 39 for a
// foreign file or other attributes.
bool readHeader(FCB *fcb, int descriptor, const StoredHeader &expected, StoredHeader *header);

} // namespace filesystems
