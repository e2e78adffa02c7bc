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
// code (Insertion) until then.
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
    if (procedure.segment >= 50 && index > 0 && p.procedures[index - 1].segment != procedure.segment)
        put("kvr_segment_", p.number, "(", procedure.segment, ");\n");
    line(procedure.at);
    put("p", index, ": __attribute__((unused));\n");
    debugProcedure(index);
    sentenceEndUsed_ = paragraphEndUsed_ = false;
    for (const Sentence &sentence : procedure.sentences) {
        sentenceEnd_ = label();
        sentenceEndUsed_ = false;
        block(sentence.statements);
        if (sentenceEndUsed_) put(sentenceEnd_, ": ;\n");
    }
    flow_.endsAway[index] = !sentenceEndUsed_ && !paragraphEndUsed_ && goesAway(p, procedure);
    if (paragraphEndUsed_) put("e", index, ": ;\n");
    if (debugs_ && !procedure.sentences.empty() && !procedure.sentences.back().statements.empty())
        debugWay("FALL THROUGH", procedure.sentences.back().statements.back()->at);
    if (!procedure.isSection) insertions_.push_back({code_.size(), Insertion::Return, index, ""});
    // A section's exit comes after that of its last paragraph.
    int section = procedure.isSection ? static_cast<int>(index) : procedure.section;
    bool goesOn = index + 1 < p.procedures.size() && !p.procedures[index + 1].isSection &&
                  p.procedures[index + 1].section == section;
    if (section < 0 || goesOn) return;
    put("z", section, ": __attribute__((unused));\n");
    insertions_.push_back({code_.size(), Insertion::Return, static_cast<size_t>(section), ""});
}

// The GO TOs that ALTER can change: where each goes now, and what brings a segment's back.
void Emitter::alterable(Program &p)
{
    alterTargets_.clear();
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
    ranges_.clear();
    bool segments =
        std::any_of(p.procedures.begin(), p.procedures.end(), [](const Procedure &q) { return q.segment >= 50; });
    if (!debugs_ && !programEndsSort() && !segments) ranges_ = rangesAsFunctions(p, flow_);
    owners_ = ownersOf(p, ranges_);
}

// ---- Marks in the code

void Emitter::resolvePerform(const Flow::Perform &perform, std::string &out)
{
    // Control is in a function of its own from its first paragraph on.
    int owner = owners_[perform.from];
    const Range *range = owner >= 0 && owner != owners_[perform.in] ? &ranges_[static_cast<size_t>(owner)] : nullptr;
    if (range && range->first == perform.from && range->end == perform.end) {
        out += joined(range->exits.empty() ? "if (" : "switch (", functionName(*range), "(x, s, n))");
        if (!range->exits.empty()) out += " { case 0: break;";
        for (size_t to : range->exits) out += joined(" case ", to + 2, ": goto p", to, ";");
        out += range->exits.empty() ? " goto leave;\n" : " default: goto leave; }\n";
        return;
    }
    std::string cell = cat("x[", perform.end, "]"), saved = cat("s[", perform.site - firstSite_, "]");
    if (perform.circle)
        out += joined(emits(Do::Circle), "(&performs, ", perform.site, ", ", cell, ");\n");
    else
        out += joined("if (", cell, " != ", perform.site, ") ", saved, " = ", cell, ";\n");
    out += joined(cell, " = ", perform.site, ";\ngoto p", perform.from, ";\nr", perform.site, ": ", cell, " = ",
                  perform.circle ? cat(emits(Do::CircleEnd), "(&performs, ", perform.site, ")") : saved, ";\n");
}

void Emitter::resolveReturn(size_t procedure, std::string &out)
{
    int owner = owners_[procedure];
    if (owner >= 0 && ranges_[static_cast<size_t>(owner)].end == procedure) {
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
    for (size_t target : alterTargets_[procedure]) {
        out += joined("case ", target + 1, ": ");
        int segment = p.procedures[target].segment;
        if (segment >= 50 && segment != p.procedures[procedure].segment)
            out += joined("kvr_segment_", p.number, "(", segment, "); ");
        if (debugs_) out += joined("way = \"\"; wayLine = ", group_.spot(p.procedures[procedure].at).line, "; ");
        out += joined("goto p", target, ";\n");
    }
}

void Emitter::resolve(const Insertion &insertion, std::string &out)
{
    switch (insertion.kind) {
    case Insertion::Text:
        out += insertion.text;
        break;
    case Insertion::Perform:
        resolvePerform(flow_.performs[insertion.index], out);
        break;
    case Insertion::Return:
        resolveReturn(insertion.index, out);
        break;
    case Insertion::Altered:
        resolveAltered(insertion.index, out);
        break;
    }
}

// The code of a procedure (or what comes before and after all of them), without its marks.
void Emitter::appendProcedure(size_t index, std::string &out)
{
    size_t from = starts_[index].first;
    for (size_t i = starts_[index].second; i < starts_[index + 1].second; i++) {
        out.append(code_, from, insertions_[i].at - from);
        from = insertions_[i].at;
        resolve(insertions_[i], out);
    }
    out.append(code_, from, starts_[index + 1].first - from);
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
        const uint32_t site = ++sites_;
        p.procedures[procedure].returns.push_back(site);
        entries += joined("case ", i + 1, ": x[", procedure, "] = ", site, ";");
        if (debugs_) entries += joined(" way = \"USE PROCEDURE\"; wayLine = ", group_.spot(p.uses[i].at).line, ";");
        entries += joined(" goto p", procedure, ";\n");
        useReturns_ += joined("r", site, ": return 0;\n");
    }
    return entries;
}

