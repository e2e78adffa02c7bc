// Clauses of a data description that are longer: PICTURE, SIGN, OCCURS, VALUE.
#include "cobol/syntax/parser.h"

namespace kvrcob {

// False: the entry ends with "PIC." and has nothing else.
bool Parser::pictureClause(Item &item)
{
    Tok clause = here();
    step();
    take(K_IS);
    if (now().kind != TokenKind::Picture || now().text == ".") {
        error("expected a picture string before " + (now().text == "." ? "\".\"" : shown()));
        if (now().kind != TokenKind::Picture) return true;
        item.broken = true;
        panic_ = false;
        step();
        return false;
    }
    if (item.hasPicture) errorAt(clause, "a second PICTURE clause");
    item.hasPicture = true;
    item.pictureText = now().text;
    item.pictureAt = here();
    step();
    return true;
}

void Parser::signClause(Item &item)
{
    take(K_SIGN);
    take(K_IS);
    item.hasSign = true;
    if (take(K_LEADING))
        item.signLeading = true;
    else if (!take(K_TRAILING))
        error("expected LEADING or TRAILING before " + shown());
    if (take(K_SEPARATE)) {
        item.signSeparate = true;
        take(K_CHARACTER);
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
            while (atName() && !atUsage()) {
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
