// Conditions: relations, class and sign tests, and AND, OR, NOT over them.
//
// An abbreviated relation has no left side: A = B OR > C. A bare operand after AND or OR may be a
// condition-name or an abbreviated relation, which only the names can tell (emit/conditions.cpp).
#include "cobol/syntax/parser.h"

namespace kvrcob {

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

// The same where an operand could be, too, which some of the words may be names of.
bool Parser::atRelationAlone() const
{
    return atRelationalOperator() && !(now().kind == TokenKind::Name && declared_.count(now().word));
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
        if (atRelationAlone()) { // A = B OR NOT > C
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

static bool isCondition(const Expr &e)
{
    return e.kind == ExprKind::Or || e.kind == ExprKind::And || e.kind == ExprKind::Not ||
           e.kind == ExprKind::Relation || e.kind == ExprKind::ClassTest || e.kind == ExprKind::SignTest;
}

// A class or sign test, at its word.
Expr *Parser::testNode(ExprKind kind, Word test, Expr *left, bool negated)
{
    Expr *e = node(kind, here());
    e->op = test;
    e->left = left;
    e->negated = negated;
    step();
    return e;
}

// What follows an operand, IS and NOT, if it is a class or a sign, or OMITTED; else null. `is`: IS
// or NOT was there.
Expr *Parser::wordTest(Expr *left, bool is, bool negated)
{
    if (now().kind != TokenKind::Name) return nullptr;
    const Word word = now().word;
    if (word == K_NUMERIC || word == K_ALPHABETIC || word == K_ALPHABETIC_LOWER || word == K_ALPHABETIC_UPPER)
        return testNode(ExprKind::ClassTest, word, left, negated);

    const bool zero = word == K_ZERO || word == K_ZEROS || word == K_ZEROES;
    if (word == K_POSITIVE || word == K_NEGATIVE || (zero && (is || left))) // also "IF A ZERO"
        return testNode(ExprKind::SignTest, zero ? static_cast<Word>(K_ZERO) : word, left, negated);

    if (left && left->kind == ExprKind::Reference && word == K_OMITTED) { // a parameter without an address
        Expr *e = node(ExprKind::Relation, here());
        e->op = negated ? static_cast<uint32_t>(kNotEqual) : '=';
        e->left = node(ExprKind::AddressOf, left->at);
        e->left->ref = left->ref;
        e->right = node(ExprKind::Figurative, here());
        e->right->op = K_NULL;
        step();
        return e;
    }
    if (!left || !program_ || isReserved(word)) return nullptr;
    for (const UserClass *known : program_->classes) // IS may be left out
        if (known->name == word) return testNode(ExprKind::ClassTest, word, left, negated);
    return nullptr;
}

Expr *Parser::relation()
{
    Tok start = here();
    Expr *left = nullptr;
    bool is = false;
    if (at(K_IS) && !panic_) { // abbreviated: A IS = B OR IS > C
        is = true;
    } else if (!atRelationAlone()) {
        left = expression();
        if (panic_ || isCondition(*left)) return left;
    }
    size_t saved = position_;
    is = take(K_IS) || take(K_ARE) || is;
    bool negated = take(K_NOT);
    if (atRelationalOperator()) {
        Expr *e = node(ExprKind::Relation, here());
        e->op = relationalOperator();
        if (negated) e->op = turned(e->op);
        e->left = left;
        e->right = expression();
        return e;
    }
    if (Expr *test = wordTest(left, is || negated, negated)) return test;

    if (is || negated) {
        if (is && !negated && left && (at(K_TRUE) || at(K_FALSE))) return left;
        if (!is) {
            position_ = saved;
            if (left) return left;
        }
        error("expected a relation or class before " + shown());
        return node(ExprKind::Truth, start);
    }
    if (left && (atMark('!') || atMark(kPseudo))) { // "==" and "!=" of other languages
        error("expected a relation before " + shown());
        return node(ExprKind::Truth, start);
    }
    return left ? left : number("0", start);
}

} // namespace kvrcob
