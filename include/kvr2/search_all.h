/**
 * SEARCH ALL: binary search of a table by one or more keys.
 *
 * The header describes the keys in order of their weight; the arguments belong to the first keys,
 * one each, and keys without an argument are not looked at. Everything is bytes at any alignment.
 */
#ifndef KVR2_SEARCH_ALL_H
#define KVR2_SEARCH_ALL_H

#include "kvr2/alphabet.h"
#include "kvr2/export.h"

ZVK_BEGIN_DECLS

/** Types of a key. The argument has the type of its key. */
enum {
    ZVK_SEARCH_ALPHANUMERIC = 0,
    ZVK_SEARCH_ALPHANUMERIC_EBCDIC = 1, /**< blanks are 0x40 */
    ZVK_SEARCH_NUMERIC = 2,             /**< numeric DISPLAY, native sign */
    ZVK_SEARCH_NATIONAL = 4,            /**< UTF-16, little-endian units */
    ZVK_SEARCH_NATIONAL_NUMERIC = 9,    /**< digits in UTF-16 */
    ZVK_SEARCH_ZONED = 16,              /**< zoned, zone 3; negative: bit 0x40 of the sign byte */
    ZVK_SEARCH_ZONED_EBCDIC = 17,       /**< zoned, zone F; negative: zone D */
    ZVK_SEARCH_PACKED = 32,             /**< sign nibbles B and D are negative */
    ZVK_SEARCH_BINARY = 64,             /**< two's complement, low byte first */
    ZVK_SEARCH_BINARY_BIG = 65,         /**< two's complement, high byte first */
    ZVK_SEARCH_FLOAT = 96,              /**< sign in the top bit, low byte first */
    ZVK_SEARCH_FLOAT_BIG = 97,          /**< the same, high byte first */
    ZVK_SEARCH_DESCENDING = 0x80        /**< added to any of them */
};

/** Form of an argument's sign and of its key's. */
enum { ZVK_SEARCH_SIGN_SEPARATE = 0x10, ZVK_SEARCH_SIGN_LEADING = 0x20 };

typedef struct SearchKey {
    uint8_t type;
    uint8_t reserved1[3];
    uint32_t length; /**< bytes, at most 255 */
    uint64_t offset; /**< within an entry */
} __attribute__((packed)) SearchKey;

ZVK_AT(SearchKey, length, 4);
ZVK_AT(SearchKey, offset, 8);
ZVK_STATIC_ASSERT(sizeof(SearchKey) == 16, "SearchKey");

typedef struct SearchHeader {
    uint16_t baseOffset; /**< from the table's address to its first entry */
    int16_t keyCount;    /**< records in `keys` */
    /** Arguments; their lengths follow `keys`, 64 bits each, then their forms, 8 bits each. */
    int16_t argumentCount;
    uint16_t reserved6;
    SearchKey keys[1];
} __attribute__((packed)) SearchHeader;

ZVK_AT(SearchHeader, keyCount, 2);
ZVK_AT(SearchHeader, argumentCount, 4);
ZVK_AT(SearchHeader, keys, 8);

typedef struct SearchArgument {
    const void *value; /**< as many bytes as its length says */
    const void *item;  /**< the full item that the value lies in; not looked at */
} SearchArgument;

ZVK_STATIC_ASSERT(sizeof(SearchArgument) == 16, "SearchArgument");

/**
 * Searches the table, which is ordered by its keys.
 *
 * An argument that is longer than its key can match only if its excess is padding: blanks at the
 * end, leading zeros of a number. A shorter one is padded.
 *
 * @param entries   number of entries
 * @param stride    bytes from one entry to the next
 * @param reserved  not looked at
 * @param alphabet  null or without weights: alphanumeric keys compare by bytes
 * @return byte offset of the entry from the first one; -1 if none has these keys. Of entries with
 *         equal keys the one that the halving meets first
 * @threads any
 */
ZVK_EXPORT int64_t _zvkcSrchAll(const SearchHeader *header, uint8_t *table, int64_t entries, uint64_t stride,
                                const SearchArgument *arguments, uint64_t *reserved, const AlphabetRecord *alphabet);

ZVK_END_DECLS

#endif
