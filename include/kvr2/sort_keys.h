/**
 * Sort keys as byte strings: every key is rewritten once so that one unsigned byte compare gives
 * its order, whatever its type and direction.
 *
 * | Type | Byte string, ascending | Descending |
 * |---|---|---|
 * | alphanumeric, national, DBCS | the bytes, alphanumeric ones through the collating table | complement |
 * | binary | big-endian, 128 added to the first byte if signed | complement |
 * | zoned, packed | sign, number of digits or bytes, digits without leading zeros; the latter two complemented if negative | complement |
 * | float | big-endian, sign bit set for positive numbers and zeros; negative ones complemented | complement |
 *
 * The strings of several keys are one after the other. A number's string has as many bytes as it
 * has digits, but two strings of different length differ before the shorter one ends, so what
 * follows never meets what it must not be compared with.
 *
 *     +1234 packed  F0 03 01 23 40        -1234  00 FC FE DC BF        +7  F0 01 70
 *
 * Inline routines, shared by the library's table sort and the sort engine.
 */
#ifndef KVR2_SORT_KEYS_H
#define KVR2_SORT_KEYS_H

#include <string.h>

#include "kvr2/sort.h"

ZVK_BEGIN_DECLS

/**
 * `flags` of zvkNormaliseKey: packed 0xF nibbles and other preferred forms are positive; only 0xD
 * and 0xB are negative.
 */
#define ZVK_NORMALISE_UNSIGNED_PACKED 1u

/**
 * `flags` of zvkNormaliseKey: an overpunched sign is read as the decimal entries read it, that is
 * also as a letter ("{", "A" to "I" plus, "}", "J" to "R" minus) and in the zones 0xC and 0xF
 * (plus) and 0xD (minus). Without it, as in SORT of a table, zone 3 is plus and all else minus.
 */
#define ZVK_NORMALISE_ALL_SIGNS 2u

/** Most bytes that the byte string of a key takes; 0 if the key is not valid. */
static inline uint64_t zvkKeySpace(const TableSortKey *key)
{
    uint64_t length = key->length;
    if (length == 0) return 0;
    switch (key->keyType) {
    case ZVK_KEY_ALPHANUMERIC:
    case ZVK_KEY_NATIONAL:
    case ZVK_KEY_DBCS:
        return length;
    case ZVK_KEY_ZONED:
        if (key->signFlags & (ZVK_KEY_LEADING_SEPARATE | ZVK_KEY_TRAILING_SEPARATE)) length--;
        return length <= 255 ? length / 2 + 3 : 0;
    case ZVK_KEY_BINARY:
        return length <= 8 ? length : 0;
    case ZVK_KEY_PACKED:
        return length <= 255 ? length + 2 : 0;
    case ZVK_KEY_FLOAT:
        return length == 4 || length == 8 ? 8 : 0;
    default:
        return 0;
    }
}

/**
 * Sign and count of a number's byte string; returns the mask that its digits are exclusive-ored
 * with.
 */
static inline uint8_t zvkPutSignAndCount(uint8_t *out, int negative, int ascending, size_t count)
{
    uint8_t mask = negative == ascending ? 0xFF : 0;
    out[0] = (uint8_t)((negative ? 0x00 : 0xF0) ^ (ascending ? 0x00 : 0xFF));
    out[1] = (uint8_t)((uint8_t)count ^ mask);
    return mask;
}

/** An overpunched byte: its digit, plus 0x10 where it is negative. */
static inline uint8_t zvkSortOverpunch(uint8_t byte)
{
    uint8_t zone = (uint8_t)(byte & 0xF0);
    if (byte == '{' || byte == ' ' || byte == 0) return 0;
    if (byte == '}') return 0x10;
    if (byte >= 'A' && byte <= 'I') return (uint8_t)(byte - 0x40);
    if (byte >= 'J' && byte <= 'R') return (uint8_t)((byte - 0x49) | 0x10);
    return (uint8_t)((byte & 15) | ((zone == 0x70 || zone == 0xD0) && (byte & 15) < 10 ? 0x10 : 0));
}

