// Comparison of packed items.
//
// A packed magnitude compares like a big-endian number, all nibbles but the last one counting as they stand. So items of up to 16 bytes are
// two numbers, and longer ones are two byte strings behind their leading zero bytes.
#include "decimal/compare_entry.h"
#include "decimal/sums.h"
#include "kvr2/decimal.h"

using namespace bcd;

namespace {

// Magnitudes. `same length` is that of what stands behind the leading zero bytes.
struct Order {
    int order; // sign of op1 - op2
    bool sameLength;
    bool zero;
};

inline size_t significantBytes(u128 raw)
{
    auto high = static_cast<uint64_t>(raw >> 64);
    if (high) return 16 - static_cast<size_t>(__builtin_clzll(high)) / 8;
    return 8 - static_cast<size_t>(__builtin_clzll(static_cast<uint64_t>(raw) | 1)) / 8;
}

Order compareLong(const uint8_t *op1, const uint8_t *last1, const uint8_t *op2, const uint8_t *last2)
{
    op1 = skipZeroBytes(op1, last1);
    op2 = skipZeroBytes(op2, last2);
    if (last1 - op1 != last2 - op2) return {last1 - op1 > last2 - op2 ? 1 : -1, false, false};
    int order = memcmp(op1, op2, static_cast<size_t>(last1 - op1));
    if (order == 0) order = (*last1 >> 4) - (*last2 >> 4);
    return {order, true, order == 0 && op1 == last1 && *last1 >> 4 == 0};
}

struct ComparePacked {
    using Form = forms::Pckd;
    static constexpr bool dumps = true;
    static constexpr const char *titles[] = {"equ packed...", "neq packed...", "grt packed...",
                                             "geq packed...", "les packed...", "leq packed..."};
    [[gnu::always_inline]] static int compare(const uint8_t *op1, int32_t n1, const uint8_t *op2, int32_t n2, int magnitudeOnly)
    {
        size_t bytes1 = packedBytes(n1);
        size_t bytes2 = packedBytes(n2);
        if (bytes1 == bytes2 && op1 == op2) return 0; // whatever stands there
        bool negative1, negative2;
        Order found;
        if (bytes1 <= kMostBytes && bytes2 <= kMostBytes) {
            u128 raw1 = loadItem(op1, bytes1);
            u128 raw2 = loadItem(op2, bytes2);
            negative1 = isNegativeNibble(static_cast<uint8_t>(raw1));
            negative2 = isNegativeNibble(static_cast<uint8_t>(raw2));
            raw1 >>= 4;
            raw2 >>= 4;
            found.order = (raw1 > raw2) - (raw1 < raw2);
            found.zero = raw1 == 0;
            found.sameLength = magnitudeOnly != 1 || significantBytes(raw1 << 4) == significantBytes(raw2 << 4);
        } else {
            negative1 = isNegativeNibble(op1[bytes1 - 1]);
            negative2 = isNegativeNibble(op2[bytes2 - 1]);
            found = compareLong(op1, op1 + bytes1 - 1, op2, op2 + bytes2 - 1);
        }
        if (magnitudeOnly == 1 && (bytes1 == bytes2 || found.sameLength)) return found.order;
        if (found.order > 0) return negative1 ? -1 : 1;
        if (found.order < 0) return negative2 ? 1 : -1;
        if (negative1 == negative2 || found.zero) return 0; // +0 and -0 are equal
        return negative1 ? -1 : 1;
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
    return ComparePacked::compare(op1, op1Digits, op2, op2Digits, magnitudeOnly);
}

#define RELATION(NAME)                                                                                                                     \
    int32_t _zvkcBCD_##NAME##_Pckd(const uint8_t *op1, const uint8_t *op2, int32_t op2Digits, int32_t op1Digits)                           \
    {                                                                                                                                      \
        return runEntry<Comparison<ComparePacked, Relation::NAME>>(op1, op2, op2Digits, op1Digits);                                        \
    }

RELATION(EQU)
RELATION(NEQ)
RELATION(GRT)
RELATION(GEQ)
RELATION(LES)
RELATION(LEQ)

int32_t _zvkcBCD_NOT_Pckd(const uint8_t *op, int32_t opDigits) { return runEntry<ZeroTest<IsZeroPacked>>(op, opDigits); }
