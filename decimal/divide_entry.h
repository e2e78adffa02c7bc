// The calls of DIV, DIVR and MOD (decimal/entry.h): validation, the divisor's zero test, division
// into a quotient, a remainder or both.
#pragma once

#include "decimal/dump.h"
#include "decimal/entry.h"
#include "decimal/short_product.h"
#include "decimal/validation.h"

namespace bcd {

// An operand on its way to the worker.
struct DivisionOperand {
    const uint8_t *item;
    int32_t digits;
};

// What is divided into what. A null quotient or remainder is not wanted.
struct DivisionItems {
    const uint8_t *op1;
    const uint8_t *op2;
    uint8_t *quotient;
    uint8_t *remainder;
    int32_t remainderDigits;
    int32_t quotientDigits;
    int32_t op2Digits;
    int32_t op1Digits;
};

// Short clean items. `Form` has `Short`, short numbers of the form, and `writeQuotient`. The result
// is the worker's.
template <class Form>
inline bool divideShort(const DivisionItems &items, int &result)
{
    using Short = typename Form::Short;
    ShortNumber a, b;
    if (items.quotient && !isShort(items.quotientDigits)) return false;
    if (items.remainder && !isShort(items.remainderDigits)) return false;
    if (!Short::read(items.op1, items.op1Digits, a) || !Short::read(items.op2, items.op2Digits, b) || b.digits == 0)
        return false;
    bool negative = a.negative != b.negative;
    result = a.digits >= b.digits;
    if (a.digits > b.digits) {
        Quotient found = divideDigits(a.digits, b.digits);
        if (items.quotient) Form::writeQuotient(items.quotient, items.quotientDigits, found.digits, negative);
        if (items.remainder) Short::write(items.remainder, items.remainderDigits, found.restDigits, a.negative);
    } else if (a.digits == b.digits) {
        if (items.quotient) Short::write(items.quotient, items.quotientDigits, u128{1}, negative);
        if (items.remainder)
            Short::write(items.remainder, items.remainderDigits, u128{0},
                         false); // always +0, unlike that of a long division
    } else {
        if (items.quotient) Short::write(items.quotient, items.quotientDigits, u128{0}, false); // always +0
        if (items.remainder) Short::write(items.remainder, items.remainderDigits, a.digits, a.negative);
    }
    return true;
}

// `Form` further has Item, the form itself, and `strip`, `isZero` and the worker `divide`.
template <class Form>
struct Division : DivisionItems {
    bool quick(uint32_t, int &result) const { return divideShort<Form>(*this, result); }

    void validate(uint32_t mode) const
    {
        if (!checked(kArithmeticRule, mode)) return;
        judgeOperand(check<typename Form::Item>(op1, op1Digits, kCheckArithmetic));
        judgeOperand(check<typename Form::Item>(op2, op2Digits, kCheckArithmetic));
    }

    int work(uint32_t) const
    {
        DivisionOperand dividend = Form::strip({op1, op1Digits});
        DivisionOperand divisor = Form::strip({op2, op2Digits});
        if (Form::isZero(divisor.item, divisor.digits)) reportZeroDivisor();
        return Form::divide(dividend.item, dividend.digits, divisor.item, divisor.digits, quotient, quotientDigits,
                            remainder, remainderDigits);
    }
};

// With a dump.
template <class Form, const char *title>
struct DumpedDivision : Division<Form> {
    void dumpOperands() const
    {
        dumpTitle(title);
        dumpOperand("op1:", this->op1, this->op1Digits, Form::Item::bytes(this->op1Digits));
        dumpOperand("op2:", this->op2, this->op2Digits, Form::Item::bytes(this->op2Digits));
    }

    void dumpResult(int) const
    {
        if (this->quotient)
            dumpOperand("dst:", this->quotient, this->quotientDigits, Form::Item::bytes(this->quotientDigits));
        else
            dumpOperand("dst:", this->remainder, this->remainderDigits, Form::Item::bytes(this->remainderDigits));
        if (this->quotient && this->remainder)
            dumpBytes("rem:", this->remainder, Form::Item::bytes(this->remainderDigits));
    }
};

} // namespace bcd
