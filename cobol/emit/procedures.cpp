// The procedures of a program as C functions.
//
// A procedure division is one C function with a label for each paragraph. PERFORM of a range writes
// its number into the cell of the paragraph or section that ends the range, and jumps to the first
// one; at the end of every such procedure is a switch over the numbers that can be in its cell. So
// ranges may nest and overlap, GO TO may leave them, and a paragraph that nobody performs costs
// nothing. A cell's former number comes back after the PERFORM, for a range around it that ends in
// the same place. A section ends after its last paragraph: EXIT SECTION in a paragraph that is
// performed does not come back from that paragraph.
//
// Ranges that need none of this are functions of their own (ranges.cpp). Which ones these are is
// known when all statements were emitted; so PERFORMs, and the ends of procedures, are marks in the
// code (Mark) until then.
//
//     x   cells: the number of the PERFORM that a procedure's end returns to
//     s   saved cells, one for each PERFORM
//     n   how often a PERFORM n TIMES has yet to run
#include <algorithm>

#include "cobol/emit/emitter.h"

namespace kvrcob {

// Whether a paragraph never falls into the next one, for its last statement goes away. (An IF that
// goes away in all its branches is not looked at.) EXIT PROGRAM passes by in a main program, which
// a contained one never is.
static bool goesAway(const Program &p, const Procedure &procedure)
{
    if (procedure.sentences.empty() || procedure.sentences.back().statements.empty()) return false;
    const Statement &last = *procedure.sentences.back().statements.back();
    if (last.verb == K_GO) return !static_cast<const GoStatement &>(last).depending;
    if (last.verb != K_STOP && last.verb != K_GOBACK && last.verb != K_EXIT) return false;
    auto form = static_cast<const ExitStatement &>(last).form;
    return form == ExitStatement::StopRun || form == ExitStatement::Goback ||
           (form == ExitStatement::Program && p.parent);
}

void Emitter::paragraph(size_t index)
{
    Program &p = *program_;
    Procedure &procedure = p.procedures[index];
    procedure_ = index;
    inProcedure_ = {};
    if (procedure.segment >= 50 && index > 0 && p.procedures[index - 1].segment != procedure.segment)
        put("kvr_segment_", p.number, "(", procedure.segment, ");\n");
    line(procedure.at);
    put("p", index, ": __attribute__((unused));\n");
    debugProcedure(index);
    for (const Sentence &sentence : procedure.sentences) {
        inProcedure_.sentenceEnd = label();
        inProcedure_.sentenceEndUsed = false;
        block(sentence.statements);
        if (inProcedure_.sentenceEndUsed) put(inProcedure_.sentenceEnd, ": ;\n");
    }
    inProgram_.flow.endsAway[index] =
        !inProcedure_.sentenceEndUsed && !inProcedure_.paragraphEndUsed && goesAway(p, procedure);
    if (inProcedure_.paragraphEndUsed) put("e", index, ": ;\n");
    if (inProgram_.debugs && !procedure.sentences.empty() && !procedure.sentences.back().statements.empty())
        debugWay("FALL THROUGH", procedure.sentences.back().statements.back()->at);
    if (!procedure.isSection) code_.mark(Mark::Return, index);
    // A section's exit comes after that of its last paragraph.
    int section = procedure.isSection ? static_cast<int>(index) : procedure.section;
    bool goesOn = index + 1 < p.procedures.size() && !p.procedures[index + 1].isSection &&
                  p.procedures[index + 1].section == section;
    if (section < 0 || goesOn) return;
    put("z", section, ": __attribute__((unused));\n");
    code_.mark(Mark::Return, static_cast<size_t>(section));
}

// The GO TOs that ALTER can change: where each goes now, and what brings a segment's back.
void Emitter::alterable(Program &p)
{
    size_t n = 0;
    for (Procedure &procedure : p.procedures) {
        procedure.altered = p.hasAlter && procedure.sentences.size() >= 1 &&
                            procedure.sentences[0].statements.size() == 1 &&
                            procedure.sentences[0].statements[0]->verb == K_GO &&
                            !static_cast<const GoStatement *>(procedure.sentences[0].statements[0])->depending;
        if (procedure.altered)
            globals_ += joined("#define a", p.number, "_", procedure.number, " p", p.number, "_altered[", n++, "]\n");
    }
    if (n == 0) {
        globals_ += joined("#define kvr_segment_", p.number, "(segment) ((void)0)\n");
        return;
    }
    globals_ += joined("static void *p", p.number, "_altered[", n, "];\nstatic void *const p", p.number, "_unaltered[",
                       n, "];\nstatic const uint8_t p", p.number, "_segments[", n, "] = {");
    for (const Procedure &procedure : p.procedures)
        if (procedure.altered) globals_ += joined(procedure.segment, ",");
    globals_ += "};\n";
    globals_ += joined("#define kvr_segment_", p.number, "(segment) ", emits(Do::Segment), "((segment), ", n, ", p",
                       p.number, "_altered, p", p.number, "_unaltered, p", p.number, "_segments)\n");
}

// ---- Functions of their own

// p1_7_PRINT_TOTALS
std::string Emitter::functionName(const Range &r) const
{
    std::string name = cat("p", program_->number, "_", r.first, "_");
    for (char c : wordText(program_->procedures[r.first].name))
        name += isalnum(static_cast<unsigned char>(c)) ? c : '_';
    return name;
}

// Decides which ranges are functions. Debugging sections and SORT-RETURN need to know all cells;
// segments are brought back where control comes into them.
void Emitter::chooseFunctions(Program &p)
{
    bool segments =
        std::any_of(p.procedures.begin(), p.procedures.end(), [](const Procedure &q) { return q.segment >= 50; });
    if (!inProgram_.debugs && !inFile_.sortReturn && !segments)
        inProgram_.ranges = rangesAsFunctions(p, inProgram_.flow);
    inProgram_.owners = ownersOf(p, inProgram_.ranges);
}

// ---- Marks in the code

void Emitter::resolvePerform(const Flow::Perform &perform, std::string &out)
{
    // Control is in a function of its own from its first paragraph on.
    int owner = inProgram_.owners[perform.from];
    const Range *range =
        owner >= 0 && owner != inProgram_.owners[perform.in] ? &inProgram_.ranges[static_cast<size_t>(owner)] : nullptr;
    if (range && range->first == perform.from && range->end == perform.end) {
        out += joined(range->exits.empty() ? "if (" : "switch (", functionName(*range), "(x, s, n))");
        if (!range->exits.empty()) out += " { case 0: break;";
        for (size_t to : range->exits) out += joined(" case ", to + 2, ": goto p", to, ";");
        out += range->exits.empty() ? " goto leave;\n" : " default: goto leave; }\n";
        return;
    }
    std::string cell = cat("x[", perform.end, "]"), saved = cat("s[", perform.site - inProgram_.firstSite, "]");
    if (perform.circle)
        out += joined(emits(Do::Circle), "(&performs, ", perform.site, ", ", cell, ");\n");
    else
        out += joined("if (", cell, " != ", perform.site, ") ", saved, " = ", cell, ";\n");
    out += joined(cell, " = ", perform.site, ";\ngoto p", perform.from, ";\nr", perform.site, ": ", cell, " = ",
                  perform.circle ? cat(emits(Do::CircleEnd), "(&performs, ", perform.site, ")") : saved, ";\n");
}

void Emitter::resolveReturn(size_t procedure, std::string &out)
{
    int owner = inProgram_.owners[procedure];
    if (owner >= 0 && inProgram_.ranges[static_cast<size_t>(owner)].end == procedure) {
        out += "return 0;\n";
        return;
    }
    const std::vector<uint32_t> &sites = program_->procedures[procedure].returns;
    if (sites.empty()) return;
    out += joined("switch (x[", procedure, "]) {");
    for (uint32_t site : sites) out += joined(" case ", site, ": goto r", site, ";");
    out += " }\n";
}

void Emitter::resolveAltered(size_t procedure, std::string &out)
{
    Program &p = *program_;
    for (size_t target : inProgram_.alterTargets[procedure]) {
        out += joined("case ", target + 1, ": ");
        int segment = p.procedures[target].segment;
        if (segment >= 50 && segment != p.procedures[procedure].segment)
            out += joined("kvr_segment_", p.number, "(", segment, "); ");
        if (inProgram_.debugs)
            out += joined("way = \"\"; wayLine = ", group_.spot(p.procedures[procedure].at).line, "; ");
        out += joined("goto p", target, ";\n");
    }
}

void Emitter::resolve(const Mark &mark, std::string &out)
{
    switch (mark.kind) {
    case Mark::Declarations:
        out += mark.declarations;
        break;
    case Mark::Perform:
        resolvePerform(inProgram_.flow.performs[mark.index], out);
        break;
    case Mark::Return:
        resolveReturn(mark.index, out);
        break;
    case Mark::Altered:
        resolveAltered(mark.index, out);
        break;
    }
}

// The code of a procedure (or what comes before and after all of them), without its marks.
void Emitter::appendProcedure(size_t index, std::string &out)
{
    code_.appendPart(index, out, [this](const Mark &mark, std::string &to) { resolve(mark, to); });
}

// The first statement after the DECLARATIVES, where START PROGRAM begins.
static Tok firstStatement(const Program &p)
{
    for (size_t i = p.firstProcedure; i < p.procedures.size(); i++)
        for (const Sentence &sentence : p.procedures[i].sentences)
            if (!sentence.statements.empty()) return sentence.statements[0]->at;
    return p.procedureAt;
}

// USE procedures are entered from the library: each by a number of its own.
std::string Emitter::useEntries(Program &p)
{
    std::string entries;
    for (size_t i = 0; i < p.uses.size(); i++) {
        const size_t procedure = p.uses[i].procedure;
        const uint32_t site = ++inFile_.sites;
        p.procedures[procedure].returns.push_back(site);
        entries += joined("case ", i + 1, ": x[", procedure, "] = ", site, ";");
        if (inProgram_.debugs)
            entries += joined(" way = \"USE PROCEDURE\"; wayLine = ", group_.spot(p.uses[i].at).line, ";");
        entries += joined(" goto p", procedure, ";\n");
        inProgram_.useReturns += joined("r", site, ": return 0;\n");
    }
    return entries;
}

// The code of all procedures, with marks. What comes before the first one are its temporaries only.
void Emitter::allProcedures(Program &p)
{
    openBlock();
    for (size_t i = 0; i < p.procedures.size(); i++) {
        code_.beginPart();
        if (i == p.firstProcedure) {
            inProgram_.flow.entered[i] = true;
            if (i > 0) put("main_procedures: ;\n");
        }
        paragraph(i);
        if (i + 1 == p.firstProcedure) {
            put("return 0;\n"); // declaratives do not fall into what comes after them
            allUseTargets();
        }
    }
    code_.beginPart();
    if (p.firstProcedure == p.procedures.size() && p.firstProcedure > 0) put("main_procedures: ;\n");
    put("goto leave;\n");
    put(inProgram_.useReturns);
    put("leave: ;\n");
    leaveInUse();
    code_.beginPart();
    code_.blocks.pop_back();
}

// The big function: all procedures that are in no function of their own. The cells are in memory,
// and not in as many variables: those would be live everywhere, and the C compiler would take its
// time.
void Emitter::bodyFunction(const Program &p, const std::string &entries, std::string &out)
{
    const size_t saved = inFile_.sites + 1 - inProgram_.firstSite;
    line(p.at, out);
    out += joined("static int p", p.number, "_body(int entry)\n{\nint x[", p.procedures.size() + 1, "], s[", saved + 1,
                  "];\nint64_t n[", inProgram_.counters + 1, "];\nKVR_CELLS(x);\nKVR_CELLS(s);\nKVR_CELLS(n);\n");
    if (std::any_of(inProgram_.flow.performs.begin(), inProgram_.flow.performs.end(),
                    [](const Flow::Perform &perform) { return perform.circle; }))
        out += joined("KvrPerforms performs __attribute__((cleanup(", emits(Do::PerformsEnd), "))) = {0, 0, 0};\n");
    if (inProgram_.debugs)
        out +=
            joined("const char *way = \"START PROGRAM\";\nint wayLine = ", group_.spot(firstStatement(p)).line, ";\n");
    out += joined("switch (entry) { default: break;\n", entries, inProgram_.entryCases, "}\n",
                  p.firstProcedure > 0 ? "goto main_procedures;\n" : "", code_.marks[0].declarations);
    for (size_t i = 0; i < p.procedures.size(); i++)
        if (inProgram_.owners[i] < 0) appendProcedure(i, out);
    appendProcedure(p.procedures.size(), out);
    out += "return 0;\n}\n";
}

// A function of its own: it returns 0 at the end of the range, 1 to leave the program, and the
// number of a procedure outside, plus 2, to go there.
void Emitter::rangeFunction(const Program &p, size_t r, std::string &out)
{
    const Range &range = inProgram_.ranges[r];
    const std::string name = functionName(range);
    globals_ += joined("KVR_PERFORMED(", name, ");\n");
    line(p.procedures[range.first].at, out);
    out += joined("KVR_PERFORMED(", name, ")\n{\n");
    for (size_t i = range.first; i <= range.last; i++)
        if (inProgram_.owners[i] == static_cast<int>(r)) appendProcedure(i, out);
    out += "leave: __attribute__((unused));\nreturn 1;\n";
    for (size_t to : range.exits) out += joined("p", to, ": return ", to + 2, ";\n");
    out += "}\n";
}

void Emitter::procedures(Program &p)
{
    findWatched(p);
    code_ = MarkedCode();
    code_.text.reserve(32 * (p.endAt - p.procedureAt)); // about what its tokens become, or more
    inProgram_.firstSite = inFile_.sites + 1;
    inProgram_.flow.entered.assign(p.procedures.size(), 0);
    inProgram_.flow.endsAway.assign(p.procedures.size(), 0);
    inProgram_.circles = Circles(meaning_, p);
    alterable(p);

    const std::string entries = useEntries(p);
    allProcedures(p);
    chooseFunctions(p);
    for (const Flow::Perform &perform : inProgram_.flow.performs)
        p.procedures[perform.end].returns.push_back(perform.site);

    std::string out;
    out.reserve(code_.text.size() + 32 * code_.marks.size() + 64 * p.procedures.size() +
                100 * inProgram_.flow.performs.size());
    bodyFunction(p, entries, out);
    for (size_t r = 0; r < inProgram_.ranges.size(); r++) rangeFunction(p, r, out);
    inProgram_.debugs = false;
    code_ = MarkedCode();
    code_.text = std::move(out);
}

} // namespace kvrcob
