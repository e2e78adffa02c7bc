// Adding a binary integer to a packed item in place, and subtracting it.
//
// The integer is taken apart digit by digit from its low end: one digit for the item's last byte,
// then a pair for each further byte.
#include "decimal/arithmetic_entry.h"
#include "decimal/integer_step.h"
#include "decimal/packed_pairs.h"
#include "decimal/sums.h"
#include "kvr2/decimal.h"

using namespace bcd;

namespace {

template <bool subtract, class T, int (*worker)(uint8_t *, int32_t, T, int), const char *text>
using Step = IntegerStep<forms::Pckd, shortforms::Pckd, subtract, T, worker, text>;

constexpr char kInc8[] = "inc packed_int64...";
constexpr char kInc4[] = "inc packed_int32...";
constexpr char kDec8[] = "dec packed_int64...";
constexpr char kDec4[] = "dec packed_int32...";

} // namespace

ZVK_SHORT_ENTRY uint8_t *_zvkcBCD_ADD_Pckd_Int8(uint8_t *op, int32_t opDigits, int64_t value)
{
    return runEntry<ItemAndInteger<Step<false, int64_t, zvkBcdIncPacked, kInc8>>>(op, opDigits, value);
}

ZVK_SHORT_ENTRY uint8_t *_zvkcBCD_ADD_Pckd_Int4(uint8_t *op, int32_t opDigits, int32_t value)
{
    return runEntry<ItemAndInteger<Step<false, int32_t, zvkBcdIncPacked4, kInc4>>>(op, opDigits, value);
}

ZVK_SHORT_ENTRY uint8_t *_zvkcBCD_SUB_Pckd_Int8(uint8_t *op, int32_t opDigits, int64_t value)
{
    return runEntry<ItemAndInteger<Step<true, int64_t, zvkBcdDecPacked, kDec8>>>(op, opDigits, value);
}

ZVK_SHORT_ENTRY uint8_t *_zvkcBCD_SUB_Pckd_Int4(uint8_t *op, int32_t opDigits, int32_t value)
{
    return runEntry<ItemAndInteger<Step<true, int32_t, zvkBcdDecPacked4, kDec4>>>(op, opDigits, value);
}

int zvkBcdIncPacked(uint8_t *op, int32_t opDigits, int64_t value, int sameSign)
{
    if (value == 0) return 1; // the item is not even normalised
    size_t bytes = packedBytes(opDigits);
    uint8_t *last = op + bytes - 1;
    bool negative = isNegativeNibble(*last);
    if (sameSign != 1 && negative != (value < 0)) return zvkBcdDecPacked(op, opDigits, value, 1);

    uint64_t rest = magnitude(value);
    unsigned units = (*last & 0xF0u) + static_cast<unsigned>(rest % 10 << 4);
    bool carry = units > 0x90;
    if (carry) units += 0x60;
    *last = static_cast<uint8_t>(units & 0xF0);
    rest /= 10;
    uint8_t *p = last;
    for (; p > op && rest; rest /= 100) {
        p--;
        *p = addWord<uint8_t>(*p, kValuePair[rest % 100], carry);
    }
    while (p > op && carry) {
        p--;
        *p = incrementWord<uint8_t>(*p, carry);
    }
    clearUnusedNibble(op, opDigits);
    setPackedSign(op, opDigits, negative);
    return 1;
}

int zvkBcdDecPacked(uint8_t *op, int32_t opDigits, int64_t value, int sameSign)
{
    if (value == 0) return 1; // the item is not even normalised
    size_t bytes = packedBytes(opDigits);
    uint8_t *last = op + bytes - 1;
    bool negative = isNegativeNibble(*last);
    bool reserved = value < 0;
    if (sameSign != 1) {
        if (negative != (value < 0)) return zvkBcdIncPacked(op, opDigits, value, 1);
        reserved = !reserved;
    }

    uint64_t rest = magnitude(value);
    int units = (*last >> 4) - static_cast<int>(rest % 10);
    bool borrow = units < 0;
    if (borrow) {
        units += 10;
        // Odd, and so required: the sign turns here, and does not turn back when the next digit
        // absorbs the borrow. 15 - 7 gives -8.
        negative = !negative;
    }
    *last = static_cast<uint8_t>(units << 4);
    rest /= 10;
    uint8_t *p = last;
    for (; p > op && (rest || borrow); rest /= 100) {
        p--;
        *p = subtractPair(kPairValue[*p], static_cast<int>(rest % 100), borrow);
    }
    if (borrow) {
        complementPairs(last, bytes);
        negative = !negative;
    }
    if (rest) {
        complementPairs(last, bytes);
        negative = reserved;
    }
    clearUnusedNibble(op, opDigits);
    setPackedSign(op, opDigits, negative);
    return 1;
}

int zvkBcdIncPacked4(uint8_t *op, int32_t opDigits, int32_t value, int sameSign)
{
    return zvkBcdIncPacked(op, opDigits, value, sameSign);
}
int zvkBcdDecPacked4(uint8_t *op, int32_t opDigits, int32_t value, int sameSign)
{
    return zvkBcdDecPacked(op, opDigits, value, sameSign);
}