static inline uint8_t *zvkNormaliseZoned(const TableSortKey *key, const uint8_t *digits, int ascending, uint32_t flags,
                                         uint8_t *out)
{
    size_t length = key->length, i = 0;
    int negative = 0;
    uint8_t mask, plain[256];
    if (key->signFlags & ZVK_KEY_LEADING_SEPARATE) {
        negative = *digits++ != '+';
        length--;
    } else if (key->signFlags & ZVK_KEY_TRAILING_SEPARATE) {
        negative = digits[--length] != '+';
    } else if ((key->signFlags & (ZVK_KEY_LEADING | ZVK_KEY_TRAILING)) && (flags & ZVK_NORMALISE_ALL_SIGNS)) {
        uint8_t *sign = plain + (key->signFlags & ZVK_KEY_LEADING ? 0 : length - 1);
        memcpy(plain, digits, length);
        negative = zvkSortOverpunch(*sign) >> 4;
        *sign = (uint8_t)(zvkSortOverpunch(*sign) & 15);
        digits = plain;
    } else if (key->signFlags & (ZVK_KEY_LEADING | ZVK_KEY_TRAILING)) {
        negative = digits[key->signFlags & ZVK_KEY_LEADING ? 0 : length - 1] >> 4 != 3;
    }
    while (length > 1 && (*digits & 15) == 0) digits++, length--;
    if (length == 0 || (length == 1 && (*digits & 15) == 0)) negative = 0;
    mask = zvkPutSignAndCount(out, negative, ascending, length);
    out += 2;
    if (length & 1) *out++ = (uint8_t)((digits[i++] & 15) ^ mask);
    for (; i < length; i += 2) *out++ = (uint8_t)(((digits[i] & 15) << 4 | (digits[i + 1] & 15)) ^ mask);
    return out;
}

static inline uint8_t *zvkNormalisePacked(const TableSortKey *key, const uint8_t *bytes, int ascending, uint32_t flags,
                                          uint8_t *out)
{
    size_t length = key->length, i;
    int negative;
    uint8_t mask, sign;
    while (length > 1 && *bytes == 0) bytes++, length--;
    sign = bytes[length - 1] & 15;
    negative = flags & ZVK_NORMALISE_UNSIGNED_PACKED ? sign == 0xD || sign == 0xB : sign != 0xC;
    if (length == 1 && *bytes < 16) negative = 0;
    mask = zvkPutSignAndCount(out, negative, ascending, length);
    out += 2;
    for (i = 0; i < length - 1; i++) *out++ = (uint8_t)(bytes[i] ^ mask);
    *out++ = (uint8_t)((bytes[i] & 0xF0) ^ (mask & 0xF0));
    return out;
}

static inline uint8_t *zvkNormaliseFloat(const TableSortKey *key, const uint8_t *bytes, int ascending, uint8_t *out)
{
    const uint64_t top = (uint64_t)1 << 63;
    uint64_t bits = 0;
    /* a short one fills the upper half, so that the sign is the top bit of both */
    memcpy((uint8_t *)&bits + (8 - key->length), bytes, key->length);
    if ((bits & ~top) == 0)
        bits = top;
    else
        bits = bits & top ? ~bits : bits | top;
    if (!ascending) bits = ~bits;
    bits = __builtin_bswap64(bits);
    memcpy(out, &bits, 8);
    return out + 8;
}

/** Appends the byte string of a valid key of `record`; returns the place after it. */
static inline uint8_t *zvkNormaliseKey(const TableSortKey *key, const uint8_t *record, const uint8_t *collating,
                                       uint32_t flags, uint8_t *out)
{
    const uint8_t *item = record + key->offset;
    int ascending = key->orderFlags & ZVK_KEY_ASCENDING;
    uint8_t mask = ascending ? 0 : 0xFF;
    size_t length = key->length, i;
    switch (key->keyType) {
    case ZVK_KEY_ZONED:
        return zvkNormaliseZoned(key, item, ascending, flags, out);
    case ZVK_KEY_PACKED:
        return zvkNormalisePacked(key, item, ascending, flags, out);
    case ZVK_KEY_FLOAT:
        return zvkNormaliseFloat(key, item, ascending, out);
    case ZVK_KEY_BINARY:
        for (i = 0; i < length; i++) out[i] = (uint8_t)(item[length - 1 - i] ^ mask);
        if (key->signFlags & ZVK_KEY_SIGNED) out[0] ^= 0x80;
        return out + length;
    case ZVK_KEY_ALPHANUMERIC:
        if (collating) {
            for (i = 0; i < length; i++) out[i] = (uint8_t)(collating[item[i]] ^ mask);
            return out + length;
        }
        break;
    default:
        break;
    }
    if (ascending)
        memcpy(out, item, length);
    else
        for (i = 0; i < length; i++) out[i] = (uint8_t)~item[i];
    return out + length;
}

ZVK_END_DECLS

#endif
