// SEARCH, SEARCH ALL.
#include "cobol/syntax/parser.h"

namespace kvrcob {

Statement *Parser::searchStatement()
{
    auto *s = begin<SearchStatement>();
    if (take(K_ALL)) s->all = true;
    s->table = identifier();
    if (take(K_VARYING)) s->varying = identifier();
    if ((at(K_AT) && aheadIs(1, K_END)) || at(K_END)) {
        take(K_AT);
        step();
        s->hasEnd = true;
        block(s->atEnd);
    }
    while (at(K_WHEN) && !panic_) {
        step();
        SearchStatement::When when;
        when.condition = condition();
        if (panic_) recover();
        block(when.block);
        s->whens.push_back(std::move(when));
    }
    if (s->whens.empty()) error("expected WHEN before " + shown());
    take(K_END_SEARCH);
    return s;
}

} // namespace kvrcob
