// FUNCTION EXCEPTION-STATUS, EXCEPTION-STATEMENT, EXCEPTION-LOCATION, EXCEPTION-FILE.
//
// Only a source that names one of them pays for it. What may fail then notes the exception with its
// verb and place. A file verb notes itself before it is done; its status is looked at when somebody
// asks or the next exception comes, and so a USE procedure that runs within the verb sees it, too:
//
//   kvr_verb_begins(F1, "MASTER", "READ", "PAYROLL; READ-ONE OF MAIN; 120");
#include "cobol/emit/emitter.h"

namespace kvrcob {

bool Emitter::asksForExceptions() const
{
    for (const char *name : {"EXCEPTION-STATUS", "EXCEPTION-STATEMENT", "EXCEPTION-LOCATION", "EXCEPTION-FILE"}) {
        const size_t known = wordCount();
        const Word word = internWord(name);
        if (word >= known) continue; // no source has had it
        for (const Token &token : group_.tokens)
            if (token.kind == TokenKind::Name && token.word == word) return true;
    }
    return false;
}

// The present statement's verb, and its place: program; paragraph OF section; line.
std::string Emitter::verbAndPlace()
{
    const Procedure &now = program_->procedures[procedure_];
    std::string place = wordText(program_->name) + "; " + (now.name ? wordText(now.name) : "");
    if (now.section >= 0) place += " OF " + wordText(program_->procedures[static_cast<size_t>(now.section)].name);
    place += "; " + std::to_string(group_.spot(inStatement_.at).line);
    return cat(bytesLiteral(wordText(group_.tokens[inStatement_.at].word)), ", ", bytesLiteral(place));
}

// `name` is C text.
void Emitter::raise(const std::string &failed, const std::string &name)
{
    if (inFile_.exceptions) put("if (", failed, ") ", emits(Do::Raise), "(", name, ", ", verbAndPlace(), ");\n");
}

void Emitter::verbBegins(const File &f)
{
    if (inFile_.exceptions)
        put(emits(Do::VerbBegins), "(F", f.number, ", ", bytesLiteral(wordText(f.name)), ", ", verbAndPlace(), ");\n");
}

// ON SIZE ERROR and NOT ON SIZE ERROR; `zero` tells a division by zero, and may be empty.
void Emitter::sizePhrases(const ArithmeticStatement &s, const std::string &flag, const std::string &zero)
{
    if (flag.empty()) return;
    const char *overflow = "\"EC-SIZE-OVERFLOW\"";
    raise(flag, zero.empty() ? overflow : cat(zero, " ? \"EC-SIZE-ZERO-DIVIDE\" : ", overflow));
    phrases(s.sizeError, flag);
}

bool Emitter::exceptionText(const FunctionCall &f, FunctionText &result)
{
    put(result.length, " = ", emitsFunction(f.name), "(", bytesLiteral(f.name), ", &", result.address, ");\n");
    return true;
}

} // namespace kvrcob
