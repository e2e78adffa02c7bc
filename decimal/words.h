// Words of digits: items of a few bytes loaded as one number.
//
// Decimal items are big-endian digit strings of odd lengths. An item of up to 16 bytes is loaded as
// one right-aligned number by two loads that overlap in the middle (an item of 11 bytes: bytes 0 to
// 7 and bytes 3 to 10), so no byte beyond it is touched and there is no loop. Stores work the same
// way.
#pragma once

#include <cstddef>
#include <cstdint>
#include <cstring>

#include "base/bytes.h"

namespace bcd {

using u128 = unsigned __int128;

// A repeated byte as wide as T.
template <class T>
constexpr T all(uint8_t byte)
{
    return static_cast<T>((u128{0x0101010101010101u} << 64 | 0x0101010101010101u) * byte);
}

// Eight digits from a nibble each to a byte each, "12 34 56 78" to "01 02 03 04 05 06 07 08", and
// back.
inline uint64_t spread(uint32_t nibbles)
{
    uint64_t bytes = nibbles;
    bytes = (bytes | bytes << 16) & 0x0000FFFF0000FFFFu;
    bytes = (bytes | bytes << 8) & 0x00FF00FF00FF00FFu;
    return (bytes | bytes << 4) & 0x0F0F0F0F0F0F0F0Fu;
}
inline uint32_t gather(uint64_t bytes)
{
    bytes &= 0x0F0F0F0F0F0F0F0Fu;
    bytes = (bytes | bytes >> 4) & 0x00FF00FF00FF00FFu;
    bytes = (bytes | bytes >> 8) & 0x0000FFFF0000FFFFu;
    return static_cast<uint32_t>(bytes | bytes >> 16);
}

// 1 to 8 bytes.
inline uint64_t loadShort(const uint8_t *p, size_t bytes)
{
    if (bytes == 8) return loadBig<uint64_t>(p);
    if (bytes >= 4) return uint64_t{loadBig<uint32_t>(p)} << (8 * (bytes - 4)) | loadBig<uint32_t>(p + bytes - 4);
    uint64_t value = p[bytes - 1];
    if (bytes > 1) value |= uint64_t{loadBig<uint16_t>(p)} << (8 * (bytes - 2));
    return value;
}

inline void storeShort(uint8_t *p, size_t bytes, uint64_t value)
{
    if (bytes == 8) return storeBig<uint64_t>(p, value);
    if (bytes >= 4) {
        storeBig<uint32_t>(p, static_cast<uint32_t>(value >> (8 * (bytes - 4))));
        storeBig<uint32_t>(p + bytes - 4, static_cast<uint32_t>(value));
        return;
    }
    if (bytes > 1) storeBig<uint16_t>(p, static_cast<uint16_t>(value >> (8 * (bytes - 2))));
    p[bytes - 1] = static_cast<uint8_t>(value);
}

// 1 to 16 bytes.
inline constexpr size_t kMostBytes = 16;

// The two words of a number that is as long as two registers. Double-length shifts are slow, so the
// halves are shifted apart.
inline uint64_t highWord(u128 value) { return static_cast<uint64_t>(value >> 64); }
inline uint64_t lowWord(u128 value) { return static_cast<uint64_t>(value); }
inline uint64_t lowWord(uint64_t value) { return value; }
inline u128 fromWords(uint64_t high, uint64_t low) { return u128{high} << 64 | low; }

// By 1 to 63 bits.
inline uint64_t shiftedRight(uint64_t value, unsigned bits) { return value >> bits; }
inline uint64_t shiftedLeft(uint64_t value, unsigned bits) { return value << bits; }
inline u128 shiftedRight(u128 value, unsigned bits)
{
    return fromWords(highWord(value) >> bits, lowWord(value) >> bits | highWord(value) << (64 - bits));
}
inline u128 shiftedLeft(u128 value, unsigned bits)
{
    return fromWords(highWord(value) << bits | lowWord(value) >> (64 - bits), lowWord(value) << bits);
}

inline u128 loadItem(const uint8_t *p, size_t bytes)
{
    if (bytes <= 8) return loadShort(p, bytes);
    return fromWords(loadBig<uint64_t>(p) >> (8 * (16 - bytes)), loadBig<uint64_t>(p + bytes - 8));
}

inline void storeItem(uint8_t *p, size_t bytes, u128 value)
{
    if (bytes <= 8) return storeShort(p, bytes, lowWord(value));
    storeBig<uint64_t>(p, highWord(value) << (8 * (16 - bytes))); // what it writes too far to the right is overwritten
    storeBig<uint64_t>(p + bytes - 8, lowWord(value));
}

// All bits of a word, or none.
template <class Word>
inline Word maskOf(bool set)
{
    return static_cast<Word>(0) - static_cast<Word>(set);
}

// All bits of a word when its highest one is set, or none.
inline uint32_t signMask(uint32_t word) { return static_cast<uint32_t>(static_cast<int32_t>(word) >> 31); }
inline uint64_t signMask(uint64_t word) { return static_cast<uint64_t>(static_cast<int64_t>(word) >> 63); }
inline u128 signMask(u128 word) { return fromWords(signMask(highWord(word)), signMask(highWord(word))); }

// One of two values without a jump, for conditions that nothing predicts, such as signs. The
// compiler would rather jump round the value that is not taken, so it is told nothing about them.
template <class Word>
[[gnu::always_inline]] inline Word pick(bool condition, Word yes, Word no)
{
    asm("" : "+r"(yes), "+r"(no));
    return condition ? yes : no;
}

// The same for an item that fits a word of the given type.
template <class Word>
inline Word loadAs(const uint8_t *p, size_t bytes)
{
    if constexpr (sizeof(Word) == 8)
        return loadShort(p, bytes);
    else
        return loadItem(p, bytes);
}

template <class Word>
inline void storeAs(uint8_t *p, size_t bytes, Word value)
{
    if constexpr (sizeof(Word) == 8)
        storeShort(p, bytes, value);
    else
        storeItem(p, bytes, value);
}

} // namespace bcd
