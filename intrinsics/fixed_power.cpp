// The operator `**` in fixed point, on digit strings.
//
// The power is computed exactly, by squaring and multiplying over the bits of the exponent, as an
// integer of up to 62 digits and a count of decimal places: 1.5 ** 3 is 15 ** 3 = 3375 with three
// places. The integer lies in four limbs to the base 10^16, least first, so that products of limbs
// and carries fit 128 bits. A power of more digits keeps its first 62 and is reported.
//
// A negative exponent takes the reciprocal by long division, to the result's places.
#include <cstring>

#include "decimal/float_forms.h"
#include "intrinsics/power_errors.h"
#include "kvr2/exponentiation.h"

namespace {

using floats::digitCount;
using floats::kIntegerPower;
using u128 = unsigned __int128;

constexpr uint64_t kLimb = 10'000'000'000'000'000u; // 10^16
constexpr int kLimbDigits = 16, kLimbs = 4, kPlaces = 62;
constexpr int kMostBaseDigits = 31;

// Any byte has a digit.
unsigned digitOf(uint8_t byte) { return (byte & 0x0F) > 9 ? 0 : byte & 0x0F; }

// What follows a sign byte, without the zeros before it; the last digit stays.
struct Digits {
    const uint8_t *first;
    int count;
};

Digits strip(const uint8_t *number, int count)
{
    const uint8_t *first = number + 1;
    for (; count > 1 && digitOf(*first) == 0; count--) first++;
    return {first, count};
}

// limbs times 10^-places.
struct Power {
    uint64_t limbs[kLimbs];
    int64_t places;
};

template <size_t Size>
int countDigits(const uint64_t (&limbs)[Size])
{
    size_t top = Size;
    while (top && limbs[top - 1] == 0) top--;
    return top ? static_cast<int>(top - 1) * kLimbDigits + digitCount(limbs[top - 1]) : 0;
}

unsigned digitAt(const Power &power, int64_t place)
{
    if (place < 0 || place >= kLimbs * kLimbDigits) return 0;
    uint64_t limb = power.limbs[place / kLimbDigits];
    return static_cast<unsigned>(limb / static_cast<uint64_t>(kIntegerPower[place % kLimbDigits]) % 10);
}

// Drops low-order digits of a product, so that kPlaces remain.
template <size_t Size>
void dropDigits(uint64_t (&limbs)[Size], int drop)
{
    const auto whole = static_cast<size_t>(drop / kLimbDigits);
    const auto divisor = static_cast<uint64_t>(kIntegerPower[static_cast<size_t>(drop % kLimbDigits)]);
    const uint64_t multiplier = kLimb / divisor;
    for (size_t i = 0; i < Size; i++) {
        uint64_t low = i + whole < Size ? limbs[i + whole] : 0;
        uint64_t high = i + whole + 1 < Size ? limbs[i + whole + 1] : 0;
        limbs[i] = low / divisor + (divisor > 1 ? high % divisor * multiplier : 0);
    }
}

// False when the product had more digits than there are places.
bool multiply(Power &to, const Power &by)
{
    uint64_t product[2 * kLimbs] = {};
    for (int i = 0; i < kLimbs; i++) {
        if (to.limbs[i] == 0) continue;
        uint64_t carry = 0;
        for (int j = 0; j < kLimbs; j++) {
            u128 sum = u128{to.limbs[i]} * by.limbs[j] + product[i + j] + carry;
            carry = static_cast<uint64_t>(sum / kLimb);
            product[i + j] = static_cast<uint64_t>(sum - u128{carry} * kLimb);
        }
        product[i + kLimbs] = carry;
    }
    to.places += by.places;
    int excess = countDigits(product) - kPlaces;
    if (excess > 0) {
        dropDigits(product, excess);
        to.places -= excess;
    }
    memcpy(to.limbs, product, sizeof to.limbs);
    return excess <= 0;
}

// Below 10^18, so that ten times it fits the word, too.
bool isOneWord(const Power &power) { return power.limbs[1] < 100 && power.limbs[2] == 0 && power.limbs[3] == 0; }
uint64_t oneWord(const Power &power) { return power.limbs[0] + power.limbs[1] * kLimb; }

// The remainder of the long division: below ten times a power, so it needs a limb more at most.
struct Remainder {
    uint64_t limbs[kLimbs + 1] = {};

    void timesTen()
    {
        uint64_t carry = 0;
        for (uint64_t &limb : limbs) {
            limb = limb * 10 + carry;
            carry = limb / kLimb;
            limb -= carry * kLimb;
        }
    }
    bool holds(const Power &power) const
    {
        if (limbs[kLimbs]) return true;
        for (int i = kLimbs - 1; i >= 0; i--)
            if (limbs[i] != power.limbs[i]) return limbs[i] > power.limbs[i];
        return true;
    }
    void subtract(const Power &power)
    {
        uint64_t borrow = 0;
        for (int i = 0; i <= kLimbs; i++) {
            uint64_t take = (i < kLimbs ? power.limbs[i] : 0) + borrow;
            borrow = limbs[i] < take;
            limbs[i] += (borrow ? kLimb : 0) - take;
        }
    }
};

bool isPowerOfTen(const Power &power, int length)
{
    for (int place = 0; place < length - 1; place++)
        if (digitAt(power, place) != 0) return false;
    return digitAt(power, length - 1) == 1;
}

// The digits of a result, by their places from the right; those outside the item are dropped.
struct Field {
    uint8_t *digits;
    int count;

