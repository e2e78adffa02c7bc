// ABS and NEG: a move, then a sign.
#include "decimal/dump.h"
#include "decimal/entry.h"
#include "decimal/validation.h"
#include "kvr2/decimal.h"

using namespace bcd;

namespace {

template <class Op>
struct SignChange {
    using Form = typename Op::Form;

    const uint8_t *src;
    uint8_t *dst;
    int32_t dstDigits;
    int32_t srcDigits;

    void dumpOperands() const requires(Op::title != nullptr)
    {
        dumpTitle(Op::title);
        dumpOperand("src:", src, srcDigits, Form::bytes(srcDigits));
    }

    void validate(uint32_t mode) const
    {
        if (checked(Op::rule, mode)) judgeOperand(check<Form>(src, srcDigits, kCheckArithmetic));
    }

    uint8_t *work(uint32_t mode) const
    {
        if (Form::bytes(dstDigits) == 0 || Form::bytes(srcDigits) == 0) return dst;
        Op::work(*this, mode);
        return dst;
    }

    void dumpResult(uint8_t *) const { dumpOperand("dst:", dst, dstDigits, Form::bytes(dstDigits)); }

    // Unless the mode keeps negative zeros: what is zero becomes positive. The source is tested,
    // not what is left of it in the destination.
    bool losesSign(uint32_t mode) const
    {
        if (mode & ZVK_BCD_KEEP_NEG_ZERO) return false;
        if constexpr (isPacked<Form>)
            return zvkBcdIsZeroPacked(src, srcDigits);
        else
            return zvkBcdIsZeroZoned(src, srcDigits);
    }
};

// Writes the first byte of a leading overpunch item, after the move: the source's first digit,
// decoded, if the whole source was moved. In a longer destination that byte is padding, and the
// source's overpunched byte stays further right as it is; that asymmetry is on purpose.
void writeLeadingDigit(const auto &call, uint8_t sourceFirst, bool negative)
{
    uint8_t digit = call.srcDigits <= call.dstDigits ? overpunchDigit(sourceFirst) : *call.dst;
    *call.dst = zonedDigit(digit, negative);
}

struct AbsPacked {
    using Form = forms::Pckd;
    static constexpr const char *title = "abs packed...";
    static constexpr ValidationRule rule = kArithmeticRule;
    static void work(const auto &c, uint32_t)
    {
        zvkBcdMovePacked(c.src, c.srcDigits, c.dst, c.dstDigits);
        setPackedSign(c.dst, c.dstDigits, false);
    }
};

struct AbsZoned {
    using Form = forms::ZndTO;
    static constexpr const char *title = nullptr;
    static constexpr ValidationRule rule = kSourceRule;
    static void work(const auto &c, uint32_t)
    {
        zvkBcdMoveZoned(c.src, c.srcDigits, c.dst, c.dstDigits);
        uint8_t &last = c.dst[c.dstDigits - 1];
        last = zonedDigit(last);
    }
};

struct AbsLeading {
    using Form = forms::ZndLO;
    static constexpr const char *title = nullptr;
    static constexpr ValidationRule rule = kSourceRule;
    static void work(const auto &c, uint32_t mode)
    {
        uint8_t first = *c.src;
        AbsZoned::work(c, mode);
        writeLeadingDigit(c, first, false);
    }
};

struct NegPacked {
    using Form = forms::Pckd;
    static constexpr const char *title = "neg packed...";
    static constexpr ValidationRule rule = kArithmeticRule;
    static void work(const auto &c, uint32_t mode)
    {
        bool positive = packedIsNegative(c.src, c.srcDigits) || c.losesSign(mode);
        zvkBcdMovePacked(c.src, c.srcDigits, c.dst, c.dstDigits);
        setPackedSign(c.dst, c.dstDigits, !positive);
    }
};

struct NegZoned {
    using Form = forms::ZndTO;
    static constexpr const char *title = nullptr;
    static constexpr ValidationRule rule = kArithmeticRule;
    static void work(const auto &c, uint32_t mode)
    {
        bool positive = Form::negative(c.src, c.srcDigits) || c.losesSign(mode);
        zvkBcdMoveZoned(c.src, c.srcDigits, c.dst, c.dstDigits);
        Form::writeSign(c.dst, c.dstDigits, !positive);
    }
};

struct NegLeading {
    using Form = forms::ZndLO;
    static constexpr const char *title = nullptr;
    static constexpr ValidationRule rule = kArithmeticRule;
    static void work(const auto &c, uint32_t mode)
    {
        // Odd, and so required: the sign is kept, not inverted.
        bool negative = Form::negative(c.src, c.srcDigits) && !c.losesSign(mode);
        uint8_t first = *c.src;
        AbsZoned::work(
            c, mode); // the last byte loses its zone first: with one digit it is also the byte that keeps the sign
        writeLeadingDigit(c, first, negative);
    }
};

} // namespace

#define SIGN_CHANGE(Name, OP)                                                                                          \
    uint8_t *Name(const uint8_t *src, uint8_t *dst, int32_t dstDigits, int32_t srcDigits)                              \
    {                                                                                                                  \
        return runEntry<SignChange<OP>>(src, dst, dstDigits, srcDigits);                                               \
    }

SIGN_CHANGE(_zvkcBCD_ABS_Pckd, AbsPacked)
SIGN_CHANGE(_zvkcBCD_ABS_Znd, AbsZoned)
SIGN_CHANGE(_zvkcBCD_ABS_ZndLO, AbsLeading)
SIGN_CHANGE(_zvkcBCD_NEG_Pckd, NegPacked)
SIGN_CHANGE(_zvkcBCD_NEG_Znd, NegZoned)
SIGN_CHANGE(_zvkcBCD_NEG_ZndLO, NegLeading)
