// Loads and stores of integers at any alignment, in memory order or big-endian.
//
// Records come from compiled code and from files at any address. memcpy is the way to read them
// that the language defines, and the compiler makes one instruction of it:
//
//     uint32_t length = loadBig<uint32_t>(bytes);      // 00 00 01 02 -> 258
//     store<uint16_t>(bytes, 0x0102);                  // 02 01, the machine's own order
//
// For pieces of a record that are no integers (float items, small structures) load and store take
// any trivially copyable type.
#pragma once

#include <bit>
#include <cstdint>
#include <cstring>
#include <type_traits>

static_assert(std::endian::native == std::endian::little, "loadBig and storeBig reverse bytes");

inline uint64_t reversed(uint64_t value) { return __builtin_bswap64(value); }
inline uint32_t reversed(uint32_t value) { return __builtin_bswap32(value); }
inline uint16_t reversed(uint16_t value) { return __builtin_bswap16(value); }
inline uint8_t reversed(uint8_t value) { return value; }

template <class T>
inline T load(const void *from)
{
    static_assert(std::is_trivially_copyable_v<T>);
    T value;
    memcpy(&value, from, sizeof value);
    return value;
}

template <class T>
inline void store(void *to, std::type_identity_t<T> value)
{
    static_assert(std::is_trivially_copyable_v<T>);
    memcpy(to, &value, sizeof value);
}

template <class T>
inline T loadBig(const void *from)
{
    return static_cast<T>(reversed(load<std::make_unsigned_t<T>>(from)));
}

template <class T>
inline void storeBig(void *to, std::type_identity_t<T> value)
{
    using Bits = std::make_unsigned_t<T>;
    store<Bits>(to, reversed(static_cast<Bits>(value)));
}
