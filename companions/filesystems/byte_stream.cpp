#include "companions/filesystems/byte_stream.h"

#include <cerrno>
#include <cstring>
#include <sys/xattr.h>
#include <unistd.h>

#include "companions/filesystems/size_limit.h"
#include "companions/filesystems/whole_records.h"

namespace filesystems {

namespace {

// The block that went out last. A file system without extended attributes does without.
constexpr char kBlockEndAttribute[] = "user.kvr2.block-end";
constexpr size_t kStep = 256, kSteps = 16;

struct BlockMark {
    uint64_t end, begin;   // offsets in the file
    uint32_t sums[kSteps]; // of the block's first 256 bytes, its first 512, ...
    uint8_t firstBytes[32];
};

// Fills the mark from the block, or from as much of it as there is; returns how many sums there
// are.
size_t describeBlock(const uint8_t *block, uint64_t size, BlockMark *mark)
{
    uint32_t sum = 2166136261u;
    size_t n = 0;
    for (; n < kSteps && size >= (n + 1) * kStep; ++n) {
        for (size_t i = n * kStep; i < (n + 1) * kStep; ++i) sum = (sum ^ block[i]) * 16777619u;
        mark->sums[n] = sum;
    }
    memcpy(mark->firstBytes, block, size < sizeof mark->firstBytes ? size : sizeof mark->firstBytes);
    return n;
}

} // namespace

int findCutOff(int descriptor, uint64_t size, bool *cutOff)
{
    BlockMark mark, found = {};
    *cutOff = false;
    ssize_t known = fgetxattr(descriptor, kBlockEndAttribute, &mark, sizeof mark);
    if (known < 0 && errno != ENODATA && errno != ENOTSUP && errno != ERANGE) return errno;
    if (known != sizeof mark || size >= mark.end || size <= mark.begin) return 0;

    uint8_t content[kStep * kSteps];
    size_t wanted = size - mark.begin < sizeof content ? static_cast<size_t>(size - mark.begin) : sizeof content;
    if (int error = readAll(descriptor, content, wanted, mark.begin, &wanted)) return error;
    size_t sums = describeBlock(content, wanted, &found);
    size_t first = wanted < sizeof mark.firstBytes ? wanted : sizeof mark.firstBytes;
    *cutOff = memcmp(found.firstBytes, mark.firstBytes, first) == 0 &&
              memcmp(found.sums, mark.sums, sums * sizeof *mark.sums) == 0;
    return 0;
}

int writeAll(int descriptor, bool seekable, const void *data, size_t size, uint64_t offset)
{
    SizeLimitHeldOff guard;
    const uint8_t *next = static_cast<const uint8_t *>(data);
    while (size) {
        ssize_t written =
            seekable ? pwrite(descriptor, next, size, static_cast<off_t>(offset)) : write(descriptor, next, size);
        if (written < 0) {
            if (errno == EINTR) continue;
            return errno;
        }
        if (written == 0) return ENOSPC;
        next += written;
        size -= static_cast<size_t>(written);
        offset += static_cast<uint64_t>(written);
    }
    return 0;
}

int readAll(int descriptor, void *data, size_t size, uint64_t offset, size_t *got)
{
    uint8_t *to = static_cast<uint8_t *>(data);
    *got = 0;
    while (*got < size) {
        ssize_t read = pread(descriptor, to + *got, size - *got, static_cast<off_t>(offset + *got));
        if (read < 0 && errno == EINTR) continue;
        if (read < 0) return errno;
        if (read == 0) break;
        *got += static_cast<size_t>(read);
    }
    return 0;
}

bool ByteStream::refill(size_t wanted)
{
    if (at) {
        memmove(buffer, buffer + at, filled - at);
        base += at;
        filled -= at;
        at = 0;
    }
    if (whole && seekable) {
        // Each record comes in one read: what came of it before may be of another time.
        if (whole->locksReads) filled = 0;
        size_t got;
        error = fetchBytes(whole, buffer + filled, capacity - filled, base + filled, &got);
        filled += got;
        atEnd = filled < capacity;
        return !error && filled >= wanted;
    }
    while (filled < wanted && !atEnd) {
        ssize_t got = seekable
                          ? pread(descriptor, buffer + filled, capacity - filled, static_cast<off_t>(base + filled))
                          : read(descriptor, buffer + filled, capacity - filled);
        if (got < 0) {
            if (errno == EINTR) continue;
            error = errno;
            return false;
        }
        if (got == 0) atEnd = true;
        filled += static_cast<size_t>(got);
    }
    return filled >= wanted;
}

void ByteStream::seek(uint64_t offset)
{
    base = offset;
    at = filled = 0;
    atEnd = false;
}

bool ByteStream::flush()
{
    if (at == 0) return true;
    if (announces && seekable) {
        BlockMark mark = {base + at, base, {}, {}};
        describeBlock(buffer, at, &mark);
        announced = fsetxattr(descriptor, kBlockEndAttribute, &mark, sizeof mark, 0) == 0;
    }
    error = writeAll(descriptor, seekable, buffer, at, base);
    if (error) {
        // What went out of this block may end in half a record: none of it stays, and the block is
        // tried again by the next flush.
        if (seekable && ftruncate(descriptor, static_cast<off_t>(base)) != 0) error = errno;
        withdraw();
        return false;
    }
    base += at;
    at = 0;
    return true;
}

void ByteStream::withdraw()
{
    if (announced) fremovexattr(descriptor, kBlockEndAttribute);
    announced = false;
}

} // namespace filesystems
