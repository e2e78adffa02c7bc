// CALL, CANCEL.
//
// A program that the source contains and that is visible here is called directly. Any other is
// looked for among the symbols of the running program, and then by the library's program manager
// along COBPATH. Arguments BY REFERENCE are addresses, BY CONTENT addresses of copies, BY VALUE
// integers.
#include "cobol/emit/emitter.h"

namespace kvrcob {

// The program of this source that a CALL in `from` reaches by a name.
// COMMON programs of those around it; a program's own siblings only if they are COMMON.
static bool isVisible(const Program &from, const Program &inner)
{
    return inner.common || (&inner == &from && inner.recursive);
}

Program *Emitter::visibleProgram(Program &from, Word name)
{
    for (Program *inner : from.nested)
        if (inner->name == name) return inner;
    for (Program *outer = from.parent; outer; outer = outer->parent)
        for (Program *inner : outer->nested)
            if (inner->name == name && isVisible(from, *inner)) return inner;
    for (Program *p : group_.programs)
        if (p->name == name) return p;
    return nullptr;
}

// What CALL identifier finds without the program manager, in the order in which names hide each
// other. Programs that contain none and are in none see the same ones.
void Emitter::visiblePrograms(Program &p)
{
    const bool alone = p.nested.empty() && !p.parent;
    std::string prefix = cat("p", p.number, "_");
    if (alone) globals_ += joined("#define ", prefix, "visible group_visible\n");
    if (alone && inFile_.groupVisible) return;
    inFile_.groupVisible |= alone;
    globals_ += joined("static const KvrVisible ", alone ? "group_" : prefix, "visible[] = {");
    std::set<Word> names;
    auto add = [&](const Program *other) {
        if (!names.insert(other->name).second) return;
        globals_ += joined("{", bytesLiteral(wordText(other->name)), ", (KvrProgram)kvr_entry_", other->number,
                           ", kvr_cancel_", other->number, "}, ");
        for (const EntryStatement *entry : other->entryPoints)
            globals_ += joined("{", bytesLiteral(wordText(entry->name)), ", (KvrProgram)kvr_entry_", other->number, "_",
                               entry->number, ", kvr_cancel_", other->number, "}, ");
    };
    for (const Program *inner : p.nested) add(inner);
    for (const Program *outer = p.parent; outer; outer = outer->parent)
        for (const Program *inner : outer->nested)
            if (isVisible(p, *inner)) add(inner);
    for (const Program *other : group_.programs) add(other);
    globals_ += "{0, 0, 0}};\n";
}

// A utility gets, besides its arguments, a table of where they are, how long they are and what
// number they hold.
void Emitter::utilityArguments(const CallStatement &s)
{
    size_t n = 0;
    for (const CallStatement::Argument &argument : s.arguments) {
        const Expr *e = constant(argument.value);
        std::string address = "0", size = "-1", value = "0";
        if (n == 8 || e->kind == ExprKind::Omitted) break;
        const bool number = isNumericExpr(e);
        if (number) value = integer(e);
        if (argument.mode != CallStatement::Value && e->kind == ExprKind::Reference) {
            Loc loc = locate(*e->ref);
            address = loc.address;
            size = loc.length;
        } else if (argument.mode != CallStatement::Value && !number) {
            Text t = text(e);
            if (!t.good) return;
            address = t.address;
            size = t.length;
        }
        put("kvr_arguments[", n++, "] = (KvrArgument){(uint8_t *)", address, ", ", size, ", ", value, ", ",
            number ? 1 : 0, "};\n");
    }
    put("kvr_argument_count = ", n, ";\n");
    inFile_.utilities = true;
}

// An argument BY VALUE: an integer, a double or an address; empty: an error was told.
std::string Emitter::valueArgument(const Expr *e)
{
    if (e->kind == ExprKind::Reference) {
        Loc loc = locate(*e->ref);
        if (!loc.good()) return "";
        if (loc.item->category == Category::Pointer) return cat(emits(Do::Load, Of::Pointer), "(", loc.address, ")");
        if (loc.item->usage == Usage::Double || loc.item->usage == Usage::Float) return itemNumber(loc).text;
        if (isNumericItem(*loc.item) && !loc.refmod) return integer(e);
        if (loc.fixed == 1) return cat("(int64_t)*", loc.address);
    } else if (e->kind == ExprKind::String) {
        if (e->text.size() <= 1)
            return cat("(int64_t)", static_cast<int>(static_cast<unsigned char>(e->text.empty() ? 0 : e->text[0])));
    } else {
        return e->kind == ExprKind::Figurative && e->op == K_NULL ? "(int64_t)0" : integer(e);
    }
    notBuilt(e->at, "BY VALUE of more than one character");
    return "";
}

// An item BY REFERENCE, or a copy of it.
std::string Emitter::itemArgument(const Expr *e, bool content, std::string &length)
{
    Item *item = meaning_.resolve(*program_, *e->ref, true);
    if (!item && e->ref->names.size() == 1)
        for (File *f : program_->files)
            if (f->name == e->ref->names[0]) {
                notBuilt(e->at, "a file as an argument of CALL");
                return "";
            }
    Loc loc = locate(*e->ref);
    length = loc.length;
    if (!loc.good() || !content) return loc.address;
    if (loc.fixed < 0 || loc.fixed > 65536)
        return cat(emits(Do::Content, Of::Text), "(__builtin_alloca((size_t)", loc.length, "), ", loc.address, ", ",
                   loc.length, ")");
    std::string copy = tempBytes(loc.fixed ? loc.fixed : 1);
    return cat("memcpy(", copy, ", ", loc.address, ", ", loc.fixed, ")");
}

// What is passed for an argument; empty: an error was told. `length` becomes how long it is.
std::string Emitter::callArgument(const CallStatement::Argument &argument, std::string &length)
{
    const Expr *e = constant(argument.value);
    if (e->kind == ExprKind::Omitted) return "(uint8_t *)0";
    if (argument.mode == CallStatement::Value) return valueArgument(e);
    if (e->kind == ExprKind::Reference) return itemArgument(e, argument.mode == CallStatement::Content, length);
    if (e->kind == ExprKind::AddressOf) {
        std::string t = temp("uint8_t *");
        length = "8";
        return cat("(", t, " = ", locate(*e->ref).address, ", (uint8_t *)&", t, ")");
    }
    if (isNumericExpr(e)) {
        // A number: an integer as a binary item of 4 bytes.
        std::string t = temp("int32_t");
        length = "4";
        return cat("(", t, " = (int32_t)", integer(e), ", (uint8_t *)&", t, ")");
    }
    Text t = text(e);
    if (!t.good) return "";
    length = t.length;
    std::string copy = tempBytes((t.fixed > 0 ? t.fixed : 256) + 1);
    return cat(emits(Do::Content, Of::Text), "(", copy, ", ", t.address, ", ", t.length, ")");
}

// Whether a program wants to know how long an argument is; one that is not known now may.
bool Emitter::wantsLength(Program *known, size_t argument)
{
    if (!known) return argument < 64; // the room of kvr_lengths
    if (argument >= known->parameters.size()) return false;
    const Expr *formal = known->parameters[argument].value;
    const Item *item =
        formal && formal->kind == ExprKind::Reference ? meaning_.resolve(*known, *formal->ref, true) : nullptr;
    return item && item->anyLength;
}

// Finds a program that is not known now; `routine` is its address then, or null. False: an error
// was told.
bool Emitter::findRoutine(const CallStatement &s, const Expr *target, const std::string &routine)
{
    bool phrases = s.exception.has || s.exception.hasNot;
    Text name = text(target, true);
    if (!name.good) return false;
    if (target->kind == ExprKind::Reference) {
        Loc loc = locate(*target->ref);
        if (loc.good() && loc.item->category == Category::Pointer) {
            put(routine, " = (KvrProgram)(intptr_t)", emits(Do::Load, Of::Pointer), "(", loc.address, ");\n");
            return true;
        }
    }
    const std::string called = target->kind == ExprKind::String ? wordText(internWord(target->text)) : "";
    if (const char *utility = emitsUtility(called)) {
        utilityArguments(s);
        put(routine, " = (KvrProgram)", emits(Do::Utility), "(", bytesLiteral(called), ", (KvrUtility)", utility,
            ");\n");
    } else if (!name.address.empty() && target->kind == ExprKind::Reference) {
        // The item may name a utility, which needs to know more of its arguments.
        put(routine, " = (KvrProgram)", emits(Do::UtilityNamed), "(", name.address, ", ", name.length, ", ",
            visibleTable(), ", kvr_utilities);\nif (", routine, ") {\n");
        utilityArguments(s);
        inFile_.utilityNames = true;
        put("} else {\n");
        put(routine, " = ", findProgram(target, phrases), ";\n}\n");
    } else if (!name.address.empty()) {
        put(routine, " = ", findProgram(target, phrases), ";\n");
    }
    return true;
}

// The call, with its value in RETURNING's item.
void Emitter::callReturning(const CallStatement &s, const std::string &routine, const std::string &arguments,
                            bool direct)
{
    Loc loc = locate(*s.returning, true);
    if (!loc.good()) return;
    if (loc.item->category == Category::Pointer) {
        put(emits(Do::Store, Of::Pointer, Of::Integer), "(", loc.address, ", (int64_t)((uint8_t *(*)())", routine, ")(",
            arguments, "));\n");
    } else if (isNumericItem(*loc.item)) {
        std::string t = temp("int64_t");
        // A C function may return an int, and the upper half of the register is anything then.
        bool wide = direct || loc.item->size == 8 || loc.item->picture.digits > 9;
        put(t, " = ((", wide ? "int64_t" : "int", " (*)())", routine, ")(", arguments, ");\n");
        store(integerNumber(t, wide ? 18 : 10), loc, false, "");
    } else {
        error(s.returning->at, "RETURNING needs a numeric item or a pointer");
    }
}

void Emitter::callStatement(const CallStatement &s)
{
    const Expr *target = constant(s.program);
    Program *known = target->kind == ExprKind::String ? visibleProgram(*program_, internWord(target->text)) : nullptr;
    std::string arguments, lengths;
    for (size_t i = 0; i < s.arguments.size(); i++) {
        std::string length = "0", passed = callArgument(s.arguments[i], length);
        if (passed.empty()) return;
        arguments += joined(i ? ", " : "", passed);
        if (wantsLength(known, i)) lengths += joined("kvr_lengths[", i, "] = ", length, ";\n");
    }

    std::string routine = known ? cat("((int64_t (*)())kvr_entry_", known->number, ")") : temp("KvrProgram");
    if (!known && !findRoutine(s, target, routine)) return;
    bool enclosed = !known || s.exception.hasNot || s.exception.has;
    if (enclosed) put(known ? "{\n" : cat("if (", routine, ") {\n"));
    put(lengths);
    if (s.returning)
        callReturning(s, routine, arguments, known);
    else
        put("p", program_->number, "_returnCode = (int32_t)", routine, "(", arguments, ");\n");
    if (s.exception.hasNot) block(s.exception.onNot);
    if (enclosed) put("}\n");
    if (!known && s.exception.has) {
        put("else {\n");
        raise("1", "\"EC-PROGRAM-NOT-FOUND\"");
        block(s.exception.on);
        put("}\n");
    }
}

// The C name of the table for a CALL of an item.
std::string Emitter::visibleTable()
{
    inProgram_.usesVisible = true;
    return cat("p", program_->number, "_visible");
}

// The address of the program that a name means at this moment, or null.
std::string Emitter::findProgram(const Expr *name, bool exception)
{
    Text t = text(name, true);
    if (!t.good) return "0";
    return cat(emits(Do::Call, Of::Text), "(", t.address, ", ", t.length, ", &p", program_->number, "_pcb, ",
               visibleTable(), ", ", exception ? 1 : 0, ")");
}

// ENTRY: a further way into the program's function. Control that comes from above passes by.
void Emitter::entryStatement(const EntryStatement &s)
{
    inProgram_.entryCases += joined("case ", program_->uses.size() + s.number, ": goto entry", s.number, ";\n");
    inProgram_.flow.entered[procedure_] = true;
    put("entry", s.number, ": __attribute__((unused));\n");
}

// In the program's function: by which ENTRY it was entered, and that one's arguments.
void Emitter::entryArguments(Program &p, std::string &out)
{
    if (p.entryPoints.empty()) return;
    std::string prefix = cat("p", p.number, "_");
    size_t most = 0;
    for (const EntryStatement *entry : p.entryPoints) most = std::max(most, entry->parameters.size());
    globals_ += joined("static int ", prefix, "entry;\nstatic uint8_t *", prefix, "entryArguments[", most + 1, "];\n");
    out += joined("uint8_t *entryValues[", most + 1, "];\nmemcpy(entryValues, ", prefix,
                  "entryArguments, sizeof entryValues);\n");
    out += joined("int entered = ", prefix, "entry ? ", p.uses.size(), " + ", prefix, "entry : 0;\nswitch (", prefix,
                  "entry) {\n");
    for (const EntryStatement *entry : p.entryPoints) {
        out += joined("case ", entry->number, ":\n");
        for (size_t i = 0; i < entry->parameters.size(); i++) {
            const Expr *e = entry->parameters[i].value;
            const Item *item = e->kind == ExprKind::Reference ? meaning_.resolve(p, *e->ref, true) : nullptr;
            const bool byValue = entry->parameters[i].mode == CallStatement::Value;
            if (item) out += joined("L", item->number, " = ", byValue ? "(uint8_t *)&" : "", "entryValues[", i, "];\n");
        }
        out += "break;\n";
    }
    out += joined("}\n", prefix, "entry = 0;\n");
}

// The functions of the ENTRY statements: each leaves its number and arguments for the program's own
// function, which does all that an entry into the program does.
void Emitter::entryPoints(const Program &p, std::string &out)
{
    for (const EntryStatement *entry : p.entryPoints) {
        std::string parameters, arguments, nulls;
        for (size_t i = 0; i < entry->parameters.size(); i++) {
            parameters += joined(i ? ", " : "", "uint8_t *a", i);
            arguments += joined("p", p.number, "_entryArguments[", i, "] = a", i, ";\n");
        }
        for (size_t i = 0; i < p.parameters.size(); i++) nulls += i ? ", 0" : "0";
        out += joined("__attribute__((visibility(\"default\"))) int64_t kvr_entry_", p.number, "_", entry->number, "(",
                      parameters.empty() ? "void" : parameters, ")\n{\n", arguments, "p", p.number,
                      "_entry = ", entry->number, ";\nreturn kvr_entry_", p.number, "(", nulls, ");\n}\n");
    }
}

void Emitter::cancelStatement(const CancelStatement &s)
{
    for (const Expr *e : s.programs) {
        const Expr *target = constant(e);
        if (target->kind == ExprKind::String) {
            if (Program *p = visibleProgram(*program_, internWord(target->text))) {
                put("kvr_cancel_", p->number, "();\n");
                continue;
            }
        }
        Text name = text(target, true);
        if (!name.good) continue;
        put(emits(Do::Cancel, Of::Text), "(", name.address, ", ", name.length, ", &p", program_->number, "_pcb, ",
            visibleTable(), ");\n");
    }
}

} // namespace kvrcob
