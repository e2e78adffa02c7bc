// Data descriptions: an entry from its level number to its period.
#include "cobol/syntax/parser.h"

#include <cstdlib>

namespace kvrcob {

Item *Parser::dataDescription(Program &p, Item::Section section)
{
    Item *item = make<Item>();
    Tok levelAt = here();
    item->at = levelAt;
    item->section = section;
    item->level = std::atoi(std::string(now().text).c_str());
    if (now().text.size() > 2 || item->level < 1 ||
        (item->level > 49 && item->level != 66 && item->level != 77 && item->level != 78 && item->level != 88)) {
        error("a level number is from 01 to 49, or 66, 77, 78 or 88");
        skipToPeriod();
        return nullptr;
    }
    step();
    if (!nameOfItem(*item)) return nullptr;
    if (item->level == 78 || ((item->level == 1 || item->level == 77) && at(K_CONSTANT))) {
        constantEntry(*item);
    } else if (item->level == 66) {
        expect(K_RENAMES);
        item->renamesFrom = identifier();
        if (take(K_THRU) || take(K_THROUGH)) item->renamesThru = identifier();
    } else if (item->level == 88) {
        if (!item->name) errorAt(levelAt, "a condition-name (level 88) needs a name");
        conditionEntry(*item);
    } else {
        // A number, or a header in area A: a period is missing.
        while (!atMark('.') && !atEnd() && !panic_ && !atNumber() && !(now().areaA && atSectionOrDivision()))
            if (!dataClause(p, *item)) return item;
        item->broken = panic_;
    }
    endOfEntry();
    return item;
}

// The name, FILLER or neither. False: the entry is passed over.
bool Parser::nameOfItem(Item &item)
{
    if (take(K_FILLER)) return true;
    if (atUsage() && (!atName() || atUsageAlone(item.level))) return true; // 05 BINARY-LONG.
    if (atName()) {
        // Words that are clauses only where no name is before them.
        item.at = here();
        item.name = now().word;
        if (item.name < K_count) declared_.insert(item.name);
        dataNames_.insert(item.name);
        step();
        return true;
    }
    static constexpr Word clauses[] = {K_PIC,          K_PICTURE, K_REDEFINES, K_OCCURS, K_USAGE, K_VALUE,     K_VALUES,
                                       K_SIGN,         K_LEADING, K_TRAILING,  K_IS,     K_JUST,  K_JUSTIFIED, K_SYNC,
                                       K_SYNCHRONIZED, K_BLANK,   K_EXTERNAL,  K_GLOBAL, K_TYPE,  K_SAME};
    if (now().kind != TokenKind::Name) return true;
    for (Word clause : clauses)
        if (at(clause)) return true;
    error(wordText(now().word) + " is a reserved word; it cannot be an item's name");
    skipToPeriod();
    return false;
}

// 78 name VALUE x, 01 name CONSTANT AS x.
void Parser::constantEntry(Item &item)
{
    item.isConstant = true;
    take(K_CONSTANT);
    take(K_IS);
    take(K_GLOBAL);
    if (!take(K_AS) && !take(K_VALUE) && take(K_FROM)) {
        item.constant = definedNumber();
        return;
    }
    take(K_IS);
    item.constant = expression();
}

// The number that -D or >>DEFINE gave a name, where it had no other one before.
Expr *Parser::definedNumber()
{
    const Tok name = here();
    step();
    auto found = group_.defines.find(wordText(tokens_[name].word));
    const std::string_view value = found == group_.defines.end() ? std::string_view() : found->second;
    const size_t sign = value.substr(0, 1) == "-" ? 1 : 0;
    if (value.size() == sign || value.find_first_not_of("0123456789", sign) != std::string_view::npos) {
        notBuilt(name, "CONSTANT FROM of anything but one number that -D or >>DEFINE gave");
        return number("0", name);
    }
    Expr *constant = number(value.substr(sign), name);
    if (!sign) return constant;
    Expr *minus = node(ExprKind::Negate, name);
    minus->left = constant;
    return minus;
}

// 88 name VALUE x THRU y WHEN SET TO FALSE IS z.
void Parser::conditionEntry(Item &item)
{
    if (at(K_VALUE) || at(K_VALUES))
        valueClause(item);
    else
        error("expected VALUE before " + shown());
    if (!at(K_WHEN) && !at(K_FALSE)) return;
    take(K_WHEN);
    take(K_SET);
    take(K_TO);
    if (take(K_FALSE)) {
        take(K_IS);
        item.whenFalse = literal();
    }
}

// One clause. False: the entry ends here.
bool Parser::dataClause(Program &p, Item &item)
{
    Tok clause = here();
    if (take(K_REDEFINES)) {
        item.redefinesAt = here();
        if (atName()) {
            item.redefinesName = now().word;
            step();
        } else {
            error("expected the name of the item that is redefined before " + shown());
        }
    } else if (at(K_PIC) || at(K_PICTURE)) {
        return pictureClause(item);
    } else if (take(K_OCCURS)) {
        occursClause(p, item);
    } else if (item.occurs && (at(K_DEPENDING) || at(K_ASCENDING) || at(K_DESCENDING) || at(K_INDEXED))) {
        occursPhrases(p, item);
    } else if (at(K_VALUE) || at(K_VALUES)) {
        valueClause(item);
    } else if (at(K_SIGN) || at(K_LEADING) || at(K_TRAILING)) {
        signClause(item);
    } else if (take(K_SYNC) || take(K_SYNCHRONIZED)) {
        item.synchronized = true;
        take(K_LEFT);
        take(K_RIGHT);
    } else if (take(K_JUST) || take(K_JUSTIFIED)) {
        take(K_RIGHT);
        item.justified = true;
    } else if (take(K_BLANK)) {
        take(K_WHEN);
        if (!take(K_ZERO) && !take(K_ZEROS) && !take(K_ZEROES)) error("expected ZERO before " + shown());
        item.blankWhenZero = true;
    } else if (at(K_IS) && (aheadIs(1, K_EXTERNAL) || aheadIs(1, K_GLOBAL) || aheadIs(1, K_TYPEDEF))) {
        step();
    } else if (take(K_EXTERNAL)) {
        item.external = true;
        if (take(K_AS) && atString()) {
            item.externalName = internWord(now().text);
            step();
        }
    } else if (take(K_GLOBAL)) {
        item.global = true;
    } else if (at(K_USAGE) || atUsage()) {
        usageClause(item);
    } else if (take(K_VOLATILE)) {
        // What no program here shares needs no more.
    } else if (take(K_BASED)) {
        // A record without storage of its own: ALLOCATE or SET ADDRESS OF gives it some.
        if (item.level != 1 && item.level != 77) errorAt(clause, "BASED is for items of level 01 or 77");
        item.based = true;
        item.section = Item::Linkage;
    } else if (at(K_ANY) && aheadIs(1, K_LENGTH)) {
        step();
        step();
        item.anyLength = true;
    } else if (take(K_TYPEDEF)) {
        if (item.level != 1 || !item.name) errorAt(clause, "TYPEDEF is for items of level 01 with a name");
        item.isTypedef = true;
        take(K_STRONG);
    } else if (take(K_TYPE)) {
        take(K_TO);
        item.describedBy = identifier();
    } else if (at(K_SAME) && aheadIs(1, K_AS)) {
        step();
        step();
        item.sameAs = true;
        item.describedBy = identifier();
    } else if (at(K_ANY) || at(K_LINE) || at(K_COLUMN) || at(K_SOURCE) || at(K_GROUP)) {
        notBuilt(here(), "the clause " + wordText(now().word));
    } else {
        errorAt(clause, "expected a clause of the data description before " + shown());
    }
    return true;
}

} // namespace kvrcob
