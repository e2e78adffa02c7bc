// The calls of the comparing families: the six relations and the zero test NOT (decimal/entry.h).
#pragma once

#include "decimal/dump.h"
#include "decimal/entry.h"
#include "decimal/validation.h"

namespace bcd {

enum class Relation { EQU, NEQ, GRT, GEQ, LES, LEQ };

template <Relation relation>
inline int32_t holds(int order)
{
    if constexpr (relation == Relation::EQU) return order == 0;
    if constexpr (relation == Relation::NEQ) return order != 0;
    if constexpr (relation == Relation::GRT) return order > 0;
    if constexpr (relation == Relation::GEQ) return order >= 0;
    if constexpr (relation == Relation::LES) return order < 0;
    return order < 1;
}

// `Compare` has the form, the comparison, and if the form's comparisons are dumped, a title for each relation.
template <class Compare, Relation relation>
struct Comparison {
    using Form = typename Compare::Form;

    const uint8_t *op1;
    const uint8_t *op2;
    int32_t op2Digits;
    int32_t op1Digits;

    void dumpOperands() const requires(Compare::dumps)
    {
        dumpTitle(Compare::titles[static_cast<int>(relation)]);
        dumpOperand("op1:", op1, op1Digits, Form::bytes(op1Digits));
        dumpOperand("op2:", op2, op2Digits, Form::bytes(op2Digits));
    }

    void validate(uint32_t mode) const
    {
        if (!checked(kCompareRule, mode)) return;
        judgeOperand(check<Form>(op1, op1Digits, kCheckStrict));
        judgeOperand(check<Form>(op2, op2Digits, kCheckStrict));
    }

    int32_t work(uint32_t) const { return holds<relation>(Compare::compare(op1, op1Digits, op2, op2Digits, 0)); }

    void dumpResult(int32_t result) const { dumpNumber("res:", "%d", result); }
};

template <class Test>
struct ZeroTest {
    using Form = typename Test::Form;

    const uint8_t *op;
    int32_t opDigits;

    void dumpOperands() const requires(Test::title != nullptr)
    {
        dumpTitle(Test::title);
        dumpOperand("op1:", op, opDigits, Form::bytes(opDigits));
    }

    void validate(uint32_t mode) const
    {
        if (checked(kCompareRule, mode)) judgeOperand(check<Form>(op, opDigits, kCheckStrict));
    }

    int32_t work(uint32_t) const { return Test::test(op, opDigits); }

    void dumpResult(int32_t result) const { dumpNumber("res:", "%d", result); }
};

} // namespace bcd
