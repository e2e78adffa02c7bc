// The C file: storage and the records of the run time; the order in which all that belongs to a
// program is emitted.
#include "cobol/emit/emitter.h"

#include <algorithm>
#include <array>
#include <cstring>
#include <ctime>

namespace kvrcob {

// ---- Tools

std::string Emitter::temp(std::string_view type, std::string_view suffix)
{
    std::string name = cat("t", ++inFile_.temps);
    code_.declare(joined(type, " ", name, suffix, "; "));
    return name;
}

std::string Emitter::tempBytes(int64_t size) { return temp("uint8_t", cat("[", size < 1 ? 1 : size, "]")); }

void Emitter::line(Tok at) { line(at, code_.text); }

void Emitter::line(Tok at, std::string &out)
{
    if (!options_.lines) return;
    const Spot &spot = group_.spot(at);
    if (spot.file != inFile_.lineFile) {
        inFile_.lineFile = spot.file;
        inFile_.linePath = bytesLiteral(sources()[spot.file].path);
    }
    out += joined("#line ", spot.line ? spot.line : 1, ' ', inFile_.linePath, '\n');
}

// ---- Statements

void Emitter::block(const Block &b)
{
    for (const Statement *s : b) statement(*s);
}

// What emits the statements of a verb.
struct StatementTable {
    using Emit = void(Emitter &, const Statement &);

