// Date-time items for tests: formats out of entries, and descriptors for them.
#pragma once

#include <cstring>
#include <string>
#include <vector>

#include "kvr2/datetime.h"
#include "support/guarded.h"

inline constexpr NewCallInfo kNoCheck{};
inline constexpr NewCallInfo kCheck{0, 1, 0, {0, 0}};

// A format; what it points to lives as long as it does.
struct Format {
    std::vector<FormatEntry> entries;
    std::string pool = "--literal--";
    FD fd{};

    Format(uint32_t category, std::vector<FormatEntry> own, uint32_t storage, int16_t actual = -1) : entries(own)
    {
        fd.category = category;
        fd.storageLength = storage;
        fd.diffLength.actualLength = actual < 0 ? static_cast<int16_t>(storage) : actual;
        fd.numberOfEntries = static_cast<int16_t>(entries.size());
        fd.formatLiteralPtr = pool.c_str();
        fd.formatEntriesPtr = entries.data();
    }
    Format(const Format &other) : entries(other.entries), pool(other.pool), fd(other.fd)
    {
        fd.formatLiteralPtr = pool.c_str();
        fd.formatEntriesPtr = entries.data();
    }
};

inline FormatEntry entry(uint32_t type) { return {type, 0, 0}; }

inline Format isoDate() { return {ctDATE, {entry(15), entry(3), entry(12), entry(3), entry(10)}, 10}; }
inline Format isoTime() { return {ctTIME, {entry(16), entry(7), entry(18), entry(7), entry(19)}, 8}; }
inline Format isoStamp()
{
    return {ctTIMESTAMP,
            {entry(15), entry(3), entry(12), entry(3), entry(10), entry(3), entry(16), entry(7), entry(18), entry(7),
             entry(19), entry(4), entry(31)},
            26};
}

// An item at the end of a page.
struct Item {
    GuardedItem storage;
    explicit Item(const std::string &text) : storage(text.size()) { memcpy(storage.data(), text.data(), text.size()); }
    char *get() const { return reinterpret_cast<char *>(storage.data()); }
    std::string text() const { return std::string(get(), storage.size()); }
};

inline std::string moved(const std::string &text, const Format &from, const Format &to, const std::string &before = "",
                         int16_t window = 1950)
{
    Item sender(text), receiver(before.empty() ? std::string(to.fd.storageLength, '?') : before);
    _zvkcDateTime_Move(sender.get(), receiver.get(), &from.fd, &to.fd, 0, window, kNoCheck);
    return receiver.text();
}
