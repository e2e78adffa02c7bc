// The parser's tools: looking at words, expecting them, and going on after an error. See parser.h.
#include "cobol/syntax/parser.h"

namespace kvrcob {

// A user-defined word. A verb of some context only is none where a statement can begin with it:
// the receiving items of "MOVE A TO B EXAMINE B ..." end before EXAMINE.
bool Parser::atName() const
{
    if (now().kind != TokenKind::Name || isReserved(now().word)) return false;
    if (atLostHeader()) return false;
    return !(now().word < K_count && inProcedures_ && !declared_.count(now().word) && atVerb());
}

// The header of a paragraph after a sentence whose period is missing: a word on a line's beginning,
// which no division before this one has, and which is no register (RETURN-CODE) or function.
bool Parser::atLostHeader() const
{
    if (now().word < K_count || (program_ && program_->functions.count(now().word))) return false;
    return inProcedures_ && now().areaA && !(now().word < seen_.size() && seen_[now().word]) && atProcedureHeader();
}

bool Parser::take(Word word)
{
    if (!at(word)) return false;
    step();
    return true;
}

bool Parser::takeMark(uint32_t mark)
{
    if (!atMark(mark)) return false;
    step();
    return true;
}

bool Parser::expect(Word word)
{
    if (take(word)) return true;
    error("expected " + wordText(word) + " before " + shown());
    return false;
}

void Parser::expectPeriod()
{
    if (takeMark('.')) return;
    // A missing period before a header, or an entry in area A, is plain: what follows begins anew.
    if (now().areaA && (now().kind == TokenKind::Name || now().kind == TokenKind::Number)) {
        warn("period", here(), "a period is missing before " + shown());
        return;
    }
    error("expected a period before " + shown());
}

std::string Parser::shown() const
{
    const Token &token = now();
    switch (token.kind) {
    case TokenKind::End:
        return "the end of the source";
    case TokenKind::String:
        return "the literal \"" + std::string(token.text.substr(0, 30)) + "\"";
    case TokenKind::Punct:
        return "\"" + std::string(token.text) + "\"";
    default:
        return std::string(token.text.substr(0, 40));
    }
}

void Parser::error(const std::string &text) { errorAt(here(), text); }

void Parser::errorAt(Tok at, const std::string &text)
{
    if (panic_) return;
    panic_ = true;
    lost_ = true;
    diagnostics().error(group_.spot(at), text);
}

void Parser::warn(const char *name, Tok at, const std::string &text)
{
    if (!panic_) diagnostics().warning(name, group_.spot(at), text);
}

void Parser::notBuilt(Tok at, const std::string &phrase) { errorAt(at, phrase + " is not supported yet"); }

void Parser::skipToPeriod()
{
    // A header of a division is no part of an entry whose period is missing.
    auto atHeader = [&] { return now().areaA && now().kind == TokenKind::Name && aheadIs(1, K_DIVISION); };
    for (bool moved = false; !atEnd() && !atMark('.') && !(moved && atHeader()); moved = true) step();
    takeMark('.');
    panic_ = false;
}

void Parser::endOfEntry()
{
    if (panic_)
        skipToPeriod();
    else
        expectPeriod();
    panic_ = false;
}

void Parser::skipToVerb()
{
    while (!atEnd() && !atMark('.') && !atVerb() && !at(K_ELSE) && !at(K_WHEN) &&
           !(now().kind == TokenKind::Name && wordText(now().word).rfind("END-", 0) == 0 && isReserved(now().word)))
        step();
    panic_ = false;
}

void Parser::recover()
{
    if (panic_) skipToVerb();
}

bool Parser::deep()
{
    if (depth_ < 1000) return false;
    if (!tooDeep_) {
        panic_ = false;
        error("this is nested too deep");
        tooDeep_ = true;
        position_ = tokens_.size() - 1; // what follows would be told for each level
    }
    panic_ = true;
    return true;
}

} // namespace kvrcob
