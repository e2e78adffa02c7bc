// Making search arguments ready, and comparing keys; see search_key.h.
#include "verbs/search_key.h"

#include <algorithm>

#include "chardata/collating.h"
#include "decimal/numeric_view.h"

namespace {

using bcd::u128;

int order(int64_t left, int64_t right) { return (left > right) - (left < right); }

template <class Word>
constexpr Word kTop = Word{1} << (8 * sizeof(Word) - 1);

bool isOdd(uint8_t type) { return (type & 1) != 0; }

// --- Zoned and national numbers

template <class Unit>
NumericView<const uint8_t> viewKey(const PreparedKey &key, const uint8_t *item, size_t length)
{
    return viewNumber<Unit>(
        item, length, signPlace((key.form & ZVK_SEARCH_SIGN_SEPARATE) != 0, (key.form & ZVK_SEARCH_SIGN_LEADING) != 0));
}

bool isNegative(const PreparedKey &key, uint8_t sign)
{
    bool ebcdic = key.type == ZVK_SEARCH_ZONED_EBCDIC;
    if (key.form & ZVK_SEARCH_SIGN_SEPARATE) return sign == (ebcdic ? 0x60 : '-');
    return ebcdic ? (sign & 0xF0) == 0xD0 : (sign & 0x40) != 0;
}

template <class Word>
Word zonedOrder(const PreparedKey &key, const uint8_t *item)
{
    auto number = viewKey<SingleByte>(key, item, key.length);
    if (number.length == 0) return kTop<Word>;
    Word magnitude = bcd::loadAs<Word>(number.digits, number.length) & bcd::all<Word>(0x0F);
    bool negative = isNegative(key, *number.sign) && magnitude != 0;
    return (magnitude | kTop<Word>)^(negative ? ~Word{0} : Word{0});
}

// --- Binary and floating numbers, up to a word

template <class Word>
Word loadBytes(const PreparedKey &key, const uint8_t *item)
{
    if (isOdd(key.type)) return bcd::loadAs<Word>(item, key.length);
    Word word = 0;
    memcpy(&word, item, key.length);
    return word;
}

template <class Word>
Word binaryOrder(const PreparedKey &key, const uint8_t *item)
{
    // The sign goes to the top bit; what is shifted in below is the same for all.
    return (loadBytes<Word>(key, item) << (8 * (sizeof(Word) - key.length))) ^ kTop<Word>;
}

template <class Word>
Word floatOrder(const PreparedKey &key, const uint8_t *item)
{
    Word bits = loadBytes<Word>(key, item) << (8 * (sizeof(Word) - key.length));
    if (bits == kTop<Word>) bits = 0; // a negative zero
    return bits & kTop<Word> ? ~bits : bits | kTop<Word>;
}

template <class Word>
Word packedOrder(const PreparedKey &key, const uint8_t *item)
{
    return zvkPackedOrder<Word>(item, key.length);
}

template <class Word, Word (*orderOf)(const PreparedKey &, const uint8_t *)>
int compareWord(const PreparedKey &key, const uint8_t *entryKey)
{
    Word word = orderOf(key, entryKey), argument = static_cast<Word>(key.word);
    return (word > argument) - (word < argument);
}

template <class Word, Word (*orderOf)(const PreparedKey &, const uint8_t *)>
void useWord(PreparedKey &key)
{
    key.word = orderOf(key, key.argument);
    key.compare = compareWord<Word, orderOf>;
}

// --- Longer numbers: sign and magnitude, or two's complement, byte by byte from the most
// significant

struct LongNumber {
    const uint8_t *first; // most significant
    ptrdiff_t step;
    size_t count;
    uint8_t firstMask, mask, lastMask; // the bits of a byte that belong to the magnitude
    bool negative;

