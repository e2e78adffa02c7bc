// Programs and their nesting; the IDENTIFICATION DIVISION. Comment entries (AUTHOR and its like)
// are gone already: text/source_lines.cpp.
#include "cobol/syntax/parser.h"

#include <algorithm>

namespace kvrcob {

bool Parser::atProgramStart() const
{
    return ((at(K_IDENTIFICATION) || at(K_ID)) && aheadIs(1, K_DIVISION)) || atProgramId();
}

// "; did you mean WORKING-STORAGE SECTION?", or nothing if no header is spelled like what is here.
std::string Parser::headerLike() const
{
    static const char *const headers[] = {"PROGRAM-ID",
                                          "ENVIRONMENT DIVISION",
                                          "CONFIGURATION SECTION",
                                          "SPECIAL-NAMES",
                                          "INPUT-OUTPUT SECTION",
                                          "FILE-CONTROL",
                                          "DATA DIVISION",
                                          "FILE SECTION",
                                          "WORKING-STORAGE SECTION",
                                          "LOCAL-STORAGE SECTION",
                                          "LINKAGE SECTION",
                                          "PROCEDURE DIVISION",
                                          "IDENTIFICATION DIVISION"};
    std::string text, best;
    for (size_t n = 0; n < 4 && ahead(n).kind == TokenKind::Name && ahead(n).text.size() < 30; n++)
        text += (n ? " " : "") + wordText(ahead(n).word);
    size_t bestDistance = 4;
    for (const char *header : headers) {
        size_t d = spellingDistance(text, header);
        if (d >= bestDistance) continue;
        bestDistance = d;
        best = header;
    }
    return best.empty() ? "" : "; did you mean " + best + "?";
}

void Parser::parse()
{
    while (!atEnd()) {
        if (takeMark('.')) continue;
        size_t before = position_;
        if (atProgramStart() || at(K_ENVIRONMENT, K_DIVISION) || at(K_DATA, K_DIVISION) ||
            at(K_PROCEDURE, K_DIVISION)) {
            if (Program *made = program(nullptr)) group_.programs.push_back(made);
        } else {
            if (now().kind == TokenKind::Name && wordText(now().word) == "CLASS-ID")
                notBuilt(here(), "CLASS-ID");
            else
                error("expected IDENTIFICATION DIVISION before " + shown() + headerLike());
            while (!atEnd() && !atProgramStart()) step();
            panic_ = false;
        }
        if (position_ == before) step();
    }
    if (group_.programs.empty() && diagnostics().errors() == 0) error("the source holds no program");
}

// Contained programs take over what the outermost one's CONFIGURATION SECTION says.
static void inherit(Program &p, const Program &parent)
{
    p.alphabets = parent.alphabets;
    p.classes = parent.classes;
    p.symbolics = parent.symbolics;
    p.mnemonics = parent.mnemonics;
    p.currency = parent.currency;
    p.currencySymbol = parent.currencySymbol;
    p.commaIsPoint = parent.commaIsPoint;
    p.collating = parent.collating;
    p.collatingAt = parent.collatingAt;
    p.allFunctions = parent.allFunctions;
    p.functions = parent.functions;
    p.debugging = parent.debugging;
}

Program *Parser::program(Program *parent)
{
    Depth guard(*this);
    if (deep()) return nullptr;
    Program *p = make<Program>();
    p->parent = parent;
    p->at = here();
    Program *outer = program_;
    program_ = p;
    if (parent) inherit(*p, *parent);

    programHeader(*p);
    divisions(*p);
    if (p->isFunction) functionHeader(*p);
    containedPrograms(*p);
    p->endAt = here();
    if (atProgramEnd()) endProgram(*p);
    program_ = outer;
    return p;
}

// IDENTIFICATION DIVISION and PROGRAM-ID or FUNCTION-ID. A source without them gets the name MAIN.
void Parser::programHeader(Program &p)
{
    if (at(K_IDENTIFICATION) || at(K_ID)) {
        step();
        expect(K_DIVISION);
        expectPeriod();
        panic_ = false;
    }
    p.isFunction = p.recursive = take(K_FUNCTION_ID);
    if (p.isFunction || take(K_PROGRAM_ID)) {
        takeMark('.');
        p.at = here();
        if (!programName(p)) error("expected the program's name before " + shown());
        if (p.isFunction && p.name) p.functions.insert(p.name); // it may call itself
        programAttributes(p);
        if (!takeMark('.') && !atEnd()) {
            const bool atDivision = at(K_ENVIRONMENT) || at(K_DATA) || at(K_PROCEDURE);
            expectPeriod();
            if (!atDivision) skipToPeriod();
        }
    } else {
        if (!at(K_ENVIRONMENT) && !at(K_DATA) && !at(K_PROCEDURE)) error("expected PROGRAM-ID before " + shown());
        p.name = internWord("MAIN");
        p.nameText = wordText(p.name);
    }
    panic_ = false;
}

bool Parser::programName(Program &p)
{
    if (now().kind != TokenKind::Name && !atString() && !atNumber()) return false;
    checkSymbol();
    p.nameText = now().text;
    p.name = internWord(now().text);
    step();
    return true;
}

// A program's or an entry's name becomes a symbol, and the name of a file.
void Parser::checkSymbol()
{
    const std::string_view name = now().text;
    const bool bad = std::any_of(name.begin(), name.end(), [](unsigned char c) {
        return c < ' ' || c == '"' || c == '\\' || c == '/' || c == '@';
    });
    if (bad || name.empty()) error("a name that is called is not empty, and has no quotation mark, backslash, / or @");
}

// IS COMMON INITIAL RECURSIVE PROGRAM, AS "name".
void Parser::programAttributes(Program &p)
{
    take(K_IS);
    for (;;) {
        if (take(K_COMMON))
            p.common = true;
        else if (take(K_INITIAL))
            p.initial = true;
        else if (take(K_RECURSIVE))
            p.recursive = true;
        else if (!take(K_AS))
            break;
        else if (atString())
            programName(p);
    }
    take(K_PROGRAM);
}

// A division's header may be missing before the section that shows it.
void Parser::divisions(Program &p)
{
    if (at(K_OPTIONS)) skipToPeriod();
    environmentDivision(p);
    if (at(K_DATA, K_DIVISION) || at(K_FILE, K_SECTION) || at(K_WORKING_STORAGE, K_SECTION) ||
        at(K_LINKAGE, K_SECTION) || at(K_LOCAL_STORAGE, K_SECTION))
        dataDivision(p);
    if (at(K_PROCEDURE, K_DIVISION)) procedureDivision(p);
}

void Parser::containedPrograms(Program &p)
{
    for (;;) {
        panic_ = false;
        if (takeMark('.')) continue;
        const bool begins = at(K_IDENTIFICATION) || at(K_ID) || at(K_PROGRAM_ID);
        if (p.isFunction || !begins || !endsLater(p)) return;
        if (Program *inner = program(&p)) p.nested.push_back(inner);
    }
}

// Without END PROGRAM before it, a program can be the next outermost one only where the one in hand
// is not contained; a program that is followed by another and has an END PROGRAM of its own later
// contains it. So look for END PROGRAM with this name.
bool Parser::endsLater(const Program &p) const
{
    int others = 0;
    for (size_t i = position_; i + 1 < tokens_.size() && others <= 10000; i++) {
        const Token &t = tokens_[i], &next = tokens_[i + 1];
        if (t.kind != TokenKind::Name || t.word != K_END) continue;
        if (next.kind != TokenKind::Name || next.word != K_PROGRAM) continue;
        if (i + 2 < tokens_.size() && internWord(tokens_[i + 2].text) == p.name) return true;
        others++;
    }
    return false;
}

// A function's result is one more parameter: the address of the caller's room for it.
void Parser::functionHeader(Program &p)
{
    if (!p.returning) {
        errorAt(p.at, "a function needs PROCEDURE DIVISION ... RETURNING");
        panic_ = false;
        return;
    }
    CallStatement::Argument result;
    result.value = node(ExprKind::Reference, p.returning->at);
    result.value->ref = p.functionResult = p.returning;
    p.parameters.push_back(result);
    p.returning = nullptr;
}

void Parser::endProgram(Program &p)
{
    // END PROGRAM of an outer program ends this one too; it is taken there.
    if (ahead(2).kind != TokenKind::Punct && ahead(2).kind != TokenKind::End && internWord(ahead(2).text) != p.name) {
        for (Program *outer = p.parent; outer; outer = outer->parent)
            if (outer->name == internWord(ahead(2).text)) return;
        panic_ = false;
        errorAt(here() + 2,
                "END PROGRAM names " + std::string(ahead(2).text) + ", but the program is " + std::string(p.nameText));
        panic_ = false;
    }
    step();
    step();
    if (!atMark('.') && !atEnd()) step();
    if (!takeMark('.') && !atEnd()) expectPeriod();
    panic_ = false;
}

} // namespace kvrcob
