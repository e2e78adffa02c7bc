// Addition and subtraction of zoned items of any length and content, digit by digit.
//
// Items of up to 31 clean digits never get here: short_sum.h has done them.
#include "decimal/arithmetic_entry.h"
#include "decimal/one_digit.h"
#include "decimal/short_sum.h"
#include "decimal/sums.h"
#include "decimal/zoned_digits.h"
#include "kvr2/decimal.h"

#include <utility>

using namespace bcd;

namespace {

// Of three items of n digits.
template <bool subtract, int32_t n>
[[gnu::always_inline]] inline bool sumOfLength(const auto &call)
{
    if constexpr (n == 1)
        return digitSum<forms::ZndTO, subtract>(call.op1, call.op2, call.dst);
    else
        return byteZonedSum<subtract, std::conditional_t<(n > 4), uint64_t, uint32_t>>(call);
}

// Of any lengths. The ways by bytes come first; those through nibbles take signs that are letters,
// and what is longer.
template <bool subtract>
[[gnu::always_inline]] inline bool sumOfLengths(const auto &call)
{
    return byteZonedSum<subtract, uint32_t>(call) || byteZonedSum<subtract, uint64_t>(call) ||
           byteZonedSum<subtract, u128>(call) || shortZonedSum<subtract, uint64_t>(call) ||
           longZonedSum<subtract>(call) || shortZonedSum<subtract, u128>(call);
}

struct AddZoned {
    using Form = forms::ZndTO;
    static constexpr const char *title = "add zoned...";
    template <int32_t n>
    [[gnu::always_inline]] static bool sameLength(const auto &call)
    {
        return sumOfLength<false, n>(call);
    }
    static bool quickLong(const auto &call) { return sumOfLengths<false>(call); }
    static void work(const auto &c) { zvkBcdAddZoned(c.op1, c.op1Digits, c.op2, c.op2Digits, c.dst, c.dstDigits, 0); }
};

struct SubZoned {
    using Form = forms::ZndTO;
    static constexpr const char *title = "sub zoned...";
    template <int32_t n>
    [[gnu::always_inline]] static bool sameLength(const auto &call)
    {
        return sumOfLength<true, n>(call);
    }
    static bool quickLong(const auto &call) { return sumOfLengths<true>(call); }
    static void work(const auto &c) { zvkBcdSubZoned(c.op1, c.op1Digits, c.op2, c.op2Digits, c.dst, c.dstDigits, 0); }
};

// Bytes of the longer operand that no carry or borrow has reached keep their zones.
void copyRest(const uint8_t *start, const uint8_t *end, uint8_t *dst, uint8_t *to)
{
    size_t rest = static_cast<size_t>(end - start);
    size_t room = static_cast<size_t>(to - dst);
    size_t kept = rest < room ? rest : room;
    memcpy(to - kept, end - kept, kept);
}

} // namespace

ZVK_SHORT_ENTRY uint8_t *_zvkcBCD_ADD_Znd(const uint8_t *op1, const uint8_t *op2, uint8_t *dst, int32_t dstDigits,
                                          int32_t op2Digits, int32_t op1Digits)
{
    return runEntry<TwoOperands<AddZoned>>(op1, op2, dst, dstDigits, op2Digits, op1Digits);
}

ZVK_SHORT_ENTRY uint8_t *_zvkcBCD_SUB_Znd(const uint8_t *op1, const uint8_t *op2, uint8_t *dst, int32_t dstDigits,
                                          int32_t op2Digits, int32_t op1Digits)
{
    return runEntry<TwoOperands<SubZoned>>(op1, op2, dst, dstDigits, op2Digits, op1Digits);
}

int zvkBcdAddZoned(const uint8_t *first, int32_t firstDigits, const uint8_t *second, int32_t secondDigits, uint8_t *dst,
                   int32_t dstDigits, int sameSign)
{
    if (firstDigits < 1 || secondDigits < 1 || dstDigits < 1) return 1;
    ZonedOperand a(first, firstDigits), b(second, secondDigits);
    bool negative = a.negative();
    if (sameSign != 1 && negative != b.negative()) {
        bool swap = a.digits() != b.digits() ? a.digits() < b.digits()
                                             : zvkBcdCmpZoned(first, firstDigits, second, secondDigits, 1) < 0;
        if (swap) return zvkBcdSubZoned(second, secondDigits, first, firstDigits, dst, dstDigits, 1);
        return zvkBcdSubZoned(first, firstDigits, second, secondDigits, dst, dstDigits, 1);
    }
    auto room = static_cast<size_t>(dstDigits);
    a.cutTo(room);
    b.cutTo(room);
    if (a.digits() < b.digits()) std::swap(a, b);
    memset(dst, '0', room - a.digits());

    uint8_t *to = dst + room;
    const uint8_t *from = a.last + 1;
    const uint8_t *other = b.last + 1;
    bool carry = false;
    while (other > b.start) {
        from--, other--;
        *--to = zonedDigit(addDigit(a.digit(from), b.digit(other), carry));
    }
    while (carry && from > a.start) {
        from--;
        *--to = zonedDigit(addDigit(a.digit(from), 0, carry));
    }
    copyRest(a.start, from, dst, to);
    if (carry && to > dst) to[-1] = '1';
    dst[room - 1] = zonedDigit(dst[room - 1], negative);
    return 1;
}

int zvkBcdSubZoned(const uint8_t *first, int32_t firstDigits, const uint8_t *second, int32_t secondDigits, uint8_t *dst,
                   int32_t dstDigits, int sameSign)
{
    if (firstDigits < 1 || secondDigits < 1 || dstDigits < 1) return 1;
    ZonedOperand a(first, firstDigits), b(second, secondDigits);
    bool negative = a.negative();
    if (sameSign != 1 && negative != b.negative())
        return zvkBcdAddZoned(first, firstDigits, second, secondDigits, dst, dstDigits, 1);
    if (a.digits() < b.digits()) {
        std::swap(a, b);
        negative = !negative;
    }
    auto room = static_cast<size_t>(dstDigits);
    size_t stored = a.digits() < room ? a.digits() : room;
    memset(dst, '0', room - stored);

    // Beyond the destination's left end the subtraction goes on for the borrow alone.
    uint8_t *to = dst + room;
    const uint8_t *from = a.last + 1;
    const uint8_t *other = b.last + 1;
    bool borrow = false;
    while (other > b.start) {
        from--, other--;
        uint8_t digit = subtractDigit(a.digit(from), b.digit(other), borrow);
        if (to > dst) *--to = zonedDigit(digit);
    }
    while (borrow && from > a.start) {
        from--;
        uint8_t digit = subtractDigit(a.digit(from), 0, borrow);
        if (to > dst) *--to = zonedDigit(digit);
    }
    copyRest(a.start, from, dst, to);
    if (borrow) {
        complementDigits(dst + room - 1, stored);
        negative = !negative;
    }
    dst[room - 1] = zonedDigit(dst[room - 1], negative);
    return 1;
}
