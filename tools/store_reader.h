// The store of an indexed file as it is at one moment, beside programs that write to it.
//
//     StoreReader reader;
//     if (!reader.open(path)) return say("%s: %s", ..., reader.reason());
//     mdb_env_copyfd(reader.environment(), ...);
//
// It is an open of the file for INPUT, and a reader that LMDB knows: writers leave alone the pages
// that it sees. A program that has the file for itself alone knows of no readers; beside it nothing
// certain can be read. Who is only looking (`glance`) keeps nobody from opening the file, and may
// see something false if a program takes it for itself in that moment.
#pragma once

#include <lmdb.h>

#include "tools/stored_file.h"

namespace file_tool {

class StoreReader {
public:
    StoreReader() = default;
    ~StoreReader();
    StoreReader(const StoreReader &) = delete;
    StoreReader &operator=(const StoreReader &) = delete;

    // A user who may not write NAME.mdb-lock admits no writer instead. False: `reason` says why.
    bool open(const std::string &path, bool glance = false);
    // Opens and maps: what `pages` shows stays as it was at one change while this lives. Where LMDB
    // does not open the store it is mapped as it is, if that is its own fault: `damaged`.
    enum class Mapped { yes, headless, failed };
    Mapped map(const std::string &path, StorePages *pages, bool glance = false);

    MDB_env *environment() const { return env_; }
    bool damaged() const { return damaged_; } // it is no store that LMDB opens
    const std::string &reason() const { return reason_; }

private:
    MDB_env *env_ = nullptr;
    MDB_txn *txn_ = nullptr;
    int descriptor_ = -1;
    bool damaged_ = false;
    std::string reason_;

    bool fails(int error);
};

} // namespace file_tool
