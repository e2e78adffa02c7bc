// IF, EVALUATE, PERFORM, GO TO, ALTER, EXIT, CONTINUE, NEXT SENTENCE, STOP, GOBACK.
#include <algorithm>

#include "cobol/syntax/functions.h"
#include "cobol/syntax/parser.h"

namespace kvrcob {

Statement *Parser::ifStatement()
{
    auto *s = begin<IfStatement>();
    s->condition = condition();
    if (panic_) recover();
    take(K_THEN);
    block(s->then);
    if (take(K_ELSE) || take(K_OTHERWISE)) {
        s->hasElse = true;
        block(s->otherwise);
    }
    take(K_END_IF);
    return s;
}

// ON n [AND EVERY m] [UNTIL k] statements [ELSE statements]: an IF whose condition counts how often
// it is met.
Statement *Parser::onStatement()
{
    auto *s = begin<IfStatement>();
    s->verb = K_IF;
    warn("obsolete", s->at, "ON is obsolete");
    Expr *count = node(ExprKind::Count, s->at);
    int64_t from = 0, every = 0, until = 0;
    parseInteger(from);
    take(K_AND);
    if (take(K_EVERY)) parseInteger(every);
    if (take(K_UNTIL)) parseInteger(until);
    for (int64_t value : {from, every, until}) count->args.push_back(number(keepText(std::to_string(value)), s->at));
    s->condition = count;
    if (panic_) recover();
    block(s->then);
    if (take(K_ELSE) || take(K_OTHERWISE)) {
        s->hasElse = true;
        block(s->otherwise);
    }
    return s;
}

Expr *Parser::evaluateOperand(bool object)
{
    Tok start = here();
    if (object && at(K_ANY)) {
        step();
        return node(ExprKind::Any, start);
    }
    if (at(K_TRUE) || at(K_FALSE)) {
        Expr *e = node(ExprKind::Truth, start);
        e->op = now().word;
        step();
        return e;
    }
    // WHEN NUMERIC, WHEN IS NEGATIVE: a test of the subject.
    size_t first = at(K_IS) ? 1 : 0;
    bool sign = aheadIs(first, K_POSITIVE) || aheadIs(first, K_NEGATIVE);
    if (object && (sign || aheadIs(first, K_NUMERIC) || aheadIs(first, K_ALPHABETIC) ||
                   aheadIs(first, K_ALPHABETIC_LOWER) || aheadIs(first, K_ALPHABETIC_UPPER))) {
        take(K_IS);
        Expr *test = node(sign ? ExprKind::SignTest : ExprKind::ClassTest, start);
        test->op = now().word;
        step();
        return test;
    }
    Expr *e = condition();
    if (object && (take(K_THRU) || take(K_THROUGH))) {
        Expr *range = node(ExprKind::Range, start);
        range->left = e;
        range->right = expression();
        return range;
    }
    return e;
}

Statement *Parser::evaluateStatement()
{
    auto *s = begin<EvaluateStatement>();
    do s->subjects.push_back(evaluateOperand(false));
    while (take(K_ALSO) && !panic_);
    if (panic_) {
        while (!atEnd() && !atMark('.') && !at(K_WHEN) && !at(K_END_EVALUATE)) step();
        panic_ = false;
    }
    if (!at(K_WHEN)) error("expected WHEN before " + shown());
    while (at(K_WHEN) && !panic_) {
        if (!s->whens.empty() && s->whens.back().other)
            warn("evaluate", here(), "this WHEN is never reached: WHEN OTHER comes before it");
        EvaluateStatement::When when;
        while (at(K_WHEN) && !panic_) {
            step();
            if (at(K_OTHER)) {
                step();
                when.other = true;
                continue;
            }
            std::vector<EvaluateStatement::Object> row;
            do {
                EvaluateStatement::Object object;
                // NOT before a plain value; NOT of a condition belongs to the condition itself,
                // with the same meaning.
                if (at(K_NOT)) {
                    step();
                    object.negated = true;
                }
                object.value = evaluateOperand(true);
                row.push_back(object);
            } while (take(K_ALSO) && !panic_);
            if (row.size() != s->subjects.size() && !panic_)
                error("this WHEN has " + std::to_string(row.size()) + " objects, EVALUATE has " +
                      std::to_string(s->subjects.size()) + " subjects");
            when.rows.push_back(std::move(row));
            if (panic_) {
                recover();
            }
        }
        block(when.block);
        s->whens.push_back(std::move(when));
    }
    take(K_END_EVALUATE);
    return s;
}

// After PERFORM: a procedure's name, and neither the count of an inline PERFORM n TIMES nor the
// first word of a phrase?
bool Parser::atPerformedName()
{
    if (at(K_FOREVER) && ahead().kind == TokenKind::Name) { // a procedure's name if a phrase follows
        static constexpr Word phrases[] = {K_OF, K_IN, K_THRU, K_THROUGH, K_UNTIL, K_VARYING, K_WITH, K_TEST};
        if (std::none_of(std::begin(phrases), std::end(phrases), [&](Word word) { return aheadIs(1, word); }))
            return false;
    } else if (!atProcedureName() || ((atNumber() || atName()) && aheadIs(1, K_TIMES)) ||
               (at(K_FUNCTION) && ahead().kind == TokenKind::Name && functionRow(ahead().word))) {
        return false;
    }
    if (!atName()) return true;
    if (ahead().kind == TokenKind::Punct && ahead().word == '(') return false; // PERFORM T (I) TIMES

    // PERFORM A OF B TIMES: a count; PERFORM P OF S: a procedure.
    size_t i = 1;
    while ((aheadIs(i, K_OF) || aheadIs(i, K_IN)) && ahead(i + 1).kind == TokenKind::Name) i += 2;
    return i == 1 || !aheadIs(i, K_TIMES);
}

void Parser::varyingPhrases(PerformStatement &s)
{
    do {
        Varying v;
        v.item = identifier();
        expect(K_FROM);
        if (!panic_) v.from = expression();
        if (take(K_BY)) v.by = expression(); // BY may be left out: 1
        expect(K_UNTIL);
        if (!panic_) v.until = condition();
        s.varying.push_back(v);
    } while (take(K_AFTER) && !panic_);
}

// How often: TEST, VARYING, UNTIL, FOREVER, TIMES; nothing: once.
void Parser::performPhrases(PerformStatement &s)
{
    if (at(K_WITH) && aheadIs(1, K_TEST)) step();
    if (take(K_TEST)) {
        if (take(K_AFTER))
            s.testAfter = true;
        else
            expect(K_BEFORE);
    }
    if (at(K_VARYING)) {
        step();
        varyingPhrases(s);
    } else if (at(K_FOREVER)) {
        step();
        s.forever = true;
    } else if (take(K_UNTIL)) {
        if (at(K_EXIT)) {
            step();
            s.forever = true;
        } else {
            s.until = condition();
        }
    } else if (atOperand() || at(K_FUNCTION) || atMark('(')) {
        s.times = expression();
        expect(K_TIMES);
    }
}

void Parser::inlineBody(PerformStatement &s)
{
    if (panic_) recover();
    block(s.body);
    if (at(K_END, K_PERFORM)) {
        error("END PERFORM is written END-PERFORM");
        step();
        step();
        panic_ = false;
    } else if (!take(K_END_PERFORM) && !panic_) {
        error("expected END-PERFORM before " + shown());
        diagnostics().note(group_.spot(s.at), "for this PERFORM");
    }
}

Statement *Parser::performStatement()
{
    auto *s = begin<PerformStatement>();
    s->isInline = !atPerformedName();
    if (!s->isInline) {
        s->first = procedureName();
        if (take(K_THRU) || take(K_THROUGH)) s->last = procedureName();
        if (program_ && !program_->procedures.empty())
            program_->performed.push_back({program_->procedures.size() - 1, s->first, s->last});
    }
    if (panic_) return s;
    performPhrases(*s);
    if (s->isInline) inlineBody(*s);
    return s;
}

Statement *Parser::goStatement()
{
    auto *s = begin<GoStatement>();
    take(K_TO);
    while (atProcedureName() && !panic_ && (s->targets.empty() || !atLostHeader()))
        s->targets.push_back(procedureName());
    if (take(K_DEPENDING)) {
        take(K_ON);
        s->depending = identifier();
    } else if (s->targets.size() > 1) {
        error("expected DEPENDING ON before " + shown());
    }
    return s;
}

Statement *Parser::alterStatement()
{
    auto *s = begin<AlterStatement>();
    warn("obsolete", s->at, "ALTER is obsolete");
    if (program_) program_->hasAlter = true;
    do {
        AlterStatement::Pair pair;
        pair.paragraph = procedureName();
        expect(K_TO);
        if (take(K_PROCEED)) take(K_TO);
        if (!panic_) pair.target = procedureName();
        s->pairs.push_back(pair);
    } while (atProcedureName() && !panic_);
    return s;
}

Statement *Parser::exitStatement()
{
    auto *s = begin<ExitStatement>();
    if (take(K_PROGRAM)) {
        s->form = ExitStatement::Program;
        if (take(K_RETURNING) || take(K_GIVING)) s->value = operand();
    } else if (take(K_PERFORM)) {
        s->form = take(K_CYCLE) ? ExitStatement::PerformCycle : ExitStatement::Perform;
    } else if (take(K_PARAGRAPH)) {
        s->form = ExitStatement::Paragraph;
    } else if (take(K_SECTION)) {
        s->form = ExitStatement::Section;
    } else if (take(K_FUNCTION)) {
        s->form = ExitStatement::Function;
    }
    return s;
}

Statement *Parser::continueStatement()
{
    auto *s = begin<ExitStatement>();
    s->form = ExitStatement::Continue;
    if (take(K_AFTER)) { // CONTINUE AFTER n SECONDS
        s->value = expression();
        expect(K_SECONDS);
    }
    return s;
}

Statement *Parser::nextSentence()
{
    auto *s = begin<ExitStatement>();
    expect(K_SENTENCE);
    s->form = ExitStatement::NextSentence;
    return s;
}

Statement *Parser::stopStatement()
{
    auto *s = begin<ExitStatement>();
    if (take(K_RUN)) {
        s->form = ExitStatement::StopRun;
        // STOP RUN 8, STOP RUN RETURNING 8, STOP RUN WITH ERROR STATUS 8
        if (take(K_RETURNING) || take(K_GIVING)) {
            s->value = operand();
        } else if (take(K_WITH) || at(K_ERROR) || at(K_NORMAL)) {
            bool failed = at(K_ERROR);
            if (!take(K_ERROR)) take(K_NORMAL);
            take(K_STATUS);
            if (atOperand())
                s->value = operand();
            else
                s->value = number(failed ? "1" : "0", here());
        } else if (atOperand()) {
            s->value = operand();
        }
        return s;
    }
    s->form = ExitStatement::StopLiteral;
    s->value = literal();
    return s;
}

Statement *Parser::gobackStatement()
{
    auto *s = begin<ExitStatement>();
    s->form = ExitStatement::Goback;
    if (take(K_RETURNING) || take(K_GIVING)) s->value = operand();
    return s;
}

} // namespace kvrcob
