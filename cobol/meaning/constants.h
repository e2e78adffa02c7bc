// Constants: decimal values of literals, and the bytes that an item has for a value.
#pragma once

#include <string>

#include "cobol/syntax/tree.h"

namespace kvrcob {

// A number as digits with a decimal place. The value is (negative ? -1 : 1) * digits / 10 ** scale.
struct Decimal {
    bool negative = false;
    std::string digits; // without leading zeros, "0" for zero
    int scale = 0;
    int exponent = 0; // of a floating-point literal
    bool isZero() const { return digits == "0"; }
    bool isFloating = false;
    double value() const;
};

// "12.50" to 1250, scale 2. Also with a comma.
Decimal decimalOf(std::string_view text, bool negative);

// Numeric value of a literal expression (Number, Negate of one, ZERO); false for others.
bool decimalOf(const Expr *e, Decimal &out);

// Moves the decimal point: the digits of the value with so many decimal places, cut on the right.
std::string digitsAtScale(const Decimal &value, int scale);

// The bytes of a numeric item for a value; digits that do not fit on the left are lost.
std::string numericBytes(const Item &item, const Decimal &value);

// One packed decimal of so many digits.
std::string packedBytes(const std::string &digits, bool negative, int count, bool isSigned);

} // namespace kvrcob
