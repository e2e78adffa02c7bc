// The calls of the arithmetic families: what ADD, SUB, MPY, DIV and MOD have in common as entries
// (decimal/entry.h), and the same for items that a binary integer is added to.
//
// The operation is a structure:
//
//     struct AddPacked {
//         using Form = forms::Pckd;
//         static constexpr const char *title = "add packed...";         // null: these entries have no dump
//         static bool quick(const auto &call);                          // and quickLong, if it has one
//         template <int32_t n> static bool sameLength(const auto &call);  // or that, in place of quick
//         static void work(const auto &call);
//     };
#pragma once

#include <iterator>

#include "decimal/dump.h"
#include "decimal/entry.h"
#include "decimal/validation.h"

namespace bcd {

template <class Op>
struct TwoOperands {
    using Form = typename Op::Form;

    const uint8_t *op1;
    const uint8_t *op2;
    uint8_t *dst;
    int32_t dstDigits;
    int32_t op2Digits;
    int32_t op1Digits;

    bool quick(uint32_t, uint8_t *&result) const requires requires(const TwoOperands &call) { Op::quick(call); }
    {
        result = dst;
        return Op::quick(*this);
    }

    // Where all three items have the same few digits there is a routine for each length. It knows
    // its loads, shifts and stores, and needs no registers for lengths.
    bool quick(uint32_t, uint8_t *&result) const requires requires(const TwoOperands &call)
    {
        Op::template sameLength<1>(call);
    }
    {
        const auto index = static_cast<uint32_t>(op1Digits - 1);
        if (op2Digits != op1Digits || dstDigits != op1Digits || index >= std::size(kOfLength)) return false;
        result = kOfLength[index](op1, op2, dst);
        return true;
    }
    template <int32_t n>
    static uint8_t *ofLength(const uint8_t *op1, const uint8_t *op2, uint8_t *dst)
    {
        if (__builtin_expect(Op::template sameLength<n>(TwoOperands{op1, op2, dst, n, n, n}), 1)) return dst;
        return runLongEntry<TwoOperands>(op1, op2, dst, n, n, n);
    }
    static constexpr decltype(&ofLength<1>) kOfLength[] = {ofLength<1>, ofLength<2>, ofLength<3>, ofLength<4>,
                                                           ofLength<5>, ofLength<6>, ofLength<7>, ofLength<8>};

    bool quickLong(uint8_t *&result) const requires requires(const TwoOperands &call) { Op::quickLong(call); }
    {
        result = dst;
        return Op::quickLong(*this);
    }

    void dumpOperands() const requires(Op::title != nullptr)
    {
        dumpTitle(Op::title);
        dumpOperand("op1:", op1, op1Digits, Form::bytes(op1Digits));
        dumpOperand("op2:", op2, op2Digits, Form::bytes(op2Digits));
    }

    void validate(uint32_t mode) const
    {
        if (!checked(kArithmeticRule, mode)) return;
        judgeOperand(check<Form>(op1, op1Digits, kCheckArithmetic));
        judgeOperand(check<Form>(op2, op2Digits, kCheckArithmetic));
    }

    uint8_t *work(uint32_t) const
    {
        Op::work(*this);
        return dst;
    }

    void dumpResult(uint8_t *) const { dumpOperand("dst:", dst, dstDigits, Form::bytes(dstDigits)); }
};

// In place: the item is operand and result.
template <class Op>
struct ItemAndInteger {
    using Form = typename Op::Form;

    uint8_t *op;
    int32_t opDigits;
    typename Op::Integer value;

    bool quick(uint32_t, uint8_t *&result) const
    {
        result = op;
        return Op::quick(*this);
    }

    bool quickLong(uint8_t *&result) const
    {
        result = op;
        return Op::quickLong(*this);
    }

    void dumpOperands() const
    {
        dumpTitle(Op::title);
        dumpOperand("op1:", op, opDigits, Form::bytes(opDigits));
        dumpNumber("op2:", sizeof value == 4 ? "%d" : "%ld", value);
    }

    void validate(uint32_t mode) const
    {
        if (checked(kArithmeticRule, mode)) judgeOperand(check<Form>(op, opDigits, kCheckArithmetic));
    }

    uint8_t *work(uint32_t) const
    {
        Op::work(op, opDigits, value);
        return op;
    }

    void dumpResult(uint8_t *) const { dumpOperand("dst:", op, opDigits, Form::bytes(opDigits)); }
};

} // namespace bcd
