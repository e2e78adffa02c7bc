// The files that a message catalog may be; see catalog_file.h.
#include "frame/messages/catalog_file.h"

#include <cstdint>
#include <cstring>
#include <fcntl.h>
#include <sys/mman.h>
#include <sys/stat.h>
#include <unistd.h>

#include "base/bytes.h"
#include "frame/messages/message_catalog.h"

namespace {

// A part of "language_territory.codeset@modifier".
struct Part {
    const char *text;
    size_t length;
};

Part partOf(const char *locale, char what)
{
    size_t language = strcspn(locale, "_.@");
    if (what == 'L') return {locale, strlen(locale)};
    if (what == 'l') return {locale, language};
    const char *at = strchr(locale, what == 't' ? '_' : '.');
    return at ? Part{at + 1, strcspn(at + 1, ".@")} : Part{"", 0};
}

// A compiled catalog is, in words of 32 bits, a magic number, the size and the depth of its tables;
// the table, size times depth entries of set, message and offset of the text; the same table in the
// other byte order; then the texts, each with a zero byte after it.
constexpr size_t kHeadSize = 12;
constexpr size_t kEntrySize = 12;

uint32_t wordAt(const uint8_t *bytes, size_t at) { return load<uint32_t>(bytes + at); }

bool holdsItsTexts(const uint8_t *bytes, size_t size)
{
    constexpr uint32_t magic = 0x960408de;
    bool swapped = wordAt(bytes, 0) == reversed(magic);
    if (!swapped && wordAt(bytes, 0) != magic) return false;
    uint32_t width = wordAt(bytes, 4), depth = wordAt(bytes, 8);
    if (swapped) {
        width = reversed(width);
        depth = reversed(depth);
    }
    const uint64_t entries = uint64_t{width} * depth;
    if (entries == 0 || entries > (size - kHeadSize) / (2 * kEntrySize)) return false;
    const size_t tableSize = static_cast<size_t>(entries) * kEntrySize;
    const size_t texts = kHeadSize + 2 * tableSize;
    // A text that begins before the file's last zero byte, or on it, ends in the file.
    size_t end = size;
    while (end > texts && bytes[end - 1] != 0) end--;
    // The table of this machine's byte order is the one that is used: the second one where the head
    // is swapped.
    const size_t table = kHeadSize + (swapped ? tableSize : 0);
    for (size_t entry = table; entry < table + tableSize; entry += kEntrySize)
        if (wordAt(bytes, entry + 8) >= end - texts) return false;
    return true;
}

} // namespace

bool zvkCatalogCandidate(const char *entry, const char *end, const char *locale, char *path, size_t size)
{
    size_t length = 0;
    auto add = [&](Part part) {
        if (length + part.length >= size) return false;
        memcpy(path + length, part.text, part.length);
        length += part.length;
        return true;
    };
    for (const char *at = entry; at < end; at++) {
        Part part{at, 1};
        if (*at == '%' && at + 1 < end) {
            char what = *++at;
            part = what == 'N'   ? Part{kCatalogName, strlen(kCatalogName)}
                   : what == '%' ? Part{"%", 1}
                                 : partOf(locale, what);
        }
        if (!add(part)) return false;
    }
    path[length] = 0;
    return length > 0;
}

bool zvkCatalogIsWhole(const char *path)
{
    int descriptor = open(path, O_RDONLY | O_CLOEXEC | O_NONBLOCK);
    if (descriptor < 0) return false;
    bool whole = false;
    struct stat status;
    if (fstat(descriptor, &status) == 0 && S_ISREG(status.st_mode) && status.st_size > static_cast<off_t>(kHeadSize)) {
        auto size = static_cast<size_t>(status.st_size);
        void *bytes = mmap(nullptr, size, PROT_READ, MAP_PRIVATE, descriptor, 0);
        if (bytes != MAP_FAILED) {
            whole = holdsItsTexts(static_cast<const uint8_t *>(bytes), size);
            munmap(bytes, size);
        }
    }
    close(descriptor);
    return whole;
}
