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

// Is this the item of the next FOR, and no operand?
bool Parser::atCounter()
{
    if (!atName() || at(K_FUNCTION)) return false;
    const size_t saved = position_;
    const bool wasPanic = panic_;
    identifier();
    const bool counter = at(K_FOR);
    position_ = saved;
    panic_ = wasPanic;
    return counter;
}

bool Parser::atTallyingMode() const { return at(K_CHARACTERS) || at(K_ALL) || at(K_LEADING) || at(K_TRAILING); }

// TALLYING item FOR CHARACTERS, or FOR ALL "a" "b": one mode for several operands.
void Parser::tallyingPhrases(InspectStatement &s)
{
    InspectStatement::Phrase phrase;
    phrase.kind = K_TALLYING;
    phrase.counter = identifier();
    expect(K_FOR);
    if (!atTallyingMode()) error("expected CHARACTERS, ALL, LEADING or TRAILING before " + shown());
    while (atTallyingMode() && !panic_) {
        phrase.mode = now().word;
        step();
        if (phrase.mode == K_CHARACTERS) {
            s.phrases.push_back(phrase);
            beforeAfter(s.phrases.back());
            continue;
        }
        while ((atOperand() || at(K_FUNCTION)) && !at(K_ALL) && !panic_ && !atCounter()) {
            s.phrases.push_back(phrase);
            s.phrases.back().compared = operand();
            beforeAfter(s.phrases.back());
        }
    }
}

bool Parser::atReplacingMode() const { return atTallyingMode() || at(K_FIRST); }

// REPLACING CHARACTERS BY x, or ALL "a" BY "b" "c" BY "d": one mode for several pairs.
void Parser::replacingPhrases(InspectStatement &s)
{
    if (!atReplacingMode()) error("expected CHARACTERS, ALL, LEADING, FIRST or TRAILING before " + shown());
    while (atReplacingMode() && !panic_) {
        const Word mode = now().word;
        step();
        do {
            InspectStatement::Phrase phrase;
            phrase.kind = K_REPLACING;
            phrase.mode = mode;
            if (mode != K_CHARACTERS) phrase.compared = operand();
            expect(K_BY);
            if (!panic_) phrase.result = operand();
            beforeAfter(phrase);
            s.phrases.push_back(phrase);
        } while (mode != K_CHARACTERS && (atOperand() || at(K_FUNCTION)) && !at(K_ALL) && !panic_);
    }
}

void Parser::convertingPhrase(InspectStatement &s)
{
    InspectStatement::Phrase phrase;
    phrase.kind = K_CONVERTING;
    phrase.compared = operand();
    expect(K_TO);
    if (!panic_) phrase.result = operand();
    beforeAfter(phrase);
    s.phrases.push_back(phrase);
}

Statement *Parser::inspectStatement()
{
    auto *s = begin<InspectStatement>();
    Expr *inspected = primary();
    if (inspected->kind == ExprKind::Function || inspected->kind == ExprKind::String)
        s->function = inspected;
    else if (inspected->kind == ExprKind::Reference)
        s->target = inspected->ref;
    else
        errorAt(inspected->at, "INSPECT needs a data item");

    bool any = false;
    if (take(K_TALLYING)) {
        any = true;
        while (atName() && !panic_) tallyingPhrases(*s);
    }
    if (take(K_REPLACING)) {
        any = true;
        replacingPhrases(*s);
    }
    if (take(K_CONVERTING)) {
        any = true;
        convertingPhrase(*s);
    }
    if (!any) error("expected TALLYING, REPLACING or CONVERTING before " + shown());
    return s;
}

// EXAMINE item TALLYING|REPLACING: an INSPECT that counts into TALLY, from zero.
Statement *Parser::examineStatement()
{
    auto *s = begin<InspectStatement>();
    s->verb = K_INSPECT;
    s->examine = true;
    warn("obsolete", s->at, "EXAMINE is obsolete");
    s->target = identifier();
    bool tallying = take(K_TALLYING);
    if (!tallying) expect(K_REPLACING);
    if (panic_) return s;
    InspectStatement::Phrase phrase;
    phrase.kind = tallying ? K_TALLYING : K_REPLACING;
    phrase.mode = now().word;
    if (take(K_UNTIL)) {
        expect(K_FIRST);
        phrase.mode = K_CHARACTERS;
        phrase.before = operand();
    } else if (take(K_ALL) || take(K_LEADING) || (!tallying && take(K_FIRST))) {
        phrase.compared = operand();
    } else {
        error("expected ALL, LEADING or UNTIL FIRST before " + shown());
        return s;
    }
    if (tallying) {
        phrase.counter = make<Reference>();
        phrase.counter->at = s->at;
        phrase.counter->names.push_back(K_TALLY);
        s->phrases.push_back(phrase);
        if (!take(K_REPLACING)) return s;
        phrase.kind = K_REPLACING;
        phrase.counter = nullptr;
    }
    expect(K_BY);
    if (!panic_) phrase.result = operand();
    s->phrases.push_back(phrase);
    return s;
}

// TRANSFORM item [CHARACTERS] FROM a TO b: an INSPECT CONVERTING; one character may stand for all.
Statement *Parser::transformStatement()
{
    auto *s = begin<InspectStatement>();
    s->verb = K_INSPECT;
    warn("obsolete", s->at, "TRANSFORM is obsolete");
    s->target = identifier();
    take(K_CHARACTERS);
    expect(K_FROM);
    InspectStatement::Phrase phrase;
    phrase.kind = K_CONVERTING;
    if (!panic_) phrase.compared = operand();
    expect(K_TO);
    if (!panic_) phrase.result = operand();
    if (panic_) return s;
    if (phrase.compared->kind == ExprKind::String && phrase.result->kind == ExprKind::String &&
        phrase.result->text.size() == 1)
        phrase.result->text = keepText(std::string(phrase.compared->text.size(), phrase.result->text[0]));
    s->phrases.push_back(phrase);
    return s;
}

} // namespace kvrcob
