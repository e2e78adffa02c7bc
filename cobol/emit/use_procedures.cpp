// USE AFTER ERROR: how its procedures are entered and left.
//
// The library calls the procedure that a file's table names (file_records.cpp) from within the
// failed verb: that is a call of its program's function, which begins there. EXIT PROGRAM, GOBACK,
// and a GO TO to a procedure outside the DECLARATIVES have to act in the function that the verb's
// statement is in, where the active PERFORMs are. So they leave a note, and return through the
// library; the statement looks at the note when its verb is done:
//
//     if (p1_gone) switch (p1_gone) {
//     case 8: p1_gone = 0; goto p7;
//     default: p1_gone = 0; goto leave; }
#include "cobol/emit/emitter.h"

namespace kvrcob {

// The routine for the library. A USE procedure whose own statements fail, such as the CLOSE of a
// file that could not be opened, is not entered again: it goes on after them.
void Emitter::useRoutine(const Program &p)
{
    std::string prefix = cat("p", p.number, "_");
    globals_ += joined("static int useRan __attribute__((unused));\nstatic uint8_t ", prefix, "uses[", p.uses.size(),
                       "];\nstatic int ", prefix, "gone __attribute__((unused));\nstatic void ", prefix,
                       "useRoutine(uint64_t a, uint64_t b, uint64_t entry, uint64_t mode)\n{\n(void)a; (void)b; "
                       "(void)mode;\nif (",
                       prefix, "uses[entry - 1]) return;\n", prefix, "uses[entry - 1] = 1;\n", prefix,
                       "body((int)entry);\n", prefix, "uses[entry - 1] = 0;\nuseRan = 1;\n}\n");
}

// A program that starts anew has none that runs.
std::string Emitter::noUseRuns() const
{
    if (program_->uses.empty()) return "";
    std::string prefix = cat("p", program_->number, "_");
    return cat("memset(", prefix, "uses, 0, sizeof ", prefix, "uses);\n", prefix, "gone = ", prefix,
               "debugging = 0;\n");
}

// Has a program of this C file USE procedures? useRan is 1 then after a verb that one of them ran
// for: the phrases of the statement, and INTO, go by that, too (files.cpp).
bool Emitter::anyUse() const
{
    return std::any_of(group_.programs.begin(), group_.programs.end(),
                       [](const Program *p) { return !p->uses.empty(); });
}

// "entry == 1 || entry == 3": it is a USE procedure that runs. A GLOBAL one may run for a statement
// of another program, which does not look at the note.
std::string Emitter::runsAsUse() const
{
    std::string any;
    for (size_t u = 0; u < program_->uses.size(); u++)
        if (!program_->uses[u].debugging && !program_->uses[u].global)
            any += joined(any.empty() ? "" : " || ", "entry == ", u + 1);
    return any;
}

// A GO TO out of the DECLARATIVES. It is a plain one where they are performed, and where they run
// for debugging or as a GLOBAL one; these have ended then.
void Emitter::leaveUse(size_t target)
{
    if (procedure_ >= program_->firstProcedure || target < program_->firstProcedure) return;
    std::string runs = runsAsUse();
    if (!runs.empty()) {
        put("if (", runs, ") {\np", program_->number, "_gone = ", target + 1, ";\nreturn 0;\n}\n");
        inProgram_.useTargets.insert(target);
    }
    if (!program_->uses.empty()) put("if (entry) {\n", noUseRuns(), "}\n");
}

// What leaves the program, in whatever the USE procedure performed, comes here.
void Emitter::leaveInUse()
{
    std::string runs = runsAsUse();
    if (!runs.empty()) put("if (", runs, ") p", program_->number, "_gone = -1;\n");
}

bool Emitter::verbOfFiles(Word verb)
{
    return verb == K_OPEN || verb == K_CLOSE || verb == K_READ || verb == K_WRITE || verb == K_REWRITE ||
           verb == K_DELETE || verb == K_START || verb == K_UNLOCK || verb == K_SORT || verb == K_MERGE;
}

// After a verb. In a USE procedure the note is for the function that called the library. Where the
// DECLARATIVES are performed it is for them: by a jump to their end, where all targets are known.
void Emitter::leftUse()
{
    if (runsAsUse().empty()) return;
    if (procedure_ < program_->firstProcedure)
        put("if (p", program_->number, "_gone) {\nif (entry) return 0;\ngoto gone;\n}\n");
    else
        goWhereUseWent();
}

void Emitter::goWhereUseWent()
{
    std::string gone = cat("p", program_->number, "_gone");
    put("if (", gone, ") switch (", gone, ") {\n");
    for (size_t target : inProgram_.useTargets) {
        put("case ", target + 1, ": ", gone, " = 0; goto p", target, ";\n");
        inProgram_.flow.jumps.emplace_back(procedure_, target);
    }
    put("default: ", gone, " = 0; goto leave;\n}\n");
}

// At the end of the DECLARATIVES, where nothing falls into.
void Emitter::allUseTargets()
{
    if (runsAsUse().empty()) return;
    put("gone: __attribute__((unused));\n");
    goWhereUseWent();
}

} // namespace kvrcob
