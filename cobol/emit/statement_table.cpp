// The rows of the statement table that have names of their own: functions and utilities.
#include "cobol/emit/statement_table.h"

namespace kvrcob {

namespace {

struct FunctionText {
    std::string_view name;
    Of of;
    const char *text;
};

constexpr FunctionText kFunctionTexts[] = {
#define FUNCTION(name, of, text, remark) {name, Of::of, text},
#include "cobol/emit/statement_table.def"
};

struct UtilityText {
    std::string_view name;
    const char *text;
};

constexpr UtilityText kUtilityTexts[] = {
#define UTILITY(name, text) {name, text},
#include "cobol/emit/statement_table.def"
};

} // namespace

std::string_view emitsFunction(std::string_view name, Of of)
{
    const char *first = nullptr;
    for (const FunctionText &row : kFunctionTexts) {
        if (row.name != name) continue;
        if (row.of == of) return row.text;
        if (!first) first = row.text;
    }
    assert(first); // a function that is computed in line does not ask
    return first;
}

const char *emitsUtility(std::string_view name)
{
    for (const UtilityText &row : kUtilityTexts)
        if (row.name == name) return row.text;
    return nullptr;
}

std::string utilityRows()
{
    std::string rows;
    for (const UtilityText &row : kUtilityTexts)
        rows += std::string("{\"").append(row.name) + "\", (KvrUtility)" + row.text + "},\n";
    return rows;
}

} // namespace kvrcob
