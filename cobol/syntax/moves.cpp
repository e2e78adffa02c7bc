// MOVE, INITIALIZE, SET.
#include "cobol/syntax/parser.h"

namespace kvrcob {

Statement *Parser::moveStatement()
{
    auto *s = begin<MoveStatement>();
    if (take(K_CORRESPONDING) || take(K_CORR)) s->corresponding = true;
    s->source = operand();
    expect(K_TO);
    if (!panic_) {
        do s->targets.push_back(identifier());
        while (atName() && !panic_);
    }
    return s;
}

Statement *Parser::initializeStatement()
{
    auto *s = begin<InitializeStatement>();
    do s->targets.push_back(identifier());
    while (atName() && !panic_);
    if (at(K_WITH) && aheadIs(1, K_FILLER)) step();
    if (take(K_FILLER)) s->withFiller = true;
    auto category = [&](Word &out) {
        switch (now().kind == TokenKind::Name ? now().word : 0) {
        case K_ALPHABETIC:
        case K_ALPHANUMERIC:
        case K_NUMERIC:
        case K_ALPHANUMERIC_EDITED:
        case K_NUMERIC_EDITED:
        case K_NATIONAL:
        case K_NATIONAL_EDITED:
            out = now().word;
            step();
            return true;
        default:
            return false;
        }
    };
    // [ALL | category] TO VALUE
    if (at(K_ALL) && (aheadIs(1, K_TO) || aheadIs(1, K_VALUE))) {
        step();
        take(K_TO);
        expect(K_VALUE);
        s->allToValue = true;
    } else {
        Word word;
        while ((aheadIs(1, K_VALUE) || (aheadIs(1, K_TO) && aheadIs(2, K_VALUE))) && category(word)) {
            s->toValue.push_back(word);
            take(K_TO);
            step();
        }
    }
    if (at(K_THEN) && (aheadIs(1, K_REPLACING) || aheadIs(1, K_TO))) step();
    if (take(K_REPLACING)) {
        for (;;) {
            Word word;
            if (!category(word)) break;
            take(K_DATA);
            if (!expect(K_BY)) break;
            s->replacing.push_back({word, operand()});
            if (panic_) break;
        }
        if (s->replacing.empty()) error("expected a category before " + shown());
    }
    if (at(K_THEN) && (aheadIs(1, K_TO) || aheadIs(1, K_DEFAULT))) step();
    if (at(K_TO, K_DEFAULT)) step();
    if (take(K_DEFAULT)) s->thenToDefault = true;
    return s;
}

// SET index TO value, SET index UP BY n, SET condition TO TRUE, SET switch TO ON, SET ADDRESS OF x
// TO pointer. Several in one statement.
Statement *Parser::setStatement()
{
    if (aheadIs(1, K_ENVIRONMENT)) {
        auto *variable = begin<DisplayStatement>();
        variable->verb = K_DISPLAY;
        variable->upon = K_ENVIRONMENT;
        step();
        variable->items.push_back(operand());
        if (expect(K_TO)) variable->items.push_back(operand());
        return variable;
    }
    auto *s = begin<SetStatement>();
    if (at(K_LAST, K_EXCEPTION)) {
        step();
        step();
        if (expect(K_TO)) expect(K_OFF);
        s->form = SetStatement::LastException;
        return s;
    }
    do {
        SetStatement::Part part;
        do {
            if (at(K_ADDRESS, K_OF)) {
                part.targets.push_back(primary());
                s->form = SetStatement::Address;
            } else {
                Expr *e = node(ExprKind::Reference, here());
                e->ref = identifier();
                part.targets.push_back(e);
            }
        } while ((atName() || at(K_ADDRESS, K_OF)) && !panic_);
        if (panic_) break;
        if (at(K_UP) || at(K_DOWN)) {
            s->form = at(K_UP) ? SetStatement::UpBy : SetStatement::DownBy;
            step();
            expect(K_BY);
            part.value = expression();
        } else if (expect(K_TO)) {
            if (at(K_TRUE) || at(K_FALSE)) {
                if (s->form == SetStatement::To) s->form = SetStatement::Condition;
                part.value = primary();
            } else if (at(K_ON) || at(K_OFF)) {
                s->form = SetStatement::Switch;
                part.value = node(ExprKind::Truth, here());
                part.value->op = now().word;
                step();
            } else if (at(K_ENTRY)) {
                part.value = node(ExprKind::EntryOf, here());
                step();
                part.value->left = operand();
            } else {
                part.value = expression();
            }
        }
        s->parts.push_back(part);
    } while ((atName() || at(K_ADDRESS, K_OF)) && !panic_);
    return s;
}

// ALLOCATE size CHARACTERS or a BASED record, [INITIALIZED] [RETURNING pointer]
Statement *Parser::allocateStatement()
{
    auto *s = begin<AllocateStatement>();
    Expr *what = expression();
    if (take(K_CHARACTERS))
        s->characters = what;
    else if (what->kind == ExprKind::Reference)
        s->item = what->ref;
    else
        error("expected CHARACTERS before " + shown());
    s->initialized = take(K_INITIALIZED);
    if (take(K_RETURNING)) s->returning = identifier();
    if (s->characters && !s->returning) error("expected RETURNING before " + shown());
    return s;
}

// FREE pointer, ADDRESS OF record ...
Statement *Parser::freeStatement()
{
    auto *s = begin<AllocateStatement>();
    do s->freed.push_back(primary());
    while ((atName() || at(K_ADDRESS, K_OF)) && !panic_);
    return s;
}

} // namespace kvrcob
