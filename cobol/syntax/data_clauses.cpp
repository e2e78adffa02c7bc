// Clauses of a data description that are longer: USAGE, OCCURS, VALUE.
#include "cobol/syntax/parser.h"

namespace kvrcob {

// Is the present word a usage? Does not take it.
bool Parser::usageWord(Item &)
{
    if (now().kind != TokenKind::Name) return false;
    switch (now().word) {
    case K_DISPLAY:
    case K_COMP:
    case K_COMP_1:
    case K_COMP_2:
    case K_COMP_3:
    case K_COMP_4:
    case K_COMP_5:
    case K_COMP_6:
    case K_COMP_X:
    case K_COMP_N:
    case K_COMPUTATIONAL:
    case K_COMPUTATIONAL_1:
    case K_COMPUTATIONAL_2:
    case K_COMPUTATIONAL_3:
    case K_COMPUTATIONAL_4:
    case K_COMPUTATIONAL_5:
    case K_BINARY:
    case K_PACKED_DECIMAL:
    case K_INDEX:
    case K_POINTER:
    case K_PROCEDURE_POINTER:
    case K_PROGRAM_POINTER:
    case K_FUNCTION_POINTER:
    case K_BINARY_CHAR:
    case K_BINARY_SHORT:
    case K_BINARY_LONG:
    case K_BINARY_DOUBLE:
    case K_BINARY_LONG_LONG:
    case K_BINARY_INT:
    case K_SIGNED_SHORT:
    case K_SIGNED_INT:
    case K_SIGNED_LONG:
    case K_UNSIGNED_SHORT:
    case K_UNSIGNED_INT:
    case K_UNSIGNED_LONG:
    case K_FLOAT_SHORT:
    case K_FLOAT_LONG:
    case K_NATIONAL:
    case K_DISPLAY_1:
    case K_OBJECT:
    case K_SIGNED:
    case K_UNSIGNED:
    case K_FLOAT_BINARY_32:
    case K_FLOAT_BINARY_64:
    case K_FLOAT_BINARY_128:
    case K_FLOAT_DECIMAL_16:
    case K_FLOAT_DECIMAL_34:
    case K_FLOAT_EXTENDED:
        return true;
    default:
        return false;
    }
}

void Parser::usageClause(Item &item)
{
    if (take(K_USAGE)) take(K_IS);
    auto native = [&](uint8_t size) {
        item.usage = Usage::Native;
        item.nativeBinary = true;
        item.nativeSize = size;
    };
    if (!usageWord(item)) {
        error("expected a usage before " + shown());
        return;
    }
    Tok at = here();
    Word word = now().word;
    step();
    if (word != K_SIGNED && word != K_UNSIGNED) item.hasUsage = true;
    switch (word) {
    case K_DISPLAY:
        item.usage = Usage::Display;
        break;
    case K_COMP:
    case K_COMPUTATIONAL:
    case K_COMP_4:
    case K_COMPUTATIONAL_4:
    case K_BINARY:
        item.usage = Usage::Binary;
        break;
    case K_COMP_5:
    case K_COMPUTATIONAL_5:
    case K_COMP_N:
        item.usage = Usage::Native;
        break;
    case K_COMP_X:
        item.usage = Usage::CompX;
        break;
    case K_COMP_1:
    case K_COMPUTATIONAL_1:
    case K_FLOAT_SHORT:
    case K_FLOAT_BINARY_32:
        item.usage = Usage::Float;
        break;
    case K_COMP_2:
    case K_COMPUTATIONAL_2:
    case K_FLOAT_LONG:
    case K_FLOAT_BINARY_64:
        item.usage = Usage::Double;
        break;
    case K_COMP_3:
    case K_COMPUTATIONAL_3:
    case K_PACKED_DECIMAL:
        item.usage = Usage::Packed;
        break;
    case K_INDEX:
        item.usage = Usage::Index;
        break;
    case K_POINTER:
        item.usage = Usage::Pointer;
        break;
    case K_PROCEDURE_POINTER:
    case K_PROGRAM_POINTER:
    case K_FUNCTION_POINTER:
        item.usage = Usage::ProcedurePointer;
        break;
    case K_BINARY_CHAR:
        native(1);
        break;
    case K_BINARY_SHORT:
    case K_SIGNED_SHORT:
    case K_UNSIGNED_SHORT:
        native(2);
        break;
    case K_BINARY_LONG:
    case K_BINARY_INT:
    case K_SIGNED_INT:
    case K_UNSIGNED_INT:
        native(4);
        break;
    case K_BINARY_DOUBLE:
    case K_BINARY_LONG_LONG:
    case K_SIGNED_LONG:
    case K_UNSIGNED_LONG:
        native(8);
        break;
    case K_SIGNED:
        item.isUnsigned = false;
        break;
    case K_UNSIGNED:
        item.isUnsigned = true;
        break;
    default:
        notBuilt(at, "USAGE " + wordText(word));
        break;
    }
    if (word == K_UNSIGNED_SHORT || word == K_UNSIGNED_INT || word == K_UNSIGNED_LONG) item.isUnsigned = true;
    if (item.nativeBinary) {
        if (take(K_UNSIGNED))
            item.isUnsigned = true;
        else
            take(K_SIGNED);
    }
}

void Parser::occursClause(Program &p, Item &item)
{
    item.occurs = true;
    if (at(K_DYNAMIC)) {
        notBuilt(here(), "OCCURS DYNAMIC");
        return;
    }
    // A number or a constant.
    auto count = [&]() -> Expr * {
        if (atNumber() || atName()) return operand();
        error("expected a number before " + shown());
        return nullptr;
    };
    item.occursMaxExpr = count();
    if (take(K_TO)) {
        item.occursMinExpr = item.occursMaxExpr;
        item.occursMaxExpr = count();
    }
    take(K_TIMES);
    occursPhrases(p, item);
}

// DEPENDING ON, keys, INDEXED BY. Other clauses may be between them and OCCURS.
void Parser::occursPhrases(Program &, Item &item)
{
    for (;;) {
        if (panic_) return;
        if (take(K_DEPENDING)) {
            take(K_ON);
            item.depending = identifier();
        } else if (at(K_ASCENDING) || at(K_DESCENDING)) {
            bool ascending = at(K_ASCENDING);
            step();
            take(K_KEY);
            take(K_IS);
            if (!atName()) error("expected a key before " + shown());
            while (atName() && !at(K_INDEXED)) item.keys.push_back({ascending, identifier()});
        } else if (take(K_INDEXED)) {
            take(K_BY);
            if (!atName()) error("expected an index-name before " + shown());
            while (atName() && !usageWord(item)) {
                Item *index = make<Item>();
                index->name = now().word;
                index->at = here();
                index->usage = Usage::Index;
                index->category = Category::Index;
                index->isIndexName = true;
                index->section = Item::Special;
                index->table = &item;
                item.indexes.push_back(index);
                step();
            }
        } else {
            return;
        }
    }
}

void Parser::valueClause(Item &item)
{
    step(); // VALUE, VALUES
    take(K_IS);
    take(K_ARE);
    item.hasValue = true;
    // A number in front of a name is the level of the next entry: a period is missing.
    auto atLevel = [&] {
        return atNumber() && now().text.size() <= 2 && ahead().kind == TokenKind::Name &&
               (!isReserved(ahead().word) || aheadIs(1, K_FILLER)) &&
               now().spot.line != tokens_[position_ - 1].spot.line;
    };
    do {
        ValueRange range;
        range.from = literal();
        if (take(K_THRU) || take(K_THROUGH)) range.to = literal();
        item.values.push_back(range);
        if (panic_) return;
    } while (atString() || (atNumber() && !atLevel()) || atFigurative() || at(K_ALL) ||
             ((atMark('-') || atMark('+')) && ahead().kind == TokenKind::Number) || (item.level == 88 && atName()));
}

} // namespace kvrcob
