// What the last multiplication on this thread left behind.
//
// A packed product whose factors together have more than 64 digits, and a zoned one with 127 or
// more, is outside what the library computes: the destination then gets what the previous product
// left in the work area. Programs see that today, so each product is kept for the next one.
#pragma once

#include <cstddef>
#include <cstdint>

namespace bcd {

inline constexpr size_t kPackedScratch = 64;
inline constexpr size_t kZonedScratch = 144;

// One set a thread, so that threads do not spoil each other's.
extern thread_local uint8_t packedScratch[kPackedScratch];
extern thread_local uint8_t zonedScratch[kZonedScratch];

} // namespace bcd
