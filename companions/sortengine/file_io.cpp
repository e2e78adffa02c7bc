// Whole reads and writes; see file_io.h.
#include "file_io.h"

#include <cerrno>
#include <unistd.h>

template <class Read>
static int64_t readOn(uint64_t size, Read readPiece)
{
    uint64_t have = 0;
    while (have < size) {
        ssize_t count = readPiece(have);
        if (count < 0 && errno == EINTR) continue;
        if (count < 0) return -1;
        if (count == 0) break;
        have += static_cast<uint64_t>(count);
    }
    return static_cast<int64_t>(have);
}

int64_t readWhole(int fd, uint8_t *bytes, uint64_t size)
{
    return readOn(size, [=](uint64_t have) { return read(fd, bytes + have, size - have); });
}

int64_t readWholeAt(int fd, uint8_t *bytes, uint64_t size, uint64_t offset)
{
    return readOn(
        size, [=](uint64_t have) { return pread(fd, bytes + have, size - have, static_cast<off_t>(offset + have)); });
}

bool writeWholeAt(int fd, const uint8_t *bytes, uint64_t size, uint64_t offset)
{
    while (size) {
        ssize_t count = pwrite(fd, bytes, size, static_cast<off_t>(offset));
        if (count < 0 && errno == EINTR) continue;
        if (count <= 0) return false;
        bytes += count;
        offset += static_cast<uint64_t>(count);
        size -= static_cast<uint64_t>(count);
    }
    return true;
}
