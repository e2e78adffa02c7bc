// The checksum of a record in a file of the default file system: four bytes after it.
//
// A byte that something else has changed makes READ give status 30 instead of the record. The place
// of the record goes in, too, so one that lies where another should be is found as well. Files of
// version 1 have none, and stay so.
#pragma once

#include "companions/filesystems/stored_header.h"

namespace filesystems {

constexpr uint32_t kSumSize = 4;

inline uint32_t sumSizeOf(const StoredHeader &header) { return header.version >= 2 ? kSumSize : 0; }

// Each step can be undone, so two records that differ in one word never have the same state.
inline uint32_t recordSum(uint64_t place, const void *record, size_t size)
{
    constexpr uint64_t mix = 0x9E3779B97F4A7C15u;
    const auto *bytes = static_cast<const uint8_t *>(record);
    uint64_t state = (place ^ size) * mix;
    for (; size >= sizeof(uint64_t); size -= sizeof(uint64_t), bytes += sizeof(uint64_t)) {
        uint64_t word;
        memcpy(&word, bytes, sizeof word);
        state = (state ^ word) * mix;
        state ^= state >> 29;
    }
    uint64_t last = 0;
    memcpy(&last, bytes, size);
    state = (state ^ last) * mix;
    return static_cast<uint32_t>(state >> 32) ^ static_cast<uint32_t>(state);
}

inline void putSum(uint64_t place, uint8_t *record, size_t size)
{
    uint32_t sum = recordSum(place, record, size);
    memcpy(record + size, &sum, sizeof sum);
}

inline bool hasSum(uint64_t place, const uint8_t *record, size_t size)
{
    uint32_t sum;
    memcpy(&sum, record + size, sizeof sum);
    return sum == recordSum(place, record, size);
}

} // namespace filesystems
