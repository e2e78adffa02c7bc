#include "companions/filesystems/stored_header.h"

#include <cerrno>
#include <cstring>
#include <unistd.h>

#include "companions/filesystems/byte_stream.h"

namespace filesystems {

namespace {

const char kMagic[8] = {'K', 'V', 'R', '2', 'F', 'I', 'L', 'E'};

} // namespace

uint64_t checksumOf(StoredHeader header)
{
    const uint8_t *bytes = reinterpret_cast<const uint8_t *>(&header);
    uint64_t sum = 0xcbf29ce484222325u;
    header.checksum = 0;
    for (size_t i = 0; i < sizeof header; ++i) sum = (sum ^ bytes[i]) * 0x100000001b3u;
    return sum;
}

bool hasMark(const StoredHeader &header)
{
    return memcmp(header.mark, "STL", 3) == 0 && memcmp(header.magic, kMagic, sizeof kMagic) == 0;
}

void describeFile(const FIB *fib, StoredHeader *header)
{
    memset(header, 0, sizeof *header);
    memcpy(header->magic, kMagic, sizeof kMagic);
    memcpy(header->mark, "STL", 3);
    header->version = 2;
    header->organization = fib->organization;
    header->variable = fib->minRecord != fib->maxRecord;
    header->longest = fib->maxRecord;
    header->shortest = fib->minRecord;
    if (!(fib->organization & ZVK_FILE_INDEXED)) return;
    const uint8_t *keys = reinterpret_cast<const uint8_t *>(fib) + fib->keysOffset;
    uint32_t known = 0; // parts
    header->keyCount = fib->keyCount;
    for (uint32_t i = 0; i < fib->keyCount && i < kMostKeys; ++i) {
        FileKey key, part;
        memcpy(&key, keys + i * sizeof key, sizeof key);
        header->keys[i].length = key.length;
        header->keys[i].position = key.position;
        header->keys[i].flags = key.flags & ZVK_FILE_KEY_DUPLICATES;
        if (!(key.flags & ZVK_FILE_KEY_PARTS) || !key.reserved[0]) continue;
        if (key.reserved[0] > kMostKeyParts - known) {
            header->keys[i].length = 0;
            continue;
        }
        header->keys[i].reserved[0] = key.reserved[0];
        header->keys[i].reserved[1] = static_cast<uint8_t>(known);
        for (uint32_t n = 0; n < key.reserved[0]; ++n, ++known) {
            memcpy(&part, keys + (fib->keyCount + known) * sizeof part, sizeof part);
            header->parts[known] = {part.position, part.length};
        }
    }
}

bool keyMakesSense(const FileKey &key, const KeyPart *parts, uint32_t longest)
{
    uint64_t more = 0;
    if (uint32_t(key.reserved[0]) + key.reserved[1] > kMostKeyParts) return false;
    for (uint32_t n = 0; n < key.reserved[0]; ++n) {
        if (!parts[key.reserved[1] + n].length) return false;
        more += parts[key.reserved[1] + n].length;
    }
    return key.length > more && endOfKey(key, parts) <= longest;
}

bool keysMakeSense(const StoredHeader &header)
{
    if (header.keyCount > kMostKeys) return false;
    for (uint32_t i = 0; i < header.keyCount; ++i)
        if (header.keys[i].length > kLongestKey || !keyMakesSense(header.keys[i], header.parts, header.longest))
            return false;
    return true;
}

// Are the keys those that the program describes?
static bool sameKeys(const StoredHeader &wanted, const StoredHeader &there)
{
    for (uint32_t i = 0; i < wanted.keyCount; ++i) {
        const FileKey &one = wanted.keys[i], &other = there.keys[i];
        if (one.length != other.length || one.position != other.position || one.flags != other.flags) return false;
        if (!isSplit(one)) continue;
        if (one.reserved[0] != other.reserved[0]) return false;
        if (memcmp(wanted.parts + one.reserved[1], there.parts + other.reserved[1],
                   one.reserved[0] * sizeof(KeyPart)) != 0)
            return false;
    }
    return true;
}

bool writeHeader(FCB *fcb, int descriptor, StoredHeader *header)
{
    header->checksum = checksumOf(*header);
    int error = writeAll(descriptor, true, header, sizeof *header, 0);
    if (!error) return true;
    if (ftruncate(descriptor, 0) != 0) error = errno;
    return failWithErrno(fcb, error);
}

bool readHeader(FCB *fcb, int descriptor, const StoredHeader &expected, StoredHeader *header)
{
    size_t got;
    if (int error = readAll(descriptor, header, sizeof *header, 0, &got)) return failWithErrno(fcb, error);
    if (got < 11 || !hasMark(*header)) return fail(fcb, 39, fs2Header);
    if (got != sizeof *header || header->checksum != checksumOf(*header)) return fail(fcb, 30, fs2Header);
    if (!keysMakeSense(*header)) return fail(fcb, 30, fs2Header);
    StoredHeader wanted = expected;
    if (header->keyCount == wanted.keyCount && sameKeys(wanted, *header)) {
        memcpy(wanted.keys, header->keys, sizeof wanted.keys);
        memcpy(wanted.parts, header->parts, sizeof wanted.parts);
    }
    wanted.identity = header->identity;
    wanted.checksum = header->checksum;
    if (header->version == 1) wanted.version = 1; // without checksums of the records
    if (memcmp(&wanted, header, sizeof wanted) != 0) return fail(fcb, 39, fs2Attributes);
    return true;
}

} // namespace filesystems
