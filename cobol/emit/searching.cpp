// SEARCH, SEARCH ALL.
//
// SEARCH looks at one occurrence after the other, from the index's present value. SEARCH ALL is a
// binary search by the library where every condition is "key = operand" of the usual kinds, on a
// table whose only subscript is its index; otherwise the occurrences are tried one after the other
// from the first one, which finds the same in a table that is in order.
#include "cobol/emit/emitter.h"

#include <algorithm>

#include "kvr2/search_all.h"

namespace kvrcob {

// The conditions of SEARCH ALL as pairs of a key and its operand, in the order of the keys.
bool Emitter::searchKeys(const Expr *e, const Item &table, std::vector<SearchPair> &pairs)
{
    if (e->kind == ExprKind::And) return searchKeys(e->left, table, pairs) && searchKeys(e->right, table, pairs);
    if (e->kind != ExprKind::Relation || e->op != '=' || !e->left || e->left->kind != ExprKind::Reference) return false;
    const Reference &ref = *e->left->ref;
    const Item *key = meaning_.resolve(*program_, ref, true);
    if (!key || ref.refmod || ref.subscripts.size() != 1 || ref.subscripts[0]->kind != ExprKind::Reference ||
        meaning_.resolve(*program_, *ref.subscripts[0]->ref, true) != table.indexes[0])
        return false;
    pairs.push_back({key, e->right});
    return true;
}

// What the library calls a key of this kind; -1: none.
static int searchType(const Item &key)
{
    if (!key.elementary() || key.size > 255) return -1;
    if (key.category == Category::Alphanumeric || key.category == Category::Alphabetic) return ZVK_SEARCH_ALPHANUMERIC;
    if (key.category != Category::Numeric) return -1;
    switch (key.usage) {
    case Usage::Display:
        return key.signForm == SignForm::None || key.signForm == SignForm::Trailing ? ZVK_SEARCH_ZONED : -1;
    case Usage::Packed:
        return ZVK_SEARCH_PACKED;
    case Usage::Binary:
        return ZVK_SEARCH_BINARY;
    default:
        return -1;
    }
}

// SEARCH ALL by the library, with the index at what it finds, 0 if nothing. False: not of the kind
// that it knows.
bool Emitter::searchByLibrary(const SearchStatement &s, const Item &table)
{
    std::vector<SearchPair> pairs;
    size_t tables = 0;
    for (const Item *a = &table; a; a = a->parent) tables += a->occurs;
    if (s.whens.size() != 1 || tables != 1 || program_->collating || options_.check ||
        !searchKeys(s.whens[0].condition, table, pairs) || pairs.size() > table.keys.size())
        return false;

    // The pairs must be of the first keys; their operands must fit them.
    struct Argument {
        int type;
        std::string text, length;
    };
    std::vector<Argument> arguments;
    std::string keys, lengths, forms;
    for (size_t i = 0; i < pairs.size(); i++) {
        const Item *key = meaning_.key(*program_, *table.keys[i].item, table.name);
        auto pair = std::find_if(pairs.begin(), pairs.end(), [&](const SearchPair &p) { return p.key == key; });
        if (!key || pair == pairs.end()) return false;
        int type = searchType(*key);
        if (type < 0) return false;
        const Expr *operand = constant(pair->operand);
        if (type == ZVK_SEARCH_ALPHANUMERIC) {
            Category c = categoryOf(operand);
            if (isNumericExpr(operand) || c == Category::Pointer || isCondition(operand)) return false;
            Text t = text(operand);
            if (!t.good || t.kind != Text::Bytes || t.fixed < 0) return false;
            arguments.push_back({type, t.address, t.length});
        } else {
            if (!isNumericExpr(operand)) return false;
            Num n = number(operand);
            if (!n.good() || n.kind == Num::Float || n.scale > key->picture.scale ||
                n.digits - n.scale > key->picture.digits - key->picture.scale ||
                (n.isSigned && !key->picture.sign && !(n.literal && !n.literal->negative)))
                return false;
            Loc place = locateItem(*key);
            place.address = tempBytes(key->size);
            store(n, place, false, "");
            arguments.push_back({type, place.address, cat(key->size)});
        }
        keys += joined("{", type, table.keys[i].ascending ? "" : " | ZVK_SEARCH_DESCENDING", ", {0}, ", key->size, ", ",
                       key->offset - table.offset, "}, ");
        lengths += joined(arguments.back().length, ", ");
        forms += "0, ";
    }

    std::string header = cat("K", ++inFile_.constants), list = temp("SearchArgument", cat("[", pairs.size(), "]"));
    globals_ += joined(
        "static const struct { uint16_t base; int16_t keys, arguments; uint16_t reserved; SearchKey key[", pairs.size(),
        "]; uint64_t length[", pairs.size(), "]; uint8_t form[", pairs.size(), "]; } __attribute__((packed)) ", header,
        " = {0, ", pairs.size(), ", ", pairs.size(), ", 0, {", keys, "}, {", lengths, "}, {", forms, "}};\n");
    for (size_t i = 0; i < arguments.size(); i++)
        put(list, "[", i, "].value = ", list, "[", i, "].item = ", arguments[i].text, ";\n");
    std::string found = temp("int64_t");
    put(found, " = ", emits(Do::SearchAll, Of::Table), "((const SearchHeader *)(const void *)&", header, ", ",
        locateItem(table).address, ", ", currentCount(table), ", ", table.size, ", ", list, ", 0, 0);\nX",
        table.indexes[0]->number, " = ", found, " < 0 ? 0 : ", found, " / ", table.size, " + 1;\n");
    return true;
}

void Emitter::searchStatement(const SearchStatement &s)
{
    Item *table = meaning_.resolve(*program_, *s.table);
    if (!table) return;
    if (!table->occurs) {
        error(s.table->at, wordText(table->name) + " is no table");
        return;
    }
    if (table->indexes.empty()) {
        error(s.table->at, wordText(table->name) + " has no index (INDEXED BY)");
        return;
    }
    const Item *index = table->indexes[0];
    const Item *other = nullptr; // VARYING of something else
    Loc otherLoc;
    if (s.varying) {
        Item *varying = meaning_.resolve(*program_, *s.varying);
        if (!varying) return;
        bool own = false;
        for (const Item *i : table->indexes)
            if (i == varying) {
                index = i;
                own = true;
            }
        if (!own) {
            other = varying;
            otherLoc = locate(*s.varying, true);
            if (!otherLoc.good()) return;
        }
    }
    std::string x = cat("X", index->number), most = currentCount(*table), done = label();
    std::map<std::string, std::string> told;
    Within toldOnce(inStatement_.toldOnce, &told);
    if (s.all && table->keys.empty())
        error(s.table->at, "SEARCH ALL needs a table with keys (ASCENDING or DESCENDING KEY)");
    if (s.all && searchByLibrary(s, *table)) {
        put("if (", x, " == 0) {\n");
        block(s.atEnd);
        put("} else {\n");
        block(s.whens[0].block);
        put("}\n");
        return;
    }
    if (s.all) put(x, " = 1;\n");
    put("for (;; ", x, "++", ") {\n");
    put("if (", x, " < 1 || ", x, " > ", most, ") {\n");
    block(s.atEnd);
    put("goto ", done, ";\n}\n");
    for (const SearchStatement::When &when : s.whens) {
        std::string c = debugCondition(condition(when.condition));
        put("if (", c, ") {\n");
        block(when.block);
        put("goto ", done, ";\n}\n");
    }
    if (other) store(add(itemNumber(otherLoc), integerNumber("1LL", 1), false), otherLoc, false, "");
    put("}\n");
    put(done, ": ;\n");
}

} // namespace kvrcob
