// The files that a message catalog may be; see catalog_file.h.
#include "frame/catalog_file.h"

#include <cstdint>
#include <cstring>
#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include "frame/message_catalog.h"

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
            part = what == 'N' ? Part{kCatalogName, strlen(kCatalogName)} : what == '%' ? Part{"%", 1} : partOf(locale, what);
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
    struct stat status;
    uint32_t head[3]; // magic, size and depth of the tables
    bool readable = fstat(descriptor, &status) == 0 && S_ISREG(status.st_mode) && read(descriptor, head, sizeof head) == sizeof head;
    close(descriptor);
    if (!readable) return false;
    constexpr uint32_t magic = 0x960408de;
    if (head[0] != magic && head[0] != __builtin_bswap32(magic)) return false;
    if (head[0] != magic)
        for (uint32_t &word : head) word = __builtin_bswap32(word);
    // Two copies of the tables, one for each byte order, of three words an entry.
    uint64_t entries = uint64_t{head[1]} * head[2];
    return entries > 0 && entries <= UINT32_MAX / 24 && sizeof head + 24 * entries < static_cast<uint64_t>(status.st_size);
}
