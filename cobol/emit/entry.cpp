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

// A parameter BY VALUE: the argument itself, or an item with its value.
void Emitter::valueParameter(const Item &record, std::string &sets)
{
    std::string value = cat("a", record.parameter);
    if (!isNumericItem(record) || record.usage == Usage::Native || record.usage == Usage::Index ||
        record.usage == Usage::Double) {
        sets += joined("L", record.number, " = (uint8_t *)&", value, ";\n");
        return;
    }
    // The number arrives as an integer or a double; the item has another form.
    sets +=
        cat("uint8_t value", record.number, "[", record.size, "];\nL", record.number, " = value", record.number, ";\n");
    sets += apart([&] {
        store(record.usage == Usage::Float ? floatNumber(value) : integerNumber(cat("(int64_t)(intptr_t)", value), 18),
              locateItem(record, "", true), false, "");
    });
}

// A record of LINKAGE is where the caller says, until the program returns.
void Emitter::linkageEntry(Program &p, const Item &record, const Item *returned, EntryText &text)
{
    text.saves += joined("uint8_t *saved", record.number, " = L", record.number, ";\n");
    text.restores += joined("L", record.number, " = saved", record.number, ";\n");
    bool passed = record.parameter >= 0;
    if (passed && p.parameters[static_cast<size_t>(record.parameter)].mode == CallStatement::Value)
        valueParameter(record, text.sets);
    else if (passed)
        text.sets += joined("L", record.number, " = a", record.parameter, ";\n");
    else if (&record == returned)
        text.sets += joined("uint8_t returned[", record.storageSize(), "];\nmemset(returned, 0, sizeof returned);\nL",
                            record.number, " = returned;\n");
    if (record.anyLength) {
        std::string n = cat("N", record.number);
        text.saves += joined("int64_t saved", n, " = ", n, ";\n");
        text.sets += joined(n, " = kvr_lengths[", std::max(record.parameter, 0), "];\n");
        text.restores += joined(n, " = saved", n, ";\n");
    }
}

// LOCAL-STORAGE is new in each call: a place among the C function's variables.
void Emitter::localEntry(const Item &record, EntryText &text)
{
    text.saves += joined("uint8_t *saved", record.number, " = S", record.number, ";\n");
    text.sets += joined("S", record.number, " = locals + ", text.localBytes, ";\n");
    text.restores += joined("S", record.number, " = saved", record.number, ";\n");
    text.localBytes += (roomOf(record) + 15) / 16 * 16;
}

// The addresses of EXTERNAL records.
void Emitter::externalRecords(const Program &p, std::string &out)
{
    std::string rows, addresses;
    int count = 0;
    for (const Item *record : p.records) {
        if (!record->external || record->redefines) continue;
        rows += joined("{", record->storageSize(), ", ", bytesLiteral(externalName(*record)), "}, ");
        addresses += joined("E", record->number, " = (uint8_t *)addresses[", count++, "];\n");
    }
    if (count) out += joined("{ ", externalTable(rows, count), addresses, "}\n");
}

std::string externalName(const Item &record)
{
    return wordText(record.externalName ? record.externalName : record.name).substr(0, 31);
}

std::string externalTable(const std::string &rows, int count)
{
    return cat("static const struct { uint32_t count; uint8_t reserved[32]; ZvkExternalRow rows[", count,
               "]; } items = {", count, ", {0}, {", rows, "}};\nvoid *addresses[", count, "];\n", emits(Do::External),
               "(&items.count, addresses);\n");
}

// Where the files' statuses go, and which files share a record area.
void Emitter::fileEntry(Program &p, std::string &out)
{
    for (File *f : p.files) {
        if (f->sortFile || !f->status) continue;
        Item *item = meaning_.resolve(p, *f->status);
        for (const Expr *subscript : f->status->subscripts)
            if (constant(subscript)->kind != ExprKind::Number)
                error(f->status->at, "a subscript of FILE STATUS is a number");
        if (item) out += joined("I", f->number, "status = ", locate(*f->status).address, ";\n");
    }
    // SAME RECORD AREA
    for (size_t i = 0; i < p.files.size(); i++) {
        File *f = p.files[i];
        if (!f->sameArea || f->sortFile) continue;
        for (size_t j = 0; j < i; j++) {
            File *first = p.files[j];
            if (first->sameArea != f->sameArea || first->sortFile) continue;
            out += joined("F", f->number, "->record = F", first->number, "->record;\n");
            break;
        }
    }
}

// The C expression of the value that the program returns: RETURNING's, or RETURN-CODE.
std::string Emitter::returnedValue(const Program &p, const std::string &prefix, std::string &out)
{
    if (p.returning) {
        Loc loc = locate(*p.returning);
        if (loc.good() && isNumericItem(*loc.item)) {
            code_.openBlock();
            Num n = toInt(scaleTo(itemNumber(loc), 0, false));
            out +=
                joined("int64_t returning; { ", code_.takeDeclarations(), "returning = (int64_t)(", n.text, "); }\n");
            return "returning";
        }
    }
    return cat("(int64_t)", prefix, "returnCode");
}

