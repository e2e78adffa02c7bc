// Arithmetic expressions, and the functions and special operands in them.
//
// An expression in parentheses may turn out to be a condition, since only what follows tells
// "(A + B) > C" from "(A > B) AND C"; so primary() takes both. What makes sense where is told when
// code is made (emit/conditions.cpp, emit/numbers.cpp).
#include "cobol/syntax/functions.h"
#include "cobol/syntax/parser.h"

namespace kvrcob {

Expr *Parser::expression() { return additive(); }

// An operator, and what is on its right, added to what is on its left.
Expr *Parser::joined(ExprKind kind, Expr *left, Expr *(Parser::*right)())
{
    Expr *e = node(kind, here());
    e->op = now().word;
    step();
    e->left = left;
    e->right = (this->*right)();
    return e;
}

Expr *Parser::additive()
{
    Expr *left = multiplicative();
    while (atMark('+') || atMark('-')) {
        // In a list of arguments "A -1" and "A, - B" are two.
        if (inArguments_ && (now().commaBefore || (now().spaceBefore && !ahead().spaceBefore))) break;
        left = joined(ExprKind::Arithmetic, left, &Parser::multiplicative);
        if (panic_) break;
    }
    return left;
}

Expr *Parser::multiplicative()
{
    Expr *left = power();
    while (atMark('*') || atMark('/')) {
        left = joined(ExprKind::Arithmetic, left, &Parser::power);
        if (panic_) break;
    }
    return left;
}

Expr *Parser::power()
{
    Expr *left = unary();
    while (atMark(kPower)) {
        left = joined(ExprKind::Arithmetic, left, &Parser::unary);
        if (panic_) break;
    }
    return left;
}

Expr *Parser::unary()
{
    Depth guard(*this);
    if (deep()) return number("0", here());
    if (atMark('+')) {
        step();
        return unary();
    }
    if (atMark('-')) {
        Expr *e = node(ExprKind::Negate, here());
        step();
        e->left = unary();
        return e;
    }
    return primary();
}

Expr *Parser::primary()
{
    Depth guard(*this);
    if (deep()) return number("0", here());
    Tok start = here();
    if (takeMark('(')) {
        Listing saved = inArguments_;
        inArguments_ = NoList;
        Expr *e = orCondition();
        inArguments_ = saved;
        if (!takeMark(')') && !panic_) {
            error("expected \")\" before " + shown());
            diagnostics().note(group_.spot(start), "for this \"(\"");
        }
        return e;
    }
    if (atNumber() || atString() || atFigurative() || at(K_ALL)) return literal();
    if (joinedConstant() || atWholeFloat()) return literal();
    if (at(K_FUNCTION) && ahead().kind == TokenKind::Name) return functionCall();
    if (atFunctionName()) return functionCall();
    if (at(K_LENGTH)) {
        step();
        take(K_OF);
        Expr *e = node(ExprKind::LengthOf, start);
        if (atString() || atNumber()) {
            e->left = literal();
        } else {
            e->ref = identifier();
        }
        return e;
    }
    if (at(K_BYTE_LENGTH, K_OF)) {
        step();
        step();
        Expr *e = node(ExprKind::LengthOf, start);
        e->ref = identifier();
        return e;
    }
    if (at(K_ADDRESS, K_OF)) {
        step();
        step();
        Expr *e = node(ExprKind::AddressOf, start);
        e->ref = identifier();
        return e;
    }
    if (at(K_TRUE) || at(K_FALSE)) {
        Expr *e = node(ExprKind::Truth, start);
        e->op = now().word;
        step();
        return e;
    }
    if (atName() || at(K_LINAGE_COUNTER) || at(K_PAGE_COUNTER) || at(K_LINE_COUNTER)) {
        Expr *e = node(ExprKind::Reference, start);
        e->ref = identifier();
        return e;
    }
    if (now().kind == TokenKind::Name && isReserved(now().word))
        error(wordText(now().word) + " is a reserved word; expected an operand");
    else
        error("expected an operand before " + shown());
    return number("0", start);
}

Expr *Parser::functionCall()
{
    Expr *e = node(ExprKind::Function, here());
    take(K_FUNCTION);
    e->at = here();
    e->op = now().word;
    step();
    const FunctionRow *row = functionRow(e->op);
    bool noArguments = row && row->most == 0 && now().commaBefore; // what follows is another argument
    if (atMark('(') && !noArguments) {
        Tok open = here();
        // A reference modifier of a function without arguments: FUNCTION CURRENT-DATE (1:8). Its
        // first operand is followed by a colon.
        if (!beginsRefmod(position_)) {
            step();
            Listing outer = inArguments_;
            inArguments_ = FunctionList;
            while (!atMark(')') && !atEnd() && !panic_) {
                if (at(K_LEADING) || at(K_TRAILING)) { // of TRIM
                    Expr *word = node(ExprKind::Truth, here());
                    word->op = now().word;
                    step();
                    e->args.push_back(word);
                    continue;
                }
                e->args.push_back(expression());
            }
            inArguments_ = outer;
            if (!takeMark(')') && !panic_) {
                error("expected \")\" before " + shown());
                diagnostics().note(group_.spot(open), "for this \"(\"");
            }
        }
    }
    // Other parentheses are the next argument of the function around it: MAX (ABS (A), (B + C)).
    if (atMark('(') && beginsRefmod(position_)) {
        Reference *ref = make<Reference>();
        ref->at = here();
        subscriptsAndRefmod(*ref);
        if (ref->refmod) e->ref = ref;
    }
    return e;
}

} // namespace kvrcob
