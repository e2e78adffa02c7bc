// Identifiers, arithmetic expressions and conditions.
//
// One grammar serves them all, since only what follows tells "(A + B) > C" from "(A > B) AND C".
// What makes sense where is told when code is made (emit/conditions.cpp, emit/numbers.cpp). An
// abbreviated relation has no left side; a bare operand after AND or OR may be a condition-name or
// an abbreviated relation, which only the names can tell.
#include <cstdlib>

#include "cobol/syntax/functions.h"
#include "cobol/syntax/parser.h"

namespace kvrcob {

Expr *Parser::node(ExprKind kind, Tok at)
{
    Expr *e = make<Expr>();
    e->kind = kind;
    e->at = at;
    return e;
}

Expr *Parser::number(std::string_view text, Tok at)
{
    Expr *e = node(ExprKind::Number, at);
    e->text = text;
    return e;
}

bool Parser::parseInteger(int64_t &value)
{
    bool negative = takeMark('-');
    if (!negative) takeMark('+');
    if (!atNumber()) {
        // A constant (level 78) would do, but its value is known later only.
        error("expected an integer before " + shown());
        return false;
    }
    value = std::strtoll(std::string(now().text).c_str(), nullptr, 10);
    if (negative) value = -value;
    step();
    return true;
}

bool Parser::atFigurative() const
{
    if (now().kind != TokenKind::Name) return false;
    switch (now().word) {
    case K_ZERO:
    case K_ZEROS:
    case K_ZEROES:
    case K_SPACE:
    case K_SPACES:
    case K_HIGH_VALUE:
    case K_HIGH_VALUES:
    case K_LOW_VALUE:
    case K_LOW_VALUES:
    case K_QUOTE:
    case K_QUOTES:
    case K_NULL:
    case K_NULLS:
        return true;
    default:
        return false;
    }
}

static uint32_t figurativeOf(Word word)
{
    switch (word) {
    case K_ZEROS:
    case K_ZEROES:
        return K_ZERO;
    case K_SPACES:
        return K_SPACE;
    case K_HIGH_VALUES:
        return K_HIGH_VALUE;
    case K_LOW_VALUES:
        return K_LOW_VALUE;
    case K_QUOTES:
        return K_QUOTE;
    case K_NULLS:
        return K_NULL;
    default:
        return word;
    }
}

// A function of the REPOSITORY, which needs no FUNCTION before its name: with arguments, or one
// that has none and is no item of the program.
bool Parser::atFunctionName() const
{
    if (!program_ || program_->functions.empty() || now().kind != TokenKind::Name) return false;
    if (!program_->functions.count(now().word) || dataNames_.count(now().word)) return false;
    if (ahead().kind == TokenKind::Punct && ahead().word == '(') return true;
    const FunctionRow *row = functionRow(now().word);
    return !isReserved(now().word) && (!row || row->least == 0);
}

bool Parser::atOperand() const
{
    const Token &token = now();
    if (token.kind == TokenKind::Number || token.kind == TokenKind::String) return true;
    if (token.kind == TokenKind::Punct)
        return (token.word == '-' || token.word == '+') && ahead().kind == TokenKind::Number && !ahead().spaceBefore;
    if (token.kind != TokenKind::Name) return false;
    if (!isReserved(token.word)) return atName() || atFigurative();
    return atFigurative() || token.word == K_ALL || token.word == K_LINAGE_COUNTER || token.word == K_LENGTH ||
           atFunctionName() || token.word == K_PAGE_COUNTER || token.word == K_LINE_COUNTER;
}

// A literal, with a sign if it is a number; figurative constants and ALL.
Expr *Parser::literal()
{
    Tok start = here();
    if (atMark('-') || atMark('+')) {
        bool negative = atMark('-');
        step();
        if (!atNumber()) {
            error("expected a number before " + shown());
            return number("0", start);
        }
        Expr *e = number(now().text, start);
        step();
        if (!negative) return e;
        Expr *minus = node(ExprKind::Negate, start);
        minus->left = e;
        return minus;
    }
    if (atNumber()) {
        Expr *e = number(now().text, start);
        step();
        return e;
    }
    if (atString()) {
        Expr *e = node(ExprKind::String, start);
        e->text = now().text;
        e->form = now().form;
        step();
        // "a" & "b"
        while (atMark('&') && (ahead().kind == TokenKind::String)) {
            step();
            e->text = keepText(std::string(e->text) + std::string(now().text));
            step();
        }
        return e;
    }
    if (take(K_ALL)) {
        Expr *e = node(ExprKind::All, start);
        if (atString()) {
            e->text = now().text;
            e->form = now().form;
            step();
        } else if (atFigurative()) {
            e->kind = ExprKind::Figurative;
            e->op = figurativeOf(now().word);
            step();
        } else if (atName()) {
            // A symbolic character or constant.
            e->ref = identifier();
        } else {
            error("expected a literal after ALL");
        }
        return e;
    }
    if (atFigurative()) {
        Expr *e = node(ExprKind::Figurative, start);
        e->op = figurativeOf(now().word);
        step();
        return e;
    }
    if (atName()) { // a constant or symbolic character
        Expr *e = node(ExprKind::Reference, start);
        e->ref = identifier();
        return e;
    }
    error("expected a literal before " + shown());
    return number("0", start);
}

Reference *Parser::fileOrName()
{
    Reference *ref = make<Reference>();
    ref->at = here();
    if (now().kind == TokenKind::Name) {
        ref->names.push_back(now().word);
        step();
    } else {
        error("expected a name before " + shown());
    }
    return ref;
}

Reference *Parser::identifier()
{
    Reference *ref = make<Reference>();
    ref->at = here();
    if (!atName() && !at(K_LINAGE_COUNTER) && !at(K_PAGE_COUNTER) && !at(K_LINE_COUNTER)) {
        if (now().kind == TokenKind::Name && isReserved(now().word))
            error(wordText(now().word) + " is a reserved word; expected the name of a data item");
        else
            error("expected the name of a data item before " + shown());
        ref->names.push_back(internWord("?"));
        return ref;
    }
    ref->names.push_back(now().word);
    step();
    while ((at(K_OF) || at(K_IN)) && ahead().kind == TokenKind::Name) {
        step();
        ref->names.push_back(now().word);
        step();
    }
    subscriptsAndRefmod(*ref);
    return ref;
}

// Does the parenthesis at `open` begin a reference modifier, a colon at its own level?
bool Parser::beginsRefmod(size_t open) const
{
    int depth = 0;
    for (size_t i = open; i < tokens_.size() && i < open + 200; i++) {
        const Token &t = tokens_[i];
        if (t.kind == TokenKind::End) return false;
        if (t.kind != TokenKind::Punct) continue;
        if (t.word == '(') depth++;
        if (t.word == ')' && --depth == 0) return false;
        if (t.word == '.') return false;
        if (t.word == ':' && depth == 1) return true;
    }
    return false;
}

void Parser::subscriptsAndRefmod(Reference &ref)
{
    Depth guard(*this);
    if (deep()) return;
    for (int round = 0; round < 2 && atMark('('); round++) {
        // Of a function's arguments "A (B + 1)" are two, unless A is a table.
        if (inArguments_ == FunctionList && !ref.names.empty() && !beginsRefmod(position_) &&
            (now().commaBefore || round == 1 || !tableNames_.count(ref.names[0])))
            return;
        Tok open = here();
        step();
        Listing saved = inArguments_;
        inArguments_ = NoList;
        bool first = true;
        while (!atMark(')') && !atEnd() && !panic_) {
            if (atMark(':')) {
                error("expected a position before \":\"");
                break;
            }
            Expr *e;
            if (at(K_ALL)) {
                e = node(ExprKind::AllSubscript, here());
                step();
            } else {
                e = expression();
            }
            if (first && takeMark(':')) {
                ref.refmod = true;
                ref.from = e;
                if (!atMark(')')) ref.length = expression();
                break;
            }
            first = false;
            if (round == 1) {
                error("expected a reference modifier here");
                break;
            }
            ref.subscripts.push_back(e);
        }
        inArguments_ = saved;
        if (!takeMark(')')) {
            if (!panic_) {
                error("expected \")\" before " + shown());
                diagnostics().note(group_.spot(open), "for this \"(\"");
            }
            return;
        }
        if (ref.refmod) return;
    }
}

Expr *Parser::operand()
{
    if (atString() || atFigurative() || at(K_ALL) || atMark('-') || atMark('+') || atNumber()) return literal();
    return primary();
}

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
    Reference *ref = nullptr;
    if (atMark('(')) {
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
    if (atMark('(')) {
        ref = make<Reference>();
        ref->at = here();
        subscriptsAndRefmod(*ref);
        if (ref->refmod) e->ref = ref;
    }
    return e;
}

// ---- Conditions

Expr *Parser::condition() { return orCondition(); }

Expr *Parser::orCondition()
{
    Depth guard(*this);
    if (deep()) return number("0", here());
    Expr *left = andCondition();
    while (at(K_OR)) {
        left = joined(ExprKind::Or, left, &Parser::andCondition);
        if (panic_) break;
    }
    return left;
}

Expr *Parser::andCondition()
{
    Expr *left = notCondition();
    while (at(K_AND)) {
        left = joined(ExprKind::And, left, &Parser::notCondition);
        if (panic_) break;
    }
    return left;
}

bool Parser::atRelationalOperator() const
{
    if (now().kind == TokenKind::Punct)
        return now().word == '=' || now().word == '<' || now().word == '>' || now().word == kLessEqual ||
               now().word == kGreaterEqual || now().word == kNotEqual;
    return at(K_EQUAL) || at(K_EQUALS) || at(K_GREATER) || at(K_LESS) || at(K_UNEQUAL) || at(K_EXCEEDS);
}

// Takes an operator with all its words.
uint32_t Parser::relationalOperator()
{
    if (now().kind == TokenKind::Punct) {
        uint32_t mark = now().word;
        step();
        if (mark == '>' && atMark('=')) {
            step();
            return kGreaterEqual;
        }
        if (mark == '<' && atMark('=')) {
            step();
            return kLessEqual;
        }
        if (mark == '=' && (atMark('<') || atMark('>'))) { // "=<" and "=>" of older programs
            mark = atMark('<') ? kLessEqual : kGreaterEqual;
            step();
            return mark;
        }
        take(K_TO);
        take(K_THAN);
        return mark;
    }
    if (take(K_EQUAL) || take(K_EQUALS)) {
        take(K_TO);
        return '=';
    }
    if (take(K_UNEQUAL)) {
        take(K_TO);
        return kNotEqual;
    }
    if (take(K_EXCEEDS)) return '>';
    bool greater = at(K_GREATER);
    step();
    take(K_THAN);
    if (at(K_OR, K_EQUAL)) {
        step();
        step();
        take(K_TO);
        return greater ? kGreaterEqual : kLessEqual;
    }
    if (at(K_OR) && ahead().kind == TokenKind::Punct && ahead().word == '=') {
        step();
        step();
        return greater ? kGreaterEqual : kLessEqual;
    }
    return greater ? '>' : '<';
}

static uint32_t turned(uint32_t op)
{
    switch (op) {
    case '=':
        return kNotEqual;
    case kNotEqual:
        return '=';
    case '<':
        return kGreaterEqual;
    case '>':
        return kLessEqual;
    case kLessEqual:
        return '>';
    default:
        return '<';
    }
}

Expr *Parser::notCondition()
{
    Depth guard(*this);
    if (deep()) return number("0", here());
    if (at(K_NOT)) {
        Tok start = here();
        step();
        if (atRelationalOperator()) { // A = B OR NOT > C
            Expr *e = node(ExprKind::Relation, start);
            e->op = turned(relationalOperator());
            e->right = expression();
            return e;
        }
        Expr *e = node(ExprKind::Not, start);
        e->left = notCondition();
        return e;
    }
    return relation();
}

Expr *Parser::relation()
{
    Tok start = here();
    Expr *left = nullptr;
    bool is = false;
    if (at(K_IS) && !panic_) { // abbreviated: A IS = B OR IS > C
        is = true;
    } else if (!atRelationalOperator()) {
        left = expression();
        if (panic_) return left;
        if (left->kind == ExprKind::Or || left->kind == ExprKind::And || left->kind == ExprKind::Not ||
            left->kind == ExprKind::Relation || left->kind == ExprKind::ClassTest || left->kind == ExprKind::SignTest)
            return left;
    }
    size_t saved = position_;
    is = take(K_IS) || take(K_ARE) || is;
    bool negated = take(K_NOT);
    if (atRelationalOperator()) {
        Expr *e = node(ExprKind::Relation, start);
        e->at = here();
        e->op = relationalOperator();
        if (negated) e->op = turned(e->op);
        e->left = left;
        e->right = expression();
        return e;
    }
    Word word = now().kind == TokenKind::Name ? now().word : 0;
    if (word == K_NUMERIC || word == K_ALPHABETIC || word == K_ALPHABETIC_LOWER || word == K_ALPHABETIC_UPPER) {
        Expr *e = node(ExprKind::ClassTest, here());
        e->op = word;
        e->left = left;
        e->negated = negated;
        step();
        return e;
    }
    if (word == K_POSITIVE || word == K_NEGATIVE ||
        ((is || negated) && (word == K_ZERO || word == K_ZEROS || word == K_ZEROES))) {
        Expr *e = node(ExprKind::SignTest, here());
        e->op = word == K_POSITIVE || word == K_NEGATIVE ? word : static_cast<Word>(K_ZERO);
        e->left = left;
        e->negated = negated;
        step();
        return e;
    }
    if ((word == K_ZERO || word == K_ZEROS || word == K_ZEROES) && left) { // "IF A ZERO"
        Expr *e = node(ExprKind::SignTest, here());
        e->op = K_ZERO;
        e->left = left;
        step();
        return e;
    }
    if (left && program_ && now().kind == TokenKind::Name &&
        !isReserved(word)) { // a class of SPECIAL-NAMES; IS may be left out
        for (const UserClass *known : program_->classes) {
            if (known->name != word) continue;
            Expr *e = node(ExprKind::ClassTest, here());
            e->op = word;
            e->left = left;
            e->negated = negated;
            step();
            return e;
        }
    }
    if (is || negated) {
        if (is && !negated && left && (at(K_TRUE) || at(K_FALSE))) return left;
        if (!is) {
            position_ = saved;
            if (left) return left;
        }
        error("expected a relation or class before " + shown());
    }
    if (!left) left = number("0", start);
    return left;
}

} // namespace kvrcob
