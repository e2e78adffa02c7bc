// Long division; how it goes is in long_division.h.
#include "decimal/long_division.h"

#include <cstring>

#include "decimal/packed_pairs.h"
#include "decimal/short_product.h"

using namespace bcd;

namespace {

constexpr size_t kMultipleStride = 67;
constexpr size_t kShiftedStride = 66;

// A packed number of any length as limbs of 16 digits, the lowest first.
class Limbs {
public:
    Limbs(const uint8_t *item, size_t bytes) : count_((2 * bytes + 14) / 16)
    {
        memcpy(bytes_ + sizeof bytes_ - bytes, item, bytes);
        clean_ = (bytes_[sizeof bytes_ - 1] & 0x0F) >= 10;
        for (size_t i = 0; i < count_; i++) clean_ = clean_ && areDigits(u128{digits(i)});
    }

    size_t count() const { return count_; }
    bool clean() const { return clean_; } // all digits are digits, and the sign is one
    uint64_t value(size_t i) const { return limbValue(digits(i)); }

private:
    // The sign's nibble goes out on the right.
    uint64_t digits(size_t i) const
    {
        const uint8_t *word = bytes_ + sizeof bytes_ - 8 * (i + 1);
        return loadBig<uint64_t>(word) >> 4 | loadBig<uint64_t>(word - 8) << 60;
    }

    size_t count_;
    bool clean_;
    uint8_t bytes_[LongDivision::kMostBytes + 16] = {};
};

// Bytes of a divisor that a limb may be put after in 128 bits, and its remainder in 64.
constexpr size_t kWordDivisorBytes = 9;

} // namespace

LongDivision::LongDivision(const uint8_t *dividend, size_t dividendBytes, const uint8_t *divisor, size_t divisorBytes)
    : dividendBytes_(dividendBytes), length_(divisorBytes + 1), rounds_(dividendBytes - divisorBytes + 1)
{
    if (divisorBytes <= kWordDivisorBytes && divideLimbs(dividend, divisor, divisorBytes)) return;
    memset(multiples_, 0, sizeof multiples_);
    for (size_t i = 0; i < dividendBytes; i++) dividend_[i + 1] = kPairValue[dividend[i]];
    for (size_t i = 0; i < divisorBytes; i++) multiples_[i + 1] = kPairValue[divisor[i]];
    for (size_t row = 1; row < 9; row++) {
        unsigned carry = 0;
        for (size_t i = length_; i-- > 0;) {
            unsigned value = static_cast<unsigned>(multiples_[i] * (row + 1)) + carry;
            multiples_[row * kMultipleStride + i] = static_cast<uint8_t>(value % 100);
            carry = value / 100;
        }
    }
    for (size_t row = 0; row < 9; row++) {
        const uint8_t *multiple = multiples_ + row * kMultipleStride; // one zero byte is after its `length_` bytes
        for (size_t i = 0; i < length_; i++)
            shifted_[row * kShiftedStride + i] = static_cast<uint8_t>(multiple[i] % 10 * 10 + multiple[i + 1] / 10);
    }
    for (size_t round = 0; round < rounds_; round++) {
        digits_[2 * round] = static_cast<uint8_t>(takeOut(round, shifted_, kShiftedStride));
        digits_[2 * round + 1] = static_cast<uint8_t>(takeOut(round, multiples_, kMultipleStride));
    }
}

// Clean numbers with a divisor of up to 17 digits: a limb of the quotient by an instruction.
bool LongDivision::divideLimbs(const uint8_t *dividend, const uint8_t *divisor, size_t divisorBytes)
{
    const Limbs a(dividend, dividendBytes_), b(divisor, divisorBytes);
    if (!a.clean() || !b.clean()) return false;
    const uint64_t by = b.value(0) + (b.count() > 1 ? kLimb * b.value(1) : 0);
    if (by == 0) return false;

    uint64_t rest = 0;
    memset(digits_, 0, quotientDigits());
    for (size_t i = a.count(); i-- > 0;) {
        const Split found = divideWord(u128{rest} * kLimb + a.value(i), by);
        rest = found.rest;
        uint64_t digits = limbDigits(found.quotient);
        for (size_t at = 16 * i; digits != 0; at++, digits >>= 4)
            digits_[quotientDigits() - 1 - at] = static_cast<uint8_t>(digits & 0x0F);
    }

    rest *= 10;
    for (size_t i = dividendBytes_; rest != 0; i--, rest /= 100) dividend_[i] = static_cast<uint8_t>(rest % 100);
    return true;
}

// Subtracts the greatest row that is not above the window at `at`; gives its number.
unsigned LongDivision::takeOut(size_t at, const uint8_t *rows, size_t stride)
{
    uint8_t *window = dividend_ + at;
    unsigned digit = 0;
    while (digit < 9 && memcmp(rows + digit * stride, window, length_) <= 0) digit++;
    if (digit == 0) return 0;
    const uint8_t *row = rows + (digit - 1) * stride;
    bool borrow = false;
    for (size_t i = length_; i-- > 0;) window[i] = kPairValue[subtractPair(window[i], row[i], borrow)];
    return digit;
}

uint8_t LongDivision::remainderPair(size_t fromRight) const
{
    return fromRight < dividendBytes_ ? kValuePair[dividend_[dividendBytes_ - fromRight]] : 0;
}
