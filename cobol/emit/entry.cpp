// The entry of a program: what a CALL reaches.
//
// It takes the parameters, finds external storage, sets up the first time's values, runs the
// procedures, and gives the return value; with it the records by which the run time knows the
// program, and its CANCEL.
#include "cobol/emit/emitter.h"

#include <algorithm>

namespace kvrcob {

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
        if (record->based) continue;
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
                    std::string stored = std::move(code_);
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
            if (record->anyLength) {
                std::string n = cat("N", record->number);
                saves += cat("int64_t saved", n, " = ", n, ";\n");
                sets += cat(n, " = kvr_lengths[", std::max(record->parameter, 0), "];\n");
                restores += cat(n, " = saved", n, ";\n");
            }
        } else if (record->section == Item::LocalStorage) {
            uint64_t size = roomOf(*record);
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
    out += cat(emits(Do::Enter), "(&", prefix, "pcb);\n", prefix, "called = !((", prefix,
               "pcb.flag & ZVK_PCB_MAIN) && ", prefix, "element[0].ent == 1);\n");
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
                   "];\n", emits(Do::External), "(&items.count, addresses);\n");
        int i = 0;
        for (Item *record : p.records)
            if (record->external && !record->redefines)
                out += cat("E", record->number, " = (uint8_t *)addresses[", i++, "];\n");
        out += "}\n";
    }
    out += sets;
    entryArguments(p, out);
    std::string fileEntry;
    for (File *f : p.files) {
        if (f->sortFile) continue;
        if (f->status) {
            Loc loc;
            program_ = &p;
            Item *item = meaning_.resolve(p, *f->status);
            for (const Expr *subscript : f->status->subscripts)
                if (constant(subscript)->kind != ExprKind::Number)
                    error(f->status->at, "a subscript of FILE STATUS is a number");
            if (item) fileEntry += cat("I", f->number, "status = ", locate(*f->status).address, ";\n");
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
    out += cat("if (!", prefix, "called) status = sigsetjmp(*(sigjmp_buf *)", emits(Do::JumpBuffer), "(), 1);\n");
    out += cat("if (status == 0) ", prefix, "body(", p.entryPoints.empty() ? "0" : "entered", ");\n");
    if (p.initial) {
        // The end of an initial program is its CANCEL, and that of the programs in it.
        out += cat("if (", prefix, "called) {\n", emits(Do::Reset), "((int32_t *)", prefix, "element);\n");
        for (const Program *inner : p.nested) out += cat("kvr_cancel_", inner->number, "();\n");
        out += "} else ";
    }
    out += cat(emits(Do::Leave), "(&", prefix, "pcb);\n");
    std::string result = cat("(int64_t)", prefix, "returnCode");
    if (p.returning) {
        Loc loc = locate(*p.returning);
        if (loc.good() && isNumericItem(*loc.item)) {
            blocks_.push_back(insertions_.size());
            insertions_.push_back({0, Insertion::Text, 0, ""});
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
    out += cat("static void kvr_cancel_", p.number, "(void)\n{\nif (", prefix, "element[0].ent == 0) ",
               emits(Do::Reset), "((int32_t *)", prefix, "element);\n");
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

} // namespace kvrcob
