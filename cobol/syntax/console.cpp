// DISPLAY, ACCEPT.
#include "cobol/syntax/parser.h"

namespace kvrcob {

Statement *Parser::displayStatement()
{
    auto *s = begin<DisplayStatement>();
    while ((atOperand() || at(K_FUNCTION) || atMark('(')) && !panic_) {
        if (at(K_LINE) || at(K_UPON)) break;
        inArguments_ = OperandList;
        s->items.push_back(atMark('(') ? expression() : operand());
        inArguments_ = NoList;
    }
    if (s->items.empty()) error("expected an operand before " + shown());
    for (;;) {
        if (panic_) break;
        if (take(K_UPON)) {
            s->uponAt = here();
            s->upon = now().word;
            if (now().kind != TokenKind::Name) error("expected a device before " + shown());
            step();
        } else if (at(K_WITH) && aheadIs(1, K_NO)) {
            step();
        } else if (at(K_NO) && (aheadIs(1, K_ADVANCING))) {
            step();
            step();
            s->noAdvancing = true;
        } else if (at(K_AT) && (aheadIs(1, K_LINE) || ahead().kind == TokenKind::Number || aheadIs(1, K_COLUMN))) {
            notBuilt(here(), "DISPLAY ... AT (screen handling)");
        } else if ((at(K_LINE) || at(K_COLUMN)) &&
                   (ahead().kind == TokenKind::Number || ahead().kind == TokenKind::Name)) {
            notBuilt(here(), "DISPLAY ... LINE (screen handling)");
        } else if (at(K_WITH)) {
            notBuilt(here(), "DISPLAY ... WITH (screen handling)");
        } else {
            break;
        }
    }
    Word device = s->upon;
    for (const Mnemonic &m : program_->mnemonics)
        if (s->upon && m.name == s->upon) device = m.device;
    if (device == K_ENVIRONMENT_VALUE || device == K_ARGUMENT_NUMBER) phrases(s->exception, K_ON, K_EXCEPTION, 0);
    take(K_END_DISPLAY);
    return s;
}

// EXHIBIT [NAMED] items: a DISPLAY with a blank between the items; NAMED puts "name = " in front.
// With CHANGED those are left out that are as they were when this statement ran before.
Statement *Parser::exhibitStatement()
{
    auto *s = begin<DisplayStatement>();
    s->verb = K_DISPLAY;
    warn("obsolete", s->at, "EXHIBIT is obsolete");
    const bool changed = take(K_CHANGED);
    bool named = take(K_NAMED);
    auto text = [&](std::string bytes) {
        Expr *e = node(ExprKind::String, here());
        e->text = keepText(std::move(bytes));
        s->items.push_back(e);
    };
    while ((atOperand() || at(K_FUNCTION)) && !panic_) {
        const size_t before = s->items.size();
        if (before) text(" ");
        Tok first = here();
        Expr *item = operand();
        if (named && item->kind == ExprKind::Reference) {
            std::string name;
            for (Tok t = first; t < here(); t++) {
                if (t > first && tokens_[t].spaceBefore) name += ' ';
                name += tokens_[t].text;
            }
            text(name + " = ");
        }
        s->items.push_back(item);
        if (changed) s->exhibited.push_back(s->items.size() - before);
    }
    if (s->items.empty()) error("expected an operand before " + shown());
    return s;
}

Statement *Parser::acceptStatement()
{
    auto *s = begin<AcceptStatement>();
    if (take(K_OMITTED)) { // a line that nobody looks at
        take(K_END_ACCEPT);
        return s;
    }
    s->target = identifier();
    if (take(K_FROM)) {
        s->from = now().word;
        if (now().kind != TokenKind::Name) error("expected a device, DATE, DAY, TIME or DAY-OF-WEEK before " + shown());
        bool environment = at(K_ENVIRONMENT) || at(K_ENVIRONMENT_VARIABLE);
        if (at(K_ENVIRONMENT) && aheadIs(1, K_VARIABLE)) step();
        step();
        if (environment) {
            s->from = K_ENVIRONMENT;
            s->name = operand();
        } else if (s->from == K_USER && take(K_NAME)) {
            s->from = K_ENVIRONMENT;
            s->name = node(ExprKind::String, here());
            s->name->text = "USER";
        } else if (s->from == K_STANDARD && take(K_INPUT)) {
            s->from = K_SYSIN;
        }
        if ((s->from == K_DATE && at(K_YYYYMMDD)) || (s->from == K_DAY && at(K_YYYYDDD))) {
            step();
            s->longYear = true;
        }
    } else if (at(K_MESSAGE) && aheadIs(1, K_COUNT)) {
        notBuilt(here(), "ACCEPT MESSAGE COUNT (communication)");
    }
    if (at(K_AT) || at(K_LINE) || at(K_COLUMN) || (at(K_WITH) && !aheadIs(1, K_NO)))
        notBuilt(here(), "ACCEPT ... AT (screen handling)");
    if (s->from != K_DATE && s->from != K_DAY && s->from != K_TIME && s->from != K_DAY_OF_WEEK)
        phrases(s->exception, K_ON, K_EXCEPTION, 0);
    take(K_END_ACCEPT);
    return s;
}

} // namespace kvrcob
