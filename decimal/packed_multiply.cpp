// Multiplication of packed items.
//
// Short clean factors go through binary (short_product.h). All others are multiplied pair by pair:
// the multiplier's units digit first, which lines up with the multiplicand's bytes, then each pair
// of the multiplier. A pair of the multiplier stands one digit off the grid of the multiplicand's
// pairs, hence the ten:
//
//     multiplicand    q2 q1 a         bytes from the right: a0, q1, q2
//     multiplier         p1 u
//     byte i + j - 1 gets 10 * p(i) * q(j), byte i gets p(i) * a
#include "decimal/arithmetic_entry.h"
#include "decimal/multiply_scratch.h"
#include "decimal/products.h"
#include "decimal/short_product.h"
#include "kvr2/decimal.h"

#include <utility>

using namespace bcd;

thread_local uint8_t bcd::packedScratch[kPackedScratch];

namespace {

// A product of up to 62 digits into a destination of up to 63.
void writeProduct(uint8_t *dst, int32_t n, const LongDigits &product, bool negative)
{
    size_t bytes = packedBytes(n);
    if (bytes <= kMostBytes) {
        storeItem(packedScratch, bytes, product.low << 4);
        storeItem(dst, bytes, product.low << 4 | signNibble(negative));
    } else {
        size_t left = bytes - kMostBytes;
        u128 high = product.high << 4 | product.low >> 124;
        storeItem(packedScratch + left, kMostBytes, product.low << 4);
        storeItem(packedScratch, left, high);
        storeItem(dst + left, kMostBytes, product.low << 4 | signNibble(negative));
        storeItem(dst, left, high);
    }
    clearUnusedNibble(dst, n);
}

template <class Word>
[[gnu::always_inline]] inline bool multiplyShort(const uint8_t *op1, int32_t op1Digits, const uint8_t *op2,
                                                 int32_t op2Digits, uint8_t *dst, int32_t dstDigits)
{
    if (static_cast<uint32_t>(op1Digits | op2Digits) > kWordDigits<Word> || static_cast<uint32_t>(dstDigits) > 63)
        return false;
    shortforms::Pckd::Raw<Word> a(op1, op1Digits), b(op2, op2Digits);
    if (!a.hasSign() || !b.hasSign() || !areDigits(a.digits, b.digits)) return false;
    writeProduct(dst, dstDigits, multiplyDigits(a.digits, b.digits), a.negative() != b.negative());
    return true;
}

struct MultiplyPacked {
    using Form = forms::Pckd;
    static constexpr const char *title = "mpy packed...";
    static bool quick(const auto &c)
    {
        return multiplyShort<uint64_t>(c.op1, c.op1Digits, c.op2, c.op2Digits, c.dst, c.dstDigits);
    }
    static bool quickLong(const auto &c)
    {
        return multiplyShort<u128>(c.op1, c.op1Digits, c.op2, c.op2Digits, c.dst, c.dstDigits);
    }
    static void work(const auto &c) { zvkBcdMulPacked(c.op1, c.op1Digits, c.op2, c.op2Digits, c.dst, c.dstDigits); }
};

struct Factor {
    const uint8_t *start;
    const uint8_t *last;

    size_t bytes() const { return static_cast<size_t>(last - start) + 1; }
};

// Gives the digits that the factor counts for in the estimate.
int32_t cutFactor(Factor &factor, size_t room, int32_t dstDigits)
{
    factor.start = skipZeroBytes(factor.start, factor.last);
    if (factor.bytes() <= room) return significantDigits(factor.start, factor.last);
    factor.start = factor.last + 1 - room;
    return dstDigits;
}

// The work area, filled from its right end; what does not fit on the left is lost.
struct WorkArea {
    uint8_t *start;
    size_t size;

    void addAt(size_t fromRight, unsigned &carry, unsigned value)
    {
        if (fromRight >= size) return;
        uint8_t &byte = start[size - 1 - fromRight];
        value += carry + kPairValue[byte];
        byte = kValuePair[value % 100];
        carry = value / 100;
    }

    void carryOn(size_t fromRight, unsigned carry)
    {
        for (; carry && fromRight < size; fromRight++) addAt(fromRight, carry, 0);
    }
};

void multiplyPairs(const Factor &multiplicand, const Factor &multiplier, WorkArea work)
{
    memset(work.start, 0, work.size);
    unsigned units = *multiplicand.last >> 4;
    unsigned by = *multiplier.last >> 4;
    unsigned carry = units * by / 10;
    work.start[work.size - 1] = static_cast<uint8_t>(units * by % 10 << 4);
    for (size_t j = 1; j < multiplicand.bytes(); j++)
        work.addAt(j, carry, kPairValue[multiplicand.last[-static_cast<ptrdiff_t>(j)]] * by);
    work.carryOn(multiplicand.bytes(), carry);

    for (size_t i = 1; i < multiplier.bytes(); i++) {
        by = kPairValue[multiplier.last[-static_cast<ptrdiff_t>(i)]];
        carry = 0;
        work.addAt(i, carry, units * by);
        for (size_t j = 1; j < multiplicand.bytes(); j++) {
            unsigned product = 10 * by * kPairValue[multiplicand.last[-static_cast<ptrdiff_t>(j)]];
            // The first pair lands on the byte of the units, so what that byte carried comes back
            // at its full weight.
            if (j == 1) product += 100 * std::exchange(carry, 0);
            work.addAt(i + j - 1, carry, product);
        }
        work.carryOn(i + (multiplicand.bytes() > 1 ? multiplicand.bytes() - 1 : 1), carry);
    }
}

} // namespace

uint8_t *_zvkcBCD_MPY_Pckd(const uint8_t *op1, const uint8_t *op2, uint8_t *dst, int32_t dstDigits, int32_t op2Digits,
                           int32_t op1Digits)
{
    return runEntry<TwoOperands<MultiplyPacked>>(op1, op2, dst, dstDigits, op2Digits, op1Digits);
}

void zvkBcdMulPacked(const uint8_t *op1, int32_t op1Digits, const uint8_t *op2, int32_t op2Digits, uint8_t *dst,
                     int32_t dstDigits)
{
    if (multiplyShort<u128>(op1, op1Digits, op2, op2Digits, dst, dstDigits)) return;
    size_t bytes = packedBytes(dstDigits);
    size_t room = bytes < kPackedScratch ? bytes : kPackedScratch;
    bool negative = packedIsNegative(op1, op1Digits) != packedIsNegative(op2, op2Digits);
    Factor a{op1, op1 + packedBytes(op1Digits) - 1};
    Factor b{op2, op2 + packedBytes(op2Digits) - 1};
    int32_t estimate = cutFactor(a, room, dstDigits) + cutFactor(b, room, dstDigits);
    if (a.bytes() < b.bytes()) std::swap(a, b);
    // Above 64 digits the product is not computed at all: the destination gets what the scratch
    // holds.
    if (estimate <= 64) multiplyPairs(a, b, {packedScratch, room});
    memset(dst, 0, bytes - room);
    memcpy(dst + bytes - room, packedScratch, room);
    setPackedSign(dst, dstDigits, negative);
    clearUnusedNibble(dst, dstDigits);
}
