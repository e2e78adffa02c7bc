// USE FOR DEBUGGING: the sections that watch procedures, items and files.
//
// A section is part of its program's function and is entered by its number, as every USE procedure
// is. What it is told is in DEBUG-ITEM. A watched procedure runs its section at its start. A
// watched file or item runs it after the statement; the calls that a statement owes are collected
// while its operands are located, and emitted when it is done (`debugNow`), or before what it does
// next: its phrases, its branches, the jump. While a section runs no other one does, whatever it
// performs. A program without WITH DEBUGGING MODE has none of this, and the run-time option NODEBUG
// passes over the calls.
#include "cobol/emit/emitter.h"

namespace kvrcob {

void Emitter::findWatched(Program &p)
{
    for (size_t u = 0; u < p.uses.size(); u++) {
        const UseStatement &use = p.uses[u];
        if (!use.debugging || !p.debugging) continue;
        inProgram_.debugs = true;
        for (size_t i = 0; i < use.debugged.size(); i++) {
            const Reference *ref = use.debugged[i];
            if (p.names->procedures.count(ref->names[0])) continue;
            Watch watch{u, use.allReferences.count(i) != 0, wordText(ref->names[0])};
            for (size_t q = 1; q < ref->names.size(); q++) watch.name += " OF " + wordText(ref->names[q]);
            const File *file = nullptr;
            for (const File *f : p.files)
                if (f->name == ref->names[0]) file = f;
            if (file)
                inProgram_.watchedFiles[file] = watch;
            else if (const Item *item = meaning_.resolve(p, *ref))
                inProgram_.watchedItems[item] = watch;
        }
    }
}

bool Emitter::inDebuggingSection(size_t procedure) const
{
    const Procedure &now = program_->procedures[procedure];
    size_t section = now.isSection || now.section < 0 ? procedure : static_cast<size_t>(now.section);
    for (const UseStatement &use : program_->uses)
        if (use.debugging && use.procedure == section) return true;
    return false;
}

std::string Emitter::debugSection(const Watch &watch, const std::string &arguments)
{
    std::string prefix = cat("p", program_->number, "_");
    return cat("if (", prefix, "pcb.flag & ZVK_OPTION_DEBUG && !", prefix, "debugging) {\n", emits(Do::Debugging), "(",
               prefix, "debugItem, ", arguments, ");\n@", prefix, "debugging = 1;\n", prefix, "body(", watch.use + 1,
               ");\n", prefix, "debugging = 0;\n}\n");
}

// How a procedure is reached next, for DEBUG-CONTENTS.
void Emitter::debugWay(const std::string &way, Tok at)
{
    if (inProgram_.debugs) put("way = ", bytesLiteral(way), "; wayLine = ", group_.spot(at).line, ";\n");
}

static void replaceMark(std::string &text, const std::string &with)
{
    size_t mark = text.find('@');
    text.replace(mark, 1, with);
}

// The section that watches a procedure runs before it.
void Emitter::debugProcedure(size_t index)
{
    const Procedure &procedure = program_->procedures[index];
    if (!inProgram_.debugs || !procedure.name || inDebuggingSection(index)) return;
    for (size_t u = 0; u < program_->uses.size(); u++) {
        if (!watches(program_->uses[u], index)) continue;
        std::string call = debugSection(
            {u, false, ""}, cat("wayLine, ", bytesLiteral(wordText(procedure.name)), ", way, (uint32_t)strlen(way)"));
        replaceMark(call, "");
        put(call);
        break;
    }
    put("way = \"FALL THROUGH\";\n");
}

bool Emitter::watches(const UseStatement &use, size_t index) const
{
    if (!use.debugging) return false;
    if (use.allProcedures) return true;
    const Procedure &procedure = program_->procedures[index];
    for (const Reference *ref : use.debugged) {
        if (ref->names[0] != procedure.name) continue;
        if (ref->names.size() == 1 ||
            (procedure.section >= 0 &&
             program_->procedures[static_cast<size_t>(procedure.section)].name == ref->names[1]))
            return true;
    }
    return false;
}

// ALTER tells the section of the paragraph that it changes.
void Emitter::debugAlter(long paragraph, long target, Tok at)
{
    if (!inProgram_.debugs || inDebuggingSection(procedure_)) return;
    const Procedure &changed = program_->procedures[static_cast<size_t>(paragraph)];
    const std::string &to = wordText(program_->procedures[static_cast<size_t>(target)].name);
    for (size_t u = 0; u < program_->uses.size(); u++) {
        if (!watches(program_->uses[u], static_cast<size_t>(paragraph))) continue;
        std::string call =
            debugSection({u, false, ""}, cat(group_.spot(at).line, ", ", bytesLiteral(wordText(changed.name)), ", ",
                                             bytesLiteral(to), ", ", to.size()));
        replaceMark(call, "");
        put(call);
        return;
    }
}

// A reference to a watched item, in the statement in hand.
void Emitter::debugItem(const Reference &ref, const Item &item, const Loc &loc, bool changed)
{
    auto found = inProgram_.watchedItems.find(&item);
    if (found == inProgram_.watchedItems.end() || (!found->second.all && !changed) || inDebuggingSection(procedure_))
        return;
    std::string subscripts, call = debugSection(found->second, cat(group_.spot(inStatement_.at).line, ", ",
                                                                   bytesLiteral(found->second.name), ", ", loc.address,
                                                                   ", (uint32_t)(", loc.length, ")"));
    for (size_t i = 0; i < ref.subscripts.size() && i < 3; i++)
        subscripts += joined(emits(Do::DebugSubscript), "(p", program_->number, "_debugItem, ", i, ", ",
                             integer(ref.subscripts[i]), ");\n");
    replaceMark(call, subscripts);
    for (const std::string &other : inStatement_.debugs)
        if (other == call) return;
    inStatement_.debugs.push_back(call);
}

// A statement of a watched file; READ tells the record, unless its AT END or INVALID KEY follows.
void Emitter::debugFile(const File &f, const FileStatement *read)
{
    auto found = inProgram_.watchedFiles.find(&f);
    if (!inProgram_.debugs || found == inProgram_.watchedFiles.end() || inDebuggingSection(procedure_)) return;
    std::string status = cat("F", f.number, "->status"), record = cat("F", f.number, "->record"), unless;
    if (read && read->end.has) unless += joined(" && !(", status, " >= 10 && ", status, " < 20)");
    if (read && read->invalid.has) unless += joined(" && !(", status, " >= 20 && ", status, " < 30)");
    std::string call =
        debugSection(found->second, cat(group_.spot(inStatement_.at).line, ", ", bytesLiteral(found->second.name), ", ",
                                        read ? cat(record, ", ", f.maxRecord) : "\"\", 0"));
    replaceMark(call, "");
    put(unless.empty() ? call : cat("if (1", unless, ") {\n", call, "}\n"));
}

// Emits the calls that the statement owes. A section runs once for an EVALUATE or a SEARCH, however
// many of its conditions are evaluated and name the item.
void Emitter::debugNow()
{
    std::vector<std::string> calls;
    calls.swap(inStatement_.debugs);
    for (const std::string &call : calls) {
        if (!inStatement_.toldOnce) {
            put(call);
            continue;
        }
        std::string &told = (*inStatement_.toldOnce)[call];
        if (told.empty()) told = temp("int", " = 0");
        put("if (!", told, ") {\n", told, " = 1;\n", call, "}\n");
    }
}

// A condition that has watched items: their sections run after its evaluation.
std::string Emitter::debugCondition(const std::string &c)
{
    if (inStatement_.debugs.empty()) return c;
    std::string value = temp("int");
    put(value, " = ", c, ";\n");
    debugNow();
    return value;
}

} // namespace kvrcob
