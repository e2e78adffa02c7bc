// USAGE: what a word of it says of an item.
#include "cobol/syntax/parser.h"

#include <cstdlib>

namespace kvrcob {

namespace {

struct UsageWord {
    Word word;
    Usage usage;
    uint8_t nativeSize; // of a binary item whose size is its usage's; 0: its picture's
    bool isUnsigned;
};

constexpr UsageWord kUsages[] = {
    {K_DISPLAY, Usage::Display, 0, false},
    {K_COMP, Usage::Binary, 0, false},
    {K_COMPUTATIONAL, Usage::Binary, 0, false},
    {K_COMP_4, Usage::Binary, 0, false},
    {K_COMPUTATIONAL_4, Usage::Binary, 0, false},
    {K_BINARY, Usage::Binary, 0, false},
    {K_COMP_5, Usage::Native, 0, false},
    {K_COMPUTATIONAL_5, Usage::Native, 0, false},
    {K_COMP_N, Usage::Native, 0, false},
    {K_COMP_X, Usage::CompX, 0, false},
    {K_COMPUTATIONAL_X, Usage::CompX, 0, false},
    {K_COMP_6, Usage::Comp6, 0, false},
    {K_COMPUTATIONAL_6, Usage::Comp6, 0, false},
    {K_COMP_1, Usage::Float, 0, false},
    {K_COMPUTATIONAL_1, Usage::Float, 0, false},
    {K_FLOAT_SHORT, Usage::Float, 0, false},
    {K_FLOAT_BINARY_32, Usage::Float, 0, false},
    {K_COMP_2, Usage::Double, 0, false},
    {K_COMPUTATIONAL_2, Usage::Double, 0, false},
    {K_FLOAT_LONG, Usage::Double, 0, false},
    {K_FLOAT_BINARY_64, Usage::Double, 0, false},
    {K_COMP_3, Usage::Packed, 0, false},
    {K_COMPUTATIONAL_3, Usage::Packed, 0, false},
    {K_PACKED_DECIMAL, Usage::Packed, 0, false},
    {K_INDEX, Usage::Index, 0, false},
    {K_POINTER, Usage::Pointer, 0, false},
    {K_PROCEDURE_POINTER, Usage::ProcedurePointer, 0, false},
    {K_PROGRAM_POINTER, Usage::ProcedurePointer, 0, false},
    {K_FUNCTION_POINTER, Usage::ProcedurePointer, 0, false},
    {K_BINARY_CHAR, Usage::Native, 1, false},
    {K_BINARY_SHORT, Usage::Native, 2, false},
    {K_SIGNED_SHORT, Usage::Native, 2, false},
    {K_UNSIGNED_SHORT, Usage::Native, 2, true},
    {K_BINARY_LONG, Usage::Native, 4, false},
    {K_BINARY_INT, Usage::Native, 4, false},
    {K_SIGNED_INT, Usage::Native, 4, false},
    {K_UNSIGNED_INT, Usage::Native, 4, true},
    {K_BINARY_DOUBLE, Usage::Native, 8, false},
    {K_BINARY_LONG_LONG, Usage::Native, 8, false},
    {K_SIGNED_LONG, Usage::Native, 8, false},
    {K_UNSIGNED_LONG, Usage::Native, 8, true},
};

// Usages that are not built yet.
constexpr Word kLaterUsages[] = {
    K_NATIONAL, K_DISPLAY_1, K_OBJECT, K_FLOAT_BINARY_128, K_FLOAT_DECIMAL_16, K_FLOAT_DECIMAL_34, K_FLOAT_EXTENDED,
};

const UsageWord *usageOf(Word word)
{
    for (const UsageWord &usage : kUsages)
        if (usage.word == word) return &usage;
    return nullptr;
}

bool isLater(Word word)
{
    for (Word later : kLaterUsages)
        if (later == word) return true;
    return false;
}

} // namespace

// Is the present word a usage, or SIGNED or UNSIGNED beside one? Does not take it.
bool Parser::atUsage() const
{
    if (now().kind != TokenKind::Name || now().word >= K_count) return false;
    return at(K_SIGNED) || at(K_UNSIGNED) || usageOf(now().word) || isLater(now().word);
}

// A usage that could be a name, where it is the whole entry and no group: 05 BINARY-LONG UNSIGNED.
bool Parser::atUsageAlone(int level) const
{
    size_t n = aheadIs(1, K_SIGNED) || aheadIs(1, K_UNSIGNED) ? 2 : 1;
    if (ahead(n).kind != TokenKind::Punct || ahead(n).word != '.') return false;
    if (ahead(n + 1).kind != TokenKind::Number) return true;
    int next = std::atoi(std::string(ahead(n + 1).text).c_str());
    return next <= level || next > 49;
}

void Parser::usageClause(Item &item)
{
    if (take(K_USAGE)) take(K_IS);
    if (!atUsage() && atName()) { // a type
        item.describedBy = identifier();
        return;
    }
    if (!atUsage()) {
        error("expected a usage before " + shown());
        return;
    }
    if (at(K_SIGNED) || at(K_UNSIGNED)) {
        item.isUnsigned = at(K_UNSIGNED);
        step();
    } else if (const UsageWord *usage = usageOf(now().word)) {
        step();
        item.hasUsage = true;
        item.usage = usage->usage;
        if (usage->isUnsigned) item.isUnsigned = true;
        if (usage->nativeSize) {
            item.nativeBinary = true;
            item.nativeSize = usage->nativeSize;
        }
    } else {
        Tok at = here();
        step();
        item.hasUsage = true;
        notBuilt(at, "USAGE " + wordText(tokens_[at].word));
    }
    if (item.nativeBinary) {
        if (take(K_UNSIGNED))
            item.isUnsigned = true;
        else
            take(K_SIGNED);
    }
}

} // namespace kvrcob
