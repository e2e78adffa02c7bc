// CALL, CANCEL, ENTRY, and USING of the PROCEDURE DIVISION.
#include "cobol/syntax/parser.h"

namespace kvrcob {

// BY REFERENCE, BY CONTENT and BY VALUE hold for all arguments after them.
void Parser::usingPhrase(std::vector<CallStatement::Argument> &arguments)
{
    CallStatement::Mode mode = CallStatement::Reference_;
    for (;;) {
        if (panic_) return;
        if (at(K_BY) || at(K_REFERENCE) || at(K_CONTENT) || (at(K_VALUE) && ahead().kind != TokenKind::Punct)) {
            take(K_BY);
            if (take(K_REFERENCE)) {
                mode = CallStatement::Reference_;
            } else if (take(K_CONTENT)) {
                mode = CallStatement::Content;
            } else if (take(K_VALUE)) {
                mode = CallStatement::Value;
                take(K_UNSIGNED);
            } else {
                error("expected REFERENCE, CONTENT or VALUE before " + shown());
            }
            continue;
        }
        if (take(K_OPTIONAL)) continue;
        CallStatement::Argument argument;
        argument.mode = mode;
        if (at(K_OMITTED)) {
            argument.value = node(ExprKind::Omitted, here());
            step();
        } else if (atOperand() || at(K_FUNCTION) || at(K_ADDRESS) || atMark('(')) {
            argument.value = atMark('(') ? expression() : operand();
        } else {
            return;
        }
        // BY VALUE item SIZE 4: a machine word holds it anyway.
        if (mode == CallStatement::Value && take(K_SIZE)) {
            take(K_IS);
            operand();
        }
        arguments.push_back(argument);
    }
}

Statement *Parser::callStatement()
{
    auto *s = begin<CallStatement>();
    if (at(K_STATIC) && !declared_.count(K_STATIC)) step();
    s->program = operand();
    if (take(K_USING)) {
        usingPhrase(s->arguments);
        if (s->arguments.empty()) error("expected an argument before " + shown());
    }
    if (take(K_RETURNING) || take(K_GIVING)) {
        take(K_INTO);
        if (!take(K_OMITTED)) s->returning = identifier();
    }
    // ON OVERFLOW is the older form of ON EXCEPTION.
    if (!phrases(s->exception, K_ON, K_EXCEPTION, 0)) phrases(s->exception, K_ON, K_OVERFLOW, 0);
    take(K_END_CALL);
    return s;
}

Statement *Parser::cancelStatement()
{
    auto *s = begin<CancelStatement>();
    do s->programs.push_back(operand());
    while (atOperand() && !panic_);
    return s;
}

Statement *Parser::entryStatement()
{
    auto *s = begin<EntryStatement>();
    if (!atString()) {
        error("expected the entry's name as a literal before " + shown());
        return s;
    }
    checkSymbol();
    s->name = internWord(now().text);
    step();
    if (take(K_USING)) usingPhrase(s->parameters);
    program_->entryPoints.push_back(s);
    s->number = static_cast<uint32_t>(program_->entryPoints.size());
    return s;
}

} // namespace kvrcob
