// Division of decimal numbers of any length and content, by a table of the divisor's multiples.
//
// The numbers are strings of base-100 bytes, as a packed item's bytes give them: the sign's byte
// counts ten times its digit, so everything stands multiplied by ten. Two tables hold the divisor
// one to nine times; the second one a digit further left:
//
//     divisor 3      multiples 1: [0 30 0]   shifted 1: [3 0]        (one byte, so rows of three and two)
//     dividend 92    [0 9 20]
//     first round    window [0 9]: [3 0] and [0 30] are above it       digits 0 0
//     second round   window [9 20]: shifted 3 is [9 0], rest [0 20];  [0 30] is above it   digits 3 0
//     quotient 30, rest [0 20]: 2
//
// A round gives two digits, each by comparing rows with a window of the dividend, as byte strings,
// and subtracting the greatest that is not above. Bytes that are no digits give digits without
// meaning, and never more than nine steps for one.
//
// The tables are for what nothing else takes. A divisor that fits a word, as nearly all do, goes
// through binary: 16 digits of the quotient a step, if all digits are digits.
#pragma once

#include <cstddef>
#include <cstdint>

namespace bcd {

class LongDivision {
public:
    static constexpr size_t kMostBytes =
        64; // of dividend and divisor; of longer ones only the low-order bytes are used

    // Packed bytes, the divisor not longer than the dividend.
    LongDivision(const uint8_t *dividend, size_t dividendBytes, const uint8_t *divisor, size_t divisorBytes);

    size_t quotientDigits() const { return 2 * rounds_; }
    uint8_t quotientDigit(size_t fromRight) const
    {
        return fromRight < quotientDigits() ? digits_[quotientDigits() - 1 - fromRight] : 0;
    }

    // The remainder as packed bytes, the last one with a free sign nibble.
    uint8_t remainderPair(size_t fromRight) const;

private:
    bool divideLimbs(const uint8_t *dividend, const uint8_t *divisor, size_t divisorBytes);
    unsigned takeOut(size_t at, const uint8_t *rows, size_t stride);

    size_t dividendBytes_;
    size_t length_; // of window and rows
    size_t rounds_;
    uint8_t dividend_[128] = {};
    uint8_t multiples_[9 * 67];
    uint8_t shifted_[9 * 66];
    uint8_t digits_[2 * kMostBytes];
};

} // namespace bcd