// What CANCEL calls, and the records by which the run time knows the program.
void Emitter::programRecords(const Program &p, const std::string &prefix, const std::string &name, std::string &out)
{
    out += joined("static void kvr_cancel_", p.number, "(void)\n{\nif (", prefix, "element[0].ent == 0) ",
                  emits(Do::Reset), "((int32_t *)", prefix, "element);\n");
    for (const Program *inner : p.nested) out += joined("kvr_cancel_", inner->number, "();\n");
    out += "}\n";
    entryPoints(p, out);
    out += joined("static IPCB ", prefix, "element[1] = {{.entry = (ZvkRoutine)", name, ", .files = ", prefix,
                  "files, .fileCount = ",
                  std::count_if(p.files.begin(), p.files.end(), [](const File *f) { return !f->sortFile; }), "}};\n");
    std::string pcbName = wordText(p.name);
    for (const Program *outer = p.parent; outer; outer = outer->parent) pcbName.insert(0, wordText(outer->name) + ".");
    out += joined("static PCB ", prefix, "pcb = {.version = {5, 1, 1}, .ipcb = ", prefix,
                  "element, .name = ", bytesLiteral(pcbName), ", .nameLength = ", pcbName.size(),
                  ", .flag = ZVK_PCB_FOLD_NAMES, .fibs = ", prefix, "fibs, .yearWindow = ZVK_NO_YEAR_WINDOW};\n");
}

void Emitter::entry(Program &p)
{
    std::string prefix = cat("p", p.number, "_"), name = cat("kvr_entry_", p.number);
    std::string parameters, out;
    for (size_t i = 0; i < p.parameters.size(); i++) parameters += joined(i ? ", " : "", parameterType(p, i), "a", i);
    const Item *returned = p.returning ? meaning_.resolve(p, *p.returning) : nullptr;
    EntryText text;
    for (const Item *record : p.records) {
        if (record->redefines || record->based) continue;
        if (record->section == Item::Linkage)
            linkageEntry(p, *record, returned, text);
        else if (record->section == Item::LocalStorage)
            localEntry(*record, text);
    }

    // Into the program.
    bool outermost = !p.parent;
    out += joined(outermost ? "__attribute__((visibility(\"default\"))) " : "static ", "int64_t ", name, "(",
                  parameters.empty() ? "void" : parameters, ")\n{\n");
    out += joined("volatile int status = 0;\nint outerCalled = ", prefix, "called;\n", text.saves);
    if (text.localBytes) out += joined("uint8_t locals[", text.localBytes, "] __attribute__((aligned(16)));\n");
    out += joined(emits(Do::Enter), "(&", prefix, "pcb);\n", prefix, "called = !((", prefix,
                  "pcb.flag & ZVK_PCB_MAIN) && ", prefix, "element[0].ent == 1);\n");
    externalRecords(p, out);
    out += text.sets;
    entryArguments(p, out);
    fileEntry(p, out);
    if (p.initial)
        out += joined(prefix, "initialize();\n");
    else
        out += joined("if (!(", prefix, "element[0].status & ZVK_IPCB_STATUS_30)) {\n", prefix, "initialize();\n",
                      prefix, "element[0].status |= ZVK_IPCB_STATUS_30;\n}\n");
    if (text.localBytes) out += joined(prefix, "initialize_local();\n");
    out += joined("if (!", prefix, "called) status = sigsetjmp(*(sigjmp_buf *)", emits(Do::JumpBuffer), "(), 1);\n");
    out += joined("if (status == 0) ", prefix, "body(", p.entryPoints.empty() ? "0" : "entered", ");\n");

    // Out of it.
    if (inFile_.exceptions) out += joined(emits(Do::ExceptionsEnd), "();\n");
    if (p.initial) {
        // The end of an initial program is its CANCEL, and that of the programs in it.
        out += joined("if (", prefix, "called) {\n", emits(Do::Reset), "((int32_t *)", prefix, "element);\n");
        for (const Program *inner : p.nested) out += joined("kvr_cancel_", inner->number, "();\n");
        out += "} else ";
    }
    out += joined(emits(Do::Leave), "(&", prefix, "pcb);\n");
    std::string result = returnedValue(p, prefix, out);
    out += joined(text.restores, prefix,
                  "called = outerCalled;\nreturn status ? (status == 255 ? 0 : status) : ", result, ";\n}\n");
    if (outermost && p.cName != std::string(wordText(p.name)))
        out += joined("__asm__(\".globl \\\"", wordText(p.name), "\\\"\\n.set \\\"", wordText(p.name), "\\\", ",
                      p.cName, "\");\n");
    programRecords(p, prefix, name, out);
    put(out);
}

} // namespace kvrcob
