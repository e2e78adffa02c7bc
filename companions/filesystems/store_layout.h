// How the store of an indexed file is laid out: what the module and the file tool must agree on.
//
//     database "r"            primary key -> record as stored (indexed_record.cpp)
//     database "1", "2", ...  entries of the alternate keys, in the order of the header
//     database "about"        "identity" -> that of the header
#pragma once

#include <cstdio>
#include <cstdlib>

#include <lmdb.h>

#include "companions/filesystems/stored_header.h"

namespace filesystems {

constexpr uint32_t kSequenceSize = 8;   // of the number that keeps duplicates apart, big-endian in the entry
constexpr uint32_t kMostReaders = 8192; // of one store at the same time, 64 bytes each in NAME.mdb-lock
constexpr char kAboutDatabase[] = "about";

inline MDB_val identityKey() { return {8, const_cast<char *>("identity")}; }

inline void databaseName(uint32_t key, char (&name)[8])
{
    if (key)
        snprintf(name, sizeof name, "%u", key & 0xFF); // mostKeys
    else
        strcpy(name, "r");
}

// Address space, not memory: programs that run under a limit of it say how many megabytes a store
// begins with.
inline size_t mapSize()
{
    constexpr size_t byDefault = size_t(1) << 36, least = 1 << 20;
    const char *said = getenv("VFS_INDEXED_MAP");
    char *end;
    if (!said || *said < '0' || *said > '9') return byDefault;
    unsigned long long megabytes = strtoull(said, &end, 10);
    if (*end || megabytes == 0 || megabytes > size_t(1) << 26) return byDefault;
    return static_cast<size_t>(megabytes) * least;
}

} // namespace filesystems
