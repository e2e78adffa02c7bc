// See functions.h.
#include "cobol/syntax/functions.h"

namespace kvrcob {

static const FunctionRow kFunctions[] = {
    {"ABS", FunctionResult::Number, 1, 1},
    {"ACOS", FunctionResult::Float, 1, 1},
    {"ANNUITY", FunctionResult::Float, 2, 2},
    {"ASIN", FunctionResult::Float, 1, 1},
    {"ATAN", FunctionResult::Float, 1, 1},
    {"BIT-OF", FunctionResult::Text, 1, 1},
    {"BIT-TO-CHAR", FunctionResult::Text, 1, 1},
    {"BYTE-LENGTH", FunctionResult::Integer, 1, 1},
    {"CHAR", FunctionResult::Text, 1, 1},
    {"COMBINED-DATETIME", FunctionResult::Number, 2, 2},
    {"CONCAT", FunctionResult::Text, 1, -1},
    {"CONCATENATE", FunctionResult::Text, 1, -1},
    {"COS", FunctionResult::Float, 1, 1},
    {"CURRENT-DATE", FunctionResult::Text, 0, 0},
    {"DATE-OF-INTEGER", FunctionResult::Integer, 1, 1},
    {"DATE-TO-YYYYMMDD", FunctionResult::Integer, 1, 3},
    {"DAY-OF-INTEGER", FunctionResult::Integer, 1, 1},
    {"DAY-TO-YYYYDDD", FunctionResult::Integer, 1, 3},
    {"E", FunctionResult::Float, 0, 0},
    {"EXCEPTION-FILE", FunctionResult::Text, 0, 0},
    {"EXCEPTION-LOCATION", FunctionResult::Text, 0, 0},
    {"EXCEPTION-STATEMENT", FunctionResult::Text, 0, 0},
    {"EXCEPTION-STATUS", FunctionResult::Text, 0, 0},
    {"EXP", FunctionResult::Float, 1, 1},
    {"EXP10", FunctionResult::Float, 1, 1},
    {"FACTORIAL", FunctionResult::Integer, 1, 1},
    {"FORMATTED-CURRENT-DATE", FunctionResult::Text, 1, 1},
    {"FORMATTED-DATE", FunctionResult::Text, 2, 2},
    {"FORMATTED-DATETIME", FunctionResult::Text, 3, 4},
    {"FORMATTED-TIME", FunctionResult::Text, 2, 3},
    {"FRACTION-PART", FunctionResult::Number, 1, 1},
    {"HEX-OF", FunctionResult::Text, 1, 1},
    {"HEX-TO-CHAR", FunctionResult::Text, 1, 1},
    {"HIGHEST-ALGEBRAIC", FunctionResult::Number, 1, 1},
    {"INTEGER", FunctionResult::Integer, 1, 1},
    {"INTEGER-OF-DATE", FunctionResult::Integer, 1, 1},
    {"INTEGER-OF-DAY", FunctionResult::Integer, 1, 1},
    {"INTEGER-OF-FORMATTED-DATE", FunctionResult::Integer, 2, 2},
    {"INTEGER-PART", FunctionResult::Integer, 1, 1},
    {"LENGTH", FunctionResult::Integer, 1, 1},
    {"LOG", FunctionResult::Float, 1, 1},
    {"LOG10", FunctionResult::Float, 1, 1},
    {"LOWER-CASE", FunctionResult::Text, 1, 1},
    {"LOWEST-ALGEBRAIC", FunctionResult::Number, 1, 1},
    {"MAX", FunctionResult::OfArgument, 1, -1},
    {"MEAN", FunctionResult::Number, 1, -1},
    {"MEDIAN", FunctionResult::Float, 1, -1},
    {"MIDRANGE", FunctionResult::Number, 1, -1},
    {"MIN", FunctionResult::OfArgument, 1, -1},
    {"MOD", FunctionResult::Integer, 2, 2},
    {"MODULE-ID", FunctionResult::Text, 0, 0},
    {"NUMVAL", FunctionResult::Number, 1, 1},
    {"NUMVAL-C", FunctionResult::Number, 1, 2},
    {"NUMVAL-F", FunctionResult::Float, 1, 1},
    {"ORD", FunctionResult::Integer, 1, 1},
    {"ORD-MAX", FunctionResult::Integer, 1, -1},
    {"ORD-MIN", FunctionResult::Integer, 1, -1},
    {"PI", FunctionResult::Float, 0, 0},
    {"PRESENT-VALUE", FunctionResult::Float, 2, -1},
    {"RANDOM", FunctionResult::Float, 0, 1},
    {"RANGE", FunctionResult::Number, 1, -1},
    {"REM", FunctionResult::Number, 2, 2},
    {"REVERSE", FunctionResult::Text, 1, 1},
    {"SECONDS-FROM-FORMATTED-TIME", FunctionResult::Number, 2, 2},
    {"SECONDS-PAST-MIDNIGHT", FunctionResult::Integer, 0, 0},
    {"SIGN", FunctionResult::Integer, 1, 1},
    {"SIN", FunctionResult::Float, 1, 1},
    {"SQRT", FunctionResult::Float, 1, 1},
    {"STANDARD-DEVIATION", FunctionResult::Float, 1, -1},
    {"STORED-CHAR-LENGTH", FunctionResult::Integer, 1, 1},
    {"SUBSTITUTE", FunctionResult::Text, 3, -1},
    {"SUBSTITUTE-CASE", FunctionResult::Text, 3, -1},
    {"SUM", FunctionResult::Number, 1, -1},
    {"TAN", FunctionResult::Float, 1, 1},
    {"TEST-DATE-YYYYMMDD", FunctionResult::Integer, 1, 1},
    {"TEST-DAY-YYYYDDD", FunctionResult::Integer, 1, 1},
    {"TEST-FORMATTED-DATETIME", FunctionResult::Integer, 2, 2},
    {"TEST-NUMVAL", FunctionResult::Integer, 1, 1},
    {"TEST-NUMVAL-C", FunctionResult::Integer, 1, 2},
    {"TEST-NUMVAL-F", FunctionResult::Integer, 1, 1},
    {"TRIM", FunctionResult::Text, 1, 2},
    {"UPPER-CASE", FunctionResult::Text, 1, 1},
    {"VARIANCE", FunctionResult::Float, 1, -1},
    {"WHEN-COMPILED", FunctionResult::Text, 0, 0},
    {"YEAR-TO-YYYY", FunctionResult::Integer, 1, 3},
};

const FunctionRow *functionRows(size_t &count)
{
    count = sizeof kFunctions / sizeof kFunctions[0];
    return kFunctions;
}

const FunctionRow *functionRow(Word name)
{
    const std::string &text = wordText(name);
    for (const FunctionRow &row : kFunctions)
        if (text == row.name) return &row;
    return nullptr;
}

} // namespace kvrcob
