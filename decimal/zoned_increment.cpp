// Adding a binary integer to a zoned item in place, and subtracting it, digit by digit.
//
// Unlike in packed items the sign does not turn when the units borrow, and no pair is reduced.
#include "decimal/arithmetic_entry.h"
#include "decimal/integer_step.h"
#include "decimal/sums.h"
#include "decimal/zoned_digits.h"
#include "kvr2/decimal.h"

using namespace bcd;

namespace {

template <bool subtract, class T, int (*worker)(uint8_t *, int32_t, T, int), const char *text>
using Step = IntegerStep<forms::ZndTO, shortforms::Znd, subtract, T, worker, text>;

constexpr char kInc8[] = "inc zoned_int64...";
constexpr char kInc4[] = "inc zoned_32..."; // the slip stays
constexpr char kDec8[] = "dec zoned_int64...";
constexpr char kDec4[] = "dec zoned_int32...";

} // namespace

ZVK_SHORT_ENTRY uint8_t *_zvkcBCD_ADD_Znd_Int8(uint8_t *op, int32_t opDigits, int64_t value)
{
    return runEntry<ItemAndInteger<Step<false, int64_t, zvkBcdIncZoned, kInc8>>>(op, opDigits, value);
}

ZVK_SHORT_ENTRY uint8_t *_zvkcBCD_ADD_Znd_Int4(uint8_t *op, int32_t opDigits, int32_t value)
{
    return runEntry<ItemAndInteger<Step<false, int32_t, zvkBcdIncZoned4, kInc4>>>(op, opDigits, value);
}

ZVK_SHORT_ENTRY uint8_t *_zvkcBCD_SUB_Znd_Int8(uint8_t *op, int32_t opDigits, int64_t value)
{
    return runEntry<ItemAndInteger<Step<true, int64_t, zvkBcdDecZoned, kDec8>>>(op, opDigits, value);
}

ZVK_SHORT_ENTRY uint8_t *_zvkcBCD_SUB_Znd_Int4(uint8_t *op, int32_t opDigits, int32_t value)
{
    return runEntry<ItemAndInteger<Step<true, int32_t, zvkBcdDecZoned4, kDec4>>>(op, opDigits, value);
}

namespace {

// Adds or subtracts digit after digit as long as there is something to add or carry; gives the
// digits of the integer that the item had no place for. The first digit is decoded.
template <class OneDigit>
uint64_t takeIn(uint8_t *op, int32_t digits, uint64_t rest, bool &carry, OneDigit oneDigit)
{
    uint8_t *p = op + digits - 1;
    *p = zonedDigit(oneDigit(overpunchDigit(*p), rest % 10, carry));
    for (rest /= 10; p > op && (rest || carry); rest /= 10) {
        p--;
        *p = zonedDigit(oneDigit(*p & 0x0F, rest % 10, carry));
    }
    return rest;
}

} // namespace

int zvkBcdIncZoned(uint8_t *op, int32_t opDigits, int64_t value, int sameSign)
{
    if (value == 0 || opDigits < 1) return 1; // the item is not even normalised
    uint8_t *last = op + opDigits - 1;
    bool negative = overpunchIsNegative(*last);
    if (sameSign != 1 && negative != (value < 0)) return zvkBcdDecZoned(op, opDigits, value, 1);
    bool carry = false;
    takeIn(op, opDigits, magnitude(value), carry,
           [](unsigned a, uint64_t b, bool &c) { return addDigit(a, static_cast<unsigned>(b), c); });
    *last = zonedDigit(*last, negative);
    return 1;
}

int zvkBcdDecZoned(uint8_t *op, int32_t opDigits, int64_t value, int sameSign)
{
    if (value == 0 || opDigits < 1) return 1; // the item is not even normalised
    uint8_t *last = op + opDigits - 1;
    bool negative = overpunchIsNegative(*last);
    bool reserved = value < 0;
    if (sameSign != 1) {
        if (negative != (value < 0)) return zvkBcdIncZoned(op, opDigits, value, 1);
        reserved = !reserved;
    }
    bool borrow = false;
    uint64_t rest = takeIn(op, opDigits, magnitude(value), borrow, [](unsigned a, uint64_t b, bool &c) {
        return subtractDigit(static_cast<int>(a), static_cast<int>(b), c);
    });
    auto digits = static_cast<size_t>(opDigits);
    if (borrow) {
        complementDigits(last, digits);
        negative = !negative;
    }
    if (rest) {
        complementDigits(last, digits);
        negative = reserved;
    }
    *last = zonedDigit(*last, negative);
    return 1;
}

int zvkBcdIncZoned4(uint8_t *op, int32_t opDigits, int32_t value, int sameSign)
{
    return zvkBcdIncZoned(op, opDigits, value, sameSign);
}
int zvkBcdDecZoned4(uint8_t *op, int32_t opDigits, int32_t value, int sameSign)
{
    return zvkBcdDecZoned(op, opDigits, value, sameSign);
}
