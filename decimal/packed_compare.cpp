// Comparison of packed items.
//
// A packed magnitude compares like a big-endian number, all nibbles but the last one counting as
// they stand. So items of up to 16 bytes compare like signed integers, and longer ones, or their
// magnitudes alone, as byte strings after their leading zero bytes.
#include "decimal/compare_entry.h"
#include "decimal/short_number.h"
#include "decimal/sums.h"
#include "kvr2/decimal.h"

#include <type_traits>

using namespace bcd;

namespace {

struct ComparePacked {
    using Form = forms::Pckd;
    static constexpr bool dumps = true;
    static constexpr const char *titles[] = {"equ packed...", "neq packed...", "grt packed...",
                                             "geq packed...", "les packed...", "leq packed..."};
    static constexpr bool hasShortCuts = true;

    template <class Signed>
    static bool fits(int32_t n1, int32_t n2)
    {
        return static_cast<uint32_t>(n1 | n2) <= kWordDigits<Signed>;
    }

    // Of any bytes: nibbles above 9 count as they are, and +0 is -0.
    template <class Signed>
    static Signed value(const uint8_t *op, int32_t n)
    {
        constexpr bool wide = sizeof(Signed) == sizeof(u128);
        shortforms::Pckd::Raw<std::conditional_t<wide, u128, uint64_t>> raw(op, n);
        auto magnitude = static_cast<Signed>(raw.digits);
        return raw.negative() ? -magnitude : magnitude;
    }

    static int compare(const uint8_t *op1, int32_t n1, const uint8_t *op2, int32_t n2, int magnitudeOnly)
    {
        return zvkBcdCmpPacked(op1, n1, op2, n2, magnitudeOnly);
    }
};

struct IsZeroPacked {
    using Form = forms::Pckd;
    static constexpr const char *title = "not packed...";
    static int test(const uint8_t *op, int32_t n) { return zvkBcdIsZeroPacked(op, n); }
};

} // namespace

int zvkBcdCmpPacked(const uint8_t *op1, int32_t op1Digits, const uint8_t *op2, int32_t op2Digits, int magnitudeOnly)
{
    size_t bytes1 = packedBytes(op1Digits), bytes2 = packedBytes(op2Digits);
    if (bytes1 == bytes2 && op1 == op2) return 0; // whatever is there
    const uint8_t *last1 = op1 + bytes1 - 1, *last2 = op2 + bytes2 - 1;
    bool negative1 = isNegativeNibble(*last1), negative2 = isNegativeNibble(*last2);
    op1 = skipZeroBytes(op1, last1);
    op2 = skipZeroBytes(op2, last2);
    ptrdiff_t order = (last1 - op1) - (last2 - op2);
    bool asMagnitudes = magnitudeOnly == 1 && (bytes1 == bytes2 || order == 0);
    if (order == 0) order = memcmp(op1, op2, static_cast<size_t>(last1 - op1));
    if (order == 0) order = (*last1 >> 4) - (*last2 >> 4);
    if (asMagnitudes) return (order > 0) - (order < 0);
    bool zero = op1 == last1 && *last1 >> 4 == 0;
    if (order == 0 && (zero || negative1 == negative2)) return 0; // +0 and -0 are equal
    // What is greater decides by its own sign, and equal magnitudes by the first one's.
    return (order >= 0 ? negative1 : !negative2) ? -1 : 1;
}

#define RELATION(Name, relation)                                                                                       \
    int32_t Name(const uint8_t *op1, const uint8_t *op2, int32_t op2Digits, int32_t op1Digits)                         \
    {                                                                                                                  \
        return runEntry<Comparison<ComparePacked, Relation::relation>>(op1, op2, op2Digits, op1Digits);                \
    }

RELATION(_zvkcBCD_EQU_Pckd, EQU)
RELATION(_zvkcBCD_NEQ_Pckd, NEQ)
RELATION(_zvkcBCD_GRT_Pckd, GRT)
RELATION(_zvkcBCD_GEQ_Pckd, GEQ)
RELATION(_zvkcBCD_LES_Pckd, LES)
RELATION(_zvkcBCD_LEQ_Pckd, LEQ)

int32_t _zvkcBCD_NOT_Pckd(const uint8_t *op, int32_t opDigits)
{
    return runEntry<ZeroTest<IsZeroPacked>>(op, opDigits);
}
