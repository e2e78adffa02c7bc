// Keys of SEARCH ALL: a search argument made ready, and the comparison of an entry's key with it.
//
// An argument is first brought to the length of its key, in the key's own form, so that one routine
// reads both. A numeric key becomes a word whose unsigned order is the order of the numbers:
//
//     packed 12 3C, -12.3 as 12 3D     magnitude 123     top bit set: +    all bits turned: -
//
//     -123  ->  0x7F...FEDC     0  ->  0x80...0000     +123  ->  0x80...0123
//
// A negative zero is zero. Numbers that are too long for a word are compared digit by digit, and
// text by bytes, by weights or by UTF-16 units.
#pragma once

#include <cstddef>
#include <cstdint>

#include "decimal/words.h"
#include "kvr2/search_all.h"

inline constexpr size_t kMostKeyBytes = 255;

struct PreparedKey {
    const uint8_t *argument; // of the key's length and form
    size_t length;
    uint64_t offset;
    uint8_t type; // without ZVK_SEARCH_DESCENDING
    uint8_t form;
    bool descending;
    const uint8_t *weights; // of alphanumeric keys, or null
    bcd::u128 word;         // the argument's, for keys that fit a word
    // Below 0, 0, above 0 as the entry's key is less than, equal to or greater than the argument,
    // in ascending sense.
    int (*compare)(const PreparedKey &key, const uint8_t *entryKey);
    uint8_t fitted[kMostKeyBytes + 1]; // room for the argument where its length is not the key's
};

// False if no entry can match.
bool zvkPrepareKey(PreparedKey &key, const SearchKey &given, const uint8_t *argument, uint64_t length, uint8_t form,
                   const uint8_t *weights);

// The order word of a packed number of up to sizeof(Word) bytes.
template <class Word>
inline Word zvkPackedOrder(const uint8_t *item, size_t length)
{
    Word word = bcd::loadAs<Word>(item, length), magnitude = word >> 4;
    unsigned sign = static_cast<unsigned>(word) & 0x0F;
    bool negative = (sign == 0x0D || sign == 0x0B) && magnitude != 0;
    constexpr Word top = Word{1} << (8 * sizeof(Word) - 1);
    return (magnitude | top) ^ (negative ? ~Word{0} : Word{0});
}
