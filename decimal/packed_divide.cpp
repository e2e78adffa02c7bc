// Division of packed items.
//
// Short clean items go through binary (short_product.h), all others through the table of multiples
// (long_division.h).
#include "decimal/divide_entry.h"
#include "decimal/long_division.h"
#include "decimal/products.h"
#include "decimal/sums.h"
#include "kvr2/decimal.h"

using namespace bcd;

namespace {

struct PackedDivision {
    using Item = forms::Pckd;
    using Short = shortforms::Pckd;

    // With an even count the unused nibble of a quotient is not cleared, and may keep a digit that
    // was cut. Known, and stays.
    static void writeQuotient(uint8_t *item, int32_t n, u128 digits, bool negative)
    {
        storeItem(item, packedBytes(n), shiftedLeft(digits, 4) | signNibble(negative));
    }

    static DivisionOperand strip(DivisionOperand operand)
    {
        while (operand.digits >= 2 && *operand.item == 0) operand.item++, operand.digits -= 2;
        if (operand.digits % 2 == 0) operand.digits++;
        return operand;
    }

    static int isZero(const uint8_t *item, int32_t n) { return zvkBcdIsZeroPacked(item, n); }
    static constexpr auto divide = zvkBcdDivPacked;
};

constexpr char kDiv[] = "div packed...";
constexpr char kDivr[] = "div packed remainder...";
constexpr char kMod[] = "mod packed...";

// Zero but for the last byte.
void writeSmall(uint8_t *item, int32_t n, uint8_t last)
{
    size_t bytes = packedBytes(n);
    memset(item, 0, bytes - 1);
    item[bytes - 1] = last;
}

} // namespace

uint8_t *_zvkcBCD_DIV_Pckd(const uint8_t *op1, const uint8_t *op2, uint8_t *dst, int32_t dstDigits, int32_t op2Digits,
                           int32_t op1Digits)
{
    runEntry<DumpedDivision<PackedDivision, kDiv>>(op1, op2, dst, nullptr, 0, dstDigits, op2Digits, op1Digits);
    return dst;
}

int32_t _zvkcBCD_DIVR_Pckd(const uint8_t *op1, const uint8_t *op2, uint8_t *quotient, uint8_t *remainder,
                           int32_t remainderDigits, int32_t quotientDigits, int32_t op2Digits, int32_t op1Digits)
{
    return runEntry<DumpedDivision<PackedDivision, kDivr>>(op1, op2, quotient, remainder, remainderDigits,
                                                           quotientDigits, op2Digits, op1Digits);
}

uint8_t *_zvkcBCD_MOD_Pckd(const uint8_t *op1, const uint8_t *op2, uint8_t *dst, int32_t dstDigits, int32_t op2Digits,
                           int32_t op1Digits)
{
    runEntry<DumpedDivision<PackedDivision, kMod>>(op1, op2, nullptr, dst, dstDigits, 0, op2Digits, op1Digits);
    return dst;
}

int zvkBcdDivPacked(const uint8_t *dividend, int32_t dividendDigits, const uint8_t *divisor, int32_t divisorDigits,
                    uint8_t *quotient, int32_t quotientDigits, uint8_t *remainder, int32_t remainderDigits)
{
    int result;
    DivisionItems items{dividend,        divisor,        quotient,      remainder,
                        remainderDigits, quotientDigits, divisorDigits, dividendDigits};
    if (divideShort<PackedDivision>(items, result)) return result;
    const uint8_t *lastDividend = dividend + packedBytes(dividendDigits) - 1;
    const uint8_t *lastDivisor = divisor + packedBytes(divisorDigits) - 1;
    const uint8_t *a = skipZeroBytes(dividend, lastDividend);
    const uint8_t *b = skipZeroBytes(divisor, lastDivisor);
    bool minus = isNegativeNibble(*lastDividend);
    bool negative = minus != isNegativeNibble(*lastDivisor);

    int order = significantDigits(a, lastDividend) - significantDigits(b, lastDivisor);
    if (order == 0) {
        order = zvkBcdCmpPacked(dividend, dividendDigits, divisor, divisorDigits, 1);
        if (order == 0) {
            if (quotient) writeSmall(quotient, quotientDigits, static_cast<uint8_t>(0x10 | signNibble(negative)));
            if (remainder) writeSmall(remainder, remainderDigits, kPlus);
            return 1;
        }
    }
    if (order < 0) {
        if (remainder) zvkBcdMovePacked(dividend, dividendDigits, remainder, remainderDigits);
        if (quotient) writeSmall(quotient, quotientDigits, kPlus);
        return 0;
    }

    auto within = [](const uint8_t *&start, const uint8_t *last) {
        if (last - start >= static_cast<ptrdiff_t>(LongDivision::kMostBytes))
            start = last + 1 - LongDivision::kMostBytes;
        return static_cast<size_t>(last - start) + 1;
    };
    size_t dividendBytes = within(a, lastDividend);
    size_t divisorBytes = within(b, lastDivisor);
    LongDivision division(a, dividendBytes, b, divisorBytes);
    if (quotient) {
        size_t bytes = packedBytes(quotientDigits);
        quotient[bytes - 1] = static_cast<uint8_t>(division.quotientDigit(0) << 4 | signNibble(negative));
        for (size_t i = 1; i < bytes; i++)
            quotient[bytes - 1 - i] =
                static_cast<uint8_t>(division.quotientDigit(2 * i) << 4 | division.quotientDigit(2 * i - 1));
    }
    if (remainder) {
        size_t bytes = packedBytes(remainderDigits);
        for (size_t i = 0; i < bytes; i++) remainder[bytes - 1 - i] = division.remainderPair(i);
        setPackedSign(remainder, remainderDigits, minus);
        clearUnusedNibble(remainder, remainderDigits);
    }
    return 1;
}
