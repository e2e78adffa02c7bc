// Records with keys of all types, and the slow, obviously right order of them: keys are decoded
// into numbers and strings at every compare.
#pragma once

#include <algorithm>
#include <cstring>
#include <random>
#include <string>
#include <vector>

#include "kvr2/sort.h"

using Record = std::string;

inline TableSortKey sortKey(uint32_t offset, uint32_t length, uint32_t type, bool ascending, uint8_t sign = 0)
{
    TableSortKey key{};
    key.offset = offset;
    key.length = length;
    key.keyType = type;
    key.signFlags = sign;
    key.orderFlags = ascending ? ZVK_KEY_ASCENDING : 0;
    return key;
}

inline std::string describe(const TableSortKey &key)
{
    return "type " + std::to_string(key.keyType) + " length " + std::to_string(key.length) + " sign " +
           std::to_string(key.signFlags) + (key.orderFlags ? " ascending" : " descending");
}

// Puts a random value of the key's type into its place; few different ones, so that equal keys and
// both zeros occur.
inline void fillKey(const TableSortKey &key, Record &record, std::mt19937 &random)
{
    char *item = &record[key.offset];
    bool negative = random() & 1;
    bool small = random() & 1;
    uint32_t length = key.length;
    switch (key.keyType) {
    case ZVK_KEY_ZONED: {
        bool leading = key.signFlags == ZVK_KEY_LEADING_SEPARATE, trailing = key.signFlags == ZVK_KEY_TRAILING_SEPARATE;
        for (uint32_t i = 0; i < length; i++)
            item[i] = static_cast<char>('0' + (small && i + 1 < length - trailing ? 0 : random() % 10));
        if (leading) item[0] = negative ? '-' : '+';
        if (trailing) item[length - 1] = negative ? '-' : '+';
        if (negative && key.signFlags == ZVK_KEY_LEADING) item[0] = static_cast<char>(item[0] | 0x40);
        if (negative && key.signFlags == ZVK_KEY_TRAILING)
            item[length - 1] = static_cast<char>(item[length - 1] | 0x40);
        break;
    }
    case ZVK_KEY_PACKED:
        for (uint32_t i = 0; i < length; i++)
            item[i] = static_cast<char>(small && i + 1 < length ? 0 : random() % 10 << 4 | random() % 10);
        item[length - 1] = static_cast<char>((item[length - 1] & 0xF0) | (negative ? 0xD : key.signFlags ? 0xF : 0xC));
        break;
    case ZVK_KEY_FLOAT: {
        double value = small ? static_cast<double>(random() % 3) : (random() % 100000) * 1e-7;
        float narrow = static_cast<float>(negative ? -value : value);
        double wide = negative ? -value : value;
        memcpy(item, length == 4 ? static_cast<void *>(&narrow) : static_cast<void *>(&wide), length);
        break;
    }
    default:
        for (uint32_t i = 0; i < length; i++)
            item[i] = static_cast<char>(small ? "AaZ\xC1"[random() % 4] : static_cast<int>(random() % 256));
    }
}

inline __int128 decodeNumber(const TableSortKey &key, const uint8_t *item, bool unsignedPackedIsNegative)
{
    __int128 value = 0;
    bool negative = false;
    uint32_t length = key.length;
    if (key.keyType == ZVK_KEY_PACKED) {
        for (uint32_t i = 0; i < 2 * length - 1; i++)
            value = value * 10 + (i & 1 ? item[i / 2] & 15 : item[i / 2] >> 4);
        uint8_t sign = item[length - 1] & 15;
        negative = sign == 0xD || (unsignedPackedIsNegative && sign == 0xF);
    } else if (key.keyType == ZVK_KEY_BINARY) {
        uint64_t bits = 0;
        memcpy(&bits, item, length);
        if (key.signFlags & ZVK_KEY_SIGNED) return static_cast<int64_t>(bits << (64 - 8 * length)) >> (64 - 8 * length);
        return bits;
    } else {
        for (uint32_t i = 0; i < length; i++) {
            if (item[i] == '+') continue;
            if (item[i] == '-')
                negative = true;
            else
                value = value * 10 + (item[i] & 15);
            if (item[i] >> 4 == 7) negative = true;
        }
    }
    return negative ? -value : value;
}

template <class T>
int sign(const T &a, const T &b)
{
    return a < b ? -1 : b < a ? 1 : 0;
}

struct Reference {
    std::vector<TableSortKey> keys;
    const uint8_t *collating = nullptr;
    bool unsignedPackedIsNegative = false;

    int compare(const uint8_t *a, const uint8_t *b) const
    {
        for (const TableSortKey &key : keys) {
            const uint8_t *x = a + key.offset, *y = b + key.offset;
            int order = 0;
            if (key.keyType == ZVK_KEY_FLOAT) {
                double v = 0, w = 0;
                float f, g;
                if (key.length == 4)
                    memcpy(&f, x, 4), memcpy(&g, y, 4), v = f, w = g;
                else
                    memcpy(&v, x, 8), memcpy(&w, y, 8);
                order = sign(v, w);
            } else if (key.keyType == ZVK_KEY_ALPHANUMERIC || key.keyType >= ZVK_KEY_NATIONAL) {
                for (uint32_t i = 0; i < key.length && order == 0; i++)
                    order = collating && key.keyType == ZVK_KEY_ALPHANUMERIC ? sign(collating[x[i]], collating[y[i]])
                                                                             : sign(x[i], y[i]);
            } else {
                order = sign(decodeNumber(key, x, unsignedPackedIsNegative),
                             decodeNumber(key, y, unsignedPackedIsNegative));
            }
            if (order != 0) return key.orderFlags & ZVK_KEY_ASCENDING ? order : -order;
        }
        return 0;
    }
    bool operator()(const Record &a, const Record &b) const
    {
        return compare(reinterpret_cast<const uint8_t *>(a.data()), reinterpret_cast<const uint8_t *>(b.data())) < 0;
    }
};

// Keys of every type, length and form, each in both directions, at offset 3.
inline std::vector<TableSortKey> everyKey(bool engine)
{
    std::vector<TableSortKey> keys;
    for (bool ascending : {true, false}) {
        for (uint32_t length : {1u, 7u, 10u, 13u, 30u}) {
            keys.push_back(sortKey(3, length, ZVK_KEY_ALPHANUMERIC, ascending));
            if (engine) keys.push_back(sortKey(3, length, ZVK_KEY_DBCS, ascending));
        }
        for (uint32_t length : {2u, 20u}) keys.push_back(sortKey(3, length, ZVK_KEY_NATIONAL, ascending));
        for (uint32_t length : {2u, 3u, 8u, 18u, 31u})
            for (uint8_t form : {0, 1, 2, 4, 8}) keys.push_back(sortKey(3, length, ZVK_KEY_ZONED, ascending, form));
        for (uint32_t length : {1u, 2u, 3u, 4u, 5u, 8u})
            for (uint8_t form : {0, 16})
                if (engine || (length & (length - 1)) == 0)
                    keys.push_back(sortKey(3, length, ZVK_KEY_BINARY, ascending, form));
        for (uint32_t length : {1u, 2u, 5u, 16u})
            for (uint8_t form : {0, 1})
                keys.push_back(sortKey(3, length, ZVK_KEY_PACKED, ascending, form)); // 1: 0xF nibbles among them
        for (uint32_t length : {4u, 8u}) keys.push_back(sortKey(3, length, ZVK_KEY_FLOAT, ascending));
    }
    return keys;
}
