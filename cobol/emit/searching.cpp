// SEARCH, SEARCH ALL.
//
// SEARCH looks at one occurrence after the other, from the index's present value. SEARCH ALL is a
// binary search by the library where every condition is "key = operand" of the usual kinds, on a
// table whose only subscript is its index; otherwise the occurrences are tried one after the other
// from the first one, which finds the same in a table that is in order.
#include "cobol/emit/emitter.h"

namespace kvrcob {

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
    if (s.all && table->keys.empty())
        error(s.table->at, "SEARCH ALL needs a table with keys (ASCENDING or DESCENDING KEY)");
    if (s.all) put(cat(x, " = 1;\n"));
    put(cat("for (;; ", x, "++", ") {\n"));
    put(cat("if (", x, " < 1 || ", x, " > ", most, ") {\n"));
    block(s.atEnd);
    put(cat("goto ", done, ";\n}\n"));
    for (const SearchStatement::When &when : s.whens) {
        std::string c = debugCondition(condition(when.condition));
        put(cat("if (", c, ") {\n"));
        block(when.block);
        put(cat("goto ", done, ";\n}\n"));
    }
    if (other) store(add(itemNumber(otherLoc), integerNumber("1LL", 1), false), otherLoc, false, "");
    put("}\n");
    put(cat(done, ": ;\n"));
}

} // namespace kvrcob
