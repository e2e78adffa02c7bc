// Long division; how it goes is in long_division.h.
#include "decimal/long_division.h"

#include "decimal/packed_pairs.h"

using namespace bcd;

namespace {

constexpr size_t kMultipleStride = 67;
constexpr size_t kShiftedStride = 66;

} // namespace

LongDivision::LongDivision(const uint8_t *dividend, size_t dividendBytes, const uint8_t *divisor, size_t divisorBytes)
    : dividendBytes_(dividendBytes), length_(divisorBytes + 1), rounds_(dividendBytes - divisorBytes + 1)
{
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
