// The calls of the comparing families: the six relations and the zero test NOT (decimal/entry.h).
#pragma once

#include "decimal/dump.h"
#include "decimal/entry.h"
#include "decimal/validation.h"

namespace bcd {

enum class Relation { EQU, NEQ, GRT, GEQ, LES, LEQ };

template <Relation relation, class Value>
inline int32_t holds(Value a, Value b)
{
    if constexpr (relation == Relation::EQU) return a == b;
    if constexpr (relation == Relation::NEQ) return a != b;
    if constexpr (relation == Relation::GRT) return a > b;
    if constexpr (relation == Relation::GEQ) return a >= b;
    if constexpr (relation == Relation::LES) return a < b;
    return a <= b;
}

// `Compare` has the form, the comparison, and if the form's comparisons are dumped, a title for
// each relation. If it has short cuts, `value` is an item as a signed integer that compares like
// it, and `fits` whether both items can be had so.
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

    template <class Word>
    bool holdsInWords(uint32_t mode, int32_t &result) const
    {
        if (mode & ZVK_BCD_CHECK_COMPARED || !Compare::template fits<Word>(op1Digits, op2Digits)) return false;
        result = holds<relation>(Compare::template value<Word>(op1, op1Digits),
                                 Compare::template value<Word>(op2, op2Digits));
        return true;
    }
    bool quick(uint32_t mode, int32_t &result) const requires(Compare::hasShortCuts)
    {
        return holdsInWords<int64_t>(mode, result) || holdsInWords<__int128>(mode, result);
    }

    int32_t work(uint32_t) const { return holds<relation>(Compare::compare(op1, op1Digits, op2, op2Digits, 0), 0); }

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
