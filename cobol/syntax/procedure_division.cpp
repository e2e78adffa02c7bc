// PROCEDURE DIVISION: sections, paragraphs, sentences, declaratives, and the table of verbs, which
// leads to each statement's routine.
#include "cobol/syntax/parser.h"

#include <vector>

namespace kvrcob {

// A newcomer finds a statement here: its verb, its routine, and with the routine its file.
struct VerbRow {
    Word verb;
    Statement *(Parser::*parse)();
    static const VerbRow *of(Word verb);
};

const VerbRow *VerbRow::of(Word verb)
{
    static const VerbRow rows[] = {
        // arithmetic.cpp
        {K_ADD, &Parser::addStatement},
        {K_SUBTRACT, &Parser::subtractStatement},
        {K_MULTIPLY, &Parser::multiplyStatement},
        {K_DIVIDE, &Parser::divideStatement},
        {K_COMPUTE, &Parser::computeStatement},
        // moves.cpp
        {K_MOVE, &Parser::moveStatement},
        {K_INITIALIZE, &Parser::initializeStatement},
        {K_SET, &Parser::setStatement},
        {K_ALLOCATE, &Parser::allocateStatement},
        {K_FREE, &Parser::freeStatement},
        // control.cpp
        {K_IF, &Parser::ifStatement},
        {K_ON, &Parser::onStatement},
        {K_EVALUATE, &Parser::evaluateStatement},
        {K_PERFORM, &Parser::performStatement},
        {K_GO, &Parser::goStatement},
        {K_ALTER, &Parser::alterStatement},
        {K_EXIT, &Parser::exitStatement},
        {K_CONTINUE, &Parser::continueStatement},
        {K_NEXT, &Parser::nextSentence},
        {K_STOP, &Parser::stopStatement},
        {K_GOBACK, &Parser::gobackStatement},
        // console.cpp
        {K_DISPLAY, &Parser::displayStatement},
        {K_ACCEPT, &Parser::acceptStatement},
        {K_EXHIBIT, &Parser::exhibitStatement},
        // calls.cpp
        {K_CALL, &Parser::callStatement},
        {K_CANCEL, &Parser::cancelStatement},
        {K_ENTRY, &Parser::entryStatement},
        // files.cpp
        {K_OPEN, &Parser::openStatement},
        {K_CLOSE, &Parser::closeStatement},
        {K_READ, &Parser::readStatement},
        {K_WRITE, &Parser::writeStatement},
        {K_REWRITE, &Parser::rewriteStatement},
        {K_DELETE, &Parser::deleteStatement},
        {K_START, &Parser::startStatement},
        {K_UNLOCK, &Parser::unlockStatement},
        // sorting.cpp
        {K_SORT, &Parser::sortStatement},
        {K_MERGE, &Parser::sortStatement},
        {K_RELEASE, &Parser::releaseStatement},
        {K_RETURN, &Parser::returnStatement},
        // strings.cpp
        {K_STRING, &Parser::stringStatement},
        {K_UNSTRING, &Parser::unstringStatement},
        {K_INSPECT, &Parser::inspectStatement},
        {K_EXAMINE, &Parser::examineStatement},
        {K_TRANSFORM, &Parser::transformStatement},
        // searching.cpp
        {K_SEARCH, &Parser::searchStatement},
        // xml.cpp
        {K_XML, &Parser::xmlStatement},
        // not built
        {K_ENTER, &Parser::enterStatement},
        {K_NOTE, &Parser::noteStatement},
        {K_READY, &Parser::traceStatement},
        {K_RESET, &Parser::traceStatement},
        {K_SERVICE, &Parser::serviceStatement},
        {K_GENERATE, &Parser::notBuiltStatement},
        {K_INITIATE, &Parser::notBuiltStatement},
        {K_TERMINATE, &Parser::notBuiltStatement},
        {K_SUPPRESS, &Parser::notBuiltStatement},
        {K_SEND, &Parser::notBuiltStatement},
        {K_RECEIVE, &Parser::notBuiltStatement},
        {K_ENABLE, &Parser::notBuiltStatement},
        {K_DISABLE, &Parser::notBuiltStatement},
        {K_PURGE, &Parser::notBuiltStatement},
        {K_EXEC, &Parser::notBuiltStatement},
        {K_JSON, &Parser::notBuiltStatement},
        {K_INVOKE, &Parser::notBuiltStatement},
        {K_RAISE, &Parser::notBuiltStatement},
    };
    static const std::vector<const VerbRow *> index = [] {
        std::vector<const VerbRow *> all(K_count, nullptr);
        for (const VerbRow &row : rows) all[row.verb] = &row;
        return all;
    }();
    return verb < index.size() ? index[verb] : nullptr;
}

// "; did you mean DISPLAY?", or nothing if no verb is spelled like this word.
static std::string verbLike(const std::string &text)
{
    const Word best = reservedLike(text, [](Word word) { return VerbRow::of(word) && word != K_ON; });
    return best ? "; did you mean " + wordText(best) + "?" : "";
}

bool Parser::atVerb() const
{
    if (now().kind != TokenKind::Name || !VerbRow::of(now().word)) return false;
    if (now().word == K_READY || now().word == K_RESET) return aheadIs(1, K_TRACE);
    if (now().word == K_ON) return ahead().kind == TokenKind::Number;
    if (now().word == K_SERVICE) return aheadIs(1, K_RELOAD) || aheadIs(1, K_LABEL);
    if (isReserved(now().word)) return true;
    if (now().word == K_XML || now().word == K_JSON) return aheadIs(1, K_PARSE) || aheadIs(1, K_GENERATE);
    if (now().word == K_NOTE) return ahead().kind != TokenKind::Punct && !aheadIs(1, K_SECTION);
    // A word of some context only (UNLOCK, EXEC): a verb if an operand follows, and not a
    // paragraph's name or a qualifier.
    const Token &next = ahead();
    if (now().word == K_FREE && aheadIs(1, K_ADDRESS)) return true;
    if (now().word == K_ALLOCATE && ahead().kind == TokenKind::Number) return true;
    return !declared_.count(now().word) && next.kind == TokenKind::Name && next.word != K_OF && next.word != K_IN &&
           next.word != K_TO && next.word != K_SECTION &&
           !(next.word < K_count && VerbRow::of(next.word) && isReserved(next.word));
}

Statement *Parser::notBuiltStatement()
{
    Word verb = now().word;
    Tok start = here();
    Statement *s = begin<Statement>();
    if (verb == K_EXEC) {
        execBlock(start);
    } else if (verb == K_JSON) {
        notBuilt(start, "the statement JSON " + wordText(now().word));
        step(); // GENERATE, or PARSE, is no statement of its own
    } else {
        notBuilt(start, "the statement " + wordText(verb));
    }
    return s;
}

// EXEC SQL ... END-EXEC, of any division; now() is after EXEC. Nobody is told of names that it
// would have declared.
void Parser::execBlock(Tok start)
{
    std::string phrase = "EXEC";
    if (now().kind == TokenKind::Name) phrase += " " + wordText(now().word);
    notBuilt(start, phrase);
    while (!atEnd() && !at(K_END_EXEC)) step();
    take(K_END_EXEC);
    panic_ = false;
    group_.embedded = true;
}

// ENTER language [routine]. Obsolete, no effect.
Statement *Parser::enterStatement()
{
    ExitStatement *s = begin<ExitStatement>();
    s->form = ExitStatement::Continue;
    warn("obsolete", s->at, "ENTER is obsolete and has no effect");
    while (!atEnd() && !atMark('.')) step();
    return s;
}

// NOTE and a comment up to the period; as a paragraph's first sentence it is the whole paragraph.
Statement *Parser::noteStatement()
{
    ExitStatement *s = begin<ExitStatement>();
    s->verb = K_CONTINUE;
    s->form = ExitStatement::Continue;
    warn("obsolete", s->at, "NOTE is obsolete");
    for (;;) {
        while (!atEnd() && !atMark('.')) step();
        if (!firstSentence_ || atEnd() || ahead().kind == TokenKind::End || ahead().areaA) return s;
        step();
    }
}

// READY TRACE, RESET TRACE. Paragraphs are not traced.
Statement *Parser::traceStatement()
{
    ExitStatement *s = begin<ExitStatement>();
    s->verb = K_CONTINUE;
    s->form = ExitStatement::Continue;
    warn("obsolete", s->at, "TRACE is obsolete and has no effect");
    step();
    return s;
}

// SERVICE LABEL, SERVICE RELOAD item: of older systems, no effect.
Statement *Parser::serviceStatement()
{
    ExitStatement *s = begin<ExitStatement>();
    s->verb = K_CONTINUE;
    s->form = ExitStatement::Continue;
    warn("obsolete", s->at, "SERVICE is obsolete and has no effect");
    bool reload = at(K_RELOAD);
    step();
    if (reload) identifier();
    return s;
}

bool Parser::atPhrase(Word lead, Word first, Word second, size_t from) const
{
    size_t i = from;
    if (aheadIs(i, lead)) i++;
    return aheadIs(i, first) && (!second || aheadIs(i + 1, second));
}

// A pair of phrases such as ON SIZE ERROR ... NOT ON SIZE ERROR ...
bool Parser::phrases(Phrases &out, Word lead, Word first, Word second)
{
    bool any = false;
    for (;;) {
        if (panic_) return any;
        bool negated = at(K_NOT) && atPhrase(lead, first, second, 1);
        if (!negated && !atPhrase(lead, first, second)) return any;
        if ((negated ? out.hasNot : out.has)) return any; // belongs to a statement around this one
        if (!negated && out.hasNot && !out.has) {
            // NOT ... first, then the positive one: some programs have them in this order.
        }
        if (negated) step();
        if (at(lead)) step();
        step();
        if (second) step();
        any = true;
        if (negated) {
            out.hasNot = true;
            block(out.onNot);
        } else {
            out.has = true;
            block(out.on);
        }
    }
}

// Null where it is not whole; an error was told.
Statement *Parser::statement()
{
    const VerbRow *row = VerbRow::of(now().word);
    Statement *s = (this->*row->parse)();
    const bool whole = !panic_;
    recover();
    return whole ? s : nullptr;
}

// Statements up to what ends the block: a period, ELSE, WHEN, END-..., a phrase of the statement
// around.
void Parser::block(Block &out)
{
    Depth guard(*this);
    if (deep()) return;
    while (!atEnd() && !atMark('.')) {
        if (panic_) recover();
        if (!atVerb()) return;
        if (at(K_NEXT) && !aheadIs(1, K_SENTENCE)) return;
        if (Statement *s = statement()) out.push_back(s);
    }
}

bool Parser::atProcedureName() const
{
    return now().kind == TokenKind::Name ? !isReserved(now().word) : now().kind == TokenKind::Number;
}

ProcedureName Parser::procedureName()
{
    ProcedureName name;
    name.at = here();
    if (!atProcedureName()) {
        error("expected the name of a paragraph or section before " + shown());
        return name;
    }
    name.name = internWord(now().text);
    step();
    if ((at(K_OF) || at(K_IN)) && (ahead().kind == TokenKind::Name || ahead().kind == TokenKind::Number)) {
        step();
        name.section = internWord(now().text);
        step();
    }
    return name;
}

// A paragraph or section header: a name before a period or SECTION.
bool Parser::atProcedureHeader() const
{
    if (now().kind != TokenKind::Name && now().kind != TokenKind::Number) return false;
    if (now().kind == TokenKind::Name && isReserved(now().word)) return false;
    const Token &next = ahead();
    if (next.kind == TokenKind::Punct && next.word == '.') return true;
    return next.kind == TokenKind::Name && next.word == K_SECTION;
}

// A paragraph's name without its period: alone in its line in area A, before a statement.
bool Parser::atBareHeader() const
{
    return now().areaA && now().kind == TokenKind::Name && !isReserved(now().word) && ahead().kind == TokenKind::Name &&
           VerbRow::of(ahead().word) && ahead().spot.line != now().spot.line && verbLike(wordText(now().word)).empty();
}

void Parser::seeNames()
{
    seen_.resize(wordCount());
    for (; seenTo_ < position_; seenTo_++)
        if (tokens_[seenTo_].kind == TokenKind::Name) seen_[tokens_[seenTo_].word] = true;
}

void Parser::procedureDivision(Program &p)
{
    seeNames();
    p.hasProcedures = true;
    inProcedures_ = true;
    p.procedureAt = here();
    step();
    step();
    if (take(K_USING)) usingPhrase(p.parameters);
    if (take(K_CHAINING)) notBuilt(here(), "PROCEDURE DIVISION CHAINING");
    if (take(K_RETURNING)) {
        if (take(K_OMITTED)) {
        } else {
            p.returning = identifier();
        }
    }
    endOfEntry();
    if (at(K_DECLARATIVES)) {
        step();
        expectPeriod();
        panic_ = false;
        paragraphs(p, true);
        if (at(K_END, K_DECLARATIVES)) {
            step();
            step();
            expectPeriod();
            panic_ = false;
        } else {
            error("expected END DECLARATIVES before " + shown());
            panic_ = false;
        }
    }
    p.firstProcedure = p.procedures.size();
    paragraphs(p, false);
    inProcedures_ = false;
}

// The header of a section or paragraph; `section`: the index of the one that it is in.
void Parser::procedureHeader(Program &p, bool declaratives, int &section)
{
    Procedure procedure;
    procedure.name = internWord(now().text);
    procedure.at = here();
    procedure.declarative = declaratives;
    step();
    if (take(K_SECTION)) {
        procedure.isSection = true;
        if (atNumber()) {
            int64_t number = 0;
            parseInteger(number);
            procedure.segment = static_cast<int>(number);
        }
        section = static_cast<int>(p.procedures.size());
    } else {
        procedure.section = section;
        if (section >= 0) procedure.segment = p.procedures[static_cast<size_t>(section)].segment;
    }
    expectPeriod();
    panic_ = false;
    p.procedures.push_back(std::move(procedure));
    if (at(K_USE) && !declaratives) error("USE is a statement of the DECLARATIVES");
    if (at(K_USE)) useStatement(p, p.procedures.size() - 1);
}

// A header of another division, which comes too late: all up to the next program is passed over.
bool Parser::lateDivision()
{
    if (!at(K_DATA, K_DIVISION) && !at(K_ENVIRONMENT, K_DIVISION) && !at(K_WORKING_STORAGE, K_SECTION) &&
        !at(K_LINKAGE, K_SECTION) && !at(K_FILE, K_SECTION))
        return false;
    error(wordText(now().word) + " comes before the PROCEDURE DIVISION");
    while (!atEnd() && !atProgramEnd() && !atProgramStart() && !at(K_PROCEDURE, K_DIVISION)) step();
    if (at(K_PROCEDURE, K_DIVISION)) skipToPeriod();
    return true;
}

// A word where a statement should begin: perhaps a verb in other letters, perhaps a header without
// its period.
void Parser::noStatement()
{
    if (now().kind == TokenKind::Name && !isReserved(now().word))
        error(wordText(now().word) + " is neither a statement nor a paragraph's name with a period after it" +
              verbLike(wordText(now().word)));
    else
        error("expected a statement before " + shown());
    step();
    skipToVerb();
}

void Parser::paragraphs(Program &p, bool declaratives)
{
    int section = -1;
    bool open = false; // a procedure takes statements
    for (;;) {
        panic_ = false;
        if (atEnd() || atProgramEnd() || at(K_END, K_DECLARATIVES) || atProgramId()) return;
        if ((at(K_IDENTIFICATION) || at(K_ID)) && aheadIs(1, K_DIVISION)) return;
        if (takeMark('.')) continue;
        if (atProcedureHeader() || atBareHeader()) {
            procedureHeader(p, declaratives, section);
            open = true;
            continue;
        }
        if (lateDivision()) continue;
        if (!atVerb()) {
            noStatement();
            continue;
        }
        if (!open) { // statements before the first header: a procedure without a name
            Procedure procedure;
            procedure.at = here();
            procedure.declarative = declaratives;
            procedure.section = section;
            p.procedures.push_back(std::move(procedure));
            open = true;
        }
        sentences(p.procedures.back());
    }
}

// A word that neither goes on with a statement nor begins one. After an error in this sentence
// ELSE, WHEN and END-IF belong to a statement that was given up: they are no errors of their own.
void Parser::lostWord()
{
    bool ends = now().kind == TokenKind::Name && wordText(now().word).rfind("END-", 0) == 0;
    if (lost_ && (ends || at(K_ELSE) || at(K_WHEN))) return;
    if (at(K_ELSE)) {
        error("ELSE without IF");
    } else if (at(K_WHEN)) {
        error("WHEN without EVALUATE or SEARCH");
    } else if (ends) {
        error(wordText(now().word) + " without its statement");
    } else if (at(K_END) && ahead().kind == TokenKind::Name &&
               isReserved(internWord("END-" + wordText(ahead().word)))) {
        error("expected a statement or a period before END; did you mean END-" + wordText(ahead().word) + "?");
        step();
    } else {
        error("expected a statement or a period before " + shown());
    }
}

void Parser::sentences(Procedure &procedure)
{
    Sentence sentence;
    firstSentence_ = procedure.sentences.empty();
    block(sentence.statements);
    if (!takeMark('.') && !atEnd()) {
        if (atProgramEnd() || at(K_END, K_DECLARATIVES) || at(K_IDENTIFICATION) || at(K_ID)) {
            error("expected a period before " + shown());
        } else if (atProcedureHeader()) {
            expectPeriod();
        } else {
            lostWord();
            step();
            skipToVerb();
        }
    } else {
        lost_ = false;
    }
    procedure.sentences.push_back(std::move(sentence));
}

// BEFORE or AFTER, then STANDARD, BEGINNING or ENDING, FILE, REEL or UNIT, all optional, and LABEL
// PROCEDURE.
bool Parser::atLabelProcedure() const
{
    if (!at(K_BEFORE) && !at(K_AFTER)) return false;
    for (size_t i = 1; i <= 4; i++) {
        if (aheadIs(i, K_LABEL)) return aheadIs(i + 1, K_PROCEDURE);
    }
    return false;
}

void Parser::useStatement(Program &p, size_t procedure)
{
    UseStatement use;
    use.at = here();
    use.procedure = procedure;
    step();
    use.global = take(K_GLOBAL);
    if (atLabelProcedure()) {
        warn("obsolete", here(), "there are no labels: this USE procedure never runs");
        skipToPeriod();
        return;
    }
    if (at(K_BEFORE)) {
        notBuilt(here(), "USE BEFORE REPORTING");
        skipToPeriod();
        return;
    }
    take(K_FOR);
    if (take(K_DEBUGGING)) {
        use.debugging = true;
        take(K_ON);
        while (!atMark('.') && !atEnd() && !panic_) {
            if (at(K_ALL)) {
                step();
                if (take(K_PROCEDURES)) {
                    use.allProcedures = true;
                } else {
                    take(K_REFERENCES);
                    take(K_OF);
                    use.allReferences.insert(use.debugged.size());
                    use.debugged.push_back(identifier());
                }
            } else if (atNumber()) {
                use.debugged.push_back(make<Reference>());
                use.debugged.back()->at = here();
                use.debugged.back()->names.push_back(internWord(now().text));
                step();
            } else {
                use.debugged.push_back(identifier());
            }
        }
    } else {
        take(K_AFTER);
        take(K_STANDARD);
        if (!take(K_EXCEPTION) && !take(K_ERROR)) error("expected ERROR or EXCEPTION before " + shown());
        take(K_PROCEDURE);
        take(K_ON);
        if (at(K_INPUT) || at(K_OUTPUT) || at(K_I_O) || at(K_EXTEND)) {
            use.mode = now().word;
            step();
        } else {
            while (atName()) {
                use.files.push_back({now().word, here()});
                step();
            }
            if (use.files.empty()) error("expected a file or an open mode before " + shown());
        }
    }
    endOfEntry();
    p.uses.push_back(use);
}

} // namespace kvrcob
