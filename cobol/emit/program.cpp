// The C file: storage and the records of the run time; the order in which all that belongs to a
// program is emitted.
#include "cobol/emit/emitter.h"

#include <algorithm>
#include <cstring>
#include <ctime>

namespace kvrcob {

// ---- Tools

std::string Emitter::temp(std::string_view type, std::string_view suffix)
{
    std::string name = cat("t", ++temps_);
    insertions_[blocks_.back()].text += joined(type, " ", name, suffix, "; ");
    return name;
}

std::string Emitter::tempBytes(int64_t size) { return temp("uint8_t", cat("[", size < 1 ? 1 : size, "]")); }

// A block has braces if it has temporaries: the C compiler's time for labels grows with the number
// of blocks.
void Emitter::openBlock()
{
    blocks_.push_back(insertions_.size());
    insertions_.push_back({code_.size(), Insertion::Text, 0, ""});
}

void Emitter::closeBlock()
{
    size_t block = blocks_.back();
    blocks_.pop_back();
    if (!insertions_[block].text.empty()) {
        insertions_[block].text.insert(0, "{\n");
        put("}\n");
    } else if (block + 1 == insertions_.size()) {
        insertions_.pop_back();
    }
}

void Emitter::line(Tok at) { line(at, code_); }

void Emitter::line(Tok at, std::string &out)
{
    if (!options_.lines) return;
    const Spot &spot = group_.spot(at);
    if (spot.file != lineFile_) {
        lineFile_ = spot.file;
        linePath_ = bytesLiteral(sources()[spot.file].path);
    }
    out += joined("#line ", spot.line ? spot.line : 1, ' ', linePath_, '\n');
}

// ---- Statements

void Emitter::block(const Block &b)
{
    for (const Statement *s : b) statement(*s);
}

void Emitter::statement(const Statement &s)
{
    line(s.at);
    openBlock();
    std::string outerZero;
    outerZero.swap(zeroFlag_);
    std::vector<std::string> outerDebugs;
    outerDebugs.swap(pendingDebugs_);
    Tok outerAt = statementAt_;
    statementAt_ = s.at;
    switch (s.verb) {
    case K_ADD:
    case K_SUBTRACT:
    case K_MULTIPLY:
        addStatement(static_cast<const ArithmeticStatement &>(s));
        break;
    case K_DIVIDE:
        divideStatement(static_cast<const ArithmeticStatement &>(s));
        break;
    case K_COMPUTE:
        computeStatement(static_cast<const ArithmeticStatement &>(s));
        break;
    case K_MOVE:
        moveStatement(static_cast<const MoveStatement &>(s));
        break;
    case K_INITIALIZE:
        initializeStatement(static_cast<const InitializeStatement &>(s));
        break;
    case K_SET:
        setStatement(static_cast<const SetStatement &>(s));
        break;
    case K_ALLOCATE:
    case K_FREE:
        allocateStatement(static_cast<const AllocateStatement &>(s));
        break;
    case K_IF:
        ifStatement(static_cast<const IfStatement &>(s));
        break;
    case K_EVALUATE:
        evaluateStatement(static_cast<const EvaluateStatement &>(s));
        break;
    case K_PERFORM:
        performStatement(static_cast<const PerformStatement &>(s));
        break;
    case K_GO:
        goStatement(static_cast<const GoStatement &>(s));
        break;
    case K_ALTER:
        alterStatement(static_cast<const AlterStatement &>(s));
        break;
    case K_EXIT:
    case K_CONTINUE:
    case K_NEXT:
    case K_STOP:
    case K_ENTER:
    case K_GOBACK:
        exitStatement(static_cast<const ExitStatement &>(s));
        break;
    case K_DISPLAY:
        displayStatement(static_cast<const DisplayStatement &>(s));
        break;
    case K_ACCEPT:
        acceptStatement(static_cast<const AcceptStatement &>(s));
        break;
    case K_CALL:
        callStatement(static_cast<const CallStatement &>(s));
        break;
    case K_ENTRY:
        entryStatement(static_cast<const EntryStatement &>(s));
        break;
    case K_CANCEL:
        cancelStatement(static_cast<const CancelStatement &>(s));
        break;
    case K_OPEN:
        openStatement(static_cast<const OpenStatement &>(s));
        break;
    case K_CLOSE:
        closeStatement(static_cast<const CloseStatement &>(s));
        break;
    case K_READ:
        readStatement(static_cast<const FileStatement &>(s));
        break;
    case K_WRITE:
        writeStatement(static_cast<const FileStatement &>(s));
        break;
    case K_REWRITE:
        rewriteStatement(static_cast<const FileStatement &>(s));
        break;
    case K_DELETE:
        deleteStatement(static_cast<const FileStatement &>(s));
        break;
    case K_START:
        startStatement(static_cast<const FileStatement &>(s));
        break;
    case K_UNLOCK:
        unlockStatement(static_cast<const FileStatement &>(s));
        break;
    case K_SORT:
    case K_MERGE:
        sortStatement(static_cast<const SortStatement &>(s));
        break;
    case K_RELEASE:
        releaseStatement(static_cast<const FileStatement &>(s));
        break;
    case K_RETURN:
        returnStatement(static_cast<const FileStatement &>(s));
        break;
    case K_STRING:
        stringStatement(static_cast<const StringStatement &>(s));
        break;
    case K_UNSTRING:
        unstringStatement(static_cast<const UnstringStatement &>(s));
        break;
    case K_INSPECT:
        inspectStatement(static_cast<const InspectStatement &>(s));
        break;
    case K_PARSE:
        xmlParse(static_cast<const XmlParseStatement &>(s));
        break;
    case K_XML:
        xmlGenerate(static_cast<const XmlGenerateStatement &>(s));
        break;
    case K_SEARCH:
        searchStatement(static_cast<const SearchStatement &>(s));
        break;
    default:
        notBuilt(s.at, "the statement " + wordText(s.verb));
        break;
    }
    debugNow();
    statementAt_ = outerAt;
    pendingDebugs_.swap(outerDebugs);
    zeroFlag_.swap(outerZero);
    closeBlock();
}

std::string Emitter::constantRecord(const char *prefix, const std::string &type, const std::string &value)
{
    std::string &name = records_[type + value];
    if (name.empty()) {
        name = cat(prefix, ++constants_);
        globals_ += joined("static const ", type, " ", name, " = ", value, ";\n");
    }
    return name;
}

// ---- Storage

// What a record takes: as much as the longest of those that redefine it.
uint64_t Emitter::roomOf(const Item &record) const
{
    auto found = rooms_.find(&record);
    return std::max(static_cast<uint64_t>(record.storageSize()), found == rooms_.end() ? 0 : found->second);
}

void Emitter::storage(Program &p)
{
    rooms_.clear();
    for (const Item *record : p.records)
        if (record->redefines) {
            uint64_t &room = rooms_[record->redefines];
            room = std::max(room, static_cast<uint64_t>(record->storageSize()));
        }
    for (Item *record : p.records) {
        if (record->redefines) continue;
        uint64_t size = std::max<uint64_t>(roomOf(*record), 1);
        switch (record->section) {
        case Item::WorkingStorage:
            if (record->external)
                globals_ += joined("static uint8_t *E", record->number, ";\n");
            else
                globals_ +=
                    cat("static uint8_t W", record->number, "[", size, "] __attribute__((aligned(16), unused));\n");
            break;
        case Item::LocalStorage:
            globals_ += joined("static uint8_t *S", record->number, " __attribute__((unused));\n");
            break;
        case Item::Linkage:
            globals_ += joined("static uint8_t *L", record->number, " __attribute__((unused));\n");
            if (record->anyLength) globals_ += joined("static int64_t N", record->number, ";\n");
            break;
        default:
            break;
        }
    }
    for (Item *index : p.indexNames)
        globals_ += joined("static int64_t X", index->number, " __attribute__((unused)) = 1;\n");
    std::string prefix = cat("p", p.number, "_");
    globals_ += joined("static int32_t ", prefix, "returnCode __attribute__((unused)), ", prefix,
                       "tally __attribute__((unused)), ", prefix, "called __attribute__((unused));\n");
    globals_ += joined("static int16_t ", prefix, "sortReturn __attribute__((unused));\n");
    if (programEndsSort())
        globals_ += joined("static void *", prefix, "sortEnd __attribute__((unused));\nstatic int ", prefix,
                           "sortCells[", p.procedures.size() + 1, "] __attribute__((unused));\n");
    if (p.usesXml) {
        usesXml_ = true;
        globals_ += joined("static KvrXml ", prefix, "xml = KVR_XML(", prefix, "xml);\n");
    }
    if (!p.uses.empty())
        globals_ += joined("static uint8_t ", prefix, "debugItem[56 + KVR_DEBUG_CONTENTS] __attribute__((unused));\n");
    std::time_t now = std::time(nullptr);
    char when[32] = "";
    std::tm local;
    localtime_r(&now, &local);
    std::strftime(when, sizeof when, "%m/%d/%y%H.%M.%S", &local);
    globals_ +=
        cat("static uint8_t ", prefix, "whenCompiled[17] __attribute__((unused)) = ", bytesLiteral(when), ";\n");
    globals_ += joined("static PCB ", prefix, "pcb;\nstatic IPCB ", prefix, "element[1];\nstatic int ", prefix,
                       "body(int entry);\n");
}

void Emitter::program(Program &p)
{
    program_ = &p;
    alphabets(p);
    storage(p);
    if (options_.debugMap) debugMap(p);
    for (size_t u = 0; u < p.uses.size(); u++) {
        if (u == 0)
            globals_ += joined(
                "static void p", p.number,
                "_useRoutine(uint64_t a, uint64_t b, uint64_t entry, uint64_t mode) { (void)a; (void)b; (void)mode; p",
                p.number, "_body((int)entry); }\n");
        globals_ += joined("static const struct { void *routine; uint64_t argument; } p", p.number, "_use", u + 1,
                           " __attribute__((unused)) = {(void *)p", p.number, "_useRoutine, ", u + 1, "};\n");
    }
    fileRecords(p);
    code_.clear();
    std::string functions;
    blocks_.clear();
    insertions_.clear();
    usesVisible_ = false;
    procedures(p);
    if (usesVisible_) visiblePrograms(p);
    functions = std::move(code_);
    code_.clear();
    line(p.at); // what no statement asked for is in the line of the PROGRAM-ID
    initialValues(p);
    functions += code_;
    code_.clear();
    entry(p);
    functions += code_;
    for (Program *inner : p.nested) program(*inner);
    if (functions_.empty())
        functions_ = std::move(functions);
    else
        functions_ += functions;
}

// A line of COBOL may become several of C, and #line counts on from each. So what belongs to one
// #line is joined into one line: a debugger then never shows lines that the source does not have.
static void joinLines(const std::string &text, std::string &out)
{
    for (size_t i = 0; i < text.size();) {
        size_t end = std::min(text.find('\n', i), text.size());
        if (text[i] == '#') {
            if (out.back() == ' ') out.back() = '\n';
            out.append(text, i, end - i);
            out += '\n';
        } else {
            out.append(text, i, end - i);
            out += ' ';
        }
        i = end + 1;
    }
    out += '\n';
}

std::string Emitter::emit()
{
    std::string declarations;
    auto declare = [&](auto &self, Program &p) -> void {
        if (p.parent) {
            std::string parameters;
            for (size_t i = 0; i < p.parameters.size(); i++) parameters += joined(i ? ", " : "", parameterType(p, i));
            declarations += joined("static int64_t kvr_entry_", p.number, "(", parameters.empty() ? "void" : parameters,
                                   ");\n#define kvr_entry_", p.number, " kvr_entry_", p.number, "\n");
        } else {
            std::string parameters;
            for (size_t i = 0; i < p.parameters.size(); i++) parameters += joined(i ? ", " : "", parameterType(p, i));
            // The symbol has the program's name; the C name is our own, for a program may be called
            // FIB or W1.
            declarations +=
                cat("int64_t kvr_entry_", p.number, "(", parameters.empty() ? "void" : parameters, ") __asm__(",
                    bytesLiteral(p.cName), ");\n#define kvr_entry_", p.number, " kvr_entry_", p.number, "\n");
            const std::string &symbol = p.cName;
            if (symbol.size() > 1 && symbol[0] != 'F' && symbol.find_first_not_of("0123456789", 1) == std::string::npos)
                declarations += joined("#define ", symbol, " kvr_", symbol, "\n");
        }
        for (const EntryStatement *entry : p.entryPoints) {
            std::string parameters;
            for (size_t i = 0; i < entry->parameters.size(); i++) parameters += i ? ", uint8_t *" : "uint8_t *";
            declarations += joined("int64_t kvr_entry_", p.number, "_", entry->number, "(",
                                   parameters.empty() ? "void" : parameters, ");\n");
        }
        declarations += joined("static void kvr_cancel_", p.number, "(void) __attribute__((unused));\n");
        for (Program *inner : p.nested) self(self, *inner);
    };
    exceptions_ = asksForExceptions();
    for (Program *p : group_.programs) declare(declare, *p);
    for (Program *p : group_.programs) program(*p);
    std::string out = "/* Made by kvrcob. */\n#include \"kvr2/kvrcob.h\"\n";
    if (reversed_) out += "#include \"kvr2/kvrcob/reversed.h\"\n";
    if (openGiven_) out += "#include \"kvr2/kvrcob/given_file.h\"\n";
    if (deleteFile_) out += "#include \"kvr2/kvrcob/delete_file.h\"\n";
    if (usesXml_) out += "#include \"kvr2/kvrcob/xml.h\"\n";
    if (exceptions_) out += "#include \"kvr2/kvrcob/exceptions.h\"\n";
    if (utilities_) out += "#include \"kvr2/kvrcob/utilities.h\"\n";
    if (utilityNames_) out += "static const KvrUtilityRow kvr_utilities[] = {\n" + utilityRows() + "{0, 0}};\n";
    out += "\n";
    out.reserve(out.size() + declarations.size() + globals_.size() + functions_.size() + 4096);
    ((out += declarations) += '\n') += globals_;
    out += '\n';
    if (options_.readable)
        out += functions_;
    else
        joinLines(functions_, out);
    auto main = std::find_if(group_.programs.begin(), group_.programs.end(), [](Program *p) { return !p->isFunction; });
    if (options_.mainProgram && main != group_.programs.end()) {
        Program *first = *main;
        out += joined("\n#line 1 \"<main>\"\nint main(int argc, char **argv)\n{\n", emits(Do::Main), "(argc, argv, ",
                      options_.check ? 1 : 0, ");\nreturn (int)((int64_t (*)())kvr_entry_", first->number, ")(");
        for (size_t i = 0; i < first->parameters.size(); i++)
            out += joined(i ? ", " : "", emits(Do::MainParameter), "(", i, ")");
        out += ") & 255;\n}\n";
    }
    return out;
}

} // namespace kvrcob
