// Class conditions of national items.
#include "base/signed_length.h"
#include "decimal/numeric_view.h"
#include "kvr2/conditions.h"

namespace {

using Vector = uint16_t __attribute__((vector_size(16)));
using Halves = uint64_t __attribute__((vector_size(16)));

// What is outside of a class, for one unit or for a vector of them.
struct OutsideDigits {
    template <class T>
    static auto of(T units)
    {
        return static_cast<T>(units - '0') > 9;
    }
};

template <uint16_t fold, uint16_t first>
struct OutsideLetters {
    template <class T>
    static auto of(T units)
    {
        return (static_cast<T>((units | fold) - first) > 25) & (units != ' ');
    }
};

template <class Outside>
int32_t allInside(const uint8_t *item, size_t length)
{
    size_t i = 0;
    for (; i + sizeof(Vector) <= length; i += sizeof(Vector)) {
        auto halves = reinterpret_cast<Halves>(Outside::of(load<Vector>(item + i)));
        if (halves[0] | halves[1]) return 0;
    }
    for (TextCursor<Utf16> units(item + i, length - i); !units.ended();)
        if (Outside::of(units.take())) return 0;
    return 1;
}

bool hasNonzeroDigit(const uint8_t *digits, size_t length)
{
    for (TextCursor<Utf16> units(digits, length); !units.ended();)
        if (units.take() != '0') return true;
    return false;
}

} // namespace

extern "C" {

int32_t _zvkuClasNumeric(const uint8_t *item, int32_t length)
{
    return allInside<OutsideDigits>(item, plainLength(length));
}

int32_t _zvkuSClasNumeric(uint32_t word, const uint8_t *item, int32_t signedLength)
{
    size_t length = wholeBytes<Utf16>(plainLength(signedLength));
    if (length == 0) return 1;
    uint32_t place = word & 0xFF;
    bool positive = (word >> 8 & 0xFF) != 0;
    auto number = viewNumber<Utf16>(item, length,
                                    place == ZVK_CLASS_SIGN_LEADING_SEPARATE    ? SignPlace::LeadingSeparate
                                    : place == ZVK_CLASS_SIGN_TRAILING_SEPARATE ? SignPlace::TrailingSeparate
                                                                                : SignPlace::None);
    if (!allInside<OutsideDigits>(number.digits, number.length)) return 0;
    if (!number.sign) return !positive || hasNonzeroDigit(number.digits, number.length);
    uint16_t sign = Utf16::load(number.sign);
    // A zero with "+" counts as positive.
    return sign == '+' || (sign == '-' && !positive);
}

int32_t _zvkuClasAlpha(const uint8_t *item, int32_t length)
{
    return allInside<OutsideLetters<0x20, 'a'>>(item, plainLength(length));
}
int32_t _zvkuClasUpper(const uint8_t *item, int32_t length)
{
    return allInside<OutsideLetters<0, 'A'>>(item, plainLength(length));
}
int32_t _zvkuClasLower(const uint8_t *item, int32_t length)
{
    return allInside<OutsideLetters<0, 'a'>>(item, plainLength(length));
}
}
