// ADD, SUBTRACT, MULTIPLY, DIVIDE, COMPUTE.
#include "cobol/syntax/parser.h"

namespace kvrcob {

void Parser::sizeError(Phrases &out) { phrases(out, K_ON, K_SIZE, K_ERROR); }

// [ROUNDED [MODE IS mode]]
Rounding Parser::roundedPhrase()
{
    static const struct {
        Word word;
        Rounding mode;
    } modes[] = {
        {K_NEAREST_AWAY_FROM_ZERO, NearestAwayFromZero},
        {K_NEAREST_EVEN, NearestEven},
        {K_NEAREST_TOWARD_ZERO, NearestTowardZero},
        {K_AWAY_FROM_ZERO, AwayFromZero},
        {K_TOWARD_GREATER, TowardGreater},
        {K_TOWARD_LESSER, TowardLesser},
        {K_TRUNCATION, Truncation},
        {K_PROHIBITED, RoundingProhibited},
    };
    if (!take(K_ROUNDED)) return Truncation;
    if (!take(K_MODE)) return NearestAwayFromZero;
    take(K_IS);
    for (const auto &row : modes)
        if (take(row.word)) return row.mode;
    error("expected a mode of rounding before " + shown());
    return NearestAwayFromZero;
}

// Receiving items, each with ROUNDED.
void Parser::arithmeticTargets(std::vector<Target> &targets)
{
    do {
        Target target;
        target.ref = identifier();
        target.rounded = roundedPhrase();
        targets.push_back(target);
    } while (atName() && !at(K_EQUALS) && !panic_);
}

// CORRESPONDING group TO or FROM group.
void Parser::correspondingGroups(ArithmeticStatement &s, Word preposition)
{
    s.corresponding = true;
    Expr *group = node(ExprKind::Reference, here());
    group->ref = identifier();
    s.operands.push_back(group);
    expect(preposition);
    arithmeticTargets(s.targets);
}

// What ADD adds and SUBTRACT subtracts: one operand after the other.
void Parser::operandsOfSum(ArithmeticStatement &s)
{
    while (atOperand() || at(K_FUNCTION) || atMark('(')) {
        inArguments_ = OperandList; // "ADD A -1 TO B" has two operands
        s.operands.push_back(operand());
        inArguments_ = NoList;
        if (panic_) break;
    }
    if (s.operands.empty()) error("expected an operand before " + shown());
}

Statement *Parser::addStatement()
{
    auto *s = begin<ArithmeticStatement>();
    if (take(K_CORRESPONDING) || take(K_CORR)) {
        correspondingGroups(*s, K_TO);
    } else {
        operandsOfSum(*s);
        if (take(K_TO)) {
            // ADD a TO b GIVING c: b is an operand; else a receiving item.
            size_t saved = position_;
            Expr *to = operand();
            if (at(K_GIVING)) {
                s->operands.push_back(to);
            } else {
                position_ = saved;
                arithmeticTargets(s->targets);
                if (at(K_GIVING)) { // ADD a TO b c GIVING d
                    for (Target &target : s->targets) {
                        Expr *e = node(ExprKind::Reference, target.ref->at);
                        e->ref = target.ref;
                        s->operands.push_back(e);
                    }
                    s->targets.clear();
                }
            }
        }
        if (take(K_GIVING)) {
            s->giving = true;
            arithmeticTargets(s->targets);
        }
        if (s->targets.empty()) error("expected TO or GIVING before " + shown());
    }
    sizeError(s->sizeError);
    take(K_END_ADD);
    return s;
}

// After FROM, BY or INTO: an operand if GIVING follows it, else the first receiving item, which
// stays.
void Parser::operandOfGiving(ArithmeticStatement &s)
{
    if (panic_) return;
    size_t saved = position_;
    Expr *second = operand();
    if (take(K_GIVING)) {
        s.giving = true;
        s.second = second;
    } else if (!panic_) {
        position_ = saved;
    }
}

Statement *Parser::subtractStatement()
{
    auto *s = begin<ArithmeticStatement>();
    if (take(K_CORRESPONDING) || take(K_CORR)) {
        correspondingGroups(*s, K_FROM);
    } else {
        operandsOfSum(*s);
        expect(K_FROM);
        operandOfGiving(*s);
        if (!panic_) arithmeticTargets(s->targets);
    }
    sizeError(s->sizeError);
    take(K_END_SUBTRACT);
    return s;
}

Statement *Parser::multiplyStatement()
{
    auto *s = begin<ArithmeticStatement>();
    s->operands.push_back(operand());
    expect(K_BY);
    operandOfGiving(*s);
    if (!panic_) arithmeticTargets(s->targets);
    sizeError(s->sizeError);
    take(K_END_MULTIPLY);
    return s;
}

Statement *Parser::divideStatement()
{
    auto *s = begin<ArithmeticStatement>();
    s->operands.push_back(operand());
    if (take(K_INTO)) {
        s->into = true;
        operandOfGiving(*s);
    } else if (expect(K_BY)) {
        s->second = operand();
        s->giving = true;
        expect(K_GIVING);
    }
    if (!panic_) arithmeticTargets(s->targets);
    if (take(K_REMAINDER)) {
        s->remainder.ref = identifier();
        s->remainder.rounded = roundedPhrase();
    }
    sizeError(s->sizeError);
    take(K_END_DIVIDE);
    return s;
}

Statement *Parser::computeStatement()
{
    auto *s = begin<ArithmeticStatement>();
    arithmeticTargets(s->targets);
    if (!takeMark('=') && !take(K_EQUAL) && !take(K_EQUALS)) error("expected \"=\" before " + shown());
    if (!panic_) s->operands.push_back(expression());
    sizeError(s->sizeError);
    take(K_END_COMPUTE);
    return s;
}

} // namespace kvrcob
