// A new indexed file beside an old one, and how it takes the old one's place.
//
// The file is made under names of its own, FILE.kvr2-new and FILE.kvr2-new.mdb, forced to the disk,
// and only then renamed: the store first, then the header is written over the old one, in one page,
// so that who waits for the file meets the same file afterwards. A kill between the two leaves a
// header and a store that bear different identities: OPEN gives status 30, and the next command
// that works on the file finds FILE.kvr2-new and completes the change.
#pragma once

#include <lmdb.h>

#include "companions/filesystems/store_layout.h"
#include "tools/stored_file.h"

namespace file_tool {

class StoreBuilder {
public:
    ~StoreBuilder(); // what is not finished is removed
    StoreBuilder() = default;
    StoreBuilder(const StoreBuilder &) = delete;
    StoreBuilder &operator=(const StoreBuilder &) = delete;

    // Makes PATH and its store; false: it has said why. The header gets an identity of its own.
    bool create(const std::string &path, const filesystems::StoredHeader &header);

    // A record with its entries in all keys. `numbers` says for each key with duplicates where its
    // entry is among those of the same value, 0: after them.
    enum class Added { yes, refused, failed };
    Added add(std::string_view record, const std::vector<uint64_t> &numbers);
    bool has(std::string_view primaryKey);
    // An entry as it is, above all that are in the key.
    bool append(uint32_t key, const Entry &entry);

    // All is on the disk, and the file can be opened.
    bool finish();

private:
    std::string path_;
    filesystems::StoredHeader header_{};
    MDB_env *env_ = nullptr;
    MDB_txn *txn_ = nullptr;
    MDB_dbi data_[filesystems::kMostKeys]{};
    std::string stored_;
    uint32_t changes_ = 0;
    bool made_ = false;

    bool good(int error);
    bool ready();
    bool step();
    int nextNumber(uint32_t key, std::string_view value, uint64_t *number);
};

// A file that nobody else has open, for as long as this lives.
class OwnedFile {
public:
    explicit OwnedFile(const std::string &path) : path_(path) {}
    ~OwnedFile();
    OwnedFile(const OwnedFile &) = delete;
    OwnedFile &operator=(const OwnedFile &) = delete;
    bool take(); // false: it has said why. Completes what a killed command left
    int descriptor() const { return descriptor_; }
    std::string newName() const { return path_ + ".kvr2-new"; }
    bool replaceByNew(); // by what a StoreBuilder made as `newName`
private:
    std::string path_;
    int descriptor_ = -1;

    bool complete();
};

// Forces a file, and the directory entry that leads to it; 0 or an errno.
int forceFile(const std::string &path);

} // namespace file_tool
