// The C file: storage, the records of the run time, prologue and epilogue of each program, its
// paragraphs.
#include "cobol/emit/emitter.h"

#include <algorithm>
#include <cstring>
#include <ctime>

namespace kvrcob {

// ---- Tools

std::string Emitter::temp(const char *type, const std::string &suffix)
{
    std::string name = cat("t", ++temps_);
    insertions_[blocks_.back()].text += cat(type, " ", name, suffix, "; ");
    return name;
}

std::string Emitter::tempBytes(int64_t size) { return temp("uint8_t", cat("[", size < 1 ? 1 : size, "]")); }

void Emitter::openBlock()
{
    put("{\n");
    blocks_.push_back(insertions_.size());
    insertions_.push_back({code_.size(), ""});
}

void Emitter::closeBlock()
{
    put("}\n");
    blocks_.pop_back();
}

void Emitter::line(Tok at)
{
    if (!options_.lines) return;
    const Spot &spot = group_.spot(at);
    put(cat("#line ", spot.line ? spot.line : 1, " ", bytesLiteral(sources()[spot.file].path), "\n"));
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

// ---- Initial values

std::string Emitter::defaultBytes(const Item &item)
{
    switch (item.category) {
    case Category::Numeric: {
        Decimal zero;
        zero.digits = "0";
        return numericBytes(item, zero);
    }
    case Category::Index:
    case Category::Pointer:
        return std::string(item.size, '\0');
    default:
        return std::string(item.size, ' ');
    }
}

// The bytes of an item with a VALUE clause.
std::string Emitter::valueBytes(Program &p, const Item &item)
{
    program_ = &p;
    const Expr *value = item.values.empty() ? nullptr : meaning_.constant(p, item.values[0].from);
    if (!value) return defaultBytes(item);
    Decimal d;
    bool numeric = item.elementary() && item.category == Category::Numeric;
    bool isNumber = decimalOf(value, d) || (value->kind != ExprKind::String && meaning_.constantNumber(p, value, d));
    if (numeric && isNumber) return numericBytes(item, d);
    std::string bytes;
    switch (value->kind) {
    case ExprKind::String:
        bytes = value->text;
        break;
    case ExprKind::Number:
        bytes = value->text;
        break;
    case ExprKind::Figurative:
        if (value->op == K_NULL && item.category == Category::Pointer) return std::string(item.size, '\0');
        [[fallthrough]];
    case ExprKind::All:
    case ExprKind::Reference: {
        blocks_.push_back(insertions_.size());
        insertions_.push_back({0, ""});
        Text t = text(value);
        blocks_.pop_back();
        insertions_.pop_back();
        if (t.bytes.empty()) {
            error(value->at, "VALUE needs a literal");
            return defaultBytes(item);
        }
        while (bytes.size() < item.size) bytes += t.bytes;
        break;
    }
    default:
        error(value->at, "VALUE needs a literal");
        return defaultBytes(item);
    }
    if (numeric && value->kind == ExprKind::String) {
        // A literal for a number: its digits, if it has only those.
        if (bytes.find_first_not_of("0123456789") == std::string::npos && !bytes.empty())
            return numericBytes(item, decimalOf(bytes, false));
        if (item.usage != Usage::Display) return defaultBytes(item);
    }
    if (numeric && item.usage != Usage::Display && value->kind != ExprKind::Figurative) return defaultBytes(item);
    if (item.category == Category::NumericEdited && value->kind == ExprKind::Number) {
        // A number for an edited item stands as it is written, right-aligned is nobody's rule;
        // programs use literals.
    }
    // JUSTIFIED does not count here.
    if (bytes.size() > item.size) return bytes.substr(0, item.size);
    return bytes + std::string(item.size - bytes.size(), ' ');
}

void Emitter::initOps(const Item &item, uint64_t offset, bool whole, std::vector<InitOp> &ops)
{
    (void)whole;
    auto add = [&](std::string bytes) {
        if (!ops.empty() && ops.back().count == 0 && ops.back().offset + ops.back().bytes.size() == offset)
            ops.back().bytes += bytes;
        else
            ops.push_back({offset, std::move(bytes)});
    };
    bool table = item.occurs && item.occursMax > 1;
    // The first occurrence of a table stands apart, so that it can be copied.
    if (item.elementary()) {
        std::string bytes = item.hasValue ? valueBytes(*program_, item) : defaultBytes(item);
        if (table && bytes.size() * item.occursMax <= 4096) {
            std::string all;
            for (uint32_t i = 0; i < item.occursMax; i++) all += bytes;
            add(all);
            return;
        }
        add(bytes);
    } else if (item.hasValue) {
        add(valueBytes(*program_, item));
    } else {
        for (const Item *child : item.children)
            if (!child->redefines) initOps(*child, offset + child->offset - item.offset, false, ops);
    }
    if (table) ops.push_back({offset, "", item.size, item.occursMax});
}

static std::string fillOrCopy(Emitter *, const std::string &to, const std::string &bytes, const std::string &literal)
{
    bool same = bytes.find_first_not_of(bytes[0]) == std::string::npos;
    if (same && bytes.size() > 8)
        return cat("memset(", to, ", ", static_cast<int>(static_cast<unsigned char>(bytes[0])), ", ", bytes.size(),
                   ");\n");
    return cat("memcpy(", to, ", ", literal, ", ", bytes.size(), ");\n");
}

void Emitter::initialValues(Program &p)
{
    auto records = [&](Item::Section section) {
        for (Item *record : p.records) {
            if (record->section != section || record->redefines || record->external) continue;
            std::vector<InitOp> ops;
            initOps(*record, 0, true, ops);
            std::string base = baseOf(*record);
            for (const InitOp &op : ops) {
                if (op.count) {
                    put(cat("kvr_replicate(", base, " + ", op.offset, ", ", op.size, ", ", op.count, ");\n"));
                    continue;
                }
                // Long runs of one character are filled; the rest is copied.
                size_t i = 0;
                const std::string &bytes = op.bytes;
                while (i < bytes.size()) {
                    size_t j = i;
                    while (j < bytes.size()) {
                        size_t run = j;
                        while (run < bytes.size() && bytes[run] == bytes[j]) run++;
                        if (run - j >= 64) break;
                        j = run;
                    }
                    if (j > i) {
                        std::string part = bytes.substr(i, j - i);
                        for (size_t k = 0; k < part.size(); k += 16000) {
                            std::string piece = part.substr(k, 16000);
                            put(fillOrCopy(this, cat(base, " + ", op.offset + i + k), piece, bytesLiteral(piece)));
                        }
                    }
                    if (j < bytes.size()) {
                        size_t run = j;
                        while (run < bytes.size() && bytes[run] == bytes[j]) run++;
                        put(cat("memset(", base, " + ", op.offset + j, ", ",
                                static_cast<int>(static_cast<unsigned char>(bytes[j])), ", ", run - j, ");\n"));
                        j = run;
                    }
                    i = j;
                }
            }
        }
    };
    put(cat("static void p", p.number, "_initialize(void)\n{\n"));
    records(Item::WorkingStorage);
    for (Item *index : p.indexNames) put(cat("X", index->number, " = 1;\n"));
    put(cat("p", p.number, "_returnCode = 0;\np", p.number, "_tally = 0;\np", p.number, "_sortReturn = 0;\n"));
    bool altered = false;
    for (const Procedure &procedure : p.procedures) altered |= procedure.altered;
    if (altered) put(cat("memset(p", p.number, "_altered, 0, sizeof p", p.number, "_altered);\n"));
    put("}\n");
    put(cat("static void p", p.number, "_initialize_local(void)\n{\n"));
    records(Item::LocalStorage);
    put("}\n");
}

// ---- Storage

void Emitter::storage(Program &p)
{
    for (Item *record : p.records) {
        if (record->redefines) continue;
        uint64_t size = static_cast<uint64_t>(record->storageSize());
        for (const Item *other : p.records)
            if (other->redefines == record) size = std::max(size, static_cast<uint64_t>(other->storageSize()));
        if (size == 0) size = 1;
        switch (record->section) {
        case Item::WorkingStorage:
            if (record->external)
                globals_ += cat("static uint8_t *E", record->number, ";\n");
            else
                globals_ +=
                    cat("static uint8_t W", record->number, "[", size, "] __attribute__((aligned(16), unused));\n");
            break;
        case Item::LocalStorage:
            globals_ += cat("static uint8_t *S", record->number, " __attribute__((unused));\n");
            break;
        case Item::Linkage:
            globals_ += cat("static uint8_t *L", record->number, " __attribute__((unused));\n");
            break;
        default:
            break;
        }
    }
    for (Item *index : p.indexNames)
        globals_ += cat("static int64_t X", index->number, " __attribute__((unused)) = 1;\n");
    std::string prefix = cat("p", p.number, "_");
    globals_ += cat("static int32_t ", prefix, "returnCode __attribute__((unused)), ", prefix,
                    "tally __attribute__((unused)), ", prefix, "called __attribute__((unused));\n");
    globals_ += cat("static int16_t ", prefix, "sortReturn __attribute__((unused));\n");
    if (!p.uses.empty())
        globals_ += cat("static uint8_t ", prefix, "debugItem[56 + KVR_DEBUG_CONTENTS] __attribute__((unused));\n");
    std::time_t now = std::time(nullptr);
    char when[32] = "";
    std::tm local;
    localtime_r(&now, &local);
    std::strftime(when, sizeof when, "%m/%d/%y%H.%M.%S", &local);
    globals_ +=
        cat("static uint8_t ", prefix, "whenCompiled[17] __attribute__((unused)) = ", bytesLiteral(when), ";\n");
    globals_ += cat("static PCB ", prefix, "pcb;\nstatic IPCB ", prefix, "element[1];\nstatic int ", prefix,
                    "body(int entry);\n");

    // What CALL identifier finds without the program manager.
    globals_ += cat("static const KvrVisible ", prefix, "visible[] __attribute__((unused)) = {");
    std::vector<Program *> visible;
    auto add = [&](Program *other) {
        if (std::find(visible.begin(), visible.end(), other) == visible.end() &&
            visibleProgram(p, other->name) == other)
            visible.push_back(other);
    };
    for (Program *inner : p.nested) add(inner);
    for (Program *outer = p.parent; outer; outer = outer->parent)
        for (Program *inner : outer->nested) add(inner);
    for (Program *other : group_.programs) add(other);
    for (Program *other : visible) {
        globals_ += cat("{", bytesLiteral(wordText(other->name)), ", (KvrProgram)kvr_entry_", other->number,
                        ", kvr_cancel_", other->number, "}, ");
        for (const EntryStatement *entry : other->entryPoints)
            globals_ += cat("{", bytesLiteral(wordText(entry->name)), ", (KvrProgram)kvr_entry_", other->number, "_",
                            entry->number, ", kvr_cancel_", other->number, "}, ");
    }
    globals_ += "{0, 0, 0}};\n";
}

// ---- Procedures

void Emitter::paragraph(size_t index)
{
    Program &p = *program_;
    Procedure &procedure = p.procedures[index];
    procedure_ = index;
    if (procedure.segment >= 50 && index > 0 && p.procedures[index - 1].segment != procedure.segment)
        put(cat("kvr_segment_", p.number, "(", procedure.segment, ");\n"));
    line(procedure.at);
    put(cat("p", index, ": __attribute__((unused));\n"));
    debugProcedure(index);
    for (const Sentence &sentence : procedure.sentences) {
        sentenceEnd_ = label();
        sentenceEndUsed_ = false;
        block(sentence.statements);
        if (sentenceEndUsed_) put(cat(sentenceEnd_, ": ;\n"));
    }
    put(cat("e", index, ": __attribute__((unused));\n"));
    if (debugs_ && !procedure.sentences.empty() && !procedure.sentences.back().statements.empty())
        debugWay("FALL THROUGH", procedure.sentences.back().statements.back()->at);
    insertions_.push_back({code_.size(), cat("@exit", index)});
}

void Emitter::procedures(Program &p)
{
    findWatched(p);
    code_.clear();
    insertions_.clear();
    blocks_.clear();
    firstSite_ = sites_ + 1;
    counters_ = 0;
    alterTargets_.clear();
    openBlock();
    size_t n = 0;
    for (Procedure &procedure : p.procedures) {
        procedure.altered = p.hasAlter && procedure.sentences.size() >= 1 &&
                            procedure.sentences[0].statements.size() == 1 &&
                            procedure.sentences[0].statements[0]->verb == K_GO &&
                            !static_cast<const GoStatement *>(procedure.sentences[0].statements[0])->depending;
        if (procedure.altered)
            globals_ += cat("#define a", p.number, "_", procedure.number, " p", p.number, "_altered[", n++, "]\n");
    }
    if (n) {
        globals_ += cat("static void *p", p.number, "_altered[", n, "];\nstatic void *const p", p.number, "_unaltered[",
                        n, "];\nstatic const uint8_t p", p.number, "_segments[", n, "] = {");
        for (const Procedure &procedure : p.procedures)
            if (procedure.altered) globals_ += cat(procedure.segment, ",");
        globals_ += "};\n";
        globals_ += cat("#define kvr_segment_", p.number, "(segment) _zvkcRfshUncond((segment), ", n, ", p", p.number,
                        "_altered, p", p.number, "_unaltered, p", p.number, "_segments)\n");
    } else {
        globals_ += cat("#define kvr_segment_", p.number, "(segment) ((void)0)\n");
    }
    entryCases_.clear();
    // USE procedures are entered from the library: each by a number of its own.
    std::string entries;
    for (size_t i = 0; i < p.uses.size(); i++) {
        size_t end = p.uses[i].procedure;
        while (end + 1 < p.procedures.size() && !p.procedures[end + 1].isSection &&
               p.procedures[end + 1].section == static_cast<int>(p.uses[i].procedure))
            end++;
        uint32_t site = ++sites_;
        p.procedures[end].returns.push_back(site);
        entries += cat("case ", i + 1, ": x[", end, "] = ", site, ";",
                       debugs_ ? cat(" way = \"USE PROCEDURE\"; wayLine = ", group_.spot(p.uses[i].at).line, ";") : "",
                       " goto p", p.uses[i].procedure, ";\n");
        insertions_.push_back({code_.size(), ""});
        p.procedures[end].returns.back() = site;
        useReturns_ += cat("r", site, ": goto leave;\n");
    }
    for (size_t i = 0; i < p.procedures.size(); i++) {
        if (i == p.firstProcedure && i > 0) put("main_procedures: ;\n");
        paragraph(i);
        if (i + 1 == p.firstProcedure) put("goto leave;\n"); // declaratives do not fall into what comes after them
    }
    if (p.firstProcedure == p.procedures.size() && p.firstProcedure > 0) put("main_procedures: ;\n");
    put("goto leave;\n");
    put(useReturns_);
    useReturns_.clear();
    put("leave: ;\n");
    closeBlock();

    // Exits and altered GO TOs, now that all of them are known.
    std::stable_sort(insertions_.begin(), insertions_.end(),
                     [](const Insertion &a, const Insertion &b) { return a.at < b.at; });
    std::string out;
    out.reserve(code_.size() + code_.size() / 4);
    size_t from = 0;
    std::string cells;
    for (const Insertion &insertion : insertions_) {
        out.append(code_, from, insertion.at - from);
        from = insertion.at;
        if (insertion.text.rfind("@exit", 0) == 0) {
            size_t index = static_cast<size_t>(std::atoi(insertion.text.c_str() + 5));
            const Procedure &procedure = p.procedures[index];
            if (procedure.returns.empty()) continue;
            out += cat("switch (x[", index, "]) {");
            for (uint32_t site : procedure.returns) out += cat(" case ", site, ": goto r", site, ";");
            out += " }\n";
        } else if (insertion.text.rfind("@alter", 0) == 0) {
            size_t index = static_cast<size_t>(std::atoi(insertion.text.c_str() + 6));
            for (size_t target : alterTargets_[index]) out += cat("case ", target + 1, ": goto p", target, ";\n");
        } else {
            out += insertion.text;
        }
    }
    out.append(code_, from, std::string::npos);
    // In memory, and not in as many variables: those would be live everywhere, and the C compiler
    // would take its time.
    size_t saved = sites_ + 1 - firstSite_;
    cells = cat("int x[", p.procedures.size() + 1, "], s[", saved + 1, "];\nint64_t n[", counters_ + 1,
                "];\nKVR_CELLS(x);\nKVR_CELLS(s);\nKVR_CELLS(n);\n");
    if (debugs_)
        cells += cat("const char *way = \"START PROGRAM\";\nint wayLine = ", group_.spot(p.procedureAt).line, ";\n");
    debugs_ = false;
    code_ = cat("static int p", p.number, "_body(int entry)\n{\n", cells, "switch (entry) { default: break;\n", entries,
                entryCases_, "}\n", p.firstProcedure > 0 ? "goto main_procedures;\n" : "", out, "return 0;\n}\n");
    insertions_.clear();
}

// ---- Entry

// The C type of a parameter: an address, or what a value of the item's usage travels as.
std::string Emitter::parameterType(Program &p, size_t index)
{
    const CallStatement::Argument &parameter = p.parameters[index];
    if (parameter.mode != CallStatement::Value || !parameter.value || parameter.value->kind != ExprKind::Reference)
        return "uint8_t *";
    const Item *item = meaning_.resolve(p, *parameter.value->ref, true);
    return item && (item->usage == Usage::Float || item->usage == Usage::Double) ? "double " : "uint8_t *";
}

void Emitter::entry(Program &p)
{
    std::string prefix = cat("p", p.number, "_");
    std::string out;
    // Parameters: fields of PROCEDURE DIVISION USING.
    std::string parameters, saves, sets, restores;
    for (size_t i = 0; i < p.parameters.size(); i++) parameters += cat(i ? ", " : "", parameterType(p, i), "a", i);
    const Item *returned = p.returning ? meaning_.resolve(p, *p.returning) : nullptr;
    size_t localBytes = 0;
    for (Item *record : p.records) {
        if (record->redefines) continue;
        if (record->section == Item::Linkage) {
            saves += cat("uint8_t *saved", record->number, " = L", record->number, ";\n");
            restores += cat("L", record->number, " = saved", record->number, ";\n");
            if (record->parameter >= 0 &&
                p.parameters[static_cast<size_t>(record->parameter)].mode == CallStatement::Value) {
                std::string value = cat("a", record->parameter);
                if (!isNumericItem(*record) || record->usage == Usage::Native || record->usage == Usage::Index ||
                    record->usage == Usage::Double) {
                    sets += cat("L", record->number, " = (uint8_t *)&", value, ";\n");
                } else {
                    // The number arrives as an integer or a double; the item has another form.
                    sets += cat("uint8_t value", record->number, "[", record->size, "];\nL", record->number, " = value",
                                record->number, ";\n");
                    std::string before;
                    before.swap(code_);
                    openBlock();
                    store(record->usage == Usage::Float ? floatNumber(value)
                                                        : integerNumber(cat("(int64_t)(intptr_t)", value), 18),
                          locateItem(*record, "", true), false, "");
                    std::string stored = code_.substr(2);
                    sets += cat("{ ", insertions_[blocks_.back()].text, stored, "}\n");
                    insertions_.pop_back();
                    blocks_.pop_back();
                    code_.swap(before);
                }
            } else if (record == returned && record->parameter < 0)
                sets += cat("uint8_t returned[", record->storageSize(), "];\nmemset(returned, 0, sizeof returned);\nL",
                            record->number, " = returned;\n");
            else if (record->parameter >= 0)
                sets += cat("L", record->number, " = a", record->parameter, ";\n");
        } else if (record->section == Item::LocalStorage) {
            uint64_t size = static_cast<uint64_t>(record->storageSize());
            for (const Item *other : p.records)
                if (other->redefines == record) size = std::max(size, static_cast<uint64_t>(other->storageSize()));
            saves += cat("uint8_t *saved", record->number, " = S", record->number, ";\n");
            sets += cat("S", record->number, " = locals + ", localBytes, ";\n");
            restores += cat("S", record->number, " = saved", record->number, ";\n");
            localBytes += (size + 15) / 16 * 16;
        }
    }
    bool outermost = !p.parent;
    std::string name = cat("kvr_entry_", p.number);
    out += cat(outermost ? "__attribute__((visibility(\"default\"))) " : "static ", "int64_t ", name, "(",
               parameters.empty() ? "void" : parameters, ")\n{\n");
    out += cat("volatile int status = 0;\nint outerCalled = ", prefix, "called;\n", saves);
    if (localBytes) out += cat("uint8_t locals[", localBytes, "] __attribute__((aligned(16)));\n");
    out += cat("_zvkPgmInit(&", prefix, "pcb);\n", prefix, "called = !((", prefix, "pcb.flag & ZVK_PCB_MAIN) && ",
               prefix, "element[0].ent == 1);\n");
    std::string externals;
    int externalCount = 0;
    for (Item *record : p.records)
        if (record->external && !record->redefines) {
            std::string cobolName = wordText(record->externalName ? record->externalName : record->name).substr(0, 31);
            externals += cat("{", record->storageSize(), ", ", bytesLiteral(cobolName), "}, ");
            externalCount++;
        }
    if (externalCount) {
        out += cat("{ static const struct { uint32_t count; uint8_t reserved[32]; ZvkExternalRow rows[", externalCount,
                   "]; } items = {", externalCount, ", {0}, {", externals, "}};\nvoid *addresses[", externalCount,
                   "];\n_zvkExtVarInit(&items.count, addresses);\n");
        int i = 0;
        for (Item *record : p.records)
            if (record->external && !record->redefines)
                out += cat("E", record->number, " = (uint8_t *)addresses[", i++, "];\n");
        out += "}\n";
    }
    out += sets;
    size_t most = 0;
    for (const EntryStatement *entry : p.entryPoints) most = std::max(most, entry->parameters.size());
    if (!p.entryPoints.empty()) {
        globals_ += cat("static int ", prefix, "entry;\nstatic uint8_t *", prefix, "entryArguments[", most + 1, "];\n");
        out += cat("int entered = ", prefix, "entry ? ", p.uses.size(), " + ", prefix, "entry : 0;\nswitch (", prefix,
                   "entry) {\n");
        for (const EntryStatement *entry : p.entryPoints) {
            out += cat("case ", entry->number, ":\n");
            for (size_t i = 0; i < entry->parameters.size(); i++) {
                const Expr *e = entry->parameters[i].value;
                const Item *item = e->kind == ExprKind::Reference ? meaning_.resolve(p, *e->ref, true) : nullptr;
                if (item) out += cat("L", item->number, " = ", prefix, "entryArguments[", i, "];\n");
            }
            out += "break;\n";
        }
        out += cat("}\n", prefix, "entry = 0;\n");
    }
    std::string fileEntry;
    for (File *f : p.files) {
        if (f->sortFile) continue;
        if (f->status) {
            Loc loc;
            program_ = &p;
            Item *item = meaning_.resolve(p, *f->status);
            if (item) fileEntry += cat("I", f->number, "status = ", locateItem(*item).address, ";\n");
        }
    }
    // SAME RECORD AREA
    for (size_t i = 0; i < p.files.size(); i++) {
        File *f = p.files[i];
        if (!f->sameArea || f->sortFile) continue;
        for (size_t j = 0; j < i; j++) {
            File *first = p.files[j];
            if (first->sameArea != f->sameArea || first->sortFile) continue;
            fileEntry += cat("F", f->number, "->record = F", first->number, "->record;\n");
            break;
        }
    }
    out += fileEntry;
    if (p.initial)
        out += cat(prefix, "initialize();\n");
    else
        out += cat("if (!(", prefix, "element[0].status & ZVK_IPCB_STATUS_30)) {\n", prefix, "initialize();\n", prefix,
                   "element[0].status |= ZVK_IPCB_STATUS_30;\n}\n");
    if (localBytes) out += cat(prefix, "initialize_local();\n");
    out += cat("if (!", prefix, "called) status = sigsetjmp(*(sigjmp_buf *)_zvkGetJmpBuffer(), 1);\n");
    out += cat("if (status == 0) ", prefix, "body(", p.entryPoints.empty() ? "0" : "entered", ");\n");
    if (p.initial) out += cat("if (", prefix, "called) _zvkCloseReset((int32_t *)", prefix, "element);\nelse ");
    if (outermost || true) out += cat("_zvkPgmTerm(&", prefix, "pcb);\n");
    std::string result = cat("(int64_t)", prefix, "returnCode");
    if (p.returning) {
        Loc loc = locate(*p.returning);
        if (loc.good() && isNumericItem(*loc.item)) {
            blocks_.push_back(insertions_.size());
            insertions_.push_back({0, ""});
            Num n = toInt(scaleTo(itemNumber(loc), 0, false));
            out += cat("int64_t returning; { ", insertions_.back().text, "returning = (int64_t)(", n.text, "); }\n");
            result = "returning";
            insertions_.pop_back();
            blocks_.pop_back();
        }
    }
    out += restores;
    out += cat(prefix, "called = outerCalled;\n");
    out += cat("return status ? (status == 255 ? 0 : status) : ", result, ";\n}\n");
    if (outermost && p.cName != std::string(wordText(p.name)))
        out += cat("__asm__(\".globl \\\"", wordText(p.name), "\\\"\\n.set \\\"", wordText(p.name), "\\\", ", p.cName,
                   "\");\n");
    out += cat("static void kvr_cancel_", p.number, "(void)\n{\nif (", prefix,
               "element[0].ent == 0) _zvkCloseReset((int32_t *)", prefix, "element);\n");
    for (Program *inner : p.nested) out += cat("kvr_cancel_", inner->number, "();\n");
    out += "}\n";
    entryPoints(p, out);
    // The records.
    out += cat("static IPCB ", prefix, "element[1] = {{.entry = (ZvkRoutine)", name, ", .files = ", prefix,
               "files, .fileCount = ",
               std::count_if(p.files.begin(), p.files.end(), [](const File *f) { return !f->sortFile; }), "}};\n");
    std::string pcbName = wordText(p.name);
    for (Program *outer = p.parent; outer; outer = outer->parent) pcbName.insert(0, wordText(outer->name) + ".");
    out += cat("static PCB ", prefix, "pcb = {.version = {5, 1, 1}, .ipcb = ", prefix,
               "element, .name = ", bytesLiteral(pcbName), ", .nameLength = ", pcbName.size(),
               ", .flag = ZVK_PCB_FOLD_NAMES, .fibs = ", prefix, "fibs, .yearWindow = ZVK_NO_YEAR_WINDOW};\n");
    code_ += out;
}

void Emitter::program(Program &p)
{
    program_ = &p;
    alphabets(p);
    storage(p);
    if (options_.debugMap) debugMap(p);
    for (size_t u = 0; u < p.uses.size(); u++) {
        if (u == 0)
            globals_ += cat(
                "static void p", p.number,
                "_useRoutine(uint64_t a, uint64_t b, uint64_t entry, uint64_t mode) { (void)a; (void)b; (void)mode; p",
                p.number, "_body((int)entry); }\n");
        globals_ += cat("static const struct { void *routine; uint64_t argument; } p", p.number, "_use", u + 1,
                        " __attribute__((unused)) = {(void *)p", p.number, "_useRoutine, ", u + 1, "};\n");
    }
    fileRecords(p);
    code_.clear();
    std::string functions;
    blocks_.clear();
    insertions_.clear();
    procedures(p);
    functions += code_;
    code_.clear();
    line(p.at); // what no statement asked for is in the line of the PROGRAM-ID
    initialValues(p);
    functions += code_;
    code_.clear();
    entry(p);
    functions += code_;
    for (Program *inner : p.nested) program(*inner);
    functions_ += functions;
}

// A line of COBOL may become several of C, and #line counts on from each. So what belongs to one
// #line is joined into one line: a debugger then never shows lines that the source does not have.
static std::string joinLines(const std::string &text)
{
    std::string out;
    out.reserve(text.size());
    for (size_t i = 0; i < text.size(); i++) {
        bool directive = i == 0 || text[i - 1] == '\n' ? text[i] == '#' : false;
        if (directive) {
            if (!out.empty() && out.back() == ' ') out.back() = '\n';
            size_t end = std::min(text.find('\n', i), text.size() - 1);
            out.append(text, i, end - i + 1);
            i = end;
        } else {
            out += text[i] == '\n' ? ' ' : text[i];
        }
    }
    return out;
}

std::string Emitter::emit()
{
    std::string declarations;
    auto declare = [&](auto &self, Program &p) -> void {
        if (p.parent) {
            std::string parameters;
            for (size_t i = 0; i < p.parameters.size(); i++) parameters += cat(i ? ", " : "", parameterType(p, i));
            declarations += cat("static int64_t kvr_entry_", p.number, "(", parameters.empty() ? "void" : parameters,
                                ");\n#define kvr_entry_", p.number, " kvr_entry_", p.number, "\n");
        } else {
            std::string parameters;
            for (size_t i = 0; i < p.parameters.size(); i++) parameters += cat(i ? ", " : "", parameterType(p, i));
            // The symbol has the program's name; the C name is our own, for a program may be called
            // FIB or W1.
            declarations +=
                cat("int64_t kvr_entry_", p.number, "(", parameters.empty() ? "void" : parameters, ") __asm__(",
                    bytesLiteral(p.cName), ");\n#define kvr_entry_", p.number, " kvr_entry_", p.number, "\n");
            const std::string &symbol = p.cName;
            if (symbol.size() > 1 && symbol[0] != 'F' && symbol.find_first_not_of("0123456789", 1) == std::string::npos)
                declarations += cat("#define ", symbol, " kvr_", symbol, "\n");
        }
        for (const EntryStatement *entry : p.entryPoints) {
            std::string parameters;
            for (size_t i = 0; i < entry->parameters.size(); i++) parameters += i ? ", uint8_t *" : "uint8_t *";
            declarations += cat("int64_t kvr_entry_", p.number, "_", entry->number, "(",
                                parameters.empty() ? "void" : parameters, ");\n");
        }
        declarations += cat("static void kvr_cancel_", p.number, "(void) __attribute__((unused));\n");
        for (Program *inner : p.nested) self(self, *inner);
    };
    for (Program *p : group_.programs) declare(declare, *p);
    for (Program *p : group_.programs) program(*p);
    std::string out = "/* Made by kvrcob. */\n#include \"kvr2/kvrcob.h\"\n";
    if (reversed_) out += "#include \"kvr2/kvrcob/reversed.h\"\n";
    out += "\n";
    out += declarations + "\n" + globals_ + "\n" + (options_.readable ? functions_ : joinLines(functions_) + "\n");
    if (options_.mainProgram && !group_.programs.empty()) {
        Program *first = group_.programs[0];
        out += cat("\n#line 1 \"<main>\"\nint main(int argc, char **argv)\n{\nkvr_main(argc, argv, ",
                   options_.check ? 1 : 0, ");\nreturn (int)((int64_t (*)())kvr_entry_", first->number, ")(");
        for (size_t i = 0; i < first->parameters.size(); i++) out += cat(i ? ", " : "", "kvr_parameter(", i, ")");
        out += ") & 255;\n}\n";
    }
    return out;
}

} // namespace kvrcob
