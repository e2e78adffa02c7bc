// The header of a file of the default file system: its first 4096 bytes.
//
// "STL" at bytes 8 to 10 lets the library find the module of a file whose assignment names none.
// The rest are the attributes that the file was created with, so that an OPEN with others gets
// status 39 and not garbage, and a checksum over them. Records begin after the header; those of an
// indexed file are in the store beside it, which bears the same `identity`.
#pragma once

#include <cstring>

#include "companions/filesystems/secondary_status.h"

namespace filesystems {

constexpr uint32_t kMostKeys = 255;
constexpr uint64_t kStoredHeaderSize = 4096;
constexpr uint32_t kLongestKey = 500; // LMDB's 511 less the number that keeps duplicates apart

// A key of several parts (a split key) is compared as if they lay side by side. The parts after the
// first, of all keys, are in one table: `FileKey.reserved` has their number and the first one's.
constexpr uint32_t kMostKeyParts = 120;
struct KeyPart {
    uint32_t position, length;
};

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
    KeyPart parts[kMostKeyParts];
    uint8_t rest[kStoredHeaderSize - 48 - sizeof(FileKey) * kMostKeys - sizeof(KeyPart) * kMostKeyParts];
};
static_assert(sizeof(StoredHeader) == kStoredHeaderSize);

inline bool isSplit(const FileKey &key) { return key.reserved[0]; }

// Part n of a key, from 0.
inline KeyPart partOf(const FileKey &key, const KeyPart *parts, uint32_t n)
{
    const KeyPart *more = parts + key.reserved[1];
    if (n) return more[n - 1];
    KeyPart first = {key.position, key.length};
    for (uint32_t i = 0; i < key.reserved[0]; ++i) first.length -= more[i].length;
    return first;
}

// The bytes of a key in a record: they are there in one piece, or are put together in `room`.
inline const uint8_t *bytesOfKey(const FileKey &key, const KeyPart *parts, const uint8_t *record, uint8_t *room)
{
    if (__builtin_expect(!isSplit(key), 1)) return record + key.position;
    size_t size = 0;
    for (uint32_t n = 0; n <= key.reserved[0]; ++n) {
        KeyPart part = partOf(key, parts, n);
        memcpy(room + size, record + part.position, part.length);
        size += part.length;
    }
    return room;
}

// A record must be so long to have the key.
inline uint64_t endOfKey(const FileKey &key, const KeyPart *parts)
{
    uint64_t end = 0;
    for (uint32_t n = 0; n <= key.reserved[0]; ++n) {
        KeyPart part = partOf(key, parts, n);
        if (uint64_t(part.position) + part.length > end) end = uint64_t(part.position) + part.length;
    }
    return end;
}

// Does each part have bytes, and are they in the record?
bool keyMakesSense(const FileKey &key, const KeyPart *parts, uint32_t longest);
// All keys of a header that was read, their number and their lengths.
bool keysMakeSense(const StoredHeader &header);

uint64_t checksumOf(StoredHeader header);
// Do its first bytes say that it is one?
bool hasMark(const StoredHeader &header);

// The header that a file of these attributes has, identity and checksum apart. Parts of keys that
// are more than there is room for make a key that makes no sense.
void describeFile(const FIB *fib, StoredHeader *header);

// Writes a new file's header; false with the status set.
bool writeHeader(FCB *fcb, int descriptor, StoredHeader *header);

// Reads the header and compares it with the program's attributes: 30 for a damaged one, 39 for a
// foreign file or other attributes. A program that knows nothing of parts describes a key of
// several by the length of them all and the place of the first.
bool readHeader(FCB *fcb, int descriptor, const StoredHeader &expected, StoredHeader *header);

} // namespace filesystems