// The code of all procedures, with marks. What comes before the first one are its temporaries only.
void Emitter::allProcedures(Program &p)
{
    starts_.clear();
    openBlock();
    for (size_t i = 0; i < p.procedures.size(); i++) {
        starts_.emplace_back(code_.size(), insertions_.size());
        if (i == p.firstProcedure) {
            flow_.entered[i] = true;
            if (i > 0) put("main_procedures: ;\n");
        }
        paragraph(i);
        if (i + 1 == p.firstProcedure) {
            put("return 0;\n"); // declaratives do not fall into what comes after them
            allUseTargets();
        }
    }
    starts_.emplace_back(code_.size(), insertions_.size());
    if (p.firstProcedure == p.procedures.size() && p.firstProcedure > 0) put("main_procedures: ;\n");
    put("goto leave;\n");
    put(useReturns_);
    useReturns_.clear();
    put("leave: ;\n");
    leaveInUse();
    starts_.emplace_back(code_.size(), insertions_.size());
    blocks_.pop_back();
}

// The big function: all procedures that are in no function of their own. The cells are in memory,
// and not in as many variables: those would be live everywhere, and the C compiler would take its
// time.
void Emitter::bodyFunction(const Program &p, const std::string &entries, std::string &out)
{
    const size_t saved = sites_ + 1 - firstSite_;
    line(p.at, out);
    out += joined("static int p", p.number, "_body(int entry)\n{\nint x[", p.procedures.size() + 1, "], s[", saved + 1,
                  "];\nint64_t n[", counters_ + 1, "];\nKVR_CELLS(x);\nKVR_CELLS(s);\nKVR_CELLS(n);\n");
    if (circling_)
        out += joined("KvrPerforms performs __attribute__((cleanup(", emits(Do::PerformsEnd), "))) = {0, 0, 0};\n");
    if (debugs_)
        out +=
            joined("const char *way = \"START PROGRAM\";\nint wayLine = ", group_.spot(firstStatement(p)).line, ";\n");
    out += joined("switch (entry) { default: break;\n", entries, entryCases_, "}\n",
                  p.firstProcedure > 0 ? "goto main_procedures;\n" : "", insertions_[0].text);
    for (size_t i = 0; i < p.procedures.size(); i++)
        if (owners_[i] < 0) appendProcedure(i, out);
    appendProcedure(p.procedures.size(), out);
    out += "return 0;\n}\n";
}

// A function of its own: it returns 0 at the end of the range, 1 to leave the program, and the
// number of a procedure outside, plus 2, to go there.
void Emitter::rangeFunction(const Program &p, size_t r, std::string &out)
{
    const Range &range = ranges_[r];
    const std::string name = functionName(range);
    globals_ += joined("KVR_PERFORMED(", name, ");\n");
    line(p.procedures[range.first].at, out);
    out += joined("KVR_PERFORMED(", name, ")\n{\n");
    for (size_t i = range.first; i <= range.last; i++)
        if (owners_[i] == static_cast<int>(r)) appendProcedure(i, out);
    out += "leave: __attribute__((unused));\nreturn 1;\n";
    for (size_t to : range.exits) out += joined("p", to, ": return ", to + 2, ";\n");
    out += "}\n";
}

void Emitter::procedures(Program &p)
{
    findWatched(p);
    code_.clear();
    code_.reserve(32 * (p.endAt - p.procedureAt)); // about what its tokens become, or more
    insertions_.clear();
    blocks_.clear();
    firstSite_ = sites_ + 1;
    counters_ = 0;
    flow_ = Flow();
    flow_.entered.assign(p.procedures.size(), 0);
    flow_.endsAway.assign(p.procedures.size(), 0);
    findCircles(p);
    alterable(p);
    entryCases_.clear();
    useTargets_.clear();

    const std::string entries = useEntries(p);
    allProcedures(p);
    chooseFunctions(p);
    for (const Flow::Perform &perform : flow_.performs) p.procedures[perform.end].returns.push_back(perform.site);

    std::string out;
    out.reserve(code_.size() + 32 * insertions_.size() + 64 * p.procedures.size() + 100 * flow_.performs.size());
    bodyFunction(p, entries, out);
    for (size_t r = 0; r < ranges_.size(); r++) rangeFunction(p, r, out);
    debugs_ = false;
    code_ = std::move(out);
    insertions_.clear();
}

} // namespace kvrcob
