// STRING, UNSTRING, INSPECT.
#include "cobol/syntax/parser.h"

namespace kvrcob {

Statement *Parser::stringStatement()
{
    auto *s = begin<StringStatement>();
    while ((atOperand() || at(K_FUNCTION)) && !panic_) {
        StringStatement::Group group;
        while ((atOperand() || at(K_FUNCTION)) && !panic_) group.sources.push_back(operand());
        // DELIMITED may be left out: BY SIZE.
        if (take(K_DELIMITED)) {
            take(K_BY);
            if (!take(K_SIZE)) group.delimiter = operand();
        }
        s->groups.push_back(group);
    }
    if (s->groups.empty()) error("expected an operand before " + shown());
    expect(K_INTO);
    if (panic_) return s;
    s->target = identifier();
    if (at(K_WITH) && aheadIs(1, K_POINTER)) step();
    if (take(K_POINTER)) s->pointer = identifier();
    phrases(s->overflow, K_ON, K_OVERFLOW, 0);
    take(K_END_STRING);
    return s;
}

Statement *Parser::unstringStatement()
{
    auto *s = begin<UnstringStatement>();
    s->source = operand();
    if (take(K_DELIMITED)) {
        take(K_BY);
        do {
            UnstringStatement::Delimiter d;
            if (at(K_ALL)) {
                step();
                d.all = true;
            }
            d.value = operand();
            s->delimiters.push_back(d);
        } while (take(K_OR) && !panic_);
    }
    expect(K_INTO);
    while (atName() && !panic_) {
        if (at(K_POINTER) || at(K_TALLYING)) break;
        UnstringStatement::Into into;
        into.target = identifier();
        if (take(K_DELIMITER)) {
            take(K_IN);
            into.delimiter = identifier();
        }
        if (take(K_COUNT)) {
            take(K_IN);
            into.count = identifier();
        }
        s->targets.push_back(into);
    }
    if (s->targets.empty()) error("expected a receiving item before " + shown());
    if (at(K_WITH) && aheadIs(1, K_POINTER)) step();
    if (take(K_POINTER)) s->pointer = identifier();
    if (take(K_TALLYING)) {
        take(K_IN);
        s->tallying = identifier();
    }
    phrases(s->overflow, K_ON, K_OVERFLOW, 0);
    take(K_END_UNSTRING);
    return s;
}

void Parser::beforeAfter(InspectStatement::Phrase &phrase)
{
    while (at(K_BEFORE) || at(K_AFTER)) {
        bool before = at(K_BEFORE);
        step();
        take(K_INITIAL);
        (before ? phrase.before : phrase.after) = operand();
        if (panic_) return;
    }
}

Statement *Parser::inspectStatement()
{
    auto *s = begin<InspectStatement>();
    Expr *inspected = primary();
    if (inspected->kind == ExprKind::Function)
        s->function = inspected;
    else if (inspected->kind == ExprKind::Reference)
        s->target = inspected->ref;
    else
        errorAt(inspected->at, "INSPECT needs a data item");
    bool any = false;
    if (take(K_TALLYING)) {
        any = true;
        while (atName() && !panic_) {
            Reference *counter = identifier();
            expect(K_FOR);
            while ((at(K_CHARACTERS) || at(K_ALL) || at(K_LEADING) || at(K_TRAILING)) && !panic_) {
                Word mode = now().word;
                Tok modeAt = here();
                step();
                if (mode == K_TRAILING) notBuilt(modeAt, "INSPECT ... TRAILING");
                if (mode == K_CHARACTERS) {
                    InspectStatement::Phrase phrase;
                    phrase.kind = K_TALLYING;
                    phrase.mode = mode;
                    phrase.counter = counter;
                    beforeAfter(phrase);
                    s->phrases.push_back(phrase);
                    continue;
                }
                // ALL "a" "b": one mode for several operands; but "name FOR" begins the next
                // counter.
                while ((atOperand() || at(K_FUNCTION)) && !at(K_ALL) && !panic_) {
                    if (atName() && !at(K_FUNCTION)) {
                        size_t saved = position_;
                        bool wasPanic = panic_;
                        identifier();
                        bool next = at(K_FOR);
                        position_ = saved;
                        panic_ = wasPanic;
                        if (next) break;
                    }
                    InspectStatement::Phrase phrase;
                    phrase.kind = K_TALLYING;
                    phrase.mode = mode;
                    phrase.counter = counter;
                    phrase.compared = operand();
                    beforeAfter(phrase);
                    s->phrases.push_back(phrase);
                }
            }
        }
    }
    if (take(K_REPLACING)) {
        any = true;
        while ((at(K_CHARACTERS) || at(K_ALL) || at(K_LEADING) || at(K_FIRST) || at(K_TRAILING)) && !panic_) {
            Word mode = now().word;
            Tok modeAt = here();
            step();
            if (mode == K_TRAILING) notBuilt(modeAt, "INSPECT ... TRAILING");
            do {
                InspectStatement::Phrase phrase;
                phrase.kind = K_REPLACING;
                phrase.mode = mode;
                if (mode != K_CHARACTERS) phrase.compared = operand();
                expect(K_BY);
                if (!panic_) phrase.result = operand();
                beforeAfter(phrase);
                s->phrases.push_back(phrase);
            } while (mode != K_CHARACTERS && (atOperand() || at(K_FUNCTION)) && !at(K_ALL) && !panic_);
        }
    }
    if (take(K_CONVERTING)) {
        any = true;
        InspectStatement::Phrase phrase;
        phrase.kind = K_CONVERTING;
        phrase.compared = operand();
        expect(K_TO);
        if (!panic_) phrase.result = operand();
        beforeAfter(phrase);
        s->phrases.push_back(phrase);
    }
    if (!any) error("expected TALLYING, REPLACING or CONVERTING before " + shown());
    return s;
}

} // namespace kvrcob