    uint8_t at(size_t i) const
    {
        uint8_t wanted = i == 0 ? firstMask : mask;
        if (i + 1 == count) wanted &= lastMask;
        return first[static_cast<ptrdiff_t>(i) * step] & wanted;
    }
    bool isZero() const
    {
        for (size_t i = 0; i < count; i++)
            if (at(i)) return false;
        return true;
    }
};

LongNumber longNumber(const PreparedKey &key, const uint8_t *item)
{
    if (key.type == ZVK_SEARCH_PACKED) {
        uint8_t sign = item[key.length - 1] & 0x0F;
        return {item, 1, key.length, 0xFF, 0xFF, 0xF0, sign == 0x0D || sign == 0x0B};
    }
    if (key.type == ZVK_SEARCH_FLOAT || key.type == ZVK_SEARCH_FLOAT_BIG) {
        bool big = isOdd(key.type);
        const uint8_t *first = big ? item : item + key.length - 1;
        return {first, big ? 1 : -1, key.length, 0x7F, 0xFF, 0xFF, (*first & 0x80) != 0};
    }
    if (key.type == ZVK_SEARCH_NATIONAL_NUMERIC) {
        auto number = viewKey<Utf16>(key, item, wholeBytes<Utf16>(key.length));
        // Only a separate sign is known in national digits.
        bool negative = key.form & ZVK_SEARCH_SIGN_SEPARATE && number.sign && Utf16::load(number.sign) == '-';
        return {number.digits, 2, number.length / 2, 0x0F, 0x0F, 0x0F, negative};
    }
    auto number = viewKey<SingleByte>(key, item, key.length);
    return {number.digits, 1, number.length, 0x0F, 0x0F, 0x0F, number.sign && isNegative(key, *number.sign)};
}

int compareLong(const PreparedKey &key, const uint8_t *entryKey)
{
    LongNumber entry = longNumber(key, entryKey), argument = longNumber(key, key.argument);
    bool entryMinus = entry.negative && !entry.isZero(), argumentMinus = argument.negative && !argument.isZero();
    if (entryMinus != argumentMinus) return entryMinus ? -1 : 1;
    for (size_t i = 0; i < entry.count; i++)
        if (int difference = order(entry.at(i), argument.at(i))) return entryMinus ? -difference : difference;
    return 0;
}

int compareLongBinary(const PreparedKey &key, const uint8_t *entryKey)
{
    for (size_t i = 0; i < key.length; i++) {
        size_t at = isOdd(key.type) ? i : key.length - 1 - i;
        uint8_t turn = i == 0 ? 0x80 : 0;
        if (int difference = order(entryKey[at] ^ turn, key.argument[at] ^ turn)) return difference;
    }
    return 0;
}

// --- Text

int compareBytes(const PreparedKey &key, const uint8_t *entryKey) { return memcmp(entryKey, key.argument, key.length); }

int compareWeights(const PreparedKey &key, const uint8_t *entryKey)
{
    return zvkCompareWeighted(entryKey, key.argument, key.length, key.weights);
}

int compareUnits(const PreparedKey &key, const uint8_t *entryKey)
{
    TextCursor<Utf16> entry(entryKey, key.length), argument(key.argument, key.length);
    while (!entry.ended())
        if (int difference = order(entry.take(), argument.take())) return difference;
    return 0;
}

// --- Arguments of another length

uint8_t blankOf(uint8_t type) { return isOdd(type) ? 0x40 : ' '; }

bool fitText(PreparedKey &key, const uint8_t *argument, size_t length)
{
    uint8_t blank = blankOf(key.type);
    for (size_t i = key.length; i < length; i++)
        if (key.weights ? key.weights[argument[i]] != key.weights[blank] : argument[i] != blank) return false;
    memcpy(key.fitted, argument, std::min(length, key.length));
    if (length < key.length) memset(key.fitted + length, blank, key.length - length);
    return true;
}

bool fitNational(PreparedKey &key, const uint8_t *argument, size_t length)
{
    if (length > key.length)
        for (TextCursor<Utf16> excess(argument + key.length, length - key.length); !excess.ended();)
            if (excess.take() != ' ') return false;
    memcpy(key.fitted, argument, std::min(length, key.length));
    if (length < key.length) fillPairs(key.fitted + length, key.length - length, {' ', 0}, ' ');
    return true;
}

bool allPadding(const uint8_t *bytes, size_t length, uint8_t padding)
{
    for (size_t i = 0; i < length; i++)
        if (bytes[i] != padding) return false;
    return true;
}

// The low-order bytes; what is missing in front, or too much, is padding.
bool fitRight(uint8_t *to, size_t size, const uint8_t *bytes, size_t length, uint8_t padding)
{
    if (length > size && !allPadding(bytes, length - size, padding)) return false;
    size_t kept = std::min(length, size);
    memset(to, padding, size - kept);
    memcpy(to + size - kept, bytes + length - kept, kept);
    return true;
}

bool fitZoned(PreparedKey &key, const uint8_t *argument, size_t length)
{
    uint8_t zone = key.type == ZVK_SEARCH_ZONED_EBCDIC ? 0xF0 : 0x30;
    auto from = viewKey<SingleByte>(key, argument, length);
    auto to = viewNumber<SingleByte>(
        key.fitted, key.length,
        signPlace((key.form & ZVK_SEARCH_SIGN_SEPARATE) != 0, (key.form & ZVK_SEARCH_SIGN_LEADING) != 0));
    if (!from.sign || !to.sign) return false;
    bool separate = key.form & ZVK_SEARCH_SIGN_SEPARATE, leading = key.form & ZVK_SEARCH_SIGN_LEADING;
    if (separate || !leading) {
        if (!fitRight(to.digits, to.length, from.digits, from.length, zone)) return false;
        if (separate) *to.sign = *from.sign;
        return true;
    }
    // The sign sits in the first digit, which moves or goes: the digits are made plain, and the new
    // first one gets the sign.
    bool negative = isNegative(key, *from.sign);
    uint8_t first = static_cast<uint8_t>(zone | (*from.sign & 0x0F));
    if (length > key.length) {
        if (first != zone || !fitRight(to.digits, to.length, from.digits + 1, from.length - 1, zone)) return false;
    } else {
        fitRight(to.digits, to.length, from.digits, from.length, zone);
        to.digits[to.length - from.length] = first;
    }
    if (negative) *to.sign = static_cast<uint8_t>(zone == 0xF0 ? 0xD0 | (*to.sign & 0x0F) : *to.sign | 0x40);
    return true;
}

bool fitNationalNumber(PreparedKey &key, const uint8_t *argument, size_t length)
{
    bool separate = key.form & ZVK_SEARCH_SIGN_SEPARATE, leading = key.form & ZVK_SEARCH_SIGN_LEADING;
    SignPlace place = separate ? signPlace(true, leading) : SignPlace::None;
    auto from = viewNumber<Utf16>(argument, wholeBytes<Utf16>(length), place);
    auto to = viewNumber<Utf16>(key.fitted, wholeBytes<Utf16>(key.length), place);
    size_t kept = std::min(from.length, to.length);
    for (TextCursor<Utf16> excess(from.digits, from.length - kept); !excess.ended();)
        if (excess.take() != '0') return false;
    fillPairs(to.digits, to.length - kept, {'0', 0}, '0');
    memcpy(to.digits + to.length - kept, from.digits + from.length - kept, kept);
    if (separate && from.sign && to.sign) Utf16::store(to.sign, Utf16::load(from.sign));
    return true;
}

bool fitBinary(PreparedKey &key, const uint8_t *argument, size_t length)
{
    bool big = isOdd(key.type);
    uint8_t top = length == 0 ? uint8_t{0} : big ? argument[0] : argument[length - 1];
    uint8_t extension = top & 0x80 ? 0xFF : 0x00;
    if (big) {
        if (!fitRight(key.fitted, key.length, argument, length, extension)) return false;
    } else {
        if (length > key.length && !allPadding(argument + key.length, length - key.length, extension)) return false;
        size_t kept = std::min(length, key.length);
        memcpy(key.fitted, argument, kept);
        memset(key.fitted + kept, extension, key.length - kept);
    }
    // The sign of what is left must be that of the argument.
    return key.length == 0 || ((big ? key.fitted[0] : key.fitted[key.length - 1]) & 0x80) == (extension & 0x80);
}

bool fit(PreparedKey &key, const uint8_t *argument, size_t length)
{
    if (key.length > kMostKeyBytes) return false;
    switch (key.type) {
    case ZVK_SEARCH_NATIONAL:
        return fitNational(key, argument, length);
    case ZVK_SEARCH_NATIONAL_NUMERIC:
        return fitNationalNumber(key, argument, length);
    case ZVK_SEARCH_NUMERIC:
    case ZVK_SEARCH_ZONED:
    case ZVK_SEARCH_ZONED_EBCDIC:
        return fitZoned(key, argument, length);
    case ZVK_SEARCH_PACKED:
        return fitRight(key.fitted, key.length, argument, length, 0);
    case ZVK_SEARCH_BINARY:
    case ZVK_SEARCH_BINARY_BIG:
        return fitBinary(key, argument, length);
    case ZVK_SEARCH_FLOAT:
    case ZVK_SEARCH_FLOAT_BIG:
        return false; // a float of another size is another format
    default:
        return fitText(key, argument, length);
    }
}

void chooseComparison(PreparedKey &key)
{
    size_t length = key.length;
    switch (key.type) {
    case ZVK_SEARCH_NATIONAL:
        key.compare = compareUnits;
        break;
    case ZVK_SEARCH_NATIONAL_NUMERIC:
        key.compare = compareLong;
        break;
    case ZVK_SEARCH_NUMERIC:
    case ZVK_SEARCH_ZONED:
    case ZVK_SEARCH_ZONED_EBCDIC:
        if (length <= 8) return useWord<uint64_t, zonedOrder>(key);
        if (length <= 16) return useWord<u128, zonedOrder>(key);
        key.compare = compareLong;
        break;
    case ZVK_SEARCH_PACKED:
        if (length <= 8) return useWord<uint64_t, packedOrder>(key);
        if (length <= 16) return useWord<u128, packedOrder>(key);
        key.compare = compareLong;
        break;
    case ZVK_SEARCH_BINARY:
    case ZVK_SEARCH_BINARY_BIG:
        if (length <= 8) return useWord<uint64_t, binaryOrder>(key);
        if (length <= 16) return useWord<u128, binaryOrder>(key);
        key.compare = compareLongBinary;
        break;
    case ZVK_SEARCH_FLOAT:
    case ZVK_SEARCH_FLOAT_BIG:
        if (length <= 8) return useWord<uint64_t, floatOrder>(key);
        if (length <= 16) return useWord<u128, floatOrder>(key);
        key.compare = compareLong;
        break;
    default:
        key.compare = key.weights ? compareWeights : compareBytes;
    }
}

} // namespace

bool zvkPrepareKey(PreparedKey &key, const SearchKey &given, const uint8_t *argument, uint64_t length, uint8_t form,
                   const uint8_t *weights)
{
    key.type = given.type & static_cast<uint8_t>(~ZVK_SEARCH_DESCENDING);
    key.descending = given.type & ZVK_SEARCH_DESCENDING;
    key.length = given.length;
    key.offset = given.offset;
    key.form = form;
    key.weights = weights;
    key.argument = argument;
    if (length != key.length) {
        if (!fit(key, argument, length)) return false;
        key.argument = key.fitted;
    }
    // A key without a byte is equal to anything.
    if (key.length == 0)
        key.compare = compareBytes;
    else
        chooseComparison(key);
    return true;
}
