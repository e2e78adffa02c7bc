// Operands: literals, figurative constants, and identifiers with their qualifiers, subscripts and
// reference modifier: AMOUNT OF LINE-ITEM (I, J + 1) (1:3).
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

// The text that a name stands for, if it is that of a constant of the program.
static const Expr *constantOf(const Program *p, Word name)
{
    if (!p) return nullptr;
    for (const Item *item : p->constants)
        if (item->name == name && item->constant && item->constant->kind == ExprKind::String) return item->constant;
    return nullptr;
}

// The constant that begins A-CONSTANT & "b"; null: none does.
const Expr *Parser::joinedConstant() const
{
    const bool joins = now().kind == TokenKind::Name && ahead().kind == TokenKind::Punct && ahead().word == '&';
    return joins ? constantOf(program_, now().word) : nullptr;
}

// 1E10, 2E+5, 25E-1: a floating-point literal without a point has the form of a name, and may be
// one.
bool Parser::atWholeFloat() const
{
    if (now().kind != TokenKind::Name || dataNames_.count(now().word)) return false;
    const std::string_view text = now().text;
    const size_t e = text.find_first_not_of("0123456789");
    if (e == 0 || e == std::string_view::npos || (text[e] != 'E' && text[e] != 'e')) return false;
    const std::string_view exponent = text.substr(e + 1);
    const size_t digits = exponent.substr(0, 1) == "-" ? 1 : 0;
    if (!exponent.empty())
        return exponent.size() > digits && exponent.find_first_not_of("0123456789", digits) == std::string_view::npos;
    return ahead().kind == TokenKind::Punct && ahead().word == '+' && !ahead().spaceBefore &&
           ahead(2).kind == TokenKind::Number && !ahead(2).spaceBefore;
}

// now() is a number, or begins one of those.
Expr *Parser::unsignedNumber()
{
    const Tok start = here();
    const bool whole = atNumber();
    std::string text(now().text);
    step();
    if (!whole && std::toupper(static_cast<unsigned char>(text.back())) == 'E') {
        step();
        text += now().text;
        step();
    }
    return number(keepText(std::move(text)), start);
}

// A literal, with a sign if it is a number; figurative constants and ALL.
Expr *Parser::literal()
{
    Tok start = here();
    if (atMark('-') || atMark('+')) {
        bool negative = atMark('-');
        step();
        if (!atNumber() && !atWholeFloat()) {
            error("expected a number before " + shown());
            return number("0", start);
        }
        Expr *e = unsignedNumber();
        if (!negative) return e;
        Expr *minus = node(ExprKind::Negate, start);
        minus->left = e;
        return minus;
    }
    if (atNumber() || atWholeFloat()) return unsignedNumber();
    const Expr *constant = joinedConstant();
    if (atString() || constant) {
        Expr *e = node(ExprKind::String, start);
        e->text = constant ? constant->text : now().text;
        e->form = constant ? constant->form : now().form;
        step();
        // "a" & "b" & A-CONSTANT
        while (atMark('&')) {
            const Expr *more = ahead().kind == TokenKind::Name ? constantOf(program_, ahead().word) : nullptr;
            if (!more && ahead().kind != TokenKind::String) break;
            step();
            e->text = keepText(std::string(e->text) + std::string(more ? more->text : now().text));
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
    if (joinedConstant()) return literal();
    return primary();
}

} // namespace kvrcob
