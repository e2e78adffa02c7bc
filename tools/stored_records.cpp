// See stored_records.h.
#include "tools/stored_records.h"

#include <cerrno>
#include <cstring>
#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include "companions/filesystems/byte_stream.h"
#include "companions/filesystems/record_sum.h"
#include "companions/filesystems/share_locks.h"
#include "companions/filesystems/store_layout.h"
#include "tools/file_tool.h"

namespace file_tool {

using filesystems::kSequenceSize;
using filesystems::kStoredHeaderSize;
using filesystems::StoredHeader;

bool hasDuplicates(const StoredHeader &header, uint32_t key)
{
    return key && (header.keys[key].flags & ZVK_FILE_KEY_DUPLICATES);
}

static size_t numbersSize(const StoredHeader &header)
{
    size_t size = 0;
    for (uint32_t key = 1; key < header.keyCount; ++key) size += hasDuplicates(header, key) ? kSequenceSize : 0;
    return size;
}

bool takeApart(const StoredHeader &header, std::string_view stored, std::vector<uint64_t> *numbers,
               std::string_view *record)
{
    size_t size = numbersSize(header), sum = filesystems::sumSizeOf(header), around = size + sum;
    if (stored.size() < around || stored.size() - around > header.longest || stored.size() - around < header.shortest)
        return false;
    if (sum && !filesystems::hasSum(0, reinterpret_cast<const uint8_t *>(stored.data()), stored.size() - sum))
        return false;
    numbers->resize(size / kSequenceSize);
    if (size) memcpy(numbers->data(), stored.data(), size);
    *record = stored.substr(size, stored.size() - around);
    for (uint32_t key = 0; key < header.keyCount; ++key)
        if (filesystems::endOfKey(header.keys[key], header.parts) > record->size()) return false;
    return true;
}

bool looksLikeRecord(const StoredHeader &header, const Entry &entry, std::vector<uint64_t> *numbers,
                     std::string_view *record)
{
    return takeApart(header, entry.value, numbers, record) && entry.key == keyIn(header, 0, *record);
}

std::string quoted(std::string_view key)
{
    std::string text = "'";
    for (unsigned char c : key)
        if (c < 0x20 || c > 0x7E) {
            char hex[8];
            snprintf(hex, sizeof hex, "\\x%02X", c);
            text += hex;
        } else {
            text += static_cast<char>(c);
        }
    return text + "'";
}

OpenFile::OpenFile(const std::string &path) : descriptor(::open(path.c_str(), O_RDONLY | O_CLOEXEC | O_NONBLOCK))
{
    struct stat about;
    if (descriptor < 0 || fstat(descriptor, &about) != 0)
        say("%s: %s", path.c_str(), strerror(errno));
    else
        size = static_cast<uint64_t>(about.st_size);
}

OpenFile::~OpenFile()
{
    if (descriptor >= 0) ::close(descriptor);
}

static uint64_t slotSizeOf(const StoredHeader &header)
{
    return 4 + uint64_t(header.longest) + filesystems::sumSizeOf(header);
}

uint64_t tornSlot(const StoredHeader &header, const OpenFile &file)
{
    const uint64_t slotSize = slotSizeOf(header);
    const auto restOf = [&](uint64_t size) {
        return size > kStoredHeaderSize ? (size - kStoredHeaderSize) % slotSize : 0;
    };
    uint64_t rest = restOf(file.size);
    if (!rest) return 0;

    // Beside a writer once more, when its transfer is over.
    const uint64_t place = file.size - rest;
    struct stat about;
    filesystems::lockBytes(file.descriptor, false, place, slotSize);
    if (fstat(file.descriptor, &about) == 0) rest = restOf(static_cast<uint64_t>(about.st_size));
    filesystems::unlockBytes(file.descriptor, place, slotSize);
    return rest;
}

bool walkSlots(const StoredHeader &header, OpenFile &file,
               const std::function<bool(uint64_t, uint32_t, std::string_view)> &visit)
{
    const uint64_t slotSize = slotSizeOf(header);
    std::string slot(slotSize, 0);
    Progress progress("slots", file.size);
    for (uint64_t number = 1;; ++number) {
        uint64_t at = kStoredHeaderSize + (number - 1) * slotSize;
        if (at + slotSize > file.size) break;
        size_t got;
        filesystems::lockBytes(file.descriptor, false, at, slotSize); // as READ does, beside a writer
        int error = filesystems::readAll(file.descriptor, slot.data(), slotSize, at, &got);
        filesystems::unlockBytes(file.descriptor, at, slotSize);
        if (error) return say("record %llu: %s", static_cast<unsigned long long>(number), strerror(error)), false;
        uint32_t mark;
        memcpy(&mark, slot.data(), 4);
        progress.at(at);
        if (mark && !visit(number, mark, slot)) break;
        off_t data = mark ? -2 : lseek(file.descriptor, static_cast<off_t>(at + slotSize), SEEK_DATA);
        if (data == -1 && errno == ENXIO) break; // a hole up to the end
        if (data > 0 && static_cast<uint64_t>(data) > at + slotSize)
            number = (static_cast<uint64_t>(data) - kStoredHeaderSize) / slotSize; // the next one is there
    }
    return true;
}

bool isPossibleSlot(const StoredHeader &header, uint64_t number, uint32_t mark, std::string_view slot)
{
    if (!mark || mark - 1 > header.longest) return false;
    return !filesystems::sumSizeOf(header) ||
           filesystems::hasSum(number, reinterpret_cast<const uint8_t *>(slot.data()), 3 + size_t(mark));
}

} // namespace file_tool
