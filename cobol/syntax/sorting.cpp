// SORT, MERGE, RELEASE, RETURN.
#include "cobol/syntax/parser.h"

namespace kvrcob {

bool Parser::sortKeys(std::vector<SortKey> &keys)
{
    bool any = false;
    for (;;) {
        if (at(K_ON) && (aheadIs(1, K_ASCENDING) || aheadIs(1, K_DESCENDING))) step();
        if (!at(K_ASCENDING) && !at(K_DESCENDING)) return any;
        bool ascending = at(K_ASCENDING);
        step();
        take(K_KEY);
        take(K_IS);
        any = true;
        bool one = false;
        while (atName() && !panic_) {
            keys.push_back({ascending, identifier()});
            one = true;
        }
        if (!one) keys.push_back({ascending, nullptr}); // SORT of a table by the whole element
        if (panic_) return any;
    }
}

Statement *Parser::sortStatement()
{
    auto *s = begin<SortStatement>();
    s->file = identifier();
    sortKeys(s->keys);
    for (;;) {
        if (panic_) return s;
        if (at(K_WITH) && aheadIs(1, K_DUPLICATES)) step();
        if (take(K_DUPLICATES)) {
            s->duplicates = true;
            take(K_IN);
            take(K_ORDER);
        } else if (at(K_COLLATING) || at(K_SEQUENCE)) {
            take(K_COLLATING);
            expect(K_SEQUENCE);
            take(K_IS);
            s->collating = now().word;
            step();
        } else if (take(K_USING)) {
            while (atName()) {
                s->usingFiles.push_back({now().word, here()});
                if (program_) program_->readFiles.push_back(now().word);
                step();
            }
            if (s->usingFiles.empty()) error("expected a file before " + shown());
        } else if (take(K_GIVING)) {
            while (atName()) {
                s->givingFiles.push_back({now().word, here()});
                step();
            }
            if (s->givingFiles.empty()) error("expected a file before " + shown());
        } else if ((at(K_INPUT) || at(K_OUTPUT)) && aheadIs(1, K_PROCEDURE)) {
            bool input = at(K_INPUT);
            step();
            step();
            take(K_IS);
            (input ? s->hasInput : s->hasOutput) = true;
            (input ? s->inputFirst : s->outputFirst) = procedureName();
            if (take(K_THRU) || take(K_THROUGH)) (input ? s->inputLast : s->outputLast) = procedureName();
        } else {
            break;
        }
    }
    return s;
}

Statement *Parser::releaseStatement()
{
    auto *s = begin<FileStatement>();
    s->record = identifier();
    if (take(K_FROM)) s->from = operand();
    return s;
}

Statement *Parser::returnStatement()
{
    auto *s = begin<FileStatement>();
    s->fileAt = here();
    if (!atName()) {
        error("expected a sort file before " + shown());
        return s;
    }
    s->file = now().word;
    step();
    take(K_RECORD);
    if (take(K_INTO)) s->into = identifier();
    phrases(s->end, K_AT, K_END, 0);
    take(K_END_RETURN);
    return s;
}

} // namespace kvrcob
