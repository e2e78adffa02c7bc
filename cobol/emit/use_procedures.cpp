// USE AFTER ERROR: how its procedures are entered and left.
//
// The library calls the procedure that a file's table names (file_records.cpp) from within the
// failed verb: that is a call of its program's function, which begins there. EXIT PROGRAM, GOBACK,
// and a GO TO to a procedure outside the DECLARATIVES have to act in the function that the verb's
// statement is in, where the active PERFORMs are. So they leave a note, and return through the
// library; the statement looks at the note when its verb is done:
//
//     if (p1_gone) switch (p1_gone) { case 8: p1_gone = 0; goto p7; default: p1_gone = 0; goto leave; }
#include "cobol/emit/emitter.h"

namespace kvrcob {

// The routine for the library. A USE procedure whose own statements fail, such as the CLOSE of a
// file that could not be opened, is not entered again: it goes on after them.
void Emitter::useRoutine(const Program &p)
{
    std::string prefix = cat("p", p.number, "_");
    globals_ += joined("static uint8_t ", prefix, "uses[", p.uses.size(), "];\nstatic int ", prefix,
                       "gone __attribute__((unused));\nstatic void ", prefix,
                       "useRoutine(uint64_t a, uint64_t b, uint64_t entry, uint64_t mode)\n{\n(void)a; (void)b; "
                       "(void)mode;\nif (",
                       prefix, "uses[entry - 1]) return;\n", prefix, "uses[entry - 1] = 1;\n", prefix,
                       "body((int)entry);\n", prefix, "uses[entry - 1] = 0;\n}\n");
}

// A program that starts anew has none that runs.
std::string Emitter::noUseRuns() const
{
    if (program_->uses.empty()) return "";
    std::string prefix = cat("p", program_->number, "_");
    return cat("memset(", prefix, "uses, 0, sizeof ", prefix, "uses);\n", prefix, "gone = ", prefix,
               "debugging = 0;\n");
}

// A GLOBAL one may run for the statement of another program, which does not look at the note.
bool Emitter::inUseProcedure() const
{
    if (procedure_ >= program_->firstProcedure) return false;
    const Procedure &now = program_->procedures[procedure_];
    size_t section = now.isSection || now.section < 0 ? procedure_ : static_cast<size_t>(now.section);
    for (const UseStatement &use : program_->uses)
        if (use.procedure == section) return !use.debugging && !use.global;
    return false;
}

// Leaves a note and the procedure, if it runs as a USE procedure; target -1: leaves the program.
void Emitter::leaveUse(long target)
{
    if (!inUseProcedure()) return;
    put("if (entry > 0 && entry <= ", program_->uses.size(), ") {\np", program_->number,
        "_gone = ", target < 0 ? -1 : target + 1, ";\ngoto leave;\n}\n");
    useTargets_.insert(target);
}

bool Emitter::verbOfFiles(Word verb)
{
    return verb == K_OPEN || verb == K_CLOSE || verb == K_READ || verb == K_WRITE || verb == K_REWRITE ||
           verb == K_DELETE || verb == K_START || verb == K_SORT || verb == K_MERGE;
}

// After a verb. In a USE procedure the note is for the function that called the library; after the
// DECLARATIVES, which come first, all targets are known.
void Emitter::leftUse()
{
    if (program_->uses.empty()) return;
    std::string gone = cat("p", program_->number, "_gone");
    if (procedure_ < program_->firstProcedure) {
        put("if (", gone, " && entry) goto leave;\n");
        return;
    }
    if (useTargets_.empty()) return;
    put("if (", gone, ") switch (", gone, ") {\n");
    for (long target : useTargets_) {
        if (target < 0) continue;
        put("case ", target + 1, ": ", gone, " = 0; goto p", target, ";\n");
        flow_.jumps.emplace_back(procedure_, static_cast<size_t>(target));
    }
    put("default: ", gone, " = 0; goto leave;\n}\n");
}

} // namespace kvrcob
