// Addition and subtraction of packed items of any length and content.
//
// Items of up to 31 clean digits never get here: short_sum.h has done them. Addition goes from
// right to left in the widest words that fit, with a decimal carry; subtraction goes by bytes, as
// pairs 0 to 99, through two tables.
#include "decimal/arithmetic_entry.h"
#include "decimal/packed_pairs.h"
#include "decimal/short_sum.h"
#include "decimal/sums.h"
#include "kvr2/decimal.h"

#include <utility>

using namespace bcd;

namespace {

struct AddPacked {
    using Form = forms::Pckd;
    static constexpr const char *title = "add packed...";
    static bool quick(const auto &call) { return shortPackedSum<false, uint64_t>(call); }
    static bool quickLong(const auto &call) { return shortPackedSum<false, u128>(call); }
    static void work(const auto &c) { zvkBcdAddPacked(c.op1, c.op1Digits, c.op2, c.op2Digits, c.dst, c.dstDigits, 0); }
};

struct SubPacked {
    using Form = forms::Pckd;
    static constexpr const char *title = "sub packed...";
    static bool quick(const auto &call) { return shortPackedSum<true, uint64_t>(call); }
    static bool quickLong(const auto &call) { return shortPackedSum<true, u128>(call); }
    static void work(const auto &c) { zvkBcdSubPacked(c.op1, c.op1Digits, c.op2, c.op2Digits, c.dst, c.dstDigits, 0); }
};

// An operand: what is left of it after its leading zero bytes.
struct Operand {
    const uint8_t *start;
    const uint8_t *last;
    int32_t digits; // significant ones

    Operand(const uint8_t *item, int32_t n) : last(item + packedBytes(n) - 1)
    {
        start = skipZeroBytes(item, last);
        digits = significantDigits(start, last);
    }

    size_t bytes() const { return static_cast<size_t>(last - start) + 1; }

    void cutTo(size_t most)
    {
        if (bytes() <= most) return;
        start = last + 1 - most;
        digits = significantDigits(start, last);
    }
};

// An addition on its way from right to left; the pointers are after the bytes that come next.
struct Addition {
    const uint8_t *from;
    uint8_t *to;
    bool carry;

    // Steps of T's width are right for digits. Other nibbles go through the byte step, which says
    // what comes of them, so that it does not depend on how the bytes fall into words.
    template <class T>
    static bool fits(size_t bytes, auto... behind)
    {
        return bytes >= sizeof(T) && (sizeof(T) == 1 || (hasOnlyDigits(load<T>(behind - sizeof(T))) && ...));
    }

    template <class T>
    bool add(const uint8_t *&other, size_t &bytes)
    {
        if (!fits<T>(bytes, from, other)) return false;
        from -= sizeof(T), other -= sizeof(T), to -= sizeof(T), bytes -= sizeof(T);
        storeBig<T>(to, addWord(loadBig<T>(from), loadBig<T>(other), carry));
        return true;
    }

    template <class T>
    bool increment(size_t &bytes)
    {
        if (!fits<T>(bytes, from)) return false;
        from -= sizeof(T), to -= sizeof(T), bytes -= sizeof(T);
        storeBig<T>(to, incrementWord(loadBig<T>(from), carry));
        return true;
    }

    void addAll(const uint8_t *other, size_t bytes)
    {
        while (add<uint64_t>(other, bytes) || add<uint32_t>(other, bytes) || add<uint8_t>(other, bytes)) {
        }
    }

    // Until a step absorbs the carry; the rest is copied.
    void carryOn(size_t bytes)
    {
        while (carry && (increment<uint64_t>(bytes) || increment<uint8_t>(bytes))) {
        }
        memcpy(to - bytes, from - bytes, bytes);
    }
};

} // namespace

ZVK_SHORT_ENTRY uint8_t *_zvkcBCD_ADD_Pckd(const uint8_t *op1, const uint8_t *op2, uint8_t *dst, int32_t dstDigits,
                                           int32_t op2Digits, int32_t op1Digits)
{
    return runEntry<TwoOperands<AddPacked>>(op1, op2, dst, dstDigits, op2Digits, op1Digits);
}

