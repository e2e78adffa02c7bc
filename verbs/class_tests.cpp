// Class conditions of items of single bytes, and of packed and zoned numbers.
//
// The alphabetic classes are ranges, so sixteen bytes are tested at once. A class of the program's
// own is a table: its entries are or-ed together, with one test for eight of them. Numbers go
// through the validators of decimal operands.
#include "base/signed_length.h"
#include "decimal/mode.h"
#include "decimal/numeric_view.h"
#include "decimal/validation.h"
#include "decimal/words.h"
#include "kvr2/conditions.h"

namespace {

// A letter has these bits set after `fold` is or-ed in: both cases in one, or one of them.
struct Letters {
    uint8_t fold, first;
};
constexpr Letters kBothCases = {0x20, 'a'}, kUpper = {0, 'A'}, kLower = {0, 'a'};

// T is a byte or a vector of bytes; nonzero where the byte is neither letter nor blank.
template <class T>
auto isOutside(T bytes, Letters letters)
{
    return (static_cast<T>((bytes | letters.fold) - letters.first) > 25) & (bytes != ' ');
}

using Vector = uint8_t __attribute__((vector_size(16)));
using Halves = uint64_t __attribute__((vector_size(16)));

bool vectorIsOutside(const uint8_t *at, Letters letters)
{
    auto outside = isOutside(load<Vector>(at), letters);
    auto halves = reinterpret_cast<Halves>(outside);
    return (halves[0] | halves[1]) != 0;
}

int32_t isAlphabetic(const uint8_t *item, int32_t signedLength, Letters letters)
{
    size_t length = plainLength(signedLength), i = 0;
    if (length >= sizeof(Vector)) {
        for (; i + sizeof(Vector) <= length; i += sizeof(Vector))
            if (vectorIsOutside(item + i, letters)) return 0;
        // The rest together with some bytes that have been tested.
        return !vectorIsOutside(item + length - sizeof(Vector), letters);
    }
    for (; i < length; i++)
        if (isOutside<uint8_t>(item[i], letters)) return 0;
    return 1;
}

// Zone 3 in every byte, and still after six is added to each digit.
inline uint64_t isNoDigit(uint64_t bytes)
{
    return ((bytes ^ bcd::all<uint64_t>(0x30)) | ((bytes + bcd::all<uint64_t>(0x06)) ^ bcd::all<uint64_t>(0x30))) &
           bcd::all<uint64_t>(0xF0);
}

// Digits and nothing else, of an item of eight bytes or more, as words, of which the last overlaps.
bool arePlainDigits(const uint8_t *digits, size_t length)
{
    uint64_t bad = isNoDigit(load<uint64_t>(digits)) | isNoDigit(load<uint64_t>(digits + length - 8));
    for (size_t i = 8; i + 8 < length; i += 8) bad |= isNoDigit(load<uint64_t>(digits + i));
    return bad == 0;
}

// Digits that carry no sign, by the strict check of decimal operands.
bool areDigits(const uint8_t *digits, size_t length)
{
    return zvkBcdCheckZoned(digits, static_cast<int32_t>(length), kCheckStrict) == 0;
}

} // namespace

extern "C" {

int32_t _zvkcClasAlpha(const uint8_t *item, int32_t length) { return isAlphabetic(item, length, kBothCases); }
int32_t _zvkcClasAlphaUpper(const uint8_t *item, int32_t length) { return isAlphabetic(item, length, kUpper); }
int32_t _zvkcClasAlphaLower(const uint8_t *item, int32_t length) { return isAlphabetic(item, length, kLower); }

int32_t _zvkcClasUserDef(const uint8_t *item, int32_t signedLength, const uint8_t *table)
{
    size_t length = plainLength(signedLength), i = 0;
    for (; i + 8 <= length; i += 8) {
        unsigned outside = 0;
        for (size_t j = i; j < i + 8; j++) outside |= table[item[j]];
        if (outside) return 0;
    }
    for (; i < length; i++)
        if (table[item[i]]) return 0;
    return 1;
}

int32_t _zvkcClasPackedDec(const uint8_t *item, int32_t digits)
{
    return digits < 1 || zvkBcdCheckPacked(item, digits, kCheckStrict) == 0;
}

int32_t _zvkcClasZonedDec(uint32_t word, const uint8_t *item, int32_t signedLength)
{
    size_t length = plainLength(signedLength);
    // Plain digits pass every check below.
    if (length >= 8 && arePlainDigits(item, length)) return 1;
    uint32_t place = word & 0xFF;
    bool strict = (word >> 8 & 0xFF) != 0,
         embedded = place == ZVK_CLASS_SIGN_LEADING || place == ZVK_CLASS_SIGN_TRAILING;
    // With the EBCDIC convention a letter carries the sign; the validator knows it at either end.
    if (!embedded || length == 0 || bcd::mode() & ZVK_BCD_EBCDIC) return areDigits(item, length);

    bool leading = place == ZVK_CLASS_SIGN_LEADING;
    uint8_t sign = leading ? item[0] : item[length - 1];
    if ((sign & 0x0F) > 9 || (strict && (sign & 0xB0) != 0x30)) return 0;
    return areDigits(leading ? item + 1 : item, length - 1);
}
}