    template <class S>
    static const S &as(const Statement &s, void (Emitter::*)(const S &))
    {
        return static_cast<const S &>(s);
    }
    template <auto member>
    static void emit(Emitter &e, const Statement &s)
    {
        (e.*member)(as(s, member));
    }
    static std::array<Emit *, K_count> make();
};

std::array<StatementTable::Emit *, K_count> StatementTable::make()
{
    std::array<Emit *, K_count> of = {};
    of[K_ADD] = of[K_SUBTRACT] = of[K_MULTIPLY] = emit<&Emitter::addStatement>;
    of[K_DIVIDE] = emit<&Emitter::divideStatement>;
    of[K_COMPUTE] = emit<&Emitter::computeStatement>;
    of[K_MOVE] = emit<&Emitter::moveStatement>;
    of[K_INITIALIZE] = emit<&Emitter::initializeStatement>;
    of[K_SET] = emit<&Emitter::setStatement>;
    of[K_ALLOCATE] = of[K_FREE] = emit<&Emitter::allocateStatement>;

    of[K_IF] = emit<&Emitter::ifStatement>;
    of[K_EVALUATE] = emit<&Emitter::evaluateStatement>;
    of[K_PERFORM] = emit<&Emitter::performStatement>;
    of[K_GO] = emit<&Emitter::goStatement>;
    of[K_ALTER] = emit<&Emitter::alterStatement>;
    of[K_EXIT] = of[K_CONTINUE] = of[K_NEXT] = of[K_STOP] = of[K_ENTER] = of[K_GOBACK] = emit<&Emitter::exitStatement>;

    of[K_DISPLAY] = emit<&Emitter::displayStatement>;
    of[K_ACCEPT] = emit<&Emitter::acceptStatement>;
    of[K_CALL] = emit<&Emitter::callStatement>;
    of[K_ENTRY] = emit<&Emitter::entryStatement>;
    of[K_CANCEL] = emit<&Emitter::cancelStatement>;

    of[K_OPEN] = emit<&Emitter::openStatement>;
    of[K_CLOSE] = emit<&Emitter::closeStatement>;
    of[K_READ] = emit<&Emitter::readStatement>;
    of[K_WRITE] = emit<&Emitter::writeStatement>;
    of[K_REWRITE] = emit<&Emitter::rewriteStatement>;
    of[K_DELETE] = emit<&Emitter::deleteStatement>;
    of[K_START] = emit<&Emitter::startStatement>;
    of[K_UNLOCK] = emit<&Emitter::unlockStatement>;
    of[K_SORT] = of[K_MERGE] = emit<&Emitter::sortStatement>;
    of[K_RELEASE] = emit<&Emitter::releaseStatement>;
    of[K_RETURN] = emit<&Emitter::returnStatement>;

    of[K_STRING] = emit<&Emitter::stringStatement>;
    of[K_UNSTRING] = emit<&Emitter::unstringStatement>;
    of[K_INSPECT] = emit<&Emitter::inspectStatement>;
    of[K_PARSE] = emit<&Emitter::xmlParse>;
    of[K_XML] = emit<&Emitter::xmlGenerate>;
    of[K_SEARCH] = emit<&Emitter::searchStatement>;
    return of;
}

void Emitter::statement(const Statement &s)
{
    static const auto table = StatementTable::make();
    line(s.at);
    openBlock();
    Within inner(inStatement_, InStatement());
    inStatement_.at = s.at;
    const std::vector<bool> staleBefore = countersBefore(s);

    if (s.verb < K_count && table[s.verb])
        table[s.verb](*this, s);
    else
        notBuilt(s.at, "the statement " + wordText(s.verb));

    debugNow();
    if (verbOfFiles(s.verb)) leftUse();
    countersAfter(staleBefore);
    closeBlock();
}

std::string Emitter::constantRecord(const char *prefix, const std::string &type, const std::string &value)
{
    std::string &name = inFile_.records[type + value];
    if (name.empty()) {
        name = cat(prefix, ++inFile_.constants);
        globals_ += joined("static const ", type, " ", name, " = ", value, ";\n");
    }
    return name;
}

// ---- Storage

// What a record takes: as much as the longest of those that redefine it.
uint64_t Emitter::roomOf(const Item &record) const
{
    auto found = inProgram_.rooms.find(&record);
    return std::max(static_cast<uint64_t>(record.storageSize()), found == inProgram_.rooms.end() ? 0 : found->second);
}

void Emitter::storage(Program &p)
{
    for (const Item *record : p.records)
        if (record->redefines) {
            uint64_t &room = inProgram_.rooms[record->redefines];
            room = std::max(room, static_cast<uint64_t>(record->storageSize()));
        }
    // A debugger shows items that nothing else looks at.
    const char *kept = options_.debugMap ? " __attribute__((used))" : " __attribute__((unused))";
    for (Item *record : p.records) {
        if (record->redefines) continue;
        uint64_t size = std::max<uint64_t>(roomOf(*record), 1);
        switch (record->section) {
        case Item::WorkingStorage:
            if (record->external)
                globals_ += joined("static uint8_t *E", record->number, kept, ";\n");
            else
                globals_ += joined("static uint8_t W", record->number, "[", size, "] __attribute__((aligned(16)))",
                                   kept, ";\n");
            break;
        case Item::LocalStorage:
            globals_ += joined("static uint8_t *S", record->number, kept, ";\n");
            break;
        case Item::Linkage:
            globals_ += joined("static uint8_t *L", record->number, kept, ";\n");
            if (record->anyLength) globals_ += joined("static int64_t N", record->number, ";\n");
            break;
        default:
            break;
        }
    }
    for (Item *index : p.indexNames) globals_ += joined("static int64_t X", index->number, kept, " = 1;\n");
    std::string prefix = cat("p", p.number, "_");
    globals_ += joined("static int32_t ", prefix, "returnCode __attribute__((unused)), ", prefix,
                       "tally __attribute__((unused)), ", prefix, "called __attribute__((unused));\n");
    globals_ += joined("static int16_t ", prefix, "sortReturn __attribute__((unused));\n");
    if (inFile_.sortReturn)
        globals_ += joined("static void *", prefix, "sortEnd __attribute__((unused));\nstatic int ", prefix,
                           "sortCells[", p.procedures.size() + 1, "] __attribute__((unused));\n");
    if (p.usesXml) {
        inFile_.xml = true;
        globals_ += joined("static KvrXml ", prefix, "xml = KVR_XML(", prefix, "xml);\n");
    }
    if (!p.uses.empty())
        globals_ += joined("static uint8_t ", prefix, "debugItem[56 + KVR_DEBUG_CONTENTS] __attribute__((unused));\n",
                           "static int ", prefix, "debugging __attribute__((unused));\n");
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

// What the library calls for each USE procedure.
void Emitter::useRecords(const Program &p)
{
    if (p.uses.empty()) return;
    useRoutine(p);
    for (size_t u = 1; u <= p.uses.size(); u++)
        globals_ += joined("static const struct { void *routine; uint64_t argument; } p", p.number, "_use", u,
                           " __attribute__((unused)) = {(void *)p", p.number, "_useRoutine, ", u, "};\n");
}

void Emitter::program(Program &p)
{
    program_ = &p;
    inProgram_ = {};
    emitAlphabets(meaning_, p, options_.ebcdic ? &inFile_.ebcdic : nullptr, inFile_.constants, globals_);
    storage(p);
    if (options_.debugMap) globals_ += debugMap(p);
    useRecords(p);
    fileRecords_.emit(p);
    procedures(p);
    if (inProgram_.usesVisible) visiblePrograms(p);
    std::string functions = std::move(code_.text);
    code_ = MarkedCode();
    line(p.at); // what no statement asked for is in the line of the PROGRAM-ID
    initialValues(p);
    entry(p);
    functions += code_.text;
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

// People who compile the C text themselves may ask for warnings; those that tell nothing of C that
// nobody wrote are off.
constexpr const char *kBeginning = R"(/* Made by kvrcob. */
#pragma GCC diagnostic ignored "-Wunused-function"
#pragma GCC diagnostic ignored "-Wunused-variable"
#pragma GCC diagnostic ignored "-Wunused-but-set-variable"
#pragma GCC diagnostic ignored "-Wunused-const-variable"
#pragma GCC diagnostic ignored "-Wcast-function-type"
#ifdef __clang__
#pragma GCC diagnostic ignored "-Wparentheses-equality"
#else
#pragma GCC diagnostic ignored "-Wmaybe-uninitialized"
#endif
#include "kvr2/kvrcob.h"
)";

// What the C functions of a program and of those in it look like from outside. The symbol of an
// outermost one is the program's name; the C name is our own, for a program may be called FIB or
// W1.
void Emitter::declarations(Program &p, std::string &out)
{
    std::string parameters;
    for (size_t i = 0; i < p.parameters.size(); i++) parameters += joined(i ? ", " : "", parameterType(p, i));
    if (parameters.empty()) parameters = "void";
    const std::string entry = cat("kvr_entry_", p.number);
    const std::string &symbol = p.cName;
    out += joined(p.parent ? "static " : "", "int64_t ", entry, "(", parameters, ")");
    if (!p.parent) out += cat(" __asm__(", bytesLiteral(symbol), ")");
    out += joined(";\n#define ", entry, " ", entry, "\n");
    if (!p.parent && symbol.size() > 1 && symbol[0] != 'F' &&
        symbol.find_first_not_of("0123456789", 1) == std::string::npos)
        out += joined("#define ", symbol, " kvr_", symbol, "\n");

    for (const EntryStatement *point : p.entryPoints) {
        std::string addresses;
        for (size_t i = 0; i < point->parameters.size(); i++) addresses += i ? ", uint8_t *" : "uint8_t *";
        out += joined("int64_t ", entry, "_", point->number, "(", addresses.empty() ? "void" : addresses, ") __asm__(",
                      bytesLiteral(wordText(point->name)), ");\n");
    }
    out += joined("static void kvr_cancel_", p.number, "(void) __attribute__((unused));\n");
    for (Program *inner : p.nested) declarations(*inner, out);
}

// The headers of helpers that not all programs need.
std::string Emitter::headers() const
{
    std::string out = kBeginning;
    if (inFile_.reversed) out += "#include \"kvr2/kvrcob/reversed.h\"\n";
    if (inFile_.openGiven) out += "#include \"kvr2/kvrcob/given_file.h\"\n";
    if (inFile_.deleteFile) out += "#include \"kvr2/kvrcob/delete_file.h\"\n";
    if (inFile_.xml) out += "#include \"kvr2/kvrcob/xml.h\"\n";
    if (inFile_.exceptions) out += "#include \"kvr2/kvrcob/exceptions.h\"\n";
    if (inFile_.utilities) out += "#include \"kvr2/kvrcob/utilities.h\"\n";
    if (inFile_.utilityNames) out += "static const KvrUtilityRow kvr_utilities[] = {\n" + utilityRows() + "{0, 0}};\n";
    return out += '\n';
}

// The C main calls the first program that is no function.
void Emitter::mainFunction(std::string &out) const
{
    auto found =
        std::find_if(group_.programs.begin(), group_.programs.end(), [](Program *p) { return !p->isFunction; });
    if (found == group_.programs.end()) return;
    const Program &first = **found;
    const char *weak = options_.main == EmitOptions::MainIfFirst ? "__attribute__((weak)) " : "";
    out +=
        joined("\n#line 1 \"<main>\"\n", weak, "int main(int argc, char **argv)\n{\n", emits(Do::Main), "(argc, argv, ",
               options_.check ? 1 : 0, ");\nreturn (int)((int64_t (*)())kvr_entry_", first.number, ")(");
    for (size_t i = 0; i < first.parameters.size(); i++)
        out += joined(i ? ", " : "", emits(Do::MainParameter), "(", i, ")");
    out += ") & 255;\n}\n";
}

std::string Emitter::emit()
{
    std::string declared;
    inFile_.exceptions = asksForExceptions();
    inFile_.sortReturn = asksForSortReturn();
    for (Program *p : group_.programs) declarations(*p, declared);
    for (Program *p : group_.programs) program(*p);
    std::string out = headers();
    out.reserve(out.size() + declared.size() + globals_.size() + functions_.size() + 4096);
    ((out += declared) += '\n') += globals_;
    out += '\n';
    if (options_.readable)
        out += functions_;
    else
        joinLines(functions_, out);
    if (options_.main != EmitOptions::NoMain) mainFunction(out);
    return out;
}

} // namespace kvrcob