ZVK_SHORT_ENTRY uint8_t *_zvkcBCD_SUB_Pckd(const uint8_t *op1, const uint8_t *op2, uint8_t *dst, int32_t dstDigits,
                                           int32_t op2Digits, int32_t op1Digits)
{
    return runEntry<TwoOperands<SubPacked>>(op1, op2, dst, dstDigits, op2Digits, op1Digits);
}

int zvkBcdAddPacked(const uint8_t *first, int32_t firstDigits, const uint8_t *second, int32_t secondDigits,
                    uint8_t *dst, int32_t dstDigits, int sameSign)
{
    Operand a(first, firstDigits), b(second, secondDigits);
    bool negative = isNegativeNibble(*a.last);
    if (sameSign != 1 && negative != isNegativeNibble(*b.last)) {
        bool swap = a.digits != b.digits ? a.digits < b.digits
                                         : zvkBcdCmpPacked(first, firstDigits, second, secondDigits, 1) < 0;
        if (swap) return zvkBcdSubPacked(second, secondDigits, first, firstDigits, dst, dstDigits, 1);
        return zvkBcdSubPacked(first, firstDigits, second, secondDigits, dst, dstDigits, 1);
    }
    size_t room = packedBytes(dstDigits);
    a.cutTo(room);
    b.cutTo(room);
    const Operand &longer = a.digits < b.digits ? b : a;
    const Operand &shorter = a.digits < b.digits ? a : b;
    memset(dst, 0, room - longer.bytes());

    unsigned units = (*longer.last & 0xF0u) + (*shorter.last & 0xF0u);
    bool carry = units > 0x90;
    if (carry) units += 0x60;
    uint8_t lastByte = static_cast<uint8_t>((units & 0xF0) | signNibble(negative));

    Addition run{longer.last, dst + room - 1, carry};
    *run.to = lastByte;
    run.addAll(shorter.last, shorter.bytes() - 1);
    run.carryOn(longer.bytes() - shorter.bytes());
    if (run.carry && longer.bytes() < room) dst[room - longer.bytes() - 1] = 0x01;
    clearUnusedNibble(dst, dstDigits);
    return 1;
}

int zvkBcdSubPacked(const uint8_t *first, int32_t firstDigits, const uint8_t *second, int32_t secondDigits,
                    uint8_t *dst, int32_t dstDigits, int sameSign)
{
    Operand a(first, firstDigits), b(second, secondDigits);
    bool negative = isNegativeNibble(*a.last);
    if (sameSign != 1 && negative != isNegativeNibble(*b.last))
        return zvkBcdAddPacked(first, firstDigits, second, secondDigits, dst, dstDigits, 1);
    if (a.digits < b.digits) {
        std::swap(a, b);
        negative = !negative;
    }
    size_t room = packedBytes(dstDigits);
    size_t stored = a.bytes() < room ? a.bytes() : room;
    memset(dst, 0, room - stored);

    // The last bytes read as ten times their digit, so they are pairs like the others.
    bool borrow = false;
    uint8_t *to = dst + room;
    const uint8_t *from = a.last + 1;
    const uint8_t *other = b.last + 1;
    // Beyond the destination's left end the subtraction goes on for the borrow alone.
    while (from > a.start && other > b.start) {
        uint8_t pair = subtractPair(kPairValue[*--from], kPairValue[*--other], borrow);
        if (to > dst) *--to = pair;
    }
    while (from > a.start && borrow) {
        uint8_t pair = subtractPair(kPairValue[*--from], 0, borrow);
        if (to > dst) *--to = pair;
    }
    for (; from > a.start && to > dst; *--to = *--from) {
    }
    if (borrow) {
        complementPairs(dst + room - 1, stored);
        negative = !negative;
    }
    setPackedSign(dst, dstDigits, negative);
    clearUnusedNibble(dst, dstDigits);
    return 1;
}
