// Comparison of zoned items.
//
// Items of the same sign and the same length, as they come or after their leading zeros, take the
// quick way: one memcmp over all bytes but the last. It sees zones, so "12" in ASCII digits and
// "12" in EBCDIC digits are different there, while items that go the long way are compared digit by
// digit. That economy on like items is on purpose.
#include "decimal/compare_entry.h"
#include "decimal/sums.h"
#include "decimal/words.h"
#include "decimal/zoned_digits.h"
#include "kvr2/decimal.h"

using namespace bcd;

namespace {

struct CompareZoned {
    using Form = forms::ZndTO;
    static constexpr bool dumps = false; // unlike packed ones; nor is the zero test
    static constexpr bool hasShortCuts = false;
    static int compare(const uint8_t *op1, int32_t n1, const uint8_t *op2, int32_t n2, int magnitudeOnly)
    {
        return zvkBcdCmpZoned(op1, n1, op2, n2, magnitudeOnly);
    }
};

struct IsZeroZoned {
    using Form = forms::ZndTO;
    static constexpr const char *title = nullptr;
    static int test(const uint8_t *op, int32_t n) { return zvkBcdIsZeroZoned(op, n); }
};

// Low nibbles of `length` bytes, as strings of digits.
int compareDigits(const uint8_t *a, const uint8_t *b, size_t length)
{
    constexpr uint64_t nibbles = all<uint64_t>(0x0F);
    for (; length >= 8; a += 8, b += 8, length -= 8) {
        uint64_t left = loadBig<uint64_t>(a) & nibbles;
        uint64_t right = loadBig<uint64_t>(b) & nibbles;
        if (left != right) return left > right ? 1 : -1;
    }
    for (; length > 0; a++, b++, length--)
        if (int order = (*a & 0x0F) - (*b & 0x0F)) return order;
    return 0;
}

// Both of the same length and, unless only magnitudes count, the same sign.
int compareAlike(const uint8_t *a, const uint8_t *b, const uint8_t *lastA, bool asMagnitudes)
{
    auto length = static_cast<size_t>(lastA - a);
    int order = memcmp(a, b, length);
    if (order == 0) {
        int left = overpunchDigit(a[length]);
        int right = overpunchDigit(b[length]);
        order = (left > right) - (left < right);
    }
    return asMagnitudes ? order : -order;
}

} // namespace

int zvkBcdCmpZoned(const uint8_t *op1, int32_t op1Digits, const uint8_t *op2, int32_t op2Digits, int magnitudeOnly)
{
    if (op1Digits == op2Digits && op1 == op2) return 0; // whatever is there
    if (op1Digits < 1 || op2Digits < 1) return 0;
    const uint8_t *last1 = op1 + op1Digits - 1;
    bool negative1 = overpunchIsNegative(*last1);
    bool negative2 = overpunchIsNegative(op2[op2Digits - 1]);
    bool alike = negative1 == negative2 || magnitudeOnly == 1;
    bool asMagnitudes = !negative1 || magnitudeOnly == 1;
    if (op1Digits == op2Digits && alike) return compareAlike(op1, op2, last1, asMagnitudes);

    ZonedOperand a(op1, op1Digits), b(op2, op2Digits);
    int order;
    if (a.digits() != b.digits()) {
        order = a.digits() > b.digits() ? 1 : -1;
    } else {
        if (op1Digits != op2Digits && alike) return compareAlike(a.start, b.start, last1, asMagnitudes);
        order = compareDigits(a.start, b.start, a.digits() - 1);
        if (order == 0) order = overpunchDigit(*a.last) - overpunchDigit(*b.last);
        if (order == 0) {
            // +0 and -0 are equal.
            bool zero = a.start == a.last && overpunchDigit(*a.last) == 0;
            if (zero || negative1 == negative2 || magnitudeOnly == 1) return 0;
            return negative1 ? -1 : 1;
        }
    }
    if (order > 0) return negative1 ? -1 : 1;
    return negative2 ? 1 : -1;
}

#define RELATION(Name, relation)                                                                                       \
    int32_t Name(const uint8_t *op1, const uint8_t *op2, int32_t op2Digits, int32_t op1Digits)                         \
    {                                                                                                                  \
        return runEntry<Comparison<CompareZoned, Relation::relation>>(op1, op2, op2Digits, op1Digits);                 \
    }

RELATION(_zvkcBCD_EQU_Znd, EQU)
RELATION(_zvkcBCD_NEQ_Znd, NEQ)
RELATION(_zvkcBCD_GRT_Znd, GRT)
RELATION(_zvkcBCD_GEQ_Znd, GEQ)
RELATION(_zvkcBCD_LES_Znd, LES)
RELATION(_zvkcBCD_LEQ_Znd, LEQ)

int32_t _zvkcBCD_NOT_Znd(const uint8_t *op, int32_t opDigits) { return runEntry<ZeroTest<IsZeroZoned>>(op, opDigits); }
