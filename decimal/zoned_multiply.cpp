// Multiplication of zoned items.
//
// Short clean factors go through binary (short_product.h), all others digit by digit. The digit of
// a sign byte is its low nibble here: unlike everywhere else a letter is not decoded, so only the
// zone forms multiply right in the last position. That is known and stays.
#include "decimal/arithmetic_entry.h"
#include "decimal/multiply_scratch.h"
#include "decimal/products.h"
#include "decimal/short_product.h"
#include "kvr2/decimal.h"

using namespace bcd;

thread_local uint8_t bcd::zonedScratch[kZonedScratch];

namespace {

// False for a letter, too.
bool readFactor(const uint8_t *item, int32_t n, ShortNumber &number)
{
    return shortforms::Znd::read(item, n, number) &&
           (item[n - 1] & 0x0F) == (static_cast<unsigned>(number.digits) & 0x0F);
}

bool multiplyShort(const uint8_t *op1, int32_t op1Digits, const uint8_t *op2, int32_t op2Digits, uint8_t *dst,
                   int32_t dstDigits)
{
    ShortNumber a, b;
    if (static_cast<uint32_t>(dstDigits) - 1 >= 63) return false;
    if (!readFactor(op1, op1Digits, a) || !readFactor(op2, op2Digits, b)) return false;
    LongDigits product = multiplyDigits(a.digits, b.digits);
    int32_t low = dstDigits < 32 ? dstDigits : 32;
    shortforms::Znd::writeDigits(dst + dstDigits - low, low, product.low);
    shortforms::Znd::writeDigits(dst, dstDigits - low, product.high);
    memcpy(zonedScratch, dst, static_cast<size_t>(dstDigits));
    if (a.negative != b.negative) forms::ZndTO::writeSign(dst, dstDigits, true);
    return true;
}

struct MultiplyZoned {
    using Form = forms::ZndTO;
    static constexpr const char *title = "mpy zoned...";
    static bool quick(const auto &c)
    {
        return multiplyShort(c.op1, c.op1Digits, c.op2, c.op2Digits, c.dst, c.dstDigits);
    }
    static void work(const auto &c) { zvkBcdMulZoned(c.op1, c.op1Digits, c.op2, c.op2Digits, c.dst, c.dstDigits); }
};

struct Factor {
    const uint8_t *start;
    const uint8_t *last;

    size_t digits() const { return static_cast<size_t>(last - start) + 1; }
};

void multiplyDigitwise(const Factor &multiplicand, const Factor &multiplier, uint8_t *work, size_t room)
{
    memset(work, '0', room);
    for (size_t i = 0; i < multiplier.digits(); i++) {
        unsigned by = multiplier.last[-static_cast<ptrdiff_t>(i)] & 0x0F;
        unsigned carry = 0;
        for (size_t j = 0; i + j < room && (j < multiplicand.digits() || carry); j++) {
            unsigned digit = j < multiplicand.digits() ? multiplicand.last[-static_cast<ptrdiff_t>(j)] & 0x0F : 0;
            uint8_t &place = work[room - 1 - i - j];
            unsigned value = digit * by + (place & 0x0F) + carry;
            place = zonedDigit(static_cast<uint8_t>(value % 10));
            carry = value / 10;
        }
    }
}

} // namespace

uint8_t *_zvkcBCD_MPY_Znd(const uint8_t *op1, const uint8_t *op2, uint8_t *dst, int32_t dstDigits, int32_t op2Digits,
                          int32_t op1Digits)
{
    return runEntry<TwoOperands<MultiplyZoned>>(op1, op2, dst, dstDigits, op2Digits, op1Digits);
}

void zvkBcdMulZoned(const uint8_t *op1, int32_t op1Digits, const uint8_t *op2, int32_t op2Digits, uint8_t *dst,
                    int32_t dstDigits)
{
    if (op1Digits < 1 || op2Digits < 1 || dstDigits < 1) return;
    if (multiplyShort(op1, op1Digits, op2, op2Digits, dst, dstDigits)) return;
    auto bytes = static_cast<size_t>(dstDigits);
    size_t room = bytes < kZonedScratch ? bytes : kZonedScratch;
    Factor a{op1, op1 + op1Digits - 1}, b{op2, op2 + op2Digits - 1};
    bool negative = overpunchIsNegative(*a.last) != overpunchIsNegative(*b.last);
    for (Factor *factor : {&a, &b}) {
        factor->start = skipZeroDigits(factor->start, factor->last);
        if (factor->digits() > room) factor->start = factor->last + 1 - room;
    }
    // From 127 digits on the product is not computed at all: the destination gets what the scratch
    // holds.
    if (a.digits() + b.digits() < 127) multiplyDigitwise(a, b, zonedScratch, room);
    memset(dst, '0', bytes - room);
    memcpy(dst + bytes - room, zonedScratch, room);
    dst[bytes - 1] = zonedDigit(dst[bytes - 1], negative);
}