    void put(int64_t place, unsigned digit) const
    {
        if (place >= 0 && place < count) digits[count - 1 - place] = static_cast<uint8_t>('0' + digit);
    }
    bool isZero() const
    {
        for (int i = 0; i < count; i++)
            if (digits[i] != '0') return false;
        return true;
    }
};

// How many places the quotient 10^zeros / power has; below 1: it is a fraction.
int64_t quotientLength(const Power &power, int64_t zeros)
{
    const int length = countDigits(power.limbs);
    return zeros - length + 1 + isPowerOfTen(power, length);
}

// Digit by digit from the left; the quotient's units are the result's last place.
void putQuotient(const Power &power, int64_t zeros, const Field &field)
{
    const int length = countDigits(power.limbs);
    int64_t place = zeros - (length - 1); // of the first digit
    // As long only for powers of ten, whose reciprocal has one digit, far to the left, or for
    // powers that were too long.
    if (place > 100000) return;
    if (isOneWord(power)) {
        const uint64_t divisor = oneWord(power);
        auto rest = static_cast<uint64_t>(kIntegerPower[static_cast<size_t>(length) - 1]);
        for (; place >= 0 && rest != 0; place--) {
            field.put(place, static_cast<unsigned>(rest / divisor));
            rest = rest % divisor * 10;
        }
        return;
    }
    Remainder rest;
    rest.limbs[(length - 1) / kLimbDigits] =
        static_cast<uint64_t>(kIntegerPower[static_cast<size_t>((length - 1) % kLimbDigits)]);
    for (; place >= 0; place--) {
        unsigned digit = 0;
        for (; rest.holds(power); digit++) rest.subtract(power);
        field.put(place, digit);
        rest.timesTen();
    }
}

Power powerOf(const Digits &base, int fraction)
{
    Power power = {{}, fraction};
    for (int i = 0; i < base.count; i++) {
        uint64_t &limb = power.limbs[(base.count - 1 - i) / kLimbDigits];
        limb = limb * 10 + digitOf(base.first[i]);
    }
    return power;
}

void zeroBase(const ZvkPowerDescriptor &descriptor, bool zeroExponent, bool negativeExponent, uint8_t *result,
              int32_t *errorCount)
{
    if (zeroExponent || negativeExponent)
        if (reportPower(zeroExponent ? kMsgZeroToZero : kMsgZeroToNegative, errorCount)) return;
    result[0] = '+';
    memset(result + 1, '0', descriptor.resultDigits);
    if (zeroExponent && descriptor.resultUnitsPosition - 1u < descriptor.resultDigits)
        result[descriptor.resultUnitsPosition] = '1';
}

} // namespace

void _zvkcExpFixedPt(const ZvkPowerDescriptor *descriptor, const uint8_t *exponent, const uint8_t *base,
                     uint8_t *result, int32_t *errorCount)
{
    Digits baseDigits = strip(base, descriptor->baseDigits);
    Digits exponentDigits = strip(exponent, descriptor->exponentDigits);
    if (exponentDigits.count > 9) {
        msg::exponentTooLong();
        exponentDigits.first += exponentDigits.count - 9;
        exponentDigits.count = 9;
    }
    uint32_t times = 0;
    for (int i = 0; i < exponentDigits.count; i++) times = times * 10 + digitOf(exponentDigits.first[i]);
    const bool reciprocal = exponent[0] == '-' && times != 0;
    if (baseDigits.count <= 0 || (baseDigits.count == 1 && digitOf(*baseDigits.first) == 0))
        return zeroBase(*descriptor, times == 0, reciprocal, result, errorCount);

    // The power.
    const bool negative = base[0] == '-' && times % 2 != 0;
    bool fits = true;
    int fraction = descriptor->baseFraction;
    if (int excess = baseDigits.count - kMostBaseDigits; excess > 0) {
        fits = false;
        baseDigits.count = kMostBaseDigits;
        fraction -= excess;
    }
    Power power = {{1}, 0};
    Power square = powerOf(baseDigits, fraction);
    for (uint32_t left = times; left != 0;) {
        if (left & 1) fits &= multiply(power, square);
        left >>= 1;
        if (left) fits &= multiply(square, square);
    }
    if (!fits && reportPower(kMsgPowerTooLong, errorCount)) return;

    // The places of the result are those of the power from `shift` on.
    const int64_t shift = power.places - descriptor->resultFraction;
    const Field field{result + 1, descriptor->resultDigits};
    if (reciprocal && countDigits(power.limbs) == 0) // never so: a base that is not zero has no such power
        if (reportPower(kMsgZeroReciprocal, errorCount)) return;
    const int64_t zeros = power.places + descriptor->resultFraction;
    const int64_t length = reciprocal ? quotientLength(power, zeros) : countDigits(power.limbs) - shift;
    if (length > field.count && errorCount && *errorCount != 0) {
        (*errorCount)++;
        return;
    }
    memset(field.digits, '0', static_cast<size_t>(field.count));
    if (reciprocal)
        putQuotient(power, zeros, field);
    else
        for (int place = 0; place < field.count; place++) field.put(place, digitAt(power, place + shift));
    const bool zero = field.isZero();
    result[0] = negative && !zero ? '-' : '+';
    if (zero) msg::powerVanished();
}
