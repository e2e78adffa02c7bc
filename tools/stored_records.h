// What verify, rebuild and compact read out of a file: records of an indexed file in their stored
// form, slots of a relative one.
#pragma once

#include <cstdint>
#include <functional>
#include <string>
#include <string_view>
#include <vector>

#include "companions/filesystems/stored_header.h"
#include "tools/stored_file.h"

namespace file_tool {

// Whether values of an alternate key may be there twice: its entries then bear a number each.
bool hasDuplicates(const filesystems::StoredHeader &header, uint32_t key);

// The numbers and the record out of its stored form; false if no record of this file is so long.
bool takeApart(const filesystems::StoredHeader &header, std::string_view stored, std::vector<uint64_t> *numbers,
               std::string_view *record);

// A record of this file is known by its length and by its key, which the entry bears, too.
bool looksLikeRecord(const filesystems::StoredHeader &header, const Entry &entry, std::vector<uint64_t> *numbers,
                     std::string_view *record);

// A key as a message shows it.
std::string quoted(std::string_view key);

// A relative or sequential file, open to be read as bytes; what fails is said.
struct OpenFile {
    int descriptor = -1;
    uint64_t size = 0;
    explicit OpenFile(const std::string &path);
    ~OpenFile();
    OpenFile(const OpenFile &) = delete;
    OpenFile &operator=(const OpenFile &) = delete;
};

// Visits the slots of a relative file that hold something: number, length word, record.
bool walkSlots(const filesystems::StoredHeader &header, OpenFile &file,
               const std::function<bool(uint64_t, uint32_t, std::string_view)> &visit);

// Bytes of a slot that the end of the file cuts off; 0: it ends with a whole one.
uint64_t tornSlot(const filesystems::StoredHeader &header, const OpenFile &file);

// Whether a slot may be one of this file: its length, and its checksum if the file has any.
bool isPossibleSlot(const filesystems::StoredHeader &header, uint64_t number, uint32_t mark, std::string_view slot);

} // namespace file_tool
