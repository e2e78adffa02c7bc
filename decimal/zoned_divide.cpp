// Division of zoned items.
//
// Short clean items go through binary (short_product.h), all others are packed and go through the
// table of multiples (long_division.h).
#include "decimal/divide_entry.h"
#include "decimal/long_division.h"
#include "decimal/products.h"
#include "decimal/sums.h"
#include "decimal/zoned_digits.h"
#include "kvr2/decimal.h"

using namespace bcd;

namespace {

struct ZonedDivision {
    using Item = forms::ZndTO;
    using Short = shortforms::Znd;

    static void writeQuotient(uint8_t *item, int32_t n, u128 digits, bool negative)
    {
        Short::write(item, n, digits, negative);
    }

    static DivisionOperand strip(DivisionOperand operand)
    {
        while (operand.digits > 1 && *operand.item == 0) operand.item++, operand.digits--;
        return operand;
    }

    static int isZero(const uint8_t *item, int32_t n) { return zvkBcdIsZeroZoned(item, n); }
    static constexpr auto divide = zvkBcdDivZoned;
};

constexpr char kDiv[] = "div zoned...";

// "0" but for the last byte.
void writeSmall(uint8_t *item, int32_t n, uint8_t last)
{
    if (n < 1) return;
    memset(item, '0', static_cast<size_t>(n) - 1);
    item[n - 1] = last;
}

// A zoned operand's digits as packed bytes, the last one with a plus.
struct PackedDigits {
    uint8_t bytes[LongDivision::kMostBytes];
    size_t count;

    explicit PackedDigits(ZonedOperand operand)
    {
        operand.cutTo(2 * LongDivision::kMostBytes - 1);
        count = operand.digits() / 2 + 1;
        bytes[count - 1] = static_cast<uint8_t>(operand.digit(operand.last) << 4 | kPlus);
        const uint8_t *p = operand.last;
        for (size_t i = count - 1; i-- > 0;) {
            uint8_t low = *--p & 0x0F;
            uint8_t high = p > operand.start ? *--p & 0x0F : 0;
            bytes[i] = static_cast<uint8_t>(high << 4 | low);
        }
    }
};

} // namespace

uint8_t *_zvkcBCD_DIV_Znd(const uint8_t *op1, const uint8_t *op2, uint8_t *dst, int32_t dstDigits, int32_t op2Digits,
                          int32_t op1Digits)
{
    runEntry<DumpedDivision<ZonedDivision, kDiv>>(op1, op2, dst, nullptr, 0, dstDigits, op2Digits, op1Digits);
    return dst;
}

// DIVR and MOD of zoned items have no dump, unlike all others.
uint8_t *_zvkcBCD_DIVR_Znd(const uint8_t *op1, const uint8_t *op2, uint8_t *quotient, uint8_t *remainder,
                           int32_t remainderDigits, int32_t quotientDigits, int32_t op2Digits, int32_t op1Digits)
{
    runEntry<Division<ZonedDivision>>(op1, op2, quotient, remainder, remainderDigits, quotientDigits, op2Digits,
                                      op1Digits);
    return quotient;
}

uint8_t *_zvkcBCD_MOD_Znd(const uint8_t *op1, const uint8_t *op2, uint8_t *dst, int32_t dstDigits, int32_t op2Digits,
                          int32_t op1Digits)
{
    runEntry<Division<ZonedDivision>>(op1, op2, nullptr, dst, dstDigits, 0, op2Digits, op1Digits);
    return dst;
}

int zvkBcdDivZoned(const uint8_t *dividend, int32_t dividendDigits, const uint8_t *divisor, int32_t divisorDigits,
                   uint8_t *quotient, int32_t quotientDigits, uint8_t *remainder, int32_t remainderDigits)
{
    if (dividendDigits < 1 || divisorDigits < 1) return 0;
    int result;
    DivisionItems items{dividend,        divisor,        quotient,      remainder,
                        remainderDigits, quotientDigits, divisorDigits, dividendDigits};
    if (divideShort<ZonedDivision>(items, result)) return result;
    ZonedOperand a(dividend, dividendDigits), b(divisor, divisorDigits);
    bool minus = a.negative();
    bool negative = minus != b.negative();

    int order = (a.digits() > b.digits()) - (a.digits() < b.digits());
    if (order == 0) {
        // Sees zones: the same digits in another zone are not equal here, and go through the
        // division or give 0.
        auto digits = static_cast<int32_t>(a.digits());
        order = zvkBcdCmpZoned(a.start, digits, b.start, digits, 1);
        if (order == 0) {
            if (quotient) writeSmall(quotient, quotientDigits, zonedDigit(1, negative));
            if (remainder) writeSmall(remainder, remainderDigits, '0');
            return 1;
        }
    }
    if (order < 0) {
        if (quotient) writeSmall(quotient, quotientDigits, '0');
        if (remainder) zvkBcdMoveZoned(a.start, static_cast<int32_t>(a.digits()), remainder, remainderDigits);
        return 0;
    }

    PackedDigits dividendPacked(a), divisorPacked(b);
    LongDivision division(dividendPacked.bytes, dividendPacked.count, divisorPacked.bytes, divisorPacked.count);
    for (int32_t i = 0; quotient && i < quotientDigits; i++)
        quotient[quotientDigits - 1 - i] =
            zonedDigit(division.quotientDigit(static_cast<size_t>(i)), i == 0 && negative);
    for (int32_t i = 0; remainder && i < remainderDigits; i++) {
        // The units are in the last pair's high nibble, so digit i is the high one of pair i / 2
        // when i is even, else the low one of the next pair.
        uint8_t pair = division.remainderPair(static_cast<size_t>(i + 1) / 2);
        remainder[remainderDigits - 1 - i] = zonedDigit(i % 2 ? pair : pair >> 4, i == 0 && minus);
    }
    return 1;
}
