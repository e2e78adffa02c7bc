// The calls of the arithmetic families: what ADD, SUB, MPY, DIV and MOD have in common as entries
// (decimal/entry.h), and the same for items that a binary integer is added to.
//
// The operation is a structure:
//
//     struct AddPacked {
//         using Form = forms::Pckd;
//         static constexpr const char *title = "add packed...";         // null: these entries have no dump
//         static bool quick(const auto &call);                          // and quickLong, if it has one
//         static void work(const auto &call);
//     };
#pragma once

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

    bool quick(uint32_t, uint8_t *&result) const
    {
        result = dst;
        return Op::quick(*this);
    }

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
