// The hash functions of the hash table, in a header so that lookups have them inlined.
#pragma once

#include <bit>
#include <cstdint>
#include <cstring>

namespace zvkhash {

inline uint32_t load32(const uint8_t *p)
{
    uint32_t word;
    memcpy(&word, p, sizeof word);
    return word;
}

inline uint64_t load64(const uint8_t *p)
{
    uint64_t word;
    memcpy(&word, p, sizeof word);
    return word;
}

// The first `n` bytes (at most 4) as a little-endian number. Reads nothing else.
inline uint32_t loadUpTo4(const uint8_t *p, uint64_t n)
{
    if (n >= 4) return load32(p);
    uint32_t word = 0;
    switch (n) {
    case 3:
        word |= uint32_t{p[2]} << 16;
        [[fallthrough]];
    case 2:
        word |= uint32_t{p[1]} << 8;
        [[fallthrough]];
    case 1:
        word |= p[0];
    }
    return word;
}

// lookup3's hashlittle with initial value 0: three words of state, 12 key bytes a round. Its
// well-known form reads whole words past the key's end and masks them; this one takes the last
// bytes one by one, since a key may end where its page does.
inline uint32_t bytes(const void *key, uint64_t length)
{
    const uint8_t *p = static_cast<const uint8_t *>(key);
    uint32_t a, b, c;
    a = b = c = 0xdeadbeefu + static_cast<uint32_t>(length);
    while (length > 12) {
        a += load32(p);
        b += load32(p + 4);
        c += load32(p + 8);
        a -= c, a ^= std::rotl(c, 4), c += b;
        b -= a, b ^= std::rotl(a, 6), a += c;
        c -= b, c ^= std::rotl(b, 8), b += a;
        a -= c, a ^= std::rotl(c, 16), c += b;
        b -= a, b ^= std::rotl(a, 19), a += c;
        c -= b, c ^= std::rotl(b, 4), b += a;
        p += 12;
        length -= 12;
    }
    if (length == 0) return c;
    if (length > 8) {
        c += loadUpTo4(p + 8, length - 8);
        b += load32(p + 4);
        a += load32(p);
    } else if (length > 4) {
        b += loadUpTo4(p + 4, length - 4);
        a += load32(p);
    } else {
        a += loadUpTo4(p, length);
    }
    c ^= b, c -= std::rotl(b, 14);
    a ^= c, a -= std::rotl(c, 11);
    b ^= a, b -= std::rotl(a, 25);
    c ^= b, c -= std::rotl(b, 16);
    a ^= c, a -= std::rotl(c, 4);
    b ^= a, b -= std::rotl(a, 14);
    c ^= b, c -= std::rotl(b, 24);
    return c;
}

// Thomas Wang's hash of a 32-bit integer. A key shorter than the integer counts as filled up with
// zeros.
inline uint32_t int32(const void *key, uint64_t length)
{
    uint32_t k = loadUpTo4(static_cast<const uint8_t *>(key), length);
    k = (k ^ 61) ^ (k >> 16);
    k *= 9;
    k ^= k >> 4;
    k *= 0x27D4EB2D;
    k ^= k >> 15;
    return k;
}

// His hash of a 64-bit integer to 32 bits, with right shifts that keep the sign: tables filled by
// older releases hash like this.
inline uint32_t int64(const void *key, uint64_t length)
{
    uint64_t k = 0;
    memcpy(&k, key, length < sizeof k ? length : sizeof k);
    auto shiftRight = [](uint64_t value, int n) { return static_cast<uint64_t>(static_cast<int64_t>(value) >> n); };
    k = ~k + (k << 18);
    k ^= shiftRight(k, 31);
    k *= 21;
    k ^= shiftRight(k, 11);
    k *= 65;
    k ^= shiftRight(k, 22);
    return static_cast<uint32_t>(k);
}

// Equality of two keys of the same length. Program names are short: no call for them.
inline bool equal(const void *key1, const void *key2, uint64_t length)
{
    const uint8_t *p = static_cast<const uint8_t *>(key1);
    const uint8_t *q = static_cast<const uint8_t *>(key2);
    if (length > 16) return memcmp(p, q, length) == 0;
    if (length >= 8) return load64(p) == load64(q) && load64(p + length - 8) == load64(q + length - 8);
    if (length >= 4) return load32(p) == load32(q) && load32(p + length - 4) == load32(q + length - 4);
    return loadUpTo4(p, length) == loadUpTo4(q, length);
}

} // namespace zvkhash
