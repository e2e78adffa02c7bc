// SEARCH ALL.
//
// The arguments are made ready once (search_key.h). The loop then halves the table; both entries
// that the next step may look at are fetched while this one is compared. One key, the usual case,
// has a loop of its own around the comparison of its type.
#include <algorithm>
#include <cstring>

#include "chardata/collating.h"
#include "chardata/work_area.h"
#include "verbs/search_key.h"

namespace {

constexpr size_t kKeysOnStack = 4;

struct Table {
    const uint8_t *first;
    int64_t entries;
    uint64_t stride;

    const uint8_t *entry(int64_t index) const { return first + static_cast<uint64_t>(index) * stride; }
};

// `compare` tells how an entry is to the arguments, in the table's own sense.
template <class Compare>
int64_t halve(const Table &table, uint64_t keyOffset, Compare compare)
{
    int64_t low = 0, high = table.entries - 1;
    uintptr_t keys = reinterpret_cast<uintptr_t>(table.first) + keyOffset;
    while (low <= high) {
        int64_t mid = low + ((high - low) >> 1);
        int64_t below = low + ((mid - 1 - low) >> 1), above = mid + 1 + ((high - mid - 1) >> 1);
        __builtin_prefetch(reinterpret_cast<const void *>(keys + static_cast<uint64_t>(below) * table.stride));
        __builtin_prefetch(reinterpret_cast<const void *>(keys + static_cast<uint64_t>(above) * table.stride));
        int order = compare(table.entry(mid));
        if (order == 0) return static_cast<int64_t>(static_cast<uint64_t>(mid) * table.stride);
        low = order > 0 ? low : mid + 1;
        high = order > 0 ? mid - 1 : high;
    }
    return -1;
}

int inSense(const PreparedKey &key, int order) { return key.descending ? -order : order; }

// Texts of up to sixteen bytes are numbers to compare; of longer ones most differ within sixteen.
int64_t searchText(const Table &table, const PreparedKey &key)
{
    using bcd::u128;
    constexpr size_t words = sizeof(u128);
    u128 turn = key.descending ? ~u128{0} : 0,
         argument = bcd::loadItem(key.argument, std::min(key.length, words)) ^ turn;
    if (key.length <= words) {
        return halve(table, key.offset, [=, offset = key.offset, bytes = key.length](const uint8_t *entry) {
            u128 word = bcd::loadItem(entry + offset, bytes) ^ turn;
            return (word > argument) - (word < argument);
        });
    }
    const uint8_t *rest = key.argument + words;
    size_t length = key.length - words;
    return halve(table, key.offset, [&](const uint8_t *entry) {
        const uint8_t *text = entry + key.offset;
        u128 word = bcd::loadItem(text, words) ^ turn;
        if (word != argument) return word > argument ? 1 : -1;
        return inSense(key, memcmp(text + words, rest, length));
    });
}

int64_t searchPacked(const Table &table, const PreparedKey &key)
{
    // Complementing all words turns the order around.
    uint64_t turn = key.descending ? ~uint64_t{0} : 0, argument = static_cast<uint64_t>(key.word) ^ turn;
    return halve(table, key.offset, [&](const uint8_t *entry) {
        uint64_t word = zvkPackedOrder<uint64_t>(entry + key.offset, key.length) ^ turn;
        return (word > argument) - (word < argument);
    });
}

int64_t searchOne(const Table &table, const PreparedKey &key)
{
    if (key.type <= ZVK_SEARCH_ALPHANUMERIC_EBCDIC && !key.weights && key.length > 0) return searchText(table, key);
    if (key.type == ZVK_SEARCH_PACKED && key.length > 0 && key.length <= 8) return searchPacked(table, key);
    return halve(table, key.offset,
                 [&](const uint8_t *entry) { return inSense(key, key.compare(key, entry + key.offset)); });
}

int64_t searchSeveral(const Table &table, const PreparedKey *keys, size_t count)
{
    return halve(table, count > 0 ? keys->offset : 0, [=](const uint8_t *entry) {
        for (const PreparedKey *key = keys; key < keys + count; key++)
            if (int order = key->compare(*key, entry + key->offset)) return inSense(*key, order);
        return 0;
    });
}

// What follows the keys in the header.
struct ArgumentForms {
    const uint8_t *lengths, *forms;

    explicit ArgumentForms(const SearchHeader &header)
    {
        size_t keys = static_cast<size_t>(std::max<int16_t>(header.keyCount, 0));
        size_t arguments = static_cast<size_t>(std::max<int16_t>(header.argumentCount, 0));
        lengths = reinterpret_cast<const uint8_t *>(&header) + offsetof(SearchHeader, keys) + keys * sizeof(SearchKey);
        forms = lengths + arguments * sizeof(uint64_t);
    }
    uint64_t length(size_t i) const { return load<uint64_t>(lengths + i * sizeof(uint64_t)); }
};

} // namespace

extern "C" int64_t _zvkcSrchAll(const SearchHeader *header, uint8_t *base, int64_t entries, uint64_t stride,
                                const SearchArgument *arguments, uint64_t *, const AlphabetRecord *alphabet)
{
    if (entries < 1) return -1;
    size_t count =
        static_cast<size_t>(std::max<int16_t>(std::min<int16_t>(header->keyCount, header->argumentCount), 0));
    WorkArea<kKeysOnStack * sizeof(PreparedKey)> area(count * sizeof(PreparedKey));
    auto *keys = reinterpret_cast<PreparedKey *>(area.data());
    if (!keys) return -1;

    const ArgumentForms given(*header);
    const uint8_t *weights = zvkWeights(alphabet);
    for (size_t i = 0; i < count; i++)
        if (!zvkPrepareKey(keys[i], header->keys[i], static_cast<const uint8_t *>(arguments[i].value), given.length(i),
                           given.forms[i], weights))
            return -1;

    const Table table = {base + header->baseOffset, entries, stride};
    return count == 1 ? searchOne(table, *keys) : searchSeveral(table, keys, count);
}
